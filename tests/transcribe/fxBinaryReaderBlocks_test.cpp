#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "tests/support/memoryStream.h"
#include "tests/support/scriptedObject.h"
#include "tests/support/streamBytes.h"

namespace {
using Script = ScriptedObject::Script;

struct Reading {
    explicit Reading(const std::string& bytes, short shortMark = 0x1122, long longMark = 0x33445566)
        : stream(bytes), reader(&stream, shortMark, longMark, "ieee") {}

    ScriptedObject* root() { return static_cast<ScriptedObject*>(reader.readObject(objType)); }
    char* block(unsigned int number) { return static_cast<char*>(reader.alreadyRead(number)); }

    MemoryStream stream;
    fxBinaryReader reader;
};

std::string objAndHead() { return hex("02 02000000 'Obj' 00 | 0a 01000000 02000000 01000000"); }

// The body of a block of bytes whose record says `length` and has `bytes`.
std::string bytesBody(unsigned int number, unsigned int length, const std::string& bytes) {
    return hex("c5") + word(static_cast<unsigned int>(bytes.size())) + word(number) + word(length) +
           bytes;
}

std::string pointerTo(unsigned int number) { return hex("03") + word(number) + word(4); }

// An object that is one string, whose block has number 3.
unsigned char xdrText(ScriptedObject& self, fxTranscriber& t) { return self.text.xdr(t); }

std::string textOf(unsigned int size) {
    return hex("02 02000000 'Obj' 00 | 4a 04 01000000 02000000 01000000") + host(size) +
           pointerTo(3);
}

// An object with `n` pointers to blocks of `length` bytes.
Script xdrBlocks(unsigned int n, unsigned int length) {
    return [n, length](ScriptedObject& self, fxTranscriber& t) {
        for (unsigned int i = 0; i < n; ++i) {
            if (!t.xdr(&self.blocks[i], length))
                return static_cast<unsigned char>(0);
        }
        return static_cast<unsigned char>(1);
    };
}
}  // namespace

// Pointers.

TEST(fxBinaryReaderBlocks, pointerIsSetOnceTheBlockHasBeenRead) {
    const ReadScript script([](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(t.xdr(&self.blocks[0], 3) && t.xdr(self.numbers, 1) &&
                                          !self.blocks[0]);
    });
    Reading r(objAndHead() + hex("43 04 03000000 03000000") + host(7) +
              hex("45 03 03000000 03000000 'abc'"));
    const ScriptedObject* root = r.root();
    ASSERT_NE(nullptr, root);
    EXPECT_EQ(7, root->numbers[0]) << "the pointer record's payload";
    EXPECT_EQ("abc", std::string(root->blocks[0], 3));
    EXPECT_EQ(root->blocks[0], r.block(3));
    delete[] root->blocks[0];
}

TEST(fxBinaryReaderBlocks, lengthInThePointerRecordIsNotUsed) {
    const ReadScript script(xdrBlocks(1, 3));
    for (const char* pointer : {"03 03000000 00000000", "03 03000000 ffffffff"}) {
        Reading r(objAndHead() + hex(pointer) + hex("45 03 03000000 03000000 'abc'"));
        const ScriptedObject* root = r.root();
        ASSERT_NE(nullptr, root);
        EXPECT_EQ("abc", std::string(root->blocks[0], 3));
        delete[] root->blocks[0];
    }
}

