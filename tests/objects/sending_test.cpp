#include <csignal>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxMessageEvent.h"
#include "kelvofxds/values/fxConverter.h"
#include "kelvofxds/values/fxProperty.h"
#include "tests/support/dataFlow.h"

namespace {

const fxObj::fxSendFlags allFlags[] = {fxObj::fxSendQueued, fxObj::fxSendNow, fxObj::fxSendUrgent};

fxObj::fxSendFlags flagsOf(int value) { return static_cast<fxObj::fxSendFlags>(value); }

// What a receiver of any type was called with.
struct Received {
    int calls = 0;
    std::string text;
    const void* address = nullptr;
    double number = 0;

    static Received& at(void* target) {
        auto* self = static_cast<Received*>(target);
        ++self->calls;
        return *self;
    }
    static void ofVoid(void* target) { at(target); }
    static void ofBool(void* target, unsigned char value) { at(target).number = value; }
    static void ofInt(void* target, int value) { at(target).number = value; }
    static void ofLong(void* target, long value) { at(target).number = static_cast<double>(value); }
    static void ofFloat(void* target, float value) {
        at(target).number = static_cast<double>(value);
    }
    static void ofDouble(void* target, double value) { at(target).number = value; }
    static void ofText(void* target, char* value) {
        Received& self = at(target);
        self.address = value;
        self.text = value;
    }
};

class sending : public DataFlowTest {
protected:
    sending() : sender(log, "sender"), a(log, "a"), b(log, "b"), c(log, "c") {}

    void connectAll() {
        for (FlowNode* node : {&a, &b, &c})
            sender.connect("out", node, "in");
    }

    FlowNode sender, a, b, c;
};

// With inputs that keep the latest message only.
class sendingLatestOnly : public sending {
protected:
    sendingLatestOnly() : latest(log, "latest", fxDT_int, 1) {
        sender.connect("out", &latest, "in");
    }

    FlowNode latest;
};

}  // namespace

// The typed operations.

TEST_F(sending, eachOperationDeliversItsTypeOfValue) {
    Received received;
    fxObj object;
    fxOutputChannel outs[] = {fxOutputChannel(fxDT_void),   fxOutputChannel(fxDT_fxBool),
                              fxOutputChannel(fxDT_int),    fxOutputChannel(fxDT_long),
                              fxOutputChannel(fxDT_float),  fxOutputChannel(fxDT_double),
                              fxOutputChannel(fxDT_CharPtr)};
    void (*const functions[])() = {receiver(Received::ofVoid),  receiver(Received::ofBool),
                                   receiver(Received::ofInt),   receiver(Received::ofLong),
                                   receiver(Received::ofFloat), receiver(Received::ofDouble),
                                   receiver(Received::ofText)};
    for (unsigned int i = 0; i < 7; ++i) {
        const std::string name = std::to_string(i);
        outs[i].add(object.addInput(name.c_str(), outs[i].getType(), &received, functions[i], 0));
    }
    for (const fxObj::fxSendFlags flags : allFlags) {
        SCOPED_TRACE(flags);
        const auto deliver = [&](double number) {
            EXPECT_EQ(flags == fxObj::fxSendNow ? 0U : 1U, queued());
            fx_theEventHandler->distributeEvents();
            EXPECT_EQ(1, received.calls);
            EXPECT_EQ(number, received.number);
            received = Received();
        };
        object.sendVoid(&outs[0], flags);
        deliver(0);
        object.sendBool(&outs[1], 255, flags);
        deliver(255);
        object.sendInt(&outs[2], -2147483647, flags);
        deliver(-2147483647);
        object.sendLong(&outs[3], 2147483647L, flags);
        deliver(2147483647);
        object.sendFloat(&outs[4], 0.1F, flags);
        deliver(static_cast<double>(0.1F));
        object.sendDouble(&outs[5], 0.1, flags);
        deliver(0.1);
        object.sendCharPtr(&outs[6], "text", flags);
        if (flags != fxObj::fxSendNow)
            fx_theEventHandler->distributeEvents();
        EXPECT_EQ(1, received.calls);
        EXPECT_EQ("text", received.text);
        received = Received();
    }
}

TEST_F(sending, theObjectItselfIsNotConsulted) {
    connectAll();
    fxObj stranger;
    stranger.sendInt(sender.out, 5, fxObj::fxSendNow);
    EXPECT_EQ("a=5 b=5 c=5", log.take());
}

