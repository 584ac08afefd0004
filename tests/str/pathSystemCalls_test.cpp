// pathSystemCalls_test.cpp - what the path functions ask the system for, what they make of answers
// that it does not give at will, and which blocks they leave.

// readlink cannot be defined beside the C library's own inline definition of it.
#undef _FORTIFY_SOURCE

#include <dlfcn.h>
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxPathNames.h"
#include "tests/support/heapCalls.h"

namespace {

using Names = std::vector<std::string>;

/// While one lives, it is the only user of the system.
class OnlyUser {
public:
    OnlyUser(const std::string& n, const std::string& h) : name(n), home(h), entry() {
        entry.pw_name = &name[0];
        entry.pw_dir = &home[0];
        installed = this;
    }
    OnlyUser(const OnlyUser&) = delete;
    OnlyUser& operator=(const OnlyUser&) = delete;
    ~OnlyUser() { installed = nullptr; }

    passwd* find(const char* wanted) {
        asked.push_back(wanted);
        if (interruptions != 0)
            return --interruptions, errno = EINTR, nullptr;
        return name == wanted ? &entry : nullptr;
    }

    static OnlyUser* installed;
    Names asked;                     // the names looked up so far
    unsigned int interruptions = 0;  // of the calls to come

private:
    std::string name, home;
    passwd entry;
};

OnlyUser* OnlyUser::installed = nullptr;

/// While one lives, every link has its target, of which `result` bytes are said to be there.
class OnlyTarget {
public:
    OnlyTarget(const std::string& t, ssize_t n) : target(t), result(n) { installed = this; }
    OnlyTarget(const OnlyTarget&) = delete;
    OnlyTarget& operator=(const OnlyTarget&) = delete;
    ~OnlyTarget() { installed = nullptr; }

    ssize_t read(const char* path, char* buffer, std::size_t size) {
        askedPath = path;
        askedSize = size;
        std::memcpy(buffer, target.data(), target.size() < size ? target.size() : size);
        return result;
    }

    static OnlyTarget* installed;
    std::string askedPath;
    std::size_t askedSize = 0;

private:
    std::string target;
    ssize_t result;
};

OnlyTarget* OnlyTarget::installed = nullptr;

/// The definition that this file's would hide.
template <class Function>
Function systemFunction(const char* name) {
    void* found = ::dlsym(RTLD_NEXT, name);
    if (!found)
        std::abort();
    return reinterpret_cast<Function>(found);
}

std::string expanded(const std::string& path) {
    char* result = pathexpandtilde(path.c_str());
    std::string text = result ? result : "(null)";
    std::free(result);
    return text;
}

}  // namespace

// The program's own definitions come before the C library's, also for the calls that shared
// libraries make.

extern "C" {

passwd* getpwnam(const char* name) {
    if (OnlyUser::installed)
        return OnlyUser::installed->find(name);
    static const auto real = systemFunction<decltype(&::getpwnam)>("getpwnam");
    return real(name);
}

ssize_t readlink(const char* path, char* buffer, std::size_t size) noexcept {
    if (OnlyTarget::installed)
        return OnlyTarget::installed->read(path, buffer, size);
    static const auto real = systemFunction<decltype(&::readlink)>("readlink");
    return real(path, buffer, size);
}

}  // extern "C"

