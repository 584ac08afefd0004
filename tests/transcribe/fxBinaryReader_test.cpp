#include "kelvofxds/transcribe/fxBinaryReader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStackBuffer.h"
#include "tests/support/memoryStream.h"
#include "tests/support/scriptedObject.h"
#include "tests/support/streamBytes.h"

struct fxBinaryReaderLayout {
    template <class Field>
    static unsigned int offset(const fxBinaryReader& r, const Field& field) {
        return static_cast<unsigned int>(reinterpret_cast<const char*>(&field) -
                                         reinterpret_cast<const char*>(&r));
    }

    static std::vector<unsigned int> converterOffsets(const fxBinaryReader& r) {
        return {offset(r, r.shortsConv), offset(r, r.longsConv), offset(r, r.floatsConv),
                offset(r, r.doublesConv)};
    }
};

static_assert(!std::is_copy_constructible<fxBinaryReader>::value, "it has an identity");
static_assert(offsetof(fxBinaryReaderItem, field) == 0, "stated order");
static_assert(offsetof(fxBinaryReaderItem, number) == 4, "stated order");

namespace {
// A reader of `bytes`, with the current record in sight.
class Reader : public fxBinaryReader {
public:
    explicit Reader(MemoryStream* s, short shortMark = 0x1122, long longMark = 0x33445566)
        : fxBinaryReader(s, shortMark, longMark, "ieee") {}
    using fxBinaryTranscriber::arg1;
    using fxBinaryTranscriber::arg2;
    using fxBinaryTranscriber::arg3;
    using fxBinaryTranscriber::arg4;
    using fxBinaryTranscriber::tag;
};

struct Reading {
    explicit Reading(const std::string& bytes) : stream(bytes), reader(&stream) {}

    // The next `n` bytes of payload, or "failed".
    std::string bytes(unsigned int n) {
        std::string result(n, '\0');
        return reader.readBytes(&result[0], n) ? result : "failed";
    }

    MemoryStream stream;
    Reader reader;
};

template <class Value>
std::string halvesSwapped(Value value) {
    std::string bytes = host(value);
    std::swap(bytes[0], bytes[2]);
    std::swap(bytes[1], bytes[3]);
    return bytes;
}

// Heads and arguments as the reader wants them, for every tag.
const struct {
    unsigned int tag;
    const char* arguments;
} tagTable[] = {{0, ""},
                {1, ""},
                {2, "21222324 'Obj' 00"},
                {3, "11121314 41424344"},
                {4, "11121314 61626364"},
                {5, "11121314 41424344"},
                {6, "11121314 41424344"},
                {7, "11121314 41424344"},
                {8, "11121314 41424344"},
                {9, "11121314 41424344"},
                {10, "11121314 21222324 31323334"},
                {11, "11121314 61626364"},
                {12, "11121314 61626364"},
                {13, "11121314 61626364"},
                {14, "11121314 61626364"}};
}  // namespace

// Shape and construction.

TEST(fxBinaryReader, convertersFollowEachOther) {
    Reading r("");
    EXPECT_EQ((std::vector<unsigned int>{4, 8, 12, 16}),
              fxBinaryReaderLayout::converterOffsets(r.reader));
}

TEST(fxBinaryReader, holdsItsStreamAndStartsEmpty) {
    MemoryStream stream("bytes");
    {
        Reader reader(&stream);
        EXPECT_EQ(2, stream.count);
        EXPECT_EQ(&stream, reader.getStream());
        EXPECT_EQ(1, reader.isReading());
        EXPECT_EQ(0u, stream.position) << "reads nothing yet";
        EXPECT_EQ(0u, reader.getTable().length()) << "number 0 is not entered";
        EXPECT_EQ(31u, reader.getTable().getNumBuckets());
        EXPECT_EQ(nullptr, reader.pop());
        EXPECT_STREQ("fxBinaryReader", reader.className());
    }
    EXPECT_EQ(1, stream.count);
}

