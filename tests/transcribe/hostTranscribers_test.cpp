// hostTranscribers_test.cpp - transcribers that hosts write, and the strings
// and blocks that come through them. Strings free their buffers with free, the
// owners of other blocks with delete[]; the sanitizer build sees the difference.

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxTranscriber.h"
#include "tests/support/memoryStream.h"
#include "tests/support/streamBytes.h"

namespace {
// Forwards every call to another transcriber, and counts them.
class Forwarding : public fxTranscriber {
public:
    explicit Forwarding(fxTranscriber& t) : inner(t) { reading = t.isReading(); }

    using fxTranscriber::xdr;
    void reset() override { inner.reset(); }
    unsigned char xdr(char* p, unsigned int n) override { return forward(p, n); }
    unsigned char xdr(unsigned char* p, unsigned int n) override { return forward(p, n); }
    unsigned char xdr(short* p, unsigned int n) override { return forward(p, n); }
    unsigned char xdr(unsigned short* p, unsigned int n) override { return forward(p, n); }
    unsigned char xdr(long* p, unsigned int n) override { return forward(p, n); }
    unsigned char xdr(unsigned long* p, unsigned int n) override { return forward(p, n); }
    unsigned char xdr(float* p, unsigned int n) override { return forward(p, n); }
    unsigned char xdr(double* p, unsigned int n) override { return forward(p, n); }
    unsigned char xdr(fxStr* p, unsigned int n) override { return forward(p, n); }
    unsigned char xdr(char** p, unsigned int n) override {
        inner.markStringBuffer(isStringBuffer());
        return forward(p, n);
    }
    unsigned char xdr(unsigned char** p, unsigned int n) override { return forward(p, n); }
    unsigned char xdr(short** p, unsigned int n) override { return forward(p, n); }
    unsigned char xdr(unsigned short** p, unsigned int n) override { return forward(p, n); }
    unsigned char xdr(long** p, unsigned int n) override { return forward(p, n); }
    unsigned char xdr(unsigned long** p, unsigned int n) override { return forward(p, n); }
    unsigned char xdr(float** p, unsigned int n) override { return forward(p, n); }
    unsigned char xdr(double** p, unsigned int n) override { return forward(p, n); }
    unsigned char xdr(char** p) override { return forward(p); }
    unsigned char xdr(unsigned char** p) override { return forward(p); }
    unsigned char xdr(void* field, fxXDRObj* object, fxTypeObj& type, fxXDRObj* hint,
                      void* extra) override {
        return forward(field, object, type, hint, extra);
    }
    unsigned char xdr(fxTypeObj& type, void* previous, void* address) override {
        return forward(type, previous, address);
    }
    void* readObject(fxTypeObj& type) override { return inner.readObject(type); }
    unsigned char writeObject(void* address, fxXDRObj* object) override {
        return inner.writeObject(address, object);
    }
    const char* className() const override { return inner.className(); }

    unsigned int calls = 0;

private:
    template <class... Args>
    unsigned char forward(Args&&... args) {
        ++calls;
        return inner.xdr(args...);
    }

    fxTranscriber& inner;
};

// Reads what lies behind each other in memory, blocks in place. It implements
// what it needs; the rest fails.
class OwnReader : public fxTranscriber {
public:
    explicit OwnReader(std::string input) : bytes(std::move(input)) { reading = 1; }

    using fxTranscriber::xdr;
    void reset() override {}
    unsigned char xdr(char* p, unsigned int n) override { return take(p, n); }
    unsigned char xdr(unsigned long* p, unsigned int n) override { return take(p, n); }
    unsigned char xdr(fxStr* strings, unsigned int n) override {
        for (unsigned int i = 0; i < n; ++i) {
            if (!strings[i].xdr(*this))
                return 0;
        }
        return 1;
    }
    unsigned char xdr(char** block, unsigned int n) override {
        *block = isStringBuffer() ? static_cast<char*>(std::malloc(n)) : new char[n];
        return take(*block, n);
    }
    void* readObject(fxTypeObj& type) override {
        void* object = type.create(type);
        return type.xdr(object, *this) ? object : nullptr;
    }

