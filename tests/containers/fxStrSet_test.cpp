#include "kelvofxds/containers/fxStrSet.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/str/fxTempStr.h"
#include "tests/support/destructors.h"
#include "tests/support/dying.h"
#include "tests/support/recordingTranscriber.h"
#include "tests/support/vtable.h"

static_assert(sizeof(fxStrSet) == 64, "adds no storage to fxSet");
static_assert(sizeof(fxStrSetIter) == 20, "adds no storage to fxSetIter");
static_assert(std::is_base_of<fxSet, fxStrSet>::value, "a kind of fxSet");
static_assert(std::is_base_of<fxSetIter, fxStrSetIter>::value, "a kind of fxSetIter");

namespace {

const auto writer = RecordingTranscriber::writer;
const auto reader = RecordingTranscriber::reader;

// Remembers which memory was last read into.
class Watched : public fxStrSet {
public:
    using fxStrSet::fxStrSet;
    unsigned char xdrKey(fxTranscriber& t, void* key) override {
        lastKey = key;
        return fxStrSet::xdrKey(t, key);
    }

    // Frees the entry at which a read failed, which the set does not.
    void freeUnfinishedEntry() {
        if (!lastKey)
            return;
        static_cast<fxStr*>(lastKey)->~fxStr();
        std::free(lastKey);
    }

    std::string contents() const {
        std::string text;
        for (unsigned int i = 0; i < buckets.length(); ++i) {
            if (!buckets[i])
                continue;
            text += (text.empty() ? "" : " ") + std::to_string(i) + ":";
            for (const fxSetBucket* b = buckets[i]; b; b = b->next)
                text += std::string(" ") + static_cast<const fxStr*>(b->key)->c_str();
        }
        return text;
    }

    using fxSet::buckets;
    using fxSet::iters;
    using fxSet::keySize;
    using fxSet::numItems;

    void* lastKey = nullptr;
};

std::string head(unsigned int items, unsigned int keySize, unsigned int numBuckets) {
    RecordingTranscriber t(reader);
    t.give(items).give(keySize).give(numBuckets);
    return t.bytes;
}

std::string entry(const std::string& key, unsigned int bucket) {
    RecordingTranscriber t(reader);
    t.giveStr(key).give(bucket);
    return t.bytes;
}

std::multiset<std::string> texts(fxStrSet& s) {
    std::multiset<std::string> result;
    for (fxStrSetIter iter(s); iter.key(); ++iter)
        result.insert(iter.key()->c_str());
    return result;
}

}  // namespace

// Shape.

TEST(fxStrSet, virtualOperationsKeepTheirWords) {
    EXPECT_EQ(2u, vtableWord(&fxStrSet::className));
    EXPECT_EQ(3u,
              vtableWord(static_cast<unsigned char (fxStrSet::*)(fxTranscriber&)>(&fxStrSet::xdr)));
    EXPECT_EQ(4u, vtableWord(&fxStrSet::getTypeObj));
    EXPECT_EQ(7u, vtableWord(&fxStrSet::hashKey));
    EXPECT_EQ(8u, vtableWord(&fxStrSet::compareKeys));
    EXPECT_EQ(9u, vtableWord(&fxStrSet::copyKey));
    EXPECT_EQ(10u, vtableWord(&fxStrSet::destroyKey));
    EXPECT_EQ(11u, vtableWord(&fxStrSet::xdrKey));
}

TEST(fxStrSet, destructorsAreWords0And1OfTheTable) {
    expectDestructorsAtWords0And1<fxStrSet>(5u);
    expectDestructorsAtWords0And1<fxStrSetIter>();
}

TEST(fxStrSet, hasNoClassNameOfItsOwn) { EXPECT_STREQ("fxXDRObj", fxStrSet().className()); }

TEST(fxStrSet, zeroBucketsStandsFor31) {
    EXPECT_EQ(31u, fxStrSet(0).getNumBuckets());
    EXPECT_EQ(31u, fxStrSet().getNumBuckets());
    EXPECT_EQ(1u, fxStrSet(1).getNumBuckets());
    EXPECT_EQ(997u, fxStrSet(997).getNumBuckets());
    EXPECT_EQ(8u, Watched(5u).keySize);
}

// Keys.

TEST(fxStrSet, keysHashAsStringsDo) {
    const fxStrSet s;
    for (const char* text : {"", "A", "abcd", "abcdef", "abcdefghijkl"}) {
        const fxStr key(text);
        EXPECT_EQ(key.hash(), s.hashKey(&key));
    }
}

