#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxTranscriber.h"
#include "tests/support/observe.h"

namespace {
using namespace std::string_literals;
using Calls = std::vector<std::string>;

// Notes the calls made on it. A writing one keeps what it is given; a reading
// one hands out `size` and `text`, the text at once or only by deliver(), as
// readers do. Call number `failing` fails, counted from 0.
class Recorder : public fxTranscriber {
public:
    explicit Recorder(bool reader, unsigned int failingCall = ~0u) : failing(failingCall) {
        reading = reader;
    }

    static Recorder readerOf(const std::string& bytes, unsigned int failingCall = ~0u) {
        return Recorder(bytes, failingCall);
    }

    // Puts the text where the string waits for it.
    void deliver() {
        char* block = static_cast<char*>(std::malloc(text.size() + 1));
        std::memcpy(block, text.c_str(), text.size() + 1);
        *target = block;
    }

    unsigned char xdr(unsigned int* elements, unsigned int n) override {
        if (!note("unsigned int", n))
            return 0;
        return fxTranscriber::xdr(elements, n);
    }

    unsigned char xdr(unsigned long* elements, unsigned int) override {
        if (isReading())
            *elements = size;
        else
            size = *elements;
        return 1;
    }

    unsigned char xdr(char** block, unsigned int n) override {
        textBefore = *block;
        if (!note("char*", n))
            return 0;
        if (isReading())
            target = block;
        else
            text.assign(*block, n);
        return 1;
    }

    Calls calls;
    unsigned long size = 0;            // as transcribed
    std::string text;                  // written: with its NUL; read: without
    const char* textBefore = nullptr;  // what the pointer was when it was passed

    // None of these is the way of a string.
    using fxTranscriber::xdr;
    void reset() override { note("reset", 0); }
    unsigned char xdr(char*, unsigned int n) override { return note("char", n); }
    unsigned char xdr(unsigned char*, unsigned int n) override { return note("uchar", n); }
    unsigned char xdr(short*, unsigned int n) override { return note("short", n); }
    unsigned char xdr(unsigned short*, unsigned int n) override { return note("ushort", n); }
    unsigned char xdr(long*, unsigned int n) override { return note("long", n); }
    unsigned char xdr(float*, unsigned int n) override { return note("float", n); }
    unsigned char xdr(double*, unsigned int n) override { return note("double", n); }
    unsigned char xdr(fxStr*, unsigned int n) override { return note("fxStr", n); }
    unsigned char xdr(unsigned char**, unsigned int n) override { return note("uchar*", n); }
    unsigned char xdr(short**, unsigned int n) override { return note("short*", n); }
    unsigned char xdr(unsigned short**, unsigned int n) override { return note("ushort*", n); }
    unsigned char xdr(long**, unsigned int n) override { return note("long*", n); }
    unsigned char xdr(unsigned long**, unsigned int n) override { return note("ulong*", n); }
    unsigned char xdr(float**, unsigned int n) override { return note("float*", n); }
    unsigned char xdr(double**, unsigned int n) override { return note("double*", n); }
    unsigned char xdr(char**) override { return note("text", 0); }
    unsigned char xdr(unsigned char**) override { return note("utext", 0); }
    unsigned char xdr(void*, fxXDRObj*, fxTypeObj&, fxXDRObj*, void*) override {
        return note("object", 0);
    }
    unsigned char xdr(fxTypeObj&, void*, void*) override { return note("embedded", 0); }
    void* readObject(fxTypeObj&) override { return note("readObject", 0) ? this : nullptr; }
    unsigned char writeObject(void*, fxXDRObj*) override { return note("writeObject", 0); }
    const char* className() const override { return "Recorder"; }

private:
    Recorder(const std::string& bytes, unsigned int failingCall)
        : size(bytes.size() + 1), text(bytes), failing(failingCall) {
        reading = 1;
    }

    unsigned char note(const char* form, unsigned int n) {
        calls.push_back(form + " "s + std::to_string(n));
        return calls.size() - 1 != failing;
    }

    unsigned int failing;
    char** target = nullptr;
};

// Memory that never held a string.
struct RawString {
    RawString() { std::memset(bytes, 0xA5, sizeof bytes); }
    fxStr& string() { return *reinterpret_cast<fxStr*>(bytes); }

