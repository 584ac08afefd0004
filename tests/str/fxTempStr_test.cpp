#include "kelvofxds/str/fxTempStr.h"

#include <cstddef>
#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStr.h"
#include "tests/support/observe.h"

struct fxTempStrLayout {
    static_assert(sizeof(fxTempStr) == 108, "an inline buffer and two words");
    static_assert(offsetof(fxTempStr, inlineBuffer) == 0, "the inline buffer comes first");
    static_assert(sizeof(fxTempStr::inlineBuffer) == 100, "bytes, with the NUL");
    static_assert(offsetof(fxTempStr, data) == 100, "then the text");
    static_assert(offsetof(fxTempStr, slength) == 104, "then the size");
    static_assert(std::is_same<decltype(fxTempStr::data), char*>::value, "a pointer to char");
    static_assert(std::is_same<decltype(fxTempStr::slength), unsigned int>::value, "32 bits");

    static bool isInline(const fxTempStr& t) { return t.data == t.inlineBuffer; }
    static unsigned int size(const fxTempStr& t) { return t.slength; }
};

namespace {
using namespace std::string_literals;

const char* const null = nullptr;

static_assert(!std::is_polymorphic<fxTempStr>::value, "no virtual operations");
static_assert(!std::is_convertible<fxTempStr, const char*>::value, "through fxStr alone");
static_assert(!std::is_constructible<const char*, fxTempStr>::value, "not explicitly either");
static_assert(!std::is_copy_assignable<fxTempStr>::value, "it would share the heap block");
static_assert(!std::is_default_constructible<fxTempStr>::value, "made from two pieces");
static_assert(std::is_copy_constructible<fxTempStr>::value, "");

// Two strings make a new temporary; a temporary is appended to in place.
template <class A, class B>
using Joined = decltype(std::declval<A>() | std::declval<B>());
using Text = const char*;
static_assert(std::is_same<Joined<const fxStr&, const fxStr&>, fxTempStr>::value, "");
static_assert(std::is_same<Joined<const fxStr&, Text>, fxTempStr>::value, "");
static_assert(std::is_same<Joined<Text, const fxStr&>, fxTempStr>::value, "");
static_assert(std::is_same<Joined<const fxTempStr&, const fxStr&>, fxTempStr&>::value, "");
static_assert(std::is_same<Joined<const fxTempStr&, Text>, fxTempStr&>::value, "");
static_assert(std::is_same<Joined<fxTempStr, const fxStr&>, fxTempStr&>::value, "");

fxTempStr temporaryOf(const std::string& a, const std::string& b) {
    return fxTempStr(a.data(), static_cast<unsigned int>(a.size()), b.data(),
                     static_cast<unsigned int>(b.size()));
}

fxTempStr copyOf(const fxTempStr& t) { return t; }

// The bytes of `t`, after a check of what holds of every temporary.
std::string bytesOf(const fxTempStr& t) {
    EXPECT_EQ(t.length() + 1, fxTempStrLayout::size(t));
    EXPECT_EQ('\0', t.c_str()[t.length()]);
    return std::string(t.c_str(), t.length());
}

void expectPlace(bool isInline, const fxTempStr& t) {
    EXPECT_EQ(isInline, fxTempStrLayout::isInline(t));
    if (!isInline) {
        EXPECT_TRUE(allocatedFor(t.c_str(), t.length() + 1));
    }
}
}  // namespace

// Construction

TEST(fxTempStr, holdsTheTwoPiecesWithTheirNuls) {
    const struct {
        std::string a, b;
    } cases[] = {{"", ""},
                 {"a", ""},
                 {"", "b"},
                 {"ab", "cd"},
                 {"a\0"s, "\0b"s},
                 {"\xff", "\x80"},
                 {std::string(70, 'a'), std::string(80, 'b')}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.a) + " | " + testing::PrintToString(c.b));
        EXPECT_EQ(c.a + c.b, bytesOf(temporaryOf(c.a, c.b)));
    }
}

TEST(fxTempStr, takesPiecesThatHaveNoNul) {
    const char unterminated[] = {'x', 'y', 'z'};
    const fxTempStr t(unterminated, 3, unterminated, 2);
    EXPECT_EQ("xyzxy", bytesOf(t));
}

TEST(fxTempStr, takesAPieceOfNothingFromNull) {
    EXPECT_EQ("b", bytesOf(fxTempStr(null, 0, "b", 1)));
    EXPECT_EQ("a", bytesOf(fxTempStr("a", 1, null, 0)));
}

