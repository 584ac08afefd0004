// fxChainedIter_test.cpp - the iterators of dictionaries and sets, and removal during walks.

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/chained.h"

namespace {

template <class Container>
class fxChainedIter : public testing::Test {};
TYPED_TEST_SUITE(fxChainedIter, ChainedContainers);

}  // namespace

// Attaching.

TYPED_TEST(fxChainedIter, defaultIteratorIsUnattached) {
    using Iter = typename TypeParam::Iter;
    Iter iter;
    EXPECT_EQ(nullptr, iter.owner());
    EXPECT_EQ(nullptr, iter.bucket);
    EXPECT_EQ(0u, iter.bucketIndex);
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ(nullptr, iter.getKey());
    ++iter;
    EXPECT_EQ(nullptr, iter.owner());
    EXPECT_EQ(0u, iter.flags);
}

TYPED_TEST(fxChainedIter, startsOnTheHeadOfBucketZero) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter iter(c);
    EXPECT_EQ(&c, iter.owner());
    EXPECT_EQ(0u, iter.bucketIndex);
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ(c.buckets[0], iter.bucket);
    EXPECT_EQ("10", now(iter));
}

TYPED_TEST(fxChainedIter, startsOnTheFirstNonEmptyBucket) {
    using Iter = typename TypeParam::Iter;
    TypeParam one(5);
    one.put(3);
    Iter iter(one);
    EXPECT_EQ(3u, iter.bucketIndex);
    EXPECT_EQ("3", now(iter));
}

TYPED_TEST(fxChainedIter, visitsBucketsInOrderAndChainsFrontToBack) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter iter(c);
    EXPECT_EQ("10 5 0 7 2 4", rest(iter));
    EXPECT_EQ("end", now(iter));
}

TYPED_TEST(fxChainedIter, overAnEmptyContainerIsFinishedAtOnce) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    TypeParam empty(5);
    Iter iter(empty);
    EXPECT_EQ("end", now(iter));
    EXPECT_EQ(0u, empty.iters.length());
    iter = c;
    EXPECT_EQ("10", now(iter));
    iter = empty;
    EXPECT_EQ("end", now(iter));
    EXPECT_EQ(0u, c.iters.length());
}

TYPED_TEST(fxChainedIter, overAContainerWithoutBucketsIsFinishedAtOnce) {
    using Iter = typename TypeParam::Iter;
    TypeParam none(TypeParam::type());
    Iter iter(none);
    EXPECT_EQ("end", now(iter));
    EXPECT_EQ(0u, none.iters.length());
}

TYPED_TEST(fxChainedIter, iteratorsAreRegisteredInOrder) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter first(c);
    {
        Iter second(c), third(c);
        ASSERT_EQ(3u, c.iters.length());
        EXPECT_EQ(&first, c.iters[0]);
        EXPECT_EQ(&second, c.iters[1]);
        EXPECT_EQ(&third, c.iters[2]);
    }
    ASSERT_EQ(1u, c.iters.length());
    EXPECT_EQ(&first, c.iters[0]);
}

TYPED_TEST(fxChainedIter, destructorDeregistersThatIteratorOnly) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    auto first = std::make_unique<Iter>(c);
    Iter second(c);
    first.reset();
    ASSERT_EQ(1u, c.iters.length());
    EXPECT_EQ(&second, c.iters[0]);
}

TYPED_TEST(fxChainedIter, finishedIteratorIsDeregistered) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter iter(c);
    rest(iter);
    EXPECT_EQ(0u, c.iters.length());
    EXPECT_EQ(nullptr, iter.owner());
    EXPECT_EQ(1u, iter.flags & 1u);
    ++iter;
    ++iter;
    EXPECT_EQ("end", now(iter));
}

TYPED_TEST(fxChainedIter, assigningAContainerStartsAgain) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter iter(c);
    ++iter;
    ++iter;
    iter = c;
    EXPECT_EQ("10", now(iter));
    EXPECT_EQ(1u, c.iters.length());
    rest(iter);
    iter = c;
    EXPECT_EQ("10", now(iter));
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ(1u, c.iters.length());
}

