#include "kelvofxds/objects/fxInputChannel.h"

#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxMessageEvent.h"
#include "kelvofxds/values/fxConverter.h"
#include "tests/support/dataFlow.h"
#include "tests/support/heapCalls.h"

static_assert(offsetof(fxInputChannel, target) == 0, "no table: a plain structure");
static_assert(offsetof(fxInputChannel, function) == 4, "after target");
static_assert(offsetof(fxInputChannel, flags) == 8, "after function");
static_assert(offsetof(fxInputChannel, pending) == 12, "after flags");
static_assert(offsetof(fxInputChannel, count) == 16, "after pending");
static_assert(offsetof(fxInputChannel, sources) == 20, "after count");
static_assert(sizeof(fxInputChannel) == 24, "nothing else");

namespace {

void ignoreInt(void*, int) {}

// One that the test alone holds.
fxInputChannel* heldChannel(unsigned short type = fxDT_int, unsigned char latestOnly = 0) {
    auto* channel = new fxInputChannel(type, nullptr, receiver(ignoreInt), latestOnly);
    channel->count = 1;
    return channel;
}

class fxInputChannelTest : public DataFlowTest {
protected:
    static void post(fxInputChannel* channel, int value) {
        fx_theEventHandler->postEvent(new fxMessageEvent(channel, new SpyData(value)), 0);
    }
};
using fxInputChannelDeathTest = fxInputChannelTest;

}  // namespace

TEST_F(fxInputChannelTest, constructorStoresTypeAndFlagInOneWord) {
    const struct {
        unsigned short type;
        unsigned char latestOnly;
        unsigned int flags;
    } rows[] = {{0, 0, 0},          {0, 1, 1},           {2, 0, 8},          {2, 1, 9},
                {2, 2, 8},          {2, 3, 9},           {2, 254, 8},        {2, 255, 9},
                {11, 0, 44},        {11, 1, 45},         {0x4000, 0, 65536}, {0x8000, 1, 131073},
                {65535, 0, 262140}, {65535, 255, 262141}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.type << ", latest only " << +row.latestOnly);
        int target = 0;
        const fxInputChannel channel(row.type, &target, receiver(ignoreInt), row.latestOnly);
        EXPECT_EQ(row.flags, channel.flags);
        EXPECT_EQ(row.type, channel.getType());
        EXPECT_EQ((row.latestOnly & 1) != 0, channel.isLatestOnly());
        EXPECT_FALSE(channel.isLink());
        EXPECT_EQ(&target, channel.target);
        EXPECT_EQ(receiver(ignoreInt), channel.function);
        EXPECT_EQ(nullptr, channel.pending);
        EXPECT_EQ(0U, channel.count);
        EXPECT_EQ(nullptr, channel.sources);
    }
}

// Flushing.

TEST_F(fxInputChannelTest, flushDeletesTheMessagesOfThisChannelOnly) {
    fxInputChannel* channel = heldChannel();
    fxInputChannel* other = heldChannel();
    for (int value = 1; value <= 3; ++value) {
        post(channel, value);
        post(other, value);
    }
    EXPECT_EQ(4U, channel->count);
    channel->flush();
    EXPECT_EQ(1U, channel->count);
    EXPECT_EQ(4U, other->count);
    EXPECT_EQ(3, SpyData::alive);
    for (fxEvent* e : queuedEvents())
        EXPECT_EQ(other, e->getChannel());
    other->flush();
    EXPECT_EQ(0, SpyData::alive);
    channel->dec();
    other->dec();
}

TEST_F(fxInputChannelTest, flushOfAnIdleChannelDoesNothing) {
    fxInputChannel* channel = heldChannel();
    channel->flush();
    EXPECT_EQ(1U, channel->count);
    EXPECT_EQ(nullptr, channel->pending);
    channel->dec();
}

TEST_F(fxInputChannelTest, flushClearsPendingEvenIfThatIsNotQueued) {
    fxInputChannel* channel = heldChannel(fxDT_int, 1);
    fxOutputChannel out(fxDT_int);
    out.add(channel);
    fx_theEventHandler->postMessage(&out, new SpyData(1), fxObj::fxSendQueued);
    fxEvent* taken = fx_theEventHandler->getQueue().get();
    EXPECT_EQ(taken, channel->pending);
    channel->flush();
    EXPECT_EQ(nullptr, channel->pending);
    delete taken;
    out.remove(channel);
    channel->dec();
}

