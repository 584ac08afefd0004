// fxStrChecked_test.cpp - misuse of strings and buffers, which the checked build stops.

#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxPath.h"
#include "kelvofxds/str/fxStackBuffer.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxTempStr.h"
#include "tests/support/misuse.h"

namespace {

const char* const null = nullptr;
unsigned int place = 0;
fxStr word() { return fxStr("word"); }

const Misuse nulls[] = {
    {"bytes", [] { fxStr(null, 0); }, [] { fxStr(null, 1); }, "fxStr::fxStr: s is null"},
    {"next", [] { word().next(0, "r"); }, [] { word().next(0, null); }, "fxStr::next: set is null"},
    {"nextR", [] { word().nextR(4, "r"); }, [] { word().nextR(4, null); },
     "fxStr::nextR: set is null"},
    {"skip", [] { word().skip(0, "w"); }, [] { word().skip(0, null); }, "fxStr::skip: set is null"},
    {"skipR", [] { word().skipR(4, "d"); }, [] { word().skipR(4, null); },
     "fxStr::skipR: set is null"},
    {"token", [] { word().token(place, "r"); }, [] { word().token(place, null); },
     "fxStr::token: set is null"},
    {"tokenR", [] { word().tokenR(place, "r"); }, [] { word().tokenR(place, null); },
     "fxStr::tokenR: set is null"},
    {"trim", [] { word().trim("w"); }, [] { word().trim(null); }, "fxStr::trim: set is null"},
    {"trimRight", [] { word().trimRight("d"); }, [] { word().trimRight(null); },
     "fxStr::trimRight: set is null"},
    {"vformat", [] { word().format("%s", "x"); },
     [] {
         const char* const volatile format = nullptr;
         word().format(format);
     },
     "fxStr::vformat: format is null"},
    {"a temporary's first part", [] { fxTempStr(null, 0, "b", 1); },
     [] { fxTempStr(null, 1, "b", 1); }, "fxTempStr::fxTempStr: a is null"},
    {"a temporary's second part", [] { fxTempStr("a", 1, null, 0); },
     [] { fxTempStr("a", 1, null, 1); }, "fxTempStr::fxTempStr: b is null"},
    {"concat", [] { fxTempStr("a", 1, "b", 1).concat(null, 0); },
     [] { fxTempStr("a", 1, "b", 1).concat(null, 1); }, "fxTempStr::concat: s is null"},
    {"put", [] { fxStackBuffer().put(null, 0); }, [] { fxStackBuffer().put(null, 1); },
     "fxStackBuffer::put: data is null"},
    {"split without a directory",
     [] {
         fxPath directory, leaf;
         fxPath("a/b").split(&directory, &leaf);
     },
     [] {
         fxPath leaf;
         fxPath("a/b").split(nullptr, &leaf);
     },
     "fxPath::split: directory is null"},
    {"split without a leaf",
     [] {
         fxPath directory, leaf;
         fxPath("a/b").split(&directory, &leaf);
     },
     [] {
         fxPath directory;
         fxPath("a/b").split(&directory, nullptr);
     },
     "fxPath::split: leaf is null"},
};

// What the string operations say of a byte in the string that all empty ones share.
#define EMPTY_STRING_IS(operation) \
    "fxStr::" operation ": emptyString is byte 120: something was written to an empty string"

const Misuse writes[] = {
    {"an empty string, met by the next operation",
     [] {
         fxStr empty;
         empty[0] = '\0';
         word().append("s");
     },
     [] {
         fxStr empty;
         empty[0] = 'x';
         word().append("s");
     },
     EMPTY_STRING_IS("append")},
    {"an empty string, met by a copy", [] { const fxStr copy(word()); },
     [] {
         fxStr empty;
         empty[0] = 'x';
         const fxStr copy(empty);
     },
     EMPTY_STRING_IS("fxStr")},
    {"an empty string, met by a comparison", [] { EXPECT_TRUE(fxStr() == fxStr()); },
     [] {
         fxStr empty;
         empty[0] = 'x';
         EXPECT_TRUE(empty == fxStr());
     },
     EMPTY_STRING_IS("operator==")},
    {"an empty string, met by a look for a byte", [] { word().next(0, 'r'); },
     [] {
         fxStr::emptyString = 'x';
         word().next(0, 'r');
     },
     EMPTY_STRING_IS("next")},
    {"an empty string, met by the end of the process", [] {},
     [] {
         fxStr empty;
         empty[0] = 'x';
         std::exit(0);
     },
     EMPTY_STRING_IS("exit")},
    {"behind the end",
     [] {
         fxStr text("word");
         text[3] = 'k';
         text.append("s");
     },
     [] {
         fxStr text("word");
         text[4] = 's';
         text.append("s");
     },
     "fxStr::append: byte 115 stands behind the text: something was written beyond length 4"},
};

struct Ended {
    Ended() : string(new (room) fxStr("word")) { string->~fxStr(); }
    alignas(fxStr) unsigned char room[sizeof(fxStr)];
    fxStr* string;
};

const Misuse ends[] = {
    {"destroyed twice", [] { Ended(); }, [] { Ended().string->~fxStr(); },
     "fxStr::~fxStr: the string has been destroyed already"},
    {"used after its end", [] { Ended(); }, [] { Ended().string->remove(0, 1); },
     "fxStr::remove: the string has been destroyed already"},
    {"copied after its end", [] { Ended(); }, [] { const fxStr copy(*Ended().string); },
     "fxStr::fxStr: the string has been destroyed already"},
    {"compared after its end", [] { Ended(); }, [] { EXPECT_TRUE(*Ended().string == "word"); },
     "fxStr::operator==: the string has been destroyed already"},
};

}  // namespace

TEST(fxStrCheckedDeathTest, nullWhereATextHasToBe) { expectStops(nulls); }

// Each in a process that runs this test alone: what other tests have made may compare strings at
// the end of theirs.
TEST(fxStrCheckedDeathTest, writesWhereThereIsNoText) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    expectStops(writes);
}

TEST(fxStrCheckedDeathTest, stringsThatHaveEnded) { expectStops(ends); }

TEST(fxStrCheckedDeathTest, anEmptyTextIsWhateverANullIs) {
    fxStr text("word");
    text.append(null);
    text.insert(null, 2);
    text.replace(null, 1);
    text = null;
    EXPECT_EQ(0U, text.length());
}
