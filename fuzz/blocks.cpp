// blocks.cpp - stands before AddressSanitizer's allocation functions; see blocks.h.

#include "fuzz/blocks.h"

#include <cstdint>
#include <cstdlib>

extern "C" {
void* __interceptor_malloc(std::size_t size);
void* __interceptor_calloc(std::size_t n, std::size_t size);
void* __interceptor_realloc(void* block, std::size_t size);
}

namespace {
std::size_t most = SIZE_MAX;
}

void fuzz::limitBlocks(std::size_t bytes) { most = bytes; }

extern "C" {
void* malloc(std::size_t size) { return size > most ? nullptr : __interceptor_malloc(size); }

void* calloc(std::size_t n, std::size_t size) {
    return size != 0 && n > most / size ? nullptr : __interceptor_calloc(n, size);
}

void* realloc(void* block, std::size_t size) {
    return size > most ? nullptr : __interceptor_realloc(block, size);
}
}