TEST(fxBinaryReader, marksSelectTheConversionOfIntegersOnly) {
    const std::int16_t s = 0x0A0B;
    const std::int32_t l = 0x0C0D0E0F;
    const struct {
        short shortMark;
        long longMark;
        std::string shortBytes, longBytes;
    } cases[] = {
        {0x1122, 0x33445566, host(s), host(l)},
        {0x1122, 0x44336655, host(s), pairSwapped(l)},
        {0x1122, 0x55663344, host(s), halvesSwapped(l)},
        {0x1122, 0x66554433, host(s), foreign(l)},
        {0x2211, 0x33445566, foreign(s), host(l)},
        {0x2211, 0x44336655, foreign(s), pairSwapped(l)},
        {0x2211, 0x55663344, foreign(s), halvesSwapped(l)},
        {0x2211, 0x66554433, foreign(s), foreign(l)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << c.shortMark << " " << c.longMark);
        MemoryStream stream(hex("40 20") + c.shortBytes + c.shortBytes + c.longBytes + c.longBytes +
                            host(1.5f) + host(-2.25) + "abcd" + c.longBytes);
        Reader reader(&stream, c.shortMark, c.longMark);
        short signedShort = 0;
        unsigned short unsignedShort = 0;
        long signedLong = 0;
        unsigned long unsignedLong = 0;
        float f = 0;
        double d = 0;
        char chars[2] = {};
        unsigned char unsignedChars[2] = {};
        int signedInt = 0;
        EXPECT_EQ(1, reader.xdr(&signedShort, 1));
        EXPECT_EQ(1, reader.xdr(&unsignedShort, 1));
        EXPECT_EQ(1, reader.xdr(&signedLong, 1));
        EXPECT_EQ(1, reader.xdr(&unsignedLong, 1));
        EXPECT_EQ(1, reader.xdr(&f, 1));
        EXPECT_EQ(1, reader.xdr(&d, 1));
        EXPECT_EQ(1, reader.xdr(chars, 2));
        EXPECT_EQ(1, reader.xdr(unsignedChars, 2));
        EXPECT_EQ(1, reader.xdr(&signedInt, 1));
        EXPECT_EQ(s, signedShort);
        EXPECT_EQ(s, unsignedShort);
        EXPECT_EQ(l, signedLong);
        EXPECT_EQ(static_cast<unsigned long>(l), unsignedLong);
        EXPECT_EQ(1.5f, f) << "floats are never swapped";
        EXPECT_EQ(-2.25, d);
        EXPECT_EQ("ab", std::string(chars, 2));
        EXPECT_EQ('d', unsignedChars[1]);
        EXPECT_EQ(l, signedInt);
    }
}

TEST(fxBinaryReaderDeathTest, deliberateUnknownShortMarkShowsTheLongMark) {
    MemoryStream stream;
    const struct {
        short shortMark;
        long longMark;
        const char* message;
    } cases[] = {
        {0x1234, 0x33445566, "^fxBinaryReader: unknown short ordering 33445566\n$"},
        {0, 0x66554433, "^fxBinaryReader: unknown short ordering 66554433\n$"},
        {-1, 0x0BAD, "^fxBinaryReader: unknown short ordering bad\n$"},
        {0x2212, static_cast<long>(0x89ABCDEF),
         "^fxBinaryReader: unknown short ordering 89abcdef\n$"},
    };
    for (const auto& c : cases) {
        EXPECT_EXIT(fxBinaryReader(&stream, c.shortMark, c.longMark, "vax"),
                    testing::KilledBySignal(SIGABRT), c.message);
    }
}

TEST(fxBinaryReaderDeathTest, unknownLongMarkIsFatal) {
    MemoryStream stream;
    const struct {
        short shortMark;
        long longMark;
        const char* message;
    } cases[] = {
        {0x1122, 0x12345678, "^fxBinaryReader: unknown long ordering 12345678\n$"},
        {0x2211, 0, "^fxBinaryReader: unknown long ordering 0\n$"},
        {0x1122, static_cast<long>(0xFFFFFFFF),
         "^fxBinaryReader: unknown long ordering ffffffff\n$"},
    };
    for (const auto& c : cases) {
        EXPECT_EXIT(fxBinaryReader(&stream, c.shortMark, c.longMark, "vax"),
                    testing::KilledBySignal(SIGABRT), c.message);
    }
}

TEST(fxBinaryReaderDeathTest, floatFormatsOtherThanIeeeAreFatal) {
    MemoryStream stream;
    const struct {
        const char* format;
        const char* message;
    } cases[] = {
        {"vax", "^fxBinaryReader: unsupported floating point format vax\n$"},
        {"ieeex", "^fxBinaryReader: unsupported floating point format ieeex\n$"},
        {"iee", "^fxBinaryReader: unsupported floating point format iee\n$"},
        {"IEEE", "^fxBinaryReader: unsupported floating point format IEEE\n$"},
        {"", "^fxBinaryReader: unsupported floating point format \n$"},
        {"%s%n", "^fxBinaryReader: unsupported floating point format %s%n\n$"},
    };
    for (const auto& c : cases) {
        EXPECT_EXIT(fxBinaryReader(&stream, 0x1122, 0x33445566, c.format),
                    testing::KilledBySignal(SIGABRT), c.message);
    }
}

