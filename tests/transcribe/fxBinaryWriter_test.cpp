#include "kelvofxds/transcribe/fxBinaryWriter.h"

#include <cstddef>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/memoryStream.h"
#include "tests/support/scriptedObject.h"
#include "tests/support/streamBytes.h"

struct fxBinaryTranscriberLayout {
    // Offset of a field in the object that `t` is the shared part of.
    template <class Field>
    static unsigned int offset(const fxBinaryTranscriber& t, const Field& field) {
        return static_cast<unsigned int>(reinterpret_cast<const char*>(&field) -
                                         reinterpret_cast<const char*>(&t));
    }

    static std::vector<unsigned int> offsets(const fxBinaryTranscriber& t) {
        return {offset(t, t.buffer),       offset(t, t.cursor),   offset(t, t.capacity),
                offset(t, t.payloadCount), offset(t, t.table),    offset(t, t.tag),
                offset(t, t.arg1),         offset(t, t.arg2),     offset(t, t.arg3),
                offset(t, t.arg4),         offset(t, t.typeName), offset(t, t.workQueue)};
    }

    static unsigned int& tag(fxBinaryTranscriber& t) { return t.tag; }
    static unsigned int& arg3(fxBinaryTranscriber& t) { return t.arg3; }
    static unsigned int capacity(const fxBinaryTranscriber& t) { return t.capacity; }
    static unsigned int buffered(const fxBinaryTranscriber& t) { return t.payloadCount; }
    static bool cursorAtStart(const fxBinaryTranscriber& t) { return t.cursor == t.buffer; }
    static unsigned int queued(const fxBinaryTranscriber& t) { return t.workQueue.length(); }

    static void setRecord(fxBinaryTranscriber& t, unsigned int recordTag, const char* name) {
        t.tag = recordTag;
        t.arg1 = 0x11121314;
        t.arg2 = 0x21222324;
        t.arg3 = 0x31323334;
        t.arg4 = 0x41424344;
        t.typeName = name;
    }

    static bool argumentsAreKept(const fxBinaryTranscriber& t) {
        return t.arg1 == 0x11121314 && t.arg2 == 0x21222324 && t.arg3 == 0x31323334 &&
               t.arg4 == 0x41424344;
    }
};

struct fxBinaryWriterLayout {
    static unsigned int nextId(const fxBinaryWriter& w) { return w.nextId; }
    static unsigned int offsetOfNextId(const fxBinaryWriter& w) {
        return static_cast<unsigned int>(reinterpret_cast<const char*>(&w.nextId) -
                                         reinterpret_cast<const char*>(&w));
    }
};

static_assert(!std::is_copy_constructible<fxBinaryWriter>::value, "it has an identity");
static_assert(sizeof(fxBinaryWriterItem) == 16, "four words");
static_assert(offsetof(fxBinaryWriterItem, kind) == 0, "stated order");
static_assert(offsetof(fxBinaryWriterItem, address) == 4, "stated order");
static_assert(offsetof(fxBinaryWriterItem, extra) == 8, "stated order");
static_assert(offsetof(fxBinaryWriterItem, blockTag) == 12, "stated order");

namespace {
using Shared = fxBinaryTranscriberLayout;

class fxBinaryWriterTest : public testing::Test {
protected:
    fxBinaryWriterTest() : writer(&stream) {}

    // What has been written since the last call, pending data included.
    std::string flushed() {
        EXPECT_EQ(1, writer.flush());
        return take();
    }

    // The same without what is pending.
    std::string take() {
        const std::string text = dump(stream.written);
        stream.written.clear();
        return text;
    }

    void append(const std::string& bytes) {
        EXPECT_EQ(1, writer.writeBytes(const_cast<char*>(bytes.data()),
                                       static_cast<unsigned int>(bytes.size())));
    }

