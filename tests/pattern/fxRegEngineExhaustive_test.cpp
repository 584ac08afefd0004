// The engine beside the slow matcher, over everything that is small and over
// much that is not.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/regErrors.h"
#include "tests/support/regexComparison.h"

namespace {

// More of them, for as long as it takes.
bool isFullRun() {
    const char* wish = std::getenv("KELVOFXDS_EXHAUSTIVE");
    return wish && std::strcmp(wish, "1") == 0;
}

// The same in every run: the standard's engines are, its distributions are not.
class Random {
public:
    explicit Random(unsigned int seed) : engine(seed) {}
    unsigned int below(unsigned int n) { return static_cast<unsigned int>(engine()) % n; }
    bool oneIn(unsigned int n) { return below(n) == 0; }

private:
    std::mt19937 engine;
};

// Patterns by the grammar, most of which compile. Many end in what subjects
// seldom have, so that everything is tried.
class Patterns {
public:
    explicit Patterns(Random& source) : random(source) {}

    std::string next() {
        groups = 0;
        std::string pattern = random.oneIn(8) ? "^" : "";
        pattern += sequence(3);
        if (random.oneIn(10))
            pattern += (random.oneIn(2) ? "|" : "\n") + sequence(2);
        const char* const endings[] = {"c", "[c]", "[c]", "[c]", "$", "", "\\>", "c$"};
        return pattern + endings[random.below(8)];
    }

private:
    std::string alternatives(unsigned int depth) {
        std::string text = sequence(depth);
        while (random.oneIn(2))
            text += (random.oneIn(8) ? "\n" : "|") + sequence(depth);
        return text;
    }

    std::string sequence(unsigned int depth) {
        std::string text;
        for (unsigned int pieces = 1 + random.below(3); pieces > 0; --pieces)
            text += piece(depth);
        return text;
    }

    std::string piece(unsigned int depth) {
        const std::string atom = depth > 0 && groups < 9 && random.oneIn(2) ? group(depth) : leaf();
        const char* const repetitions[] = {"*", "+", "?", "", "*", "+"};
        return atom + repetitions[random.below(6)];
    }

    std::string group(unsigned int depth) {
        ++groups;
        return "(" + alternatives(depth - 1) + ")";
    }

    std::string leaf() {
        const char* const common[] = {"a", "b", ".", "[ab]", "ab", "a"};
        const char* const rare[] = {"[^a]", "[^b ]", " ",  "\\<", "\\>",
                                    "^",    "$",     "ba", "aab", "\\."};
        return random.oneIn(6) ? rare[random.below(10)] : common[random.below(6)];
    }

    Random& random;
    unsigned int groups = 0;
};

// Mostly one byte, so that there is much to try.
std::string randomSubject(Random& random, unsigned int longest) {
    std::string subject;
    const unsigned int otherOneIn = 2 + random.below(20);
    for (unsigned int length = random.below(longest + 1); length > 0; --length)
        subject += random.oneIn(otherOneIn) ? "bb b  "[random.below(6)] : 'a';
    if (random.oneIn(4))
        subject += "c";
    return subject;
}

// Patterns of words, classes and repetitions in usual places, many of them long.
class LongPatterns {
public:
    explicit LongPatterns(Random& source) : random(source) {}

    std::string next() {
        words.clear();
        std::string pattern = random.oneIn(10) ? "^" : random.oneIn(8) ? "\\<" : "";
        const unsigned int pieces = random.oneIn(6) ? 20 + random.below(20) : 1 + random.below(5);
        unsigned int groups = 0;
        for (unsigned int i = 0; i < pieces; ++i)
            pattern += groups < 9 && random.oneIn(3) ? group(++groups) : leaf();
        const char* const endings[] = {"", "", "", "$", "\\>", ".*$"};
        return pattern + endings[random.below(6)];
    }

    // Words of the last pattern, whole and cut, and what classes have, in others.
    std::string subject(unsigned int longest) {
        std::string text;
        const unsigned int length = random.below(longest + 1), rare = 1 + random.below(40);
        while (text.size() < length) {
            if (words.empty() || !random.oneIn(rare))
                text += "gh =-0 g"[random.below(8)];
            else
                text += part(words[random.below(static_cast<unsigned int>(words.size()))]);
        }
        return text;
    }

private:
    std::string part(const std::string& word) {
        const auto length = static_cast<unsigned int>(word.size());
        return random.oneIn(3) ? word.substr(0, random.below(length) + 1) : word;
    }