TEST(fxBinaryReaderDeathTest, writingIsFatal) {
    Reading r("");
    ScriptedObject object(objType);
    EXPECT_EXIT(r.reader.writeObject(&object, &object), testing::KilledBySignal(SIGABRT),
                "^tried to invoke fxBinaryReader::writeObject\n$");
}

// fill.

TEST(fxBinaryReader, fillReadsTheArgumentsOfEachTag) {
    for (const auto& c : tagTable) {
        SCOPED_TRACE(c.tag);
        const std::string arguments = hex(c.arguments);
        Reading r(static_cast<char>(c.tag) + arguments + "rest");
        EXPECT_EQ(1, r.reader.fill());
        EXPECT_EQ(c.tag, r.reader.tag);
        EXPECT_EQ(1 + arguments.size(), r.stream.position);
        if (c.tag > 2) {
            EXPECT_EQ(0x14131211u, r.reader.arg1);
        }
        if (c.tag == 2 || c.tag == 10) {
            EXPECT_EQ(0x24232221u, r.reader.arg2);
        }
        if (c.tag == 10) {
            EXPECT_EQ(0x34333231u, r.reader.arg3);
        }
        if (c.tag == 3 || (c.tag > 4 && c.tag < 10)) {
            EXPECT_EQ(0x44434241u, r.reader.arg4);
        }
    }
}

TEST(fxBinaryReader, deliberateReferencesHaveEightBytesOfArguments) {
    for (const char tag : {'\4', '\13', '\14', '\15', '\16'}) {
        SCOPED_TRACE(static_cast<int>(tag));
        Reading four(tag + hex("01000000"));
        EXPECT_EQ(0, four.reader.fill()) << "four bytes, as written, are not enough";
        Reading eight(tag + hex("01000000 ffffffff"));
        EXPECT_EQ(1, eight.reader.fill());
        EXPECT_EQ(1u, eight.reader.arg1) << "the second word is ignored";
    }
}

TEST(fxBinaryReader, fillFailsWhereverARecordIsCutShort) {
    const std::string lengths[] = {"", hex("03"), hex("0300"), hex("03000000")};
    for (const auto& c : tagTable) {
        for (unsigned int lengthClass = 0; lengthClass < 4; ++lengthClass) {
            SCOPED_TRACE(testing::Message() << "tag " << c.tag << ", class " << lengthClass);
            const std::string record = static_cast<char>(lengthClass << 6 | c.tag) +
                                       lengths[lengthClass] + hex(c.arguments) +
                                       (lengthClass ? "abc" : "");
            for (unsigned int length = 0; length < record.size(); ++length) {
                Reading r(record.substr(0, length));
                EXPECT_EQ(0, r.reader.fill()) << length;
            }
            Reading r(record);
            EXPECT_EQ(1, r.reader.fill());
            EXPECT_EQ(0u, r.stream.left());
            EXPECT_EQ(lengthClass ? "abc" : "", r.bytes(lengthClass ? 3 : 0));
        }
    }
}

TEST(fxBinaryReader, everyLengthClassIsAcceptedForEveryLength) {
    const struct {
        const char* head;
        unsigned int length;
    } cases[] = {{"40 00", 0},         {"80 0000", 0},         {"c0 00000000", 0},
                 {"40 01", 1},         {"80 0100", 1},         {"c0 01000000", 1},
                 {"40 ff", 255},       {"80 ff00", 255},       {"80 0001", 256},
                 {"c0 04000000", 4},   {"80 ff01", 511},       {"80 0002", 512},
                 {"c0 00020000", 512}, {"c0 ff010000", 511},   {"80 0102", 513},
                 {"80 5802", 600},     {"c0 58020000", 600},   {"80 0004", 1024},
                 {"80 ffff", 65535},   {"c0 00000100", 65536}, {"c0 70110100", 70000}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.head);
        Reading r(hex(c.head) + run(c.length) + hex("40 03 'end'"));
        EXPECT_EQ(1, r.reader.fill());
        EXPECT_EQ(run(c.length) + "end", r.bytes(c.length + 3));
        EXPECT_EQ(0u, r.stream.left());
    }
}

