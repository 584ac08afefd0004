// fxDictionaryXDR_test.cpp - what a dictionary tells a transcriber.

#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "tests/support/recordingTranscriber.h"
#include "tests/support/testDictionary.h"

namespace {

const auto writer = RecordingTranscriber::writer;
const auto reader = RecordingTranscriber::reader;
const char headCalls[] = "uint*:1 uint*:1 uint*:1 uint*:1";

// The four words that a transcription starts with.
std::string head(unsigned int items, unsigned int keySize, unsigned int valueSize,
                 unsigned int numBuckets) {
    RecordingTranscriber t(reader);
    t.give(items).give(keySize).give(valueSize).give(numBuckets);
    return t.bytes;
}

std::string entry(int key, int value, unsigned int bucket) {
    RecordingTranscriber t(reader);
    t.give(key).give(value).give(bucket);
    return t.bytes;
}

}  // namespace

// Writing.

TEST(fxDictionaryXDR, writesSizesThenEntriesInChainOrder) {
    TestDictionary d(5);
    for (int key : {2, 7, 3})
        d.add(key, 10 * key);
    RecordingTranscriber t(writer);
    EXPECT_EQ(1, d.doxdr(t));
    EXPECT_EQ(std::string(headCalls) +
                  " int*:1 int*:1 uint*:1 int*:1 int*:1 uint*:1 "
                  "int*:1 int*:1 uint*:1",
              t.log());
    EXPECT_EQ(head(3, 4, 4, 5) + entry(7, 70, 2) + entry(2, 20, 2) + entry(3, 30, 3), t.bytes);
}

TEST(fxDictionaryXDR, writesFromTheFieldsThemselves) {
    TestDictionary d(5);
    d.add(7, 70);
    RecordingTranscriber t(writer);
    ASSERT_EQ(1, d.doxdr(t));
    EXPECT_EQ(&d.numItems, t.calls[0].address);
    EXPECT_EQ(&d.keySize, t.calls[1].address);
    EXPECT_EQ(&d.valueSize, t.calls[2].address);
    EXPECT_EQ(d.entry(7)->kvmem, d.keyAddress);
    EXPECT_EQ(d.valueOf(d.entry(7)), d.valueAddress);
}

TEST(fxDictionaryXDR, writesAnEmptyDictionary) {
    TestDictionary d(7);
    RecordingTranscriber t(writer);
    EXPECT_EQ(1, d.doxdr(t));
    EXPECT_EQ(headCalls, t.log());
    EXPECT_EQ(head(0, 4, 4, 7), t.bytes);
}

TEST(fxDictionaryXDR, writingStopsAtTheFirstFailure) {
    for (unsigned int step = 0; step < 10; ++step) {
        SCOPED_TRACE(step);
        TestDictionary d(5);
        d.add(2, 20);
        d.add(7, 70);
        RecordingTranscriber t(writer);
        t.failAt = step;
        EXPECT_EQ(0, d.doxdr(t));
        EXPECT_EQ(step + 1, t.calls.size());
        EXPECT_EQ("2: 7=70 2=20", d.contents());
    }
}

// Reading.

TEST(fxDictionaryXDR, readsWhatWasWrittenWithEachChainReversed) {
    TestDictionary original(5);
    for (int key : {2, 7, 12, 3})
        original.add(key, 10 * key);
    ASSERT_EQ("2: 12=120 7=70 2=20 3: 3=30", original.contents());
    RecordingTranscriber written(writer);
    ASSERT_EQ(1, original.doxdr(written));

    TestDictionary read(fxDictionary_type);
    RecordingTranscriber t(reader, written.bytes);
    EXPECT_EQ(1, read.doxdr(t));
    EXPECT_EQ(written.log(), t.log());
    EXPECT_EQ(t.bytes.size(), t.used);
    EXPECT_EQ("2: 2=20 7=70 12=120 3: 3=30", read.contents());
    EXPECT_EQ(4u, read.length());
    EXPECT_EQ(5u, read.getNumBuckets());
    EXPECT_EQ(120, *read.at(12));
}

TEST(fxDictionaryXDR, readsAnEmptyDictionary) {
    TestDictionary d(fxDictionary_type);
    RecordingTranscriber t(reader, head(0, 4, 4, 9));
    EXPECT_EQ(1, d.doxdr(t));
    EXPECT_EQ(headCalls, t.log());
    EXPECT_EQ(9u, d.getNumBuckets());
    EXPECT_EQ("", d.contents());
    d.add(10, 1);
    EXPECT_EQ("1: 10=1", d.contents());
}

