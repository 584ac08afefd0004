#include "kelvofxds/containers/fxDictionary.h"

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "tests/support/destructors.h"
#include "tests/support/recordingTranscriber.h"
#include "tests/support/testDictionary.h"
#include "tests/support/vtable.h"

struct fxDictionaryLayout {
    static_assert(sizeof(fxDictionary) == 68, "hosts embed dictionaries by value");
    static_assert(sizeof(fxDictBuckets) == 24 && sizeof(fxDictIters) == 24, "kinds of fxArray");
    static_assert(sizeof(fxDictBucket) == 8, "two pointers");
    static_assert(offsetof(fxDictBucket, kvmem) == 0 && offsetof(fxDictBucket, next) == 4,
                  "fields in order");
    static_assert(sizeof(fxDictIter) == 16, "four words");
    static_assert(offsetof(fxDictIter, dict) == 0, "fields in order");
    static_assert(offsetof(fxDictIter, bucketIndex) == 4, "fields in order");
    static_assert(offsetof(fxDictIter, flags) == 8, "fields in order");
    static_assert(offsetof(fxDictIter, bucket) == 12, "fields in order");
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"  // the class has a table; g++ defines this
    static_assert(offsetof(fxDictionary, numItems) == 8, "fields in order");
    static_assert(offsetof(fxDictionary, keySize) == 12, "fields in order");
    static_assert(offsetof(fxDictionary, valueSize) == 16, "fields in order");
    static_assert(offsetof(fxDictionary, buckets) == 20, "fields in order");
    static_assert(offsetof(fxDictionary, iters) == 44, "fields in order");
#pragma GCC diagnostic pop
    static_assert(fxDictIter::advanced == 1, "bit 0 of the flags");
};
static_assert(std::is_base_of<fxXDRObj, fxDictionary>::value, "dictionaries can be transcribed");
static_assert(!std::is_polymorphic<fxDictIter>::value, "iterators have no table");

namespace {

// Keys of any size, hashed by the default body; values are ints.
class ByteKeyDictionary : public fxDictionary {
public:
    explicit ByteKeyDictionary(unsigned int keyBytes) : fxDictionary(keyBytes, sizeof(int), 0) {}
    ~ByteKeyDictionary() override { cleanup(); }
    const char* className() const override { return "ByteKeyDictionary"; }
    unsigned int hashKey(const void* key) const override { return fxDictionary::hashKey(key); }
    int compareKeys(const void* a, const void* b) const override {
        return std::memcmp(a, b, keySize);
    }
    void copyKey(const void* from, void* to) const override { std::memcpy(to, from, keySize); }
    void copyValue(const void* from, void* to) const override {
        std::memcpy(to, from, sizeof(int));
    }
    void createValue(void* value) const override { std::memset(value, 0, sizeof(int)); }
    unsigned char xdrKey(fxTranscriber&, void*) override { return 0; }
    unsigned char xdrValue(fxTranscriber&, void*) override { return 0; }
    using fxDictionary::operator=;

    void add(const void* key, int value) { addInternal(key, &value); }
};

// All that fxDictionary leaves to subclasses, but for the hash.
class WithoutHash : public fxDictionary {
public:
    WithoutHash() : fxDictionary(4, 4, 0) {}
    const char* className() const override { return ""; }
    int compareKeys(const void*, const void*) const override { return 0; }
    void copyKey(const void*, void*) const override {}
    void copyValue(const void*, void*) const override {}
    void createValue(void*) const override {}
    unsigned char xdrKey(fxTranscriber&, void*) override { return 0; }
    unsigned char xdrValue(fxTranscriber&, void*) override { return 0; }
};

}  // namespace

// Shape.

TEST(fxDictionary, hashingIsLeftToSubclassesAlthoughItHasABody) {
    EXPECT_TRUE(std::is_abstract<WithoutHash>::value);
    EXPECT_FALSE(std::is_abstract<ByteKeyDictionary>::value);
}