TEST(fxBinaryReader, longPayloadsAreReadInStepsOfTheBuffer) {
    Reading r(hex("c0 4c040000") + run(1100));
    r.stream.logging = true;
    EXPECT_EQ(1, r.reader.fill());
    EXPECT_EQ(run(1100), r.bytes(1100));
    EXPECT_EQ((std::vector<std::string>{"getBytes 1", "getBytes 4", "getBytes 512", "getBytes 512",
                                        "getBytes 76"}),
              r.stream.calls);
}

TEST(fxBinaryReader, fillDropsWhatIsLeftOfThePayload) {
    for (const unsigned int length : {5u, 512u, 513u, 1100u, 70000u}) {
        for (const unsigned int used : {0u, 3u}) {
            SCOPED_TRACE(testing::Message() << used << " of " << length);
            Reading r(hex("c0") + word(length) + run(length) + hex("40 03 'end'"));
            EXPECT_EQ(1, r.reader.fill());
            EXPECT_EQ(run(length).substr(0, used), r.bytes(used));
            EXPECT_EQ(1, r.reader.fill());
            EXPECT_EQ("end", r.bytes(3));
        }
    }
}

TEST(fxBinaryReader, longPayloadThatIsCutShortFailsWhenItIsMissed) {
    for (const char* head : {"80 4c04", "c0 4c040000", "c0 ffffffff"}) {
        SCOPED_TRACE(head);
        Reading dropped(hex(head) + run(600));
        EXPECT_EQ(1, dropped.reader.fill());
        EXPECT_EQ(0, dropped.reader.fill());
        Reading read(hex(head) + run(600));
        EXPECT_EQ(run(512), read.bytes(512));
        EXPECT_EQ("failed", read.bytes(512));
        EXPECT_EQ("failed", read.bytes(1));
    }
}

TEST(fxBinaryReader, failedFillLeavesNoPayload) {
    const std::string tails[] = {"", hex("40"), hex("4a 03 01000000"), hex("40 03 'ab'"),
                                 hex("c3 ff0000")};
    for (const std::string& tail : tails) {
        SCOPED_TRACE(dump(tail));
        Reading r(hex("40 05 'abcde'") + tail);
        EXPECT_EQ("ab", r.bytes(2));
        EXPECT_EQ(0, r.reader.fill());
        EXPECT_EQ("failed", r.bytes(1));
    }
}

TEST(fxBinaryReader, typeRecordEntersTheType) {
    Reading r(hex("42 02 07000000 'Obj' 00 'ab'"));
    EXPECT_EQ(nullptr, r.reader.alreadyRead(7));
    EXPECT_EQ(1, r.reader.fill());
    EXPECT_EQ(&objType, r.reader.alreadyRead(7));
    EXPECT_EQ("ab", r.bytes(2));
}

TEST(fxBinaryReader, laterTypeRecordReplacesAnEarlierOneOfItsNumber) {
    Reading r(hex("02 07000000 'Obj' 00 | 02 07000000 'Sub' 00"));
    EXPECT_EQ(1, r.reader.fill());
    EXPECT_EQ(1, r.reader.fill());
    EXPECT_EQ(&subType, r.reader.alreadyRead(7));
    EXPECT_EQ(1u, r.reader.getTable().length());
}

TEST(fxBinaryReaderDeathTest, unknownTypeIsFatalBeforeItsPayloadIsMissed) {
    Reading r(hex("42 04 07000000 'Unheard' 00"));
    EXPECT_EXIT(r.reader.fill(), testing::KilledBySignal(SIGABRT), "^unknown type Unheard\n$");
    Reading empty(hex("02 07000000 00"));
    EXPECT_EXIT(empty.reader.fill(), testing::KilledBySignal(SIGABRT), "^unknown type \n$");
    Reading longName(hex("02 07000000") + std::string(3000, 'x') + '\0');
    EXPECT_EXIT(longName.reader.fill(), testing::KilledBySignal(SIGABRT),
                "^unknown type x{3000}\n$");
    Reading otherCase(hex("02 07000000 'OBJ' 00"));
    EXPECT_EXIT(otherCase.reader.fill(), testing::KilledBySignal(SIGABRT), "^unknown type OBJ\n$");
}

TEST(fxBinaryReader, tagIsJudgedAfterTheLength) {
    for (unsigned int tag = 15; tag < 64; ++tag) {
        const char tags[] = {static_cast<char>(0x40 | tag), static_cast<char>(0x80 | tag),
                             static_cast<char>(0xC0 | tag)};
        EXPECT_EQ(0, Reading(std::string(1, tags[0])).reader.fill()) << tag;
        EXPECT_EQ(0, Reading(tags[1] + hex("00")).reader.fill()) << tag;
        EXPECT_EQ(0, Reading(tags[2] + hex("000000")).reader.fill()) << tag;
    }
}