TEST(fxDictionaryXDR, entriesLandInTheBucketOfTheStreamWithoutHashing) {
    TestDictionary d(fxDictionary_type);
    RecordingTranscriber t(reader, head(2, 4, 4, 5) + entry(2, 20, 4) + entry(7, 70, 0));
    EXPECT_EQ(1, d.doxdr(t));
    EXPECT_EQ("0: 7=70 4: 2=20", d.contents());
    EXPECT_EQ(nullptr, d.at(2)) << "its hash leads to bucket 2";
}

TEST(fxDictionaryXDR, sameKeyMayComeTwice) {
    TestDictionary d(fxDictionary_type);
    RecordingTranscriber t(reader, head(2, 4, 4, 5) + entry(2, 20, 2) + entry(2, 21, 2));
    EXPECT_EQ(1, d.doxdr(t));
    EXPECT_EQ("2: 2=21 2=20", d.contents());
    EXPECT_EQ(21, *d.at(2));
}

TEST(fxDictionaryXDR, keysAndValuesAreReadIntoOneBlock) {
    TestDictionary d(fxDictionary_type);
    RecordingTranscriber t(reader, head(1, 4, 4, 5) + entry(2, 20, 2));
    ASSERT_EQ(1, d.doxdr(t));
    EXPECT_EQ(d.entry(2)->kvmem, d.keyAddress);
    EXPECT_EQ(static_cast<char*>(d.keyAddress) + 4, d.valueAddress);
}

// The sizes in the stream replace the class's, as long as they hold a key and
// a value.
TEST(fxDictionaryXDR, largerKeysMoveTheValues) {
    for (unsigned int keySize : {4u, 8u, 16u, 4096u}) {
        for (unsigned int valueSize : {4u, 5u, 4096u}) {
            SCOPED_TRACE(testing::Message() << keySize << " and " << valueSize);
            TestDictionary d(fxDictionary_type);
            RecordingTranscriber t(reader, head(1, keySize, valueSize, 5) + entry(2, 20, 2));
            ASSERT_EQ(1, d.doxdr(t));
            EXPECT_EQ(keySize, d.keySize);
            EXPECT_EQ(valueSize, d.valueSize);
            EXPECT_EQ(static_cast<char*>(d.keyAddress) + keySize, d.valueAddress);
            EXPECT_EQ("2: 2=20", d.contents());
            d.add(7, 70);
            EXPECT_EQ("2: 7=70 2=20", d.contents());
        }
    }
}

namespace {

// Maps bytes to values of many bytes, as a host's class may.
class WideDictionary : public fxDictionary {
public:
    static const unsigned int width = 10000;

    explicit WideDictionary(unsigned int numBuckets) : fxDictionary(1, width, numBuckets) {}
    ~WideDictionary() override { cleanup(); }

    const char* className() const override { return "WideDictionary"; }
    unsigned int hashKey(const void* key) const override {
        return static_cast<unsigned int>(*static_cast<const char*>(key));
    }
    int compareKeys(const void* a, const void* b) const override { return std::memcmp(a, b, 1); }
    void copyKey(const void* from, void* to) const override { std::memcpy(to, from, 1); }
    void copyValue(const void* from, void* to) const override { std::memcpy(to, from, width); }
    void createValue(void* value) const override { std::memset(value, 0, width); }
    unsigned char xdrKey(fxTranscriber& t, void* key) override {
        return t.xdr(static_cast<char*>(key), 1);
    }
    unsigned char xdrValue(fxTranscriber& t, void* value) override {
        return t.xdr(static_cast<char*>(value), width);
    }
};

}  // namespace

TEST(fxDictionaryXDR, valuesAsLargeAsTheClassMakesThemComeBack) {
    const unsigned int n = 200;
    WideDictionary original(5);
    for (unsigned int i = 0; i < n; ++i) {
        const char key = static_cast<char>(i);
        const std::string value(WideDictionary::width, static_cast<char>(i + 1));
        original.addInternal(&key, value.data());
    }
    RecordingTranscriber written(writer);
    ASSERT_EQ(1, original.doxdr(written));

    WideDictionary read(3);
    RecordingTranscriber t(reader, written.bytes);
    ASSERT_EQ(1, read.doxdr(t));
    EXPECT_EQ(t.bytes.size(), t.used);
    EXPECT_EQ(n, read.length());
    EXPECT_EQ(5u, read.getNumBuckets());
    const char key = 41;
    const void* value = read.find(&key);
    ASSERT_NE(nullptr, value);
    EXPECT_EQ(std::string(WideDictionary::width, 42),
              std::string(static_cast<const char*>(value), WideDictionary::width));
}

