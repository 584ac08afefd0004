// options.h - how AddressSanitizer runs in a fuzzer.
#pragma once

/// Defines the options, `more` behind the usual ones. Freed blocks are remembered, and where blocks
/// came from, but not so many and not so well that it takes most of the time. To know more of an
/// input that was found: ASAN_OPTIONS=quarantine_size_mb=256:malloc_context_size=30.
#define FUZZ_OPTIONS(more)                                         \
    extern "C" const char* __asan_default_options() {              \
        return "quarantine_size_mb=8:malloc_context_size=5:" more; \
    }