    alignas(fxStr) unsigned char bytes[sizeof(fxStr)];
};
}  // namespace

// The type record

TEST(fxStrXDR, theTypeRecordIsRegistered) {
    EXPECT_STREQ("fxStr", fxStr_type.name);
    EXPECT_EQ(1u, fxStr_type.version);
    EXPECT_EQ(&fxStr::newInstance, fxStr_type.create);
    EXPECT_EQ(&fxStr::deleteInstance, fxStr_type.destroy);
    unsigned char (*hook)(void*, fxTranscriber&) = &fxStr::xdr;
    EXPECT_EQ(hook, fxStr_type.xdr);
    EXPECT_EQ(&fxStr_type, fxTypeObj::findType("fxStr"));
    EXPECT_EQ(&fxStr_type, &fxStr("any").getTypeObj());
}

TEST(fxStrXDR, newInstanceMakesAnEmptyString) {
    fxStr* s = static_cast<fxStr*>(fxStr_type.create(fxStr_type));
    EXPECT_EQ(&fxStr::emptyString, s->c_str());
    EXPECT_EQ(0u, s->length());
    fxStr_type.destroy(s);
    EXPECT_EQ('\0', fxStr::emptyString);
}

TEST(fxStrXDR, deleteInstanceReleasesTheTextAndIgnoresNull) {
    fxStr* s = static_cast<fxStr*>(fxStr::newInstance(fxStr_type));
    *s = "a text of its own";
    EXPECT_EQ("a text of its own", bytesOf(*s));
    fxStr::deleteInstance(s);
    fxStr::deleteInstance(nullptr);
    fxStr_type.destroy(nullptr);
}

// Writing

TEST(fxStrXDR, writingPassesTheSizeAndTheTextWithItsNul) {
    for (const std::string& bytes :
         {"a"s, "abc"s, "a\0b"s, "\0"s, "\xff"s, std::string(600, 'w')}) {
        SCOPED_TRACE(testing::PrintToString(bytes));
        fxStr s = stringOf(bytes);
        const char* buffer = s.c_str();
        Recorder writer(false);
        EXPECT_TRUE(s.xdr(writer));
        const Calls expected = {"unsigned int 1", "char* " + std::to_string(bytes.size() + 1)};
        EXPECT_EQ(expected, writer.calls);
        EXPECT_EQ(bytes.size() + 1, writer.size);
        EXPECT_EQ(bytes + '\0', writer.text);
        EXPECT_EQ(buffer, writer.textBefore);
        EXPECT_EQ(buffer, s.c_str());
        EXPECT_EQ(bytes, bytesOf(s));
    }
}

TEST(fxStrXDR, writingAnEmptyStringPassesTheSizeAlone) {
    fxStr s;
    Recorder writer(false);
    EXPECT_TRUE(s.xdr(writer));
    EXPECT_EQ(Calls{"unsigned int 1"}, writer.calls);
    EXPECT_EQ(1u, writer.size);
    EXPECT_EQ("", bytesOf(s));
}

TEST(fxStrXDR, writingStopsAtTheCallThatFails) {
    const struct {
        const char* text;
        unsigned int failing;
        Calls calls;
    } cases[] = {{"", 0, {"unsigned int 1"}},
                 {"abc", 0, {"unsigned int 1"}},
                 {"abc", 1, {"unsigned int 1", "char* 4"}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << '"' << c.text << "\", call " << c.failing);
        fxStr s(c.text);
        Recorder writer(false, c.failing);
        EXPECT_FALSE(s.xdr(writer));
        EXPECT_EQ(c.calls, writer.calls);
        EXPECT_EQ(c.text, bytesOf(s));
    }
}

// Reading

TEST(fxStrXDR, readingSetsTheLengthAtOnceAndTheTextWhenItArrives) {
    for (const std::string& bytes :
         {"a"s, "abc"s, "a\0b"s, "\0"s, "\xff"s, std::string(600, 'r')}) {
        SCOPED_TRACE(testing::PrintToString(bytes));
        fxStr s;
        Recorder reader = Recorder::readerOf(bytes);
        EXPECT_TRUE(s.xdr(reader));
        const Calls expected = {"unsigned int 1", "char* " + std::to_string(bytes.size() + 1)};
        EXPECT_EQ(expected, reader.calls);
        EXPECT_EQ(&fxStr::emptyString, reader.textBefore);
        EXPECT_EQ(bytes.size(), s.length());

        reader.deliver();
        EXPECT_EQ(bytes, bytesOf(s));
        s.append("!");
        EXPECT_EQ(bytes + "!", bytesOf(s));
    }
}