TEST(fxDictionary, virtualOperationsHaveTheirWords) {
    EXPECT_EQ(2u, vtableWord(&fxDictionary::className));
    EXPECT_EQ(3u, vtableWord(static_cast<unsigned char (fxDictionary::*)(fxTranscriber&)>(
                      &fxDictionary::xdr)));
    EXPECT_EQ(4u, vtableWord(&fxDictionary::getTypeObj));
    EXPECT_EQ(5u, vtableWord(&fxDictionary::xdrFail));
    EXPECT_EQ(6u, vtableWord(&fxDictionary::xdrSuccess));
    EXPECT_EQ(7u, vtableWord(&fxDictionary::addInternal));
    EXPECT_EQ(8u, vtableWord(&fxDictionary::hashKey));
    EXPECT_EQ(9u, vtableWord(&fxDictionary::compareKeys));
    EXPECT_EQ(10u, vtableWord(&fxDictionary::copyKey));
    EXPECT_EQ(11u, vtableWord(&fxDictionary::destroyKey));
    EXPECT_EQ(12u, vtableWord(&fxDictionary::copyValue));
    EXPECT_EQ(13u, vtableWord(&fxDictionary::destroyValue));
    EXPECT_EQ(14u, vtableWord(&fxDictionary::createValue));
    EXPECT_EQ(15u, vtableWord(&fxDictionary::xdrKey));
    EXPECT_EQ(16u, vtableWord(&fxDictionary::xdrValue));
}

TEST(fxDictionary, destructorsAreWords0And1OfTheTable) {
    expectDestructorsAtWords0And1<TestDictionary>(3u);
}

TEST(fxDictionary, typeIsFxDictionaryType) {
    EXPECT_EQ(&fxDictionary_type, &TestDictionary().getTypeObj());
    EXPECT_STREQ("fxDictionary", fxDictionary_type.name);
}

// Construction.

TEST(fxDictionary, zeroBucketsStandsFor31) {
    EXPECT_EQ(31u, TestDictionary(0).getNumBuckets());
    EXPECT_EQ(1u, TestDictionary(1).getNumBuckets());
    EXPECT_EQ(1000u, TestDictionary(1000).getNumBuckets());
}

TEST(fxDictionary, newDictionaryIsEmpty) {
    const TestDictionary d(5);
    EXPECT_EQ(0u, d.length());
    EXPECT_EQ(0u, d.numItems);
    EXPECT_EQ(4u, d.keySize);
    EXPECT_EQ(4u, d.valueSize);
    EXPECT_EQ(0, d.count);
    EXPECT_EQ("", d.contents());
    EXPECT_EQ(20u, d.buckets.getLen());
    EXPECT_EQ(0u, d.iters.length());
    EXPECT_EQ(nullptr, d.at(1));
}

TEST(fxDictionary, formForStreamsHasNoBuckets) {
    const TestDictionary d(fxDictionary_type);
    EXPECT_EQ(0u, d.getNumBuckets());
    EXPECT_EQ(0u, d.length());
    EXPECT_EQ(0u, d.iters.length());
}

// Adding.

TEST(fxDictionary, addCopiesKeyAndValueIntoOneBlock) {
    TestDictionary d(5);
    const fxDictBucket* b = d.add(7, 70);
    EXPECT_EQ("copyKey:7 copyValue:70", d.taken());
    ASSERT_NE(nullptr, b);
    EXPECT_EQ(7, TestDictionary::number(b->kvmem));
    EXPECT_EQ(70, TestDictionary::number(static_cast<char*>(b->kvmem) + 4));
    EXPECT_EQ(nullptr, b->next);
    EXPECT_EQ(b, d.buckets[2]);
    EXPECT_EQ(1u, d.length());
}

TEST(fxDictionary, newEntriesGoToTheFrontOfTheirChain) {
    TestDictionary d(5);
    for (int key : {2, 7, 3, 12})
        d.add(key, 10 * key);
    EXPECT_EQ("2: 12=120 7=70 2=20 3: 3=30", d.contents());
    EXPECT_EQ(4u, d.length());
}

TEST(fxDictionary, bucketCountNeverChanges) {
    TestDictionary d(3);
    for (int key = 0; key < 1000; ++key)
        d.add(key, key);
    EXPECT_EQ(3u, d.getNumBuckets());
    EXPECT_EQ(1000u, d.length());
    for (int key = 0; key < 1000; ++key) {
        ASSERT_NE(nullptr, d.at(key));
        EXPECT_EQ(key, *d.at(key));
    }
}

