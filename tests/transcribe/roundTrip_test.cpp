#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "tests/support/memoryStream.h"
#include "tests/support/scriptedObject.h"
#include "tests/support/streamBytes.h"

namespace {
using Transcriber = std::unique_ptr<fxTranscriber>;

Transcriber writerOn(MemoryStream& stream) {
    fxInitializeToolkit();
    return Transcriber(fxTranscriber::getWriter(&stream));
}

Transcriber readerOn(MemoryStream& stream) {
    fxInitializeToolkit();
    return Transcriber(fxTranscriber::getReader(&stream));
}

// The stream that `object` makes, header included.
std::string streamOf(fxXDRObj& object) {
    MemoryStream stream;
    EXPECT_EQ(1, writerOn(stream)->writeObject(&object, &object));
    return stream.written;
}

// The object that a stream makes.
template <class Class>
std::unique_ptr<Class> objectIn(const std::string& bytes, fxTypeObj& type) {
    MemoryStream stream(bytes);
    return std::unique_ptr<Class>(static_cast<Class*>(readerOn(stream)->readObject(type)));
}

std::unique_ptr<fxStrStrDictionary> dictionaryIn(const std::string& bytes) {
    return objectIn<fxStrStrDictionary>(bytes, fxStrStrDictionary_type);
}

// Something of everything that can be read back as written.
class Everything : public fxXDRObj {
public:
    Everything() = default;
    ~Everything() override {
        if (!ownsBlocks)
            return;
        delete[] chars;
        delete[] unsignedChars;
        delete[] shorts;
        delete[] longs;
        delete[] floats;
        delete[] doubles;
        delete[] title;
    }

    unsigned char xdr(fxTranscriber& t) override {
        return t.xdr(&c, 1) && t.xdr(&uc, 1) && t.xdr(&s, 1) && t.xdr(&us, 1) && t.xdr(&l, 1) &&
               t.xdr(&ul, 1) && t.xdr(&i, 1) && t.xdr(&ui, 1) && t.xdr(f, 2) && t.xdr(d, 2) &&
               name.xdr(t) && t.xdr(&title) && t.xdr(&chars, 3) && t.xdr(&unsignedChars, 2) &&
               t.xdr(&shorts, 2) && t.xdr(&link, link, objType, this, nullptr) &&
               t.xdr(&longs, 2) && t.xdr(&floats, 1) && t.xdr(&doubles, 1) && pairs.xdr(t) &&
               numbers.xdr(t) && t.xdr(pair, 2) && t.xdr(&last, 1);
    }
    fxTypeObj& getTypeObj() const override;

    static void* newInstance(fxTypeObj&) {
        auto* made = new Everything;
        made->ownsBlocks = true;
        return made;
    }
    static void deleteInstance(void* object) { delete static_cast<Everything*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Everything*>(object)->xdr(t);
    }

