// fxMemoryInternal.h - block allocation shared by strings and containers.
#pragma once

#include <malloc.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// malloc for a block that must exist: the containers check no allocation, so
/// running out of memory ends the process here, before the null is used.
inline void* fxAllocate(std::size_t size) {
    void* block = std::malloc(size);
    if (!block && size != 0)
        std::abort();
    return block;
}

/// realloc to a `size` of at least 1 under the same rule. The call is left out
/// when the allocator's block already has the size that realloc would round
/// `size` up to.
inline void* fxReallocate(void* block, std::size_t size) {
    const std::size_t granule = 16;
    const std::size_t usable = malloc_usable_size(block);
    if (usable >= size && usable - size < granule)
        return block;
    void* moved = std::realloc(block, size != 0 ? size : 1);
    if (!moved)
        std::abort();
    return moved;
}

/// True when `p` lies in the `size` bytes at `block`.
inline bool fxPointsInto(const void* p, const void* block, std::size_t size) {
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(p);
    const std::uintptr_t start = reinterpret_cast<std::uintptr_t>(block);
    return address >= start && address - start < size;
}
