#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "tests/support/compiled.h"
#include "tests/support/regErrors.h"

namespace {

struct Row {
    std::string pattern, subject;
    std::string groups;  // as found() tells them
};

void expectFound(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message()
                     << "pattern " << shown(row.pattern) << ", subject " << shown(row.subject));
        takeRegErrors();
        EXPECT_EQ(row.groups, found(row.pattern, row.subject));
        EXPECT_EQ(Messages(), takeRegErrors());
    }
}

std::string repeated(const std::string& text, unsigned int n) {
    std::string all;
    for (unsigned int i = 0; i < n; ++i)
        all += text;
    return all;
}

}  // namespace

// One node each.

TEST(fxRegEngineSearch, anEmptyPatternMatchesAtTheStart) {
    expectFound({{"", "", "0:0-0"}, {"", "abc", "0:0-0"}, {"()", "abc", "0:0-0 1:0-0"}});
}

TEST(fxRegEngineSearch, aRunMatchesItself) {
    expectFound({{"a", "a", "0:0-1"},
                 {"a", "", "none"},
                 {"a", "b", "none"},
                 {"abc", "abc", "0:0-3"},
                 {"abc", "xxabcabc", "0:2-5"},
                 {"abc", "abab", "none"},
                 {"abc", "ababc", "0:2-5"},
                 {"abc", "ABC", "none"},
                 {"a{2}", "aa", "none"},
                 {"a{2}", "xa{2}", "0:1-5"},
                 {"a\\.b", "axba.b", "0:3-6"}});
}

TEST(fxRegEngineSearch, aDotMatchesAnyByte) {
    expectFound({{".", "", "none"},
                 {".", "x", "0:0-1"},
                 {".", "\n", "0:0-1"},
                 {".", "\x80", "0:0-1"},
                 {".", "\xff", "0:0-1"},
                 {"a.b", "ab a\nb", "0:3-6"},
                 {"...", "ab", "none"}});
}

TEST(fxRegEngineSearch, theAnchorsMatchAtTheEndsOfTheSubject) {
    expectFound({{"^", "abc", "0:0-0"},
                 {"$", "abc", "0:3-3"},
                 {"$", "", "0:0-0"},
                 {"^$", "", "0:0-0"},
                 {"^$", "a", "none"},
                 {"^a", "ba", "none"},
                 {"^a", "ab", "0:0-1"},
                 {"a$", "ab", "none"},
                 {"a$", "aba", "0:2-3"},
                 {"^a|b", "xb", "0:1-2"},
                 {"b|^a", "xa", "none"},
                 {"(^a)", "ba", "none"},
                 {"(a$|b)", "ab", "0:1-2 1:1-2"}});
}

TEST(fxRegEngineSearch, deliberateNewlinesInTheSubjectAreNotLineEnds) {
    expectFound({{"^b", "a\nb", "none"},
                 {"a$", "a\nb", "none"},
                 {"a.b$", "a\nb", "0:0-3"},
                 {"a[^x]b", "a\nb", "0:0-3"}});
}

TEST(fxRegEngineSearch, deliberateTheAnchorsAreSpecialInTheMiddleToo) {
    expectFound({{"a^b", "a^b", "none"},
                 {"a$b", "a$b", "none"},
                 {"a*^b", "b", "0:0-1"},
                 {"a*^b", "ab", "none"},
                 {"a$b*", "xa", "0:1-2"},
                 {"a\\^b\\$c", "a^b$c", "0:0-5"},
                 {"^^a$$", "a", "0:0-1"}});
}

TEST(fxRegEngineSearch, aClassMatchesOneMember) {
    expectFound({{"[abc]", "xxc", "0:2-3"},
                 {"[abc]", "xyz", "none"},
                 {"[abc]", "", "none"},
                 {"[]a]", "]", "0:0-1"},
                 {"[]a]", "a", "0:0-1"},
                 {"[a-]", "-", "0:0-1"},
                 {"[a-c]", "d-b", "0:2-3"},
                 {"[b-a]", "ab", "0:1-2"},
                 {"[a-c-e]", "-d", "0:1-2"},
                 {"[\\n]", "\n\\", "0:1-2"},
                 {"[a\nb]", "x\n", "0:1-2"}});
}

