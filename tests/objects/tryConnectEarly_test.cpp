// tryConnectEarly_test.cpp - what fxTryConnect says before the toolkit is initialised.

#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxWiring.h"
#include "tests/support/inChild.h"

TEST(tryConnectEarly, noTypesConvertBeforeTheToolkitIsInitialised) {
    const std::string why = inChild([] {
        fx_theEventHandler = nullptr;  // as it is then
        fxObj from;
        fxObj to;
        from.addOutput("out", fxDT_int);
        to.addInput("in", fxDT_double, &to, nullptr, 0);
        fxStr reason;
        const bool isConnected = fxTryConnect(&from, "out", &to, "in", &reason) != 0;
        return std::string(isConnected ? "connected" : reason.c_str());
    });
    EXPECT_EQ("call fxInitializeToolkit first: before that, no types convert", why);
}