    char c = 0;
    unsigned char uc = 0;
    short s = 0;
    unsigned short us = 0;
    long l = 0;
    unsigned long ul = 0;
    int i = 0;
    unsigned int ui = 0;
    float f[2] = {0, 0};
    double d[2] = {0, 0};
    fxStr name;
    char* title = nullptr;
    char* chars = nullptr;
    unsigned char* unsignedChars = nullptr;
    short* shorts = nullptr;
    fxXDRObj* link = nullptr;
    long* longs = nullptr;
    float* floats = nullptr;
    double* doubles = nullptr;
    fxStrStrDictionary pairs;
    fxIntArray numbers;
    fxStr pair[2];
    long last = 0;
    bool ownsBlocks = false;
};

fxTypeObj everythingType("Everything", 1, Everything::newInstance, Everything::deleteInstance,
                         Everything::xdr);

fxTypeObj& Everything::getTypeObj() const { return everythingType; }

char someTitle[] = "title";
char someChars[] = {'x', 0, 'z'};
unsigned char someUnsignedChars[] = {0, 255};
short someShorts[] = {-1, 0x1234};
long someLongs[] = {-2, 0x12345678};
float someFloats[] = {-0.0f};
double someDoubles[] = {5e-324};

void fillIn(Everything& e) {
    e.c = '\xFE';
    e.uc = 254;
    e.s = -3;
    e.us = 0xFEDC;
    e.l = -4;
    e.ul = 0xFEDCBA98;
    e.i = -5;
    e.ui = 0x89ABCDEF;
    e.f[0] = 1.5f;
    e.f[1] = std::numeric_limits<float>::quiet_NaN();
    e.d[0] = -1e300;
    e.d[1] = std::numeric_limits<double>::infinity();
    e.name = "name";
    e.title = someTitle;
    e.chars = someChars;
    e.unsignedChars = someUnsignedChars;
    e.shorts = someShorts;
    e.longs = someLongs;
    e.floats = someFloats;
    e.doubles = someDoubles;
    e.pairs.add("key", "value");
    e.pairs.add("", "");
    for (int n = 0; n < 200; ++n)
        e.numbers.append(&n);
    e.numbers.setMaxLength(0);
    e.pair[0] = fxStr("a\0b", 3);
    e.last = 77;
}

void expectFilledIn(const Everything& e) {
    EXPECT_EQ('\xFE', e.c);
    EXPECT_EQ(254, e.uc);
    EXPECT_EQ(-3, e.s);
    EXPECT_EQ(0xFEDC, e.us);
    EXPECT_EQ(-4, e.l);
    EXPECT_EQ(0xFEDCBA98u, e.ul);
    EXPECT_EQ(-5, e.i);
    EXPECT_EQ(0x89ABCDEFu, e.ui);
    EXPECT_EQ(1.5f, e.f[0]);
    EXPECT_EQ(host(std::numeric_limits<float>::quiet_NaN()), host(e.f[1]));
    EXPECT_EQ(-1e300, e.d[0]);
    EXPECT_EQ(std::numeric_limits<double>::infinity(), e.d[1]);
    EXPECT_TRUE(e.name == "name");
    EXPECT_STREQ("title", e.title);
    EXPECT_EQ(std::string(someChars, 3), std::string(e.chars, 3));
    EXPECT_EQ(255, e.unsignedChars[1]);
    EXPECT_EQ(0x1234, e.shorts[1]);
    EXPECT_EQ(nullptr, e.link);
    EXPECT_EQ(0x12345678, e.longs[1]);
    EXPECT_EQ(host(-0.0f), host(e.floats[0]));
    EXPECT_EQ(5e-324, e.doubles[0]);
    EXPECT_EQ(2u, e.pairs.length());
    EXPECT_TRUE(e.pairs.find("key") && *e.pairs.find("key") == "value");
    EXPECT_TRUE(e.pairs.find("") && *e.pairs.find("") == "");
    ASSERT_EQ(200u, e.numbers.length());
    for (int n = 0; n < 200; ++n)
        EXPECT_EQ(n, e.numbers[static_cast<unsigned int>(n)]);
    EXPECT_TRUE(e.pair[0] == fxStr("a\0b", 3));
    EXPECT_TRUE(e.pair[1] == "");
    EXPECT_EQ(77, e.last);
}
}  // namespace

// Everything, over every kind of stream.

TEST(roundTrip, everythingComesBackFromMemory) {
    Everything e;
    fillIn(e);
    const auto read = objectIn<Everything>(streamOf(e), everythingType);
    ASSERT_NE(nullptr, read);
    expectFilledIn(*read);
}

TEST(roundTrip, everythingComesBackFromAFile) {
    fxInitializeToolkit();
    std::string path = testing::TempDir() + "kelvofxdsXXXXXX";
    const int fd = ::mkstemp(&path[0]);
    ASSERT_GE(fd, 0);
    ::close(fd);
    Everything e;
    fillIn(e);
    {
        const Transcriber writer(
            fxTranscriber::getWriter(new fxStdioStream(path.c_str(), fxStream::writeStream, 0600)));
        ASSERT_NE(nullptr, writer);
        EXPECT_EQ(1, writer->writeObject(&e, &e));
    }
    {
        const Transcriber reader(
            fxTranscriber::getReader(new fxStdioStream(path.c_str(), fxStream::readStream, 0)));
        ASSERT_NE(nullptr, reader);
        const std::unique_ptr<Everything> read(
            static_cast<Everything*>(reader->readObject(everythingType)));
        ASSERT_NE(nullptr, read);
        expectFilledIn(*read);
    }
    ::unlink(path.c_str());
}

