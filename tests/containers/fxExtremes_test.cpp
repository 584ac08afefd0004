// fxExtremes_test.cpp - the next great and the last small element, compared with a walk.

#include "kelvofxds/containers/fxExtremesInternal.h"

#include <cstdio>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace {

struct Numbers {
    int at(unsigned int i) const { return values[i]; }
    static bool less(int a, int b) { return a < b; }

    std::vector<int> values;
};

using Extremes = fxExtremes<Numbers>;

unsigned int nextByWalk(const Numbers& all, unsigned int i, unsigned int hi, int bound) {
    while (i < hi) {
        if (all.at(++i) >= bound)
            return i;
    }
    return Extremes::none;
}

unsigned int previousByWalk(const Numbers& all, unsigned int lo, unsigned int j, int bound) {
    while (j > lo) {
        if (all.at(--j) <= bound)
            return j;
    }
    return Extremes::none;
}

void expectLikeAWalk(const Numbers& all, const Extremes& extremes, unsigned int lo, unsigned int hi,
                     int bound) {
    for (unsigned int i = lo; i <= hi; ++i) {
        ASSERT_EQ(nextByWalk(all, i, hi, bound),
                  extremes.next(i, hi, [&](int value) { return value >= bound; }))
            << i << " of " << lo << " to " << hi << ", from " << bound;
        const unsigned int last = previousByWalk(all, lo, i, bound);
        if (last != Extremes::none) {
            ASSERT_EQ(last, extremes.previous(i, [&](int value) { return value <= bound; }))
                << i << " of " << lo << " to " << hi << ", up to " << bound;
        }
    }
}

}  // namespace

TEST(fxExtremes, theyAreThoseThatAWalkFinds) {
    const unsigned int seed = 41;
    std::printf("seed %u\n", seed);
    std::mt19937 random(seed);
    for (const unsigned int n : {1U, 2U, 15U, 16U, 17U, 31U, 32U, 33U, 48U, 64U, 65U, 200U, 515U}) {
        for (const unsigned int lo : {0U, 3U, 16U}) {
            const unsigned int hi = lo + n - 1;
            Numbers all;
            for (unsigned int i = 0; i <= hi + 3; ++i)
                all.values.push_back(int(random() % 1000));
            Extremes extremes;
            EXPECT_FALSE(extremes.isMade());
            extremes.make(all, lo, hi);
            ASSERT_TRUE(extremes.isMade());
            for (const int bound : {0, 3, 20, 500, 980, 997, 1000})
                expectLikeAWalk(all, extremes, lo, hi, bound);
            for (unsigned int round = 0; round < 10; ++round) {
                const unsigned int from = lo + unsigned(random()) % n;
                const unsigned int to = from + unsigned(random()) % (hi - from + 1);
                for (unsigned int i = from; i <= to; ++i)
                    all.values[i] = round % 2 != 0 ? 0 : 999;
                extremes.changed(from, to);
                for (const int bound : {0, 1, 998, 999})
                    expectLikeAWalk(all, extremes, lo, hi, bound);
            }
        }
    }
}

// What is great, or small, is in one place.
TEST(fxExtremes, aSingleElementIsFoundFromEverywhere) {
    const unsigned int n = 300;
    Numbers all;
    all.values.assign(n, 5);
    Extremes extremes;
    extremes.make(all, 0, n - 1);
    for (unsigned int place = 0; place < n; ++place) {
        all.values[place] = 9;
        extremes.changed(place, place);
        expectLikeAWalk(all, extremes, 0, n - 1, 7);
        all.values[place] = 1;
        extremes.changed(place, place);
        expectLikeAWalk(all, extremes, 0, n - 1, 3);
        all.values[place] = 5;
        extremes.changed(place, place);
    }
}