    MemoryStream stream;
    fxBinaryWriter writer;
};

using fxBinaryWriterDeathTest = fxBinaryWriterTest;

fxBinaryWriterItem* blockItem(void* address, unsigned int length, unsigned int tag) {
    return new fxBinaryWriterItem{1, address, length, tag};
}

// Tells on standard error what is put into it.
class TellingStream : public MemoryStream {
public:
    unsigned char putBytes(const char*, unsigned int n) override {
        std::fprintf(stderr, "put %u\n", n);
        return 1;
    }
};
}  // namespace

// Shape and construction.

TEST_F(fxBinaryWriterTest, sharedStateHasTheStatedFieldsInOrder) {
    EXPECT_EQ((std::vector<unsigned int>{4, 516, 520, 524, 528, 596, 600, 604, 608, 612, 616, 620}),
              Shared::offsets(writer));
    EXPECT_EQ(660u, sizeof(fxBinaryTranscriber)) << "its own part, then fxTranscriber";
    EXPECT_EQ(4u, fxBinaryWriterLayout::offsetOfNextId(writer));
}

TEST_F(fxBinaryWriterTest, basesAreVirtual) {
    // A virtual base cannot be cast down statically.
    fxTranscriber* base = &writer;
    EXPECT_EQ(&writer, dynamic_cast<fxBinaryWriter*>(base));
    EXPECT_NE(static_cast<void*>(base), dynamic_cast<void*>(base));
}

TEST_F(fxBinaryWriterTest, startsEmptyWithTheNullAddressNumbered) {
    EXPECT_EQ(0, writer.isReading());
    EXPECT_EQ(&stream, writer.getStream());
    EXPECT_EQ(2, stream.count);
    EXPECT_EQ(1u, fxBinaryWriterLayout::nextId(writer));
    EXPECT_EQ(512u, Shared::capacity(writer));
    EXPECT_EQ(0u, Shared::buffered(writer));
    EXPECT_TRUE(Shared::cursorAtStart(writer));
    EXPECT_EQ(0u, Shared::tag(writer));
    EXPECT_EQ(0u, Shared::queued(writer));
    EXPECT_EQ(31u, writer.getTable().getNumBuckets());
    EXPECT_EQ(1u, writer.getTable().length());
    const unsigned int null = 0;
    ASSERT_NE(nullptr, writer.getTable().find(&null));
    EXPECT_EQ(0u, *static_cast<unsigned int*>(writer.getTable().find(&null)));
    EXPECT_EQ("", stream.written);
}

TEST_F(fxBinaryWriterTest, isCalledFxBinaryWriter) {
    EXPECT_STREQ("fxBinaryWriter", writer.className());
}

TEST(fxBinaryWriter, destructionReleasesTheStreamAndFlushesNothing) {
    MemoryStream stream;
    {
        fxBinaryWriter writer(&stream);
        long value = 5;
        EXPECT_EQ(1, writer.xdr(&value, 1));
        char block[4] = {};
        writer.queue(blockItem(block, 4, fxOT_Bytes));
    }
    EXPECT_EQ(1, stream.count);
    EXPECT_EQ("", stream.written);
}

TEST_F(fxBinaryWriterDeathTest, readingIsFatal) {
    EXPECT_EXIT(writer.readObject(objType), testing::KilledBySignal(SIGABRT),
                "^tried to invoke fxBinaryWriter::readObject\n$");
}

// Record heads.

TEST_F(fxBinaryWriterTest, nothingPendingIsFlushedToNothing) {
    stream.failAtCall = 0;
    EXPECT_EQ(1, writer.flush());
    EXPECT_EQ("", stream.written);
}