// The value itself, not only its sign.
TEST(fxStrSet, comparisonOfKeysIsTheValueOfCompare) {
    const fxStrSet s;
    const fxStr keys[] = {"", "a", "c", "ab", "ad", "\xff", fxStr("a\0x", 3)};
    for (const fxStr& a : keys) {
        for (const fxStr& b : keys)
            EXPECT_EQ(compare(a, b), s.compareKeys(&a, &b)) << a.c_str() << " and " << b.c_str();
    }
}

// Both hash to bucket 4 of 31, and "a\0?" to bucket 8.
TEST(fxStrSet, deliberateKeysAlikeUpToANulInOneBucketAreOneKey) {
    Watched s;
    const fxStr plain("a"), alike("a\0>", 3), apart("a\0?", 3);
    EXPECT_NE(nullptr, s.add(plain));
    EXPECT_EQ(nullptr, s.add(alike));
    EXPECT_EQ(1u, s.length());
    EXPECT_EQ(s.find(plain), s.find(alike));
    EXPECT_EQ(1u, static_cast<fxStr*>(s.buckets[4]->key)->length()) << "the first key stays";

    EXPECT_EQ(0, s.contains(apart));
    EXPECT_NE(nullptr, s.add(apart));
    EXPECT_EQ("4: a 8: a", s.contents());
    s.remove(alike);
    EXPECT_EQ("8: a", s.contents());
}

TEST(fxStrSet, keysAreCopies) {
    fxStrSet s;
    fxStr key("key");
    s.add(key);
    key = "changed";
    EXPECT_EQ(1, s.contains("key"));
    EXPECT_EQ(0, s.contains("changed"));
    EXPECT_NE(&key, s.find("key"));
    EXPECT_STREQ("key", s.find("key")->c_str());
}

TEST(fxStrSet, copyingToNullIsSkipped) {
    const fxStrSet s;
    const fxStr text("text");
    s.copyKey(&text, nullptr);
}

TEST(fxStrSet, copiesAreMadeInRawMemory) {
    const fxStrSet s;
    const fxStr text("text");
    alignas(fxStr) unsigned char key[sizeof(fxStr)];
    std::memset(key, 0xAA, sizeof key);
    s.copyKey(&text, key);
    EXPECT_STREQ("text", reinterpret_cast<fxStr*>(key)->c_str());
    s.destroyKey(key);
}

TEST(fxStrSet, typedFormsAreTheSameOperations) {
    fxStrSet s;
    const fxStr key("key");
    const fxSetBucket* b = s.add(key);
    ASSERT_NE(nullptr, b);
    EXPECT_EQ(nullptr, s.add("key"));
    EXPECT_EQ(b->key, s.find(static_cast<const void*>(&key)));
    EXPECT_EQ(b->key, s.find(key));
    EXPECT_EQ(b->key, s.find("key"));
    EXPECT_EQ(nullptr, s.find("other"));
    EXPECT_EQ(1, s.contains(static_cast<const void*>(&key)));
    EXPECT_EQ(1, s.contains(key));
    EXPECT_EQ(1, s.contains("key"));
    EXPECT_EQ(0, s.contains("other"));
    EXPECT_NE(nullptr, s.add(key | " and more"));
    EXPECT_EQ(1, s.contains("key and more"));
    EXPECT_EQ(2u, s.length());
    s.remove(key);
    s.remove("key and more");
    s.remove("other");
    EXPECT_EQ(0u, s.length());
}

TEST(fxStrSet, manyKeysAreAddedFoundAndRemoved) {
    for (unsigned int numBuckets : {1u, 31u, 211u}) {
        SCOPED_TRACE(numBuckets);
        fxStrSet s(numBuckets);
        for (int i = 0; i < 100; ++i) {
            const fxStr key(i, "key number %d");
            EXPECT_NE(nullptr, s.add(key));
            EXPECT_EQ(nullptr, s.add(key));
            EXPECT_EQ(static_cast<unsigned int>(i) + 1, s.length());
        }
        for (int i = 0; i < 100; i += 2)
            s.remove(fxStr(i, "key number %d"));
        EXPECT_EQ(50u, s.length());
        for (int i = 0; i < 101; ++i)
            EXPECT_EQ(i % 2 && i < 100, s.contains(fxStr(i, "key number %d"))) << i;
        EXPECT_EQ(numBuckets, s.getNumBuckets());
    }
}

// Set algebra.

