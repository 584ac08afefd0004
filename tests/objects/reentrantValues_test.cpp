#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxWiring.h"
#include "kelvofxds/values/fxProperty.h"
#include "tests/support/dataFlow.h"

// What values, when they go with the last message that has them, and predicates
// may do in the middle of an operation.

namespace {

unsigned char always(fxEvent*, void*) { return 1; }

void removeAllEvents() { fx_theEventHandler->removeEvents(always, nullptr); }

using Action = std::function<void()>;

class reentrantValues : public DataFlowTest {
protected:
    reentrantValues()
        : sender(new FlowNode(log, "sender")),
          a(new FlowNode(log, "a")),
          b(new FlowNode(log, "b")) {}
    ~reentrantValues() override {
        delete sender;
        delete a;
        delete b;
    }

    static void destroy(FlowNode*& node) { delete std::exchange(node, nullptr); }

    void queue(int value, Action atEnd = nullptr) const {
        sender->sendData(sender->out, new SpyData(value, std::move(atEnd)), fxObj::fxSendQueued);
    }
    void connect(FlowNode* node) const { sender->connect("out", node, "in"); }
    NoteEvent* post(const char* name) {
        auto* event = new NoteEvent(log, name);
        fx_theEventHandler->postEvent(event, 0);
        return event;
    }

    FlowNode* sender;
    FlowNode* a;
    FlowNode* b;
};

// With an input "in" of node a that keeps the latest message only.
class reentrantReplacement : public reentrantValues {
protected:
    reentrantReplacement() {
        delete a;
        a = new FlowNode(log, "a", fxDT_int, 1);
        connect(a);
    }
};

using reentrantPredicates = reentrantValues;

}  // namespace

// Values that go after their delivery.

TEST_F(reentrantValues, deliveredValueRemovesTheOtherEvents) {
    connect(a);
    queue(1, removeAllEvents);
    queue(2);
    post("event");
    EXPECT_EQ("a=1 ~event", distribute());
    EXPECT_EQ(0U, queued());
}

TEST_F(reentrantValues, deliveredValueDeletesObjects) {
    connect(a);
    connect(b);
    queue(1, [this] {
        destroy(sender);
        destroy(a);
    });
    queue(2);
    EXPECT_EQ("a=1 b=1 b=2", distribute());
}

TEST_F(reentrantValues, deliveredValueSendsAgain) {
    connect(a);
    queue(1, [this] { queue(2); });
    EXPECT_EQ("a=1", distribute());
    EXPECT_EQ("a=2", distribute());
}

TEST_F(reentrantValues, valueSentAtOnceDeletesEverything) {
    connect(a);
    connect(b);
    sender->sendData(sender->out,
                     new SpyData(1,
                                 [this] {
                                     destroy(sender);
                                     destroy(a);
                                     destroy(b);
                                 }),
                     fxObj::fxSendNow);
    EXPECT_EQ("a=1 b=1", log.take());
}

TEST_F(reentrantValues, valueSentToNobodyDeletesTheSender) {
    queue(1, [this] { destroy(sender); });
    EXPECT_EQ(nullptr, sender);
}

// Values that go because their message is removed.

TEST_F(reentrantValues, flushedValueRemovesTheOtherEvents) {
    connect(a);
    queue(1, removeAllEvents);
    queue(2);
    post("event");
    queue(3);
    a->in->flush();
    EXPECT_EQ(0U, queued());
    EXPECT_EQ(0, SpyData::alive);
    EXPECT_EQ("~event", log.take());
}

TEST_F(reentrantValues, flushedValueDisconnects) {
    connect(a);
    queue(1, [this] { sender->disconnect("out", a, "in"); });
    queue(2);
    a->in->flush();
    EXPECT_EQ(0U, queued());
    EXPECT_EQ(1U, a->in->count);
}

TEST_F(reentrantValues, flushedValueEndsTheInput) {
    const std::function<void()> ends[] = {[this] { a->removeInput("in"); }, [this] { destroy(a); }};
    for (const auto& end : ends) {
        SCOPED_TRACE(&end - ends);
        destroy(a);
        a = new FlowNode(log, "a");
        connect(a);
        queue(1, end);
        queue(2);
        a->in->flush();
        EXPECT_EQ("", distribute());
        EXPECT_EQ(0U, sender->out->getNumberOfConnections());
    }
}

