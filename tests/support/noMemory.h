// noMemory.h - a process that gets no more memory, for tests of how it ends.
#pragma once

#include <sys/resource.h>

#include <cstddef>
#include <cstdlib>

// A sanitizer's allocator needs memory of its own to say that there is none.
#ifndef __SANITIZE_ADDRESS__

/// From now on the process gets no more memory than it has.
inline void freezeMemory() {
    const rlimit none = {0, 0};
    ::setrlimit(RLIMIT_AS, &none);
}

/// From now on malloc has no block of `smallest` bytes or more, also none that was freed.
inline void exhaustMemory(std::size_t smallest = 4) {
    freezeMemory();
    for (std::size_t size = 1 << 16; size >= smallest; size -= size > 1024 ? 1024 : 4) {
        while (void* volatile block = std::malloc(size))
            static_cast<void>(block);
    }
}

#endif
