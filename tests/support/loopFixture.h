// loopFixture.h - an executive, and objects for it whose doings a test decides.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxApplication.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxSelectHandler.h"
#include "kelvofxds/objects/fxTimer.h"
#include "kelvofxds/values/fxData.h"
#include "tests/support/fakeSystem.h"

namespace loopTest {

/// What happened in the test that runs, each word followed by a blank.
inline std::string& loopLog() {
    static std::string log;
    return log;
}

inline void note(const std::string& word) { loopLog() += word + " "; }

/// Something a test has an object do. It may end the object and itself.
using Action = std::function<void()>;

inline void run(const Action& action) {
    const Action copy = action;
    if (copy)
        copy();
}

/// Notes "read5", "write5" and "exception5", then does what it is told to.
class ScriptedHandler : public fxSelectHandler {
public:
    /// `interest` holds an r, a w and an x for the conditions it wants.
    ScriptedHandler(int descriptor, const std::string& interest)
        : fxSelectHandler(descriptor, has(interest, 'r'), has(interest, 'w'), has(interest, 'x')),
          name(std::to_string(descriptor)) {}

    void handleRead() override {
        note("read" + name);
        run(onRead);
    }
    void handleWrite() override {
        note("write" + name);
        run(onWrite);
    }
    void handleException() override {
        note("exception" + name);
        run(onException);
    }

    std::string name;
    Action onRead;
    Action onWrite;
    Action onException;

private:
    static unsigned char has(const std::string& interest, char condition) {
        return interest.find(condition) != std::string::npos;
    }
};

/// Notes its name when it ticks, then does what it is told to, and only then
/// sends on "tick".
class ScriptedTimer : public fxTimer {
public:
    ScriptedTimer(std::string itsName, float seconds, bool repeats = false)
        : fxTimer(repeats), name(std::move(itsName)) {
        setInterval(seconds);
    }
    ~ScriptedTimer() override { *alive = false; }

    void tick() override {
        note(name);
        const std::shared_ptr<bool> stillAlive = alive;
        run(onTick);
        if (*stillAlive)
            fxTimer::tick();
    }

    std::string name;
    Action onTick;

private:
    std::shared_ptr<bool> alive = std::make_shared<bool>(true);
};

/// Notes what is done with it.
class ScriptedApplication : public fxApplication {
public:
    explicit ScriptedApplication(std::string itsName) : name(std::move(itsName)) {}

    void initialize(int argc, char** argv) override {
        note("initialize" + name);
        lastArgc = argc;
        lastArgv = argv;
        run(onInitialize);
    }
    void open() override {
        note("open" + name);
        fxApplication::open();
        run(onOpen);
    }
    void close() override {
        note("close" + name);
        fxApplication::close();
        run(onClose);
    }

    std::string name;
    Action onInitialize;
    Action onOpen;
    Action onClose;
    int lastArgc = -1;
    char** lastArgv = nullptr;
};

/// Has an input "in" without a value; notes its name for each message and then
/// does what it is told to.
class Receiver : public fxObj {
public:
    explicit Receiver(std::string itsName, Action action = Action())
        : name(std::move(itsName)), onMessage(std::move(action)) {
        addInput("in", fxDT_void, this, reinterpret_cast<void (*)()>(receive), 0);
    }

    std::string name;
    Action onMessage;

private:
    static void receive(Receiver* self) {
        note(self->name);
        run(self->onMessage);
    }
};

/// Puts a message for itself at the tail of the event queue on demand.
class Sender : public fxObj {
public:
    explicit Sender(Receiver& receiver) : out(addOutput("out", fxDT_void)) {
        connect("out", &receiver, "in");
    }
    void send() { sendVoid(out, fxSendQueued); }

private:
    fxOutputChannel* out;
};

// The private fields of a timer; defined in tests/objects/fxTimer_test.cpp.
float deltaOf(const fxTimer& timer);
const fxTimer* successorOf(const fxTimer& timer);

/// A timer and its delta.
using ActiveTimer = std::pair<const fxTimer*, float>;

/// The active list, first expiry first.
inline std::vector<ActiveTimer> activeList() {
    std::vector<ActiveTimer> list;
    for (const fxTimer* timer = fxTimer::activeTimers; timer; timer = successorOf(*timer))
        list.emplace_back(timer, deltaOf(*timer));
    return list;
}

/// A test with a fake system and an executive of its own in place of the
/// process's. It leaves no timer and no event behind.
class LoopTest : public testing::Test {
protected:
    LoopTest() {
        fxInitializeToolkit();
        processExecutive = fx_theExecutive;
        fx_theExecutive = &exec;
        loopLog().clear();
    }
    LoopTest(const LoopTest&) = delete;
    LoopTest& operator=(const LoopTest&) = delete;
    ~LoopTest() override {
        handlers.clear();
        fx_theExecutive = processExecutive;
    }

    void TearDown() override {
        EXPECT_EQ(nullptr, fxTimer::activeTimers);
        EXPECT_EQ(0u, fx_theEventHandler->numberOfEvents());
    }

    /// A handler that lives as long as the test.
    ScriptedHandler& handler(int descriptor, const std::string& interest) {
        handlers.push_back(std::make_unique<ScriptedHandler>(descriptor, interest));
        return *handlers.back();
    }

    /// The same, registered.
    ScriptedHandler& registered(int descriptor, const std::string& interest) {
        exec.addSelectHandler(&handler(descriptor, interest));
        return *handlers.back();
    }

    /// What was noted since the last call.
    static std::string log() { return std::exchange(loopLog(), std::string()); }

    /// One pass in which select returns `answer`.
    void pass(const SelectAnswer& answer, float timeout = 1000.0F) {
        fake.answers.push_back(answer);
        exec.poll(timeout);
    }

    /// What the last select was given.
    const SelectCall& lastSelect() const { return fake.selects.back(); }

    FakeSystem fake;
    fxExec exec;
    fxExec* processExecutive;

private:
    std::vector<std::unique_ptr<ScriptedHandler>> handlers;
};

/// The same, in which the calls of the system are noted too.
class PassTest : public LoopTest {
protected:
    PassTest() {
        before = behind = nullptr;
        fake.log = &loopLog();
    }
    ~PassTest() override { before = behind = nullptr; }

    /// Notes "pre" and "post" around each wait.
    void watch() {
        exec.addPreSelectFunc(pre);
        exec.addPostSelectFunc(post);
    }

    static void pre() {
        note("pre");
        run(before);
    }
    static void post() {
        note("post");
        run(behind);
    }

    inline static Action before;  ///< What pre does beside noting itself.
    inline static Action behind;  ///< What post does.
};

}  // namespace loopTest
