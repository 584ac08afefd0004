// calledObjects.h - what the library calls, each of which does something then.
#pragma once

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "kelvofxds/objects/fxApplication.h"
#include "kelvofxds/objects/fxEvent.h"
#include "kelvofxds/objects/fxSelectHandler.h"
#include "kelvofxds/objects/fxTimer.h"
#include "kelvofxds/objects/fxWiring.h"
#include "kelvofxds/values/fxData.h"
#include "tests/support/callbackWorld.h"

namespace callbacks {

// Values.

/// Calls its receiver, then does something.
class Holder : public fxData {
public:
    explicit Holder(unsigned short typeCode) : fxData(typeCode), living(this) {}
    const char* dataName() const override { return "HOLDER"; }
    void deliverTo(void (*function)(), void* target) override {
        world->isCalled(this);
        reinterpret_cast<void (*)(void*, int)>(function)(target, 1);
        world->act(deliveryOfAHolder, nullptr);
    }
    void getValue(unsigned short, void* out) override { *static_cast<int*>(out) = 1; }
    unsigned int getSize() override { return sizeof(int); }

private:
    Ending ending{holdersEnd};  // once it does not live any more
    Living living;
};

/// A conversion of the own type.
inline void convertToFloat(fxInputChannel* in, int value) {
    const auto receive = reinterpret_cast<void (*)(void*, float)>(in->function);
    receive(in->target, static_cast<float>(value));
    world->act(conversion, nullptr);
}

// Objects with channels.

/// Has inputs and outputs.
class Node : public fxObj {
public:
    Node() : living(this) { world->nodes.push_back(this); }
    ~Node() override { erase(world->nodes, this); }
    unsigned long number() const { return living.number; }

    void connect(const char* outputName, fxObj* to, const char* inputName) override {
        fxObj::connect(outputName, to, inputName);
        if (world->random(4) == 0)
            world->act(connecting, this);
    }
    void disconnect(const char* outputName, fxObj* to, const char* inputName) override {
        fxObj::disconnect(outputName, to, inputName);
        world->act(disconnecting, this);
    }

    /// An input of one of three kinds, for values of `type`.
    void makeInput(unsigned int i, unsigned short type, unsigned int kind);
    void makeOutput(unsigned int i, unsigned short type) {
        if (clearing != 0)
            return;
        out[i] = nullptr;
        out[i] = addOutput(outputNames[i], type);
    }
    void endOutput(unsigned int i) {
        out[i] = nullptr;
        removeOutput(outputNames[i]);
    }

    /// With all properties; an output that is made meanwhile might go too.
    void removeChannels() {
        std::fill(std::begin(out), std::end(out), nullptr);
        ++clearing;
        const unsigned long before = number();
        removeAllProperties();
        if (world->isThere(this, before))
            --clearing;
    }

    fxOutputChannel* out[channels] = {};

private:
    static void received(Node* self, Callback callback) {
        if (world->isCalled(self))
            world->act(callback, self);
    }
    template <class... Value>
    static void takePlain(Node* self, Value...) {
        received(self, plainInput);
    }
    template <class... Value>
    void takeMember(Value...) {
        received(this, memberInput);
    }
    template <class... Value>
    void addInputOf(const char* name, unsigned short type, unsigned int kind);

    unsigned int clearing = 0;  // removals of all properties in progress
    Living living;
};

template <class... Value>
void Node::addInputOf(const char* name, unsigned short type, unsigned int kind) {
    const bool isLatestOnly = world->random(3) == 0;
    if (kind == 1) {
        fxAddInput(this, name, &Node::takeMember<Value...>, isLatestOnly);
        return;
    }
    if (kind == 2) {
        const auto ending = std::make_shared<Ending>(lambdasEnd);
        const auto take = [this, ending](Value...) { received(this, lambdaInput); };
        fxOnInput(this, name, take, isLatestOnly);
        return;
    }
    // One of the same name that is let go would live on.
    const unsigned long number = living.number;
    removeInput(name);
    if (world->isThere(this, number))
        addInput(name, type, this, reinterpret_cast<void (*)()>(takePlain<Value...>), isLatestOnly);
}

inline void Node::makeInput(unsigned int i, unsigned short type, unsigned int kind) {
    const char* const name = inputNames[i];
    if (type == fxDT_void)
        addInputOf<>(name, type, kind);
    else if (type == fxDT_float)
        addInputOf<float>(name, type, kind);
    else if (type == fxDT_CharPtr)
        addInputOf<char*>(name, type, kind);
    else
        addInputOf<int>(name, type, type == fxDT_int ? kind : 0);
}

/// Lives as long as its property.
class Held : public fxObj {
public:
    Held() = default;

private:
    Ending ending{propertysEnd};
};

/// No message; one of them ends all applications.
class HostEvent : public fxEvent {
public:
    explicit HostEvent(bool closes) : fxEvent(fxET_Unknown), closesAll(closes), living(this) {}
    void deliver() override;

