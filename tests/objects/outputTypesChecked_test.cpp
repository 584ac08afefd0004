// outputTypesChecked_test.cpp - values of another type than the output's, which receivers would
// take for what they are not. The checked build stops whichever way they are sent.

#include <new>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/values/fxData.h"
#include "kelvofxds/values/fxProperty.h"
#include "tests/support/misuse.h"

namespace {

// With an output that is connected to an input which takes every value.
struct Wired : fxObj {
    explicit Wired(unsigned short type) : out(addOutput("out", type)) {
        addInput("in", fxDT_void, this, reinterpret_cast<void (*)()>(take), 0);
        connect("out", this, "in");
    }
    static void take(Wired*) {}
    const char* className() const override { return "Wired"; }

    fxOutputChannel* out;
};
struct OfInts : Wired {
    OfInts() : Wired(fxDT_int) {}
};
struct OfTexts : Wired {
    OfTexts() : Wired(fxDT_fxStr) {}
};

const Misuse sendings[] = {
    {"nothing as an int",
     [] {
         Wired w(fxDT_void);
         w.sendVoid(w.out, fxObj::fxSendNow);
     },
     [] {
         OfInts w;
         w.sendVoid(w.out, fxObj::fxSendNow);
     },
     "OfInts::sendVoid: the output is of type int"},
    {"a truth value as an int",
     [] {
         Wired w(fxDT_fxBool);
         w.sendBool(w.out, 1, fxObj::fxSendNow);
     },
     [] {
         OfInts w;
         w.sendBool(w.out, 1, fxObj::fxSendNow);
     },
     "OfInts::sendBool: the output is of type int"},
    {"an int as a text",
     [] {
         OfInts w;
         w.sendInt(w.out, 1, fxObj::fxSendNow);
     },
     [] {
         OfTexts w;
         w.sendInt(w.out, 1, fxObj::fxSendNow);
     },
     "OfTexts::sendInt: the output is of type fxStr"},
    {"a long as an int",
     [] {
         Wired w(fxDT_void);  // whose receivers look at no value
         w.sendLong(w.out, 1, fxObj::fxSendNow);
     },
     [] {
         OfInts w;
         w.sendLong(w.out, 1, fxObj::fxSendNow);
     },
     "OfInts::sendLong: the output is of type int"},
    {"a float as an int",
     [] {
         Wired w(fxDT_float);
         w.sendFloat(w.out, 1, fxObj::fxSendNow);
     },
     [] {
         OfInts w;
         w.sendFloat(w.out, 1, fxObj::fxSendNow);
     },
     "OfInts::sendFloat: the output is of type int"},
    {"a text as a string",
     [] {
         Wired w(fxDT_CharPtr);
         w.sendCharPtr(w.out, "a", fxObj::fxSendNow);
     },
     [] {
         OfTexts w;
         w.sendCharPtr(w.out, "a", fxObj::fxSendNow);
     },
     "OfTexts::sendCharPtr: the output is of type fxStr"},
};

void setInAnEndedObject() {
    alignas(fxObj) static unsigned char room[sizeof(fxObj)];
    auto* object = new (room) fxObj;
    object->~fxObj();
    object->setProperty(nullptr);
}

const Misuse ends[] = {
    {"a property of an object that has ended", [] { fxObj().setProperty(new fxProperty(3, 5L)); },
     setInAnEndedObject, "fxObj::setProperty: the object has been destroyed already"},
};

class outputTypesCheckedDeathTest : public testing::Test {
protected:
    static void SetUpTestSuite() { fxInitializeToolkit(); }
};

}  // namespace

TEST_F(outputTypesCheckedDeathTest, valuesOfAnotherType) { expectStops(sendings); }

TEST_F(outputTypesCheckedDeathTest, propertiesOfObjectsThatHaveEnded) { expectEndsToStop(ends); }
