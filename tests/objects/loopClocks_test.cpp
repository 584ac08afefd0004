// loopClocks_test.cpp - timers under clocks that wrap and jump, and loops without descriptors.

#include <sys/resource.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/loopFixture.h"

using namespace loopTest;

namespace {

class loopClocks : public LoopTest {};

const unsigned long hours = 100UL * 3600;  // ticks

}  // namespace

// Clocks.

TEST_F(loopClocks, noTickIsLostWhereTheClockWraps) {
    registered(3, "r");
    const struct {
        const char* what;
        clock_t start;
    } cases[] = {{"the largest clock_t", LONG_MAX - 500}, {"0", -500}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        fake.now = c.start;
        ScriptedTimer timer("t", 1, true);
        timer.startTimer();
        unsigned int ticks = 0;
        timer.onTick = [&] { ++ticks; };
        for (unsigned int i = 0; i < 1000; ++i)
            pass(after(25, ready({3})));  // never the end of the wait
        EXPECT_EQ(250u, ticks) << "a second each";
        timer.stopTimer();
    }
    log();
}

TEST_F(loopClocks, jumpsAheadLetEachTimerTickOnceAndOnTimeAgain) {
    registered(3, "r");
    for (const unsigned long jump : {hours, 24 * hours, 5900 * hours}) {
        SCOPED_TRACE(jump);
        ScriptedTimer once("once", 7200), repeating("again", 0.5F, true);
        once.startTimer();
        repeating.startTimer();
        pass(after(jump, ready({3})));
        EXPECT_EQ(jump < 7200 * 100 ? "again read3 " : "again once read3 ", log());
        EXPECT_EQ(0.5F, deltaOf(repeating)) << "a whole interval from then";
        pass(after(25, ready({3})));
        EXPECT_EQ("read3 ", log());
        pass(timedOut());
        EXPECT_EQ("again ", log());
        once.stopTimer();
        repeating.stopTimer();
    }
}

// All are due then, once; the passes behind it wait as ever.
TEST_F(loopClocks, jumpsBackLetEachTimerTickOnceAndWaitAgain) {
    registered(3, "r");
    ScriptedTimer repeating("again", 0.5F, true), once("once", 7200);
    repeating.startTimer();
    once.startTimer();
    for (unsigned int i = 0; i < 10; ++i) {
        pass(after(0UL - hours, ready({3})));
        EXPECT_EQ(i == 0 ? "again once read3 " : "again read3 ", log());
        pass(timedOut(), 1000);
        EXPECT_EQ(500000, lastSelect().microseconds) << "it is waited for a whole interval";
        EXPECT_EQ("again ", log());
    }
    repeating.stopTimer();
}

// A clock does what it likes between passes: only what it does in a wait counts.
TEST_F(loopClocks, jumpsOutsideTheWaitAreNotSeen) {
    registered(3, "r");
    const unsigned int seed = 20261122;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    ScriptedTimer timer("t", 0.5F, true);
    timer.startTimer();
    unsigned int ticks = 0;
    timer.onTick = [&] { ++ticks; };
    for (unsigned int i = 0; i < 500; ++i) {
        fake.now = static_cast<clock_t>(random());
        pass(after(25, ready({3})));
    }
    EXPECT_EQ(250u, ticks);
    timer.stopTimer();
    log();
}

// Descriptors.

#ifndef __SANITIZE_ADDRESS__  // the sanitizer looks at objects by descriptors of its own

// The loop itself opens none.
TEST(loopDescriptors, loopGoesOnWithoutAFreeDescriptor) {
    fxInitializeToolkit();
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    struct Ping : ScriptedHandler {
        explicit Ping(int descriptor) : ScriptedHandler(descriptor, "r") {}
        void handleRead() override {
            char byte;
            bytes += ::read(fd, &byte, 1) == 1 ? 1U : 0U;
        }
        unsigned int bytes = 0;
    };
    fxExec exec;
    rlimit before;
    ASSERT_EQ(0, ::getrlimit(RLIMIT_NOFILE, &before));
    {
        Ping ping(ends[0]);
        exec.addSelectHandler(&ping);
        const rlimit none{0, before.rlim_max};
        ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &none));
        ASSERT_EQ(-1, ::dup(0));
        for (unsigned int i = 0; i < 10; ++i) {
            ASSERT_EQ(1, ::write(ends[1], "x", 1));
            exec.poll(10);
        }
        EXPECT_EQ(10u, ping.bytes);
        EXPECT_TRUE(exec.willBlock());
        ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &before));
    }
    EXPECT_EQ(-1, ::close(ends[0])) << "its handler has closed it";
    ::close(ends[1]);
}

#endif
