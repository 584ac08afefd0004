// Where fmt's headers are not to be had, there is nothing to test.
#if __has_include(<fmt/format.h>)
#define FMT_HEADER_ONLY
#include <fmt/format.h>

#include <string_view>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStrStd.h"

using namespace std::string_view_literals;

TEST(fxStrFmt, stringsAreFormattedAsTexts) {
    const fxStr s("text"), nul = fxStrOf("a\0b"sv);
    EXPECT_EQ("<text>", fmt::format("<{}>", s));
    EXPECT_EQ("<  text>", fmt::format("<{:>6}>", s));
    EXPECT_EQ("te", fmt::format("{:.2}", s));
    EXPECT_EQ("a\0b"sv, fmt::format("{}", nul));
    EXPECT_EQ("", fmt::format("{}", fxStr()));
}
#endif