TEST(fxRegEngineSearch, aNegatedClassMatchesOneOtherByteButNoNul) {
    expectFound({{"[^abc]", "abcx", "0:3-4"},
                 {"[^abc]", "abc", "none"},
                 {"[^a]", "", "none"},
                 {"[^]a]", "]ab", "0:2-3"},
                 {"[^-a]", "-ab", "0:2-3"},
                 {"a[^b]", "a", "none"},
                 {"[^a]*", "bcd", "0:0-3"},
                 {"[^\x01-\xff]", "abc", "none"}});
}

TEST(fxRegEngineSearch, bytesAbove127AreBytesLikeOthers) {
    expectFound({{"\xe9", "t\xe9", "0:1-2"},
                 {"t\xe9", "tt\xe9", "0:1-3"},
                 {"\xe9*t", "\xe9\xe9t", "0:0-3"},
                 {".*\xff\x80", "ab\xff\x80", "0:0-4"},
                 {"[\x80-\xff]+", "ab\xc3\xa9z", "0:2-4"},
                 {"[^a]", "a\xff", "0:1-2"},
                 {"[^\xff]", "\xff\xfe", "0:1-2"},
                 {"[\xff]", "\x7f\xff", "0:1-2"},
                 {"[\x01-\xff]*", "\x01\x7f\x80\xff", "0:0-4"},
                 {"\x80|\x81", "\x81", "0:0-1"},
                 {"(\xc3\xa9)+", "\xc3\xa9\xc3\xa9", "0:0-4 1:2-4"}});
}

// Words.

TEST(fxRegEngineSearch, aWordStartsBehindWhatIsNoWordByte) {
    expectFound({{"\\<foo", "foo", "0:0-3"},
                 {"\\<foo", " foo", "0:1-4"},
                 {"\\<foo", "-foo", "0:1-4"},
                 {"\\<foo", "xfoo", "none"},
                 {"\\<foo", "_foo", "none"},
                 {"\\<foo", "1foo", "none"},
                 {"\\<foo", "xfoo foo", "0:5-8"},
                 {"\\<foo",
                  "\xe9"
                  "foo",
                  "0:1-4"},
                 {"\\<", "", "none"},
                 {"\\<", "  ", "none"},
                 {"\\<", "  a", "0:2-2"},
                 {"\\<", "-_", "0:1-1"},
                 {"\\<.", "\xe9Z", "0:1-2"},
                 {"a\\<b", "ab", "none"},
                 {"a \\<b", "a b", "0:0-3"}});
}

TEST(fxRegEngineSearch, aWordEndsBeforeWhatIsNoWordByte) {
    expectFound({{"foo\\>", "foo", "0:0-3"},
                 {"foo\\>", "foo bar", "0:0-3"},
                 {"foo\\>", "foo.", "0:0-3"},
                 {"foo\\>", "foobar", "none"},
                 {"foo\\>", "foo_", "none"},
                 {"foo\\>", "foo1", "none"},
                 {"foo\\>", "foofoo", "0:3-6"},
                 {"foo\\>", "foo\xe9", "0:0-3"},
                 {"\\<b\\>", "ab b", "0:3-4"}});
}

TEST(fxRegEngineSearch, deliberateAWordEndDoesNotLookAtTheByteBefore) {
    expectFound({{"\\>", "", "0:0-0"},
                 {"\\>", " ", "0:0-0"},
                 {"\\>", "ab", "0:2-2"},
                 {"\\>", "  ab", "0:0-0"},
                 {"- \\>", "-  a", "0:0-2"},
                 {"- \\>", "- a", "none"}});
}