TEST(roundTrip, everythingComesBackThroughAPipe) {
    fxInitializeToolkit();
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    Everything e;
    fillIn(e);
    {
        const Transcriber writer(
            fxTranscriber::getWriter(new fxStdioStream(ends[1], fxStream::writeStream)));
        EXPECT_EQ(1, writer->writeObject(&e, &e));
    }
    const Transcriber reader(
        fxTranscriber::getReader(new fxStdioStream(ends[0], fxStream::readStream)));
    const std::unique_ptr<Everything> read(
        static_cast<Everything*>(reader->readObject(everythingType)));
    ASSERT_NE(nullptr, read);
    expectFilledIn(*read);
}

TEST(roundTrip, rootsFollowEachOtherInOneStream) {
    MemoryStream out;
    Everything e;
    fillIn(e);
    fxStrStrDictionary dictionary(7);
    dictionary.add("k", "v");
    {
        const Transcriber writer = writerOn(out);
        EXPECT_EQ(1, writer->writeObject(&e, &e));
        EXPECT_EQ(1, writer->writeObject(&dictionary, &dictionary));
        writer->reset();
        EXPECT_EQ(1, writer->writeObject(&dictionary, &dictionary));
    }
    MemoryStream in(out.written);
    const Transcriber reader = readerOn(in);
    const std::unique_ptr<Everything> first(
        static_cast<Everything*>(reader->readObject(everythingType)));
    ASSERT_NE(nullptr, first);
    expectFilledIn(*first);
    for (int n = 0; n < 2; ++n) {
        const std::unique_ptr<fxStrStrDictionary> read(
            static_cast<fxStrStrDictionary*>(reader->readObject(fxStrStrDictionary_type)));
        ASSERT_NE(nullptr, read);
        EXPECT_EQ(7u, read->getNumBuckets());
        EXPECT_TRUE(read->find("k") && *read->find("k") == "v");
    }
    EXPECT_EQ(nullptr, reader->readObject(fxStrStrDictionary_type));
}

// Dictionaries. "A" hashes to 0x08000000 and "B" to 0x10000000, which are 2
// and 1 modulo 3.

TEST(roundTrip, dictionaryIsItsSizesItsPairsAndTheirBuckets) {
    fxStrStrDictionary dictionary(3);
    dictionary.add("A", "");
    dictionary.add("B", "x");
    EXPECT_EQ(dump(hostHeader() + hex("02 02000000 'DICT' 00 4a 14 01000000 02000000 01000000") +
                   host(2) + host(8) + host(8) + host(3) +                       // sizes
                   host(2) + hex("43 04 03000000 02000000") +                    // "B"
                   host(2) + hex("43 08 04000000 02000000") + host(1) +          // "x", bucket
                   host(2) + hex("43 08 05000000 02000000") + host(1) + host(2)  // "A", ""
                   + hex("45 02 05000000 02000000 'A' 00 | 45 02 04000000 02000000 'x' 00") +
                   hex("45 02 03000000 02000000 'B' 00")),
              dump(streamOf(dictionary)));
}

