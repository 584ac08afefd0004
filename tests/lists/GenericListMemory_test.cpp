// GenericListMemory_test.cpp - a list that gets no memory for a node ends the process.

#include <csignal>

#include <gtest/gtest.h>

#include "kelvofxds/lists/GenericList.h"
#include "tests/support/heapCalls.h"

#ifndef __SANITIZE_ADDRESS__
namespace {

void appendForEver() {
    GenericList list;
    refuseBlocksFrom(0);
    for (;;)
        list.append(nullptr);
}

void prependForEver() {
    GenericList list;
    refuseBlocksFrom(0);
    for (;;)
        list.prepend(nullptr);
}

void insertForEver() {
    GenericList list;
    list.append(nullptr);
    list.append(nullptr);
    refuseBlocksFrom(0);
    for (;;)
        list.insertAt(1, nullptr);
}

}  // namespace

TEST(GenericListDeathTest, runningOutOfMemoryAbortsWithoutAMessage) {
    EXPECT_EXIT(appendForEver(), testing::KilledBySignal(SIGABRT), "^$");
    EXPECT_EXIT(prependForEver(), testing::KilledBySignal(SIGABRT), "^$");
    EXPECT_EXIT(insertForEver(), testing::KilledBySignal(SIGABRT), "^$");
}
#endif
