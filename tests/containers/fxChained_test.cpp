// fxChained_test.cpp - the chains of dictionaries and sets: adding, looking up, removing.

#include <csignal>
#include <cstdint>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxTypeObj.h"
#include "tests/support/chained.h"
#include "tests/support/destructors.h"

namespace {

template <class Container>
class fxChained : public testing::Test {};
TYPED_TEST_SUITE(fxChained, ChainedContainers);

template <class Container>
class fxChainedDeathTest : public testing::Test {};
TYPED_TEST_SUITE(fxChainedDeathTest, ChainedContainers);

}  // namespace

TYPED_TEST(fxChained, destructorsAreWords0And1OfTheTable) {
    expectDestructorsAtWords0And1<TypeParam>(3u);
}

// Construction.

TYPED_TEST(fxChained, zeroBucketsStandsFor31) {
    EXPECT_EQ(31u, TypeParam(0).getNumBuckets());
    EXPECT_EQ(1u, TypeParam(1).getNumBuckets());
    EXPECT_EQ(1000u, TypeParam(1000).getNumBuckets());
}

TYPED_TEST(fxChained, newContainerIsEmpty) {
    const TypeParam c(5);
    EXPECT_EQ(0u, c.length());
    EXPECT_EQ(0u, c.numItems);
    EXPECT_EQ(4u, c.keySize);
    EXPECT_EQ(0, c.count);
    EXPECT_EQ("", chains(c));
    EXPECT_EQ(20u, c.buckets.getLen());
    EXPECT_EQ(0u, c.iters.length());
    EXPECT_FALSE(c.has(1));
}

TYPED_TEST(fxChained, formForStreamsHasNoBuckets) {
    const TypeParam c(TypeParam::type());
    EXPECT_EQ(0u, c.getNumBuckets());
    EXPECT_EQ(0u, c.length());
    EXPECT_EQ(0u, c.iters.length());
}

// Adding.

TYPED_TEST(fxChained, addCopiesIntoABlock) {
    TypeParam c(5);
    const auto* b = c.put(7);
    EXPECT_EQ(TypeParam::added({7}), c.taken());
    ASSERT_NE(nullptr, b);
    EXPECT_EQ(7, c.numberIn(b));
    EXPECT_EQ(nullptr, b->next);
    EXPECT_EQ(b, c.buckets[2]);
    EXPECT_EQ(1u, c.length());
}

TYPED_TEST(fxChained, newEntriesGoToTheFrontOfTheirChain) {
    TypeParam c(5);
    for (int key : {2, 7, 3, 12})
        EXPECT_EQ(c.put(key), c.buckets[static_cast<unsigned int>(key) % 5]);
    EXPECT_EQ("2: 12 7 2 3: 3", chains(c));
    EXPECT_EQ(4u, c.length());
}

TYPED_TEST(fxChained, bucketCountNeverChanges) {
    TypeParam c(3);
    for (int key = 0; key < 1000; ++key)
        c.put(key);
    EXPECT_EQ(3u, c.getNumBuckets());
    EXPECT_EQ(1000u, c.length());
    for (int key = 0; key < 1000; ++key)
        ASSERT_TRUE(c.has(key));
    EXPECT_FALSE(c.has(1000));
}

TYPED_TEST(fxChained, lookUpStopsAtTheFirstEqualKeyOfTheChain) {
    TypeParam c(5);
    for (int key : {2, 7, 12, 3})
        c.put(key);
    c.taken();
    c.noteComparisons = true;
    c.has(7);
    EXPECT_EQ("compare:7,12 compare:7,7", c.taken());
    c.has(17);
    EXPECT_EQ("compare:17,12 compare:17,7 compare:17,2", c.taken());
    c.has(4);
    EXPECT_EQ("", c.taken());
}

// Without buckets, as made for reading or read so.

TYPED_TEST(fxChained, withoutBucketsNothingIsFound) {
    TypeParam made(TypeParam::type()), read(TypeParam::type());
    RecordingTranscriber t(RecordingTranscriber::reader, TypeParam::head(0, 4, 0));
    ASSERT_EQ(1, read.doxdr(t));
    for (TypeParam* c : {&made, &read}) {
        EXPECT_EQ(0u, c->getNumBuckets());
        EXPECT_FALSE(c->has(3));
        c->drop(3);
        c->cleanup();
        typename TypeParam::BaseIter iter(*c);
        EXPECT_EQ(nullptr, iter.getKey());
        EXPECT_EQ(0u, c->length());
    }
}

TYPED_TEST(fxChained, withoutBucketsItCanBeWrittenAndCopied) {
    TypeParam c(TypeParam::type());
    c.setSizes(4);
    RecordingTranscriber t(RecordingTranscriber::writer);
    EXPECT_EQ(1, c.doxdr(t));
    EXPECT_EQ(TypeParam::head(0, 4, 0), t.bytes);
    const TypeParam copy(c);
    EXPECT_EQ(0u, copy.getNumBuckets());
}

TYPED_TEST(fxChainedDeathTest, addingWithoutBucketsIsFatal) {
    TypeParam c(TypeParam::type());
    const std::string message = "^" + std::string(c.className()) + ": no buckets\n$";
    EXPECT_EXIT(c.put(33), testing::KilledBySignal(SIGABRT), message);
}

// The default hash.

