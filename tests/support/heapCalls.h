// heapCalls.h - how often this program calls malloc and free.
#pragma once

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
