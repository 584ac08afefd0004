// One pass of the dispatch loop, with select and the clock as each test wants
// them: the log tells the order of everything that is called.

#include <cerrno>
#include <cfloat>
#include <climits>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/loopFixture.h"

using namespace loopTest;

namespace {

using Descriptors = std::vector<int>;

const float infinity = std::numeric_limits<float>::infinity();

class fxExecPoll : public PassTest {};

}  // namespace

// Step 1 and 2: the state, and a pass without handlers.

TEST_F(fxExecPoll, deliberatePassWithoutHandlersOnlyDistributes) {
    watch();
    ScriptedTimer timer("timer", 0.5F);
    timer.startTimer();
    Receiver receiver("received");
    Sender sender(receiver);
    sender.send();
    fake.now = 1000;
    exec.poll(1000.0F);
    EXPECT_EQ("received ", log());
    EXPECT_TRUE(fake.selects.empty());
    EXPECT_EQ(0u, fake.timesCalls);
    EXPECT_TRUE(timer.isActive());
    EXPECT_EQ(0.5F, deltaOf(timer));
}

TEST_F(fxExecPoll, passAfterTheLastHandlerWentOnlyDistributes) {
    watch();
    ScriptedHandler& h = registered(3, "r");
    pass(timedOut());
    EXPECT_EQ("pre select post ", log());
    exec.removeSelectHandler(&h);
    exec.poll(1.0F);
    EXPECT_EQ("", log());
    EXPECT_EQ(1u, fake.selects.size());
}

TEST_F(fxExecPoll, handlerWithoutInterestMakesAFullPass) {
    watch();
    registered(3, "");
    pass(timedOut());
    EXPECT_EQ("pre select post ", log());
    EXPECT_EQ(4, lastSelect().nfds);
}

TEST_F(fxExecPoll, callsComeInTheOrderOfTheSteps) {
    watch();
    registered(3, "rwx").onRead = [] { note("reading"); };
    ScriptedTimer timer("tick", 0.25F);
    Receiver receiver("received");
    timer.connect("tick", &receiver, "in");
    timer.startTimer();
    pass(after(25, ready({3}, {3}, {3})));
    EXPECT_EQ(
        "pre times select times tick read3 reading write3 exception3 post "
        "received ",
        log());
}

TEST_F(fxExecPoll, stateIsRebuiltBeforeThePreSelectFunctions) {
    watch();
    registered(3, "r");
    ScriptedHandler late(8, "w");
    before = [&] { exec.addSelectHandler(&late); };
    pass(ready({3}, {8}));
    EXPECT_EQ(4, lastSelect().nfds);
    EXPECT_FALSE(lastSelect().write.given);
    EXPECT_EQ("pre select read3 post ", log());

    before = nullptr;
    pass(ready({3}, {8}));
    EXPECT_EQ(9, lastSelect().nfds);
    EXPECT_EQ(Descriptors({8}), lastSelect().write.descriptors);
    EXPECT_EQ("pre select read3 write8 post ", log());
    exec.removeSelectHandler(&late);
}

TEST_F(fxExecPoll, handlerRemovedByAPreSelectFunctionIsWaitedForButNotCalled) {
    watch();
    ScriptedHandler& h = registered(3, "r");
    registered(5, "r");
    before = [&] { exec.removeSelectHandler(&h); };
    pass(ready({3, 5}));
    EXPECT_EQ(Descriptors({3, 5}), lastSelect().read.descriptors);
    EXPECT_EQ("pre select read5 post ", log());
    pass(ready({5}));
    EXPECT_EQ(Descriptors({5}), lastSelect().read.descriptors);
    log();
}

TEST_F(fxExecPoll, stateThatAPreSelectFunctionRebuildsIsWaitedFor) {
    watch();
    registered(3, "r");
    ScriptedHandler late(8, "w");
    before = [&] {
        exec.addSelectHandler(&late);
        exec.updateSelectState();
    };
    pass(ready({}, {8}));
    EXPECT_EQ(9, lastSelect().nfds);
    EXPECT_EQ(Descriptors({8}), lastSelect().write.descriptors);
    EXPECT_EQ("pre select write8 post ", log());
    exec.removeSelectHandler(&late);
}

// Step 3 and 10: the functions.

