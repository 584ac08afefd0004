// The containers against models, at length.

#include <cstdint>
#include <random>
#include <vector>

#include "tests/support/arrayScript.h"
#include "tests/support/containerScript.h"
#include "tests/support/figure.h"
#include "tests/support/stringScript.h"

namespace {

// Runs scripts of random bytes, that begin with `first` if it is not negative, until they
// have taken `steps`.
unsigned long runAtRandom(void (*run)(Script&), unsigned int seed, int first, unsigned long steps) {
    std::mt19937 random(seed);
    std::vector<std::uint8_t> bytes(20000);
    unsigned long taken = 0;
    while (taken < steps) {
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>(random());
        if (first >= 0)
            bytes[0] = static_cast<std::uint8_t>(first);
        Script script(bytes.data(), bytes.size());
        run(script);
        taken += script.stepsTaken();
    }
    return taken;
}

}  // namespace

// A step that differs from the model ends the program, so the line is not printed.
TEST(fullFigureS4, randomOperationsMatchTheModels) {
    const unsigned long steps = figureSize(10000000, 300000);
    const unsigned int seeds = 20;
    unsigned long taken = 0;
    for (unsigned int seed = 1; seed <= seeds; ++seed) {
        for (const auto run : {arrayScript::run, containerScript::run, stringScript::run})
            taken += runAtRandom(run, seed, -1, steps / seeds / 3 + 1);
    }
    reportFigure("S4", std::to_string(taken) + ";0", std::to_string(steps) + ";0", taken >= steps);
}

// Few buckets, so that an index answers what a walk along the chain would.
TEST(fullFigureG2, indexAnswersAsTheWalkDoes) {
    const unsigned long steps = figureSize(10000000, 200000);
    const int oneBucketOfADictionary = 0;
    const int oneBucketOfASet = 1;
    const unsigned long ofDictionaries =
        runAtRandom(containerScript::run, 1, oneBucketOfADictionary, steps);
    const unsigned long ofSets = runAtRandom(containerScript::run, 2, oneBucketOfASet, steps);
    reportFigure("G2", std::to_string(ofDictionaries) + "," + std::to_string(ofSets) + ";0",
                 std::to_string(steps) + "," + std::to_string(steps) + ";0",
                 ofDictionaries >= steps && ofSets >= steps);
}
