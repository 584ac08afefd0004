// noRtti.cpp - a host without run-time type information and without exceptions,
// with classes of its own of every kind that the event loop meets. Exits with 0
// when all of them do what they are for.

#include <unistd.h>

#include <cstdio>
#include <new>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxApplication.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxMessageEvent.h"
#include "kelvofxds/objects/fxSelectHandler.h"
#include "kelvofxds/objects/fxTimer.h"
#include "kelvofxds/objects/fxWiring.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/values/fxConverter.h"
#include "kelvofxds/values/fxData.h"
#include "kelvofxds/values/fxProperty.h"

#if defined(__GXX_RTTI) || defined(__cpp_exceptions)
#error "this host is meant to be compiled with -fno-rtti -fno-exceptions"
#endif

namespace {

int failures = 0;
int ends = 0;  // of objects of the host's classes

void check(bool holds, const char* what) {
    if (holds)
        return;
    std::fprintf(stderr, "noRtti: %s\n", what);
    ++failures;
}

class HostObject : public fxObj {
public:
    HostObject() : received(0), out(addOutput("out", fxDT_int)) {
        in = addInput("in", fxDT_int, this, reinterpret_cast<void (*)()>(receive), 0);
        addInput("float", fxDT_float, this, reinterpret_cast<void (*)()>(receiveFloat), 0);
    }
    ~HostObject() override { ++ends; }

