#include <cstring>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "tests/support/compiled.h"
#include "tests/support/regErrors.h"

namespace {

// What `source` becomes after `pattern` has matched `subject`.
std::string substituted(const std::string& pattern, const std::string& subject,
                        const std::string& source) {
    const Compiled program = compiled(pattern);
    if (!program || fxregexec(program.get(), subject.c_str()) != 1)
        return "no match";
    takeRegErrors();
    std::string dest(source.size() * (subject.size() + 1) + 1, '#');
    fxregsub(program.get(), source.c_str(), &dest[0]);
    EXPECT_EQ(Messages(), takeRegErrors());
    return dest.c_str();
}

// A match whose subject may be changed afterwards.
class fxRegEngineSubstituteDamage : public testing::Test {
protected:
    fxRegEngineSubstituteDamage() : program(compiled("b(c*)(d)?")) {
        std::memset(dest, '#', sizeof dest);
        std::strcpy(subject, "abcccx");
        EXPECT_EQ(1, fxregexec(program.get(), subject));
        EXPECT_EQ("0:1-5 1:2-5", groupsOf(*program, subject));
        takeRegErrors();
    }

    Compiled program;
    char subject[8];
    char dest[32];
};

}  // namespace

TEST(fxRegEngineSubstitute, aTemplateWithoutSpecialBytesIsCopied) {
    EXPECT_EQ("", substituted("a", "a", ""));
    EXPECT_EQ("plain text", substituted("a", "a", "plain text"));
    EXPECT_EQ("$1 %s (*) \xe9", substituted("a", "a", "$1 %s (*) \xe9"));
}

TEST(fxRegEngineSubstitute, anAmpersandIsTheWholeMatch) {
    EXPECT_EQ("bc", substituted("b.", "abcd", "&"));
    EXPECT_EQ("<bc|bc>", substituted("b.", "abcd", "<&|&>"));
}

TEST(fxRegEngineSubstitute, aDigitBehindABackslashIsAGroup) {
    const std::string nine = "(a)(b)(c)(d)(e)(f)(g)(h)(i)";
    EXPECT_EQ("i-h-g-f-e-d-c-b-a-abcdefghi",
              substituted(nine, "xabcdefghix", "\\9-\\8-\\7-\\6-\\5-\\4-\\3-\\2-\\1-\\0"));
    EXPECT_EQ("home at me", substituted("([a-z]+)@([a-z]+)", "me@home", "\\2 at \\1"));
    EXPECT_EQ("a0", substituted("(a)", "a", "\\10"));
    EXPECT_EQ("1a", substituted("(a)", "a", "1\\1"));
}

TEST(fxRegEngineSubstitute, anEscapedBackslashOrAmpersandIsItself) {
    EXPECT_EQ("\\", substituted("a", "a", "\\\\"));
    EXPECT_EQ("&", substituted("a", "a", "\\&"));
    EXPECT_EQ("\\a", substituted("a", "a", "\\\\&"));
    EXPECT_EQ("\\&", substituted("a", "a", "\\\\\\&"));
    EXPECT_EQ("\\1", substituted("(a)", "a", "\\\\1"));
    EXPECT_EQ("[foo] f &", substituted("(f)oo", "a foo", "[&] \\1 \\&"));
}

TEST(fxRegEngineSubstitute, aBackslashBeforeAnyOtherByteStays) {
    EXPECT_EQ("\\n\\a\\ \\.", substituted("a", "a", "\\n\\a\\ \\."));
    EXPECT_EQ("\\x", substituted("a", "a", "\\x"));
    EXPECT_EQ("\\\na", substituted("a", "a", "\\\n&"));
    EXPECT_EQ("\\:\\/", substituted("a", "a", "\\:\\/"));  // beside '0' and '9'
    EXPECT_EQ("\\\xb1", substituted("(a)", "a", "\\\xb1"));
}

TEST(fxRegEngineSubstitute, aBackslashAtTheEndStays) {
    EXPECT_EQ("\\", substituted("a", "a", "\\"));
    EXPECT_EQ("a\\", substituted("a", "a", "&\\"));
}

