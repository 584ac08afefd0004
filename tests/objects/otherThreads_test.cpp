// otherThreads_test.cpp - that every operation of the loop, of events and of sending is for the
// thread that has initialised the toolkit, which the checked build sees to.

#include <functional>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxApplication.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/objects/fxSelectHandler.h"
#include "kelvofxds/objects/fxTimer.h"
#include "kelvofxds/values/fxData.h"
#include "tests/support/misuse.h"

namespace {

struct Handler : fxSelectHandler {
    void handleRead() override {}
};

struct Application : fxApplication {
    void initialize(int, char**) override {}
    void open() override {}
    void close() override {}
};

struct Node : fxObj {
    const char* className() const override { return "Node"; }
};

void nothing() {}
void take(void*) {}

// What the operations are called with, made by the thread that may.
struct Scene {
    Scene()
        : out(node.addOutput("out", fxDT_void)),
          in(node.addInput("in", fxDT_void, &node, reinterpret_cast<void (*)()>(take), 0)) {}
    // One that has never been open would stay in the executive's list.
    ~Scene() { application.fxApplication::close(); }

    fxExec& exec = *fx_theExecutive;
    fxEventHandler& events = *fx_theEventHandler;
    Handler handler;
    Application application;
    fxTimer timer{0};
    Node node;
    fxOutputChannel* out;
    fxInputChannel* in;
    static const fxObj::fxSendFlags now = fxObj::fxSendNow;
};

// In the order in which one thread can call them all.
const struct {
    const char* operation;
    std::function<void(Scene&)> call;
} calls[] = {
    {"fxExec::addSelectHandler", [](Scene& s) { s.exec.addSelectHandler(&s.handler); }},
    {"fxExec::updateSelectState", [](Scene& s) { s.exec.updateSelectState(); }},
    {"fxExec::removeSelectHandler", [](Scene& s) { s.exec.removeSelectHandler(&s.handler); }},
    {"fxExec::forget", [](Scene& s) { s.exec.forget(&s.handler); }},
    {"fxExec::addPreSelectFunc", [](Scene& s) { s.exec.addPreSelectFunc(nothing); }},
    {"fxExec::removePreSelectFunc", [](Scene& s) { s.exec.removePreSelectFunc(nothing); }},
    {"fxExec::addPostSelectFunc", [](Scene& s) { s.exec.addPostSelectFunc(nothing); }},
    {"fxExec::removePostSelectFunc", [](Scene& s) { s.exec.removePostSelectFunc(nothing); }},
    {"fxExec::add", [](Scene& s) { s.exec.add(&s.application); }},
    {"fxExec::initialize", [](Scene& s) { s.exec.initialize(0, nullptr); }},
    {"fxExec::open", [](Scene& s) { s.exec.open(); }},
    {"fxExec::close", [](Scene& s) { s.exec.close(); }},
    {"fxExec::remove", [](Scene& s) { s.exec.remove(&s.application); }},
    {"fxExec::willBlock", [](Scene& s) { s.exec.willBlock(); }},
    {"fxExec::poll", [](Scene& s) { s.exec.poll(0); }},
    {"fxTimer::startTimer", [](Scene& s) { s.timer.startTimer(); }},
    {"fxTimer::stopTimer", [](Scene& s) { s.timer.stopTimer(); }},
    {"fxOutputChannel::add", [](Scene& s) { s.out->add(s.in); }},
    {"fxEventHandler::removeMessageEvents", [](Scene& s) { s.events.removeMessageEvents(s.in); }},
    {"fxEventHandler::postMessage",
     [](Scene& s) { s.events.postMessage(s.out, nullptr, Scene::now); }},
    {"Node::connect", [](Scene& s) { s.node.connect("out", &s.node, "in"); }},
    {"Node::disconnect", [](Scene& s) { s.node.disconnect("out", &s.node, "in"); }},
    {"Node::sendData", [](Scene& s) { s.node.sendData(s.out, nullptr, Scene::now); }},
    {"Node::sendVoid", [](Scene& s) { s.node.sendVoid(s.out, Scene::now); }},
    {"Node::sendBool", [](Scene& s) { s.node.sendBool(s.out, 1, Scene::now); }},
    {"Node::sendInt", [](Scene& s) { s.node.sendInt(s.out, 1, Scene::now); }},
    {"Node::sendLong", [](Scene& s) { s.node.sendLong(s.out, 1, Scene::now); }},
    {"Node::sendFloat", [](Scene& s) { s.node.sendFloat(s.out, 1, Scene::now); }},
    {"Node::sendDouble", [](Scene& s) { s.node.sendDouble(s.out, 1, Scene::now); }},
    {"Node::sendCharPtr", [](Scene& s) { s.node.sendCharPtr(s.out, "a", Scene::now); }},
};

}  // namespace

TEST(otherThreadsDeathTest, everyOperationIsForTheThreadOfTheToolkit) {
    fxInitializeToolkit();
    Scene scene;
    for (const auto& c : calls) {
        SCOPED_TRACE(c.operation);
        c.call(scene);
        if (!libraryIsChecked)
            continue;
        EXPECT_EXIT(std::thread([&] { c.call(scene); }).join(), testing::KilledBySignal(SIGABRT),
                    testing::Eq(c.operation + std::string(": called by another thread than the one "
                                                          "that called fxInitializeToolkit\n")));
    }
}
