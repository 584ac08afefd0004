// fxStrHashInternal.h - the hash of strings, for fxStr and the containers keyed by it.
#pragma once

#include <cstdint>

#include "kelvofxds/str/fxStr.h"

/// The four bytes at `s` as a little-endian word on every host, since hash
/// values are stored.
inline std::uint32_t fxHashWordAt(const char* s) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(s);
    return std::uint32_t(bytes[0]) | std::uint32_t(bytes[1]) << 8 | std::uint32_t(bytes[2]) << 16 |
           std::uint32_t(bytes[3]) << 24;
}

/// The first `n` bytes, 1 to 4, in the most significant bytes of a word.
inline std::uint32_t fxHashTopBytes(const char* s, unsigned int n) {
    std::uint32_t word = 0;
    for (unsigned int i = 0; i < n; ++i)
        word = word >> 8 | std::uint32_t(static_cast<unsigned char>(s[i])) << 24;
    return word;
}

/// fxStr::hash() without the call.
inline unsigned int fxHashStr(const fxStr& s) {
    const unsigned int n = s.length();
    const char* text = s.c_str();
    if (n >= 8)
        return fxHashWordAt(text + 4) << 3 ^ fxHashWordAt(text);
    if (n > 4)
        return fxHashTopBytes(text, n - 4) << 3 ^ fxHashWordAt(text);
    return fxHashTopBytes(text, n) << 3;
}
