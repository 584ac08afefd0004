// fxSetXDR_test.cpp - what a set tells a transcriber.

#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxSet.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "tests/support/recordingTranscriber.h"
#include "tests/support/testSet.h"

namespace {

const auto writer = RecordingTranscriber::writer;
const auto reader = RecordingTranscriber::reader;
const char headCalls[] = "uint*:1 uint*:1 uint*:1";

// The three words that a transcription starts with.
std::string head(unsigned int items, unsigned int keySize, unsigned int numBuckets) {
    RecordingTranscriber t(reader);
    t.give(items).give(keySize).give(numBuckets);
    return t.bytes;
}

std::string entry(int key, unsigned int bucket) {
    RecordingTranscriber t(reader);
    t.give(key).give(bucket);
    return t.bytes;
}

}  // namespace

// Writing.

TEST(fxSetXDR, writesSizesThenKeysInChainOrder) {
    TestSet s(5);
    for (int key : {2, 7, 3})
        s.put(key);
    RecordingTranscriber t(writer);
    EXPECT_EQ(1, s.doxdr(t));
    EXPECT_EQ(std::string(headCalls) + " int*:1 uint*:1 int*:1 uint*:1 int*:1 uint*:1", t.log());
    EXPECT_EQ(head(3, 4, 5) + entry(7, 2) + entry(2, 2) + entry(3, 3), t.bytes);
    EXPECT_EQ("2: 7 2 3: 3", s.contents());
}

TEST(fxSetXDR, writesFromTheFieldsThemselves) {
    TestSet s(5);
    s.put(7);
    RecordingTranscriber t(writer);
    ASSERT_EQ(1, s.doxdr(t));
    EXPECT_EQ(&s.numItems, t.calls[0].address);
    EXPECT_EQ(&s.keySize, t.calls[1].address);
    EXPECT_EQ(s.entry(7)->key, s.keyAddress);
}

TEST(fxSetXDR, writesAnEmptySet) {
    TestSet s(7);
    RecordingTranscriber t(writer);
    EXPECT_EQ(1, s.doxdr(t));
    EXPECT_EQ(headCalls, t.log());
    EXPECT_EQ(head(0, 4, 7), t.bytes);
}

TEST(fxSetXDR, writingStopsAtTheFirstFailure) {
    for (unsigned int step = 0; step < 7; ++step) {
        SCOPED_TRACE(step);
        TestSet s(5);
        s.put(2);
        s.put(7);
        RecordingTranscriber t(writer);
        t.failAt = step;
        EXPECT_EQ(0, s.doxdr(t));
        EXPECT_EQ(step + 1, t.calls.size());
        EXPECT_EQ("2: 7 2", s.contents());
    }
}

// Reading.

TEST(fxSetXDR, deliberateEachChainComesBackReversed) {
    TestSet original(5);
    for (int key : {2, 7, 12, 3})
        original.put(key);
    ASSERT_EQ("2: 12 7 2 3: 3", original.contents());
    RecordingTranscriber written(writer);
    ASSERT_EQ(1, original.doxdr(written));

    TestSet read(fxSet_type);
    RecordingTranscriber t(reader, written.bytes);
    EXPECT_EQ(1, read.doxdr(t));
    EXPECT_EQ(written.log(), t.log());
    EXPECT_EQ(t.bytes.size(), t.used);
    EXPECT_EQ("2: 2 7 12 3: 3", read.contents());
    EXPECT_EQ(4u, read.length());
    EXPECT_EQ(5u, read.getNumBuckets());
    EXPECT_EQ(12, *read.at(12));
}

TEST(fxSetXDR, readsAnEmptySet) {
    TestSet s(fxSet_type);
    RecordingTranscriber t(reader, head(0, 4, 9));
    EXPECT_EQ(1, s.doxdr(t));
    EXPECT_EQ(headCalls, t.log());
    EXPECT_EQ(9u, s.getNumBuckets());
    EXPECT_EQ("", s.contents());
    s.put(10);
    EXPECT_EQ("1: 10", s.contents());
}

