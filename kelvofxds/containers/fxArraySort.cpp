// fxArraySort.cpp - sorting the elements of any array.

#include <cstdlib>
#include <cstring>

#include "kelvofxds/containers/fxArray.h"
#include "kelvofxds/core/fxMemoryInternal.h"

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
}  // namespace

void fxArray::qsort() { qsort(0, length()); }

void fxArray::qsort(unsigned int start, unsigned int n) {
    if (n == 0)
        return;
    Temporary temp(elemSize);
    qsortInternal(start, start + n - 1, temp.address());
}

// The first element is the pivot, by address: nothing moves it until its final
// placement. A single element goes through that placement too.
void fxArray::qsortInternal(unsigned int lo, unsigned int hi, void* temp) {
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
        std::memcpy(temp, at(i), elemSize);
        std::memcpy(at(i), at(j), elemSize);
        std::memcpy(at(j), temp, elemSize);
    }
    // Not an exchange: both places end up with what the temporary holds.
    std::memcpy(at(lo), temp, elemSize);
    std::memmove(at(j), at(lo), elemSize);
    std::memcpy(at(j), temp, elemSize);

    if (j != 0 && lo < j - 1)
        qsortInternal(lo, j - 1, temp);
    if (j + 1 < hi)
        qsortInternal(j + 1, hi, temp);
}
