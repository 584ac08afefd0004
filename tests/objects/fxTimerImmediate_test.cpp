// Timers that are started anew, with an interval of 0 or less, in the alarm in
// which they have ticked: they wait for the next one.

#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/loopFixture.h"

using namespace loopTest;

namespace {

using ActiveList = std::vector<ActiveTimer>;

class fxTimerImmediate : public LoopTest {
protected:
    // An alarm that does not end lets this many ticks happen.
    static void expectTicks(const std::string& expected, float elapsed = 1.0F) {
        fxTimer::alarm(elapsed);
        EXPECT_EQ(expected, log());
    }

    // `timer` starts `started` with `interval` when it ticks, the first ten
    // times.
    static void startsInItsTick(ScriptedTimer& timer, fxTimer& started, float interval) {
        auto left = std::make_shared<int>(10);
        timer.onTick = [&started, interval, left] {
            if ((*left)-- <= 0)
                return;
            started.setInterval(interval);
            started.startTimer();
            EXPECT_TRUE(started.isActive());
        };
    }
};

}  // namespace

TEST_F(fxTimerImmediate, oneThatStartsItselfTicksOnceAnAlarm) {
    for (const float interval :
         {0.0F, -0.0F, -1.0F, -1e30F, std::numeric_limits<float>::quiet_NaN()}) {
        for (const bool repeats : {false, true}) {
            SCOPED_TRACE(testing::Message() << interval << (repeats ? ", repeating" : ""));
            ScriptedTimer timer("tick", interval, repeats);
            startsInItsTick(timer, timer, interval);
            timer.startTimer();
            for (int i = 0; i < 3; ++i) {
                expectTicks("tick ");
                EXPECT_TRUE(timer.isActive());
                EXPECT_EQ(&timer, fxTimer::activeTimers);
                EXPECT_EQ(nullptr, successorOf(timer));
            }
            timer.stopTimer();
            EXPECT_EQ(nullptr, fxTimer::activeTimers);
        }
    }
}

TEST_F(fxTimerImmediate, onesThatStartEachOtherTickOnceAnAlarm) {
    ScriptedTimer a("a", 0), b("b", 0);
    startsInItsTick(a, b, 0);
    startsInItsTick(b, a, 0);
    a.startTimer();
    expectTicks("a b ");
    EXPECT_EQ(ActiveList({{&a, 0}}), activeList());
    expectTicks("a b ");
    a.stopTimer();
}

TEST_F(fxTimerImmediate, oneThatHasNotTickedTicksInTheAlarmThatStartsIt) {
    ScriptedTimer a("a", 0.5F), fresh("fresh", 1.0F), active("active", 100.0F);
    active.startTimer();
    a.onTick = [&] {
        for (fxTimer* timer : {static_cast<fxTimer*>(&fresh), static_cast<fxTimer*>(&active)}) {
            timer->setInterval(0);
            timer->startTimer();
        }
    };
    a.startTimer();
    expectTicks("a fresh active ", 0.5F);
}

// What it has of this alarm is nothing, so that is what it is charged; as with
// any new delta, the one behind it is charged the difference to the old one.
TEST_F(fxTimerImmediate, oneThatStartsItselfIsChargedNothing) {
    const float notANumber = std::numeric_limits<float>::quiet_NaN();
    for (const float interval : {0.0F, -0.0F, -0.001F, -1e30F, notANumber}) {
        for (const bool repeats : {false, true}) {
            SCOPED_TRACE(testing::Message() << interval << (repeats ? ", repeating" : ""));
            ScriptedTimer timer("tick", 1.0F, repeats), behind("behind", 2.0F), last("last", 4.0F);
            startsInItsTick(timer, timer, interval);
            for (fxTimer* t : {&timer, &behind, &last})
                t->startTimer();
            expectTicks("tick behind ", 1.5F);
            EXPECT_EQ(&timer, fxTimer::activeTimers);
            EXPECT_EQ(&last, successorOf(timer));
            if (!(interval < 0)) {
                EXPECT_EQ(ActiveList({{&timer, 0}, {&last, 1.5F}}), activeList());
            }
            timer.stopTimer();
        }
    }
}

// It is charged the same as one that starts itself with next to nothing.
TEST_F(fxTimerImmediate, oneThatStartsItselfAlmostAtOnceIsChargedAlmostNothing) {
    ScriptedTimer timer("tick", 1.0F), behind("behind", 2.0F);
    bool first = true;
    timer.onTick = [&] {
        if (std::exchange(first, false)) {
            timer.setInterval(0x1p-20F);
            timer.startTimer();
        }
    };
    timer.startTimer();
    behind.startTimer();
    expectTicks("tick tick behind ", 1.5F);
}

