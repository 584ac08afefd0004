// Holds docs/stream-format.md to its word.

#include <dlfcn.h>

#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/transcribe/fxBinaryFormatInternal.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "tests/support/graphs.h"
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
enum { littleGlossary, bigGlossary, pairWritten, pairReadable, littleGraph, bigGraph, dumpCount };

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

class LinkedGlossary : public Glossary {
public:
    LinkedGlossary() : Glossary(3) {}
    unsigned char xdr(fxTranscriber& t) override {
        return Glossary::xdr(t) && t.xdr(&next, next, getTypeObj(), this, nullptr);
    }
    fxTypeObj& getTypeObj() const override;

    static void* newInstance(fxTypeObj&) { return new LinkedGlossary; }
    static void deleteInstance(void* object) { delete static_cast<LinkedGlossary*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<LinkedGlossary*>(object)->xdr(t);
    }

    LinkedGlossary* next = nullptr;
};

fxTypeObj linkedType("Glossary", 2, LinkedGlossary::newInstance, LinkedGlossary::deleteInstance,
                     LinkedGlossary::xdr);

fxTypeObj& LinkedGlossary::getTypeObj() const { return linkedType; }

// Of two classes of one name a reader without a better clue makes the last.
const bool glossaryIsLast = (fxTypeObj::registerType(&glossaryType), true);

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

// The tables.

namespace {
// The cells of the table whose head line begins with `head`, by rows.
std::vector<std::vector<std::string>> tableUnder(const std::string& head) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(document());
    std::string line;
    while (std::getline(lines, line) && line.compare(0, head.size(), head) != 0) {
    }
    std::getline(lines, line);  // the rule
    while (std::getline(lines, line) && !line.empty()) {
        std::vector<std::string> cells;
        std::size_t at = 2;
        for (std::size_t end; (end = line.find(" |", at)) != std::string::npos; at = end + 3)
            cells.push_back(line.substr(at, end - at));
        rows.push_back(cells);
    }
    return rows;
}

// What a word is called in the document.
std::string nameOf(fxBinaryFormat::Word word) {
    switch (word) {
        case fxBinaryFormat::Word::ignored:
            return "4 bytes that are ignored";
        case fxBinaryFormat::Word::number:
            return "number";
        case fxBinaryFormat::Word::typeNumber:
            return "type's number";
        case fxBinaryFormat::Word::version:
            return "version";
        case fxBinaryFormat::Word::size:
            return "size of the block";
    }
    return "";
}

// What a record's words are called there.
std::string wordsOf(const fxBinaryFormat::Record& record, unsigned int n) {
    std::string text;
    for (unsigned int i = 0; i < n; ++i) {
        text += text.empty() ? "" : "; ";
        text += record.tag == fxOT_Type ? "number" : nameOf(record.words[i]);
    }
    if (record.hasText)
        text += "; name with NUL";
    return text.empty() ? "none" : text;
}
}  // namespace

TEST(streamFormatDoc, tagsHaveTheWordsOfTheFormat) {
    const auto rows = tableUnder("| tag | record |");
    ASSERT_EQ(fxBinaryFormat::recordCount, rows.size());
    for (unsigned int tag = 0; tag < rows.size(); ++tag) {
        SCOPED_TRACE(tag);
        ASSERT_EQ(4u, rows[tag].size());
        const fxBinaryFormat::Record& record = *fxBinaryFormat::recordOf(tag);
        EXPECT_EQ(std::to_string(tag), rows[tag][0]);
        EXPECT_EQ(wordsOf(record, record.wordsWritten), rows[tag][2]);
        std::string read = rows[tag][3].substr(0, rows[tag][3].find("; the size is not used"));
        if (read == "the same")
            read = rows[tag][2];
        EXPECT_EQ(wordsOf(record, record.wordsRead), read);
    }
}