    unsigned char xdr(unsigned char*, unsigned int) override { return 0; }
    unsigned char xdr(short*, unsigned int) override { return 0; }
    unsigned char xdr(unsigned short*, unsigned int) override { return 0; }
    unsigned char xdr(long*, unsigned int) override { return 0; }
    unsigned char xdr(float*, unsigned int) override { return 0; }
    unsigned char xdr(double*, unsigned int) override { return 0; }
    unsigned char xdr(unsigned char**, unsigned int) override { return 0; }
    unsigned char xdr(short**, unsigned int) override { return 0; }
    unsigned char xdr(unsigned short**, unsigned int) override { return 0; }
    unsigned char xdr(long**, unsigned int) override { return 0; }
    unsigned char xdr(unsigned long**, unsigned int) override { return 0; }
    unsigned char xdr(float**, unsigned int) override { return 0; }
    unsigned char xdr(double**, unsigned int) override { return 0; }
    unsigned char xdr(char**) override { return 0; }
    unsigned char xdr(unsigned char**) override { return 0; }
    unsigned char xdr(void*, fxXDRObj*, fxTypeObj&, fxXDRObj*, void*) override { return 0; }
    unsigned char xdr(fxTypeObj&, void*, void*) override { return 0; }
    unsigned char writeObject(void*, fxXDRObj*) override { return 0; }
    const char* className() const override { return "OwnReader"; }

private:
    template <class Element>
    unsigned char take(Element* elements, unsigned int n) {
        const std::size_t size = n * sizeof *elements;
        if (bytes.size() < size)
            return 0;
        std::memcpy(elements, bytes.data(), size);
        bytes.erase(0, size);
        return 1;
    }

    std::string bytes;
};

// Strings in each of the ways in which a class can have them, and a block that
// is none. It transcribes itself through a transcriber of its own.
class Note : public fxXDRObj {
public:
    Note() = default;
    Note(const Note&) = delete;
    Note& operator=(const Note&) = delete;
    ~Note() override { delete[] block; }

    unsigned char xdr(fxTranscriber& t) override {
        Forwarding forwarding(t);
        const bool done = title.xdr(forwarding) && forwarding.xdr(&block, 3) &&
                          pairs.xdr(forwarding) && forwarding.xdr(lines, 2);
        calls = forwarding.calls;
        return done;
    }
    fxTypeObj& getTypeObj() const override;

    static void* newInstance(fxTypeObj&) { return new Note; }
    static void deleteInstance(void* object) { delete static_cast<Note*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Note*>(object)->xdr(t);
    }

    fxStr title;
    char* block = nullptr;
    fxStrStrDictionary pairs{3};
    fxStr lines[2];
    unsigned int calls = 0;
};

fxTypeObj noteType("Note", 1, Note::newInstance, Note::deleteInstance, Note::xdr);

fxTypeObj& Note::getTypeObj() const { return noteType; }

void expectAsWritten(Note& note) {
    EXPECT_TRUE(note.title == "title");
    ASSERT_NE(nullptr, note.block);
    EXPECT_EQ("xyz", std::string(note.block, 3));
    ASSERT_NE(nullptr, note.pairs.find("A"));
    EXPECT_TRUE(*note.pairs.find("A") == "value");
    EXPECT_TRUE(note.lines[0] == "first");
    EXPECT_TRUE(note.lines[1] == "");
    EXPECT_EQ(13u, note.calls);
    note.title.append("!");  // in the allocator's own terms
    note.lines[0].append("!");
    note.pairs.find("A")->append("!");
}

// Where "A" is among three buckets.
const unsigned int bucketOfA = 2;
}  // namespace

