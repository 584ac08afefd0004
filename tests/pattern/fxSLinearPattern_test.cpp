#include "kelvofxds/pattern/fxSLinearPattern.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStr.h"
#include "tests/support/vtable.h"

struct fxSLinearPatternLayout {
    static_assert(sizeof(fxSLinearPattern) == 1040, "a table, a pointer and a length");
    static_assert(std::is_same<decltype(fxSLinearPattern::skip), int[256]>::value, "the table");
    static std::size_t offsetOfSkip(const fxSLinearPattern& p) { return offset(p, &p.skip); }
    static std::size_t offsetOfPattern(const fxSLinearPattern& p) { return offset(p, &p.pattern); }
    static std::size_t offsetOfLength(const fxSLinearPattern& p) {
        return offset(p, &p.patternLength);
    }
    static int skip(const fxSLinearPattern& p, unsigned char byte) { return p.skip[byte]; }
    static std::string pattern(const fxSLinearPattern& p) {
        return std::string(p.pattern, p.patternLength);
    }
    static const char* bytes(const fxSLinearPattern& p) { return p.pattern; }

private:
    static std::size_t offset(const fxSLinearPattern& p, const void* field) {
        return static_cast<std::size_t>(static_cast<const char*>(field) -
                                        reinterpret_cast<const char*>(&p));
    }
};

static_assert(std::is_base_of<fxTextPattern, fxSLinearPattern>::value, "a pattern");
static_assert(!std::is_copy_constructible<fxSLinearPattern>::value, "owns its pattern");

namespace {

using Layout = fxSLinearPatternLayout;

unsigned int lengthOf(const std::string& s) { return static_cast<unsigned int>(s.size()); }

fxStr stringOf(const std::string& s) { return fxStr(s.data(), lengthOf(s)); }

// Where std::string finds it, or -1.
int expectedStart(const std::string& pattern, const std::string& text) {
    const std::size_t found = text.find(pattern);
    return found == std::string::npos ? -1 : static_cast<int>(found);
}

// All three answers for a text in a block of its exact size, where the sanitizer sees a read beyond
// either end.
void expectFound(int start, const std::string& pattern, const std::string& text) {
    const fxSLinearPattern linear(stringOf(pattern));
    char* exact = new char[text.size()];
    std::copy(text.begin(), text.end(), exact);
    const int end = start < 0 ? 0 : start + static_cast<int>(pattern.size());
    EXPECT_EQ(start, linear.findBuffer(exact, lengthOf(text)));
    EXPECT_EQ(end, linear.findEndBuffer(exact, lengthOf(text)));
    int foundStart = 99, foundEnd = 99;
    EXPECT_EQ(start >= 0, linear.bracketBuffer(exact, lengthOf(text), foundStart, foundEnd));
    EXPECT_EQ(start, foundStart);
    EXPECT_EQ(end, foundEnd);
    delete[] exact;
}

// Every text of the letters a and b with `length` letters is the `number` in binary.
std::string lettersOf(unsigned int number, unsigned int length) {
    std::string text(length, 'a');
    for (unsigned int i = 0; i < length; ++i) {
        if (number & (1U << i))
            text[i] = 'b';
    }
    return text;
}

// A pattern that says it is where it is told.
class FixedPlace : public fxSLinearPattern {
public:
    explicit FixedPlace(int place) : fxSLinearPattern("abc"), answer(place), calls(0) {}
    int findBuffer(const char* text, unsigned int length) const override {
        ++calls;
        lastText = text;
        lastLength = length;
        return answer;
    }

    int answer;
    mutable unsigned int calls;
    mutable const char* lastText = nullptr;
    mutable unsigned int lastLength = 0;
};

// Two bytes where no array can have any as far as the compiler knows.
void putAt(char* text, std::uintptr_t offset, const char* bytes) {
    char* at = reinterpret_cast<char*>(reinterpret_cast<std::uintptr_t>(text) + offset);
    at[0] = bytes[0];
    at[1] = bytes[1];
}

// A text between two pages that must not be touched.
class GuardedText {
public:
    explicit GuardedText(std::size_t n)
        : page(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))), length(n) {
        inner = (n + page - 1) / page * page;
        block = static_cast<char*>(::mmap(nullptr, inner + 2 * page, PROT_NONE,
                                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
        if (block == MAP_FAILED || ::mprotect(block + page, inner, PROT_READ | PROT_WRITE) != 0)
            std::abort();
    }
    GuardedText(const GuardedText&) = delete;
    GuardedText& operator=(const GuardedText&) = delete;
    ~GuardedText() { ::munmap(block, inner + 2 * page); }

    char* atFront() const { return block + page; }
    char* atBack() const { return block + page + inner - length; }

private:
    std::size_t page, length, inner;
    char* block;
};

}  // namespace