TEST(fxSetXDR, deliberateKeysLandInTheBucketOfTheStreamWithoutHashing) {
    TestSet s(fxSet_type);
    RecordingTranscriber t(reader, head(2, 4, 5) + entry(2, 4) + entry(7, 0));
    EXPECT_EQ(1, s.doxdr(t));
    EXPECT_EQ("0: 7 4: 2", s.contents());
    EXPECT_FALSE(s.has(2)) << "its hash leads to bucket 2";
}

TEST(fxSetXDR, deliberateAKeyThatComesTwiceIsThereTwice) {
    TestSet s(fxSet_type);
    RecordingTranscriber t(reader, head(2, 4, 5) + entry(2, 2) + entry(2, 2));
    EXPECT_EQ(1, s.doxdr(t));
    EXPECT_EQ("2: 2 2", s.contents());
    EXPECT_EQ(2u, s.length());
    s.drop(2);
    EXPECT_EQ("2: 2", s.contents());
}

// Keys in buckets that their hash does not lead to, and the same key twice: look-ups
// see those of the bucket that it does lead to.
TEST(fxSetXDR, algebraWithItselfEndsWhateverTheStreamSaid) {
    const std::string bytes = head(6, 4, 5) + entry(1, 0) + entry(1, 1) + entry(1, 1) +
                              entry(2, 4) + entry(4, 4) + entry(2, 0);
    for (int operation : {0, 1, 2}) {
        SCOPED_TRACE(operation);
        TestSet s(fxSet_type);
        RecordingTranscriber t(reader, bytes);
        ASSERT_EQ(1, s.doxdr(t));
        ASSERT_EQ("0: 2 1 1: 1 1 4: 4 2", s.contents());
        fxSetIter iter(s);
        const fxSet& self = s;
        if (operation == 0)
            s |= self;
        else if (operation == 1)
            s &= self;
        else
            s -= self;
        EXPECT_EQ(operation == 0   ? "0: 2 1 1: 1 1 2: 2 4: 4 2"
                  : operation == 1 ? "0: 1 1: 1 1 4: 4"
                                   : "0: 2 1 4: 2",
                  s.contents());
    }
}

TEST(fxSetXDR, keysAreReadIntoTheirBlock) {
    TestSet s(fxSet_type);
    RecordingTranscriber t(reader, head(1, 4, 5) + entry(2, 2));
    ASSERT_EQ(1, s.doxdr(t));
    EXPECT_EQ(s.entry(2)->key, s.keyAddress);
}

// The size in the stream replaces the class's, as long as it holds a key.
TEST(fxSetXDR, largerKeysAreRead) {
    for (unsigned int keySize : {4u, 5u, 8u, 16u, 4096u, 4097u}) {
        SCOPED_TRACE(keySize);
        TestSet s(fxSet_type);
        RecordingTranscriber t(reader, head(1, keySize, 5) + entry(2, 2));
        ASSERT_EQ(1, s.doxdr(t));
        EXPECT_EQ(keySize, s.keySize);
        EXPECT_EQ("2: 2", s.contents());
        s.put(7);
        EXPECT_EQ("2: 7 2", s.contents());
    }
}

namespace {

// A set of records of many bytes, as a host's class may have them.
class WideSet : public fxSet {
public:
    static const unsigned int width = 10000;

    explicit WideSet(unsigned int numBuckets) : fxSet(width, numBuckets) {}
    ~WideSet() override { cleanup(); }
    unsigned char xdrKey(fxTranscriber& t, void* key) override {
        return t.xdr(static_cast<char*>(key), width);
    }
};

}  // namespace

TEST(fxSetXDR, keysAsLargeAsTheClassMakesThemComeBack) {
    const unsigned int n = 200;
    WideSet original(5);
    for (unsigned int i = 0; i < n; ++i)
        original.add(std::string(WideSet::width, static_cast<char>(i)).data());
    RecordingTranscriber written(writer);
    ASSERT_EQ(1, original.doxdr(written));

    WideSet read(3);
    RecordingTranscriber t(reader, written.bytes);
    ASSERT_EQ(1, read.doxdr(t));
    EXPECT_EQ(t.bytes.size(), t.used);
    EXPECT_EQ(n, read.length());
    EXPECT_EQ(5u, read.getNumBuckets());
    EXPECT_EQ(1, read.contains(std::string(WideSet::width, 42).data()));
    EXPECT_EQ(0, read.contains(std::string(WideSet::width, static_cast<char>(n)).data()));
}

