// What a match may cost: no stack that grows with the subject, no memory where
// it is cheap, and an end in sight where trying everything has none.

#include <pthread.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "tests/support/compiled.h"
#include "tests/support/heapCalls.h"
#include "tests/support/regErrors.h"

namespace {

const unsigned int mebibyte = 1 << 20;

// "abab...", `n` bytes.
std::string alternating(unsigned int n) {
    std::string text(n, 'a');
    for (unsigned int i = 1; i < n; i += 2)
        text[i] = 'b';
    return text;
}

struct Question {
    std::string pattern, subject;
    std::string answer;
};

void* answer(void* argument) {
    auto* question = static_cast<Question*>(argument);
    question->answer = found(question->pattern, question->subject);
    return nullptr;
}

// Runs work(argument) in a thread with a stack of that size. False if there is no
// such thread.
bool runOnStackOf(std::size_t bytes, void* (*work)(void*), void* argument) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    const int refused = pthread_attr_setstacksize(&attributes, bytes);
    pthread_t thread;
    const int failed = refused ? refused : pthread_create(&thread, &attributes, work, argument);
    pthread_attr_destroy(&attributes);
    return !failed && pthread_join(thread, nullptr) == 0;
}

// What found() says on a stack of 256 KiB.
std::string foundOnSmallStack(const std::string& pattern, const std::string& subject) {
    Question question = {pattern, subject, std::string()};
    return runOnStackOf(256 * 1024, answer, &question) ? question.answer : "no thread";
}

void* searchAgain(void* argument) {
    auto* block = static_cast<fxregexp*>(argument);
    return fxregexec(block, "xxab") ? argument : nullptr;
}

std::string span(unsigned int start, unsigned int end) {
    return std::to_string(start) + "-" + std::to_string(end);
}

}  // namespace

TEST(fxRegEngineCost, aMebibyteIsMatchedOnASmallStack) {
    const unsigned int n = mebibyte;
    const std::string subject = alternating(n);
    EXPECT_EQ("0:" + span(0, n + 1) + " 1:" + span(n - 1, n),
              foundOnSmallStack("(a|b)*c", subject + "c"));
    EXPECT_EQ("0:" + span(0, n + 1) + " 1:" + span(n - 1, n),
              foundOnSmallStack("(a|b)+c", subject + "c"));
    EXPECT_EQ("0:" + span(0, n) + " 1:" + span(n - 2, n) + " 2:" + span(n - 2, n - 1) +
                  " 3:" + span(n - 1, n),
              foundOnSmallStack("((a)(b))*", subject));
    EXPECT_EQ("0:" + span(0, n), foundOnSmallStack(".*", subject));
    EXPECT_EQ("none", foundOnSmallStack("(a|b)*c", subject));
    EXPECT_EQ("none", foundOnSmallStack("(a|b)*[c]", subject));
    EXPECT_EQ("none", foundOnSmallStack("((a)|(b))+[c]", subject));
}

TEST(fxRegEngineCost, aSearchFitsOnAStackOf32KiB) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "frames are larger here";
#endif
    const std::size_t stack = 32 * 1024;
    if (stack < static_cast<std::size_t>(sysconf(_SC_THREAD_STACK_MIN)))
        GTEST_SKIP() << "no stack is that small here";
    fxregexp* block = fxregcomp("(a|b)+");
    ASSERT_NE(nullptr, block);
    EXPECT_TRUE(runOnStackOf(stack, searchAgain, block));
    EXPECT_NE(nullptr, block->endp[0]);
    std::free(block);
}

TEST(fxRegEngineCost, longProgramsAreMatchedOnASmallStack) {
    const unsigned int n = 1900;
    std::string optional, alternatives, stars;
    for (unsigned int i = 0; i < n; ++i) {
        optional += "a?";
        stars += "a*";
        alternatives += "b|";
    }
    const std::string subject(n, 'a');
    EXPECT_EQ("0:" + span(0, n), foundOnSmallStack(optional, subject));
    EXPECT_EQ("0:" + span(0, n), foundOnSmallStack(stars, subject));
    EXPECT_EQ("0:0-1", foundOnSmallStack(alternatives + "a", subject));
}

TEST(fxRegEngineCost, optionalPiecesFollowedByTheSameDoNotExplode) {
    const unsigned int n = 60;
    std::string pattern;
    for (unsigned int i = 0; i < n; ++i)
        pattern += "a?";
    pattern += std::string(n, 'a');
    EXPECT_EQ("0:" + span(0, n), found(pattern, std::string(n, 'a')));
    EXPECT_EQ("none", found(pattern, std::string(n - 1, 'a')));
}

