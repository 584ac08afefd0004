#include "kelvofxds/containers/fxVoidPtrDict.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxTypeObj.h"
#include "tests/support/recordingTranscriber.h"

namespace {

// Counts the keys that doxdr asks for.
class Watched : public fxVoidPtrDict {
public:
    unsigned char xdrKey(fxTranscriber& t, void* key) override {
        ++keysAsked;
        lastKey = key;
        return fxVoidPtrDict::xdrKey(t, key);
    }
    unsigned char xdrValue(fxTranscriber& t, void* value) override {
        ++valuesAsked;
        return fxVoidPtrDict::xdrValue(t, value);
    }
    using fxDictionary::buckets;

    int keysAsked = 0;
    int valuesAsked = 0;
    void* lastKey = nullptr;
};

int first, second;

}  // namespace

TEST(fxVoidPtrDict, keysHashAndCompareAsStringsDo) {
    const fxVoidPtrDict d;
    const fxStr abc("abc"), abd("abd"), longer("abc\0x", 5);
    EXPECT_EQ(abc.hash(), d.hashKey(&abc));
    EXPECT_EQ(longer.hash(), d.hashKey(&longer));
    EXPECT_LT(d.compareKeys(&abc, &abd), 0);
    EXPECT_GT(d.compareKeys(&abd, &abc), 0);
    EXPECT_EQ(0, d.compareKeys(&abc, &longer));
}

// The value itself, not only its sign.
TEST(fxVoidPtrDict, comparisonOfKeysIsTheValueOfCompare) {
    const fxVoidPtrDict d;
    const fxStr keys[] = {"", "a", "c", "ab", "ad", "\xff", fxStr("a\0x", 3)};
    for (const fxStr& a : keys) {
        for (const fxStr& b : keys)
            EXPECT_EQ(compare(a, b), d.compareKeys(&a, &b)) << a << " and " << b;
    }
}

TEST(fxVoidPtrDict, deliberateKeysAlikeUpToANulInOneBucketAreOneKey) {
    Watched d;
    d.add("a", &first);
    d.add(fxStr("a\0>", 3), &second);
    EXPECT_EQ(1u, d.length());
    EXPECT_EQ(&second, *d.find("a"));
    d.add(fxStr("a\0?", 3), &first);
    EXPECT_EQ(2u, d.length());
    EXPECT_NE(nullptr, d.buckets[4]);
    EXPECT_NE(nullptr, d.buckets[8]);
}

TEST(fxVoidPtrDict, keysAreCopiesAndPointersAreNotOwned) {
    int* object = new int(5);
    {
        fxVoidPtrDict d;
        fxStr key("key");
        d.add(key, object);
        key = "changed";
        ASSERT_NE(nullptr, d.find("key"));
        EXPECT_EQ(object, *d.find("key"));
        d.add("key", object);
        d.remove("key");
        d.add("again", object);
    }
    EXPECT_EQ(5, *object);
    delete object;
}

TEST(fxVoidPtrDict, valueOperationsWorkOnThePointerAlone) {
    const fxVoidPtrDict d;
    void* from = &first;
    void* to[2] = {&second, &second};
    d.copyValue(&from, &to[0]);
    EXPECT_EQ(&first, to[0]);
    EXPECT_EQ(&second, to[1]);
    d.destroyValue(&to[0]);
    EXPECT_EQ(&first, to[0]);
    d.createValue(&to[0]);
    EXPECT_EQ(nullptr, to[0]);
    EXPECT_EQ(&second, to[1]);
}

TEST(fxVoidPtrDict, copyingAKeyToNullIsSkipped) {
    const fxVoidPtrDict d;
    const fxStr key("key");
    d.copyKey(&key, nullptr);
}

TEST(fxVoidPtrDict, createdValueIsNull) {
    fxVoidPtrDict d;
    EXPECT_EQ(nullptr, d.findCreate("key"));
    EXPECT_EQ(1u, d.length());
    d.findCreate("key") = &first;
    EXPECT_EQ(&first, *d.find("key"));
}

