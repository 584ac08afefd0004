// Holds docs/stream-format.md to its word.

#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "tests/support/memoryStream.h"
#include "tests/support/streamBytes.h"

namespace {
std::string document() {
    std::ifstream in(KELVOFXDS_SOURCE_DIR "/docs/stream-format.md");
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The bytes of the document's dumps, in order. Each line is an offset, which
// has to be right, the bytes, and a comment behind a semicolon.
std::vector<std::string> dumps() {
    std::vector<std::string> found;
    std::istringstream lines(document());
    bool inside = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, 3, "```") == 0) {
            inside = line == "```hexdump";
            if (inside)
                found.emplace_back();
        } else if (inside) {
            std::string& bytes = found.back();
            EXPECT_EQ(bytes.size(), std::stoul(line.substr(0, 4), nullptr, 16)) << line;
            EXPECT_NE(std::string::npos, line.find(';')) << line;
            bytes += hex(line.substr(4, line.find(';') - 4).c_str());
        }
    }
    return found;
}

// The dumps' places in the document.
enum { littleGlossary, bigGlossary, pairWritten, pairReadable, dumpCount };

class Glossary : public fxXDRObj {
public:
    explicit Glossary(unsigned int buckets = 0) : words(buckets) {}

    unsigned char xdr(fxTranscriber& t) override {
        return t.xdr(&edition, 1) && words.xdr(t) && pages.xdr(t);
    }
    fxTypeObj& getTypeObj() const override;

    static void* newInstance(fxTypeObj&) { return new Glossary; }
    static void deleteInstance(void* object) { delete static_cast<Glossary*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Glossary*>(object)->xdr(t);
    }

    unsigned int edition = 0;
    fxStrStrDictionary words;
    fxShortArray pages;
};

fxTypeObj glossaryType("Glossary", 1, Glossary::newInstance, Glossary::deleteInstance,
                       Glossary::xdr);

fxTypeObj& Glossary::getTypeObj() const { return glossaryType; }

class Pair : public fxXDRObj {
public:
    unsigned char xdr(fxTranscriber& t) override {
        return t.xdr(&number, 1) && t.xdr(&other, other, getTypeObj(), this, nullptr);
    }
    fxTypeObj& getTypeObj() const override;

    static void* newInstance(fxTypeObj&) { return new Pair; }
    static void deleteInstance(void* object) { delete static_cast<Pair*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Pair*>(object)->xdr(t);
    }

    unsigned int number = 0;
    Pair* other = nullptr;
};

fxTypeObj pairType("Pair", 1, Pair::newInstance, Pair::deleteInstance, Pair::xdr);

fxTypeObj& Pair::getTypeObj() const { return pairType; }

bool hostIsLittle() { return host<short>(1) == hex("01 00"); }
}  // namespace

TEST(streamFormatDoc, hasItsDumps) {
    const std::vector<std::string> found = dumps();
    ASSERT_EQ(static_cast<std::size_t>(dumpCount), found.size());
    EXPECT_EQ(174u, found[littleGlossary].size());
    EXPECT_EQ(174u, found[bigGlossary].size());
}

TEST(streamFormatDoc, glossaryIsWrittenAsShown) {
    const std::vector<std::string> found = dumps();
    ASSERT_EQ(static_cast<std::size_t>(dumpCount), found.size());
    Glossary glossary(3);
    glossary.edition = 7;
    glossary.words.add("A", "");
    glossary.words.add("B", "x");
    glossary.pages.resize(2);
    glossary.pages[0] = 1;
    glossary.pages[1] = 258;
    MemoryStream stream;
    const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(&stream));
    EXPECT_EQ(1, writer->writeObject(&glossary, &glossary));
    EXPECT_EQ(dump(found[hostIsLittle() ? littleGlossary : bigGlossary]), dump(stream.written));
}

