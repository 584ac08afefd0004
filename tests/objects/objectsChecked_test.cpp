// objectsChecked_test.cpp - misuse of objects, channels, events and the loop, which the checked
// build stops.

#include <new>
#include <thread>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxApplication.h"
#include "kelvofxds/objects/fxEvent.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxMessageEvent.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/objects/fxSelectHandler.h"
#include "kelvofxds/objects/fxTimer.h"
#include "kelvofxds/values/fxConverter.h"
#include "kelvofxds/values/fxData.h"
#include "kelvofxds/values/fxProperty.h"
#include "tests/support/misuse.h"

namespace {

void take(void*, int) {}
void (*receiver())() { return reinterpret_cast<void (*)()>(take); }

// With an output that is connected to its own input.
struct Wired : fxObj {
    Wired() : out(addOutput("out", fxDT_int)), in(addInput("in", fxDT_int, this, receiver(), 0)) {
        connect("out", this, "in");
    }
    const char* className() const override { return "Wired"; }
    fxOutputChannel* out;
    fxInputChannel* in;
};

struct Note : fxEvent {
    Note() : fxEvent(fxET_Unknown) {}
    void deliver() override {}
};

struct Handler : fxSelectHandler {
    void handleRead() override {}
};

void nothing() {}

unsigned char keepAll(fxEvent*, void*) { return 0; }

const Misuse outputs[] = {
    {"sendVoid", [] {}, [] { Wired().sendVoid(nullptr, fxObj::fxSendNow); },
     "Wired::sendVoid: out is null"},
    {"sendBool", [] {}, [] { Wired().sendBool(nullptr, 1, fxObj::fxSendNow); },
     "Wired::sendBool: out is null"},
    {"sendInt",
     [] {
         Wired w;
         w.sendInt(w.out, 1, fxObj::fxSendNow);
     },
     [] { Wired().sendInt(nullptr, 1, fxObj::fxSendNow); }, "Wired::sendInt: out is null"},
    {"sendLong", [] {}, [] { Wired().sendLong(nullptr, 1, fxObj::fxSendNow); },
     "Wired::sendLong: out is null"},
    {"sendFloat", [] {}, [] { Wired().sendFloat(nullptr, 1, fxObj::fxSendNow); },
     "Wired::sendFloat: out is null"},
    {"sendDouble", [] {}, [] { Wired().sendDouble(nullptr, 1, fxObj::fxSendNow); },
     "Wired::sendDouble: out is null"},
    {"sendCharPtr", [] {}, [] { Wired().sendCharPtr(nullptr, "a", fxObj::fxSendNow); },
     "Wired::sendCharPtr: out is null"},
    {"sendData",
     [] {
         Wired w;
         w.sendData(w.out, nullptr, fxObj::fxSendNow);
     },
     [] { Wired().sendData(nullptr, nullptr, fxObj::fxSendNow); }, "Wired::sendData: out is null"},
    {"a value of another type than the output's",
     [] {
         Wired w;
         w.disconnect("out", &w, "in");
         w.sendDouble(w.out, 1, fxObj::fxSendNow);  // to nobody
     },
     [] {
         Wired w;
         w.sendDouble(w.out, 1, fxObj::fxSendNow);
     },
     "Wired::sendDouble: the output is of type int"},
    {"a connection by its index",
     [] {
         Wired w;
         EXPECT_EQ(w.in, (*w.out)[0]);
     },
     [] {
         Wired w;
         (*w.out)[1];
     },
     "fxOutputChannel::operator[]: index 1 not below number of connections 1"},
    {"a connection where there is none", [] {},
     [] {
         fxOutputChannel out(fxDT_int);
         out[0];
     },
     "fxOutputChannel::operator[]: index 0 not below number of connections 0"},
    {"a connection to nothing", [] {}, [] { fxOutputChannel(fxDT_int).add(nullptr); },
     "fxOutputChannel::add: in is null"},
};

const Misuse inputs[] = {
    {"a source that is none", [] {}, [] { Wired().in->add(nullptr); },
     "fxInputChannel::add: out is null"},
    {"a reference that nobody has taken",
     [] {
         auto* channel = new fxInputChannel(fxDT_int, nullptr, receiver(), 0);
         channel->count = 1;
         channel->dec();
     },
     [] { (new fxInputChannel(fxDT_int, nullptr, receiver(), 0))->dec(); },
     "fxInputChannel::dec: count is 0: more references are given up than were taken"},
    {"an input without a receiver",
     [] {
         Wired w;
         w.in->function = nullptr;
         w.in->function = receiver();  // in time
         w.sendInt(w.out, 1, fxObj::fxSendNow);
     },
     [] {
         Wired w;
         w.in->function = nullptr;
         w.sendInt(w.out, 1, fxObj::fxSendNow);
     },
     "fxInputChannel::function: null where a value arrives"},
    {"the same, queued",
     [] {
         Wired w;
         w.sendInt(w.out, 1, fxObj::fxSendQueued);
         fx_theEventHandler->distributeEvents();
     },
     [] {
         Wired w;
         w.in->function = nullptr;
         w.sendInt(w.out, 1, fxObj::fxSendQueued);
         fx_theEventHandler->distributeEvents();
     },
     "fxInputChannel::function: null where a value arrives"},
    {"a link that leads nowhere", [] {},
     [] { fxConverter::findConverter(fxDT_int, fxDT_float)->finalChannel(); },
     "fxInputChannel::finalChannel: channel->target is null"},
};

void endTwice() {
    alignas(fxObj) static unsigned char room[sizeof(fxObj)];
    auto* object = new (room) fxObj;
    object->~fxObj();
    object->fxObj::~fxObj();
}

const Misuse ends[] = {
    {"an object, destroyed twice", [] { const fxObj object; }, endTwice,
     "fxObj::~fxObj: the object has been destroyed already"},
};

const Misuse properties[] = {
    {"a property by its position", [] { Wired().getProperty(1); }, [] { Wired().getProperty(2); },
     "Wired::getProperty: i 2 not below number of properties 2"},
    {"none there ever was", [] { EXPECT_EQ(nullptr, fxObj().getProperty(9)); },
     [] {
         fxObj object;
         object.setProperty(new fxProperty(3, 5L)).removeProperty(3);
         object.getProperty(0);
     },
     "fxObj::getProperty: i 0 not below number of properties 0"},
    {"no property", [] {}, [] { Wired().setProperty(nullptr); },
     "Wired::setProperty: property is null"},
};

// A holder that is given to a message, and kept to be deleted all the same.
void sendAndDelete() {
    Wired w;
    auto* holder = new fxIntData(1);
    w.sendData(w.out, holder, fxObj::fxSendQueued);
    delete holder;
}

const Misuse events[] = {
    {"no event to post",
     [] {
         fx_theEventHandler->postEvent(new Note, 0);
         fx_theEventHandler->distributeEvents();
     },
     [] { fx_theEventHandler->postEvent(nullptr, 0); }, "fxEventHandler::postEvent: e is null"},
    {"no output to post on", [] {},
     [] { fx_theEventHandler->postMessage(nullptr, nullptr, fxObj::fxSendNow); },
     "fxEventHandler::postMessage: out is null"},
    {"no choice of what to remove", [] { fx_theEventHandler->removeEvents(keepAll, nullptr); },
     [] { fx_theEventHandler->removeEvents(nullptr, nullptr); },
     "fxEventHandler::removeEvents: predicate is null"},
    {"no event to look at", [] {}, [] { zapMessageEvents(nullptr, nullptr); },
     "fxEventHandler::zapMessageEvents: e is null"},
    {"no event to append", [] {}, [] { fxEventQueue().append(nullptr); },
     "fxEventQueue::append: e is null"},
    {"no event to insert", [] {}, [] { fxEventQueue().insert(nullptr); },
     "fxEventQueue::insert: e is null"},
    {"no event to remove",
     [] {
         Note note;
         fxEventQueue().remove(&note);
     },
     [] { fxEventQueue().remove(nullptr); }, "fxEventQueue::remove: e is null"},
    {"the only event again",
     [] {
         fxEventQueue queue;
         Note note;
         queue.append(&note);
         queue.get();
         queue.append(&note);
         queue.get();
     },
     [] {
         fxEventQueue queue;
         Note note;
         queue.append(&note);
         queue.append(&note);
     },
     "fxEventQueue::append: the event is queued already, here or elsewhere"},
    {"one of several again", [] {},
     [] {
         fxEventQueue queue;
         Note first, second;
         queue.append(&first);
         queue.append(&second);
         queue.insert(&first);
     },
     "fxEventQueue::insert: the event is queued already, here or elsewhere"},
    {"an event at the end of another queue",
     [] {
         fxEventQueue queue;
         queue.append(new Note);
         auto* last = new Note;
         queue.append(last);
         queue.remove(last);
         delete queue.get();
     },
     [] {
         fxEventQueue queue, other;
         queue.append(new Note);
         auto* last = new Note;
         queue.append(last);
         other.remove(last);
     },
     "fxEventQueue::remove: the event is in another queue"},
    {"deleted in the queue, alone", [] { delete new Note; },
     [] {
         fxEvent::nextSequenceNumber = 41;
         auto* note = new Note;
         fx_theEventHandler->postEvent(note, 0);
         delete note;
     },
     "fxEvent::~fxEvent: event 42 is queued: it belongs to the queue until it is removed"},
    {"deleted in the queue, among others", [] {},
     [] {
         fx_theEventHandler->postEvent(new Note, 0);
         fxEvent::nextSequenceNumber = 41;
         auto* note = new Note;
         fx_theEventHandler->postEvent(note, 0);
         delete note;
     },
     "fxEvent::~fxEvent: event 42 is queued: it belongs to the queue until it is removed"},
    {"a message for nobody", [] {}, [] { fxMessageEvent(nullptr, new fxIntData(1)); },
     "fxMessageEvent::fxMessageEvent: in is null"},
    {"a message of nothing", [] {},
     [] {
         Wired w;
         fxMessageEvent(w.in, nullptr);
     },
     "fxMessageEvent::fxMessageEvent: holder is null"},
    {"a holder that was sent is deleted", [] {}, sendAndDelete,
     "fxData::~fxData: the holder is still held by 1 of all properties and messages"},
};

const Misuse loops[] = {
    {"no handler to add",
     [] {
         Handler handler;
         fx_theExecutive->addSelectHandler(&handler);
     },
     [] { fx_theExecutive->addSelectHandler(nullptr); }, "fxExec::addSelectHandler: h is null"},
    {"no handler to remove",
     [] {
         Handler handler;
         fx_theExecutive->removeSelectHandler(&handler);
     },
     [] { fx_theExecutive->removeSelectHandler(nullptr); },
     "fxExec::removeSelectHandler: h is null"},
    {"no function before the wait",
     [] {
         fx_theExecutive->addPreSelectFunc(nothing);
         fx_theExecutive->removePreSelectFunc(nothing);
     },
     [] { fx_theExecutive->addPreSelectFunc(nullptr); },
     "fxExec::addPreSelectFunc: function is null"},
    {"no function after the wait",
     [] {
         fx_theExecutive->addPostSelectFunc(nothing);
         fx_theExecutive->removePostSelectFunc(nothing);
     },
     [] { fx_theExecutive->addPostSelectFunc(nullptr); },
     "fxExec::addPostSelectFunc: function is null"},
    {"no application", [] { fx_theExecutive->remove(nullptr); },
     [] { fx_theExecutive->add(nullptr); }, "fxExec::add: application is null"},
};

// Does it in another thread.
template <class Work>
void elsewhere(Work work) {
    std::thread(work).join();
}

#define OTHER_THREAD ": called by another thread than the one that called fxInitializeToolkit"

const Misuse threads[] = {
    {"posting", [] { fx_theEventHandler->distributeEvents(); },
     [] { elsewhere([] { fx_theEventHandler->postEvent(new Note, 0); }); },
     "fxEventHandler::postEvent" OTHER_THREAD},
    {"distributing", [] {}, [] { elsewhere([] { fx_theEventHandler->distributeEvents(); }); },
     "fxEventHandler::distributeEvents" OTHER_THREAD},
    {"removing", [] {},
     [] { elsewhere([] { fx_theEventHandler->removeEvents(keepAll, nullptr); }); },
     "fxEventHandler::removeEvents" OTHER_THREAD},
    {"a pass", [] { fx_theExecutive->poll(0); },
     [] { elsewhere([] { fx_theExecutive->poll(0); }); }, "fxExec::poll" OTHER_THREAD},
    {"the loop", [] {}, [] { elsewhere([] { fx_theExecutive->loop(); }); },
     "fxExec::loop" OTHER_THREAD},
    {"a handler", [] { Handler handler; }, [] { elsewhere([] { Handler handler; }); },
     "fxExec::forget" OTHER_THREAD},
    {"a timer", [] { fxTimer timer(0); }, [] { elsewhere([] { fxTimer timer(0); }); },
     "fxTimer::fxTimer" OTHER_THREAD},
    {"an alarm", [] { fxTimer::alarm(0); }, [] { elsewhere([] { fxTimer::alarm(0); }); },
     "fxTimer::alarm" OTHER_THREAD},
    {"sending",
     [] {
         Wired w;
         w.sendInt(w.out, 1, fxObj::fxSendNow);
     },
     [] {
         static Wired w;
         elsewhere([] { w.sendInt(w.out, 1, fxObj::fxSendNow); });
     },
     "Wired::sendInt" OTHER_THREAD},
    {"connecting", [] { Wired w; },
     [] {
         static Wired w;
         elsewhere([] { w.connect("out", &w, "in"); });
     },
     "Wired::connect" OTHER_THREAD},
    {"a value", [] { delete new fxIntData(1); }, [] { elsewhere([] { new fxIntData(1); }); },
     "fxIntData::operator new" OTHER_THREAD},
    {"a conversion", [] {}, [] { elsewhere([] { new fxConverter(1, 2, receiver()); }); },
     "fxConverter::fxConverter" OTHER_THREAD},
    {"a tag", [] {}, [] { elsewhere([] { fxProperty::allocNewTag("tag"); }); },
     "fxProperty::allocNewTag" OTHER_THREAD},
};

class objectsCheckedDeathTest : public testing::Test {
protected:
    static void SetUpTestSuite() { fxInitializeToolkit(); }
};

}  // namespace

TEST_F(objectsCheckedDeathTest, outputsThatAreNone) { expectStops(outputs); }

TEST_F(objectsCheckedDeathTest, inputsAndTheirReferences) { expectStops(inputs); }

TEST_F(objectsCheckedDeathTest, propertiesThatAreNone) { expectStops(properties); }

TEST_F(objectsCheckedDeathTest, objectsThatHaveEnded) { expectEndsToStop(ends); }

TEST_F(objectsCheckedDeathTest, eventsAndWhereTheyAre) { expectStops(events); }

TEST_F(objectsCheckedDeathTest, whatTheLoopIsGiven) { expectStops(loops); }

TEST_F(objectsCheckedDeathTest, whatHasToBeDoneInOneThread) { expectStops(threads); }
