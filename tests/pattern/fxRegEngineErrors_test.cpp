// What the compiler refuses.

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "tests/support/compiled.h"
#include "tests/support/heapCalls.h"
#include "tests/support/regErrors.h"

TEST(fxRegEngineErrors, aNullPatternIsAnError) {
    takeRegErrors();
    EXPECT_TRUE(fxregcomp(nullptr) == nullptr);
    EXPECT_EQ(Messages{"NULL argument"}, takeRegErrors());
}

TEST(fxRegEngineErrors, aTenthGroupIsAnError) {
    const std::string nine = "(a)(b)(c)(d)(e)(f)(g)(h)(i)";
    EXPECT_TRUE(compiled(nine) != nullptr);
    EXPECT_TRUE(compiled("(((((((((a)))))))))") != nullptr);
    expectMessage(nine + "(j)", "too many ()");
    expectMessage(nine + "(", "too many ()");
    expectMessage("((((((((((a))))))))))", "too many ()");
    expectMessage("(((((((((()", "too many ()");
    expectMessage(nine + "|(j)", "too many ()");
}

TEST(fxRegEngineErrors, unbalancedParenthesesAreAnError) {
    for (const char* pattern :
         {"(", ")", "a)", "(a", "(a|b", "(a\nb", "((a)", "(a))", "())", "a|)", "(()", "(a*", "a*)"})
        expectMessage(pattern, "unmatched ()");
}

TEST(fxRegEngineErrors, repeatingWhatCouldBeEmptyIsAnError) {
    for (const char* pattern : {"^*", "$*", "$+", "\\<*", "\\>+", "()*", "()+", "(a*)*", "(a*)+",
                                "(a?)*", "(a|)*", "(|a)+", "(a|b*)*", "(^)*", "((a*))*", "a^+"})
        expectMessage(pattern, "*+ operand could be empty");
}

TEST(fxRegEngineErrors, repeatingWhatHasWidthInEveryAlternativeIsNot) {
    for (const char* pattern : {"(a+)*", "(a*b)*", "(ba*)+", "(a|b)*", "((a))+", "(^a)*", "(a$)+",
                                "(\\<a)*", "(a*)?", "()?", "^?", "\\<?", "(a|)?"})
        EXPECT_TRUE(compiled(pattern) != nullptr) << pattern;
}

TEST(fxRegEngineErrors, twoRepetitionsInARowAreAnError) {
    for (const char* pattern : {"x**", "a*+", "a*?", "a+*", "a++", "a+?", "a?*", "a?+", "a??",
                                "(a)*?", "(a)+*", "(a)?+", ".**", "[a]+*", "ab*+", "\\.**"})
        expectMessage(pattern, "nested *?+");
}

TEST(fxRegEngineErrors, repeatingNothingIsAnError) {
    for (const char* pattern : {"*a", "+", "?a", "a|*", "a\n+", "(*a)", "(?)", "(a|+)"})
        expectMessage(pattern, "?+* follows nothing");
}

TEST(fxRegEngineErrors, anOpenClassIsAnError) {
    for (const char* pattern : {"[", "[^", "[a", "[]", "[^]", "[]a", "[-", "[^-", "[a-", "[a-b",
                                "a[b", "[a-c-", "[b-a", "([a", "[a*"})
        expectMessage(pattern, "unmatched []");
}

TEST(fxRegEngineErrors, anInvertedRangeIsAnError) {
    for (const char* pattern : {"[z-a]", "[c-a]", "[^c-a]", "[a-c-a]", "[z-a", "[a--]", "[x\xff-a]",
                                "[\x80-\x7e]", "[\xff-\x01]", "x[9-0]*"})
        expectMessage(pattern, "invalid [] range");
}

TEST(fxRegEngineErrors, aTrailingBackslashIsAnError) {
    for (const char* pattern : {"\\", "a\\", "ab\\", "a*\\", "(\\", "a|\\", "\\\\\\", "[a]\\"})
        expectMessage(pattern, "trailing \\");
    EXPECT_TRUE(compiled("\\\\") != nullptr);
}

// The text promises two more messages, "internal urp" and "junk on end". No
// pattern gets there: an alternative goes on up to the bytes that the first is
// about, and nothing but they and ')' can be left over for the second.
TEST(fxRegEngineErrors, alternativesEndOnlyWhereTheyMay) {
    for (int byte = 1; byte < 256; ++byte) {
        for (const char* prefix : {"", "a", "a|", "(a)", "(", "(a|", "a*"}) {
            const std::string pattern = prefix + std::string(1, static_cast<char>(byte));
            takeRegErrors();
            const Compiled program = compiled(pattern);
            const Messages messages = takeRegErrors();
            EXPECT_EQ(program ? 0U : 1U, messages.size()) << shown(pattern);
            for (const std::string& message : messages) {
                EXPECT_NE("internal urp", message);
                EXPECT_NE("junk on end", message);
            }
        }
    }
}

// The library's own function, of which this program's takes the place.
TEST(fxRegEngineErrors, deliberateTheErrorSinkDoesNothing) {
    using Sink = void (*)(const char*);
    const auto sink = reinterpret_cast<Sink>(::dlsym(RTLD_NEXT, "_Z10fxregerrorPKc"));
    ASSERT_TRUE(sink != nullptr);
    takeRegErrors();

    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    sink("unmatched ()");
    sink(nullptr);

    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ(Messages(), takeRegErrors());
}

#ifndef __SANITIZE_ADDRESS__
namespace {
[[noreturn]] void compileWithoutMemory() {
    const std::string pattern(30000, 'a');
    takeRegErrors();
    refuseBlocksFrom(30000);
    fxregexp* const program = fxregcomp(pattern.c_str());
    const Messages messages = takeRegErrors();
    const bool asStated = !program && messages.size() == 1 && messages[0] == "out of space";
    std::fputs(asStated ? "null, out of space\n" : "something else\n", stderr);
    std::_Exit(asStated ? 0 : 1);
}
}  // namespace

TEST(fxRegEngineErrorsDeathTest, withoutMemoryTheResultIsNull) {
    EXPECT_EXIT(compileWithoutMemory(), testing::ExitedWithCode(0), "^null, out of space\n$");
}
#endif