// Class shape.

TEST(fxSLinearPattern, operationsFollowTheStatedOrder) {
    EXPECT_EQ(2u, vtableWord(&fxSLinearPattern::findBuffer));
    EXPECT_EQ(3u, vtableWord(&fxSLinearPattern::findEndBuffer));
    EXPECT_EQ(4u, vtableWord(&fxSLinearPattern::bracketBuffer));
}

TEST(fxSLinearPattern, fieldsFollowTheStatedOrder) {
    const fxSLinearPattern pattern("a");
    EXPECT_EQ(8u, Layout::offsetOfSkip(pattern));
    EXPECT_EQ(1032u, Layout::offsetOfPattern(pattern));
    EXPECT_EQ(1036u, Layout::offsetOfLength(pattern));
}

TEST(fxSLinearPattern, aNewPatternHasNoHolder) {
    const fxSLinearPattern pattern("a");
    EXPECT_EQ(0, pattern.count);
}

TEST(fxSLinearPattern, isDeletedThroughItsBase) {
    fxRCObj* held = new fxSLinearPattern("abc");
    ++held->count;
    if (--held->count == 0)
        delete held;
}

// Construction.

TEST(fxSLinearPattern, aTextIsCopiedUpToTheCountOrItsNul) {
    const struct {
        const char* text;
        unsigned int n;
        std::string pattern;
    } cases[] = {{"abc", 0, "abc"},
                 {"abc", 3, "abc"},
                 {"abc", 2, "ab"},
                 {"abc", 4, std::string("abc\0", 4)},
                 {"a\0b", 3, std::string("a\0b", 3)},
                 {"a\0b", 0, "a"},
                 {"", 0, ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.text << ", " << c.n);
        EXPECT_EQ(c.pattern, Layout::pattern(fxSLinearPattern(c.text, c.n)));
    }
}

TEST(fxSLinearPattern, aStringIsCopiedWhole) {
    for (const std::string& text :
         {std::string(), std::string("abc"), std::string("a\0b", 3), std::string("\0", 1)}) {
        EXPECT_EQ(text, Layout::pattern(fxSLinearPattern(stringOf(text))));
    }
}

TEST(fxSLinearPattern, theCopyIsPrivate) {
    char text[] = "abc";
    const fxSLinearPattern pattern(text);
    EXPECT_NE(text, Layout::bytes(pattern));
    std::strcpy(text, "xyz");
    EXPECT_EQ("abc", Layout::pattern(pattern));
    EXPECT_EQ(0, pattern.findBuffer("abc", 3));
}

TEST(fxSLinearPattern, aNullTextIsAnEmptyPattern) {
    for (unsigned int n : {0u, 5u}) {
        const fxSLinearPattern pattern(nullptr, n);
        EXPECT_EQ("", Layout::pattern(pattern));
        EXPECT_EQ(0, pattern.findBuffer("abc", 3));
    }
}

TEST(fxSLinearPattern, theTableHoldsTheDistanceFromTheLastOccurrenceToTheEnd) {
    const struct {
        std::string pattern;
        std::string bytes;  // that have a distance of their own
        int distances[4];
    } cases[] = {{"abcab", "abc", {1, 3, 2}},
                 {"", "", {}},
                 {"a", "", {}},
                 {"aa", "a", {1}},
                 {"ab", "a", {1}},
                 {"aab", "a", {1}},
                 {"aba", "ab", {2, 1}},
                 {"abcd", "abc", {3, 2, 1}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.pattern);
        const fxSLinearPattern pattern(c.pattern.c_str());
        for (unsigned int byte = 0; byte < 256; ++byte) {
            const std::size_t own = c.bytes.find(static_cast<char>(byte));
            const int expected =
                own == std::string::npos ? static_cast<int>(c.pattern.size()) : c.distances[own];
            EXPECT_EQ(expected, Layout::skip(pattern, static_cast<unsigned char>(byte))) << byte;
        }
    }
}

TEST(fxSLinearPattern, theTableIsIndexedByTheUnsignedByte) {
    const fxSLinearPattern pattern("\x80\xFF\x7Fz\xC3");
    EXPECT_EQ(4, Layout::skip(pattern, 0x80));
    EXPECT_EQ(3, Layout::skip(pattern, 0xFF));
    EXPECT_EQ(2, Layout::skip(pattern, 0x7F));
    EXPECT_EQ(1, Layout::skip(pattern, 'z'));
    EXPECT_EQ(5, Layout::skip(pattern, 0xC3));
    EXPECT_EQ(5, Layout::skip(pattern, 0));
}

// Searching.

