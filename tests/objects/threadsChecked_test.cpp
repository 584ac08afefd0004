// threadsChecked_test.cpp - what belongs to the thread that initialised the toolkit, done in
// another one. The checked build stops, in whatever operation it is.

#include <cstring>
#include <thread>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxApplication.h"
#include "kelvofxds/objects/fxEvent.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/objects/fxSelectHandler.h"
#include "kelvofxds/objects/fxTimer.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/values/fxData.h"
#include "tests/support/misuse.h"

namespace {

// What is misused is made, and stays, in the thread where it belongs.
struct Wired : fxObj {
    Wired() : out(addOutput("out", fxDT_int)), in(addInput("in", fxDT_void, this, receiver(), 0)) {
        connect("out", this, "in");
    }
    static void take(Wired*) {}
    static void (*receiver())() { return reinterpret_cast<void (*)()>(take); }
    const char* className() const override { return "Wired"; }

    fxOutputChannel* out;
    fxInputChannel* in;
};
Wired& wired() {
    static Wired object;
    return object;
}

struct Note : fxEvent {
    Note() : fxEvent(fxET_Unknown) {}
    void deliver() override {}
};

struct Handler : fxSelectHandler {
    void handleRead() override {}
};
Handler& handler() {
    static Handler one;
    return one;
}

struct Application : fxApplication {
    void initialize(int, char**) override {}
};
Application& application() {
    static Application one;
    return one;
}

void nothing() {}

// Does `work` in another thread.
template <class Work>
void elsewhere(Work work) {
    std::thread(work).join();
}

#define OTHER_THREAD ": called by another thread than the one that called fxInitializeToolkit"

const Misuse sendings[] = {
    {"sendVoid",
     [] {
         Wired w;
         w.disconnect("out", &w, "in");
         w.sendVoid(w.out, fxObj::fxSendNow);
     },
     [] {
         Wired& w = wired();
         elsewhere([&] { w.sendVoid(w.out, fxObj::fxSendNow); });
     },
     "Wired::sendVoid" OTHER_THREAD},
    {"sendBool",
     [] {
         Wired w;
         w.disconnect("out", &w, "in");
         w.sendBool(w.out, 1, fxObj::fxSendNow);
     },
     [] {
         Wired& w = wired();
         elsewhere([&] { w.sendBool(w.out, 1, fxObj::fxSendNow); });
     },
     "Wired::sendBool" OTHER_THREAD},
    {"sendInt",
     [] {
         Wired w;
         w.disconnect("out", &w, "in");
         w.sendInt(w.out, 1, fxObj::fxSendNow);
     },
     [] {
         Wired& w = wired();
         elsewhere([&] { w.sendInt(w.out, 1, fxObj::fxSendNow); });
     },
     "Wired::sendInt" OTHER_THREAD},
    {"sendLong",
     [] {
         Wired w;
         w.disconnect("out", &w, "in");
         w.sendLong(w.out, 1, fxObj::fxSendNow);
     },
     [] {
         Wired& w = wired();
         elsewhere([&] { w.sendLong(w.out, 1, fxObj::fxSendNow); });
     },
     "Wired::sendLong" OTHER_THREAD},
    {"sendFloat",
     [] {
         Wired w;
         w.disconnect("out", &w, "in");
         w.sendFloat(w.out, 1, fxObj::fxSendNow);
     },
     [] {
         Wired& w = wired();
         elsewhere([&] { w.sendFloat(w.out, 1, fxObj::fxSendNow); });
     },
     "Wired::sendFloat" OTHER_THREAD},
    {"sendDouble",
     [] {
         Wired w;
         w.disconnect("out", &w, "in");
         w.sendDouble(w.out, 1, fxObj::fxSendNow);
     },
     [] {
         Wired& w = wired();
         elsewhere([&] { w.sendDouble(w.out, 1, fxObj::fxSendNow); });
     },
     "Wired::sendDouble" OTHER_THREAD},
    {"sendCharPtr",
     [] {
         Wired w;
         w.disconnect("out", &w, "in");
         w.sendCharPtr(w.out, "a", fxObj::fxSendNow);
     },
     [] {
         Wired& w = wired();
         elsewhere([&] { w.sendCharPtr(w.out, "a", fxObj::fxSendNow); });
     },
     "Wired::sendCharPtr" OTHER_THREAD},
    {"sendData",
     [] {
         Wired w;
         w.disconnect("out", &w, "in");
         w.sendData(w.out, nullptr, fxObj::fxSendNow);
     },
     [] {
         Wired& w = wired();
         elsewhere([&] { w.sendData(w.out, nullptr, fxObj::fxSendNow); });
     },
     "Wired::sendData" OTHER_THREAD},
    {"disconnect", [] { Wired().disconnect("out", &wired(), "in"); },
     [] {
         Wired& w = wired();
         elsewhere([&] { w.disconnect("out", &w, "in"); });
     },
     "Wired::disconnect" OTHER_THREAD},
    {"a connection",
     [] {
         Wired w;
         w.out->add(w.in);
     },
     [] {
         Wired& w = wired();
         elsewhere([&] { w.out->add(w.in); });
     },
     "fxOutputChannel::add" OTHER_THREAD},
};

const Misuse loops[] = {
    {"add a handler",
     [] {
         fx_theExecutive->addSelectHandler(&handler());
         fx_theExecutive->removeSelectHandler(&handler());
     },
     [] {
         Handler& h = handler();
         elsewhere([&] { fx_theExecutive->addSelectHandler(&h); });
     },
     "fxExec::addSelectHandler" OTHER_THREAD},
    {"remove a handler", [] {},
     [] {
         Handler& h = handler();
         elsewhere([&] { fx_theExecutive->removeSelectHandler(&h); });
     },
     "fxExec::removeSelectHandler" OTHER_THREAD},
    {"a change of interest", [] { fx_theExecutive->updateSelectState(); },
     [] { elsewhere([] { fx_theExecutive->updateSelectState(); }); },
     "fxExec::updateSelectState" OTHER_THREAD},
    {"whether a pass would wait", [] { fx_theExecutive->willBlock(); },
     [] { elsewhere([] { fx_theExecutive->willBlock(); }); }, "fxExec::willBlock" OTHER_THREAD},
    {"add a function, Pre",
     [] {
         fx_theExecutive->addPreSelectFunc(nothing);
         fx_theExecutive->removePreSelectFunc(nothing);
     },
     [] { elsewhere([] { fx_theExecutive->addPreSelectFunc(nothing); }); },
     "fxExec::addPreSelectFunc" OTHER_THREAD},
    {"remove a function, Pre", [] {},
     [] { elsewhere([] { fx_theExecutive->removePreSelectFunc(nothing); }); },
     "fxExec::removePreSelectFunc" OTHER_THREAD},
    {"add a function, Post",
     [] {
         fx_theExecutive->addPostSelectFunc(nothing);
         fx_theExecutive->removePostSelectFunc(nothing);
     },
     [] { elsewhere([] { fx_theExecutive->addPostSelectFunc(nothing); }); },
     "fxExec::addPostSelectFunc" OTHER_THREAD},
    {"remove a function, Post", [] {},
     [] { elsewhere([] { fx_theExecutive->removePostSelectFunc(nothing); }); },
     "fxExec::removePostSelectFunc" OTHER_THREAD},
    {"add an application",
     [] {
         application().open();
         application().close();
     },
     [] {
         Application& a = application();
         elsewhere([&] { fx_theExecutive->add(&a); });
     },
     "fxExec::add" OTHER_THREAD},
    {"remove an application", [] { fx_theExecutive->remove(&application()); },
     [] {
         Application& a = application();
         elsewhere([&] { fx_theExecutive->remove(&a); });
     },
     "fxExec::remove" OTHER_THREAD},
    {"initialize all", [] { fx_theExecutive->initialize(0, nullptr); },
     [] { elsewhere([] { fx_theExecutive->initialize(0, nullptr); }); },
     "fxExec::initialize" OTHER_THREAD},
    {"open all", [] { fx_theExecutive->open(); },
     [] { elsewhere([] { fx_theExecutive->open(); }); }, "fxExec::open" OTHER_THREAD},
    {"close all", [] { fx_theExecutive->close(); },
     [] { elsewhere([] { fx_theExecutive->close(); }); }, "fxExec::close" OTHER_THREAD},
    {"start a timer", [] { fxTimer(0).startTimer(); },
     [] {
         fxTimer timer(0);
         elsewhere([&] { timer.startTimer(); });
     },
     "fxTimer::startTimer" OTHER_THREAD},
    {"stop a timer", [] { fxTimer(0).stopTimer(); },
     [] {
         fxTimer timer(0);
         elsewhere([&] { timer.stopTimer(); });
     },
     "fxTimer::stopTimer" OTHER_THREAD},
};

const Misuse events[] = {
    {"post a message",
     [] { fx_theEventHandler->postMessage(wired().out, nullptr, fxObj::fxSendNow); },
     [] {
         Wired& w = wired();
         elsewhere([&] { fx_theEventHandler->postMessage(w.out, nullptr, fxObj::fxSendNow); });
     },
     "fxEventHandler::postMessage" OTHER_THREAD},
    {"remove the messages of an input", [] { fx_theEventHandler->removeMessageEvents(wired().in); },
     [] {
         Wired& w = wired();
         elsewhere([&] { fx_theEventHandler->removeMessageEvents(w.in); });
     },
     "fxEventHandler::removeMessageEvents" OTHER_THREAD},
    {"remove the messages for an object", [] { fx_theEventHandler->removeEventsFor(&wired()); },
     [] {
         Wired& w = wired();
         fx_theEventHandler->postEvent(new Note, 0);
         elsewhere([&] { fx_theEventHandler->removeEventsFor(&w); });
     },
     "fxEventHandler::removeEventsFor" OTHER_THREAD},
};

const Misuse holders[] = {
    {"a new fxVoidData", [] { delete new fxVoidData; }, [] { elsewhere([] { new fxVoidData; }); },
     "fxVoidData::operator new" OTHER_THREAD},
    {"the end of an fxVoidData", [] {},
     [] {
         auto* const holder = new fxVoidData;
         elsewhere([&] { delete holder; });
     },
     "fxVoidData::operator delete" OTHER_THREAD},
    {"a new fxBoolData", [] { delete new fxBoolData(1); },
     [] { elsewhere([] { new fxBoolData(1); }); }, "fxBoolData::operator new" OTHER_THREAD},
    {"the end of an fxBoolData", [] {},
     [] {
         auto* const holder = new fxBoolData(1);
         elsewhere([&] { delete holder; });
     },
     "fxBoolData::operator delete" OTHER_THREAD},
    {"a new fxIntData", [] { delete new fxIntData(1); },
     [] { elsewhere([] { new fxIntData(1); }); }, "fxIntData::operator new" OTHER_THREAD},
    {"the end of an fxIntData", [] {},
     [] {
         auto* const holder = new fxIntData(1);
         elsewhere([&] { delete holder; });
     },
     "fxIntData::operator delete" OTHER_THREAD},
    {"a new fxLongData", [] { delete new fxLongData(1); },
     [] { elsewhere([] { new fxLongData(1); }); }, "fxLongData::operator new" OTHER_THREAD},
    {"the end of an fxLongData", [] {},
     [] {
         auto* const holder = new fxLongData(1);
         elsewhere([&] { delete holder; });
     },
     "fxLongData::operator delete" OTHER_THREAD},
    {"a new fxFloatData", [] { delete new fxFloatData(1); },
     [] { elsewhere([] { new fxFloatData(1); }); }, "fxFloatData::operator new" OTHER_THREAD},
    {"the end of an fxFloatData", [] {},
     [] {
         auto* const holder = new fxFloatData(1);
         elsewhere([&] { delete holder; });
     },
     "fxFloatData::operator delete" OTHER_THREAD},
    {"a new fxDoubleData", [] { delete new fxDoubleData(1); },
     [] { elsewhere([] { new fxDoubleData(1); }); }, "fxDoubleData::operator new" OTHER_THREAD},
    {"the end of an fxDoubleData", [] {},
     [] {
         auto* const holder = new fxDoubleData(1);
         elsewhere([&] { delete holder; });
     },
     "fxDoubleData::operator delete" OTHER_THREAD},
    {"a new fxCharPtrData", [] { delete new fxCharPtrData(::strdup("text")); },
     [] { elsewhere([] { new fxCharPtrData(::strdup("text")); }); },
     "fxCharPtrData::operator new" OTHER_THREAD},
    {"the end of an fxCharPtrData", [] {},
     [] {
         auto* const holder = new fxCharPtrData(::strdup("text"));
         elsewhere([&] { delete holder; });
     },
     "fxCharPtrData::operator delete" OTHER_THREAD},
    {"a new fxStrData", [] { delete new fxStrData(fxStr("a")); },
     [] { elsewhere([] { new fxStrData(fxStr("a")); }); }, "fxStrData::operator new" OTHER_THREAD},
    {"the end of an fxStrData", [] {},
     [] {
         auto* const holder = new fxStrData(fxStr("a"));
         elsewhere([&] { delete holder; });
     },
     "fxStrData::operator delete" OTHER_THREAD},
    {"a new fxStrArrayData", [] { delete new fxStrArrayData(fxStrArray()); },
     [] { elsewhere([] { new fxStrArrayData(fxStrArray()); }); },
     "fxStrArrayData::operator new" OTHER_THREAD},
    {"the end of an fxStrArrayData", [] {},
     [] {
         auto* const holder = new fxStrArrayData(fxStrArray());
         elsewhere([&] { delete holder; });
     },
     "fxStrArrayData::operator delete" OTHER_THREAD},
};

class threadsCheckedDeathTest : public testing::Test {
protected:
    static void SetUpTestSuite() { fxInitializeToolkit(); }
};

}  // namespace

TEST_F(threadsCheckedDeathTest, channels) { expectStops(sendings); }

TEST_F(threadsCheckedDeathTest, theLoopAndTimers) { expectStops(loops); }

TEST_F(threadsCheckedDeathTest, theQueue) { expectStops(events); }

TEST_F(threadsCheckedDeathTest, holdersOfEveryType) { expectStops(holders); }
