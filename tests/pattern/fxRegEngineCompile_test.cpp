#include <malloc.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "tests/support/compiled.h"
#include "tests/support/regErrors.h"

static_assert(offsetof(fxregexp, startp) == 0, "ten pointers");
static_assert(offsetof(fxregexp, endp) == 40, "ten pointers");
static_assert(offsetof(fxregexp, startchar) == 80, "a byte");
static_assert(offsetof(fxregexp, anchored) == 81, "a byte");
static_assert(offsetof(fxregexp, must) == 84, "a pointer");
static_assert(offsetof(fxregexp, mustlen) == 88, "a word");
static_assert(offsetof(fxregexp, program) == 92, "the program follows the fixed part");
static_assert(sizeof(fxregexp::startchar) == 1 && sizeof(fxregexp::mustlen) == 4, "sizes");

static_assert(OP_END == 0 && OP_BOL == 1 && OP_EOL == 2 && OP_ANY == 3 && OP_ANYOF == 4 &&
                  OP_ANYBUT == 5 && OP_BRANCH == 6 && OP_BACK == 7 && OP_EXACT == 8 &&
                  OP_NOTHING == 9 && OP_STAR == 10 && OP_PLUS == 11 && OP_WORDSTART == 12 &&
                  OP_WORDEND == 13 && OP_OPEN == 20 && OP_CLOSE == 30,
              "the numbers are part of the format");

namespace {

// Programs in writing: each function is one node, its argument the offset of
// the next one. Numbers, not the names of the header: both are to agree.

std::string node(int opcode, int next) {
    return {static_cast<char>(opcode), static_cast<char>(next / 256),
            static_cast<char>(next % 256)};
}

std::string withText(int opcode, int next, const std::string& text) {
    return node(opcode, next) + text + '\0';
}

std::string end() { return node(0, 0); }
std::string bol(int next) { return node(1, next); }
std::string eol(int next) { return node(2, next); }
std::string any(int next) { return node(3, next); }
std::string anyOf(int next, const std::string& text) { return withText(4, next, text); }
std::string anyBut(int next, const std::string& text) { return withText(5, next, text); }
std::string branch(int next) { return node(6, next); }
std::string back(int next) { return node(7, next); }
std::string exact(int next, const std::string& text) { return withText(8, next, text); }
std::string nothing(int next) { return node(9, next); }
std::string star(int next) { return node(10, next); }
std::string plus(int next) { return node(11, next); }
std::string wordStart(int next) { return node(12, next); }
std::string wordEnd(int next) { return node(13, next); }
std::string open(int group, int next) { return node(20 + group, next); }
std::string close(int group, int next) { return node(30 + group, next); }

struct Row {
    std::string pattern;
    std::string nodes;
};

std::string magic() { return "\234"; }

void expectPrograms(const std::vector<Row>& rows) {
    takeRegErrors();
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "pattern " << shown(row.pattern));
        const Compiled program = compiled(row.pattern);
        ASSERT_TRUE(program != nullptr);
        const std::string bytes = magic() + row.nodes;
        ASSERT_LE(offsetof(fxregexp, program) + bytes.size(), malloc_usable_size(program.get()));
        EXPECT_EQ(shown(bytes), shown(std::string(program->program, bytes.size())));
        EXPECT_EQ(Messages(), takeRegErrors());
    }
}

// One alternative that is one run or class of which `text` is the operand.
std::string onlyExact(const std::string& text) {
    const int size = 4 + static_cast<int>(text.size());
    return branch(3 + size) + exact(size, text) + end();
}
std::string onlyAnyOf(const std::string& text) {
    const int size = 4 + static_cast<int>(text.size());
    return branch(3 + size) + anyOf(size, text) + end();
}
std::string onlyAnyBut(const std::string& text) {
    const int size = 4 + static_cast<int>(text.size());
    return branch(3 + size) + anyBut(size, text) + end();
}