TYPED_TEST(fxChainedIter, assigningAnotherContainerDeregistersFromTheFirst) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    TypeParam other(3);
    other.put(1);
    Iter iter(c);
    iter = other;
    EXPECT_EQ(0u, c.iters.length());
    EXPECT_EQ(1u, other.iters.length());
    EXPECT_EQ("1", rest(iter));
}

TYPED_TEST(fxChainedIter, addIterTakesAnIteratorOnce) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter iter(c);
    c.addIter(&iter);
    EXPECT_EQ(1u, c.iters.length());
    c.removeIter(&iter);
    EXPECT_EQ(0u, c.iters.length());
    c.addIter(&iter);
    EXPECT_EQ(1u, c.iters.length());
}

TYPED_TEST(fxChainedIter, removeIterIgnoresAnUnknownIterator) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter known(c), unknown;
    c.removeIter(&unknown);
    ASSERT_EQ(1u, c.iters.length());
    EXPECT_EQ(&known, c.iters[0]);
    c.removeIter(&known);
    c.removeIter(&known);
    EXPECT_EQ(0u, c.iters.length());
}

// Copying.

TYPED_TEST(fxChainedIter, copyStandsOnTheSameEntryAndIsRegistered) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter iter = on(c, 7);
    Iter copy(iter);
    EXPECT_EQ(2u, c.iters.length());
    EXPECT_EQ("7", now(copy));
    ++copy;
    EXPECT_EQ("2", now(copy));
    EXPECT_EQ("7", now(iter));
    c.drop(7);
    EXPECT_EQ("moved", now(iter));
    EXPECT_EQ("2", now(copy));
}

TYPED_TEST(fxChainedIter, copyOfAFinishedIteratorIsFinished) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter iter(c);
    rest(iter);
    Iter copy(iter);
    EXPECT_EQ("end", now(copy));
    EXPECT_EQ(0u, c.iters.length());
}

TYPED_TEST(fxChainedIter, assignedIteratorIsRegisteredWithTheOthersContainer) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    TypeParam other(3);
    other.put(1);
    Iter iter(c), target(other);
    target = iter;
    EXPECT_EQ(0u, other.iters.length());
    EXPECT_EQ(2u, c.iters.length());
    EXPECT_EQ("10", now(target));
    const Iter& self = target;
    target = self;
    EXPECT_EQ(2u, c.iters.length());
    target = Iter();
    EXPECT_EQ(1u, c.iters.length());
    EXPECT_EQ(nullptr, target.getKey());
}

// Adding under an iterator.

TYPED_TEST(fxChainedIter, entriesAddedInFrontAreNotVisited) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter iter(c);
    c.put(15);  // at the front of bucket 0
    c.put(3);   // in a bucket still to come
    c.put(12);
    EXPECT_EQ("10 5 0 12 7 2 3 4", rest(iter));
}

// Removing under an iterator.

TYPED_TEST(fxChainedIter, removingAnotherEntryLeavesTheIterator) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter iter = on(c, 5);
    c.drop(10);
    c.drop(0);
    c.drop(2);
    EXPECT_EQ("5", now(iter));
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ("5 7 4", rest(iter));
}

TYPED_TEST(fxChainedIter, removedEntryGivesNullUntilTheNextStep) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter iter = on(c, 10);
    c.drop(10);
    EXPECT_EQ("moved", now(iter));
    EXPECT_EQ(1u, iter.flags);
    EXPECT_EQ(c.entry(5), iter.bucket);
    EXPECT_EQ(&c, iter.owner());
    ++iter;
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ("5", now(iter));
}

