#include "kelvofxds/transcribe/fxBinaryFormatInternal.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/support/streamBytes.h"

using fxBinaryFormat::Order;
using fxBinaryFormat::Word;

TEST(fxBinaryFormat, marksShowTheOrderOfBytes) {
    const struct {
        std::uint32_t mark;
        Order shorts, longs;
    } cases[] = {{0x1122, Order::same, Order::unknown},
                 {0x2211, Order::bytesSwapped, Order::unknown},
                 {0x33445566, Order::unknown, Order::same},
                 {0x44336655, Order::unknown, Order::bytesSwapped},
                 {0x55663344, Order::unknown, Order::halvesSwapped},
                 {0x66554433, Order::unknown, Order::reversed},
                 {0, Order::unknown, Order::unknown},
                 {0x3344, Order::unknown, Order::unknown}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mark);
        EXPECT_EQ(c.shorts, fxBinaryFormat::orderOf(c.mark, fxBinaryFormat::shortMarks));
        EXPECT_EQ(c.longs, fxBinaryFormat::orderOf(c.mark, fxBinaryFormat::longMarks));
    }
}

TEST(fxBinaryFormat, sidesDifferInFiveKindsOfRecords) {
    unsigned int different = 0;
    for (const fxBinaryFormat::Record& record : fxBinaryFormat::records) {
        SCOPED_TRACE(record.name);
        EXPECT_EQ(&record, fxBinaryFormat::recordOf(record.tag));
        if (record.wordsWritten == record.wordsRead)
            continue;
        ++different;
        EXPECT_EQ(1, record.wordsWritten);
        EXPECT_EQ(2, record.wordsRead);
        EXPECT_EQ(Word::number, record.words[0]);
        EXPECT_EQ(Word::ignored, record.words[1]);
        EXPECT_TRUE(record.tag == fxOT_OldBlock || record.tag >= fxOT_ObjectPointer);
    }
    EXPECT_EQ(5u, different);
}

TEST(fxBinaryFormat, thereAreNoRecordsWithOtherTags) {
    EXPECT_EQ(15u, fxBinaryFormat::recordCount);
    for (const unsigned int tag : {15u, 63u, 64u, 0xFFFFFFFFu})
        EXPECT_EQ(nullptr, fxBinaryFormat::recordOf(tag)) << tag;
}

TEST(fxBinaryFormat, headHasTheShortestLengthAndLittleEndianWords) {
    const struct {
        std::uint32_t payload;
        const char* head;
    } cases[] = {{0, "0a"},
                 {1, "4a 01"},
                 {255, "4a ff"},
                 {256, "8a 0001"},
                 {65535, "8a ffff"},
                 {65536, "ca 00000100"},
                 {0xFFFFFFFF, "ca ffffffff"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.payload);
        char head[fxBinaryFormat::mostHeadBytes];
        char* end = fxBinaryFormat::putHead(head, fxOT_Object, c.payload);
        EXPECT_EQ(dump(hex(c.head)), dump(std::string(head, end)));
        for (const std::uint32_t word : {0x81828384, 1U, 0xFFFFFFFF})
            end = fxBinaryFormat::putWord(end, word);
        EXPECT_EQ(dump(hex(c.head) + hex("84838281 01000000 ffffffff")),
                  dump(std::string(head, end)));
    }
}

TEST(fxBinaryFormat, headByteIsTakenApart) {
    for (unsigned int head = 0; head < 256; ++head) {
        EXPECT_EQ(head & 0x3F, fxBinaryFormat::tagOf(static_cast<unsigned char>(head)));
        EXPECT_EQ(head >> 6, fxBinaryFormat::lengthClassOf(static_cast<unsigned char>(head)));
    }
}

TEST(fxBinaryFormat, littleEndianNumbersAreGotAsTheyWerePut) {
    const std::string bytes = hex("84 83 82 81");
    EXPECT_EQ(0x81828384u, fxBinaryFormat::getWord(bytes.data()));
    char put[4] = {'.', '.', '.', '.'};
    EXPECT_EQ(put + 2, fxBinaryFormat::putLittle(put, 0x81828384, 2));
    EXPECT_EQ(dump(hex("84 83 '..'")), dump(std::string(put, 4)));
    EXPECT_EQ(0x8384u, fxBinaryFormat::getLittle(put, 2));
    EXPECT_EQ(0u, fxBinaryFormat::getLittle(put, 0));
    EXPECT_EQ(put + 4, fxBinaryFormat::putWord(put, 0x81828384));
    EXPECT_EQ(dump(bytes), dump(std::string(put, 4)));
}
