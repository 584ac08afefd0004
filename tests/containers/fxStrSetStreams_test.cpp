// fxStrSetStreams_test.cpp - sets of strings through the library's writer and reader.

#include <memory>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxTranscriber.h"
#include "tests/support/memoryStream.h"
#include "tests/support/streamBytes.h"

// Streams. "A" hashes to 0x08000000 and "B" to 0x10000000, which are 2 and 1
// modulo 3.

namespace {

std::multiset<std::string> texts(fxStrSet& s) {
    std::multiset<std::string> result;
    for (fxStrSetIter iter(s); iter.key(); ++iter)
        result.insert(iter.key()->c_str());
    return result;
}

std::string streamOf(fxXDRObj& object) {
    fxInitializeToolkit();
    MemoryStream stream;
    const std::unique_ptr<fxTranscriber> t(fxTranscriber::getWriter(&stream));
    EXPECT_EQ(1, t->writeObject(&object, &object));
    return stream.written;
}

// The keys as an iterator visits them.
std::string inOrder(fxStrSet& s) {
    std::string keys;
    for (fxStrSetIter iter(s); iter.key(); ++iter)
        keys += std::string(iter.key()->c_str()) + " ";
    return keys;
}

std::unique_ptr<fxStrSet> setIn(const std::string& bytes) {
    fxInitializeToolkit();
    MemoryStream stream(bytes);
    const std::unique_ptr<fxTranscriber> t(fxTranscriber::getReader(&stream));
    return std::unique_ptr<fxStrSet>(static_cast<fxStrSet*>(t->readObject(fxStrSet_type)));
}

}  // namespace

TEST(fxStrSetStreams, streamIsItsSizesItsKeysAndTheirBuckets) {
    fxStrSet s(3);
    s.add("A");
    s.add("B");
    EXPECT_EQ(dump(hostHeader() + hex("02 02000000 'SET' 00 4a 10 01000000 02000000 01000000") +
                   host(2) + host(8) + host(3) +                                 // sizes
                   host(2) + hex("43 08 03000000 02000000") +                    // "B"
                   host(1) + host(2) + hex("43 04 04000000 02000000") + host(2)  // bucket, "A"
                   + hex("45 02 04000000 02000000 'A' 00 | 45 02 03000000 02000000 'B' 00")),
              dump(streamOf(s)));
}

TEST(fxStrSetStreams, streamOfASetWithAnEmptyKey) {
    fxStrSet s(1);
    s.add("");
    const std::string bytes = hostHeader() +
                              hex("02 02000000 'SET' 00 4a 14 01000000 02000000 01000000") +
                              host(1) + host(8) + host(1) + host(1) + host(0);
    EXPECT_EQ(dump(bytes), dump(streamOf(s)));
    const auto read = setIn(bytes);
    ASSERT_NE(nullptr, read);
    EXPECT_EQ(1u, read->length());
    EXPECT_EQ(1, read->contains(""));
}

TEST(fxStrSetStreams, streamsOfHostsOfEitherOrderAreRead) {
    const std::string little =
        littleHeader() + hex("02 02000000 'SET' 00 4a 10 01000000 02000000 01000000"
                             "02000000 08000000 03000000 02000000 | 43 08 03000000 02000000"
                             "01000000 02000000 | 43 04 04000000 02000000 02000000"
                             "45 02 04000000 02000000 'A' 00 | 45 02 03000000 02000000 'B' 00");
    const std::string big =
        bigHeader() + hex("02 02000000 'SET' 00 4a 10 01000000 02000000 01000000"
                          "00000002 00000008 00000003 00000002 | 43 08 03000000 02000000"
                          "00000001 00000002 | 43 04 04000000 02000000 00000002"
                          "45 02 04000000 02000000 'A' 00 | 45 02 03000000 02000000 'B' 00");
    for (const std::string& bytes : {little, big}) {
        const auto read = setIn(bytes);
        ASSERT_NE(nullptr, read);
        EXPECT_EQ(2u, read->length());
        EXPECT_EQ(3u, read->getNumBuckets());
        fxStrSetIter iter(*read);
        ASSERT_NE(nullptr, iter.key());
        EXPECT_STREQ("B", iter.key()->c_str()) << "bucket 1";
        ++iter;
        ASSERT_NE(nullptr, iter.key());
        EXPECT_STREQ("A", iter.key()->c_str()) << "bucket 2";
        EXPECT_EQ(1, read->contains("A"));
        EXPECT_EQ(1, read->contains("B"));
    }
}

TEST(fxStrSetStreams, deliberateEachChainComesBackReversed) {
    fxStrSet original(1);
    for (const char* key : {"first", "second", "third"})
        original.add(key);
    const std::string there = "third second first ", back = "first second third ";
    EXPECT_EQ(there, inOrder(original));
    const auto once = setIn(streamOf(original));
    ASSERT_NE(nullptr, once);
    EXPECT_EQ(back, inOrder(*once));
    const auto twice = setIn(streamOf(*once));
    ASSERT_NE(nullptr, twice);
    EXPECT_EQ(there, inOrder(*twice));
}

TEST(fxStrSetStreams, keysComeBackInTheSameBuckets) {
    fxStrSet original;
    for (int i = 0; i < 200; ++i)
        original.add(fxStr(i * 7919, "%d"));
    const auto read = setIn(streamOf(original));
    ASSERT_NE(nullptr, read);
    EXPECT_EQ(200u, read->length());
    EXPECT_EQ(texts(original), texts(*read));
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(1, read->contains(fxStr(i * 7919, "%d"))) << "found where its hash leads";
}

TEST(fxStrSetStreams, emptySetComesBack) {
    fxStrSet s;
    const auto read = setIn(streamOf(s));
    ASSERT_NE(nullptr, read);
    EXPECT_EQ(0u, read->length());
    EXPECT_EQ(31u, read->getNumBuckets());
}
