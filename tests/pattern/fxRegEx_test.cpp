#include "kelvofxds/pattern/fxRegEx.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "kelvofxds/str/fxStr.h"
#include "tests/support/vtable.h"

struct fxRegExLayout {
    static_assert(sizeof(fxTextPattern) == 8, "no fields beside the table and the count");
    static_assert(sizeof(fxRegEx) == 12, "one field");
    static fxregexp* expression(const fxRegEx& pattern) { return pattern.expression; }
};

static_assert(std::is_base_of<fxRCObj, fxTextPattern>::value, "counted");
static_assert(std::is_abstract<fxTextPattern>::value, "an interface");
static_assert(std::is_base_of<fxTextPattern, fxRegEx>::value, "a pattern");
static_assert(!std::is_copy_constructible<fxRegEx>::value, "owns its expression");

namespace {

struct Bracket {
    int result, start, end;
};

Bracket bracket(const fxTextPattern& pattern, const char* text) {
    Bracket b{99, 99, 99};
    b.result =
        pattern.bracketBuffer(text, static_cast<unsigned int>(std::strlen(text)), b.start, b.end);
    return b;
}

}  // namespace

// Class shape.

TEST(fxRegEx, operationsFollowTheStatedOrder) {
    EXPECT_EQ(2u, vtableWord(&fxTextPattern::findBuffer));
    EXPECT_EQ(3u, vtableWord(&fxTextPattern::findEndBuffer));
    EXPECT_EQ(4u, vtableWord(&fxTextPattern::bracketBuffer));
    EXPECT_EQ(2u, vtableWord(&fxRegEx::findBuffer));
    EXPECT_EQ(3u, vtableWord(&fxRegEx::findEndBuffer));
    EXPECT_EQ(4u, vtableWord(&fxRegEx::bracketBuffer));
}

TEST(fxRegEx, theExpressionIsTheOnlyField) {
    const fxRegEx pattern("a");
    fxregexp* expression;
    std::memcpy(&expression, reinterpret_cast<const char*>(&pattern) + 8, sizeof expression);
    EXPECT_EQ(fxRegExLayout::expression(pattern), expression);
    ASSERT_NE(nullptr, expression);
    EXPECT_EQ(fxRegMagic, static_cast<unsigned char>(expression->program[0]));
}

TEST(fxRegEx, aNewPatternHasNoHolder) {
    const fxRegEx pattern("a");
    EXPECT_EQ(0, pattern.count);
}

TEST(fxRegEx, isDeletedThroughItsBase) {
    // The sanitizers and valgrind see to it that the expression goes, too.
    fxRCObj* held = new fxRegEx("(a|b)*");
    ++held->count;
    if (--held->count == 0)
        delete held;
}

// Searching.

TEST(fxRegEx, findsWhereTheFirstMatchBeginsAndEnds) {
    const struct {
        const char *expr, *text;
        int start, end;
    } cases[] = {{"b+", "aabbbab", 2, 5}, {"a", "a", 0, 1},        {"a", "bca", 2, 3},
                 {"^a", "ab", 0, 1},      {"a$", "aba", 2, 3},     {"(a)(b)", "xab", 1, 3},
                 {"", "abc", 0, 0},       {"", "", 0, 0},          {"x*", "abc", 0, 0},
                 {"$", "abc", 3, 3},      {"a|ab", "ab", 0, 1},    {"ab|a", "ab", 0, 2},
                 {"a{1}", "xa{1}", 1, 5}, {"[^a]", "aab", 2, 3},   {".*", "abc", 0, 3},
                 {"a\nb", "cb", 1, 2},    {"\\<of", "o of", 2, 4}, {"\xE4+", "b\xE4\xE4", 1, 3}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.expr << " in " << c.text);
        const fxRegEx pattern(c.expr);
        const unsigned int length = static_cast<unsigned int>(std::strlen(c.text));
        EXPECT_EQ(c.start, pattern.findBuffer(c.text, length));
        EXPECT_EQ(c.end, pattern.findEndBuffer(c.text, length));
        const Bracket b = bracket(pattern, c.text);
        EXPECT_EQ(1, b.result);
        EXPECT_EQ(c.start, b.start);
        EXPECT_EQ(c.end, b.end);
    }
}

TEST(fxRegEx, withoutAMatchTheStartIsMinusOneAndTheEndZero) {
    const struct {
        const char *expr, *text;
    } cases[] = {{"a", ""}, {"a", "b"}, {"^b", "ab"}, {"b$", "ba"}, {"a+b", "aaa"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.expr << " in " << c.text);
        const fxRegEx pattern(c.expr);
        EXPECT_EQ(-1, pattern.findBuffer(c.text, 1));
        EXPECT_EQ(0, pattern.findEndBuffer(c.text, 1));
        const Bracket b = bracket(pattern, c.text);
        EXPECT_EQ(0, b.result);
        EXPECT_EQ(-1, b.start);
        EXPECT_EQ(0, b.end);
    }
}

TEST(fxRegEx, withoutAnExpressionTheStartIsMinusTwoAndTheEndZero) {
    for (const char* expr : {"(", ")", "*a", "x**", "[z-a]", "a\\", "(a*)*"}) {
        SCOPED_TRACE(expr);
        const fxRegEx pattern(expr);
        EXPECT_EQ(nullptr, fxRegExLayout::expression(pattern));
        EXPECT_EQ(-2, pattern.findBuffer("(", 1));
        EXPECT_EQ(0, pattern.findEndBuffer("(", 1));
        const Bracket b = bracket(pattern, "(");
        EXPECT_EQ(0, b.result);
        EXPECT_EQ(-2, b.start);
        EXPECT_EQ(0, b.end);
    }
}

