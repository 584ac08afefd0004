// The example program examples/search, run as its users run it.

#ifdef KELVOFXDS_SEARCH

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/runProgram.h"

namespace {

// Two files in a folder, in which the program runs.
class searchProgram : public testing::Test {
protected:
    searchProgram() {
        search.workingFolder = folder.path();
        folder.file("a.txt", "alpha beta\nbeta gamma\nnothing\n");
        folder.file("b.txt", "john smith\nbeta");
        folder.file("c.log", "beta\n");
    }
    ProgramResult run(const std::vector<std::string>& arguments) const {
        return search.run(arguments);
    }

    const TemporaryFolder folder;
    Program search{KELVOFXDS_SEARCH};
};

}  // namespace

TEST_F(searchProgram, showsTheLinesThatHaveThePattern) {
    const struct {
        const char* pattern;
        const char* lines;
    } cases[] = {
        {"beta", "alpha beta\nbeta gamma\n"},
        {"^beta", "beta gamma\n"},
        {"alpha|gamma", "alpha beta\nbeta gamma\n"},
        {"noo?thing", "nothing\n"},
        {"\\<gamma\\>", "beta gamma\n"},
        {"", "alpha beta\nbeta gamma\nnothing\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.pattern);
        const ProgramResult result = run({c.pattern, "a.txt"});
        EXPECT_EQ(0, result.status);
        EXPECT_EQ(c.lines, result.out);
        EXPECT_EQ("", result.err);
    }
}

TEST_F(searchProgram, ofSeveralFilesItNamesEach) {
    EXPECT_EQ("a.txt:alpha beta\na.txt:beta gamma\nb.txt:beta\n",
              run({"beta", "a.txt", "b.txt"}).out);
    EXPECT_EQ("a.txt\nb.txt\n", run({"-l", "beta", "a.txt", "b.txt"}).out);
}

TEST_F(searchProgram, searchesTheFilesOfDirectoriesWhoseNamesMatch) {
    folder.file("sub/d.txt", "beta\n");
    EXPECT_EQ("./a.txt\n./b.txt\nsub/d.txt\n",
              run({"-l", "-d", ".:sub", "beta", "[a-z]\\.txt"}).out);
    EXPECT_EQ(1, run({"-d", ".:sub:nowhere", "beta", "x.*"}).status);
}

TEST_F(searchProgram, replacesTheFirstMatchOfALine) {
    const struct {
        const char* replacement;
        const char* pattern;
        const char* lines;
    } cases[] = {
        {"<&>", "b[et]*a", "alpha <beta>\n<beta> gamma\n"},
        {"\\2 \\1", "([a-z]+) ([a-z]+)", "beta alpha\ngamma beta\n"},
        {"", "^no", "thing\n"},
        {"\\1\\&\\\\", "no", "&\\thing\n"},
        {"&&&&&&&&", "^noth", "nothnothnothnothnothnothnothnothing\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.replacement);
        const ProgramResult result = run({"-r", c.replacement, c.pattern, "a.txt"});
        EXPECT_EQ(0, result.status);
        EXPECT_EQ(c.lines, result.out);
    }
}

TEST_F(searchProgram, whatIsNotThereIsStatusOne) {
    const ProgramResult result = run({"zeta", "a.txt", "b.txt"});
    EXPECT_EQ(1, result.status);
    EXPECT_EQ("", result.out + result.err);
}

TEST_F(searchProgram, whatCannotBeReadGetsOneLineAndTheRestIsSearched) {
    const ProgramResult result = run({"smith", "missing", ".", "b.txt"});
    EXPECT_EQ(2, result.status);
    EXPECT_EQ("b.txt:john smith\n", result.out);
    EXPECT_EQ("search: missing: No such file or directory\nsearch: .: Is a directory\n",
              result.err);
}

TEST_F(searchProgram, whatIsNoPatternIsRefused) {
    const ProgramResult result = run({"(a", "a.txt"});
    EXPECT_EQ(2, result.status);
    EXPECT_EQ("search: \"(a\" is no regular expression\n", result.err);
}

TEST_F(searchProgram, helpTellsTheOptionsAndWrongOnesDo) {
    const ProgramResult help = run({"--help"});
    EXPECT_EQ(0, help.status);
    EXPECT_EQ(0U, help.out.find("usage: search "));
    const std::vector<std::string> wrong[] = {
        {}, {"beta"}, {"-x", "beta", "a.txt"}, {"-d", ".", "beta"}, {"-d", ".", "a", "b", "c"}};
    for (const auto& arguments : wrong) {
        const ProgramResult result = run(arguments);
        EXPECT_EQ(2, result.status);
        EXPECT_EQ("", result.out);
        EXPECT_NE(std::string::npos, result.err.find(help.out));
    }
}

#endif