TEST_F(fxInputChannelTest, deliberateFlushLeavesMessagesForItsLinks) {
    FlowNode sender(log);
    FlowNode object(log, "object", fxDT_fxBool, 1);
    sender.connect("out", &object, "in");
    sender.sendData(sender.out, new SpyData(1), fxObj::fxSendQueued);
    fxInputChannel* link = (*sender.out)[0];
    const fxMessageEvent* message = link->pending;
    ASSERT_NE(nullptr, message);
    object.in->flush();
    EXPECT_EQ(1U, queued());
    EXPECT_EQ(message, link->pending);

    link->flush();
    EXPECT_EQ(0U, queued());
    EXPECT_EQ(nullptr, link->pending);
    EXPECT_EQ(0, SpyData::alive);
}

TEST_F(fxInputChannelTest, flushWithoutAnEventHandlerClearsPending) {
    fxInputChannel channel(fxDT_int, nullptr, receiver(ignoreInt), 1);
    fxInputChannel other(fxDT_int, nullptr, receiver(ignoreInt), 1);
    other.count = 1;
    fxMessageEvent message(&other, new SpyData(1));
    channel.pending = &message;
    fxEventHandler* const handler = std::exchange(fx_theEventHandler, nullptr);
    channel.flush();
    fx_theEventHandler = handler;
    EXPECT_EQ(nullptr, channel.pending);
}

// Sources.

TEST_F(fxInputChannelTest, addAppendsToTheSources) {
    fxInputChannel channel(fxDT_int, nullptr, receiver(ignoreInt), 0);
    fxOutputChannel first(fxDT_int);
    fxOutputChannel second(fxDT_int);
    for (fxOutputChannel* out : {&first, &second, &first})
        channel.add(out);
    ASSERT_EQ(3U, sources(&channel));
    EXPECT_EQ(&first, (*channel.sources)[0]);
    EXPECT_EQ(&second, (*channel.sources)[1]);
    EXPECT_EQ(&first, (*channel.sources)[2]);
    EXPECT_EQ(0U, channel.count);
}

TEST_F(fxInputChannelTest, removeTakesTheFirstEqualSource) {
    fxInputChannel channel(fxDT_int, nullptr, receiver(ignoreInt), 0);
    fxOutputChannel first(fxDT_int);
    fxOutputChannel second(fxDT_int);
    for (fxOutputChannel* out : {&first, &second, &first, &second})
        channel.add(out);
    channel.remove(&second);
    ASSERT_EQ(3U, sources(&channel));
    EXPECT_EQ(&first, (*channel.sources)[0]);
    EXPECT_EQ(&first, (*channel.sources)[1]);
    EXPECT_EQ(&second, (*channel.sources)[2]);
    channel.remove(&first);
    channel.remove(&first);
    ASSERT_EQ(1U, sources(&channel));
    EXPECT_EQ(&second, (*channel.sources)[0]);
    channel.remove(&second);
    EXPECT_EQ(0U, sources(&channel));
}

TEST_F(fxInputChannelTest, removeBeforeAnyConnectionDoesNothing) {
    fxInputChannel channel(fxDT_int, nullptr, receiver(ignoreInt), 0);
    fxOutputChannel out(fxDT_int);
    channel.remove(&out);
    EXPECT_EQ(nullptr, channel.sources);
}

TEST_F(fxInputChannelTest, disconnectFreesItFromEveryOutput) {
    for (const unsigned short type : {fxDT_int, fxDT_fxBool, fxDT_void}) {
        SCOPED_TRACE(type);
        fxInputChannel* channel = heldChannel(type);
        fxInputChannel* other = heldChannel();
        fxOutputChannel first(fxDT_int);
        fxOutputChannel second(fxDT_int);
        for (fxOutputChannel* out : {&first, &second, &first}) {
            out->add(channel);
            out->add(other);
        }
        EXPECT_EQ(4U, channel->count);
        channel->disconnect();
        EXPECT_EQ(1U, channel->count);
        EXPECT_EQ(0U, sources(channel));
        EXPECT_EQ(2U, first.getNumberOfConnections());
        EXPECT_EQ(1U, second.getNumberOfConnections());
        EXPECT_EQ(4U, other->count);
        channel->disconnect();
        other->disconnect();
        EXPECT_EQ(1U, other->count);
        channel->dec();
        other->dec();
    }
}

TEST_F(fxInputChannelTest, disconnectWithoutSourcesDoesNothing) {
    fxInputChannel* channel = heldChannel();
    channel->disconnect();
    EXPECT_EQ(1U, channel->count);
    EXPECT_EQ(nullptr, channel->sources);
    channel->dec();
}

