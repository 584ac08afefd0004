#include "kelvofxds/core/fxFatal.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <gtest/gtest.h>
#include <unistd.h>

#include "kelvofxds/core/fxOrderedGlobal.h"
#include "kelvofxds/core/fxToolkit.h"

namespace {

void fatalWithBufferedErrors() {
    static char buffer[4096];
    std::setvbuf(stderr, buffer, _IOFBF, sizeof buffer);
    fxFatal("only a flush brings this out");
}

void fatalWithExitHandler() {
    std::atexit([] { std::fputs("handler", stderr); });
    fxFatal("no handler runs");
}

struct SaysGoodbye {
    ~SaysGoodbye() { std::fputs("destructor", stderr); }
};

void fatalWithStaticObject() {
    static SaysGoodbye object;
    fxFatal("no destructor runs");
}

void destroyFunction() { std::fputs("destroyed", stderr); }

void fatalAfterStartUp() {
    static fxOrderedGlobal toolkitGlobal(nullptr, destroyFunction, nullptr, 1);
    static fxOrderedGlobal applicationGlobal(nullptr, destroyFunction, nullptr, 0);
    fxInitializeToolkit();
    fxFatal("no ordering is torn down");
}

void fatalWithoutErrorStream() {
    close(STDERR_FILENO);
    fxFatal("nobody hears this");
}

}  // namespace

TEST(fxFatalDeathTest, writesTheFormattedMessageAndOneNewline) {
    EXPECT_EXIT(fxFatal("got %d", 5), testing::KilledBySignal(SIGABRT), "^got 5\n$");
    EXPECT_EXIT(fxFatal("%s of %u at %c", "word", 7u, 'x'), testing::KilledBySignal(SIGABRT),
                "^word of 7 at x\n$");
    EXPECT_EXIT(fxFatal("plain"), testing::KilledBySignal(SIGABRT), "^plain\n$");
}

TEST(fxFatalDeathTest, anEmptyMessageIsOneNewline) {
    const char* nothing = "";
    EXPECT_EXIT(fxFatal("%s", nothing), testing::KilledBySignal(SIGABRT), "^\n$");
}

TEST(fxFatalDeathTest, aNewlineOfTheMessageIsKeptAndOneIsAdded) {
    EXPECT_EXIT(fxFatal("two\n"), testing::KilledBySignal(SIGABRT), "^two\n\n$");
}

TEST(fxFatalDeathTest, percentSignsInArgumentsAreText) {
    EXPECT_EXIT(fxFatal("unknown type %s", "%s%n%d"), testing::KilledBySignal(SIGABRT),
                "^unknown type %s%n%d\n$");
}

// However the library is compiled.
TEST(fxFatalDeathTest, aFormatThatCanBeWrittenToMayCount) {
    char format[] = "ab%ncd";
    int count = 0;
    EXPECT_EXIT(fxFatal(format, &count), testing::KilledBySignal(SIGABRT), "^abcd\n$");
}

TEST(fxFatalDeathTest, flushesStandardError) {
    EXPECT_EXIT(fatalWithBufferedErrors(), testing::KilledBySignal(SIGABRT),
                "^only a flush brings this out\n$");
}

TEST(fxFatalDeathTest, runsNoExitHandlerAndNoDestructor) {
    EXPECT_EXIT(fatalWithExitHandler(), testing::KilledBySignal(SIGABRT), "^no handler runs\n$");
    EXPECT_EXIT(fatalWithStaticObject(), testing::KilledBySignal(SIGABRT),
                "^no destructor runs\n$");
}

TEST(fxFatalDeathTest, tearsDownNoOrdering) {
    EXPECT_EXIT(fatalAfterStartUp(), testing::KilledBySignal(SIGABRT),
                "^no ordering is torn down\n$");
}

TEST(fxFatalDeathTest, abortsAlsoWhenStandardErrorIsClosed) {
    EXPECT_EXIT(fatalWithoutErrorStream(), testing::KilledBySignal(SIGABRT), "");
}