TEST(fxBinaryReaderBlocks, everyElementTypeIsConvertedAsItsScalars) {
    const std::string shorts = foreign<std::int16_t>(0x0A0B) + foreign<std::int16_t>(-2);
    const std::string longs = foreign(0x0A0B0C0D) + foreign(-3);
    const auto readInto = [](auto** member, unsigned int n, const std::string& bodyRecord) {
        const ReadScript script(
            [member, n](ScriptedObject&, fxTranscriber& t) { return t.xdr(member, n); });
        Reading r(objAndHead() + hex("03 03000000 08000000") + bodyRecord, 0x2211, 0x66554433);
        EXPECT_NE(nullptr, r.root());
    };
    char* chars = nullptr;
    readInto(&chars, 2, hex("45 02 03000000 02000000 'ab'"));
    EXPECT_EQ("ab", std::string(chars, 2));
    delete[] chars;
    unsigned char* unsignedChars = nullptr;
    readInto(&unsignedChars, 2, hex("45 02 03000000 02000000 'ab'"));
    EXPECT_EQ('b', unsignedChars[1]);
    delete[] unsignedChars;
    short* signedShorts = nullptr;
    readInto(&signedShorts, 2, hex("46 04 03000000 04000000") + shorts);
    EXPECT_TRUE(signedShorts[0] == 0x0A0B && signedShorts[1] == -2);
    delete[] signedShorts;
    unsigned short* unsignedShorts = nullptr;
    readInto(&unsignedShorts, 2, hex("46 04 03000000 04000000") + shorts);
    EXPECT_TRUE(unsignedShorts[0] == 0x0A0B && unsignedShorts[1] == 0xFFFE);
    delete[] unsignedShorts;
    long* signedLongs = nullptr;
    readInto(&signedLongs, 2, hex("47 08 03000000 08000000") + longs);
    EXPECT_TRUE(signedLongs[0] == 0x0A0B0C0D && signedLongs[1] == -3);
    delete[] signedLongs;
    unsigned long* unsignedLongs = nullptr;
    readInto(&unsignedLongs, 2, hex("47 08 03000000 08000000") + longs);
    EXPECT_TRUE(unsignedLongs[0] == 0x0A0B0C0D && unsignedLongs[1] == 0xFFFFFFFD);
    delete[] unsignedLongs;
    int* ints = nullptr;
    readInto(&ints, 2, hex("47 08 03000000 08000000") + longs);
    EXPECT_TRUE(ints[0] == 0x0A0B0C0D && ints[1] == -3);
    delete[] ints;
    unsigned int* unsignedInts = nullptr;
    readInto(&unsignedInts, 2, hex("47 08 03000000 08000000") + longs);
    EXPECT_TRUE(unsignedInts[0] == 0x0A0B0C0D && unsignedInts[1] == 0xFFFFFFFD);
    delete[] unsignedInts;
    float* floats = nullptr;
    readInto(&floats, 1, hex("48 04 03000000 04000000") + host(1.5f));
    EXPECT_EQ(1.5f, floats[0]);
    delete[] floats;
    double* doubles = nullptr;
    readInto(&doubles, 1, hex("49 08 03000000 08000000") + host(2.5));
    EXPECT_EQ(2.5, doubles[0]);
    delete[] doubles;
}

TEST(fxBinaryReaderBlocks, textsAreBlocksOfWhateverLength) {
    unsigned char* unsignedText = nullptr;
    const ReadScript script([&unsignedText](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(t.xdr(&self.blocks[0]) && t.xdr(&unsignedText));
    });
    Reading r(objAndHead() + pointerTo(3) + pointerTo(4) +
              hex("45 03 04000000 03000000 'de' 00 | 45 04 03000000 04000000 'abc' 00"));
    const ScriptedObject* root = r.root();
    ASSERT_NE(nullptr, root);
    EXPECT_STREQ("abc", root->blocks[0]);
    EXPECT_STREQ("de", reinterpret_cast<char*>(unsignedText));
    delete[] root->blocks[0];
    delete[] unsignedText;
}

TEST(fxBinaryReaderBlocks, referenceToABlockThatWasReadResolves) {
    Reading r(hex("45 03 03000000 03000000 'abc' | 44 01 03000000 00000000 'z'"));
    char* block = reinterpret_cast<char*>(r.root());
    char* member = nullptr;
    EXPECT_EQ(1, r.reader.xdr(&member, 3));
    EXPECT_EQ(block, member);
    char next = 0;
    EXPECT_EQ(1, r.reader.xdr(&next, 1));
    EXPECT_EQ('z', next);
    delete[] block;
}

TEST(fxBinaryReaderBlocks, deliberateReferenceToABlockNotYetReadIsNull) {
    const ReadScript script([](ScriptedObject& self, fxTranscriber& t) {
        static char something;
        self.blocks[1] = &something;
        return xdrBlocks(2, 1)(self, t);
    });
    Reading r(objAndHead() + pointerTo(3) + hex("04 03000000 00000000") +
              hex("45 01 03000000 01000000 'a'"));
    const ScriptedObject* root = r.root();
    ASSERT_NE(nullptr, root);
    EXPECT_EQ('a', root->blocks[0][0]);
    EXPECT_EQ(nullptr, root->blocks[1]);
    delete[] root->blocks[0];
}

