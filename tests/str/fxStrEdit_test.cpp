#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStr.h"
#include "tests/support/observe.h"

namespace {
using namespace std::string_literals;

const char* const null = nullptr;

// Leaves blocks full of 0xAA where the next small allocations will be made.
void dirtyTheHeap() {
    void* blocks[8];
    for (void*& block : blocks) {
        block = std::malloc(12);
        std::memset(block, 0xAA, 12);
    }
    for (void* block : blocks)
        std::free(block);
}
}  // namespace

// append

TEST(fxStrEdit, appendAddsTheBytesAfterTheText) {
    const struct {
        std::string text, added;
        unsigned int n;
        std::string expected;
    } cases[] = {{"ab", "cd", 0, "abcd"},
                 {"ab", "cd", 1, "abc"},
                 {"ab", "cd", 2, "abcd"},
                 {"", "x", 0, "x"},
                 {"", "xyz", 2, "xy"},
                 {"ab", "", 0, "ab"},
                 {"ab", "\0c"s, 0, "ab"},
                 {"ab", "\0"s, 1, "ab\0"s},
                 {"", "\0"s, 1, "\0"s},
                 {"a\0b"s, "c", 0, "a\0bc"s},
                 {"ab", "c\0d"s, 3, "abc\0d"s},
                 {"ab", "c\0d"s, 0, "abc"},
                 {"ab", "\xff\x80", 0, "ab\xff\x80"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.text << " + " << c.added << ", " << c.n);
        fxStr s = stringOf(c.text);
        s.append(c.added.c_str(), c.n);
        EXPECT_EQ(c.expected, bytesOf(s));
    }
}

TEST(fxStrEdit, appendWithALengthNeedsNoNul) {
    const char unterminated[] = {'x', 'y', 'z'};
    fxStr s("ab");
    s.append(unterminated, 3);
    EXPECT_EQ("abxyz", bytesOf(s));
}

TEST(fxStrEdit, appendOfNullIsNothing) {
    fxStr s("ab");
    s.append(null);
    EXPECT_EQ("ab", bytesOf(s));
}

TEST(fxStrEdit, appendOfAByteGrowsByOne) {
    fxStr s;
    std::string expected;
    for (int i = 0; i < 300; ++i) {
        const char c = static_cast<char>(i % 256);
        s.append(c);
        expected += c;
        ASSERT_EQ(expected, bytesOf(s));
    }
}

TEST(fxStrEdit, aStringCanAppendItsOwnText) {
    const struct {
        const char* text;
        unsigned int from, n;
        std::string expected;
    } cases[] = {{"abc", 0, 0, "abcabc"}, {"abc", 1, 0, "abcbc"},   {"abc", 3, 0, "abc"},
                 {"abc", 0, 2, "abcab"},  {"abc", 2, 2, "abcc\0"s}, {"abc", 0, 4, "abcabc\0"s},
                 {"", 0, 0, ""},          {"", 0, 1, "\0"s}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.text << " from " << c.from << ", " << c.n);
        fxStr s(c.text);
        s.append(s.c_str() + c.from, c.n);
        EXPECT_EQ(c.expected, bytesOf(s));
    }

    fxStr doubled("0123456789");
    for (int i = 0; i < 10; ++i)
        doubled.append(doubled.c_str());
    EXPECT_EQ(10240u, doubled.length());
    EXPECT_EQ("0123456789", bytesOf(doubled.tail(10)));
}

// insert

