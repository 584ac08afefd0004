// fxFileFaults_test.cpp - what fxSaveFile leaves when the system fails it, or ends it.

#include <sched.h>
#include <sys/mount.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxFile.h"
#include "tests/support/inChild.h"
#include "tests/support/runProgram.h"
#include "tests/support/savedBook.h"

namespace {
namespace fs = std::filesystem;

const unsigned int people = 400;  // more than a buffer

std::string save(const std::string& to, unsigned int seed, unsigned int n = people) {
    SavedBook book;
    book.fill(n, seed);
    fxStr why;
    fxSaveFile(to.c_str(), book, &why);
    return why.c_str();
}

std::string textOf(unsigned int seed, unsigned int n = people) {
    SavedBook book;
    book.fill(n, seed);
    return book.text();
}

std::string load(const std::string& from) {
    fxStr why;
    const std::unique_ptr<SavedBook> book(fxLoadFile<SavedBook>(from.c_str(), &why));
    return book ? book->text() : why.c_str();
}

// New files that stand beside "book" and have no other name.
unsigned int strays(const TemporaryFolder& folder, bool removes = true) {
    unsigned int n = 0;
    for (const auto& entry : fs::directory_iterator(folder.path())) {
        const std::string name = entry.path().filename().string();
        if (name == "book")
            continue;
        EXPECT_EQ(0u, name.find(".book.saving-")) << name;
        EXPECT_TRUE(name.size() == 21 || name.substr(21) == "-old") << name;
        ++n;
        if (removes)
            fs::remove(entry.path());
    }
    return n;
}
}  // namespace

// Disks and limits.

TEST(fxFileFaults, fullDiskIsAReason) {
    const TemporaryFolder folder;
    const std::string path = folder / "book";
    const std::string result = inChild([&]() -> std::string {
        if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", "none", MS_REC | MS_PRIVATE, "") ||
            ::mount("none", folder.path().c_str(), "tmpfs", 0, "size=24k") != 0)
            return "no mount";
        const std::string first = save(path, 1, 50);
        const std::string second = save(path, 2);
        const std::string left = load(path) == textOf(1, 50) ? "old file" : "damage";
        return first + "|" + second + "|" + left + "|" + std::to_string(strays(folder));
    });
    if (result == "no mount")
        GTEST_SKIP() << "no file system may be mounted here";
    EXPECT_EQ("|cannot save \"" + path +
                  "\": the new file cannot be written: No space left on device|old file|0",
              result);
}

TEST(fxFileFaults, limitOfFileSizesIsAReasonAndNoSignal) {
    const TemporaryFolder folder;
    const std::string path = folder / "book";
    ASSERT_EQ("", save(path, 1));
    const unsigned int size = static_cast<unsigned int>(fs::file_size(path));
    for (const unsigned int limit : {0u, 1u, 8192u, size - 1}) {
        SCOPED_TRACE(limit);
        const std::string result = inChild([&] {
            const rlimit most = {limit, limit};
            ::setrlimit(RLIMIT_FSIZE, &most);
            sigset_t set;
            const std::string why = save(path, 2);
            ::sigpending(&set);
            return why + (::sigismember(&set, SIGXFSZ) ? "|pending" : "|");
        });
        EXPECT_EQ("cannot save \"" + path + "\": the new file cannot be written: File too large|",
                  result);
        EXPECT_EQ(textOf(1), load(path));
        EXPECT_EQ(0u, strays(folder));
    }
    EXPECT_EQ("", inChild([&] {
                  const rlimit most = {size, size};
                  ::setrlimit(RLIMIT_FSIZE, &most);
                  return save(path, 1);
              }));
}

