// fxdump --verify: each rule of the streams, broken.

#ifdef KELVOFXDS_FXDUMP

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/dumping.h"
#include "tests/support/streamBytes.h"
#include "tests/support/streamSamples.h"

namespace {
using fxdump::Show;

const char* const noText = "";

// What verifying says: the verdict on a bad stream, "" on a sound one.
std::string verdictOn(const std::string& bytes, bool readerWords = false) {
    const Shown result = shown(Show::verify, bytes, readerWords);
    EXPECT_EQ(result.message.empty() ? 0 : 1, result.outcome);
    EXPECT_EQ(result.message.empty(), !result.out.empty());
    return result.message;
}

// A root that has begun with object 1 of type 2, of version 1.
GraphBytes begun() {
    GraphBytes g;
    g.type(2, "A", 1).record(fxOT_Object, {1, 2, 1});
    return g;
}

struct Case {
    const char* what;
    std::function<void(GraphBytes&)> add;  // to begun()
    const char* rule;                      // "" if it is sound
};

std::string pairWritten() {
    return littleHeader() + hex("02 02000000 'Pair' 00 | 4a 04 01000000 02000000 01000000 05000000"
                                "0b 03000000 | 4a 04 03000000 02000000 01000000 06000000"
                                "0c 01000000");
}

std::string pairReadable() {
    return littleHeader() + hex("02 02000000 'Pair' 00 | 4a 04 01000000 02000000 01000000 05000000"
                                "0b 03000000 00000000"
                                "4a 04 03000000 02000000 01000000 06000000"
                                "0c 01000000 00000000");
}
}  // namespace

TEST(fxdumpVerify, soundGraphStreamsAreSound) {
    for (const bool isBig : {false, true})
        EXPECT_EQ(std::string("file: graph stream, ") + (isBig ? "big" : "little") +
                      "-endian, 444 bytes, 28 records, 4 roots: sound\n",
                  shown(Show::verify, graphSample(isBig)).out);
    EXPECT_EQ("", verdictOn(GraphBytes().str()));
}