std::string bytesFromTo(int first, int last) {
    std::string bytes;
    for (int byte = first; byte <= last; ++byte)
        bytes += static_cast<char>(byte);
    return bytes;
}

}  // namespace

// The program's bytes.

TEST(fxRegEngineCompile, nothingIsSetBeforeASearch) {
    for (const char* pattern : {"", "a", "(a)(b)", "x*y"}) {
        SCOPED_TRACE(pattern);
        const Compiled program = compiled(pattern);
        for (unsigned int group = 0; group < fxregexp::groupCount; ++group) {
            EXPECT_EQ(nullptr, program->startp[group]) << group;
            EXPECT_EQ(nullptr, program->endp[group]) << group;
        }
    }
}

TEST(fxRegEngineCompile, singleNodesAreOneBranchEach) {
    expectPrograms({
        {"", branch(6) + nothing(3) + end()},
        {"a", branch(8) + exact(5, "a") + end()},
        {"ab", branch(9) + exact(6, "ab") + end()},
        {".", branch(6) + any(3) + end()},
        {"^", branch(6) + bol(3) + end()},
        {"$", branch(6) + eol(3) + end()},
        {"\\<", branch(6) + wordStart(3) + end()},
        {"\\>", branch(6) + wordEnd(3) + end()},
        {"[ab]", branch(9) + anyOf(6, "ab") + end()},
        {"[^ab]", branch(9) + anyBut(6, "ab") + end()},
    });
}

TEST(fxRegEngineCompile, piecesFollowEachOther) {
    expectPrograms({
        {"^a$", branch(14) + bol(3) + exact(5, "a") + eol(3) + end()},
        {"a^b", branch(16) + exact(5, "a") + bol(3) + exact(5, "b") + end()},
        {"a$b", branch(16) + exact(5, "a") + eol(3) + exact(5, "b") + end()},
        {"\\<a\\>", branch(14) + wordStart(3) + exact(5, "a") + wordEnd(3) + end()},
        {"..", branch(9) + any(3) + any(3) + end()},
        {"a.b", branch(16) + exact(5, "a") + any(3) + exact(5, "b") + end()},
        {"a[b]c", branch(18) + exact(5, "a") + anyOf(5, "b") + exact(5, "c") + end()},
    });
}

TEST(fxRegEngineCompile, alternativesAreAChainOfBranches) {
    expectPrograms({
        {"a|b", branch(8) + exact(13, "a") + branch(8) + exact(5, "b") + end()},
        {"a|b|c", branch(8) + exact(21, "a") + branch(8) + exact(13, "b") + branch(8) +
                      exact(5, "c") + end()},
        {"a|", branch(8) + exact(11, "a") + branch(6) + nothing(3) + end()},
        {"|a", branch(6) + nothing(11) + branch(8) + exact(5, "a") + end()},
        {"|", branch(6) + nothing(9) + branch(6) + nothing(3) + end()},
        {"^|$", branch(6) + bol(9) + branch(6) + eol(3) + end()},
    });
}

TEST(fxRegEngineCompile, deliberateANewlineSeparatesAlternatives) {
    expectPrograms({
        {"a\nb", branch(8) + exact(13, "a") + branch(8) + exact(5, "b") + end()},
        {"a|b\nc", branch(8) + exact(21, "a") + branch(8) + exact(13, "b") + branch(8) +
                       exact(5, "c") + end()},
        {"(a\n)", branch(23) + open(1, 3) + branch(8) + exact(11, "a") + branch(6) + nothing(3) +
                      close(1, 3) + end()},
        {"a\n", branch(8) + exact(11, "a") + branch(6) + nothing(3) + end()},
    });
}

