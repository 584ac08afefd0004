// dataFlow.h - senders, receivers and values that note what happens to them.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxEvent.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/values/fxData.h"

/// What happened, as words with a space between them.
class FlowLog {
public:
    void note(const std::string& word) { words += words.empty() ? word : ' ' + word; }
    /// Everything noted since the last call.
    std::string take() { return std::exchange(words, std::string()); }

private:
    std::string words;
};

/// A receiving function in the form in which channels store it.
template <class Function>
void (*receiver(Function* f))() {
    return reinterpret_cast<void (*)()>(f);
}

/// An object with an output "out" of ints and an input "in". It notes
/// "name=value" for each value it receives, and its next reaction is run then,
/// once.
class FlowNode : public fxObj {
public:
    explicit FlowNode(FlowLog& flowLog, std::string nodeName = "node",
                      unsigned short inType = fxDT_int, unsigned char latestOnly = 0)
        : name(std::move(nodeName)),
          log(flowLog),
          out(addOutput("out", fxDT_int)),
          in(addInput("in", inType, this, receiverOf(inType), latestOnly)) {}

    static void receiveVoid(void* target) { self(target)->received(""); }
    static void receiveBool(void* target, unsigned char value) {
        self(target)->received(std::to_string(static_cast<int>(value)));
    }
    static void receiveInt(void* target, int value) {
        self(target)->received(std::to_string(value));
    }
    static void receiveFloat(void* target, float value) {
        self(target)->received(std::to_string(static_cast<double>(value)));
    }

    void send(int value, fxSendFlags flags = fxSendQueued) { sendInt(out, value, flags); }

    std::string name;
    FlowLog& log;
    std::function<void()> reaction;
    fxOutputChannel* out;
    fxInputChannel* in;

private:
    static FlowNode* self(void* target) { return static_cast<FlowNode*>(target); }

    static void (*receiverOf(unsigned short type))() {
        if (type == fxDT_fxBool)
            return receiver(receiveBool);
        if (type == fxDT_float)
            return receiver(receiveFloat);
        return type == fxDT_void ? receiver(receiveVoid) : receiver(receiveInt);
    }

    void received(const std::string& value) {
        log.note(name + '=' + value);
        // It may delete this object.
        if (const std::function<void()> now = std::exchange(reaction, nullptr))
            now();
    }
};

/// A holder of an int that is counted while it lives and may do something when
/// it goes.
class SpyData : public fxData {
public:
    explicit SpyData(int v, std::function<void()> doAtEnd = nullptr)
        : fxData(fxDT_int), value(v), atEnd(std::move(doAtEnd)) {
        ++alive;
    }
    ~SpyData() override {
        --alive;
        if (atEnd)
            atEnd();
    }
    const char* dataName() const override { return "SPY"; }
    void deliverTo(void (*function)(), void* target) override {
        reinterpret_cast<void (*)(void*, int)>(function)(target, value);
    }
    void getValue(unsigned short, void* out) override { *static_cast<int*>(out) = value; }
    unsigned int getSize() override { return sizeof value; }

    inline static int alive = 0;

    int value;
    std::function<void()> atEnd;
};

/// An event that notes its name when it is delivered, after which its reaction
/// is run, and "~name" when it goes.
class NoteEvent : public fxEvent {
public:
    NoteEvent(FlowLog& eventLog, std::string eventName, std::function<void()> whenDelivered = {})
        : fxEvent(fxET_Unknown),
          log(eventLog),
          name(std::move(eventName)),
          reaction(std::move(whenDelivered)) {}
    ~NoteEvent() override { log.note('~' + name); }
    void deliver() override {
        log.note(name);
        if (reaction)
            reaction();
    }

    FlowLog& log;
    std::string name;
    std::function<void()> reaction;
};

/// With the toolkit started, and the event queue and the holders looked after.
class DataFlowTest : public testing::Test {
protected:
    static void SetUpTestSuite() { fxInitializeToolkit(); }

    void SetUp() override { SpyData::alive = 0; }

    void TearDown() override {
        EXPECT_EQ(0U, queued()) << "events left in the queue";
        while (fxEvent* e = fx_theEventHandler->getQueue().get())
            delete e;
        EXPECT_EQ(0, SpyData::alive) << "holders left behind, or deleted twice";
    }

    static unsigned int queued() { return fx_theEventHandler->numberOfEvents(); }

    /// The events in the queue, from the head.
    static std::vector<fxEvent*> queuedEvents() {
        std::vector<fxEvent*> events;
        fx_theEventHandler->removeEvents(
            [](fxEvent* e, void* list) -> unsigned char {
                static_cast<std::vector<fxEvent*>*>(list)->push_back(e);
                return 0;
            },
            &events);
        return events;
    }

    static unsigned int sources(const fxInputChannel* in) {
        return in->sources ? in->sources->length() : 0;
    }

    /// What one call of distributeEvents makes the nodes and events note.
    std::string distribute() {
        log.take();
        fx_theEventHandler->distributeEvents();
        return log.take();
    }

    FlowLog log;
};

/// One reference on a channel, with which a test sees what others do to it.
class ChannelReference {
public:
    explicit ChannelReference(fxInputChannel* c) : channel(c) { ++channel->count; }
    ChannelReference(const ChannelReference&) = delete;
    ChannelReference& operator=(const ChannelReference&) = delete;
    ~ChannelReference() { channel->dec(); }

    /// References of others.
    unsigned int others() const { return channel->count - 1; }

private:
    fxInputChannel* channel;
};
