// fxSearchListLooks_test.cpp - how often a search list looks. An expression that does not compile
// reports itself each time that it is compiled, which is once for each directory.

#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxSearchList.h"
#include "tests/support/regErrors.h"
#include "tests/support/runProgram.h"

TEST(fxSearchList, theExpressionIsCompiledOnceForEachDirectoryThatOpens) {
    const TemporaryFolder folder;
    folder.file("1/a", "");
    folder.file("1/b", "");
    folder.file("2/a", "");
    const std::string one = folder / "1", two = folder / "2", missing = folder / "missing";
    const struct {
        std::string list;
        std::size_t compilations;
    } cases[] = {{one, 1},
                 {":" + one + "::" + two + ":", 2},
                 {one + ":" + one + ":" + two, 3},
                 {missing + ":" + one, 1},
                 {missing, 0},
                 {":", 0},
                 {"", 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.list);
        takeRegErrors();
        fxSearchList list(c.list.c_str(), "(");
        EXPECT_EQ(Messages(c.compilations, "unmatched ()"), takeRegErrors());
        list.recalc();
        EXPECT_EQ(Messages(c.compilations, "unmatched ()"), takeRegErrors());
    }
}

TEST(fxSearchList, criteriaThatBothChangeAreLookedForOnce) {
    const TemporaryFolder folder;
    folder.file("1/a", "");
    folder.file("2/a", "");
    const std::string one = folder / "1", two = folder / "2";
    const struct {
        std::string list;
        const char* expr;
        std::size_t looks;
    } cases[] = {{one, "(", 0}, {two, "(", 1}, {one, "((", 1}, {two, "((", 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.list + " " + c.expr);
        fxSearchList list(one.c_str(), "(");
        takeRegErrors();
        list.searchCriteria(c.list.c_str(), c.expr);
        EXPECT_EQ(c.looks, takeRegErrors().size());
    }
}