// None of these comes to an end when everything is tried.
TEST(fxRegEngineCost, hostilePatternsFailSoon) {
    const std::string xs(100000, 'x'), as(100000, 'a');
    const std::string mixed = alternating(100000);
    EXPECT_EQ("none", found("(x+x+)+y", xs));
    EXPECT_EQ("none", found("(x+x+)+[y]", xs));
    EXPECT_EQ("none", found("(a|aa)*b", as));
    EXPECT_EQ("none", found("(a|aa)*[b]", as));
    EXPECT_EQ("none", found("(a|aa|aaa)+$", as + "b"));
    EXPECT_EQ("none", found("((a+)+)+$", as + "b"));
    EXPECT_EQ("none", found("(a+|b+)*[c]", mixed));
    EXPECT_EQ("none", found("(a|b|ab)*[c]", mixed));
    EXPECT_EQ("none", found("(.+)+(.+)+[x]", mixed));
    EXPECT_EQ("none", found("^(([ab]+)+)+[c]", mixed));
    EXPECT_EQ("none", found("(\\<.|.\\>|.)*[c]", mixed));
}

TEST(fxRegEngineCost, simpleLoopsInARowFailSoon) {
    const std::string as(100000, 'a');
    EXPECT_EQ("none", found(".*.*.*x", as));
    EXPECT_EQ("none", found(".*.*.*[x]", as));
    EXPECT_EQ("none", found("a*a*a*a*[x]", as));
    EXPECT_EQ("none", found("a+a+a+a+x", as));
    EXPECT_EQ("none", found(".*a.*a.*ax", as));
    EXPECT_EQ("none", found("[ab]*[a]*[^b]*[x]", as));
}

// The registers of a match behind much that failed are those of the order of
// attempts.
TEST(fxRegEngineCost, whatIsFoundAfterManyFailuresIsTheSame) {
    const unsigned int n = 100000;
    const std::string xs(n, 'x');
    EXPECT_EQ("0:" + span(0, n + 1) + " 1:" + span(0, n), found("(x+x+)+y", xs + "y"));
    EXPECT_EQ("0:" + span(0, n + 2) + " 1:" + span(0, n) + " 2:" + span(n + 1, n + 2),
              found("(x+x+)+(y|z)*$", xs + "yz"));
    EXPECT_EQ("0:" + span(n + 1, n + 3) + " 1:" + span(n + 1, n + 2),
              found("(x|xx)*[y]", xs + "-xy"));
    EXPECT_EQ("0:" + span(n + 1, n + 3) + " 1:" + span(n + 1, n + 2),
              found("(x+x*)+[y]", xs + "-xy"));
    EXPECT_EQ("0:" + span(n + 1, n + 5) + " 1:" + span(n + 3, n + 4) + " 2:" + span(n + 2, n + 3),
              found("((x)|z)*[y]", xs + "-xxzy"));
}

namespace {
// How often the search gets to the node behind many ways to one node, which has
// the operation given: the node behind it is unknown, and each time a message.
std::size_t arrivalsBehind(int op, unsigned int ways, unsigned int length) {
    std::string pattern = "(a";
    for (unsigned int i = 1; i < ways; ++i)
        pattern += "|a";
    const Compiled program = compiled(pattern + ")z");
    char* const text = static_cast<char*>(std::memchr(program->program, 'z', 1000));
    char* const behind = text - 3;
    char* const node = behind - 3;
    EXPECT_EQ(OP_EXACT, *behind);
    EXPECT_EQ(OP_CLOSE + 1, *node);
    *behind = 50;
    *node = static_cast<char>(op);
    takeRegErrors();
    EXPECT_EQ(0, fxregexec(program.get(), std::string(length, 'a').c_str()));
    const Messages messages = takeRegErrors();
    EXPECT_EQ(Messages(messages.size(), "memory corruption"), messages);
    return messages.size();
}
}  // namespace

// Once a search remembers, which of these does within its first third, it passes
// the end of a group, or an empty node, once at each position, on whichever way.
TEST(fxRegEngineCost, waysThatMeetGoOnTogether) {
    for (const int op : {OP_CLOSE + 1, static_cast<int>(OP_NOTHING)}) {
        for (const unsigned int length : {1000U, 4000U}) {
            SCOPED_TRACE(testing::Message() << op << ", " << length << " bytes");
            const unsigned int ways = 16;
            EXPECT_LT(arrivalsBehind(op, ways, length), length * ways / 3 + length);
        }
    }
}

TEST(fxRegEngineCost, cheapMatchesAllocateNothing) {
    if (!heapCallsAreCounted())
        GTEST_SKIP() << "allocations are not counted in this build or under this tool";
    const struct {
        const char *pattern, *subject;
    } rows[] = {{"needle", "a haystack with a needle in it"},
                {"[a-z]+@[a-z.]+", "write to somebody@example.org today"},
                {"^[0-9]+-[0-9]+$", "2024-06"},
                {"\"[^\"]*\"", "he said \"yes\" twice"},
                {"(error|warning): .*", "file.c: warning: unused"},
                {"([a-z]+)=([^;]*)", "  key=value; other=1"},
                {"nothing here", "a haystack with a needle in it"}};
    for (const auto& row : rows) {
        const Compiled program = compiled(row.pattern);
        ASSERT_TRUE(program != nullptr);
        const unsigned long before = heapCalls().allocations;
        fxregexec(program.get(), row.subject);
        EXPECT_EQ(before, heapCalls().allocations) << row.pattern;
    }
}