TEST(fxBinaryReaderBlocks, pointersToOneNumberShareTheBlock) {
    const ReadScript script(xdrBlocks(2, 3));
    Reading r(objAndHead() + pointerTo(3) + pointerTo(3) + hex("45 03 03000000 03000000 'abc'"));
    const ScriptedObject* root = r.root();
    ASSERT_NE(nullptr, root);
    EXPECT_NE(nullptr, root->blocks[0]);
    EXPECT_EQ(root->blocks[0], root->blocks[1]);
    delete[] root->blocks[0];
}

TEST(fxBinaryReaderBlocks, streamThatEndsBeforeAPointerFailsTheCall) {
    char* member = nullptr;
    EXPECT_EQ(0, Reading("").reader.xdr(&member, 3));
    EXPECT_EQ(0, Reading(hex("03 03000000 0300")).reader.xdr(&member, 3));
    EXPECT_EQ(nullptr, member);
}

TEST(fxBinaryReaderBlocksDeathTest, deliberateNullBlockPointerIsFatal) {
    char* text = nullptr;
    double* doubles = nullptr;
    Reading r(hex("01"));
    EXPECT_EXIT(r.reader.xdr(&text, 3), testing::KilledBySignal(SIGABRT), "^format error\n$");
    EXPECT_EXIT(r.reader.xdr(&text), testing::KilledBySignal(SIGABRT), "^format error\n$");
    EXPECT_EXIT(r.reader.xdr(&doubles, 1), testing::KilledBySignal(SIGABRT), "^format error\n$");
}

TEST(fxBinaryReaderBlocksDeathTest, recordsThatAreNoBlockPointersAreFatal) {
    const char* const records[] = {"00",
                                   "41 01 'a'",
                                   "02 02000000 'Obj' 00",
                                   "05 01000000 00000000",
                                   "06 01000000 00000000",
                                   "07 01000000 00000000",
                                   "08 01000000 00000000",
                                   "09 01000000 00000000",
                                   "0a 01000000 02000000 01000000",
                                   "0b 01000000 00000000",
                                   "0c 01000000 00000000",
                                   "0d 01000000 00000000",
                                   "0e 01000000 00000000"};
    char* member = nullptr;
    for (const char* record : records) {
        Reading r(hex(record));
        EXPECT_EXIT(r.reader.xdr(&member, 3), testing::KilledBySignal(SIGABRT), "^format error\n$")
            << record;
    }
}

TEST(fxBinaryReaderBlocks, pointerToAnotherKindOfRecordFails) {
    const ReadScript script(xdrBlocks(0, 0));
    Reading r(objAndHead() + hex("04 01000000 00000000 | 04 02000000 00000000"));
    EXPECT_NE(nullptr, r.root());
    char something = 0;
    char* member = &something;
    EXPECT_EQ(0, r.reader.xdr(&member, 1)) << "an object";
    EXPECT_EQ(0, r.reader.xdr(&member, 1)) << "a type";
    EXPECT_EQ(&something, member);
}

TEST(fxBinaryReaderBlocks, awaitedBlockThatIsAnotherKindOfRecordGivesNull) {
    const ReadScript script([](ScriptedObject& self, fxTranscriber& t) {
        return ReadScript::made().size() == 1 ? t.xdr(&self.blocks[0], 1)
                                              : static_cast<unsigned char>(1);
    });
    Reading itself(objAndHead() + pointerTo(1));
    EXPECT_EQ(nullptr, itself.root());
    for (ScriptedObject* object : ReadScript::made())
        delete object;
    ReadScript::made().clear();
    Reading another(objAndHead() + pointerTo(3) + hex("0a 03000000 02000000 01000000"));
    EXPECT_EQ(nullptr, another.root());
    for (ScriptedObject* object : ReadScript::made())
        delete object;
    ReadScript::made().clear();
    Reading type(objAndHead() + pointerTo(2));
    EXPECT_EQ(nullptr, type.root());
}