TEST_F(fxTimerImmediate, oneThatTickedBeforeAnotherStartsItWaits) {
    for (const bool repeats : {false, true}) {
        SCOPED_TRACE(repeats);
        ScriptedTimer fired("fired", 0.25F, repeats), b("b", 0.25F), last("last", 0.5F);
        startsInItsTick(last, fired, 0);
        for (fxTimer* timer : {&fired, &b, &last})
            timer->startTimer();
        expectTicks("fired b last ");
        EXPECT_EQ(ActiveList({{&fired, 0}}), activeList());
        expectTicks("fired ", 0);
        fired.stopTimer();
    }
}

// In between it was active with an interval, or stopped.
TEST_F(fxTimerImmediate, whatHappensInBetweenDoesNotMatter) {
    for (const int way : {0, 1, 2, 3}) {
        SCOPED_TRACE(way);
        ScriptedTimer fired("fired", 0.25F), last("last", 0.25F);
        const auto start = [&](float interval) {
            fired.setInterval(interval);
            fired.startTimer();
        };
        fired.onTick = [&] { start(2.0F); };
        last.onTick = [&] {
            if (way == 1)
                fired.stopTimer();
            else if (way == 2)
                start(0);
            else if (way == 3)
                start(4.0F);
            start(0);
        };
        fired.startTimer();
        last.startTimer();
        expectTicks("fired last ", 3.0F);
        EXPECT_EQ(&fired, fxTimer::activeTimers);
        fired.stopTimer();
    }
}

// In an alarm it may tick again and again.
TEST_F(fxTimerImmediate, onesThatTickOftenWaitOnceTheyStartAtOnce) {
    ScriptedTimer a("a", 0.25F), b("b", 0.25F), last("last", 1.0F);
    a.onTick = [&] { a.startTimer(); };
    b.onTick = [&] { b.startTimer(); };
    last.onTick = [&] {
        a.setInterval(0);
        a.startTimer();
    };
    for (fxTimer* timer : {&a, &b, &last})
        timer->startTimer();
    expectTicks("a b a b a b last b ", 1.0F);
    EXPECT_EQ(ActiveList({{&a, 0}, {&b, 0.25F}}), activeList());
    a.onTick = nullptr;
    expectTicks("a ", 0);
    b.stopTimer();
}

TEST_F(fxTimerImmediate, howManyHaveTickedDoesNotMatter) {
    for (const unsigned int n : {1U, 255U, 256U, 257U, 1000U}) {
        SCOPED_TRACE(n);
        std::vector<std::unique_ptr<ScriptedTimer>> timers;
        for (unsigned int i = 0; i < n; ++i) {
            timers.push_back(std::make_unique<ScriptedTimer>("", 0.0F));
            timers.back()->startTimer();
        }
        unsigned int waiting = 0;
        ScriptedTimer last("last", 0), fresh("fresh", 0);
        last.onTick = [&] {
            for (unsigned int i = 0; i < n; i += 3)
                timers[i].reset();
            for (const auto& timer : timers) {
                if (timer) {
                    timer->name = "w";
                    timer->startTimer();
                    ++waiting;
                }
            }
            fresh.startTimer();
        };
        last.startTimer();
        fxTimer::alarm(0);
        const std::string first = log();
        EXPECT_EQ("last fresh ", first.substr(first.find('l')));
        EXPECT_EQ(waiting, activeList().size());
        fxTimer::alarm(0);
        EXPECT_EQ(2 * waiting, log().size());
        EXPECT_EQ(nullptr, fxTimer::activeTimers);
    }
}

TEST_F(fxTimerImmediate, oneThatIsStoppedAfterwardsDoesNotTick) {
    for (const bool byAnother : {false, true}) {
        SCOPED_TRACE(byAnother);
        ScriptedTimer timer("tick", 0), other("other", 0);
        timer.onTick = [&] {
            timer.startTimer();
            if (!byAnother)
                timer.stopTimer();
        };
        other.onTick = [&] {
            if (byAnother)
                timer.stopTimer();
        };
        timer.startTimer();
        other.startTimer();
        expectTicks("tick other ");
        EXPECT_FALSE(timer.isActive());
        EXPECT_EQ(nullptr, fxTimer::activeTimers);
    }
}

TEST_F(fxTimerImmediate, oneThatIsDeletedAfterwardsIsForgotten) {
    for (const bool itself : {false, true}) {
        SCOPED_TRACE(itself);
        auto timer = std::make_unique<ScriptedTimer>("tick", 0.0F);
        ScriptedTimer other("other", 0), idle("idle", 0);
        timer->onTick = [&] {
            timer->startTimer();
            if (itself)
                timer.reset();
        };
        other.onTick = [&] { timer.reset(); };
        timer->startTimer();
        idle.startTimer();
        other.startTimer();
        expectTicks("tick idle other ");
        EXPECT_EQ(nullptr, fxTimer::activeTimers);
    }
}

