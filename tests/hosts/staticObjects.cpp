// staticObjects.cpp - a host whose static objects have channels, properties and
// timers before it initialises the toolkit. Exits with 0 when they all work
// afterwards, and when what cannot work before ends the process with a message.

#include <cstdio>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxApplication.h"
#include "kelvofxds/objects/fxEvent.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxTimer.h"
#include "kelvofxds/values/fxData.h"
#include "kelvofxds/values/fxProperty.h"
#include "tests/hosts/lastWords.h"

namespace {

class Sender : public fxObj {
public:
    explicit Sender(unsigned short type) : out(addOutput("out", type)) {}

    fxOutputChannel* out;
};

class Receiver : public fxObj {
public:
    Receiver() {
        addInput("int", fxDT_int, this, reinterpret_cast<void (*)()>(takeInt), 0);
        addInput("latest", fxDT_int, this, reinterpret_cast<void (*)()>(takeInt), 1);
        addInput("tick", fxDT_void, this, reinterpret_cast<void (*)()>(takeTick), 0);
    }

    int sum = 0;
    int ticks = 0;

private:
    static void takeInt(Receiver* self, int value) { self->sum += value; }
    static void takeTick(Receiver* self) { ++self->ticks; }
};

class Application : public fxApplication {
public:
    void initialize(int, char**) override {}
};

// Each is made, connected and started before main.

int textsFreed = 0;
void freeText(void*) { ++textsFreed; }

Sender sender(fxDT_int), converted(fxDT_float);
Receiver receiver;
fxTimer timer(0);
fxObj holder;

const bool isConnected = [] {
    sender.connect("out", &receiver, "int");
    sender.connect("out", &receiver, "latest");
    timer.connect("tick", &receiver, "tick");
    timer.setInterval(0.5F);
    timer.startTimer();
    holder.setProperty(new fxProperty(fxProperty::allocNewTag("text"), fxStr("before")));
    static char text[] = "";
    holder.setProperty(
        new fxProperty(fxProperty::allocNewTag("freed"), static_cast<void*>(text), freeText));
    {
        Sender shortLived(fxDT_int);
        shortLived.connect("out", &receiver, "int");
        shortLived.sendInt(Sender(fxDT_int).out, 1, fxObj::fxSendNow);  // to nobody
    }
    return true;
}();

// What ends the process at once, and its message.

void sendsQueued() { sender.sendInt(sender.out, 1, fxObj::fxSendQueued); }
void sendsNow() { sender.sendInt(sender.out, 1, fxObj::fxSendNow); }
void ticks() { timer.tick(); }
void connectsWithAConversion() { converted.connect("out", &receiver, "int"); }
void makesAnApplication() { Application application; }

const char fromObjects[] = "fxObj: call fxInitializeToolkit first\n";

const struct {
    const char* expected;
    LastWords found;
} endings[] = {
    {fromObjects, LastWords(sendsQueued)},
    {fromObjects, LastWords(sendsNow)},
    {fromObjects, LastWords(ticks)},
    {"fxConverter: call fxInitializeToolkit first\n", LastWords(connectsWithAConversion)},
    {"fxApplication: call fxInitializeToolkit first\n", LastWords(makesAnApplication)},
};

int failures = 0;

void check(bool isRight, const char* complaint) {
    if (isRight)
        return;
    std::fprintf(stderr, "%s\n", complaint);
    ++failures;
}

void checkEndings() {
    for (const auto& ending : endings) {
        if (ending.found.are(ending.expected))
            continue;
        std::fprintf(stderr, "not \"%s\" but \"%s\"\n", ending.expected, ending.found.text);
        ++failures;
    }
}

void checkObjects() {
    sender.sendInt(sender.out, 1, fxObj::fxSendNow);
    check(receiver.sum == 2, "an immediate value does not arrive at both inputs");
    sender.sendInt(sender.out, 10, fxObj::fxSendQueued);
    sender.sendInt(sender.out, 100, fxObj::fxSendQueued);
    check(fx_theEventHandler->numberOfEvents() == 3, "an input does not keep the latest only");
    fx_theEventHandler->distributeEvents();
    check(receiver.sum == 2 + 110 + 100, "queued values do not arrive");
    converted.connect("out", &receiver, "int");
    converted.sendFloat(converted.out, 1000.5F, fxObj::fxSendNow);
    check(receiver.sum == 1212, "a converted value does not arrive");

    fxTimer::alarm(0.5F);
    fx_theEventHandler->distributeEvents();
    check(receiver.ticks == 1, "a tick does not arrive");

    const fxProperty* text = holder.findProperty("text");
    check(text && text->getType() == fxDT_fxStr && *text->getAsStr() == "before",
          "a text property is lost");
    holder.removeAllProperties();
    check(textsFreed == 1, "a property's destroy function is not called");

    receiver.removeInput("int");
    sender.sendInt(sender.out, 1, fxObj::fxSendNow);
    check(receiver.sum == 1213, "an input cannot be removed");
    sender.removeAllProperties();
    check(receiver.findProperty("inputs") != nullptr, "the inputs are lost");
}

}  // namespace

// The objects end behind main: under the address sanitizer this also shows that
// all they own is freed.
int main() {
    check(isConnected && fx_theEventHandler == nullptr, "the toolkit is there before main");
    checkEndings();
    fxInitializeToolkit();
    checkObjects();
    return failures == 0 ? 0 : 1;
}
