#include <malloc.h>

#include <csignal>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxMessageEvent.h"
#include "tests/support/dataFlow.h"
#include "tests/support/heapCalls.h"

// Holders and messages that come and go take their memory from what earlier
// ones have left.

namespace {

const fxObj::fxSendFlags allFlags[] = {fxObj::fxSendQueued, fxObj::fxSendNow, fxObj::fxSendUrgent};

unsigned int heapInUse() { return static_cast<unsigned int>(::mallinfo2().uordblks); }

// A receiving function of any type, which counts its calls.
void countVoid(void* target) { ++*static_cast<int*>(target); }
template <class Value>
void countValue(void* target, Value) {
    countVoid(target);
}

// Outputs of every type without memory of its own, each connected to a plain
// input, one that keeps the latest message only, and one that converts, if
// there is a conversion.
class sendingMemory : public DataFlowTest {
protected:
    static const unsigned int types = 6;

    sendingMemory()
        : outs{fxOutputChannel(fxDT_void),  fxOutputChannel(fxDT_fxBool),
               fxOutputChannel(fxDT_int),   fxOutputChannel(fxDT_long),
               fxOutputChannel(fxDT_float), fxOutputChannel(fxDT_double)} {}

    void SetUp() override {
        DataFlowTest::SetUp();
        if (!heapCallsAreCounted())
            GTEST_SKIP() << "allocations are not counted in this build or under this tool";
        void (*const functions[types])() = {
            receiver(countVoid),         receiver(countValue<unsigned char>),
            receiver(countValue<int>),   receiver(countValue<long>),
            receiver(countValue<float>), receiver(countValue<double>)};
        const unsigned int converted[types] = {0, 2, 4, 3, 5, 2};  // index of a type it converts to
        for (unsigned int i = 0; i < types; ++i) {
            connect(i, i, functions[i], 0);
            connect(i, i, functions[i], 1);
            if (converted[i] != i)
                connect(i, converted[i], functions[converted[i]], 0);
        }
    }

    void connect(unsigned int output, unsigned int type, void (*function)(),
                 unsigned char latestOnly) {
        const std::string name = std::to_string(++inputs);
        outs[output].add(
            object.addInput(name.c_str(), outs[type].getType(), &calls, function, latestOnly));
    }

    // `times` values of each type, and their delivery.
    void sendAll(fxObj::fxSendFlags flags, int times) {
        for (int i = 0; i < times; ++i) {
            object.sendVoid(&outs[0], flags);
            object.sendBool(&outs[1], 1, flags);
            object.sendInt(&outs[2], 1, flags);
            object.sendLong(&outs[3], 1, flags);
            object.sendFloat(&outs[4], 1, flags);
            object.sendDouble(&outs[5], 1, flags);
        }
        fx_theEventHandler->distributeEvents();
    }

    void expectSteadyState(int times) {
        for (const fxObj::fxSendFlags flags : allFlags) {
            SCOPED_TRACE(flags);
            sendAll(flags, times);
            calls = 0;
            const HeapCalls before = heapCalls();
            for (int i = 0; i < 1000; ++i)
                sendAll(flags, times);
            const HeapCalls after = heapCalls();
            EXPECT_EQ(before.allocations, after.allocations);
            EXPECT_EQ(before.releases, after.releases);
            // Inputs that keep the latest message only get one of those queued.
            const int latest = flags == fxObj::fxSendNow ? times : 1;
            const int plain = static_cast<int>(types) * times;
            const int converted = 4, kept = static_cast<int>(types);
            EXPECT_EQ(1000 * (plain + converted * times + kept * latest), calls);
        }
    }

    int calls = 0;
    unsigned int inputs = 0;
    fxOutputChannel outs[types];
    fxObj object;
};

}  // namespace

TEST_F(sendingMemory, sendsInSteadyStateCallNeitherMallocNorFree) { expectSteadyState(1); }

TEST_F(sendingMemory, messagesThatAreReplacedCallNeitherMallocNorFree) { expectSteadyState(3); }