TEST(fxTempStr, buildsUpToNinetyNineBytesInline) {
    const struct {
        std::size_t a, b;
        bool isInline;
    } cases[] = {{0, 0, true},    {1, 0, true},    {49, 49, true},     {50, 49, true},
                 {99, 0, true},   {0, 99, true},   {50, 50, false},    {100, 0, false},
                 {0, 100, false}, {51, 50, false}, {5000, 5000, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.a << " | " << c.b);
        const std::string a(c.a, 'a');
        const std::string b(c.b, 'b');
        const fxTempStr t(a.c_str(), static_cast<unsigned int>(c.a), b.c_str(),
                          static_cast<unsigned int>(c.b));
        expectPlace(c.isInline, t);
        EXPECT_EQ(a + b, bytesOf(t));
    }
}

// Copies

TEST(fxTempStr, deliberateACopyOfNinetyNineBytesIsOnTheHeap) {
    const struct {
        std::size_t length;
        bool isInline;
    } cases[] = {{0, true},   {1, true},    {97, true},   {98, true},
                 {99, false}, {100, false}, {101, false}, {5000, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.length);
        const std::string text(c.length, 't');
        const fxTempStr t = temporaryOf(text, "");
        const fxTempStr copy = copyOf(t);
        expectPlace(c.isInline, copy);
        EXPECT_EQ(text, bytesOf(copy));
        EXPECT_NE(t.c_str(), copy.c_str());
        const fxTempStr again = copyOf(copy);
        expectPlace(c.isInline, again);
        EXPECT_EQ(text, bytesOf(again));
        EXPECT_EQ(text, bytesOf(t));
    }
}

TEST(fxTempStr, aCopyGrowsApartFromItsSource) {
    for (std::size_t length : {5u, 98u, 99u, 100u}) {
        SCOPED_TRACE(length);
        const std::string text(length, 't');
        const fxTempStr t = temporaryOf(text, "");
        fxTempStr copy(t);
        copy.concat("more", 4);
        EXPECT_EQ(text + "more", bytesOf(copy));
        EXPECT_EQ(text, bytesOf(t));
        expectPlace(length == 5, copy);
    }
}

// Growth

TEST(fxTempStr, concatAppendsInPlace) {
    fxTempStr t("ab", 2, "", 0);
    EXPECT_EQ(&t, &t.concat("cd", 2));
    EXPECT_EQ("abcd", bytesOf(t));
    t.concat("\0e\0", 3);
    EXPECT_EQ("abcd\0e\0"s, bytesOf(t));
    const char unterminated[] = {'x', 'y'};
    t.concat(unterminated, 1);
    EXPECT_EQ("abcd\0e\0x"s, bytesOf(t));
    EXPECT_EQ(&t, &t.concat("unused", 0));
    EXPECT_EQ(&t, &t.concat(null, 0));
    EXPECT_EQ("abcd\0e\0x"s, bytesOf(t));
}

TEST(fxTempStr, concatMovesToTheHeapPastNinetyNineBytes) {
    const struct {
        std::size_t before, added;
        bool isInline;
    } cases[] = {{0, 99, true},   {0, 100, false}, {98, 1, true},    {98, 2, false},
                 {99, 0, true},   {99, 1, false},  {50, 49, true},   {50, 50, false},
                 {100, 1, false}, {100, 0, false}, {101, 99, false}, {5, 5000, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.before << " + " << c.added);
        const std::string before(c.before, 'b');
        const std::string added(c.added, 'a');
        fxTempStr t(before.c_str(), static_cast<unsigned int>(c.before), "", 0);
        t.concat(added.c_str(), static_cast<unsigned int>(c.added));
        expectPlace(c.isInline, t);
        EXPECT_EQ(before + added, bytesOf(t));
    }
}

TEST(fxTempStr, concatGrowsToTheExactSizeEachTime) {
    fxTempStr t("", 0, "", 0);
    std::string expected;
    for (int i = 0; i < 300; ++i) {
        const char c = static_cast<char>(i);
        t.concat(&c, 1);
        expected += c;
        ASSERT_EQ(expected, bytesOf(t));
        expectPlace(i < 99, t);
    }
}

TEST(fxTempStr, concatCanAppendItsOwnText) {
    for (std::size_t length : {3u, 49u, 50u, 98u, 99u, 100u, 300u}) {
        SCOPED_TRACE(length);
        const std::string text = std::string(length - 1, 't') + "!";
        fxTempStr t = temporaryOf(text, "");
        t.concat(t.c_str(), t.length());
        EXPECT_EQ(text + text, bytesOf(t));
        t.concat(t.c_str() + length - 1, 2);
        EXPECT_EQ(text + text + "!" + text[0], bytesOf(t));
    }
}

