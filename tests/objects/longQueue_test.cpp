#include <unistd.h>

#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxMessageEvent.h"
#include "kelvofxds/objects/fxWiring.h"
#include "tests/support/dataFlow.h"
#include "tests/support/heapCalls.h"
#include "tests/support/inputPage.h"

// The end of an object while many events are queued that are not for it: what
// is for it goes, at a cost that the others have no part in.

namespace {

// A message of a host's own class, which counts how often it is asked for its
// channel.
class AskedEvent : public fxEvent {
public:
    explicit AskedEvent(fxInputChannel* c) : fxEvent(fxET_MessageEvent), channel(c) {}
    void deliver() override { ++delivered; }
    fxInputChannel* getChannel() override {
        ++asked;
        return channel;
    }

    static unsigned long asked;
    static unsigned int delivered;

private:
    fxInputChannel* channel;
};
unsigned long AskedEvent::asked = 0;
unsigned int AskedEvent::delivered = 0;

// What receives when the target is no object.
struct Inbox {
    FlowLog& log;
    const char* name;

    static void receive(void* target, int value) {
        const auto* self = static_cast<Inbox*>(target);
        self->log.note(std::string(self->name) + '=' + std::to_string(value));
    }
};

// Posts itself, for a channel of its own or none; then objects may end.
class PostingBase : public fxEvent {
public:
    PostingBase(fxInputChannel* itsOwn, int endings) : fxEvent(fxET_MessageEvent), own(itsOwn) {
        fx_theEventHandler->postEvent(this, 0);
        for (int i = 0; i < endings; ++i)
            const fxObj ending;
    }
    void deliver() override {}
    fxInputChannel* getChannel() override { return own; }

private:
    fxInputChannel* own;
};

class SelfPosted : public PostingBase {
public:
    SelfPosted(fxInputChannel* basesOwn, fxInputChannel* c, int endings)
        : PostingBase(basesOwn, endings), channel(c) {}
    fxInputChannel* getChannel() override { return channel; }

private:
    fxInputChannel* channel;
};

class longQueue : public DataFlowTest {
protected:
    longQueue()
        : sender(log, "sender"), other(log, "other"), elsewhere(fxDT_int, &elsewhere, nullptr, 0) {
        AskedEvent::asked = 0;
        AskedEvent::delivered = 0;
    }

    // Messages that are for nobody here.
    void post(unsigned int n, fxInputChannel* channel) {
        for (unsigned int i = 0; i < n; ++i)
            fx_theEventHandler->postEvent(new AskedEvent(channel), i % 2);
    }
    void fill() { post(500, &elsewhere); }

    // What is delivered of the nodes' values, in the end.
    std::string distributeAll() {
        std::string words = distribute();
        EXPECT_EQ(0U, queued());
        return words;
    }

    FlowNode sender;
    FlowNode other;
    fxInputChannel elsewhere;
};

using longQueueDeathTest = longQueue;

}  // namespace

// Cost.

TEST_F(longQueueDeathTest, endingObjectsLooksAtNoInputOfOthersThatOwnsItsFunction) {
    const auto endAnObject = [this] {
        InputPage page;
        fxObj owner;
        for (int i = 0; i < 50; ++i) {
            fxInputChannel* in = page.add(owner);
            for (int k = 0; k < 10; ++k)
                fx_theEventHandler->postEvent(new fxMessageEvent(in, new SpyData(k)),
                                              static_cast<unsigned char>(k % 2));
        }
        { const FlowNode entering(log); }
        FlowNode node(log, "node");
        fxInputChannel* own = fxOnInput(&node, "own", [](int) {});
        sender.connect("out", &node, "own");
        sender.connect("out", &node, "in");
        page.shut();
        sender.send(1);
        fx_theEventHandler->removeEventsFor(&node);
        fx_theEventHandler->removeMessageEvents(own);
        EXPECT_EQ(500U, queued());
        { const FlowNode ending(log); }
        page.open();
        fx_theEventHandler->removeEventsFor(&owner);
        EXPECT_EQ(0U, queued());
    };
    EXPECT_EXIT(endAnObject();
                _exit(testing::Test::HasFailure() ? 1 : 0), testing::ExitedWithCode(0), "");
}

