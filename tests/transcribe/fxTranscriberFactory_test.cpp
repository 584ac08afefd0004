#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/core/fxOrderedGlobal.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/str/fxStackBuffer.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "tests/support/memoryStream.h"
#include "tests/support/streamBytes.h"

namespace {
// The factory's state at start-up, before any test could change it.
fxTranscriber* (*const firstMakeWriter)(fxStream*) = fxTranscriber::makeWriter;

// Leaves the factory's process-wide state as it was.
class fxTranscriberFactory : public testing::Test {
protected:
    fxTranscriberFactory() {
        fxInitializeToolkit();
        savedReaders = fxTranscriber::readers;
        savedMakeWriter = fxTranscriber::makeWriter;
    }
    ~fxTranscriberFactory() override {
        if (fxTranscriber::readers != savedReaders)
            delete fxTranscriber::readers;
        fxTranscriber::readers = savedReaders;
        fxTranscriber::makeWriter = savedMakeWriter;
    }

    fxVoidPtrDict* savedReaders;
    fxTranscriber* (*savedMakeWriter)(fxStream*);
};

using fxTranscriberFactoryDeathTest = fxTranscriberFactory;

// A writer with a name of its own.
class NamedWriter : public fxBinaryWriter {
public:
    explicit NamedWriter(fxStream* s) : fxBinaryWriter(s) {}
    const char* className() const override { return "Named"; }
};

fxTranscriber* makeNamed(fxStream* s) { return new NamedWriter(s); }
fxTranscriber* makeNoWriter(fxStream*) { return nullptr; }

// What the reader factory below was called with.
struct {
    fxStream* stream;
    short shortMark;
    long longMark;
    std::string format;
    int calls;
} asked;

fxTranscriber* makeNoReader(fxStream* s, short shortMark, long longMark, const char* format) {
    asked = {s, shortMark, longMark, format, asked.calls + 1};
    return nullptr;
}

fxTranscriber* makeOtherReader(fxStream*, short, long, const char*) {
    ADD_FAILURE() << "this factory has been replaced";
    return nullptr;
}

std::string nameOf(const fxTranscriber* t) { return t ? t->className() : "none"; }
}  // namespace

// Writers.

TEST_F(fxTranscriberFactory, writerFactoryIsTheDefaultOneAtStart) {
    MemoryStream stream;
    fxTranscriber* writer = firstMakeWriter(&stream);
    EXPECT_EQ("fxBinaryWriter", nameOf(writer));
    delete writer;
}

TEST_F(fxTranscriberFactory, defaultWriterHoldsTheStreamAndWritesNothing) {
    MemoryStream stream;
    fxTranscriber* writer = fxTranscriber::makeDefaultWriter(&stream);
    EXPECT_NE(nullptr, dynamic_cast<fxBinaryWriter*>(writer));
    EXPECT_EQ(&stream, writer->getStream());
    EXPECT_EQ(0, writer->isReading());
    EXPECT_EQ(2, stream.count);
    EXPECT_EQ("", stream.written);
    delete writer;
    EXPECT_EQ(1, stream.count);
}

TEST_F(fxTranscriberFactory, getWriterWritesTheHeader) {
    MemoryStream stream;
    fxTranscriber* writer = fxTranscriber::getWriter(&stream);
    EXPECT_EQ("fxBinaryWriter", nameOf(writer));
    EXPECT_EQ(26u, stream.written.size());
    EXPECT_EQ(dump(hex("66 78 42 69 6e 61 72 79 57 72 69 74 65 72 00 69 65 65 65 00") +
                   host<short>(0x1122) + host<long>(0x33445566)),
              dump(stream.written));
    delete writer;
}

TEST_F(fxTranscriberFactory, headerIsFourCallsOnTheStream) {
    MemoryStream stream;
    stream.logging = true;
    delete fxTranscriber::getWriter(&stream);
    EXPECT_EQ((std::vector<std::string>{"putBytes 15", "putBytes 5", "putShorts 1", "putLongs 1"}),
              stream.calls);
}

TEST_F(fxTranscriberFactory, headerCarriesTheWritersOwnName) {
    MemoryStream stream;
    fxTranscriber::changeDefaultWriter(makeNamed);
    delete fxTranscriber::getWriter(&stream);
    EXPECT_EQ(dump(hex("'Named' 00 'ieee' 00") + host<short>(0x1122) + host<long>(0x33445566)),
              dump(stream.written));
}

TEST_F(fxTranscriberFactory, getWriterStopsAtTheFirstFailedCall) {
    for (unsigned int call = 0; call < 4; ++call) {
        SCOPED_TRACE(call);
        MemoryStream stream;
        stream.logging = true;
        stream.failAtCall = call;
        EXPECT_EQ(nullptr, fxTranscriber::getWriter(&stream));
        EXPECT_EQ(call + 1, stream.calls.size());
        EXPECT_EQ(1, stream.count) << "the writer has let go of it";
    }
}

