#include "kelvofxds/objects/fxTimer.h"

#include <cstddef>
#include <memory>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/values/fxProperty.h"
#include "tests/support/loopFixture.h"
#include "tests/support/vtable.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

struct fxTimerLayout {
    static_assert(sizeof(fxObj) == 12, "the table, the count and the properties");
    static_assert(offsetof(fxTimer, interval) == 12, "behind the base");
    static_assert(offsetof(fxTimer, delta) == 16, "after interval");
    static_assert(offsetof(fxTimer, active) == 20, "after delta");
    static_assert(offsetof(fxTimer, repeat) == 21, "after active");
    static_assert(offsetof(fxTimer, tickOut) == 24, "after repeat and what fills its word");
    static_assert(offsetof(fxTimer, next) == 28, "after tickOut");
    static_assert(sizeof(fxTimer) == 32, "next is the last");
    static_assert(std::is_same<decltype(fxTimer::interval), float>::value, "seconds");
    static_assert(std::is_same<decltype(fxTimer::delta), float>::value, "seconds");

    static float delta(const fxTimer& timer) { return timer.delta; }
    static unsigned int active(const fxTimer& timer) { return timer.active; }
    static unsigned int repeat(const fxTimer& timer) { return timer.repeat; }
    static const fxOutputChannel* tickOut(const fxTimer& timer) { return timer.tickOut; }
    static const fxTimer* next(const fxTimer& timer) { return timer.next; }
};

#pragma GCC diagnostic pop

static_assert(std::is_base_of<fxObj, fxTimer>::value, "timers have outputs");
static_assert(!std::is_copy_constructible<fxTimer>::value &&
                  !std::is_copy_assignable<fxTimer>::value,
              "a timer has a place in a list");
static_assert(std::is_same<decltype(fxTimer::activeTimers), fxTimer*>::value, "one list");

namespace loopTest {

float deltaOf(const fxTimer& timer) { return fxTimerLayout::delta(timer); }
const fxTimer* successorOf(const fxTimer& timer) { return fxTimerLayout::next(timer); }

}  // namespace loopTest

using namespace loopTest;

namespace {

// A position in the order of starting, and a delta.
struct Entry {
    unsigned int timer;
    float delta;
};

class fxTimerTest : public LoopTest {
protected:
    // Timers with these intervals, started in this order.
    void start(const std::vector<float>& intervals) {
        timers.clear();
        for (const float interval : intervals) {
            timers.push_back(std::make_unique<ScriptedTimer>("", interval));
            timers.back()->startTimer();
        }
    }

    void expectList(const std::vector<Entry>& expected) const {
        std::vector<ActiveTimer> list;
        for (const Entry& entry : expected)
            list.emplace_back(timers[entry.timer].get(), entry.delta);
        EXPECT_EQ(list, activeList());
    }

    void TearDown() override {
        timers.clear();
        LoopTest::TearDown();
    }

    std::vector<std::unique_ptr<ScriptedTimer>> timers;
};

}  // namespace

TEST_F(fxTimerTest, tickIsTheFirstVirtualOperationAfterThoseOfTheBase) {
    EXPECT_EQ(9u, vtableWord(&fxTimer::subClassMustDefine));
    EXPECT_EQ(10u, vtableWord(&fxTimer::tick));
}

TEST_F(fxTimerTest, newTimerIsInactiveWithIntervalZero) {
    for (const bool repeat : {false, true}) {
        fxTimer timer(repeat);
        EXPECT_EQ(0.0F, timer.getInterval());
        EXPECT_EQ(0u, fxTimerLayout::active(timer));
        EXPECT_FALSE(timer.isActive());
        EXPECT_EQ(repeat, fxTimerLayout::repeat(timer));
        EXPECT_EQ(nullptr, successorOf(timer));
        EXPECT_EQ(0, timer.count);
    }
    EXPECT_EQ(nullptr, fxTimer::activeTimers);
}

TEST_F(fxTimerTest, newTimerHasAnOutputWithoutValueCalledTick) {
    fxTimer timer(0);
    ASSERT_NE(nullptr, fxTimerLayout::tickOut(timer));
    EXPECT_EQ(fxDT_void, fxTimerLayout::tickOut(timer)->getType());
    Receiver receiver("received");
    timer.connect("tick", &receiver, "in");
    timer.tick();
    fx_theEventHandler->distributeEvents();
    EXPECT_EQ("received ", log());
}

// The output.

TEST_F(fxTimerTest, tickSendsAQueuedMessage) {
    fxTimer timer(0);
    Receiver earlier("earlier"), receiver("received");
    Sender sender(earlier);
    timer.connect("tick", &receiver, "in");
    sender.send();
    timer.tick();
    timer.tick();
    EXPECT_EQ("", log());
    EXPECT_EQ(3u, fx_theEventHandler->numberOfEvents());
    fx_theEventHandler->distributeEvents();
    EXPECT_EQ("earlier received received ", log());
}

