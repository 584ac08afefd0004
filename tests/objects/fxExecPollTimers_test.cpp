// How a pass of the dispatch loop advances the timers, with select and the
// clock as each test wants them.

#include <cerrno>
#include <climits>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/loopFixture.h"

using namespace loopTest;

namespace {

class fxExecPollTimers : public PassTest {};

}  // namespace

TEST_F(fxExecPollTimers, clockIsOnlyReadForActiveTimers) {
    registered(3, "r");
    pass(ready({3}));
    pass(timedOut());
    pass(failure(EINTR));
    EXPECT_EQ("select read3 select select ", log());
    EXPECT_EQ(0u, fake.timesCalls);
}

TEST_F(fxExecPollTimers, elapsedTicksAreSubtractedOrFire) {
    registered(3, "r");
    const struct {
        float interval;
        unsigned long ticks;
        bool fires;
        float delta;
    } cases[] = {
        {0.5F, 0, false, 0.5F},
        {0.5F, 25, false, 0.25F},
        {0.75F, 50, false, 0.25F},
        {0.5F, 50, true, 0},
        {0.5F, 75, true, 0},
        {100.0F, 1, false, 99.99F},
        {100.0F, 9999, false, static_cast<float>(100.0 - 99.99)},
        {0.0F, 0, true, 0},
        // As floats both would be equal and the timer would fire; the rest is
        // 0.100000001490116119 - 0.1.
        {0.1F, 10, false, 1.4901161e-9F},
        {0.1F, 11, true, 0},
        // 0.699999988079071 and 0.300000011920929: below and above the ticks.
        {0.7F, 70, true, 0},
        {0.3F, 30, false, 1.1920929e-8F},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.interval << " after " << c.ticks << " ticks");
        ScriptedTimer timer("tick", c.interval);
        timer.startTimer();
        pass(after(c.ticks, ready({3})));
        EXPECT_EQ(c.fires ? "times select times tick read3 " : "times select times read3 ", log());
        EXPECT_EQ(!c.fires, timer.isActive());
        if (!c.fires) {
            EXPECT_FLOAT_EQ(c.delta, deltaOf(timer));
        }
    }
}

TEST_F(fxExecPollTimers, quartersOfASecondAreExact) {
    registered(3, "r");
    ScriptedTimer timer("tick", 1.0F);
    timer.startTimer();
    for (const float rest : {0.75F, 0.5F, 0.25F}) {
        pass(after(25, ready({})), 0);
        EXPECT_EQ(rest, deltaOf(timer));
    }
    log();
    pass(after(25, ready({})), 0);
    EXPECT_EQ("times select times tick ", log());
}

TEST_F(fxExecPollTimers, elapsedTimeBeyondTheFirstTimerGoesOnToTheNext) {
    registered(3, "r");
    ScriptedTimer first("first", 0.5F), second("second", 0.5F), third("third", 1.0F);
    for (ScriptedTimer* timer : {&first, &second, &third})
        timer->startTimer();
    pass(after(75, ready({3})));
    EXPECT_EQ("times select times first second read3 ", log());
    EXPECT_EQ(std::vector<ActiveTimer>({{&third, 0.25F}}), activeList());
}

TEST_F(fxExecPollTimers, timeoutOfTheFirstTimerFiresAllThatAreDueThen) {
    registered(3, "r");
    ScriptedTimer first("first", 0.5F), second("second", 0.5F), third("third", 0.75F);
    for (ScriptedTimer* timer : {&first, &second, &third})
        timer->startTimer();
    pass(timedOut(500));  // the clock is not asked
    EXPECT_EQ("times select first second ", log());
    EXPECT_EQ(std::vector<ActiveTimer>({{&third, 0.25F}}), activeList());
}