TEST(fxDictionaryXDR, readingReplacesWhatTheDictionaryHolds) {
    TestDictionary d(7);
    d.add(1, 10);
    d.add(8, 80);
    fxDictIter iter(d);
    d.taken();
    RecordingTranscriber t(reader, head(1, 4, 4, 3) + entry(5, 50, 2));
    EXPECT_EQ(1, d.doxdr(t));
    EXPECT_EQ("2: 5=50", d.contents());
    EXPECT_EQ(3u, d.getNumBuckets());
    EXPECT_EQ(1u, d.length());
    EXPECT_EQ(1, d.keys);
    EXPECT_EQ(1, d.values);
    EXPECT_EQ(nullptr, iter.getKey());
}

TEST(fxDictionaryXDR, readingStopsAtTheFirstFailure) {
    const std::string bytes = head(2, 4, 4, 5) + entry(2, 20, 2) + entry(7, 70, 2);
    const struct {
        unsigned int step;
        const char* contents;
    } cases[] = {{0, ""}, {1, ""}, {2, ""},        {3, ""},        {4, ""},
                 {5, ""}, {6, ""}, {7, "2: 2=20"}, {8, "2: 2=20"}, {9, "2: 2=20"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.step);
        TestDictionary d(fxDictionary_type);
        RecordingTranscriber t(reader, bytes);
        t.failAt = c.step;
        EXPECT_EQ(0, d.doxdr(t));
        EXPECT_EQ(c.step + 1, t.calls.size());
        EXPECT_EQ(c.contents, d.contents()) << "entries read so far stay";
        if (c.step < 4)
            continue;
        // The block of the entry that failed is not freed. The first of its
        // three calls reads the key, the second the value.
        const unsigned int made = (c.step - 4) % 3;
        if (made > 0)
            delete *static_cast<int**>(d.keyAddress);
        if (made > 1)
            delete *static_cast<int**>(d.valueAddress);
        std::free(d.keyAddress);
    }
}

// Bad input.

TEST(fxDictionaryXDR, sizesThatCannotHoldTheClassesKeysAndValuesFail) {
    const struct {
        unsigned int keySize, valueSize;
    } cases[] = {{0, 4},
                 {3, 4},
                 {4, 0},
                 {4, 3},
                 {0, 0},
                 {4 + 0x100001, 4},
                 {4, 4 + 0x100001},
                 {0xFFFFFFFF, 4},
                 {4, 0xFFFFFFFF},
                 {0xFFFFFFFC, 8},
                 {0x80000000, 0x80000004}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.keySize << " and " << c.valueSize);
        TestDictionary d(fxDictionary_type);
        RecordingTranscriber t(reader, head(1, c.keySize, c.valueSize, 5) + entry(2, 20, 2));
        EXPECT_EQ(0, d.doxdr(t));
        EXPECT_EQ(headCalls, t.log());
        EXPECT_EQ("", d.contents());
        EXPECT_EQ(nullptr, d.at(2));
    }
}

