#include <unistd.h>

#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxWiring.h"
#include "kelvofxds/values/fxProperty.h"
#include "tests/support/dataFlow.h"

namespace {

// What receives when the target is no object.
struct Inbox {
    FlowLog& log;

    static void receiveInt(void* target, int value) {
        static_cast<Inbox*>(target)->log.note("inbox=" + std::to_string(value));
    }
};

// The dictionary of the property "inputs" or "outputs"; null without one.
const fxVoidPtrDict* channels(const fxObj& object, const char* name) {
    const fxProperty* property = object.findProperty(name);
    return property ? static_cast<const fxVoidPtrDict*>(property->getAsVoidPtr()) : nullptr;
}

const void* entry(const fxObj& object, const char* property, const char* name) {
    const fxVoidPtrDict* dict = channels(object, property);
    void** found = dict ? dict->find(name) : nullptr;
    return found ? *found : nullptr;
}

class fxObjChannels : public DataFlowTest {
protected:
    fxObjChannels() : inbox{log} {}

    Inbox inbox;
};
using fxObjChannelsDeathTest = fxObjChannels;

}  // namespace

// Making channels.

TEST_F(fxObjChannels, addInputMakesAChannelHeldByTheDictionary) {
    fxObj object;
    fxInputChannel* in = object.addInput("level", fxDT_int, &inbox, receiver(Inbox::receiveInt), 1);
    EXPECT_EQ(1U, in->count);
    EXPECT_EQ(&inbox, in->target);
    EXPECT_EQ(receiver(Inbox::receiveInt), in->function);
    EXPECT_EQ(fxDT_int, in->getType());
    EXPECT_TRUE(in->isLatestOnly());
    EXPECT_FALSE(in->isLink());
    EXPECT_EQ(nullptr, in->pending);
    EXPECT_EQ(nullptr, in->sources);
    EXPECT_EQ(in, entry(object, "inputs", "level"));
}

TEST_F(fxObjChannels, addOutputMakesAChannelInADictionaryOfItsOwn) {
    fxObj object;
    fxOutputChannel* out = object.addOutput("level", fxDT_float);
    EXPECT_EQ(fxDT_float, out->getType());
    EXPECT_EQ(0U, out->getNumberOfConnections());
    EXPECT_EQ(out, entry(object, "outputs", "level"));
    EXPECT_EQ(nullptr, channels(object, "inputs"));
}

TEST_F(fxObjChannels, aPropertyOfAnotherTypeUnderTheirNameIsNotTakenForChannels) {
    for (const char* name : {"inputs", "outputs"}) {
        SCOPED_TRACE(name);
        fxObj object, other;
        other.addInput("in", fxDT_int, nullptr, nullptr, 0);
        unsigned short tag = fxProperty::findTag(name);
        if (tag == fxProperty::noTag)
            tag = fxProperty::allocNewTag(name);
        object.setProperty(new fxProperty(tag, 37L));
        object.removeOutput("out");
        object.removeInput("in");
        object.connect("out", &other, "in");
        EXPECT_EQ(37, object.findProperty(tag)->getAsLong());

        object.addInput("in", fxDT_int, nullptr, nullptr, 0);
        object.addOutput("out", fxDT_int);
        EXPECT_EQ(2U, object.getNumberOfProperties());
        EXPECT_NE(nullptr, entry(object, "inputs", "in"));
        EXPECT_NE(nullptr, entry(object, "outputs", "out"));
    }
}

