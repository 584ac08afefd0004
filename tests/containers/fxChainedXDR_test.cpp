// fxChainedXDR_test.cpp - what dictionaries and sets tell a transcriber.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxTypeObj.h"
#include "tests/support/chained.h"
#include "tests/support/heapCalls.h"
#include "tests/support/recordingTranscriber.h"

namespace {

const auto writer = RecordingTranscriber::writer;
const auto reader = RecordingTranscriber::reader;

template <class Container>
class fxChainedXDR : public testing::Test {
protected:
    static std::string head(unsigned int items, unsigned int size, unsigned int numBuckets) {
        return Container::head(items, size, numBuckets);
    }
    static std::string entry(int key, unsigned int bucket) {
        return Container::entryBytes(key, bucket);
    }
    // The head takes this many calls, each entry so many more.
    static unsigned int headCalls() { return words(Container::headCalls()); }
    static unsigned int entryCalls() { return words(Container::entryCalls()); }

private:
    static unsigned int words(const std::string& text) {
        return 1 + static_cast<unsigned int>(std::count(text.begin(), text.end(), ' '));
    }
};
TYPED_TEST_SUITE(fxChainedXDR, ChainedContainers);

template <class Container>
class fxChainedXDRDeathTest : public testing::Test {};
TYPED_TEST_SUITE(fxChainedXDRDeathTest, ChainedContainers);

}  // namespace

// Writing.

TYPED_TEST(fxChainedXDR, writesSizesThenEntriesInChainOrder) {
    TypeParam c(5);
    for (int key : {2, 7, 3})
        c.put(key);
    RecordingTranscriber t(writer);
    EXPECT_EQ(1, c.doxdr(t));
    const std::string each = " " + TypeParam::entryCalls();
    EXPECT_EQ(TypeParam::headCalls() + each + each + each, t.log());
    EXPECT_EQ(this->head(3, 4, 5) + this->entry(7, 2) + this->entry(2, 2) + this->entry(3, 3),
              t.bytes);
    EXPECT_EQ("2: 7 2 3: 3", chains(c));
}

TYPED_TEST(fxChainedXDR, writesFromTheFieldsThemselves) {
    TypeParam c(5);
    c.put(7);
    RecordingTranscriber t(writer);
    ASSERT_EQ(1, c.doxdr(t));
    EXPECT_EQ(&c.numItems, t.calls[0].address);
    EXPECT_EQ(&c.keySize, t.calls[1].address);
    EXPECT_EQ(c.blockOf(c.entry(7)), c.keyAddress);
}

TYPED_TEST(fxChainedXDR, writesAnEmptyContainer) {
    TypeParam c(7);
    RecordingTranscriber t(writer);
    EXPECT_EQ(1, c.doxdr(t));
    EXPECT_EQ(TypeParam::headCalls(), t.log());
    EXPECT_EQ(this->head(0, 4, 7), t.bytes);
}

TYPED_TEST(fxChainedXDR, writingStopsAtTheFirstFailure) {
    for (unsigned int step = 0; step < this->headCalls() + 2 * this->entryCalls(); ++step) {
        SCOPED_TRACE(step);
        TypeParam c(5);
        c.put(2);
        c.put(7);
        RecordingTranscriber t(writer);
        t.failAt = step;
        EXPECT_EQ(0, c.doxdr(t));
        EXPECT_EQ(step + 1, t.calls.size());
        EXPECT_EQ("2: 7 2", chains(c));
    }
}

// Reading.

TYPED_TEST(fxChainedXDR, deliberateEachChainComesBackReversed) {
    TypeParam original(5);
    for (int key : {2, 7, 12, 3})
        original.put(key);
    ASSERT_EQ("2: 12 7 2 3: 3", chains(original));
    RecordingTranscriber written(writer);
    ASSERT_EQ(1, original.doxdr(written));

    TypeParam read(TypeParam::type());
    RecordingTranscriber t(reader, written.bytes);
    EXPECT_EQ(1, read.doxdr(t));
    EXPECT_EQ(written.log(), t.log());
    EXPECT_EQ(t.bytes.size(), t.used);
    EXPECT_EQ("2: 2 7 12 3: 3", chains(read));
    EXPECT_EQ(4u, read.length());
    EXPECT_EQ(5u, read.getNumBuckets());
    EXPECT_TRUE(read.has(12));
}

TYPED_TEST(fxChainedXDR, readsAnEmptyContainer) {
    TypeParam c(TypeParam::type());
    RecordingTranscriber t(reader, this->head(0, 4, 9));
    EXPECT_EQ(1, c.doxdr(t));
    EXPECT_EQ(TypeParam::headCalls(), t.log());
    EXPECT_EQ(9u, c.getNumBuckets());
    EXPECT_EQ("", chains(c));
    c.put(10);
    EXPECT_EQ("1: 10", chains(c));
}

