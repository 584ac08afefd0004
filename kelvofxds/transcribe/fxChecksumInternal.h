// fxChecksumInternal.h - the CRC-32C by which graph streams are checked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// CRC-32C (Castagnoli) of bytes that are added piece by piece. It needs nothing
/// of the library's and stands for itself on every host.
class fxChecksum {
public:
    /// Of the bytes added so far; 0 of none.
    std::uint32_t value() const { return ~state; }
    /// Forgets them.
    void clear() { state = ~std::uint32_t(0); }
    void add(const void* bytes, std::size_t n) {
        state = updated(state, static_cast<const unsigned char*>(bytes), n);
    }

private:
    friend struct fxChecksumBySlices;  // tests/transcribe/fxChecksum_test.cpp

    static constexpr std::uint32_t polynomial = 0x82F63B78;  // bits reflected

    // By a byte and the number of zero bytes behind it, what becomes of it.
    struct Bytes {
        std::uint32_t after[8][256];
    };
    static constexpr Bytes makeBytes() {
        Bytes made = {};
        for (std::uint32_t byte = 0; byte < 256; ++byte) {
            std::uint32_t rest = byte;
            for (int bit = 0; bit < 8; ++bit)
                rest = rest >> 1 ^ (rest & 1 ? polynomial : 0);
            made.after[0][byte] = rest;
        }
        for (std::uint32_t byte = 0; byte < 256; ++byte) {
            for (int zeros = 1; zeros < 8; ++zeros) {
                const std::uint32_t rest = made.after[zeros - 1][byte];
                made.after[zeros][byte] = rest >> 8 ^ made.after[0][rest & 0xFF];
            }
        }
        return made;
    }

    // GCOVR_EXCL_START: in the library it runs on other processors alone; its test calls it.
    static std::uint32_t updatedBySlices(std::uint32_t state, const unsigned char* at,
                                         std::size_t n) {
        const auto& after = byteTable.after;
        for (; n >= 8; n -= 8, at += 8) {
            state = after[7][(state ^ at[0]) & 0xFF] ^ after[6][(state >> 8 ^ at[1]) & 0xFF] ^
                    after[5][(state >> 16 ^ at[2]) & 0xFF] ^ after[4][state >> 24 ^ at[3]] ^
                    after[3][at[4]] ^ after[2][at[5]] ^ after[1][at[6]] ^ after[0][at[7]];
        }
        for (; n != 0; --n, ++at)
            state = state >> 8 ^ after[0][(state ^ *at) & 0xFF];
        return state;
    }
    // GCOVR_EXCL_STOP

#if defined(__i386__) || defined(__x86_64__)
    // The processor's own instruction, three runs at a time, since each step of one
    // waits for the step before.

    static constexpr std::size_t runBytes = 1024;
    static constexpr int runBitsLog2 = 13;

    // What becomes of a state after a run of zero bytes, by each of its bytes.
    struct Runs {
        std::uint32_t of[4][256];
    };
    struct Matrix {
        std::uint32_t column[32];

        constexpr std::uint32_t times(std::uint32_t vector) const {
            std::uint32_t sum = 0;
            for (int i = 0; vector != 0; ++i, vector >>= 1)
                sum ^= vector & 1 ? column[i] : 0;
            return sum;
        }
    };
    static constexpr Runs makeRuns() {
        Matrix step = {};
        step.column[0] = polynomial;
        for (int i = 1; i < 32; ++i)
            step.column[i] = std::uint32_t(1) << (i - 1);
        for (int doubling = 0; doubling < runBitsLog2; ++doubling) {
            Matrix twice = {};
            for (int i = 0; i < 32; ++i)
                twice.column[i] = step.times(step.column[i]);
            step = twice;
        }
        Runs made = {};
        for (int place = 0; place < 4; ++place) {
            for (std::uint32_t byte = 0; byte < 256; ++byte)
                made.of[place][byte] = step.times(byte << 8 * place);
        }
        return made;
    }

    static std::uint32_t afterRun(std::uint32_t state) {
        const auto& of = runTable.of;
        return of[0][state & 0xFF] ^ of[1][state >> 8 & 0xFF] ^ of[2][state >> 16 & 0xFF] ^
               of[3][state >> 24];
    }

    static std::uint32_t wordAt(const unsigned char* at) {
        std::uint32_t word;
        std::memcpy(&word, at, sizeof word);
        return word;
    }

    [[gnu::target("sse4.2")]] static std::uint32_t updatedByRuns(std::uint32_t state,
                                                                 const unsigned char* at) {
        std::uint32_t second = 0;
        std::uint32_t third = 0;
        for (std::size_t i = 0; i < runBytes; i += 4) {
            state = __builtin_ia32_crc32si(state, wordAt(at + i));
            second = __builtin_ia32_crc32si(second, wordAt(at + i + runBytes));
            third = __builtin_ia32_crc32si(third, wordAt(at + i + 2 * runBytes));
        }
        return afterRun(afterRun(state) ^ second) ^ third;
    }

    [[gnu::target("sse4.2")]] static std::uint32_t updatedByInstruction(std::uint32_t state,
                                                                        const unsigned char* at,
                                                                        std::size_t n) {
        for (; n >= 3 * runBytes; n -= 3 * runBytes, at += 3 * runBytes)
            state = updatedByRuns(state, at);
        for (; n >= 4; n -= 4, at += 4)
            state = __builtin_ia32_crc32si(state, wordAt(at));
        for (; n != 0; --n, ++at)
            state = __builtin_ia32_crc32qi(state, *at);
        return state;
    }

    static std::uint32_t updated(std::uint32_t state, const unsigned char* at, std::size_t n) {
        return __builtin_cpu_supports("sse4.2") ? updatedByInstruction(state, at, n)
                                                : updatedBySlices(state, at, n);
    }

    static const Runs runTable;
#else
    static std::uint32_t updated(std::uint32_t state, const unsigned char* at, std::size_t n) {
        return updatedBySlices(state, at, n);
    }
#endif
    static const Bytes byteTable;

    std::uint32_t state = ~std::uint32_t(0);
};

inline constexpr fxChecksum::Bytes fxChecksum::byteTable = fxChecksum::makeBytes();
#if defined(__i386__) || defined(__x86_64__)
inline constexpr fxChecksum::Runs fxChecksum::runTable = fxChecksum::makeRuns();
#endif
