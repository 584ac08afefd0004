// ownOrderings.h - a fixture whose ordered globals stay out of the process's.
#pragma once

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"

/// Every fxOrderedGlobal registers itself for good. While a test of this kind
/// runs there are no orderings but those it causes to be made; the process's
/// own are put back afterwards. A fixture's own members are constructed after
/// this base, so they register with the test's orderings as well.
class OwnOrderings : public testing::Test {
protected:
    OwnOrderings()
        : savedToolkit(fx_toolkitGlobalOrder), savedApplication(fx_applicationGlobalOrder) {
        fx_toolkitGlobalOrder = nullptr;
        fx_applicationGlobalOrder = nullptr;
    }
    ~OwnOrderings() override {
        delete fx_toolkitGlobalOrder;
        delete fx_applicationGlobalOrder;
        fx_toolkitGlobalOrder = savedToolkit;
        fx_applicationGlobalOrder = savedApplication;
    }

private:
    fxGlobalOrder* savedToolkit;
    fxGlobalOrder* savedApplication;
};
