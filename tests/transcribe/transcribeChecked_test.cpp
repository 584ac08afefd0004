// transcribeChecked_test.cpp - misuse of streams and transcribers, which the checked build stops.

#include <cstdio>
#include <thread>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/str/fxStackBuffer.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "kelvofxds/transcribe/fxGraphReader.h"
#include "kelvofxds/transcribe/fxGraphWriter.h"
#include "kelvofxds/transcribe/fxMemoryStream.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "tests/support/memoryStream.h"
#include "tests/support/misuse.h"

namespace {

const unsigned int mostDoubles = 0x1FFFFFFF;  // whose bytes a word can say

// Without a file, where every transfer fails; its arguments are looked at all the same.
struct Closed : fxStdioStream {
    Closed() : fxStdioStream(static_cast<std::FILE*>(nullptr), readWriteStream) {}
};

const Misuse streams[] = {
    {"bytes to nowhere", [] { Closed().getBytes(nullptr, 0); },
     [] { Closed().getBytes(nullptr, 1); }, "fxStdioStream::getBytes: buffer is null"},
    {"bytes from nowhere", [] { Closed().putBytes(nullptr, 0); },
     [] { Closed().putBytes(nullptr, 1); }, "fxStdioStream::putBytes: buffer is null"},
    {"shorts", [] {}, [] { Closed().putShorts(nullptr, 1); },
     "fxStdioStream::putShorts: buffer is null"},
    {"ints", [] {}, [] { Closed().getInts(nullptr, 1); }, "fxStdioStream::getInts: buffer is null"},
    {"more doubles than a word can say",
     [] {
         double number = 0;
         Closed().getDoubles(&number, mostDoubles);
     },
     [] {
         double number = 0;
         Closed().getDoubles(&number, mostDoubles + 1);
     },
     "fxStdioStream::getDoubles: n 536870912 beyond the addressable 536870911"},
    {"more longs than a word can say", [] {},
     [] {
         const long number = 0;
         Closed().putLongs(&number, 0x40000000);
     },
     "fxStdioStream::putLongs: n 1073741824 beyond the addressable 1073741823"},
    {"memory from nowhere", [] { fxMemoryStream().putFloats(nullptr, 0); },
     [] { fxMemoryStream().putFloats(nullptr, 1); }, "fxMemoryStream::putFloats: buffer is null"},
    {"memory to nowhere", [] { fxMemoryStream("abcd", 4).getLongs(nullptr, 0); },
     [] { fxMemoryStream("abcd", 4).getLongs(nullptr, 1); },
     "fxMemoryStream::getLongs: buffer is null"},
    {"others' bytes that are not there", [] { fxMemoryStream(nullptr, 0); },
     [] { fxMemoryStream(nullptr, 1); }, "fxMemoryStream::fxMemoryStream: others is null"},
    {"a text from nowhere", [] {},
     [] {
         fxStackBuffer buffer;
         readNullTerminatedString(nullptr, buffer);
     },
     "fxStream::readNullTerminatedString: stream is null"},
};

// Transcribers on a stream in memory.
struct Writer : fxBinaryWriter {
    Writer() : fxBinaryWriter(new fxMemoryStream) {}
};
struct GraphWriter : fxGraphWriter {
    GraphWriter() : fxGraphWriter(new fxMemoryStream) {}
};
struct Reader : fxBinaryReader {
    Reader() : fxBinaryReader(new fxMemoryStream, 0x1122, 0x33445566, "ieee") {}
};
struct GraphReader : fxGraphReader {
    GraphReader() : fxGraphReader(new fxMemoryStream, 0x1122, 0x33445566, "ieee") {}
};

short* const noShorts = nullptr;
double* const noDoubles = nullptr;
fxStr* const noStrings = nullptr;
char** const noBlock = nullptr;
void* const nowhere = nullptr;
double number = 0;

const Misuse writers[] = {
    {"elements", [] { Writer().xdr(noShorts, 0); }, [] { Writer().xdr(noShorts, 1); },
     "fxBinaryWriter::xdr: elements is null"},
    {"strings", [] { Writer().xdr(noStrings, 0); }, [] { Writer().xdr(noStrings, 1); },
     "fxBinaryWriter::xdr: strings is null"},
    {"more doubles than a word can say", [] { Writer().xdr(&number, 1); },
     [] { Writer().xdr(&number, mostDoubles + 1); },
     "fxBinaryWriter::xdr: n 536870912 beyond the addressable 536870911"},
    {"a block of more doubles than a word can say", [] {},
     [] {
         double* block = &number;
         Writer().xdr(&block, mostDoubles + 1);
     },
     "fxBinaryWriter::xdr: n 536870912 beyond the addressable 536870911"},
    {"no pointer to a block",
     [] {
         char* block = nullptr;
         Writer().xdr(&block, 1);
     },
     [] { Writer().xdr(noBlock, 1); }, "fxBinaryWriter::xdr: block is null"},
    {"no pointer to a text", [] {}, [] { Writer().xdr(noBlock); },
     "fxBinaryWriter::xdr: text is null"},
    {"no member",
     [] {
         void* member = nullptr;
         Writer().xdr(&member, nullptr, fxXDRObj_type, nullptr, nullptr);
     },
     [] { Writer().xdr(nowhere, nullptr, fxXDRObj_type, nullptr, nullptr); },
     "fxBinaryWriter::xdr: field is null"},
    {"no embedded object", [] { Writer().xdr(fxXDRObj_type, nullptr, nullptr); },
     [] { Writer().xdr(fxXDRObj_type, &number, nowhere); }, "fxBinaryWriter::xdr: address is null"},
    {"bytes from nowhere", [] { Writer().writeBytes(nullptr, 0); },
     [] { Writer().writeBytes(nullptr, 1); }, "fxBinaryWriter::writeBytes: data is null"},
    {"a graph's elements", [] { GraphWriter().xdr(noDoubles, 0); },
     [] { GraphWriter().xdr(noDoubles, 1); }, "fxGraphWriter::xdr: elements is null"},
    {"a graph's block", [] {}, [] { GraphWriter().xdr(noBlock, 1); },
     "fxGraphWriter::xdr: block is null"},
    {"a graph's text", [] {}, [] { GraphWriter().xdr(noBlock); },
     "fxGraphWriter::xdr: text is null"},
    {"a graph's member", [] {},
     [] { GraphWriter().xdr(nowhere, nullptr, fxXDRObj_type, nullptr, nullptr); },
     "fxGraphWriter::xdr: field is null"},
};

const Misuse readers[] = {
    {"elements", [] { Reader().xdr(noShorts, 0); }, [] { Reader().xdr(noShorts, 1); },
     "fxBinaryReader::xdr: elements is null"},
    {"a block", [] {}, [] { Reader().xdr(noBlock, 1); }, "fxBinaryReader::xdr: block is null"},
    {"a text", [] {}, [] { Reader().xdr(noBlock); }, "fxBinaryReader::xdr: text is null"},
    {"a member", [] {}, [] { Reader().xdr(nowhere, nullptr, fxXDRObj_type, nullptr, nullptr); },
     "fxBinaryReader::xdr: field is null"},
    {"an embedded object", [] { Reader().xdr(fxXDRObj_type, nullptr, nullptr); },
     [] { Reader().xdr(fxXDRObj_type, &number, nowhere); }, "fxBinaryReader::xdr: address is null"},
    {"a graph's elements", [] { GraphReader().xdr(noDoubles, 0); },
     [] { GraphReader().xdr(noDoubles, 1); }, "fxGraphReader::xdr: elements is null"},
    {"a graph's block", [] {}, [] { GraphReader().xdr(noBlock, 1); },
     "fxGraphReader::xdr: block is null"},
    {"a graph's member", [] {},
     [] { GraphReader().xdr(nowhere, nullptr, fxXDRObj_type, nullptr, nullptr); },
     "fxGraphReader::xdr: field is null"},
    {"a graph's embedded object", [] { GraphReader().xdr(fxXDRObj_type, nullptr, nullptr); },
     [] { GraphReader().xdr(fxXDRObj_type, &number, nowhere); },
     "fxGraphReader::xdr: address is null"},
    {"a string's xdr", [] {},
     [] {
         Writer writer;
         fxStr::xdr(nullptr, writer);
     },
     "fxStr::xdr: string is null"},
    {"contents that nobody transcribes", [] {},
     [] {
         Writer writer;
         fxXdrContents(fxStr_type, nullptr, writer, nullptr);
     },
     "fxTranscriber::fxXdrContents: contents is null"},
};

fxTranscriber* noReader(fxStream*, short, long, const char*) { return nullptr; }

template <class Work>
void elsewhere(Work work) {
    std::thread(work).join();
}

#define OTHER_THREAD ": called by another thread than the one that called fxInitializeToolkit"

const Misuse registries[] = {
    {"no type", [] { fxTypeObj::registerType(&fxStr_type); },
     [] { fxTypeObj::registerType(nullptr); }, "fxTypeObj::registerType: type is null"},
    {"a type, in a second thread", [] { fxTypeObj::findType("fxStr"); },
     [] { elsewhere([] { fxTypeObj::registerType(&fxStr_type); }); },
     "fxTypeObj::registerType" OTHER_THREAD},
    {"a reader without a name", [] {}, [] { fxTranscriber::addTranscriber(nullptr, noReader); },
     "fxTranscriber::addTranscriber: name is null"},
    {"a reader, in a second thread", [] {},
     [] { elsewhere([] { fxTranscriber::addTranscriber("name", noReader); }); },
     "fxTranscriber::addTranscriber" OTHER_THREAD},
    {"a writer, in a second thread", [] { fxTranscriber::resetToDefaultWriter(); },
     [] { elsewhere([] { fxTranscriber::changeDefaultWriter(makeGraphWriter); }); },
     "fxTranscriber::changeDefaultWriter" OTHER_THREAD},
};

const Misuse ends[] = {
    {"a stream that its transcriber still has",
     [] {
         MemoryStream stream;
         const fxBinaryWriter writer(&stream);
     },
     [] {
         auto* stream = new MemoryStream;
         const fxBinaryWriter writer(stream);
         delete stream;
     },
     "fxRCObj::~fxRCObj: the object is still held by 1 of all properties, transcribers and "
     "messages"},
};

class transcribeCheckedDeathTest : public testing::Test {
protected:
    static void SetUpTestSuite() { fxInitializeToolkit(); }
};

}  // namespace