TEST(fxDictionary, addingAKnownKeyReplacesTheValueAndKeepsTheKey) {
    TestDictionary d(5);
    const fxDictBucket* first = d.add(7, 70);
    d.add(2, 20);
    const void *block = first->kvmem, *key = *static_cast<int**>(first->kvmem);
    d.taken();
    EXPECT_EQ(first, d.add(7, 71));
    EXPECT_EQ("destroyValue:70 copyValue:71", d.taken());
    EXPECT_EQ(block, first->kvmem);
    EXPECT_EQ(key, *static_cast<int**>(first->kvmem));
    EXPECT_EQ("2: 2=20 7=71", d.contents());
    EXPECT_EQ(2u, d.length());
}

TEST(fxDictionary, addingAnEntrysOwnValueKeepsIt) {
    TestDictionary d(5);
    d.add(7, 70);
    d.taken();
    const int key = 7;
    const int* k = &key;
    void* value = d.find(&k);
    EXPECT_EQ(d.entry(7), d.addInternal(&k, value));
    EXPECT_EQ(70, *d.at(7));
    EXPECT_EQ(1u, d.length());
    EXPECT_EQ(1, d.values);
}

TEST(fxDictionary, lookUpStopsAtTheFirstEqualKeyOfTheChain) {
    TestDictionary d(5);
    for (int key : {2, 7, 12, 3})
        d.add(key, key);
    d.taken();
    d.noteComparisons = true;
    d.at(7);
    EXPECT_EQ("compare:7,12 compare:7,7", d.taken());
    d.at(17);
    EXPECT_EQ("compare:17,12 compare:17,7 compare:17,2", d.taken());
    d.at(4);
    EXPECT_EQ("", d.taken());
}

// The default hash.

TEST(fxDictionary, defaultHashIsTheExclusiveOrOfTheWords) {
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
        EXPECT_EQ(c.hash, ByteKeyDictionary(c.keySize).hashKey(key));
    }
}

TEST(fxDictionary, defaultHashReadsUnalignedKeys) {
    unsigned char bytes[9] = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    std::uint32_t words[2];
    std::memcpy(words, bytes + 1, sizeof words);
    EXPECT_EQ(words[0] ^ words[1], ByteKeyDictionary(8).hashKey(bytes + 1));
}

// Finding.

TEST(fxDictionary, findGivesTheValuesAddressAndTheEntry) {
    TestDictionary d(5);
    d.add(2, 20);
    const fxDictBucket* b = d.add(7, 70);
    const int key = 7, absent = 12;
    const int *k = &key, *noKey = &absent;
    void* found = nullptr;
    EXPECT_EQ(static_cast<char*>(b->kvmem) + 4, d.find(&k, &found));
    EXPECT_EQ(b, found);
    EXPECT_EQ(static_cast<char*>(b->kvmem) + 4, d.find(&k, nullptr));
    EXPECT_EQ(nullptr, d.find(&noKey, &found));
    EXPECT_EQ(nullptr, found);
    EXPECT_EQ(nullptr, d.find(&noKey));
    EXPECT_EQ(2u, d.length());
}

TEST(fxDictionary, findCreateAddsADefaultValueAtTheFront) {
    TestDictionary d(5);
    d.add(2, 20);
    d.taken();
    const int key = 7;
    const int* k = &key;
    void* value = d.findCreate(&k);
    EXPECT_EQ("copyKey:7 createValue:-1", d.taken());
    EXPECT_EQ(d.valueOf(d.entry(7)), value);
    EXPECT_EQ("2: 7=-1 2=20", d.contents());
    EXPECT_EQ(2u, d.length());
}

TEST(fxDictionary, findCreateFindsAKnownKey) {
    TestDictionary d(5);
    d.add(7, 70);
    d.taken();
    const int key = 7;
    const int* k = &key;
    EXPECT_EQ(d.find(&k), d.findCreate(&k));
    EXPECT_EQ("", d.taken());
    EXPECT_EQ(1u, d.length());
}

// Removing.

TEST(fxDictionary, removeEndsKeyThenValue) {
    TestDictionary d(5);
    for (int key : {2, 7, 12})
        d.add(key, 10 * key);
    d.taken();
    d.drop(7);
    EXPECT_EQ("destroyKey:7 destroyValue:70", d.taken());
    EXPECT_EQ("2: 12=120 2=20", d.contents());
    EXPECT_EQ(2u, d.length());
    d.drop(12);
    EXPECT_EQ("2: 2=20", d.contents());
    d.drop(2);
    EXPECT_EQ("", d.contents());
    EXPECT_EQ(0u, d.length());
    EXPECT_EQ(0, d.keys + d.values);
}

