// nullElements_test.cpp - that each type of element is looked at alike: null where some are to be
// transferred, and numbers of them that no size can say. The checked build stops both.

#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "kelvofxds/transcribe/fxGraphReader.h"
#include "kelvofxds/transcribe/fxGraphWriter.h"
#include "kelvofxds/transcribe/fxMemoryStream.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "tests/support/misuse.h"

namespace {

struct BinaryWriter : fxBinaryWriter {
    BinaryWriter() : fxBinaryWriter(new fxMemoryStream) {}
};
struct GraphWriter : fxGraphWriter {
    GraphWriter() : fxGraphWriter(new fxMemoryStream) {}
};
struct BinaryReader : fxBinaryReader {
    BinaryReader() : fxBinaryReader(new fxMemoryStream, 0x1122, 0x33445566, "ieee") {}
};
struct GraphReader : fxGraphReader {
    GraphReader() : fxGraphReader(new fxMemoryStream, 0x1122, 0x33445566, "ieee") {}
};

// `misuse` ends a checked library with `message`.
template <class Work>
void expectStop(Work misuse, const std::string& message) {
    if (libraryIsChecked) {
        EXPECT_EXIT(misuse(), testing::KilledBySignal(SIGABRT), testing::Eq(message + '\n'));
    }
}

template <class Element>
std::string tooMany(const std::string& operation) {
    const std::string most = std::to_string(0xFFFFFFFF / sizeof(Element));
    const std::string n = std::to_string(0xFFFFFFFF / sizeof(Element) + 1);
    return operation + ": n " + n + " beyond the addressable " + most;
}

template <class Transcriber, class Element>
void expectElementsToBeLookedAt(const std::string& operation, const char* what) {
    Transcriber t;
    Element* const none = nullptr;
    t.xdr(none, 0);
    expectStop([&] { t.xdr(none, 1); }, operation + ": " + what + " is null");
}

template <class Transcriber, class Element>
void expectBlocksToBeLookedAt(const std::string& operation) {
    Transcriber t;
    Element* block = nullptr;
    t.xdr(&block, 1);
    Element** const nowhere = nullptr;
    expectStop([&] { t.xdr(nowhere, 1); }, operation + ": block is null");
}

template <class Transcriber, class... Elements>
void expectAllToBeLookedAt(const std::string& className) {
    const std::string operation = className + "::xdr";
    (expectElementsToBeLookedAt<Transcriber, Elements>(operation, "elements"), ...);
    expectElementsToBeLookedAt<Transcriber, fxStr>(operation, "strings");
    (expectBlocksToBeLookedAt<Transcriber, Elements>(operation), ...);
    Transcriber t;
    char** const noText = nullptr;
    expectStop([&] { t.xdr(noText); }, operation + ": text is null");
    unsigned char** const noBytes = nullptr;
    expectStop([&] { t.xdr(noBytes); }, operation + ": text is null");
}

template <class Transcriber>
void expectTranscriberToLook(const std::string& className) {
    expectAllToBeLookedAt<Transcriber, char, unsigned char, short, unsigned short, long,
                          unsigned long, float, double>(className);
}

template <class Element>
void expectWriterToCount() {
    BinaryWriter writer;
    Element element{};
    Element* block = &element;
    const unsigned int n = 0xFFFFFFFF / sizeof(Element) + 1;
    expectStop([&] { writer.xdr(block, n); }, tooMany<Element>("fxBinaryWriter::xdr"));
    expectStop([&] { writer.xdr(&block, n); }, tooMany<Element>("fxBinaryWriter::xdr"));
}

// The two transfers of one type of element.
template <class Element>
struct Transfers {
    const char* name;
    unsigned char (fxStream::*get)(Element*, unsigned int);
    unsigned char (fxStream::*put)(const Element*, unsigned int);
};

template <class Element>
void expectStreamToLook(fxStream& stream, const std::string& className, bool counts,
                        const Transfers<Element>& to) {
    (stream.*to.get)(nullptr, 0);
    (stream.*to.put)(nullptr, 0);
    const std::string get = className + "::get" + to.name;
    const std::string put = className + "::put" + to.name;
    expectStop([&] { (stream.*to.get)(nullptr, 1); }, get + ": buffer is null");
    expectStop([&] { (stream.*to.put)(nullptr, 1); }, put + ": buffer is null");
    if (!counts || sizeof(Element) == 1)
        return;
    Element element{};
    const unsigned int n = 0xFFFFFFFF / sizeof(Element);
    expectStop([&] { (stream.*to.get)(&element, n + 1); }, tooMany<Element>(get));
    expectStop([&] { (stream.*to.put)(&element, n + 1); }, tooMany<Element>(put));
}

void expectAllTransfersToLook(fxStream& stream, const std::string& name, bool counts) {
    expectStreamToLook<char>(stream, name, counts,
                             {"Bytes", &fxStream::getBytes, &fxStream::putBytes});
    expectStreamToLook<short>(stream, name, counts,
                              {"Shorts", &fxStream::getShorts, &fxStream::putShorts});
    expectStreamToLook<int>(stream, name, counts, {"Ints", &fxStream::getInts, &fxStream::putInts});
    expectStreamToLook<long>(stream, name, counts,
                             {"Longs", &fxStream::getLongs, &fxStream::putLongs});
    expectStreamToLook<float>(stream, name, counts,
                              {"Floats", &fxStream::getFloats, &fxStream::putFloats});
    expectStreamToLook<double>(stream, name, counts,
                               {"Doubles", &fxStream::getDoubles, &fxStream::putDoubles});
}

}  // namespace

TEST(nullElementsDeathTest, aBinaryWriterLooksAtEachType) {
    expectTranscriberToLook<BinaryWriter>("fxBinaryWriter");
}

TEST(nullElementsDeathTest, aBinaryWriterCountsEachType) {
    expectWriterToCount<short>();
    expectWriterToCount<unsigned short>();
    expectWriterToCount<long>();
    expectWriterToCount<unsigned long>();
    expectWriterToCount<float>();
    expectWriterToCount<double>();
}

TEST(nullElementsDeathTest, aBinaryReaderLooksAtEachType) {
    expectTranscriberToLook<BinaryReader>("fxBinaryReader");
}

TEST(nullElementsDeathTest, aGraphWriterLooksAtEachType) {
    expectTranscriberToLook<GraphWriter>("fxGraphWriter");
}

TEST(nullElementsDeathTest, aGraphReaderLooksAtEachType) {
    expectTranscriberToLook<GraphReader>("fxGraphReader");
}

TEST(nullElementsDeathTest, aFileLooksAtEachType) {
    fxStdioStream closed(static_cast<std::FILE*>(nullptr), fxStream::readWriteStream);
    expectAllTransfersToLook(closed, "fxStdioStream", true);
}

TEST(nullElementsDeathTest, memoryLooksAtEachType) {
    fxMemoryStream memory;
    expectAllTransfersToLook(memory, "fxMemoryStream", false);
}
