// objects.cpp - objects, messages, timers and the loop, while memory is refused.

#include "tests/figures/refusals/scenarios.h"

namespace {

struct Sink : fxObj {
    Sink() {
        addInput("number", fxDT_int, this, reinterpret_cast<void (*)()>(take), 0);
        addInput("text", fxDT_CharPtr, this, reinterpret_cast<void (*)()>(read), 1);
    }
    static void take(Sink*, int) {}
    static void read(Sink*, const char*) {}
};
struct Source : fxObj {
    Source() : out(addOutput("out", fxDT_int)) {}
    fxOutputChannel* out;
};

void addChannels() {
    Sink sink;
    Source source;
    sink.removeInput("number");
    source.removeOutput("out");
}
void connectObjects() {
    Sink sink;
    Source source;
    source.connect("out", &sink, "number");
    source.connect("out", &sink, "text");
    source.disconnect("out", &sink, "number");
}
template <fxObj::fxSendFlags flags>
void sendValues() {
    Sink sink;
    Source source;
    source.connect("out", &sink, "number");
    source.connect("out", &sink, "text");
    for (int i = 0; i < 20; ++i)
        source.sendInt(source.out, i, flags);
    fx_theEventHandler->distributeEvents();
}
void deleteWithMessages() {
    Source source;
    {
        Sink sink;
        source.connect("out", &sink, "number");
        for (int i = 0; i < 20; ++i)
            source.sendInt(source.out, i, fxObj::fxSendQueued);
    }
    fx_theEventHandler->distributeEvents();
}
// So many that what is queued for an object is looked up.
void deleteWithManyMessages() {
    Source source;
    Sink sinks[40];
    for (Sink& sink : sinks)
        source.connect("out", &sink, "number");
    source.sendInt(source.out, 1, fxObj::fxSendQueued);
    sinks[0].removeInput("number");
    source.sendInt(source.out, 2, fxObj::fxSendUrgent);
}
void copyObjects() {
    Sink sink;
    sink.setProperty(made<fxProperty>(fxProperty::allocNewTag("a"), 5L));
    const Sink copy(sink);
}
void setProperties() {
    Sink object;
    for (int i = 0; i < 20; ++i)
        object.setProperty(
            made<fxProperty>(fxProperty::allocNewTag(fxStr(i, "tag %d").c_str()), fxStr(longText)));
    object.removeProperty("tag 5");
    object.removeAllProperties();
}
void holdValues() {
    fxStrData text{fxStr(longText)};
    fxIntData number(5);
    fxStr copied;
    text.getValue(fxDT_fxStr, &copied);
}
void runTimers() {
    fxTimer one(0);
    fxTimer two(1);
    one.setInterval(0.001F);
    two.setInterval(0.002F);
    one.startTimer();
    two.startTimer();
    fxTimer::alarm(0.01F);
    two.stopTimer();
    fx_theEventHandler->distributeEvents();
}
void pollOnce() {
    struct Handler : fxSelectHandler {
        explicit Handler(int descriptor) : fxSelectHandler(descriptor, 1, 1, 0) {}
        void handleRead() override {}
    } handler(1);
    fx_theExecutive->addSelectHandler(&handler);
    fx_theExecutive->poll(0);
    fx_theExecutive->removeSelectHandler(&handler);
}
void sequenceNumbers() {
    fxSequencer numbers;
    for (int i = 0; i < 20; ++i)
        numbers(static_cast<unsigned int>(i * 3));
    numbers();
}

}  // namespace

Scenarios ofObjects() {
    return {
        {"addChannels", addChannels, usual},
        {"connectObjects", connectObjects, usual},
        {"deleteWithMessages", deleteWithMessages, usual},
        {"deleteWithManyMessages", deleteWithManyMessages, usual},
        {"copyObjects", copyObjects, usual},
        {"setProperties", setProperties, usual},
        {"holdValues", holdValues, usual},
        {"runTimers", runTimers, usual},
        {"pollOnce", pollOnce, usual},
        {"sequenceNumbers", sequenceNumbers, usual},
        {"fxSendQueued", sendValues<fxObj::fxSendQueued>, usual},
        {"fxSendNow", sendValues<fxObj::fxSendNow>, usual},
        {"fxSendUrgent", sendValues<fxObj::fxSendUrgent>, usual},
    };
}