TEST(fxdumpVerify, saysWhichRuleOfGraphStreamsIsBroken) {
    const Case cases[] = {
        {"nothing more", [](GraphBytes&) {}, ""},
        {"a long payload", [](GraphBytes& g) { g.record(fxOT_Data, {}, std::string(65536, 'x')); },
         ""},
        {"a payload that is too long",
         [](GraphBytes& g) { g.record(fxOT_Data, {}, std::string(65537, 'x')); },
         "a payload of 65537 bytes is longer than 65536"},
        {"a number left out", [](GraphBytes& g) { g.record(fxOT_ObjectPointer, {4}); },
         "number 4 where 3 comes next"},
        {"a number again", [](GraphBytes& g) { g.record(fxOT_ObjectPointer, {1}); },
         "number 1 where 3 comes next"},
        {"a type ahead of an embedded object",
         [](GraphBytes& g) { g.type(4, "B", 1).record(fxOT_Embedded, {3}); },
         "number 4 where 3 comes next"},
        {"a body missing", [](GraphBytes& g) { g.record(fxOT_ObjectPointer, {3}); },
         "the body of number 3 is missing"},
        {"a block missing",
         [](GraphBytes& g) {
             g.record(fxOT_Block, {3, 1});
         },
         "the body of number 3 is missing"},
        {"a body nobody points to",
         [](GraphBytes& g) {
             g.record(fxOT_Object, {3, 2, 1});
         },
         "no pointer to an object has number 3"},
        {"a body again",
         [](GraphBytes& g) {
             g.record(fxOT_Object, {1, 2, 1});
         },
         "no pointer to an object has number 1"},
        {"a block nobody points to",
         [](GraphBytes& g) {
             g.record(fxOT_Bytes, {3, 0});
         },
         "no pointer to a block has number 3"},
        {"an object's body for a block",
         [](GraphBytes& g) {
             g.record(fxOT_Block, {3, 1}).record(fxOT_Object, {3, 2, 1});
         },
         "no pointer to an object has number 3"},
        {"a reference to nothing", [](GraphBytes& g) { g.record(fxOT_OldObject, {3}); },
         "number 3 is no object's"},
        {"a reference to a type", [](GraphBytes& g) { g.record(fxOT_OldObject, {2}); },
         "number 2 is no object's"},
        {"a block that is an object", [](GraphBytes& g) { g.record(fxOT_OldBlock, {1}); },
         "number 1 is no block's"},
        {"an embedded object that is none", [](GraphBytes& g) { g.record(fxOT_OldEmbedded, {3}); },
         "number 3 is no embedded object's"},
        {"an embedded object in an object's place",
         [](GraphBytes& g) { g.record(fxOT_Embedded, {1}).record(fxOT_OldEmbedded, {1}); }, ""},
        {"an object of its own as one that is embedded",
         [](GraphBytes& g) { g.record(fxOT_OldEmbedded, {1}); },
         "number 1 is no embedded object's"},
        {"a block of more than its pointer says",
         [](GraphBytes& g) {
             g.record(fxOT_Block, {3, 1}).record(fxOT_Bytes, {3, 2}, "ab");
         },
         ""},
        {"a type that is an object",
         [](GraphBytes& g) {
             g.record(fxOT_ObjectPointer, {3}).record(fxOT_Object, {3, 1, 1});
         },
         "number 1 is no type's"},
        {"another version",
         [](GraphBytes& g) {
             g.record(fxOT_ObjectPointer, {3}).record(fxOT_Object, {3, 2, 2});
         },
         "version 2, but the type has version 1"},
        {"a type without its version", [](GraphBytes& g) { g.raw(hex("02 03000000 'B' 00")); },
         "a type has a payload of 4 bytes, its version, not of 0"},
        {"a block of less than its pointer says",
         [](GraphBytes& g) {
             g.record(fxOT_Block, {3, 2}).record(fxOT_Bytes, {3, 1}, "a");
         },
         "the block has 1 byte, but its pointer says 2"},
        {"half a short",
         [](GraphBytes& g) {
             g.record(fxOT_Block, {3, 3}).record(fxOT_Shorts, {3, 3}, "abc");
         },
         "the size of the block, 3, is no multiple of 2"},
        {"a block in two records",
         [](GraphBytes& g) {
             g.record(fxOT_Block, {3, 3}).record(fxOT_Bytes, {3, 3}, "ab").record(0, {}, "c");
         },
         ""},
        {"a block cut short",
         [](GraphBytes& g) {
             g.record(fxOT_Block, {3, 3}).record(fxOT_Bytes, {3, 3}, "ab");
         },
         "block 3 before has 2 of its 3 bytes"},
        {"a block with more",
         [](GraphBytes& g) {
             g.record(fxOT_Block, {3, 1}).record(fxOT_Bytes, {3, 1}, "ab");
         },
         "there are more bytes than the 1 of block 3"},
        {"a pointer in a block",
         [](GraphBytes& g) {
             g.record(fxOT_Block, {3, 0}).record(fxOT_Bytes, {3, 0}).record(fxOT_Null);
         },
         "a block has no pointers"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        GraphBytes g = begun();
        c.add(g);
        const std::string verdict = verdictOn(g.end().str());
        const std::size_t at = verdict.find(": ");
        EXPECT_EQ(c.rule, verdict.empty() ? noText : verdict.substr(at + 2));
    }
}

TEST(fxdumpVerify, saysWhereTheRuleIsBroken) {
    GraphBytes g = begun();
    const std::size_t offset = g.str().size();
    EXPECT_EQ("offset " + std::to_string(offset) + ", record 3: number 7 is no object's",
              verdictOn(g.record(fxOT_OldObject, {7}).end().str()));
}

TEST(fxdumpVerify, checksHowRootsBegin) {
    GraphBytes g;
    EXPECT_EQ("offset 25, record 1: a root begins with the body of its object",
              verdictOn(g.record(fxOT_Null).end().str()));
    GraphBytes data;
    EXPECT_EQ("offset 25, record 1: a root begins with the body of its object",
              verdictOn(data.record(fxOT_Data, {}, "data").end().str()));
    GraphBytes nothing;
    EXPECT_EQ("offset 26, record 2: the root has no object",
              verdictOn(nothing.record(fxOT_Data).end().str()));
    GraphBytes alone = begun();
    EXPECT_EQ("", verdictOn(alone.end().record(fxOT_Data).record(fxOT_OldObject, {1}).end().str()));
    GraphBytes apart = begun();
    EXPECT_EQ("offset 55, record 4: a root begins with the body of its object",
              verdictOn(apart.end().record(fxOT_OldObject, {1}).end().str()));
    GraphBytes more = begun();
    more.end().record(fxOT_Data).record(fxOT_OldObject, {1}).record(fxOT_Null).end();
    EXPECT_EQ(
        "offset 61, record 6: behind a root that was written before stands nothing but its "
        "end",
        verdictOn(more.str()));
}

TEST(fxdumpVerify, rootsMayGoOnWithTheNumbersBefore) {
    GraphBytes g = begun();
    g.end().record(fxOT_Data).record(fxOT_Object, {3, 2, 1}).record(fxOT_OldObject, {1}).end();
    g.record(fxOT_Data).type(5, "B", 1).record(fxOT_Object, {4, 5, 1}).end();
    EXPECT_EQ("", verdictOn(g.str()));
    GraphBytes apart = begun();
    apart.end().record(fxOT_Object, {1, 2, 1}).end();
    EXPECT_EQ("offset 55, record 4: number 2 is no type's", verdictOn(apart.str()));
}

TEST(fxdumpVerify, whatIsEmbeddedIsOfTheSameRoot) {
    GraphBytes g = begun();
    g.end().record(fxOT_Data).record(fxOT_Object, {3, 2, 1}).record(fxOT_Embedded, {1}).end();
    EXPECT_EQ("offset 69, record 6: number 1 is that of an earlier root", verdictOn(g.str()));
}

TEST(fxdumpVerify, aWrongChecksumIsTold) {
    GraphBytes g = begun();
    const std::string verdict = verdictOn(g.end(0x80).str());
    EXPECT_EQ(0u, verdict.find("offset 50, record 3: the checksum is ")) << verdict;
}

TEST(fxdumpVerify, noFlippedBitAndNoCutOfAGraphStreamIsSound) {
    for (const bool isBig : {false, true}) {
        const std::string sound = graphSample(isBig);
        for (std::size_t bit = 0; bit < sound.size() * 8; ++bit) {
            std::string bytes = sound;
            bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ 1 << bit % 8);
            EXPECT_NE("", verdictOn(bytes)) << bit;
        }
        std::size_t sounds = 0;
        for (std::size_t n = 0; n < sound.size(); ++n)
            sounds += verdictOn(sound.substr(0, n)).empty();
        EXPECT_EQ(4u, sounds);  // behind the header and the first three roots
    }
}

