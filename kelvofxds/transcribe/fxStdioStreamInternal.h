// fxStdioStreamInternal.h - the library's own stream, as transcribers see it.
#pragma once

#include <cstddef>
#include <cstdio>

#include "kelvofxds/transcribe/fxStdioStream.h"

/// What a stream reads and writes when it is an fxStdioStream that is open and
/// of no class derived from it; null otherwise. Calls on any other stream are
/// seen by a host's code, so their order and content are part of the library's
/// behaviour; calls on this one are not.
__attribute__((visibility("hidden"))) std::FILE* fxOwnFile(const fxStream* stream);

/// The rest of a read of `n` bytes that has ended after `got`: goes on where a signal has
/// interrupted the system's call. Returns how many there are in all.
__attribute__((visibility("hidden"))) std::size_t fxReadOn(std::FILE* file, char* to, std::size_t n,
                                                           std::size_t got);

/// Reads `n` bytes at most; returns how many there are before the end or a failure, of which
/// a signal is none.
inline std::size_t fxReadFrom(std::FILE* file, char* to, std::size_t n) {
    const bool hadFailed = ::ferror_unlocked(file);
    const std::size_t got = ::fread_unlocked(to, 1, n, file);
    return got == n || hadFailed ? got : fxReadOn(file, to, n, got);
}

/// The next byte, or EOF at the end and after a failure.
inline int fxNextOf(std::FILE* file) {
    const bool hadFailed = ::ferror_unlocked(file);
    const int c = ::getc_unlocked(file);
    char byte;
    if (__builtin_expect(c != EOF, true) || hadFailed || fxReadOn(file, &byte, 1, 0) == 0)
        return c;
    return static_cast<unsigned char>(byte);
}