TEST(fxStrSet, algebraIsThatOfTexts) {
    fxStrSet s(7), other(3);
    for (const char* key : {"a", "b", "c", ""})
        s.add(key);
    for (const char* key : {"c", "d", ""})
        other.add(key);
    fxStrSet both(5);
    both |= s;
    both &= other;
    EXPECT_EQ((std::multiset<std::string>{"", "c"}), texts(both));
    s |= other;
    EXPECT_EQ((std::multiset<std::string>{"", "a", "b", "c", "d"}), texts(s));
    s -= other;
    EXPECT_EQ((std::multiset<std::string>{"a", "b"}), texts(s));
    EXPECT_EQ((std::multiset<std::string>{"", "c", "d"}), texts(other));
    const fxSet& self = s;
    s |= self;
    EXPECT_EQ(2u, s.length());
    s -= self;
    EXPECT_EQ(0u, s.length());
}

// Copying and assigning.

TEST(fxStrSet, copyOfAnEmptySetIsEmpty) {
    const fxStrSet original(7);
    fxStrSet copy(original);
    EXPECT_EQ(0u, copy.getNumBuckets());
    EXPECT_EQ(0u, copy.length());
    EXPECT_EQ(0, copy.contains("key"));
    EXPECT_EQ(nullptr, copy.find("key"));
    copy.remove("key");
    EXPECT_EQ(0u, copy.length());
}

TEST(fxStrSet, copyOfAnEmptySetCanBeWrittenAndReadInto) {
    const fxStrSet original(7);
    fxStrSet copy(original);
    RecordingTranscriber t(writer);
    EXPECT_EQ(1, copy.xdr(t));
    EXPECT_EQ(head(0, 8, 0), t.bytes);
    RecordingTranscriber bytes(reader, head(1, 8, 3) + entry("k", 1));
    EXPECT_EQ(1, copy.xdr(bytes));
    EXPECT_EQ(3u, copy.getNumBuckets());
}

TEST(fxStrSet, assignmentFromAnEmptySetLeavesAnEmptySet) {
    const fxStrSet empty(7);
    fxStrSet target(5);
    target = empty;
    const fxSet& base = empty;
    target = base;
    EXPECT_EQ(5u, target.getNumBuckets());
    target.add("key");
    EXPECT_EQ(1, target.contains("key"));
}

namespace {

void copyAfterwards(const fxStrSet& s) {
    letEndUs(SIGFPE);
    const fxStrSet copy(s);
    std::_Exit(static_cast<int>(copy.length()));
}

}  // namespace

TEST(fxStrSetDeathTest, deliberateCopyingAKeyDividesByZero) {
    fxStrSet s;
    s.add("a key that is on the heap");
    EXPECT_EXIT(copyAfterwards(s), testing::KilledBySignal(SIGFPE), "^$");
}

TEST(fxStrSetDeathTest, assignmentFromANonEmptySetIsFatal) {
    fxStrSet target, source;
    source.add("key");
    EXPECT_EXIT(target = source, testing::KilledBySignal(SIGABRT),
                "^fxSet::operator=: not usable on a non-empty set\n$");
}

// The iterator.

TEST(fxStrSet, iteratorVisitsEachKeyOnce) {
    fxStrSet s;
    std::multiset<std::string> expected;
    for (int i = 0; i < 60; ++i) {
        s.add(fxStr(i, "%d"));
        expected.insert(std::to_string(i));
    }
    EXPECT_EQ(expected, texts(s));
}

TEST(fxStrSet, iteratorStartsOnAReferenceOrAPointer) {
    Watched s;
    s.add("key");
    fxStrSetIter none, byReference(s), byPointer(&s);
    EXPECT_EQ(nullptr, none.key());
    EXPECT_EQ(2u, s.iters.length());
    EXPECT_STREQ("key", byReference.key()->c_str());
    EXPECT_EQ(byReference.getKey(), byPointer.getKey());
    EXPECT_EQ(s.find("key"), byPointer.getKey());
    none = s;
    EXPECT_EQ(byReference.key(), none.key());
    ++none;
    EXPECT_EQ(nullptr, none.key());
    EXPECT_EQ(2u, s.iters.length());
    none = byReference;
    EXPECT_EQ(3u, s.iters.length());
}

TEST(fxStrSet, removingUnderAnIteratorSkipsNothing) {
    fxStrSet s(3);
    for (int i = 0; i < 30; ++i)
        s.add(fxStr(i, "%d"));
    unsigned int visited = 0;
    for (fxStrSetIter iter(s); iter.key(); ++iter) {
        ++visited;
        s.remove(*iter.key());
        EXPECT_EQ(nullptr, iter.key());
    }
    EXPECT_EQ(30u, visited);
    EXPECT_EQ(0u, s.length());
}

