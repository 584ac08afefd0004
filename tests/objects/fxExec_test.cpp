#include "kelvofxds/objects/fxExec.h"

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/loopFixture.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

struct fxExecLayout {
    static const unsigned int arraySize = sizeof(fxStubFuncArray);
    static_assert(sizeof(fxVoidPtrArray) == arraySize, "arrays add no fields");
    static_assert(sizeof(fd_set) == 128, "1024 descriptors");

    static_assert(offsetof(fxExec, lowest) == 0, "no table comes first");
    static_assert(offsetof(fxExec, nfds) == 2, "after lowest");
    static_assert(offsetof(fxExec, dirty) == 4, "after nfds");
    static_assert(offsetof(fxExec, wantRead) == 5, "after dirty");
    static_assert(offsetof(fxExec, wantWrite) == 6, "after wantRead");
    static_assert(offsetof(fxExec, wantException) == 7, "after wantWrite");
    static_assert(offsetof(fxExec, readSet) == 8, "after the flags");
    static_assert(offsetof(fxExec, writeSet) == 136, "after readSet");
    static_assert(offsetof(fxExec, exceptionSet) == 264, "after writeSet");
    static_assert(offsetof(fxExec, handlers) == 392, "after the sets");
    static_assert(offsetof(fxExec, preSelectFuncs) == 792, "after 100 handlers");
    static_assert(offsetof(fxExec, postSelectFuncs) == 792 + arraySize, "after preSelectFuncs");
    static_assert(offsetof(fxExec, applications) == 792 + 2 * arraySize, "after postSelectFuncs");
    static_assert(offsetof(fxExec, unused) == 792 + 3 * arraySize, "after applications");
    static_assert(sizeof(fxExec) == 796 + 3 * arraySize, "the unused word is the last");
    static_assert(std::is_same<decltype(fxExec::lowest), unsigned short>::value, "16 bits");
    static_assert(std::is_same<decltype(fxExec::nfds), unsigned short>::value, "16 bits");
    static_assert(std::is_same<decltype(fxExec::preSelectFuncs), fxStubFuncArray>::value &&
                      std::is_same<decltype(fxExec::postSelectFuncs), fxStubFuncArray>::value &&
                      std::is_same<decltype(fxExec::applications), fxVoidPtrArray>::value,
                  "held by value");

    static unsigned int lowest(const fxExec& exec) { return exec.lowest; }
    static unsigned int nfds(const fxExec& exec) { return exec.nfds; }
    static unsigned char& dirty(fxExec& exec) { return exec.dirty; }
    static std::string wants(const fxExec& exec) {
        return std::string(exec.wantRead ? "r" : "") + (exec.wantWrite ? "w" : "") +
               (exec.wantException ? "x" : "");
    }
    static const fd_set& readSet(const fxExec& exec) { return exec.readSet; }
    static const fd_set& writeSet(const fxExec& exec) { return exec.writeSet; }
    static const fd_set& exceptionSet(const fxExec& exec) { return exec.exceptionSet; }
    static fxSelectHandler* handler(const fxExec& exec, int d) { return exec.handlers[d]; }
    static unsigned int functions(const fxExec& exec) {
        return exec.preSelectFuncs.length() + exec.postSelectFuncs.length();
    }
    static unsigned int applications(const fxExec& exec) { return exec.applications.length(); }
    static unsigned int unused(const fxExec& exec) { return exec.unused; }
};

#pragma GCC diagnostic pop

using namespace loopTest;

namespace {

using Layout = fxExecLayout;
using Descriptors = std::vector<int>;

Descriptors in(const fd_set& set) {
    Descriptors descriptors;
    for (int d = 0; d < FD_SETSIZE; ++d) {
        if (FD_ISSET(d, &set))
            descriptors.push_back(d);
    }
    return descriptors;
}

class fxExecTest : public LoopTest {};

void expectNothing(fxExec& exec) {
    EXPECT_EQ(101u, Layout::lowest(exec));
    EXPECT_EQ(0u, Layout::nfds(exec));
    EXPECT_EQ(0, Layout::dirty(exec));
    EXPECT_EQ("", Layout::wants(exec));
    EXPECT_EQ(Descriptors(), in(Layout::readSet(exec)));
    EXPECT_EQ(Descriptors(), in(Layout::writeSet(exec)));
    EXPECT_EQ(Descriptors(), in(Layout::exceptionSet(exec)));
    for (int d = 0; d < 100; ++d)
        EXPECT_EQ(nullptr, Layout::handler(exec, d)) << d;
    EXPECT_EQ(0u, Layout::functions(exec));
    EXPECT_EQ(0u, Layout::applications(exec));
    EXPECT_EQ(0u, Layout::unused(exec));
}

void noteA() { note("A"); }
void noteB() { note("B"); }
void noteC() { note("C"); }

}  // namespace