TEST(fxSetXDR, readingReplacesWhatTheSetHolds) {
    TestSet s(7);
    s.put(1);
    s.put(8);
    fxSetIter iter(s);
    RecordingTranscriber t(reader, head(1, 4, 3) + entry(5, 2));
    EXPECT_EQ(1, s.doxdr(t));
    EXPECT_EQ("2: 5", s.contents());
    EXPECT_EQ(3u, s.getNumBuckets());
    EXPECT_EQ(1u, s.length());
    EXPECT_EQ(1, s.keys);
    EXPECT_EQ(nullptr, iter.getKey());
}

TEST(fxSetXDR, readingStopsAtTheFirstFailure) {
    const std::string bytes = head(2, 4, 5) + entry(2, 2) + entry(7, 2);
    const char* const contents[] = {"", "", "", "", "", "2: 2", "2: 2"};
    for (unsigned int step = 0; step < 7; ++step) {
        SCOPED_TRACE(step);
        TestSet s(fxSet_type);
        RecordingTranscriber t(reader, bytes);
        t.failAt = step;
        EXPECT_EQ(0, s.doxdr(t));
        EXPECT_EQ(step + 1, t.calls.size());
        EXPECT_EQ(contents[step], s.contents()) << "keys read so far stay";
        EXPECT_EQ(step < 5 ? 0u : 1u, s.length());
        if (step < 3)
            continue;
        // The block of the entry that failed is not freed. The second of its
        // two calls comes after its key was made.
        if ((step - 3) % 2 == 1)
            delete *static_cast<int**>(s.keyAddress);
        std::free(s.keyAddress);
    }
}

// Bad input.

TEST(fxSetXDR, sizesThatCannotHoldTheClassesKeysFail) {
    for (unsigned int keySize : {0u, 1u, 3u, 0x00100005u, 0x80000000u, 0xFFFFFFFCu, 0xFFFFFFFFu}) {
        SCOPED_TRACE(keySize);
        TestSet s(5);
        s.put(8);
        RecordingTranscriber t(reader, head(1, keySize, 5) + entry(2, 2));
        EXPECT_EQ(0, s.doxdr(t));
        EXPECT_EQ(headCalls, t.log());
        EXPECT_EQ("3: 8", s.contents()) << "nothing was replaced";
    }
}

// Keys of 4096 bytes made of four: a few are read, but not 80 MB of them.
TEST(fxSetXDR, sizesOutOfProportionFail) {
    const int n = 20000;
    std::string bytes = head(n, 4096, 5);
    for (int key = 0; key < n; ++key)
        bytes += entry(key, static_cast<unsigned int>(key) % 5);
    TestSet s(fxSet_type);
    RecordingTranscriber t(reader, bytes);
    EXPECT_EQ(0, s.doxdr(t));
    EXPECT_GT(s.length(), 1u);
    EXPECT_LT(s.length(), 1000u);
    EXPECT_TRUE(s.has(0)) << "keys read so far stay";
    EXPECT_EQ(static_cast<int>(s.length()), s.keys);
}

