// fxStrLocale_test.cpp - which bytes are letters is the locale's to say.

#include <ctype.h>

#include <string>

#include <gtest/gtest.h>

#include "tests/support/observe.h"

namespace {
// Whether the process is in a locale in which the bytes 0xC0 to 0xDF are the
// upper-case letters to 0xE0 to 0xFF. The machine may have none installed, so
// it is made of the two functions by which a locale is asked.
bool inWesternLocale = false;

bool isIn(int c, int from, int to) { return c >= from && c <= to; }
}  // namespace

#undef tolower
#undef toupper

// The program's own definitions come before the C library's, also for the calls
// that shared libraries make.

extern "C" {

int tolower(int c) noexcept {
    const bool isUpper = isIn(c, 'A', 'Z') || (inWesternLocale && isIn(c, 0xC0, 0xDF));
    return isUpper ? c + 0x20 : c;
}

int toupper(int c) noexcept {
    const bool isLower = isIn(c, 'a', 'z') || (inWesternLocale && isIn(c, 0xE0, 0xFF));
    return isLower ? c - 0x20 : c;
}

}  // extern "C"

TEST(fxStrLocale, lowerAndRaiseAskTheLocale) {
    const std::string text = "aZ \xC4\xE4 \xDE\xFE \x7F\x80";
    fxStr lowered = stringOf(text);
    fxStr raised = lowered;
    fxStr elsewhere = lowered;

    inWesternLocale = true;
    lowered.lower();
    raised.raise();
    inWesternLocale = false;
    elsewhere.lower();

    EXPECT_EQ("az \xE4\xE4 \xFE\xFE \x7F\x80", bytesOf(lowered));
    EXPECT_EQ("AZ \xC4\xC4 \xDE\xDE \x7F\x80", bytesOf(raised));
    EXPECT_EQ("az \xC4\xE4 \xDE\xFE \x7F\x80", bytesOf(elsewhere));
}