TEST_F(fxExecPoll, functionsAddedWhileTheyAreCalledWait) {
    watch();
    registered(3, "r");
    before = [&] { exec.addPreSelectFunc(pre); };
    behind = [&] { exec.addPostSelectFunc(post); };
    pass(timedOut());
    EXPECT_EQ("pre select post ", log());
    before = behind = nullptr;
    pass(timedOut());
    EXPECT_EQ("pre pre select post post ", log());
}

TEST_F(fxExecPoll, functionAddedBeforeTheWaitIsCalledBehindIt) {
    registered(3, "r");
    exec.addPreSelectFunc(pre);
    before = [&] { exec.addPostSelectFunc(post); };
    pass(timedOut());
    EXPECT_EQ("pre select post ", log());
}

TEST_F(fxExecPoll, timerThatAPreSelectFunctionStartsCounts) {
    watch();
    registered(3, "r");
    ScriptedTimer timer("tick", 0.25F);
    before = [&] { timer.startTimer(); };
    pass(timedOut());
    EXPECT_EQ("pre times select tick post ", log());
    EXPECT_EQ(250000, lastSelect().microseconds);
}

TEST_F(fxExecPoll, eventThatAPreSelectFunctionPostsCounts) {
    watch();
    registered(3, "r");
    Receiver receiver("received");
    Sender sender(receiver);
    before = [&] { sender.send(); };
    pass(timedOut(), 20.0F);
    EXPECT_EQ(0, lastSelect().seconds);
    EXPECT_EQ(0, lastSelect().microseconds);
    EXPECT_EQ("pre select post received ", log());
}

// Step 5: the time-out.

TEST_F(fxExecPoll, timeoutIsGivenInWholeSecondsAndTruncatedMicroseconds) {
    registered(3, "r");
    const struct {
        float timeout;
        long seconds, microseconds;
    } cases[] = {
        {0.0F, 0, 0},
        {0.5F, 0, 500000},
        {0.1F, 0, 100000},
        {0.7F, 0, 699999},
        {1.0F, 1, 0},
        {1.1F, 1, 100000},
        {2.7F, 2, 700000},
        {3.25F, 3, 250000},
        {1000.0F, 1000, 0},
        {1000.5F, 1000, 500000},
        // 2 to the power -20 is 0.95 microseconds, to -19 1.9.
        {0x1p-20F, 0, 0},
        {0x1p-19F, 0, 1},
        {0.999999940F, 0, 999999},        // the float below 1
        {16777216.0F, 16777216, 0},       // floats have no fraction from here on
        {2147483520.0F, 2147483520L, 0},  // the float below 2 to the power 31
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.timeout);
        exec.poll(c.timeout);
        ASSERT_TRUE(lastSelect().hasTimeout);
        EXPECT_EQ(c.seconds, lastSelect().seconds);
        EXPECT_EQ(c.microseconds, lastSelect().microseconds);
    }
    log();
}

TEST_F(fxExecPoll, negativeTimeoutAndNoNumberDoNotWait) {
    registered(3, "r");
    for (const float timeout :
         {-1.0F, -0.5F, -2.25F, -1e10F, -FLT_MAX, -infinity, -0.0F, std::nanf("")}) {
        SCOPED_TRACE(timeout);
        exec.poll(timeout);
        ASSERT_TRUE(lastSelect().hasTimeout);
        EXPECT_EQ(0, lastSelect().seconds);
        EXPECT_EQ(0, lastSelect().microseconds);
    }
    log();
}

TEST_F(fxExecPoll, timeoutTooLongForTheSystemIsTheLongest) {
    registered(3, "r");
    for (const float timeout : {0x1p31F, 1e10F, FLT_MAX, infinity}) {
        SCOPED_TRACE(timeout);
        exec.poll(timeout);
        ASSERT_TRUE(lastSelect().hasTimeout);
        EXPECT_EQ(2147483520L, lastSelect().seconds);
        EXPECT_EQ(0, lastSelect().microseconds);
    }
    log();
}

TEST_F(fxExecPoll, queuedEventsForbidWaiting) {
    registered(3, "r");
    Receiver receiver("received");
    Sender sender(receiver);
    sender.send();
    pass(timedOut(), 1000.0F);
    ASSERT_TRUE(lastSelect().hasTimeout);
    EXPECT_EQ(0, lastSelect().seconds);
    EXPECT_EQ(0, lastSelect().microseconds);
    EXPECT_EQ("select received ", log());
    pass(timedOut(), 1000.0F);
    EXPECT_EQ(1000, lastSelect().seconds);
    EXPECT_EQ("select ", log());
}

