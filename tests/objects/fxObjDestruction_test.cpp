#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/objects/fxMessageEvent.h"
#include "kelvofxds/objects/fxObj.h"
#include "tests/support/dataFlow.h"
#include "tests/support/heapCalls.h"

// Either end of a connection may go first, with messages under way.

namespace {

// What receives when the target is no object.
struct Inbox {
    FlowLog& log;

    static void receiveBool(void* target, unsigned char value) { receiveInt(target, value); }
    static void receiveInt(void* target, int value) {
        static_cast<Inbox*>(target)->log.note("inbox=" + std::to_string(value));
    }
};

class fxObjDestruction : public DataFlowTest {
protected:
    fxObjDestruction() : inbox{log} {}

    Inbox inbox;
};

}  // namespace

TEST_F(fxObjDestruction, senderMayDieFirst) {
    for (const unsigned short type : {fxDT_int, fxDT_fxBool, fxDT_void}) {
        SCOPED_TRACE(type);
        FlowNode object(log, "object", type);
        {
            FlowNode sender(log);
            sender.connect("out", &object, "in");
        }
        EXPECT_EQ(1U, object.in->count);
        EXPECT_EQ(0U, sources(object.in));
    }
}

TEST_F(fxObjDestruction, messagesOutliveTheirSender) {
    FlowNode direct(log, "direct");
    FlowNode converting(log, "converting", fxDT_fxBool);
    {
        FlowNode sender(log);
        sender.connect("out", &direct, "in");
        sender.connect("out", &converting, "in");
        sender.sendData(sender.out, new SpyData(7), fxObj::fxSendQueued);
    }
    EXPECT_EQ(2U, direct.in->count) << "the dictionary's and the message's";
    EXPECT_EQ(2U, converting.in->count) << "the dictionary's and the link's";
    EXPECT_EQ("direct=7 converting=7", distribute());
    EXPECT_EQ(1U, direct.in->count);
    EXPECT_EQ(1U, converting.in->count);
    EXPECT_EQ(0, SpyData::alive);
}

TEST_F(fxObjDestruction, receiverMayDieFirst) {
    for (const unsigned short type : {fxDT_int, fxDT_fxBool, fxDT_void}) {
        for (const bool latestOnly : {false, true}) {
            SCOPED_TRACE(testing::Message() << "type " << type << ", latest only " << latestOnly);
            FlowNode sender(log);
            FlowNode other(log, "other");
            auto* object = new FlowNode(log, "object", type, latestOnly);
            const ChannelReference in(object->in);
            const fxInputChannel* channel = object->in;
            sender.connect("out", object, "in");
            sender.connect("out", &other, "in");
            sender.sendData(sender.out, new SpyData(7), fxObj::fxSendQueued);
            EXPECT_EQ(2U, queued());

            delete object;
            EXPECT_EQ(1U, queued());
            EXPECT_EQ(0U, in.others());
            EXPECT_EQ(0U, sources(channel));
            EXPECT_EQ(nullptr, channel->pending);
            EXPECT_EQ(1U, sender.out->getNumberOfConnections());
            sender.send(8);
            EXPECT_EQ("other=7 other=8", distribute());
            EXPECT_EQ(0, SpyData::alive);
        }
    }
}

TEST_F(fxObjDestruction, selfConnectedObjectMayDie) {
    for (const unsigned short type : {fxDT_int, fxDT_fxBool, fxDT_void}) {
        for (const char* first : {"", "inputs", "outputs"}) {
            SCOPED_TRACE(testing::Message() << "type " << type << ' ' << first);
            auto* object = new FlowNode(log, "object", type);
            const ChannelReference in(object->in);
            object->connect("out", object, "in");
            object->sendData(object->out, new SpyData(1), fxObj::fxSendQueued);
            object->sendData(object->out, new SpyData(2), fxObj::fxSendUrgent);
            EXPECT_EQ(2U, queued());
            object->removeProperty(first);
            delete object;
            EXPECT_EQ(0U, queued());
            EXPECT_EQ(0U, in.others());
            EXPECT_EQ(0, SpyData::alive);
        }
    }
}