TYPED_TEST(fxChainedXDR, deliberateEntriesLandInTheBucketOfTheStreamWithoutHashing) {
    TypeParam c(TypeParam::type());
    RecordingTranscriber t(reader, this->head(2, 4, 5) + this->entry(2, 4) + this->entry(7, 0));
    EXPECT_EQ(1, c.doxdr(t));
    EXPECT_EQ("0: 7 4: 2", chains(c));
    EXPECT_FALSE(c.has(2)) << "its hash leads to bucket 2";
}

TYPED_TEST(fxChainedXDR, deliberateAKeyThatComesTwiceIsThereTwice) {
    TypeParam c(TypeParam::type());
    RecordingTranscriber t(reader, this->head(2, 4, 5) + this->entry(2, 2) + this->entry(2, 2));
    EXPECT_EQ(1, c.doxdr(t));
    EXPECT_EQ("2: 2 2", chains(c));
    EXPECT_EQ(2u, c.length());
    c.drop(2);
    EXPECT_EQ("2: 2", chains(c));
}

TYPED_TEST(fxChainedXDR, keysAreReadIntoTheirBlock) {
    TypeParam c(TypeParam::type());
    RecordingTranscriber t(reader, this->head(1, 4, 5) + this->entry(2, 2));
    ASSERT_EQ(1, c.doxdr(t));
    EXPECT_EQ(c.blockOf(c.entry(2)), c.keyAddress);
}

// Sizes, of keys and of values, that differ from the class's.
TYPED_TEST(fxChainedXDR, sizesAreTakenAsTheStreamGivesThem) {
    for (unsigned int size : {4u, 5u, 8u, 16u, 4096u, 4097u, 2u << 20}) {
        for (unsigned int before : {0u, 4u, 100u}) {
            SCOPED_TRACE(testing::Message() << size << " after " << before);
            TypeParam c(TypeParam::type());
            c.setSizes(before);
            RecordingTranscriber t(reader, this->head(1, size, 5) + this->entry(2, 2));
            ASSERT_EQ(1, c.doxdr(t));
            EXPECT_EQ(size, c.keySize);
            EXPECT_EQ("2: 2", chains(c));
            c.put(7);
            EXPECT_EQ("2: 7 2", chains(c));
        }
    }
}

// Together far beyond what the bytes that fill them could bear out.
TYPED_TEST(fxChainedXDR, largeSizesOfManyEntriesAreBelieved) {
    const unsigned int n = 300, size = 8192;
    std::string bytes = this->head(n, size, 5);
    for (unsigned int i = 0; i < n; ++i)
        bytes += this->entry(static_cast<int>(i), i % 5);
    TypeParam c(TypeParam::type());
    RecordingTranscriber t(reader, bytes);
    EXPECT_EQ(1, c.doxdr(t));
    EXPECT_EQ(n, c.length());
    for (unsigned int i = 0; i < n; ++i)
        EXPECT_TRUE(c.has(static_cast<int>(i)));
}

