// fxArraySort.cpp - sorting the elements of any array.

#include <cstdlib>
#include <cstring>

#include "kelvofxds/containers/fxArray.h"
#include "kelvofxds/containers/fxArrayCheckedInternal.h"
#include "kelvofxds/containers/fxArrayOwnInternal.h"
#include "kelvofxds/containers/fxArraySortInternal.h"
#include "kelvofxds/containers/fxPendingRangesInternal.h"
#include "kelvofxds/containers/fxVirtualEntryInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/str/fxStrSortInternal.h"

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

// Whether the elements are strings: one of the operations on them that
// fxStrArray has of its own is in place. A class that replaces all of these is
// not known from any other. The name and the record say nothing: they may be a
// code that a linker has folded with another class's.
bool holdsStrings(const fxArray& array, const fxStrArray& strings) {
    unsigned char (fxArray::*const xdr)(fxTranscriber&) = &fxArray::xdr;
    return shareOperation(array, strings, &fxArray::copyElements) ||
           shareOperation(array, strings, &fxArray::compareElements) ||
           shareOperation(array, strings, &fxArray::createElements) ||
           shareOperation(array, strings, &fxArray::destroyElements) ||
           shareOperation(array, strings, xdr);
}
}  // namespace

void fxArray::qsort() { qsort(0, length()); }

void fxArray::qsort(unsigned int start, unsigned int n) {
    if (n == 0)
        return;
    FX_CHECK_RANGE_OF(start, n, 1);
    Temporary temp(elemSize);
    qsortInternal(start, fxSum("fxArray", start, n) - 1, temp.address());
}

// The steps as they are stated, unless there is a shorter way to the same. What
// is in front of the pivot's place is sorted before what is behind it: the
// temporary carries elements from the one to the other.
void fxArray::qsortInternal(unsigned int lo, unsigned int hi, void* temp) {
    if (elemSize != 0 && fxComparesBytes(*this)) {
        fxSortBytes(data, elemSize, lo, hi, temp);
        return;
    }
    const fxStrArray strings;
    if (shareOperation(*this, strings, &fxArray::compareElements) &&
        fxSortStrings(at(lo), hi - lo + 1))
        return;
    const bool exchangePivot = holdsStrings(*this, strings);
    fxPendingRanges pending;
    for (;;) {
        const unsigned int place = partition(lo, hi, temp, exchangePivot);
        const bool sortsFront = place != 0 && lo < place - 1;
        const bool sortsBehind = place + 1 < hi;
        if (sortsFront && sortsBehind)
            pending.add(place + 1, hi);
        if (sortsFront) {
            hi = place - 1;
        } else if (sortsBehind) {
            lo = place + 1;
        } else {
            if (pending.isEmpty())
                return;
            const fxPendingRanges::Range next = pending.taken();
            lo = next.lo;
            hi = next.hi;
        }
    }
}

// Puts what is less than an element in front of it and the rest behind, and
// returns its place. The first element is that pivot, by address: nothing moves
// it until its final placement. A single element goes through that too.
unsigned int fxArray::partition(unsigned int lo, unsigned int hi, void* temp, bool exchangePivot) {
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
    return j;
}

void fxArray::exchange(unsigned int i, unsigned int j, void* temp) {
    std::memcpy(temp, at(i), elemSize);
    std::memmove(at(i), at(j), elemSize);
    std::memcpy(at(j), temp, elemSize);
}
