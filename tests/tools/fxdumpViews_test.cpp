// fxdump: what its views show.

#ifdef KELVOFXDS_FXDUMP

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "tests/support/dumping.h"
#include "tests/support/jsonCheck.h"
#include "tests/support/memoryStream.h"
#include "tests/support/streamBytes.h"
#include "tests/support/streamSamples.h"

namespace {
using fxdump::Show;

std::string standardStreamOf(fxXDRObj& object) {
    MemoryStream stream;
    fxBinaryWriter writer(&stream);
    EXPECT_EQ(1, writer.writeObject(&object, &object));
    return hostHeader() + stream.written;
}

// A dictionary in a standard stream of a little-endian host.
std::string littleDictionary() {
    return littleHeader() + hex("42 00 | 02000000 'DICT' 00") +
           hex("4a 14 01000000 02000000 01000000 01000000 08000000 08000000 03000000 02000000"
               "43 08 03000000 02000000 01000000 02000000"
               "45 02 03000000 02000000 'A' 00");
}

std::string hexDigitsOf(const std::string& dumped) {
    std::string bytes;
    std::istringstream lines(dumped);
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        const std::size_t begin = line.find(' ');
        const std::size_t end = line.find(';');
        EXPECT_NE(std::string::npos, end) << line;
        EXPECT_EQ(bytes.size(), std::stoul(line.substr(0, begin), nullptr, 16)) << line;
        bytes += hex(line.substr(begin, end - begin).c_str());
    }
    return bytes;
}

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}
}  // namespace

// The list.

TEST(fxdumpList, showsEachRecordOfAGraphStream) {
    const std::string expected =
        "file: graph stream, little-endian\n"
        "         0  header                    fxGraphWriter, ieee\n"
        "        25  type                      #2 \"Book\"; 4 bytes of payload\n"
        "                                      version 3\n"
        "        40  object                    #1 Book, type 2, version 3; 4 bytes of payload\n"
        "                                      07 00 00 00  ....\n"
        "        58  pointer to an object      #3\n"
        "        63  pointer to an object      #4; 8 bytes of payload\n"
        "                                      01 00 00 00 02 00 00 00  ........\n"
        "        77  embedded object           #5; 4 bytes of payload\n"
        "                                      09 00 00 00  ....\n"
        "        87  pointer to a known object #1\n"
        "        92  null pointer\n"
        "        93  pointer to a block        #6, 16 bytes\n"
        "       102  pointer to an object      #7\n"
        "       107  block of doubles          #6, 16 bytes; 16 bytes of payload\n"
        "                                      1.5 -0.25\n"
        "       133  type                      #8 \"DICT\"; 4 bytes of payload\n"
        "                                      version 1\n"
        "       148  object                    #7 DICT, type 8, version 1; 51 bytes of payload\n"
        "                                      pairs 2, size of a key 8, size of a value 8, "
        "buckets 3\n"
        "                                      key \"A\", value \"\", bucket 2\n"
        "                                      key \"Bob\", value \"x\\\"y\\n\", bucket 1\n";
    const Shown list = shown(Show::list, graphSample(false));
    EXPECT_EQ(0, list.outcome);
    EXPECT_EQ("", list.message);
    EXPECT_EQ(expected, list.out.substr(0, expected.size()));
    EXPECT_TRUE(has(list.out,
                    "       289  data                      9 bytes of payload\n"
                    "                                      \"more data\"\n"));
    EXPECT_TRUE(has(list.out, "element \"abc\""));
    EXPECT_TRUE(has(list.out, "element 1.5 2 -1.0000000000000001e+300\n"));
    EXPECT_TRUE(has(list.out, ", right\n"));
    EXPECT_TRUE(has(list.out, "       444  end\n"));
}