TEST_F(longQueue, endingObjectsAsksNothingOfTheEventsOfOthers) {
    for (const unsigned int objects : {10U, 100U, 1000U}) {
        for (const unsigned int events : {100U, 1000U, 10000U}) {
            SCOPED_TRACE(testing::Message() << objects << " objects, " << events << " events");
            AskedEvent::asked = 0;
            post(events, &elsewhere);
            for (unsigned int i = 0; i < objects; ++i) {
                FlowNode node(log, "node");
                sender.connect("out", &node, "in");
                sender.send(1);
            }
            EXPECT_GE(3 * (events + objects), AskedEvent::asked) << "not for each object";
            EXPECT_EQ(events, queued());
            fx_theEventHandler->distributeEvents();
        }
    }
}

TEST_F(longQueue, eventsOfAHostsClassThatEndAskNothingOfTheOthers) {
    fxInputChannel* const channels[] = {nullptr, &elsewhere};
    for (fxInputChannel* channel : channels) {
        for (const unsigned int events : {1000U, 10000U}) {
            SCOPED_TRACE(testing::Message() << events << " events");
            AskedEvent::asked = 0;
            AskedEvent::delivered = 0;
            post(events, channel);
            fx_theEventHandler->distributeEvents();
            EXPECT_EQ(events, AskedEvent::delivered);
            EXPECT_GE(6 * events, AskedEvent::asked);
        }
    }
}

TEST_F(longQueue, flushingAnInputAsksNothingOfTheEventsOfOthers) {
    const unsigned int events = 1000, flushes = 1000;
    post(events, &elsewhere);
    for (unsigned int i = 0; i < flushes; ++i)
        other.in->flush();
    EXPECT_GE(3 * events, AskedEvent::asked);
    EXPECT_EQ(events, queued());
    fx_theEventHandler->distributeEvents();
}

TEST_F(longQueue, indexIsGoneAfterADistributionWithoutALookUp) {
    if (!heapCallsAreCounted())
        GTEST_SKIP() << "allocations are not counted in this build or under this tool";
    struct Going {
        static void again(void* target, int value) { static_cast<FlowNode*>(target)->send(value); }
    };
    other.addInput("again", fxDT_int, &other, receiver(Going::again), 0);
    other.connect("out", &other, "again");
    for (int i = 0; i < 100; ++i)
        other.send(i);
    fx_theEventHandler->distributeEvents();
    for (const bool warm : {false, true}) {
        const long blocks = heapCalls().blocks;
        { const FlowNode ending(log); }
        EXPECT_LT(blocks, heapCalls().blocks);
        for (int i = 0; i < 3; ++i)
            fx_theEventHandler->distributeEvents();
        EXPECT_EQ(100U, queued());
        if (warm) {
            EXPECT_EQ(blocks, heapCalls().blocks);
        }
    }
    other.removeInput("again");
    EXPECT_EQ(0U, queued());
}

TEST_F(longQueue, whatIsSentAndDeliveredIsNotAskedForItsChannel) {
    fill();
    fx_theEventHandler->removeEventsFor(this);
    AskedEvent::asked = 0;
    for (int i = 0; i < 100; ++i)
        fx_theEventHandler->postEvent(new AskedEvent(&elsewhere), 0);
    std::vector<std::unique_ptr<fxEvent>> delivered;
    for (int i = 0; i < 100; ++i)
        delivered.emplace_back(fx_theEventHandler->getQueue().get())->deliver();
    EXPECT_EQ(0U, AskedEvent::asked);
    distributeAll();
}

// Outcomes.