TEST(fxRegEngineCost, largeProgramsAreDecodedOnceToo) {
    if (!heapCallsAreCounted())
        GTEST_SKIP() << "allocations are not counted in this build or under this tool";
    std::string pattern = "zero|";
    for (unsigned int i = 0; i < 300; ++i)
        pattern += "[0-9]x*";
    const Compiled program = compiled(pattern);
    ASSERT_TRUE(program != nullptr);
    EXPECT_EQ(1, fxregexec(program.get(), "zero"));
    const unsigned long before = heapCalls().allocations;
    EXPECT_EQ(1, fxregexec(program.get(), "1 zero"));
    EXPECT_EQ(0, fxregexec(program.get(), "1x2x3"));
    EXPECT_EQ(before, heapCalls().allocations);
    // It is still looked at before every search.
    char* const zero = static_cast<char*>(memmem(program->program, 1000, "zero", 5));
    *zero = 'h';
    EXPECT_EQ(0, fxregexec(program.get(), "zero"));
    EXPECT_EQ(1, fxregexec(program.get(), "hero"));
}

TEST(fxRegEngineCost, programsThatTakeTurnsAreDecodedOnce) {
    if (!heapCallsAreCounted())
        GTEST_SKIP() << "allocations are not counted in this build or under this tool";
    std::vector<Compiled> programs;
    for (unsigned int i = 0; i < 8; ++i) {
        std::string pattern;
        for (unsigned int piece = 0; piece < 300; ++piece)
            pattern += "[0-9]x*";
        programs.push_back(compiled(pattern + std::to_string(i)));
        ASSERT_TRUE(programs.back() != nullptr);
    }
    unsigned long allocations[2];
    for (unsigned long& n : allocations) {
        const unsigned long before = heapCalls().allocations;
        for (const Compiled& program : programs)
            EXPECT_EQ(0, fxregexec(program.get(), "1x2x3"));
        n = heapCalls().allocations - before;
    }
    EXPECT_LE(8u, allocations[0]);
    EXPECT_EQ(0u, allocations[1]);
}

// Whatever the number of choices, and so the size of what is remembered of them.
TEST(fxRegEngineCost, everyMatchReleasesWhatItTook) {
    if (!heapCallsAreCounted())
        GTEST_SKIP() << "allocations are not counted in this build or under this tool";
    const std::string subject = alternating(10000), late = alternating(3000) + "d";
    std::string choices;
    for (unsigned int more = 0; more < 12; ++more, choices += "a?") {
        SCOPED_TRACE(choices);
        const Compiled failing = compiled("(a|b|ab)*" + choices + "[c]");
        const Compiled matching = compiled("(a|b)*" + choices);
        const Compiled remembering = compiled("(a|b|ab)*" + choices + "[c]|d");
        ASSERT_TRUE(failing && matching && remembering);
        HeapCalls before[2];
        for (HeapCalls& calls : before) {
            calls = heapCalls();
            EXPECT_EQ(0, fxregexec(failing.get(), subject.c_str()));
            EXPECT_EQ(1, fxregexec(matching.get(), subject.c_str()));
            EXPECT_EQ(1, fxregexec(remembering.get(), late.c_str()));
        }
        EXPECT_LT(before[1].allocations, heapCalls().allocations);
        EXPECT_EQ(before[1].blocks, heapCalls().blocks);
    }
}

#ifndef __SANITIZE_ADDRESS__
namespace {
// Subjects need a little more than fits without memory, and each prefix puts
// other choices in the place where it ends.
[[noreturn]] void matchWithoutMemory() {
    std::vector<Compiled> programs;
    std::vector<std::string> subjects;
    for (const char* prefix : {"", "a?", "a?a?", "(b|a)", "(b|a)a?", "(b|a)a?a?"})
        programs.push_back(compiled(prefix + std::string("(a|aa|b)*[c]")));
    std::string subject = "aaaa";
    for (unsigned int i = 0; i < 3000; ++i) {
        subject += "aaab";
        if ((i >= 13 && i < 30) || i == 2999)
            subjects.insert(subjects.end(), {subject, subject + "c"});
    }
    takeRegErrors();
    refuseBlocksFrom(901);
    for (const Compiled& program : programs) {
        for (const std::string& each : subjects) {
            const int result = fxregexec(program.get(), each.c_str());
            const Messages messages = takeRegErrors();
            if (result == 0 && messages == Messages(1, "out of space"))
                continue;
            std::fprintf(stderr, "result %d, %u messages\n", result,
                         static_cast<unsigned int>(messages.size()));
            std::_Exit(1);
        }
    }
    std::fputs("none, out of space\n", stderr);
    std::_Exit(0);
}
}  // namespace

TEST(fxRegEngineCostDeathTest, withoutMemoryForTheChoicesNothingIsFound) {
    EXPECT_EXIT(matchWithoutMemory(), testing::ExitedWithCode(0), "^none, out of space\n$");
}
#endif