TEST(fxFileFaults, signalsOfTheHostAreLeftAsTheyWere) {
    const TemporaryFolder folder;
    const std::string path = folder / "book";
    const auto act = [&](bool blocks, bool isPending) {
        return inChild([&] {
            sigset_t set;
            ::sigemptyset(&set);
            ::sigaddset(&set, SIGXFSZ);
            if (blocks)
                ::sigprocmask(SIG_BLOCK, &set, nullptr);
            if (isPending)
                ::raise(SIGXFSZ);
            const rlimit most = {10, 10};
            ::setrlimit(RLIMIT_FSIZE, &most);
            std::string result = save(path, 2) == "" ? "saved" : "failed";
            ::sigpending(&set);
            result += ::sigismember(&set, SIGXFSZ) ? ", pending" : "";
            ::sigprocmask(SIG_BLOCK, nullptr, &set);
            return result + (::sigismember(&set, SIGXFSZ) ? ", blocked" : "");
        });
    };
    EXPECT_EQ("failed", act(false, false));
    EXPECT_EQ("failed, blocked", act(true, false));
    EXPECT_EQ("failed, pending, blocked", act(true, true));
}

TEST(fxFileFaults, lackOfDescriptorsIsAReason) {
    const TemporaryFolder folder;
    const std::string path = folder / "book";
    ASSERT_EQ("", save(path, 1));
    for (const unsigned int more : {0u, 1u}) {
        const std::string result = inChild([&] {
            const int next = ::dup(0);
            ::close(next);
            limitDescriptors(static_cast<unsigned int>(next) + more);
            return save(path, 2);
        });
        EXPECT_NE(std::string::npos, result.find(": Too many open files")) << result;
        EXPECT_EQ(textOf(1), load(path));
        EXPECT_EQ(0u, strays(folder));
    }
}

// Failing calls.

// An emulated program cannot be preloaded into.
#if defined(KELVOFXDS_SAVER) && !defined(KELVOFXDS_EMULATOR)

namespace {

// Runs the saver while the call `at` of a system call fails.
ProgramResult runFailing(const TemporaryFolder& folder, const std::string& call, unsigned int at,
                         int error, const std::vector<std::string>& arguments,
                         const char* links = "") {
    const std::string settings[] = {"FAIL_CALL=" + call,
                                    "FAIL_AT=" + std::to_string(at),
                                    "FAIL_WITH=" + std::to_string(error),
                                    "FAIL_BELOW=" + folder.path(),
                                    std::string("FAIL_LINKS=") + links,
                                    "LD_PRELOAD=" KELVOFXDS_FAILING_CALLS};
    std::vector<std::string> words(std::begin(settings), std::end(settings));
    words.push_back(KELVOFXDS_SAVER);
    words.insert(words.end(), arguments.begin(), arguments.end());
    return Program("/usr/bin/env").run(words);
}

// The same where standard input is closed, so that the next file has its number.
ProgramResult runFailingWithoutInput(const std::string& call, unsigned int at, int error,
                                     const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"-c",
                                      "exec \"$@\" <&-",
                                      "sh",
                                      "/usr/bin/env",
                                      "FAIL_CALL=" + call,
                                      "FAIL_AT=" + std::to_string(at),
                                      "FAIL_WITH=" + std::to_string(error),
                                      "LD_PRELOAD=" KELVOFXDS_FAILING_CALLS,
                                      KELVOFXDS_SAVER};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return Program("/bin/sh").run(words);
}

// Lets each call of `call` fail in turn; returns how many there are, and adds to
// `saved` how often the file was saved all the same.
unsigned int failEach(const std::string& call, int error, bool hasOld, const char* links,
                      unsigned int& saved) {
    const TemporaryFolder folder;
    const std::string path = folder / "book";
    for (unsigned int at = 1;; ++at) {
        SCOPED_TRACE(testing::Message() << call << " " << at << (hasOld ? ", old file" : ""));
        fs::remove(path);
        if (hasOld) {
            EXPECT_EQ("", save(path, 1));
        }
        const ProgramResult result =
            runFailing(folder, call, at, error, {"save", path, "2", std::to_string(people)}, links);
        if (result.err.empty()) {
            EXPECT_EQ(0, result.status);
            EXPECT_EQ(textOf(2), load(path));
            return at - 1;
        }
        EXPECT_EQ("failed " + call + "\n", result.err);
        EXPECT_EQ(0u, strays(folder));
        if (result.status == 0) {
            ++saved;
            EXPECT_EQ("", result.out);
            EXPECT_EQ(textOf(2), load(path));
            continue;
        }
        EXPECT_EQ(1, result.status);
        EXPECT_EQ(0u, result.out.find("cannot save \"" + path + "\": ")) << result.out;
        EXPECT_NE(std::string::npos, result.out.find(std::strerror(error))) << result.out;
        EXPECT_EQ(hasOld, fs::exists(path));
        if (hasOld) {
            EXPECT_EQ(textOf(1), load(path));
        }
    }
}
}  // namespace