// Bodies.

TEST(fxBinaryReaderBlocks, rootMayBeABlock) {
    Reading r(hex("45 03 01000000 03000000 'abc' | 46 04 02000000 04000000") + host<short>(5) +
              host<short>(6) + hex("48 04 03000000 04000000") + host(1.5f));
    char* chars = reinterpret_cast<char*>(r.root());
    short* shorts = reinterpret_cast<short*>(r.root());
    float* floats = reinterpret_cast<float*>(r.root());
    ASSERT_TRUE(chars && shorts && floats);
    EXPECT_EQ("abc", std::string(chars, 3));
    EXPECT_EQ(6, shorts[1]);
    EXPECT_EQ(1.5f, floats[0]);
    delete[] chars;
    delete[] shorts;
    delete[] floats;
}

TEST(fxBinaryReaderBlocks, blockOfLengthZeroIsNotNull) {
    const ReadScript script(xdrBlocks(1, 0));
    Reading r(objAndHead() + pointerTo(3) + hex("05 03000000 00000000"));
    const ScriptedObject* root = r.root();
    ASSERT_NE(nullptr, root);
    EXPECT_NE(nullptr, root->blocks[0]);
    delete[] root->blocks[0];
}

TEST(fxBinaryReaderBlocks, bodyContinuesInTheNextRecords) {
    const ReadScript script(xdrBlocks(1, 1100));
    const std::string bytes = run(1100);
    const std::string asWritten = hex("85 0002 03000000 4c040000") + bytes.substr(0, 512) +
                                  hex("80 0002") + bytes.substr(512, 512) + hex("40 4c") +
                                  bytes.substr(1024);
    const std::string inOneRecord = bytesBody(3, 1100, bytes);
    const std::string inTwo = hex("05 03000000 4c040000 | 80 4c04") + bytes;
    for (const std::string& bodyRecords : {asWritten, inOneRecord, inTwo}) {
        Reading r(objAndHead() + pointerTo(3) + bodyRecords);
        const ScriptedObject* root = r.root();
        ASSERT_NE(nullptr, root);
        EXPECT_EQ(bytes, std::string(root->blocks[0], 1100));
        delete[] root->blocks[0];
    }
}

TEST(fxBinaryReaderBlocks, longBlocksAreReadAndConvertedInFull) {
    for (const unsigned int n : {16383u, 16384u, 16385u, 70001u, 300000u}) {
        SCOPED_TRACE(n);
        std::string payload;
        for (unsigned int i = 0; i < n; ++i)
            payload += foreign(i * 0x01010101U);
        Reading r(hex("c7") + word(n * 4) + word(3) + word(n * 4) + payload, 0x2211, 0x66554433);
        const auto* longs = reinterpret_cast<unsigned int*>(r.root());
        ASSERT_NE(nullptr, longs);
        unsigned int wrong = 0;
        for (unsigned int i = 0; i < n; ++i)
            wrong += longs[i] != i * 0x01010101U;
        EXPECT_EQ(0u, wrong);
        delete[] longs;
    }
}

TEST(fxBinaryReaderBlocks, bodyThatIsCutShortGivesNullAndEntersNothing) {
    const char* const bodies[] = {"45 02 03000000 03000000 'ab'", "46 02 03000000 04000000 'ab'",
                                  "47 02 03000000 04000000 'ab'", "48 02 03000000 04000000 'ab'",
                                  "49 02 03000000 08000000 'ab'", "05 03000000 01000000"};
    for (const char* bodyRecord : bodies) {
        Reading r(hex(bodyRecord));
        EXPECT_EQ(nullptr, r.root());
        EXPECT_EQ(nullptr, r.reader.alreadyRead(3)) << bodyRecord;
    }
}