TEST_F(fxObjChannels, channelsLiveInTwoProperties) {
    fxObj object;
    EXPECT_EQ(0U, object.getNumberOfProperties());
    object.addInput("a", fxDT_int, nullptr, nullptr, 0);
    EXPECT_EQ(1U, object.getNumberOfProperties());
    object.addInput("b", fxDT_int, nullptr, nullptr, 0);
    EXPECT_EQ(1U, object.getNumberOfProperties());
    object.addOutput("a", fxDT_int);
    object.addOutput("c", fxDT_int);
    EXPECT_EQ(2U, object.getNumberOfProperties());

    for (const char* name : {"inputs", "outputs"}) {
        SCOPED_TRACE(name);
        const fxProperty* property = object.findProperty(name);
        ASSERT_NE(nullptr, property);
        EXPECT_EQ(1, property->count);
        EXPECT_EQ(fxDT_VoidPtr, property->getType());
        EXPECT_EQ(fxProperty::findTag(name), property->getTag());
    }
    EXPECT_NE(entry(object, "inputs", "a"), entry(object, "inputs", "b"));
    EXPECT_NE(entry(object, "outputs", "a"), entry(object, "outputs", "c"));
    EXPECT_EQ(nullptr, entry(object, "inputs", "c"));
    EXPECT_EQ(nullptr, entry(object, "outputs", "b"));
}

TEST_F(fxObjChannels, objectsShareTheTagsOfTheTwoProperties) {
    FlowNode first(log);
    FlowNode second(log);
    for (const char* name : {"inputs", "outputs"}) {
        ASSERT_NE(nullptr, first.findProperty(name));
        EXPECT_NE(first.findProperty(name), second.findProperty(name));
        EXPECT_EQ(first.findProperty(name)->getTag(), second.findProperty(name)->getTag());
    }
    EXPECT_NE(fxProperty::findTag("inputs"), fxProperty::findTag("outputs"));
}

TEST_F(fxObjChannels, inputAddedAgainIsReplacedAndReleased) {
    fxObj object;
    fxInputChannel* old = object.addInput("in", fxDT_int, nullptr, nullptr, 0);
    const ChannelReference oldReference(old);
    fxInputChannel* in = object.addInput("in", fxDT_float, nullptr, nullptr, 0);
    EXPECT_NE(old, in);
    EXPECT_EQ(0U, oldReference.others());
    EXPECT_EQ(1U, in->count);
    EXPECT_EQ(in, entry(object, "inputs", "in"));
    EXPECT_EQ(1U, channels(object, "inputs")->length());
}

TEST_F(fxObjChannels, inputAddedAgainLeavesConnectionsToTheOldChannel) {
    for (const unsigned short type : {fxDT_int, fxDT_fxBool}) {
        SCOPED_TRACE(type);
        FlowNode sender(log, "sender");
        FlowNode object(log, "old", type);
        sender.connect("out", &object, "in");
        sender.send(1);
        const ChannelReference old(object.in);

        fxInputChannel* in =
            object.addInput("in", fxDT_int, &inbox, receiver(Inbox::receiveInt), 0);
        sender.send(2);
        EXPECT_EQ(2U, queued()) << "what was queued is not flushed";
        EXPECT_TRUE(sender.out->isConnectedTo(object.in));
        EXPECT_FALSE(sender.out->isConnectedTo(in));
        EXPECT_EQ(1U, sources(object.in));
        EXPECT_EQ(1U, in->count);
        EXPECT_EQ("old=1 old=2", distribute());
        EXPECT_EQ(1U, old.others()) << "the connection's, or the link's";

        sender.connect("out", &object, "in");
        EXPECT_EQ(2U, sender.out->getNumberOfConnections());
        sender.send(1);
        EXPECT_EQ("old=1 inbox=1", distribute());

        sender.disconnect("out", &object, "in");
        EXPECT_EQ(1U, sender.out->getNumberOfConnections());
        EXPECT_TRUE(sender.out->isConnectedTo(object.in));
        sender.removeOutput("out");
        EXPECT_EQ(0U, old.others());
    }
}

TEST_F(fxObjChannels, queuedMessageAloneKeepsAReplacedInput) {
    FlowNode sender(log);
    FlowNode object(log, "object");
    const ChannelReference in(object.in);
    sender.connect("out", &object, "in");
    sender.send(1);
    object.addInput("in", fxDT_int, &inbox, receiver(Inbox::receiveInt), 0);
    sender.removeOutput("out");
    EXPECT_EQ(1U, in.others()) << "the message's";
    EXPECT_EQ("object=1", distribute());
    EXPECT_EQ(0U, in.others());
}