    const bool closesAll;

private:
    Ending ending{eventsEnd};
    Living living;
};

// What the loop serves.

/// Knows whether it may be called.
class Handler : public fxSelectHandler {
public:
    Handler(int descriptor, unsigned int interest)
        : fxSelectHandler(descriptor, interest & 1U, interest & 2U, interest & 4U), living(this) {
        world->handlers.push_back(this);
    }
    ~Handler() override {
        erase(world->handlers, this);
        if (isRegistered())
            world->registered[place()] = nullptr;
    }

    void handleRead() override { handle(readHandler); }
    void handleWrite() override { handle(writeHandler); }
    void handleException() override { handle(exceptionHandler); }

    unsigned int place() const { return static_cast<unsigned int>(fd); }
    bool isRegistered() const { return world->registered[place()] == this; }
    /// One that is removed while it is called is served to the end in the passes that call it.
    void isRemoved() { servedBy = calledBy; }

private:
    void handle(Callback callback) {
        if (!world->isCalled(this))
            return;
        const unsigned int pass = world->passes.back();
        if (!isRegistered() && std::count(servedBy.begin(), servedBy.end(), pass) == 0)
            ++world->calls;
        calledBy.push_back(pass);
        const unsigned long number = living.number;
        world->act(callback, this);
        if (world->isThere(this, number))
            calledBy.pop_back();
    }

    std::vector<unsigned int> calledBy;  // passes
    std::vector<unsigned int> servedBy;  // passes that may call it although it is removed
    Living living;
};

/// Knows whether it may tick.
class Timer : public fxTimer {
public:
    explicit Timer(bool isRepeating) : fxTimer(isRepeating), repeats(isRepeating), living(this) {
        world->timers.push_back(this);
    }
    ~Timer() override { erase(world->timers, this); }

    void tick() override {
        if (!world->isCalled(this))
            return;
        world->calls += mayTick ? 0 : 1;
        mayTick = repeats;
        tickedIn = world->outermost;
        const unsigned long number = living.number;
        world->act(ownTick, this);
        if (world->isThere(this, number))
            fxTimer::tick();
    }
    void start() {
        mayTick = true;
        startTimer();
    }
    /// One that repeats and has ticked starts anew at the end of the alarm all the same.
    void stop() {
        if (isActive() && !(repeats && tickedIn == world->outermost))
            mayTick = false;
        stopTimer();
    }

private:
    const bool repeats;
    bool mayTick = false;
    unsigned int tickedIn = 0;
    Living living;
};

/// Knows whether it is registered.
class Application : public fxApplication {
public:
    Application() : living(this) { world->applications.push_back(this); }
    ~Application() override { erase(world->applications, this); }

    void initialize(int, char**) override {
        isCalled();
        world->act(initialization, this);
    }
    void open() override {
        isCalled();
        fxApplication::open();
        world->act(opening, this);
    }
    void close() override {
        isCalled();
        fxApplication::close();
        world->act(closing, this);
    }

private:
    // The walks find those that are registered.
    void isCalled() {
        const bool isDirect = std::exchange(world->calledDirectly, nullptr) == this;
        if (world->isCalled(this))
            world->calls += isDirect || world->exec.contains(this) ? 0 : 1;
    }

    Living living;
};

inline void HostEvent::deliver() {
    world->isCalled(this);
    if (closesAll)
        world->closeAll();
    world->act(delivery, this);
}

}  // namespace callbacks
