// The checksum of graph streams, against known values and a slow one.

#include "kelvofxds/transcribe/fxChecksumInternal.h"

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/streamBytes.h"

// What processors without the instruction do, on every processor.
struct fxChecksumBySlices {
    static std::uint32_t of(const std::string& bytes) {
        const auto* at = reinterpret_cast<const unsigned char*>(bytes.data());
        return ~fxChecksum::updatedBySlices(~std::uint32_t(0), at, bytes.size());
    }
};

namespace {
std::uint32_t sumOf(const std::string& bytes) {
    fxChecksum sum;
    sum.add(bytes.data(), bytes.size());
    return sum.value();
}

// Bit by bit, as the definition says.
std::uint32_t slowSumOf(const std::string& bytes) {
    std::uint32_t sum = 0xFFFFFFFF;
    for (const char c : bytes) {
        sum ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            sum = sum & 1 ? sum >> 1 ^ 0x82F63B78 : sum >> 1;
    }
    return ~sum;
}

std::string ascending(unsigned int n) {
    std::string bytes;
    for (unsigned int i = 0; i < n; ++i)
        bytes += static_cast<char>(i);
    return bytes;
}
}  // namespace

TEST(fxChecksum, hasTheKnownValues) {
    EXPECT_EQ(0u, sumOf(""));
    EXPECT_EQ(0xE3069283u, sumOf("123456789"));
    EXPECT_EQ(0x8A9136AAu, sumOf(std::string(32, '\0')));
    EXPECT_EQ(0x62A8AB43u, sumOf(std::string(32, '\xFF')));
    EXPECT_EQ(0x46DD794Eu, sumOf(ascending(32)));
}

TEST(fxChecksum, agreesWithTheDefinitionAtEveryLengthAndAlignment) {
    const std::string bytes = run(300);
    for (unsigned int from = 0; from < 9; ++from) {
        for (unsigned int n = 0; n < 100; ++n) {
            fxChecksum sum;
            sum.add(bytes.data() + from, n);
            ASSERT_EQ(slowSumOf(bytes.substr(from, n)), sum.value()) << n << " from " << from;
        }
    }
}

TEST(fxChecksum, agreesWithTheDefinitionOnLongBytes) {
    const std::string bytes = run(20000);
    for (const unsigned int n : {1023u, 1024u, 3071u, 3072u, 3073u, 6144u, 9999u, 20000u})
        EXPECT_EQ(slowSumOf(bytes.substr(0, n)), sumOf(bytes.substr(0, n))) << n;
}

TEST(fxChecksum, isTheSameInWhateverPieces) {
    const std::string bytes = run(64);
    for (unsigned int first = 0; first <= 64; ++first) {
        fxChecksum sum;
        sum.add(bytes.data(), first);
        EXPECT_EQ(slowSumOf(bytes.substr(0, first)), sum.value());
        sum.add(bytes.data() + first, bytes.size() - first);
        EXPECT_EQ(slowSumOf(bytes), sum.value());
    }
}

TEST(fxChecksum, agreesWithTheDefinitionOnEveryProcessor) {
    const std::string bytes = run(300);
    for (unsigned int from = 0; from < 9; ++from) {
        for (unsigned int n = 0; n < 100; ++n) {
            const std::string some = bytes.substr(from, n);
            ASSERT_EQ(slowSumOf(some), fxChecksumBySlices::of(some)) << n << " from " << from;
        }
    }
}
