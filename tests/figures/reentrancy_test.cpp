// Everything added, removed and deleted from within everything that the library calls.

#include <cerrno>
#include <cstdio>
#include <string>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/objects/fxSequencer.h"
#include "kelvofxds/values/fxConverter.h"
#include "kelvofxds/values/fxProperty.h"
#include "tests/support/calledObjects.h"
#include "tests/support/figure.h"

namespace callbacks {

// Functions around the wait.

template <unsigned int I, unsigned int Behind>
void function() {
    world->calls += world->added[Behind][I] != 0 ? 0 : 1;
    world->act(Behind != 0 ? postSelect : preSelect, nullptr);
}
void (*const allFunctions[2][functions])() = {
    {function<0, 0>, function<1, 0>, function<2, 0>, function<3, 0>},
    {function<0, 1>, function<1, 1>, function<2, 1>, function<3, 1>}};

// What a destroy function is given.
struct Token {
    Living living{this};
};
void destroyToken(void* token) {
    if (world->isCalled(token))
        delete static_cast<Token*>(token);
    world->act(destroyFunction, nullptr);
}

unsigned char isUnwanted(fxEvent* event, void*) {
    const auto* own = dynamic_cast<HostEvent*>(event);
    const bool stays = own && own->closesAll;
    world->act(predicate, nullptr);
    return !stays && world->random(3) == 0;
}

// The world.

World::World() : processExecutive(fx_theExecutive) {
    world = this;
    fx_theExecutive = &exec;
    ownType = static_cast<unsigned short>((*fx_nextDataType)());
    for (const unsigned short to : {fxDT_int, fxDT_float})
        new fxConverter(ownType, to, reinterpret_cast<void (*)()>(convertToFloat));
    tags[0] = fxProperty::allocNewTag("reentrancy 0");
    tags[1] = fxProperty::allocNewTag("reentrancy 1");
    const Node first;
    tags[2] = fxProperty::allocNewTag("reentrancy 2");
    tags[3] = fxProperty::allocNewTag("reentrancy 3");
}

World::~World() {
    goal = 0;
    while (!applications.empty())
        end(applications.back());
    while (!timers.empty())
        delete timers.back();
    while (!handlers.empty())
        delete handlers.back();
    while (!nodes.empty())
        delete nodes.back();
    while (fxEvent* event = fx_theEventHandler->getQueue().get())
        delete event;
    fx_theExecutive = processExecutive;
}

void World::run(unsigned long rounds) {
    goal = rounds;
    while (allDone < goal) {
        populate();
        // Now and then there are more events than are looked through one by one.
        const unsigned int n = random(16) == 0 ? 100 : 8;
        for (unsigned int i = 0; i < n; ++i) {
            perform(nullptr);
            send(nullptr);
        }
        pass(nullptr);
    }
}

void World::act(Callback callback, fxObj* self) {
    const unsigned int deepest = 4;
    if (allDone >= goal || depth >= deepest)
        return;
    ++allDone;
    ++done[callback];
    ++depth;
    perform(self);
    --depth;
}

// One of all, itself in one of four cases if that is one of them; null if there is none.
template <class T>
T* World::any(const std::vector<T*>& all, const fxObj* self) {
    if (all.empty())
        return nullptr;
    const auto found = std::find(all.begin(), all.end(), self);
    if (found != all.end() && random(4) == 0)
        return *found;
    return all[random(static_cast<unsigned int>(all.size()))];
}

unsigned short World::anyType() {
    const unsigned short types[] = {fxDT_void,  fxDT_int,     fxDT_int,
                                    fxDT_float, fxDT_CharPtr, ownType};
    return types[random(6)];
}

// There is always something.
void World::populate() {
    while (nodes.size() < 6)
        makeNode(nullptr);
    while (handlers.size() < 4)
        makeHandler(nullptr);
    while (timers.size() < 4)
        makeTimer(nullptr);
    while (applications.size() < 2)
        makeApplication(nullptr);
    for (unsigned int i = 0; i < 20; ++i)
        connect(nullptr);
}

const World::Action World::actions[] = {&World::makeNode,
                                        &World::deleteNode,
                                        &World::addInput,
                                        &World::removeInput,
                                        &World::addOutput,
                                        &World::removeOutput,
                                        &World::removeChannels,
                                        &World::connect,
                                        &World::connect,
                                        &World::connect,
                                        &World::disconnect,
                                        &World::flush,
                                        &World::send,
                                        &World::send,
                                        &World::send,
                                        &World::send,
                                        &World::setProperty,
                                        &World::removeProperty,
                                        &World::postEvent,
                                        &World::removeEvents,
                                        &World::distribute,
                                        &World::makeHandler,
                                        &World::addHandler,
                                        &World::removeHandler,
                                        &World::deleteHandler,
                                        &World::makeTimer,
                                        &World::startTimer,
                                        &World::startTimer,
                                        &World::stopTimer,
                                        &World::deleteTimer,
                                        &World::makeApplication,
                                        &World::openApplication,
                                        &World::closeApplication,
                                        &World::deleteApplication,
                                        &World::walkApplications,
                                        &World::addFunction,
                                        &World::removeFunction,
                                        &World::pass,
                                        &World::alarm,
                                        &World::loop};

void World::perform(fxObj* self) {
    const unsigned int n = sizeof actions / sizeof actions[0];
    (this->*actions[random(n)])(self);
}

// What is done: to nodes.

void World::makeNode(fxObj*) {
    if (nodes.size() >= 20)
        return;
    auto* node = new Node;
    const unsigned long number = node->number();
    for (unsigned int i = 0; i < channels; ++i) {
        if (isThere(node, number))
            node->makeOutput(i, anyType());
        if (isThere(node, number))
            node->makeInput(i, anyType(), random(3));
    }
}

void World::deleteNode(fxObj* self) { delete any(nodes, self); }

void World::addInput(fxObj* self) {
    if (Node* node = any(nodes, self))
        node->makeInput(random(channels), anyType(), random(3));
}

void World::removeInput(fxObj* self) {
    if (Node* node = any(nodes, self))
        node->removeInput(inputNames[random(channels)]);
}

void World::addOutput(fxObj* self) {
    if (Node* node = any(nodes, self))
        node->makeOutput(random(channels), anyType());
}

void World::removeOutput(fxObj* self) {
    if (Node* node = any(nodes, self))
        node->endOutput(random(channels));
}

void World::removeChannels(fxObj* self) {
    Node* node = any(nodes, self);
    if (!node || random(4) != 0)
        return;
    node->removeChannels();
}

void World::connect(fxObj* self) {
    Node* to = any(nodes, self);
    if (!to)
        return;
    const char* const inputName = inputNames[random(channels)];
    if (random(4) != 0)
        fxTryConnect(any(nodes, self), outputNames[random(channels)], to, inputName);
    else
        fxTryConnect(any(timers, self), "tick", to, inputName);
}

void World::disconnect(fxObj* self) {
    if (Node* node = any(nodes, self))
        node->disconnect(outputNames[random(channels)], any(nodes, self),
                         inputNames[random(channels)]);
}

void World::flush(fxObj* self) {
    const Node* node = any(nodes, self);
    fxOutputChannel* out = node ? node->out[random(channels)] : nullptr;
    const unsigned int n = out ? out->getNumberOfConnections() : 0;
    if (n == 0)
        return;
    fxInputChannel* connection = (*out)[random(n)];
    fxInputChannel* in = connection->finalChannel();
    switch (random(4)) {
        case 0:
            return in->flush();
        case 1:
            return in->disconnect();
        case 2:
            return connection->flush();
        default:
            return fx_theEventHandler->removeMessageEvents(connection);
    }
}

void World::send(fxObj* self) {
    Node* node = any(nodes, self);
    fxOutputChannel* out = node ? node->out[random(channels)] : nullptr;
    if (!out || fx_theEventHandler->numberOfEvents() > 200)
        return;
    const unsigned short type = out->getType();
    const fxObj::fxSendFlags flags = anyFlags();
    if (type == fxDT_void)
        node->sendVoid(out, flags);
    else if (type == fxDT_float)
        node->sendFloat(out, 1, flags);
    else if (type == fxDT_CharPtr)
        node->sendCharPtr(out, "1", flags);
    else if (type == fxDT_int && random(2) == 0)
        node->sendInt(out, 1, flags);
    else
        node->sendData(out, new Holder(type), flags);
}

void World::setProperty(fxObj* self) {
    Node* node = any(nodes, self);
    if (!node)
        return;
    const unsigned short tag = tags[random(4)];
    switch (random(3)) {
        case 0:
            node->setProperty(new fxProperty(tag, new Token, destroyToken));
            return;
        case 1:
            node->setProperty(new fxProperty(tag, static_cast<fxObj*>(new Held)));
            return;
        default:
            node->setProperty(new fxProperty(tag, static_cast<fxData*>(new Holder(fxDT_int))));
    }
}

void World::removeProperty(fxObj* self) {
    if (Node* node = any(nodes, self))
        node->removeProperty(tags[random(4)]);
}

// To events.

void World::postEvent(fxObj*) {
    if (fx_theEventHandler->numberOfEvents() < 200)
        fx_theEventHandler->postEvent(new HostEvent(false), random(2) != 0);
}

void World::removeEvents(fxObj* self) {
    if (random(2) == 0)
        fx_theEventHandler->removeEvents(isUnwanted, nullptr);
    else
        fx_theEventHandler->removeEventsFor(any(nodes, self));
}

void World::distribute(fxObj*) { fx_theEventHandler->distributeEvents(); }

// To handlers.

void World::makeHandler(fxObj*) {
    if (handlers.size() < 20)
        addHandler(new Handler(static_cast<int>(random(descriptors)), 1 + random(7)));
}

void World::addHandler(fxObj* self) {
    Handler* handler = any(handlers, self);
    if (!handler)
        return;
    Handler*& place = registered[handler->place()];
    if (place && place != handler)
        place->isRemoved();
    place = handler;
    exec.addSelectHandler(handler);
}

void World::removeHandler(fxObj* self) {
    Handler* handler = any(handlers, self);
    if (!handler)
        return;
    Handler*& place = registered[handler->place()];
    if (place)
        place->isRemoved();
    place = nullptr;
    exec.removeSelectHandler(handler);
}

void World::deleteHandler(fxObj* self) {
    Handler* handler = any(handlers, self);
    if (handler && handler->isRegistered() && random(2) == 0) {
        registered[handler->place()] = nullptr;
        exec.removeSelectHandler(handler);
    }
    delete handler;
}

// To timers.

void World::makeTimer(fxObj*) {
    if (timers.size() < 20)
        startTimer(new Timer(random(2) != 0));
}

void World::startTimer(fxObj* self) {
    Timer* timer = any(timers, self);
    if (!timer)
        return;
    const float intervals[] = {0, -0.25F, 0.25F, 0.5F, 0.5F, 1, 2};
    timer->setInterval(intervals[random(7)]);
    timer->start();
}

void World::stopTimer(fxObj* self) {
    if (Timer* timer = any(timers, self))
        timer->stop();
}

void World::deleteTimer(fxObj* self) { delete any(timers, self); }

// To applications.

void World::makeApplication(fxObj*) {
    if (applications.size() < 8 && !isEnding)
        new Application;
}

void World::openApplication(fxObj* self) {
    Application* application = any(applications, self);
    if (!application)
        return;
    if (!exec.contains(application) && !isEnding)
        exec.add(application);
    calledDirectly = application;
    application->open();
}

void World::closeApplication(fxObj* self) {
    Application* application = any(applications, self);
    calledDirectly = application;
    if (application)
        application->close();
}

void World::closeAll() {
    while (!applications.empty())
        end(applications.back());
}

// Ends one, which is closed for that unless it is open.
void World::end(Application* application) {
    if (!application->isOpen() || random(2) == 0)
        application->fxApplication::close();
    delete application;
}

void World::deleteApplication(fxObj* self) {
    if (Application* application = any(applications, self))
        end(application);
}

void World::walkApplications(fxObj*) {
    switch (random(3)) {
        case 0:
            return exec.initialize(0, nullptr);
        case 1:
            return exec.open();
        default:
            return exec.close();
    }
}

// To the loop.

void World::addFunction(fxObj*) {
    const unsigned int behind = random(2), i = random(functions);
    if (added[behind][i] >= 2)
        return;
    ++added[behind][i];
    if (behind != 0)
        exec.addPostSelectFunc(allFunctions[1][i]);
    else
        exec.addPreSelectFunc(allFunctions[0][i]);
}

void World::removeFunction(fxObj*) {
    const unsigned int behind = random(2), i = random(functions);
    added[behind][i] -= added[behind][i] != 0 ? 1 : 0;
    if (behind != 0)
        exec.removePostSelectFunc(allFunctions[1][i]);
    else
        exec.removePreSelectFunc(allFunctions[0][i]);
}

// Some of the descriptors of a set.
std::vector<int> someOf(const fd_set& set) {
    std::vector<int> some;
    for (int d = 0; d < static_cast<int>(descriptors); ++d) {
        if (FD_ISSET(d, &set) && world->random(2) == 0)
            some.push_back(d);
    }
    return some;
}

// A pass or an alarm in progress.
class World::Frame {
public:
    Frame() {
        world->passes.push_back(++world->lastPass);
        if (world->passes.size() == 1)
            world->outermost = world->lastPass;
    }
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;
    ~Frame() {
        world->passes.pop_back();
        if (world->passes.empty())
            world->outermost = 0;
    }
};

void World::pass(fxObj*) {
    const Frame frame;
    SelectAnswer answer = loopTest::failure(EINTR);
    if (random(8) != 0)
        answer = loopTest::ready(someOf(exec.getReadSet()), someOf(exec.getWriteSet()),
                                 someOf(exec.getExceptionSet()));
    answer.ticks = random(60);
    const std::size_t others = system.answers.size();
    system.answers.push_front(answer);
    exec.poll(static_cast<float>(random(3)));
    if (system.answers.size() > others)  // nothing was waited for
        system.answers.pop_front();
}

void World::alarm(fxObj*) {
    const Frame frame;
    fxTimer::alarm(static_cast<float>(random(8)) / 8);
}

// An event closes all applications.
void World::loop(fxObj*) {
    if (isEnding || passes.size() > 1)
        return;
    const Frame frame;
    makeApplication(nullptr);
    isEnding = true;
    fx_theEventHandler->postEvent(new HostEvent(true), 0);
    exec.loop();
    isEnding = false;
}

}  // namespace callbacks

using namespace callbacks;

TEST(figureL2, nothingThatIsRemovedIsCalled) {
    fxInitializeToolkit();
    const unsigned long rounds = figureSize(100000, 5000);
    unsigned long calls = 0;
    {
        std::fprintf(stderr, "seed %u\n", seed);
        World all;
        all.run(rounds);
        calls = all.calls;
        for (unsigned int i = 0; i < numberOfCallbacks; ++i) {
            std::fprintf(stderr, "%s: %lu\n", callbackNames[i], all.done[i]);
            EXPECT_NE(0UL, all.done[i]) << callbackNames[i];
        }
    }
    // A report of the sanitizer ends the program before this.
    reportFigure("L2", std::to_string(rounds) + ";0;" + std::to_string(calls),
                 std::to_string(rounds) + ";0;0", calls == 0);
}