TEST(fxStrEdit, insertMovesTheTailRight) {
    const struct {
        std::string text, added;
        unsigned int pos, n;
        std::string expected;
    } cases[] = {{"abcd", "XY", 0, 0, "XYabcd"},
                 {"abcd", "XY", 2, 0, "abXYcd"},
                 {"abcd", "XY", 4, 0, "abcdXY"},
                 {"abcd", "XY", 2, 1, "abXcd"},
                 {"abcd", "", 2, 0, "abcd"},
                 {"abcd", "\0X"s, 2, 0, "abcd"},
                 {"abcd", "\0X"s, 2, 2, "ab\0Xcd"s},
                 {"a\0b"s, "X", 1, 0, "aX\0b"s},
                 {"a\0b"s, "X", 3, 0, "a\0bX"s},
                 {"", "XY", 0, 0, "XY"},
                 {"", "XYZ", 0, 1, "X"},
                 {"", "\0"s, 0, 1, "\0"s}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.added << " into " << c.text << " at " << c.pos);
        fxStr s = stringOf(c.text);
        s.insert(c.added.c_str(), c.pos, c.n);
        EXPECT_EQ(c.expected, bytesOf(s));
    }
}

TEST(fxStrEdit, insertOfAByteMovesTheTailRightByOne) {
    const struct {
        const char* text;
        char added;
        unsigned int pos;
        std::string expected;
    } cases[] = {{"abc", 'X', 0, "Xabc"}, {"abc", 'X', 1, "aXbc"},    {"abc", 'X', 3, "abcX"},
                 {"", 'X', 0, "X"},       {"abc", '\0', 1, "a\0bc"s}, {"", '\0', 0, "\0"s}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.text << " at " << c.pos);
        fxStr s(c.text);
        s.insert(c.added, c.pos);
        EXPECT_EQ(c.expected, bytesOf(s));
    }
}

TEST(fxStrEdit, insertBeyondTheEndAppends) {
    for (unsigned int pos : {4u, 5u, 1000u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(pos);
        fxStr s("abc");
        s.insert("XY", pos);
        EXPECT_EQ("abcXY", bytesOf(s));
        fxStr byte("abc");
        byte.insert('X', pos);
        EXPECT_EQ("abcX", bytesOf(byte));
        fxStr empty;
        empty.insert("XY", pos);
        EXPECT_EQ("XY", bytesOf(empty));
    }
}

TEST(fxStrEdit, insertOfNullIsNothing) {
    fxStr s("ab");
    s.insert(null, 1);
    EXPECT_EQ("ab", bytesOf(s));
}

TEST(fxStrEdit, aStringCanInsertItsOwnText) {
    const struct {
        const char* text;
        unsigned int from, pos, n;
        std::string expected;
    } cases[] = {{"abcd", 0, 0, 0, "abcdabcd"}, {"abcd", 0, 2, 0, "ababcdcd"},
                 {"abcd", 0, 4, 0, "abcdabcd"}, {"abcd", 1, 2, 2, "abbccd"},
                 {"abcd", 3, 0, 0, "dabcd"},    {"abcd", 3, 1, 2, "ad\0bcd"s},
                 {"abcd", 4, 2, 0, "abcd"},     {"", 0, 0, 0, ""},
                 {"", 0, 0, 1, "\0"s}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.text << " from " << c.from << " at " << c.pos);
        fxStr s(c.text);
        s.insert(s.c_str() + c.from, c.pos, c.n);
        EXPECT_EQ(c.expected, bytesOf(s));
    }
}

// replace

TEST(fxStrEdit, replaceOverwritesInPlace) {
    const struct {
        std::string text, with;
        unsigned int pos, n;
        std::string expected;
    } cases[] = {{"abcdef", "XY", 0, 0, "XYcdef"}, {"abcdef", "XY", 2, 0, "abXYef"},
                 {"abcdef", "XY", 4, 0, "abcdXY"}, {"abcdef", "XY", 2, 1, "abXdef"},
                 {"abcdef", "", 2, 0, "abcdef"},   {"abcdef", "X\0Y"s, 1, 3, "aX\0Yef"s},
                 {"a\0cd"s, "X", 3, 0, "a\0cX"s},  {"abc", "XYZ", 0, 0, "XYZ"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.with << " at " << c.pos << " of " << c.text);
        fxStr s = stringOf(c.text);
        const char* buffer = s.c_str();
        s.replace(c.with.c_str(), c.pos, c.n);
        EXPECT_EQ(c.expected, bytesOf(s));
        EXPECT_EQ(buffer, s.c_str());
    }
}

