// sendTypes_test.cpp - each way of sending a value, to outputs of each type, with each flag.

#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/values/fxData.h"
#include "tests/support/misuse.h"

namespace {

std::string received;

void note(const std::string& what) { received += what + ' '; }

void takeVoid(void*) { note("void"); }
void takeBool(void*, unsigned char v) { note("bool " + std::to_string(v)); }
void takeInt(void*, int v) { note("int " + std::to_string(v)); }
void takeLong(void*, long v) { note("long " + std::to_string(v)); }
void takeFloat(void*, float v) { note("float " + std::to_string(v)); }
void takeDouble(void*, double v) { note("double " + std::to_string(v)); }
void takeText(void*, char* v) { note(std::string("text ") + v); }

template <class Function>
void (*receiver(Function* f))() {
    return reinterpret_cast<void (*)()>(f);
}

struct Way {
    const char* operation;
    const char* type;
    unsigned short& code;
    void (*receive)();
    void (*send)(fxObj&, fxOutputChannel*, fxObj::fxSendFlags);
    const char* arrives;
};

using Flags = fxObj::fxSendFlags;

const Way ways[] = {
    {"sendVoid", "void", fxDT_void, receiver(takeVoid),
     [](fxObj& o, fxOutputChannel* out, Flags f) { o.sendVoid(out, f); }, "void "},
    {"sendBool", "bool", fxDT_fxBool, receiver(takeBool),
     [](fxObj& o, fxOutputChannel* out, Flags f) { o.sendBool(out, 1, f); }, "bool 1 "},
    {"sendInt", "int", fxDT_int, receiver(takeInt),
     [](fxObj& o, fxOutputChannel* out, Flags f) { o.sendInt(out, -7, f); }, "int -7 "},
    {"sendLong", "long", fxDT_long, receiver(takeLong),
     [](fxObj& o, fxOutputChannel* out, Flags f) { o.sendLong(out, 70000, f); }, "long 70000 "},
    {"sendFloat", "float", fxDT_float, receiver(takeFloat),
     [](fxObj& o, fxOutputChannel* out, Flags f) { o.sendFloat(out, 0.5F, f); }, "float 0.500000 "},
    {"sendDouble", "double", fxDT_double, receiver(takeDouble),
     [](fxObj& o, fxOutputChannel* out, Flags f) { o.sendDouble(out, 2.25, f); },
     "double 2.250000 "},
    {"sendCharPtr", "char*", fxDT_CharPtr, receiver(takeText),
     [](fxObj& o, fxOutputChannel* out, Flags f) { o.sendCharPtr(out, "words", f); },
     "text words "},
};

struct Node : fxObj {
    const char* className() const override { return "Node"; }
    Node(const Way& way, unsigned int receivers) : out(addOutput("out", way.code)) {
        for (unsigned int i = 0; i < receivers; ++i) {
            const std::string name = "in" + std::to_string(i);
            addInput(name.c_str(), way.code, this, way.receive, 0);
            connect("out", this, name.c_str());
        }
    }
    fxOutputChannel* out;
};

std::string repeated(const char* what, unsigned int n) {
    std::string all;
    while (n-- != 0)
        all += what;
    return all;
}

}  // namespace

TEST(sendTypes, everyValueArrivesAtEachReceiver) {
    fxInitializeToolkit();
    for (const Way& way : ways) {
        for (unsigned int receivers = 0; receivers <= 2; ++receivers) {
            for (const Flags flags : {fxObj::fxSendQueued, fxObj::fxSendNow, fxObj::fxSendUrgent}) {
                SCOPED_TRACE(std::string(way.operation) + ", receivers " +
                             std::to_string(receivers) + ", flags " + std::to_string(flags));
                Node node(way, receivers);
                received.clear();

                way.send(node, node.out, flags);
                fx_theEventHandler->distributeEvents();

                EXPECT_EQ(repeated(way.arrives, receivers), received);
            }
        }
    }
}

TEST(sendTypes, aTextThatIsNullArrivesEmpty) {
    fxInitializeToolkit();
    for (const Flags flags : {fxObj::fxSendQueued, fxObj::fxSendNow, fxObj::fxSendUrgent}) {
        Node node(ways[6], 1);
        received.clear();

        node.sendCharPtr(node.out, nullptr, flags);
        fx_theEventHandler->distributeEvents();

        EXPECT_EQ("text  ", received);
    }
}

TEST(sendTypesDeathTest, onlyTheOutputsTypeOrNoneIsSent) {
    fxInitializeToolkit();
    for (const Way& out : ways) {
        for (const Way& way : ways) {
            SCOPED_TRACE(std::string(way.operation) + " to " + out.type);
            Node alone(out, 0);
            way.send(alone, alone.out, fxObj::fxSendNow);
            Node node(out, 1);
            received.clear();
            if (&out == &way || out.code == fxDT_void) {
                way.send(node, node.out, fxObj::fxSendNow);
                EXPECT_EQ(out.arrives, received);
            } else if (libraryIsChecked) {
                EXPECT_EXIT(way.send(node, node.out, fxObj::fxSendNow),
                            testing::KilledBySignal(SIGABRT),
                            testing::Eq(std::string("Node::") + way.operation +
                                        ": the output is of type " + out.type + '\n'));
            }
        }
    }
}