TEST(fxRegEngineCompile, groupsAreNumberedByTheirOpeningParenthesis) {
    expectPrograms({
        {"()", branch(15) + open(1, 3) + branch(6) + nothing(3) + close(1, 3) + end()},
        {"(a)", branch(17) + open(1, 3) + branch(8) + exact(5, "a") + close(1, 3) + end()},
        {"(a|b)", branch(25) + open(1, 3) + branch(8) + exact(13, "a") + branch(8) + exact(5, "b") +
                      close(1, 3) + end()},
        {"((a))", branch(26) + open(1, 3) + branch(17) + open(2, 3) + branch(8) + exact(5, "a") +
                      close(2, 3) + close(1, 3) + end()},
        {"(a)(b)", branch(31) + open(1, 3) + branch(8) + exact(5, "a") + close(1, 3) + open(2, 3) +
                       branch(8) + exact(5, "b") + close(2, 3) + end()},
    });
}

TEST(fxRegEngineCompile, nineGroupsCompile) {
    std::string pattern, nodes = branch(3 + 9 * 14);
    for (int group = 1; group <= 9; ++group) {
        const std::string letter(1, static_cast<char>('a' + group - 1));
        pattern += "(" + letter + ")";
        nodes += open(group, 3) + branch(8) + exact(5, letter) + close(group, 3);
    }
    expectPrograms({{pattern, nodes + end()}});
}

TEST(fxRegEngineCompile, simpleAtomsRepeatWithoutALoop) {
    expectPrograms({
        {"a*", branch(11) + star(8) + exact(0, "a") + end()},
        {"a+", branch(11) + plus(8) + exact(0, "a") + end()},
        {".*", branch(9) + star(6) + any(0) + end()},
        {".+", branch(9) + plus(6) + any(0) + end()},
        {"[ab]*", branch(12) + star(9) + anyOf(0, "ab") + end()},
        {"[^ab]+", branch(12) + plus(9) + anyBut(0, "ab") + end()},
        {"a*b", branch(16) + star(8) + exact(0, "a") + exact(5, "b") + end()},
        {"a*b*", branch(19) + star(8) + exact(0, "a") + star(8) + exact(0, "b") + end()},
        {"a*|b+",
         branch(11) + star(19) + exact(0, "a") + branch(11) + plus(8) + exact(0, "b") + end()},
    });
}

TEST(fxRegEngineCompile, aStarredGroupIsALoopThatLinksBack) {
    expectPrograms({
        {"(a)*", branch(29) + branch(20) + open(1, 3) + branch(8) + exact(5, "a") + close(1, 3) +
                     back(17) + branch(3) + nothing(3) + end()},
        {"(ab)*c", branch(35) + branch(21) + open(1, 3) + branch(9) + exact(6, "ab") + close(1, 3) +
                       back(18) + branch(3) + nothing(3) + exact(5, "c") + end()},
    });
}

TEST(fxRegEngineCompile, aGroupOnceOrMoreIsALoopBehindIt) {
    expectPrograms({
        {"(a)+", branch(29) + open(1, 3) + branch(8) + exact(5, "a") + close(1, 3) + branch(6) +
                     back(17) + branch(3) + nothing(3) + end()},
        {"(a)+b", branch(34) + open(1, 3) + branch(8) + exact(5, "a") + close(1, 3) + branch(6) +
                      back(17) + branch(3) + nothing(3) + exact(5, "b") + end()},
    });
}

TEST(fxRegEngineCompile, anOptionalAtomIsABranch) {
    expectPrograms({
        {"a?", branch(17) + branch(8) + exact(8, "a") + branch(3) + nothing(3) + end()},
        {"(a)?", branch(26) + branch(17) + open(1, 3) + branch(8) + exact(5, "a") + close(1, 6) +
                     branch(3) + nothing(3) + end()},
        {"^?", branch(15) + branch(6) + bol(6) + branch(3) + nothing(3) + end()},
        {".?a", branch(20) + branch(6) + any(6) + branch(3) + nothing(3) + exact(5, "a") + end()},
    });
}