TEST_F(reentrantValues, flushedValueDeletesTheSender) {
    connect(a);
    queue(1, [this] { destroy(sender); });
    queue(2);
    a->in->flush();
    EXPECT_EQ(0U, queued());
    EXPECT_EQ(1U, a->in->count);
}

TEST_F(reentrantValues, removedValueRemovesItsNeighbours) {
    // Of five events the third is removed; with it go the ones listed.
    const struct {
        std::vector<unsigned int> gone;
        const char* left;
    } rows[] = {{{1}, "a=0 a=3 a=4"}, {{3}, "a=0 a=1 a=4"}, {{1, 3}, "a=0 a=4"},
                {{0, 1}, "a=3 a=4"},  {{3, 4}, "a=0 a=1"},  {{4, 3, 1, 0}, ""},
                {{0}, "a=1 a=3 a=4"}, {{4}, "a=0 a=1 a=3"}};
    connect(a);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.left);
        std::vector<fxEvent*> events;
        for (int i = 0; i < 5; ++i) {
            queue(i, i != 2 ? Action() : Action([&] {
                      for (unsigned int each : row.gone)
                          fx_theEventHandler->getQueue().remove(events[each]);
                  }));
        }
        events = queuedEvents();
        fx_theEventHandler->removeEvents(
            [](fxEvent* e, void* third) -> unsigned char { return e == third; }, events[2]);
        EXPECT_EQ(row.left, distribute());
        EXPECT_EQ(0, SpyData::alive);
    }
}

TEST_F(reentrantValues, valueDisconnectsWhileItsInputIsRemoved) {
    connect(a);
    connect(b);
    queue(1);
    sender->disconnect("out", b, "in");
    queue(2, [this] { sender->disconnect("out", a, "in"); });
    a->removeInput("in");
    EXPECT_EQ(0U, sender->out->getNumberOfConnections());
    EXPECT_EQ("b=1", distribute());
}

TEST_F(reentrantValues, valueRemovesTheInputThatIsBeingRemoved) {
    connect(a);
    queue(1, [this] { a->removeInput("in"); });
    queue(2);
    a->removeInput("in");
    EXPECT_EQ(0U, sender->out->getNumberOfConnections());
    EXPECT_EQ(0U, queued());
    a->in = a->addInput("in", fxDT_int, a, receiver(FlowNode::receiveInt), 0);
    connect(a);
    queue(3);
    EXPECT_EQ("a=3", distribute());
}

TEST_F(reentrantValues, valueAddsTheInputAgainThatIsBeingRemoved) {
    connect(a);
    queue(1, [this] { a->in = a->addInput("in", fxDT_int, a, receiver(FlowNode::receiveInt), 0); });
    a->removeInput("in");
    EXPECT_EQ(0U, sender->out->getNumberOfConnections());
    EXPECT_EQ(0U, queued());
    connect(a);
    queue(2);
    EXPECT_EQ("a=2", distribute()) << "the new input stays";
}

TEST_F(reentrantValues, valueDisconnectsWhileItsReceiverIsDestroyed) {
    connect(a);
    connect(b);
    queue(1);
    a->in->flush();
    sender->disconnect("out", b, "in");
    queue(2, [this] { sender->disconnect("out", a, "in"); });
    delete a;
    a = nullptr;
    EXPECT_EQ(0U, sender->out->getNumberOfConnections());
    EXPECT_EQ("b=1", distribute());
}

TEST_F(reentrantValues, valueDisconnectsWhileTheOwnerOfItsInputIsDestroyed) {
    auto* owner = new fxObj;
    owner->addOutput("out", fxDT_int);
    owner->addInput("in", fxDT_int, a, receiver(FlowNode::receiveInt), 0);
    sender->connect("out", owner, "in");
    queue(1, [&] {
        sender->disconnect("out", owner, "in");
        owner->disconnect("out", b, "in");
    });
    delete owner;
    EXPECT_EQ(0U, queued());
    EXPECT_EQ(0U, sender->out->getNumberOfConnections());
}

