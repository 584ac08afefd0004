#include "kelvofxds/str/fxStr.h"

#include <cstddef>
#include <cstring>
#include <new>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/str/fxTempStr.h"
#include "tests/support/observe.h"

struct fxStrLayout {
    static_assert(sizeof(fxStr) == 8, "string-keyed tables rely on two 32-bit words");
    static_assert(offsetof(fxStr, slength) == 0, "the size is the first word");
    static_assert(offsetof(fxStr, data) == 4, "the text is the second word");
    static_assert(std::is_same<decltype(fxStr::slength), unsigned int>::value, "32 bits");
    static_assert(std::is_same<decltype(fxStr::data), char*>::value, "a pointer to char");

    static unsigned int& size(fxStr& s) { return s.slength; }
};

namespace {
using namespace std::string_literals;

// Whether `A | B` compiles.
template <class A, class B, class = void>
struct CanJoin : std::false_type {};
template <class A, class B>
struct CanJoin<A, B, decltype(void(std::declval<A>() | std::declval<B>()))> : std::true_type {};

static_assert(!std::is_polymorphic<fxStr>::value, "no virtual operations");
static_assert(std::is_standard_layout<fxStr>::value, "no bases");
static_assert(std::is_default_constructible<fxStr>::value, "empty without an argument");

// An implicit conversion would let array.append(s) take the text's address.
static_assert(!std::is_convertible<fxStr, const char*>::value, "explicit only");
static_assert(!std::is_convertible<fxStr, const void*>::value, "explicit only");
static_assert(std::is_constructible<const char*, fxStr>::value, "explicit conversion");
static_assert(!std::is_constructible<char*, fxStr>::value, "the text is read-only");

// An implicit one would make s | 'c' append 99 NULs.
static_assert(std::is_constructible<fxStr, unsigned int>::value, "");
static_assert(!std::is_convertible<unsigned int, fxStr>::value, "explicit only");
static_assert(!std::is_convertible<int, fxStr>::value, "explicit only");
static_assert(!std::is_convertible<char, fxStr>::value, "explicit only");
static_assert(!CanJoin<const fxStr&, char>::value, "a byte is not a text");
static_assert(!CanJoin<const fxStr&, unsigned int>::value, "a number is not a text");
static_assert(CanJoin<const fxStr&, const char*>::value, "");

static_assert(std::is_convertible<const char*, fxStr>::value, "");
static_assert(std::is_convertible<fxTempStr, fxStr>::value, "");
static_assert(std::is_constructible<fxStr, const char*, unsigned int>::value, "");
static_assert(std::is_constructible<fxStr, int, const char*>::value, "");
static_assert(std::is_constructible<fxStr, float, const char*>::value, "");
static_assert(std::is_constructible<fxStr, double, const char*>::value, "");
static_assert(std::is_constructible<fxStr, fxTypeObj&>::value, "");
static_assert(!std::is_convertible<fxTypeObj&, fxStr>::value, "explicit only");

// resize(0) writes through the pointer to the shared empty text.
static_assert(std::is_same<decltype(fxStr::emptyString), char>::value, "writable");
static_assert(std::is_same<decltype(fxStr::resizeIncrement), unsigned int>::value, "");
static_assert(std::is_same<decltype(fxStr::delim_idx), int>::value, "signed");

static_assert(std::is_same<decltype(std::declval<fxStr&>()[0]), char&>::value, "");
static_assert(std::is_same<decltype(std::declval<const fxStr&>()[0]), const char&>::value, "");
static_assert(std::is_same<decltype(std::declval<const fxStr&>()[0u]), const char&>::value, "");
static_assert(std::is_same<decltype(std::declval<const fxStr&>().hash()), unsigned int>::value, "");
static_assert(std::is_same<decltype(std::declval<fxStr&>() = ""), fxStr&>::value, "");
}  // namespace

// Construction.

TEST(fxStr, everyWayToMakeAnEmptyStringGivesTheSharedEmptyText) {
    const fxStr empty;
    const fxTempStr nothing("", 0, "", 0);
    const fxStr strings[] = {fxStr(),
                             fxStr(0u),
                             fxStr(static_cast<const char*>(nullptr)),
                             fxStr(""),
                             fxStr("\0hidden"),
                             fxStr("abc", 0),
                             fxStr(static_cast<const char*>(nullptr), 0),
                             fxStr(empty),
                             fxStr(nothing),
                             fxStr(0, "%c"),
                             fxStr(1.0f, ""),
                             fxStr(1.0, ""),
                             fxStr(fxStr_type)};
    unsigned int row = 0;
    for (const fxStr& s : strings) {
        SCOPED_TRACE(testing::Message() << "row " << row++);
        EXPECT_EQ(0u, s.length());
        EXPECT_EQ(&fxStr::emptyString, s.c_str());
    }
    EXPECT_EQ('\0', fxStr::emptyString);
}