TEST(fxDictionary, removeOfAnAbsentKeyDoesNothing) {
    TestDictionary d(5);
    d.drop(7);
    d.add(2, 20);
    d.taken();
    d.drop(7);
    EXPECT_EQ("", d.taken());
    EXPECT_EQ("2: 2=20", d.contents());
    EXPECT_EQ(1u, d.length());
}

// Unlinked first, iterators moved and the count lowered last.
TEST(fxDictionary, removeUnlinksTheEntryBeforeEndingIt) {
    TestDictionary d(5);
    d.add(7, 70);
    const fxDictIter iter(d);
    static const fxDictIter* watched;
    static bool seen, linked, moved;
    static unsigned int length;
    watched = &iter;
    seen = false;
    d.onDestroyKey = [](const TestDictionary& dictionary) {
        seen = true;
        linked = dictionary.buckets[2] != nullptr;
        moved = watched->getKey() == nullptr;
        length = dictionary.length();
    };
    d.drop(7);
    EXPECT_TRUE(seen);
    EXPECT_FALSE(linked);
    EXPECT_FALSE(moved);
    EXPECT_EQ(1u, length);
    EXPECT_EQ(nullptr, iter.getKey());
}

TEST(fxDictionary, cutGivesTheValueToTheCaller) {
    TestDictionary d(5);
    d.add(2, 20);
    const fxDictBucket* b = d.add(7, 70);
    int* owned = *static_cast<int**>(d.valueOf(b));
    d.taken();
    const int key = 7;
    const int* k = &key;
    void* block = d.cut(&k);
    EXPECT_EQ("destroyKey:7", d.taken());
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(owned, *static_cast<int**>(block));
    EXPECT_EQ(70, *owned);
    EXPECT_EQ("2: 2=20", d.contents());
    EXPECT_EQ(1u, d.length());
    delete owned;
    std::free(block);
    EXPECT_EQ(nullptr, d.cut(&k));
    EXPECT_EQ(1u, d.length());
}

// Cleaning up.

TEST(fxDictionary, cleanupEndsEveryEntry) {
    TestDictionary d(5);
    for (int key : {2, 7, 3})
        d.add(key, 10 * key);
    d.taken();
    d.cleanup();
    EXPECT_EQ(
        "destroyKey:7 destroyValue:70 destroyKey:2 destroyValue:20 "
        "destroyKey:3 destroyValue:30",
        d.taken());
    EXPECT_EQ("", d.contents());
    EXPECT_EQ(5u, d.getNumBuckets());
    EXPECT_EQ(0, d.keys + d.values);
    EXPECT_EQ(nullptr, d.at(7));
}

TEST(fxDictionary, deliberateCleanupLeavesTheNumberOfItems) {
    TestDictionary d(5);
    d.add(2, 20);
    d.add(7, 70);
    d.cleanup();
    EXPECT_EQ(2u, d.length());
    d.cleanup();
    EXPECT_EQ(2u, d.length());
}

TEST(fxDictionary, dictionaryCanBeUsedAfterCleanup) {
    TestDictionary d(5);
    d.add(2, 20);
    d.cleanup();
    d.add(7, 70);
    EXPECT_EQ("2: 7=70", d.contents());
    EXPECT_EQ(70, *d.at(7));
}

TEST(fxDictionary, destructorOfTheSubclassEndsEveryEntry) {
    static int ended;
    ended = 0;
    {
        TestDictionary d;
        for (int key = 0; key < 40; ++key)
            d.add(key, key);
        d.onDestroyKey = [](const TestDictionary&) { ++ended; };
    }
    EXPECT_EQ(40, ended);
}

// Copying and assigning.

TEST(fxDictionary, emptyDictionaryCanBeCopied) {
    TestDictionary original(7);
    original.count = 2;
    const TestDictionary copy(original);
    EXPECT_EQ(7u, copy.getNumBuckets());
    EXPECT_EQ(4u, copy.keySize);
    EXPECT_EQ(4u, copy.valueSize);
    EXPECT_EQ(0u, copy.length());
    EXPECT_EQ(0, copy.count);
    EXPECT_EQ("", copy.contents());
}

TEST(fxDictionary, chainsDecideWhetherADictionaryIsEmpty) {
    TestDictionary original(7);
    original.add(1, 10);
    original.cleanup();
    ASSERT_EQ(1u, original.length());
    const TestDictionary copy(original);
    EXPECT_EQ(0u, copy.length());
    EXPECT_EQ(7u, copy.getNumBuckets());
}

