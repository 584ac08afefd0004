// options.h - how AddressSanitizer runs in a fuzzer.
#pragma once

/// Defines the options, `more` behind the usual ones. Freed blocks are remembered, and where blocks
/// came from, but not so many and not so well that it takes most of the time. To know more of an
/// input that was found: ASAN_OPTIONS=quarantine_size_mb=256:malloc_context_size=30.
#define FUZZ_OPTIONS(more)                                         \
    extern "C" const char* __asan_default_options() {              \
        return "quarantine_size_mb=8:malloc_context_size=5:" more; \
    }

/// More for readers of hostile bytes. A block that a stream asks for may be refused, which fails
/// the read; here one is that no input can fill: sanitizers mark every byte of it, although nobody
/// touches it. The limit is what the fuzzer needs itself; see blocks.h for a narrower one. Failed
/// reads may leave what they made.
#define FUZZ_READER_OPTIONS "allocator_may_return_null=1:max_allocation_size_mb=24:detect_leaks=0"
