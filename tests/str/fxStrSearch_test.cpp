#include <iostream>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStr.h"
#include "tests/support/observe.h"

namespace {
using namespace std::string_literals;

// What every search over `text` for the bytes of `set` returns from `pos`.
struct Search {
    std::string text, set;
    unsigned int pos, next, skip, nextR, skipR;
};

unsigned int sizeOf(const std::string& bytes) { return static_cast<unsigned int>(bytes.size()); }

void expectSearches(const Search& c) {
    SCOPED_TRACE(testing::Message() << testing::PrintToString(c.set) << " in "
                                    << testing::PrintToString(c.text) << " from " << c.pos);
    const fxStr s = stringOf(c.text);
    EXPECT_EQ(c.next, s.next(c.pos, c.set.c_str(), sizeOf(c.set)));
    EXPECT_EQ(c.skip, s.skip(c.pos, c.set.c_str(), sizeOf(c.set)));
    EXPECT_EQ(c.nextR, s.nextR(c.pos, c.set.c_str(), sizeOf(c.set)));
    EXPECT_EQ(c.skipR, s.skipR(c.pos, c.set.c_str(), sizeOf(c.set)));
    if (c.set.find('\0') == std::string::npos) {
        EXPECT_EQ(c.next, s.next(c.pos, c.set.c_str()));
        EXPECT_EQ(c.skip, s.skip(c.pos, c.set.c_str()));
        EXPECT_EQ(c.nextR, s.nextR(c.pos, c.set.c_str()));
        EXPECT_EQ(c.skipR, s.skipR(c.pos, c.set.c_str()));
    }
    if (c.set.size() == 1) {
        EXPECT_EQ(c.next, s.next(c.pos, c.set[0]));
        EXPECT_EQ(c.skip, s.skip(c.pos, c.set[0]));
        EXPECT_EQ(c.nextR, s.nextR(c.pos, c.set[0]));
        EXPECT_EQ(c.skipR, s.skipR(c.pos, c.set[0]));
    }
}

// One step of a tokenising walk: what it returns and where it leaves `pos`.
struct Step {
    std::string token;
    unsigned int pos;
};

struct Walk {
    std::string text, set;
    unsigned int start;
    std::vector<Step> steps;
};

using TokenOfSet = fxStr (fxStr::*)(unsigned int&, const char*, unsigned int) const;
using TokenOfByte = fxStr (fxStr::*)(unsigned int&, char) const;

void expectWalk(const Walk& c, TokenOfSet ofSet, TokenOfByte ofByte) {
    SCOPED_TRACE(testing::Message() << testing::PrintToString(c.text) << " by "
                                    << testing::PrintToString(c.set) << " from " << c.start);
    const fxStr s = stringOf(c.text);
    unsigned int pos = c.start;
    unsigned int bytePos = c.start;
    for (const Step& step : c.steps) {
        EXPECT_EQ(step.token, bytesOf((s.*ofSet)(pos, c.set.c_str(), sizeOf(c.set))));
        EXPECT_EQ(step.pos, pos);
        if (c.set.size() == 1) {
            EXPECT_EQ(step.token, bytesOf((s.*ofByte)(bytePos, c.set[0])));
            EXPECT_EQ(step.pos, bytePos);
        }
    }
    EXPECT_EQ(c.text, bytesOf(s));
}
}  // namespace

// Searching

