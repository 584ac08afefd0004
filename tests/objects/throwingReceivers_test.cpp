#include <gtest/gtest.h>

#include "kelvofxds/objects/fxMessageEvent.h"
#include "tests/support/dataFlow.h"

// A host's exception that leaves a receiver, or an event of its own, passes
// through; what was being delivered ends.

namespace {

void throwing(void*, int) { throw 1; }

class ThrowingEvent : public fxEvent {
public:
    ThrowingEvent() : fxEvent(fxET_Unknown) { ++alive; }
    ~ThrowingEvent() override { --alive; }
    void deliver() override { throw 1; }

    inline static int alive = 0;
};

class throwingReceivers : public DataFlowTest {
protected:
    throwingReceivers() : sender(log, "sender"), object(log, "object") {
        thrower = owner.addInput("in", fxDT_int, this, receiver(throwing), 0);
        sender.connect("out", &owner, "in");
        sender.connect("out", &object, "in");
    }

    FlowNode sender;
    FlowNode object;
    fxObj owner;
    fxInputChannel* thrower;
};

}  // namespace

TEST_F(throwingReceivers, valueThatIsSentAtOnceEnds) {
    EXPECT_THROW(sender.sendData(sender.out, new SpyData(1), fxObj::fxSendNow), int);
    EXPECT_EQ(0, SpyData::alive);
    EXPECT_EQ("", log.take()) << "those behind get nothing";
    owner.removeInput("in");
    sender.sendData(sender.out, new SpyData(2), fxObj::fxSendNow);
    EXPECT_EQ("object=2", log.take());
}

TEST_F(throwingReceivers, messageEndsWithItsValueAndItsReference) {
    sender.sendData(sender.out, new SpyData(1), fxObj::fxSendQueued);
    sender.sendData(sender.out, new SpyData(2), fxObj::fxSendQueued);
    EXPECT_EQ(4U, thrower->count);
    EXPECT_THROW(fx_theEventHandler->distributeEvents(), int);
    EXPECT_EQ(3U, thrower->count);
    EXPECT_EQ(2, SpyData::alive) << "the other message has the value too";
    EXPECT_EQ(3U, queued());
    EXPECT_THROW(fx_theEventHandler->distributeEvents(), int);
    EXPECT_EQ("object=1", log.take());
    EXPECT_EQ(1, SpyData::alive);
    EXPECT_EQ("object=2", distribute());
    EXPECT_EQ(2U, thrower->count) << "the dictionary's and the connection's";
}

TEST_F(throwingReceivers, hostsEventEnds) {
    fx_theEventHandler->postEvent(new ThrowingEvent, 0);
    EXPECT_THROW(fx_theEventHandler->distributeEvents(), int);
    EXPECT_EQ(0, ThrowingEvent::alive);
    fx_theEventHandler->postEvent(new fxMessageEvent(thrower, new SpyData(3)), 0);
    EXPECT_THROW(fx_theEventHandler->distributeEvents(), int);
    EXPECT_EQ(0, SpyData::alive);
}
