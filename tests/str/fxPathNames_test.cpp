#include "kelvofxds/str/fxPathNames.h"

#include <pwd.h>
#include <unistd.h>

#include <malloc.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/heapCalls.h"
#include "tests/support/runProgram.h"

namespace {

// What a function returned, which is freed; "(null)" for null.
std::string taken(char* result) {
    if (!result)
        return "(null)";
    const std::string text = result;
    std::free(result);
    return text;
}

std::string expanded(const std::string& text, unsigned int size = 256) {
    return taken(environmentVariableExtendedName(text.c_str(), size));
}

// A variable of the environment that is set, or unset if `value` is null, and gets its former
// state back.
class Variable {
public:
    Variable(const char* n, const char* value) : name(n), wasSet(::getenv(n) != nullptr) {
        if (wasSet)
            before = ::getenv(n);
        put(value);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { put(wasSet ? before.c_str() : nullptr); }

private:
    void put(const char* value) const {
        if (value)
            ::setenv(name, value, 1);
        else
            ::unsetenv(name);
    }

    const char* name;
    bool wasSet;
    std::string before;
};

// A user of this system with a home; any will do.
passwd* someUser() {
    passwd* entry = ::getpwuid(::getuid());
    return entry ? entry : ::getpwnam("root");
}

}  // namespace

// pathbasename.

TEST(pathbasename, isTheLastComponent) {
    const struct {
        const char *path, *name;
    } cases[] = {{"a", "a"},       {"a/b", "b"},      {"/a/b", "b"},    {"/a", "a"},
                 {"/a//b", "b"},   {"a/b/", "b"},     {"usr//", "usr"}, {"/usr/", "usr"},
                 {"//usr", "usr"}, {"a/b.c", "b.c"},  {".", "."},       {"..", ".."},
                 {"a/./", "."},    {"a//bc//", "bc"}, {" / ", " "},     {"\xE4/\xF6", "\xF6"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(c.name, taken(pathbasename(c.path)));
    }
}

TEST(pathbasename, slashesAloneAndNothingHaveNone) {
    for (const char* path : {"", "/", "//", "////"}) {
        SCOPED_TRACE(path);
        EXPECT_EQ("", taken(pathbasename(path)));
    }
}

TEST(pathbasename, ofNullIsNull) { EXPECT_EQ(nullptr, pathbasename(nullptr)); }

TEST(pathbasename, aLongComponentIsWhole) {
    const std::string name(1U << 20, 'n');
    EXPECT_EQ(name, taken(pathbasename(("a/" + name + "//").c_str())));
}

// pathdirname.

TEST(pathdirname, isWhatIsBeforeTheLastComponent) {
    const struct {
        const char *path, *directory;
    } cases[] = {{"a/b", "a"},      {"a/b/", "a"},     {"/usr/lib", "/usr"}, {"a//b", "a"},
                 {"a///b//", "a"},  {"a/b/c", "a/b"},  {"a//b/c", "a//b"},   {"///a/b//", "///a"},
                 {"./a", "."},      {"../a", ".."},    {"/a/b/", "/a"},      {" / ", " "},
                 {"//a//b", "//a"}, {"a/b//c/", "a/b"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(c.directory, taken(pathdirname(c.path)));
    }
}

TEST(pathdirname, withoutASeparatorIsADotOrASlash) {
    const struct {
        const char *path, *directory;
    } cases[] = {{"a", "."}, {"", "."},   {"a/", "."},   {"abc///", "."},
                 {"/", "/"}, {"//", "/"}, {"////", "/"}, {".", "."}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(c.directory, taken(pathdirname(c.path)));
    }
}

TEST(pathdirname, deliberateALeadingSlashAloneGivesAnEmptyText) {
    for (const char* path : {"/usr", "/usr/", "//x", "///x//"}) {
        SCOPED_TRACE(path);
        EXPECT_EQ("", taken(pathdirname(path)));
    }
}

TEST(pathdirname, ofNullIsNull) { EXPECT_EQ(nullptr, pathdirname(nullptr)); }

TEST(pathdirname, aLongDirectoryIsWhole) {
    const std::string directory(1U << 20, 'd');
    EXPECT_EQ(directory, taken(pathdirname((directory + "//a/").c_str())));
}

// pathexpandtilde.

TEST(pathexpandtilde, aTildeAloneIsHome) {
    const Variable home("HOME", "/h");
    const struct {
        const char *path, *expanded;
    } cases[] = {{"~", "/h"}, {"~/", "/h/"}, {"~/x", "/h/x"}, {"~//x/~", "/h//x/~"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(c.expanded, taken(pathexpandtilde(c.path)));
    }
}

TEST(pathexpandtilde, otherPathsAreCopied) {
    const Variable home("HOME", "/h");
    for (const char* path : {"", "a", "/a/~", "a~", " ~", "$HOME", "/"}) {
        SCOPED_TRACE(path);
        char* copy = pathexpandtilde(path);
        EXPECT_NE(path, copy);
        EXPECT_EQ(path, taken(copy));
    }
}

TEST(pathexpandtilde, anUnsetHomeIsEmpty) {
    const Variable home("HOME", nullptr);
    EXPECT_EQ("/x", taken(pathexpandtilde("~/x")));
    EXPECT_EQ("", taken(pathexpandtilde("~")));
}

TEST(pathexpandtilde, anEmptyHomeIsEmpty) {
    const Variable home("HOME", "");
    EXPECT_EQ("/x", taken(pathexpandtilde("~/x")));
}

TEST(pathexpandtilde, aLongHomeAndALongRestAreWhole) {
    const std::string longHome(70000, 'h'), rest = "/" + std::string(70000, 'r');
    const Variable home("HOME", longHome.c_str());
    EXPECT_EQ(longHome + rest, taken(pathexpandtilde(("~" + rest).c_str())));
}

TEST(pathexpandtilde, aTildeWithANameIsThatUsersHome) {
    const passwd* user = someUser();
    if (!user || !user->pw_dir)
        GTEST_SKIP() << "this system has no user";
    const Variable home("HOME", "/elsewhere");
    const std::string path = std::string("~") + user->pw_name, homeOfUser = user->pw_dir;
    EXPECT_EQ(homeOfUser, taken(pathexpandtilde(path.c_str())));
    EXPECT_EQ(homeOfUser + "/", taken(pathexpandtilde((path + "/").c_str())));
    EXPECT_EQ(homeOfUser + "/x//y", taken(pathexpandtilde((path + "/x//y").c_str())));
}

TEST(pathexpandtilde, pathsOfUnknownUsersAreCopied) {
    for (const char* path : {"~nosuchuser/x", "~nosuchuser", "~ /x", "~~", "~nosuchuser/~/"}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(path, taken(pathexpandtilde(path)));
    }
}

TEST(pathexpandtilde, aNameOfAnyLengthIsHarmless) {
    for (unsigned int n : {254u, 255u, 256u, 257u, 1000u, 100000u}) {
        SCOPED_TRACE(n);
        const std::string path = "~" + std::string(n, 'u');
        EXPECT_EQ(path, taken(pathexpandtilde(path.c_str())));
        EXPECT_EQ(path + "/x", taken(pathexpandtilde((path + "/x").c_str())));
    }
}

TEST(pathexpandtilde, ofNullIsNull) { EXPECT_EQ(nullptr, pathexpandtilde(nullptr)); }

// symbolicLinkExtendedName.

TEST(symbolicLinkExtendedName, isTheTargetAsItIsWritten) {
    const TemporaryFolder folder;
    folder.file("file", "");
    for (const char* target : {"file", "/no/such/file", "..", "a//b/", "link"}) {
        SCOPED_TRACE(target);
        const std::string link = folder / "link";
        ASSERT_EQ(0, ::symlink(target, link.c_str()));
        EXPECT_EQ(target, taken(symbolicLinkExtendedName(link.c_str(), 256)));
        ::unlink(link.c_str());
    }
}

TEST(symbolicLinkExtendedName, onlyOneLinkIsFollowed) {
    const TemporaryFolder folder;
    ASSERT_EQ(0, ::symlink("second", (folder / "first").c_str()));
    ASSERT_EQ(0, ::symlink("third", (folder / "second").c_str()));
    EXPECT_EQ("second", taken(symbolicLinkExtendedName((folder / "first").c_str(), 256)));
}

TEST(symbolicLinkExtendedName, whatIsNoLinkGivesNull) {
    const TemporaryFolder folder;
    ASSERT_EQ(0, ::symlink("loop", (folder / "loop").c_str()));
    for (const std::string& path :
         {folder.file("file", ""), folder.path(), folder / "missing", folder / "file/below",
          folder / "loop/below", folder / std::string(256, 'n'), std::string(100000, 'n'),
          std::string()}) {
        SCOPED_TRACE(path.substr(0, 100));
        EXPECT_EQ(nullptr, symbolicLinkExtendedName(path.c_str(), 256));
    }
}

TEST(symbolicLinkExtendedName, aLoopIsALinkLikeAnyOther) {
    const TemporaryFolder folder;
    ASSERT_EQ(0, ::symlink("loop", (folder / "loop").c_str()));
    EXPECT_EQ("loop", taken(symbolicLinkExtendedName((folder / "loop").c_str(), 256)));
}

TEST(symbolicLinkExtendedName, ofNullIsNull) {
    EXPECT_EQ(nullptr, symbolicLinkExtendedName(nullptr, 256));
}

TEST(symbolicLinkExtendedName, aTargetOfExactlyTheSizeIsWhole) {
    const TemporaryFolder folder;
    for (const std::size_t n : {1U, 7U, 8U, 255U, 4000U}) {
        SCOPED_TRACE(n);
        const std::string target(n, 't'), link = folder / "link";
        ASSERT_EQ(0, ::symlink(target.c_str(), link.c_str()));
        const unsigned int size = static_cast<unsigned int>(n);
        EXPECT_EQ(target, taken(symbolicLinkExtendedName(link.c_str(), size)));
        EXPECT_EQ(target, taken(symbolicLinkExtendedName(link.c_str(), size + 1)));
        ::unlink(link.c_str());
    }
}

TEST(symbolicLinkExtendedName, deliberateALongerTargetIsCutToTheSize) {
    const TemporaryFolder folder;
    const std::string link = folder / "link";
    ASSERT_EQ(0, ::symlink("target", link.c_str()));
    EXPECT_EQ("targe", taken(symbolicLinkExtendedName(link.c_str(), 5)));
    EXPECT_EQ("t", taken(symbolicLinkExtendedName(link.c_str(), 1)));
}

TEST(symbolicLinkExtendedName, aSizeThatNoBlockCanHaveGivesNull) {
    const TemporaryFolder folder;
    const std::string link = folder / "link";
    ASSERT_EQ(0, ::symlink("target", link.c_str()));
    EXPECT_EQ(nullptr, symbolicLinkExtendedName(link.c_str(), 0));
    EXPECT_EQ(nullptr, symbolicLinkExtendedName(link.c_str(), UINT_MAX));
    EXPECT_EQ(nullptr, symbolicLinkExtendedName(link.c_str(), UINT_MAX - 1));
}

// environmentVariableExtendedName.

TEST(environmentVariableExtendedName, textWithoutADollarIsCopied) {
    for (const char* text : {"a b", "", "/", "a/b c", "~", "%HOME%"}) {
        SCOPED_TRACE(text);
        char* copy = environmentVariableExtendedName(text, 256);
        EXPECT_NE(text, copy);
        EXPECT_EQ(text, taken(copy));
    }
}

TEST(environmentVariableExtendedName, variablesAreReplacedByTheirValues) {
    const Variable home("HOME", "/h"), a("FX_TEST_A", "1"), b("FX_TEST_B", "two words");
    const Variable empty("FX_TEST_E", "");
    const struct {
        const char *text, *expanded;
    } cases[] = {{"$HOME/x", "/h/x"},
                 {"$HOME/", "/h/"},
                 {"$HOME ", "/h "},
                 {"$HOME x", "/h x"},
                 {"a$HOME/", "a/h/"},
                 {"$FX_TEST_A/$FX_TEST_B/", "1/two words/"},
                 {"$FX_TEST_A $FX_TEST_A/x", "1 1/x"},
                 {"$FX_TEST_A//$FX_TEST_B  end", "1//two words  end"},
                 {"<$FX_TEST_E/>", "</>"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expanded, expanded(c.text));
    }
}

TEST(environmentVariableExtendedName, onlyASlashAndASpaceEndAName) {
    const Variable plain("FX_TEST", "plain");
    for (const char* end : {"-", ".", ":", "\t", "\n", "\v", "\xA0", "}"}) {
        SCOPED_TRACE(end);
        const std::string name = std::string("FX_TEST") + end + "b";
        const Variable odd(name.c_str(), "odd");
        EXPECT_EQ("odd/", expanded("$" + name + "/"));
    }
    EXPECT_EQ("(null)", expanded("$FX_TEST\t/"));
    EXPECT_EQ("(null)", expanded("$FX_TEST:/"));
}

TEST(environmentVariableExtendedName, aDollarInANameBelongsToIt) {
    const Variable a("FX_TEST_A", "1"), both("FX_TEST_A$FX_TEST_A", "odd");
    EXPECT_EQ("odd/", expanded("$FX_TEST_A$FX_TEST_A/"));
    EXPECT_EQ("(null)", expanded("$$FX_TEST_A/"));
}

TEST(environmentVariableExtendedName, whatNothingEndsIsOneNameLessItsLastByte) {
    const Variable a("A", "1"), b("B", "2"), aDollar("A$", "both"), bc("BC", "3");
    EXPECT_EQ("bothB", expanded("$A$B"));
    EXPECT_EQ("1/2C", expanded("$A/$BC"));
    EXPECT_EQ("1 2C", expanded("$A $BC"));
    EXPECT_EQ("1/3/", expanded("$A/$BC/"));
    EXPECT_EQ("(null)", expanded("$A/$B"));  // the name is empty
    EXPECT_EQ("(null)", expanded("$A $"));
    const Variable noADollar("A$", nullptr);
    EXPECT_EQ("(null)", expanded("$A$B"));
}

TEST(environmentVariableExtendedName, valuesAreNotExpandedAgain) {
    const Variable a("FX_TEST_A", "$FX_TEST_B/"), b("FX_TEST_B", "b");
    EXPECT_EQ("$FX_TEST_B//b/", expanded("$FX_TEST_A/$FX_TEST_B/"));
}

TEST(environmentVariableExtendedName, anUnsetVariableGivesNull) {
    const Variable nope("NOPE", nullptr), set("FX_TEST", "1");
    for (const char* text : {"$NOPE/x", "$NOPE x", "a$NOPE/", "$FX_TEST/$NOPE/", "$NOPEx"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ("(null)", expanded(text));
    }
}

TEST(environmentVariableExtendedName, anEmptyNameIsUnset) {
    for (const char* text : {"$/x", "$ x", "a$/", "$$", "$A"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ("(null)", expanded(text));
    }
}

TEST(environmentVariableExtendedName, aDollarAtTheEndIsAnUnsetVariable) {
    const Variable set("FX_TEST", "1");
    for (const char* text : {"$", "a$", "a/$", "$FX_TEST/$"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ("(null)", expanded(text));
    }
}

TEST(environmentVariableExtendedName, deliberateANameAtTheEndLosesItsLastByte) {
    const Variable home("HOME", "/h"), hom("HOM", "short"), a("A", "1"), xy("FX_TEST", "v");
    EXPECT_EQ("shortE", expanded("$HOME"));
    EXPECT_EQ("/h/shortE", expanded("$HOME/$HOME"));
    EXPECT_EQ("1B", expanded("$AB"));
    EXPECT_EQ("v$", expanded("$FX_TEST$"));
    const Variable noHom("HOM", nullptr);
    EXPECT_EQ("(null)", expanded("$HOME"));
}

TEST(environmentVariableExtendedName, ofNullIsNull) {
    EXPECT_EQ(nullptr, environmentVariableExtendedName(nullptr, 256));
}

TEST(environmentVariableExtendedName, theBlockHasTheSizeAtLeast) {
    const Variable set("FX_TEST", "1");
    for (const char* text : {"a", "$FX_TEST/"}) {
        char* result = environmentVariableExtendedName(text, 5000);
        ASSERT_NE(nullptr, result);
        EXPECT_GE(malloc_usable_size(result), 5000u);
        std::memset(result, 'x', 5000);
        std::free(result);
    }
}

TEST(environmentVariableExtendedName, theResultGrowsBeyondTheSize) {
    const std::string value(10000, 'v');
    const Variable set("FX_TEST", value.c_str());
    for (unsigned int size : {0u, 1u, 2u, 3u, 10u, 9999u, 10000u, 10001u, 10002u, 20004u}) {
        SCOPED_TRACE(size);
        EXPECT_EQ("ab", expanded("ab", size));
        EXPECT_EQ("", expanded("", size));
        EXPECT_EQ(value + "/", expanded("$FX_TEST/", size));
        EXPECT_EQ("a" + value + "/" + value + " b", expanded("a$FX_TEST/$FX_TEST b", size));
    }
}

TEST(environmentVariableExtendedName, aLongNameIsLookedUpWhole) {
    const std::string name(70000, 'N');
    const Variable set(name.c_str(), "found");
    EXPECT_EQ("found/", expanded("$" + name + "/", 4));
    EXPECT_EQ("(null)", expanded("$" + name + "N/", 4));
}

TEST(environmentVariableExtendedName, withoutMemoryTheResultIsNull) {
    EXPECT_EQ(nullptr, environmentVariableExtendedName("a", UINT_MAX));
}

#ifndef __SANITIZE_ADDRESS__
TEST(environmentVariableExtendedName, aResultThatNoBlockCanHoldIsNull) {
    const std::string value(100000, 'v');
    const Variable set("FX_TEST", value.c_str());
    std::string text;
    for (unsigned int i = 0; i < 50000; ++i)
        text += "$FX_TEST/";
    // The result would have 5,000,050,000 bytes. Smaller blocks, so that the attempt ends early.
    refuseBlocksFrom(1U << 27);
    char* result = environmentVariableExtendedName(text.c_str(), 10);
    refuseBlocksFrom(SIZE_MAX);
    EXPECT_EQ(nullptr, result);
}
#endif