// The nodes of a group move up for the branch inserted before them.
TEST(fxRegEngineCompile, nestedRepetitionsKeepTheirLinks) {
    expectPrograms({
        {"(a*)?", branch(29) + branch(20) + open(1, 3) + branch(11) + star(8) + exact(0, "a") +
                      close(1, 6) + branch(3) + nothing(3) + end()},
        {"((a)*b)+", branch(55) + open(1, 3) + branch(34) + branch(20) + open(2, 3) + branch(8) +
                         exact(5, "a") + close(2, 3) + back(17) + branch(3) + nothing(3) +
                         exact(5, "b") + close(1, 3) + branch(6) + back(43) + branch(3) +
                         nothing(3) + end()},
    });
}

// Literal runs.

TEST(fxRegEngineCompile, aRunBacksOffBeforeARepeatedByte) {
    expectPrograms({
        {"ab*", branch(16) + exact(5, "a") + star(8) + exact(0, "b") + end()},
        {"abc+", branch(17) + exact(6, "ab") + plus(8) + exact(0, "c") + end()},
        {"ab?",
         branch(22) + exact(5, "a") + branch(8) + exact(8, "b") + branch(3) + nothing(3) + end()},
        {"a*bc*",
         branch(24) + star(8) + exact(0, "a") + exact(5, "b") + star(8) + exact(0, "c") + end()},
    });
}

TEST(fxRegEngineCompile, aRunEndsBeforeASpecialByte) {
    expectPrograms({
        {"ab.", branch(12) + exact(6, "ab") + any(3) + end()},
        {"ab[c]", branch(14) + exact(6, "ab") + anyOf(5, "c") + end()},
        {"ab^", branch(12) + exact(6, "ab") + bol(3) + end()},
        {"ab$", branch(12) + exact(6, "ab") + eol(3) + end()},
        {"ab()",
         branch(21) + exact(6, "ab") + open(1, 3) + branch(6) + nothing(3) + close(1, 3) + end()},
        {"ab|", branch(9) + exact(12, "ab") + branch(6) + nothing(3) + end()},
    });
}

TEST(fxRegEngineCompile, aBackslashMakesTheNextByteLiteral) {
    for (const char* pattern : {"\\*", "\\+", "\\?", "\\.", "\\^", "\\$", "\\(", "\\)", "\\[",
                                "\\]", "\\|", "\\\n", "\\\\", "\\a", "\\0", "\\n", "\\{"})
        expectPrograms({{pattern, onlyExact(pattern + 1)}});
    expectPrograms({
        {"a\\*b", onlyExact("a*b")},
        {"a\\.\\.b", onlyExact("a..b")},
        {"a\\\\b", onlyExact("a\\b")},
        {"a\\|b", onlyExact("a|b")},
        {"a\\\nb", onlyExact("a\nb")},
        {"\\^a\\$", onlyExact("^a$")},
        {"\\a\\b\\c", onlyExact("abc")},
    });
}

TEST(fxRegEngineCompile, aRepeatedEscapedByteBacksOffToItsBackslash) {
    expectPrograms({
        {"\\.*", branch(11) + star(8) + exact(0, ".") + end()},
        {"\\**", branch(11) + star(8) + exact(0, "*") + end()},
        {"a\\.*", branch(16) + exact(5, "a") + star(8) + exact(0, ".") + end()},
        {"ab\\.*", branch(17) + exact(6, "ab") + star(8) + exact(0, ".") + end()},
        {"a\\.\\*+", branch(17) + exact(6, "a.") + plus(8) + exact(0, "*") + end()},
        {"\\ab*", branch(16) + exact(5, "a") + star(8) + exact(0, "b") + end()},
        {"a\\\\*", branch(16) + exact(5, "a") + star(8) + exact(0, "\\") + end()},
    });
}

TEST(fxRegEngineCompile, aWordNodeEndsARun) {
    expectPrograms({
        {"a\\<b", branch(16) + exact(5, "a") + wordStart(3) + exact(5, "b") + end()},
        {"ab\\>", branch(12) + exact(6, "ab") + wordEnd(3) + end()},
        {"a\\.\\<", branch(12) + exact(6, "a.") + wordStart(3) + end()},
        {"\\\\\\<", branch(11) + exact(5, "\\") + wordStart(3) + end()},
        {"a\\\\<", onlyExact("a\\<")},
        {"\\\\<b", onlyExact("\\<b")},
    });
}