TEST(fxRegEngineSearch, wordBytesAreLettersDigitsAndTheUnderscore) {
    for (int byte = 1; byte < 256; ++byte) {
        const bool isWord = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                            (byte >= 'a' && byte <= 'z') || byte == '_';
        const std::string subject(1, static_cast<char>(byte));
        EXPECT_EQ(isWord ? "0:0-1" : "none", found("\\<.", subject)) << byte;
        EXPECT_EQ(isWord ? "0:1-1" : "0:0-0", found("\\>", subject)) << byte;
    }
}

// The order of attempts.

TEST(fxRegEngineSearch, alternativesAreTriedInOrder) {
    expectFound({{"a|b", "b", "0:0-1"},
                 {"a|ab", "ab", "0:0-1"},
                 {"ab|a", "ab", "0:0-2"},
                 {"(a|ab)(c|bcd)", "abcd", "0:0-4 1:0-1 2:1-4"},
                 {"(ab|a)(c|bcd)", "abcd", "0:0-3 1:0-2 2:2-3"},
                 {"|a", "a", "0:0-0"},
                 {"a|", "a", "0:0-1"},
                 {"a|", "b", "0:0-0"},
                 {"(a|b|cd)$", "abcd", "0:2-4 1:2-4"},
                 {"(|a)$", "a", "0:0-1 1:0-1"}});
}

TEST(fxRegEngineSearch, deliberateANewlineInThePatternSeparatesAlternatives) {
    expectFound({{"a|b\nc", "c", "0:0-1"},
                 {"a|b\nc", "b\nc", "0:0-1"},
                 {"a\nb", "xb", "0:1-2"},
                 {"(a\nb)c", "bc", "0:0-2 1:0-1"},
                 {"a\n", "b", "0:0-0"},
                 {"a\\\nb", "a\nb", "0:0-3"}});
}

TEST(fxRegEngineSearch, theFirstPlaceWins) {
    expectFound({{"b|ab", "ab", "0:0-2"},
                 {"c|b", "abc", "0:1-2"},
                 {"[bc]", "abc", "0:1-2"},
                 {"x*", "aaa", "0:0-0"},
                 {"x+", "axxbxxx", "0:1-3"},
                 {"a*b", "cab", "0:1-3"},
                 {"(b|c)d", "bcd", "0:1-3 1:1-2"},
                 {"$|a", "ba", "0:1-2"}});
}

TEST(fxRegEngineSearch, repetitionsAreGreedy) {
    expectFound({{"a*", "aaab", "0:0-3"},
                 {"a+", "aaab", "0:0-3"},
                 {"a+", "b", "none"},
                 {"a*", "", "0:0-0"},
                 {"a?", "aa", "0:0-1"},
                 {"a?", "b", "0:0-0"},
                 {".*", "abc", "0:0-3"},
                 {".+", "", "none"},
                 {"[ab]*", "abcab", "0:0-2"},
                 {"[^b]+", "aab", "0:0-2"},
                 {"(a|b)*", "abac", "0:0-3 1:2-3"},
                 {"(ab)+", "ababa", "0:0-4 1:2-4"},
                 {"(ab)?", "abab", "0:0-2 1:0-2"}});
}

TEST(fxRegEngineSearch, repetitionsGiveBackFromTheEnd) {
    expectFound({{"a*a", "aaa", "0:0-3"},
                 {"a+a", "a", "none"},
                 {"a+aa", "aaa", "0:0-3"},
                 {"a+aaa", "aaa", "none"},
                 {".*b", "abab", "0:0-4"},
                 {".*b.", "abab", "0:0-3"},
                 {".*abc", "abcabcab", "0:0-6"},
                 {".+b", "bab", "0:0-3"},
                 {"[ab]*[bc]", "abab", "0:0-4"},
                 {"a?a", "a", "0:0-1"},
                 {"a?ab", "aab", "0:0-3"},
                 {"(a|b)*b", "abba", "0:0-3 1:1-2"},
                 {"(ab|a)*b", "aabb", "0:0-4 1:1-3"},
                 {"(a+)+a", "aaaa", "0:0-4 1:0-3"}});
}

