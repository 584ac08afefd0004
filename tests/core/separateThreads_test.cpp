// separateThreads_test.cpp - threads of a host that use objects of their own beside each other.
//
// That no two of them touch the same memory is what tests/figures/threads.sh looks at.

#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "tests/support/separateUses.h"

namespace {

const int rounds = 1000;

void useAll(int seed, std::vector<char>* outcomes) {
    for (unsigned int i = 0; i < separateUseCount; ++i)
        outcomes->push_back(separateUses[i].use(seed, rounds));
}

}  // namespace

TEST(separateThreads, useObjectsOfTheirOwnBesideEachOther) {
    fxInitializeToolkit();
    std::vector<std::vector<char>> outcomes(4);
    std::vector<std::thread> threads;
    for (std::vector<char>& outcome : outcomes)
        threads.emplace_back(useAll, static_cast<int>(threads.size()), &outcome);
    for (std::thread& thread : threads)
        thread.join();
    for (const std::vector<char>& outcome : outcomes) {
        ASSERT_EQ(separateUseCount, outcome.size());
        for (unsigned int i = 0; i < separateUseCount; ++i)
            EXPECT_TRUE(outcome[i]) << separateUses[i].family;
    }
}