TEST(fxdumpList, isTheSameForBothByteOrdersButForWhatIsNotKnown) {
    std::string little = shown(Show::list, graphSample(false)).out;
    std::string big = shown(Show::list, graphSample(true)).out;
    for (std::string* text : {&little, &big}) {
        std::istringstream lines(*text);
        std::string kept;
        for (std::string line; std::getline(lines, line);) {
            if (!has(line, "endian") && !has(line, "checksum") && !has(line, "00 00"))
                kept += line + "\n";
        }
        *text = kept;
    }
    EXPECT_EQ(little, big);
    EXPECT_LT(30, std::count(little.begin(), little.end(), '\n'));
}

TEST(fxdumpList, showsADictionaryOfAStandardStream) {
    EXPECT_EQ(
        "file: standard stream, little-endian\n"
        "         0  header                    fxBinaryWriter, ieee\n"
        "        26  type                      #2 \"DICT\"\n"
        "        37  object                    #1 DICT, type 2, version 1; 20 bytes of payload\n"
        "                                      pairs 1, size of a key 8, size of a value 8, "
        "buckets 3\n"
        "                                      key of 1 byte\n"
        "        71  pointer to a block        #3, 2 bytes; 8 bytes of payload\n"
        "                                      value \"\", bucket 2\n"
        "        89  block of bytes            #3, 2 bytes; 2 bytes of payload\n"
        "                                      \"A\"\n"
        "       101  end\n",
        shown(Show::list, littleDictionary()).out);
}

TEST(fxdumpList, decodesTheLibrarysOwnClasses) {
    fxDoubleArray doubles(2);
    doubles.resize(2);
    doubles[0] = 0.5;
    doubles[1] = 3;
    EXPECT_TRUE(has(shown(Show::list, standardStreamOf(doubles)).out, "element 0.5 3\n"));
    fxShortArray shorts(4);
    shorts.resize(2);
    shorts[0] = 1;
    shorts[1] = 258;
    const std::string list = shown(Show::list, standardStreamOf(shorts)).out;
    EXPECT_TRUE(has(list, "bytes in use 4, size of an element 2, element 1 258\n")) << list;
    fxStrArray strings;
    for (const char* text : {"", "abc"}) {
        const fxStr element(text);
        strings.append(&element);
    }
    EXPECT_TRUE(has(shown(Show::list, standardStreamOf(strings)).out,
                    "element \"\"\n                                      element of 3 bytes\n"));
    fxStrSet set(3);
    set.add("A");
    EXPECT_TRUE(
        has(shown(Show::list, standardStreamOf(set)).out, "keys 1, size of a key 8, buckets 3\n"));
    GraphBytes g;
    g.type(2, "fxStr", 1).record(fxOT_Object, {1, 2, 1}, g.string("text"));
    EXPECT_TRUE(has(shown(Show::list, g.end().str()).out, "string \"text\"\n"));
}

TEST(fxdumpList, showsTheElementsBehindThoseInUse) {
    fxShortArray shorts;
    shorts.setMaxLength(3);
    const short nine = 9;
    shorts.append(&nine);
    EXPECT_TRUE(has(shown(Show::list, standardStreamOf(shorts)).out, "spare elements "));
}

TEST(fxdumpList, contentsOtherThanTheClasssAreBytes) {
    GraphBytes g;
    g.type(2, "DICT", 1).record(fxOT_Object, {1, 2, 1}, g.word(1)).record(fxOT_Null, {}, "xyz");
    const std::string list = shown(Show::list, g.end().str()).out;
    EXPECT_TRUE(has(list, "pairs 1\n")) << list;
    EXPECT_TRUE(has(list, "\"xyz\"\n")) << list;
}

TEST(fxdumpList, ofBytesThatAreNotKnownItShowsTheFirst) {
    GraphBytes g;
    g.type(2, "A", 1).record(fxOT_Object, {1, 2, 1}, std::string("\0\1", 2) + run(18));
    g.record(fxOT_Data, {}, std::string(100, '\0'));
    const std::string margin(38, ' ');
    const std::string list = shown(Show::list, g.end().str()).out;
    EXPECT_TRUE(has(list, margin +
                              "00 01 21 22 23 24 25 26 27 28 29 2a 2b 2c 2d 2e  "
                              "..!\"#$%&'()*+,-.\n" +
                              margin +
                              "2f 30 31 32                                      "
                              "/012\n"))
        << list;
    std::string zeros;
    for (int i = 0; i < 16; ++i)
        zeros += "00 ";
    const std::string line = margin + zeros + " " + std::string(16, '.');
    EXPECT_TRUE(has(list, line + "\n" + line + "\n" + line + "\n" + line + " ...\n")) << list;
}