TEST(fxBinaryReaderBlocks, hugeLengthsThatAreNotMetGiveNull) {
    for (const std::uint32_t length : {0xFFFFFFFFU, 0xFFFFFFFEU, 0xFFFFFFF0U, 0x80000000U,
                                       0x7FFFFFFFU, 0x20000000U, 0x00FFFFFFU}) {
        SCOPED_TRACE(length);
        EXPECT_EQ(nullptr,
                  Reading(hex("c5 a0860100 03000000") + word(length) + run(100000)).root());
        const ReadScript script(xdrBlocks(1, 3));
        Reading awaited(objAndHead() + hex("03 03000000") + word(length) + hex("45 03 03000000") +
                        word(length) + "abc");
        EXPECT_EQ(nullptr, awaited.root());
        EXPECT_EQ(nullptr, awaited.reader.alreadyRead(3));
    }
}

TEST(fxBinaryReaderBlocks, unitsThatAreCutShortAreNotConverted) {
    Reading r(hex("46 03 03000000 03000000 'abc' | 47 06 04000000 06000000 'abcdef'"), 0x2211,
              0x66554433);
    char* shorts = reinterpret_cast<char*>(r.root());
    char* longs = reinterpret_cast<char*>(r.root());
    ASSERT_TRUE(shorts && longs);
    EXPECT_EQ("bac", std::string(shorts, 3));
    EXPECT_EQ("dcbaef", std::string(longs, 6));
    delete[] shorts;
    delete[] longs;
}

TEST(fxBinaryReaderBlocks, numberUsedTwiceNamesTheLaterBlock) {
    Reading r(hex("45 01 03000000 01000000 'a' | 45 01 03000000 01000000 'b'"));
    char* first = reinterpret_cast<char*>(r.root());
    char* second = reinterpret_cast<char*>(r.root());
    ASSERT_TRUE(first && second);
    EXPECT_EQ('a', first[0]);
    EXPECT_EQ(second, r.block(3));
    EXPECT_EQ(1u, r.reader.getTable().length());
    delete[] first;
    delete[] second;
}

// Blocks that are not as long as their pointers want them.

TEST(fxBinaryReaderBlocks, shortBlockIsCompletedWithUpTo4096Zeros) {
    for (const unsigned int missing : {1u, 100u, 4095u, 4096u}) {
        SCOPED_TRACE(missing);
        const ReadScript script(xdrBlocks(1, 3 + missing));
        Reading r(objAndHead() + pointerTo(3) + bytesBody(3, 3, "abc"));
        const ScriptedObject* root = r.root();
        ASSERT_NE(nullptr, root);
        EXPECT_EQ("abc" + std::string(missing, '\0'), std::string(root->blocks[0], 3 + missing));
        delete[] root->blocks[0];
    }
}

