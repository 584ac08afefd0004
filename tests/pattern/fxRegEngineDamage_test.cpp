// Programs that were damaged after they had been compiled, and subjects long
// enough for everything that the engine does about cost. Damage is a failure
// where it is; elsewhere the program means what it says.

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "tests/support/compiled.h"
#include "tests/support/regErrors.h"

namespace {

// The first node with this operation; null if the program has none.
char* nodeOf(fxregexp& program, int opcode) {
    for (char* node = program.program + 1;;) {
        const int here = static_cast<unsigned char>(*node);
        if (here == opcode)
            return node;
        if (here == OP_END)
            return nullptr;
        const bool hasText = here == OP_EXACT || here == OP_ANYOF || here == OP_ANYBUT;
        node += 3;
        if (hasText)
            node += std::strlen(node) + 1;
    }
}

struct Damage {
    const char* pattern;
    int opcode;  // the first of these
    int becomes;
};

// What found() says of the damaged program.
std::string foundIn(const Damage& damage, const std::string& subject) {
    const Compiled program = compiled(damage.pattern);
    char* const node = program ? nodeOf(*program, damage.opcode) : nullptr;
    if (!node)
        return "no such node";
    *node = static_cast<char>(damage.becomes);
    const int result = fxregexec(program.get(), subject.c_str());
    return result ? groupsOf(*program, subject.c_str()) : "none";
}

// All messages were this one, and there was one.
void expectOnly(const std::string& message) {
    const Messages messages = takeRegErrors();
    EXPECT_FALSE(messages.empty());
    for (const std::string& each : messages)
        ASSERT_EQ(message, each);
}

const unsigned int n = 20000;
const std::string as(n, 'a');
const std::string upTo = "0-" + std::to_string(n + 1);

std::string lastByte() { return std::to_string(n - 1) + "-" + std::to_string(n); }

}  // namespace

TEST(fxRegEngineDamage, anUnknownOperationIsAFailureOfItsAlternativeAlone) {
    for (const int opcode : {14, 20, 30, 40, 50, 255}) {
        SCOPED_TRACE(opcode);
        const Damage damages[] = {{"(z|a|aa)*[c]", OP_EXACT, opcode},
                                  {"([y-z]|a|aa)*[c]", OP_ANYOF, opcode},
                                  {"(zyxwv|a|aa)*[c]", OP_EXACT, opcode}};
        for (const Damage& damage : damages) {
            SCOPED_TRACE(damage.pattern);
            takeRegErrors();
            EXPECT_EQ("0:" + upTo + " 1:" + lastByte(), foundIn(damage, as + "c"));
            expectOnly("memory corruption");
            EXPECT_EQ("none", foundIn(damage, as));
            expectOnly("memory corruption");
        }
    }
}

TEST(fxRegEngineDamage, repeatingWhatIsNoByteCountsNothingHoweverOften) {
    for (const int opcode : {OP_BOL, OP_EOL, OP_NOTHING}) {
        SCOPED_TRACE(opcode);
        const Damage damages[] = {{"(a|[z]*a|aa)*[c]", OP_ANYOF, opcode},
                                  {"(a|[^z]*a|aa)*[c]", OP_ANYBUT, opcode}};
        for (const Damage& damage : damages) {
            SCOPED_TRACE(damage.pattern);
            takeRegErrors();
            EXPECT_EQ("0:" + upTo + " 1:" + lastByte(), foundIn(damage, as + "c"));
            takeRegErrors();
            EXPECT_EQ("none", foundIn(damage, as));
            expectOnly("internal foulup");
        }
    }
}

// A choice, a repetition or an alternative that is repeated counts nothing too,
// whatever it would match.
TEST(fxRegEngineDamage, repeatingAChoiceOrARepetitionCountsNothing) {
    const struct {
        const char* pattern;
        int opcode;  // the first of these
        unsigned int skipped;
        int becomes;
        const char *subject, *found;
    } rows[] = {{"a?b", OP_BRANCH, 0, OP_STAR, "aab", "0:0-0"},
                {"b*", OP_BRANCH, 0, OP_STAR, "bb", "0:0-0"},
                {"a*", OP_BRANCH, 0, OP_PLUS, "aa", "none"},
                {"\\<|a", OP_BRANCH, 1, OP_PLUS, "a", "0:0-0"},
                {"(a|b)c", OP_OPEN + 1, 0, OP_STAR, "bc", "0:0-2 1:?-1"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pattern);
        const Compiled program = compiled(row.pattern);
        char* const node = nodeOf(*program, row.opcode) + row.skipped * 6;
        *node = static_cast<char>(row.becomes);
        takeRegErrors();
        const int result = fxregexec(program.get(), row.subject);
        EXPECT_EQ(row.found, result ? groupsOf(*program, row.subject) : "none");
    }
}

// That of an OP_BACK would lead forward, past the end of the block.
TEST(fxRegEngineDamage, theLinkOfAnUnknownOperationIsNotFollowed) {
    const Compiled program = compiled("(" + std::string(200, 'b') + ")*d");
    for (const int opcode : {OP_EXACT, OP_BACK}) {
        char* const node = nodeOf(*program, opcode);
        ASSERT_TRUE(node != nullptr);
        *node = 50;
    }
    for (const unsigned int length : {0U, 1U, 20U, 20000U}) {
        SCOPED_TRACE(length);
        const std::string subject = std::string(length, 'b') + "d";
        takeRegErrors();
        ASSERT_EQ(1, fxregexec(program.get(), subject.c_str()));
        EXPECT_EQ("0:" + std::to_string(length) + "-" + std::to_string(length + 1),
                  groupsOf(*program, subject.c_str()));
        expectOnly("memory corruption");
    }
}

// A star without a next node goes on from every count, at every place: four
// messages from the first byte of three, and one less from each that follows.
TEST(fxRegEngineDamage, everyCountRunsOffAChainThatStopsBehindARepetition) {
    const Compiled program = compiled("a*");
    char* const star = nodeOf(*program, OP_STAR);
    ASSERT_TRUE(star != nullptr);
    star[1] = star[2] = 0;
    takeRegErrors();
    EXPECT_EQ(0, fxregexec(program.get(), "aaa"));
    EXPECT_EQ(Messages(4 + 3 + 2 + 1, "corrupted pointers"), takeRegErrors());
}