TYPED_TEST(fxChainedIter, removeDuringIterationSkipsNothing) {
    using Iter = typename TypeParam::Iter;
    const int all[] = {10, 5, 0, 7, 2, 4};
    for (int removed : all) {
        SCOPED_TRACE(removed);
        TypeParam numbers(5);
        for (int key : {0, 5, 10, 2, 7, 4})
            numbers.put(key);
        std::string expected, visited;
        for (int key : all)
            expected += std::to_string(key) + " ";
        for (Iter iter(numbers); iter.owner(); ++iter) {
            const int key = TypeParam::number(iter.getKey());
            visited += std::to_string(key) + " ";
            if (key == removed)
                numbers.drop(key);
        }
        EXPECT_EQ(expected, visited);
    }
}

TYPED_TEST(fxChainedIter, everyEntryCanBeRemovedWhileIterating) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    std::string visited;
    for (Iter iter(c); iter.owner(); ++iter) {
        visited += now(iter) + " ";
        c.drop(TypeParam::number(iter.getKey()));
    }
    EXPECT_EQ("10 5 0 7 2 4 ", visited);
    EXPECT_EQ(0u, c.length());
    EXPECT_EQ(0u, c.iters.length());
}

TYPED_TEST(fxChainedIter, removalAtTheEndOfAChainMovesToTheNextBucket) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter iter = on(c, 0);
    c.drop(0);
    EXPECT_EQ("moved", now(iter));
    EXPECT_EQ(2u, iter.bucketIndex);
    EXPECT_EQ(c.entry(7), iter.bucket);
    ++iter;
    EXPECT_EQ("7 2 4", rest(iter));
}

TYPED_TEST(fxChainedIter, removalOfTheLastEntryFinishesTheIteration) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter iter = on(c, 4);
    c.drop(4);
    EXPECT_EQ("end", now(iter));
    EXPECT_EQ(0u, c.iters.length());
    ++iter;
    EXPECT_EQ("end", now(iter));
}

TYPED_TEST(fxChainedIter, everyIteratorOnTheEntryMoves) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter a = on(c, 5), b = on(c, 7), d = on(c, 5), e = on(c, 5);
    c.drop(5);
    EXPECT_EQ("moved", now(a));
    EXPECT_EQ("7", now(b));
    EXPECT_EQ("moved", now(d));
    EXPECT_EQ("moved", now(e));
    for (Iter* iter : {&a, &d, &e}) {
        ++*iter;
        EXPECT_EQ("0", now(*iter));
    }
}

// Each one that ends takes itself out of the array while it is walked.
TYPED_TEST(fxChainedIter, everyIteratorOnTheLastEntryFinishes) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    for (unsigned int n = 1; n <= 6; ++n) {
        SCOPED_TRACE(n);
        c.put(4);
        std::vector<std::unique_ptr<Iter>> iters;
        for (unsigned int i = 0; i < n; ++i)
            iters.push_back(std::make_unique<Iter>(on(c, 4)));
        Iter elsewhere = on(c, 7);
        c.drop(4);
        for (const auto& iter : iters)
            EXPECT_EQ("end", now(*iter));
        EXPECT_EQ("7", now(elsewhere));
        ASSERT_EQ(1u, c.iters.length());
        EXPECT_EQ(&elsewhere, c.iters[0]);
    }
}

TYPED_TEST(fxChainedIter, iteratorsThatEndDoNotHideOneThatIsElsewhere) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter a = on(c, 4), b = on(c, 2), d = on(c, 4), e = on(c, 2), f = on(c, 4);
    c.drop(4);
    for (const Iter* iter : {&a, &d, &f})
        EXPECT_EQ("end", now(*iter));
    ASSERT_EQ(2u, c.iters.length());
    EXPECT_EQ(&b, c.iters[0]);
    EXPECT_EQ(&e, c.iters[1]);
    EXPECT_EQ("2", rest(b));
    EXPECT_EQ("2", now(e));
}