// Construction.

TEST_F(fxExecTest, newExecutiveHasNothing) {
    alignas(fxExec) unsigned char raw[sizeof(fxExec)];
    std::memset(raw, 0xFF, sizeof raw);
    auto* fresh = new (raw) fxExec;
    expectNothing(*fresh);
    fresh->~fxExec();
}

TEST_F(fxExecTest, toolkitMakesTheExecutive) { EXPECT_NE(nullptr, processExecutive); }

// The select state.

TEST_F(fxExecTest, updateSelectStateGathersTheHandlers) {
    const struct {
        std::vector<std::pair<int, const char*>> handlers;
        unsigned int lowest, nfds;
        const char* wants;
        Descriptors read, write, exception;
    } cases[] = {
        {{}, 101, 0, "", {}, {}, {}},
        {{{0, "r"}}, 0, 1, "r", {0}, {}, {}},
        {{{99, "w"}}, 99, 100, "w", {}, {99}, {}},
        {{{57, "x"}}, 57, 58, "x", {}, {}, {57}},
        {{{0, "r"}, {99, "r"}}, 0, 100, "r", {0, 99}, {}, {}},
        {{{8, "rwx"}}, 8, 9, "rwx", {8}, {8}, {8}},
        {{{50, "x"}, {3, "r"}, {7, "rw"}}, 3, 51, "rwx", {3, 7}, {7}, {50}},
        // A handler without interest counts for the range all the same.
        {{{10, ""}}, 10, 11, "", {}, {}, {}},
        {{{2, ""}, {31, "w"}, {40, ""}}, 2, 41, "w", {}, {31}, {}},
        {{{31, "r"}, {32, "r"}, {63, "r"}, {64, "r"}}, 31, 65, "r", {31, 32, 63, 64}, {}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "row " << &c - cases);
        fxExec fresh;
        for (const auto& h : c.handlers)
            fresh.addSelectHandler(&handler(h.first, h.second));
        fresh.updateSelectState();
        EXPECT_EQ(c.lowest, Layout::lowest(fresh));
        EXPECT_EQ(c.nfds, Layout::nfds(fresh));
        EXPECT_EQ(c.wants, Layout::wants(fresh));
        EXPECT_EQ(c.read, in(Layout::readSet(fresh)));
        EXPECT_EQ(c.write, in(Layout::writeSet(fresh)));
        EXPECT_EQ(c.exception, in(Layout::exceptionSet(fresh)));
        EXPECT_EQ(0, Layout::dirty(fresh));
    }
}

TEST_F(fxExecTest, updateSelectStateForgetsTheStateBefore) {
    ScriptedHandler& h = registered(4, "rwx");
    registered(60, "rwx");
    exec.updateSelectState();
    exec.removeSelectHandler(&h);
    registered(6, "r");
    exec.removeSelectHandler(&handler(60, ""));
    exec.updateSelectState();
    EXPECT_EQ(6u, Layout::lowest(exec));
    EXPECT_EQ(7u, Layout::nfds(exec));
    EXPECT_EQ("r", Layout::wants(exec));
    EXPECT_EQ(Descriptors({6}), in(Layout::readSet(exec)));
    EXPECT_EQ(Descriptors(), in(Layout::writeSet(exec)));
    EXPECT_EQ(Descriptors(), in(Layout::exceptionSet(exec)));
}

TEST_F(fxExecTest, updateSelectStateTakesEveryHandlerOfTheTable) {
    Descriptors all;
    for (int d = 0; d < 100; ++d) {
        registered(d, "rwx");
        all.push_back(d);
    }
    exec.updateSelectState();
    EXPECT_EQ(0u, Layout::lowest(exec));
    EXPECT_EQ(100u, Layout::nfds(exec));
    EXPECT_EQ(all, in(Layout::readSet(exec)));
    EXPECT_EQ(all, in(Layout::writeSet(exec)));
    EXPECT_EQ(all, in(Layout::exceptionSet(exec)));
}

