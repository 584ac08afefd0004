// The engine beside the slow matcher, over everything that is small and over
// much that is not.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "tests/support/compiled.h"
#include "tests/support/regErrors.h"
#include "tests/support/slowRegex.h"

namespace {

using Texts = std::vector<std::string>;

const unsigned long noLimit = ~0UL;

// Calls `use` with every text of exactly `length` bytes of `alphabet`.
template <class Use>
void eachText(const std::string& alphabet, unsigned int length, Use use) {
    std::string text(length, alphabet[0]);
    std::vector<std::size_t> digits(length, 0);
    for (;;) {
        use(text);
        unsigned int place = 0;
        while (place < length && ++digits[place] == alphabet.size()) {
            digits[place] = 0;
            text[place] = alphabet[0];
            ++place;
        }
        if (place == length)
            return;
        text[place] = alphabet[digits[place]];
    }
}

Texts textsUpTo(const std::string& alphabet, unsigned int longest) {
    Texts texts;
    for (unsigned int length = 0; length <= longest; ++length)
        eachText(alphabet, length, [&](const std::string& text) { texts.push_back(text); });
    return texts;
}

// Where a register points, as the slow matcher says it; -2 for anywhere else.
int offsetIn(const std::string& subject, const char* place) {
    if (!place)
        return -1;
    const char* const text = subject.c_str();
    return place >= text && place <= text + subject.size() ? static_cast<int>(place - text) : -2;
}

class Comparison {
public:
    // Compiles with both; the engine's program stays for the subjects.
    void take(const std::string& newPattern);

    // Runs both, which the last pattern has to have compiled for.
    void compare(const std::string& subject, unsigned long limit = noLimit);

    bool hasProgram() const { return engine != nullptr; }

    unsigned long patterns = 0;
    unsigned long programs = 0;
    unsigned long pairs = 0;
    unsigned long matches = 0;
    unsigned long expensive = 0;  // the slow matcher took over 500 steps for each byte
    unsigned long gaveUp = 0;
    unsigned int differences = 0;

private:
    bool sameProgram() const;
    bool sameHints() const;
    bool sameRegisters(const slowRegex::Match& match, const std::string& subject) const;

    void differ(const char* what, const std::string& subject = std::string()) {
        if (++differences <= 20)
            ADD_FAILURE() << what << " differs: pattern " << shown(pattern) << ", subject "
                          << shown(subject);
    }

    std::string pattern;
    slowRegex::Program slow;
    Compiled engine;
};

void Comparison::take(const std::string& newPattern) {
    pattern = newPattern;
    slow = slowRegex::compile(pattern);
    engine = compiled(pattern);
    ++patterns;
    programs += engine != nullptr;

    const Messages messages = takeRegErrors();
    if (slow.error.empty() ? !messages.empty() : messages != Messages{slow.error})
        differ("message");
    if ((engine != nullptr) != slow.error.empty()) {
        differ("whether it compiles");
        engine.reset();
    }
    if (engine && !sameProgram())
        differ("program");
    if (engine && !sameHints())
        differ("hint");
}

bool Comparison::sameProgram() const {
    return std::memcmp(engine->program, slow.bytes.data(), slow.bytes.size()) == 0;
}

bool Comparison::sameHints() const {
    const int must = engine->must ? static_cast<int>(engine->must - engine->program) : -1;
    return engine->startchar == slow.startchar && (engine->anchored != 0) == slow.anchored &&
           must == slow.must && engine->mustlen == slow.mustlen;
}

void Comparison::compare(const std::string& subject, unsigned long limit) {
    const slowRegex::Match match = slowRegex::match(slow, subject, limit);
    const int result = fxregexec(engine.get(), subject.c_str());
    if (match.gaveUp) {
        ++gaveUp;
        return;
    }
    ++pairs;
    matches += match.found;
    expensive += match.steps > 500 * (subject.size() + 1);
    if (result != (match.found ? 1 : 0))
        differ("result", subject);
    else if (match.found && !sameRegisters(match, subject))
        differ("register", subject);
}

bool Comparison::sameRegisters(const slowRegex::Match& match, const std::string& subject) const {
    for (unsigned int i = 0; i < fxregexp::groupCount; ++i) {
        if (offsetIn(subject, engine->startp[i]) != match.start[i] ||
            offsetIn(subject, engine->endp[i]) != match.end[i])
            return false;
    }
    return true;
}

// All patterns of one length with all subjects.
void compareAll(Comparison& comparison, unsigned int length, const Texts& subjects) {
    eachText("ab()|*+?.^$[]\\<>-\n", length, [&](const std::string& pattern) {
        comparison.take(pattern);
        if (!comparison.hasProgram())
            return;
        for (const std::string& subject : subjects)
            comparison.compare(subject);
    });
}

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

void print(const char* what, const Comparison& comparison) {
    std::printf("%s: %lu patterns, %lu compile; %lu pairs compared, %lu match", what,
                comparison.patterns, comparison.programs, comparison.pairs, comparison.matches);
    if (comparison.gaveUp > 0)
        std::printf(", %lu expensive, %lu left out", comparison.expensive, comparison.gaveUp);
    std::puts("");
}

}  // namespace

TEST(fxRegEngineExhaustive, allSmallPatternsAndSubjectsGiveTheSame) {
    takeRegErrors();
    Comparison comparison;
    if (isFullRun()) {
        const Texts subjects = textsUpTo("ab ", 4);
        for (unsigned int length = 0; length <= 4; ++length)
            compareAll(comparison, length, subjects);
        compareAll(comparison, 5, textsUpTo("ab ", 3));
    } else {
        const Texts subjects = textsUpTo("ab ", 4);
        for (unsigned int length = 0; length <= 3; ++length)
            compareAll(comparison, length, subjects);
        compareAll(comparison, 4, textsUpTo("ab ", 1));
    }
    print("small patterns", comparison);
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
    Comparison comparison;
    const unsigned int rounds = isFullRun() ? 200000 : 3000;
    for (unsigned int round = 0; round < rounds; ++round) {
        comparison.take(patterns.next());
        if (!comparison.hasProgram())
            continue;
        for (unsigned int i = 0; i < 6; ++i)
            comparison.compare(randomSubject(random, 8U << i), 200000);
    }
    print("random patterns", comparison);
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
    Comparison comparison;
    const unsigned int rounds = isFullRun() ? 200000 : 6000;
    for (unsigned int round = 0; round < rounds; ++round) {
        comparison.take(patterns.next());
        if (!comparison.hasProgram())
            continue;
        for (unsigned int i = 0; i < 7; ++i)
            comparison.compare(patterns.subject(12U << i), 100000);
    }
    print("long patterns", comparison);
    EXPECT_EQ(0U, comparison.differences);
    EXPECT_EQ(Messages(), takeRegErrors());
    EXPECT_LE(rounds, comparison.matches);
    EXPECT_LE(rounds, comparison.pairs - comparison.matches);
}