TEST(fxBinaryReaderBlocks, blockThatIsStillShorterGivesNull) {
    for (const std::uint32_t wanted : {3 + 4097U, 100000U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        SCOPED_TRACE(wanted);
        const ReadScript script(xdrBlocks(1, wanted));
        Reading r(objAndHead() + pointerTo(3) + bytesBody(3, 3, "abc"));
        EXPECT_EQ(nullptr, r.root());
    }
}

TEST(fxBinaryReaderBlocks, blockIsAsLongAsTheMostDemandingPointerWants) {
    const unsigned int lengths[] = {2, 9, 5};
    const ReadScript script([&lengths](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(t.xdr(&self.blocks[0], lengths[0]) &&
                                          t.xdr(&self.blocks[1], lengths[1]) &&
                                          t.xdr(&self.blocks[2], lengths[2]));
    });
    Reading r(objAndHead() + pointerTo(3) + pointerTo(3) + pointerTo(3) + bytesBody(3, 3, "abc"));
    const ScriptedObject* root = r.root();
    ASSERT_NE(nullptr, root);
    EXPECT_EQ(std::string("abc\0\0\0\0\0\0", 9), std::string(root->blocks[0], 9));
    delete[] root->blocks[0];
}

TEST(fxBinaryReaderBlocks, referenceThatWantsMoreThanTheBlockHasFails) {
    Reading r(hex("45 03 03000000 03000000 'abc'") + hex("04 03000000 00000000") +
              hex("04 03000000 00000000"));
    char* block = reinterpret_cast<char*>(r.root());
    char* member = nullptr;
    EXPECT_EQ(0, r.reader.xdr(&member, 4));
    EXPECT_EQ(nullptr, member);
    EXPECT_EQ(1, r.reader.xdr(&member, 3));
    delete[] block;
}

// The number of elements comes from a stream as well; in bytes it may not fit
// a word.
TEST(fxBinaryReaderBlocks, numberOfElementsThatOverflowsGivesNull) {
    long* longs = nullptr;
    short* shorts = nullptr;
    double* doubles = nullptr;
    const Script scripts[] = {
        [&longs](ScriptedObject&, fxTranscriber& t) { return t.xdr(&longs, 0x40000001); },
        [&shorts](ScriptedObject&, fxTranscriber& t) { return t.xdr(&shorts, 0x80000002); },
        [&doubles](ScriptedObject&, fxTranscriber& t) { return t.xdr(&doubles, 0x20000000); }};
    for (const Script& s : scripts) {
        const ReadScript script(s);
        Reading r(objAndHead() + pointerTo(3) + bytesBody(3, 8, "abcdefgh"));
        EXPECT_EQ(nullptr, r.root());
        delete[] r.block(3);
    }
}

// Strings.

TEST(fxBinaryReaderBlocks, stringTakesItsBlockAsItsBuffer) {
    const ReadScript script(xdrText);
    Reading r(textOf(4) + bytesBody(3, 4, hex("'abc' 00")));
    ScriptedObject* root = r.root();
    ASSERT_NE(nullptr, root);
    EXPECT_TRUE(root->text == "abc");
    EXPECT_EQ(root->text.c_str(), r.block(3));
    root->text.append("def");  // in the allocator's own terms
    EXPECT_TRUE(root->text == "abcdef");
}

TEST(fxBinaryReaderBlocks, emptyStringIsItsSizeAlone) {
    const ReadScript script([](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(self.text.xdr(t) && t.xdr(self.numbers, 1));
    });
    Reading r(hex("02 02000000 'Obj' 00 | 4a 08 01000000 02000000 01000000") + host(1) + host(5));
    const ScriptedObject* root = r.root();
    ASSERT_NE(nullptr, root);
    EXPECT_TRUE(root->text == "");
    EXPECT_EQ(&fxStr::emptyString, root->text.c_str());
    EXPECT_EQ(5, root->numbers[0]);
}

TEST(fxBinaryReaderBlocks, stringsOfAnArrayAreReadInTurn) {
    fxStr strings[4];
    const ReadScript script(
        [&strings](ScriptedObject&, fxTranscriber& t) { return t.xdr(strings, 4); });
    Reading r(hex("02 02000000 'Obj' 00 | 4a 04 01000000 02000000 01000000") + host(2) +
              hex("43 08 03000000 02000000") + host(1) + host(3) + hex("43 04 04000000 03000000") +
              host(1) + bytesBody(4, 3, hex("'bc' 00")) + bytesBody(3, 2, hex("'a' 00")));
    ASSERT_NE(nullptr, r.root());
    EXPECT_TRUE(strings[0] == "a" && strings[1] == "" && strings[2] == "bc" && strings[3] == "");
}

TEST(fxBinaryReaderBlocks, stringArrayStopsAtTheFirstFailure) {
    fxStr strings[3] = {"", "", "z"};
    Reading r(hex("40 08") + host(1) + host(0));
    EXPECT_EQ(0, r.reader.xdr(strings, 3));
    EXPECT_TRUE(strings[2] == "z");
}

TEST(fxBinaryReaderBlocks, stringOfSizeZeroFailsAndIsEmpty) {
    Reading r(hex("40 04") + host(0));
    fxStr text;
    EXPECT_FALSE(text.xdr(r.reader));
    EXPECT_TRUE(text == "");
}

TEST(fxBinaryReaderBlocks, stringThatFailsIsEmpty) {
    const std::string tails[] = {"", hex("03 0300"), hex("04 03000000 00000000")};
    for (const std::string& tail : tails) {
        Reading r(hex("40 04") + host(7) + tail);
        fxStr text;
        EXPECT_FALSE(text.xdr(r.reader)) << dump(tail);
        EXPECT_TRUE(text == "");
    }
}

TEST(fxBinaryReaderBlocks, stringThatWaitsCanBeDestroyed) {
    Reading r(hex("40 04") + host(7) + pointerTo(3));
    {
        fxStr text;
        EXPECT_TRUE(text.xdr(r.reader));
    }
    r.reader.reset();
}

TEST(fxBinaryReaderBlocks, stringEndsWhereItsSizeSaysWhateverTheBlock) {
    const struct {
        unsigned int size;
        std::string block;
        std::string text;
    } cases[] = {
        {4, hex("'abc' 00"), "abc"},
        {4, "abcd", "abc"},                            // not NUL-terminated
        {4, "abcdefgh", "abc"},                        // longer
        {4, hex("'a' 00 'c' 00"), hex("'a' 00 'c'")},  // a NUL inside
        {6, "abc", hex("'abc' 00 00")},                // shorter
        {4, "", hex("00 00 00")},                      // nothing at all
        {4097, "a", "a" + std::string(4095, '\0')},    // as short as it may be
        {600, run(599) + '\0', run(599)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.size << " from " << c.block.size());
        const ReadScript script(xdrText);
        Reading r(textOf(c.size) +
                  bytesBody(3, static_cast<unsigned int>(c.block.size()), c.block));
        ScriptedObject* root = r.root();
        ASSERT_NE(nullptr, root);
        EXPECT_EQ(c.size - 1, root->text.length());
        EXPECT_EQ(dump(c.text), dump(std::string(root->text.c_str(), root->text.length())));
        EXPECT_EQ('\0', root->text.c_str()[c.size - 1]);
        root->text.append("more");
        EXPECT_EQ(c.size + 3, root->text.length());
    }
}

TEST(fxBinaryReaderBlocks, stringFarLongerThanItsBlockGivesNull) {
    for (const unsigned int size : {4098u, 100000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(size);
        const ReadScript script(xdrText);
        Reading r(textOf(size) + bytesBody(3, 1, "a"));
        EXPECT_EQ(nullptr, r.root());
        EXPECT_EQ(nullptr, r.reader.alreadyRead(3));
    }
}

TEST(fxBinaryReaderBlocks, blockBecomesOneStringOnly) {
    fxStr second;
    const ReadScript script([&second](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(self.text.xdr(t) && second.xdr(t));
    });
    Reading r(hex("02 02000000 'Obj' 00 | 4a 04 01000000 02000000 01000000") + host(4) +
              hex("43 04 03000000 04000000") + host(4) + pointerTo(3) +
              bytesBody(3, 4, hex("'abc' 00")));
    EXPECT_EQ(nullptr, r.root());
    EXPECT_TRUE(second == "abc") << "the one that was awaited first";
}

TEST(fxBinaryReaderBlocks, takenBlockIsNoStringAgain) {
    const ReadScript script(xdrText);
    Reading r(textOf(4) + bytesBody(3, 4, hex("'abc' 00")) + hex("40 04") + host(4) +
              hex("04 03000000 00000000"));
    ScriptedObject* root = r.root();
    ASSERT_NE(nullptr, root);
    fxStr second;
    EXPECT_FALSE(second.xdr(r.reader));
    EXPECT_TRUE(second == "");
    EXPECT_TRUE(root->text == "abc");
}

TEST(fxBinaryReaderBlocks, blockIsNotSharedBetweenAStringAndAnArray) {
    const ReadScript script([](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(t.xdr(&self.blocks[0], 4) && self.text.xdr(t));
    });
    Reading r(objAndHead() + hex("43 04 03000000 04000000") + host(4) + pointerTo(3) +
              bytesBody(3, 4, hex("'abc' 00")));
    EXPECT_EQ(nullptr, r.root());
    ASSERT_EQ(1u, ReadScript::made().size());
    EXPECT_EQ(nullptr, ReadScript::made()[0]->blocks[0]);
}

TEST(fxBinaryReaderBlocks, arraysBlockIsNoString) {
    Reading r(bytesBody(3, 4, hex("'abc' 00")) + hex("40 04") + host(4) +
              hex("04 03000000 00000000"));
    char* block = reinterpret_cast<char*>(r.root());
    fxStr text;
    EXPECT_FALSE(text.xdr(r.reader));
    EXPECT_TRUE(text == "");
    delete[] block;
}