TEST_F(fxBinaryWriterTest, argumentsFollowTheTag) {
    const std::string a1 = "14131211";
    const std::string a2 = "24232221";
    const std::string a3 = "34333231";
    const std::string a4 = "44434241";
    const struct {
        unsigned int tag;
        std::string bytes;
    } cases[] = {{1, "01"},           {2, "02" + a2 + "'Obj' 00"},
                 {3, "03" + a1 + a4}, {4, "04" + a1},
                 {5, "05" + a1 + a4}, {6, "06" + a1 + a4},
                 {7, "07" + a1 + a4}, {8, "08" + a1 + a4},
                 {9, "09" + a1 + a4}, {10, "0a" + a1 + a2 + a3},
                 {11, "0b" + a1},     {12, "0c" + a1},
                 {13, "0d" + a1},     {14, "0e" + a1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.tag);
        Shared::setRecord(writer, c.tag, "Obj");
        EXPECT_EQ(dump(hex(c.bytes.c_str())), flushed());
        EXPECT_EQ(0u, Shared::tag(writer)) << "nothing is pending afterwards";
        EXPECT_TRUE(Shared::argumentsAreKept(writer));
        EXPECT_EQ("", flushed());
    }
}

TEST_F(fxBinaryWriterTest, smallestLengthClassIsUsed) {
    const struct {
        unsigned int length;
        const char* head;
    } cases[] = {{1, "41 01"},     {2, "41 02"},     {255, "41 ff"},
                 {256, "81 0001"}, {511, "81 ff01"}, {512, "81 0002"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.length);
        EXPECT_EQ(1, writer.writeNullPointer());
        append(run(c.length));
        EXPECT_EQ(dump(hex(c.head) + run(c.length)), flushed());
        EXPECT_EQ(0u, Shared::buffered(writer));
        EXPECT_TRUE(Shared::cursorAtStart(writer));
    }
}

TEST_F(fxBinaryWriterTest, lengthStandsBetweenHeadAndArguments) {
    const struct {
        unsigned int tag;
        const char* head;
    } cases[] = {{0, "40 03"},
                 {1, "41 03"},
                 {2, "42 03 24232221 'Obj' 00"},
                 {3, "43 03 14131211 44434241"},
                 {9, "49 03 14131211 44434241"},
                 {10, "4a 03 14131211 24232221 34333231"},
                 {14, "4e 03 14131211"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.tag);
        Shared::setRecord(writer, c.tag, "Obj");
        append("abc");
        EXPECT_EQ(dump(hex(c.head) + "abc"), flushed());
    }
}

TEST_F(fxBinaryWriterTest, recordIsPutHeadFirstThenPayload) {
    stream.logging = true;
    append("abc");
    writer.flush();
    EXPECT_EQ((std::vector<std::string>{"putBytes 2", "putBytes 3"}), stream.calls);

    stream.calls.clear();
    writer.writeNullPointer();
    writer.flush();
    EXPECT_EQ((std::vector<std::string>{"putBytes 1"}), stream.calls);

    stream.calls.clear();
    append("abc");
    unsigned long number = 0;
    writer.writeType(objType, &number);
    EXPECT_EQ((std::vector<std::string>{"putBytes 6", "putBytes 4", "putBytes 3"}), stream.calls);
}