TEST_F(reentrantValues, valueSendsToTheReceiverThatIsBeingDestroyed) {
    for (const unsigned short type : {fxDT_int, fxDT_fxBool}) {
        SCOPED_TRACE(type);
        auto* object = new FlowNode(log, "object", type);
        connect(object);
        queue(1, [this] { queue(2, [this] { queue(3); }); });
        delete object;
        EXPECT_EQ(0U, queued());
        EXPECT_EQ(0U, sender->out->getNumberOfConnections());
    }
}

// What its class has of it has gone then.
TEST_F(reentrantValues, receiverThatIsBeingDestroyedIsNotCalledAnyMore) {
    for (const unsigned int kind : {0U, 1U, 2U, 3U}) {
        SCOPED_TRACE(kind);
        const std::unique_ptr<FlowNode> keeper(sender);
        auto* object = new FlowNode(log, "object", kind == 1 ? fxDT_fxBool : fxDT_int);
        if (kind == 2)
            fxOnInput(object, "in", [this](int) { log.note("lambda"); });
        if (kind == 3)
            fxOnInput(object, "in", [this](bool) { log.note("lambda"); });
        sender = new FlowNode(log, "sender");
        connect(object);
        const Action sendNow = [this] { sender->send(3, fxObj::fxSendNow); };
        queue(1, [&] {
            sendNow();
            queue(2, sendNow);
        });
        object->setProperty(new fxProperty(60000, static_cast<fxData*>(new SpyData(1, sendNow))));
        object->setProperty(new fxProperty(0, static_cast<fxData*>(new SpyData(1, sendNow))));
        delete object;
        EXPECT_EQ("", log.take());
        EXPECT_EQ(0U, sender->out->getNumberOfConnections());
        EXPECT_EQ("", distribute());
    }
}

TEST_F(reentrantValues, valueDeletesTheSenderWhileItsReceiverIsDestroyed) {
    connect(a);
    queue(1, [this] { destroy(sender); });
    destroy(a);
    EXPECT_EQ(nullptr, sender);
    EXPECT_EQ(0U, queued());
}

// Values that go because a newer message replaces theirs.

TEST_F(reentrantReplacement, replacedValueDisconnects) {
    queue(1, [this] { sender->disconnect("out", a, "in"); });
    connect(b);
    queue(2);
    EXPECT_EQ("b=2", distribute());
    EXPECT_EQ(nullptr, a->in->pending);
    EXPECT_EQ(1U, a->in->count);
}

TEST_F(reentrantReplacement, replacedValueDisconnectsTheOthers) {
    queue(1, [this] {
        sender->disconnect("out", b, "in");
        connect(b);
    });
    queue(2);
    EXPECT_EQ("a=2", distribute()) << "b was connected while 2 was sent";
    queue(3, [this] { sender->disconnect("out", b, "in"); });
    b->in->flush();
    queue(4);
    EXPECT_EQ("a=4", distribute());
}

TEST_F(reentrantReplacement, replacedValueDeletesTheReceiver) {
    queue(1, [this] { destroy(a); });
    connect(b);
    queue(2);
    EXPECT_EQ("b=2", distribute());
}

TEST_F(reentrantReplacement, replacedValueDeletesTheSender) {
    queue(1, [this] { destroy(sender); });
    connect(b);
    queue(2);
    EXPECT_EQ("", distribute());
    EXPECT_EQ(1U, a->in->count);
    EXPECT_EQ(1U, b->in->count);
    EXPECT_EQ(0, SpyData::alive);
}

TEST_F(reentrantReplacement, replacedValueRemovesWhatHasJustBeenPosted) {
    sender->disconnect("out", a, "in");
    connect(b);
    connect(a);
    sender->disconnect("out", b, "in");
    queue(1, removeAllEvents);
    sender->disconnect("out", a, "in");
    connect(b);
    connect(a);
    queue(2);
    EXPECT_EQ("a=2", distribute()) << "b's message was posted before 1 went";
}