TEST_F(longQueue, messagesForAnEndedObjectAreRemovedAndTheOthersKeepTheirOrder) {
    for (const unsigned short type : {fxDT_int, fxDT_fxBool, fxDT_void}) {
        SCOPED_TRACE(type);
        auto* object = new FlowNode(log, "object", type);
        sender.connect("out", object, "in");
        sender.connect("out", &other, "in");
        sender.sendData(sender.out, new SpyData(1), fxObj::fxSendQueued);
        fill();
        sender.sendData(sender.out, new SpyData(2), fxObj::fxSendQueued);
        sender.sendData(sender.out, new SpyData(3), fxObj::fxSendUrgent);
        fill();
        delete object;
        EXPECT_EQ(1003U, queued());
        EXPECT_EQ("other=3 other=1 other=2", distributeAll());
        sender.disconnect("out", &other, "in");
    }
}

TEST_F(longQueue, whatIsSentAndPostedLaterIsFoundToo) {
    FlowNode first(log, "first");
    auto* second = new FlowNode(log, "second");
    sender.connect("out", &first, "in");
    sender.connect("out", second, "in");
    fill();
    { const FlowNode ending(log); }
    sender.send(1);
    sender.send(2, fxObj::fxSendUrgent);
    fx_theEventHandler->getQueue().append(new fxMessageEvent(second->in, new SpyData(3)));
    fx_theEventHandler->getQueue().insert(new fxMessageEvent(first.in, new SpyData(4)));
    EXPECT_EQ(506U, queued());
    delete second;
    EXPECT_EQ(503U, queued());
    first.in->flush();
    EXPECT_EQ(500U, queued());
    EXPECT_EQ("", distributeAll());
}

TEST_F(longQueue, valuesOfRemovedMessagesGoInTheOrderOfTheQueue) {
    FlowNode object(log, "object");
    sender.connect("out", &object, "in");
    const auto noting = [this](int value) {
        return new SpyData(value, [this, value] { log.note(std::to_string(value)); });
    };
    fill();
    { const FlowNode ending(log); }
    sender.sendData(sender.out, noting(1), fxObj::fxSendQueued);
    sender.sendData(sender.out, noting(2), fxObj::fxSendUrgent);
    fill();
    sender.sendData(sender.out, noting(3), fxObj::fxSendQueued);
    sender.sendData(sender.out, noting(4), fxObj::fxSendUrgent);
    log.take();
    object.in->flush();
    EXPECT_EQ("4 2 1 3", log.take());
    distributeAll();
}

TEST_F(longQueue, valuesThatGoMayRemoveAndSendAndEnd) {
    fill();
    auto* object = new FlowNode(log, "object");
    auto* second = new FlowNode(log, "second");
    sender.connect("out", object, "in");
    sender.connect("out", second, "in");
    sender.disconnect("out", second, "in");
    sender.sendData(sender.out, new SpyData(1, [&] { delete std::exchange(second, nullptr); }),
                    fxObj::fxSendQueued);
    sender.sendData(sender.out, new SpyData(2, [&] { sender.send(3); }), fxObj::fxSendQueued);
    sender.sendData(sender.out,
                    new SpyData(4,
                                [&] {
                                    fx_theEventHandler->removeEvents(
                                        [](fxEvent*, void*) -> unsigned char { return 1; },
                                        nullptr);
                                }),
                    fxObj::fxSendQueued);
    delete object;
    EXPECT_EQ(nullptr, second);
    EXPECT_EQ(0U, queued());
    EXPECT_EQ(0, SpyData::alive);
}

TEST_F(longQueue, pendingMessageOfAnEndedInputIsForgotten) {
    fill();
    FlowNode object(log, "object", fxDT_int, 1);
    sender.connect("out", &object, "in");
    sender.send(1);
    ASSERT_NE(nullptr, object.in->pending);
    fx_theEventHandler->removeEventsFor(&object);
    EXPECT_EQ(nullptr, object.in->pending);
    sender.send(2);
    sender.send(3);
    EXPECT_EQ("object=3", distributeAll());
}

// A channel's target is looked up at the time of the delivery, so the end of an
// object is about the channels that lead to it then.