TEST(fxdumpList, showsHowAStreamIsDamaged) {
    std::string bytes = graphSample(false);
    const Shown cut = shown(Show::list, bytes.substr(0, 100));
    EXPECT_EQ(1, cut.outcome);
    EXPECT_EQ("offset 93, record 8: the stream ends within a record", cut.message);
    EXPECT_TRUE(has(cut.out,
                    "        93  damage                    the stream ends within a "
                    "record\n"));
    bytes[93] = 0x3F;
    EXPECT_EQ("offset 93, record 8: there is no record with tag 63",
              shown(Show::list, bytes).message);
    GraphBytes g;
    g.type(2, "A", 1).record(fxOT_Object, {1, 2, 1}).end(1);
    EXPECT_TRUE(has(shown(Show::list, g.str()).out, ", wrong: the bytes have "));
}

TEST(fxdumpList, controlCharactersDoNotReachTheTerminal) {
    GraphBytes g;
    g.type(2, "\033[2J\xC2\x9B", 1).record(fxOT_Object, {1, 2, 1}, "a\033[2J\x9B long enough");
    const std::string bytes = g.end().str();
    for (const Show show : everyShow) {
        const std::string out = shown(show, bytes).out;
        EXPECT_FALSE(has(out, "\033")) << out;
        EXPECT_TRUE(show == Show::json || show == Show::dot || !has(out, "\x9B")) << out;
    }
}

TEST(fxdumpList, knowsOfAVeryLongNameOnlyItsBeginning) {
    GraphBytes g;
    const std::string name(100000, 'n');
    g.type(2, name, 1).record(fxOT_Object, {1, 2, 1}).end();
    const std::string list = shown(Show::list, g.str()).out;
    EXPECT_TRUE(has(list, "#2 \"" + name.substr(0, 255) + "\"...;"));
    EXPECT_GT(2000u, list.size());
    EXPECT_EQ(0, shown(Show::verify, g.str()).outcome);
    EXPECT_EQ(g.str(), hexDigitsOf(shown(Show::hex, g.str()).out));
}

// All bytes.

TEST(fxdumpHex, hasEveryByteWithItsOffsetAndMeaning) {
    for (const std::string& bytes : {graphSample(false), graphSample(true), littleDictionary()})
        EXPECT_EQ(dump(bytes), dump(hexDigitsOf(shown(Show::hex, bytes).out)));
}

TEST(fxdumpHex, saysWhatTheBytesAre) {
    EXPECT_EQ(
        "file: standard stream, little-endian\n"
        "0000  66 78 42 69 6e 61 72 79 57 72 69 74 65 72 00     ; header: \"fxBinaryWriter\"\n"
        "000f  69 65 65 65 00                                   ; \"ieee\"\n"
        "0014  22 11                                            ; short mark 0x1122\n"
        "0016  66 55 44 33                                      ; long mark 0x33445566\n"
        "001a  42 00                                            ; type, payload of 0 bytes\n"
        "001c  02 00 00 00                                      ; its number: 2\n"
        "0020  44 49 43 54 00                                   ; its name: \"DICT\"\n"
        "0025  4a 14                                            ; object, payload of 20 bytes\n"
        "0027  01 00 00 00                                      ; its number: 1\n"
        "002b  02 00 00 00                                      ; its type: 2, \"DICT\"\n"
        "002f  01 00 00 00                                      ; version 1\n"
        "0033  01 00 00 00                                      ; pairs: 1\n"
        "0037  08 00 00 00                                      ; size of a key: 8\n"
        "003b  08 00 00 00                                      ; size of a value: 8\n"
        "003f  03 00 00 00                                      ; buckets: 3\n"
        "0043  02 00 00 00                                      ; key: length + 1 is 2\n"
        "0047  43 08                                            ; pointer to a block, payload of "
        "8 bytes\n"
        "0049  03 00 00 00                                      ; its number: 3\n"
        "004d  02 00 00 00                                      ; size of the block: 2\n"
        "0051  01 00 00 00                                      ; value: length + 1 is 1\n"
        "0055  02 00 00 00                                      ; bucket: 2\n"
        "0059  45 02                                            ; block of bytes, payload of 2 "
        "bytes\n"
        "005b  03 00 00 00                                      ; its number: 3\n"
        "005f  02 00 00 00                                      ; its size: 2\n"
        "0063  41 00                                            ; A.\n",
        shown(Show::hex, littleDictionary()).out);
}