// operator|

TEST(fxTempStr, joinsEveryKindOfOperand) {
    const fxStr a("ab");
    const fxStr b("cd");
    EXPECT_EQ("abcd", bytesOf(a | b));
    EXPECT_EQ("abxy", bytesOf(a | "xy"));
    EXPECT_EQ("xyab", bytesOf("xy" | a));
    EXPECT_EQ("abab", bytesOf(a | a));
    EXPECT_EQ("", bytesOf(fxStr() | fxStr()));
    EXPECT_EQ("ab", bytesOf(a | fxStr()));
    EXPECT_EQ("ab", bytesOf(a | ""));
    EXPECT_EQ("ab", bytesOf("" | a));
    EXPECT_EQ("ab", bytesOf(a));
    EXPECT_EQ("cd", bytesOf(b));
}

TEST(fxTempStr, joinsStringsWithTheirNulsAndTextsUpToTheirs) {
    const fxStr a = stringOf("a\0b"s);
    const fxStr b = stringOf("\0c"s);
    const std::string text = "x\0y"s;
    EXPECT_EQ("a\0b\0c"s, bytesOf(a | b));
    EXPECT_EQ("a\0bx"s, bytesOf(a | text.c_str()));
    EXPECT_EQ("xa\0b"s, bytesOf(text.c_str() | a));
    EXPECT_EQ("a\0b\0cx\0c"s, bytesOf(a | b | text.c_str() | b));
    EXPECT_EQ("\0\0x"s, bytesOf(fxStr(2u) | "x"));
}

TEST(fxTempStr, aNullTextJoinsAsNothing) {
    const fxStr a("ab");
    EXPECT_EQ("ab", bytesOf(a | null));
    EXPECT_EQ("ab", bytesOf(null | a));
    EXPECT_EQ("abab", bytesOf(a | a | null));
}

TEST(fxTempStr, aTemporaryJoinsOnTheRightToo) {
    const fxStr a("ab");
    EXPECT_EQ("abxaby", bytesOf(a | ("x" | a | "y")));
    EXPECT_EQ("zxab", bytesOf("z" | ("x" | a)));
    EXPECT_EQ("ab1ab2", bytesOf((a | "1") | (a | "2")));
}

TEST(fxTempStr, aChainIsBuiltInOneObject) {
    const fxStr a("ab");
    fxTempStr t = a | "cd";
    fxTempStr& afterString = t | a;
    EXPECT_EQ(&t, &afterString);
    fxTempStr& afterText = t | "ef";
    EXPECT_EQ(&t, &afterText);
    fxTempStr& afterThree = t | a | "gh" | a;
    EXPECT_EQ(&t, &afterThree);
    EXPECT_EQ("abcdabefabghab", bytesOf(t));
}

TEST(fxTempStr, deliberateTheLeftTemporaryIsChangedAlthoughConst) {
    const fxStr a("ab");
    fxTempStr t = a | "cd";
    const fxTempStr& constant = t;
    const fxTempStr& joined = constant | a;
    EXPECT_EQ(&t, &joined);
    EXPECT_EQ("abcdab", bytesOf(t));
    EXPECT_EQ(&t, &(constant | "!"));
    EXPECT_EQ("abcdab!", bytesOf(t));
}

TEST(fxTempStr, aChainStaysInlineUpToNinetyNineBytes) {
    const fxStr half(std::string(49, 'h').c_str());
    fxTempStr t = half | "-";
    t | half;
    expectPlace(true, t);
    EXPECT_EQ(std::string(49, 'h') + "-" + std::string(49, 'h'), bytesOf(t));
    t | "!";
    expectPlace(false, t);
    EXPECT_EQ(std::string(49, 'h') + "-" + std::string(49, 'h') + "!", bytesOf(t));
}

TEST(fxTempStr, aJoinOfAHundredBytesIsOnTheHeap) {
    const fxStr half(std::string(50, 'h').c_str());
    const fxStr less(std::string(49, 'l').c_str());
    expectPlace(true, half | less);
    expectPlace(false, half | half);
}

TEST(fxTempStr, aChainBecomesAString) {
    const fxStr a("ab");
    const fxStr b("cd");
    const fxStr made = a | ", " | b | "!";
    EXPECT_EQ("ab, cd!", bytesOf(made));

    fxStr assigned("before");
    assigned = a | b | a;
    EXPECT_EQ("abcdab", bytesOf(assigned));
    assigned = assigned | "-" | assigned;
    EXPECT_EQ("abcdab-abcdab", bytesOf(assigned));
    assigned = fxStr() | "";
    EXPECT_EQ("", bytesOf(assigned));
}