TEST_F(sending, textIsCopied) {
    Received received;
    fxObj object;
    fxOutputChannel out(fxDT_CharPtr);
    out.add(object.addInput("in", fxDT_CharPtr, &received, receiver(Received::ofText), 0));
    for (const fxObj::fxSendFlags flags : allFlags) {
        SCOPED_TRACE(flags);
        char text[] = "before";
        object.sendCharPtr(&out, text, flags);
        std::strcpy(text, "after");
        fx_theEventHandler->distributeEvents();
        EXPECT_EQ("before", received.text);
        EXPECT_NE(static_cast<const void*>(text), received.address);
    }
    object.sendCharPtr(&out, "", fxObj::fxSendNow);
    EXPECT_EQ("", received.text);
    EXPECT_EQ(4, received.calls);
}

TEST_F(sending, textOfAnyLengthArrivesWhole) {
    Received received;
    fxObj object;
    fxOutputChannel out(fxDT_CharPtr);
    out.add(object.addInput("in", fxDT_CharPtr, &received, receiver(Received::ofText), 0));
    std::string text;
    for (unsigned int length = 0; length < 200; ++length) {
        SCOPED_TRACE(length);
        for (const fxObj::fxSendFlags flags : allFlags) {
            object.sendCharPtr(&out, text.c_str(), flags);
            fx_theEventHandler->distributeEvents();
            EXPECT_EQ(text, std::exchange(received.text, std::string("none")));
        }
        text += static_cast<char>('!' + length % 90);
    }
}

TEST_F(sending, receiversOfATextShareOneCopy) {
    std::string seen;
    const auto take = [](std::string* all, char* text) {
        all->append(text);
        ++text[0];
    };
    fxObj object;
    fxOutputChannel out(fxDT_CharPtr);
    for (const char* name : {"first", "second", "third"})
        out.add(object.addInput(name, fxDT_CharPtr, &seen, receiver(+take), 0));
    for (const fxObj::fxSendFlags flags : allFlags) {
        SCOPED_TRACE(flags);
        object.sendCharPtr(&out, "a1", flags);
        fx_theEventHandler->distributeEvents();
        EXPECT_EQ("a1b1c1", std::exchange(seen, std::string()));
    }
}

TEST_F(sending, messageTakenFromTheQueueMayBeDeletedWithItsValue) {
    Received received;
    fxObj object;
    fxOutputChannel out(fxDT_CharPtr);
    out.add(object.addInput("in", fxDT_CharPtr, &received, receiver(Received::ofText), 0));
    for (const bool delivers : {false, true}) {
        object.sendCharPtr(&out, "text", fxObj::fxSendQueued);
        fxEvent* message = fx_theEventHandler->getQueue().get();
        if (delivers)
            message->deliver();
        delete message;
    }
    EXPECT_EQ(1, received.calls);
    EXPECT_EQ("text", received.text);
    EXPECT_EQ(0U, queued());
}

TEST_F(sending, deliberateVoidInputIsCalledWithoutRegardToTheValue) {
    FlowNode any(log, "any", fxDT_void);
    sender.connect("out", &any, "in");
    sender.send(7, fxObj::fxSendNow);
    EXPECT_EQ("any=", log.take());
    fxOutputChannel texts(fxDT_CharPtr);
    texts.add(any.in);
    sender.sendCharPtr(&texts, "text", fxObj::fxSendQueued);
    EXPECT_EQ("any=", distribute());
}

TEST_F(sending, functionAndTargetAreThoseOfTheTimeOfDelivery) {
    FlowNode converting(log, "converting", fxDT_fxBool);
    sender.connect("out", &a, "in");
    sender.connect("out", &converting, "in");
    sender.send(7);
    a.in->target = &b;
    converting.in->target = &c;
    EXPECT_EQ("b=7 c=7", distribute());
}

using sendingDeathTest = sending;

TEST_F(sendingDeathTest, anEventHandlerIsNeededToSendToAnybody) {
    connectAll();
    fxEventHandler* const handler = std::exchange(fx_theEventHandler, nullptr);
    for (const fxObj::fxSendFlags flags : allFlags) {
        EXPECT_EXIT(sender.sendData(sender.out, new SpyData(1), flags),
                    testing::KilledBySignal(SIGABRT), "^fxObj: call fxInitializeToolkit first\n$");
        sender.sendData(sender.out, nullptr, flags);
    }
    fx_theEventHandler = handler;
}