TEST_F(fxExecPoll, queuedEventsLeaveTimersToTheClock) {
    registered(3, "r");
    Receiver receiver("received");
    Sender sender(receiver);
    ScriptedTimer timer("tick", 0.5F);
    timer.startTimer();
    sender.send();
    pass(timedOut());
    EXPECT_EQ("times select times received ", log());
    EXPECT_EQ(0.5F, deltaOf(timer));
    sender.send();
    pass(timedOut(25));
    EXPECT_EQ("times select times received ", log());
    EXPECT_EQ(0.25F, deltaOf(timer));
    sender.send();
    pass(timedOut(25));
    EXPECT_EQ("times select times tick received ", log());
}

TEST_F(fxExecPoll, timeoutIsCutToTheFirstTimer) {
    registered(3, "r");
    const struct {
        float interval, timeout;
        long seconds, microseconds;
        bool ticks;  // although the clock stands still
    } cases[] = {
        {0.5F, 1000.0F, 0, 500000, true}, {0.7F, 1.0F, 0, 699999, true},
        {2.75F, 3.0F, 2, 750000, true},   {0.0F, 1000.0F, 0, 0, true},
        {0.5F, 0.5F, 0, 500000, false},   {0.5F, 0.25F, 0, 250000, false},
        {0.5F, 0.0F, 0, 0, false},        {0.25F, 0.250000030F, 0, 250000, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.interval << " of " << c.timeout);
        ScriptedTimer timer("tick", c.interval);
        timer.startTimer();
        pass(timedOut(), c.timeout);
        EXPECT_EQ(c.seconds, lastSelect().seconds);
        EXPECT_EQ(c.microseconds, lastSelect().microseconds);
        EXPECT_EQ(c.ticks ? "times select tick " : "times select times ", log());
        if (!c.ticks) {
            EXPECT_EQ(c.interval, deltaOf(timer));
        }
    }
}

TEST_F(fxExecPoll, notATimeoutIsNotCutToTheFirstTimer) {
    registered(3, "r");
    ScriptedTimer timer("tick", 0.5F);
    timer.startTimer();
    pass(timedOut(), std::nanf(""));
    EXPECT_EQ(0, lastSelect().seconds);
    EXPECT_EQ(0, lastSelect().microseconds);
    EXPECT_EQ("times select times ", log());
}

TEST_F(fxExecPoll, onlyTheFirstTimerCutsTheTimeout) {
    registered(3, "r");
    ScriptedTimer late("late", 3.0F), early("early", 2.0F);
    late.startTimer();
    early.startTimer();
    pass(timedOut());
    EXPECT_EQ(2, lastSelect().seconds);
    EXPECT_EQ("times select early ", log());
    pass(timedOut());
    EXPECT_EQ(1, lastSelect().seconds);
    EXPECT_EQ("times select late ", log());
}

// Step 6 and 7: the sets.

TEST_F(fxExecPoll, selectGetsTheSetsThatSomebodyWants) {
    const struct {
        const char* at3;
        const char* at60;
        Descriptors read, write, exception;
    } cases[] = {
        {"r", "r", {3, 60}, {}, {}}, {"w", "w", {}, {3, 60}, {}},
        {"x", "", {}, {}, {3}},      {"r", "w", {3}, {60}, {}},
        {"w", "x", {}, {3}, {60}},   {"rwx", "rwx", {3, 60}, {3, 60}, {3, 60}},
        {"", "", {}, {}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.at3) + "," + c.at60);
        ScriptedHandler h3(3, c.at3), h60(60, c.at60);
        exec.addSelectHandler(&h3);
        exec.addSelectHandler(&h60);
        exec.poll(0);
        EXPECT_EQ(61, lastSelect().nfds);
        EXPECT_EQ(!c.read.empty(), lastSelect().read.given);
        EXPECT_EQ(!c.write.empty(), lastSelect().write.given);
        EXPECT_EQ(!c.exception.empty(), lastSelect().exception.given);
        EXPECT_EQ(c.read, lastSelect().read.descriptors);
        EXPECT_EQ(c.write, lastSelect().write.descriptors);
        EXPECT_EQ(c.exception, lastSelect().exception.descriptors);
    }
    log();
}