TEST(fxSetXDR, keysWithoutBucketsFail) {
    for (unsigned int items : {1u, 1000u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(items);
        TestSet s(fxSet_type);
        RecordingTranscriber t(reader, head(items, 4, 0) + entry(2, 0));
        EXPECT_EQ(0, s.doxdr(t));
        EXPECT_EQ(headCalls, t.log());
    }
}

TEST(fxSetXDR, moreBucketsThanThereIsMemoryFail) {
    for (unsigned int numBuckets :
         {0x40000000u, 0x40000001u, 0x7FFFFFFFu, 0xFFFFFFFFu, 0x30000000u}) {
        SCOPED_TRACE(numBuckets);
        TestSet s(fxSet_type);
        RecordingTranscriber t(reader, head(1, 4, numBuckets) + entry(2, 2));
        EXPECT_EQ(0, s.doxdr(t));
        EXPECT_EQ("", s.contents());
        EXPECT_FALSE(s.has(2));
        fxSetIter iter(s);
        EXPECT_EQ(nullptr, iter.getKey());
    }
}

namespace {

[[noreturn]] void readTheMostBuckets() {
    TestSet s(fxSet_type);
    RecordingTranscriber t(reader, head(1, 4, 0x3FFFFFFF) + entry(2, 2));
    const bool failed = s.doxdr(t) == 0 && s.contents().empty();
    std::_Exit(failed ? 0 : 1);
}

}  // namespace

// In a process of its own: some memory checkers do not survive the request
// for a block that ends at the last word of the address space.
TEST(fxSetXDRDeathTest, bucketsThatFillTheAddressSpaceFail) {
    EXPECT_EXIT(readTheMostBuckets(), testing::ExitedWithCode(0), "");
}

TEST(fxSetXDR, manyBucketsAreRead) {
    const unsigned int numBuckets = 1u << 20;
    TestSet s(fxSet_type);
    RecordingTranscriber t(reader, head(1, 4, numBuckets) + entry(5, 5));
    EXPECT_EQ(1, s.doxdr(t));
    EXPECT_EQ(numBuckets, s.getNumBuckets());
    EXPECT_EQ("5: 5", s.contents());
}

TEST(fxSetXDR, bucketIndexPastTheEndFails) {
    for (unsigned int index : {5u, 6u, 0x40000000u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(index);
        TestSet s(fxSet_type);
        RecordingTranscriber t(reader, head(2, 4, 5) + entry(2, 2) + entry(7, index));
        EXPECT_EQ(0, s.doxdr(t));
        EXPECT_EQ("2: 2", s.contents());
        delete *static_cast<int**>(s.keyAddress);
        std::free(s.keyAddress);
    }
}

TEST(fxSetXDR, moreItemsThanArriveFail) {
    for (unsigned int items : {2u, 100u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(items);
        TestSet s(fxSet_type);
        RecordingTranscriber t(reader, head(items, 4, 5) + entry(2, 2));
        EXPECT_EQ(0, s.doxdr(t));
        EXPECT_EQ("2: 2", s.contents());
        EXPECT_EQ(1u, s.length());
        std::free(s.keyAddress);
    }
}

// A bucket count of zero is only good for no items.

TEST(fxSetXDR, lookUpsInASetWithoutBucketsFindNothing) {
    TestSet s(fxSet_type);
    RecordingTranscriber t(reader, head(0, 4, 0));
    EXPECT_EQ(1, s.doxdr(t));
    EXPECT_EQ(0u, s.getNumBuckets());
    EXPECT_FALSE(s.has(3));
    EXPECT_EQ(nullptr, s.at(3));
    s.drop(3);
    s.cleanup();
    fxSetIter iter(s);
    EXPECT_EQ(nullptr, iter.getKey());
    EXPECT_EQ(0u, s.length());
}

TEST(fxSetXDR, theFirstKeyOfASetWithoutBucketsBringsThem) {
    TestSet s(fxSet_type);
    RecordingTranscriber t(reader, head(0, 4, 0));
    ASSERT_EQ(1, s.doxdr(t));
    EXPECT_NE(nullptr, s.put(33));
    EXPECT_EQ(31u, s.getNumBuckets());
    EXPECT_EQ("2: 33", s.contents());
    EXPECT_EQ(1u, s.length());
}

TEST(fxSetXDR, aSetWithoutBucketsCanBeWrittenAndCopied) {
    TestSet s(fxSet_type);
    RecordingTranscriber t(writer);
    EXPECT_EQ(1, s.doxdr(t));
    EXPECT_EQ(head(0, 4, 0), t.bytes);
    const TestSet copy(s);
    EXPECT_EQ(0u, copy.getNumBuckets());
}