TEST(fxRegEngineSearch, repeatedPiecesDivideFromTheLeft) {
    expectFound({{"(a*)(ab)*(b*)", "abb", "0:0-3 1:0-1 3:1-3"},
                 {"(a*)(a*)", "aa", "0:0-2 1:0-2 2:2-2"},
                 {"(a+)(a+)", "aaa", "0:0-3 1:0-2 2:2-3"},
                 {"(a?)(ab)?", "ab", "0:0-1 1:0-1"},
                 {"(.*)-(.*)", "a-b-c", "0:0-5 1:0-3 2:4-5"},
                 {"(x+x+)+y", "xxxxy", "0:0-5 1:0-4"}});
}

// Groups.

TEST(fxRegEngineSearch, groupsRecordWhatTheyMatched) {
    expectFound({{"(a)(b)(c)(d)(e)(f)(g)(h)(i)", "-abcdefghi-",
                  "0:1-10 1:1-2 2:2-3 3:3-4 4:4-5 5:5-6 6:6-7 7:7-8 8:8-9 9:9-10"},
                 {"(((((((((a)))))))))", "ba",
                  "0:1-2 1:1-2 2:1-2 3:1-2 4:1-2 5:1-2 6:1-2 7:1-2 8:1-2 9:1-2"},
                 {"((a)(b))c", "abc", "0:0-3 1:0-2 2:0-1 3:1-2"},
                 {"a()b", "ab", "0:0-2 1:1-1"},
                 {"([a-z]+)@([a-z]+)", "to: me@home", "0:4-11 1:4-6 2:7-11"}});
}

TEST(fxRegEngineSearch, aGroupThatTookNoPartIsNull) {
    expectFound({{"(a)|b", "b", "0:0-1"},
                 {"(a)|(b)", "b", "0:0-1 2:0-1"},
                 {"(a)*", "", "0:0-0"},
                 {"(a)?b", "b", "0:0-1"},
                 {"((a)|b)c", "bc", "0:0-2 1:0-1"},
                 {"(a)(b)*", "a", "0:0-1 1:0-1"},
                 {"(ab)*a", "a", "0:0-1"}});
}

// What was tried in vain leaves no trace.
TEST(fxRegEngineSearch, aGroupOfAFailedAttemptIsNull) {
    expectFound({{"(a)x|(a)b", "ab", "0:0-2 2:0-1"},
                 {"((a)x|ab)", "ab", "0:0-2 1:0-2"},
                 {"(a)(b)?$|a", "abc", "0:0-1"},
                 {"(a(b)c|a(b)d)", "abd", "0:0-3 1:0-3 3:1-2"}});
}

TEST(fxRegEngineSearch, aRepeatedGroupRecordsItsLastIteration) {
    expectFound({{"(a|b)*c", "abc", "0:0-3 1:1-2"},
                 {"(a|b)+", "aab", "0:0-3 1:2-3"},
                 {"(a+b)*", "abaab", "0:0-5 1:2-5"},
                 {"((a)(b))+", "abab", "0:0-4 1:2-4 2:2-3 3:3-4"},
                 {"(.)+", "xyz", "0:0-3 1:2-3"}});
}

// The last iteration that had it, as the inner group is set only once.
TEST(fxRegEngineSearch, deliberateAnInnerGroupKeepsAnEarlierIterationThanItsOuterGroup) {
    expectFound({{"((a)|b)*", "ab", "0:0-2 1:1-2 2:0-1"},
                 {"((a)|(b))*", "aba", "0:0-3 1:2-3 2:2-3 3:1-2"},
                 {"((a)?b)*", "abb", "0:0-3 1:2-3 2:0-1"}});
}

TEST(fxRegEngineSearch, theRegistersPointIntoTheSubject) {
    const Compiled program = compiled("b(c)");
    ASSERT_TRUE(program != nullptr);
    const char subject[] = "abcd";
    EXPECT_EQ(1, fxregexec(program.get(), subject));
    EXPECT_EQ(subject + 1, program->startp[0]);
    EXPECT_EQ(subject + 3, program->endp[0]);
    EXPECT_EQ(subject + 2, program->startp[1]);
    EXPECT_EQ(subject + 3, program->endp[1]);
    for (unsigned int i = 2; i < fxregexp::groupCount; ++i) {
        EXPECT_EQ(nullptr, program->startp[i]);
        EXPECT_EQ(nullptr, program->endp[i]);
    }
}

