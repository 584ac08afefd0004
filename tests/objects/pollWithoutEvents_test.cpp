// pollWithoutEvents_test.cpp - a pass of the loop where there is no event handler.

#include <unistd.h>

#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxSelectHandler.h"
#include "tests/support/inChild.h"

TEST(pollWithoutEvents, descriptorsAreServedAllTheSame) {
    struct Reading : fxSelectHandler {
        explicit Reading(int descriptor) : fxSelectHandler(descriptor, 1, 0, 0), from(descriptor) {}
        void handleRead() override {
            char byte = 0;
            if (::read(from, &byte, 1) == 1)
                bytes += byte;
        }
        int from;
        std::string bytes;
    };
    const std::string result = inChild([] {
        fxInitializeToolkit();
        int ends[2];
        if (::pipe(ends) != 0 || ::write(ends[1], "ab", 2) != 2)
            return std::string("no pipe");
        Reading reading(ends[0]);
        fx_theExecutive->addSelectHandler(&reading);
        fx_theEventHandler = nullptr;
        fx_theExecutive->poll(10);
        fx_theExecutive->poll(10);
        fx_theExecutive->removeSelectHandler(&reading);
        return reading.bytes;
    });
    EXPECT_EQ("ab", result);
}
