#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "tests/support/memoryStream.h"
#include "tests/support/streamBytes.h"

namespace {
// What `convert` makes of `count` bytes of the payload "abcdefghijkl", which
// comes in two records.
std::string converted(fxBinaryConverter convert, unsigned int count) {
    MemoryStream stream(hex("40 05 'abcde' 40 07 'fghijkl'"));
    fxBinaryReader reader(&stream, 0x1122, 0x33445566, "ieee");
    std::string bytes(12, '.');
    EXPECT_EQ(1, convert(reader, &bytes[0], count));
    return bytes;
}

const struct {
    const char* name;
    fxBinaryConverter convert;
    const char* eight;  // what it makes of 8 bytes
} converters[] = {
    {"shorts", fxBinaryReader_shorts, "abcdefgh"},
    {"longs", fxBinaryReader_longs, "abcdefgh"},
    {"floats", fxBinaryReader_floats, "abcdefgh"},
    {"doubles", fxBinaryReader_doubles, "abcdefgh"},
    {"BS", fxBinaryReader_BS, "badcfehg"},
    {"longsSS", fxBinaryReader_longsSS, "cdabghef"},
    {"longsBSSS", fxBinaryReader_longsBSSS, "dcbahgfe"},
};
}  // namespace

TEST(fxBinaryConverters, eachRearrangesItsUnits) {
    for (const auto& c : converters) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(std::string(c.eight) + "....", converted(c.convert, 8));
        EXPECT_EQ(std::string(c.eight, 4) + "........", converted(c.convert, 4));
    }
}

TEST(fxBinaryConverters, bytesBehindTheLastWholeUnitStayAsTheyAre) {
    EXPECT_EQ("badce.......", converted(fxBinaryReader_BS, 5));
    EXPECT_EQ("a...........", converted(fxBinaryReader_BS, 1));
    EXPECT_EQ("cdabefg.....", converted(fxBinaryReader_longsSS, 7));
    EXPECT_EQ("dcbaef......", converted(fxBinaryReader_longsBSSS, 6));
    EXPECT_EQ("abc.........", converted(fxBinaryReader_longsBSSS, 3));
}

TEST(fxBinaryConverters, nothingToReadIsASuccess) {
    for (const auto& c : converters) {
        MemoryStream stream;
        fxBinaryReader reader(&stream, 0x1122, 0x33445566, "ieee");
        EXPECT_EQ(1, c.convert(reader, nullptr, 0)) << c.name;
    }
}

TEST(fxBinaryConverters, failedReadIsReportedAndNothingConverted) {
    for (const auto& c : converters) {
        SCOPED_TRACE(c.name);
        MemoryStream stream(hex("40 04 'abcd'"));
        fxBinaryReader reader(&stream, 0x1122, 0x33445566, "ieee");
        std::string bytes(8, '.');
        EXPECT_EQ(0, c.convert(reader, &bytes[0], 8));
        EXPECT_EQ("abcd....", bytes);
    }
    for (const fxBinaryConverter convert : {fxBinaryReader_floatsVAX, fxBinaryReader_doublesVAX}) {
        MemoryStream stream(hex("40 04 'abcd'"));
        fxBinaryReader reader(&stream, 0x1122, 0x33445566, "ieee");
        char bytes[8];
        EXPECT_EQ(0, convert(reader, bytes, 8));
    }
}

TEST(fxBinaryConvertersDeathTest, vaxIsNotImplementedAndCalledFloatsInBothCases) {
    MemoryStream stream(hex("40 08 'abcdefgh'"));
    fxBinaryReader reader(&stream, 0x1122, 0x33445566, "ieee");
    char bytes[8];
    EXPECT_EXIT(fxBinaryReader_floatsVAX(reader, bytes, 4), testing::KilledBySignal(SIGABRT),
                "^fxBinaryReader_floatsVAX: not implemented\n$");
    EXPECT_EXIT(fxBinaryReader_doublesVAX(reader, bytes, 8), testing::KilledBySignal(SIGABRT),
                "^fxBinaryReader_floatsVAX: not implemented\n$");
}