TEST_F(fxObjChannels, outputAddedAgainIsDisconnectedAndReplaced) {
    FlowNode sender(log, "sender");
    FlowNode object(log, "object");
    FlowNode converting(log, "converting", fxDT_fxBool);
    sender.connect("out", &object, "in");
    sender.connect("out", &converting, "in");
    sender.send(1);

    fxOutputChannel* out = sender.addOutput("out", fxDT_float);
    EXPECT_EQ(out, entry(sender, "outputs", "out"));
    EXPECT_EQ(1U, channels(sender, "outputs")->length());
    EXPECT_EQ(fxDT_float, out->getType());
    EXPECT_EQ(0U, out->getNumberOfConnections());
    EXPECT_EQ(0U, sources(object.in));
    EXPECT_EQ(0U, sources(converting.in));
    EXPECT_EQ("object=1 converting=1", distribute()) << "what was queued is still delivered";
    EXPECT_EQ(1U, object.in->count);
    EXPECT_EQ(1U, converting.in->count);
}

// Connecting.

TEST_F(fxObjChannels, connectLinksBothSides) {
    FlowNode sender(log, "sender");
    FlowNode object(log, "object");
    sender.connect("out", &object, "in");
    ASSERT_EQ(1U, sender.out->getNumberOfConnections());
    EXPECT_EQ(object.in, (*sender.out)[0]);
    ASSERT_EQ(1U, sources(object.in));
    EXPECT_EQ(sender.out, (*object.in->sources)[0]);
    EXPECT_EQ(2U, object.in->count) << "the dictionary's and the connection's";
    sender.send(7);
    EXPECT_EQ("object=7", distribute());
}