TEST_F(fxTranscriberFactory, headerThatDoesNotFitIsAFailure) {
    for (unsigned int limit = 0; limit < 26; ++limit) {
        MemoryStream stream;
        stream.byteLimit = limit;
        EXPECT_EQ(nullptr, fxTranscriber::getWriter(&stream)) << limit;
    }
    MemoryStream stream;
    stream.byteLimit = 26;
    fxTranscriber* writer = fxTranscriber::getWriter(&stream);
    EXPECT_NE(nullptr, writer);
    delete writer;
}

TEST_F(fxTranscriberFactory, failureDeletesAStreamThatNobodyElseHolds) {
    bool deleted = false;
    auto* stream = new MemoryStream;
    stream->count = 0;
    stream->deleted = &deleted;
    stream->failAtCall = 0;
    EXPECT_EQ(nullptr, fxTranscriber::getWriter(stream));
    EXPECT_TRUE(deleted);
}

TEST_F(fxTranscriberFactory, factoryThatMakesNothingGivesNullAndWritesNothing) {
    MemoryStream stream;
    stream.logging = true;
    fxTranscriber::changeDefaultWriter(makeNoWriter);
    EXPECT_EQ(nullptr, fxTranscriber::getWriter(&stream));
    EXPECT_TRUE(stream.calls.empty());
}

TEST_F(fxTranscriberFactory, writerFactoryCanBeChangedAndReset) {
    MemoryStream stream;
    fxTranscriber::changeDefaultWriter(makeNamed);
    fxTranscriber* writer = fxTranscriber::getWriter(&stream);
    EXPECT_EQ("Named", nameOf(writer));
    delete writer;

    fxTranscriber::resetToDefaultWriter();
    writer = fxTranscriber::getWriter(&stream);
    EXPECT_EQ("fxBinaryWriter", nameOf(writer));
    delete writer;
}

TEST_F(fxTranscriberFactory, nullWriterFactoryIsIgnored) {
    MemoryStream stream;
    fxTranscriber::changeDefaultWriter(makeNamed);
    fxTranscriber::changeDefaultWriter(nullptr);
    fxTranscriber* writer = fxTranscriber::getWriter(&stream);
    EXPECT_EQ("Named", nameOf(writer));
    delete writer;
}

TEST_F(fxTranscriberFactory, nullStreamGivesNull) {
    EXPECT_EQ(nullptr, fxTranscriber::getWriter(nullptr));
    EXPECT_EQ(nullptr, fxTranscriber::getReader(nullptr));
}

// Readers.

TEST_F(fxTranscriberFactory, getReaderMakesABinaryReaderBehindTheHeader) {
    for (const std::string& header : {littleHeader(), bigHeader()}) {
        SCOPED_TRACE(dump(header));
        MemoryStream stream(header + "rest");
        fxTranscriber* reader = fxTranscriber::getReader(&stream);
        EXPECT_NE(nullptr, dynamic_cast<fxBinaryReader*>(reader));
        EXPECT_EQ("fxBinaryReader", nameOf(reader));
        EXPECT_EQ(1, reader->isReading());
        EXPECT_EQ(&stream, reader->getStream());
        EXPECT_EQ(2, stream.count);
        EXPECT_EQ(26u, stream.position);
        delete reader;
        EXPECT_EQ(1, stream.count);
    }
}

TEST_F(fxTranscriberFactory, headerIsReadByteByByteUpToTheMarks) {
    MemoryStream stream(hostHeader());
    stream.logging = true;
    delete fxTranscriber::getReader(&stream);
    std::vector<std::string> expected(20, "getBytes 1");
    expected.push_back("getShorts 1");
    expected.push_back("getLongs 1");
    EXPECT_EQ(expected, stream.calls);
}

TEST_F(fxTranscriberFactory, headerCutShortGivesNullAndLeavesTheStreamsCount) {
    for (unsigned int length = 0; length < 26; ++length) {
        SCOPED_TRACE(length);
        MemoryStream stream(hostHeader().substr(0, length));
        stream.count = 0;
        EXPECT_EQ(nullptr, fxTranscriber::getReader(&stream));
        EXPECT_EQ(0, stream.count);
    }
}

TEST_F(fxTranscriberFactory, endlessNameGivesNull) {
    MemoryStream stream(std::string(100000, 'x'));
    EXPECT_EQ(nullptr, fxTranscriber::getReader(&stream));
    MemoryStream format("fxBinaryWriter" + std::string(1, '\0') + std::string(100000, 'x'));
    EXPECT_EQ(nullptr, fxTranscriber::getReader(&format));
}