TEST(fxRegEngineSubstitute, unsetAndEmptyGroupsAreNothing) {
    EXPECT_EQ("[]", substituted("(a)|b", "b", "[\\1]"));
    EXPECT_EQ("[]", substituted("a", "a", "[\\5]"));
    EXPECT_EQ("[]", substituted("a()b", "ab", "[\\1]"));
    EXPECT_EQ("[]", substituted("", "abc", "[&]"));
}

TEST(fxRegEngineSubstitute, aGroupIsCopiedOnlyWhenBothItsEndsAreSet) {
    const Compiled program = compiled("(a)");
    char dest[16];
    const char subject[] = "a";
    ASSERT_EQ(1, fxregexec(program.get(), subject));
    takeRegErrors();
    program->endp[1] = nullptr;
    fxregsub(program.get(), "[\\1&]", dest);
    EXPECT_STREQ("[a]", dest);
    program->startp[0] = nullptr;
    fxregsub(program.get(), "[\\1&]", dest);
    EXPECT_STREQ("[]", dest);
    EXPECT_EQ(Messages(), takeRegErrors());
}

TEST(fxRegEngineSubstitute, nothingIsWrittenBehindTheTerminator) {
    const Compiled program = compiled("b+");
    char dest[16];
    std::memset(dest, '#', sizeof dest);
    ASSERT_EQ(1, fxregexec(program.get(), "abbc"));
    fxregsub(program.get(), "<&>", dest);
    EXPECT_EQ(std::string("<bb>\0###########", 16), std::string(dest, 16));
}

// As a damaged program can set it.
TEST_F(fxRegEngineSubstituteDamage, aGroupThatEndsBeforeItStartsIsEmpty) {
    std::swap(program->startp[1], program->endp[1]);
    fxregsub(program.get(), "<\\1>", dest);
    EXPECT_STREQ("<>", dest);
    EXPECT_EQ(Messages(), takeRegErrors());
}

TEST_F(fxRegEngineSubstituteDamage, nullArgumentsAreErrors) {
    fxregsub(nullptr, "&", dest);
    EXPECT_EQ(Messages{"NULL parm to regsub"}, takeRegErrors());
    fxregsub(program.get(), nullptr, dest);
    EXPECT_EQ(Messages{"NULL parm to regsub"}, takeRegErrors());
    fxregsub(program.get(), "&", nullptr);
    EXPECT_EQ(Messages{"NULL parm to regsub"}, takeRegErrors());
    EXPECT_EQ(std::string(32, '#'), std::string(dest, 32));
}

TEST_F(fxRegEngineSubstituteDamage, aProgramWithoutTheMagicByteIsAnError) {
    for (const int magic : {0, 155, 157}) {
        program->program[0] = static_cast<char>(magic);
        fxregsub(program.get(), "&", dest);
        EXPECT_EQ(Messages{"damaged regexp fed to regsub"}, takeRegErrors()) << magic;
        EXPECT_EQ(std::string(32, '#'), std::string(dest, 32));
    }
}

TEST_F(fxRegEngineSubstituteDamage, deliberateAGroupThatEndsInNulStopsWithoutATerminator) {
    subject[4] = '\0';  // the group's last byte
    fxregsub(program.get(), "<\\1>", dest);
    EXPECT_EQ(Messages{"damaged match string"}, takeRegErrors());
    EXPECT_EQ(std::string("<cc\0####", 8), std::string(dest, 8));
}

// strncpy fills up with NULs, so an earlier one is found at the end too.
TEST_F(fxRegEngineSubstituteDamage, aNulAnywhereInAGroupIsFound) {
    subject[2] = '\0';
    fxregsub(program.get(), "<&>", dest);
    EXPECT_EQ(Messages{"damaged match string"}, takeRegErrors());
    EXPECT_EQ(std::string("<b\0\0\0###", 8), std::string(dest, 8));
}

TEST_F(fxRegEngineSubstituteDamage, whatIsOutsideTheGroupsUsedDoesNotMatter) {
    subject[5] = '\0';
    fxregsub(program.get(), "<&>", dest);
    EXPECT_STREQ("<bccc>", dest);
    subject[1] = '\0';
    fxregsub(program.get(), "<\\1\\2>", dest);
    EXPECT_STREQ("<ccc>", dest);
    EXPECT_EQ(Messages(), takeRegErrors());
}
