// fxIndexSeed_test.cpp - hashes that spread keys whatever they have in common, and see every byte.

#include "kelvofxds/core/fxIndexSeedInternal.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

// Their addresses make seeds.
const unsigned int ownerCount = 64;
char owners[ownerCount * 16];

std::vector<fxIndexSeed> seeds() {
    std::vector<fxIndexSeed> all;
    for (unsigned int i = 0; i < ownerCount; ++i)
        all.emplace_back(owners + 16 * i);
    return all;
}

std::uint32_t hashed(const fxIndexSeed& seed, const std::string& text) {
    return seed.hash(text.data(), static_cast<unsigned int>(text.size()));
}

// How many of 1024 slots `hashes` fill, by their highest bits as the index goes.
unsigned int slotsOf(const std::vector<std::uint32_t>& hashes) {
    std::vector<bool> isFull(1024);
    for (const std::uint32_t hash : hashes)
        isFull[hash >> 22] = true;
    return static_cast<unsigned int>(std::count(isFull.begin(), isFull.end(), true));
}

// Texts of `length` bytes that differ at `place` and before it only.
std::vector<std::string> alikeBut(unsigned int length, unsigned int place) {
    std::vector<std::string> all;
    std::string text(length, 'x');
    for (char first = '0'; first <= 'O'; ++first) {
        for (char second = '0'; second <= 'O'; ++second) {
            text[place - 1] = first;
            text[place] = second;
            all.push_back(text);
        }
    }
    return all;
}

}  // namespace

// Chance fills 647 of 1024 slots; a half of that would be a slot for three keys.
TEST(fxIndexSeed, numbersOfAnyStrideAreSpread) {
    for (const std::uint32_t stride : {1U, 2U, 3U, 8U, 16U, 100U, 4096U, 1U << 16, 1U << 22}) {
        unsigned int slots = 0;
        for (const fxIndexSeed& seed : seeds()) {
            std::vector<std::uint32_t> hashes;
            std::set<std::uint32_t> different;
            for (std::uint32_t i = 0; i < 1024; ++i) {
                hashes.push_back(seed.hash(i * stride));
                different.insert(hashes.back());
            }
            slots += slotsOf(hashes);
            EXPECT_LE(1000u, different.size()) << stride;
        }
        EXPECT_LE(324u, slots / ownerCount) << stride;
    }
}

TEST(fxIndexSeed, eachOwnerHashesInItsOwnWay) {
    std::set<std::uint32_t> ofNumber, ofText;
    for (const fxIndexSeed& seed : seeds()) {
        ofNumber.insert(seed.hash(12345));
        ofText.insert(hashed(seed, "a text"));
    }
    EXPECT_LE(ownerCount - 2, ofNumber.size());
    EXPECT_LE(ownerCount - 2, ofText.size());
}

TEST(fxIndexSeed, textsOfAnyLengthAreSpread) {
    const std::vector<fxIndexSeed> all = seeds();
    const unsigned int tries = 8;
    for (const unsigned int length : {2U, 3U, 4U, 5U, 7U, 8U, 9U, 11U, 12U, 13U, 16U, 17U, 25U}) {
        for (unsigned int place = 1; place < length; ++place) {
            const std::vector<std::string> texts = alikeBut(length, place);
            unsigned int slots = 0;
            for (unsigned int i = 0; i < tries; ++i) {
                std::vector<std::uint32_t> hashes;
                for (const std::string& text : texts)
                    hashes.push_back(hashed(all[i * 7], text));
                slots += slotsOf(hashes);
            }
            EXPECT_LE(324u, slots / tries) << length << ", " << place;
        }
    }
}

TEST(fxIndexSeed, everyByteAndTheLengthCount) {
    const fxIndexSeed seed(owners);
    std::set<std::uint32_t> lengths;
    for (unsigned int length = 0; length < 100; ++length) {
        const std::string text(length, 'x');
        EXPECT_EQ(hashed(seed, text), hashed(seed, std::string(text)));
        EXPECT_TRUE(lengths.insert(hashed(seed, text)).second) << length;
        for (unsigned int place = 0; place < length; ++place) {
            std::string other = text;
            other[place] = 'y';
            EXPECT_NE(hashed(seed, text), hashed(seed, other)) << length << ", " << place;
        }
    }
}

TEST(fxIndexSeed, aByteOfZeroIsNoticedWhereverItIs) {
    const fxIndexSeed seed(owners);
    for (unsigned int length = 0; length < 60; ++length) {
        for (const char filling : {'\1', 'a', '\x7F', '\x80', '\x81', '\xFF'}) {
            std::string text(length, filling);
            std::uint32_t zero = 0;
            EXPECT_EQ(hashed(seed, text), seed.hash(text.data(), length, zero));
            EXPECT_EQ(0u, zero) << length;
            for (unsigned int place = 0; place < length; ++place) {
                text[place] = '\0';
                zero = 0;
                seed.hash(text.data(), length, zero);
                EXPECT_NE(0u, zero) << length << ", " << place;
                text[place] = filling;
            }
        }
    }
}