TEST(fxStrXDR, readingASizeOfOneMakesTheStringEmpty) {
    fxStr s;
    Recorder reader = Recorder::readerOf("");
    EXPECT_TRUE(s.xdr(reader));
    EXPECT_EQ(Calls{"unsigned int 1"}, reader.calls);
    EXPECT_EQ("", bytesOf(s));
}

TEST(fxStrXDR, readingASizeOfZeroFails) {
    fxStr s;
    Recorder reader(true);
    EXPECT_FALSE(s.xdr(reader));
    EXPECT_EQ(Calls{"unsigned int 1"}, reader.calls);
    EXPECT_EQ("", bytesOf(s));
}

TEST(fxStrXDR, readingStopsAtTheCallThatFails) {
    const struct {
        const char* text;
        unsigned int failing;
        Calls calls;
    } cases[] = {{"", 0, {"unsigned int 1"}},
                 {"abc", 0, {"unsigned int 1"}},
                 {"abc", 1, {"unsigned int 1", "char* 4"}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << '"' << c.text << "\", call " << c.failing);
        fxStr s;
        Recorder reader = Recorder::readerOf(c.text, c.failing);
        EXPECT_FALSE(s.xdr(reader));
        EXPECT_EQ(c.calls, reader.calls);
        EXPECT_EQ("", bytesOf(s));
    }
}

// The dictionaries read strings into memory that is fresh from malloc.
TEST(fxStrXDR, readingNeitherReadsNorReleasesWhatTheMemoryHeld) {
    RawString raw;
    Recorder reader = Recorder::readerOf("abc");
    EXPECT_TRUE(raw.string().xdr(reader));
    EXPECT_EQ(&fxStr::emptyString, reader.textBefore);
    reader.deliver();
    EXPECT_EQ("abc", bytesOf(raw.string()));
    raw.string().~fxStr();

    RawString emptied;
    Recorder emptyReader = Recorder::readerOf("");
    EXPECT_TRUE(emptied.string().xdr(emptyReader));
    EXPECT_EQ("", bytesOf(emptied.string()));
    emptied.string().~fxStr();
}

TEST(fxStrXDR, aTextThatNeverArrivesLeavesAStringThatCanBeDestroyed) {
    RawString raw;
    Recorder reader = Recorder::readerOf("abc", 1);
    EXPECT_FALSE(raw.string().xdr(reader));
    EXPECT_EQ("", bytesOf(raw.string()));
    raw.string().~fxStr();

    fxStr waiting;
    Recorder silent = Recorder::readerOf("abc");
    EXPECT_TRUE(waiting.xdr(silent));
    EXPECT_EQ(&fxStr::emptyString, waiting.c_str());
    EXPECT_EQ('\0', fxStr::emptyString);
}

TEST(fxStrXDR, deliberateReadingDoesNotReleaseTheTextBefore) {
    fxStr s("before");
    char* before = const_cast<char*>(s.c_str());
    Recorder reader = Recorder::readerOf("after");
    EXPECT_TRUE(s.xdr(reader));
    reader.deliver();
    EXPECT_EQ("after", bytesOf(s));
    EXPECT_STREQ("before", before);
    std::free(before);
}

// The hook of the type record

TEST(fxStrXDR, theHookReturnsOneOrZero) {
    fxStr s("abc");
    Recorder writer(false);
    EXPECT_EQ(1, fxStr_type.xdr(&s, writer));
    EXPECT_EQ("abc\0"s, writer.text);
    Recorder failing(false, 1);
    EXPECT_EQ(0, fxStr_type.xdr(&s, failing));

    fxStr target;
    Recorder reader = Recorder::readerOf("xyz");
    EXPECT_EQ(1, fxStr::xdr(&target, reader));
    reader.deliver();
    EXPECT_EQ("xyz", bytesOf(target));
}