TEST(fxdumpHex, valuesMayBeSpreadOverRecords) {
    GraphBytes g(true);
    g.type(2, "fxStr", 1).record(fxOT_Object, {1, 2, 1}, hex("0000")).record(fxOT_Data, {}, "");
    g.record(fxOT_Data, {}, hex("0005 'ab'")).record(fxOT_Data, {}, hex("'cd' 00"));
    g.record(fxOT_Block, {3, 6}).record(fxOT_Shorts, {3, 6}, hex("0001 02"));
    g.record(fxOT_Data, {}, hex("03 0004")).end();
    const Shown all = shown(Show::hex, g.str());
    EXPECT_EQ(0, all.outcome);
    EXPECT_EQ(dump(g.str()), dump(hexDigitsOf(all.out)));
    EXPECT_TRUE(has(all.out, "; string: a part of it\n")) << all.out;
    EXPECT_TRUE(has(all.out, "; string: length + 1 is 5\n")) << all.out;
    EXPECT_TRUE(has(all.out, "; 515\n")) << all.out;
    EXPECT_TRUE(has(all.out, "; 4\n")) << all.out;
}

// JSON.

TEST(fxdumpJson, isADocumentWithAllThatIsThere) {
    for (const bool isBig : {false, true}) {
        const Shown json = shown(Show::json, graphSample(isBig));
        EXPECT_TRUE(JsonCheck::isDocument(json.out)) << json.out;
        for (const char* part :
             {"\"kind\": \"graph\"", "\"name\": \"Book\"", "\"values\": [1.5, -0.25]",
              "\"label\": \"key\", \"text\": \"Bob\"", "\"text\": \"x\\\"y\\u000a\"",
              "\"typeName\": \"DICT\"", "\"isRight\": true", "\"size\": 444}",
              "\"hex\": \"6d6f72652064617461\"", "\"label\": \"bucket\", \"value\": 1}"})
            EXPECT_TRUE(has(json.out, part)) << part;
    }
}

TEST(fxdumpJson, isADocumentWhereverTheStreamEnds) {
    const std::string bytes = graphSample(false);
    for (std::size_t n = 0; n < bytes.size(); ++n) {
        const Shown json = shown(Show::json, bytes.substr(0, n));
        ASSERT_TRUE(JsonCheck::isDocument(json.out)) << json.out;
        EXPECT_EQ(json.outcome == 1, has(json.out, "\"damage\": {")) << n;
    }
}

TEST(fxdumpJson, numbersThatItHasNotAreTexts) {
    GraphBytes g;
    g.type(2, "A", 1).record(fxOT_Object, {1, 2, 1}).record(fxOT_Block, {3, 8});
    g.record(fxOT_Floats, {3, 8}, hex("0000807f 0000c0ff")).end();
    const std::string json = shown(Show::json, g.str()).out;
    EXPECT_TRUE(has(json, "\"values\": [\"inf\", \"-nan\"]")) << json;
    EXPECT_TRUE(JsonCheck::isDocument(json));
}

