#include "kelvofxds/transcribe/fxWordIndexInternal.h"

#include <gtest/gtest.h>

namespace {
struct Entry {
    std::uint32_t key;
    std::uint32_t value;
};

using Index = fxWordIndex<Entry>;

// A permutation of all 32-bit words, so distinct inputs make distinct keys.
std::uint32_t scattered(std::uint32_t i) { return i * 0x85EBCA6BU + 0x1234567U; }
}  // namespace

TEST(fxWordIndex, emptyIndexFindsNothing) {
    const Index index;
    EXPECT_EQ(nullptr, index.find(0));
    EXPECT_EQ(nullptr, index.find(0xFFFFFFFF));
}

TEST(fxWordIndex, newRecordIsZeroExceptForItsKey) {
    Index index;
    const Entry& entry = *index.findOrAdd(42);
    EXPECT_EQ(42u, entry.key);
    EXPECT_EQ(0u, entry.value);
}

TEST(fxWordIndex, knownKeyGivesTheSameRecord) {
    Index index;
    index.findOrAdd(42)->value = 7;
    EXPECT_EQ(7u, index.findOrAdd(42)->value);
    ASSERT_NE(nullptr, index.find(42));
    EXPECT_EQ(7u, index.find(42)->value);
    EXPECT_EQ(nullptr, index.find(43));
}

TEST(fxWordIndex, zeroIsAKeyLikeAnyOther) {
    Index index;
    index.findOrAdd(1)->value = 5;
    EXPECT_EQ(nullptr, index.find(0));
    index.findOrAdd(0)->value = 6;
    EXPECT_EQ(6u, index.find(0)->value);
    EXPECT_EQ(5u, index.find(1)->value);
}

// Dense numbers, addresses (multiples of 16 and of a page), numbers that only
// differ in their high bits, and scattered ones, over many doublings.
TEST(fxWordIndex, recordsSurviveGrowthWhateverThePatternOfKeys) {
    const unsigned int n = 20000;
    for (int pattern = 0; pattern < 5; ++pattern) {
        SCOPED_TRACE(pattern);
        const auto keyOf = [pattern](std::uint32_t i) {
            switch (pattern) {
                case 0:
                    return i;
                case 1:
                    return 0x08000000U + i * 16;
                case 2:
                    return i * 4096;
                case 3:
                    return i << 17 | i >> 15;
                default:
                    return scattered(i);
            }
        };
        Index index;
        for (std::uint32_t i = 0; i < n; ++i)
            index.findOrAdd(keyOf(i))->value = i;
        unsigned int wrong = 0;
        for (std::uint32_t i = 0; i < n; ++i) {
            const Entry* entry = index.find(keyOf(i));
            wrong += !entry || entry->value != i || entry->key != keyOf(i);
            wrong += index.find(keyOf(i + n)) != nullptr;
        }
        EXPECT_EQ(0u, wrong);
    }
}

TEST(fxWordIndex, recordsStayWhereTheyAre) {
    Index index;
    Entry* const first = index.findOrAdd(1);
    for (std::uint32_t i = 2; i < 20000; ++i)
        index.findOrAdd(i);
    EXPECT_EQ(first, index.find(1));
}

TEST(fxWordIndex, clearForgetsEverything) {
    Index index;
    for (std::uint32_t i = 0; i < 1000; ++i)
        index.findOrAdd(i)->value = i;
    index.clear();
    EXPECT_EQ(nullptr, index.find(5));
    EXPECT_EQ(0u, index.findOrAdd(5)->value);
    EXPECT_EQ(nullptr, index.find(6));
}