TEST_F(reentrantReplacement, replacedValueSendsAgain) {
    for (const fxObj::fxSendFlags flags : {fxObj::fxSendQueued, fxObj::fxSendUrgent}) {
        SCOPED_TRACE(flags);
        queue(1, [this] { queue(2); });
        sender->sendData(sender->out, new SpyData(3), flags);
        EXPECT_EQ(1U, queued()) << "at most one message is kept";
        EXPECT_EQ("a=3", distribute());
        EXPECT_EQ(nullptr, a->in->pending);
    }
}

// Predicates.

TEST_F(reentrantPredicates, predicateRemovesEvents) {
    // Asked about the second of four events, it removes those listed.
    const struct {
        std::vector<unsigned int> gone;
        unsigned char answer;
        const char* asked;
        const char* left;
    } rows[] = {{{1}, 0, "0123", "023"},   {{1}, 1, "0123", "023"},     {{0}, 0, "0123", "123"},
                {{0}, 1, "0123", "23"},    {{2}, 0, "013", "013"},      {{2}, 1, "013", "03"},
                {{3}, 0, "012", "012"},    {{2, 3}, 0, "01", "01"},     {{0, 1, 2}, 0, "013", "3"},
                {{1, 2, 3}, 1, "01", "0"}, {{3, 2, 1, 0}, 1, "01", ""}, {{}, 1, "0123", "023"}};
    struct Asked {
        std::vector<fxEvent*> events;
        const std::vector<unsigned int>* gone;
        unsigned char answer;
        std::string asked;

        static unsigned char ask(fxEvent* e, void* arg) {
            auto* self = static_cast<Asked*>(arg);
            self->asked += static_cast<NoteEvent*>(e)->name;
            if (e != self->events[1])
                return 0;
            for (unsigned int each : *self->gone)
                fx_theEventHandler->getQueue().remove(self->events[each]);
            return self->answer;
        }
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.asked << ' ' << row.left << ' ' << +row.answer);
        Asked asked = {{}, &row.gone, row.answer, ""};
        for (const char* name : {"0", "1", "2", "3"})
            asked.events.push_back(post(name));
        fx_theEventHandler->removeEvents(Asked::ask, &asked);
        EXPECT_EQ(row.asked, asked.asked);
        std::string left;
        for (fxEvent* e : queuedEvents())
            left += static_cast<NoteEvent*>(e)->name;
        EXPECT_EQ(row.left, left);
        removeAllEvents();
    }
}

TEST_F(reentrantPredicates, predicatePostsEvents) {
    struct Asked {
        FlowLog& log;
        unsigned int asked = 0;

        static unsigned char ask(fxEvent*, void* arg) {
            auto* self = static_cast<Asked*>(arg);
            for (const bool atFront : {false, true}) {
                if (self->asked < 2)
                    fx_theEventHandler->postEvent(new NoteEvent(self->log, "more"), atFront);
            }
            ++self->asked;
            return 0;
        }
    };
    Asked asked{log};
    post("single");
    fx_theEventHandler->removeEvents(Asked::ask, &asked);
    EXPECT_EQ(1U, asked.asked) << "there was no next one when it was asked";
    EXPECT_EQ(3U, queued());
    removeAllEvents();

    asked.asked = 0;
    post("first");
    post("second");
    fx_theEventHandler->removeEvents(Asked::ask, &asked);
    EXPECT_EQ(4U, asked.asked) << "also about the two posted at the tail, before it was reached";
    EXPECT_EQ(6U, queued());
    removeAllEvents();
}

TEST_F(reentrantPredicates, predicateDistributesEvents) {
    const auto distributeOnce = [](fxEvent*, void*) -> unsigned char {
        fx_theEventHandler->distributeEvents();
        return 1;
    };
    for (const char* name : {"0", "1", "2"})
        post(name);
    log.take();
    fx_theEventHandler->removeEvents(distributeOnce, nullptr);
    EXPECT_EQ("0 ~0 1 ~1 2 ~2", log.take());
    EXPECT_EQ(0U, queued());
}
