#include "kelvofxds/objects/fxSequencer.h"

#include <cstddef>
#include <set>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/arraySuite.h"
#include "tests/support/heapCalls.h"
#include "tests/support/vtable.h"

struct fxSequencerLayout {
    static_assert(sizeof(fxSeqRange) == 8, "two words");
    static_assert(offsetof(fxSeqRange, start) == 0, "the start comes first");
    static_assert(offsetof(fxSeqRange, count) == 4, "then the count");
    static_assert(std::is_same<unsigned int, decltype(fxSeqRange::start)>::value, "unsigned");
    static_assert(std::is_same<unsigned int, decltype(fxSeqRange::count)>::value, "unsigned");

    static_assert(std::is_base_of<fxRCObj, fxSequencer>::value, "reference-counted");
    static_assert(sizeof(fxSequencer) == sizeof(fxRCObj) + sizeof(fxSeqRangeArray), "one field");
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
    static_assert(offsetof(fxSequencer, ranges) == sizeof(fxRCObj), "right after the base");
#pragma GCC diagnostic pop

    static fxSeqRangeArray& ranges(fxSequencer& sequencer) { return sequencer.ranges; }
};

// The arrays.

template <>
struct ArrayElements<fxSeqRangeArray> {
    static fxSeqRange make(unsigned int i) { return {100 - i, i}; }
    static unsigned int numberOf(const fxSeqRange& range) {
        EXPECT_EQ(100 - range.count, range.start);
        return range.count;
    }
};

namespace {
char places[100];
}  // namespace

template <>
struct ArrayElements<fxStubFuncArray> {
    static void (*make(unsigned int i))() { return reinterpret_cast<void (*)()>(places + i); }
    static unsigned int numberOf(void (*function)()) {
        return static_cast<unsigned int>(reinterpret_cast<char*>(function) - places);
    }
};

INSTANTIATE_ARRAY_SUITE(fxSeqRangeArray, fxSeqRangeArray);
INSTANTIATE_ARRAY_SUITE(fxStubFuncArray, fxStubFuncArray);

TEST(fxSeqRangeArray, elementsAreEightBytes) { EXPECT_EQ(8, fxSeqRangeArray().getElemSize()); }

TEST(fxStubFuncArray, elementsAreFourBytes) { EXPECT_EQ(4, fxStubFuncArray().getElemSize()); }

TEST(fxStubFuncArray, elementsAreFunctionsThatCanBeCalled) {
    static int calls;
    calls = 0;
    void (*const function)() = [] { ++calls; };
    fxStubFuncArray array;
    array.append(&function);
    array[0]();
    EXPECT_EQ(1, calls);
    EXPECT_EQ(0u, array.find(&function));
}

TEST(fxSeqRangeArray, hasTheRecordOfItsBase) {
    EXPECT_EQ(&fxArray_type, &fxSeqRangeArray().getTypeObj());
    EXPECT_EQ(&fxArray_type, &fxStubFuncArray().getTypeObj());
}

TEST(fxSeqRangeArray, comparesBytesInMemoryOrder) {
    const fxSeqRangeArray array;
    const fxSeqRange equal = {0x01010101, 5};
    const fxSeqRange same = {0x01010101, 5};
    const fxSeqRange higher = {0x01010101, 0x06060606};
    const fxSeqRange highest = {0x02020202, 0};
    EXPECT_EQ(0, array.compareElements(&equal, &same));
    EXPECT_EQ(-1, array.compareElements(&equal, &higher));
    EXPECT_EQ(1, array.compareElements(&higher, &equal));
    EXPECT_EQ(-1, array.compareElements(&higher, &highest));
}

// The sequencer.

namespace {
using Ranges = std::vector<std::vector<unsigned int>>;  // of start and count

Ranges rangesOf(const fxSequencer& sequencer) {
    Ranges ranges;
    for (unsigned int i = 0; i < sequencer.getRanges().length(); ++i) {
        const fxSeqRange& range = sequencer.getRanges()[i];
        ranges.push_back({range.start, range.count});
    }
    return ranges;
}

void setRanges(fxSequencer& sequencer, const Ranges& ranges) {
    for (const auto& r : ranges) {
        const fxSeqRange range = {r[0], r[1]};
        fxSequencerLayout::ranges(sequencer).append(&range);
    }
}

// The runs of consecutive numbers in `used`.
Ranges runsOf(const std::set<unsigned int>& used) {
    Ranges ranges;
    for (const unsigned int n : used) {
        if (!ranges.empty() && ranges.back()[0] + ranges.back()[1] == n)
            ++ranges.back()[1];
        else
            ranges.push_back({n, 1});
    }
    return ranges;
}

// The number that is to be drawn when `used` are in use.
unsigned int nextOf(const std::set<unsigned int>& used) {
    if (used.empty())
        return 0;
    if (*used.begin() > 0)
        return *used.begin() - 1;
    unsigned int n = 0;
    while (used.count(n) != 0)
        ++n;
    return n;
}
}  // namespace

