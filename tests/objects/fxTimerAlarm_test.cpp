// What an alarm does to the active list, in exact floats, and what ticks may
// do meanwhile.

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/loopFixture.h"

using namespace loopTest;

namespace {

using ActiveList = std::vector<ActiveTimer>;

// A position in the order of starting, and a delta.
struct Entry {
    unsigned int timer;
    float delta;
};

class fxTimerAlarm : public LoopTest {
protected:
    struct Row {
        std::vector<float> intervals;
        float elapsed;
        const char* fired;  // positions in the order of starting
        std::vector<Entry> left;
    };

    // Starts timers of these intervals, named 0, 1, ..., and has an alarm.
    static void expectRow(const Row& row, bool repeats) {
        std::vector<std::unique_ptr<ScriptedTimer>> timers;
        for (const float interval : row.intervals) {
            timers.push_back(
                std::make_unique<ScriptedTimer>(std::to_string(timers.size()), interval, repeats));
            timers.back()->startTimer();
        }
        fxTimer::alarm(row.elapsed);
        EXPECT_EQ(row.fired, log());
        ActiveList left;
        for (const Entry& entry : row.left)
            left.emplace_back(timers[entry.timer].get(), entry.delta);
        EXPECT_EQ(left, activeList());
        for (const auto& timer : timers) {
            bool listed = false;
            for (const ActiveTimer& entry : left)
                listed = listed || entry.first == timer.get();
            EXPECT_EQ(listed, timer->isActive()) << timer->name;
        }
    }
};

}  // namespace

TEST_F(fxTimerAlarm, withoutActiveTimersDoesNothing) {
    fxTimer::alarm(0);
    fxTimer::alarm(1000.0F);
    EXPECT_EQ(nullptr, fxTimer::activeTimers);
}