TEST(fxFileFaults, eachFailingCallLeavesTheOldFileAndAReason) {
    const struct {
        const char* call;
        int error;
        unsigned int calls, saved;  // with an old file
        unsigned int callsOfNew;    // without one
    } cases[] = {
        {"stat64", EACCES, 1, 0, 1}, {"lstat64", EIO, 1, 0, 1},        {"open64", EMFILE, 2, 0, 2},
        {"open64", ENOSPC, 2, 0, 2}, {"fopencookie", ENOMEM, 1, 0, 1}, {"write", EIO, 4, 0, 4},
        {"write", ENOSPC, 4, 0, 4},  {"fstat64", EIO, 1, 0, 1},        {"fchmod", EPERM, 1, 0, 0},
        {"fsync", EIO, 2, 0, 2},     {"fsync", EDQUOT, 2, 0, 2},       {"close", EIO, 2, 1, 2},
        {"link", EPERM, 1, 1, 0},    {"rename", EXDEV, 1, 0, 1}};
    for (const auto& c : cases) {
        unsigned int saved = 0;
        EXPECT_EQ(c.calls, failEach(c.call, c.error, true, "", saved)) << c.call;
        EXPECT_EQ(c.saved, saved) << c.call;
        saved = 0;
        EXPECT_EQ(c.callsOfNew, failEach(c.call, c.error, false, "", saved)) << c.call;
    }
}

TEST(fxFileFaults, interruptedCallsGoOn) {
    for (const std::string call : {"open64", "write", "fsync", "close"}) {
        unsigned int saved = 0;
        const unsigned int calls = failEach(call, EINTR, true, "", saved);
        EXPECT_LE(2u, calls) << call;
        EXPECT_EQ(calls, saved) << call;
    }
}

TEST(fxFileFaults, aFileThatCanHaveOneNameAloneIsReplacedAllTheSame) {
    unsigned int saved = 0;
    EXPECT_EQ(1u, failEach("rename", EXDEV, true, "all", saved));
    EXPECT_EQ(0u, saved);
    EXPECT_EQ(4u, failEach("write", EIO, true, "all", saved));
    EXPECT_EQ(0u, saved);
}

TEST(fxFileFaults, directoryThatIsNotSyncedThereIsAReasonBesideTheNewFile) {
    const TemporaryFolder folder;
    const std::string path = folder / "book";
    ASSERT_EQ("", save(path, 1));
    const ProgramResult result =
        runFailing(folder, "fsync", 2, EIO, {"save", path, "2", std::to_string(people)}, "all");
    EXPECT_EQ(1, result.status);
    EXPECT_EQ("cannot save \"" + path +
                  "\": the change of its directory does not get to the disk: Input/output error: "
                  "the new file is in its place now, but may be lost with the power",
              result.out);
    EXPECT_EQ(textOf(2), load(path)) << "whole in any case";
    EXPECT_EQ(0u, strays(folder));
}

TEST(fxFileFaults, directoryThatIsNotSyncedTakesTheFirstFileBack) {
    const TemporaryFolder folder;
    const std::string path = folder / "book";
    const std::vector<std::string> saving = {"save", path, "2", std::to_string(people)};
    const std::string said =
        "cannot save \"" + path +
        "\": the change of its directory does not get to the disk: Input/output error";
    for (const auto& result : {runFailing(folder, "fsync", 2, EIO, saving),
                               runFailingWithoutInput("fsync", 2, EIO, saving)}) {
        EXPECT_EQ(1, result.status);
        EXPECT_EQ(said, result.out);
        EXPECT_FALSE(fs::exists(path));
        EXPECT_EQ(0u, strays(folder));
    }
}

