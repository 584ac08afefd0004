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
/// the read. Here a large one is: it is only reserved, not touched, but sanitizers mark every byte.
/// To have them all: ASAN_OPTIONS=max_allocation_size_mb=3000, and -malloc_limit_mb=4096 for the
/// fuzzer. The smallest limit is what the fuzzer needs itself. Failed reads may leave what they
/// made.
#define FUZZ_READER_OPTIONS "allocator_may_return_null=1:max_allocation_size_mb=24:detect_leaks=0"