TEST(fxRegEngineCompile, everythingElseIsLiteral) {
    for (const char* text : {"a{2}", "{1,2}", "]", "a]", "a-b", "<a>", "a,b:c;d", "#%&'\"/!=@_~`",
                             "\t\r ", "\x01\x7f\x80\xff"})
        expectPrograms({{text, onlyExact(text)}});
}

// Classes.

TEST(fxRegEngineCompile, aClassListsItsMembers) {
    expectPrograms({
        {"[a]", onlyAnyOf("a")},
        {"[abc]", onlyAnyOf("abc")},
        {"[aa]", onlyAnyOf("aa")},
        {"[cba]", onlyAnyOf("cba")},
        {"[^abc]", onlyAnyBut("abc")},
        {"[^^]", onlyAnyBut("^")},
        {"[a^]", onlyAnyOf("a^")},
        {"[\x80\xff]", onlyAnyOf("\x80\xff")},
    });
}

TEST(fxRegEngineCompile, specialBytesAreMembersLikeOthers) {
    expectPrograms({
        {"[.*+?$(){}|[]", onlyAnyOf(".*+?$(){}|[")},
        {"[a\nb]", onlyAnyOf("a\nb")},
        {"[\\]", onlyAnyOf("\\")},
        {"[\\n]", onlyAnyOf("\\n")},
        {"[\\]a]", branch(14) + anyOf(5, "\\") + exact(6, "a]") + end()},
    });
}

TEST(fxRegEngineCompile, bracketAndHyphenRightAfterTheOpeningAreMembers) {
    expectPrograms({
        {"[]]", onlyAnyOf("]")},
        {"[]a]", onlyAnyOf("]a")},
        {"[^]]", onlyAnyBut("]")},
        {"[^]a]", onlyAnyBut("]a")},
        {"[-]", onlyAnyOf("-")},
        {"[-a]", onlyAnyOf("-a")},
        {"[^-]", onlyAnyBut("-")},
        {"[^-a]", onlyAnyBut("-a")},
        {"[]-]", onlyAnyOf("]-")},
        {"[-]]", branch(13) + anyOf(5, "-") + exact(5, "]") + end()},
    });
}

TEST(fxRegEngineCompile, aHyphenBeforeTheClosingIsAMember) {
    expectPrograms({
        {"[a-]", onlyAnyOf("a-")},
        {"[^a-]", onlyAnyBut("a-")},
        {"[a-c-]", onlyAnyOf("abc-")},
        {"[--]", onlyAnyOf("--")},
    });
}

TEST(fxRegEngineCompile, rangesAreExpanded) {
    expectPrograms({
        {"[a-a]", onlyAnyOf("a")},
        {"[a-b]", onlyAnyOf("ab")},
        {"[a-e]", onlyAnyOf("abcde")},
        {"[^a-e]", onlyAnyBut("abcde")},
        {"[a-cx-z]", onlyAnyOf("abcxyz")},
        {"[a-c0-2_]", onlyAnyOf("abc012_")},
        {"[Y-b]", onlyAnyOf("YZ[\\]^_`ab")},
        {"[[-^]", onlyAnyOf("[\\]^")},
        {"[+--]", onlyAnyOf("+,-")},
        {"[]-a]", onlyAnyOf("]^_`a")},
        {"[--0]", onlyAnyOf("-./0")},
        {"[^--0]", onlyAnyBut("-./0")},
        {"[*-[]", onlyAnyOf(bytesFromTo('*', '['))},
    });
}