TEST(roundTrip, dictionaryIsReadFromHostsOfEitherOrder) {
    const std::string little =
        littleHeader() +
        hex("02 02000000 'DICT' 00 4a 14 01000000 02000000 01000000"
            "02000000 08000000 08000000 03000000 02000000 | 43 04 03000000 02000000 02000000"
            "43 08 04000000 02000000 01000000 02000000 | 43 08 05000000 02000000 01000000 02000000"
            "45 02 05000000 02000000 'A' 00 | 45 02 04000000 02000000 'x' 00"
            "45 02 03000000 02000000 'B' 00");
    const std::string big =
        bigHeader() +
        hex("02 02000000 'DICT' 00 4a 14 01000000 02000000 01000000"
            "00000002 00000008 00000008 00000003 00000002 | 43 04 03000000 02000000 00000002"
            "43 08 04000000 02000000 00000001 00000002 | 43 08 05000000 02000000 00000001 00000002"
            "45 02 05000000 02000000 'A' 00 | 45 02 04000000 02000000 'x' 00"
            "45 02 03000000 02000000 'B' 00");
    for (const std::string& bytes : {little, big}) {
        const auto read = dictionaryIn(bytes);
        ASSERT_NE(nullptr, read);
        EXPECT_EQ(2u, read->length());
        EXPECT_EQ(3u, read->getNumBuckets());
        ASSERT_TRUE(read->find("A") && read->find("B"));
        EXPECT_TRUE(*read->find("A") == "");
        EXPECT_TRUE(*read->find("B") == "x");
        fxStrStrDictionaryIter iter(*read);
        EXPECT_TRUE(*iter.key() == "B") << "bucket 1";
        ++iter;
        EXPECT_TRUE(*iter.key() == "A") << "bucket 2";
    }
}

TEST(roundTrip, emptyDictionaryComesBack) {
    fxStrStrDictionary dictionary;
    const auto read = dictionaryIn(streamOf(dictionary));
    ASSERT_NE(nullptr, read);
    EXPECT_EQ(0u, read->length());
    EXPECT_EQ(31u, read->getNumBuckets());
    EXPECT_EQ(nullptr, read->find("x"));
}

TEST(roundTrip, manyPairsComeBack) {
    fxStrStrDictionary dictionary(101);
    for (int n = 0; n < 5000; ++n)
        dictionary.add(fxStr(n, "key %d"), fxStr(n, "value %d"));
    const auto read = dictionaryIn(streamOf(dictionary));
    ASSERT_NE(nullptr, read);
    EXPECT_EQ(5000u, read->length());
    unsigned int wrong = 0;
    for (int n = 0; n < 5000; ++n) {
        const fxStr* value = read->find(fxStr(n, "key %d"));
        wrong += !value || *value != fxStr(n, "value %d");
    }
    EXPECT_EQ(0u, wrong);
}

TEST(roundTrip, deliberateChainsComeBackInReverse) {
    fxStrStrDictionary dictionary(1);
    dictionary.add("a", "1");
    dictionary.add("b", "2");
    dictionary.add("c", "3");
    const auto read = dictionaryIn(streamOf(dictionary));
    ASSERT_NE(nullptr, read);
    std::string order;
    for (fxStrStrDictionaryIter iter(*read); iter.key(); ++iter)
        order += iter.key()->c_str();
    EXPECT_EQ("abc", order) << "the newest entry came first: cba";
}

TEST(roundTrip, deliberatePointerDictionaryIsWrittenAsAnAbstractNothing) {
    fxVoidPtrDict dictionary(1);
    dictionary.add("a", &dictionary);
    EXPECT_EQ(
        dump(hostHeader() + hex("02 02000000 'fxDictionary' 00 0a 01000000 02000000 01000000")),
        dump(streamOf(dictionary)));
    EXPECT_EQ(nullptr, objectIn<fxXDRObj>(streamOf(dictionary), fxDictionary_type));
}

TEST(roundTrip, deliberatePointerDictionaryFailsAtItsFirstKey) {
    MemoryStream stream;
    fxBinaryWriter writer(&stream);
    fxVoidPtrDict dictionary(1);
    EXPECT_EQ(1, dictionary.doxdr(writer)) << "empty";
    dictionary.add("a", &dictionary);
    EXPECT_EQ(0, dictionary.doxdr(writer));
    EXPECT_EQ(1, writer.flush());
    EXPECT_EQ(dump(hex("40 20") + host(0) + host(8) + host(4) + host(1) + host(1) + host(8) +
                   host(4) + host(1)),
              dump(stream.written))
        << "the sizes of both";
}

// Other classes.