TEST(fxSequencer, isNewWithoutRangesOrReferences) {
    const fxSequencer sequencer;
    EXPECT_EQ(0, sequencer.count);
    EXPECT_EQ(0u, sequencer.getRanges().length());
}

TEST(fxSequencer, isDeletedThroughItsBase) {
    const long blocks = heapCalls().blocks;
    auto* sequencer = new fxSequencer;
    (*sequencer)();
    fxRCObj* object = sequencer;
    delete object;
    EXPECT_EQ(blocks, heapCalls().blocks) << "the ranges go too";
}

TEST(fxSequencer, hasNoVirtualOperationButItsDestructors) {
    struct Probe : fxSequencer {
        virtual void probe() {}
    };
    EXPECT_EQ(2u, vtableWord(&Probe::probe));
}

TEST(fxSequencer, freshOneCountsFromZero) {
    fxSequencer sequencer;
    for (unsigned int i = 0; i < 1000; ++i) {
        EXPECT_EQ(i, sequencer());
        EXPECT_EQ((Ranges{{0, i + 1}}), rangesOf(sequencer));
    }
}

TEST(fxSequencer, deliberateDrawsTheLargestNumberBelowTheFirstRange) {
    fxSequencer sequencer;
    EXPECT_EQ(5u, sequencer(5));
    const unsigned int drawn[] = {4, 3, 2, 1, 0, 6, 7};
    for (const unsigned int expected : drawn)
        EXPECT_EQ(expected, sequencer());
    EXPECT_EQ((Ranges{{0, 8}}), rangesOf(sequencer));
}

TEST(fxSequencer, drawMergesWithTheRangeItReaches) {
    const struct {
        Ranges before;
        unsigned int drawn;
        Ranges after;
    } cases[] = {
        {{{0, 1}, {2, 1}}, 1, {{0, 3}}},
        {{{0, 1}, {3, 1}}, 1, {{0, 2}, {3, 1}}},
        {{{0, 2}, {3, 4}, {9, 1}}, 2, {{0, 7}, {9, 1}}},
        {{{1, 1}, {3, 1}}, 0, {{0, 2}, {3, 1}}},
        {{{2, 1}, {4, 1}}, 1, {{1, 2}, {4, 1}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.before));
        fxSequencer sequencer;
        setRanges(sequencer, c.before);
        EXPECT_EQ(c.drawn, sequencer());
        EXPECT_EQ(c.after, rangesOf(sequencer));
    }
}