TEST_F(transcribeCheckedDeathTest, whatStreamsAreGiven) { expectStops(streams); }

TEST_F(transcribeCheckedDeathTest, whatWritersAreGiven) { expectStops(writers); }

TEST_F(transcribeCheckedDeathTest, whatReadersAreGiven) { expectStops(readers); }

TEST_F(transcribeCheckedDeathTest, theRegistriesBelongToOneThread) { expectStops(registries); }

TEST_F(transcribeCheckedDeathTest, streamsThatAreHeldStay) { expectStops(ends); }

#if KELVOFXDS_LIBRARY_IS_CHECKED

// A text that a reader of standard streams still owes: its length is there, it is not.
TEST_F(transcribeCheckedDeathTest, aTextThatIsStillToBeReadIsNotUsed) {
    const auto useTooSoon = [] {
        struct Owing : fxBinaryReader {
            using fxBinaryReader::fxBinaryReader;
            unsigned char xdr(unsigned int* elements, unsigned int) override {
                *elements = 5;
                return 1;
            }
            unsigned char xdr(char**, unsigned int) override { return 1; }
            using fxBinaryReader::xdr;
        } reader(new fxMemoryStream, 0x1122, 0x33445566, "ieee");
        fxStr text;
        text.xdr(reader);
        text.hash();
    };
    EXPECT_EXIT(useTooSoon(), testing::KilledBySignal(SIGABRT),
                testing::Eq(std::string("fxStr::hash: the text is not there before the reader has "
                                        "finished the root object\n")));
}

#endif