namespace {
// Before any test could register another one.
const fxTypeObj* const arrayAtStart = fxTypeObj::findType("ARRAY");

// The library has the text of its types' names, whoever has a copy of a record.
bool isTheLibrarys(const fxTypeObj& type) {
    Dl_info info, own;
    return ::dladdr(type.name, &info) != 0 && ::dladdr(fxStr_type.name, &own) != 0 &&
           info.dli_fbase == own.dli_fbase;
}
}  // namespace

TEST(streamFormatDoc, namesEveryTypeThatTheLibraryRegisters) {
    std::set<std::string> named;
    for (const auto& row : tableUnder("| name in the stream |")) {
        ASSERT_EQ(4u, row.size());
        const std::string name = row[0].substr(1, row[0].size() - 2);
        EXPECT_TRUE(named.insert(name).second) << name;
        const fxTypeObj* type = fxTypeObj::findType(name.c_str());
        ASSERT_NE(nullptr, type) << name;
        EXPECT_EQ(type->create == nullptr, row[2] == "nothing: abstract") << name;
    }
    std::set<std::string> registered;
    for (fxVoidPtrDictIter iter(*fxTypeObj::knownTypes); iter.getKey(); ++iter) {
        const auto* type = *static_cast<fxTypeObj**>(iter.getValue());
        if (isTheLibrarys(*type))
            registered.insert(type->name);
    }
    EXPECT_EQ(registered, named);
}

TEST(streamFormatDoc, arrayIsReadAsAStringArray) { EXPECT_EQ(&fxStrArray_type, arrayAtStart); }

TEST(streamFormatDoc, setsAndStringArraysAreLaidOutAsTold) {
    const auto contents = [](fxXDRObj& object) {
        MemoryStream stream;
        fxBinaryWriter writer(&stream);
        EXPECT_TRUE(object.xdr(writer) && writer.flush());
        return dump(stream.written);
    };
    const auto pointer = [](unsigned int number) { return word(number) + word(2); };
    fxStrSet set(3);
    set.add(fxStr("A"));
    set.add(fxStr("B"));
    EXPECT_EQ(
        dump(hex("40 10") + host(2) + host(8) + host(3) + host(2) +  // "B" is in bucket 1
             hex("43 08") + pointer(1) + host(1) + host(2) + hex("43 04") + pointer(2) + host(2)),
        contents(set));
    fxStrArray array;
    for (const char* text : {"A", "", "B"}) {
        const fxStr element(text);
        array.append(&element);
    }
    EXPECT_EQ(dump(hex("40 0a") + host(24) + host<short>(8) + host(2) + hex("43 08") + pointer(1) +
                   host(1) + host(2) + hex("03") + pointer(2)),
              contents(array));
}

TEST(streamFormatDoc, aGraphIsWrittenAsShownAndReadFromHostsOfEitherOrder) {
    const std::vector<std::string> found = dumps();
    ASSERT_EQ(static_cast<std::size_t>(dumpCount), found.size());
    LinkedGlossary glossary;
    glossary.edition = 7;
    glossary.words.add("A", "");
    glossary.words.add("B", "x");
    for (const short page : {short(1), short(258)})
        glossary.pages.append(&page);
    glossary.next = &glossary;
    EXPECT_EQ(dump(found[hostIsLittle() ? littleGraph : bigGraph]), dump(graphStreamOf(glossary)));

    for (const std::string& bytes : {found[littleGraph], found[bigGraph]}) {
        SCOPED_TRACE(dump(bytes));
        const GraphRead read = readGraph(bytes, linkedType);
        ASSERT_EQ("", read.error);
        const std::unique_ptr<LinkedGlossary> copy(static_cast<LinkedGlossary*>(read.object));
        EXPECT_EQ(7u, copy->edition);
        EXPECT_STREQ("x", copy->words.find("B")->c_str());
        EXPECT_EQ(258, copy->pages[1]);
        EXPECT_EQ(copy.get(), copy->next);
    }
}