TEST(fxStrSearch, searchesStopWhereTheTableSays) {
    const Search cases[] = {
        // One byte, at every position and past the end.
        {"abcab", "a", 0, 0, 1, 0, 0},
        {"abcab", "a", 1, 3, 1, 1, 0},
        {"abcab", "a", 2, 3, 2, 1, 2},
        {"abcab", "a", 3, 3, 4, 1, 3},
        {"abcab", "a", 4, 5, 4, 4, 3},
        {"abcab", "a", 5, 5, 5, 4, 5},
        {"abcab", "a", 6, 5, 5, 4, 5},
        {"abcab", "a", 0xFFFFFFFFu, 5, 5, 4, 5},
        // Several bytes.
        {"abcab", "ab", 0, 0, 2, 0, 0},
        {"abcab", "ab", 2, 3, 2, 2, 0},
        {"abcab", "ab", 3, 3, 5, 2, 3},
        {"abcab", "ab", 5, 5, 5, 5, 3},
        {"abcab", "ba", 5, 5, 5, 5, 3},
        // None of the text, all of it.
        {"abcab", "xyz", 0, 5, 0, 0, 0},
        {"abcab", "xyz", 3, 5, 3, 0, 3},
        {"abcab", "xyz", 5, 5, 5, 0, 5},
        {"aaa", "a", 0, 0, 3, 0, 0},
        {"aaa", "a", 3, 3, 3, 3, 0},
        {"abcab", "abc", 5, 5, 5, 5, 0},
        // The shortest texts.
        {"", "a", 0, 0, 0, 0, 0},
        {"", "a", 1, 0, 0, 0, 0},
        {"a", "a", 0, 0, 1, 0, 0},
        {"a", "a", 1, 1, 1, 1, 0},
        {"a", "b", 0, 1, 0, 0, 0},
        {"a", "b", 1, 1, 1, 0, 1},
        // A set without bytes.
        {"ab", "", 0, 2, 0, 0, 0},
        {"ab", "", 1, 2, 1, 0, 1},
        {"ab", "", 2, 2, 2, 0, 2},
        // High bytes.
        {"\xff\x7f\xff", "\xff", 0, 0, 1, 0, 0},
        {"\xff\x7f\xff", "\xff", 1, 2, 1, 1, 0},
        {"\xff\x7f\xff", "\xff", 3, 3, 3, 3, 2},
        {"\xff\x7f\xff", "\x80\x7f", 0, 1, 0, 0, 0},
        {"\xff\x7f\xff", "\x80\x7f", 3, 3, 3, 2, 3},
    };
    for (const Search& c : cases)
        expectSearches(c);
}

TEST(fxStrSearch, theExamplesOfTheContractHold) {
    const fxStr s("abcab");
    EXPECT_EQ(5u, s.next(s.length(), 'x'));
    EXPECT_EQ(0u, s.nextR(0, 'x'));
    EXPECT_EQ(4u, s.nextR(5, 'a'));
}

TEST(fxStrSearch, nulIsAByteLikeAnyOther) {
    const Search cases[] = {
        {"a\0b"s, "\0"s, 0, 1, 0, 0, 0},   {"a\0b"s, "\0"s, 1, 1, 2, 0, 1},
        {"a\0b"s, "\0"s, 2, 3, 2, 2, 1},   {"a\0b"s, "\0"s, 3, 3, 3, 2, 3},
        {"a\0b"s, "b", 0, 2, 0, 0, 0},     {"a\0b"s, "b", 3, 3, 3, 3, 2},
        {"a\0,b"s, "\0,"s, 0, 1, 0, 0, 0}, {"a\0,b"s, "\0,"s, 1, 1, 3, 0, 1},
        {"a\0,b"s, "\0,"s, 4, 4, 4, 3, 4}, {"a\0,b"s, ",\0"s, 3, 4, 3, 3, 1},
        {"\0\0"s, "\0"s, 0, 0, 2, 0, 0},   {"\0\0"s, "\0"s, 2, 2, 2, 2, 0},
    };
    for (const Search& c : cases)
        expectSearches(c);
}

TEST(fxStrSearch, aSetOfTextBytesDoesNotMatchANul) {
    const Search cases[] = {
        {"\0,"s, ",", 0, 1, 0, 0, 0},
        {"\0,"s, ",", 2, 2, 2, 2, 1},
        {"\0,"s, ",;", 0, 1, 0, 0, 0},
        {"\0,"s, ",;", 2, 2, 2, 2, 1},
    };
    for (const Search& c : cases)
        expectSearches(c);
}

TEST(fxStrSearch, theTerminatingNulIsNeverFoundNorSkipped) {
    const Search cases[] = {
        {"ab", "\0"s, 0, 2, 0, 0, 0},
        {"ab", "\0"s, 2, 2, 2, 0, 2},
        {"", "\0"s, 0, 0, 0, 0, 0},
    };
    for (const Search& c : cases)
        expectSearches(c);
}

TEST(fxStrSearch, aGivenCountCutsTheSet) {
    const fxStr s("cba");
    EXPECT_EQ(2u, s.next(0, "abc", 1));
    EXPECT_EQ(1u, s.next(0, "abc", 2));
    EXPECT_EQ(0u, s.next(0, "abc", 3));
    EXPECT_EQ(0u, s.skip(0, "abc", 2));
    EXPECT_EQ(1u, s.skip(0, "cab", 1));
    EXPECT_EQ(3u, s.nextR(3, "abc", 1));
    EXPECT_EQ(2u, s.skipR(3, "abc", 1));
    EXPECT_EQ(1u, s.skipR(3, "abc", 2));

    const char unterminated[] = {'x', 'b'};
    EXPECT_EQ(1u, s.next(0, unterminated, 2));
}