TEST(fxFileFaults, fileSystemsThatCannotSyncADirectoryAreGoodEnough) {
    const TemporaryFolder folder;
    const std::string path = folder / "book";
    const ProgramResult result =
        runFailing(folder, "fsync", 2, EINVAL, {"save", path, "2", std::to_string(people)});
    EXPECT_EQ(0, result.status) << result.out;
    EXPECT_EQ(textOf(2), load(path));
}

TEST(fxFileFaults, aLinkThatCannotBeReadIsAReason) {
    const TemporaryFolder folder;
    ASSERT_EQ("", save(folder / "book", 1));
    fs::create_symlink("book", folder / "link");
    const ProgramResult result = runFailing(folder, "readlink", 1, EIO,
                                            {"save", folder / "link", "2", std::to_string(people)});
    EXPECT_EQ(1, result.status);
    EXPECT_EQ("cannot save \"" + (folder / "link") +
                  "\": the link cannot be followed: Input/output error",
              result.out);
    EXPECT_EQ(textOf(1), load(folder / "book"));
}

// As a file system that has no permissions of its own.
TEST(fxFileFaults, permissionsThatAreRightNeedNotBeChanged) {
    const TemporaryFolder folder;
    const std::string path = folder / "book";
    ASSERT_EQ("", save(path, 1));
    const struct {
        fs::perms permissions;
        int status;
    } cases[] = {{fs::perms(0600), 0}, {fs::perms(0640), 1}};
    for (const auto& c : cases) {
        fs::permissions(path, c.permissions);
        const ProgramResult result =
            runFailing(folder, "fchmod", 1, EPERM, {"save", path, "2", std::to_string(people)});
        EXPECT_EQ(c.status, result.status) << result.out;
        EXPECT_EQ(textOf(2), load(path));
        EXPECT_EQ(0u, strays(folder));
    }
}

// Who cannot keep the owner keeps the group; whom neither is left gets no more than everybody.
TEST(fxFileFaults, anOwnerThatCannotBeKeptLeavesNobodyMoreThanBefore) {
    const TemporaryFolder folder;
    const std::string path = folder / "book";
    if (::geteuid() != 0)
        GTEST_SKIP() << "files cannot be given away here";
    const struct {
        uid_t owner;
        gid_t group;
        fs::perms permissions, left;
    } cases[] = {
        {1234, 1234, fs::perms(0664), fs::perms(0664)},
        {1234, ::getegid(), fs::perms(06664), fs::perms(0664)},
        {::geteuid(), 1234, fs::perms(0664), fs::perms(0664)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.owner << ":" << c.group);
        fs::remove(path);
        ASSERT_EQ("", save(path, 1));
        ASSERT_EQ(0, ::chown(path.c_str(), c.owner, c.group));
        fs::permissions(path, c.permissions);
        const ProgramResult result =
            runFailing(folder, "fchown", 1, EPERM, {"save", path, "2", std::to_string(people)});
        EXPECT_EQ(0, result.status) << result.out;
        EXPECT_EQ(c.left, fs::status(path).permissions());
        struct stat status;
        ASSERT_EQ(0, ::stat(path.c_str(), &status));
        EXPECT_EQ(::geteuid(), status.st_uid);
        EXPECT_EQ(c.group, status.st_gid);
    }
}