TEST(fxStr, destroyingAnEmptyStringReleasesNothing) {
    for (int i = 0; i < 3; ++i) {
        const fxStr fromNull(static_cast<const char*>(nullptr));
        const fxStr fromEmpty("");
        EXPECT_EQ(&fxStr::emptyString, fromNull.c_str());
        EXPECT_EQ(&fxStr::emptyString, fromEmpty.c_str());
    }
    EXPECT_EQ('\0', fxStr::emptyString);
}

TEST(fxStr, anUnsignedNumberMakesThatManyNuls) {
    for (unsigned int n : {1u, 2u, 3u, 4u, 1000u}) {
        SCOPED_TRACE(n);
        const fxStr s(n);
        EXPECT_EQ(n, s.length());
        EXPECT_EQ(std::string(n, '\0'), bytesOf(s));
        EXPECT_TRUE(allocatedFor(s.c_str(), n + 1));
    }
}

// A default format would make text of the number instead.
TEST(fxStr, aSingleIntIsALengthToo) {
    const int n = 3;
    const fxStr s(n);
    EXPECT_EQ(3u, s.length());
    EXPECT_EQ("\0\0\0"s, bytesOf(s));
}

TEST(fxStr, aTextIsCopiedUpToItsNul) {
    for (const char* text : {"a", "ab", "kelvo", "\xff\x80\x01", "a longer text than two words"}) {
        SCOPED_TRACE(text);
        const fxStr s(text);
        EXPECT_EQ(std::strlen(text), s.length());
        EXPECT_EQ(std::string(text), bytesOf(s));
        EXPECT_NE(text, s.c_str());
        EXPECT_TRUE(allocatedFor(s.c_str(), std::strlen(text) + 1));
    }
}

TEST(fxStr, aTextWithALengthIsCopiedWithoutLookingForANul) {
    const char unterminated[] = {'x', '\0', 'y', '\0', 'z'};
    const struct {
        unsigned int n;
        std::string expected;
    } cases[] = {{1, "x"s}, {2, "x\0"s}, {3, "x\0y"s}, {4, "x\0y\0"s}, {5, "x\0y\0z"s}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.n);
        const fxStr s(unterminated, c.n);
        EXPECT_EQ(c.n, s.length());
        EXPECT_EQ(c.expected, bytesOf(s));
    }
}

TEST(fxStr, aCopyOwnsItsOwnBuffer) {
    fxStr original("a\0b", 3);
    fxStr copy(original);
    fxStr second = original.copy();
    EXPECT_NE(original.c_str(), copy.c_str());
    EXPECT_NE(original.c_str(), second.c_str());
    EXPECT_EQ("a\0b"s, bytesOf(copy));

    original[0] = 'x';
    copy[0] = 'y';

    EXPECT_EQ("x\0b"s, bytesOf(original));
    EXPECT_EQ("y\0b"s, bytesOf(copy));
    EXPECT_EQ("a\0b"s, bytesOf(second));
}

TEST(fxStr, aTemporaryIsCopiedWithItsNuls) {
    const std::string half(60, 'h');
    const struct {
        std::string a, b;
    } cases[] = {{"a", ""}, {"ab", "cd"}, {"a\0"s, "\0b"s}, {half, half}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.a.size() + c.b.size());
        const fxTempStr joined(c.a.data(), static_cast<unsigned int>(c.a.size()), c.b.data(),
                               static_cast<unsigned int>(c.b.size()));
        const fxStr s(joined);
        EXPECT_EQ(c.a + c.b, bytesOf(s));
        EXPECT_NE(joined.c_str(), s.c_str());
        EXPECT_TRUE(allocatedFor(s.c_str(), c.a.size() + c.b.size() + 1));
    }
}

// Access.

TEST(fxStr, indexingReachesTheTextAndItsNulByEitherKindOfIndex) {
    fxStr s("abc");
    const fxStr& constant = s;
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(s.c_str() + i, &s[i]);
        EXPECT_EQ(s.c_str() + i, &s[static_cast<unsigned int>(i)]);
        EXPECT_EQ(s.c_str() + i, &constant[i]);
        EXPECT_EQ(s.c_str() + i, &constant[static_cast<unsigned int>(i)]);
    }
    EXPECT_EQ('\0', s[3]);
    s[1] = 'x';
    EXPECT_EQ("axc", bytesOf(s));
}

TEST(fxStr, theExplicitConversionGivesTheText) {
    const fxStr s("abc");
    EXPECT_EQ(s.c_str(), static_cast<const char*>(s));
}