TEST_F(fxExecTest, addSelectHandlerOnlyEntersItAndMarksTheStateDirty) {
    ScriptedHandler& h = registered(5, "r");
    EXPECT_EQ(&h, Layout::handler(exec, 5));
    EXPECT_EQ(1, Layout::dirty(exec));
    EXPECT_EQ(101u, Layout::lowest(exec));
    EXPECT_EQ(0u, Layout::nfds(exec));
    EXPECT_EQ("", Layout::wants(exec));
    EXPECT_EQ(Descriptors(), in(Layout::readSet(exec)));
}

TEST_F(fxExecTest, addSelectHandlerReplacesTheOneOfTheSameDescriptor) {
    registered(5, "r");
    ScriptedHandler& second = registered(5, "w");
    EXPECT_EQ(&second, Layout::handler(exec, 5));
    EXPECT_EQ(Descriptors(), in(exec.getReadSet()));
    EXPECT_EQ(Descriptors({5}), in(exec.getWriteSet()));
}

TEST_F(fxExecTest, removeSelectHandlerOnlyClearsTheEntryAndMarksTheStateDirty) {
    ScriptedHandler& h = registered(5, "r");
    exec.updateSelectState();
    exec.removeSelectHandler(&h);
    EXPECT_EQ(nullptr, Layout::handler(exec, 5));
    EXPECT_EQ(1, Layout::dirty(exec));
    EXPECT_EQ(5u, Layout::lowest(exec));
    EXPECT_EQ(6u, Layout::nfds(exec));
    EXPECT_EQ(Descriptors({5}), in(Layout::readSet(exec)));
}

TEST_F(fxExecTest, removeSelectHandlerClearsTheDescriptorWhoeverServesIt) {
    registered(5, "r");
    exec.removeSelectHandler(&handler(5, ""));
    EXPECT_EQ(nullptr, Layout::handler(exec, 5));
}

TEST_F(fxExecTest, removeSelectHandlerOfAFreeDescriptorMarksTheStateDirty) {
    exec.removeSelectHandler(&handler(5, "r"));
    EXPECT_EQ(1, Layout::dirty(exec));
    EXPECT_EQ(nullptr, Layout::handler(exec, 5));
}

TEST_F(fxExecTest, descriptorsOutsideTheTableAreIgnored) {
    for (const int d : {INT_MIN, -101, -1, 100, 101, 127, 1000, 1024, INT_MAX}) {
        SCOPED_TRACE(d);
        ScriptedHandler& h = handler(d, "rwx");
        // The sets lie in front of the table and the functions behind it.
        fxExec fresh;
        fresh.addSelectHandler(&h);
        expectNothing(fresh);
        fresh.removeSelectHandler(&h);
        expectNothing(fresh);
        fresh.addPreSelectFunc(noteA);
        fresh.poll(0);
        EXPECT_EQ("", log());
        EXPECT_TRUE(fake.selects.empty());
    }
}

TEST_F(fxExecTest, descriptorsAtTheEndsOfTheTableAreServed) {
    for (const int d : {0, 99}) {
        SCOPED_TRACE(d);
        ScriptedHandler& h = registered(d, "r");
        pass(ready({d}));
        EXPECT_EQ("read" + std::to_string(d) + " ", log());
        exec.removeSelectHandler(&h);
        EXPECT_EQ(nullptr, Layout::handler(exec, d));
        exec.updateSelectState();
        EXPECT_EQ(101u, Layout::lowest(exec));
        EXPECT_EQ(0u, Layout::nfds(exec));
    }
}

TEST_F(fxExecTest, interestIsReadWhenTheStateIsRebuilt) {
    ScriptedHandler& h = registered(5, "r");
    h.setInterest(0, 1, 0);
    EXPECT_EQ(Descriptors({5}), in(exec.getWriteSet()));
    EXPECT_EQ(Descriptors(), in(exec.getReadSet()));
}

TEST_F(fxExecTest, changedInterestTakesEffectAfterRemovingAndAdding) {
    ScriptedHandler& h = registered(5, "r");
    exec.updateSelectState();
    h.setInterest(0, 0, 1);
    EXPECT_EQ(Descriptors({5}), in(exec.getReadSet()));
    EXPECT_EQ(Descriptors(), in(exec.getExceptionSet()));
    exec.removeSelectHandler(&h);
    exec.addSelectHandler(&h);
    EXPECT_EQ(Descriptors(), in(exec.getReadSet()));
    EXPECT_EQ(Descriptors({5}), in(exec.getExceptionSet()));
}