TEST(fxFileFaults, eachFailingCallOfLoadingIsAReason) {
    const TemporaryFolder folder;
    const std::string path = folder / "book";
    ASSERT_EQ("", save(path, 1));
    for (const std::string call : {"open64", "fstat64", "fopencookie", "read"}) {
        for (unsigned int at = 1;; ++at) {
            SCOPED_TRACE(testing::Message() << call << " " << at);
            const ProgramResult result = runFailing(folder, call, at, EIO, {"load", path});
            if (result.err.empty() || result.status == 0) {
                EXPECT_LT(1u, at);
                EXPECT_EQ(textOf(1), result.out);
                break;
            }
            EXPECT_EQ(1, result.status);
            EXPECT_EQ(0u, result.out.find("cannot load \"" + path + "\": ")) << result.out;
            if (call != "fopencookie") {
                EXPECT_NE(std::string::npos, result.out.find("Input/output error")) << result.out;
            }
        }
        const ProgramResult result = runFailing(folder, call, 1, EINTR, {"load", path});
        if (call == "open64" || call == "read") {
            EXPECT_EQ(textOf(1), result.out);
        }
    }
}

#endif

// Death at each system call.

namespace {

// What a child that saves is stopped at.
enum class Stop { isRefused, isLast, isKilled };

// Saves in a child, which is killed when it stops for the time `at`, before or
// after a system call.
Stop killedAt(const std::string& path, unsigned int seed, unsigned int at) {
    const pid_t child = ::fork();
    if (child == 0) {
        SavedBook book;
        book.fill(people, seed);
        if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            ::_exit(2);
        ::raise(SIGSTOP);
        fxSaveFile(path.c_str(), book);
        ::raise(SIGSTOP);
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFSTOPPED(status))
        return Stop::isRefused;
    const long whole = PTRACE_O_TRACESYSGOOD;
    if (::ptrace(PTRACE_SETOPTIONS, child, nullptr, whole) != 0)
        at = 0;
    Stop result = at == 0 ? Stop::isRefused : Stop::isKilled;
    for (unsigned int i = 0; i < at; ++i) {
        if (::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) != 0)
            result = Stop::isRefused;
        ::waitpid(child, &status, 0);
        if (!WIFSTOPPED(status))
            return Stop::isRefused;
        if (WSTOPSIG(status) == SIGSTOP) {
            result = Stop::isLast;
            break;
        }
    }
    ::kill(child, SIGKILL);
    ::waitpid(child, &status, 0);
    return result;
}

// Kills a child that saves at each of its stops; returns how many there are.
unsigned int killAtEach(const TemporaryFolder& folder, bool hasOld, bool& sawOld, bool& sawNew) {
    const std::string path = folder / "book";
    const std::string oldText = textOf(1);
    const std::string newText = textOf(2);
    for (unsigned int at = 1;; ++at) {
        SCOPED_TRACE(testing::Message() << "killed at stop " << at);
        fs::remove(path);
        if (hasOld) {
            EXPECT_EQ("", save(path, 1));
        }
        const Stop stop = killedAt(path, 2, at);
        if (stop == Stop::isRefused)
            return 0;
        EXPECT_GE(2u, strays(folder));
        const bool exists = fs::exists(path);
        EXPECT_TRUE(exists || !hasOld);
        const std::string left = exists ? load(path) : oldText;
        EXPECT_TRUE(left == oldText || left == newText) << left;
        (left == oldText ? sawOld : sawNew) = true;
        if (stop == Stop::isLast) {
            EXPECT_TRUE(left == newText);
            return at - 1;
        }
    }
}
}  // namespace

TEST(fxFileFaults, killedAnywhereItLeavesTheOldFileOrTheNewOneWhole) {
    for (const bool hasOld : {true, false}) {
        const TemporaryFolder folder;
        bool sawOld = false;
        bool sawNew = false;
        const unsigned int stops = killAtEach(folder, hasOld, sawOld, sawNew);
        if (stops == 0)
            GTEST_SKIP() << "children cannot be traced here";
        EXPECT_LT(30u, stops) << "two for each system call";
        EXPECT_TRUE(sawOld);
        EXPECT_TRUE(sawNew);
        EXPECT_EQ("", save(folder / "book", 3));
        EXPECT_EQ(textOf(3), load(folder / "book"));
    }
}