// Removing the entry that the iterator has been moved to as well: the
// iterator stays on it; the next step leaves for the next bucket.
TYPED_TEST(fxChainedIter, deliberateASecondRemovalLeavesTheIteratorOnTheRemovedEntry) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter iter = on(c, 10);
    c.drop(10);
    const auto* second = c.entry(5);
    EXPECT_EQ(second, iter.bucket);
    c.drop(5);
    EXPECT_EQ("moved", now(iter));
    EXPECT_EQ(second, iter.bucket);
    EXPECT_EQ(1u, iter.flags & 1u);
    EXPECT_EQ(1u, c.iters.length());

    ++iter;
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ("7 2 4", rest(iter));
}

TYPED_TEST(fxChainedIter, parkedIteratorFinishesWhenNoBucketFollows) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    c.put(9);  // 4: 9 4
    Iter iter = on(c, 9);
    c.drop(9);
    c.drop(4);
    EXPECT_EQ("moved", now(iter));
    ++iter;
    EXPECT_EQ("end", now(iter));
    EXPECT_EQ(0u, c.iters.length());
}

// The freed entry's memory may serve a new entry at once.
TYPED_TEST(fxChainedIter, parkedIteratorIgnoresFurtherRemovals) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter iter = on(c, 10);
    c.drop(10);
    c.drop(5);
    for (int key = 20; key < 100; key += 5)
        c.put(key);
    for (int key = 20; key < 100; key += 5)
        c.drop(key);
    c.drop(0);
    EXPECT_EQ("moved", now(iter));
    ++iter;
    EXPECT_EQ("7", now(iter));
    EXPECT_EQ(0u, iter.flags);
    c.drop(7);
    EXPECT_EQ("moved", now(iter));
    ++iter;
    EXPECT_EQ("2", now(iter));
}

TYPED_TEST(fxChainedIter, stepBetweenTwoRemovalsMovesTwice) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter iter = on(c, 10);
    c.drop(10);
    ++iter;
    EXPECT_EQ("5", now(iter));
    c.drop(5);
    EXPECT_EQ("moved", now(iter));
    ++iter;
    EXPECT_EQ("0", now(iter));
}

TYPED_TEST(fxChainedIter, parkedIteratorCanBeDestroyedOrStartedAgain) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    {
        Iter iter = on(c, 10);
        c.drop(10);
        c.drop(5);
    }
    EXPECT_EQ(0u, c.iters.length());
    Iter again = on(c, 7);
    c.drop(7);
    c.drop(2);
    again = c;
    EXPECT_EQ(0u, again.flags);
    EXPECT_EQ("0 4", rest(again));
}

// Cleaning up under an iterator.

TYPED_TEST(fxChainedIter, cleanupDetachesEveryIterator) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter first = on(c, 10), moved = on(c, 7), finished(c);
    rest(finished);
    c.drop(7);
    c.cleanup();
    for (const Iter* iter : {&first, &moved}) {
        EXPECT_EQ(nullptr, iter->owner());
        EXPECT_EQ(nullptr, iter->bucket);
        EXPECT_EQ("end", now(*iter));
    }
}

TYPED_TEST(fxChainedIter, iteratorsCanGoOrStartAgainAfterCleanup) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    auto gone = std::make_unique<Iter>(c);
    Iter iter(c);
    c.cleanup();
    gone.reset();
    c.put(1);
    iter = c;
    EXPECT_EQ("1", now(iter));
    Iter another(c);
    c.drop(1);
    EXPECT_EQ("end", now(iter));
    EXPECT_EQ("end", now(another));
    c.cleanup();
    EXPECT_EQ("end", now(iter));
}

TYPED_TEST(fxChainedIter, iteratorMayOutliveItsContainer) {
    using Iter = typename TypeParam::Iter;
    Filled<TypeParam> c;
    Iter iter;
    {
        TypeParam shortLived(3);
        shortLived.put(1);
        iter = shortLived;
        EXPECT_EQ("1", now(iter));
    }
    EXPECT_EQ("end", now(iter));
    ++iter;
    EXPECT_EQ("end", now(iter));
    iter = c;
    EXPECT_EQ("10", now(iter));
}
