// What handlers, ticks, receivers, functions and applications may do to the
// loop that is calling them. Run with the sanitizers, these tests also show
// that nothing is touched that was deleted.

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/loopFixture.h"

using namespace loopTest;

namespace {

using Descriptors = std::vector<int>;
using ActiveList = std::vector<ActiveTimer>;

class loopReentrancy : public PassTest {
protected:
    loopReentrancy() { fake.log = nullptr; }

    // A registered handler that the test deletes.
    std::unique_ptr<ScriptedHandler> ownHandler(int descriptor, const std::string& interest) {
        auto h = std::make_unique<ScriptedHandler>(descriptor, interest);
        exec.addSelectHandler(h.get());
        return h;
    }

    // An active timer that the test deletes.
    static std::unique_ptr<ScriptedTimer> ownTimer(const char* name, float seconds,
                                                   bool repeats = false) {
        auto timer = std::make_unique<ScriptedTimer>(name, seconds, repeats);
        timer->startTimer();
        return timer;
    }
};

}  // namespace

// Handlers that delete handlers.

TEST_F(loopReentrancy, handlerMayDeleteItself) {
    for (const char* condition : {"r", "w", "x"}) {
        SCOPED_TRACE(condition);
        auto h = ownHandler(3, "rwx");
        ScriptedHandler& next = registered(4, "r");
        Action& action = *condition == 'r'   ? h->onRead
                         : *condition == 'w' ? h->onWrite
                                             : h->onException;
        action = [&] { h.reset(); };
        fake.closed.clear();
        pass(ready({3, 4}, {3}, {3}));
        EXPECT_EQ(*condition == 'r'   ? "read3 read4 "
                  : *condition == 'w' ? "read3 write3 read4 "
                                      : "read3 write3 exception3 read4 ",
                  log());
        EXPECT_EQ(Descriptors({3}), fake.closed);
        pass(ready({3, 4}));
        EXPECT_EQ("read4 ", log());
        exec.removeSelectHandler(&next);
    }
}

TEST_F(loopReentrancy, handlerMayRemoveAndDeleteItself) {
    auto h = ownHandler(3, "rwx");
    registered(4, "r");
    h->onRead = [&] {
        exec.removeSelectHandler(h.get());
        h.reset();
    };
    pass(ready({3, 4}, {3}, {3}));
    EXPECT_EQ("read3 read4 ", log());
    pass(ready({4}));
    EXPECT_EQ(Descriptors({4}), lastSelect().read.descriptors);
    EXPECT_EQ("read4 ", log());
}

// It is not in the table any more when it goes.
TEST_F(loopReentrancy, handlerThatRemovedItselfMayBeDeletedInItsStep) {
    for (const bool afterTheWrite : {false, true}) {
        SCOPED_TRACE(afterTheWrite);
        auto h = ownHandler(3, "rwx");
        ScriptedHandler successor(3, "rwx");
        successor.name = "successor";
        (afterTheWrite ? h->onRead : h->onWrite) = [&] { exec.removeSelectHandler(h.get()); };
        (afterTheWrite ? h->onWrite : h->onRead) = [&] {
            exec.addSelectHandler(&successor);
            h.reset();
        };
        pass(ready({3}, {3}, {3}));
        EXPECT_EQ(afterTheWrite ? "read3 write3 " : "read3 ", log());
        exec.removeSelectHandler(&successor);
    }
}

TEST_F(loopReentrancy, passWithinMayDeleteAHandlerThatRemovedItself) {
    auto h = ownHandler(3, "rw");
    registered(5, "r").onRead = [&] { h.reset(); };
    h->onRead = [&] {
        exec.removeSelectHandler(h.get());
        pass(ready({5}));
        note("back");
    };
    pass(ready({3}, {3}));
    EXPECT_EQ("read3 read5 back ", log());
}

TEST_F(loopReentrancy, handlerMayDeleteALaterOne) {
    auto late = ownHandler(9, "rwx");
    registered(3, "r").onRead = [&] { late.reset(); };
    pass(ready({3, 9}, {9}, {9}));
    EXPECT_EQ("read3 ", log());
}

TEST_F(loopReentrancy, handlerMayDeleteAnEarlierOne) {
    auto early = ownHandler(3, "rwx");
    registered(9, "rw").onRead = [&] { early.reset(); };
    pass(ready({3, 9}, {3, 9}));
    EXPECT_EQ("read3 write3 read9 write9 ", log());
    pass(ready({3, 9}));
    EXPECT_EQ("read9 ", log());
}

