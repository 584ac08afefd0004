// fxStrOverrunChecked_test.cpp - a byte that was written behind a string's text is met by whatever
// operation comes next: all but the inline ones look, in the checked build.

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxTempStr.h"
#include "tests/support/misuse.h"

namespace {

unsigned int place = 0;

fxStr word() { return fxStr("word"); }

// With an 's' where the NUL was. Never copied, since a copy is an operation.
struct Overrun {
    Overrun() : text("word") { text[4] = 's'; }
    fxStr text;
};

#define BEHIND(operation) \
    "fxStr::" operation ": byte 115 stands behind the text: something was written beyond length 4"

const Misuse edits[] = {
    {"assigned a string", [] { word() = fxStr("a"); }, [] { Overrun().text = fxStr("a"); },
     BEHIND("operator=")},
    {"assigned to a string", [] { fxStr() = word(); },
     [] {
         const Overrun overrun;
         fxStr() = overrun.text;
     },
     BEHIND("operator=")},
    {"assigned a temporary", [] { word() = word() | "a"; }, [] { Overrun().text = word() | "a"; },
     BEHIND("operator=")},
    {"assigned a text", [] { word() = "a"; }, [] { Overrun().text = "a"; }, BEHIND("operator=")},
    {"append a byte", [] { word().append('s'); }, [] { Overrun().text.append('s'); },
     BEHIND("append")},
    {"insert", [] { word().insert("s", 4); }, [] { Overrun().text.insert("s", 4); },
     BEHIND("insert")},
    {"replace", [] { word().replace("k", 3); }, [] { Overrun().text.replace("k", 3); },
     BEHIND("replace")},
    {"remove", [] { word().remove(0, 1); }, [] { Overrun().text.remove(0, 1); }, BEHIND("remove")},
    {"resize", [] { word().resize(9); }, [] { Overrun().text.resize(9); }, BEHIND("resize")},
    {"setMaxLength", [] { word().setMaxLength(9); }, [] { Overrun().text.setMaxLength(9); },
     BEHIND("setMaxLength")},
    {"lower", [] { word().lower(); }, [] { Overrun().text.lower(); }, BEHIND("lower")},
    {"raise", [] { word().raise(); }, [] { Overrun().text.raise(); }, BEHIND("raise")},
};

const Misuse looks[] = {
    {"extract", [] { word().extract(0, 4); }, [] { Overrun().text.extract(0, 4); },
     BEHIND("extract")},
    {"next of a set", [] { word().next(0, "r"); }, [] { Overrun().text.next(0, "r"); },
     BEHIND("next")},
    {"nextR", [] { word().nextR(4, 'r'); }, [] { Overrun().text.nextR(4, 'r'); }, BEHIND("nextR")},
    {"nextR of a set", [] { word().nextR(4, "r"); }, [] { Overrun().text.nextR(4, "r"); },
     BEHIND("nextR")},
    {"skip", [] { word().skip(0, 'w'); }, [] { Overrun().text.skip(0, 'w'); }, BEHIND("skip")},
    {"skip of a set", [] { word().skip(0, "w"); }, [] { Overrun().text.skip(0, "w"); },
     BEHIND("skip")},
    {"skipR", [] { word().skipR(4, 'd'); }, [] { Overrun().text.skipR(4, 'd'); }, BEHIND("skipR")},
    {"skipR of a set", [] { word().skipR(4, "d"); }, [] { Overrun().text.skipR(4, "d"); },
     BEHIND("skipR")},
    {"token", [] { word().token(place, 'r'); }, [] { Overrun().text.token(place, 'r'); },
     BEHIND("token")},
    {"token of a set", [] { word().token(place, "r"); }, [] { Overrun().text.token(place, "r"); },
     BEHIND("token")},
    {"tokenR", [] { word().tokenR(place, 'r'); }, [] { Overrun().text.tokenR(place, 'r'); },
     BEHIND("tokenR")},
    {"tokenR of a set", [] { word().tokenR(place, "r"); },
     [] { Overrun().text.tokenR(place, "r"); }, BEHIND("tokenR")},
    {"trim", [] { word().trim("w"); }, [] { Overrun().text.trim("w"); }, BEHIND("trim")},
    {"trimRight", [] { word().trimRight("d"); }, [] { Overrun().text.trimRight("d"); },
     BEHIND("trimRight")},
    {"hash", [] { word().hash(); }, [] { Overrun().text.hash(); }, BEHIND("hash")},
    {"equal to a text", [] { EXPECT_TRUE(word() == "word"); },
     [] { EXPECT_TRUE(Overrun().text == "word"); }, BEHIND("operator==")},
    {"equal, on the right", [] { EXPECT_TRUE(word() == word()); },
     [] { EXPECT_TRUE(word() == Overrun().text); }, BEHIND("operator==")},
    {"compared with a text", [] { compare(word(), "a"); }, [] { compare(Overrun().text, "a"); },
     BEHIND("compare")},
    {"compared, on the right", [] { compare(word(), word()); },
     [] { compare(word(), Overrun().text); }, BEHIND("compare")},
};

}  // namespace

TEST(fxStrOverrunCheckedDeathTest, operationsThatChangeTheString) { expectStops(edits); }

TEST(fxStrOverrunCheckedDeathTest, operationsThatLookAtTheString) { expectStops(looks); }
