// What a pass of the dispatch loop takes from the heap: nothing, with the
// system's own select and clock, descriptors that are ready, timers that are
// due and messages on their way.

#include <unistd.h>

#include <deque>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxSelectHandler.h"
#include "kelvofxds/objects/fxTimer.h"
#include "tests/support/dataFlow.h"
#include "tests/support/heapCalls.h"

namespace {

// Sends in each way when it is called. It leaves its descriptor as it is, so
// that it is called in every pass.
class BusyHandler : public fxSelectHandler {
public:
    BusyHandler(int descriptor, bool reads)
        : fxSelectHandler(descriptor, reads, !reads, 0), out(addOutput("out", fxDT_int)) {}

    void handleRead() override { sendAll(); }
    void handleWrite() override { sendAll(); }

    int calls = 0;

private:
    void sendAll() {
        ++calls;
        for (const fxSendFlags flags : {fxSendQueued, fxSendNow, fxSendUrgent})
            sendInt(out, calls, flags);
    }

    fxOutputChannel* out;
};

// Counts what arrives: values as they are, converted, the latest only, and
// without a type. It starts a timer anew for each tick of that.
class CountingReceiver : public fxObj {
public:
    CountingReceiver() {
        addInput("plain", fxDT_int, this, receiver(countInt), 0);
        addInput("converted", fxDT_float, this, receiver(countFloat), 0);
        addInput("latest", fxDT_int, this, receiver(countInt), 1);
        addInput("untyped", fxDT_void, this, receiver(count), 0);
        addInput("tick", fxDT_void, this, receiver(restart), 0);
    }

    static void count(CountingReceiver* self) { ++self->values; }
    static void countInt(CountingReceiver* self, int) { ++self->values; }
    static void countFloat(CountingReceiver* self, float) { ++self->values; }
    static void restart(CountingReceiver* self) {
        ++self->ticks;
        if (self->timer)
            self->timer->startTimer();
    }

    int values = 0;
    int ticks = 0;
    fxTimer* timer = nullptr;
};

class loopMemory : public DataFlowTest {
protected:
    void SetUp() override {
        DataFlowTest::SetUp();
        if (!heapCallsAreCounted())
            GTEST_SKIP() << "allocations are not counted in this build or under this tool";
        processExecutive = std::exchange(fx_theExecutive, &exec);
        preCalls = postCalls = 0;
        exec.addPreSelectFunc([] { ++preCalls; });
        exec.addPostSelectFunc([] { ++postCalls; });
    }

    void TearDown() override {
        if (processExecutive)
            fx_theExecutive = processExecutive;
        handlers.clear();
        timers.clear();
        fx_theEventHandler->distributeEvents();
        DataFlowTest::TearDown();
    }

    // Handlers of both ends of `n` pipes. Ready, one end has something to read
    // and the other room to write; else both wait for something to read.
    void addPipes(unsigned int n, bool isReady) {
        for (unsigned int i = 0; i < n; ++i) {
            int ends[2];
            ASSERT_EQ(0, ::pipe(ends));
            ASSERT_LT(ends[1], 100);
            if (isReady) {
                ASSERT_EQ(1, ::write(ends[1], "x", 1));
            }
            addHandler(ends[0], true);
            addHandler(ends[1], !isReady);
        }
    }

    void addHandler(int descriptor, bool reads) {
        handlers.push_back(std::make_unique<BusyHandler>(descriptor, reads));
        exec.addSelectHandler(handlers.back().get());
        for (const char* input : {"plain", "converted", "latest", "untyped"})
            handlers.back()->connect("out", &values, input);
    }

    void addTimer(float interval, bool repeats, CountingReceiver& ticks) {
        timers.emplace_back(repeats);
        timers.back().setInterval(interval);
        timers.back().connect("tick", &ticks, "tick");
        timers.back().startTimer();
    }

