// fxPendingRangesInternal.h - what a sort has still to do.
#pragma once

#include <cstdlib>
#include <cstring>

#include "kelvofxds/core/fxMemoryInternal.h"

/// The ranges of elements that are still to be sorted, the next one last. Each has two elements at
/// least and none in common with another.
class fxPendingRanges {
public:
    struct Range {
        unsigned int lo, hi;
    };

    fxPendingRanges() : ranges(buffer), capacity(bufferLength), length(0) {}
    fxPendingRanges(const fxPendingRanges&) = delete;
    fxPendingRanges& operator=(const fxPendingRanges&) = delete;
    ~fxPendingRanges() {
        if (ranges != buffer)
            std::free(ranges);
    }

    bool isEmpty() const { return length == 0; }
    Range taken() { return ranges[--length]; }
    void add(unsigned int lo, unsigned int hi) {
        if (length == capacity)
            grow();
        ranges[length++] = {lo, hi};
    }

private:
    static const unsigned int bufferLength = 32;

    void grow() {
        const unsigned int size = capacity * static_cast<unsigned int>(sizeof(Range));
        void* block = ranges == buffer ? fxAllocate(2 * size) : fxReallocate(ranges, 2 * size);
        if (ranges == buffer)
            std::memcpy(block, buffer, size);
        ranges = static_cast<Range*>(block);
        capacity *= 2;
    }

    Range buffer[bufferLength];
    Range* ranges;  // `buffer`, or a malloced block
    unsigned int capacity;
    unsigned int length;
};
