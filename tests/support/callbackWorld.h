// callbackWorld.h - objects, and what may be done with them from within every callback.
#pragma once

#include <algorithm>
#include <array>
#include <random>
#include <unordered_map>
#include <vector>

#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxObj.h"
#include "tests/support/fakeSystem.h"

namespace callbacks {

/// What the library calls of a host's.
enum Callback {
    readHandler,
    writeHandler,
    exceptionHandler,
    ownTick,
    preSelect,
    postSelect,
    initialization,
    opening,
    closing,
    plainInput,
    memberInput,
    lambdaInput,
    lambdasEnd,
    conversion,
    delivery,
    deliveryOfAHolder,
    holdersEnd,
    eventsEnd,
    predicate,
    destroyFunction,
    propertysEnd,
    connecting,
    disconnecting,
    numberOfCallbacks
};
/// What they are called.
const char* const callbackNames[] = {
    "handleRead", "handleWrite", "handleException", "tick",
    "pre-select", "post-select", "initialize",      "open",
    "close",      "addInput",    "fxAddInput",      "fxOnInput",
    "~lambda",    "conversion",  "deliver",         "deliverTo",
    "~fxData",    "~fxEvent",    "predicate",       "destroy function",
    "~fxObj",     "connect",     "disconnect"};
static_assert(sizeof callbackNames / sizeof callbackNames[0] == numberOfCallbacks, "a name each");

class Node;
class Handler;
class Timer;
class Application;

const unsigned int seed = 20261122;
const unsigned int descriptors = 40;
const unsigned int channels = 3;   // inputs, and outputs, of a node
const unsigned int functions = 4;  // before, and behind, the wait
const char* const inputNames[channels] = {"in0", "in1", "in2"};
const char* const outputNames[channels] = {"out0", "out1", "out2"};

/// All there is, and what is done with it.
class World {
public:
    World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;
    ~World();

    /// Makes passes until so many callbacks have done something.
    void run(unsigned long rounds);

    /// A callback of `self` has been called, which is null for a function. It may do something,
    /// after which `self` may be gone.
    void act(Callback callback, fxObj* self);

    /// Notes that `object` is called. False: it is not there.
    bool isCalled(const void* object) {
        const bool lives = living.count(object) != 0;
        calls += lives ? 0 : 1;
        return lives;
    }
    /// Whether it is there still, and no other in its place.
    bool isThere(const void* object, unsigned long number) const {
        const auto found = living.find(object);
        return found != living.end() && found->second == number;
    }

    /// Ends all applications.
    void closeAll();

    /// Less than `n`.
    unsigned int random(unsigned int n) { return static_cast<unsigned int>(engine() % n); }

    std::unordered_map<const void*, unsigned long> living;  // and their numbers
    unsigned long born = 0;
    unsigned long calls = 0;  // of what has been removed
    std::array<unsigned long, numberOfCallbacks> done{};
    unsigned long allDone = 0;

    std::vector<Node*> nodes;
    std::vector<Handler*> handlers;
    std::vector<Timer*> timers;
    std::vector<Application*> applications;
    std::array<Handler*, descriptors> registered{};
    std::array<std::array<unsigned int, functions>, 2> added{};  // functions: how often
    std::vector<unsigned int> passes;                            // in progress
    unsigned int outermost = 0;             // number of the pass or alarm that is in no other
    Application* calledDirectly = nullptr;  // by nobody's walk
    unsigned short ownType = 0;
    FakeSystem system;
    fxExec exec;

private:
    class Frame;
    using Action = void (World::*)(fxObj* self);
    static const Action actions[];

    void perform(fxObj* self);
    void populate();
    template <class T>
    T* any(const std::vector<T*>& all, const fxObj* self);

    void makeNode(fxObj*);
    void deleteNode(fxObj* self);
    void addInput(fxObj* self);
    void removeInput(fxObj* self);
    void addOutput(fxObj* self);
    void removeOutput(fxObj* self);
    void removeChannels(fxObj* self);
    void connect(fxObj* self);
    void disconnect(fxObj* self);
    void flush(fxObj* self);
    void send(fxObj* self);
    void setProperty(fxObj* self);
    void removeProperty(fxObj* self);
    void postEvent(fxObj*);
    void removeEvents(fxObj* self);
    void distribute(fxObj*);
    void makeHandler(fxObj*);
    void addHandler(fxObj* self);
    void removeHandler(fxObj* self);
    void deleteHandler(fxObj* self);
    void makeTimer(fxObj*);
    void startTimer(fxObj* self);
    void stopTimer(fxObj* self);
    void deleteTimer(fxObj* self);
    void makeApplication(fxObj*);
    void openApplication(fxObj* self);
    void closeApplication(fxObj* self);
    void deleteApplication(fxObj* self);
    void walkApplications(fxObj*);
    void addFunction(fxObj*);
    void removeFunction(fxObj*);
    void pass(fxObj*);
    void alarm(fxObj*);
    void loop(fxObj*);

    void end(Application* application);
    fxObj::fxSendFlags anyFlags() { return static_cast<fxObj::fxSendFlags>(random(3)); }
    unsigned short anyType();

    std::mt19937 engine{seed};
    unsigned long goal = 0;
    unsigned int depth = 0;
    unsigned int lastPass = 0;
    bool isEnding = false;  // no application is made
    fxExec* processExecutive;
    std::array<unsigned short, 4> tags{};
};

/// The one.
inline World* world = nullptr;

/// Of what lives, under the address as which it is called.
class Living {
public:
    explicit Living(const void* address) : number(++world->born), object(address) {
        world->living[object] = number;
    }
    Living(const Living&) = delete;
    Living& operator=(const Living&) = delete;
    ~Living() { world->living.erase(object); }

    const unsigned long number;

private:
    const void* object;
};

/// Takes `one` out of all.
template <class T>
void erase(std::vector<T*>& all, T* one) {
    all.erase(std::remove(all.begin(), all.end(), one), all.end());
}

/// Does something when it goes.
class Ending {
public:
    explicit Ending(Callback what) : callback(what) {}
    Ending(const Ending&) = delete;
    Ending& operator=(const Ending&) = delete;
    ~Ending() { world->act(callback, nullptr); }

private:
    Callback callback;
};

}  // namespace callbacks