TEST_F(fxTimerImmediate, oneThatTickedMayBeDeletedInTheSameAlarm) {
    auto a = std::make_unique<ScriptedTimer>("a", 0.0F),
         b = std::make_unique<ScriptedTimer>("b", 0.0F),
         c = std::make_unique<ScriptedTimer>("c", 0.0F);
    ScriptedTimer last("last", 0);
    last.onTick = [&] {
        b.reset();
        a.reset();
        c.reset();
    };
    for (fxTimer* timer : {a.get(), b.get(), c.get(), static_cast<ScriptedTimer*>(&last)})
        timer->startTimer();
    expectTicks("a b c last ");
    EXPECT_EQ(nullptr, fxTimer::activeTimers);
}

// It waits for the next alarm, which may be one within; and a pass within sees
// that there is a timer.
TEST_F(fxTimerImmediate, anAlarmWithinServesTheOneThatWaits) {
    ScriptedTimer timer("tick", 0), outer("outer", 0);
    startsInItsTick(timer, timer, 0);
    outer.onTick = [&] {
        fxTimer::alarm(0);
        note("back");
    };
    timer.startTimer();
    outer.startTimer();
    expectTicks("tick outer tick back ", 0);
    EXPECT_EQ(ActiveList({{&timer, 0}}), activeList());
    timer.stopTimer();
}

TEST_F(fxTimerImmediate, aPassWithinServesTheOneThatWaits) {
    registered(3, "r");
    ScriptedTimer timer("tick", 0), outer("outer", 0);
    startsInItsTick(timer, timer, 0);
    outer.onTick = [&] {
        pass(timedOut());
        EXPECT_EQ(0, lastSelect().seconds);
        note("back");
    };
    timer.startTimer();
    outer.startTimer();
    expectTicks("tick outer tick back ", 0);
    timer.stopTimer();
}

TEST_F(fxTimerImmediate, oneStartedOutsideAnAlarmTicksInTheNext) {
    ScriptedTimer timer("tick", 0);
    for (int i = 0; i < 2; ++i) {
        timer.startTimer();
        EXPECT_EQ(ActiveList({{&timer, 0}}), activeList());
        expectTicks("tick ", 0);
        EXPECT_FALSE(timer.isActive());
    }
}

// Nothing that an alarm noted outlives it.
TEST_F(fxTimerImmediate, oneThatTickedInAnEarlierAlarmTicksInTheAlarmThatStartsIt) {
    ScriptedTimer idle("idle", 0), active("active", 0), a("a", 0);
    startsInItsTick(active, active, 3.0F);
    idle.startTimer();
    active.startTimer();
    expectTicks("idle active ", 0);
    a.onTick = [&] {
        for (ScriptedTimer* timer : {&idle, &active}) {
            timer->onTick = nullptr;
            timer->setInterval(0);
            timer->startTimer();
        }
    };
    a.startTimer();
    expectTicks("a idle active ", 0);
}

TEST_F(fxTimerImmediate, tickThatThrowsLeavesTheOthersToTheNextAlarm) {
    ScriptedTimer again("again", 0.25F, true), waits("waits", 0.25F), thrower("thrower", 0.25F),
        due("due", 0.25F);
    startsInItsTick(waits, waits, 0);
    thrower.onTick = [] { throw 1; };
    for (fxTimer* timer : {&again, &waits, &thrower, &due})
        timer->startTimer();
    EXPECT_THROW(fxTimer::alarm(0.25F), int);
    EXPECT_EQ("again waits thrower ", log());
    EXPECT_FALSE(thrower.isActive());
    EXPECT_EQ(ActiveList({{&due, 0}, {&waits, 0}, {&again, 0.25F}}), activeList());
    again.stopTimer();
    expectTicks("due waits ", 0);
    waits.stopTimer();
}

TEST_F(fxTimerImmediate, repeatingTimerWhoseTickThrowsStartsAnewAfterTheOthers) {
    for (const bool startsItself : {false, true}) {
        SCOPED_TRACE(startsItself);
        ScriptedTimer again("again", 0.25F, true), thrower("thrower", 0.25F, true);
        thrower.onTick = [&] {
            if (startsItself)
                thrower.startTimer();
            throw 1;
        };
        again.startTimer();
        thrower.startTimer();
        EXPECT_THROW(fxTimer::alarm(0.25F), int);
        EXPECT_EQ("again thrower ", log());
        if (startsItself)
            EXPECT_EQ(ActiveList({{&thrower, 0.25F}, {&again, 0}}), activeList());
        else
            EXPECT_EQ(ActiveList({{&again, 0.25F}, {&thrower, 0}}), activeList());
        again.stopTimer();
        thrower.stopTimer();
    }
}

TEST_F(fxTimerImmediate, repeatingTimerThatThrowsInItsDestructionIsForgotten) {
    auto thrower = std::make_unique<ScriptedTimer>("thrower", 0.25F, true);
    thrower->onTick = [&] {
        thrower.reset();
        throw 1;
    };
    thrower->startTimer();
    EXPECT_THROW(fxTimer::alarm(0.25F), int);
    EXPECT_EQ("thrower ", log());
    EXPECT_EQ(nullptr, fxTimer::activeTimers);
}