TEST(fxRegEngineSearch, everyMatchClearsTheRegistersOfTheLast) {
    const Compiled program = compiled("(a)|(b)");
    ASSERT_TRUE(program != nullptr);
    for (unsigned int i = 0; i < fxregexp::groupCount; ++i)
        program->startp[i] = program->endp[i] = reinterpret_cast<char*>(0x10);
    const char first[] = "a", second[] = "xb";
    EXPECT_EQ(1, fxregexec(program.get(), first));
    EXPECT_EQ("0:0-1 1:0-1", groupsOf(*program, first));
    EXPECT_EQ(0, fxregexec(program.get(), "x"));
    EXPECT_EQ(1, fxregexec(program.get(), second));
    EXPECT_EQ("0:1-2 2:1-2", groupsOf(*program, second));
}

namespace {
// Whether a search that finds nothing leaves all registers, which were set, as
// they were, or all of them null.
std::string registersAfter(const char* pattern, const char* subject, char magic = '\234') {
    const Compiled program = compiled(pattern);
    char* const earlier = const_cast<char*>(pattern);
    for (unsigned int i = 0; i < fxregexp::groupCount; ++i)
        program->startp[i] = program->endp[i] = earlier;
    program->program[0] = magic;
    if (fxregexec(program.get(), subject) != 0)
        return "found";
    unsigned int kept = 0, cleared = 0;
    for (unsigned int i = 0; i < fxregexp::groupCount; ++i) {
        kept += (program->startp[i] == earlier) + (program->endp[i] == earlier);
        cleared += (program->startp[i] == nullptr) + (program->endp[i] == nullptr);
    }
    return kept == 20 ? "kept" : cleared == 20 ? "cleared" : "mixed";
}
}  // namespace

TEST(fxRegEngineSearch, theFirstTryOfAFailedSearchClearsTheRegisters) {
    const struct {
        const char *pattern, *subject, *why;
    } rows[] = {{"[ab]", "xyz", "every place is tried"},
                {"[ab]", "", "the end is tried, too"},
                {"(a)|(b)", "xyz", "every place is tried"},
                {"^a", "b", "the start is tried"},
                {"^(a)b", "", "the start is tried"},
                {"abc", "xxab", "where the first byte is"},
                {"abc", "a", "where the first byte is, though the text ends"},
                {"a[b]", "xa", "where the first byte is"},
                {"x*b$", "ba", "the text that must be there is"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.pattern << " in " << row.subject << ": " << row.why);
        EXPECT_EQ("cleared", registersAfter(row.pattern, row.subject));
    }
}

TEST(fxRegEngineSearch, deliberateASearchThatGivesUpBeforeItsFirstTryKeepsTheRegisters) {
    EXPECT_EQ("kept", registersAfter("abc", nullptr));
    EXPECT_EQ("kept", registersAfter("abc", "abc", '\0'));
    EXPECT_EQ("kept", registersAfter("a*b", "aaa"));   // without the text that must be there
    EXPECT_EQ("kept", registersAfter("abc", "xbcx"));  // without the first byte
    EXPECT_EQ("kept", registersAfter("abc", ""));
}

TEST(fxRegEngineSearch, aMatchLeavesTheProgramAlone) {
    const Compiled program = compiled("(a|b)*c");
    ASSERT_TRUE(program != nullptr);
    const std::string before(program->program, 46);
    EXPECT_EQ(1, fxregexec(program.get(), repeated("ab", 10000).append("c").c_str()));
    EXPECT_EQ(before, std::string(program->program, 46));
}

// The hints, as they stand in the block.

