// fxArraySort.cpp - sorting the elements of any array.

#include <cstdlib>
#include <cstring>

#include "kelvofxds/containers/fxArray.h"
#include "kelvofxds/containers/fxVirtualEntryInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/str/fxStrArray.h"

namespace {
const unsigned int sortBufferSize = 32;

// Room for one element, zero bytes at first; on the stack when it fits.
class Temporary {
public:
    explicit Temporary(unsigned int size) : buffer(), block(buffer) {
        if (size <= sortBufferSize)
            return;
        block = fxAllocate(size);
        std::memset(block, 0, size);
    }
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;
    ~Temporary() {
        if (block != buffer)
            std::free(block);
    }
    void* address() { return block; }

private:
    char buffer[sortBufferSize];
    void* block;
};

template <class Operation>
bool shareOperation(const fxArray& a, const fxArray& b, Operation fxArray::*operation) {
    return fxVirtualEntry(a, operation) == fxVirtualEntry(b, operation);
}

// Whether the elements are strings: one of the operations that fxStrArray has
// of its own is in place, which only it and what derives from it can have.
bool holdsStrings(const fxArray& array) {
    const fxStrArray strings;
    unsigned char (fxArray::*const xdr)(fxTranscriber&) = &fxArray::xdr;
    return shareOperation(array, strings, &fxArray::copyElements) ||
           shareOperation(array, strings, &fxArray::compareElements) ||
           shareOperation(array, strings, &fxArray::createElements) ||
           shareOperation(array, strings, &fxArray::destroyElements) ||
           shareOperation(array, strings, &fxArray::className) ||
           shareOperation(array, strings, &fxArray::getTypeObj) ||
           shareOperation(array, strings, xdr);
}
}  // namespace

void fxArray::qsort() { qsort(0, length()); }

void fxArray::qsort(unsigned int start, unsigned int n) {
    if (n == 0)
        return;
    Temporary temp(elemSize);
    qsortInternal(start, start + n - 1, temp.address());
}

void fxArray::qsortInternal(unsigned int lo, unsigned int hi, void* temp) {
    sortRange(lo, hi, temp, holdsStrings(*this));
}

// The first element is the pivot, by address: nothing moves it until its final
// placement. A single element goes through that placement too.
void fxArray::sortRange(unsigned int lo, unsigned int hi, void* temp, bool exchangePivot) {
    const void* pivot = at(lo);
    unsigned int i = lo;
    unsigned int j = hi + 1;
    for (;;) {
        while (i < hi) {
            ++i;
            if (compareElements(at(i), pivot) >= 0)
                break;
        }
        while (j > lo) {
            --j;
            if (compareElements(at(j), pivot) <= 0)
                break;
        }
        if (i >= j)
            break;
        exchange(i, j, temp);
    }
    if (exchangePivot) {
        // Strings own their buffers, so none may be overwritten or held twice.
        exchange(lo, j, temp);
    } else {
        // Both places end up with what the temporary holds.
        std::memcpy(at(lo), temp, elemSize);
        std::memmove(at(j), at(lo), elemSize);
        std::memcpy(at(j), temp, elemSize);
    }
    if (j != 0 && lo < j - 1)
        sortRange(lo, j - 1, temp, exchangePivot);
    if (j + 1 < hi)
        sortRange(j + 1, hi, temp, exchangePivot);
}

void fxArray::exchange(unsigned int i, unsigned int j, void* temp) {
    std::memcpy(temp, at(i), elemSize);
    std::memmove(at(i), at(j), elemSize);
    std::memcpy(at(j), temp, elemSize);
}