TEST_F(sending, valueWithoutConnectionsIsDeletedWithoutAnEventHandler) {
    fxEventHandler* const handler = std::exchange(fx_theEventHandler, nullptr);
    for (const fxObj::fxSendFlags flags : allFlags) {
        sender.sendData(sender.out, nullptr, flags);
        sender.sendData(sender.out, new SpyData(1), flags);
    }
    fx_theEventHandler = handler;
    EXPECT_EQ(0, SpyData::alive);
    EXPECT_EQ("", log.take());
}

// Orders.

TEST_F(sending, queuedMessagesGoToTheTailInConnectionOrder) {
    connectAll();
    sender.send(1);
    EXPECT_EQ("", log.take());
    sender.send(2);
    EXPECT_EQ(6U, queued());
    EXPECT_EQ("a=1 b=1 c=1 a=2 b=2 c=2", distribute());
}

TEST_F(sending, deliberateUrgentMessagesAreInReverseConnectionOrderAtTheHead) {
    connectAll();
    fx_theEventHandler->postEvent(new NoteEvent(log, "older"), 0);
    sender.send(1, fxObj::fxSendUrgent);
    EXPECT_EQ(4U, queued());
    EXPECT_EQ("c=1 b=1 a=1 older ~older", distribute());

    sender.send(1, fxObj::fxSendQueued);
    sender.send(2, fxObj::fxSendUrgent);
    sender.send(3, fxObj::fxSendUrgent);
    EXPECT_EQ("c=3 b=3 a=3 c=2 b=2 a=2 a=1 b=1 c=1", distribute());
}

TEST_F(sending, nowDeliversInConnectionOrderWithoutAMessage) {
    connectAll();
    const unsigned long sequence = fxEvent::nextSequenceNumber;
    sender.send(1);
    sender.send(2, fxObj::fxSendNow);
    EXPECT_EQ("a=2 b=2 c=2", log.take()) << "before what is queued";
    EXPECT_EQ(sequence + 3, fxEvent::nextSequenceNumber) << "of the queued ones";
    EXPECT_EQ("a=1 b=1 c=1", distribute());
}

TEST_F(sending, messagesAreNumberedInTheOrderOfPosting) {
    connectAll();
    const unsigned long last = fxEvent::nextSequenceNumber;
    sender.send(1);
    sender.send(2, fxObj::fxSendUrgent);
    std::vector<unsigned long> sequences;
    for (const fxEvent* e : queuedEvents())
        sequences.push_back(e->getSequence() - last);
    EXPECT_EQ((std::vector<unsigned long>{6, 5, 4, 1, 2, 3}), sequences);
    EXPECT_EQ("c=2 b=2 a=2 a=1 b=1 c=1", distribute());
}

TEST_F(sending, everyMessageIsANewEvent) {
    const unsigned short tag = 0;
    sender.connect("out", &a, "in");
    for (int value = 1; value <= 4; ++value) {
        sender.send(value);
        fxEvent* message = queuedEvents()[0];
        EXPECT_EQ(0, message->count);
        EXPECT_EQ(0U, message->getNumberOfProperties());
        EXPECT_EQ(fxET_MessageEvent, message->getType());
        unsigned int index = 77;
        EXPECT_EQ(nullptr, message->findProperty(tag, &index));
        EXPECT_EQ(77U, index) << "it never had a property";
        message->count = 5;
        if (value == 1)
            message->addInput("in", fxDT_int, nullptr, nullptr, 0);
        if (value == 2)
            message->setProperty(new fxProperty(tag, 1L)).removeAllProperties();
        EXPECT_EQ("a=" + std::to_string(value), distribute());
    }
}

// References.

TEST_F(sending, messagesHoldTheirConnectionAndTheValue) {
    connectAll();
    auto* data = new SpyData(4);
    sender.sendData(sender.out, data, fxObj::fxSendQueued);
    EXPECT_EQ(3U, data->count);
    for (const FlowNode* node : {&a, &b, &c}) {
        EXPECT_EQ(3U, node->in->count) << "dictionary, connection, message";
        EXPECT_EQ(nullptr, node->in->pending) << "it keeps all";
    }
    a.reaction = b.reaction = c.reaction = [&] { log.note(std::to_string(data->count)); };
    EXPECT_EQ("a=4 3 b=4 2 c=4 1", distribute());
    EXPECT_EQ(0, SpyData::alive);
    for (const FlowNode* node : {&a, &b, &c})
        EXPECT_EQ(2U, node->in->count);
}