TEST_F(longQueue, targetThatTookAChannelOverEndsItsMessages) {
    for (const bool converting : {false, true}) {
        for (const fxObj::fxSendFlags flags : {fxObj::fxSendQueued, fxObj::fxSendUrgent}) {
            SCOPED_TRACE(testing::Message() << flags << (converting ? ", converting" : ""));
            FlowNode object(log, "object", converting ? fxDT_fxBool : fxDT_int);
            auto* heir = new FlowNode(log, "heir");
            sender.connect("out", &object, "in");
            fill();
            { const FlowNode ending(log); }
            sender.send(1, flags);
            object.in->target = heir;
            delete heir;
            EXPECT_EQ("", distribute()) << "not delivered to what is no more";
            object.in->target = &object;
            sender.send(2);
            EXPECT_EQ("object=2", distributeAll());
        }
    }
}

TEST_F(longQueue, targetThatGaveAChannelAwayLeavesItsMessages) {
    FlowNode heir(log, "heir");
    fxObj owner;
    auto* target = new FlowNode(log, "target");
    fxInputChannel* in = owner.addInput("in", fxDT_int, target, receiver(FlowNode::receiveInt), 0);
    sender.connect("out", &owner, "in");
    fill();
    { const FlowNode ending(log); }
    sender.send(1);
    in->target = &heir;
    delete target;
    EXPECT_EQ("heir=1", distributeAll());
}

TEST_F(longQueue, whatAnHeirHasTakenOverGoesWithItInTheOrderOfTheQueue) {
    fxObj owner;
    auto* target = new FlowNode(log, "target");
    auto* heir = new FlowNode(log, "heir");
    const auto noting = [this](int value) {
        return new SpyData(value, [this, value] { log.note(std::to_string(value)); });
    };
    fxInputChannel* in = owner.addInput("in", fxDT_int, target, receiver(FlowNode::receiveInt), 0);
    fill();
    { const FlowNode ending(log); }
    for (const int value : {0, 1, 2}) {
        fxObj* object = heir;
        if (value == 1)
            object = &owner;
        sender.connect("out", object, "in");
        sender.sendData(sender.out, noting(value), fxObj::fxSendQueued);
        sender.disconnect("out", object, "in");
    }
    in->target = heir;
    delete target;
    log.take();
    delete heir;
    EXPECT_EQ("0 1 2", log.take());
    EXPECT_EQ("", distributeAll());
}

TEST_F(longQueue, heirsThatEndInNumbersEndTheirMessages) {
    fxObj owner;
    fill();
    { const FlowNode ending(log); }
    for (int i = 0; i < 2000; ++i) {
        auto* heir = new FlowNode(log, "heir");
        fxInputChannel* in =
            owner.addInput("in", fxDT_int, this, receiver(FlowNode::receiveInt), 0);
        sender.connect("out", &owner, "in");
        sender.sendData(sender.out, new SpyData(i), fxObj::fxSendQueued);
        in->target = heir;
        sender.disconnect("out", &owner, "in");
        delete heir;
    }
    EXPECT_EQ("", distribute());
    EXPECT_EQ("", distributeAll());
    EXPECT_EQ(0, SpyData::alive);
}

TEST_F(longQueue, ownAndRetargetedAndConvertedInputsGoTogetherInTheOrderOfTheQueue) {
    FlowNode holder(log, "holder");
    auto* object = new fxObj;
    const auto ignored = [](auto) {};
    fxOnInput(object, "first", [=](int n) { ignored(n); });
    fxOnInput(object, "text", [=](const char* t) { ignored(t); });
    fxOnInput(object, "last", [=](int n) { ignored(n); });
    const struct {
        fxObj* to;
        const char* in;
    } receivers[] = {
        {object, "last"}, {&holder, "in"}, {object, "text"}, {object, "first"}, {&other, "in"}};
    const auto noting = [this](int value) {
        return new SpyData(value, [this, value] { log.note(std::to_string(value)); });
    };
    for (const bool quiet : {false, true}) {
        fill();
        { const FlowNode ending(log); }
        for (int i = 0; i < 10; ++i) {
            const auto& receiver = receivers[i % 5];
            sender.connect("out", receiver.to, receiver.in);
            if (quiet)
                sender.send(i);
            else
                sender.sendData(sender.out, noting(i), fxObj::fxSendQueued);
            sender.disconnect("out", receiver.to, receiver.in);
        }
        holder.in->target = object;
        EXPECT_EQ(510U, queued());
        log.take();
        fx_theEventHandler->removeEventsFor(object);
        EXPECT_EQ(quiet ? "" : "0 1 2 3 5 6 7 8", log.take());
        EXPECT_EQ(502U, queued());
        EXPECT_EQ(quiet ? "other=4 other=9" : "other=4 4 other=9 9", distributeAll());
        holder.in->target = &holder;
    }
    delete object;
}