TEST_F(loopReentrancy, handlerMayReplaceALaterOneByANewOne) {
    auto late = ownHandler(9, "r");
    registered(3, "r").onRead = [&] {
        late.reset();
        late = ownHandler(9, "r");
        late->name = "new";
    };
    pass(ready({3, 9}));
    EXPECT_EQ("read3 readnew ", log());
}

TEST_F(loopReentrancy, handlerMayDeleteItselfForAnotherOfTheSameDescriptor) {
    auto h = ownHandler(3, "rw");
    ScriptedHandler successor(3, "rw");
    successor.name = "successor";
    h->onRead = [&] {
        h.reset();
        exec.addSelectHandler(&successor);
    };
    pass(ready({3}, {3}));
    EXPECT_EQ("read3 ", log());
    pass(ready({3}, {3}));
    EXPECT_EQ("readsuccessor writesuccessor ", log());
}

TEST_F(loopReentrancy, handlerMayDeleteAllOfThem) {
    std::vector<std::unique_ptr<ScriptedHandler>> all;
    for (const int d : {0, 3, 50, 99})
        all.push_back(ownHandler(d, "rwx"));
    all[1]->onWrite = [&] { all.clear(); };
    pass(ready({0, 3, 50, 99}, {0, 3, 50, 99}, {0, 3, 50, 99}));
    EXPECT_EQ("read0 write0 exception0 read3 write3 ", log());
    exec.updateSelectState();
    exec.poll(0);
    EXPECT_EQ(1u, fake.selects.size());
}

TEST_F(loopReentrancy, handlerMayHaveAPassWithin) {
    ScriptedHandler& h = registered(3, "rw");
    registered(5, "r");
    h.onRead = [&] {
        h.onRead = nullptr;
        pass(ready({3, 5}));
        note("back");
    };
    pass(ready({3, 5}, {3}));
    EXPECT_EQ("read3 read3 read5 back write3 read5 ", log());
}

TEST_F(loopReentrancy, passWithinMayDeleteTheHandlerThatMadeIt) {
    auto h = ownHandler(3, "rw");
    registered(5, "r").onRead = [&] { h.reset(); };
    h->onRead = [&] {
        pass(ready({5}));
        note("back");
    };
    pass(ready({3}, {3}));
    EXPECT_EQ("read3 read5 back ", log());
}

// Others that delete handlers.

TEST_F(loopReentrancy, preSelectFunctionMayDeleteAHandler) {
    watch();
    auto h = ownHandler(3, "r");
    registered(5, "r");
    before = [&] { h.reset(); };
    pass(ready({3, 5}));
    EXPECT_EQ("pre read5 post ", log());
}

TEST_F(loopReentrancy, preSelectFunctionMayDeleteTheOnlyHandler) {
    watch();
    auto h = ownHandler(3, "r");
    before = [&] { h.reset(); };
    pass(ready({3}));
    EXPECT_EQ(1u, fake.selects.size());
    EXPECT_EQ("pre post ", log());
}

TEST_F(loopReentrancy, tickMayDeleteAHandlerThatIsReady) {
    auto h = ownHandler(3, "r");
    registered(5, "r");
    auto timer = ownTimer("tick", 0.5F);
    timer->onTick = [&] { h.reset(); };
    pass(after(50, ready({3, 5})));
    EXPECT_EQ("tick read5 ", log());
}

TEST_F(loopReentrancy, handlerThatATickAddsIsWaitedForNextTime) {
    registered(3, "r");
    ScriptedHandler late(5, "r");
    auto timer = ownTimer("tick", 0.5F);
    timer->onTick = [&] { exec.addSelectHandler(&late); };
    pass(after(50, ready({3, 5})));
    EXPECT_EQ("tick read3 ", log());
    pass(ready({3, 5}));
    EXPECT_EQ("read3 read5 ", log());
}

TEST_F(loopReentrancy, receiverMayDeleteTheHandlerThatSent) {
    auto h = ownHandler(3, "r");
    Receiver receiver("received", [&] { h.reset(); });
    fxOutputChannel* out = h->addOutput("out", fxDT_void);
    h->connect("out", &receiver, "in");
    h->onRead = [&] {
        h->sendVoid(out, fxObj::fxSendQueued);
        h->sendVoid(out, fxObj::fxSendQueued);
    };
    pass(ready({3}));
    EXPECT_EQ("read3 received received ", log());
    EXPECT_EQ(nullptr, h.get());
}

TEST_F(loopReentrancy, receiverOfAnImmediateSendMayDeleteTheHandlerThatSends) {
    auto h = ownHandler(3, "rw");
    Receiver receiver("received", [&] { h.reset(); });
    fxOutputChannel* out = h->addOutput("out", fxDT_void);
    h->connect("out", &receiver, "in");
    h->onRead = [&] { h->sendVoid(out, fxObj::fxSendNow); };
    pass(ready({3}, {3}));
    EXPECT_EQ("read3 received ", log());
}