TEST_F(sending, messageReleasesItsConnectionBeforeItsValue) {
    const struct {
        const char* what;
        void (*end)(FlowNode& node);
    } rows[] = {
        {"delivered", [](FlowNode&) { fx_theEventHandler->distributeEvents(); }},
        {"flushed", [](FlowNode& node) { node.in->flush(); }},
        {"taken", [](FlowNode&) { delete fx_theEventHandler->getQueue().get(); }},
    };
    sender.connect("out", &a, "in");
    const ChannelReference in(a.in);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        unsigned int others = 0;
        sender.sendData(sender.out, new SpyData(1, [&] { others = in.others(); }),
                        fxObj::fxSendQueued);
        EXPECT_EQ(3U, in.others()) << "dictionary, connection, message";
        row.end(a);
        EXPECT_EQ(2U, others) << "when the value went";
    }
}

TEST_F(sending, valueOfAnotherHolderOutlivesItsMessages) {
    connectAll();
    for (const fxObj::fxSendFlags flags : {fxObj::fxSendQueued, fxObj::fxSendUrgent}) {
        SCOPED_TRACE(flags);
        auto* data = new SpyData(4);
        data->count = 1;
        sender.sendData(sender.out, data, flags);
        sender.sendData(sender.out, data, flags);
        EXPECT_EQ(7U, data->count);
        fx_theEventHandler->distributeEvents();
        log.take();
        EXPECT_EQ(1U, data->count);
        EXPECT_EQ(1, SpyData::alive);
        delete data;
    }
}

TEST_F(sending, severalOutputsMayShareOneValue) {
    fxOutputChannel* second = sender.addOutput("second", fxDT_int);
    sender.connect("out", &a, "in");
    sender.connect("second", &b, "in");
    sender.connect("second", &c, "in");
    auto* data = new SpyData(4);
    sender.sendData(sender.out, data, fxObj::fxSendQueued);
    sender.sendData(second, data, fxObj::fxSendQueued);
    EXPECT_EQ(3U, data->count);
    a.in->flush();
    EXPECT_EQ(2U, data->count);
    EXPECT_EQ("b=4 c=4", distribute());
    EXPECT_EQ(0, SpyData::alive);
}

TEST_F(sending, nowTakesNoReferences) {
    connectAll();
    auto* data = new SpyData(4);
    a.reaction = [&] { log.note(std::to_string(data->count) + ',' + std::to_string(a.in->count)); };
    sender.sendData(sender.out, data, fxObj::fxSendNow);
    EXPECT_EQ("a=4 0,2 b=4 c=4", log.take()) << "dictionary and connection hold the channel";
    EXPECT_EQ(0, SpyData::alive);
}

TEST_F(sending, deliberateNowDeletesTheValueWhateverItsCount) {
    connectAll();
    auto* data = new SpyData(4);
    data->count = 3;
    sender.sendData(sender.out, data, fxObj::fxSendNow);
    EXPECT_EQ("a=4 b=4 c=4", log.take());
    EXPECT_EQ(0, SpyData::alive);
}

TEST_F(sending, deliberateValueWithoutConnectionsIsDeletedWhateverItsCount) {
    sender.connect("out", &a, "in");
    sender.disconnect("out", &a, "in");  // none left is as none ever
    fxOutputChannel never(fxDT_int);
    for (fxOutputChannel* out : {sender.out, &never}) {
        for (const int flags : {0, 1, 2, 3, -1}) {
            for (const unsigned int count : {0U, 2U}) {
                SCOPED_TRACE(testing::Message() << "flags " << flags << ", count " << count);
                auto* data = new SpyData(4);
                data->count = count;
                sender.sendData(out, data, flagsOf(flags));
                EXPECT_EQ(0, SpyData::alive);
                EXPECT_EQ(0U, queued());
            }
            sender.sendData(out, nullptr, flagsOf(flags));
            EXPECT_EQ(0U, queued());
        }
    }
    EXPECT_EQ("", log.take());
}