TEST(fxStrEdit, replaceNeverWritesBeyondTheEnd) {
    const struct {
        unsigned int pos, n;
        const char* expected;
    } cases[] = {{0, 5, "VWX"}, {1, 0, "aVW"}, {2, 3, "abV"},          {3, 0, "abc"},
                 {4, 0, "abc"}, {9, 2, "abc"}, {0xFFFFFFFFu, 5, "abc"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.n << " at " << c.pos);
        fxStr s("abc");
        s.replace("VWXYZ", c.pos, c.n);
        EXPECT_EQ(c.expected, bytesOf(s));
    }
}

TEST(fxStrEdit, replaceLeavesTheSharedEmptyTextAlone) {
    fxStr s;
    s.replace("X", 0, 1);
    EXPECT_EQ('\0', fxStr::emptyString);
    EXPECT_EQ("", bytesOf(s));
}

TEST(fxStrEdit, aStringCanReplaceByItsOwnText) {
    const struct {
        unsigned int from, pos, n;
        const char* expected;
    } cases[] = {
        {0, 2, 4, "ababcd"}, {2, 0, 4, "cdefef"}, {0, 0, 6, "abcdef"}, {5, 0, 0, "fbcdef"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.from << " to " << c.pos);
        fxStr s("abcdef");
        s.replace(s.c_str() + c.from, c.pos, c.n);
        EXPECT_EQ(c.expected, bytesOf(s));
    }
}

// remove and cut

TEST(fxStrEdit, removeMovesTheRestDown) {
    const struct {
        std::string text;
        unsigned int pos, n;
        std::string expected;
    } cases[] = {{"abcdef", 0, 0, "abcdef"}, {"abcdef", 0, 1, "bcdef"},   {"abcdef", 2, 2, "abef"},
                 {"abcdef", 5, 1, "abcde"},  {"abcdef", 0, 5, "f"},       {"abcdef", 1, 5, "a"},
                 {"abcdef", 6, 0, "abcdef"}, {"a\0b\0c"s, 1, 1, "ab\0c"s}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.n << " at " << c.pos << " of " << c.text);
        fxStr s = stringOf(c.text);
        const char* buffer = s.c_str();
        s.remove(c.pos, c.n);
        EXPECT_EQ(c.expected, bytesOf(s));
        EXPECT_EQ(buffer, s.c_str());
    }
}

TEST(fxStrEdit, removeOfTheWholeLengthEmptiesTheStringFromAnyPosition) {
    for (unsigned int pos : {0u, 1u, 3u, 5u, 6u, 7u, 0xFFFFFFFFu}) {
        for (unsigned int n : {6u, 7u}) {
            SCOPED_TRACE(testing::Message() << n << " at " << pos);
            fxStr s("abcdef");
            s.remove(pos, n);
            EXPECT_EQ("", bytesOf(s));
        }
    }
}

// The size less n wraps around there, so it is above 1 and the tail moves.
TEST(fxStrEdit, deliberateRemoveOfMoreThanTheSizeKeepsWhatIsBeforeIt) {
    const struct {
        unsigned int pos, n;
        const char* expected;
    } cases[] = {{3, 8, "abc"},        {3, 100, "abc"},    {3, 0xFFFFFFFFu, "abc"},
                 {1, 8, "a"},          {6, 100, "abcdef"}, {0, 8, ""},
                 {0, 0xFFFFFFFFu, ""}, {7, 100, "abcdef"}, {0xFFFFFFFFu, 8, "abcdef"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.n << " at " << c.pos);
        fxStr s("abcdef");
        s.remove(c.pos, c.n);
        EXPECT_EQ(c.expected, bytesOf(s));
    }
}