TEST_F(fxExecTest, eachSetIsRebuiltWhenItIsAskedFor) {
    const struct {
        const char* interest;
        fd_set (fxExec::*ask)();
    } cases[] = {
        {"r", &fxExec::getReadSet}, {"w", &fxExec::getWriteSet}, {"x", &fxExec::getExceptionSet}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.interest);
        fxExec fresh;
        fresh.addSelectHandler(&handler(12, c.interest));
        EXPECT_EQ(Descriptors({12}), in((fresh.*c.ask)()));
        EXPECT_EQ(0, Layout::dirty(fresh));
    }
}

TEST_F(fxExecTest, setsAreOnlyRebuiltWhenDirty) {
    registered(12, "rwx").setInterest(0, 0, 0);
    exec.updateSelectState();
    static_cast<ScriptedHandler*>(Layout::handler(exec, 12))->setInterest(1, 1, 1);
    EXPECT_EQ(Descriptors(), in(exec.getReadSet()));
    EXPECT_EQ(Descriptors(), in(exec.getWriteSet()));
    EXPECT_EQ(Descriptors(), in(exec.getExceptionSet()));
}

TEST_F(fxExecTest, setsAreCopies) {
    registered(12, "rwx");
    fd_set read = exec.getReadSet(), write = exec.getWriteSet(), exception = exec.getExceptionSet();
    for (fd_set* copy : {&read, &write, &exception}) {
        FD_CLR(12, copy);
        FD_SET(13, copy);
    }
    EXPECT_EQ(Descriptors({12}), in(exec.getReadSet()));
    EXPECT_EQ(Descriptors({12}), in(exec.getWriteSet()));
    EXPECT_EQ(Descriptors({12}), in(exec.getExceptionSet()));
}

// willBlock.

TEST_F(fxExecTest, willBlockIsFalseWithoutAHandlerAndAsksNobody) {
    EXPECT_FALSE(exec.willBlock());
    ScriptedHandler& h = registered(5, "r");
    exec.removeSelectHandler(&h);
    EXPECT_FALSE(exec.willBlock());
    EXPECT_TRUE(fake.selects.empty());
    EXPECT_EQ(0, Layout::dirty(exec));
}

TEST_F(fxExecTest, willBlockIsTrueExactlyWhenSelectReturnsZero) {
    registered(5, "r");
    const struct {
        SelectAnswer answer;
        bool expected;
    } cases[] = {{timedOut(), true}, {ready({5}), false}, {failure(EBADF), false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.answer.result);
        fake.answers.push_back(c.answer);
        EXPECT_EQ(c.expected, exec.willBlock());
    }
}

TEST_F(fxExecTest, willBlockLooksWithoutWaiting) {
    registered(7, "w");
    exec.willBlock();
    EXPECT_FALSE(lastSelect().read.given);
    EXPECT_EQ(Descriptors({7}), lastSelect().write.descriptors);
    EXPECT_FALSE(lastSelect().exception.given);
    exec.removeSelectHandler(&handler(7, ""));

    registered(5, "r");
    registered(9, "x");
    exec.willBlock();
    ASSERT_EQ(2u, fake.selects.size());
    EXPECT_EQ(10, lastSelect().nfds);
    EXPECT_EQ(Descriptors({5}), lastSelect().read.descriptors);
    EXPECT_FALSE(lastSelect().write.given);
    EXPECT_EQ(Descriptors({9}), lastSelect().exception.descriptors);
    ASSERT_TRUE(lastSelect().hasTimeout);
    EXPECT_EQ(0, lastSelect().seconds);
    EXPECT_EQ(0, lastSelect().microseconds);
    EXPECT_EQ("", log());
}

TEST_F(fxExecTest, willBlockPassesNoSetThatNobodyWants) {
    registered(5, "");
    exec.willBlock();
    EXPECT_EQ(6, lastSelect().nfds);
    EXPECT_FALSE(lastSelect().read.given);
    EXPECT_FALSE(lastSelect().write.given);
    EXPECT_FALSE(lastSelect().exception.given);
}

TEST_F(fxExecTest, willBlockLooksAtCopies) {
    registered(5, "rwx");
    fake.answers.push_back(ready({}, {5}));
    exec.willBlock();
    EXPECT_EQ(Descriptors({5}), in(Layout::readSet(exec)));
    EXPECT_EQ(Descriptors({5}), in(Layout::writeSet(exec)));
    EXPECT_EQ(Descriptors({5}), in(Layout::exceptionSet(exec)));
}

