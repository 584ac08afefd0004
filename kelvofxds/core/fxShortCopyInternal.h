// fxShortCopyInternal.h - copying the few bytes that most texts and numbers are.
#pragma once

#include <cstring>

/// memcpy, without a call for up to 32 bytes.
inline void fxCopyShort(char* to, const char* from, unsigned int n) {
    // Both ends, which may overlap; each memcpy is a move or two.
    if (n > 32) {
        std::memcpy(to, from, n);
    } else if (n >= 16) {
        std::memcpy(to, from, 16);
        std::memcpy(to + n - 16, from + n - 16, 16);
    } else if (n >= 8) {
        std::memcpy(to, from, 8);
        std::memcpy(to + n - 8, from + n - 8, 8);
    } else if (n >= 4) {
        std::memcpy(to, from, 4);
        std::memcpy(to + n - 4, from + n - 4, 4);
    } else {
        for (unsigned int i = 0; i < n; ++i)
            to[i] = from[i];
    }
}
