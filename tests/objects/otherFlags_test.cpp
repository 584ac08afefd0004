// otherFlags_test.cpp - values that are sent with flags that there are none of.

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/values/fxData.h"

namespace {

unsigned int received;

void receive(void*) { ++received; }

// Has an output of the type, connected to an input of its own.
struct Wired : fxObj {
    explicit Wired(unsigned short type) : out(addOutput("out", type)) {
        addInput("in", type, this, reinterpret_cast<void (*)()>(receive), 0);
        connect("out", this, "in");
    }
    fxOutputChannel* out;
};

}  // namespace

TEST(otherFlags, nothingIsSentWithThem) {
    fxInitializeToolkit();
    for (const int flags : {-1, 3, 7}) {
        SCOPED_TRACE(flags);
        const auto other = static_cast<fxObj::fxSendFlags>(flags);
        received = 0;
        Wired none(fxDT_void), flag(fxDT_fxBool), number(fxDT_int), longer(fxDT_long);
        Wired real(fxDT_float), longReal(fxDT_double), text(fxDT_CharPtr);
        none.sendVoid(none.out, other);
        flag.sendBool(flag.out, 1, other);
        number.sendInt(number.out, 1, other);
        longer.sendLong(longer.out, 1, other);
        real.sendFloat(real.out, 1, other);
        longReal.sendDouble(longReal.out, 1, other);
        text.sendCharPtr(text.out, "text", other);
        number.sendData(number.out, new fxIntData(1), other);
        EXPECT_EQ(0u, received);
        EXPECT_EQ(0u, fx_theEventHandler->numberOfEvents());
    }
}
