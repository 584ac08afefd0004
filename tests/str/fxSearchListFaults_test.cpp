// fxSearchListFaults_test.cpp - directories that change while they are searched, and calls that
// signals interrupt.

#include <dirent.h>
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxSearchList.h"
#include "tests/support/inChild.h"
#include "tests/support/runProgram.h"

namespace {

/// While one lives, it sees each entry that is read before that is given to whoever reads.
class Reading {
public:
    Reading() { installed = this; }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;
    ~Reading() { installed = nullptr; }

    /// Whether a call is interrupted now, which each is so often before it succeeds.
    bool interrupts() {
        if (interrupted == interruptions)
            return interrupted = 0, false;
        ++interrupted;
        errno = EINTR;
        return true;
    }

    static Reading* installed;
    std::function<void(unsigned int)> before;  ///< With the number of entries read.
    unsigned int entries = 0;
    unsigned int interruptions = 0;
    unsigned int interrupted = 0;
};

Reading* Reading::installed = nullptr;

template <class Function>
Function systemFunction(const char* name) {
    void* found = ::dlsym(RTLD_NEXT, name);
    if (!found)
        std::abort();
    return reinterpret_cast<Function>(found);
}

// How often each name was found.
std::map<std::string, unsigned int> countsOf(const fxStrArray& names) {
    std::map<std::string, unsigned int> counts;
    for (unsigned int i = 0; i < names.length(); ++i)
        ++counts[names[i].c_str()];
    return counts;
}

const unsigned int many = 1500;  // entries: more than one call of the system gives

void make(const TemporaryFolder& folder, const std::string& name) {
    EXPECT_EQ(0, ::mknod((folder / name).c_str(), S_IFREG | 0600, 0));
}

// Of those that stay, each has to be found once.
void fill(const TemporaryFolder& folder) {
    for (unsigned int i = 0; i < many; ++i)
        make(folder, (i % 3 == 0 ? "goes" : "stays") + std::to_string(i));
}

unsigned int notFoundOnce(const TemporaryFolder& folder, const fxStrArray& found) {
    const std::map<std::string, unsigned int> counts = countsOf(found);
    unsigned int wrong = 0;
    for (unsigned int i = 0; i < many; ++i) {
        const auto at = counts.find(folder / ("stays" + std::to_string(i)));
        wrong += i % 3 != 0 && (at == counts.end() || at->second != 1) ? 1 : 0;
    }
    return wrong;
}

}  // namespace

// The program's own definitions come before the C library's, also for the calls that shared
// libraries make.

extern "C" {

DIR* opendir(const char* name) {
    if (Reading::installed && Reading::installed->interrupts())
        return nullptr;
    static const auto real = systemFunction<decltype(&::opendir)>("opendir");
    return real(name);
}

dirent64* readdir64(DIR* directory) {
    Reading* reading = Reading::installed;
    if (reading && reading->interrupts())
        return nullptr;
    if (reading && reading->before)
        reading->before(reading->entries++);
    static const auto real = systemFunction<decltype(&::readdir64)>("readdir64");
    return real(directory);
}

}  // extern "C"

// Directories that change.

TEST(fxSearchListFaults, whatStaysIsFoundOnceWhileOthersComeAndGo) {
    const TemporaryFolder folder;
    fill(folder);
    Reading reading;
    reading.before = [&](unsigned int n) {
        if (n % 3 == 0)
            ::unlink((folder / ("goes" + std::to_string(n))).c_str());
        if (n % 7 == 0)
            make(folder, "comes" + std::to_string(n));
    };
    const fxSearchList list(folder.path().c_str(), "[a-z]+[0-9]+");
    EXPECT_LE(many - many / 3, reading.entries);
    EXPECT_EQ(0u, notFoundOnce(folder, list));
    for (const auto& name : countsOf(list))
        EXPECT_EQ(1u, name.second) << name.first;
}

TEST(fxSearchListFaults, directoryThatIsMovedIsSearchedToItsEnd) {
    const TemporaryFolder folder;
    fill(folder);
    const std::string moved = folder.path() + ".moved";
    Reading reading;
    reading.before = [&](unsigned int n) {
        if (n == 10) {
            EXPECT_EQ(0, std::rename(folder.path().c_str(), moved.c_str()));
        }
        if (n == 20)
            folder.file("other", "");
    };
    const fxSearchList list(folder.path().c_str(), ".*");
    EXPECT_EQ(0u, notFoundOnce(folder, list));
    EXPECT_EQ(0u, countsOf(list).count(folder / "other"));
    std::filesystem::remove_all(folder.path());
    EXPECT_EQ(0, std::rename(moved.c_str(), folder.path().c_str()));
}

TEST(fxSearchListFaults, directoryThatIsRemovedEnds) {
    const TemporaryFolder folder;
    folder.file("1/a", "");
    folder.file("2/a", "");
    Reading reading;
    reading.before = [&](unsigned int n) {
        if (n == 0)
            std::filesystem::remove_all(folder / "1");
    };
    const std::string second = folder / "2";
    const fxSearchList list(((folder / "1") + ":" + second).c_str(), "a");
    const auto counts = countsOf(list);
    EXPECT_EQ(1u, counts.count(second + "/a"));
    EXPECT_GE(2u, list.length());
}

TEST(fxSearchListFaults, directoryThatGrowsForEverIsLeft) {
    const TemporaryFolder folder;
    fill(folder);
    Reading reading;
    unsigned int made = 0;
    // Many are as good as any number: what is read must not be all that comes.
    reading.before = [&](unsigned int) {
        if (made < 1500)
            make(folder, "comes" + std::to_string(made++));
    };
    const fxSearchList list(folder.path().c_str(), "stays[0-9]+");
    EXPECT_EQ(0u, notFoundOnce(folder, list));
    EXPECT_EQ(many - many / 3, list.length());
}

// Interruptions.

TEST(fxSearchListFaults, interruptedCallsAreMadeAgain) {
    const TemporaryFolder folder;
    folder.file("a", "");
    folder.file("b", "");
    for (const unsigned int interruptions : {1U, 2U, 10U}) {
        SCOPED_TRACE(interruptions);
        Reading reading;
        reading.interruptions = interruptions;
        EXPECT_EQ(2u, fxSearchList(folder.path().c_str(), "a|b").length());
    }
}

TEST(fxSearchListFaults, errnoIsLeftAsItWas) {
    const TemporaryFolder folder;
    folder.file("a", "");
    errno = ERANGE;
    EXPECT_EQ(1u, fxSearchList(folder.path().c_str(), "a").length());
    EXPECT_EQ(ERANGE, errno);
}

// Descriptors.

#ifndef __SANITIZE_ADDRESS__  // the sanitizer looks at objects by descriptors of its own

TEST(fxSearchListFaults, whereDescriptorsEndDirectoriesAreLeftOut) {
    const TemporaryFolder folder;
    folder.file("1/a", "");
    folder.file("2/a", "");
    const std::string both = (folder / "1") + ":" + (folder / "2");
    for (const unsigned int more : {0U, 1U}) {
        EXPECT_EQ(more == 0 ? "0" : "2", inChild([&] {
                      const int next = ::dup(0);
                      ::close(next);
                      limitDescriptors(static_cast<unsigned int>(next) + more);
                      fxSearchList list(both.c_str(), "a");
                      for (unsigned int i = 0; i < 100; ++i)
                          list.recalc();
                      return std::to_string(list.length());
                  }));
    }
}

#endif
