#include "kelvofxds/objects/fxEvent.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxMessageEvent.h"
#include "kelvofxds/objects/fxSequencer.h"
#include "kelvofxds/values/fxConverter.h"
#include "kelvofxds/values/fxProperty.h"
#include "tests/support/dataFlow.h"
#include "tests/support/vtable.h"

#pragma GCC diagnostic ignored "-Winvalid-offsetof"

struct fxEventLayout {
    static_assert(offsetof(fxEvent, next) == sizeof(fxObj), "first behind the base");
    static_assert(offsetof(fxEvent, prev) == 16, "after next");
    static_assert(offsetof(fxEvent, type) == 20, "after prev");
    static_assert(offsetof(fxEvent, sequence) == 24, "after type");
    static_assert(sizeof(fxEvent) == 28, "nothing else");
    static_assert(offsetof(fxMessageEvent, channel) == sizeof(fxEvent), "first behind the base");
    static_assert(offsetof(fxMessageEvent, data) == 32, "after channel");
    static_assert(sizeof(fxMessageEvent) == 36, "nothing else");

    static const fxEvent* next(const fxEvent& e) { return e.next; }
    static const fxEvent* prev(const fxEvent& e) { return e.prev; }
    static const fxData* data(const fxMessageEvent& e) { return e.data; }
};

namespace {

// Read before the first test can make an event.
const unsigned long sequenceAtLoad = fxEvent::nextSequenceNumber;

class PlainEvent : public fxEvent {
public:
    explicit PlainEvent(unsigned long typeCode) : fxEvent(typeCode) {}
    void deliver() override {}
};

std::string dumped(fxEvent& event) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* memory = ::open_memstream(&text, &size);
    event.dump(memory);
    std::fclose(memory);
    std::string result(text, size);
    std::free(text);
    return result;
}

// Notes what a receiver sees of the message that is delivered to it.
struct Observer {
    fxInputChannel* channel = nullptr;
    const fxData* data = nullptr;
    int value = 0;
    unsigned int calls = 0;
    const void* pendingThen = nullptr;
    unsigned int channelCountThen = 0;
    unsigned int dataCountThen = 0;

    static void receive(void* target, int v) {
        auto* self = static_cast<Observer*>(target);
        self->value = v;
        ++self->calls;
        self->pendingThen = self->channel->pending;
        self->channelCountThen = self->channel->count;
        self->dataCountThen = self->data->count;
    }
};

class fxEventTest : public DataFlowTest {
protected:
    fxEventTest() : channel(fxDT_int, &observer, receiver(Observer::receive), 0) {
        channel.count = 1;
        observer.channel = &channel;
    }

    SpyData* observedData(int value) {
        auto* data = new SpyData(value);
        observer.data = data;
        return data;
    }

    Observer observer;
    fxInputChannel channel;
};

}  // namespace

TEST_F(fxEventTest, slotsFollowThoseOfTheBase) {
    EXPECT_EQ(10U, vtableWord(&fxEvent::deliver));
    EXPECT_EQ(11U, vtableWord(&fxEvent::dump));
    EXPECT_EQ(12U, vtableWord(&fxEvent::getChannel));
    EXPECT_EQ(7U, vtableWord(&fxEvent::connect));
}

TEST_F(fxEventTest, typeCodesAreDrawnAtStartUp) {
    EXPECT_EQ(0UL, fxET_Unknown);
    EXPECT_EQ(1UL, fxET_MessageEvent);
    EXPECT_LT(1U, (*fx_nextEventType)()) << "the host's own";
}

TEST_F(fxEventTest, sequenceNumbersCountFromOne) {
    EXPECT_EQ(0UL, sequenceAtLoad) << "so the first event has 1";
    const unsigned long last = fxEvent::nextSequenceNumber;
    const PlainEvent first(5);
    EXPECT_EQ(last + 1, first.getSequence());
    EXPECT_EQ(last + 1, fxEvent::nextSequenceNumber);
    const fxMessageEvent message(&channel, observedData(1));
    EXPECT_EQ(last + 2, message.getSequence());
    const PlainEvent third(fxET_Unknown);
    EXPECT_EQ(last + 3, third.getSequence());
    EXPECT_EQ(last + 3, fxEvent::nextSequenceNumber);
}

TEST_F(fxEventTest, newEventIsNotQueued) {
    PlainEvent event(77);
    EXPECT_EQ(77UL, event.getType());
    EXPECT_EQ(nullptr, fxEventLayout::next(event));
    EXPECT_EQ(nullptr, fxEventLayout::prev(event));
    EXPECT_EQ(0, event.count);
    EXPECT_EQ(0U, event.getNumberOfProperties());
    EXPECT_EQ(nullptr, event.getChannel());
}

TEST_F(fxEventTest, copySharesTypeAndSequenceOnly) {
    PlainEvent event(77);
    event.count = 4;
    event.setProperty(new fxProperty(static_cast<unsigned short>(1), 1L));
    PlainEvent neighbour(1);
    fxEventQueue queue;
    queue.append(&event);
    queue.append(&neighbour);
    queue.insert(new PlainEvent(2));
    ASSERT_NE(nullptr, fxEventLayout::next(event));
    ASSERT_NE(nullptr, fxEventLayout::prev(event));
    const unsigned long last = fxEvent::nextSequenceNumber;

    const PlainEvent copy(event);
    EXPECT_EQ(77UL, copy.getType());
    EXPECT_EQ(event.getSequence(), copy.getSequence());
    EXPECT_EQ(last, fxEvent::nextSequenceNumber) << "a copy draws no number";
    EXPECT_EQ(nullptr, fxEventLayout::next(copy));
    EXPECT_EQ(nullptr, fxEventLayout::prev(copy));
    EXPECT_EQ(0, copy.count);
    EXPECT_EQ(0U, copy.getNumberOfProperties());
    EXPECT_EQ(3U, queue.getCount());
    delete queue.get();
    queue.get();
    queue.get();
}