TEST(fxStrSearch, aBackwardResultIsTheNextPosition) {
    const fxStr s("abcab");
    unsigned int pos = s.length();
    pos = s.nextR(pos, 'a');
    EXPECT_EQ(4u, pos);
    pos = s.skipR(pos, 'a');
    EXPECT_EQ(3u, pos);
    pos = s.nextR(pos, 'a');
    EXPECT_EQ(1u, pos);
    pos = s.skipR(pos, 'a');
    EXPECT_EQ(0u, pos);
}

TEST(fxStrSearch, longTextsAndEmbeddedNulsAreSearchedToTheirEnds) {
    const std::string nuls(40, '\0'), as(40, 'a');
    const Search cases[] = {
        {"x" + as, "x", 41, 41, 41, 1, 41},
        {"x" + as, "x", 0, 0, 1, 0, 0},
        {"x" + as, "x", 1, 41, 1, 1, 0},
        {as + "x" + as, "x", 0, 40, 0, 0, 0},
        {as + "x" + as, "x", 81, 81, 81, 41, 81},
        {as + "x" + as, "xa", 81, 81, 81, 81, 0},
        {nuls + "x" + nuls, "x", 0, 40, 0, 0, 0},
        {nuls + "x" + nuls, "yx", 0, 40, 0, 0, 0},
        {nuls + "x" + nuls, "yx", 41, 81, 41, 41, 40},
        {nuls + "x" + nuls, "yx", 81, 81, 81, 41, 81},
        {nuls + as, "xy", 0, 80, 0, 0, 0},
    };
    for (const Search& c : cases)
        expectSearches(c);
}

// Tokenising

TEST(fxStrSearch, tokenWalksForwardOverRunsOfDelimiters) {
    const Walk cases[] = {
        {"a,,b", ",", 0, {{"a", 3}, {"b", 4}, {"", 4}, {"", 4}}},
        {"ab", ",", 0, {{"ab", 2}, {"", 2}}},
        {"", ",", 0, {{"", 0}, {"", 0}}},
        {",", ",", 0, {{"", 1}, {"", 1}}},
        {",,a", ",", 0, {{"", 2}, {"a", 3}, {"", 3}}},
        {"a,,", ",", 0, {{"a", 3}, {"", 3}}},
        {"a,;b;,c", ",;", 0, {{"a", 3}, {"b", 6}, {"c", 7}, {"", 7}}},
        {"a,b", "", 0, {{"a,b", 3}, {"", 3}}},
        {"abc,d", ",", 1, {{"bc", 4}, {"d", 5}}},
        {"a,,b", ",", 1, {{"", 3}, {"b", 4}}},
        {"ab", ",", 2, {{"", 2}}},
        {"ab", ",", 3, {{"", 2}}},
        {"ab", ",", 0xFFFFFFFFu, {{"", 2}}},
        {"a\0\0b"s, "\0"s, 0, {{"a", 3}, {"b", 4}, {"", 4}}},
        {"a\0,b"s, ",", 0, {{"a\0"s, 3}, {"b", 4}}},
        {"a\0,b"s, ",\0"s, 0, {{"a", 3}, {"b", 4}}},
        {"a\xff\xff"
         "b",
         "\xff",
         0,
         {{"a", 3}, {"b", 4}}},
    };
    for (const Walk& c : cases)
        expectWalk(c, &fxStr::token, &fxStr::token);
}

TEST(fxStrSearch, tokenRWalksBackwardOverRunsOfDelimiters) {
    const Walk cases[] = {
        {"a,,b", ",", 4, {{"b", 1}, {"a", 0}, {"", 0}, {"", 0}}},
        {"ab", ",", 2, {{"ab", 0}, {"", 0}}},
        {"", ",", 0, {{"", 0}}},
        {",", ",", 1, {{"", 0}, {"", 0}}},
        {",a", ",", 2, {{"a", 0}, {"", 0}}},
        {"a,,", ",", 3, {{"", 1}, {"a", 0}, {"", 0}}},
        {"a,;b;,c", ",;", 7, {{"c", 4}, {"b", 1}, {"a", 0}}},
        {"a,b", "", 3, {{"a,b", 0}, {"", 0}}},
        {"a,bcd", ",", 4, {{"bc", 1}, {"a", 0}}},
        {"a,b", ",", 0, {{"", 0}}},
        {"a,b", ",", 4, {{"b", 1}, {"a", 0}}},
        {"a,b", ",", 0xFFFFFFFFu, {{"b", 1}, {"a", 0}}},
        {"a\0\0b"s, "\0"s, 4, {{"b", 1}, {"a", 0}}},
        {"a,\0b"s, ",", 4, {{"\0b"s, 1}, {"a", 0}}},
        {"a\xff\xff"
         "b",
         "\xff",
         4,
         {{"b", 1}, {"a", 0}}},
    };
    for (const Walk& c : cases)
        expectWalk(c, &fxStr::tokenR, &fxStr::tokenR);
}

