// fxDictionaryXDR_test.cpp - transcription of dictionaries, beyond what sets do alike.

#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "tests/support/recordingTranscriber.h"
#include "tests/support/testDictionary.h"

namespace {

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

TEST(fxDictionaryXDR, keysAndValuesAreReadIntoOneBlock) {
    TestDictionary d(fxDictionary_type);
    RecordingTranscriber t(reader, head(1, 4, 4, 5) + entry(2, 20, 2));
    ASSERT_EQ(1, d.doxdr(t));
    EXPECT_EQ(d.entry(2)->kvmem, d.keyAddress);
    EXPECT_EQ(static_cast<char*>(d.keyAddress) + 4, d.valueAddress);
}

// The sizes in the stream replace the class's.
TEST(fxDictionaryXDR, keySizesMoveTheValues) {
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

TEST(fxDictionaryXDR, sizesWhoseSumWrapsFail) {
    const struct {
        unsigned int keySize, valueSize;
    } cases[] = {{0xFFFFFFFF, 1}, {0xFFFFFFFC, 8}, {4, 0xFFFFFFFC}, {0x80000000, 0x80000004}};
    for (const auto& c : cases) {
        for (unsigned int items : {0u, 1u}) {
            SCOPED_TRACE(testing::Message() << c.keySize << " and " << c.valueSize);
            TestDictionary d(5);
            d.add(8, 80);
            RecordingTranscriber t(reader,
                                   head(items, c.keySize, c.valueSize, 5) + entry(2, 20, 2));
            EXPECT_EQ(0, d.doxdr(t));
            EXPECT_EQ(headCalls, t.log());
            EXPECT_EQ("3: 8=80", d.contents()) << "nothing was replaced";
            EXPECT_EQ(4u, d.keySize);
        }
    }
}