TEST(fxStrEdit, removeIsCutToTheEndOfTheText) {
    const struct {
        unsigned int pos, n;
        const char* expected;
    } cases[] = {{4, 3, "abcd"}, {5, 5, "abcde"}, {6, 1, "abcdef"}, {9, 2, "abcdef"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.n << " at " << c.pos);
        fxStr s("abcdef");
        s.remove(c.pos, c.n);
        EXPECT_EQ(c.expected, bytesOf(s));
    }
}

TEST(fxStrEdit, removeFromAnEmptyStringLeavesItEmpty) {
    for (unsigned int n : {0u, 1u, 2u, 100u, 0xFFFFFFFFu}) {
        for (unsigned int pos : {0u, 1u, 100u}) {
            SCOPED_TRACE(testing::Message() << n << " at " << pos);
            fxStr s;
            s.remove(pos, n);
            EXPECT_EQ("", bytesOf(s));
        }
    }
}

TEST(fxStrEdit, cutReturnsWhatItRemoves) {
    const struct {
        std::string text;
        unsigned int pos, n;
        std::string expected, left;
    } cases[] = {{"abcdef", 0, 2, "ab", "cdef"},
                 {"abcdef", 2, 2, "cd", "abef"},
                 {"abcdef", 4, 2, "ef", "abcd"},
                 {"abcdef", 0, 6, "abcdef", ""},
                 {"abcdef", 2, 0, "", "abcdef"},
                 {"a\0b"s, 1, 1, "\0"s, "ab"},
                 {"", 0, 0, "", ""},
                 {"abcdef", 3, 6, "def", ""},
                 {"abcdef", 4, 3, "ef", "abcd"},
                 {"abcdef", 9, 1, "", "abcdef"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.n << " at " << c.pos << " of " << c.text);
        fxStr s = stringOf(c.text);
        const fxStr part = s.cut(c.pos, c.n);
        EXPECT_EQ(c.expected, bytesOf(part));
        EXPECT_EQ(c.left, bytesOf(s));
    }
}

// resize

TEST(fxStrEdit, deliberateResizeFillsWithNulWhateverTheFillByteIs) {
    const struct {
        std::string text;
        unsigned int n;
        std::string expected;
    } cases[] = {{"ab", 5, "ab\0\0\0"s}, {"ab", 3, "ab\0"s},  {"ab", 2, "ab"}, {"ab", 1, "a"},
                 {"ab", 0, ""},          {"a", 2, "a\0"s},    {"", 0, ""},     {"", 1, "\0"s},
                 {"", 3, "\0\0\0"s},     {"a\0b"s, 2, "a\0"s}};
    for (const auto& c : cases) {
        for (unsigned char fill : {'\0', 'x', '\xff'}) {
            SCOPED_TRACE(testing::Message() << c.text << " to " << c.n << ", fill " << int(fill));
            dirtyTheHeap();
            fxStr s = stringOf(c.text);
            s.resize(c.n, fill);
            EXPECT_EQ(c.n, s.length());
            EXPECT_EQ(c.expected, bytesOf(s));
        }
    }
}

TEST(fxStrEdit, resizeWithoutAFillByteDoesTheSame) {
    fxStr s("ab");
    s.resize(4);
    EXPECT_EQ("ab\0\0"s, bytesOf(s));
}

TEST(fxStrEdit, resizeDoesNotBringBackWhatItCutOff) {
    for (unsigned int n : {3u, 4u, 6u, 7u}) {
        SCOPED_TRACE(n);
        fxStr s("abcdef");
        s.resize(2);
        s.resize(n);
        EXPECT_EQ("ab" + std::string(n - 2, '\0'), bytesOf(s));
    }
}

TEST(fxStrEdit, resizeDownKeepsTheBuffer) {
    fxStr s(1000u);
    const char* buffer = s.c_str();
    s.resize(2);
    EXPECT_EQ(buffer, s.c_str());
    EXPECT_TRUE(allocatedFor(s.c_str(), 1001));
}

// Growth