TEST(fxSLinearPattern, findsTheFirstOccurrence) {
    const struct {
        std::string pattern, text;
        int start;
    } cases[] = {{"abc", "xxabcabc", 2},
                 {"abc", "abc", 0},
                 {"abc", "xxxabc", 3},
                 {"abc", "xxxab", -1},
                 {"abc", "", -1},
                 {"a", "a", 0},
                 {"a", "bba", 2},
                 {"a", "bbb", -1},
                 {"aa", "abaa", 2},
                 {"aab", "aaaab", 2},
                 {"abab", "abacabab", 4},
                 {"\xE4\xF6", "a\xE4\xE4\xF6", 2},
                 {std::string("\0a", 2), std::string("a\0\0a", 4), 2},
                 {std::string("\0", 1), std::string("ab\0", 3), 2}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.pattern + " in " + c.text);
        expectFound(c.start, c.pattern, c.text);
    }
}

TEST(fxSLinearPattern, theLengthCountsAndNoTerminatorIsNeeded) {
    const fxSLinearPattern pattern("abc");
    EXPECT_EQ(-1, pattern.findBuffer("xxabc", 4));
    EXPECT_EQ(2, pattern.findBuffer("xxabc", 5));
    EXPECT_EQ(2, pattern.findBuffer("xxabcabc", 8));
    EXPECT_EQ(5, pattern.findEndBuffer("xxabcabc", 8));
    EXPECT_EQ(2, pattern.findBuffer("a\0abc", 5));
}

TEST(fxSLinearPattern, anEmptyPatternIsFoundAtTheStartOfEveryText) {
    const fxSLinearPattern pattern("");
    for (unsigned int length : {0u, 1u, 3u, 0xFFFFFFFFu}) {
        int start = 7, end = 7;
        EXPECT_EQ(0, pattern.findBuffer("abc", length));
        EXPECT_EQ(0, pattern.findEndBuffer("abc", length));
        EXPECT_EQ(1, pattern.bracketBuffer("abc", length, start, end));
        EXPECT_EQ(0, start);
        EXPECT_EQ(0, end);
    }
    EXPECT_EQ(0, pattern.findBuffer(nullptr, 0));
}

TEST(fxSLinearPattern, aPatternLongerThanTheTextIsNotFoundAndTheTextNotRead) {
    const GuardedText text(1);
    const char* unreadable = text.atFront() - 1;
    for (const std::string& bytes : {std::string("ab"), std::string(300, 'a')}) {
        const fxSLinearPattern pattern(stringOf(bytes));
        int start = 7, end = 7;
        for (unsigned int length = 0; length < lengthOf(bytes); ++length)
            EXPECT_EQ(-1, pattern.findBuffer(unreadable, length));
        EXPECT_EQ(0, pattern.findEndBuffer(unreadable, 1));
        EXPECT_EQ(0, pattern.bracketBuffer(unreadable, 1, start, end));
        EXPECT_EQ(-1, start);
        EXPECT_EQ(0, end);
    }
}

// All patterns of up to 4 letters in all texts of up to 9.
TEST(fxSLinearPattern, findsEveryShortPatternInEveryShortText) {
    for (unsigned int n = 1; n <= 4; ++n) {
        for (unsigned int number = 0; number < 1U << n; ++number) {
            const std::string bytes = lettersOf(number, n);
            const fxSLinearPattern pattern(stringOf(bytes));
            for (unsigned int length = 0; length <= 9; ++length) {
                for (unsigned int other = 0; other < 1U << length; ++other) {
                    const std::string text = lettersOf(other, length);
                    ASSERT_EQ(expectedStart(bytes, text), pattern.findBuffer(text.data(), length))
                        << bytes << " in " << text;
                }
            }
        }
    }
}

// Around the lengths at which a search looks at its text differently: 16, 32 and 64 bytes, and
// memmem's 256.
TEST(fxSLinearPattern, findsPatternsOfAllLengthsAtAllPlaces) {
    for (unsigned int n : {1u, 2u, 3u, 15u, 16u, 17u, 31u, 63u, 64u, 65u, 255u, 256u, 257u, 300u}) {
        std::string pattern(n, 'p');
        pattern.back() = 'q';
        for (unsigned int before = 0; before < 40; ++before) {
            for (unsigned int after : {0u, 1u, 14u, 15u, 16u, 17u}) {
                SCOPED_TRACE(testing::Message() << n << " after " << before);
                const std::string text =
                    std::string(before, 'p') + pattern + std::string(after, 'q');
                expectFound(static_cast<int>(before), pattern, text);
                expectFound(-1, pattern, std::string(before + n + after, 'p'));
            }
        }
    }
}

