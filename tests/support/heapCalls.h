// heapCalls.h - how often this program calls malloc and free, and what they refuse.
#pragma once

#include <cstddef>

/// Calls since the program began, those of the library included: operator new
/// and delete end in malloc and free.
struct HeapCalls {
    unsigned long allocations;  ///< Of malloc, calloc and realloc.
    unsigned long releases;     ///< Of free with a block.
    long blocks;                ///< In use.
};

/// All 0 in sanitizer builds, which have a heap of their own.
HeapCalls heapCalls();

/// False in sanitizer builds, and under tools that bring operators of their own.
bool heapCallsAreCounted();

/// From now on malloc, calloc and realloc refuse blocks of `size` bytes or more, to the library
/// too. Does nothing where calls are not counted.
void refuseBlocksFrom(std::size_t size);