TEST(fxStrSearch, tokenTakesTheWholeSetWhenNoCountIsGiven) {
    const fxStr s("a;,b");
    unsigned int pos = 0;
    EXPECT_EQ("a", bytesOf(s.token(pos, ",;")));
    EXPECT_EQ(3u, pos);
    pos = 4;
    EXPECT_EQ("b", bytesOf(s.tokenR(pos, ",;")));
    EXPECT_EQ(1u, pos);
}

// Against loops that are too simple to be wrong, over random texts.

namespace {
struct Naive {
    std::string text, set;

    bool has(unsigned int i) const { return set.find(text[i]) != std::string::npos; }

    unsigned int forward(unsigned int pos, bool wanted) const {
        while (pos < text.size() && has(pos) != wanted)
            ++pos;
        return pos;
    }

    unsigned int backward(unsigned int pos, bool wanted) const {
        while (pos > 0 && has(pos - 1) != wanted)
            --pos;
        return pos;
    }

    std::string token(unsigned int& pos) const {
        const unsigned int end = forward(pos, true);
        std::string result = text.substr(pos, end - pos);
        pos = forward(end, false);
        return result;
    }

    std::string tokenR(unsigned int& pos) const {
        const unsigned int start = backward(pos, true);
        std::string result = text.substr(start, pos - start);
        pos = backward(start, false);
        return result;
    }
};

std::string randomBytes(std::mt19937& random, std::size_t most) {
    const char alphabet[] = {'a', 'b', '\0', '\xff', '\x80'};
    std::string bytes(random() % (most + 1), '\0');
    for (char& byte : bytes)
        byte = alphabet[random() % sizeof alphabet];
    return bytes;
}

void expectSameTokens(const Naive& naive, unsigned int start) {
    const fxStr s = stringOf(naive.text);
    const char* set = naive.set.c_str();
    unsigned int pos = start;
    unsigned int naivePos = start;
    EXPECT_EQ(naive.token(naivePos), bytesOf(s.token(pos, set, sizeOf(naive.set))));
    EXPECT_EQ(naivePos, pos);
    pos = naivePos = start;
    EXPECT_EQ(naive.tokenR(naivePos), bytesOf(s.tokenR(pos, set, sizeOf(naive.set))));
    EXPECT_EQ(naivePos, pos);
    if (naive.set.size() != 1)
        return;
    pos = naivePos = start;
    EXPECT_EQ(naive.token(naivePos), bytesOf(s.token(pos, set[0])));
    EXPECT_EQ(naivePos, pos);
    pos = naivePos = start;
    EXPECT_EQ(naive.tokenR(naivePos), bytesOf(s.tokenR(pos, set[0])));
    EXPECT_EQ(naivePos, pos);
}
}  // namespace

TEST(fxStrSearch, searchesAndTokensEqualNaiveLoops) {
    const unsigned int seed = 20210917;
    std::cout << "seed " << seed << '\n';
    std::mt19937 random(seed);
    for (int trial = 0; trial < 3000 && !HasFailure(); ++trial) {
        SCOPED_TRACE(testing::Message() << "seed " << seed << ", trial " << trial);
        const Naive naive = {randomBytes(random, trial % 10 ? 12 : 200), randomBytes(random, 3)};
        // A count of 0 stands for strlen, which is 0 as well for this set.
        for (unsigned int i = 0; i <= 12 && i <= naive.text.size(); ++i) {
            const unsigned int pos = i % 2 ? sizeOf(naive.text) - i : i;
            expectSearches({naive.text, naive.set, pos, naive.forward(pos, true),
                            naive.forward(pos, false), naive.backward(pos, true),
                            naive.backward(pos, false)});
            expectSameTokens(naive, pos);
        }
    }
}