TEST(fxRegEngineSearch, withoutTheMustRunThereIsNoAttempt) {
    const Compiled program = compiled("a*b[zy]*");
    ASSERT_TRUE(program != nullptr);
    ASSERT_STREQ("b", program->must);
    char* const other = static_cast<char*>(std::memchr(program->program, 'z', 40));
    ASSERT_STREQ("zy", other);
    program->must = other;
    program->mustlen = 2;
    EXPECT_EQ(0, fxregexec(program.get(), "aab"));
    EXPECT_EQ(0, fxregexec(program.get(), "aabyzz"));
    EXPECT_EQ(1, fxregexec(program.get(), "aabzy"));
    EXPECT_EQ(1, fxregexec(program.get(), "zaabzzyz"));
    program->mustlen = 1;
    EXPECT_EQ(0, fxregexec(program.get(), "aaby"));
    EXPECT_EQ(1, fxregexec(program.get(), "aabyz"));
}

TEST(fxRegEngineSearch, aStartCharacterLimitsThePlaces) {
    const Compiled program = compiled("[abc]");
    ASSERT_TRUE(program != nullptr);
    program->startchar = 'b';
    const char subject[] = "acbb";
    EXPECT_EQ(1, fxregexec(program.get(), subject));
    EXPECT_EQ("0:2-3", groupsOf(*program, subject));
    EXPECT_EQ(0, fxregexec(program.get(), "acac"));
}

TEST(fxRegEngineSearch, anAnchoredExpressionIsTriedAtTheStartOnly) {
    const Compiled program = compiled("b");
    ASSERT_TRUE(program != nullptr);
    program->anchored = 1;
    EXPECT_EQ(0, fxregexec(program.get(), "ab"));
    EXPECT_EQ(1, fxregexec(program.get(), "ba"));
}

// What is wrong with the arguments.

TEST(fxRegEngineSearch, nullArgumentsAreErrors) {
    const Compiled program = compiled("a");
    takeRegErrors();
    EXPECT_EQ(0, fxregexec(nullptr, "a"));
    EXPECT_EQ(0, fxregexec(program.get(), nullptr));
    EXPECT_EQ(0, fxregexec(nullptr, nullptr));
    EXPECT_EQ((Messages{"NULL parameter", "NULL parameter", "NULL parameter"}), takeRegErrors());
}

TEST(fxRegEngineSearch, aProgramWithoutTheMagicByteIsAnError) {
    const Compiled program = compiled("a");
    takeRegErrors();
    for (const int magic : {0, 1, 155, 157, 255}) {
        program->program[0] = static_cast<char>(magic);
        EXPECT_EQ(0, fxregexec(program.get(), "a"));
        EXPECT_EQ(Messages{"corrupted program"}, takeRegErrors()) << magic;
    }
    program->program[0] = static_cast<char>(156);
    EXPECT_EQ(1, fxregexec(program.get(), "a"));
    EXPECT_EQ(Messages(), takeRegErrors());
}

namespace {
// The result of a program with these nodes, and with nothing behind them but
// zeros.
int resultOf(const std::string& nodes, const char* subject) {
    const Compiled block(static_cast<fxregexp*>(std::calloc(1, sizeof(fxregexp) + 64)));
    block->program[0] = static_cast<char>(156);
    std::memcpy(block->program + 1, nodes.data(), nodes.size());
    takeRegErrors();
    return fxregexec(block.get(), subject);
}

std::string node(int opcode, int next) {
    return {static_cast<char>(opcode), 0, static_cast<char>(next)};
}
}  // namespace

TEST(fxRegEngineSearch, aProgramMadeByHandRuns) {
    EXPECT_EQ(1, resultOf(node(6, 6) + node(3, 3) + node(0, 0), "x"));
    EXPECT_EQ(0, resultOf(node(6, 6) + node(3, 3) + node(0, 0), ""));
    EXPECT_EQ(Messages(), takeRegErrors());
}

