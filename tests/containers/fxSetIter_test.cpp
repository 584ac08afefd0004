// fxSetIter_test.cpp - what the iterators of sets have beside those of dictionaries.

#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxSet.h"
#include "tests/support/chained.h"

static_assert(std::has_virtual_destructor<fxSetIter>::value, "iterators have a table");

namespace {

using Set = Filled<ChainedSet>;
using Iter = ChainedSet::Iter;

}  // namespace

TEST(fxSetIter, keyIsTheEntrysBlock) {
    Set s;
    Iter iter(s);
    EXPECT_EQ(s.entry(10)->key, iter.getKey());
}

TEST(fxSetIter, intersectionMovesIteratorsOffTheKeysItRemoves) {
    Set s;
    ChainedSet other(3);
    for (int key : {0, 2})
        other.put(key);
    Iter a = on(s, 10), b = on(s, 7), c = on(s, 0), e = on(s, 4);
    s &= other;
    // 10 moved to 5, which went too; it leaves for the next bucket.
    EXPECT_EQ("moved", now(a));
    EXPECT_EQ("moved", now(b));
    EXPECT_EQ("0", now(c));
    EXPECT_EQ("end", now(e));
    ++a;
    ++b;
    EXPECT_EQ("2", now(a));
    EXPECT_EQ("2", now(b));
    EXPECT_EQ("0 2", rest(c));
}

TEST(fxSetIter, differenceMovesIteratorsOffTheKeysItRemoves) {
    Set s;
    ChainedSet other(3);
    for (int key : {5, 4})
        other.put(key);
    Iter a = on(s, 5), b = on(s, 4), c = on(s, 7);
    s -= other;
    EXPECT_EQ("moved", now(a));
    EXPECT_EQ("end", now(b));
    EXPECT_EQ("7", now(c));
    ++a;
    EXPECT_EQ("0 7 2", rest(a));
}

TEST(fxSetIter, differenceWithItselfEndsEveryIterator) {
    Set s;
    Iter a = on(s, 10), b = on(s, 4);
    const fxSet& self = s;
    s -= self;
    EXPECT_EQ(nullptr, a.getKey());
    EXPECT_EQ("end", now(b));
    ++a;
    EXPECT_EQ("end", now(a));
}

TEST(fxSetIter, keysThatAUnionAddsInFrontAreNotVisited) {
    Set s;
    ChainedSet other(7);
    for (int key : {15, 3})
        other.put(key);
    Iter iter(s);
    s |= other;
    EXPECT_EQ("10 5 0 7 2 3 4", rest(iter));
}

// Each key that cleanup ends moves the iterators on it, as remove does.
TEST(fxSetIter, cleanupMovesIteratorsOnBeforeItDetachesThem) {
    Set s;
    static Iter* watched;
    static std::string seen;
    Iter iter = on(s, 0);
    watched = &iter;
    seen.clear();
    s.onDestroyKey = [](const TestSet&) {
        seen += (watched->owner() ? std::to_string(watched->bucketIndex) : "end") + " ";
    };
    s.cleanup();
    // The keys end in the order 10 5 0 7 2 4. On 0 it moves to 7, in bucket 2;
    // the second removal, of 7, leaves it there.
    EXPECT_EQ("0 0 0 2 2 2 ", seen);
    EXPECT_EQ(nullptr, iter.owner());
    EXPECT_EQ(1u, iter.flags & 1u);
}

TEST(fxSetIter, cleanupFinishesTheIteratorOnTheLastKey) {
    Set s;
    Iter iter = on(s, 4), other = on(s, 10);
    static unsigned int registered;
    s.onDestroyKey = [](const TestSet& set) { registered = set.iters.length(); };
    s.cleanup();
    EXPECT_EQ(2u, registered) << "when the last key ends both are there";
    EXPECT_EQ(1u, s.iters.length()) << "the one on it has taken itself out";
    EXPECT_EQ(1u, iter.flags & 1u);
}

TEST(fxSetIter, deliberateCleanupLeavesTheFlagsOfIterators) {
    Set s;
    Iter unattached;
    s.addIter(&unattached);
    s.cleanup();
    EXPECT_EQ(0u, unattached.flags);
    EXPECT_EQ(nullptr, unattached.owner());
    EXPECT_EQ(nullptr, unattached.getKey());
}