TEST_F(fxTimerTest, tickWithoutConnectionQueuesNothing) {
    fxTimer timer(0);
    timer.tick();
    EXPECT_EQ(0u, fx_theEventHandler->numberOfEvents());
}

TEST_F(fxTimerTest, tickOfAPlainTimerIsDeliveredAtTheEndOfThePass) {
    registered(3, "r");
    fxTimer timer(0);
    Receiver receiver("received", [&] { EXPECT_FALSE(timer.isActive()); });
    timer.connect("tick", &receiver, "in");
    timer.setInterval(0.5F);
    timer.startTimer();
    exec.addPostSelectFunc([] { note("post"); });
    pass(timedOut());
    EXPECT_EQ("post received ", log());
}

// The output may go, or another one may take its place.

namespace {

void removeTick(fxTimer& timer) { timer.removeOutput("tick"); }
void replaceTick(fxTimer& timer) { timer.addOutput("tick", fxDT_void); }
void replaceTickByAnInt(fxTimer& timer) { timer.addOutput("tick", fxDT_int); }
void removeOutputs(fxTimer& timer) { timer.removeProperty("outputs"); }
void removeAll(fxTimer& timer) { timer.removeAllProperties(); }
void removeAllAndMakeAnother(fxTimer& timer) {
    timer.removeAllProperties();
    timer.addOutput("other", fxDT_void);
}
void setOutputsAnew(fxTimer& timer) {
    timer.setProperty(new fxProperty(fxProperty::findTag("outputs"), static_cast<fxObj*>(nullptr)));
}

// Each way, and whether a "tick" without value is there afterwards.
const struct {
    void (*change)(fxTimer&);
    bool isThere;
} changes[] = {{removeTick, false},    {replaceTick, true}, {replaceTickByAnInt, false},
               {removeOutputs, false}, {removeAll, false},  {removeAllAndMakeAnother, false},
               {setOutputsAnew, false}};

}  // namespace

TEST_F(fxTimerTest, sendsOnItsPresentOutputOrOnNone) {
    for (const auto& c : changes) {
        SCOPED_TRACE(testing::Message() << "row " << &c - changes);
        fxTimer timer(0);
        Receiver before("before"), behind("behind");
        timer.connect("tick", &before, "in");
        timer.startTimer();
        c.change(timer);
        timer.connect("tick", &behind, "in");
        fxTimer::alarm(0);
        fx_theEventHandler->distributeEvents();
        EXPECT_EQ(c.isThere ? "behind " : "", log());
        timer.tick();
        fx_theEventHandler->distributeEvents();
        EXPECT_EQ(c.isThere ? "behind " : "", log());
        EXPECT_EQ(c.isThere, fxTimerLayout::tickOut(timer) != nullptr);

        // It may come back.
        timer.removeAllProperties();
        timer.addOutput("tick", fxDT_void);
        timer.connect("tick", &behind, "in");
        timer.tick();
        fx_theEventHandler->distributeEvents();
        EXPECT_EQ("behind ", log());
    }
}

namespace {

// Counts the look-ups in it.
class CountingDict : public fxVoidPtrDict {
public:
    unsigned int hashKey(const void* key) const override {
        ++lookUps;
        return fxVoidPtrDict::hashKey(key);
    }

    mutable int lookUps = 0;
};

}  // namespace

TEST_F(fxTimerTest, looksItsOutputUpOnlyAfterItsOwnHasGone) {
    auto* outputs = new CountingDict;
    outputs->findCreate("tick") = new fxOutputChannel(fxDT_void);
    fxTimer timer(0);
    timer.setProperty(new fxProperty(fxProperty::findTag("outputs"), outputs, dt_output_dict));
    timer.tick();
    {
        fxObj other, removed;
        other.addOutput("tick", fxDT_void);
        removed.addOutput("tick", fxDT_void);
        removed.removeOutput("tick");
        const fxTimer another(0);
    }
    outputs->lookUps = 0;
    timer.tick();
    EXPECT_EQ(0, outputs->lookUps);
    EXPECT_EQ(*outputs->find("tick"), fxTimerLayout::tickOut(timer));
}

TEST_F(fxTimerTest, ofManyTimersThoseWhoseOutputGoesForgetIt) {
    Receiver receiver("received");
    std::vector<std::unique_ptr<fxTimer>> many;
    for (int i = 0; i < 300; ++i) {
        many.push_back(std::make_unique<fxTimer>(0));
        many.back()->connect("tick", &receiver, "in");
    }
    for (int i = 0; i < 300; i += 2)
        many[i % 4 == 0 ? i : 300 - i]->removeOutput("tick");
    for (int i = 0; i < 300; i += 3)
        many[i].reset();
    for (int i = 0; i < 300; ++i) {
        if (many[i]) {
            SCOPED_TRACE(i);
            const bool sends = fxTimerLayout::tickOut(*many[i]) != nullptr;
            many[i]->tick();
            fx_theEventHandler->distributeEvents();
            EXPECT_EQ(sends ? "received " : "", log());
            EXPECT_EQ(i % 2 == 1, sends);
        }
    }
}