TEST(fxRegEngineCompile, rangesAreOfUnsignedBytes) {
    expectPrograms({
        {"[\x7e-\x81]", onlyAnyOf("\x7e\x7f\x80\x81")},
        {"[\xfd-\xff]", onlyAnyOf("\xfd\xfe\xff")},
        {"[\xff-\xff]", onlyAnyOf("\xff")},
        {"[\x01-\xff]", onlyAnyOf(bytesFromTo(1, 255))},
        {"[^\x01-\xff]", onlyAnyBut(bytesFromTo(1, 255))},
    });
}

TEST(fxRegEngineCompile, aChainedRangeStartsFromTheByteBeforeItsHyphen) {
    expectPrograms({
        {"[a-c-e]", onlyAnyOf("abcde")},
        {"[a-c-e-g]", onlyAnyOf("abcdefg")},
        {"[a-c-c]", onlyAnyOf("abc")},
        {"[a-c-b]", onlyAnyOf("abc")},
        {"[+--0]", onlyAnyOf("+,-0")},
    });
}

TEST(fxRegEngineCompile, deliberateARangeInvertedByOneHoldsItsFirstByte) {
    expectPrograms({
        {"[b-a]", onlyAnyOf("b")},
        {"[^b-a]", onlyAnyBut("b")},
        {"[xb-ay]", onlyAnyOf("xby")},
        {"[\xff-\xfe]", onlyAnyOf("\xff")},
        {"[.--]", onlyAnyOf(".")},
    });
    expectMessage("[c-a]", "invalid [] range");
}

// The hints.

TEST(fxRegEngineCompile, hintsComeFromASingleAlternative) {
    const struct {
        const char* pattern;
        char startchar;
        bool anchored;
        int must;  // offset in the program, or -1
        const char* mustText;
    } rows[] = {
        {"", '\0', false, -1, ""},
        {"abc", 'a', false, -1, ""},
        {"\xe9t", '\xe9', false, -1, ""},
        {"\\*a", '*', false, -1, ""},
        {"ab*", 'a', false, -1, ""},
        {"a|b", '\0', false, -1, ""},
        {"a|", '\0', false, -1, ""},
        {"a\n", '\0', false, -1, ""},
        {"^", '\0', true, -1, ""},
        {"^abc", '\0', true, -1, ""},
        {"^a*bc", '\0', true, -1, ""},  // the first piece is no repetition
        {"^a|b", '\0', false, -1, ""},
        {"(^a)", '\0', false, -1, ""},
        {"(a)", '\0', false, -1, ""},
        {"a+b", '\0', false, -1, ""},
        {"a?", '\0', false, -1, ""},
        {".a", '\0', false, -1, ""},
        {"[a]b", '\0', false, -1, ""},
        {"\\<a", '\0', false, -1, ""},
        {"^?a", '\0', false, 1 + 15 + 3, "a"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "pattern " << shown(row.pattern));
        const Compiled program = compiled(row.pattern);
        ASSERT_TRUE(program != nullptr);
        EXPECT_EQ(row.startchar, program->startchar);
        EXPECT_EQ(row.anchored, program->anchored != 0);
        EXPECT_EQ(row.must, program->must ? program->must - program->program : -1);
        EXPECT_EQ(static_cast<int>(std::strlen(row.mustText)), program->mustlen);
        if (program->must) {
            EXPECT_STREQ(row.mustText, program->must);
        }
    }
}