TEST_F(longQueue, inputThatIsBeingRemovedLeavesWhatItsOwnerDoesNotReceive) {
    auto* object = new fxObj;
    fxInputChannel* in = fxOnInput(object, "in", [](int) {});
    sender.connect("out", object, "in");
    fill();
    { const FlowNode ending(log); }
    ++in->count;
    sender.sendData(sender.out, new SpyData(1, [&] { delete std::exchange(object, nullptr); }),
                    fxObj::fxSendQueued);
    sender.sendData(sender.out, new SpyData(2), fxObj::fxSendQueued);
    object->removeInput("in");
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(500U, queued());
    EXPECT_EQ(0, SpyData::alive);
    fx_theEventHandler->postEvent(new fxMessageEvent(in, new SpyData(3)), 0);
    { const FlowNode ending(log); }
    EXPECT_EQ(501U, queued());
    fx_theEventHandler->removeEventsFor(nullptr);
    EXPECT_EQ(500U, queued()) << "nobody is its receiver";
    in->dec();
    distributeAll();
}

// Without a look at a channel, nobody can tell whether it was retargeted before
// or after the end of the object whose address its target is.
TEST_F(longQueue, targetWhereAnEndedObjectWasGetsItsMessages) {
    alignas(FlowNode) unsigned char place[sizeof(FlowNode)];
    for (const bool indexed : {false, true}) {
        SCOPED_TRACE(indexed);
        FlowNode holder(log, "holder");
        sender.connect("out", &holder, "in");
        fill();
        if (indexed)
            const FlowNode ending(log);
        sender.send(1);
        (new (place) FlowNode(log, "old"))->~FlowNode();
        auto* heir = new (place) FlowNode(log, "heir");
        holder.in->target = heir;
        EXPECT_EQ("heir=1", distributeAll());
        heir->~FlowNode();
    }
}

TEST_F(longQueue, messagesForATargetThatIsNoObjectAreFoundAfterARetargeting) {
    Inbox first{log, "first"};
    Inbox second{log, "second"};
    fxObj owner;
    fxInputChannel* in = owner.addInput("in", fxDT_int, &first, receiver(Inbox::receive), 0);
    sender.connect("out", &owner, "in");
    fill();
    { const FlowNode ending(log); }
    sender.send(1);
    in->target = &second;
    fx_theEventHandler->removeEventsFor(&second);
    EXPECT_EQ(500U, queued());
    sender.send(2);
    fx_theEventHandler->removeEventsFor(&first);
    EXPECT_EQ(501U, queued());
    fx_theEventHandler->removeEventsFor(&second);
    EXPECT_EQ("", distributeAll());
}

