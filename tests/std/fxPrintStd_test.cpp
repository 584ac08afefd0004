#include "kelvofxds/containers/fxPrintStd.h"

#include <sstream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

using namespace std::string_view_literals;

namespace {
template <class T>
std::string printed(const T& value) {
    std::ostringstream out;
    out << value;
    return out.str();
}
}  // namespace

TEST(fxPrintStd, arraysAreListsInBrackets) {
    EXPECT_EQ("[]", printed(fxIntArray()));
    EXPECT_EQ("[1]", printed(fxMake<fxIntArray>({1})));
    EXPECT_EQ("[1, -2, 3]", printed(fxMake<fxLongArray>({1, -2, 3})));
    EXPECT_EQ("[0.5, 1e+100]", printed(fxMake<fxDoubleArray>({0.5, 1e100})));
    EXPECT_EQ("[200, 10]", printed(fxMake<fxUnsignedCharArray>({200, 10})));
    EXPECT_EQ("[true, false]", printed(fxMake<fxBoolArray>({true, false})));
    EXPECT_EQ("['a', '\\'', '\\n']", printed(fxMake<fxCharArray>({'a', '\'', '\n'})));
    EXPECT_EQ("[\"x\", \"y\"]", printed(fxMake<fxArrayOf<fxStr>>({"x", "y"})));
    EXPECT_EQ("[true]", printed(fxMake<fxArrayOf<bool>>({true})));
}

TEST(fxPrintStd, stringsAreQuotedAndWhatIsNoTextIsEscaped) {
    const auto a = fxMake<fxStrArray>({"plain", "", "q\"b\\", "a\0001\x7f\x1b\n\t"sv, "Lom\u00e9"});
    EXPECT_EQ(R"(["plain", "", "q\"b\\", "a\0001\177\033\n\t", "Lom)"
              "\u00e9\"]",
              printed(a));
}

TEST(fxPrintStd, dictionariesAndSetsAreListsInBraces) {
    fxStrStrDictionary d(1);
    EXPECT_EQ("{}", printed(d));
    fxAddAll(d, {{"b", "2"}, {"a", "1"}});
    EXPECT_EQ(R"({"a": "1", "b": "2"})", printed(d));
    fxStrSet s(1);
    EXPECT_EQ("{}", printed(s));
    fxAddAll(s, {"y", "x"});
    EXPECT_EQ(R"({"x", "y"})", printed(s));
    fxVoidPtrDict pointers;
    fxAddAll(pointers, {{"here", &d}});
    EXPECT_EQ("{\"here\": " + printed(static_cast<void*>(&d)) + "}", printed(pointers));
}