TEST(fxStrEdit, resizeInternalOfAnEmptyStringAllocatesAndLeavesTheLength) {
    fxStr s;
    s.resizeInternal(0);
    EXPECT_EQ(&fxStr::emptyString, s.c_str());

    s.resizeInternal(1000);
    EXPECT_NE(&fxStr::emptyString, s.c_str());
    EXPECT_TRUE(allocatedFor(s.c_str(), 1001));
    EXPECT_EQ(0u, s.length());
}

TEST(fxStrEdit, resizeInternalToNothingReleasesTheBufferAndLeavesTheLength) {
    fxStr s("abc");
    s.resizeInternal(0);
    EXPECT_EQ(&fxStr::emptyString, s.c_str());
    EXPECT_EQ(3u, s.length());
}

TEST(fxStrEdit, resizeInternalBelowTheSizeDoesNothing) {
    fxStr s("abcdef");
    const char* buffer = s.c_str();
    for (unsigned int n : {1u, 2u, 5u, 6u}) {
        SCOPED_TRACE(n);
        s.resizeInternal(n);
        EXPECT_EQ(buffer, s.c_str());
        EXPECT_EQ("abcdef", bytesOf(s));
    }
}

TEST(fxStrEdit, resizeInternalFromTheSizeOnReallocatesToTheExactSize) {
    for (unsigned int n : {7u, 8u, 100u, 5000u}) {
        SCOPED_TRACE(n);
        fxStr s("abcdef");
        s.resizeInternal(n);
        EXPECT_EQ("abcdef", bytesOf(s));
        EXPECT_TRUE(allocatedFor(s.c_str(), n + 1));
    }
}

TEST(fxStrEdit, everyGrowthIsToTheExactSize) {
    const std::string added(700, 'a');
    const struct {
        const char* name;
        void (*act)(fxStr&, const char*);
    } cases[] = {
        {"append", [](fxStr& s, const char* text) { s.append(text); }},
        {"append of bytes", [](fxStr& s, const char*) { s.append('x'); }},
        {"insert", [](fxStr& s, const char* text) { s.insert(text, 1); }},
        {"insert of bytes", [](fxStr& s, const char*) { s.insert('x', 1); }},
        {"resize", [](fxStr& s, const char*) { s.resize(s.length() + 700); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        fxStr s("abc");
        for (int i = 0; i < 5; ++i) {
            c.act(s, added.c_str());
            EXPECT_TRUE(allocatedFor(s.c_str(), s.length() + 1));
        }
    }
}

// Growth knows the text's size alone, not that of the buffer.
TEST(fxStrEdit, deliberateGrowthAfterAShrinkingEditGivesTheRestOfTheBufferBack) {
    fxStr s(1000u);
    s.resize(2);
    s.resize(4);
    EXPECT_TRUE(allocatedFor(s.c_str(), 5));
}

TEST(fxStrEdit, setMaxLengthReservesRoom) {
    fxStr s("abc");
    s.setMaxLength(1000);
    EXPECT_EQ("abc", bytesOf(s));
    EXPECT_TRUE(allocatedFor(s.c_str(), 1001));
}

TEST(fxStrEdit, setMaxLengthUpToTheLengthDoesNothing) {
    fxStr s("abcdef");
    const char* buffer = s.c_str();
    for (unsigned int n : {0u, 1u, 5u, 6u}) {
        SCOPED_TRACE(n);
        s.setMaxLength(n);
        EXPECT_EQ(buffer, s.c_str());
        EXPECT_EQ("abcdef", bytesOf(s));
    }
}

TEST(fxStrEdit, deliberateSetMaxLengthOfAnEmptyStringDoesNothing) {
    fxStr s;
    s.setMaxLength(100);
    EXPECT_EQ(&fxStr::emptyString, s.c_str());
    EXPECT_EQ(0u, s.length());
}

// Extraction

TEST(fxStrEdit, extractGivesTheBytesFromAPosition) {
    const struct {
        unsigned int pos, n;
        std::string expected;
    } cases[] = {{0, 0, ""},
                 {0, 1, "a"},
                 {0, 5, "ab\0cd"s},
                 {1, 3, "b\0c"s},
                 {2, 1, "\0"s},
                 {4, 1, "d"},
                 {5, 0, ""},
                 {4, 2, "d"},
                 {5, 1, ""},
                 {6, 0, ""},
                 {6, 9, ""},
                 {0, 99, "ab\0cd"s},
                 {3, 0xFFFFFFFFu, "cd"},
                 {0xFFFFFFFFu, 2, ""}};
    const fxStr s = stringOf("ab\0cd"s);
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.n << " at " << c.pos);
        EXPECT_EQ(c.expected, bytesOf(s.extract(c.pos, c.n)));
        EXPECT_EQ("ab\0cd"s, bytesOf(s));
    }
}