TEST(fxVoidPtrDict, typedFormsAreTheSameOperations) {
    fxVoidPtrDict d;
    const fxStr key("key");
    d.add(key, &first);
    EXPECT_EQ(d.find(static_cast<const void*>(&key)), d.find(key));
    EXPECT_EQ(d.find(key), d.find("key"));
    EXPECT_EQ(nullptr, d.find("other"));
    EXPECT_EQ(d.find(key), &d.findCreate(key));
    d.remove(key);
    EXPECT_EQ(0u, d.length());
}

TEST(fxVoidPtrDict, iteratorGivesKeyAndPointer) {
    fxVoidPtrDict d;
    d.add("key", &first);
    fxVoidPtrDictIter iter(&d);
    ASSERT_NE(nullptr, iter.key());
    EXPECT_STREQ("key", iter.key()->c_str());
    EXPECT_EQ(&first, *iter.value());
    *iter.value() = &second;
    EXPECT_EQ(&second, *d.find("key"));
    ++iter;
    EXPECT_EQ(nullptr, iter.key());
    EXPECT_EQ(nullptr, iter.value());
}

// Transcription.

TEST(fxVoidPtrDict, hasNoRecordOfItsOwn) {
    EXPECT_EQ(&fxDictionary_type, &fxVoidPtrDict().getTypeObj());
}

TEST(fxVoidPtrDict, deliberateKeysAndValuesCannotBeTranscribed) {
    fxVoidPtrDict d;
    fxStr key("key");
    void* value = &first;
    for (auto direction : {RecordingTranscriber::writer, RecordingTranscriber::reader}) {
        RecordingTranscriber t(direction);
        EXPECT_EQ(0, d.xdrKey(t, &key));
        EXPECT_EQ(0, d.xdrValue(t, &value));
        EXPECT_EQ("", t.log());
    }
    EXPECT_STREQ("key", key.c_str());
    EXPECT_EQ(&first, value);
}

TEST(fxVoidPtrDict, deliberateXdrSucceedsAndTranscribesNothing) {
    fxVoidPtrDict d;
    d.add("key", &first);
    RecordingTranscriber t(RecordingTranscriber::writer);
    EXPECT_EQ(1, d.xdr(t));
    EXPECT_EQ(1, fxDictionary_type.xdr(&d, t));
    ASSERT_EQ("embedded:0 embedded:0", t.log());
    EXPECT_EQ(&fxXDRObj_type, t.calls[0].type);
    EXPECT_EQ(&d, t.calls[0].previous);
    EXPECT_EQ(&d, t.calls[0].address);
}

TEST(fxVoidPtrDict, doxdrFailsAtTheFirstKey) {
    Watched d;
    d.add("key", &first);
    d.add("other", &second);
    RecordingTranscriber t(RecordingTranscriber::writer);
    EXPECT_EQ(0, d.doxdr(t));
    EXPECT_EQ("uint*:1 uint*:1 uint*:1 uint*:1", t.log());
    RecordingTranscriber expected(RecordingTranscriber::reader);
    expected.give(2u).give(8u).give(4u).give(31u);
    EXPECT_EQ(expected.bytes, t.bytes);
    EXPECT_EQ(1, d.keysAsked);
    EXPECT_EQ(0, d.valuesAsked);
}

TEST(fxVoidPtrDict, doxdrOfAnEmptyOneSucceeds) {
    fxVoidPtrDict d;
    RecordingTranscriber written(RecordingTranscriber::writer);
    EXPECT_EQ(1, d.doxdr(written));

    fxVoidPtrDict read(3);
    RecordingTranscriber t(RecordingTranscriber::reader, written.bytes);
    EXPECT_EQ(1, read.doxdr(t));
    EXPECT_EQ(31u, read.getNumBuckets());
    EXPECT_EQ(0u, read.length());
}

TEST(fxVoidPtrDict, readingAnEntryFails) {
    Watched d;
    RecordingTranscriber t(RecordingTranscriber::reader);
    t.give(1u).give(8u).give(4u).give(31u).giveStr("key").give(0u).give(0u);
    EXPECT_EQ(0, d.doxdr(t));
    EXPECT_EQ(4u, t.calls.size());
    EXPECT_EQ(1, d.keysAsked);
    EXPECT_EQ(0, d.valuesAsked);
    std::free(d.lastKey);  // the block of an entry that fails is not freed
}