TEST_F(fxExecPoll, selectGetsCopiesOfTheSets) {
    registered(3, "rwx");
    registered(7, "rwx");
    pass(ready({7}, {}, {3}));
    const fd_set read = exec.getReadSet(), write = exec.getWriteSet(),
                 exception = exec.getExceptionSet();
    for (const fd_set* set : {&read, &write, &exception}) {
        EXPECT_TRUE(FD_ISSET(3, set));
        EXPECT_TRUE(FD_ISSET(7, set));
    }
    EXPECT_NE(lastSelect().read.address, lastSelect().write.address);
    pass(timedOut());
    EXPECT_EQ(Descriptors({3, 7}), lastSelect().read.descriptors);
    EXPECT_EQ(Descriptors({3, 7}), lastSelect().write.descriptors);
    EXPECT_EQ(Descriptors({3, 7}), lastSelect().exception.descriptors);
    log();
}

// Step 9: handlers.

TEST_F(fxExecPoll, handlersAreCalledByDescriptorThenReadWriteException) {
    for (const int d : {60, 0, 7, 99, 6})
        registered(d, "rwx");
    pass(ready({99, 0, 7}, {60, 6, 7}, {99, 7, 0}));
    EXPECT_EQ(
        "select read0 exception0 write6 read7 write7 exception7 write60 read99 "
        "exception99 ",
        log());
}

TEST_F(fxExecPoll, handlersAreCalledForTheConditionsReturned) {
    registered(3, "rwx");
    const struct {
        SelectAnswer answer;
        const char* expected;
    } cases[] = {
        {ready({3}), "select read3 "},
        {ready({}, {3}), "select write3 "},
        {ready({}, {}, {3}), "select exception3 "},
        {ready({3}, {}, {3}), "select read3 exception3 "},
        {ready({4}), "select "},
        {timedOut(), "select "},
    };
    for (const auto& c : cases) {
        pass(c.answer);
        EXPECT_EQ(c.expected, log());
    }
}

TEST_F(fxExecPoll, setsAreNotLookedAtUnlessSomethingIsReady) {
    registered(3, "rwx");
    for (const int result : {0, -1}) {
        SCOPED_TRACE(result);
        SelectAnswer answer = ready({3}, {3}, {3});
        answer.result = result;  // a failing select leaves what it was given
        pass(answer);
        EXPECT_EQ("select ", log());
    }
}

TEST_F(fxExecPoll, bitsBelowTheLowestDescriptorAndWithoutHandlerCallNobody) {
    registered(5, "r");
    registered(9, "r");
    pass(ready({0, 4, 5, 6, 8, 9, 10, 99}));
    EXPECT_EQ("select read5 read9 ", log());
}

TEST_F(fxExecPoll, handlerRemovedByAnEarlierOneIsNotCalled) {
    ScriptedHandler& early = registered(3, "r");
    ScriptedHandler& late = registered(9, "rwx");
    early.onRead = [&] { exec.removeSelectHandler(&late); };
    pass(ready({3, 9}, {9}, {9}));
    EXPECT_EQ("select read3 ", log());
}

TEST_F(fxExecPoll, handlerThatRemovesItselfIsCalledForTheConditionsOfItsStep) {
    ScriptedHandler& h = registered(3, "rwx");
    h.onRead = [&] { exec.removeSelectHandler(&h); };
    pass(ready({3}, {3}, {3}));
    EXPECT_EQ("select read3 write3 exception3 ", log());
    registered(4, "r");
    pass(ready({3}, {3}, {3}));
    EXPECT_EQ("select ", log());
}

TEST_F(fxExecPoll, handlerThatIsReplacedIsCalledForTheConditionsOfItsStep) {
    ScriptedHandler& h = registered(3, "rwx");
    ScriptedHandler other(3, "rwx");
    other.name = "other";
    h.onRead = [&] { exec.addSelectHandler(&other); };
    pass(ready({3}, {3}, {3}));
    EXPECT_EQ("select read3 write3 exception3 ", log());
    pass(ready({3}, {3}, {3}));
    EXPECT_EQ("select readother writeother exceptionother ", log());
    exec.removeSelectHandler(&other);
}