TEST(fxStrEdit, headAndTailGiveTheEnds) {
    const struct {
        unsigned int n;
        std::string head, tail;
    } cases[] = {{0, "", ""},
                 {1, "a", "d"},
                 {3, "ab\0"s, "\0cd"s},
                 {4, "ab\0c"s, "b\0cd"s},
                 {5, "ab\0cd"s, "ab\0cd"s},
                 {6, "ab\0cd"s, "ab\0cd"s},
                 {0xFFFFFFFFu, "ab\0cd"s, "ab\0cd"s}};
    const fxStr s = stringOf("ab\0cd"s);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.n);
        EXPECT_EQ(c.head, bytesOf(s.head(c.n)));
        EXPECT_EQ(c.tail, bytesOf(s.tail(c.n)));
        EXPECT_EQ("ab\0cd"s, bytesOf(s));
    }
}

TEST(fxStrEdit, trimTakesTheSetAwayFromTheEnds) {
    const struct {
        std::string text;
        const char* set;
        std::string both, right;
    } cases[] = {{"  ab  ", " ", "ab", "  ab"},
                 {"ab", " ", "ab", "ab"},
                 {"a  b", " ", "a  b", "a  b"},
                 {" \tab\t ", " \t", "ab", " \tab"},
                 {"xab", "x", "ab", "xab"},
                 {"abx", "x", "ab", "ab"},
                 {" ", " ", "", ""},
                 {"   ", " ", "", ""},
                 {"", " ", "", ""},
                 {"ab", "", "ab", "ab"},
                 {"ab", "ab", "", ""},
                 {"\xff"
                  "a\xff",
                  "\xff", "a",
                  "\xff"
                  "a"},
                 {" \0 "s, " ", "\0"s, " \0"s}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << '"' << c.text << "\" by \"" << c.set << '"');
        const fxStr s = stringOf(c.text);
        EXPECT_EQ(c.both, bytesOf(s.trim(c.set)));
        EXPECT_EQ(c.right, bytesOf(s.trimRight(c.set)));
        EXPECT_EQ(c.text, bytesOf(s));
    }
}

// Case

TEST(fxStrEdit, lowerAndRaiseMapTheLettersAndNothingElse) {
    std::string all;
    std::string lowered;
    std::string raised;
    for (int c = 0; c < 256; ++c) {
        const bool upper = c >= 'A' && c <= 'Z';
        const bool lower = c >= 'a' && c <= 'z';
        all += static_cast<char>(c);
        lowered += static_cast<char>(upper ? c - 'A' + 'a' : c);
        raised += static_cast<char>(lower ? c - 'a' + 'A' : c);
    }

    fxStr s = stringOf(all);
    s.lower();
    EXPECT_EQ(lowered, bytesOf(s));

    s = stringOf(all);
    s.raise();
    EXPECT_EQ(raised, bytesOf(s));
}

TEST(fxStrEdit, lowerAndRaiseGoOnPastEmbeddedNuls) {
    fxStr s = stringOf("Ab\0Cd\0"s);
    const char* buffer = s.c_str();
    s.lower();
    EXPECT_EQ("ab\0cd\0"s, bytesOf(s));
    s.raise();
    EXPECT_EQ("AB\0CD\0"s, bytesOf(s));
    EXPECT_EQ(buffer, s.c_str());
}