TEST(fxRegEx, anExpressionThatDoesNotCompileIsNotReported) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const fxRegEx pattern("(");
    EXPECT_EQ(-2, pattern.findBuffer("a", 1));
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
}

TEST(fxRegEx, aNullExpressionCompilesToNothing) {
    const fxRegEx pattern(static_cast<const char*>(nullptr));
    EXPECT_EQ(-2, pattern.findBuffer("a", 1));
}

TEST(fxRegEx, nothingIsFoundInANullText) {
    const fxRegEx pattern("a*");
    int start = 7, end = 7;
    EXPECT_EQ(-1, pattern.findBuffer(nullptr, 0));
    EXPECT_EQ(0, pattern.findEndBuffer(nullptr, 0));
    EXPECT_EQ(0, pattern.bracketBuffer(nullptr, 0, start, end));
    EXPECT_EQ(-1, start);
    EXPECT_EQ(0, end);
}

TEST(fxRegEx, aStringIsCompiledLikeAText) {
    const fxStr expr("b+");
    const fxRegEx pattern(expr);
    EXPECT_EQ(2, pattern.findBuffer("aabb", 4));
    EXPECT_EQ(4, pattern.findEndBuffer("aabb", 4));
    EXPECT_EQ(-2, fxRegEx(fxStr("(")).findBuffer("a", 1));
}

TEST(fxRegEx, aStringIsCompiledUpToItsFirstNul) {
    const fxRegEx pattern(fxStr("a\0(", 3));
    EXPECT_EQ(1, pattern.findBuffer("ba", 2));
}

TEST(fxRegEx, deliberateTheLengthIsIgnored) {
    const fxRegEx pattern("c");
    for (unsigned int length : {0u, 1u, 3u, 100u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(length);
        int start = 7, end = 7;
        EXPECT_EQ(2, pattern.findBuffer("abc", length));
        EXPECT_EQ(3, pattern.findEndBuffer("abc", length));
        EXPECT_EQ(1, pattern.bracketBuffer("abc", length, start, end));
        EXPECT_EQ(2, start);
        EXPECT_EQ(3, end);
        EXPECT_EQ(-1, pattern.findBuffer("ab\0c", length));
    }
}

TEST(fxRegEx, searchesOneAfterTheOtherAreIndependent) {
    const fxRegEx letters("[a-z]+"), digits("[0-9]+");
    EXPECT_EQ(2, letters.findBuffer("12ab", 4));
    EXPECT_EQ(0, digits.findBuffer("12ab", 4));
    EXPECT_EQ(-1, letters.findBuffer("12", 2));
    EXPECT_EQ(0, letters.findEndBuffer("12", 2));
    EXPECT_EQ(4, letters.findEndBuffer("12ab", 4));
}

TEST(fxRegEx, findsFarInALongText) {
    const std::string text(1U << 20, 'a');
    const std::string withEnd = text + "bc";
    const fxRegEx pattern("b(c)");
    EXPECT_EQ(-1, pattern.findBuffer(text.c_str(), 0));
    EXPECT_EQ(1 << 20, pattern.findBuffer(withEnd.c_str(), 0));
    EXPECT_EQ((1 << 20) + 2, pattern.findEndBuffer(withEnd.c_str(), 0));
}

// Whether a text needs this class.

TEST(fxIsRegEx, eachSpecialByteMakesARegularExpression) {
    for (const char* special : {".", "+", "*", "^", "$", "(", ")", "{", "}", "[", "]"}) {
        SCOPED_TRACE(special);
        EXPECT_TRUE(fxIsRegEx(special));
        EXPECT_TRUE(fxIsRegEx((std::string("ab") + special).c_str()));
        EXPECT_TRUE(fxIsRegEx((special + std::string("ab")).c_str()));
    }
}

TEST(fxIsRegEx, noOtherByteDoes) {
    const std::string special = ".+*^$(){}[]";
    for (int byte = 1; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        EXPECT_EQ(special.find(text) != std::string::npos, fxIsRegEx(text.c_str())) << byte;
    }
    EXPECT_FALSE(fxIsRegEx("abc"));
    EXPECT_FALSE(fxIsRegEx(""));
}

TEST(fxIsRegEx, aNullTextIsNone) { EXPECT_FALSE(fxIsRegEx(nullptr)); }

TEST(fxIsRegEx, deliberateBracesCountAlthoughTheyAreLiteral) {
    EXPECT_TRUE(fxIsRegEx("a{1}"));
    const fxRegEx pattern("a{1}");
    EXPECT_EQ(-1, pattern.findBuffer("a", 1));
    EXPECT_EQ(0, pattern.findBuffer("a{1}", 4));
}

TEST(fxIsRegEx, deliberateAlternativesOptionsAndBackslashesDoNotCount) {
    EXPECT_FALSE(fxIsRegEx("a|b"));
    EXPECT_FALSE(fxIsRegEx("ab?"));
    EXPECT_FALSE(fxIsRegEx("\\<a"));
}