TYPED_TEST(fxChained, defaultHashIsTheExclusiveOrOfTheWords) {
    const unsigned char key[12] = {1, 2, 3, 4, 0x10, 0x20, 0x30, 0x40, 0xFF, 0xFF, 0xFF, 0xFF};
    std::uint32_t words[3];
    std::memcpy(words, key, sizeof words);
    const struct {
        unsigned int keySize;
        std::uint32_t hash;
    } cases[] = {{0, 0},
                 {1, 0},
                 {3, 0},
                 {4, words[0]},
                 {5, words[0]},
                 {7, words[0]},
                 {8, words[0] ^ words[1]},
                 {11, words[0] ^ words[1]},
                 {12, words[0] ^ words[1] ^ words[2]}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.keySize);
        EXPECT_EQ(c.hash, typename TypeParam::Plain(c.keySize).hashKey(key));
    }
}

TYPED_TEST(fxChained, defaultHashReadsUnalignedKeys) {
    unsigned char bytes[9] = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    std::uint32_t words[2];
    std::memcpy(words, bytes + 1, sizeof words);
    EXPECT_EQ(words[0] ^ words[1], typename TypeParam::Plain(8).hashKey(bytes + 1));
}

// Removing.

TYPED_TEST(fxChained, removeEndsTheEntry) {
    TypeParam c(5);
    for (int key : {2, 7, 12})
        c.put(key);
    c.taken();
    c.drop(7);
    EXPECT_EQ(TypeParam::ended({7}), c.taken());
    EXPECT_EQ("2: 12 2", chains(c));
    EXPECT_EQ(2u, c.length());
    c.drop(12);
    EXPECT_EQ("2: 2", chains(c));
    c.drop(2);
    EXPECT_EQ("", chains(c));
    EXPECT_EQ(0u, c.length());
    EXPECT_EQ(0, c.keys);
}

TYPED_TEST(fxChained, removeOfAnAbsentKeyDoesNothing) {
    TypeParam c(5);
    c.drop(7);
    c.put(2);
    c.taken();
    c.drop(7);
    EXPECT_EQ("", c.taken());
    EXPECT_EQ("2: 2", chains(c));
    EXPECT_EQ(1u, c.length());
}

// Unlinked first, iterators moved and the count lowered last.
TYPED_TEST(fxChained, removeUnlinksTheEntryBeforeEndingIt) {
    TypeParam c(5);
    c.put(7);
    const typename TypeParam::BaseIter iter(c);
    static const typename TypeParam::BaseIter* watched;
    static bool seen, linked, moved;
    static unsigned int length;
    watched = &iter;
    seen = false;
    c.onDestroyKey = [](const auto& container) {
        seen = true;
        linked = container.buckets[2] != nullptr;
        moved = watched->getKey() == nullptr;
        length = container.length();
    };
    c.drop(7);
    EXPECT_TRUE(seen);
    EXPECT_FALSE(linked);
    EXPECT_FALSE(moved);
    EXPECT_EQ(1u, length);
    EXPECT_EQ(nullptr, iter.getKey());
}

// Cleaning up.

TYPED_TEST(fxChained, cleanupEndsEveryEntry) {
    TypeParam c(5);
    for (int key : {2, 7, 3})
        c.put(key);
    c.taken();
    c.cleanup();
    EXPECT_EQ(TypeParam::ended({7, 2, 3}), c.taken());
    EXPECT_EQ("", chains(c));
    EXPECT_EQ(5u, c.getNumBuckets());
    EXPECT_EQ(0, c.keys);
    EXPECT_FALSE(c.has(7));
}

TYPED_TEST(fxChained, canBeUsedAfterCleanup) {
    TypeParam c(5);
    c.put(2);
    c.cleanup();
    EXPECT_FALSE(c.has(2));
    c.put(7);
    EXPECT_EQ("2: 7", chains(c));
    EXPECT_TRUE(c.has(7));
    c.cleanup();
    c.cleanup();
    EXPECT_EQ("", chains(c));
}

TYPED_TEST(fxChained, destructorOfTheSubclassEndsEveryEntry) {
    static int ended;
    ended = 0;
    {
        TypeParam c;
        for (int key = 0; key < 40; ++key)
            c.put(key);
        c.onDestroyKey = [](const auto&) { ++ended; };
    }
    EXPECT_EQ(40, ended);
}

// Objects.

TYPED_TEST(fxChained, deliberateXdrMakesTheEmbeddedCallWithTheGenericRecord) {
    using Base = typename TypeParam::Base;
    for (auto direction : {RecordingTranscriber::writer, RecordingTranscriber::reader}) {
        TypeParam c;
        c.put(1);
        RecordingTranscriber t(direction);
        EXPECT_EQ(1, static_cast<fxXDRObj&>(c).xdr(t));
        EXPECT_EQ(1, Base::xdr(&c, t));
        EXPECT_EQ(1, TypeParam::type().xdr(&c, t));
        ASSERT_EQ("embedded:0 embedded:0 embedded:0", t.log());
        for (const TranscriberCall& call : t.calls) {
            EXPECT_EQ(&fxXDRObj_type, call.type);
            EXPECT_EQ(&c, call.previous);
            EXPECT_EQ(&c, call.address);
        }
        t.success = 4;
        EXPECT_EQ(1, static_cast<fxXDRObj&>(c).xdr(t));
        t.success = 0;
        EXPECT_EQ(0, static_cast<fxXDRObj&>(c).xdr(t));
        EXPECT_EQ(0, Base::xdr(&c, t));
        EXPECT_EQ("1: 1", chains(c));
    }
}

TYPED_TEST(fxChained, staticXdrDoesNotReachTheXdrOfASubclass) {
    class Refusing : public TypeParam {
    public:
        unsigned char xdr(fxTranscriber&) override { return 0; }
    } c;
    RecordingTranscriber t(RecordingTranscriber::writer);
    EXPECT_EQ(1, TypeParam::Base::xdr(static_cast<typename TypeParam::Base*>(&c), t));
    EXPECT_EQ("embedded:0", t.log());
}