// A short one that is delivered at once takes no memory.
TEST_F(sendingMemory, textIsCopiedOnceAndFreedOnce) {
    fxOutputChannel texts(fxDT_CharPtr);
    for (const char* name : {"first", "second"})
        texts.add(object.addInput(name, fxDT_CharPtr, &calls, receiver(countValue<char*>), 0));
    for (const fxObj::fxSendFlags flags : allFlags) {
        SCOPED_TRACE(flags);
        for (const unsigned int length : {4U, 1000U}) {
            SCOPED_TRACE(length);
            const std::string text(length, 'x');
            object.sendCharPtr(&texts, text.c_str(), flags);
            fx_theEventHandler->distributeEvents();
            const unsigned int copies = flags == fxObj::fxSendNow && length == 4 ? 0 : 1000;
            const HeapCalls before = heapCalls();
            for (int i = 0; i < 1000; ++i) {
                object.sendCharPtr(&texts, text.c_str(), flags);
                fx_theEventHandler->distributeEvents();
            }
            const HeapCalls after = heapCalls();
            EXPECT_EQ(before.allocations + copies, after.allocations);
            EXPECT_EQ(before.releases + copies, after.releases);
        }
    }
}

TEST_F(sendingMemory, aMillionSendsDoNotGrowTheHeap) {
    for (const fxObj::fxSendFlags flags : allFlags) {
        SCOPED_TRACE(flags);
        sendAll(flags, 1);
        calls = 0;
        const unsigned int heap = heapInUse();
        for (unsigned int i = 0; i < 1000000 / types; ++i)
            sendAll(flags, 1);
        EXPECT_EQ(heap, heapInUse());
        EXPECT_LT(1000000, calls);
    }
}

TEST_F(sendingMemory, memoryKeptIsThatOfTheLongestQueue) {
    const int messages = 20000;
    int received = 0;
    fxOutputChannel longs(fxDT_long), texts(fxDT_CharPtr);
    longs.add(object.addInput("long", fxDT_long, &received, receiver(countValue<long>), 0));
    for (const char* name : {"first", "second"})
        texts.add(object.addInput(name, fxDT_CharPtr, &received, receiver(countValue<char*>), 0));
    const auto pass = [&](int queued) {
        for (int i = 0; i < queued; ++i)
            object.sendLong(&longs, i, fxObj::fxSendQueued);
        fx_theEventHandler->distributeEvents();
    };
    pass(messages);
    const HeapCalls before = heapCalls();
    for (const int queued : {messages, 1, messages / 2, messages})
        pass(queued);
    const HeapCalls after = heapCalls();
    EXPECT_EQ(before.allocations, after.allocations);
    EXPECT_EQ(before.releases, after.releases);
    // The messages of texts, and the holders that two receivers share.
    for (int i = 0; i < messages / 2; ++i)
        object.sendCharPtr(&texts, "text", fxObj::fxSendQueued);
    fx_theEventHandler->distributeEvents();
    const HeapCalls later = heapCalls();
    for (int i = 0; i < messages / 2; ++i)
        object.sendCharPtr(&texts, "text", fxObj::fxSendQueued);
    fx_theEventHandler->distributeEvents();
    EXPECT_EQ(later.allocations + messages / 2, heapCalls().allocations);
    EXPECT_EQ(7 * messages / 2 + 1 + 2 * messages, received);
}

#ifndef __SANITIZE_ADDRESS__
namespace {

// Of which the library makes more and more.
void sendForEver(fxObj& object, fxOutputChannel& out) {
    refuseBlocksFrom(0);
    for (;;)
        object.sendInt(&out, 1, fxObj::fxSendQueued);
}

void sendTextsForEver(fxObj& object, fxOutputChannel& out) {
    const std::string text(1000, 'x');
    refuseBlocksFrom(0);
    for (;;)
        object.sendCharPtr(&out, text.c_str(), fxObj::fxSendQueued);
}

void addInputsForEver(fxObj& object) {
    refuseBlocksFrom(0);
    for (int i = 0;; ++i)
        object.addInput(std::to_string(i).c_str(), fxDT_int, nullptr, nullptr, 0);
}

void connectForEver(fxOutputChannel& out, fxInputChannel* in) {
    refuseBlocksFrom(0);
    for (;;)
        out.add(in);
}

using sendingMemoryDeathTest = sendingMemory;

}  // namespace

TEST_F(sendingMemoryDeathTest, refusedMemoryEndsTheProcess) {
    const auto killed = testing::KilledBySignal(SIGABRT);
    const char message[] = "^out of memory\n$";
    fxOutputChannel texts(fxDT_CharPtr);
    fxInputChannel* in = object.addInput("text", fxDT_CharPtr, &calls, receiver(countVoid), 0);
    texts.add(in);
    EXPECT_EXIT(sendForEver(object, outs[2]), killed, message);
    EXPECT_EXIT(sendTextsForEver(object, texts), killed, message);
    EXPECT_EXIT(addInputsForEver(object), killed, message);
    EXPECT_EXIT(connectForEver(outs[2], in), killed, message);
}
#endif
