#include <cstdlib>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxSet.h"
#include "tests/support/testSet.h"

static_assert(std::has_virtual_destructor<fxSetIter>::value, "iterators have a table");

namespace {

// An iterator whose state tests can see.
class Iter : public fxSetIter {
public:
    using fxSetIter::fxSetIter;
    using fxSetIter::operator=;
    using fxSetIter::bucket;
    using fxSetIter::bucketIndex;
    using fxSetIter::flags;
    using fxSetIter::set;
    Iter() {}

    // The present entry as "7", "end" when detached, "moved" when getKey
    // is null because the entry has been removed.
    std::string now() const {
        if (!getKey()) {
            EXPECT_EQ(1u, flags & 1u);
            return set ? "moved" : "end";
        }
        return std::to_string(TestSet::number(getKey()));
    }

    // What the iterator visits from here on.
    std::string rest() {
        std::string entries;
        for (; getKey(); ++*this)
            entries += (entries.empty() ? "" : " ") + now();
        return entries;
    }
};

// Five buckets: 0: 10 5 0, 2: 7 2, 4: 4.
class fxSetIterTest : public testing::Test {
protected:
    fxSetIterTest() : s(5) {
        for (int key : {0, 5, 10, 2, 7, 4})
            s.put(key);
    }

    // An iterator on the entry of `key`.
    Iter on(int key) {
        Iter iter(s);
        while (TestSet::number(iter.getKey()) != key)
            ++iter;
        return iter;
    }

    TestSet s;
};

}  // namespace

// Attaching.

TEST_F(fxSetIterTest, defaultIteratorIsUnattached) {
    Iter iter;
    EXPECT_EQ(nullptr, iter.set);
    EXPECT_EQ(nullptr, iter.bucket);
    EXPECT_EQ(0u, iter.bucketIndex);
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ(nullptr, iter.getKey());
    ++iter;
    EXPECT_EQ(nullptr, iter.set);
    EXPECT_EQ(0u, iter.flags);
}

TEST_F(fxSetIterTest, startsOnTheHeadOfBucketZero) {
    Iter iter(s);
    EXPECT_EQ(&s, iter.set);
    EXPECT_EQ(0u, iter.bucketIndex);
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ(s.buckets[0], iter.bucket);
    EXPECT_EQ("10", iter.now());
}

TEST_F(fxSetIterTest, startsOnTheFirstNonEmptyBucket) {
    TestSet one(5);
    one.put(3);
    Iter iter(one);
    EXPECT_EQ(3u, iter.bucketIndex);
    EXPECT_EQ("3", iter.now());
}

TEST_F(fxSetIterTest, keyIsTheEntrysBlock) {
    Iter iter(s);
    EXPECT_EQ(s.entry(10)->key, iter.getKey());
}

TEST_F(fxSetIterTest, visitsBucketsInOrderAndChainsFrontToBack) {
    Iter iter(s);
    EXPECT_EQ("10 5 0 7 2 4", iter.rest());
    EXPECT_EQ("end", iter.now());
}

TEST_F(fxSetIterTest, overAnEmptySetIsFinishedAtOnce) {
    TestSet empty(5);
    Iter iter(empty);
    EXPECT_EQ("end", iter.now());
    EXPECT_EQ(0u, empty.iters.length());
    iter = s;
    EXPECT_EQ("10", iter.now());
    iter = empty;
    EXPECT_EQ("end", iter.now());
    EXPECT_EQ(0u, s.iters.length());
}

TEST_F(fxSetIterTest, overASetWithoutBucketsIsFinishedAtOnce) {
    TestSet none(fxSet_type);
    Iter iter(none);
    EXPECT_EQ("end", iter.now());
    EXPECT_EQ(0u, none.iters.length());
}

TEST_F(fxSetIterTest, iteratorsAreRegisteredInOrder) {
    Iter first(s);
    {
        Iter second(s), third(s);
        ASSERT_EQ(3u, s.iters.length());
        EXPECT_EQ(&first, s.iters[0]);
        EXPECT_EQ(&second, s.iters[1]);
        EXPECT_EQ(&third, s.iters[2]);
    }
    ASSERT_EQ(1u, s.iters.length());
    EXPECT_EQ(&first, s.iters[0]);
}