TEST(fxStrSet, destructorEndsKeysAndDetachesIterators) {
    fxStrSetIter iter;
    {
        fxStrSet s;
        for (int i = 0; i < 40; ++i)
            s.add(fxStr(i, "key number %d"));
        iter = s;
        EXPECT_NE(nullptr, iter.key());
    }
    EXPECT_EQ(nullptr, iter.key());
    ++iter;
}

// Objects.

TEST(fxStrSet, typeIsItsOwnRecord) {
    EXPECT_EQ(&fxStrSet_type, &fxStrSet().getTypeObj());
    EXPECT_STREQ("SET", fxStrSet_type.name);
    EXPECT_EQ(1u, fxStrSet_type.version);
    EXPECT_EQ(&fxStrSet_type, fxTypeObj::findType("SET"));
}

TEST(fxStrSet, newInstanceHasNoBuckets) {
    void* instance = fxStrSet_type.create(fxStrSet_type);
    ASSERT_NE(nullptr, instance);
    auto* s = static_cast<fxStrSet*>(instance);
    EXPECT_EQ(0, s->count);
    EXPECT_EQ(0u, s->length());
    EXPECT_EQ(0u, s->getNumBuckets());
    EXPECT_EQ(nullptr, s->find("key"));
    fxStrSet_type.destroy(instance);
    fxStrSet_type.destroy(nullptr);
}

TEST(fxStrSet, deleteInstanceUsesTheVirtualDeletingDestructor) {
    using Sample = CountedEnd<fxStrSet>;
    Sample::destroyed = Sample::freed = 0;
    auto* s = new Sample(5u);
    s->add("key");
    fxStrSet::deleteInstance(static_cast<fxStrSet*>(s));
    EXPECT_EQ(1, Sample::destroyed);
    EXPECT_EQ(1, Sample::freed);
}

// Transcription.

TEST(fxStrSet, allThreeFormsOfXdrAreDoxdr) {
    Watched s(7);
    s.add("k");
    for (int form : {0, 1, 2}) {
        SCOPED_TRACE(form);
        RecordingTranscriber t(writer);
        EXPECT_EQ(1, form == 0   ? s.doxdr(t)
                     : form == 1 ? static_cast<fxXDRObj&>(s).xdr(t)
                                 : fxStrSet_type.xdr(&s, t));
        EXPECT_EQ("uint*:1 uint*:1 uint*:1 uint*:1 char**:2 uint*:1", t.log());
        const fxStr key("k");
        EXPECT_EQ(head(1, 8, 7) + entry("k", key.hash() % 7), t.bytes);
        EXPECT_EQ(&s.numItems, t.calls[0].address);
        EXPECT_EQ(&s.keySize, t.calls[1].address);
        EXPECT_EQ(s.lastKey, t.calls[3].address);
        EXPECT_EQ(static_cast<char*>(s.lastKey) + 4, t.calls[4].address);
    }
}

TEST(fxStrSet, staticXdrIsDoxdrWhateverASubclassMakesOfXdr) {
    class Refusing : public fxStrSet {
    public:
        unsigned char xdr(fxTranscriber&) override { return 0; }
    } s;
    RecordingTranscriber t(writer);
    EXPECT_EQ(1, fxStrSet::xdr(static_cast<fxStrSet*>(&s), t));
    EXPECT_EQ(1, fxStrSet_type.xdr(static_cast<fxStrSet*>(&s), t));
    EXPECT_EQ(head(0, 8, 31) + head(0, 8, 31), t.bytes);
}

TEST(fxStrSet, keysAreReadIntoRawMemory) {
    fxStrSet s;
    alignas(fxStr) unsigned char memory[sizeof(fxStr)];
    for (const char* text : {"text", ""}) {
        std::memset(memory, 0xAA, sizeof memory);
        RecordingTranscriber t(reader);
        t.giveStr(text);
        EXPECT_EQ(1, s.xdrKey(t, memory));
        EXPECT_STREQ(text, reinterpret_cast<fxStr*>(memory)->c_str());
        s.destroyKey(memory);
    }
    std::memset(memory, 0xAA, sizeof memory);
    RecordingTranscriber nothing(reader);
    EXPECT_EQ(0, s.xdrKey(nothing, memory));
    s.destroyKey(memory);  // what failed can be destroyed all the same
}

