// addressOfMalloc.cpp - a host that takes the addresses of the functions that allocate memory.
// Exits with 0 when the library does its work all the same.
//
// In a program that is not position independent such a function has a stand-in of the program's
// own, which is what the library finds by its name.

#include <malloc.h>

#include <cstdlib>

#include "tests/hosts/growing.h"

namespace {
// Of all four, so that each has its stand-in.
void* (*volatile allocate)(std::size_t) = &std::malloc;
void* (*volatile reallocate)(void*, std::size_t) = &std::realloc;
void (*volatile release)(void*) = &std::free;
std::size_t (*volatile sizeOf)(void*) = &malloc_usable_size;

bool theyWork() {
    void* block = reallocate(allocate(10), 2000);
    const bool isLarge = block && sizeOf(block) >= 2000;
    release(block);
    return isLarge;
}
}  // namespace

int main() { return theyWork() && growing::failures() == 0 ? 0 : 1; }