    std::string word() {
        std::string letters;
        for (unsigned int n = 1 + random.below(random.oneIn(8) ? 24 : 5); n > 0; --n)
            letters += "abcdefgh=0"[random.below(10)];
        words.push_back(letters);
        return letters;
    }

    std::string group(unsigned int) {
        std::string text = "(" + leaf();
        for (unsigned int others = random.below(random.oneIn(10) ? 20 : 4); others > 0; --others)
            text += "|" + (random.oneIn(3) ? word() + leaf() : word());
        const char* const behind[] = {")", ")", ")", ")?", ")*", ")+"};
        return text + behind[random.below(6)];
    }

    std::string leaf() {
        const char* const classes[] = {"[a-f]", "[0-9]", "[a-h0-9=]", "[^ ]", "[^=]",
                                       "[ab]",  ".",     "[-=]",      "[gh]", "[^a-z]"};
        const char* const repetitions[] = {"+", "*", "", "+", "?"};
        if (random.oneIn(3))
            return word();
        const unsigned int kind = random.below(10);
        words.push_back(kind % 2 != 0 ? "0=" : "ab");
        return classes[kind] + std::string(repetitions[random.below(5)]);
    }

    Random& random;
    Texts words;
};

}  // namespace

TEST(fxRegEngineExhaustive, allSmallPatternsAndSubjectsGiveTheSame) {
    takeRegErrors();
    RegexComparison comparison;
    if (isFullRun()) {
        const Texts subjects = textsUpTo("ab ", 4);
        for (unsigned int length = 0; length <= 4; ++length)
            comparison.compareAll(smallPatternBytes, length, subjects);
        comparison.compareAll(smallPatternBytes, 5, textsUpTo("ab ", 3));
    } else {
        const Texts subjects = textsUpTo("ab ", 4);
        for (unsigned int length = 0; length <= 3; ++length)
            comparison.compareAll(smallPatternBytes, length, subjects);
        comparison.compareAll(smallPatternBytes, 4, textsUpTo("ab ", 1));
    }
    comparison.print("small patterns");
    EXPECT_EQ(0U, comparison.differences);
    EXPECT_EQ(Messages(), takeRegErrors());
    EXPECT_LE(isFullRun() ? 5000000U : 200000U, comparison.pairs);
}

TEST(fxRegEngineExhaustive, expensiveMatchesGiveTheSame) {
    const unsigned int seed = 20240611;
    std::printf("seed %u\n", seed);
    Random random(seed);
    Patterns patterns(random);
    takeRegErrors();
    RegexComparison comparison;
    const unsigned int rounds = isFullRun() ? 200000 : 3000;
    for (unsigned int round = 0; round < rounds; ++round) {
        comparison.take(patterns.next());
        if (!comparison.hasProgram())
            continue;
        for (unsigned int i = 0; i < 6; ++i)
            comparison.compare(randomSubject(random, 8U << i), 200000);
    }
    comparison.print("random patterns");
    EXPECT_EQ(0U, comparison.differences);
    EXPECT_EQ(Messages(), takeRegErrors());
    // What the engine does about cost has been at work often enough.
    EXPECT_LE(rounds / 40, comparison.expensive);
    EXPECT_LE(rounds / 2, comparison.matches);
}

// Texts long enough for everything by which places are found at which matches
// can begin, and programs too long to be seen through.
TEST(fxRegEngineExhaustive, longPatternsInLongSubjectsGiveTheSame) {
    const unsigned int seed = 20250303;
    std::printf("seed %u\n", seed);
    Random random(seed);
    LongPatterns patterns(random);
    takeRegErrors();
    RegexComparison comparison;
    const unsigned int rounds = isFullRun() ? 200000 : 6000;
    for (unsigned int round = 0; round < rounds; ++round) {
        comparison.take(patterns.next());
        if (!comparison.hasProgram())
            continue;
        for (unsigned int i = 0; i < 7; ++i)
            comparison.compare(patterns.subject(12U << i), 100000);
    }
    comparison.print("long patterns");
    EXPECT_EQ(0U, comparison.differences);
    EXPECT_EQ(Messages(), takeRegErrors());
    EXPECT_LE(rounds, comparison.matches);
    EXPECT_LE(rounds, comparison.pairs - comparison.matches);
}