TEST(hostTranscribers, stringsComeThroughATranscriberThatForwardsToTheLibrarys) {
    fxInitializeToolkit();
    Note note;
    note.title = "title";
    note.block = new char[3]{'x', 'y', 'z'};
    note.pairs.add("A", "value");
    note.lines[0] = "first";
    MemoryStream out;
    const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(&out));
    Forwarding toWriter(*writer);
    EXPECT_EQ(1, toWriter.writeObject(&note, &note));

    MemoryStream in(out.written);
    const std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(&in));
    Forwarding toReader(*reader);
    const std::unique_ptr<Note> read(static_cast<Note*>(toReader.readObject(noteType)));
    ASSERT_NE(nullptr, read);
    expectAsWritten(*read);
}

TEST(hostTranscribers, stringsComeThroughAReaderOfTheHosts) {
    OwnReader reader(host(6) + hex("'title' 00 'xyz'") + host(1) + host(8) + host(8) + host(3) +
                     host(2) + hex("'A' 00") + host(6) + hex("'value' 00") + host(bucketOfA) +
                     host(6) + hex("'first' 00") + host(1));
    const std::unique_ptr<Note> read(static_cast<Note*>(reader.readObject(noteType)));
    ASSERT_NE(nullptr, read);
    expectAsWritten(*read);
}

// What a transcriber is told.

namespace {
enum Ending { done, failed, thrown };

// Notes of each pointer whether it is said to be a string's buffer.
class Asking : public Forwarding {
public:
    using Forwarding::Forwarding;
    using Forwarding::xdr;
    unsigned char xdr(char**, unsigned int) override {
        answers.push_back(isStringBuffer());
        return ending == thrown ? throw ending : ending == done;
    }

    std::vector<bool> answers;
    Ending ending = done;
};
}  // namespace

TEST(hostTranscribers, onlyAStringsOwnPointerIsMarkedAndOnlyWhileItIsHandedOver) {
    for (const Ending ending : {done, failed, thrown}) {
        SCOPED_TRACE(ending);
        OwnReader inner(host(1000));
        Asking asking(inner);
        asking.ending = ending;
        EXPECT_FALSE(asking.isStringBuffer());
        fxStr text;
        if (ending == thrown)
            EXPECT_THROW(text.xdr(asking), Ending);
        else
            EXPECT_EQ(ending == done, text.xdr(asking));
        EXPECT_EQ(ending == done ? 999u : 0u, text.length());
        EXPECT_FALSE(asking.isStringBuffer());

        asking.ending = done;
        char* block = nullptr;
        EXPECT_EQ(1, asking.xdr(&block, 4));
        EXPECT_EQ((std::vector<bool>{true, false}), asking.answers);
    }
}

TEST(hostTranscribers, markIsForTheNextPointerAloneInTheLibrarysReader) {
    fxInitializeToolkit();
    MemoryStream in(hostHeader() + hex("03 03000000 02000000 | 03 04000000 02000000") +
                    hex("45 02 04000000 02000000 'xy' | 45 02 03000000 02000000 'a' 00"));
    const std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(&in));
    char *buffer = nullptr, *block = nullptr;
    reader->markStringBuffer(true);
    EXPECT_TRUE(reader->isStringBuffer());
    EXPECT_EQ(1, reader->xdr(&buffer, 2));
    EXPECT_FALSE(reader->isStringBuffer());
    EXPECT_EQ(1, reader->xdr(&block, 2));
    ASSERT_NE(nullptr, reader->readObject(noteType));
    EXPECT_STREQ("a", buffer);
    EXPECT_EQ("xy", std::string(block, 2));
    std::free(buffer);
    delete[] block;
    reader->markStringBuffer(true);
    reader->markStringBuffer(false);
    EXPECT_FALSE(reader->isStringBuffer());
}

TEST(hostTranscribers, stringsBufferWithoutASizeFails) {
    fxInitializeToolkit();
    MemoryStream in(hostHeader() + hex("03 03000000 02000000 | 45 02 03000000 02000000 'a' 00"));
    const std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(&in));
    char* buffer = nullptr;
    reader->markStringBuffer(true);
    EXPECT_EQ(0, reader->xdr(&buffer));
    reader->markStringBuffer(true);
    EXPECT_EQ(0, reader->xdr(&buffer, 0U));
    EXPECT_FALSE(reader->isStringBuffer());
    EXPECT_EQ(nullptr, buffer);
}
