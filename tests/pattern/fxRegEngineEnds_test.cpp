// fxRegEngineEnds_test.cpp - places that a search skips to, and where a subject ends: nothing
// behind its NUL is read.

#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "tests/support/compiled.h"
#include "tests/support/pageEnd.h"

namespace {

// A pattern, what it matches, and what only begins like that. Each is sought in a way of its own.
const struct Sought {
    const char* pattern;
    const char* text;
    const char* decoy;
} soughts[] = {
    {"q", "q", "-"},
    {"ab", "ab", "a-"},
    {"abc", "abc", "ab-"},
    {"abcd", "abcd", "abc-"},
    {"abcdef", "abcdef", "abcde-"},
    {"a[bc]d", "acd", "ac-"},
    {"[ab]cd", "bcd", "bc-"},
    {"(abc|xyz)d", "xyzd", "xyz-"},
    {"(ab|cd)+e", "cde", "cd-"},
    {"a.c[0-9]", "a-c5", "a-c-"},
    {"[a-m]z", "kz", "k-"},
    {"[a-m]+[0-9]", "k5", "-"},
    {"[^-]z", "kz", "k-"},
    {"k*z", "kz", "k-"},
    {"\\<abc", "abc", "ab-"},
};

// `n` bytes without a match.
std::string without(const Sought& sought, std::size_t n) {
    std::string text;
    while (text.size() < n)
        text += std::string(1 + text.size() % 5, '-') + sought.decoy + "-";
    return text.substr(text.size() - n);
}

std::string spanOf(std::size_t start, std::size_t length) {
    return "0:" + std::to_string(start) + "-" + std::to_string(start + length);
}

// The whole match of `program` in `subject`.
std::string wholeOf(fxregexp& program, const char* subject) {
    return fxregexec(&program, subject) == 1
               ? groupsOf(program, subject).substr(0, groupsOf(program, subject).find(' '))
               : "none";
}

}  // namespace

TEST(fxRegEngineEnds, aMatchIsFoundAtEveryPlace) {
    PageEnd room(8192);
    for (const Sought& sought : soughts) {
        const Compiled program = compiled(sought.pattern);
        const std::string text = sought.text;
        for (std::size_t place = 0; place < 400; place += place < 90 ? 1 : 37) {
            for (const std::size_t behind : {0, 1, 2, 3, 13, 14, 15, 16, 17, 40, 300}) {
                const std::string subject =
                    without(sought, place) + text + std::string(behind, '-');
                ASSERT_EQ(spanOf(place, text.size()), wholeOf(*program, room.putText(subject)))
                    << sought.pattern << ", " << behind << " bytes behind";
            }
        }
    }
}

// Where a byte was far it is sought in blocks from then on.
TEST(fxRegEngineEnds, aByteThatIsFarIsFoundAtEveryPlace) {
    PageEnd room(8192);
    for (const char* pattern : {"q", "q[0-9]*", "[q]"}) {
        const Compiled program = compiled(pattern);
        for (unsigned int round = 0; round < 2; ++round) {
            for (std::size_t place = 1500; place < 1800; ++place) {
                const std::string before(place, '-');
                ASSERT_EQ(spanOf(place, 1), wholeOf(*program, room.putText(before + "q")));
                ASSERT_EQ(spanOf(place, 1),
                          wholeOf(*program, room.putText(before + "q" + std::string(200, '-'))));
                ASSERT_EQ("none", wholeOf(*program, room.putText(before)));
            }
        }
    }
}

// It lies in two of the pieces that are looked at, or fills more than one.
TEST(fxRegEngineEnds, aNeededTextOfAnyLengthIsFound) {
    PageEnd room(8192);
    for (std::size_t length = 1; length < 700; length += length < 20 ? 1 : 9) {
        const std::string text = std::string(length - 1, 'n') + "m";
        const Compiled program = compiled("[ab]*" + text);
        for (const std::size_t place : {0, 1, 100, 200, 255, 256, 257, 300, 511, 700, 1300}) {
            const std::string subject = std::string(place, '-') + text;
            ASSERT_EQ(spanOf(place, length), wholeOf(*program, room.putText(subject)))
                << length << " bytes at " << place;
            ASSERT_EQ("none",
                      wholeOf(*program, room.putText(subject.substr(0, place + length - 1))))
                << length << " bytes at " << place;
        }
    }
}

TEST(fxRegEngineEnds, whatIsBehindTheEndIsNotFound) {
    for (const Sought& sought : soughts) {
        const Compiled program = compiled(sought.pattern);
        for (std::size_t length = 0; length < 600; length += length < 90 ? 1 : 31) {
            const std::string subject = without(sought, length) + '\0' + sought.text + "--";
            ASSERT_EQ("none", wholeOf(*program, subject.c_str()))
                << sought.pattern << ", " << length << " bytes";
        }
    }
}

TEST(fxRegEngineEnds, whatIsBehindTheEndIsNotRead) {
    PageEnd room(8192);
    for (const Sought& sought : soughts) {
        const Compiled program = compiled(sought.pattern);
        for (std::size_t length = 0; length < 600; length += length < 90 ? 1 : 31)
            ASSERT_EQ("none", wholeOf(*program, room.putText(without(sought, length))))
                << sought.pattern << ", " << length << " bytes";
    }
}