TEST_F(fxBinaryWriterDeathTest, tagsFromFifteenOnAreFatalBeforeAnythingIsPut) {
    TellingStream telling;
    fxBinaryWriter teller(&telling);
    for (const unsigned int tag : {15u, 16u, 63u, 64u, 74u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(tag);
        Shared::tag(teller) = tag;
        EXPECT_EXIT(teller.flush(), testing::KilledBySignal(SIGABRT), "^Whoops!\n$");
    }
    Shared::tag(teller) = 0;
}

TEST_F(fxBinaryWriterDeathTest, queuedBlockWithABadTagIsFatalBeforeItsFirstByte) {
    TellingStream telling;
    fxBinaryWriter teller(&telling);
    char block[] = "abc";
    ScriptedObject root(objType);
    teller.queue(blockItem(block, 4, 15));
    // The root goes first: the type's head and name, then the object's head.
    EXPECT_EXIT(teller.writeObject(&root, &root), testing::KilledBySignal(SIGABRT),
                "^put 5\nput 4\nput 13\nWhoops!\n$");
}

// Data.

TEST_F(fxBinaryWriterTest, scalarsAreAppendedInTheHostsOrder) {
    char chars[] = {'a', '\xFF'};
    unsigned char unsignedChars[] = {0, 200};
    short shorts[] = {0x1234, -2};
    unsigned short unsignedShorts[] = {0xFEDC, 1};
    long longs[] = {0x12345678, -3};
    unsigned long unsignedLongs[] = {0xFEDCBA98, 4};
    int ints[] = {-5, 6};
    unsigned int unsignedInts[] = {7, 0xFFFFFFF8};
    float floats[] = {1.5f, -0.0f};
    double doubles[] = {2.5, -1e300};

    EXPECT_EQ(1, writer.xdr(chars, 2));
    EXPECT_EQ(dump(hex("40 02 61 ff")), flushed());
    EXPECT_EQ(1, writer.xdr(unsignedChars, 2));
    EXPECT_EQ(dump(hex("40 02 00 c8")), flushed());
    EXPECT_EQ(1, writer.xdr(shorts, 2));
    EXPECT_EQ(dump(hex("40 04") + host<short>(0x1234) + host<short>(-2)), flushed());
    EXPECT_EQ(1, writer.xdr(unsignedShorts, 2));
    EXPECT_EQ(dump(hex("40 04") + host<unsigned short>(0xFEDC) + host<unsigned short>(1)),
              flushed());
    EXPECT_EQ(1, writer.xdr(longs, 2));
    EXPECT_EQ(dump(hex("40 08") + host(0x12345678) + host(-3)), flushed());
    EXPECT_EQ(1, writer.xdr(unsignedLongs, 2));
    EXPECT_EQ(dump(hex("40 08") + host(0xFEDCBA98U) + host(4)), flushed());
    EXPECT_EQ(1, writer.xdr(ints, 2));
    EXPECT_EQ(dump(hex("40 08") + host(-5) + host(6)), flushed());
    EXPECT_EQ(1, writer.xdr(unsignedInts, 2));
    EXPECT_EQ(dump(hex("40 08") + host(7) + host(-8)), flushed());
    EXPECT_EQ(1, writer.xdr(floats, 2));
    EXPECT_EQ(dump(hex("40 08") + host(1.5f) + host(-0.0f)), flushed());
    EXPECT_EQ(1, writer.xdr(doubles, 2));
    EXPECT_EQ(dump(hex("40 10") + host(2.5) + host(-1e300)), flushed());
}

TEST_F(fxBinaryWriterTest, noElementsAreNoData) {
    char c = 0;
    short s = 0;
    long l = 0;
    float f = 0;
    double d = 0;
    fxStr text;
    stream.failAtCall = 0;
    EXPECT_EQ(1, writer.xdr(&c, 0));
    EXPECT_EQ(1, writer.xdr(&s, 0));
    EXPECT_EQ(1, writer.xdr(&l, 0));
    EXPECT_EQ(1, writer.xdr(&f, 0));
    EXPECT_EQ(1, writer.xdr(&d, 0));
    EXPECT_EQ(1, writer.xdr(&text, 0));
    EXPECT_EQ(1, writer.writeBytes(nullptr, 0));
    EXPECT_EQ(0u, Shared::buffered(writer));
}

TEST_F(fxBinaryWriterTest, dataIsCollectedUntilTheNextFlush) {
    char c = 'a';
    long l = 0x01020304;
    writer.xdr(&c, 1);
    writer.xdr(&l, 1);
    writer.xdr(&c, 1);
    EXPECT_EQ("", take());
    EXPECT_EQ(dump(hex("40 06 61") + host(0x01020304) + "a"), flushed());
}

TEST_F(fxBinaryWriterTest, longRunsContinueInDataRecords) {
    const struct {
        unsigned int length;
        std::string expected;
    } cases[] = {
        {511, hex("81 ff01") + run(511)},
        {512, hex("81 0002") + run(512)},
        {513, hex("81 0002") + run(512) + hex("40 01") + run(513).substr(512)},
        {600, hex("81 0002") + run(512) + hex("40 58") + run(600).substr(512)},
        {1024, hex("81 0002") + run(512) + hex("80 0002") + run(1024).substr(512)},
        {1100, hex("81 0002") + run(512) + hex("80 0002") + run(1100).substr(512, 512) +
                   hex("40 4c") + run(1100).substr(1024)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.length);
        EXPECT_EQ(1, writer.writeNullPointer());
        append(run(c.length));
        EXPECT_EQ(dump(c.expected), flushed());
    }
}

TEST_F(fxBinaryWriterTest, longRunInPiecesIsCutAtTheSamePlaces) {
    const std::string bytes = run(1100);
    for (const unsigned int piece : {1u, 7u, 512u, 513u}) {
        SCOPED_TRACE(piece);
        for (unsigned int i = 0; i < bytes.size(); i += piece)
            append(bytes.substr(i, piece));
        EXPECT_EQ(dump(hex("80 0002") + run(512) + hex("80 0002") + run(1100).substr(512, 512) +
                       hex("40 4c") + run(1100).substr(1024)),
                  flushed());
    }
}

TEST_F(fxBinaryWriterTest, fullBufferIsWrittenOnlyWhenMoreArrives) {
    append(run(512));
    EXPECT_EQ("", take());
    append("x");
    EXPECT_EQ(dump(hex("80 0002") + run(512)), take());
    EXPECT_EQ(dump(hex("40 01 'x'")), flushed());
}

TEST_F(fxBinaryWriterTest, fullBufferFollowedByAPointerLeavesNoEmptyRecord) {
    append(run(512));
    EXPECT_EQ(1, writer.writeNullPointer());
    EXPECT_EQ(dump(hex("80 0002") + run(512) + hex("01")), flushed());
}

TEST_F(fxBinaryWriterTest, scalarThatCrossesTheBufferIsSplit) {
    append(run(510));
    long value = 0x0A0B0C0D;
    writer.xdr(&value, 1);
    const std::string bytes = host(0x0A0B0C0D);
    EXPECT_EQ(dump(hex("80 0002") + run(510) + bytes.substr(0, 2) + hex("40 02") + bytes.substr(2)),
              flushed());
}

TEST_F(fxBinaryWriterTest, nullPointerRecordTakesTheDataThatFollowsIt) {
    append("ab");
    EXPECT_EQ(1, writer.writeNullPointer());
    EXPECT_EQ(dump(hex("40 02 'ab'")), take()) << "what was pending went first";
    append("cd");
    EXPECT_EQ(dump(hex("41 02 'cd'")), flushed());
}

// Numbers.

TEST_F(fxBinaryWriterTest, numbersAreHandedOutInOrderOfSight) {
    int a, b;
    EXPECT_EQ(1u, writer.recordIdForAddress(&a));
    EXPECT_EQ(2u, writer.recordIdForAddress(&b));
    EXPECT_EQ(1u, writer.alreadyWritten(&a));
    EXPECT_EQ(2u, writer.alreadyWritten(&b));
    EXPECT_EQ(3u, fxBinaryWriterLayout::nextId(writer));
}

TEST_F(fxBinaryWriterTest, numberZeroMeansUnknown) {
    int a;
    EXPECT_EQ(0u, writer.alreadyWritten(&a));
    EXPECT_EQ(0u, writer.alreadyWritten(nullptr));
}

TEST_F(fxBinaryWriterTest, newNumberReplacesTheOldOneOfAnAddress) {
    int a;
    EXPECT_EQ(1u, writer.recordIdForAddress(&a));
    EXPECT_EQ(2u, writer.recordIdForAddress(&a));
    EXPECT_EQ(2u, writer.alreadyWritten(&a));
    EXPECT_EQ(2u, writer.getTable().length()) << "the null address and this one";
}

TEST_F(fxBinaryWriterTest, tableMapsAddressesToNumbers) {
    int a;
    writer.recordIdForAddress(&a);
    const void* key = &a;
    ASSERT_NE(nullptr, writer.getTable().find(&key));
    EXPECT_EQ(1u, *static_cast<unsigned int*>(writer.getTable().find(&key)));
}

TEST_F(fxBinaryWriterTest, manyAddressesKeepTheirNumbers) {
    std::vector<int> addresses(20000);
    for (unsigned int i = 0; i < addresses.size(); ++i)
        EXPECT_EQ(i + 1, writer.recordIdForAddress(&addresses[i]));
    unsigned int wrong = 0;
    for (unsigned int i = 0; i < addresses.size(); ++i)
        wrong += writer.alreadyWritten(&addresses[i]) != i + 1;
    EXPECT_EQ(0u, wrong);
    EXPECT_EQ(20001u, writer.getTable().length());
}

TEST_F(fxBinaryWriterTest, queueNumbersItsItemsAndPopTakesTheLast) {
    int a, b;
    fxBinaryWriterItem* first = blockItem(&a, 4, fxOT_Longs);
    fxBinaryWriterItem* second = blockItem(&b, 4, fxOT_Longs);
    EXPECT_EQ(1u, writer.queue(first));
    EXPECT_EQ(2u, writer.queue(second));
    EXPECT_EQ(2u, writer.alreadyWritten(&b));
    EXPECT_EQ(second, writer.pop());
    EXPECT_EQ(first, writer.pop());
    EXPECT_EQ(nullptr, writer.pop());
    delete first;
    delete second;
}

// Types.

TEST_F(fxBinaryWriterTest, newTypeIsDefinedAtOnce) {
    unsigned long number = 0;
    EXPECT_EQ(1, writer.writeType(objType, &number));
    EXPECT_EQ(1u, number);
    EXPECT_EQ(dump(hex("02 01000000 'Obj' 00")), take());
    EXPECT_EQ(1u, writer.alreadyWritten(&objType));
    EXPECT_EQ(1u, Shared::arg3(writer)) << "the type's version";

    EXPECT_EQ(1, writer.writeType(twoType, &number));
    EXPECT_EQ(2u, number);
    EXPECT_EQ(dump(hex("02 02000000 'Two' 00")), take());
    EXPECT_EQ(2u, Shared::arg3(writer));
}

TEST_F(fxBinaryWriterTest, knownTypeOnlyGivesItsNumber) {
    unsigned long number = 0;
    writer.writeType(objType, &number);
    writer.writeType(twoType, &number);
    take();
    EXPECT_EQ(1, writer.writeType(objType, &number));
    EXPECT_EQ(1u, number);
    EXPECT_EQ("", flushed());
    EXPECT_EQ(2u, Shared::arg3(writer)) << "the version of the type defined last";
}

TEST_F(fxBinaryWriterTest, bufferedDataTravelsInTheTypeRecord) {
    append("abc");
    unsigned long number = 0;
    EXPECT_EQ(1, writer.writeType(objType, &number));
    EXPECT_EQ(dump(hex("42 03 01000000 'Obj' 00 'abc'")), take());
}

// Reset.

TEST_F(fxBinaryWriterTest, resetForgetsAddressesAndQueuedItems) {
    int a, b;
    writer.recordIdForAddress(&a);
    writer.queue(blockItem(&b, 4, fxOT_Longs));
    writer.reset();
    EXPECT_EQ(0u, writer.alreadyWritten(&a));
    EXPECT_EQ(0u, writer.alreadyWritten(&b));
    EXPECT_EQ(nullptr, writer.pop());
}

TEST_F(fxBinaryWriterTest, deliberateResetGoesOnNumberingAndDoesNotReenterTheNullAddress) {
    int a;
    EXPECT_EQ(1u, writer.recordIdForAddress(&a));
    writer.reset();
    EXPECT_EQ(0u, writer.getTable().length());
    EXPECT_EQ(0u, writer.alreadyWritten(nullptr));
    EXPECT_EQ(2u, writer.recordIdForAddress(&a));
}

TEST_F(fxBinaryWriterTest, deliberateResetKeepsThePendingRecord) {
    unsigned long number = 0;
    writer.writeType(twoType, &number);
    writer.writeNullPointer();
    append("ab");
    take();
    writer.reset();
    EXPECT_EQ(2u, Shared::arg3(writer));
    EXPECT_EQ(dump(hex("41 02 'ab'")), flushed());
}

TEST_F(fxBinaryWriterTest, typesAreDefinedAgainAfterAReset) {
    unsigned long number = 0;
    writer.writeType(objType, &number);
    writer.reset();
    take();
    EXPECT_EQ(1, writer.writeType(objType, &number));
    EXPECT_EQ(2u, number);
    EXPECT_EQ(dump(hex("02 02000000 'Obj' 00")), take());
}

// Failure.

TEST_F(fxBinaryWriterTest, failedPutFailsTheFlushAndKeepsTheBuffer) {
    for (unsigned int call = 0; call < 2; ++call) {
        SCOPED_TRACE(call);
        MemoryStream failing;
        failing.failAtCall = call;
        fxBinaryWriter w(&failing);
        char bytes[] = {'a', 'b', 'c'};
        w.writeNullPointer();
        w.xdr(bytes, 3);
        EXPECT_EQ(0, w.flush());
        EXPECT_EQ(3u, Shared::buffered(w));
        EXPECT_EQ(1u, Shared::tag(w));
    }
}

// Two puts for each record of 512 bytes: its head and its payload.
TEST_F(fxBinaryWriterTest, failedPutInALongRunLeavesItsPieceInTheBuffer) {
    const std::string bytes = run(1100);
    for (unsigned int call = 0; call < 4; ++call) {
        SCOPED_TRACE(call);
        MemoryStream failing;
        failing.failAtCall = call;
        fxBinaryWriter w(&failing);
        w.writeNullPointer();
        EXPECT_EQ(0, w.writeBytes(const_cast<char*>(bytes.data()), 1100));
        EXPECT_EQ(512u, Shared::buffered(w));
        EXPECT_EQ(call < 2 ? 1u : 0u, Shared::tag(w));

        failing.failAtCall = MemoryStream::never;
        failing.written.clear();
        EXPECT_EQ(1, w.flush());
        EXPECT_EQ(dump(hex(call < 2 ? "81 0002" : "80 0002") + bytes.substr(call / 2 * 512, 512)),
                  dump(failing.written));
    }
}

TEST_F(fxBinaryWriterTest, everyOperationThatFlushesReportsAFailedPut) {
    long value = 1;
    long* block = &value;
    ScriptedObject object(objType);
    unsigned long number = 0;
    stream.failAtCall = 0;
    append("ab");
    EXPECT_EQ(0, writer.writeNullPointer());
    EXPECT_EQ(0, writer.writeType(objType, &number));
    EXPECT_EQ(0, writer.writePrimPointer(&value, 4, fxOT_Longs));
    EXPECT_EQ(0, writer.writePrimPointer(nullptr, 0, fxOT_Longs));
    EXPECT_EQ(0, writer.xdr(&block, 1));
    EXPECT_EQ(0, object.xdrLink(writer, 0));
    EXPECT_EQ(0, writer.xdr(objType, nullptr, &object));
    EXPECT_EQ(0, writer.writeObject(&object, &object));
    const std::string bytes = run(600);
    EXPECT_EQ(0, writer.writeBytes(const_cast<char*>(bytes.data()), 600));
}