TEST(roundTrip, objectWithoutContentsComesBack) {
    fxXDRObj object;
    EXPECT_EQ(dump(hostHeader() + hex("02 02000000 'fxXDRObj' 00 0a 01000000 02000000 01000000")),
              dump(streamOf(object)));
    const auto read = objectIn<fxXDRObj>(streamOf(object), fxXDRObj_type);
    ASSERT_NE(nullptr, read);
    EXPECT_EQ(&fxXDRObj_type, &read->getTypeObj());
}

TEST(roundTrip, stringRootComesBack) {
    MemoryStream out(hostHeader() + hex("02 02000000 'fxStr' 00 4a 04 01000000 02000000 01000000") +
                     host(4) + hex("03 03000000 04000000 | 45 04 03000000 04000000 'abc' 00"));
    const Transcriber reader = readerOn(out);
    auto* text = static_cast<fxStr*>(reader->readObject(fxStr_type));
    ASSERT_NE(nullptr, text);
    EXPECT_TRUE(*text == "abc");
    fxStr_type.destroy(text);
}

// Numbers of objects and blocks that would take for ever if anything searched
// chains or nested a call for each.

TEST(roundTrip, manyBlocksComeBack) {
    const unsigned int n = 100000;
    std::vector<long> values(n);
    std::vector<long*> members(n);
    for (unsigned int i = 0; i < n; ++i) {
        values[i] = static_cast<long>(i);
        members[i] = &values[i];
    }
    std::vector<long*>* current = &members;
    const auto contents = [&current, n](ScriptedObject&, fxTranscriber& t) {
        for (unsigned int i = 0; i < n; ++i) {
            if (!t.xdr(&(*current)[i], 1))
                return static_cast<unsigned char>(0);
        }
        return static_cast<unsigned char>(1);
    };
    ScriptedObject root(objType, contents);
    const std::string bytes = streamOf(root);
    // Header, type, head; then a pointer record and a body record for each.
    EXPECT_EQ(26u + 9u + 13u + n * (9u + 14u), bytes.size());

    std::vector<long*> read(n);
    current = &read;
    const ReadScript script(contents);
    MemoryStream in(bytes);
    ASSERT_NE(nullptr, readerOn(in)->readObject(objType));
    unsigned int wrong = 0;
    for (unsigned int i = 0; i < n; ++i) {
        wrong += *read[i] != static_cast<long>(i);
        delete[] read[i];
    }
    EXPECT_EQ(0u, wrong);
}

TEST(roundTrip, longChainOfObjectsIsWritten) {
    const unsigned int n = 100000;
    std::vector<std::unique_ptr<ScriptedObject>> chain(n);
    for (unsigned int i = 0; i < n; ++i)
        chain[i] = std::make_unique<ScriptedObject>(
            objType, [](ScriptedObject& self, fxTranscriber& t) { return self.xdrLink(t, 0); });
    for (unsigned int i = 0; i + 1 < n; ++i)
        chain[i]->links[0] = chain[i + 1].get();
    const std::string bytes = streamOf(*chain[0]);
    EXPECT_EQ(26u + 9u + n * 13u + (n - 1) * 5u + 1u, bytes.size());
}

TEST(roundTrip, longChainOfObjectsIsRead) {
    const unsigned int n = 100000;
    std::string bytes = hostHeader() + hex("02 02000000 'Obj' 00");
    for (unsigned int i = 0; i < n; ++i) {
        const unsigned int number = i == 0 ? 1 : i + 2;
        bytes += hex("0a") + word(number) + hex("02000000 01000000");
        bytes += i + 1 < n ? hex("0b") + word(i + 3) + word(0) : hex("0c") + word(1) + word(0);
    }
    const ReadScript script(
        [](ScriptedObject& self, fxTranscriber& t) { return self.xdrLink(t, 0); });
    MemoryStream in(bytes);
    auto* object = static_cast<ScriptedObject*>(readerOn(in)->readObject(objType));
    ASSERT_NE(nullptr, object);
    const ScriptedObject* const root = object;
    for (unsigned int i = 0; i < n; ++i) {
        ASSERT_NE(nullptr, object) << i;
        object = object->links[0];
    }
    EXPECT_EQ(root, object) << "the last one points back to the first";
}