TYPED_TEST(fxChainedXDR, aRefusedBlockIsAFailedRead) {
    for (unsigned int block : {0xF0000000u, 0xFFFFFFF0u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(block);
        TypeParam c(TypeParam::type());
        RecordingTranscriber t(reader, TypeParam::headOfBlocks(1, block, 5) + this->entry(2, 2));
        EXPECT_EQ(0, c.doxdr(t));
        EXPECT_EQ(TypeParam::headCalls(), t.log());
        EXPECT_EQ("", chains(c));
    }
}

TYPED_TEST(fxChainedXDR, deliberateReadingReplacesWhatIsHeldForEveryBucketCount) {
    for (unsigned int numBuckets : {0u, 1u, 3u, 7u, 9u}) {
        SCOPED_TRACE(numBuckets);
        TypeParam c(7);
        c.put(1);
        c.put(8);
        typename TypeParam::BaseIter iter(c);
        c.taken();
        const bool any = numBuckets != 0;
        const unsigned int index = any ? numBuckets - 1 : 0;
        RecordingTranscriber t(reader,
                               this->head(any, 4, numBuckets) + (any ? this->entry(5, index) : ""));
        EXPECT_EQ(1, c.doxdr(t));
        EXPECT_EQ(TypeParam::ended({8, 1}), c.taken()) << "ended as usual";
        EXPECT_EQ(any ? std::to_string(index) + ": 5" : "", chains(c));
        EXPECT_EQ(numBuckets, c.getNumBuckets());
        EXPECT_EQ(any ? 1u : 0u, c.length());
        EXPECT_EQ(any ? 1 : 0, c.keys);
        EXPECT_EQ(nullptr, iter.getKey());
    }
}

// What arrived stays; the number of items is the stream's from the start.
TYPED_TEST(fxChainedXDR, readingStopsAtTheFirstFailure) {
    const std::string bytes = this->head(2, 4, 5) + this->entry(2, 2) + this->entry(7, 2);
    const unsigned int first = this->headCalls(), each = this->entryCalls();
    for (unsigned int step = 0; step < first + 2 * each; ++step) {
        SCOPED_TRACE(step);
        TypeParam c(TypeParam::type());
        RecordingTranscriber t(reader, bytes);
        t.failAt = step;
        EXPECT_EQ(0, c.doxdr(t));
        EXPECT_EQ(step + 1, t.calls.size());
        EXPECT_EQ(step < first + each ? "" : "2: 2", chains(c));
        EXPECT_EQ(step < first ? 0u : 2u, c.length());
        if (step >= first)
            c.freeUnfinished((step - first) % each);
    }
}

// Bad input.

TYPED_TEST(fxChainedXDR, entriesWithoutBucketsFail) {
    for (unsigned int items : {1u, 1000u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(items);
        TypeParam c(5);
        c.put(8);
        RecordingTranscriber t(reader, this->head(items, 4, 0) + this->entry(2, 0));
        EXPECT_EQ(0, c.doxdr(t));
        EXPECT_EQ(TypeParam::headCalls(), t.log());
        EXPECT_EQ("3: 8", chains(c)) << "nothing was replaced";
        EXPECT_EQ(1u, c.length());
    }
}

TYPED_TEST(fxChainedXDR, aBucketWithoutMemoryForItFails) {
    if (!heapCallsAreCounted())
        GTEST_SKIP() << "no memory is refused in this build or under this tool";
    TypeParam c(TypeParam::type());
    RecordingTranscriber t(reader, this->head(0, 4, 1));
    t.calls.reserve(8);
    refuseBlocksFrom(1);
    const unsigned char isRead = c.doxdr(t);
    refuseBlocksFrom(SIZE_MAX);
    EXPECT_EQ(0, isRead);
    EXPECT_EQ("", chains(c));
}

TYPED_TEST(fxChainedXDR, moreBucketsThanThereIsMemoryFail) {
    for (unsigned int numBuckets :
         {0x40000000u, 0x40000001u, 0x7FFFFFFFu, 0xFFFFFFFFu, 0x30000000u}) {
        SCOPED_TRACE(numBuckets);
        TypeParam c(TypeParam::type());
        RecordingTranscriber t(reader, this->head(1, 4, numBuckets) + this->entry(2, 2));
        EXPECT_EQ(0, c.doxdr(t));
        EXPECT_EQ("", chains(c));
        EXPECT_FALSE(c.has(2));
        typename TypeParam::BaseIter iter(c);
        EXPECT_EQ(nullptr, iter.getKey());
    }
}

namespace {

template <class Container>
[[noreturn]] void readTheMostBuckets() {
    Container c(Container::type());
    RecordingTranscriber t(reader, Container::head(1, 4, 0x3FFFFFFF) + Container::entryBytes(2, 2));
    const bool failed = c.doxdr(t) == 0 && chains(c).empty();
    std::_Exit(failed ? 0 : 1);
}

}  // namespace

// In a process of its own: some memory checkers do not survive the request
// for a block that ends at the last word of the address space.
TYPED_TEST(fxChainedXDRDeathTest, bucketsThatFillTheAddressSpaceFail) {
    EXPECT_EXIT(readTheMostBuckets<TypeParam>(), testing::ExitedWithCode(0), "");
}

TYPED_TEST(fxChainedXDR, manyBucketsAreRead) {
    const unsigned int numBuckets = 1u << 20;
    TypeParam c(TypeParam::type());
    RecordingTranscriber t(reader, this->head(1, 4, numBuckets) + this->entry(5, 5));
    EXPECT_EQ(1, c.doxdr(t));
    EXPECT_EQ(numBuckets, c.getNumBuckets());
    EXPECT_EQ("5: 5", chains(c));
}

TYPED_TEST(fxChainedXDR, bucketIndexPastTheEndFails) {
    for (unsigned int index : {5u, 6u, 0x40000000u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(index);
        TypeParam c(TypeParam::type());
        RecordingTranscriber t(reader,
                               this->head(2, 4, 5) + this->entry(2, 2) + this->entry(7, index));
        EXPECT_EQ(0, c.doxdr(t));
        EXPECT_EQ("2: 2", chains(c));
        c.freeUnfinished(2);
    }
}

TYPED_TEST(fxChainedXDR, moreItemsThanArriveFail) {
    for (unsigned int items : {2u, 100u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(items);
        TypeParam c(TypeParam::type());
        RecordingTranscriber t(reader, this->head(items, 4, 5) + this->entry(2, 2));
        EXPECT_EQ(0, c.doxdr(t));
        EXPECT_EQ("2: 2", chains(c));
        EXPECT_EQ(items, c.length()) << "the stream's number";
        c.freeUnfinished(0);
    }
}

// A container whose reading failed counts what it has once it is read again.
TYPED_TEST(fxChainedXDR, canBeReadAgainAfterAFailure) {
    TypeParam c(TypeParam::type());
    RecordingTranscriber failing(reader, this->head(9, 4, 5) + this->entry(2, 2));
    ASSERT_EQ(0, c.doxdr(failing));
    c.freeUnfinished(0);
    RecordingTranscriber t(reader, this->head(1, 4, 3) + this->entry(7, 1));
    EXPECT_EQ(1, c.doxdr(t));
    EXPECT_EQ("1: 7", chains(c));
    EXPECT_EQ(1u, c.length());
    EXPECT_EQ(1, c.keys);
}
