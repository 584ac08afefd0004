#include "kelvofxds/containers/fxSet.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxTypeObj.h"
#include "tests/support/destructors.h"
#include "tests/support/recordingTranscriber.h"
#include "tests/support/testSet.h"
#include "tests/support/vtable.h"

struct fxSetLayout {
    static_assert(sizeof(fxSet) == 64, "hosts embed sets by value");
    static_assert(sizeof(fxSetBuckets) == 24 && sizeof(fxSetIters) == 24, "kinds of fxArray");
    static_assert(sizeof(fxTmpSet) == 64, "adds no storage");
    static_assert(sizeof(fxSetBucket) == 8, "two pointers");
    static_assert(offsetof(fxSetBucket, key) == 0 && offsetof(fxSetBucket, next) == 4,
                  "fields in order");
    static_assert(sizeof(fxSetIter) == 20, "a table and four words");
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"  // the classes have tables; g++ defines this
    static_assert(offsetof(fxSet, buckets) == 8, "fields in order");
    static_assert(offsetof(fxSet, numItems) == 32, "fields in order");
    static_assert(offsetof(fxSet, keySize) == 36, "fields in order");
    static_assert(offsetof(fxSet, iters) == 40, "fields in order");
    static_assert(offsetof(fxSetIter, set) == 4, "fields in order");
    static_assert(offsetof(fxSetIter, bucketIndex) == 8, "fields in order");
    static_assert(offsetof(fxSetIter, flags) == 12, "fields in order");
    static_assert(offsetof(fxSetIter, bucket) == 16, "fields in order");
#pragma GCC diagnostic pop
    static_assert(fxSetIter::advanced == 1, "bit 0 of the flags");
};
static_assert(std::is_base_of<fxXDRObj, fxSet>::value, "sets can be transcribed");
static_assert(std::is_base_of<fxSet, fxTmpSet>::value, "a kind of fxSet");
static_assert(std::is_base_of<fxArray, fxSetBuckets>::value, "a kind of fxArray");
static_assert(std::is_base_of<fxArray, fxSetIters>::value, "a kind of fxArray");
static_assert(std::is_polymorphic<fxSetIter>::value, "iterators have a table");

// Shape.

TEST(fxSet, onlyTheTranscriptionOfKeysIsLeftToSubclasses) {
    EXPECT_TRUE(std::is_abstract<fxSet>::value);
    EXPECT_FALSE(std::is_abstract<RecordSet>::value);
    EXPECT_FALSE(std::is_abstract<fxTmpSet>::value);
}

TEST(fxSet, virtualOperationsHaveTheirWords) {
    EXPECT_EQ(2u, vtableWord(&fxSet::className));
    EXPECT_EQ(3u, vtableWord(static_cast<unsigned char (fxSet::*)(fxTranscriber&)>(&fxSet::xdr)));
    EXPECT_EQ(4u, vtableWord(&fxSet::getTypeObj));
    EXPECT_EQ(5u, vtableWord(&fxSet::xdrFail));
    EXPECT_EQ(6u, vtableWord(&fxSet::xdrSuccess));
    EXPECT_EQ(7u, vtableWord(&fxSet::hashKey));
    EXPECT_EQ(8u, vtableWord(&fxSet::compareKeys));
    EXPECT_EQ(9u, vtableWord(&fxSet::copyKey));
    EXPECT_EQ(10u, vtableWord(&fxSet::destroyKey));
    EXPECT_EQ(11u, vtableWord(&fxSet::xdrKey));
}

TEST(fxSet, theOtherOperationsAreNotVirtual) {
    EXPECT_TRUE(isVirtual(&fxSet::xdrKey));
    EXPECT_FALSE(isVirtual(&fxSet::add));
    EXPECT_FALSE(isVirtual(&fxSet::remove));
    EXPECT_FALSE(isVirtual(&fxSet::find));
    EXPECT_FALSE(isVirtual(&fxSet::contains));
    EXPECT_FALSE(isVirtual(&fxSet::cleanup));
    EXPECT_FALSE(isVirtual(&fxSet::doxdr));
    EXPECT_FALSE(isVirtual(&fxSet::addIter));
    EXPECT_FALSE(isVirtual(&fxSet::removeIter));
    EXPECT_FALSE(isVirtual(&fxSet::invalidateIters));
    EXPECT_FALSE(isVirtual(&fxSetIter::getKey));
    EXPECT_FALSE(isVirtual(&fxSetIter::operator++));
    EXPECT_FALSE(isVirtual(&fxSetIter::advanceToValid));
}