TEST(fxRegEngineCompile, theMustRunIsTheLongestOfAnAlternativeThatStartsWithARepetition) {
    const struct {
        const char* pattern;
        int must;  // offset of its node behind the magic byte, or -1
        const char* mustText;
    } rows[] = {
        {".*abc", 9, "abc"},
        {"a*bc", 11, "bc"},
        {"a?bc", 17, "bc"},
        {".*abc.de", 9, "abc"},
        {".*ab.cd", 18, "cd"},  // of equal ones the later
        {".*a.b.cd.e.fg.h", 42, "fg"},
        {".*a.bcd.e", 17, "bcd"},
        {"(a|b)*c", 37, "c"},
        {"(a*)b", 20, "b"},    // a group that starts with a repetition
        {"(a|b*)c", 28, "c"},  // in any of its alternatives
        {"((x|a?)y)z", 48, "z"},
        {"a*(bcd)e", 27, "e"},  // a group's own runs are not on the chain
        {"(abc)*d?e", 45, "e"},
        {"a*b+c", 19, "c"},  // nor is what is repeated
        {"a*b*", -1, ""},
        {"a*", -1, ""},
        {"(a*b)+", -1, ""},
        {"(a*b)+c", -1, ""},  // '+' does not pass it on
        {"(a*b)*c", 37, "c"},
        {"x.*abc", -1, ""},  // only the first piece counts
        {"a*bc|d", -1, ""},
        {"d|a*bc", -1, ""},
        {"(d|a*bc)", -1, ""},  // no run on the chain
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "pattern " << shown(row.pattern));
        const Compiled program = compiled(row.pattern);
        ASSERT_TRUE(program != nullptr);
        EXPECT_EQ(static_cast<int>(std::strlen(row.mustText)), program->mustlen);
        if (row.must < 0) {
            EXPECT_TRUE(program->must == nullptr);
            continue;
        }
        ASSERT_TRUE(program->must != nullptr);
        EXPECT_EQ(1 + row.must + 3, program->must - program->program);
        EXPECT_STREQ(row.mustText, program->must);
    }
}

// The limit and the block.

TEST(fxRegEngineCompile, aProgramHasAtMost32766Bytes) {
    // Magic byte, branch, header and end of the run or class, end: 11 bytes.
    const std::string most(32755, 'a');
    expectPrograms({{most, onlyExact(most)}, {"[" + most + "]", onlyAnyOf(most)}});
    expectMessage(most + "a", "regexp too big");
    expectMessage("[" + most + "a]", "regexp too big");
    expectMessage(std::string(1 << 20, 'a'), "regexp too big");
}

TEST(fxRegEngineCompile, theLimitCountsNodes) {
    // 7 bytes and 3 for each node; the last one here makes it 32767.
    EXPECT_TRUE(compiled(std::string(10919, '.')) != nullptr);
    expectMessage(std::string(10920, '.'), "regexp too big");
    // Star and run are 8 bytes: 7 + 8 * 4094 + 5 + 2 is the limit.
    std::string stars;
    for (int i = 0; i < 4094; ++i)
        stars += "a*";
    EXPECT_TRUE(compiled(stars + "bb") != nullptr);
    EXPECT_TRUE(compiled(stars + "bbb") != nullptr);
    expectMessage(stars + "bbbb", "regexp too big");
}

TEST(fxRegEngineCompile, aParseErrorComesBeforeTheLimit) {
    expectMessage(std::string(40000, 'a') + "(", "unmatched ()");
    expectMessage(std::string(40000, 'a') + "**", "nested *?+");
}

// A class of 255 bytes takes 259: so many are a little more than 2^32.
TEST(fxRegEngineCompile, noPatternIsTooLongToCount) {
    const std::string one = "[\x01-\xff]";
    const unsigned int classes = 16582886;
    std::string pattern;
    pattern.reserve(one.size() * classes + 1);
    for (unsigned int i = 0; i < classes; ++i)
        pattern += one;
    takeRegErrors();
    EXPECT_TRUE(fxregcomp(pattern.c_str()) == nullptr);
    EXPECT_EQ(Messages{"regexp too big"}, takeRegErrors());
    pattern += '(';
    EXPECT_TRUE(fxregcomp(pattern.c_str()) == nullptr);
    EXPECT_EQ(Messages{"unmatched ()"}, takeRegErrors());
}

TEST(fxRegEngineCompile, eachCallMakesABlockOfItsOwn) {
    const Compiled first = compiled("a*b"), second = compiled("a*b");
    ASSERT_TRUE(first && second);
    EXPECT_NE(first.get(), second.get());
    EXPECT_NE(first->must, second->must);
}