TEST_F(fxObjDestruction, objectsConnectedInACircleMayDieInAnyOrder) {
    const unsigned int orders[][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2},
                                      {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
    for (const auto& order : orders) {
        SCOPED_TRACE(testing::PrintToString(order));
        FlowNode* nodes[3];
        const unsigned short types[] = {fxDT_int, fxDT_fxBool, fxDT_void};
        for (unsigned int i = 0; i < 3; ++i)
            nodes[i] = new FlowNode(log, std::to_string(i), types[i]);
        for (unsigned int i = 0; i < 3; ++i) {
            nodes[i]->connect("out", nodes[(i + 1) % 3], "in");
            nodes[i]->connect("out", nodes[(i + 2) % 3], "in");
            nodes[i]->sendData(nodes[i]->out, new SpyData(1), fxObj::fxSendQueued);
        }
        EXPECT_EQ(6U, queued());
        delete nodes[order[0]];
        EXPECT_EQ(4U, queued()) << "the two for the dead one are gone";
        delete nodes[order[1]];
        EXPECT_EQ(2U, queued());
        EXPECT_EQ(0U, nodes[order[2]]->out->getNumberOfConnections());
        EXPECT_EQ(0U, sources(nodes[order[2]]->in));
        delete nodes[order[2]];
        EXPECT_EQ(0U, queued());
        EXPECT_EQ(0, SpyData::alive);
    }
}

TEST_F(fxObjDestruction, ownersDeathFlushesAnInputWithAnotherTarget) {
    FlowNode sender(log);
    auto* owner = new fxObj;
    const ChannelReference in(
        owner->addInput("in", fxDT_int, &inbox, receiver(Inbox::receiveInt), 0));
    sender.connect("out", owner, "in");
    sender.send(1);
    delete owner;
    EXPECT_EQ(0U, queued());
    EXPECT_EQ(0U, in.others());
}

TEST_F(fxObjDestruction, deliberateConvertedMessageForALivingTargetOutlivesTheOwner) {
    FlowNode sender(log);
    auto* owner = new fxObj;
    owner->addInput("in", fxDT_fxBool, &inbox, receiver(Inbox::receiveBool), 0);
    sender.connect("out", owner, "in");
    sender.send(1);
    delete owner;
    EXPECT_EQ(0U, sender.out->getNumberOfConnections());
    EXPECT_EQ(1U, queued());
    EXPECT_EQ("inbox=1", distribute());
}

TEST_F(fxObjDestruction, targetsDeathDropsMessagesForInputsOfOtherObjects) {
    for (const unsigned short type : {fxDT_int, fxDT_fxBool}) {
        SCOPED_TRACE(type);
        FlowNode sender(log);
        fxObj owner;
        auto* target = new FlowNode(log, "target");
        fxInputChannel* in = owner.addInput(
            "in", type, target,
            type == fxDT_int ? receiver(FlowNode::receiveInt) : receiver(FlowNode::receiveBool), 1);
        sender.connect("out", &owner, "in");
        const fxInputChannel* connection = (*sender.out)[0];
        sender.sendData(sender.out, new SpyData(1), fxObj::fxSendQueued);
        EXPECT_NE(nullptr, connection->pending);
        delete target;
        EXPECT_EQ(0U, queued());
        EXPECT_EQ(nullptr, connection->pending);
        EXPECT_EQ(0, SpyData::alive);
        EXPECT_EQ(2U, in->count) << "still connected";
        owner.removeInput("in");
    }
}

TEST_F(fxObjDestruction, targetWhereAnEventWasBeforeDropsItsMessagesToo) {
    for (const bool withHandler : {true, false}) {
        SCOPED_TRACE(withHandler);
        FlowNode sender(log);
        fxObj owner;
        alignas(NoteEvent) unsigned char place[sizeof(NoteEvent)];
        fxEventHandler* const handler = fx_theEventHandler;
        fx_theEventHandler = withHandler ? handler : nullptr;
        (new (place) NoteEvent(log, "event"))->~NoteEvent();
        fx_theEventHandler = handler;

        auto* target = new (place) fxObj;
        owner.addInput("in", fxDT_int, target, receiver(FlowNode::receiveInt), 0);
        sender.connect("out", &owner, "in");
        sender.send(1);
        target->~fxObj();
        EXPECT_EQ(0U, queued());
        owner.removeInput("in");
    }
}

TEST_F(fxObjDestruction, anEventThatIsTheTargetOfAnothersInputDropsItsMessages) {
    FlowNode sender(log);
    fxObj owner;
    auto* event = new NoteEvent(log, "event");
    owner.addInput("in", fxDT_int, event, receiver(FlowNode::receiveInt), 0);
    sender.connect("out", &owner, "in");
    sender.send(1);
    EXPECT_EQ(1U, queued());
    delete event;
    EXPECT_EQ(0U, queued());
    owner.removeInput("in");
}

TEST_F(fxObjDestruction, aHostsMessageThatIsATargetDropsItsMessages) {
    struct HostMessage : public fxMessageEvent {
        using fxMessageEvent::fxMessageEvent;
    };
    FlowNode sender(log);
    FlowNode object(log, "object");
    fxObj owner;
    auto* own = new HostMessage(object.in, new SpyData(1));
    auto* plain = new fxMessageEvent(object.in, new SpyData(2));
    fxMessageEvent* const messages[] = {own, plain};
    for (fxMessageEvent* message : messages) {
        owner.addInput("in", fxDT_int, message, receiver(FlowNode::receiveInt), 0);
        sender.connect("out", &owner, "in");
        sender.send(1);
        EXPECT_EQ(1U, queued());
        delete message;
        EXPECT_EQ(0U, queued());
        owner.removeInput("in");
    }
}

TEST_F(fxObjDestruction, eventsAreObjectsAndDropTheirMessagesToo) {
    FlowNode sender(log);
    auto* event = new NoteEvent(log, "event");
    event->addInput("in", fxDT_fxBool, event, receiver(Inbox::receiveBool), 0);
    sender.connect("out", event, "in");
    sender.send(1);
    delete event;
    EXPECT_EQ(0U, queued());
}

TEST_F(fxObjDestruction, nothingIsLeftOnTheHeap) {
    // The first round names the properties.
    long blocks = 0;
    for (const bool again : {false, true}) {
        if (again)
            blocks = heapCalls().blocks;
        auto* sender = new FlowNode(log, "a");
        auto* object = new FlowNode(log, "b", fxDT_fxBool);
        sender->connect("out", object, "in");
        sender->connect("out", sender, "in");
        delete object;
        delete sender;
    }
    EXPECT_EQ(blocks, heapCalls().blocks);
}

// The destroy functions of the two properties.

TEST_F(fxObjDestruction, inputDictionaryReleasesEveryChannel) {
    FlowNode sender(log);
    FlowNode direct(log);
    auto* dict = new fxVoidPtrDict;
    std::vector<fxInputChannel*> inputs;
    for (const char* name : {"a", "b", "c", "d"}) {
        auto* in = new fxInputChannel(fxDT_int, &inbox, receiver(Inbox::receiveInt), 0);
        in->count = 2;  // the dictionary's and the test's
        sender.out->add(in);
        dict->add(name, in);
        inputs.push_back(in);
    }
    sender.connect("out", &direct, "in");
    sender.sendData(sender.out, new SpyData(3), fxObj::fxSendQueued);
    dt_input_dict(dict);
    EXPECT_EQ(1U, queued()) << "the one for the other input";
    EXPECT_EQ(1U, sender.out->getNumberOfConnections());
    for (fxInputChannel* in : inputs) {
        EXPECT_EQ(1U, in->count);
        EXPECT_EQ(0U, sources(in));
        in->dec();
    }
    EXPECT_EQ("node=3", distribute());
}

TEST_F(fxObjDestruction, inputsAreFlushedWhileTheyAreConnected) {
    FlowNode sender(log);
    FlowNode object(log, "object");
    sender.connect("out", &object, "in");
    unsigned int connections = 0;
    sender.sendData(sender.out,
                    new SpyData(1, [&] { connections = sender.out->getNumberOfConnections(); }),
                    fxObj::fxSendQueued);
    object.removeProperty("inputs");
    EXPECT_EQ(1U, connections) << "when the value went";
    EXPECT_EQ(0U, sender.out->getNumberOfConnections());
}

TEST_F(fxObjDestruction, outputDictionaryDeletesEveryChannel) {
    FlowNode object(log);
    auto* dict = new fxVoidPtrDict;
    for (const char* name : {"a", "b", "c", "d"}) {
        auto* out = new fxOutputChannel(fxDT_int);
        out->add(object.in);
        dict->add(name, out);
    }
    EXPECT_EQ(5U, object.in->count);
    dt_output_dict(dict);
    EXPECT_EQ(1U, object.in->count);
    EXPECT_EQ(0U, sources(object.in));
}

TEST_F(fxObjDestruction, emptyDictionariesAreDeleted) {
    const long blocks = heapCalls().blocks;
    dt_input_dict(new fxVoidPtrDict);
    dt_output_dict(new fxVoidPtrDict);
    EXPECT_EQ(blocks, heapCalls().blocks);
}

TEST_F(fxObjDestruction, removingThePropertyIsTheEndOfItsChannels) {
    FlowNode sender(log);
    FlowNode object(log);
    const ChannelReference in(object.in);
    sender.connect("out", &object, "in");
    object.removeProperty("inputs");
    EXPECT_EQ(0U, in.others());
    EXPECT_EQ(0U, sender.out->getNumberOfConnections());

    fxInputChannel* again = object.addInput("in", fxDT_int, &inbox, receiver(Inbox::receiveInt), 0);
    sender.connect("out", &object, "in");
    EXPECT_EQ(1U, sources(again));
    sender.removeProperty("outputs");
    EXPECT_EQ(0U, sources(again));
    EXPECT_EQ(1U, again->count);
}