TEST_F(fxTimerAlarm, firesWhatIsDueAndShortensTheNext) {
    const Row rows[] = {
        {{0.5F}, 0, "", {{0, 0.5F}}},
        {{0.5F}, 0.25F, "", {{0, 0.25F}}},
        {{0.5F}, 0.499999970F, "", {{0, 0x1p-25F}}},
        {{0.5F}, 0.5F, "0 ", {}},
        {{0.5F}, 10.0F, "0 ", {}},
        {{0}, 0, "0 ", {}},
        {{0.5F, 0.5F}, 0.5F, "0 1 ", {}},
        {{0.5F, 0.75F}, 0.25F, "", {{0, 0.25F}, {1, 0.25F}}},
        {{0.5F, 0.75F}, 0.5F, "0 ", {{1, 0.25F}}},
        {{0.5F, 0.75F}, 0.625F, "0 ", {{1, 0.125F}}},
        {{2.0F, 0.75F, 1.0F, 0.5F}, 0.75F, "3 1 ", {{2, 0.25F}, {0, 1.0F}}},
        {{2.0F, 0.75F, 1.0F, 0.5F}, 1.5F, "3 1 2 ", {{0, 0.5F}}},
        {{2.0F, 0.75F, 1.0F, 0.5F}, 2.0F, "3 1 2 0 ", {}},
        // Deltas of 0 behind a timer that is due are due as well.
        {{0.5F, 0.5F, 0.5F, 0.75F}, 0.5F, "0 1 2 ", {{3, 0.25F}}},
        {{0, 0, 0.5F}, 0, "0 1 ", {{2, 0.5F}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << &row - rows);
        expectRow(row, false);
    }
}

// In units of 2 to the power -27, and rounded to float, the deltas are
// 13421773, 13421773, 13421775 and 26843544. The alarm at 40265320 leaves
// 26843548 and 13421775, which is just enough for the third timer; without the
// rounding one unit would be missing.
TEST_F(fxTimerAlarm, elapsedTimeIsRoundedToFloatAfterEachTick) {
    expectRow({{0.1F, 0.2F, 0.3F, 0.5F}, 0.3F, "0 1 2 ", {{3, 0x1.999998p-3F}}}, false);
}

TEST_F(fxTimerAlarm, severalAlarmsAddUp) {
    ScriptedTimer a("A", 0.5F), b("B", 1.0F), c("C", 1.0F);
    for (fxTimer* timer : {&a, &b, &c})
        timer->startTimer();
    fxTimer::alarm(0.25F);
    EXPECT_EQ(ActiveList({{&a, 0.25F}, {&b, 0.5F}, {&c, 0}}), activeList());
    fxTimer::alarm(0.5F);
    EXPECT_EQ("A ", log());
    EXPECT_EQ(ActiveList({{&b, 0.25F}, {&c, 0}}), activeList());
    fxTimer::alarm(0.25F);
    EXPECT_EQ("B C ", log());
}

// Repeating timers.

TEST_F(fxTimerAlarm, repeatingTimersStartAnewInFiringOrder) {
    const Row rows[] = {
        {{0.5F}, 0.25F, "", {{0, 0.25F}}},
        {{0.5F}, 0.5F, "0 ", {{0, 0.5F}}},
        {{0.5F, 0.5F}, 0.5F, "0 1 ", {{0, 0.5F}, {1, 0}}},
        {{0.5F, 0.25F}, 0.5F, "1 0 ", {{1, 0.25F}, {0, 0.25F}}},
        // Those that are not due are shortened first.
        {{0.25F, 1.0F}, 0.5F, "0 ", {{0, 0.25F}, {1, 0.25F}}},
        {{0.75F, 1.0F}, 0.875F, "0 ", {{1, 0.125F}, {0, 0.625F}}},
        // Equal expiry goes behind.
        {{0.5F, 1.0F}, 0.5F, "0 ", {{1, 0.5F}, {0, 0}}},
        // With interval 0 it fires once an alarm.
        {{0}, 1.0F, "0 ", {{0, 0}}},
        {{0, 0.5F}, 0, "0 ", {{0, 0}, {1, 0.5F}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << &row - rows);
        expectRow(row, true);
    }
}

TEST_F(fxTimerAlarm, deliberateLatenessIsNotCarriedOver) {
    const Row rows[] = {
        {{0.5F}, 0.75F, "0 ", {{0, 0.5F}}},
        {{0.5F}, 100.0F, "0 ", {{0, 0.5F}}},
        {{0.5F, 0.75F}, 10.0F, "0 1 ", {{0, 0.5F}, {1, 0.25F}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << &row - rows);
        expectRow(row, true);
    }
}

TEST_F(fxTimerAlarm, onlyRepeatingTimersStartAnew) {
    ScriptedTimer once("once", 0.25F), again("again", 0.25F, true), later("later", 1.0F);
    for (fxTimer* timer : {&once, &again, &later})
        timer->startTimer();
    for (int i = 1; i <= 3; ++i) {
        fxTimer::alarm(0.25F);
        EXPECT_EQ(i == 1 ? "once again " : "again ", log());
    }
    // Both are due at 1; the one started anew at 0.75 comes behind.
    EXPECT_EQ(ActiveList({{&later, 0.25F}, {&again, 0}}), activeList());
    fxTimer::alarm(0.25F);
    EXPECT_EQ("later again ", log());
    again.stopTimer();
}

TEST_F(fxTimerAlarm, repeatingTimerTakesTheIntervalThatItsTickSet) {
    ScriptedTimer timer("tick", 0.5F, true);
    timer.onTick = [&] { timer.setInterval(2.0F); };
    timer.startTimer();
    fxTimer::alarm(0.5F);
    EXPECT_EQ(ActiveList({{&timer, 2.0F}}), activeList());
    timer.stopTimer();
}

// What a tick sees.

TEST_F(fxTimerAlarm, tickIsCalledOnAnUnlinkedInactiveTimer) {
    for (const bool repeats : {false, true}) {
        SCOPED_TRACE(repeats);
        ScriptedTimer timer("tick", 0.5F, repeats), other("other", 2.0F);
        timer.onTick = [&] {
            EXPECT_FALSE(timer.isActive());
            EXPECT_EQ(nullptr, successorOf(timer));
            // The elapsed time has not been taken from the others yet.
            EXPECT_EQ(ActiveList({{&other, 1.5F}}), activeList());
        };
        timer.startTimer();
        other.startTimer();
        fxTimer::alarm(0.75F);
        EXPECT_EQ("tick ", log());
        EXPECT_EQ(repeats, timer.isActive());
    }
}

TEST_F(fxTimerAlarm, repeatingTimersStartAnewOnlyAfterAllTicks) {
    ScriptedTimer first("first", 0.25F, true), last("last", 0.5F, true);
    last.onTick = [&] {
        EXPECT_FALSE(first.isActive());
        EXPECT_EQ(nullptr, fxTimer::activeTimers);
    };
    first.startTimer();
    last.startTimer();
    fxTimer::alarm(1.0F);
    EXPECT_EQ("first last ", log());
    EXPECT_EQ(ActiveList({{&first, 0.25F}, {&last, 0.25F}}), activeList());
}

// What a tick does to its own timer.

TEST_F(fxTimerAlarm, stopInItsOwnTickDoesNotKeepARepeatingTimerFromStartingAnew) {
    ScriptedTimer timer("tick", 0.5F, true);
    timer.onTick = [&] { timer.stopTimer(); };
    timer.startTimer();
    fxTimer::alarm(0.5F);
    EXPECT_EQ(ActiveList({{&timer, 0.5F}}), activeList());
    timer.stopTimer();
}

TEST_F(fxTimerAlarm, stopInAReceiverOfTheTickStopsARepeatingTimer) {
    ScriptedTimer timer("tick", 0.5F, true);
    Receiver receiver("received", [&] { timer.stopTimer(); });
    timer.connect("tick", &receiver, "in");
    timer.startTimer();
    fxTimer::alarm(0.5F);
    EXPECT_TRUE(timer.isActive());
    fx_theEventHandler->distributeEvents();
    EXPECT_EQ("tick received ", log());
    EXPECT_FALSE(timer.isActive());
}

TEST_F(fxTimerAlarm, timerStartedInItsOwnTickIsInTheListOnce) {
    for (const bool repeats : {false, true}) {
        SCOPED_TRACE(repeats);
        ScriptedTimer timer("tick", 0.5F, repeats);
        timer.onTick = [&] { timer.startTimer(); };
        timer.startTimer();
        fxTimer::alarm(0.5F);
        EXPECT_EQ("tick ", log());
        EXPECT_EQ(ActiveList({{&timer, 0.5F}}), activeList());
        fxTimer::alarm(0.5F);
        EXPECT_EQ("tick ", log());
        timer.stopTimer();
    }
}

TEST_F(fxTimerAlarm, timerStartedInItsOwnTickMakesUpForLateness) {
    for (const bool repeats : {false, true}) {
        SCOPED_TRACE(repeats);
        ScriptedTimer timer("tick", 0.5F, repeats);
        timer.onTick = [&] { timer.startTimer(); };
        timer.startTimer();
        fxTimer::alarm(1.75F);
        EXPECT_EQ("tick tick tick ", log());
        EXPECT_EQ(ActiveList({{&timer, 0.25F}}), activeList());
        timer.stopTimer();
    }
}

// The time elapsed is lowered by the delta that the timer has after its tick,
// which may be more than there is and less than was due.
TEST_F(fxTimerAlarm, deliberateTimerStartedInItsOwnTickIsChargedWithItsNewDelta) {
    const struct {
        float later;  // interval of another timer
        float interval;
        const char* fired;
        std::vector<Entry> left;
    } cases[] = {
        {4.0F, 2.0F, "tick ", {{0, 3.5F}, {1, 1.5F}}},
        {1.0F, 2.0F, "tick ", {{1, 1.5F}, {0, 1.5F}}},
        {0.5F, 0.25F, "tick other tick ", {{0, 0.25F}}},
        {0.5F, 0.5F, "tick other ", {{0, 0.5F}}},
        {1.0F, 0.25F, "tick tick other tick ", {{0, 0.5F}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "row " << &c - cases);
        ScriptedTimer timer("tick", 0.5F), other("other", c.later);
        timer.onTick = [&] {
            timer.setInterval(c.interval);
            timer.startTimer();
        };
        timer.startTimer();
        other.startTimer();
        fxTimer::alarm(0.5F);
        EXPECT_EQ(c.fired, log());
        ActiveList left;
        for (const Entry& entry : c.left)
            left.emplace_back(entry.timer == 0 ? &timer : &other, entry.delta);
        EXPECT_EQ(left, activeList());
    }
}

// What another timer's start takes from the delta counts, too.
TEST_F(fxTimerAlarm, deltaAfterTheTickIsWhatItsTickLeft) {
    ScriptedTimer timer("tick", 0.5F), between("between", 0.25F), other("other", 4.0F);
    timer.onTick = [&] {
        timer.setInterval(1.0F);
        timer.startTimer();
        between.startTimer();
    };
    timer.startTimer();
    other.startTimer();
    fxTimer::alarm(0.75F);
    // 0.75 - 0.75 is left after the tick.
    EXPECT_EQ("tick ", log());
    EXPECT_EQ(ActiveList({{&between, 0.25F}, {&timer, 0.75F}, {&other, 2.5F}}), activeList());
}

TEST_F(fxTimerAlarm, timerThatItsTickDestroysIsChargedWithTheDeltaFromBefore) {
    auto timer = std::make_unique<ScriptedTimer>("tick", 0.5F);
    ScriptedTimer other("other", 1.0F);
    timer->onTick = [&] {
        timer->setInterval(0.25F);
        timer->startTimer();
        timer.reset();
    };
    timer->startTimer();
    other.startTimer();
    fxTimer::alarm(0.75F);
    EXPECT_EQ("tick ", log());
    EXPECT_EQ(ActiveList({{&other, 0.25F}}), activeList());
}

// What a tick does to others.

TEST_F(fxTimerAlarm, timerStartedByATickIsChargedWithTheTimeLeft) {
    const struct {
        float elapsed;
        const char* fired;
        float left;  // of the started timer
    } cases[] = {{0.5F, "tick ", 0.25F}, {0.625F, "tick ", 0.125F}, {0.75F, "tick started ", 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.elapsed);
        ScriptedTimer timer("tick", 0.5F), started("started", 0.25F);
        timer.onTick = [&] { started.startTimer(); };
        timer.startTimer();
        fxTimer::alarm(c.elapsed);
        EXPECT_EQ(c.fired, log());
        EXPECT_EQ(c.left != 0, started.isActive());
        if (started.isActive()) {
            EXPECT_EQ(c.left, deltaOf(started));
        }
    }
}

TEST_F(fxTimerAlarm, timerStoppedByATickDoesNotFire) {
    ScriptedTimer timer("tick", 0.5F), due("due", 0.5F), last("last", 0.75F);
    timer.onTick = [&] { due.stopTimer(); };
    for (fxTimer* t : {&timer, &due, &last})
        t->startTimer();
    fxTimer::alarm(0.625F);
    EXPECT_EQ("tick ", log());
    EXPECT_EQ(ActiveList({{&last, 0.125F}}), activeList());
}

TEST_F(fxTimerAlarm, timerRestartedByATickWaitsBehind) {
    ScriptedTimer timer("tick", 0.5F), due("due", 0.5F), last("last", 0.75F);
    timer.onTick = [&] { due.startTimer(); };
    for (fxTimer* t : {&timer, &due, &last})
        t->startTimer();
    fxTimer::alarm(0.5F);
    EXPECT_EQ("tick ", log());
    EXPECT_EQ(ActiveList({{&last, 0.25F}, {&due, 0.25F}}), activeList());
}

TEST_F(fxTimerAlarm, firedTimerThatALaterTickStartsIsInTheListOnce) {
    ScriptedTimer fired("fired", 0.25F, true), other("other", 0.25F, true), last("last", 0.5F);
    last.onTick = [&] { fired.startTimer(); };
    for (fxTimer* t : {&fired, &other, &last})
        t->startTimer();
    fxTimer::alarm(0.5F);
    EXPECT_EQ("fired other last ", log());
    EXPECT_EQ(ActiveList({{&fired, 0.25F}, {&other, 0}}), activeList());
    fxTimer::alarm(0.25F);
    EXPECT_EQ("fired other ", log());
    EXPECT_EQ(ActiveList({{&fired, 0.25F}, {&other, 0}}), activeList());
}

TEST_F(fxTimerAlarm, firedTimerThatALaterTickStopsStartsAnewAllTheSame) {
    ScriptedTimer fired("fired", 0.25F, true), last("last", 0.5F);
    last.onTick = [&] { fired.stopTimer(); };
    fired.startTimer();
    last.startTimer();
    fxTimer::alarm(0.5F);
    EXPECT_EQ("fired last ", log());
    EXPECT_EQ(ActiveList({{&fired, 0.25F}}), activeList());
    fired.stopTimer();
}

// Alarms within an alarm.

TEST_F(fxTimerAlarm, alarmInATickServesTheRestOfTheList) {
    ScriptedTimer outer("outer", 0.5F, true), inner("inner", 0.5F, true), last("last", 0.75F);
    outer.onTick = [] {
        fxTimer::alarm(0.125F);
        note("back");
    };
    for (fxTimer* t : {&outer, &inner, &last})
        t->startTimer();
    fxTimer::alarm(0.5F);
    // inner started anew in the alarm within, when 0.125 of last's 0.25 was
    // left; outer behind it, since both are due at the same time.
    EXPECT_EQ("outer inner back ", log());
    EXPECT_EQ(ActiveList({{&last, 0.125F}, {&inner, 0.375F}, {&outer, 0}}), activeList());
    outer.stopTimer();
    inner.stopTimer();
}

TEST_F(fxTimerAlarm, pollInATickServesTheRestOfTheList) {
    registered(3, "r");
    ScriptedTimer outer("outer", 0.5F, true), due("due", 0.5F), last("last", 0.75F);
    outer.onTick = [&] {
        pass(timedOut(), 0);
        note("back");
    };
    for (fxTimer* t : {&outer, &due, &last})
        t->startTimer();
    pass(timedOut());
    ASSERT_EQ(2u, fake.selects.size());
    EXPECT_EQ(500000, fake.selects[0].microseconds);
    EXPECT_EQ(0, fake.selects[1].microseconds);
    EXPECT_EQ("outer due back ", log());
    EXPECT_EQ(ActiveList({{&last, 0.25F}, {&outer, 0.25F}}), activeList());
    outer.stopTimer();
}

TEST_F(fxTimerAlarm, pollInATickDeliversWhatWasSentBefore) {
    registered(3, "r");
    ScriptedTimer first("first", 0.5F), second("second", 0.5F);
    Receiver receiver("received");
    first.connect("tick", &receiver, "in");
    second.connect("tick", &receiver, "in");
    second.onTick = [&] {
        pass(timedOut());
        note("back");
    };
    first.startTimer();
    second.startTimer();
    pass(timedOut());
    EXPECT_EQ("first second received back received ", log());
}

TEST_F(fxTimerAlarm, timerAwaitingItsRestartMayBeStartedInAnAlarmWithin) {
    ScriptedTimer fired("fired", 0.25F, true), outer("outer", 0.5F), inner("inner", 0.5F);
    outer.onTick = [] { fxTimer::alarm(0); };
    inner.onTick = [&] { fired.startTimer(); };
    for (fxTimer* t : {&fired, &outer, &inner})
        t->startTimer();
    fxTimer::alarm(0.5F);
    EXPECT_EQ("fired outer inner ", log());
    EXPECT_EQ(ActiveList({{&fired, 0.25F}}), activeList());
    fired.stopTimer();
}

// Intervals that are no length of time.

namespace {
const float infinity = std::numeric_limits<float>::infinity();
const float notANumber = std::numeric_limits<float>::quiet_NaN();
}  // namespace

TEST_F(fxTimerAlarm, intervalThatIsNoNumberCountsAsZero) {
    for (const float interval : {notANumber, -notANumber, -infinity}) {
        SCOPED_TRACE(interval);
        ScriptedTimer timer("tick", 0.5F), odd("odd", interval, true);
        timer.startTimer();
        odd.startTimer();
        EXPECT_EQ(ActiveList({{&odd, 0}, {&timer, 0.5F}}), activeList());
        fxTimer::alarm(0.25F);
        EXPECT_EQ("odd ", log());
        EXPECT_EQ(ActiveList({{&odd, 0}, {&timer, 0.25F}}), activeList());
        fxTimer::alarm(0.25F);
        EXPECT_EQ("odd tick ", log());
        odd.stopTimer();
    }
}

TEST_F(fxTimerAlarm, timeThatIsNoNumberCountsAsZero) {
    ScriptedTimer now("now", 0), timer("tick", 0.5F);
    now.startTimer();
    timer.startTimer();
    fxTimer::alarm(notANumber);
    EXPECT_EQ("now ", log());
    EXPECT_EQ(ActiveList({{&timer, 0.5F}}), activeList());
}

TEST_F(fxTimerAlarm, endlessIntervalsLetTheOthersTick) {
    ScriptedTimer first("first", infinity), second("second", infinity), timer("tick", 0.5F, true);
    for (fxTimer* t : {&first, &second, &timer})
        t->startTimer();
    EXPECT_EQ(ActiveList({{&timer, 0.5F}, {&first, infinity}, {&second, 0}}), activeList());
    for (int i = 0; i < 3; ++i) {
        fxTimer::alarm(0.5F);
        EXPECT_EQ("tick ", log());
        EXPECT_EQ(ActiveList({{&timer, 0.5F}, {&first, infinity}, {&second, 0}}), activeList());
    }
    first.stopTimer();
    EXPECT_EQ(ActiveList({{&timer, 0.5F}, {&second, infinity}}), activeList());
    fxTimer::alarm(infinity);
    EXPECT_EQ("tick second ", log());
    EXPECT_EQ(ActiveList({{&timer, 0.5F}}), activeList());
    timer.stopTimer();
}

// It is charged as any other new delta is, so nothing is left for the others;
// no delta is lost in that, and a timer that is started anew comes before it.
TEST_F(fxTimerAlarm, deliberateTimerThatStartsItselfForeverMakesTheNextOneWaitForever) {
    ScriptedTimer timer("tick", 0.5F), other("other", 1.0F), last("last", 2.0F);
    timer.onTick = [&] {
        timer.setInterval(infinity);
        timer.startTimer();
    };
    for (fxTimer* t : {&timer, &other, &last})
        t->startTimer();
    fxTimer::alarm(0.75F);
    EXPECT_EQ("tick ", log());
    EXPECT_EQ(ActiveList({{&other, infinity}, {&last, 1.0F}, {&timer, infinity}}), activeList());
    for (fxTimer* t : {&other, &last})
        t->startTimer();
    EXPECT_EQ(ActiveList({{&other, 1.0F}, {&last, 1.0F}, {&timer, infinity}}), activeList());
    fxTimer::alarm(2.0F);
    EXPECT_EQ("other last ", log());
    EXPECT_EQ(ActiveList({{&timer, infinity}}), activeList());
    timer.stopTimer();
}