TEST_F(sending, noValueIsSentToNobody) {
    connectAll();
    for (const int flags : {0, 1, 2, 3})
        sender.sendData(sender.out, nullptr, flagsOf(flags));
    EXPECT_EQ(0U, queued());
    EXPECT_EQ("", log.take());
}

TEST_F(sending, deliberateOtherFlagsSendNothing) {
    connectAll();
    const unsigned long sequence = fxEvent::nextSequenceNumber;
    for (const int flags : {3, 4, -1, 255, 2147483647}) {
        SCOPED_TRACE(flags);
        sender.sendData(sender.out, new SpyData(4), flagsOf(flags));
        EXPECT_EQ(0, SpyData::alive) << "nobody holds it";
        auto* held = new SpyData(4);
        held->count = 1;
        sender.sendData(sender.out, held, flagsOf(flags));
        EXPECT_EQ(1, SpyData::alive);
        EXPECT_EQ(1U, held->count);
        delete held;
        EXPECT_EQ(0U, queued());
        EXPECT_EQ("", log.take());
        for (const FlowNode* node : {&a, &b, &c})
            EXPECT_EQ(2U, node->in->count);
    }
    EXPECT_EQ(sequence, fxEvent::nextSequenceNumber);
}

// The latest message only.

TEST_F(sendingLatestOnly, newerMessageReplacesTheOlderAtItsOwnPlace) {
    sender.send(1);
    fx_theEventHandler->postEvent(new NoteEvent(log, "between"), 0);
    sender.send(2);
    EXPECT_EQ(2U, queued());
    EXPECT_EQ("between ~between latest=2", distribute());

    sender.send(3);
    fx_theEventHandler->postEvent(new NoteEvent(log, "between"), 0);
    sender.send(4, fxObj::fxSendUrgent);
    EXPECT_EQ("latest=4 between ~between", distribute());

    sender.send(5, fxObj::fxSendUrgent);
    fx_theEventHandler->postEvent(new NoteEvent(log, "between"), 0);
    sender.send(6);
    EXPECT_EQ("between ~between latest=6", distribute());
}

TEST_F(sendingLatestOnly, pendingNamesTheQueuedMessage) {
    fxInputChannel* in = latest.in;
    EXPECT_EQ(nullptr, in->pending);
    sender.sendData(sender.out, new SpyData(1), fxObj::fxSendQueued);
    ASSERT_EQ(1U, queued());
    EXPECT_EQ(queuedEvents()[0], in->pending);
    const unsigned long first = in->pending->getSequence();
    EXPECT_EQ(3U, in->count);

    sender.sendData(sender.out, new SpyData(2), fxObj::fxSendQueued);
    ASSERT_EQ(1U, queued());
    EXPECT_EQ(queuedEvents()[0], in->pending);
    EXPECT_EQ(first + 1, in->pending->getSequence());
    EXPECT_EQ(3U, in->count);
    EXPECT_EQ(1, SpyData::alive) << "the replaced one is gone";

    latest.reaction = [&] { EXPECT_EQ(nullptr, in->pending); };
    EXPECT_EQ("latest=2", distribute());
    EXPECT_EQ(nullptr, in->pending);
    EXPECT_EQ(2U, in->count);
}

TEST_F(sendingLatestOnly, everyWayOfSendingDropsThePendingMessage) {
    const struct {
        int flags;
        const char* now;
        const char* later;
    } rows[] = {
        {0, "", "latest=2"}, {1, "latest=2", ""}, {2, "", "latest=2"}, {3, "", ""}, {-1, "", ""}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.flags);
        sender.sendData(sender.out, new SpyData(1), fxObj::fxSendQueued);
        const bool queues = row.later[0] != '\0';
        latest.reaction = [&] { EXPECT_EQ(nullptr, latest.in->pending); };
        sender.sendData(sender.out, new SpyData(2), flagsOf(row.flags));
        latest.reaction = nullptr;
        EXPECT_EQ(row.now, log.take());
        EXPECT_EQ(queues ? 1U : 0U, queued());
        EXPECT_EQ(queues ? queuedEvents()[0] : nullptr, latest.in->pending);
        EXPECT_EQ(queues ? 1 : 0, SpyData::alive);
        EXPECT_EQ(row.later, distribute());
    }
}

TEST_F(sendingLatestOnly, noValueLeavesThePendingMessage) {
    sender.send(1);
    sender.sendData(sender.out, nullptr, fxObj::fxSendQueued);
    EXPECT_EQ("latest=1", distribute());
}