TEST_F(fxEventTest, dumpPrintsSequenceAndType) {
    const struct {
        unsigned long sequence, type;
        const char* text;
    } rows[] = {{1, 0, "Event: seq=1 type=0\n"},
                {12345, 77, "Event: seq=12345 type=77\n"},
                {0x7FFFFFFF, 0x7FFFFFFF, "Event: seq=2147483647 type=2147483647\n"},
                {0x80000000, 0xFFFFFFFF, "Event: seq=-2147483648 type=-1\n"}};
    const unsigned long last = fxEvent::nextSequenceNumber;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        fxEvent::nextSequenceNumber = row.sequence - 1;
        PlainEvent event(row.type);
        EXPECT_EQ(row.sequence, event.getSequence());
        EXPECT_EQ(row.text, dumped(event));
    }
    fxEvent::nextSequenceNumber = last;
}

TEST_F(fxEventTest, messageDumpsTheSameText) {
    fxMessageEvent message(&channel, observedData(1));
    EXPECT_EQ("Event: seq=" + std::to_string(message.getSequence()) + " type=1\n", dumped(message));
}

// Messages.

TEST_F(fxEventTest, messageHoldsAReferenceOnChannelAndData) {
    SpyData* data = observedData(3);
    auto message = std::make_unique<fxMessageEvent>(&channel, data);
    EXPECT_EQ(fxET_MessageEvent, message->getType());
    EXPECT_EQ(&channel, message->getChannel());
    EXPECT_EQ(data, fxEventLayout::data(*message));
    EXPECT_EQ(2U, channel.count);
    EXPECT_EQ(1U, data->count);
    EXPECT_EQ(nullptr, channel.pending) << "posting sets it, not the message";

    auto second = std::make_unique<fxMessageEvent>(&channel, data);
    EXPECT_EQ(3U, channel.count);
    EXPECT_EQ(2U, data->count);
    message.reset();
    EXPECT_EQ(2U, channel.count);
    EXPECT_EQ(1U, data->count);
    EXPECT_EQ(1, SpyData::alive);
    second.reset();
    EXPECT_EQ(1U, channel.count);
    EXPECT_EQ(0, SpyData::alive);
}

TEST_F(fxEventTest, messageLeavesDataOfOtherHolders) {
    SpyData* data = observedData(3);
    data->count = 1;
    { const fxMessageEvent message(&channel, data); }
    EXPECT_EQ(1U, data->count);
    EXPECT_EQ(1, SpyData::alive);
    delete data;
}

TEST_F(fxEventTest, lastMessageFreesTheChannel) {
    auto* own = new fxInputChannel(fxDT_fxBool, nullptr, nullptr, 0);
    fxConverter* link = fxConverter::findConverter(fxDT_int, fxDT_fxBool);
    fxConverter::splice(link, own);
    own->count += 1;
    {
        const fxMessageEvent message(link, new SpyData(1));
        EXPECT_EQ(1U, link->count);
        EXPECT_EQ(2U, own->count);
    }
    EXPECT_EQ(1U, own->count) << "the link is gone";
    { const fxMessageEvent message(own, new SpyData(1)); }
    EXPECT_EQ(1U, own->count);
    own->count = 0;
    { const fxMessageEvent message(own, new SpyData(1)); }  // frees it
}

TEST_F(fxEventTest, deliverCallsTheFunctionWithTheMessageStillHolding) {
    fxMessageEvent message(&channel, observedData(42));
    message.deliver();
    EXPECT_EQ(1U, observer.calls);
    EXPECT_EQ(42, observer.value);
    EXPECT_EQ(2U, observer.channelCountThen);
    EXPECT_EQ(1U, observer.dataCountThen);
    EXPECT_EQ(2U, channel.count);
}

TEST_F(fxEventTest, deliverClearsPendingFirst) {
    fxMessageEvent message(&channel, observedData(1));
    fxMessageEvent other(&channel, new SpyData(2));
    for (fxMessageEvent* pending : {&message, &other}) {
        channel.pending = pending;
        observer.pendingThen = &message;
        message.deliver();
        EXPECT_EQ(nullptr, observer.pendingThen);
        EXPECT_EQ(nullptr, channel.pending);
    }
}

TEST_F(fxEventTest, deliverThroughALinkConverts) {
    fxConverter* link = fxConverter::findConverter(fxDT_float, fxDT_int);
    fxConverter::splice(link, &channel);
    auto* data = new fxFloatData(-7.75F);
    data->count = 1;
    observer.data = data;
    {
        fxMessageEvent message(link, data);
        EXPECT_EQ(link, message.getChannel());
        message.deliver();
        EXPECT_EQ(-7, observer.value);
    }
    EXPECT_EQ(1U, channel.count);
    delete data;
}

TEST_F(fxEventTest, eventsHaveTheNameAndRecordOfTheBase) {
    fxMessageEvent message(&channel, observedData(1));
    EXPECT_STREQ("fxXDRObj", message.className());
    EXPECT_EQ(&fxXDRObj_type, &message.getTypeObj());
}