TEST_F(fxInputChannelTest, disconnectMayDestroyTheChannel) {
    for (const unsigned short type : {fxDT_int, fxDT_fxBool}) {
        SCOPED_TRACE(type);
        FlowNode sender(log);
        fxObj object;
        fxInputChannel* in = object.addInput("in", type, nullptr, receiver(ignoreInt), 0);
        sender.connect("out", &object, "in");
        sender.out->add(in);
        object.addInput("in", fxDT_int, nullptr, receiver(ignoreInt), 0);
        EXPECT_EQ(2U, in->count) << "the connections are all that hold it";
        in->disconnect();
        EXPECT_EQ(0U, sender.out->getNumberOfConnections());
    }
}

// References.

TEST_F(fxInputChannelTest, decReleasesOneReference) {
    fxInputChannel* channel = heldChannel();
    channel->count = 3;
    channel->dec();
    EXPECT_EQ(2U, channel->count);
    channel->dec();
    EXPECT_EQ(1U, channel->count);
    const long blocks = heapCalls().blocks;
    channel->dec();
    EXPECT_EQ(heapCallsAreCounted() ? blocks - 1 : blocks, heapCalls().blocks) << "it is freed";
}

TEST_F(fxInputChannelTest, lastReferenceOfALinkReleasesTheChain) {
    fxInputChannel* last = heldChannel(fxDT_fxBool);
    fxConverter* second = fxConverter::findConverter(fxDT_int, fxDT_fxBool);
    fxConverter* first = fxConverter::findConverter(fxDT_int, fxDT_fxBool);
    fxConverter::splice(second, last);
    fxConverter::splice(first, second);
    first->count = 2;
    EXPECT_EQ(2U, last->count);
    EXPECT_EQ(1U, second->count);
    EXPECT_EQ(last, first->finalChannel());
    EXPECT_EQ(last, second->finalChannel());
    EXPECT_EQ(last, last->finalChannel());

    first->dec();
    EXPECT_EQ(1U, first->count);
    EXPECT_EQ(1U, second->count);
    EXPECT_EQ(2U, last->count);
    second->count = 2;  // outlives the first
    first->dec();
    EXPECT_EQ(1U, second->count);
    EXPECT_EQ(2U, last->count);
    second->dec();
    EXPECT_EQ(1U, last->count);
    last->dec();
}

TEST_F(fxInputChannelTest, chainGoesWithItsFirstLink) {
    fxInputChannel* last = heldChannel(fxDT_fxBool);
    fxConverter* second = fxConverter::findConverter(fxDT_int, fxDT_fxBool);
    fxConverter* first = fxConverter::findConverter(fxDT_int, fxDT_fxBool);
    fxConverter::splice(second, last);
    fxConverter::splice(first, second);
    first->count = 1;
    first->dec();
    EXPECT_EQ(1U, last->count);
    last->dec();
}

TEST_F(fxInputChannelTest, destructorDeletesTheSources) {
    fxOutputChannel out(fxDT_int);
    const long blocks = heapCalls().blocks;
    fxInputChannel* channel = heldChannel();
    channel->add(&out);
    channel->remove(&out);
    channel->dec();
    EXPECT_EQ(blocks, heapCalls().blocks) << "the channel, the array and its elements";
}

TEST_F(fxInputChannelDeathTest, disconnectOfAChannelThatNobodyHoldsLeavesIt) {
    const auto disconnectTwice = [] {
        fxInputChannel channel(fxDT_int, nullptr, receiver(ignoreInt), 0);
        fxOutputChannel out(fxDT_int);
        channel.disconnect();
        channel.add(&out);
        channel.remove(&out);
        channel.disconnect();
        ::_exit(static_cast<int>(channel.count));
    };
    EXPECT_EXIT(disconnectTwice(), testing::ExitedWithCode(0), "");
}

TEST_F(fxInputChannelDeathTest, removeOfAnUnknownOutputIsFatal) {
    fxInputChannel channel(fxDT_int, nullptr, receiver(ignoreInt), 0);
    fxOutputChannel listed(fxDT_int);
    fxOutputChannel unknown(fxDT_int);
    channel.add(&listed);
    EXPECT_EXIT(channel.remove(&unknown), testing::KilledBySignal(SIGABRT),
                "^ic/oc connections busted\n$");
    channel.remove(&listed);
    EXPECT_EXIT(channel.remove(&listed), testing::KilledBySignal(SIGABRT),
                "^ic/oc connections busted\n$");
}

TEST_F(fxInputChannelDeathTest, disconnectFromAnOutputThatDoesNotKnowItIsFatal) {
    fxInputChannel channel(fxDT_int, nullptr, receiver(ignoreInt), 0);
    channel.count = 1;
    fxOutputChannel out(fxDT_int);
    channel.add(&out);
    EXPECT_EXIT(channel.disconnect(), testing::KilledBySignal(SIGABRT),
                "^ic/oc connections busted\n$");
}