TEST_F(sendingLatestOnly, oneConnectionOfSeveral) {
    sender.connect("out", &a, "in");
    sender.send(1);
    sender.send(2);
    EXPECT_EQ(3U, queued());
    EXPECT_EQ("a=1 latest=2 a=2", distribute());
    sender.send(3);
    sender.send(4, fxObj::fxSendNow);
    EXPECT_EQ("latest=4 a=4", log.take());
    EXPECT_EQ("a=3", distribute());
}

TEST_F(sendingLatestOnly, anotherOutputReplacesTheMessageToo) {
    a.connect("out", &latest, "in");
    sender.send(1);
    a.send(2);
    EXPECT_EQ(1U, queued());
    EXPECT_EQ("latest=2", distribute());
}

TEST_F(sendingLatestOnly, pendingIsKeptPerConnectionThatConverts) {
    FlowNode object(log, "object", fxDT_fxBool, 1);
    FlowNode second(log, "second");
    for (FlowNode* node : {&sender, &second})
        node->connect("out", &object, "in");
    const fxInputChannel* link = (*sender.out)[1];
    ASSERT_TRUE(link->isLink());
    sender.send(1);
    sender.send(2);
    EXPECT_EQ(2U, queued()) << "one for each connection";
    ASSERT_NE(nullptr, link->pending);
    EXPECT_EQ(link, reinterpret_cast<fxEvent*>(link->pending)->getChannel());
    EXPECT_EQ(nullptr, object.in->pending);
    EXPECT_EQ(2U, link->count);
    EXPECT_EQ(3U, object.in->count) << "the dictionary's and two links'";

    EXPECT_EQ("latest=2 object=2", distribute());
    EXPECT_EQ(nullptr, link->pending);
}

TEST_F(sendingLatestOnly, deliberateTwoSourcesThatConvertLeaveTwoMessages) {
    FlowNode object(log, "object", fxDT_fxBool, 1);
    FlowNode second(log, "second");
    fxOutputChannel direct(fxDT_fxBool);
    sender.disconnect("out", &latest, "in");
    for (FlowNode* node : {&sender, &second})
        node->connect("out", &object, "in");
    direct.add(object.in);
    for (int value = 1; value <= 2; ++value) {
        sender.send(10 + value);
        second.send(20 + value);
        sender.sendBool(&direct, static_cast<unsigned char>(30 + value), fxObj::fxSendQueued);
    }
    EXPECT_EQ(3U, queued());
    EXPECT_NE(nullptr, object.in->pending) << "the direct one's";
    EXPECT_EQ("object=12 object=22 object=32", distribute());
}

TEST_F(sendingLatestOnly, theSameValueMayReplaceItself) {
    auto* data = new SpyData(6);
    for (const fxObj::fxSendFlags flags :
         {fxObj::fxSendQueued, fxObj::fxSendQueued, fxObj::fxSendUrgent}) {
        sender.sendData(sender.out, data, flags);
        EXPECT_EQ(1U, data->count);
        EXPECT_EQ(1U, queued());
        EXPECT_EQ(1, SpyData::alive);
    }
    EXPECT_EQ("latest=6", distribute());
    EXPECT_EQ(0, SpyData::alive);

    data = new SpyData(7);
    sender.sendData(sender.out, data, fxObj::fxSendQueued);
    sender.sendData(sender.out, data, fxObj::fxSendNow);
    EXPECT_EQ("latest=7", log.take());
    EXPECT_EQ(0, SpyData::alive);

    data = new SpyData(8);
    sender.sendData(sender.out, data, fxObj::fxSendQueued);
    sender.sendData(sender.out, data, flagsOf(3));
    EXPECT_EQ(0, SpyData::alive) << "dropped, and nobody holds it";
}

TEST_F(sendingLatestOnly, receiverThatSendsAgainFindsNothingPending) {
    latest.reaction = [&] { sender.send(2); };
    sender.send(1);
    EXPECT_EQ("latest=1", distribute());
    ASSERT_EQ(1U, queued());
    EXPECT_EQ(queuedEvents()[0], latest.in->pending) << "the new message stays pending";
    EXPECT_EQ("latest=2", distribute());
    EXPECT_EQ(nullptr, latest.in->pending);
}
