// fxIndexSeedInternal.h - hashes that nobody outside the process can foresee.
#pragma once

#include <sys/auxv.h>

#include <cstdint>
#include <cstring>

/// Two numbers that nobody outside knows: what of the process's random bytes and
/// an address can be had, so that keys cannot be chosen to share a slot.
class fxIndexSeed {
public:
    explicit fxIndexSeed(const void* owner) : sum(0), factor(0) {
        std::uint32_t bytes[2] = {0x3C6EF372, 0x9E3779B1};
        if (const auto random = ::getauxval(AT_RANDOM))
            // NOLINTNEXTLINE(performance-no-int-to-ptr): the system gives it as a number.
            std::memcpy(bytes, reinterpret_cast<const void*>(random), sizeof bytes);
        const auto address = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(owner));
        sum = bytes[0] ^ address;
        factor = (bytes[1] + address * 0x2C1B3C6DU) | 0x40000001;
    }

    /// Of a number.
    std::uint32_t hash(std::uint32_t key) const { return fold(key ^ sum, factor); }

    /// Of `length` bytes.
    std::uint32_t hash(const char* text, unsigned int length) const {
        std::uint32_t zero = 0;
        return hash(text, length, zero);
    }

    /// The same. `zero` becomes other than 0 if a byte is 0, and stays otherwise.
    [[gnu::always_inline]] std::uint32_t hash(const char* text, unsigned int length,
                                              std::uint32_t& zero) const {
        std::uint32_t low = sum ^ length, high = factor;
        std::uint32_t first = 0x01010101U, second = first, zeros = 0;
        for (; length > 8; text += 8, length -= 8) {
            first = wordAt(text);
            second = wordAt(text + 4);
            zeros |= zeroBytes(first) | zeroBytes(second);
            mix(low, high, first, second);
        }
        if (length >= 4) {
            first = wordAt(text);
            second = wordAt(text + length - 4);
        } else if (length > 0) {
            first = std::uint32_t(byteAt(text)) | std::uint32_t(byteAt(text + length / 2)) << 8 |
                    std::uint32_t(byteAt(text + length - 1)) << 16 | 0x01000000U;
            second = 0x01010101U;
        }
        zero |= (zeros | zeroBytes(first) | zeroBytes(second)) & 0x80808080U;
        mix(low, high, first, second);
        return fold(low ^ sum, high ^ factor);
    }

private:
    static std::uint32_t wordAt(const char* text) {
        std::uint32_t word;
        std::memcpy(&word, text, sizeof word);
        return word;
    }
    static unsigned char byteAt(const char* text) { return static_cast<unsigned char>(*text); }

    // The highest bit of a byte is set when one of the word's bytes is 0.
    static std::uint32_t zeroBytes(std::uint32_t word) { return (word - 0x01010101U) & ~word; }

    static void mix(std::uint32_t& low, std::uint32_t& high, std::uint32_t a, std::uint32_t b) {
        const std::uint64_t product = std::uint64_t{low ^ a} * (high ^ b);
        low = static_cast<std::uint32_t>(product);
        high = static_cast<std::uint32_t>(product >> 32);
    }

    static std::uint32_t fold(std::uint32_t a, std::uint32_t b) {
        const std::uint64_t product = std::uint64_t{a} * b;
        return static_cast<std::uint32_t>(product) ^ static_cast<std::uint32_t>(product >> 32);
    }

    std::uint32_t sum;
    std::uint32_t factor;  // odd
};