TEST_F(fxObjChannels, connectOfUnknownEndsDoesNothing) {
    FlowNode sender(log);
    FlowNode object(log);
    fxObj bare;
    fxObj onlyInputs;
    fxObj onlyOutputs;
    onlyInputs.addInput("in", fxDT_int, nullptr, nullptr, 0);
    onlyOutputs.addOutput("out", fxDT_int);
    const struct {
        const char* why;
        fxObj* from;
        const char* output;
        fxObj* to;
        const char* input;
    } rows[] = {
        {"no outputs property", &bare, "out", &object, "in"},
        {"no outputs property but inputs", &onlyInputs, "out", &object, "in"},
        {"no inputs property", &sender, "out", &bare, "in"},
        {"no inputs property but outputs", &sender, "out", &onlyOutputs, "in"},
        {"neither property", &bare, "out", &bare, "in"},
        {"unknown output", &sender, "ou", &object, "in"},
        {"an input's name", &sender, "in", &object, "in"},
        {"unknown input", &sender, "out", &object, "In"},
        {"an output's name", &sender, "out", &object, "out"},
        {"both unknown", &sender, "x", &object, "y"},
        {"empty names", &sender, "", &object, ""},
        {"no destination", &sender, "out", nullptr, "in"},
        {"no destination, no outputs", &bare, "out", nullptr, "in"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        row.from->connect(row.output, row.to, row.input);
        row.from->disconnect(row.output, row.to, row.input);
        EXPECT_EQ(0U, sender.out->getNumberOfConnections());
        EXPECT_EQ(1U, object.in->count);
        EXPECT_EQ(nullptr, object.in->sources);
        EXPECT_EQ(0U, bare.getNumberOfProperties());
        EXPECT_EQ(1U, onlyInputs.getNumberOfProperties());
        EXPECT_EQ(1U, onlyOutputs.getNumberOfProperties());
    }
}

TEST_F(fxObjChannels, disconnectOfUnknownEndsKeepsTheConnection) {
    FlowNode sender(log);
    FlowNode object(log);
    FlowNode unconnected(log);
    fxObj bare;
    sender.connect("out", &object, "in");
    const struct {
        const char* why;
        fxObj* from;
        const char* output;
        fxObj* to;
        const char* input;
    } rows[] = {
        {"no outputs property", &bare, "out", &object, "in"},
        {"no inputs property", &sender, "out", &bare, "in"},
        {"unknown output", &sender, "other", &object, "in"},
        {"unknown input", &sender, "out", &object, "other"},
        {"not connected", &sender, "out", &unconnected, "in"},
        {"the other way round", &object, "out", &sender, "in"},
        {"no destination", &sender, "out", nullptr, "in"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        row.from->disconnect(row.output, row.to, row.input);
        EXPECT_EQ(1U, sender.out->getNumberOfConnections());
        EXPECT_EQ(1U, sources(object.in));
        EXPECT_EQ(2U, object.in->count);
    }
}

TEST_F(fxObjChannels, connectingTwiceMakesOneConnection) {
    for (const unsigned short type : {fxDT_int, fxDT_fxBool, fxDT_void}) {
        SCOPED_TRACE(type);
        FlowNode sender(log);
        FlowNode object(log, "object", type);
        sender.connect("out", &object, "in");
        sender.connect("out", &object, "in");
        EXPECT_EQ(1U, sender.out->getNumberOfConnections());
        EXPECT_EQ(1U, sources(object.in));
        EXPECT_EQ(2U, object.in->count);
    }
}

TEST_F(fxObjChannels, connectingTwiceMakesOneConnectionAmongMany) {
    FlowNode hub(log, "hub");
    std::vector<std::unique_ptr<FlowNode>> nodes;
    for (unsigned int i = 0; i < 5; ++i)
        nodes.push_back(std::make_unique<FlowNode>(log, "n", i % 2 ? fxDT_int : fxDT_float));
    for (unsigned int round = 1; round <= 3; ++round) {
        for (const auto& node : nodes) {
            hub.connect("out", node.get(), "in");
            node->connect("out", &hub, "in");
        }
        EXPECT_EQ(nodes.size(), hub.out->getNumberOfConnections());
        EXPECT_EQ(nodes.size(), hub.in->sources->length());
        for (const auto& node : nodes) {
            EXPECT_TRUE(hub.out->isConnectedTo(node->in));
            EXPECT_EQ(1U, node->in->sources->length());
            EXPECT_EQ(1U, node->out->getNumberOfConnections());
        }
        hub.disconnect("out", nodes[round].get(), "in");
        nodes[round]->disconnect("out", &hub, "in");
    }
}

// A host may end one side by itself; connect goes by the other.
TEST_F(fxObjChannels, connectGoesByTheConnectionsOfTheOutput) {
    FlowNode sender(log), first(log), second(log);
    for (FlowNode* node : {&first, &second})
        sender.connect("out", node, "in");
    first.in->remove(sender.out);
    sender.connect("out", &first, "in");
    EXPECT_EQ(2U, sender.out->getNumberOfConnections());
    EXPECT_EQ(0U, sources(first.in));
    first.in->add(sender.out);
}

TEST_F(fxObjChannels, disconnectUndoesConnect) {
    for (const unsigned short type : {fxDT_int, fxDT_fxBool, fxDT_void}) {
        SCOPED_TRACE(type);
        FlowNode sender(log);
        FlowNode object(log, "object", type);
        FlowNode other(log, "other");
        sender.connect("out", &object, "in");
        sender.connect("out", &other, "in");
        sender.disconnect("out", &object, "in");
        EXPECT_FALSE(sender.out->isConnectedTo(object.in));
        EXPECT_EQ(1U, object.in->count);
        EXPECT_EQ(0U, sources(object.in));
        sender.send(3);
        EXPECT_EQ("other=3", distribute());

        sender.connect("out", &object, "in");
        EXPECT_EQ(2U, object.in->count);
        EXPECT_EQ(2U, sender.out->getNumberOfConnections());
    }
}

TEST_F(fxObjChannels, disconnectLeavesQueuedMessages) {
    FlowNode sender(log);
    FlowNode object(log, "object");
    sender.connect("out", &object, "in");
    sender.send(3);
    sender.disconnect("out", &object, "in");
    EXPECT_EQ(2U, object.in->count) << "the dictionary's and the message's";
    EXPECT_EQ("object=3", distribute());
    EXPECT_EQ(1U, object.in->count);
}

TEST_F(fxObjChannels, anInputTakesSeveralOutputsAndAnOutputSeveralInputs) {
    FlowNode first(log, "first");
    FlowNode second(log, "second");
    FlowNode third(log, "third");
    for (FlowNode* from : {&first, &second}) {
        for (FlowNode* to : {&second, &third, &first})
            from->connect("out", to, "in");
    }
    for (FlowNode* node : {&first, &second, &third}) {
        EXPECT_EQ(3U, node->in->count);
        ASSERT_EQ(2U, sources(node->in));
        EXPECT_EQ(first.out, (*node->in->sources)[0]);
        EXPECT_EQ(second.out, (*node->in->sources)[1]);
    }
    first.send(1);
    second.send(2);
    EXPECT_EQ("second=1 third=1 first=1 second=2 third=2 first=2", distribute());
}

// Removing channels.

TEST_F(fxObjChannels, removeInputFlushesDisconnectsAndReleases) {
    FlowNode sender(log);
    FlowNode other(log, "other");
    FlowNode object(log, "object");
    FlowNode kept(log, "kept");
    fxInputChannel* second =
        object.addInput("second", fxDT_int, &inbox, receiver(Inbox::receiveInt), 0);
    for (FlowNode* node : {&sender, &other}) {
        node->connect("out", &object, "in");
        node->connect("out", &object, "second");
        node->connect("out", &kept, "in");
        node->send(1);
        node->send(2);
    }
    const ChannelReference in(object.in);
    EXPECT_EQ(7U, in.others()) << "dictionary, two connections, four messages";

    object.removeInput("in");
    EXPECT_EQ(0U, in.others());
    EXPECT_EQ(0U, sources(object.in));
    EXPECT_EQ(2U, sender.out->getNumberOfConnections());
    EXPECT_EQ(2U, other.out->getNumberOfConnections());
    EXPECT_EQ(nullptr, entry(object, "inputs", "in"));
    EXPECT_EQ(second, entry(object, "inputs", "second"));
    EXPECT_EQ("inbox=1 kept=1 inbox=2 kept=2 inbox=1 kept=1 inbox=2 kept=2", distribute());

    sender.connect("out", &object, "in");
    EXPECT_EQ(2U, sender.out->getNumberOfConnections());
}

TEST_F(fxObjChannels, removeInputRemovesMessagesBeforeItReleasesTheChannel) {
    FlowNode sender(log);
    FlowNode object(log);
    sender.connect("out", &object, "in");
    const ChannelReference in(object.in);
    unsigned int othersAtTheEnd = 0;
    auto* data = new SpyData(1, [&] { othersAtTheEnd = in.others(); });
    sender.sendData(sender.out, data, fxObj::fxSendQueued);
    object.removeInput("in");
    EXPECT_EQ(2U, othersAtTheEnd) << "the dictionary's and the connection's";
    EXPECT_EQ(0U, in.others());
}

TEST_F(fxObjChannels, removeInputClearsThePendingMessage) {
    FlowNode sender(log);
    FlowNode object(log, "object", fxDT_int, 1);
    sender.connect("out", &object, "in");
    const ChannelReference in(object.in);
    sender.send(1);
    EXPECT_NE(nullptr, object.in->pending);
    object.removeInput("in");
    EXPECT_EQ(nullptr, object.in->pending);
    EXPECT_EQ(0U, queued());
}

TEST_F(fxObjChannels, deliberateMessageThroughAConversionOutlivesTheInput) {
    FlowNode sender(log);
    FlowNode object(log, "object", fxDT_fxBool);
    sender.connect("out", &object, "in");
    sender.send(5);
    const ChannelReference in(object.in);
    object.removeInput("in");
    EXPECT_EQ(0U, sender.out->getNumberOfConnections());
    EXPECT_EQ(1U, queued());
    EXPECT_EQ(1U, in.others()) << "the link's, which the message holds";
    EXPECT_EQ("object=5", distribute());
    EXPECT_EQ(0U, in.others());
}

TEST_F(fxObjChannels, removingUnknownChannelsDoesNothing) {
    fxObj bare;
    bare.removeInput("in");
    bare.removeOutput("out");
    EXPECT_EQ(0U, bare.getNumberOfProperties());

    FlowNode sender(log);
    FlowNode object(log, "object");
    sender.connect("out", &object, "in");
    for (const char* name : {"", "out", "In", "in "})
        object.removeInput(name);
    for (const char* name : {"", "in", "Out", "out "})
        sender.removeOutput(name);
    sender.send(4);
    EXPECT_EQ("object=4", distribute());
    EXPECT_EQ(2U, object.in->count);
}

TEST_F(fxObjChannels, removedChannelCanBeAddedAgain) {
    FlowNode sender(log);
    FlowNode object(log);
    object.removeInput("in");
    object.removeInput("in");
    sender.removeOutput("out");
    sender.removeOutput("out");
    EXPECT_EQ(0U, channels(object, "inputs")->length());
    EXPECT_EQ(0U, channels(sender, "outputs")->length());

    object.addInput("in", fxDT_int, &inbox, receiver(Inbox::receiveInt), 0);
    sender.out = sender.addOutput("out", fxDT_int);
    sender.connect("out", &object, "in");
    sender.send(6);
    EXPECT_EQ("inbox=6", distribute());
}

TEST_F(fxObjChannels, removeOutputDisconnectsEveryInput) {
    FlowNode sender(log);
    FlowNode object(log, "object");
    FlowNode converting(log, "converting", fxDT_fxBool);
    fxOutputChannel* second = sender.addOutput("second", fxDT_int);
    sender.connect("out", &object, "in");
    sender.connect("out", &converting, "in");
    sender.connect("second", &object, "in");
    sender.send(1);
    sender.removeOutput("out");
    EXPECT_EQ(nullptr, entry(sender, "outputs", "out"));
    EXPECT_EQ(second, entry(sender, "outputs", "second"));
    ASSERT_EQ(1U, sources(object.in));
    EXPECT_EQ(second, (*object.in->sources)[0]);
    EXPECT_EQ(0U, sources(converting.in));
    EXPECT_EQ("object=1 converting=1", distribute()) << "what was queued is still delivered";
    EXPECT_EQ(2U, object.in->count);
    EXPECT_EQ(1U, converting.in->count);
}

TEST_F(fxObjChannelsDeathTest, connectingTypesThatDoNotConvertIsFatal) {
    const struct {
        unsigned short from, to;
        const char* message;
    } rows[] = {
        {fxDT_void, fxDT_int, "^Can't convert from 0 to 2\n$"},
        {fxDT_fxBool, fxDT_CharPtr, "^Can't convert from 1 to 6\n$"},
        {fxDT_int, fxDT_long, "^Can't convert from 2 to 3\n$"},
        {fxDT_int, fxDT_double, "^Can't convert from 2 to 5\n$"},
        {fxDT_long, fxDT_int, "^Can't convert from 3 to 2\n$"},
        {fxDT_CharPtr, fxDT_double, "^Can't convert from 6 to 5\n$"},
        {fxDT_fxStrArray, fxDT_fxStr, "^Can't convert from 11 to 7\n$"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.message);
        fxObj object;
        object.addOutput("out", row.from);
        object.addInput("in", row.to, nullptr, nullptr, 0);
        EXPECT_EXIT(object.connect("out", &object, "in"), testing::KilledBySignal(SIGABRT),
                    row.message);
    }
}