TEST(fxStrSet, readingStopsAtTheFirstFailure) {
    const std::string bytes = head(2, 8, 3) + entry("k", 1) + entry("", 2);
    for (unsigned int step = 0; step < 8; ++step) {
        SCOPED_TRACE(step);
        Watched s(fxStrSet_type);
        RecordingTranscriber t(reader, bytes);
        t.failAt = step;
        EXPECT_EQ(0, s.xdr(t));
        EXPECT_EQ(step + 1, t.calls.size());
        EXPECT_EQ(step < 6 ? "" : "1: k", s.contents());
        s.freeUnfinishedEntry();
    }
}

TEST(fxStrSet, bytesThatEndAnywhereFail) {
    const std::string bytes = head(2, 8, 3) + entry("key", 1) + entry("", 2);
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        SCOPED_TRACE(length);
        Watched s(fxStrSet_type);
        RecordingTranscriber t(reader, bytes.substr(0, length));
        EXPECT_EQ(0, s.xdr(t));
        s.freeUnfinishedEntry();
    }
}

TEST(fxStrSet, sizesBelowAStringOrBeyondAllMeasureFail) {
    for (unsigned int keySize : {0u, 4u, 7u, 0x00100009u, 0xFFFFFFF8u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(keySize);
        for (bool made : {false, true}) {
            Watched s(fxStrSet_type);
            Watched already(5u);
            Watched& read = made ? already : s;
            RecordingTranscriber t(reader, head(1, keySize, 3) + entry("k", 1));
            EXPECT_EQ(0, read.xdr(t));
            EXPECT_EQ(nullptr, read.lastKey);
            EXPECT_EQ(nullptr, read.find("k"));
        }
    }
}

TEST(fxStrSet, stringsThatCannotBeFail) {
    RecordingTranscriber noLength(reader, head(1, 8, 3));
    noLength.give(0u);
    RecordingTranscriber tooLong(reader, head(1, 8, 3));
    tooLong.give(0x10000u).give('x');
    for (RecordingTranscriber* t : {&noLength, &tooLong}) {
        Watched s(fxStrSet_type);
        EXPECT_EQ(0, s.xdr(*t));
        EXPECT_EQ("", s.contents());
        s.freeUnfinishedEntry();
    }
}

// Keys of 4096 bytes made of eight: a few are read, but not 80 MB of them.
TEST(fxStrSet, sizesOutOfProportionFail) {
    const unsigned int n = 20000;
    std::string bytes = head(n, 4096, 3);
    for (unsigned int i = 0; i < n; ++i)
        bytes += entry("", i % 3);
    Watched s(fxStrSet_type);
    RecordingTranscriber t(reader, bytes);
    EXPECT_EQ(0, s.xdr(t));
    EXPECT_GT(texts(s).size(), 1u) << "keys read so far stay";
    EXPECT_LT(texts(s).size(), 1000u);
}

// What the base's own form believes cannot hurt: no string is made outside its
// entry.
TEST(fxStrSet, sizesBelowAStringFailThroughTheBaseToo) {
    for (unsigned int keySize : {0u, 4u, 7u}) {
        SCOPED_TRACE(keySize);
        Watched s(fxStrSet_type);
        RecordingTranscriber t(reader, head(1, keySize, 3) + entry("k", 1));
        EXPECT_EQ(0, static_cast<fxSet&>(s).doxdr(t));
        EXPECT_EQ("uint*:1 uint*:1 uint*:1", t.log());
        std::free(s.lastKey);
    }
}

TEST(fxStrSet, aSetWithoutBucketsFindsNothing) {
    fxStrSet s(fxStrSet_type);
    RecordingTranscriber t(reader, head(0, 8, 0));
    EXPECT_EQ(1, s.xdr(t));
    EXPECT_EQ(nullptr, s.find("key"));
    EXPECT_EQ(0, s.contains("key"));
    s.remove("key");
    EXPECT_EQ(0u, s.length());
}

TEST(fxStrSetDeathTest, addingWithoutBucketsIsFatal) {
    const fxStrSet original;
    fxStrSet copy(original), read(fxStrSet_type);
    RecordingTranscriber t(reader, head(0, 8, 0));
    ASSERT_EQ(1, read.xdr(t));
    for (fxStrSet* s : {&copy, &read})
        EXPECT_EXIT(s->add("key"), testing::KilledBySignal(SIGABRT), "^fxXDRObj: no buckets\n$");
}
