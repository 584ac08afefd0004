#include <malloc.h>

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/binaryReading.h"

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

// Blocks that are not as long as their pointers want them. A pointer's length
// may be anything: classes often read it behind the pointer.

TEST(fxBinaryReaderBlocks, shortBlockIsCompletedWithUpTo4096Zeros) {
    const struct {
        std::uint32_t wanted, zeros;
    } cases[] = {{3 + 1, 1},
                 {3 + 100, 100},
                 {3 + 4095, 4095},
                 {3 + 4096, 4096},
                 {3 + 4097, 4096},
                 {100000, 4096},
                 {0x7FFFFFFF, 4096},
                 {0xA5A5A5A5, 4096},
                 {0xFFFFFFFE, 4096},
                 {0xFFFFFFFF, 4096},
                 {3, 0},
                 {2, 0},
                 {0, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.wanted);
        const ReadScript script(xdrBlocks(1, c.wanted));
        Reading r(objAndHead() + pointerTo(3) + bytesBody(3, 3, "abc"));
        const ScriptedObject* root = r.root();
        ASSERT_NE(nullptr, root);
        EXPECT_EQ("abc" + std::string(c.zeros, '\0'), std::string(root->blocks[0], 3 + c.zeros));
        EXPECT_LT(malloc_usable_size(root->blocks[0]), 3 + c.zeros + 64);
        delete[] root->blocks[0];
    }
}

TEST(fxBinaryReaderBlocks, lengthMayBeReadBehindItsPointer) {
    const ReadScript script([](ScriptedObject& self, fxTranscriber& t) {
        self.numbers[0] = 0x55AA55AA;  // what memory happened to hold
        return static_cast<unsigned char>(
            t.xdr(&self.blocks[0], static_cast<unsigned int>(self.numbers[0])) &&
            t.xdr(self.numbers, 1));
    });
    Reading r(objAndHead() + hex("43 04 03000000 03000000") + host(3) + bytesBody(3, 3, "abc"));
    const ScriptedObject* root = r.root();
    ASSERT_NE(nullptr, root);
    EXPECT_EQ(3, root->numbers[0]);
    EXPECT_EQ("abc", std::string(root->blocks[0], 3));
    delete[] root->blocks[0];
}

// The number of elements that is asked for may not fit a word in bytes.
TEST(fxBinaryReaderBlocks, numberOfElementsThatOverflowsIsALengthLikeAnyOther) {
    const auto readInto = [](auto** member, unsigned int n) {
        const ReadScript script(
            [member, n](ScriptedObject&, fxTranscriber& t) { return t.xdr(member, n); });
        Reading r(objAndHead() + pointerTo(3) + bytesBody(3, 8, "abcdefgh"));
        EXPECT_NE(nullptr, r.root());
        ASSERT_EQ(static_cast<void*>(r.block(3)), *member);
        EXPECT_EQ("abcdefgh" + std::string(4096, '\0'), std::string(r.block(3), 8 + 4096));
        delete[] * member;
    };
    long* longs = nullptr;
    readInto(&longs, 0x40000001);
    short* shorts = nullptr;
    readInto(&shorts, 0x80000002);
    double* doubles = nullptr;
    readInto(&doubles, 0x20000000);
}

namespace {
// Reads `n` blocks of one byte for which 5000 are wanted, and frees them. Says
// how many of them got 4096 zeros; the others get `rest`.
unsigned int blocksOf4097(fxBinaryReader& reader, MemoryStream& stream, unsigned int n,
                          unsigned int rest) {
    unsigned int completed = 0;
    for (unsigned int i = 0; i < n; ++i) {
        char* block = nullptr;
        stream.input += pointerTo(100 + i) + bytesBody(100 + i, 1, "x");
        EXPECT_EQ(1, reader.xdr(&block, 5000));
        EXPECT_NE(nullptr, reader.readObject(objType));
        if (!block)
            return 0;
        const bool full = malloc_usable_size(block) >= 4097;
        completed += full;
        EXPECT_EQ("x" + std::string(full ? 4096 : rest, '\0'),
                  std::string(block, full ? 4097 : 1 + rest));
        delete[] block;
    }
    return completed;
}
}  // namespace

TEST(fxBinaryReaderBlocks, noZerosFollowOnceTheyComeToAMegabyteInAStream) {
    Reading r("");
    EXPECT_EQ(256u, blocksOf4097(r.reader, r.stream, 256, 0));
    EXPECT_EQ(0u, blocksOf4097(r.reader, r.stream, 40, 0));
    Reading odd(pointerTo(3) + bytesBody(3, 3, "abc"));
    char* block = nullptr;
    EXPECT_EQ(1, odd.reader.xdr(&block, 3 + 4000));
    EXPECT_NE(nullptr, odd.root());
    delete[] block;
    EXPECT_EQ(255u, blocksOf4097(odd.reader, odd.stream, 256, 96)) << "the last few";
}

TEST(fxBinaryReaderBlocks, stringsAreCompletedWhateverBlocksGot) {
    Reading r("");
    EXPECT_EQ(256u, blocksOf4097(r.reader, r.stream, 257, 0));
    fxStr text;
    r.stream.input += hex("40 04") + host(4097) + pointerTo(3) + bytesBody(3, 1, "a");
    EXPECT_TRUE(text.xdr(r.reader));
    EXPECT_NE(nullptr, r.root());
    EXPECT_EQ(4096u, text.length());
    EXPECT_STREQ("a", text.c_str());
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

TEST(fxBinaryReaderBlocks, referenceIsSetWhateverTheLengthAskedFor) {
    Reading r(hex("45 03 03000000 03000000 'abc'"));
    char* block = reinterpret_cast<char*>(r.root());
    for (const unsigned int wanted : {0u, 2u, 3u, 4u, 100000u, 0xFFFFFFFFu}) {
        r.stream.input += hex("04 03000000 00000000");
        char* member = nullptr;
        EXPECT_EQ(1, r.reader.xdr(&member, wanted)) << wanted;
        EXPECT_EQ(block, member);
    }
    EXPECT_EQ("abc", std::string(block, 3));
    delete[] block;
}