TEST_F(fxExecPollTimers, tickDifferenceIsAnUnsignedCount) {
    registered(3, "r");
    const struct {
        clock_t start;
        unsigned long ticks;
        bool fires;
        float delta;
    } cases[] = {
        {LONG_MAX - 5, 25, false, 0.75F},  // over the largest clock_t
        {-5, 25, false, 0.75F},            // over zero
        {LONG_MIN, 50, false, 0.5F},
        {LONG_MAX, 100, true, 0},
        {-1, 100, true, 0},
        // A clock that goes back is 4294967295 ticks ahead.
        {1000, static_cast<unsigned long>(-1), true, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.ticks << " ticks from " << c.start);
        ScriptedTimer timer("tick", 1.0F);
        timer.startTimer();
        fake.now = c.start;
        pass(after(c.ticks, ready({})), 0);
        EXPECT_EQ(c.fires ? "times select times tick " : "times select times ", log());
        if (!c.fires) {
            EXPECT_EQ(c.delta, deltaOf(timer));
        }
    }
}

TEST_F(fxExecPollTimers, clockThatGoesBackFiresEveryTimer) {
    registered(3, "r");
    ScriptedTimer first("first", 1.0F), last("last", 42949672.0F);
    first.startTimer();
    last.startTimer();
    fake.now = 1;
    pass(after(static_cast<unsigned long>(-1), ready({})), 0);
    EXPECT_EQ("times select times first last ", log());
}

TEST_F(fxExecPollTimers, deliberateOneHundredTicksMakeASecond) {
    registered(3, "r");
    ScriptedTimer timer("tick", 2.0F);
    timer.startTimer();
    pass(after(100, ready({})), 0);
    EXPECT_EQ(1.0F, deltaOf(timer));
    log();
}

TEST_F(fxExecPollTimers, timeOutsideTheWaitIsNotCharged) {
    watch();
    registered(3, "r").onRead = [this] { fake.now += 1000; };
    Receiver receiver("received", [this] { fake.now += 1000; });
    Sender sender(receiver);
    before = behind = [this] { fake.now += 1000; };
    ScriptedTimer timer("tick", 1.0F);
    timer.startTimer();
    sender.send();
    pass(after(25, ready({3})));
    pass(after(25, ready({3})));
    EXPECT_EQ(0.5F, deltaOf(timer));
    log();
}

TEST_F(fxExecPollTimers, timersAreServedBeforeHandlersAndHandlersSeeTheRestartedOnes) {
    ScriptedTimer timer("tick", 0.5F, true);
    registered(3, "r").onRead = [&] {
        if (timer.isActive())
            note("active");
        timer.stopTimer();
    };
    timer.startTimer();
    pass(after(50, ready({3})));
    EXPECT_EQ("times select times tick read3 active ", log());
}

TEST_F(fxExecPollTimers, firstTimerStartedByAHandlerIsNotServedInThisPass) {
    ScriptedTimer timer("tick", 0);
    registered(3, "r").onRead = [&] { timer.startTimer(); };
    pass(after(100, ready({3})));
    EXPECT_EQ("select read3 ", log());
    pass(timedOut());
    EXPECT_EQ("times select tick ", log());
}

// The table in docs/event-loop.md.
TEST_F(fxExecPollTimers, listDevelopsAsDocumented) {
    ScriptedTimer a("A", 0.5F, true), b("B", 0.75F), c("C", 2.0F);
    using ActiveList = std::vector<ActiveTimer>;
    ScriptedHandler& h = registered(3, "r");
    c.startTimer();
    EXPECT_EQ(ActiveList({{&c, 2.0F}}), activeList());
    a.startTimer();
    EXPECT_EQ(ActiveList({{&a, 0.5F}, {&c, 1.5F}}), activeList());
    b.startTimer();
    EXPECT_EQ(ActiveList({{&a, 0.5F}, {&b, 0.25F}, {&c, 1.25F}}), activeList());

    pass(after(30, ready({3})));
    EXPECT_EQ(ActiveList({{&a, 0.2F}, {&b, 0.25F}, {&c, 1.25F}}), activeList());
    log();
    pass(timedOut());
    EXPECT_EQ("times select A ", log());
    EXPECT_EQ(ActiveList({{&b, 0.25F}, {&a, 0.25F}, {&c, 1.0F}}), activeList());
    b.stopTimer();
    EXPECT_EQ(ActiveList({{&a, 0.5F}, {&c, 1.0F}}), activeList());
    h.onRead = [this] { fake.now += 300; };
    pass(ready({3}));
    EXPECT_EQ(ActiveList({{&a, 0.5F}, {&c, 1.0F}}), activeList());
    log();
    pass(after(180, ready({3})));
    EXPECT_EQ("times select times A C read3 ", log());
    EXPECT_EQ(ActiveList({{&a, 0.5F}}), activeList());
    a.stopTimer();
}