// A property may belong to several objects.
TEST_F(fxTimerTest, timersThatShareTheirOutputForgetItTogether) {
    fxTimer a(0), b(0);
    Receiver receiver("received");
    b.setProperty(a.findProperty("outputs"));
    a.connect("tick", &receiver, "in");
    a.tick();
    b.tick();
    fx_theEventHandler->distributeEvents();
    EXPECT_EQ("received received ", log());
    b.removeOutput("tick");
    a.tick();
    b.tick();
    fx_theEventHandler->distributeEvents();
    EXPECT_EQ("", log());
}

// The delta list.

TEST_F(fxTimerTest, startPutsATimerWhereItExpires) {
    const struct {
        std::vector<float> intervals;
        std::vector<Entry> expected;
    } cases[] = {
        {{0.5F}, {{0, 0.5F}}},
        {{0.5F, 0.25F}, {{1, 0.25F}, {0, 0.25F}}},
        {{0.25F, 0.5F, 1.0F}, {{0, 0.25F}, {1, 0.25F}, {2, 0.5F}}},
        {{1.0F, 0.5F, 0.25F}, {{2, 0.25F}, {1, 0.25F}, {0, 0.5F}}},
        {{1.0F, 0.25F, 0.75F, 0.5F}, {{1, 0.25F}, {3, 0.25F}, {2, 0.25F}, {0, 0.25F}}},
        // Equal expiry goes behind.
        {{0.5F, 0.5F}, {{0, 0.5F}, {1, 0}}},
        {{0.5F, 0.5F, 0.5F}, {{0, 0.5F}, {1, 0}, {2, 0}}},
        {{0.5F, 0.75F, 0.5F}, {{0, 0.5F}, {2, 0}, {1, 0.25F}}},
        {{0.5F, 0}, {{1, 0}, {0, 0.5F}}},
        {{0, 0, 0.5F, 0}, {{0, 0}, {1, 0}, {3, 0}, {2, 0.5F}}},
        // A negative interval is not treated in any special way.
        {{0.5F, -0.25F}, {{1, -0.25F}, {0, 0.75F}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "row " << &c - cases);
        start(c.intervals);
        expectList(c.expected);
    }
}

// The unit below is 2 to the power -27, in which 0.1F is 13421773, 0.2F twice
// that, 0.3F 40265320 and 0.5F 67108864; floats from 2 to the power -3 on are
// multiples of 2 of it, from -2 on of 4, from -1 on of 8.
TEST_F(fxTimerTest, deltasAreRoundedToFloatOnEachStep) {
    const struct {
        std::vector<float> intervals;
        std::vector<Entry> expected;
    } cases[] = {
        // 0.5F - 0.1F = 53687091 -> 53687092; - 0.1F = 40265319 -> 40265320,
        // which is 0.3F; without the rounding a second 0.5F would be less.
        {{0.1F, 0.2F, 0.5F}, {{0, 0.1F}, {1, 0.1F}, {2, 0.3F}}},
        {{0.1F, 0.2F, 0.5F, 0.5F}, {{0, 0.1F}, {1, 0.1F}, {2, 0.3F}, {3, 0}}},
        // 0.3F - 0.1F = 26843547 -> 26843548, one more than 0.2F.
        {{0.1F, 0.3F}, {{0, 0.1F}, {1, 0x1.99999Cp-3F}}},
        // 1 - 0.1F = 120795955 -> 120795952.
        {{1.0F, 0.1F}, {{1, 0.1F}, {0, 0x1.CCCCCCp-1F}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "row " << &c - cases);
        start(c.intervals);
        expectList(c.expected);
    }
}

TEST_F(fxTimerTest, startedTimerIsActive) {
    ScriptedTimer timer("", 0.5F);
    timer.startTimer();
    EXPECT_EQ(1u, fxTimerLayout::active(timer));
    EXPECT_TRUE(timer.isActive());
    EXPECT_EQ(&timer, fxTimer::activeTimers);
    timer.stopTimer();
}

TEST_F(fxTimerTest, timerStartedInAnAlarmIsActiveAsAnyOther) {
    for (const float interval : {0.0F, 0.5F}) {
        SCOPED_TRACE(interval);
        ScriptedTimer timer("", 0.5F);
        timer.onTick = [&] {
            EXPECT_EQ(0u, fxTimerLayout::active(timer));
            timer.setInterval(interval);
            timer.startTimer();
            EXPECT_EQ(1u, fxTimerLayout::active(timer));
        };
        timer.startTimer();
        fxTimer::alarm(0.5F);
        EXPECT_EQ(1u, fxTimerLayout::active(timer));
        timer.stopTimer();
        EXPECT_EQ(0u, fxTimerLayout::active(timer));
    }
}

TEST_F(fxTimerTest, intervalAppliesFromTheNextStart) {
    start({0.5F});
    timers[0]->setInterval(2.0F);
    EXPECT_EQ(2.0F, timers[0]->getInterval());
    expectList({{0, 0.5F}});
    timers[0]->startTimer();
    expectList({{0, 2.0F}});
}

TEST_F(fxTimerTest, stopMovesTheDeltaToTheSuccessor) {
    const struct {
        unsigned int stopped;
        std::vector<Entry> expected;
    } cases[] = {
        {0, {{1, 0.5F}, {2, 0.5F}}},
        {1, {{0, 0.25F}, {2, 0.75F}}},
        {2, {{0, 0.25F}, {1, 0.25F}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.stopped);
        start({0.25F, 0.5F, 1.0F});
        fxTimer& timer = *timers[c.stopped];
        timer.stopTimer();
        expectList(c.expected);
        EXPECT_FALSE(timer.isActive());
        EXPECT_EQ(nullptr, successorOf(timer));
    }
}

TEST_F(fxTimerTest, stoppingTheOnlyTimerEmptiesTheList) {
    start({0.5F});
    timers[0]->stopTimer();
    EXPECT_EQ(nullptr, fxTimer::activeTimers);
}

TEST_F(fxTimerTest, stoppingAnInactiveTimerDoesNothing) {
    ScriptedTimer timer("", 0.5F);
    timer.stopTimer();
    start({0.25F, 0.5F});
    timer.stopTimer();
    expectList({{0, 0.25F}, {1, 0.25F}});
    timers[0]->stopTimer();
    timers[0]->stopTimer();
    expectList({{1, 0.5F}});
}

TEST_F(fxTimerTest, stopAndStartWaitAFullInterval) {
    start({0.5F, 1.0F});
    fxTimer::alarm(0.25F);
    expectList({{0, 0.25F}, {1, 0.5F}});
    timers[0]->stopTimer();
    expectList({{1, 0.75F}});
    timers[0]->startTimer();
    expectList({{0, 0.5F}, {1, 0.25F}});
}

TEST_F(fxTimerTest, restartOfAnActiveTimerWaitsAFullInterval) {
    start({0.5F, 1.0F});
    fxTimer::alarm(0.25F);
    timers[0]->startTimer();
    expectList({{0, 0.5F}, {1, 0.25F}});
    timers[1]->startTimer();
    expectList({{0, 0.5F}, {1, 0.5F}});
    timers[0]->setInterval(2.0F);
    timers[0]->startTimer();
    expectList({{1, 1.0F}, {0, 1.0F}});
}

TEST_F(fxTimerTest, restartGoesBehindThoseOfEqualExpiry) {
    start({0.5F, 0.5F, 0.5F});
    timers[0]->startTimer();
    expectList({{1, 0.5F}, {2, 0}, {0, 0}});
    timers[2]->startTimer();
    expectList({{1, 0.5F}, {0, 0}, {2, 0}});
}

TEST_F(fxTimerTest, timersOfEqualIntervalFireInTheOrderOfTheirStart) {
    ScriptedTimer a("A", 0.5F), b("B", 0.5F), c("C", 0.5F);
    for (fxTimer* timer : {&b, &c, &a})
        timer->startTimer();
    fxTimer::alarm(0.5F);
    EXPECT_EQ("B C A ", log());
}

// Destruction.

TEST_F(fxTimerTest, destructionTakesAnActiveTimerOut) {
    const struct {
        unsigned int deleted;
        std::vector<Entry> expected;
    } cases[] = {
        {0, {{1, 0.5F}, {2, 0.5F}}},
        {1, {{0, 0.25F}, {2, 0.75F}}},
        {2, {{0, 0.25F}, {1, 0.25F}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.deleted);
        start({0.25F, 0.5F, 1.0F});
        timers[c.deleted].reset();
        expectList(c.expected);
    }
}

TEST_F(fxTimerTest, destructionOfAnInactiveTimerLeavesTheListAlone) {
    start({0.25F, 0.5F});
    { ScriptedTimer timer("", 0.125F); }
    expectList({{0, 0.25F}, {1, 0.25F}});
}

TEST_F(fxTimerTest, destructionLeavesTheTickOnItsWay) {
    Receiver receiver("received");
    {
        fxTimer timer(0);
        timer.connect("tick", &receiver, "in");
        timer.startTimer();
        fxTimer::alarm(0);
    }
    fx_theEventHandler->distributeEvents();
    EXPECT_EQ("received ", log());
}
