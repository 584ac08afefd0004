// fxPrivateHashInternal.h - hashes that nobody outside the process can foresee.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// Words of this process that the hashes depend on. None is used before
/// fxChooseSeed().
struct fxHashSeed {
    std::uint32_t a, b, c, d;
};
extern __attribute__((visibility("hidden"))) fxHashSeed fxPrivateSeed;

/// Chooses the seed unless it is chosen.
__attribute__((visibility("hidden"))) void fxChooseSeed();

/// Stirs two words into each other.
inline void fxStir(std::uint32_t& a, std::uint32_t& b) {
    const std::uint64_t product = std::uint64_t(a ^ fxPrivateSeed.c) * (b ^ fxPrivateSeed.d);
    a = static_cast<std::uint32_t>(product);
    b = static_cast<std::uint32_t>(product >> 32);
}

/// The hash of a word.
inline std::uint32_t fxPrivateHash(std::uint32_t word) {
    std::uint32_t a = fxPrivateSeed.a ^ word;
    std::uint32_t b = fxPrivateSeed.b;
    fxStir(a, b);
    a ^= word;
    fxStir(a, b);
    return a ^ b;
}

/// The four bytes at `p`, in the host's order.
inline std::uint32_t fxNativeWordAt(const char* p) {
    std::uint32_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

/// Not 0 when one of the word's bytes is.
inline std::uint32_t fxZeroBytes(std::uint32_t word) {
    return (word - 0x01010101U) & ~word & 0x80808080U;
}

/// The hash of all `n` bytes at `text`. `zero` becomes other than 0 if a byte
/// is 0, and stays otherwise.
[[gnu::always_inline]] inline std::uint32_t fxPrivateHash(const char* text, unsigned int n,
                                                          std::uint32_t& zero) {
    const unsigned int block = 8;
    std::uint32_t a = fxPrivateSeed.a ^ n;
    std::uint32_t b = fxPrivateSeed.b;
    std::uint32_t first = 0x01010101U;
    std::uint32_t second = first;
    const char* const end = text + n;
    if (n >= block) {
        for (; end - text > std::ptrdiff_t(block); text += block) {
            first = fxNativeWordAt(text);
            second = fxNativeWordAt(text + 4);
            zero |= fxZeroBytes(first) | fxZeroBytes(second);
            a ^= first;
            b ^= second;
            fxStir(a, b);
        }
        text = end - block;
    }
    if (n >= 4) {
        first = fxNativeWordAt(text);
        second = fxNativeWordAt(end - 4);
    } else if (n != 0) {
        std::memcpy(&first, text, 1);
        second ^= std::uint32_t(static_cast<unsigned char>(text[n / 2])) << 8;
        second ^= std::uint32_t(static_cast<unsigned char>(end[-1])) << 16;
        zero |= std::uint32_t(text[0] == 0 || text[n / 2] == 0 || end[-1] == 0);
    }
    zero |= n >= 4 ? fxZeroBytes(first) | fxZeroBytes(second) : 0;
    a ^= first;
    b ^= second;
    fxStir(a, b);
    return a ^ b;
}
