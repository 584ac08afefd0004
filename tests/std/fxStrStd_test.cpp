#include "kelvofxds/str/fxStrStd.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>

#include <gtest/gtest.h>

using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {
const std::string_view texts[] = {""sv, "a"sv, "ab\0c"sv, "\0"sv, "\0\0"sv, "\xff\x80"sv};
}

TEST(fxStrStd, viewsStringsAndBackKeepEveryByte) {
    for (const std::string_view text : texts) {
        SCOPED_TRACE(testing::PrintToString(text));
        const fxStr s = fxStrOf(text);
        EXPECT_EQ(text.size(), s.length());
        EXPECT_EQ(text, fxView(s));
        EXPECT_EQ(std::string(text), fxString(s));
        EXPECT_TRUE(s == fxStrOf(fxString(s)));
        EXPECT_EQ('\0', s.c_str()[s.length()]);
    }
}

TEST(fxStrStd, aViewThatLeadsNowhereIsAnEmptyString) {
    EXPECT_EQ(0U, fxStrOf(std::string_view()).length());
}

TEST(fxStrStd, aLoopChangesEveryByteAndNoOther) {
    fxStr s = fxStrOf("a\0z"sv);
    for (char& c : s)
        ++c;
    EXPECT_EQ("b\1{"sv, fxView(s));
    EXPECT_EQ('\0', s.c_str()[3]);
}

TEST(fxStrStd, aConstLoopSeesEveryByte) {
    const fxStr s = fxStrOf("a\0z"sv);
    std::string seen;
    for (const char c : s)
        seen += c;
    EXPECT_EQ("a\0z"s, seen);
}

TEST(fxStrStd, theSharedTextOfEmptyStringsIsNotWrittenTo) {
    fxStr s;
    for (char& c : s)
        c = 'x';
    std::fill(begin(s), end(s), 'x');
    EXPECT_EQ('\0', fxStr::emptyString);
    EXPECT_EQ(begin(s), end(s));
}

TEST(fxStrStd, algorithmsWork) {
    fxStr s("hello");
    std::reverse(begin(s), end(s));
    EXPECT_EQ("olleh"sv, fxView(s));
    EXPECT_EQ(2, std::count(begin(s), end(s), 'l'));
}

TEST(fxStrStd, containsPartsOfAnyKind) {
    const fxStr s = fxStrOf("ab\0cd"sv);
    EXPECT_TRUE(contains(s, "b"));
    EXPECT_TRUE(contains(s, "b\0c"sv));
    EXPECT_TRUE(contains(s, "cd"s));
    EXPECT_TRUE(contains(s, s));
    EXPECT_TRUE(contains(s, ""));
    EXPECT_TRUE(contains(s, 'd'));
    EXPECT_TRUE(contains(s, '\0'));
    EXPECT_FALSE(contains(s, "bc"));
    EXPECT_FALSE(contains(s, 'x'));
}

TEST(fxStrStd, aTextIsMadeOfWhateverHoldsOne) {
    const fxStr s("fx"), longer("fxfx");
    EXPECT_EQ("literal"sv, fxText("literal").view());
    EXPECT_EQ(""sv, fxText(static_cast<const char*>(nullptr)).view());
    EXPECT_EQ("fx"sv, fxText(s).view());
    EXPECT_EQ("fxfx"sv, fxView(fxText(s | "fx").str()));
    EXPECT_EQ("std"sv, fxText("std"s).view());
    EXPECT_TRUE(longer == fxText(longer).str());
}

TEST(fxStrHash, isEqualForEqualStringsAndLooksAtEveryByte) {
    const std::hash<fxStr> hash;
    EXPECT_EQ(hash(fxStr("abc")), hash(fxStrOf("abc"s)));
    std::set<std::size_t> values;
    for (int i = 0; i < 4096; ++i)
        values.insert(hash(fxStrOf("the same beginning " + std::to_string(i))));
    EXPECT_GE(values.size(), 4090U);
    EXPECT_NE(hash(fxStrOf("a\0b"sv)), hash(fxStrOf("a\0c"sv)));
}

TEST(fxStrHash, spreadsOverFewBucketsToo) {
    unsigned int filled[64] = {};
    for (int i = 0; i < 6400; ++i)
        ++filled[std::hash<fxStr>()(fxStrOf("/usr/include/file" + std::to_string(i))) % 64];
    EXPECT_GT(*std::min_element(filled, filled + 64), 50U);
    EXPECT_LT(*std::max_element(filled, filled + 64), 150U);
}

TEST(fxStrHash, stringsAreKeysOfStandardContainers) {
    std::unordered_map<fxStr, int> counts;
    ++counts["a"];
    ++counts[fxStrOf("a\0b"sv)];
    ++counts["a"];
    EXPECT_EQ(2U, counts.size());
    EXPECT_EQ(2, counts["a"]);
    std::map<fxStr, int> ordered{{"b", 2}, {"a", 1}};
    EXPECT_EQ("a"sv, fxView(ordered.begin()->first));
}
