// regexComparison.h - counting what the engine and the slow matcher say of many patterns.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/compiled.h"
#include "tests/support/regexPair.h"

using Texts = std::vector<std::string>;

/// Calls `use` with every text of exactly `length` bytes of `alphabet`.
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

inline Texts textsUpTo(const std::string& alphabet, unsigned int longest) {
    Texts texts;
    for (unsigned int length = 0; length <= longest; ++length)
        eachText(alphabet, length, [&](const std::string& text) { texts.push_back(text); });
    return texts;
}

/// Compares, counts, and says as failures of the test what is not the same.
class RegexComparison {
public:
    // Compiles with both; the programs stay for the subjects.
    void take(const std::string& newPattern) {
        pattern = newPattern;
        differ(pair.take(pattern));
        ++patterns;
        programs += pair.hasProgram() ? 1 : 0;
    }

    bool hasProgram() const { return pair.hasProgram(); }

    // Runs both, which the last pattern has to have compiled for.
    void compare(const std::string& subject, unsigned long limit = RegexPair::noLimit) {
        const char* difference = pair.search(subject, limit);
        const slowRegex::Match& match = pair.match();
        if (match.gaveUp) {
            ++gaveUp;
            return;
        }
        if (!difference && match.found)
            difference = pair.substitute(everyGroup, subject);
        ++pairs;
        matches += match.found ? 1 : 0;
        expensive += match.steps > 500 * (subject.size() + 1) ? 1 : 0;
        differ(difference, subject);
    }

    /// All patterns of one length over `alphabet` with all subjects.
    void compareAll(const std::string& alphabet, unsigned int length, const Texts& subjects) {
        eachText(alphabet, length, [&](const std::string& text) {
            take(text);
            if (!hasProgram())
                return;
            for (const std::string& subject : subjects)
                compare(subject);
        });
    }

    void print(const char* what) const {
        std::printf("%s: %lu patterns, %lu compile; %lu pairs compared, %lu match", what, patterns,
                    programs, pairs, matches);
        if (gaveUp > 0)
            std::printf(", %lu expensive, %lu left out", expensive, gaveUp);
        std::puts("");
    }

    unsigned long patterns = 0;
    unsigned long programs = 0;
    unsigned long pairs = 0;
    unsigned long matches = 0;
    unsigned long expensive = 0;  // the slow matcher took over 500 steps for each byte
    unsigned long gaveUp = 0;
    unsigned long differences = 0;

private:
    void differ(const char* what, const std::string& subject = std::string()) {
        if (what && ++differences <= 20)
            ADD_FAILURE() << what << " differs: pattern " << shown(pattern) << ", subject "
                          << shown(subject);
    }

    const std::string everyGroup = "&\\1\\2<\\3\\4\\5\\6\\7\\8\\9>\\0\\&\\\\\\n";
    std::string pattern;
    RegexPair pair;
};

/// With every operator of the language, and two letters.
const char* const smallPatternBytes = "ab()|*+?.^$[]\\<>-\n";