TEST(fxdumpJson, textsThatAreNotUtf8AreHexadecimal) {
    GraphBytes g;
    g.type(2, "fxStr", 1).record(fxOT_Object, {1, 2, 1}, g.string("\xC3\xA4")).end();
    EXPECT_TRUE(has(shown(Show::json, g.str()).out, "\"text\": \"\xC3\xA4\""));
    GraphBytes bad;
    bad.type(2, "fxStr", 1).record(fxOT_Object, {1, 2, 1}, bad.string("\xA4\xC3")).end();
    EXPECT_TRUE(has(shown(Show::json, bad.str()).out, "\"hex\": \"a4c300\""));
}

// Graphs.

TEST(fxdumpDot, drawsObjectsPointersAndEmbeddedObjects) {
    const std::string dot = shown(Show::dot, graphSample(true)).out;
    EXPECT_EQ(
        "digraph stream {\n"
        "    rankdir=LR;\n"
        "    label=\"file\";\n"
        "    node [shape=record, fontname=\"monospace\", fontsize=10];\n"
        "    n1 [label=\"Book #1|<p1>#3\\l|<p2>#4\\l|<p3>embedded #5\\l|<p4>#1\\l|null\\l|"
        "<p6>#6\\l|<p7>#7\\l\"];\n"
        "    n2 [label=\"block of doubles #6|1.5 -0.25\\l\", style=rounded];\n"
        "    n3 [label=\"DICT #7|key \\\"A\\\"\\l|value \\\"\\\"\\l|key \\\"Bob\\\"\\l|"
        "value \\\"x\\\\\\\"y\\\\n\\\"\\l\"];\n"
        "    n4 [label=\"Contact #4|<p1>#3\\l\"];\n"
        "    n5 [label=\"Contact #3|<p1>#5\\l\"];\n"
        "    n6 [label=\"ARRAY #1|element \\\"abc\\\"\\l|element \\\"\\\"\\l|"
        "element \\\"hello\\\"\\l\"];\n"
        "    n7 [label=\"ARRAY #1|element 1.5 2 -1.0000000000000001e+300\\l\"];\n"
        "    n1:p1 -> n5;\n"
        "    n1:p2 -> n4;\n"
        "    n1:p4 -> n1;\n"
        "    n1:p6 -> n2;\n"
        "    n1:p7 -> n3;\n"
        "    n4:p1 -> n5;\n"
        "    n5:p1 -> n1:p3;\n"
        "}\n",
        dot);
}

TEST(fxdumpDot, showsWhatIsMissingAndTellsOfWhatIsTooMuch) {
    GraphBytes g;
    g.type(2, "A", 1).record(fxOT_Object, {1, 2, 1}).record(fxOT_ObjectPointer, {3});
    EXPECT_TRUE(has(shown(Show::dot, g.str()).out,
                    "    x1_3 [label=\"#3\\nis missing\", shape=plaintext];\n"
                    "    n1:p1 -> x1_3;\n"));
    for (std::uint32_t i = 0; i < 6000; ++i)
        g.record(fxOT_Object, {i, 2, 1});
    const std::string dot = shown(Show::dot, g.str()).out;
    EXPECT_TRUE(has(dot, "label=\"file, and 1001 more that are not drawn\";\n"));
}

// Counts.

TEST(fxdumpStats, countsRecordsAndObjects) {
    EXPECT_EQ(
        "file: graph stream, big-endian: 444 bytes, 28 records, 4 roots\n"
        "       count         bytes  record\n"
        "           2            12  data\n"
        "           1             1  null pointer\n"
        "           5            80  type\n"
        "           1             9  pointer to a block\n"
        "           1            26  block of doubles\n"
        "           6           217  object\n"
        "           3            24  pointer to an object\n"
        "           4            20  pointer to a known object\n"
        "           1            10  embedded object\n"
        "           4            20  end of root\n"
        "       count         bytes  objects of type\n"
        "           2            86  ARRAY\n"
        "           1            67  Book\n"
        "           2            69  Contact\n"
        "           1            65  DICT\n",
        shown(Show::stats, graphSample(true)).out);
}

#endif
