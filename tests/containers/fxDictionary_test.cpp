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

TEST(fxDictionary, typeIsFxDictionaryType) {
    EXPECT_EQ(&fxDictionary_type, &TestDictionary().getTypeObj());
    EXPECT_STREQ("fxDictionary", fxDictionary_type.name);
}

// Construction.

// Adding.

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

// The default hash.

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

TEST(fxDictionary, deliberateCleanupLeavesTheNumberOfItems) {
    TestDictionary d(5);
    d.add(2, 20);
    d.add(7, 70);
    d.cleanup();
    EXPECT_EQ(2u, d.length());
    d.cleanup();
    EXPECT_EQ(2u, d.length());
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

TEST(fxDictionary, destroyingKeysAndValuesDoesNothingByDefault) {
    const ByteKeyDictionary d(4);
    int bytes[1] = {7};
    d.destroyKey(bytes);
    d.destroyValue(bytes);
    EXPECT_EQ(7, bytes[0]);
}