TEST(fxSet, destructorsAreWords0And1OfTheTable) {
    expectDestructorsAtWords0And1<TestSet>(3u);
    expectDestructorsAtWords0And1<fxSetIter>();
}

TEST(fxSet, typeIsFxSetType) {
    EXPECT_EQ(&fxSet_type, &TestSet().getTypeObj());
    EXPECT_STREQ("fxSet", fxSet_type.name);
    EXPECT_EQ(1u, fxSet_type.version);
    EXPECT_EQ(nullptr, fxSet_type.create);
    EXPECT_EQ(nullptr, fxSet_type.destroy);
    EXPECT_EQ(&fxSet_type, fxTypeObj::findType("fxSet"));
}

TEST(fxSet, hasNoClassNameOfItsOwn) {
    const TestSet empty;
    EXPECT_STREQ("fxXDRObj", empty.className());
    EXPECT_STREQ("fxXDRObj", fxTmpSet(empty).className());
}

// The tables.

TEST(fxSet, newBucketsAndPlacesForIteratorsAreZero) {
    fxSetBuckets buckets(3);
    buckets.resize(1000);
    fxSetIters iters(3);
    iters.resize(1000);
    for (unsigned int i = 0; i < 1000; ++i) {
        ASSERT_EQ(nullptr, buckets[i]);
        ASSERT_EQ(nullptr, iters[i]);
    }
    EXPECT_EQ(4u, buckets.getElemSize());
    EXPECT_EQ(4u, iters.getElemSize());
    EXPECT_STREQ("ARRAY", buckets.className());
    EXPECT_STREQ("ARRAY", iters.className());
    EXPECT_EQ(&fxArray_type, &buckets.getTypeObj()) << "no record of its own";
}

TEST(fxSet, tablesAreCutAndCopiedAsArraysAre) {
    fxSetBucket a{nullptr, nullptr}, b{nullptr, nullptr};
    fxSetBuckets buckets(3);
    buckets[0] = &a;
    buckets[2] = &b;
    EXPECT_EQ(&b, buckets.tail(1)[0]);
    EXPECT_EQ(&a, buckets.head(1)[0]);
    EXPECT_EQ(nullptr, buckets.extract(1, 2)[0]);
    EXPECT_EQ(&a, buckets.cut(0, 1)[0]);
    EXPECT_EQ(2u, buckets.length());
    const fxSetBuckets copy(buckets);
    EXPECT_EQ(&b, copy[1]);
}

// Construction.

// Adding.

TEST(fxSet, addingAPresentKeyReturnsNullAndChangesNothing) {
    TestSet s(5);
    s.put(7);
    s.put(2);
    const int* own = s.at(7);
    s.taken();
    EXPECT_EQ(nullptr, s.put(7));
    EXPECT_EQ("", s.taken());
    EXPECT_EQ(own, s.at(7));
    EXPECT_EQ("2: 2 7", s.contents());
    EXPECT_EQ(2u, s.length());
}

// The default operations on keys.

TEST(fxSet, defaultComparisonIsByUnsignedBytesInMemoryOrder) {
    const struct {
        const char *a, *b;
        unsigned int keySize;
        int order;
    } cases[] = {{"abcd", "abcd", 4, 0},
                 {"abcd", "abce", 4, -1},
                 {"abce", "abcd", 4, 1},
                 {"abcd", "abce", 3, 0},
                 {"\x01\xff", "\x02\x01", 2, -1},
                 {"\x80", "\x7f", 1, 1},
                 {"\x7f", "\xff", 1, -1},
                 {"a", "z", 1, -1},
                 {"a", "b", 0, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.a << " and " << c.b << ", " << c.keySize);
        EXPECT_EQ(c.order, RecordSet(c.keySize).compareKeys(c.a, c.b));
    }
}

TEST(fxSet, defaultCopyIsByteForByte) {
    const RecordSet s(3);
    char to[] = "........";
    s.copyKey("abcdef", to);
    EXPECT_STREQ("abc.....", to);
    s.destroyKey(to);
    EXPECT_STREQ("abc.....", to);
}