// Functions.

namespace {

fxExec* executive = nullptr;

void first() { note("first"); }
void last() { note("last"); }
void removesItself() {
    note("itself");
    executive->removePreSelectFunc(removesItself);
    executive->removePostSelectFunc(removesItself);
}
void removesLast() {
    note("remover");
    executive->removePreSelectFunc(last);
    executive->removePostSelectFunc(last);
}
void removesAll() {
    note("all");
    for (void (*function)() : {first, removesAll, last}) {
        executive->removePreSelectFunc(function);
        executive->removePostSelectFunc(function);
    }
}

}  // namespace

TEST_F(loopReentrancy, functionsMayRemoveFunctions) {
    const struct {
        std::vector<void (*)()> functions;
        const char* called;
        const char* calledNext;
    } cases[] = {
        // The one behind moves up and is left out once.
        {{removesItself}, "itself ", ""},
        {{removesItself, last}, "itself ", "last "},
        {{removesItself, first, last}, "itself last ", "first last "},
        {{first, removesItself, last}, "first itself ", "first last "},
        {{first, last, removesItself}, "first last itself ", "first last "},
        {{removesLast, last}, "remover ", "remover "},
        {{removesLast, first, last}, "remover first ", "remover first "},
        // The first entry goes, and those behind it move up.
        {{last, removesLast, first, last}, "last remover last ", "remover first "},
        {{first, removesAll, last}, "first all ", ""},
    };
    registered(3, "r");
    executive = &exec;
    for (const bool behindTheWait : {false, true}) {
        for (const auto& c : cases) {
            SCOPED_TRACE(testing::Message() << behindTheWait << ", row " << &c - cases);
            for (void (*function)() : c.functions) {
                if (behindTheWait)
                    exec.addPostSelectFunc(function);
                else
                    exec.addPreSelectFunc(function);
            }
            pass(timedOut());
            EXPECT_EQ(c.called, log());
            pass(timedOut());
            EXPECT_EQ(c.calledNext, log());
            for (void (*function)() : {first, last, last, removesItself, removesLast}) {
                exec.removePreSelectFunc(function);
                exec.removePostSelectFunc(function);
            }
        }
    }
}

TEST_F(loopReentrancy, functionMayAddMoreThanTheListHasRoomFor) {
    watch();
    registered(3, "r");
    before = [&] {
        for (int i = 0; i < 100; ++i)
            exec.addPreSelectFunc(first);
    };
    pass(timedOut());
    EXPECT_EQ("pre post ", log());
    before = nullptr;
    pass(timedOut());
    std::string expected = "pre ";
    for (int i = 0; i < 100; ++i)
        expected += "first ";
    EXPECT_EQ(expected + "post ", log());
}

TEST_F(loopReentrancy, functionMayHaveAPassWithin) {
    watch();
    registered(3, "r");
    before = [&] {
        before = nullptr;
        exec.poll(0);
        note("back");
    };
    fake.answers = {ready({3}), timedOut()};
    exec.poll(0);
    EXPECT_EQ("pre pre read3 post back post ", log());
}

// Timers.

TEST_F(loopReentrancy, tickMayDeleteItsTimer) {
    for (const bool repeats : {false, true}) {
        SCOPED_TRACE(repeats);
        auto timer = ownTimer("tick", 0.5F, repeats);
        auto due = ownTimer("due", 0.75F), later = ownTimer("later", 1.0F);
        timer->onTick = [&] { timer.reset(); };
        fxTimer::alarm(0.875F);
        EXPECT_EQ("tick due ", log());
        EXPECT_EQ(ActiveList({{later.get(), 0.125F}}), activeList());
    }
}

TEST_F(loopReentrancy, tickMayRestartAndDeleteItsTimer) {
    for (const bool repeats : {false, true}) {
        SCOPED_TRACE(repeats);
        auto timer = ownTimer("tick", 0.5F, repeats);
        auto later = ownTimer("later", 0.75F);
        timer->onTick = [&] {
            timer->startTimer();
            timer.reset();
        };
        fxTimer::alarm(0.625F);
        EXPECT_EQ("tick ", log());
        EXPECT_EQ(ActiveList({{later.get(), 0.125F}}), activeList());
    }
}