TEST_F(fxSetIterTest, destructorDeregistersThatIteratorOnly) {
    auto first = std::make_unique<Iter>(s);
    Iter second(s);
    first.reset();
    ASSERT_EQ(1u, s.iters.length());
    EXPECT_EQ(&second, s.iters[0]);
}

TEST_F(fxSetIterTest, finishedIteratorIsDeregistered) {
    Iter iter(s);
    iter.rest();
    EXPECT_EQ(0u, s.iters.length());
    EXPECT_EQ(nullptr, iter.set);
    EXPECT_EQ(1u, iter.flags & 1u);
    ++iter;
    ++iter;
    EXPECT_EQ("end", iter.now());
}

TEST_F(fxSetIterTest, assigningASetStartsAgain) {
    Iter iter(s);
    ++iter;
    ++iter;
    iter = s;
    EXPECT_EQ("10", iter.now());
    EXPECT_EQ(1u, s.iters.length());
    iter.rest();
    iter = s;
    EXPECT_EQ("10", iter.now());
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ(1u, s.iters.length());
}

TEST_F(fxSetIterTest, assigningAnotherSetDeregistersFromTheFirst) {
    TestSet other(3);
    other.put(1);
    Iter iter(s);
    iter = other;
    EXPECT_EQ(0u, s.iters.length());
    EXPECT_EQ(1u, other.iters.length());
    EXPECT_EQ("1", iter.rest());
}

TEST_F(fxSetIterTest, addIterTakesAnIteratorOnce) {
    Iter iter(s);
    s.addIter(&iter);
    EXPECT_EQ(1u, s.iters.length());
    s.removeIter(&iter);
    EXPECT_EQ(0u, s.iters.length());
    s.addIter(&iter);
    EXPECT_EQ(1u, s.iters.length());
}

TEST_F(fxSetIterTest, removeIterIgnoresAnUnknownIterator) {
    Iter known(s), unknown;
    s.removeIter(&unknown);
    ASSERT_EQ(1u, s.iters.length());
    EXPECT_EQ(&known, s.iters[0]);
    s.removeIter(&known);
    s.removeIter(&known);
    EXPECT_EQ(0u, s.iters.length());
}

// Copying.

TEST_F(fxSetIterTest, copyStandsOnTheSameEntryAndIsRegistered) {
    Iter iter = on(7);
    Iter copy(iter);
    EXPECT_EQ(2u, s.iters.length());
    EXPECT_EQ("7", copy.now());
    ++copy;
    EXPECT_EQ("2", copy.now());
    EXPECT_EQ("7", iter.now());
    s.drop(7);
    EXPECT_EQ("moved", iter.now());
    EXPECT_EQ("2", copy.now());
}

TEST_F(fxSetIterTest, copyOfAFinishedIteratorIsFinished) {
    Iter iter(s);
    iter.rest();
    Iter copy(iter);
    EXPECT_EQ("end", copy.now());
    EXPECT_EQ(0u, s.iters.length());
}

TEST_F(fxSetIterTest, assignedIteratorIsRegisteredWithTheOthersSet) {
    TestSet other(3);
    other.put(1);
    Iter iter(s), target(other);
    target = iter;
    EXPECT_EQ(0u, other.iters.length());
    EXPECT_EQ(2u, s.iters.length());
    EXPECT_EQ("10", target.now());
    const Iter& self = target;
    target = self;
    EXPECT_EQ(2u, s.iters.length());
    target = Iter();
    EXPECT_EQ(1u, s.iters.length());
    EXPECT_EQ(nullptr, target.getKey());
}

// Adding under an iterator.

TEST_F(fxSetIterTest, entriesAddedInFrontAreNotVisited) {
    Iter iter(s);
    s.put(15);  // at the front of bucket 0
    s.put(3);   // in a bucket still to come
    s.put(12);
    EXPECT_EQ("10 5 0 12 7 2 3 4", iter.rest());
}

