#include "tests/support/heapCalls.h"

#include <dlfcn.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {
HeapCalls calls = {0, 0, 0};
std::size_t leastRefused = SIZE_MAX;
}  // namespace

HeapCalls heapCalls() { return calls; }

void refuseBlocksFrom(std::size_t size) { leastRefused = size; }

bool heapCallsAreCounted() {
    const HeapCalls before = calls;
    void* volatile block = std::malloc(1);
    std::free(block);
    const HeapCalls between = calls;
    void* volatile object = ::operator new(1);
    ::operator delete(object);
    return between.allocations == before.allocations + 1 &&
           between.releases == before.releases + 1 &&
           calls.allocations == between.allocations + 1 && calls.releases == between.releases + 1;
}

#ifndef __SANITIZE_ADDRESS__

namespace {
// The definition that this file's would hide.
template <class Function>
Function* systemFunction(Function*& known, const char* name) {
    if (!known)
        known = reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
    if (!known)
        std::abort();
    return known;
}

// As the system refuses them.
bool isRefused(std::size_t size) {
    if (size < leastRefused)
        return false;
    errno = ENOMEM;
    return true;
}

// Constant-initialised: the first calls come before any constructor.
void* (*systemMalloc)(std::size_t) = nullptr;
void* (*systemCalloc)(std::size_t, std::size_t) = nullptr;
void* (*systemRealloc)(void*, std::size_t) = nullptr;
void (*systemFree)(void*) = nullptr;
std::size_t (*systemUsableSize)(void*) = nullptr;
}  // namespace

// The program's own definitions come before the C library's, also for the
// calls that shared libraries make.

extern "C" {

void* malloc(std::size_t size) noexcept {
    void* block = isRefused(size) ? nullptr : systemFunction(systemMalloc, "malloc")(size);
    ++calls.allocations;
    calls.blocks += block != nullptr;
    return block;
}

void* calloc(std::size_t n, std::size_t size) noexcept {
    void* block = isRefused(n * size) ? nullptr : systemFunction(systemCalloc, "calloc")(n, size);
    ++calls.allocations;
    calls.blocks += block != nullptr;
    return block;
}

void* realloc(void* old, std::size_t size) noexcept {
    const bool isGiven = !isRefused(size);
    void* block = isGiven ? systemFunction(systemRealloc, "realloc")(old, size) : nullptr;
    ++calls.allocations;
    // The old block is gone unless the call failed.
    calls.blocks += block != nullptr;
    calls.blocks -= old && isGiven && (block || size == 0);
    return block;
}

void free(void* block) noexcept {
    if (block) {
        ++calls.releases;
        --calls.blocks;
    }
    systemFunction(systemFree, "free")(block);
}

// Together with the others, so that the library takes it for the same heap's.
std::size_t malloc_usable_size(void* block) noexcept {
    return systemFunction(systemUsableSize, "malloc_usable_size")(block);
}

}  // extern "C"

#endif
