#include "kelvofxds/transcribe/fxMemoryStream.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/transcribe/fxTranscriber.h"
#include "tests/support/memoryStream.h"
#include "tests/support/streamBytes.h"

#pragma GCC diagnostic ignored "-Winvalid-offsetof"

struct fxMemoryStreamLayout {
    static_assert(offsetof(fxMemoryStream, bytes) == 8, "behind table and count");
    static_assert(offsetof(fxMemoryStream, block) == 12, "after bytes");
    static_assert(offsetof(fxMemoryStream, used) == 16, "after block");
    static_assert(offsetof(fxMemoryStream, room) == 20, "after used");
    static_assert(offsetof(fxMemoryStream, place) == 24, "after room");
    static_assert(offsetof(fxMemoryStream, isOwn) == 28, "after place");
    static_assert(sizeof(fxMemoryStream) == 32, "nothing else");

    static unsigned int room(const fxMemoryStream& s) { return s.room; }
};

namespace {

std::string contentOf(const fxMemoryStream& stream) {
    return std::string(stream.getBase(), stream.length());
}

unsigned char put(fxMemoryStream& stream, const std::string& bytes) {
    return stream.putBytes(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

// The next `n` bytes, or what says that they are not there.
std::string got(fxMemoryStream& stream, unsigned int n) {
    std::string bytes(n, '?');
    return stream.getBytes(&bytes[0], n) ? bytes : "nothing";
}

std::string writtenTo(fxStream& stream, fxXDRObj& object) {
    fxTranscriber* writer = fxTranscriber::getWriter(&stream);
    const unsigned char done = writer && writer->writeObject(&object, &object);
    delete writer;
    return done ? "written" : "failed";
}

// What the standard reader finds in `stream`.
fxStrStrDictionary* readFrom(fxStream& stream) {
    fxInitializeToolkit();
    fxTranscriber* reader = fxTranscriber::getReader(&stream);
    void* object = reader ? reader->readObject(fxStrStrDictionary_type) : nullptr;
    delete reader;
    return static_cast<fxStrStrDictionary*>(object);
}

void fill(fxStrStrDictionary& pairs, int n) {
    for (int i = 0; i < n; ++i)
        pairs.add(fxStr(i, "key %d"), fxStr(i, "%x"));
}
}  // namespace

// Own bytes.

TEST(fxMemoryStream, isEmptyReadableAndWritableAtFirst) {
    fxMemoryStream stream;
    EXPECT_EQ(0, stream.count);
    EXPECT_EQ(0u, stream.length());
    EXPECT_EQ(0u, stream.position());
    EXPECT_EQ(0, stream.hasError());
    EXPECT_EQ(1, stream.atEOF());
    EXPECT_EQ(1, stream.isReading());
    EXPECT_EQ(1, stream.isWriting());
    EXPECT_EQ(fxStream::readWriteStream, stream.getType());
}

TEST(fxMemoryStream, putAppendsAndGetReadsFromTheBeginning) {
    fxMemoryStream stream;
    EXPECT_EQ(1, put(stream, std::string("a\0b", 3)));
    EXPECT_EQ(1, put(stream, "cd"));
    EXPECT_EQ(std::string("a\0bcd", 5), contentOf(stream));
    EXPECT_EQ(std::string("a\0", 2), got(stream, 2));
    EXPECT_EQ(1, put(stream, "e"));
    EXPECT_EQ("bcde", got(stream, 4)) << "what is put meanwhile comes last";
    EXPECT_EQ(6u, stream.position());
    EXPECT_EQ(6u, stream.length());
}

TEST(fxMemoryStream, getOfMoreThanIsLeftTransfersNothing) {
    fxMemoryStream stream;
    put(stream, "abcdefghi");
    EXPECT_EQ("ab", got(stream, 2));
    char bytes[8] = "1234567";
    short shorts[4] = {1, 2, 3, 4};
    int ints[2] = {1, 2};
    long longs[2] = {1, 2};
    float floats[2] = {1, 2};
    double doubles[2] = {1, 2};
    EXPECT_EQ(0, stream.getBytes(bytes, 8));
    EXPECT_EQ(0, stream.getShorts(shorts, 4));
    EXPECT_EQ(0, stream.getInts(ints, 2));
    EXPECT_EQ(0, stream.getLongs(longs, 2));
    EXPECT_EQ(0, stream.getFloats(floats, 2));
    EXPECT_EQ(0, stream.getDoubles(doubles, 1));
    EXPECT_STREQ("1234567", bytes);
    EXPECT_EQ(1, shorts[0]);
    EXPECT_EQ(1, doubles[0]);
    EXPECT_EQ(2u, stream.position());
    EXPECT_EQ("cdefghi", got(stream, 7)) << "all that is left";
}

TEST(fxMemoryStream, sizesThatWrapAreMoreThanIsLeft) {
    fxMemoryStream stream;
    put(stream, "abcdefgh");
    double d = 1;
    short s = 2;
    EXPECT_EQ(0, stream.getBytes(reinterpret_cast<char*>(&d), 0xFFFFFFFF));
    EXPECT_EQ(0, stream.getShorts(&s, 0x80000001)) << "2 bytes, in 32 bits";
    EXPECT_EQ(0, stream.getDoubles(&d, 0x20000001)) << "8 bytes, in 32 bits";
    EXPECT_EQ(1, d);
    EXPECT_EQ(2, s);
    EXPECT_EQ(0u, stream.position());
}

TEST(fxMemoryStream, nothingCanAlwaysBeTransferred) {
    fxMemoryStream stream;
    EXPECT_EQ(1, stream.getBytes(nullptr, 0));
    EXPECT_EQ(1, stream.putBytes(nullptr, 0));
    EXPECT_EQ(1, stream.putDoubles(nullptr, 0));
    EXPECT_EQ(0u, stream.length());
    EXPECT_EQ(1, stream.atEOF());
}

TEST(fxMemoryStream, isAtItsEndWhenAllIsRead) {
    fxMemoryStream stream;
    put(stream, "ab");
    EXPECT_EQ(0, stream.atEOF());
    EXPECT_EQ("a", got(stream, 1));
    EXPECT_EQ(0, stream.atEOF());
    EXPECT_EQ("nothing", got(stream, 2));
    EXPECT_EQ(0, stream.atEOF()) << "one is left";
    EXPECT_EQ("b", got(stream, 1));
    EXPECT_EQ(1, stream.atEOF());
    put(stream, "c");
    EXPECT_EQ(0, stream.atEOF());
    EXPECT_EQ(0, stream.hasError());
}

TEST(fxMemoryStream, rewindLetsAllBeReadAgain) {
    fxMemoryStream stream;
    put(stream, "abc");
    EXPECT_EQ("abc", got(stream, 3));
    stream.rewind();
    EXPECT_EQ(0u, stream.position());
    EXPECT_EQ(0, stream.atEOF());
    put(stream, "d");
    EXPECT_EQ("abcd", got(stream, 4));
}

TEST(fxMemoryStream, clearForgetsAllAndKeepsTheBlock) {
    fxMemoryStream stream;
    put(stream, run(1000));
    EXPECT_EQ(run(10), got(stream, 10));
    const char* block = stream.getBase();
    stream.clear();
    EXPECT_EQ(0u, stream.length());
    EXPECT_EQ(0u, stream.position());
    EXPECT_EQ(1, stream.atEOF());
    EXPECT_EQ("nothing", got(stream, 1));
    EXPECT_EQ(1, put(stream, "abc"));
    EXPECT_EQ("abc", contentOf(stream));
    EXPECT_EQ(block, stream.getBase());
}

TEST(fxMemoryStream, itemsHaveTheirSizeAndTheHostsOrder) {
    const char bytes[] = {'a', '\x80'};
    const short shorts[] = {0x1234, -2};
    const int ints[] = {0x12345678, -3};
    const long longs[] = {0x23456789, -4};
    const float floats[] = {1.5f, -0.0f};
    const double doubles[] = {2.25, -1e300};
    fxMemoryStream stream;
    EXPECT_EQ(1, stream.putBytes(bytes, 2));
    EXPECT_EQ(1, stream.putShorts(shorts, 2));
    EXPECT_EQ(1, stream.putInts(ints, 2));
    EXPECT_EQ(1, stream.putLongs(longs, 2));
    EXPECT_EQ(1, stream.putFloats(floats, 2));
    EXPECT_EQ(1, stream.putDoubles(doubles, 2));
    const std::string expected =
        hex("'a' 80") + host<std::int16_t>(0x1234) + host<std::int16_t>(-2) +
        host<std::int32_t>(0x12345678) + host<std::int32_t>(-3) + host<std::int32_t>(0x23456789) +
        host<std::int32_t>(-4) + host(1.5f) + host(-0.0f) + host(2.25) + host(-1e300);
    EXPECT_EQ(dump(expected), dump(contentOf(stream)));

    char b[2];
    short s[2];
    int i[2];
    long l[2];
    float f[2];
    double d[2];
    EXPECT_EQ(1, stream.getBytes(b, 2) && b[0] == 'a' && b[1] == '\x80');
    EXPECT_EQ(1, stream.getShorts(s, 2) && s[0] == 0x1234 && s[1] == -2);
    EXPECT_EQ(1, stream.getInts(i, 2) && i[0] == 0x12345678 && i[1] == -3);
    EXPECT_EQ(1, stream.getLongs(l, 2) && l[0] == 0x23456789 && l[1] == -4);
    EXPECT_EQ(1, stream.getFloats(f, 2) && f[0] == 1.5f && host(f[1]) == host(-0.0f));
    EXPECT_EQ(1, stream.getDoubles(d, 2) && d[0] == 2.25 && d[1] == -1e300);
    EXPECT_EQ(1, stream.atEOF());
}

// Growth.

TEST(fxMemoryStream, growsByAFactorAndKeepsAllBytes) {
    fxMemoryStream stream;
    std::string expected;
    std::vector<unsigned int> rooms;
    for (unsigned int i = 0; i < 100000; ++i) {
        const char c = static_cast<char>(i * 7);
        ASSERT_EQ(1, stream.putBytes(&c, 1));
        expected += c;
        if (rooms.empty() || rooms.back() != fxMemoryStreamLayout::room(stream))
            rooms.push_back(fxMemoryStreamLayout::room(stream));
    }
    EXPECT_TRUE(expected == contentOf(stream));
    EXPECT_EQ(256u, rooms.front());
    EXPECT_EQ(16u, rooms.size()) << "blocks, the last of 112,055 bytes";
}

TEST(fxMemoryStream, growsToWhatIsPutAtOnce) {
    for (const unsigned int n : {1u, 255u, 256u, 257u, 384u, 385u, 70001u}) {
        SCOPED_TRACE(n);
        fxMemoryStream stream;
        EXPECT_EQ(1, put(stream, run(n)));
        EXPECT_EQ(std::max(n, 256u), fxMemoryStreamLayout::room(stream));
        EXPECT_EQ(1, put(stream, run(n)));
        EXPECT_TRUE(run(n) + run(n) == contentOf(stream));
    }
}

TEST(fxMemoryStream, ownBytesCanBePutAgain) {
    fxMemoryStream stream;
    std::string expected = "0123";
    put(stream, expected);
    for (unsigned int i = 0; i < 12; ++i) {
        const unsigned int skipped = i % 3;
        EXPECT_EQ(1, stream.putBytes(stream.getBase() + skipped, stream.length() - skipped));
        expected += expected.substr(skipped);
        ASSERT_TRUE(expected == contentOf(stream)) << i;
    }
}

TEST(fxMemoryStream, moreThanASizeCanSayIsRefused) {
    const char c = 'c';
    const double d = 1;
    fxMemoryStream stream;
    put(stream, "abc");
    EXPECT_EQ(0, stream.putBytes(&c, 0x7FFFFFFD)) << "2 GB in all";
    EXPECT_EQ(0, stream.putBytes(&c, 0xFFFFFFFF));
    EXPECT_EQ(0, stream.putShorts(reinterpret_cast<const short*>(&d), 0x80000001));
    EXPECT_EQ(0, stream.putDoubles(&d, 0x20000001));
    EXPECT_EQ("abc", contentOf(stream));
    EXPECT_EQ(1, put(stream, "d"));
    EXPECT_EQ("abcd", got(stream, 4));
}

// Others' bytes.

TEST(fxMemoryStream, othersBytesAreReadWhereTheyAre) {
    const char bytes[] = "abcdef";
    fxMemoryStream stream(bytes, 6);
    EXPECT_EQ(bytes, stream.getBase());
    EXPECT_EQ(6u, stream.length());
    EXPECT_EQ(0, stream.hasError());
    EXPECT_EQ(1, stream.isReading());
    EXPECT_EQ(0, stream.isWriting());
    EXPECT_EQ(fxStream::readStream, stream.getType());
    EXPECT_EQ("abcd", got(stream, 4));
    EXPECT_EQ("nothing", got(stream, 3));
    EXPECT_EQ("ef", got(stream, 2));
    EXPECT_EQ(1, stream.atEOF());
    stream.rewind();
    EXPECT_EQ("abcdef", got(stream, 6));
    stream.clear();
    EXPECT_EQ(0u, stream.length());
    EXPECT_EQ("nothing", got(stream, 1));
}

TEST(fxMemoryStream, othersBytesAreNeverWritten) {
    char bytes[] = "abcdef";
    fxMemoryStream stream(bytes, 6);
    const short s = 1;
    const int i = 2;
    const long l = 3;
    const float f = 4;
    const double d = 5;
    for (unsigned int n = 0; n < 2; ++n) {
        EXPECT_EQ(0, stream.putBytes("x", n));
        EXPECT_EQ(0, stream.putShorts(&s, n));
        EXPECT_EQ(0, stream.putInts(&i, n));
        EXPECT_EQ(0, stream.putLongs(&l, n));
        EXPECT_EQ(0, stream.putFloats(&f, n));
        EXPECT_EQ(0, stream.putDoubles(&d, n));
        stream.clear();
    }
    EXPECT_EQ(0, stream.putBytes("x", 1)) << "there is no room in them either when they are gone";
    EXPECT_STREQ("abcdef", bytes);
}

TEST(fxMemoryStream, noBytesAreAtTheirEnd) {
    fxMemoryStream stream(nullptr, 0);
    EXPECT_EQ(1, stream.atEOF());
    char c;
    EXPECT_EQ(0, stream.getBytes(&c, 1));
    EXPECT_EQ(1, stream.getBytes(&c, 0));
}

// Under transcribers.

TEST(fxMemoryStream, standardWriterPutsWhatItPutsElsewhere) {
    fxStrStrDictionary pairs;
    fill(pairs, 300);
    fxMemoryStream stream;
    stream.count = 1;
    MemoryStream elsewhere;
    EXPECT_EQ("written", writtenTo(stream, pairs));
    EXPECT_EQ("written", writtenTo(elsewhere, pairs));
    EXPECT_TRUE(elsewhere.written == contentOf(stream));
}

TEST(fxMemoryStream, standardReaderReadsBackBothKinds) {
    fxStrStrDictionary pairs;
    fill(pairs, 300);
    fxMemoryStream own;
    own.count = 1;
    EXPECT_EQ("written", writtenTo(own, pairs));
    fxMemoryStream others(own.getBase(), own.length());
    others.count = 1;
    for (fxMemoryStream* stream : {&own, &others}) {
        fxStrStrDictionary* read = readFrom(*stream);
        ASSERT_NE(nullptr, read);
        EXPECT_EQ(300u, read->length());
        EXPECT_TRUE(*read->find("key 255") == "ff");
        EXPECT_EQ(1, stream->atEOF());
        delete read;
    }
}

TEST(fxMemoryStream, truncatedHeaderIsNoStream) {
    const std::string header = hostHeader();
    for (unsigned int n = 0; n < header.size(); ++n) {
        fxMemoryStream part(header.data(), n);
        part.count = 1;
        fxInitializeToolkit();
        EXPECT_EQ(nullptr, fxTranscriber::getReader(&part)) << n;
    }
}

TEST(fxMemoryStream, transcriberDeletesItWithTheLastHolder) {
    fxStrArray strings;
    EXPECT_EQ("written", writtenTo(*new fxMemoryStream, strings)) << "leaks show to a checker";
}
