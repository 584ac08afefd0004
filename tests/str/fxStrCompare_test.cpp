#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStr.h"
#include "tests/support/observe.h"

namespace {
using namespace std::string_literals;

const char* const null = nullptr;

// Read at run time, so that the compiler cannot work a call out itself: it may
// choose another value of the same sign.
int (*volatile libcStrcmp)(const char*, const char*) = std::strcmp;

// Both orders and all operators of two operands, of which one may be a text.
template <class A, class B>
void expectOrder(const A& a, const B& b, bool equal, int order) {
    EXPECT_EQ(equal, a == b);
    EXPECT_EQ(!equal, a != b);
    EXPECT_EQ(order < 0, a < b);
    EXPECT_EQ(order <= 0, a <= b);
    EXPECT_EQ(order > 0, a > b);
    EXPECT_EQ(order >= 0, a >= b);
}
}  // namespace

// Comparing

TEST(fxStrCompare, everyOperatorInEveryOperandForm) {
    const struct {
        const char *a, *b;
        int order;
    } cases[] = {{"", "", 0},       {"", "a", -1},     {"a", "", 1},         {"a", "a", 0},
                 {"a", "b", -1},    {"b", "a", 1},     {"abc", "abc", 0},    {"abc", "abd", -1},
                 {"abd", "abc", 1}, {"ab", "abc", -1}, {"abc", "ab", 1},     {"a", "B", 1},
                 {"\xff", "a", 1},  {"a", "\xff", -1}, {"\x7f", "\x80", -1}, {"\x80", "\x7f", 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << '"' << c.a << "\" and \"" << c.b << '"');
        expectOrder(fxStr(c.a), fxStr(c.b), c.order == 0, c.order);
        expectOrder(fxStr(c.a), c.b, c.order == 0, c.order);
        expectOrder(c.a, fxStr(c.b), c.order == 0, c.order);
    }
}

TEST(fxStrCompare, equalityCountsEmbeddedNulsAndTheOrderStopsAtTheFirst) {
    const struct {
        std::string a, b;
        bool equal;
        int order;
    } cases[] = {{"a\0b"s, "a\0b"s, true, 0},  {"a\0b"s, "a\0c"s, false, 0},
                 {"a\0b"s, "a", false, 0},     {"a", "a\0b"s, false, 0},
                 {"a\0"s, "a", false, 0},      {"\0"s, "", false, 0},
                 {"\0\0"s, "\0"s, false, 0},   {"a\0b"s, "b\0a"s, false, -1},
                 {"b\0a"s, "a\0b"s, false, 1}, {"a\0z"s, "ab", false, -1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << testing::PrintToString(c.a) << " and " << testing::PrintToString(c.b));
        expectOrder(stringOf(c.a), stringOf(c.b), c.equal, c.order);
    }
}

TEST(fxStrCompare, aTextIsAsLongAsItsStrlen) {
    const fxStr withNul = stringOf("a\0b"s);
    expectOrder(withNul, "a", false, 0);
    expectOrder("a", withNul, false, 0);
    expectOrder(withNul, "a\0b", false, 0);
    expectOrder(withNul, "b", false, -1);
    expectOrder("b", withNul, false, 1);
}

TEST(fxStrCompare, deliberateNulsAreNotEqualToNothingAndNotOrderedEither) {
    const fxStr nuls(3u);
    EXPECT_FALSE(nuls == "");
    EXPECT_TRUE(nuls != "");
    EXPECT_TRUE(nuls <= "");
    EXPECT_TRUE(nuls >= "");
    EXPECT_FALSE(nuls < "");
    EXPECT_FALSE(nuls > "");
    EXPECT_EQ(0, compare(nuls, ""));
}

TEST(fxStrCompare, aNullTextIsEqualToNothing) {
    const fxStr empty;
    EXPECT_TRUE(empty == null);
    EXPECT_TRUE(null == empty);
    EXPECT_FALSE(empty != null);
    EXPECT_FALSE(null != empty);
    for (const fxStr& s : {fxStr("a"), fxStr(1u)}) {
        EXPECT_FALSE(s == null);
        EXPECT_FALSE(null == s);
        EXPECT_TRUE(s != null);
        EXPECT_TRUE(null != s);
    }
}

TEST(fxStrCompare, aNullTextIsComparedAsAnEmptyOne) {
    EXPECT_EQ(0, compare(fxStr(), null));
    EXPECT_EQ(0, compare(null, ""));
    EXPECT_EQ(0, compare("", null));
    EXPECT_EQ(0, compare(null, null));
    EXPECT_LT(compare(null, "a"), 0);
    EXPECT_GT(compare("a", null), 0);
    EXPECT_GT(compare(fxStr("a"), null), 0);
    const struct {
        fxStr text;
        bool less, equal;  // than the null text, in the order
    } cases[] = {{"", false, true}, {fxStr(2u), false, true}, {"a", false, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.c_str());
        EXPECT_EQ(c.less, c.text < null);
        EXPECT_EQ(c.less || c.equal, c.text <= null);
        EXPECT_EQ(!c.less && !c.equal, c.text > null);
        EXPECT_EQ(!c.less, c.text >= null);
        EXPECT_EQ(!c.less && !c.equal, null < c.text);
        EXPECT_EQ(!c.less, null <= c.text);
        EXPECT_EQ(c.less, null > c.text);
        EXPECT_EQ(c.less || c.equal, null >= c.text);
    }
}

namespace {
// Elsewhere the value of strcmp depends on where in memory the texts are, and
// only its sign is the same.
int valueOn386([[maybe_unused]] int expected, int value) {
#if defined(__i386__)
    return value;
#else
    return (value > 0) == (expected > 0) && (value < 0) == (expected < 0) ? expected : value;
#endif
}
}  // namespace