TEST(fxSet, plainRecordsNeedOnlyTheirTranscription) {
    struct Record {
        std::int32_t a, b;
    };
    RecordSet s(sizeof(Record), 7);
    for (int i = 0; i < 50; ++i) {
        const Record record = {i, 3 * i};
        EXPECT_NE(nullptr, s.add(&record));
        EXPECT_EQ(nullptr, s.add(&record));
    }
    EXPECT_EQ(50u, s.length());
    for (int i = 0; i < 50; ++i) {
        const Record present = {i, 3 * i}, absent = {i, 3 * i + 1};
        EXPECT_EQ(1, s.contains(&present));
        EXPECT_EQ(0, std::memcmp(s.find(&present), &present, sizeof present));
        EXPECT_EQ(0, s.contains(&absent));
        s.remove(&present);
        EXPECT_EQ(0, s.contains(&present));
    }
    EXPECT_EQ(0u, s.length());
}

TEST(fxSet, recordsOfNoBytesAreAllAlike) {
    RecordSet s(0);
    EXPECT_NE(nullptr, s.add("x"));
    EXPECT_EQ(nullptr, s.add("y"));
    EXPECT_EQ(1, s.contains("z"));
}

// Finding.

TEST(fxSet, findGivesTheStoredKey) {
    TestSet s(5);
    s.put(2);
    const fxSetBucket* b = s.put(7);
    const int key = 7, absent = 12;
    const int *k = &key, *noKey = &absent;
    EXPECT_EQ(b->key, s.find(&k));
    EXPECT_EQ(1, s.contains(&k));
    EXPECT_EQ(nullptr, s.find(&noKey));
    EXPECT_EQ(0, s.contains(&noKey));
    EXPECT_EQ(2u, s.length());
}

// Removing.

TEST(fxSet, aKeyMayBeRemovedByItsOwnBlock) {
    TestSet s(5);
    s.put(2);
    s.put(7);
    s.remove(s.entry(7)->key);
    EXPECT_EQ("2: 2", s.contents());
}

namespace {

// How things stand when a key of `watchedSet` is ended.
struct AtTheEnd {
    bool seen, linked, moved;
    unsigned int length;
} atTheEnd;
const fxSetIter* watched;

// Notes it for the key in bucket 2.
void noteTheEnd(TestSet& s, const fxSetIter& iter) {
    watched = &iter;
    atTheEnd = AtTheEnd();
    s.onDestroyKey = [](const TestSet& set) {
        atTheEnd = {true, set.buckets[2] != nullptr, watched->getKey() == nullptr, set.length()};
    };
}

}  // namespace

// Unlinked first, iterators moved and the count lowered last.
TEST(fxSet, everyRemovalUnlinksTheKeyBeforeEndingIt) {
    for (int how : {0, 1, 2, 3}) {
        SCOPED_TRACE(how);
        TestSet s(5), empty(5), same(5);
        s.put(7);
        same.put(7);
        const fxSet& self = s;
        const fxSetIter iter(s);
        noteTheEnd(s, iter);
        if (how == 0)
            s.drop(7);
        else if (how == 1)
            s &= empty;
        else if (how == 2)
            s -= same;
        else
            s -= self;
        EXPECT_TRUE(atTheEnd.seen);
        EXPECT_FALSE(atTheEnd.linked);
        EXPECT_FALSE(atTheEnd.moved);
        EXPECT_EQ(1u, atTheEnd.length);
        EXPECT_EQ(nullptr, iter.getKey());
        EXPECT_EQ(0u, s.length());
    }
}

// Cleaning up.

TEST(fxSet, cleanupEndsEveryKeyAndCountsDown) {
    TestSet s(5);
    for (int key : {2, 7, 3})
        s.put(key);
    s.taken();
    static std::vector<unsigned int> lengths;
    lengths.clear();
    s.onDestroyKey = [](const TestSet& set) { lengths.push_back(set.length()); };
    s.cleanup();
    EXPECT_EQ("destroyKey:7 destroyKey:2 destroyKey:3", s.taken());
    EXPECT_EQ((std::vector<unsigned int>{3, 2, 1}), lengths);
    EXPECT_EQ(0u, s.length());
    EXPECT_EQ(0, s.keys);
    EXPECT_EQ(5u, s.getNumBuckets());
}

// Objects.