// Removing under an iterator.

TEST_F(fxSetIterTest, removingAnotherEntryLeavesTheIterator) {
    Iter iter = on(5);
    s.drop(10);
    s.drop(0);
    s.drop(2);
    EXPECT_EQ("5", iter.now());
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ("5 7 4", iter.rest());
}

TEST_F(fxSetIterTest, removedEntryGivesNullUntilTheNextStep) {
    Iter iter = on(10);
    s.drop(10);
    EXPECT_EQ("moved", iter.now());
    EXPECT_EQ(1u, iter.flags);
    EXPECT_EQ(s.entry(5), iter.bucket);
    EXPECT_EQ(&s, iter.set);
    ++iter;
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ("5", iter.now());
}

TEST_F(fxSetIterTest, removeDuringIterationSkipsNothing) {
    const int all[] = {10, 5, 0, 7, 2, 4};
    for (int removed : all) {
        SCOPED_TRACE(removed);
        TestSet numbers(5);
        for (int key : {0, 5, 10, 2, 7, 4})
            numbers.put(key);
        std::string expected, visited;
        for (int key : all)
            expected += std::to_string(key) + " ";
        for (Iter iter(numbers); iter.set; ++iter) {
            const int key = TestSet::number(iter.getKey());
            visited += std::to_string(key) + " ";
            if (key == removed)
                numbers.drop(key);
        }
        EXPECT_EQ(expected, visited);
    }
}

TEST_F(fxSetIterTest, everyEntryCanBeRemovedWhileIterating) {
    std::string visited;
    for (Iter iter(s); iter.set; ++iter) {
        visited += iter.now() + " ";
        s.drop(TestSet::number(iter.getKey()));
    }
    EXPECT_EQ("10 5 0 7 2 4 ", visited);
    EXPECT_EQ(0u, s.length());
    EXPECT_EQ(0u, s.iters.length());
}

TEST_F(fxSetIterTest, removalAtTheEndOfAChainMovesToTheNextBucket) {
    Iter iter = on(0);
    s.drop(0);
    EXPECT_EQ("moved", iter.now());
    EXPECT_EQ(2u, iter.bucketIndex);
    EXPECT_EQ(s.entry(7), iter.bucket);
    ++iter;
    EXPECT_EQ("7 2 4", iter.rest());
}

TEST_F(fxSetIterTest, removalOfTheLastEntryFinishesTheIteration) {
    Iter iter = on(4);
    s.drop(4);
    EXPECT_EQ("end", iter.now());
    EXPECT_EQ(0u, s.iters.length());
    ++iter;
    EXPECT_EQ("end", iter.now());
}

TEST_F(fxSetIterTest, everyIteratorOnTheEntryMoves) {
    Iter a = on(5), b = on(7), c = on(5), e = on(5);
    s.drop(5);
    EXPECT_EQ("moved", a.now());
    EXPECT_EQ("7", b.now());
    EXPECT_EQ("moved", c.now());
    EXPECT_EQ("moved", e.now());
    for (Iter* iter : {&a, &c, &e}) {
        ++*iter;
        EXPECT_EQ("0", iter->now());
    }
}

// Each one that ends takes itself out of the array while it is walked.
TEST_F(fxSetIterTest, everyIteratorOnTheLastEntryFinishes) {
    for (unsigned int n = 1; n <= 6; ++n) {
        SCOPED_TRACE(n);
        s.put(4);
        std::vector<std::unique_ptr<Iter>> iters;
        for (unsigned int i = 0; i < n; ++i)
            iters.push_back(std::make_unique<Iter>(on(4)));
        Iter elsewhere = on(7);
        s.drop(4);
        for (const auto& iter : iters)
            EXPECT_EQ("end", iter->now());
        EXPECT_EQ("7", elsewhere.now());
        ASSERT_EQ(1u, s.iters.length());
        EXPECT_EQ(&elsewhere, s.iters[0]);
    }
}

