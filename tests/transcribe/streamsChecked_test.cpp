// streamsChecked_test.cpp - every transfer of the streams, and what is left of the transcribers',
// with nowhere to put the data and with more of it than a word can say. The checked build stops.

#include <cstdio>
#include <new>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "kelvofxds/transcribe/fxGraphReader.h"
#include "kelvofxds/transcribe/fxGraphWriter.h"
#include "kelvofxds/transcribe/fxMemoryStream.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "tests/support/misuse.h"

namespace {

const unsigned int halfWords = 0x7FFFFFFF;  // whose bytes a word can say
const unsigned int words = 0x3FFFFFFF;
const unsigned int doubleWords = 0x1FFFFFFF;

// Without a file, where every transfer fails; its arguments are looked at all the same.
struct Closed : fxStdioStream {
    Closed() : fxStdioStream(static_cast<std::FILE*>(nullptr), readWriteStream) {}
};

short aShort = 0;
int anInt = 0;
long aLong = 0;
float aFloat = 0;
double aDouble = 0;

// A transfer of nothing, which may have no buffer, and of one element, which may not.
#define BUFFER(Stream, owner, transfer)                                                                \
    {                                                                                                  \
#transfer,                                                                                     \
            [] { Stream().transfer(nullptr, 0); },                                                     \
                                                [] { Stream().transfer(nullptr, 1); }, owner           \
                                                                                    "::" #transfer     \
                                                                                    ": buffer is null" \
    }

const Misuse fileBuffers[] = {
    BUFFER(Closed, "fxStdioStream", getShorts), BUFFER(Closed, "fxStdioStream", getLongs),
    BUFFER(Closed, "fxStdioStream", getFloats), BUFFER(Closed, "fxStdioStream", getDoubles),
    BUFFER(Closed, "fxStdioStream", putInts),   BUFFER(Closed, "fxStdioStream", putLongs),
    BUFFER(Closed, "fxStdioStream", putFloats), BUFFER(Closed, "fxStdioStream", putDoubles),
};

const Misuse memoryBuffers[] = {
    BUFFER(fxMemoryStream, "fxMemoryStream", getBytes),
    BUFFER(fxMemoryStream, "fxMemoryStream", getShorts),
    BUFFER(fxMemoryStream, "fxMemoryStream", getInts),
    BUFFER(fxMemoryStream, "fxMemoryStream", getFloats),
    BUFFER(fxMemoryStream, "fxMemoryStream", getDoubles),
    BUFFER(fxMemoryStream, "fxMemoryStream", putBytes),
    BUFFER(fxMemoryStream, "fxMemoryStream", putShorts),
    BUFFER(fxMemoryStream, "fxMemoryStream", putInts),
    BUFFER(fxMemoryStream, "fxMemoryStream", putLongs),
    BUFFER(fxMemoryStream, "fxMemoryStream", putDoubles),
};

const Misuse counts[] = {
    {"getShorts", [] { Closed().getShorts(&aShort, halfWords); },
     [] { Closed().getShorts(&aShort, halfWords + 1); },
     "fxStdioStream::getShorts: n 2147483648 beyond the addressable 2147483647"},
    {"getInts", [] { Closed().getInts(&anInt, words); },
     [] { Closed().getInts(&anInt, words + 1); },
     "fxStdioStream::getInts: n 1073741824 beyond the addressable 1073741823"},
    {"getLongs", [] { Closed().getLongs(&aLong, words); },
     [] { Closed().getLongs(&aLong, words + 1); },
     "fxStdioStream::getLongs: n 1073741824 beyond the addressable 1073741823"},
    {"getFloats", [] { Closed().getFloats(&aFloat, words); },
     [] { Closed().getFloats(&aFloat, words + 1); },
     "fxStdioStream::getFloats: n 1073741824 beyond the addressable 1073741823"},
    {"putShorts", [] { Closed().putShorts(&aShort, halfWords); },
     [] { Closed().putShorts(&aShort, halfWords + 1); },
     "fxStdioStream::putShorts: n 2147483648 beyond the addressable 2147483647"},
    {"putInts", [] { Closed().putInts(&anInt, words); },
     [] { Closed().putInts(&anInt, words + 1); },
     "fxStdioStream::putInts: n 1073741824 beyond the addressable 1073741823"},
    {"putFloats", [] { Closed().putFloats(&aFloat, words); },
     [] { Closed().putFloats(&aFloat, words + 1); },
     "fxStdioStream::putFloats: n 1073741824 beyond the addressable 1073741823"},
    {"putDoubles", [] { Closed().putDoubles(&aDouble, doubleWords); },
     [] { Closed().putDoubles(&aDouble, doubleWords + 1); },
     "fxStdioStream::putDoubles: n 536870912 beyond the addressable 536870911"},
};

// Transcribers on a stream in memory.
struct Reader : fxBinaryReader {
    Reader() : fxBinaryReader(new fxMemoryStream, 0x1122, 0x33445566, "ieee") {}
};
struct GraphReader : fxGraphReader {
    GraphReader() : fxGraphReader(new fxMemoryStream, 0x1122, 0x33445566, "ieee") {}
};
struct GraphWriter : fxGraphWriter {
    GraphWriter() : fxGraphWriter(new fxMemoryStream) {}
};

fxStr* const noStrings = nullptr;
char** const noText = nullptr;
void* const nowhere = nullptr;

const Misuse transcribers[] = {
    {"strings", [] { Reader().xdr(noStrings, 0); }, [] { Reader().xdr(noStrings, 1); },
     "fxBinaryReader::xdr: strings is null"},
    {"a graph's strings, read", [] { GraphReader().xdr(noStrings, 0); },
     [] { GraphReader().xdr(noStrings, 1); }, "fxGraphReader::xdr: strings is null"},
    {"a graph's text, read", [] {}, [] { GraphReader().xdr(noText); },
     "fxGraphReader::xdr: text is null"},
    {"a graph's strings, written", [] { GraphWriter().xdr(noStrings, 0); },
     [] { GraphWriter().xdr(noStrings, 1); }, "fxGraphWriter::xdr: strings is null"},
    {"a graph's embedded object, written",
     [] { GraphWriter().xdr(fxXDRObj_type, nullptr, nullptr); },
     [] { GraphWriter().xdr(fxXDRObj_type, &aLong, nowhere); },
     "fxGraphWriter::xdr: address is null"},
};

void endTwice() {
    alignas(fxBinaryWriter) static unsigned char room[sizeof(fxBinaryWriter)];
    auto* writer = new (room) fxBinaryWriter(new fxMemoryStream);
    writer->~fxBinaryWriter();
    writer->fxTranscriber::~fxTranscriber();
}

const Misuse ends[] = {
    {"a transcriber, destroyed twice", [] { const fxBinaryWriter writer(new fxMemoryStream); },
     endTwice, "fxTranscriber::~fxTranscriber: the object has been destroyed already"},
};

class streamsCheckedDeathTest : public testing::Test {
protected:
    static void SetUpTestSuite() { fxInitializeToolkit(); }
};

}  // namespace

TEST_F(streamsCheckedDeathTest, noBufferForAFile) { expectStops(fileBuffers); }

TEST_F(streamsCheckedDeathTest, noBufferForMemory) { expectStops(memoryBuffers); }

TEST_F(streamsCheckedDeathTest, moreThanAWordCanSay) { expectStops(counts); }

TEST_F(streamsCheckedDeathTest, whatTranscribersAreGiven) { expectStops(transcribers); }

TEST_F(streamsCheckedDeathTest, transcribersThatHaveEnded) { expectEndsToStop(ends); }