// A failing select.

TEST_F(fxExecPollTimers, failedSelectServesTimersAndFunctionsButNoHandler) {
    watch();
    registered(3, "rwx");
    Receiver receiver("received");
    ScriptedTimer timer("tick", 0.5F);
    timer.connect("tick", &receiver, "in");
    timer.startTimer();
    for (const int error : {EINTR, EBADF, EINVAL}) {
        SCOPED_TRACE(error);
        timer.startTimer();
        pass(failure(error, 25));  // it leaves bit 3 in every set
        EXPECT_EQ("pre times select times post ", log());
        EXPECT_EQ(0.25F, deltaOf(timer));
        pass(failure(error, 25));
        EXPECT_EQ("pre times select times tick post received ", log());
    }
}

TEST_F(fxExecPollTimers, failedSelectIsNoTimeoutOfTheFirstTimer) {
    registered(3, "r");
    ScriptedTimer timer("tick", 0.5F);
    timer.startTimer();
    pass(failure(EINTR));
    EXPECT_EQ("times select times ", log());
    EXPECT_TRUE(timer.isActive());
}

TEST_F(fxExecPollTimers, negativeDeltaDoesNotWaitAndFires) {
    registered(3, "r");
    ScriptedTimer timer("tick", -0.5F, true), later("later", 0.25F);
    timer.startTimer();
    later.startTimer();
    for (int i = 0; i < 3; ++i) {
        pass(timedOut());
        EXPECT_EQ(0, lastSelect().seconds);
        EXPECT_EQ(0, lastSelect().microseconds);
        EXPECT_EQ("times select times tick ", log());
    }
    pass(after(25, ready({3})));
    EXPECT_EQ("times select times tick later read3 ", log());
    timer.stopTimer();
}

TEST_F(fxExecPollTimers, endlessDeltaWaitsForTheLongestTime) {
    registered(3, "r");
    const float infinity = std::numeric_limits<float>::infinity();
    ScriptedTimer timer("tick", infinity);
    timer.startTimer();
    pass(timedOut(100), infinity);
    EXPECT_EQ(2147483520L, lastSelect().seconds);
    EXPECT_EQ("times select times ", log());
    EXPECT_EQ(infinity, deltaOf(timer));
    timer.stopTimer();
}

TEST_F(fxExecPollTimers, errnoOfSelectIsKeptAcrossTheTimers) {
    registered(3, "r");
    exec.addPostSelectFunc(post);
    int seen = 0;
    behind = [&] { seen = errno; };
    fake.timesError = EDOM;
    const struct {
        SelectAnswer answer;
        bool fires;
    } cases[] = {{failure(EINTR, 25), false}, {failure(EBADF, 50), true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.answer.error);
        ScriptedTimer timer("tick", 0.5F);
        timer.onTick = [] { errno = ERANGE; };
        timer.startTimer();
        errno = 0;
        pass(c.answer);
        EXPECT_EQ(!c.fires, timer.isActive());
        EXPECT_EQ(c.answer.error, seen);
    }
    log();
}

TEST_F(fxExecPollTimers, errnoIsKeptWhenTheTimeoutFires) {
    registered(3, "r");
    exec.addPostSelectFunc(post);
    int seen = 0;
    behind = [&] { seen = errno; };
    ScriptedTimer timer("tick", 0.5F);
    timer.onTick = [] { errno = ERANGE; };
    timer.startTimer();
    SelectAnswer answer = timedOut();
    answer.error = EAGAIN;  // stands for what errno was before
    pass(answer);
    EXPECT_EQ("times select tick post ", log());
    EXPECT_EQ(EAGAIN, seen);
}

TEST_F(fxExecPollTimers, errnoOfHandlersIsNotRestored) {
    registered(3, "r").onRead = [] { errno = ERANGE; };
    exec.addPostSelectFunc(post);
    int seen = 0;
    behind = [&] { seen = errno; };
    ScriptedTimer timer("tick", 0.5F);
    timer.startTimer();
    pass(ready({3}));
    EXPECT_EQ(ERANGE, seen);
    log();
}