TEST_F(fxExecPoll, handlerPutInPlaceOfALaterOneIsCalledInItsPlace) {
    ScriptedHandler& h = registered(3, "r");
    registered(9, "r");
    ScriptedHandler other(9, "");
    other.name = "other";
    h.onRead = [&] { exec.addSelectHandler(&other); };
    pass(ready({3, 9}));
    EXPECT_EQ("select read3 readother ", log());
    exec.removeSelectHandler(&other);
}

TEST_F(fxExecPoll, rangeOfDescriptorsIsReadAgainOnEachStep) {
    ScriptedHandler& h = registered(3, "r");
    ScriptedHandler late(9, "r");
    ScriptedHandler next(4, "r");
    h.onRead = [&] {
        exec.addSelectHandler(&next);
        exec.addSelectHandler(&late);
    };
    pass(ready({3, 4, 9}));
    EXPECT_EQ(4, lastSelect().nfds);
    EXPECT_EQ("select read3 ", log());
    exec.removeSelectHandler(&next);

    exec.removeSelectHandler(&late);
    h.onRead = [&] {
        exec.addSelectHandler(&late);
        exec.updateSelectState();
    };
    pass(ready({3, 9}));
    EXPECT_EQ(4, lastSelect().nfds);
    EXPECT_EQ("select read3 read9 ", log());

    h.onRead = [&] {
        exec.removeSelectHandler(&late);
        exec.updateSelectState();
        exec.addSelectHandler(&late);
    };
    pass(ready({3, 9}));
    EXPECT_EQ(10, lastSelect().nfds);
    EXPECT_EQ("select read3 ", log());
    exec.removeSelectHandler(&late);
}

TEST_F(fxExecPoll, conditionThatNobodyWantsAnyMoreIsNotServed) {
    ScriptedHandler& h = registered(3, "w");
    ScriptedHandler& late = registered(9, "r");
    h.onWrite = [&] {
        exec.removeSelectHandler(&late);
        late.setInterest(0, 1, 0);
        exec.addSelectHandler(&late);
        exec.updateSelectState();
    };
    pass(ready({9}, {3}));
    EXPECT_EQ("select write3 ", log());
}

TEST_F(fxExecPoll, conditionFirstWantedInThisPassIsNotReadyYet) {
    ScriptedHandler& h = registered(3, "r");
    registered(5, "r");
    h.onRead = [&] {
        exec.addSelectHandler(&h);
        h.setInterest(1, 1, 1);
        exec.updateSelectState();
    };
    pass(ready({3, 5}));
    EXPECT_FALSE(lastSelect().write.given);
    EXPECT_EQ("select read3 read5 ", log());
    pass(timedOut());
    EXPECT_EQ(Descriptors({3}), lastSelect().write.descriptors);
    log();
}

// Step 11: events.

TEST_F(fxExecPoll, everythingPostedInAPassIsDeliveredAtItsEnd) {
    watch();
    Receiver fromHandler("handler"), fromTimer("timer"), fromFunction("function");
    Sender handlerSender(fromHandler), functionSender(fromFunction);
    ScriptedTimer timer("tick", 0.25F);
    timer.connect("tick", &fromTimer, "in");
    timer.startTimer();
    registered(3, "r").onRead = [&] { handlerSender.send(); };
    behind = [&] { functionSender.send(); };
    pass(after(25, ready({3})));
    EXPECT_EQ("pre times select times tick read3 post timer handler function ", log());
}

TEST_F(fxExecPoll, eventPostedByAReceiverWaitsForTheNextPass) {
    registered(3, "r");
    Receiver second("second");
    Sender toSecond(second);
    Receiver first("first", [&] { toSecond.send(); });
    Sender toFirst(first);
    toFirst.send();
    pass(timedOut());
    EXPECT_EQ("select first ", log());
    pass(timedOut());
    EXPECT_EQ(0, lastSelect().seconds);
    EXPECT_EQ("select second ", log());
}

TEST_F(fxExecPoll, passDistributesWithoutAnyTimersOrFunctions) {
    registered(3, "r");
    Receiver receiver("received");
    Sender sender(receiver);
    sender.send();
    sender.send();
    exec.poll(0);
    EXPECT_EQ("select received received ", log());
}