TEST(fxDictionaryXDR, entriesWithoutBucketsFail) {
    for (unsigned int items : {1u, 1000u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(items);
        TestDictionary d(fxDictionary_type);
        RecordingTranscriber t(reader, head(items, 4, 4, 0) + entry(2, 20, 0));
        EXPECT_EQ(0, d.doxdr(t));
        EXPECT_EQ(headCalls, t.log());
    }
}

TEST(fxDictionaryXDR, moreBucketsThanThereIsMemoryFail) {
    for (unsigned int numBuckets :
         {0x40000000u, 0x40000001u, 0x7FFFFFFFu, 0xFFFFFFFFu, 0x30000000u}) {
        SCOPED_TRACE(numBuckets);
        TestDictionary d(fxDictionary_type);
        RecordingTranscriber t(reader, head(1, 4, 4, numBuckets) + entry(2, 20, 2));
        EXPECT_EQ(0, d.doxdr(t));
        EXPECT_EQ("", d.contents());
        EXPECT_EQ(nullptr, d.at(2));
        fxDictIter iter(d);
        EXPECT_EQ(nullptr, iter.getKey());
    }
}

namespace {

[[noreturn]] void readTheMostBuckets() {
    TestDictionary d(fxDictionary_type);
    RecordingTranscriber t(reader, head(1, 4, 4, 0x3FFFFFFF) + entry(2, 20, 2));
    const bool failed = d.doxdr(t) == 0 && d.contents().empty();
    std::_Exit(failed ? 0 : 1);
}

}  // namespace

// In a process of its own: some memory checkers do not survive the request
// for a block that ends at the last word of the address space.
TEST(fxDictionaryXDRDeathTest, bucketsThatFillTheAddressSpaceFail) {
    EXPECT_EXIT(readTheMostBuckets(), testing::ExitedWithCode(0), "");
}

TEST(fxDictionaryXDR, manyBucketsAreRead) {
    const unsigned int numBuckets = 1u << 20;
    TestDictionary d(fxDictionary_type);
    RecordingTranscriber t(reader, head(1, 4, 4, numBuckets) + entry(5, 50, 5));
    EXPECT_EQ(1, d.doxdr(t));
    EXPECT_EQ(numBuckets, d.getNumBuckets());
    EXPECT_EQ("5: 5=50", d.contents());
}

TEST(fxDictionaryXDR, bucketIndexPastTheEndFails) {
    for (unsigned int index : {5u, 6u, 0x40000000u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(index);
        TestDictionary d(fxDictionary_type);
        RecordingTranscriber t(reader, head(2, 4, 4, 5) + entry(2, 20, 2) + entry(7, 70, index));
        EXPECT_EQ(0, d.doxdr(t));
        EXPECT_EQ("2: 2=20", d.contents());
        delete *static_cast<int**>(d.keyAddress);
        delete *static_cast<int**>(d.valueAddress);
        std::free(d.keyAddress);
    }
}

TEST(fxDictionaryXDR, moreItemsThanArriveFail) {
    for (unsigned int items : {2u, 100u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(items);
        TestDictionary d(fxDictionary_type);
        RecordingTranscriber t(reader, head(items, 4, 4, 5) + entry(2, 20, 2));
        EXPECT_EQ(0, d.doxdr(t));
        EXPECT_EQ("2: 2=20", d.contents());
        std::free(d.keyAddress);
    }
}

// A bucket count of zero is only good for no items.

TEST(fxDictionaryXDR, lookUpsInADictionaryWithoutBucketsFindNothing) {
    TestDictionary d(fxDictionary_type);
    RecordingTranscriber t(reader, head(0, 4, 4, 0));
    EXPECT_EQ(1, d.doxdr(t));
    EXPECT_EQ(0u, d.getNumBuckets());

    const int key = 3;
    const int* k = &key;
    void* found = &found;
    EXPECT_EQ(nullptr, d.find(&k, &found));
    EXPECT_EQ(nullptr, found);
    EXPECT_EQ(nullptr, d.cut(&k));
    d.remove(&k);
    d.cleanup();
    fxDictIter iter(d);
    EXPECT_EQ(nullptr, iter.getKey());
    EXPECT_EQ(0u, d.length());
}

TEST(fxDictionaryXDR, theFirstEntryOfADictionaryWithoutBucketsBringsThem) {
    for (bool byFindCreate : {false, true}) {
        TestDictionary d(fxDictionary_type);
        RecordingTranscriber t(reader, head(0, 4, 4, 0));
        ASSERT_EQ(1, d.doxdr(t));
        const int key = 33;
        const int* k = &key;
        if (byFindCreate)
            d.findCreate(&k);
        else
            d.addInternal(&k, &k);
        EXPECT_EQ(31u, d.getNumBuckets());
        EXPECT_EQ(byFindCreate ? "2: 33=-1" : "2: 33=33", d.contents());
        EXPECT_EQ(1u, d.length());
    }
}

TEST(fxDictionaryXDR, aDictionaryWithoutBucketsCanBeWrittenAndCopied) {
    TestDictionary d(fxDictionary_type);
    RecordingTranscriber t(writer);
    EXPECT_EQ(1, d.doxdr(t));
    EXPECT_EQ(head(0, 4, 4, 0), t.bytes);
    const TestDictionary copy(d);
    EXPECT_EQ(0u, copy.getNumBuckets());
}