    // Passes after the first few, in which memory is gathered.
    void expectPassesWithoutAllocations(int passes) {
        for (int i = 0; i < 5; ++i)
            exec.poll(1000.0F);
        for (const auto& handler : handlers)
            handler->calls = 0;
        values.values = repeated.ticks = restarted.ticks = 0;
        preCalls = postCalls = 0;
        const HeapCalls before = heapCalls();
        for (int i = 0; i < passes; ++i)
            exec.poll(1000.0F);
        const HeapCalls after = heapCalls();
        EXPECT_EQ(before.allocations, after.allocations);
        EXPECT_EQ(before.releases, after.releases);
        EXPECT_EQ(passes, preCalls);
        EXPECT_EQ(passes, postCalls);
    }

    static int preCalls, postCalls;

    fxExec exec;
    fxExec* processExecutive = nullptr;
    CountingReceiver values, repeated, restarted;
    std::deque<fxTimer> timers;
    std::vector<std::unique_ptr<BusyHandler>> handlers;
};

int loopMemory::preCalls = 0;
int loopMemory::postCalls = 0;

}  // namespace

TEST_F(loopMemory, passWithReadyDescriptorsTimersAndMessagesAllocatesNothing) {
    const int passes = 200;
    for (const unsigned int pipes : {1U, 8U, 32U}) {
        SCOPED_TRACE(testing::Message() << 2 * pipes << " descriptors are ready");
        addPipes(pipes, true);
        if (HasFatalFailure())
            return;
        for (int i = 0; i < 3; ++i)
            addTimer(0, true, repeated);
        addTimer(1000.0F, true, repeated);
        addTimer(0, false, restarted);
        restarted.timer = &timers.back();

        expectPassesWithoutAllocations(passes);
        // All three values of each handler reach the inputs that keep all. The
        // latest-only input gets those sent at once, and of all that a pass
        // has queued the last one.
        for (const auto& handler : handlers)
            EXPECT_EQ(passes, handler->calls);
        const int each = passes * static_cast<int>(handlers.size());
        EXPECT_EQ(3 * 3 * each + each + passes, values.values);
        EXPECT_EQ(3 * passes, repeated.ticks);
        EXPECT_EQ(passes, restarted.ticks);

        restarted.timer = nullptr;
        handlers.clear();
        timers.clear();
        fx_theEventHandler->distributeEvents();
    }
}

TEST_F(loopMemory, passThatEndsWithATimerAllocatesNothing) {
    const int passes = 200;
    addPipes(4, false);
    if (HasFatalFailure())
        return;
    addTimer(0.0001F, true, repeated);
    expectPassesWithoutAllocations(passes);
    EXPECT_EQ(passes, repeated.ticks);
    EXPECT_EQ(0, values.values);
}

TEST_F(loopMemory, passThatFailsAllocatesNothing) {
    const int passes = 200;
    addPipes(1, true);
    if (HasFatalFailure())
        return;
    ::close(handlers[0]->fd);  // select fails until the handlers change
    addTimer(0, true, repeated);
    expectPassesWithoutAllocations(passes);
    EXPECT_EQ(0, handlers[0]->calls + handlers[1]->calls);
    EXPECT_EQ(passes, repeated.ticks);
    handlers[0]->setDescriptor(-1);
}

TEST_F(loopMemory, passWithoutHandlersAllocatesNothing) {
    BusyHandler sender(-1, true);
    for (const char* input : {"plain", "converted", "latest", "untyped"})
        sender.connect("out", &values, input);
    sender.handleRead();
    exec.poll(1000.0F);
    values.values = 0;
    const HeapCalls before = heapCalls();
    for (int i = 0; i < 200; ++i) {
        sender.handleRead();
        exec.poll(1000.0F);
    }
    const HeapCalls after = heapCalls();
    EXPECT_EQ(before.allocations, after.allocations);
    EXPECT_EQ(before.releases, after.releases);
    EXPECT_EQ(200 * (3 * 3 + 2), values.values);
}