TEST(pathexpandtilde, theUserIsLookedUpByTheNameUpToTheSlash) {
    const struct {
        const char* path;
        Names asked;
        const char* expanded;
    } cases[] = {{"~bob", {"bob"}, "/users/b"},
                 {"~bob/", {"bob"}, "/users/b/"},
                 {"~bob//x/~bob", {"bob"}, "/users/b//x/~bob"},
                 {"~bo/x", {"bo"}, "~bo/x"},
                 {"~bobo/x", {"bobo"}, "~bobo/x"},
                 {"~bob ", {"bob "}, "~bob "},
                 {"~~bob", {"~bob"}, "~~bob"},
                 {"bob", {}, "bob"},
                 {"/~bob", {}, "/~bob"},
                 {"", {}, ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        OnlyUser bob("bob", "/users/b");
        EXPECT_EQ(c.expanded, expanded(c.path));
        EXPECT_EQ(c.asked, bob.asked);
    }
}

TEST(pathexpandtilde, aUserIsLookedUpAgainIfASignalInterrupts) {
    OnlyUser bob("bob", "/users/b");
    bob.interruptions = 2;
    errno = ERANGE;
    EXPECT_EQ("/users/b/x", expanded("~bob/x"));
    EXPECT_EQ((Names{"bob", "bob", "bob"}), bob.asked);
    EXPECT_EQ(ERANGE, errno);
}

TEST(pathexpandtilde, nobodyIsLookedUpForATildeAlone) {
    OnlyUser nameless("", "/users/nameless");
    EXPECT_NE("/users/nameless", expanded("~"));
    EXPECT_NE("/users/nameless/x", expanded("~/x"));
    EXPECT_EQ(Names{}, nameless.asked);
}

TEST(pathexpandtilde, aUserWhoseHomeIsEmptyHasOne) {
    const OnlyUser bob("bob", "");
    EXPECT_EQ("/x", expanded("~bob/x"));
    EXPECT_EQ("", expanded("~bob"));
}

TEST(pathexpandtilde, namesOfMoreThan255BytesAreNoUsersEvenIfTheSystemHasOne) {
    for (const std::size_t n : {1U, 32U, 254U, 255U, 256U, 257U, 5000U}) {
        SCOPED_TRACE(n);
        const std::string name(n, 'u'), path = "~" + name;
        OnlyUser user(name, "/users/u");
        EXPECT_EQ(n <= 255 ? "/users/u" : path, expanded(path));
        EXPECT_EQ(n <= 255 ? "/users/u/x" : path + "/x", expanded(path + "/x"));
        EXPECT_EQ(n <= 255 ? (Names{name, name}) : Names{}, user.asked);
    }
}

TEST(symbolicLinkExtendedName, theLinkIsReadWithTheSizeGiven) {
    OnlyTarget link("target", 6);
    char* target = symbolicLinkExtendedName("some/link", 77);
    EXPECT_STREQ("target", target);
    std::free(target);
    EXPECT_EQ("some/link", link.askedPath);
    EXPECT_EQ(77u, link.askedSize);
}

TEST(symbolicLinkExtendedName, anEmptyTargetAndAnErrorGiveNull) {
    for (const ssize_t result : {0, -1}) {
        SCOPED_TRACE(result);
        const OnlyTarget link("target", result);
        EXPECT_EQ(nullptr, symbolicLinkExtendedName("link", 256));
    }
}

// What is returned is the only block that is left; of a failure, none is.
TEST(pathNames, onlyTheResultIsLeftAllocated) {
    if (!heapCallsAreCounted())
        GTEST_SKIP() << "heap calls are not counted";
    ::setenv("FX_TEST", "value", 1);
    ::unsetenv("NOPE");
    const auto expand = [](const char* text) { return environmentVariableExtendedName(text, 4); };
    const auto readLink = [](const char* path) { return symbolicLinkExtendedName(path, 256); };
    const struct {
        char* (*function)(const char*);
        const char* argument;
        bool succeeds;
    } cases[] = {{pathbasename, "a/b", true},
                 {pathdirname, "a/b", true},
                 {pathexpandtilde, "a", true},
                 {pathexpandtilde, "~/a", true},
                 {expand, "$FX_TEST/$FX_TEST/", true},
                 {expand, "$FX_TEST/$NOPE/", false},
                 {expand, "$", false},
                 {readLink, "/", false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.argument);
        const long before = heapCalls().blocks;
        char* result = c.function(c.argument);
        EXPECT_EQ(c.succeeds ? 1 : 0, heapCalls().blocks - before);
        EXPECT_EQ(c.succeeds, result != nullptr);
        std::free(result);
        EXPECT_EQ(before, heapCalls().blocks);
    }
    ::unsetenv("FX_TEST");
}