TEST(fxSequencer, reservingMergesRangesThatTouch) {
    const struct {
        const char* what;
        Ranges before;
        unsigned int n;
        Ranges after;
    } cases[] = {
        {"the first", {}, 7, {{7, 1}}},
        {"behind all, apart", {{0, 1}}, 5, {{0, 1}, {5, 1}}},
        {"behind all, touching", {{0, 3}}, 3, {{0, 4}}},
        {"behind all, touching the last of two", {{0, 1}, {10, 1}}, 11, {{0, 1}, {10, 2}}},
        {"below the first", {{5, 2}}, 4, {{4, 3}}},
        {"below the first, apart", {{5, 2}}, 2, {{2, 1}, {5, 2}}},
        {"below the second", {{0, 1}, {5, 1}}, 4, {{0, 1}, {4, 2}}},
        {"between two, touching both", {{0, 1}, {2, 1}}, 1, {{0, 3}}},
        {"between two, touching the left", {{0, 1}, {5, 1}}, 1, {{0, 2}, {5, 1}}},
        {"between two, touching none", {{0, 1}, {5, 1}}, 3, {{0, 1}, {3, 1}, {5, 1}}},
        {"closing a gap among others",
         {{0, 1}, {2, 1}, {4, 1}, {6, 1}},
         3,
         {{0, 1}, {2, 3}, {6, 1}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        fxSequencer sequencer;
        setRanges(sequencer, c.before);
        EXPECT_EQ(c.n, sequencer(c.n));
        EXPECT_EQ(c.after, rangesOf(sequencer));
    }
}

TEST(fxSequencer, consecutiveReservationsAreOneRange) {
    fxSequencer upward;
    upward(10);
    upward(11);
    EXPECT_EQ((Ranges{{10, 2}}), rangesOf(upward));
    fxSequencer downward;
    downward(11);
    downward(10);
    EXPECT_EQ((Ranges{{10, 2}}), rangesOf(downward));
}

// Draws (7) and reservations of 0 to 6 that are free yet, in every order.
TEST(fxSequencer, rangesAreTheRunsOfTheNumbersInUse) {
    struct {
        void explore(std::vector<unsigned int>& steps) {
            fxSequencer sequencer;
            std::set<unsigned int> used;
            for (const unsigned int step : steps) {
                const unsigned int expected = step == 7 ? nextOf(used) : step;
                const unsigned int n = step == 7 ? sequencer() : sequencer(step);
                ASSERT_EQ(expected, n) << testing::PrintToString(steps);
                used.insert(n);
            }
            ASSERT_EQ(runsOf(used), rangesOf(sequencer)) << testing::PrintToString(steps);
            if (steps.size() == 6)
                return;
            for (unsigned int step = 0; step <= 7; ++step) {
                if (used.count(step) != 0 && step != 7)
                    continue;
                steps.push_back(step);
                explore(steps);
                steps.pop_back();
            }
        }
    } explorer;
    std::vector<unsigned int> steps;
    explorer.explore(steps);
}

TEST(fxSequencer, deliberateNumberInUseIsEnteredAgain) {
    fxSequencer sequencer;
    setRanges(sequencer, {{0, 3}});
    EXPECT_EQ(1u, sequencer(1));
    EXPECT_EQ((Ranges{{0, 3}, {1, 1}}), rangesOf(sequencer));
    EXPECT_EQ(3u, sequencer());
    EXPECT_EQ((Ranges{{0, 4}, {1, 1}}), rangesOf(sequencer));
}

TEST(fxSequencer, deliberateOverlapsFollowTheSameRules) {
    const struct {
        Ranges before;
        unsigned int n;
        Ranges after;
    } cases[] = {
        {{{5, 1}}, 5, {{5, 1}, {5, 1}}},
        {{{4, 3}}, 6, {{4, 3}, {6, 1}}},
        {{{0, 4}, {9, 1}}, 0, {{0, 4}, {0, 1}, {9, 1}}},
        {{{0, 4}, {9, 1}}, 2, {{0, 4}, {2, 1}, {9, 1}}},
        // 8 lies in the first range and touches the second.
        {{{0, 9}, {9, 1}}, 8, {{0, 9}, {8, 2}}},
        {{{0, 8}, {9, 1}}, 8, {{0, 10}}},
        // Only the last range that starts at or below the number is looked at.
        {{{0, 3}, {1, 1}}, 3, {{0, 3}, {1, 1}, {3, 1}}},
        {{{0, 3}, {1, 1}}, 2, {{0, 3}, {1, 2}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.n << " in " << testing::PrintToString(c.before));
        fxSequencer sequencer;
        setRanges(sequencer, c.before);
        EXPECT_EQ(c.n, sequencer(c.n));
        EXPECT_EQ(c.after, rangesOf(sequencer));
    }
}

TEST(fxSequencer, lastNumberEndsAtZero) {
    const unsigned int last = 0xFFFFFFFF;
    const struct {
        Ranges before;
        unsigned int n;
        Ranges after;
    } cases[] = {
        {{}, last, {{last, 1}}},
        {{{last, 1}}, 0, {{0, 1}, {last, 1}}},
        {{{last, 1}}, last, {{last, 1}, {last, 1}}},
        {{{last, 1}}, last - 1, {{last - 1, 2}}},
        {{{last - 1, 1}}, last, {{last - 1, 2}}},
        {{{0, 1}, {last, 1}}, last - 1, {{0, 1}, {last - 1, 2}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.n << " in " << testing::PrintToString(c.before));
        fxSequencer sequencer;
        setRanges(sequencer, c.before);
        EXPECT_EQ(c.n, sequencer(c.n));
        EXPECT_EQ(c.after, rangesOf(sequencer));
    }
}

TEST(fxSequencer, drawingTheLastNumberWrapsTheCount) {
    fxSequencer sequencer;
    setRanges(sequencer, {{0, 0xFFFFFFFF}});
    EXPECT_EQ(0xFFFFFFFFu, sequencer());
    EXPECT_EQ((Ranges{{0, 0}}), rangesOf(sequencer));
    EXPECT_EQ(0u, sequencer());
    EXPECT_EQ((Ranges{{0, 1}}), rangesOf(sequencer));
}

TEST(fxSequencer, trymergeJoinsARangeAndTheNextIfTheyTouch) {
    const struct {
        Ranges before;
        unsigned int i;
        Ranges after;
    } cases[] = {
        {{{0, 2}, {2, 3}}, 0, {{0, 5}}},
        {{{0, 2}, {2, 3}}, 1, {{0, 2}, {2, 3}}},
        {{{0, 2}, {3, 3}}, 0, {{0, 2}, {3, 3}}},
        {{{0, 2}, {1, 3}}, 0, {{0, 2}, {1, 3}}},
        {{{0, 1}, {2, 1}, {3, 1}, {4, 1}}, 1, {{0, 1}, {2, 2}, {4, 1}}},
        {{{0, 1}, {2, 1}, {3, 1}}, 0, {{0, 1}, {2, 1}, {3, 1}}},
        {{{7, 1}}, 0, {{7, 1}}},
        {{}, 0, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.i << " of " << testing::PrintToString(c.before));
        fxSequencer sequencer;
        setRanges(sequencer, c.before);
        sequencer.trymerge(c.i);
        EXPECT_EQ(c.after, rangesOf(sequencer));
    }
}