TEST_F(fxTranscriberFactory, nameIsLookedUpOnlyWhenTheWholeHeaderIsThere) {
    const std::string header = hex("'Unheard' 00 'ieee' 00 2211 66554433");
    for (unsigned int length = 0; length < header.size(); ++length) {
        MemoryStream stream(header.substr(0, length));
        EXPECT_EQ(nullptr, fxTranscriber::getReader(&stream)) << length;
    }
}

TEST_F(fxTranscriberFactoryDeathTest, unknownNameIsFatal) {
    MemoryStream stream(hex("'Unheard' 00 'ieee' 00 2211 66554433"));
    EXPECT_EXIT(fxTranscriber::getReader(&stream), testing::KilledBySignal(SIGABRT),
                "^Unknown transcriber type \"Unheard\"\n$");
    MemoryStream empty(hex("00 00 0000 00000000"));
    EXPECT_EXIT(fxTranscriber::getReader(&empty), testing::KilledBySignal(SIGABRT),
                "^Unknown transcriber type \"\"\n$");
    MemoryStream reader(hex("'fxBinaryReader' 00 'ieee' 00 2211 66554433"));
    EXPECT_EXIT(fxTranscriber::getReader(&reader), testing::KilledBySignal(SIGABRT),
                "^Unknown transcriber type \"fxBinaryReader\"\n$");
}

TEST_F(fxTranscriberFactoryDeathTest, nameWithoutAFactoryIsUnknown) {
    fxTranscriber::readers = nullptr;
    fxTranscriber::addTranscriber("Nobody", nullptr);
    MemoryStream stream(hex("'Nobody' 00 'ieee' 00 2211 66554433"));
    EXPECT_EXIT(fxTranscriber::getReader(&stream), testing::KilledBySignal(SIGABRT),
                "^Unknown transcriber type \"Nobody\"\n$");
}

TEST_F(fxTranscriberFactoryDeathTest, badMarksAndFormatsAreTheReadersBusiness) {
    MemoryStream marks(hex("'fxBinaryWriter' 00 'vax' 00") + host<short>(0x1122) +
                       host<long>(0x33445566));
    EXPECT_EXIT(fxTranscriber::getReader(&marks), testing::KilledBySignal(SIGABRT),
                "^fxBinaryReader: unsupported floating point format vax\n$");
    MemoryStream order(hex("'fxBinaryWriter' 00 'ieee' 00") + host<short>(0x1234) +
                       host<long>(0x33445566));
    EXPECT_EXIT(fxTranscriber::getReader(&order), testing::KilledBySignal(SIGABRT),
                "^fxBinaryReader: unknown short ordering 33445566\n$");
}

TEST_F(fxTranscriberFactory, withoutRegistryNothingIsRead) {
    fxTranscriber::readers = nullptr;
    MemoryStream stream(hostHeader());
    stream.logging = true;
    EXPECT_EQ(nullptr, fxTranscriber::getReader(&stream));
    EXPECT_TRUE(stream.calls.empty());
    EXPECT_EQ(nullptr, fxTranscriber::readers) << "reading does not make it";
}

TEST_F(fxTranscriberFactory, addTranscriberMakesTheRegistryAndEntersTheFactory) {
    fxTranscriber::readers = nullptr;
    asked.calls = 0;
    fxTranscriber::addTranscriber("Mine", makeNoReader);
    ASSERT_NE(nullptr, fxTranscriber::readers);
    EXPECT_EQ(1u, fxTranscriber::readers->length());
    EXPECT_EQ(31u, fxTranscriber::readers->getNumBuckets());

    MemoryStream stream(hex("'Mine' 00 'odd' 00") + host<short>(0x7172) + host<long>(0x01020304));
    EXPECT_EQ(nullptr, fxTranscriber::getReader(&stream)) << "the factory's result";
    EXPECT_EQ(1, asked.calls);
    EXPECT_EQ(&stream, asked.stream);
    EXPECT_EQ(0x7172, asked.shortMark);
    EXPECT_EQ(0x01020304, asked.longMark);
    EXPECT_EQ("odd", asked.format);
}

TEST_F(fxTranscriberFactory, addTranscriberReplacesAnEarlierFactory) {
    fxTranscriber::readers = nullptr;
    asked.calls = 0;
    fxTranscriber::addTranscriber("Mine", makeOtherReader);
    fxTranscriber::addTranscriber("Mine", makeNoReader);
    EXPECT_EQ(1u, fxTranscriber::readers->length());
    MemoryStream stream(hex("'Mine' 00 00 0000 00000000"));
    EXPECT_EQ(nullptr, fxTranscriber::getReader(&stream));
    EXPECT_EQ(1, asked.calls);
}