TEST_F(fxSetIterTest, iteratorsThatEndDoNotHideOneThatIsElsewhere) {
    Iter a = on(4), b = on(2), c = on(4), e = on(2), f = on(4);
    s.drop(4);
    for (const Iter* iter : {&a, &c, &f})
        EXPECT_EQ("end", iter->now());
    ASSERT_EQ(2u, s.iters.length());
    EXPECT_EQ(&b, s.iters[0]);
    EXPECT_EQ(&e, s.iters[1]);
    EXPECT_EQ("2", b.rest());
    EXPECT_EQ("2", e.now());
}

// Removing the entry that the iterator has been moved to as well: the
// iterator stays on it; the next step leaves for the next bucket.
TEST_F(fxSetIterTest, deliberateASecondRemovalLeavesTheIteratorOnTheRemovedEntry) {
    Iter iter = on(10);
    s.drop(10);
    const fxSetBucket* second = s.entry(5);
    EXPECT_EQ(second, iter.bucket);
    s.drop(5);
    EXPECT_EQ("moved", iter.now());
    EXPECT_EQ(second, iter.bucket);
    EXPECT_EQ(1u, iter.flags & 1u);
    EXPECT_EQ(1u, s.iters.length());

    ++iter;
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ("7 2 4", iter.rest());
}

TEST_F(fxSetIterTest, parkedIteratorFinishesWhenNoBucketFollows) {
    s.put(9);  // 4: 9 4
    Iter iter = on(9);
    s.drop(9);
    s.drop(4);
    EXPECT_EQ("moved", iter.now());
    ++iter;
    EXPECT_EQ("end", iter.now());
    EXPECT_EQ(0u, s.iters.length());
}

// The freed entry's memory may serve a new entry at once.
TEST_F(fxSetIterTest, parkedIteratorIgnoresFurtherRemovals) {
    Iter iter = on(10);
    s.drop(10);
    s.drop(5);
    for (int key = 20; key < 100; key += 5)
        s.put(key);
    for (int key = 20; key < 100; key += 5)
        s.drop(key);
    s.drop(0);
    EXPECT_EQ("moved", iter.now());
    ++iter;
    EXPECT_EQ("7", iter.now());
    EXPECT_EQ(0u, iter.flags);
    s.drop(7);
    EXPECT_EQ("moved", iter.now());
    ++iter;
    EXPECT_EQ("2", iter.now());
}

TEST_F(fxSetIterTest, stepBetweenTwoRemovalsMovesTwice) {
    Iter iter = on(10);
    s.drop(10);
    ++iter;
    EXPECT_EQ("5", iter.now());
    s.drop(5);
    EXPECT_EQ("moved", iter.now());
    ++iter;
    EXPECT_EQ("0", iter.now());
}

TEST_F(fxSetIterTest, parkedIteratorCanBeDestroyedOrStartedAgain) {
    {
        Iter iter = on(10);
        s.drop(10);
        s.drop(5);
    }
    EXPECT_EQ(0u, s.iters.length());
    Iter again = on(7);
    s.drop(7);
    s.drop(2);
    again = s;
    EXPECT_EQ(0u, again.flags);
    EXPECT_EQ("0 4", again.rest());
}

// Set algebra under an iterator.

TEST_F(fxSetIterTest, intersectionMovesIteratorsOffTheKeysItRemoves) {
    TestSet other(3);
    for (int key : {0, 2})
        other.put(key);
    Iter a = on(10), b = on(7), c = on(0), e = on(4);
    s &= other;
    // 10 moved to 5, which went too; it leaves for the next bucket.
    EXPECT_EQ("moved", a.now());
    EXPECT_EQ("moved", b.now());
    EXPECT_EQ("0", c.now());
    EXPECT_EQ("end", e.now());
    ++a;
    ++b;
    EXPECT_EQ("2", a.now());
    EXPECT_EQ("2", b.now());
    EXPECT_EQ("0 2", c.rest());
}