// Standard streams.

TEST(fxdumpVerify, saysWhetherTheStandardReaderWouldReadAStream) {
    const std::string records =
        hex("02 02000000 'ARRAY' 00 | 4a 06 01000000 02000000 01000000 00000000 0200");
    EXPECT_EQ(
        "file: standard stream, little-endian, 57 bytes, 2 records: sound; the standard "
        "reader would read it\n",
        shown(Show::verify, littleHeader() + records).out);
    EXPECT_EQ(
        "file: standard stream, little-endian, 82 bytes, 5 records: sound; the standard "
        "reader would not read it: offset 54, record 3: of a pointer to an object it takes "
        "two words\n",
        shown(Show::verify, pairWritten()).out);
}

TEST(fxdumpVerify, readerWordsAreThoseOfTheStandardReader) {
    EXPECT_EQ(
        "file: standard stream, little-endian, 90 bytes, 5 records: sound; the standard "
        "reader would read it\n",
        shown(Show::verify, pairReadable(), true).out);
    EXPECT_NE("", verdictOn(pairWritten(), true));
    EXPECT_EQ(
        "offset 59, record 4: the writer makes no empty records of data; if it was made for "
        "the standard reader, try --reader-words",
        verdictOn(pairReadable()));
}

TEST(fxdumpVerify, saysWhichRuleOfStandardStreamsIsBroken) {
    const std::string object = "02 02000000 'A' 00 | 0a 01000000 02000000 01000000 |";
    const struct {
        const char* what;
        std::string records;
        const char* rule;
    } cases[] = {
        {"two roots", "0a 03000000 02000000 01000000", ""},
        {"a block", "03 03000000 01000000 | 45 01 03000000 01000000 'x'", ""},
        {"no block", "03 03000000 01000000", "the body of number 3 is missing"},
        {"no type", "0a 03000000 07000000 01000000", "number 7 is no type's"},
        {"a reference", "0c 01000000", ""},
        {"a reference to nothing", "0c 09000000", "number 9 has not come before"},
        {"a number again", "0b 01000000", "number 1 has come before"},
        {"another body", "0b 03000000 | 0a 04000000 02000000 01000000",
         "no pointer to an object has number 4"},
        {"another version", "0a 03000000 02000000 02000000",
         "version 2, but the type defined last has 1"},
        {"an embedded object again", "0d 01000000", "number 1 has come before"},
        {"a block cut short", "03 03000000 02000000 | 45 01 03000000 02000000 'x'",
         "block 3 before has 1 of its 2 bytes"},
        {"a tag of graph streams", "0f 00000000", "there is no record with tag 15"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const std::string verdict = verdictOn(littleHeader() + hex((object + c.records).c_str()));
        const std::size_t at = verdict.find(": ");
        EXPECT_EQ(c.rule, verdict.empty() ? noText : verdict.substr(at + 2));
    }
}

TEST(fxdumpVerify, tellsWhatTheStandardReaderMakesNullOrRefuses) {
    const std::string object = "02 02000000 'A' 00 | 0a 01000000 02000000 01000000 |";
    const struct {
        const char *records, *rule;
    } cases[] = {
        {"0b 03000000 00000000 | 0c 03000000 00000000 | 0a 03000000 02000000 01000000",
         "what has number 3 comes later, so this becomes a null pointer"},
        {"02 03000000 'B' 00 | 0a 04000000 02000000 02000000", "version 2 of a type that had 1"},
        {"04 01000000 00000000", "number 1 belongs to another kind of thing"},
    };
    for (const auto& c : cases) {
        const std::string bytes = littleHeader() + hex((object + c.records).c_str());
        const std::string verdict = verdictOn(bytes, true);
        EXPECT_EQ(c.rule, verdict.substr(std::min(verdict.size(), verdict.find(": ") + 2)));
    }
}

TEST(fxdumpVerify, judgesHeaders) {
    const struct {
        std::string bytes;
        const char* verdict;
    } cases[] = {
        {"", "offset 0: not a stream of objects: too short for a header"},
        {"text that is no stream at all",
         "offset 0: not a stream of objects: it begins with no "
         "writer's name"},
        {hex("'fxBinaryWriters' 00 'ieee' 00 2211 66554433"),
         "offset 0: not a stream of objects: it begins with no writer's name"},
        {littleHeader().substr(0, 18), "offset 0: the stream ends within the header"},
        {hex("'fxGraphWriter' 00 'IEEE' 00 2211 66554433"),
         "offset 14: the floating-point format is not \"ieee\""},
        {hex("'fxBinaryWriter' 00 'ieee' 00 2212 66554433"),
         "offset 20: the short mark shows no byte order"},
        {hex("'fxBinaryWriter' 00 'ieee' 00 2211 66554432"),
         "offset 22: the long mark shows no byte order"},
        {hex("'fxBinaryWriter' 00 'ieee' 00 1122 55663344"), ""},
        {hex("'fxBinaryWriter' 00 'ieee' 00 2211 44336655"), ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.verdict, verdictOn(c.bytes));
}

#endif