TEST_F(fxTranscriberFactory, binaryReaderFactoryUsesItsArguments) {
    MemoryStream stream(hex("40 04") + foreign<long>(0x11223344));
    fxTranscriber* reader = makeBinaryReader(&stream, 0x2211, 0x66554433, "ieee");
    long value = 0;
    EXPECT_EQ(1, reader->xdr(&value, 1));
    EXPECT_EQ(0x11223344, value);
    delete reader;
}

// Start-up.

TEST_F(fxTranscriberFactory, toolkitRegistersTheBinaryReader) {
    ASSERT_NE(nullptr, fxTranscriber::readers);
    void** factory = fxTranscriber::readers->find("fxBinaryWriter");
    ASSERT_NE(nullptr, factory);
    EXPECT_EQ(reinterpret_cast<void*>(makeBinaryReader), *factory);
}

TEST_F(fxTranscriberFactory, orderedGlobalThatDependsOnTheToolkitsRegistersIt) {
    ASSERT_NE(nullptr, fxOG_Transcriber.cons);
    EXPECT_EQ(nullptr, fxOG_Transcriber.dest);
    ASSERT_NE(nullptr, fxOG_Transcriber.deps);
    EXPECT_EQ(&fxOG_Init, fxOG_Transcriber.deps[0]);
    EXPECT_EQ(nullptr, fxOG_Transcriber.deps[1]);
    fxTranscriber::readers = nullptr;
    fxOG_Transcriber.cons();
    ASSERT_NE(nullptr, fxTranscriber::readers);
    EXPECT_NE(nullptr, fxTranscriber::readers->find("fxBinaryWriter"));
}

namespace {
// A subsystem of the host's that needs the readers, registered before main.
bool readerWasThere = false;

void constructHosts() {
    readerWasThere =
        fxTranscriber::readers && fxTranscriber::readers->find("fxBinaryWriter") != nullptr;
}

fxOrderedGlobal* hostsDeps[] = {&fxOG_Transcriber, nullptr};
fxOrderedGlobal hostsGlobal(constructHosts, hostsDeps, 1);
}  // namespace

TEST_F(fxTranscriberFactory, hostsGlobalsMayDependOnIt) {
    EXPECT_TRUE(hostsGlobal.dependsOn(fxOG_Transcriber));
    const fxVoidPtrArray& globals = fx_toolkitGlobalOrder->getGlobals();
    void* const entries[] = {&fxOG_Init, &fxOG_Transcriber, &hostsGlobal};
    unsigned int next = 0;
    for (unsigned int i = 0; i < globals.length(); ++i)
        next += next < 3 && globals[i] == entries[next];
    EXPECT_EQ(3u, next) << "each once, in this order";
    EXPECT_TRUE(readerWasThere);
}

// readNullTerminatedString.

TEST(readNullTerminatedString, appendsUpToAndIncludingTheNul) {
    MemoryStream stream(hex("'abc' 00 'def' 00"));
    fxStackBuffer buffer;
    EXPECT_EQ(1, readNullTerminatedString(&stream, buffer));
    EXPECT_EQ(4u, buffer.length());
    EXPECT_STREQ("abc", buffer.getBase());
    EXPECT_EQ(4u, stream.position) << "nothing behind the NUL is read";

    EXPECT_EQ(1, readNullTerminatedString(&stream, buffer));
    EXPECT_EQ(8u, buffer.length());
    EXPECT_EQ(0, std::memcmp("abc\0def", buffer.getBase(), 8));
}

TEST(readNullTerminatedString, readsOneByteAtATime) {
    MemoryStream stream(hex("'ab' 00"));
    stream.logging = true;
    fxStackBuffer buffer;
    EXPECT_EQ(1, readNullTerminatedString(&stream, buffer));
    EXPECT_EQ(std::vector<std::string>(3, "getBytes 1"), stream.calls);
}

TEST(readNullTerminatedString, emptyStringIsItsNul) {
    MemoryStream stream(hex("00"));
    fxStackBuffer buffer;
    EXPECT_EQ(1, readNullTerminatedString(&stream, buffer));
    EXPECT_EQ(1u, buffer.length());
}

TEST(readNullTerminatedString, failureKeepsWhatWasRead) {
    MemoryStream stream("abc");
    fxStackBuffer buffer;
    EXPECT_EQ(0, readNullTerminatedString(&stream, buffer));
    EXPECT_EQ(3u, buffer.length());
    EXPECT_EQ(0, std::memcmp("abc", buffer.getBase(), 3));
}

TEST(readNullTerminatedString, longStringsOutgrowTheInlineBuffer) {
    const std::string text = run(5000);
    MemoryStream stream(text + '\0');
    fxStackBuffer buffer;
    EXPECT_EQ(1, readNullTerminatedString(&stream, buffer));
    EXPECT_EQ(text, buffer.getBase());
}