TEST_F(fxExecTest, willBlockConsidersNeitherEventsNorTimers) {
    registered(5, "r");
    Receiver receiver("received");
    Sender sender(receiver);
    sender.send();
    ScriptedTimer timer("timer", 0);
    timer.startTimer();
    EXPECT_TRUE(exec.willBlock());
    EXPECT_EQ(0u, fake.timesCalls);
    EXPECT_EQ("", log());
    EXPECT_TRUE(timer.isActive());
    EXPECT_EQ(1u, fx_theEventHandler->numberOfEvents());
}

TEST_F(fxExecTest, willBlockCallsNeitherFunctionsNorHandlers) {
    registered(5, "r");
    exec.addPreSelectFunc(noteA);
    exec.addPostSelectFunc(noteB);
    fake.answers.push_back(ready({5}));
    EXPECT_FALSE(exec.willBlock());
    EXPECT_EQ("", log());
}

// Functions around the wait.

TEST_F(fxExecTest, functionsAreCalledInTheOrderOfTheirAddition) {
    registered(5, "r");
    exec.addPostSelectFunc(noteC);
    exec.addPreSelectFunc(noteB);
    exec.addPreSelectFunc(noteA);
    exec.addPostSelectFunc(noteA);
    pass(timedOut());
    EXPECT_EQ("B A C A ", log());
}

TEST_F(fxExecTest, functionAddedTwiceIsCalledTwice) {
    registered(5, "r");
    exec.addPreSelectFunc(noteA);
    exec.addPreSelectFunc(noteA);
    exec.addPostSelectFunc(noteB);
    exec.addPostSelectFunc(noteB);
    exec.addPostSelectFunc(noteB);
    pass(timedOut());
    EXPECT_EQ("A A B B B ", log());
}

TEST_F(fxExecTest, removingAFunctionRemovesItsFirstEntry) {
    registered(5, "r");
    for (void (*function)() : {noteA, noteB, noteA, noteC}) {
        exec.addPreSelectFunc(function);
        exec.addPostSelectFunc(function);
    }
    exec.removePreSelectFunc(noteA);
    pass(timedOut());
    EXPECT_EQ("B A C A B A C ", log());
    exec.removePostSelectFunc(noteA);
    pass(timedOut());
    EXPECT_EQ("B A C B A C ", log());
    exec.removePreSelectFunc(noteC);
    exec.removePostSelectFunc(noteB);
    pass(timedOut());
    EXPECT_EQ("B A A C ", log());
}

TEST_F(fxExecTest, removingAnAbsentFunctionDoesNothing) {
    registered(5, "r");
    exec.removePreSelectFunc(noteA);
    exec.removePostSelectFunc(noteA);
    exec.addPreSelectFunc(noteA);
    exec.addPostSelectFunc(noteB);
    exec.removePreSelectFunc(noteB);
    exec.removePostSelectFunc(noteA);
    EXPECT_EQ(2u, Layout::functions(exec));
    pass(timedOut());
    EXPECT_EQ("A B ", log());
}

// Applications.

TEST_F(fxExecTest, containsTellsWhetherAnApplicationIsRegistered) {
    ScriptedApplication a("A"), b("B");
    EXPECT_TRUE(exec.contains(&a));
    EXPECT_TRUE(exec.contains(&b));
    exec.remove(&a);
    EXPECT_FALSE(exec.contains(&a));
    EXPECT_TRUE(exec.contains(&b));
    exec.remove(&b);
    EXPECT_FALSE(exec.contains(&b));
    EXPECT_FALSE(exec.contains(nullptr));
}

TEST_F(fxExecTest, addAppendsAnApplicationAlsoForTheSecondTime) {
    ScriptedApplication a("A"), b("B");
    exec.add(&a);
    EXPECT_EQ(3u, Layout::applications(exec));
    exec.open();
    EXPECT_EQ("openA openB openA ", log());
    exec.remove(&a);
    EXPECT_TRUE(exec.contains(&a));
    exec.remove(&a);
    EXPECT_FALSE(exec.contains(&a));
}

TEST_F(fxExecTest, removingAnUnregisteredApplicationDoesNothing) {
    ScriptedApplication a("A"), b("B");
    exec.remove(&b);
    exec.remove(&b);
    EXPECT_EQ(1u, Layout::applications(exec));
    EXPECT_TRUE(exec.contains(&a));
    exec.remove(&a);
    exec.remove(&a);
    exec.remove(nullptr);
    EXPECT_EQ(0u, Layout::applications(exec));
}