TEST(streamFormatDoc, glossaryIsReadFromHostsOfEitherOrder) {
    fxInitializeToolkit();
    const std::vector<std::string> found = dumps();
    ASSERT_EQ(static_cast<std::size_t>(dumpCount), found.size());
    for (const std::string& bytes : {found[littleGlossary], found[bigGlossary]}) {
        SCOPED_TRACE(dump(bytes));
        MemoryStream stream(bytes);
        const std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(&stream));
        ASSERT_NE(nullptr, reader);
        const std::unique_ptr<Glossary> glossary(
            static_cast<Glossary*>(reader->readObject(glossaryType)));
        ASSERT_NE(nullptr, glossary);
        EXPECT_EQ(0u, stream.left());
        EXPECT_EQ(7u, glossary->edition);
        EXPECT_EQ(2u, glossary->words.length());
        EXPECT_EQ(3u, glossary->words.getNumBuckets());
        ASSERT_TRUE(glossary->words.find("A") && glossary->words.find("B"));
        EXPECT_TRUE(*glossary->words.find("A") == "");
        EXPECT_TRUE(*glossary->words.find("B") == "x");
        ASSERT_EQ(2u, glossary->pages.length());
        EXPECT_EQ(1, glossary->pages[0]);
        EXPECT_EQ(258, glossary->pages[1]);
    }
}

TEST(streamFormatDoc, pairIsWrittenAsShown) {
    if (!hostIsLittle())
        GTEST_SKIP() << "the dump is a little-endian host's";
    const std::vector<std::string> found = dumps();
    ASSERT_EQ(static_cast<std::size_t>(dumpCount), found.size());
    Pair first;
    Pair second;
    first.number = 5;
    second.number = 6;
    first.other = &second;
    second.other = &first;
    MemoryStream stream;
    fxBinaryWriter writer(&stream);
    EXPECT_EQ(1, writer.writeObject(&first, &first));
    EXPECT_EQ(dump(found[pairWritten]), dump(stream.written));
}

TEST(streamFormatDoc, pairIsReadWithTwoWords) {
    fxInitializeToolkit();
    const std::vector<std::string> found = dumps();
    ASSERT_EQ(static_cast<std::size_t>(dumpCount), found.size());
    MemoryStream stream(littleHeader() + found[pairReadable]);
    const std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(&stream));
    const std::unique_ptr<Pair> first(static_cast<Pair*>(reader->readObject(pairType)));
    ASSERT_NE(nullptr, first);
    EXPECT_EQ(0u, stream.left());
    const std::unique_ptr<Pair> second(first->other);
    ASSERT_NE(nullptr, second);
    EXPECT_EQ(5u, first->number);
    EXPECT_EQ(6u, second->number);
    EXPECT_EQ(first.get(), second->other);
}

TEST(streamFormatDoc, namesEveryMessageThatReadingMayEndWith) {
    const std::string text = document();
    for (const char* message :
         {"Unknown transcriber type \"%s\"", "fxBinaryReader: unknown short ordering %x",
          "fxBinaryReader: unknown long ordering %x",
          "fxBinaryReader: unsupported floating point format %s", "unknown type %s", "Whoops!",
          "XXX baddest news", "XXX version error handling is missing",
          "XXX error handling is missing", "format error", "XXX bad news!",
          "XXX new base for old base", "XXX old base previously unseen"})
        EXPECT_NE(std::string::npos, text.find("| `" + std::string(message) + "` |")) << message;
}

TEST(streamFormatDoc, listsEveryTagOnce) {
    const std::string text = document();
    const char* const rows[] = {"| 0 | data, ",    "| 1 | null ",      "| 2 | type ",
                                "| 3 | pointer ",  "| 4 | pointer ",   "| 5 | body ",
                                "| 6 | body ",     "| 7 | body ",      "| 8 | body ",
                                "| 9 | body ",     "| 10 | body ",     "| 11 | pointer ",
                                "| 12 | pointer ", "| 13 | embedded ", "| 14 | embedded "};
    for (const char* row : rows) {
        const std::size_t at = text.find("\n" + std::string(row));
        ASSERT_NE(std::string::npos, at) << row;
        EXPECT_EQ(std::string::npos, text.find("\n" + std::string(row), at + 1)) << row;
    }
}