TEST_F(fxSetIterTest, differenceMovesIteratorsOffTheKeysItRemoves) {
    TestSet other(3);
    for (int key : {5, 4})
        other.put(key);
    Iter a = on(5), b = on(4), c = on(7);
    s -= other;
    EXPECT_EQ("moved", a.now());
    EXPECT_EQ("end", b.now());
    EXPECT_EQ("7", c.now());
    ++a;
    EXPECT_EQ("0 7 2", a.rest());
}

TEST_F(fxSetIterTest, differenceWithItselfEndsEveryIterator) {
    Iter a = on(10), b = on(4);
    const fxSet& self = s;
    s -= self;
    EXPECT_EQ(nullptr, a.getKey());
    EXPECT_EQ("end", b.now());
    ++a;
    EXPECT_EQ("end", a.now());
}

TEST_F(fxSetIterTest, keysThatAUnionAddsInFrontAreNotVisited) {
    TestSet other(7);
    for (int key : {15, 3})
        other.put(key);
    Iter iter(s);
    s |= other;
    EXPECT_EQ("10 5 0 7 2 3 4", iter.rest());
}

// Cleaning up under an iterator.

TEST_F(fxSetIterTest, cleanupDetachesEveryIterator) {
    Iter first = on(10), moved = on(7), finished(s);
    finished.rest();
    s.drop(7);
    s.cleanup();
    for (const Iter* iter : {&first, &moved}) {
        EXPECT_EQ(nullptr, iter->set);
        EXPECT_EQ(nullptr, iter->bucket);
        EXPECT_EQ("end", iter->now());
    }
}

// Each key that cleanup ends moves the iterators on it, as remove does.
TEST_F(fxSetIterTest, cleanupMovesIteratorsOnBeforeItDetachesThem) {
    static Iter* watched;
    static std::string seen;
    Iter iter = on(0);
    watched = &iter;
    seen.clear();
    s.onDestroyKey = [](const TestSet&) {
        seen += (watched->set ? std::to_string(watched->bucketIndex) : "end") + " ";
    };
    s.cleanup();
    // The keys end in the order 10 5 0 7 2 4. On 0 it moves to 7, in bucket 2;
    // the second removal, of 7, leaves it there.
    EXPECT_EQ("0 0 0 2 2 2 ", seen);
    EXPECT_EQ(nullptr, iter.set);
    EXPECT_EQ(1u, iter.flags & 1u);
}

TEST_F(fxSetIterTest, cleanupFinishesTheIteratorOnTheLastKey) {
    Iter iter = on(4), other = on(10);
    static unsigned int registered;
    s.onDestroyKey = [](const TestSet& set) { registered = set.iters.length(); };
    s.cleanup();
    EXPECT_EQ(2u, registered) << "when the last key ends both are there";
    EXPECT_EQ(1u, s.iters.length()) << "the one on it has taken itself out";
    EXPECT_EQ(1u, iter.flags & 1u);
}

TEST_F(fxSetIterTest, deliberateCleanupLeavesTheFlagsOfIterators) {
    Iter unattached;
    s.addIter(&unattached);
    s.cleanup();
    EXPECT_EQ(0u, unattached.flags);
    EXPECT_EQ(nullptr, unattached.set);
    EXPECT_EQ(nullptr, unattached.getKey());
}

TEST_F(fxSetIterTest, iteratorsCanGoOrStartAgainAfterCleanup) {
    auto gone = std::make_unique<Iter>(s);
    Iter iter(s);
    s.cleanup();
    gone.reset();
    s.put(1);
    iter = s;
    EXPECT_EQ("1", iter.now());
    Iter another(s);
    s.drop(1);
    EXPECT_EQ("end", iter.now());
    EXPECT_EQ("end", another.now());
    s.cleanup();
    EXPECT_EQ("end", iter.now());
}

TEST_F(fxSetIterTest, iteratorMayOutliveItsSet) {
    Iter iter;
    {
        TestSet shortLived(3);
        shortLived.put(1);
        iter = shortLived;
        EXPECT_EQ("1", iter.now());
    }
    EXPECT_EQ("end", iter.now());
    ++iter;
    EXPECT_EQ("end", iter.now());
    iter = s;
    EXPECT_EQ("10", iter.now());
}