// Containers hold strings by value and move them with memmove and realloc.
TEST(fxStr, aStringCanBeMovedByteWise) {
    for (const char* text : {"", "a", "a text that is longer than the object"}) {
        SCOPED_TRACE(text);
        alignas(fxStr) unsigned char from[sizeof(fxStr)];
        alignas(fxStr) unsigned char to[sizeof(fxStr)];
        new (from) fxStr(text);
        std::memcpy(to, from, sizeof(fxStr));
        std::memset(from, 0xA5, sizeof(fxStr));
        fxStr* moved = reinterpret_cast<fxStr*>(to);
        EXPECT_EQ(text, bytesOf(*moved));
        moved->append('!');
        EXPECT_EQ(text + "!"s, bytesOf(*moved));
        moved->~fxStr();
    }
}

TEST(fxStr, theSizeFieldCountsTheNul) {
    fxStr empty;
    fxStr one("a");
    fxStr nuls(3u);
    EXPECT_EQ(1u, fxStrLayout::size(empty));
    EXPECT_EQ(2u, fxStrLayout::size(one));
    EXPECT_EQ(4u, fxStrLayout::size(nuls));
}

// Assignment.

TEST(fxStr, assigningAStringCopiesItsBytes) {
    const std::string long1(50, 'p');
    const std::string texts[] = {""s,       "a"s,      "abc"s, "a\0c"s,
                                 "\0\0\0"s, "abcdef"s, long1,  long1 + "more"};
    for (const std::string& before : texts) {
        for (const std::string& after : texts) {
            SCOPED_TRACE(testing::Message() << before.size() << " to " << after.size());
            fxStr target = stringOf(before);
            const fxStr source = stringOf(after);
            EXPECT_EQ(&target, &(target = source));
            EXPECT_EQ(after, bytesOf(target));
            EXPECT_EQ(after, bytesOf(source));
            if (!after.empty()) {
                EXPECT_NE(source.c_str(), target.c_str());
            }
        }
    }
}

TEST(fxStr, assigningATemporaryCopiesItsBytes) {
    const std::string texts[] = {""s, "a"s, "a\0c"s, std::string(99, 'i'), std::string(150, 'h')};
    for (const std::string& before : texts) {
        for (const std::string& after : texts) {
            SCOPED_TRACE(testing::Message() << before.size() << " to " << after.size());
            fxStr target = stringOf(before);
            const fxTempStr source(after.data(), static_cast<unsigned int>(after.size()), "", 0);
            EXPECT_EQ(&target, &(target = source));
            EXPECT_EQ(after, bytesOf(target));
        }
    }
}

TEST(fxStr, assigningATextCopiesItUpToItsNul) {
    for (const char* before : {"", "a", "abcdef"}) {
        for (const char* after : {"", "z", "xyz", "abcdef", "abcdefg", "\xff"}) {
            SCOPED_TRACE(testing::Message() << before << " to " << after);
            fxStr target(before);
            EXPECT_EQ(&target, &(target = after));
            EXPECT_EQ(after, bytesOf(target));
        }
    }
}

TEST(fxStr, aShorterTextIsAssignedIntoTheSameBuffer) {
    fxStr target("abcdef");
    const char* buffer = target.c_str();
    target = "xyz";
    EXPECT_EQ(buffer, target.c_str());
    target = fxStr("uv");
    EXPECT_EQ(buffer, target.c_str());
    target = fxTempStr("w", 1, "", 0);
    EXPECT_EQ(buffer, target.c_str());
    EXPECT_EQ("w", bytesOf(target));
}

TEST(fxStr, aLongerTextIsAssignedIntoABufferOfItsExactSize) {
    const std::string text(5000, 't');
    fxStr target("abc");
    target = text.c_str();
    EXPECT_TRUE(allocatedFor(target.c_str(), 5001));
    fxStr empty;
    empty = text.c_str();
    EXPECT_TRUE(allocatedFor(empty.c_str(), 5001));
}

TEST(fxStr, assigningAStringToItselfChangesNothing) {
    fxStr s("a\0b", 3);
    const char* buffer = s.c_str();
    const fxStr& same = s;
    s = same;
    EXPECT_EQ(buffer, s.c_str());
    EXPECT_EQ("a\0b"s, bytesOf(s));

    fxStr empty;
    const fxStr& sameEmpty = empty;
    empty = sameEmpty;
    EXPECT_EQ("", bytesOf(empty));
}

TEST(fxStr, aStringCanBeAssignedATextWithinItself) {
    const struct {
        const char* text;
        unsigned int from;
        const char* expected;
    } cases[] = {{"abcdef", 0, "abcdef"}, {"abcdef", 1, "bcdef"}, {"abcdef", 4, "ef"},
                 {"abcdef", 5, "f"},      {"abcdef", 6, ""},      {"", 0, ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.text << " from " << c.from);
        fxStr s(c.text);
        s = s.c_str() + c.from;
        EXPECT_EQ(c.expected, bytesOf(s));
    }
}