    int received;
    fxOutputChannel* out;
    fxInputChannel* in;

private:
    static void receive(HostObject* self, int value) { self->received += value; }
    static void receiveFloat(HostObject* self, float value) {
        self->received += static_cast<int>(value);
    }
};

class HostEvent : public fxEvent {
public:
    HostEvent() : fxEvent(fxET_Unknown) {}
    ~HostEvent() override { ++ends; }
    void deliver() override { ++delivered; }
    static int delivered;
};
int HostEvent::delivered = 0;

class HostMessage : public fxMessageEvent {
public:
    using fxMessageEvent::fxMessageEvent;
    ~HostMessage() override { ++ends; }
};

class HostData : public fxData {
public:
    explicit HostData(int v) : fxData(fxDT_int), value(v) {}
    ~HostData() override { ++ends; }
    const char* dataName() const override { return "host"; }
    void deliverTo(void (*function)(), void* target) override {
        reinterpret_cast<void (*)(void*, int)>(function)(target, value);
    }
    void getValue(unsigned short, void* place) override { *static_cast<int*>(place) = value; }
    unsigned int getSize() override { return sizeof value; }
    int value;
};

class HostHandler : public fxSelectHandler {
public:
    explicit HostHandler(int descriptor) : fxSelectHandler(descriptor, 1, 0, 0), bytes(0) {}
    void handleRead() override {
        char byte;
        bytes += static_cast<int>(::read(fd, &byte, 1));
    }
    int bytes;
};

class HostTimer : public fxTimer {
public:
    HostTimer() : fxTimer(0), ticks(0) {}
    void tick() override { ++ticks; }
    int ticks;
};

class HostApplication : public fxApplication {
public:
    void initialize(int, char**) override {}
};

void distribute() { fx_theEventHandler->distributeEvents(); }

// The host's messages and events, with some of the library's before and behind.
void messages() {
    HostObject sender, receiver;
    sender.connect("out", &receiver, "in");
    for (int round = 0; round < 2; ++round) {
        sender.sendInt(sender.out, 1, fxObj::fxSendQueued);
        fx_theEventHandler->postEvent(new HostMessage(receiver.in, new HostData(10)), 0);
        fx_theEventHandler->postEvent(new fxMessageEvent(receiver.in, new HostData(100)), 0);
        fx_theEventHandler->postEvent(new HostEvent, 1);
        sender.sendInt(sender.out, 1000, fxObj::fxSendUrgent);
        sender.sendData(sender.out, new HostData(10000), fxObj::fxSendNow);
        distribute();
    }
    check(receiver.received == 22222, "a message was lost or came twice");
    check(HostEvent::delivered == 2, "an event was lost or came twice");
    check(ends == 10, "an object of a host's class did not end once");
}

// Removed by a channel, by a target and by the end of the receiver.
void removals() {
    HostObject sender;
    for (int many = 1; many <= 1000; many *= 1000) {
        auto* receiver = new HostObject;
        sender.connect("out", receiver, "in");
        sender.connect("out", receiver, "float");
        ends = 0;
        for (int i = 0; i < many; ++i) {
            sender.sendInt(sender.out, 1, fxObj::fxSendQueued);
            fx_theEventHandler->postEvent(new HostMessage(receiver->in, new HostData(1)), 0);
            fx_theEventHandler->postEvent(new HostEvent, 0);
        }
        delete receiver;
        check(fx_theEventHandler->numberOfEvents() == static_cast<unsigned int>(many),
              "the messages for an object did not go with it");
        distribute();
        check(ends == 3 * many + 1, "an event of a host's class did not end once");
    }
}

void properties() {
    HostObject* object = new HostObject;
    ends = 0;
    const unsigned short tag = fxProperty::allocNewTag("host");
    object->setProperty(new fxProperty(tag, static_cast<fxObj*>(new HostObject)));
    object->setProperty(new fxProperty(tag, static_cast<fxData*>(new HostData(1))));
    check(ends == 1, "a replaced property did not release its object");
    delete object;
    check(ends == 3, "an object did not release its property");
}

void holders() {
    alignas(fxIntData) unsigned char place[sizeof(fxIntData)];
    fxIntData* holder = new (place) fxIntData(5);
    int value = 0;
    holder->getValue(fxDT_int, &value);
    check(static_cast<void*>(holder) == place && value == 5, "placement new");
    holder->~fxIntData();
    holder = new (std::nothrow) fxIntData(6);
    check(holder != nullptr, "nothrow new");
    delete holder;
}

void loop() {
    int pipe[2];
    if (::pipe(pipe) != 0 || ::write(pipe[1], "x", 1) != 1) {
        check(false, "no pipe");
        return;
    }
    HostHandler handler(pipe[0]);
    HostTimer timer;
    HostApplication application;
    fx_theExecutive->addSelectHandler(&handler);
    timer.startTimer();
    fx_theExecutive->open();
    fx_theExecutive->poll(1);
    fx_theExecutive->close();
    fx_theExecutive->removeSelectHandler(&handler);
    check(handler.bytes == 1, "the handler was not called");
    check(timer.ticks == 1, "the timer did not tick");
    ::close(pipe[1]);
}

}  // namespace

// A class whose name in C++ nobody can tell.
void wiring() {
    HostObject sender;
    int sum = 0;
    auto* dying = new fxObj;
    fxOnInput(dying, "in", [dying, &sum](int value) {
        delete dying;
        sum += value;
    });
    fxStr why;
    check(fxTryConnect(&sender, "out", dying, "in", &why), "connection that was made");
    sender.sendInt(sender.out, 5, fxObj::fxSendNow);
    sender.sendInt(sender.out, 6, fxObj::fxSendNow);
    check(sum == 5, "lambda that deletes its object");
    check(!fxTryConnect(&sender, "tuo", &sender, "in", &why), "connection that was not");
    check(why == "object has no output \"tuo\"; it has: out", "reason");
    std::FILE* nowhere = std::fopen("/dev/null", "w");
    fxObj* const objects[] = {&sender};
    check(fxWriteDot(nowhere, objects, 1), "picture");
    fxSetWiringLog(nowhere);
    sender.connect("out", &sender, "in");
    fxSetWiringLog(nullptr);
    std::fclose(nowhere);
}

int main() {
    fxInitializeToolkit();
    messages();
    wiring();
    removals();
    properties();
    holders();
    loop();
    fxCleanupGlobalOrderings();
    return failures == 0 ? 0 : 1;
}