TEST(fxBinaryReaderDeathTest, tagsFromFifteenOnAreFatal) {
    for (unsigned int tag = 15; tag < 64; ++tag) {
        Reading r(std::string(1, static_cast<char>(tag)));
        EXPECT_EXIT(r.reader.fill(), testing::KilledBySignal(SIGABRT), "^Whoops!\n$") << tag;
    }
    const char* const others[] = {"4f 05", "8f 0500", "cf 05000000", "ff 00000000"};
    for (const char* bytes : others) {
        Reading r(hex(bytes));
        EXPECT_EXIT(r.reader.fill(), testing::KilledBySignal(SIGABRT), "^Whoops!\n$") << bytes;
    }
}

// Data.

TEST(fxBinaryReader, scalarContinuesInTheNextRecord) {
    const std::string bytes = host(0x0A0B0C0D);
    Reading r(hex("40 01") + bytes.substr(0, 1) + hex("40 02") + bytes.substr(1, 2) + hex("40 02") +
              bytes.substr(3) + "z");
    long value = 0;
    EXPECT_EQ(1, r.reader.xdr(&value, 1));
    EXPECT_EQ(0x0A0B0C0D, value);
    EXPECT_EQ("z", r.bytes(1));
}

TEST(fxBinaryReader, foreignScalarContinuesInTheNextRecord) {
    const std::string bytes = foreign(0x0A0B0C0D);
    MemoryStream stream(hex("40 03") + bytes.substr(0, 3) + hex("40 01") + bytes.substr(3));
    Reader reader(&stream, 0x2211, 0x66554433);
    long value = 0;
    EXPECT_EQ(1, reader.xdr(&value, 1));
    EXPECT_EQ(0x0A0B0C0D, value);
}

// Payloads and reads around the buffer's size, in every combination.
TEST(fxBinaryReader, dataIsTheSameHoweverRecordsAndReadsCutIt) {
    const std::string bytes = run(5000);
    for (const unsigned int payload : {3u, 511u, 512u, 513u, 1024u, 1500u, 5000u}) {
        std::string records;
        for (unsigned int i = 0; i < bytes.size(); i += payload) {
            const std::string piece = bytes.substr(i, payload);
            records += hex("c0") + word(static_cast<unsigned int>(piece.size())) + piece + '\0';
        }
        for (const unsigned int step : {1u, 511u, 512u, 513u, 1024u, 1025u, 5000u}) {
            SCOPED_TRACE(testing::Message() << "payload " << payload << ", read by " << step);
            Reading r(records);
            std::string read;
            while (read.size() < bytes.size())
                read += r.bytes(std::min(step, static_cast<unsigned int>(5000 - read.size())));
            EXPECT_TRUE(read == bytes);
            EXPECT_EQ("failed", r.bytes(1));
        }
    }
}

TEST(fxBinaryReader, largeReadFailsWhereverTheDataEnds) {
    const std::string record = hex("80 0b04") + run(1035);
    for (unsigned int length = 0; length < record.size(); length += 11) {
        SCOPED_TRACE(length);
        Reading r(record.substr(0, length));
        EXPECT_EQ("failed", r.bytes(1035));
        EXPECT_EQ("failed", r.bytes(1)) << "nothing of it is left";
    }
}

TEST(fxBinaryReader, foreignScalarsAreConvertedWhereverRecordsCutThem) {
    const unsigned int n = 700;
    std::string bytes;
    for (unsigned int i = 0; i < n; ++i)
        bytes += foreign(static_cast<std::int32_t>(0x01020304 + i));
    for (const unsigned int first : {0u, 1u, 2u, 3u, 4u, 511u, 513u}) {
        SCOPED_TRACE(first);
        MemoryStream stream(hex("c0") + word(first) + bytes.substr(0, first) + hex("c0") +
                            word(n * 4 - first) + bytes.substr(first));
        Reader reader(&stream, 0x2211, 0x66554433);
        std::vector<long> values(n);
        ASSERT_EQ(1, reader.xdr(values.data(), n));
        unsigned int wrong = 0;
        for (unsigned int i = 0; i < n; ++i)
            wrong += values[i] != static_cast<long>(0x01020304 + i);
        EXPECT_EQ(0u, wrong);
    }
}

