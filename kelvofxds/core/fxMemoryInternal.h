// fxMemoryInternal.h - memory and sizes, shared by the whole library.
#pragma once

#include <malloc.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <type_traits>
#include <utility>

#include "kelvofxds/core/fxFatal.h"

// What the library needs for itself must exist: running out of memory ends the
// process here, before a null is used. What a stream asks for is allocated with
// malloc, calloc and fxTryNew instead, and a refusal fails the read.

/// Ends the process: "out of memory".
[[noreturn, gnu::cold, gnu::noinline]] inline void fxOutOfMemory() { fxFatal("out of memory"); }

/// Ends the process: "%s: size too large", with the name of the class whose
/// operation was asked for more than a size can say.
[[noreturn, gnu::cold, gnu::noinline]] inline void fxSizeTooLarge(const char* owner) {
    fxFatal("%s: size too large", owner);
}

/// a + b for `owner`.
inline unsigned int fxSum(const char* owner, unsigned int a, unsigned int b) {
    unsigned int sum = 0;
    if (__builtin_add_overflow(a, b, &sum))
        fxSizeTooLarge(owner);
    return sum;
}

/// a * b for `owner`.
inline unsigned int fxProduct(const char* owner, unsigned int a, unsigned int b) {
    unsigned int product = 0;
    if (__builtin_mul_overflow(a, b, &product))
        fxSizeTooLarge(owner);
    return product;
}

/// malloc for a block that must exist; null for 0 bytes is as good as any.
inline void* fxAllocate(std::size_t size) {
    void* block = std::malloc(size);
    if (!block && size != 0)
        fxOutOfMemory();
    return block;
}

/// Whether malloc_usable_size knows the blocks of the malloc in use. A host may
/// have replaced malloc, calloc, realloc and free alone.
extern bool fxUsableSizeIsKnown;

/// Whether every size that it tells is a whole number of words, so that up to
/// the next word a block need not be asked for.
extern bool fxUsableSizesAreWords;

/// realloc to a `size` of at least 1 for a block that must exist. The call is
/// left out when the block already has the size that realloc would round `size`
/// up to.
inline void* fxReallocate(void* block, std::size_t size) {
    const std::size_t granule = 16;
    if (fxUsableSizeIsKnown) {
        const std::size_t usable = malloc_usable_size(block);
        if (usable >= size && usable - size < granule)
            return block;
    }
    void* moved = std::realloc(block, size != 0 ? size : 1);
    if (!moved)
        fxOutOfMemory();
    return moved;
}

/// new T(args...), or T{args...} of an aggregate; null if there is no memory.
template <class T, class... Args>
T* fxTryNew(Args&&... args) {
    if constexpr (std::is_aggregate_v<T>)
        return new (std::nothrow) T{std::forward<Args>(args)...};
    else
        return new (std::nothrow) T(std::forward<Args>(args)...);
}

/// The same for an object that must exist.
template <class T, class... Args>
T* fxNew(Args&&... args) {
    T* made = fxTryNew<T>(std::forward<Args>(args)...);
    if (!made)
        fxOutOfMemory();
    return made;
}

/// True when `p` lies in the `size` bytes at `block`.
inline bool fxPointsInto(const void* p, const void* block, std::size_t size) {
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(p);
    const std::uintptr_t start = reinterpret_cast<std::uintptr_t>(block);
    return address >= start && address - start < size;
}