TEST(fxStrCompare, compareReturnsTheValueOfStrcmp) {
    const char* const texts[] = {"", "a", "b", "abc", "abd", "ab", "\xff", "\x7f", "\x80", "A"};
    for (const char* a : texts) {
        for (const char* b : texts) {
            SCOPED_TRACE(testing::Message() << '"' << a << "\" and \"" << b << '"');
            const int expected = libcStrcmp(a, b);
            EXPECT_EQ(expected, compare(a, b));
            EXPECT_EQ(expected, valueOn386(expected, compare(fxStr(a), fxStr(b))));
            EXPECT_EQ(expected, valueOn386(expected, compare(fxStr(a), b)));
        }
    }
}

TEST(fxStrCompare, compareStopsAtTheFirstNul) {
    EXPECT_EQ(0, compare(stringOf("a\0b"s), stringOf("a\0c"s)));
    EXPECT_EQ(0, compare(stringOf("a\0b"s), "a"));
}

// Hashing. Words are written most significant byte first here.

TEST(fxStrCompare, hashOfEveryLength) {
    const struct {
        std::string text;
        unsigned int expected;
    } cases[] = {
        {"", 0},
        {"A", 0x08000000u},             // 41000000 << 3
        {"a", 0x08000000u},             // 61000000 << 3: the upper bits are lost
        {"ab", 0x13080000u},            // 62610000 << 3
        {"abc", 0x1B130800u},           // 63626100 << 3
        {"abcd", 0x231B1308u},          // 64636261 << 3
        {"abcde", 0x6C636261u},         // 61000000 << 3 ^ 64636261
        {"abcdef", 0x776B6261u},        // 62610000 << 3 ^ 64636261
        {"abcdefg", 0x7F706A61u},       // 63626100 << 3 ^ 64636261
        {"abcdefgh", 0x27585149u},      // 68676665 << 3 ^ 64636261
        {"abcdefghi", 0x27585149u},     // and so on
        {"abcdefghij", 0x27585149u},    //
        {"abcdefghijk", 0x27585149u},   //
        {"abcdefghijkl", 0x27585149u},  //
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected, stringOf(c.text).hash());
    }
}

TEST(fxStrCompare, hashTakesBytesAsUnsigned) {
    const struct {
        std::string text;
        unsigned int expected;
    } cases[] = {
        {"\xff", 0xF8000000u},                              // FF000000 << 3
        {"\xff\xfe", 0xF7F80000u},                          // FEFF0000 << 3
        {"\xff\xfe\xfd", 0xEFF7F800u},                      // FDFEFF00 << 3
        {"\xff\xfe\xfd\xfc", 0xE7EFF7F8u},                  // FCFDFEFF << 3
        {"\xff\xfe\xfd\xfc\xfb", 0x04FDFEFFu},              // FF000000 << 3 ^ FCFDFEFF
        {"\xff\xfe\xfd\xfc\xfb\xfa", 0x0B05FEFFu},          // FEFF0000 << 3 ^ FCFDFEFF
        {"\xff\xfe\xfd\xfc\xfb\xfa\xf9", 0x130A06FFu},      // FDFEFF00 << 3 ^ FCFDFEFF
        {"\xff\xfe\xfd\xfc\xfb\xfa\xf9\xf8", 0x3B322927u},  // F8F9FAFB << 3 ^ FCFDFEFF
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.size());
        EXPECT_EQ(c.expected, stringOf(c.text).hash());
    }
}

TEST(fxStrCompare, hashGoesByTheLengthNotByTheFirstNul) {
    const struct {
        std::string text;
        unsigned int expected;
    } cases[] = {
        {"\0"s, 0},                             // 00000000 << 3
        {"a\0"s, 0x03080000u},                  // 00610000 << 3
        {"a\0b"s, 0x10030800u},                 // 62006100 << 3
        {"\0\0\0\0\0"s, 0},                     // nothing but zeros
        {"a\0\0\0\0\0\0\0"s, 0x00000061u},      // 00000000 << 3 ^ 00000061
        {"\0\0\0\0\0\0\0\x01"s, 0x08000000u},   // 01000000 << 3
        {"\0\0\0\0\x01\0\0\0z"s, 0x00000008u},  // 00000001 << 3
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.text));
        EXPECT_EQ(c.expected, stringOf(c.text).hash());
    }
}

TEST(fxStrCompare, deliberateHashOfFiveToSevenBytesTakesTheFirstFourAlone) {
    const struct {
        const char *a, *b;
    } cases[] = {{"abcde", "abcdz"}, {"abcdef", "abcdzy"}, {"abcdefg", "abcdxyz"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.a);
        EXPECT_EQ(fxStr(c.a).hash(), fxStr(c.b).hash());
    }
    EXPECT_NE(fxStr("abcde").hash(), fxStr("abcdef").hash());
    EXPECT_NE(fxStr("abcde").hash(), fxStr("abxde").hash());
}

TEST(fxStrCompare, deliberateHashOfLongerTextsTakesTheFirstEightAlone) {
    EXPECT_EQ(fxStr("abcdefgh").hash(), fxStr("abcdefghZZZ").hash());
    EXPECT_EQ(fxStr("abcdefghi").hash(), fxStr("abcdefghj").hash());
    EXPECT_NE(fxStr("abcdefgh").hash(), fxStr("abcdefgi").hash());
}

TEST(fxStrCompare, textsThatCompareAlikeCanHashDifferently) {
    const fxStr a("a");
    const fxStr padded = stringOf("a\0>"s);
    EXPECT_EQ(0, compare(a, padded));
    EXPECT_NE(a.hash(), padded.hash());
}