// A base that posts itself is no message yet, or one for another channel.
TEST_F(longQueue, eventPostedByItsBaseIsWhatItBecomes) {
    fxInputChannel* const channels[] = {nullptr, &elsewhere};
    for (fxInputChannel* basesOwn : channels) {
        for (const int endings : {-1, 0, 1, 5}) {
            SCOPED_TRACE(testing::Message() << (basesOwn ? "elsewhere, " : "") << endings);
            FlowNode* object = new FlowNode(log, "object");
            fill();
            if (endings >= 0)
                const FlowNode ending(log);
            new SelfPosted(basesOwn, object->in, endings);
            EXPECT_EQ(501U, queued());
            delete object;
            EXPECT_EQ(500U, queued());
            new SelfPosted(basesOwn, other.in, endings);
            new SelfPosted(basesOwn, sender.in, endings);
            other.in->flush();
            EXPECT_EQ(501U, queued());
            sender.in->flush();
            EXPECT_EQ(500U, queued());
            distributeAll();
        }
    }
}

TEST_F(longQueue, valuesThatGoMayDistributeTheRest) {
    auto* object = new FlowNode(log, "object");
    sender.connect("out", object, "in");
    fill();
    for (int i = 0; i < 3; ++i)
        sender.sendData(sender.out, new SpyData(i, [] { fx_theEventHandler->distributeEvents(); }),
                        fxObj::fxSendQueued);
    fill();
    delete object;
    EXPECT_EQ(0U, queued());
    EXPECT_EQ(0, SpyData::alive);
}

TEST_F(longQueue, manyMessagesOfManyInputsGoInTheOrderOfTheQueue) {
    const int n = 300;
    auto* object = new FlowNode(log, "object");
    std::string expected;
    std::vector<std::unique_ptr<FlowNode>> others;
    for (int i = 0; i < n; ++i) {
        others.push_back(std::make_unique<FlowNode>(log, "node"));
        FlowNode* const receivers[] = {others.back().get(), object};
        for (FlowNode* node : receivers) {
            FlowNode from(log);
            from.connect("out", node, "in");
            from.sendData(from.out, new SpyData(i, [this, i] { log.note(std::to_string(i)); }),
                          fxObj::fxSendQueued);
        }
        if (i % 10 == 0)
            object->in =
                object->addInput("in", fxDT_int, object, receiver(FlowNode::receiveInt), 0);
        expected += (i == 0 ? "" : " ") + std::to_string(i);
    }
    log.take();
    delete object;
    EXPECT_EQ(expected, log.take());
    EXPECT_EQ(static_cast<unsigned int>(n), queued());
    others.clear();
    EXPECT_EQ(0U, queued());
}

// Queues of a host's own.

TEST_F(longQueue, anotherHandlersQueueIsApart) {
    fxEventHandler second;
    fill();
    for (int i = 0; i < 500; ++i) {
        second.postEvent(new fxMessageEvent(other.in, new SpyData(i)), 0);
        sender.send(0);
    }
    sender.connect("out", &other, "in");
    for (int i = 0; i < 100; ++i)
        sender.send(i);
    fx_theEventHandler->removeMessageEvents(other.in);
    EXPECT_EQ(500U, second.numberOfEvents());
    EXPECT_EQ(500U, queued());
    second.removeMessageEvents(sender.in);
    EXPECT_EQ(500U, second.numberOfEvents());
    second.removeEventsFor(&other);
    EXPECT_EQ(0U, second.numberOfEvents());
    EXPECT_EQ("", distributeAll());
}

TEST_F(longQueue, queueMayGoBeforeItsEventsAndAnotherTakeItsPlace) {
    const unsigned int n = 100;
    std::vector<std::unique_ptr<fxEvent>> left;
    alignas(fxEventHandler) unsigned char place[sizeof(fxEventHandler)];
    auto* first = new (place) fxEventHandler;
    for (unsigned int i = 0; i < n; ++i) {
        left.emplace_back(new AskedEvent(&elsewhere));
        first->postEvent(left.back().get(), 0);
    }
    first->removeEventsFor(this);
    first->~fxEventHandler();

    auto* second = new (place) fxEventHandler;
    for (unsigned int i = 0; i < n; ++i)
        second->postEvent(new AskedEvent(&elsewhere), 0);
    EXPECT_EQ(n, second->numberOfEvents());
    second->removeMessageEvents(&elsewhere);
    EXPECT_EQ(0U, second->numberOfEvents());
    second->~fxEventHandler();
}