TEST_F(loopReentrancy, tickMayDeleteATimerThatIsDue) {
    auto timer = ownTimer("tick", 0.5F), due = ownTimer("due", 0.5F),
         later = ownTimer("later", 0.75F);
    timer->onTick = [&] { due.reset(); };
    fxTimer::alarm(0.625F);
    EXPECT_EQ("tick ", log());
    EXPECT_EQ(ActiveList({{later.get(), 0.125F}}), activeList());
}

TEST_F(loopReentrancy, tickMayDeleteRepeatingTimersThatFired) {
    for (const unsigned int deleted : {0U, 1U, 2U}) {
        SCOPED_TRACE(deleted);
        std::vector<std::unique_ptr<ScriptedTimer>> fired;
        for (const char* name : {"a", "b", "c"})
            fired.push_back(ownTimer(name, 0.25F, true));
        auto last = ownTimer("last", 0.5F);
        last->onTick = [&] { fired.erase(fired.begin() + static_cast<int>(deleted)); };
        fxTimer::alarm(0.5F);
        EXPECT_EQ("a b c last ", log());
        EXPECT_EQ(ActiveList({{fired[0].get(), 0.25F}, {fired[1].get(), 0}}), activeList());
    }
}

TEST_F(loopReentrancy, timersThatFireAfterADeletedOneStartAnewToo) {
    auto fired = ownTimer("fired", 0.25F, true), killer = ownTimer("killer", 0.25F, true),
         last = ownTimer("last", 0.25F, true);
    killer->onTick = [&] { fired.reset(); };
    fxTimer::alarm(0.25F);
    EXPECT_EQ("fired killer last ", log());
    EXPECT_EQ(ActiveList({{killer.get(), 0.25F}, {last.get(), 0}}), activeList());
}

TEST_F(loopReentrancy, tickMayDeleteEveryTimer) {
    std::vector<std::unique_ptr<ScriptedTimer>> all;
    for (const float seconds : {0.25F, 0.5F, 0.75F, 1.0F})
        all.push_back(ownTimer("t", seconds, true));
    all[1]->onTick = [&] { all.clear(); };
    fxTimer::alarm(0.75F);
    EXPECT_EQ("t t ", log());
    EXPECT_EQ(nullptr, fxTimer::activeTimers);
}

TEST_F(loopReentrancy, timerMadeInTheTickThatDeletesAnotherIsItsOwn) {
    std::unique_ptr<ScriptedTimer> fresh;
    auto timer = ownTimer("tick", 0.5F, true);
    timer->onTick = [&] {
        timer.reset();
        fresh = ownTimer("fresh", 0.25F);  // it may get the same address
    };
    fxTimer::alarm(0.625F);
    EXPECT_EQ("tick ", log());
    EXPECT_EQ(ActiveList({{fresh.get(), 0.125F}}), activeList());
}

TEST_F(loopReentrancy, passWithinATickMayDeleteTheTimer) {
    auto timer = ownTimer("tick", 0.5F, true), later = ownTimer("later", 0.75F);
    registered(3, "r").onRead = [&] { timer.reset(); };
    timer->onTick = [&] {
        pass(ready({3}), 0);
        note("back");
    };
    pass(timedOut());
    EXPECT_EQ("tick read3 back ", log());
    EXPECT_EQ(ActiveList({{later.get(), 0.25F}}), activeList());
}

TEST_F(loopReentrancy, alarmWithinATickMayDeleteTimersThatFiredOutside) {
    auto fired = ownTimer("fired", 0.25F, true), outer = ownTimer("outer", 0.5F, true),
         inner = ownTimer("inner", 0.5F, true);
    outer->onTick = [] { fxTimer::alarm(0); };
    inner->onTick = [&] {
        fired.reset();
        outer.reset();
    };
    fxTimer::alarm(0.5F);
    EXPECT_EQ("fired outer inner ", log());
    EXPECT_EQ(ActiveList({{inner.get(), 0.5F}}), activeList());
}

TEST_F(loopReentrancy, receiverMayDeleteTheTimerThatTicked) {
    registered(3, "r");
    for (const bool repeats : {false, true}) {
        SCOPED_TRACE(repeats);
        auto timer = ownTimer("tick", 0.5F, repeats);
        Receiver receiver("received", [&] { timer.reset(); });
        timer->connect("tick", &receiver, "in");
        pass(timedOut());
        EXPECT_EQ("tick received ", log());
        EXPECT_EQ(nullptr, fxTimer::activeTimers);
    }
}

TEST_F(loopReentrancy, receiverMayDeleteItself) {
    registered(3, "r");
    auto timer = ownTimer("tick", 0.5F, true);
    std::unique_ptr<Receiver> receiver;
    receiver = std::make_unique<Receiver>("received", [&] { receiver.reset(); });
    timer->connect("tick", receiver.get(), "in");
    pass(timedOut());
    EXPECT_EQ("tick received ", log());
    pass(timedOut());
    EXPECT_EQ("tick ", log());
}