TEST(fxDictionaryDeathTest, deliberateCopyingAnEntryIsAPureVirtualCall) {
    TestDictionary d;
    d.add(1, 10);
    EXPECT_EXIT(const TestDictionary copy(d), testing::KilledBySignal(SIGABRT),
                "^pure virtual method called\n");

    fxStrStrDictionary strings;
    strings.add("key", "value");
    EXPECT_EXIT(const fxStrStrDictionary copy(strings), testing::KilledBySignal(SIGABRT),
                "^pure virtual method called\n");
}

TEST(fxDictionary, deliberateAssignmentMerges) {
    TestDictionary target(5), source(3);
    target.add(2, 20);
    target.add(7, 70);
    source.add(7, 71);
    source.add(4, 40);
    source.add(1, 10);
    target.taken();
    target = source;
    // The source's chains are 1: 1 4 7, so 1 and 4 are new here and 7 is not.
    EXPECT_EQ("copyKey:1 copyValue:10 copyKey:4 copyValue:40 destroyValue:70 copyValue:71",
              target.taken());
    EXPECT_EQ("1: 1=10 2: 7=71 2=20 4: 4=40", target.contents());
    EXPECT_EQ(4u, target.length());
    EXPECT_EQ("1: 1=10 4=40 7=71", source.contents());
    EXPECT_EQ(3u, source.length());
}

TEST(fxDictionary, assignmentAddsThroughTheVirtualOperation) {
    class Adding : public TestDictionary {
    public:
        fxDictBucket* addInternal(const void* key, const void* value) override {
            ++added;
            return TestDictionary::addInternal(key, value);
        }
        int added = 0;
    } target;
    TestDictionary source;
    source.add(1, 10);
    source.add(2, 20);
    static_cast<fxDictionary&>(target) = source;
    EXPECT_EQ(2, target.added);
}

TEST(fxDictionary, assignmentToItselfDoesNothing) {
    TestDictionary d;
    d.add(1, 10);
    d.taken();
    const fxDictionary& self = d;
    static_cast<fxDictionary&>(d) = self;
    EXPECT_EQ("", d.taken());
    EXPECT_EQ(1u, d.length());
}

TEST(fxDictionary, assignmentFromAnEmptyDictionaryKeepsEverything) {
    TestDictionary target, empty;
    target.add(1, 10);
    target = empty;
    EXPECT_EQ("1: 1=10", target.contents());
}

// The source's entry is an 8-byte key and a value; this dictionary's keys have
// 4 bytes, so it takes the second half of that key for the value.
TEST(fxDictionary, deliberateAssignmentReadsValuesAtItsOwnKeySize) {
    ByteKeyDictionary target(4), source(8);
    const int key[2] = {7, 99};
    source.add(key, 1);
    static_cast<fxDictionary&>(target) = source;
    const void* value = target.find(key);
    ASSERT_NE(nullptr, value);
    EXPECT_EQ(99, *static_cast<const int*>(value));
}

// Objects.

TEST(fxDictionary, deliberateXdrMakesTheEmbeddedCallWithTheGenericRecord) {
    for (auto direction : {RecordingTranscriber::writer, RecordingTranscriber::reader}) {
        TestDictionary d;
        d.add(1, 10);
        RecordingTranscriber t(direction);
        EXPECT_EQ(1, static_cast<fxXDRObj&>(d).xdr(t));
        EXPECT_EQ(1, fxDictionary::xdr(&d, t));
        ASSERT_EQ("embedded:0 embedded:0", t.log());
        for (const TranscriberCall& call : t.calls) {
            EXPECT_EQ(&fxXDRObj_type, call.type);
            EXPECT_EQ(&d, call.previous);
            EXPECT_EQ(&d, call.address);
        }
        t.success = 4;
        EXPECT_EQ(1, static_cast<fxXDRObj&>(d).xdr(t));
        t.success = 0;
        EXPECT_EQ(0, static_cast<fxXDRObj&>(d).xdr(t));
        EXPECT_EQ(0, fxDictionary::xdr(&d, t));
    }
}

TEST(fxDictionary, destroyingKeysAndValuesDoesNothingByDefault) {
    const ByteKeyDictionary d(4);
    int bytes[1] = {7};
    d.destroyKey(bytes);
    d.destroyValue(bytes);
    EXPECT_EQ(7, bytes[0]);
}