// Whatever leaves a string without text makes it share the empty text.

TEST(fxStr, everyOperationThatLeavesNoTextGivesTheSharedEmptyText) {
    const struct {
        const char* name;
        void (*act)(fxStr&);
    } cases[] = {
        {"assign a string", [](fxStr& s) { s = fxStr(); }},
        {"assign a temporary", [](fxStr& s) { s = fxTempStr("", 0, "", 0); }},
        {"assign a text", [](fxStr& s) { s = ""; }},
        {"assign the own end", [](fxStr& s) { s = s.c_str() + s.length(); }},
        {"remove all", [](fxStr& s) { s.remove(0, s.length()); }},
        {"remove one more", [](fxStr& s) { s.remove(0, s.length() + 1); }},
        {"remove more than that", [](fxStr& s) { s.remove(0, s.length() + 2); }},
        {"remove byte by byte",
         [](fxStr& s) {
             while (s.length() > 0)
                 s.remove(0, 1);
         }},
        {"cut all", [](fxStr& s) { s.cut(0, s.length()); }},
        {"resize", [](fxStr& s) { s.resize(0); }},
        {"resize with a fill byte", [](fxStr& s) { s.resize(0, 'x'); }},
        {"format of an empty format", [](fxStr& s) { s.format("%s", ""); }},
        {"format of a NUL", [](fxStr& s) { s.format("%c", 0); }},
        {"read an empty stream",
         [](fxStr& s) {
             std::istringstream in;
             in >> s;
         }},
        {"trim", [](fxStr& s) { s = s.trim("abc"); }},
    };
    for (const auto& c : cases) {
        for (const char* before : {"abc", ""}) {
            SCOPED_TRACE(testing::Message() << c.name << ", from \"" << before << '"');
            fxStr s(before);
            c.act(s);
            EXPECT_EQ(0u, s.length());
            EXPECT_EQ(&fxStr::emptyString, s.c_str());
            EXPECT_EQ('\0', fxStr::emptyString);

            // The string works on from there.
            s.append("new");
            EXPECT_EQ("new", bytesOf(s));
        }
    }
}

TEST(fxStr, operationsThatAddNothingLeaveAnEmptyStringAlone) {
    const struct {
        const char* name;
        void (*act)(fxStr&);
    } cases[] = {
        {"append", [](fxStr& s) { s.append(""); }},
        {"append of null", [](fxStr& s) { s.append(static_cast<const char*>(nullptr)); }},
        {"insert", [](fxStr& s) { s.insert("", 0); }},
        {"insert of null", [](fxStr& s) { s.insert(static_cast<const char*>(nullptr), 0); }},
        {"replace by nothing", [](fxStr& s) { s.replace("", 0); }},
        {"replace", [](fxStr& s) { s.replace("xyz", 0); }},
        {"replace beyond the end", [](fxStr& s) { s.replace("xyz", 5, 2); }},
        {"remove nothing", [](fxStr& s) { s.remove(0, 0); }},
        {"setMaxLength", [](fxStr& s) { s.setMaxLength(100); }},
        {"resizeInternal", [](fxStr& s) { s.resizeInternal(0); }},
        {"lower", [](fxStr& s) { s.lower(); }},
        {"raise", [](fxStr& s) { s.raise(); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        fxStr s;
        c.act(s);
        EXPECT_EQ(0u, s.length());
        EXPECT_EQ(&fxStr::emptyString, s.c_str());
        EXPECT_EQ('\0', fxStr::emptyString);
    }
}

TEST(fxStr, everyEmptyResultIsTheSharedEmptyText) {
    const fxStr s("abc");
    const fxStr empty;
    unsigned int atEnd = 3;
    unsigned int atStart = 0;
    unsigned int pastEnd = 9;
    fxStr uncut("abc");
    const fxStr results[] = {s.extract(0, 0),
                             s.extract(1, 0),
                             s.extract(3, 0),
                             s.extract(3, 5),
                             s.extract(9, 5),
                             s.head(0),
                             s.tail(0),
                             empty.copy(),
                             empty.head(5),
                             empty.tail(5),
                             empty.extract(0, 5),
                             empty.trim(" "),
                             empty.trimRight(" "),
                             s.trim("cba"),
                             s.trimRight("cba"),
                             s.token(atEnd, ','),
                             s.token(pastEnd, ","),
                             s.tokenR(atStart, ','),
                             uncut.cut(1, 0)};
    unsigned int row = 0;
    for (const fxStr& result : results) {
        SCOPED_TRACE(testing::Message() << "row " << row++);
        EXPECT_EQ(0u, result.length());
        EXPECT_EQ(&fxStr::emptyString, result.c_str());
    }
}