TEST_F(loopReentrancy, tickOnItsWayToADeletedReceiverIsDropped) {
    registered(3, "r");
    auto timer = ownTimer("tick", 0.5F);
    auto receiver = std::make_unique<Receiver>("received");
    timer->connect("tick", receiver.get(), "in");
    exec.addPostSelectFunc(post);
    behind = [&] { receiver.reset(); };
    pass(timedOut());
    EXPECT_EQ("tick post ", log());
}

TEST_F(loopReentrancy, handlerMayDeleteAndStartTimers) {
    auto repeating = ownTimer("repeating", 0.25F, true), active = ownTimer("active", 1.0F);
    ScriptedTimer started("started", 0.5F);
    registered(3, "r").onRead = [&] {
        repeating.reset();
        active.reset();
        started.startTimer();
    };
    pass(after(25, ready({3})));
    EXPECT_EQ("repeating read3 ", log());
    EXPECT_EQ(ActiveList({{&started, 0.5F}}), activeList());
}

// Applications.

TEST_F(loopReentrancy, closeMayDeleteTheApplication) {
    ScriptedApplication other("other");
    auto a = std::make_unique<ScriptedApplication>("A");
    exec.open();
    log();
    a->onClose = [&] { a.reset(); };
    other.onClose = [&] { exec.add(&other); };
    exec.close();
    // other came back behind A, which had moved up and was skipped.
    EXPECT_EQ("closeother ", log());
    exec.close();
    EXPECT_EQ("closeA ", log());
    EXPECT_EQ(nullptr, a.get());
    exec.remove(&other);
}

TEST_F(loopReentrancy, closeMayDeleteOtherApplications) {
    for (const unsigned int deleted : {1U, 2U}) {
        SCOPED_TRACE(deleted);
        std::vector<std::unique_ptr<ScriptedApplication>> all;
        for (const char* name : {"A", "B", "C"})
            all.push_back(std::make_unique<ScriptedApplication>(name));
        exec.open();
        log();
        all[0]->onClose = [&] { all.erase(all.begin() + static_cast<int>(deleted)); };
        exec.close();
        EXPECT_EQ("closeA ", log());  // the one that is left moved up
        exec.close();
        EXPECT_EQ(deleted == 1 ? "closeC " : "closeB ", log());
    }
}

TEST_F(loopReentrancy, closeMayCloseAllTheOthers) {
    std::vector<std::unique_ptr<ScriptedApplication>> all;
    for (const char* name : {"A", "B", "C"})
        all.push_back(std::make_unique<ScriptedApplication>(name));
    exec.open();
    log();
    all[0]->onClose = [&] { exec.close(); };
    exec.close();
    // The walk within gets B and skips C, which the outer one finds too late.
    EXPECT_EQ("closeA closeB ", log());
    EXPECT_TRUE(all[2]->isOpen());
}

TEST_F(loopReentrancy, initializeAndOpenMayDeleteApplications) {
    auto a = std::make_unique<ScriptedApplication>("A"),
         b = std::make_unique<ScriptedApplication>("B");
    a->onInitialize = [&] {
        b->close();
        b.reset();
    };
    exec.initialize(0, nullptr);
    EXPECT_EQ("initializeA closeB ", log());
    a->onOpen = [&] { a.reset(); };
    exec.open();
    EXPECT_EQ("openA ", log());
    exec.loop();
}

TEST_F(loopReentrancy, handlerMayDeleteItselfAndTheApplication) {
    auto a = std::make_unique<ScriptedApplication>("A");
    a->open();
    log();
    auto h = ownHandler(3, "r");
    h->onRead = [&] {
        h.reset();
        a.reset();
    };
    fake.answers = {ready({3})};
    exec.loop();
    EXPECT_EQ("read3 ", log());
    EXPECT_EQ(1u, fake.selects.size());
}

TEST_F(loopReentrancy, loopWithinEndsWithTheSameApplication) {
    ScriptedApplication a("A");
    ScriptedHandler& h = registered(3, "r");
    unsigned int reads = 0;
    h.onRead = [&] {
        if (++reads == 1)
            exec.loop();
        else if (reads == 3)
            a.close();
    };
    fake.answers = {ready({3}), ready({3}), ready({3}), ready({3})};
    exec.loop();
    EXPECT_EQ("read3 read3 read3 closeA ", log());
    EXPECT_EQ(3u, fake.selects.size());
}