TEST(fxBinaryReader, dataIsTakenFromRecordsOfAnyTag) {
    std::string bytes = hex("40 01 'a'");
    for (const auto& c : tagTable)  // without and with payload
        bytes += static_cast<char>(c.tag) + hex(c.arguments) + static_cast<char>(0x40 | c.tag) +
                 '\1' + hex(c.arguments) + static_cast<char>('A' + c.tag);
    Reading r(bytes);
    EXPECT_EQ("aABCDEFGHIJKLMNO", r.bytes(16));
    EXPECT_EQ(0u, r.stream.left());
    EXPECT_EQ(&objType, r.reader.alreadyRead(0x24232221)) << "types are entered on the way";
    EXPECT_EQ(1u, r.reader.getTable().length()) << "bodies are just data";
}

TEST(fxBinaryReader, noDataIsASuccessAtTheEnd) {
    Reading r("");
    EXPECT_EQ(1, r.reader.readBytes(nullptr, 0));
    char c = 'c';
    short s = 0;
    long l = 0;
    float f = 0;
    double d = 0;
    EXPECT_EQ(1, r.reader.xdr(&c, 0));
    EXPECT_EQ(1, r.reader.xdr(&s, 0));
    EXPECT_EQ(1, r.reader.xdr(&l, 0));
    EXPECT_EQ(1, r.reader.xdr(&f, 0));
    EXPECT_EQ(1, r.reader.xdr(&d, 0));
    EXPECT_EQ(1, r.reader.xdr(static_cast<fxStr*>(nullptr), 0));
}

TEST(fxBinaryReader, missingDataIsAFailure) {
    char c[2] = {};
    short s = 0;
    long l = 0;
    float f = 0;
    double d = 0;
    EXPECT_EQ(0, Reading(hex("40 01 'a'")).reader.xdr(c, 2));
    EXPECT_EQ(0, Reading(hex("40 01 'a'")).reader.xdr(&s, 1));
    EXPECT_EQ(0, Reading(hex("40 03 'abc'")).reader.xdr(&l, 1));
    EXPECT_EQ(0, Reading(hex("40 03 'abc'")).reader.xdr(&f, 1));
    EXPECT_EQ(0, Reading(hex("40 07 'abcdefg'")).reader.xdr(&d, 1));
}

TEST(fxBinaryReader, nameIsReadUpToItsNul) {
    Reading r(hex("'Obj' 00 'rest'"));
    fxStackBuffer name;
    EXPECT_EQ(1, r.reader.readName(name));
    EXPECT_EQ(4u, name.length());
    EXPECT_STREQ("Obj", name.getBase());
    EXPECT_EQ(4u, r.stream.position);
    EXPECT_EQ(0, r.reader.readName(name)) << "no NUL in the rest";
    EXPECT_EQ(8u, name.length());
}

// Numbers and the work list.

TEST(fxBinaryReader, unknownNumberHasNoAddress) {
    Reading r("");
    EXPECT_EQ(nullptr, r.reader.alreadyRead(0));
    EXPECT_EQ(nullptr, r.reader.alreadyRead(1));
    EXPECT_EQ(nullptr, r.reader.alreadyRead(0xFFFFFFFF));
    EXPECT_EQ(0u, r.reader.getTable().length());
}

TEST(fxBinaryReader, popTakesTheLastItemQueued) {
    Reading r("");
    auto* first = new fxBinaryReaderItem{nullptr, 1};
    auto* second = new fxBinaryReaderItem{nullptr, 2};
    r.reader.queue(first);
    r.reader.queue(second);
    EXPECT_EQ(second, r.reader.pop());
    EXPECT_EQ(first, r.reader.pop());
    EXPECT_EQ(nullptr, r.reader.pop());
    delete first;
    delete second;
}

TEST(fxBinaryReader, destructionFreesTheWorkList) {
    Reading r("");
    r.reader.queue(new fxBinaryReaderItem{nullptr, 1});
}

TEST(fxBinaryReader, resetForgetsNumbersAndWorkButNotThePayload) {
    Reading r(hex("42 03 07000000 'Obj' 00 'abc'"));
    EXPECT_EQ("a", r.bytes(1));
    r.reader.queue(new fxBinaryReaderItem{nullptr, 1});
    r.reader.reset();
    EXPECT_EQ(nullptr, r.reader.alreadyRead(7));
    EXPECT_EQ(0u, r.reader.getTable().length());
    EXPECT_EQ(nullptr, r.reader.pop());
    EXPECT_EQ("bc", r.bytes(2));
}