TEST(fxSLinearPattern, agreesWithAnotherSearchOnRandomTexts) {
    const unsigned int seed = 7204;
    std::mt19937 random(seed);
    for (unsigned int i = 0; i < 20000; ++i) {
        const unsigned int letters = 1 + random() % 3;
        const auto someText = [&](unsigned int n) {
            std::string text(n, ' ');
            for (char& c : text)
                c = static_cast<char>(0x7E + random() % letters);
            return text;
        };
        const std::string text = someText(random() % 400);
        std::string pattern = someText(1 + random() % (random() % 8 == 0 ? 200 : 12));
        if (random() % 2 == 0 && pattern.size() < text.size())
            pattern = text.substr(random() % (text.size() - pattern.size() + 1), pattern.size());
        ASSERT_EQ(expectedStart(pattern, text),
                  fxSLinearPattern(stringOf(pattern)).findBuffer(text.data(), lengthOf(text)))
            << "seed " << seed << ", case " << i;
    }
}

// Texts in which nearly every place looks like the pattern for a while.
TEST(fxSLinearPattern, findsThePatternAmongManyThatAreAlmostIt) {
    const unsigned int textLength = 1U << 16;
    for (unsigned int n : {2u, 20u, 63u, 64u, 200u, 256u, 257u, 5000u}) {
        for (unsigned int odd : {0u, 1u, n / 2, n - 1}) {
            SCOPED_TRACE(testing::Message() << n << " bytes, odd one at " << odd);
            std::string pattern(n, 'a');
            pattern[odd] = 'b';
            const std::string almost(textLength, 'a');
            expectFound(-1, pattern, almost);
            expectFound(static_cast<int>(textLength), pattern, almost + pattern);
            expectFound(1000, pattern, almost.substr(0, 1000) + pattern + almost);
        }
    }
}

TEST(fxSLinearPattern, readsNothingOutsideTheText) {
    for (unsigned int length : {1u, 2u, 15u, 16u, 17u, 33u, 64u, 100u, 300u}) {
        const GuardedText text(length);
        for (char* at : {text.atFront(), text.atBack()}) {
            std::memset(at, 'a', length);
            for (unsigned int n = 1; n <= length; ++n) {
                const std::string odd = std::string(n - 1, 'a') + "b";
                EXPECT_EQ(-1, fxSLinearPattern(stringOf(odd)).findBuffer(at, length));
                const std::string even(n, 'a');
                EXPECT_EQ(0, fxSLinearPattern(stringOf(even)).findBuffer(at, length));
            }
        }
    }
}

// The two others ask findBuffer.

TEST(fxSLinearPattern, theEndIsWhereTheVirtualFindBufferSaysPlusTheLength) {
    const struct {
        int place, end, result;
    } cases[] = {{-1, 0, 0}, {0, 3, 1}, {5, 8, 1}, {INT_MAX - 3, INT_MAX, 1}, {-2, 0, 0}};
    const char text[] = "no such thing";
    for (const auto& c : cases) {
        SCOPED_TRACE(c.place);
        const FixedPlace pattern(c.place);
        EXPECT_EQ(c.end, pattern.findEndBuffer(text, 7));
        EXPECT_EQ(1u, pattern.calls);
        EXPECT_EQ(text, pattern.lastText);
        EXPECT_EQ(7u, pattern.lastLength);

        int start = 99, end = 99;
        EXPECT_EQ(c.result, pattern.bracketBuffer(text, 9, start, end));
        EXPECT_EQ(c.place, start);
        EXPECT_EQ(c.end, end);
        EXPECT_EQ(2u, pattern.calls);
        EXPECT_EQ(9u, pattern.lastLength);
    }
}

// Very long texts.

TEST(fxSLinearPattern, onlyTheFirstIntMaxBytesAreSearched) {
    const std::size_t beyond = std::size_t(INT_MAX) + 4096;
    // Never written, so that all of it is the one page of zeros.
    char* text = static_cast<char*>(::mmap(nullptr, beyond, PROT_READ | PROT_WRITE,
                                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
    if (text == MAP_FAILED)
        GTEST_SKIP() << "there is no room for the text";
    const unsigned int length = static_cast<unsigned int>(beyond);
    const fxSLinearPattern pattern("ab");
    putAt(text, INT_MAX - 1, "ab");
    EXPECT_EQ(-1, pattern.findBuffer(text, length));
    EXPECT_EQ(0, pattern.findEndBuffer(text, length));
    putAt(text, INT_MAX - 2, "ab");
    EXPECT_EQ(INT_MAX - 2, pattern.findBuffer(text, length));
    EXPECT_EQ(INT_MAX, pattern.findEndBuffer(text, length));
    ::munmap(text, beyond);
}

// No block is that large. A sanitizer's allocator says something of its own, too.
TEST(fxSLinearPatternDeathTest, runningOutOfMemoryIsFatal) {
    for (const unsigned int n : {0xFFFFFFF0U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(n);
        EXPECT_EXIT(fxSLinearPattern("abc", n), testing::KilledBySignal(SIGABRT),
                    "out of memory\n$");
    }
}