TEST(fxRegEngineSearch, anUnknownOperationIsAFailureAndAMessage) {
    for (const int opcode : {14, 15, 19, 20, 30, 40, 41, 128, 255}) {
        EXPECT_EQ(0, resultOf(node(opcode, 3) + node(0, 0), "")) << opcode;
        EXPECT_EQ(Messages{"memory corruption"}, takeRegErrors()) << opcode;
        EXPECT_EQ(0, resultOf(node(9, 3) + node(opcode, 3) + node(0, 0), "")) << opcode;
        EXPECT_EQ(Messages{"memory corruption"}, takeRegErrors()) << opcode;
    }
}

TEST(fxRegEngineSearch, aChainThatStopsIsAFailureAndAMessage) {
    for (const int opcode : {1, 2, 7, 9, 13}) {
        EXPECT_EQ(0, resultOf(node(opcode, 0), "")) << opcode;
        EXPECT_EQ(Messages{"corrupted pointers"}, takeRegErrors()) << opcode;
    }
    EXPECT_EQ(0, resultOf(node(8, 0) + "ab" + '\0', "ab"));
    EXPECT_EQ(Messages{"corrupted pointers"}, takeRegErrors());
    EXPECT_EQ(0, resultOf(node(21, 0), ""));
    EXPECT_EQ(Messages{"corrupted pointers"}, takeRegErrors());
    EXPECT_EQ(0, resultOf(node(10, 0) + node(3, 0), ""));
    EXPECT_EQ(Messages{"corrupted pointers"}, takeRegErrors());
}

// Errors while matching are failures like others, so every place is tried.
TEST(fxRegEngineSearch, aMessageCanComeOncePerPlace) {
    EXPECT_EQ(0, resultOf(node(40, 3), "ab"));
    EXPECT_EQ((Messages{"memory corruption", "memory corruption", "memory corruption"}),
              takeRegErrors());
    EXPECT_EQ(0, resultOf(node(3, 0), "ab"));
    EXPECT_EQ((Messages{"corrupted pointers", "corrupted pointers"}), takeRegErrors());
}

TEST(fxRegEngineSearch, afterAnErrorTheNextAlternativeIsTried) {
    const std::string first = node(6, 6) + node(40, 3), second = node(6, 6) + node(3, 3);
    EXPECT_EQ(1, resultOf(first + second + node(0, 0), "x"));
    EXPECT_EQ(Messages{"memory corruption"}, takeRegErrors());
}

TEST(fxRegEngineSearch, repeatingWhatIsNoByteCountsNothing) {
    EXPECT_EQ(1, resultOf(node(10, 6) + node(1, 0) + node(0, 0), ""));
    EXPECT_EQ(Messages{"internal foulup"}, takeRegErrors());
    EXPECT_EQ(0, resultOf(node(11, 6) + node(1, 0) + node(0, 0), ""));
    EXPECT_EQ(Messages{"internal foulup"}, takeRegErrors());
    // Matching goes on behind it.
    EXPECT_EQ(1, resultOf(node(10, 6) + node(9, 0) + node(3, 3) + node(0, 0), "x"));
    EXPECT_EQ(Messages{"internal foulup"}, takeRegErrors());
}

// Only the first byte of a run is repeated.
TEST(fxRegEngineSearch, repeatingALongerRunRepeatsItsFirstByte) {
    const std::string run = node(8, 0) + "ab" + '\0';
    EXPECT_EQ(1, resultOf(node(1, 3) + node(10, 9) + run + node(2, 3) + node(0, 0), "aaa"));
    EXPECT_EQ(0, resultOf(node(1, 3) + node(10, 9) + run + node(2, 3) + node(0, 0), "abab"));
    EXPECT_EQ(Messages(), takeRegErrors());
}

// What is behind a place is looked at in pieces, of which a text may lie in two.
TEST(fxRegEngineSearch, aTextThatAPatternNeedsIsFoundAtEveryPlace) {
    const std::string text = "needle";
    for (unsigned int place = 0; place < 24000; place += place < 1500 ? 1 : 499) {
        const std::string subject = std::string(place, '-') + text + "--";
        const std::string at = std::to_string(place);
        const std::string groups = "0:" + at + "-" + std::to_string(place + text.size());
        ASSERT_EQ(groups, found("[ab]*" + text, subject)) << place;
    }
}
