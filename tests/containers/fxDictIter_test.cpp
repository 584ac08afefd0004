#include <cstdlib>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxDictionary.h"
#include "tests/support/testDictionary.h"

static_assert(!std::is_polymorphic<fxDictIter>::value, "iterators have no table");

namespace {

// An iterator whose state tests can see.
class Iter : public fxDictIter {
public:
    using fxDictIter::fxDictIter;
    using fxDictIter::operator=;
    using fxDictIter::bucket;
    using fxDictIter::bucketIndex;
    using fxDictIter::dict;
    using fxDictIter::flags;
    Iter() {}

    // The present entry as "7=70", "end" when detached, "moved" when getKey
    // is null because the entry has been removed.
    std::string now() const {
        if (!getKey()) {
            EXPECT_EQ(nullptr, getValue());
            EXPECT_EQ(1u, flags & 1u);
            return dict ? "moved" : "end";
        }
        return std::to_string(TestDictionary::number(getKey())) + "=" +
               std::to_string(TestDictionary::number(getValue()));
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
class fxDictIterTest : public testing::Test {
protected:
    fxDictIterTest() : d(5) {
        for (int key : {0, 5, 10, 2, 7, 4})
            d.add(key, 10 * key);
    }

    // An iterator on the entry of `key`.
    Iter on(int key) {
        Iter iter(d);
        while (TestDictionary::number(iter.getKey()) != key)
            ++iter;
        return iter;
    }

    TestDictionary d;
};

}  // namespace

// Attaching.

TEST_F(fxDictIterTest, defaultIteratorIsUnattached) {
    Iter iter;
    EXPECT_EQ(nullptr, iter.dict);
    EXPECT_EQ(nullptr, iter.bucket);
    EXPECT_EQ(0u, iter.bucketIndex);
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ(nullptr, iter.getKey());
    EXPECT_EQ(nullptr, iter.getValue());
    ++iter;
    EXPECT_EQ(nullptr, iter.dict);
    EXPECT_EQ(0u, iter.flags);
}

TEST_F(fxDictIterTest, startsOnTheHeadOfBucketZero) {
    Iter iter(d);
    EXPECT_EQ(&d, iter.dict);
    EXPECT_EQ(0u, iter.bucketIndex);
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ(d.buckets[0], iter.bucket);
    EXPECT_EQ("10=100", iter.now());
}

TEST_F(fxDictIterTest, startsOnTheFirstNonEmptyBucket) {
    TestDictionary one(5);
    one.add(3, 30);
    Iter iter(one);
    EXPECT_EQ(3u, iter.bucketIndex);
    EXPECT_EQ("3=30", iter.now());
}

TEST_F(fxDictIterTest, keyAndValueAreAddressesInTheEntry) {
    Iter iter(d);
    EXPECT_EQ(d.entry(10)->kvmem, iter.getKey());
    EXPECT_EQ(static_cast<char*>(d.entry(10)->kvmem) + 4, iter.getValue());
}

TEST_F(fxDictIterTest, visitsBucketsInOrderAndChainsFrontToBack) {
    Iter iter(d);
    EXPECT_EQ("10=100 5=50 0=0 7=70 2=20 4=40", iter.rest());
    EXPECT_EQ("end", iter.now());
}

TEST_F(fxDictIterTest, overAnEmptyDictionaryIsFinishedAtOnce) {
    TestDictionary empty(5);
    Iter iter(empty);
    EXPECT_EQ("end", iter.now());
    EXPECT_EQ(0u, empty.iters.length());
    iter = d;
    EXPECT_EQ("10=100", iter.now());
    iter = empty;
    EXPECT_EQ("end", iter.now());
    EXPECT_EQ(0u, d.iters.length());
}

TEST_F(fxDictIterTest, overADictionaryWithoutBucketsIsFinishedAtOnce) {
    TestDictionary none(fxDictionary_type);
    Iter iter(none);
    EXPECT_EQ("end", iter.now());
    EXPECT_EQ(0u, none.iters.length());
}

TEST_F(fxDictIterTest, iteratorsAreRegisteredInOrder) {
    Iter first(d);
    {
        Iter second(d), third(d);
        ASSERT_EQ(3u, d.iters.length());
        EXPECT_EQ(&first, d.iters[0]);
        EXPECT_EQ(&second, d.iters[1]);
        EXPECT_EQ(&third, d.iters[2]);
    }
    ASSERT_EQ(1u, d.iters.length());
    EXPECT_EQ(&first, d.iters[0]);
}

TEST_F(fxDictIterTest, destructorDeregistersThatIteratorOnly) {
    auto first = std::make_unique<Iter>(d);
    Iter second(d);
    first.reset();
    ASSERT_EQ(1u, d.iters.length());
    EXPECT_EQ(&second, d.iters[0]);
}

TEST_F(fxDictIterTest, finishedIteratorIsDeregistered) {
    Iter iter(d);
    iter.rest();
    EXPECT_EQ(0u, d.iters.length());
    EXPECT_EQ(nullptr, iter.dict);
    EXPECT_EQ(1u, iter.flags & 1u);
    ++iter;
    ++iter;
    EXPECT_EQ("end", iter.now());
}

TEST_F(fxDictIterTest, assigningADictionaryStartsAgain) {
    Iter iter(d);
    ++iter;
    ++iter;
    iter = d;
    EXPECT_EQ("10=100", iter.now());
    EXPECT_EQ(1u, d.iters.length());
    iter.rest();
    iter = d;
    EXPECT_EQ("10=100", iter.now());
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ(1u, d.iters.length());
}

TEST_F(fxDictIterTest, assigningAnotherDictionaryDeregistersFromTheFirst) {
    TestDictionary other(3);
    other.add(1, 10);
    Iter iter(d);
    iter = other;
    EXPECT_EQ(0u, d.iters.length());
    EXPECT_EQ(1u, other.iters.length());
    EXPECT_EQ("1=10", iter.rest());
}

TEST_F(fxDictIterTest, addIterTakesAnIteratorOnce) {
    Iter iter(d);
    d.addIter(&iter);
    EXPECT_EQ(1u, d.iters.length());
    d.removeIter(&iter);
    EXPECT_EQ(0u, d.iters.length());
    d.addIter(&iter);
    EXPECT_EQ(1u, d.iters.length());
}

TEST_F(fxDictIterTest, removeIterIgnoresAnUnknownIterator) {
    Iter known(d), unknown;
    d.removeIter(&unknown);
    ASSERT_EQ(1u, d.iters.length());
    EXPECT_EQ(&known, d.iters[0]);
    d.removeIter(&known);
    d.removeIter(&known);
    EXPECT_EQ(0u, d.iters.length());
}

// Copying.

TEST_F(fxDictIterTest, copyStandsOnTheSameEntryAndIsRegistered) {
    Iter iter = on(7);
    Iter copy(iter);
    EXPECT_EQ(2u, d.iters.length());
    EXPECT_EQ("7=70", copy.now());
    ++copy;
    EXPECT_EQ("2=20", copy.now());
    EXPECT_EQ("7=70", iter.now());
    d.drop(7);
    EXPECT_EQ("moved", iter.now());
    EXPECT_EQ("2=20", copy.now());
}

TEST_F(fxDictIterTest, copyOfAFinishedIteratorIsFinished) {
    Iter iter(d);
    iter.rest();
    Iter copy(iter);
    EXPECT_EQ("end", copy.now());
    EXPECT_EQ(0u, d.iters.length());
}

TEST_F(fxDictIterTest, assignedIteratorIsRegisteredWithTheOthersDictionary) {
    TestDictionary other(3);
    other.add(1, 10);
    Iter iter(d), target(other);
    target = iter;
    EXPECT_EQ(0u, other.iters.length());
    EXPECT_EQ(2u, d.iters.length());
    EXPECT_EQ("10=100", target.now());
    const Iter& self = target;
    target = self;
    EXPECT_EQ(2u, d.iters.length());
    target = Iter();
    EXPECT_EQ(1u, d.iters.length());
    EXPECT_EQ(nullptr, target.getKey());
}

// Adding under an iterator.

TEST_F(fxDictIterTest, entriesAddedInFrontAreNotVisited) {
    Iter iter(d);
    d.add(15, 150);  // at the front of bucket 0
    d.add(3, 30);    // in a bucket still to come
    d.add(12, 120);
    EXPECT_EQ("10=100 5=50 0=0 12=120 7=70 2=20 3=30 4=40", iter.rest());
}

TEST_F(fxDictIterTest, replacedValueIsSeen) {
    Iter iter(d);
    d.add(10, 11);
    EXPECT_EQ("10=11", iter.now());
}

// Removing under an iterator.

TEST_F(fxDictIterTest, removingAnotherEntryLeavesTheIterator) {
    Iter iter = on(5);
    d.drop(10);
    d.drop(0);
    d.drop(2);
    EXPECT_EQ("5=50", iter.now());
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ("5=50 7=70 4=40", iter.rest());
}

TEST_F(fxDictIterTest, removedEntryGivesNullUntilTheNextStep) {
    Iter iter = on(10);
    d.drop(10);
    EXPECT_EQ("moved", iter.now());
    EXPECT_EQ(1u, iter.flags);
    EXPECT_EQ(d.entry(5), iter.bucket);
    EXPECT_EQ(&d, iter.dict);
    ++iter;
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ("5=50", iter.now());
}

TEST_F(fxDictIterTest, removeDuringIterationSkipsNothing) {
    const int all[] = {10, 5, 0, 7, 2, 4};
    for (int removed : all) {
        SCOPED_TRACE(removed);
        TestDictionary dictionary(5);
        for (int key : {0, 5, 10, 2, 7, 4})
            dictionary.add(key, key);
        std::string expected, visited;
        for (int key : all)
            expected += std::to_string(key) + " ";
        for (Iter iter(dictionary); iter.dict; ++iter) {
            const int key = TestDictionary::number(iter.getKey());
            visited += std::to_string(key) + " ";
            if (key == removed)
                dictionary.drop(key);
        }
        EXPECT_EQ(expected, visited);
    }
}

TEST_F(fxDictIterTest, everyEntryCanBeRemovedWhileIterating) {
    std::string visited;
    for (Iter iter(d); iter.dict; ++iter) {
        visited += iter.now() + " ";
        d.drop(TestDictionary::number(iter.getKey()));
    }
    EXPECT_EQ("10=100 5=50 0=0 7=70 2=20 4=40 ", visited);
    EXPECT_EQ(0u, d.length());
    EXPECT_EQ(0u, d.iters.length());
}

TEST_F(fxDictIterTest, removalAtTheEndOfAChainMovesToTheNextBucket) {
    Iter iter = on(0);
    d.drop(0);
    EXPECT_EQ("moved", iter.now());
    EXPECT_EQ(2u, iter.bucketIndex);
    EXPECT_EQ(d.entry(7), iter.bucket);
    ++iter;
    EXPECT_EQ("7=70 2=20 4=40", iter.rest());
}

TEST_F(fxDictIterTest, removalOfTheLastEntryFinishesTheIteration) {
    Iter iter = on(4);
    d.drop(4);
    EXPECT_EQ("end", iter.now());
    EXPECT_EQ(0u, d.iters.length());
    ++iter;
    EXPECT_EQ("end", iter.now());
}

TEST_F(fxDictIterTest, cutMovesIteratorsToo) {
    Iter iter = on(7);
    const int key = 7;
    const int* k = &key;
    void* block = d.cut(&k);
    EXPECT_EQ("moved", iter.now());
    ++iter;
    EXPECT_EQ("2=20", iter.now());
    delete *static_cast<int**>(block);
    std::free(block);
}

TEST_F(fxDictIterTest, everyIteratorOnTheEntryMoves) {
    Iter a = on(5), b = on(7), c = on(5), e = on(5);
    d.drop(5);
    EXPECT_EQ("moved", a.now());
    EXPECT_EQ("7=70", b.now());
    EXPECT_EQ("moved", c.now());
    EXPECT_EQ("moved", e.now());
    for (Iter* iter : {&a, &c, &e}) {
        ++*iter;
        EXPECT_EQ("0=0", iter->now());
    }
}

// Each one that ends takes itself out of the array while it is walked.
TEST_F(fxDictIterTest, everyIteratorOnTheLastEntryFinishes) {
    for (unsigned int n = 1; n <= 6; ++n) {
        SCOPED_TRACE(n);
        d.add(4, 40);
        std::vector<std::unique_ptr<Iter>> iters;
        for (unsigned int i = 0; i < n; ++i)
            iters.push_back(std::make_unique<Iter>(on(4)));
        Iter elsewhere = on(7);
        d.drop(4);
        for (const auto& iter : iters)
            EXPECT_EQ("end", iter->now());
        EXPECT_EQ("7=70", elsewhere.now());
        ASSERT_EQ(1u, d.iters.length());
        EXPECT_EQ(&elsewhere, d.iters[0]);
    }
}

TEST_F(fxDictIterTest, iteratorsThatEndDoNotHideOneThatIsElsewhere) {
    Iter a = on(4), b = on(2), c = on(4), e = on(2), f = on(4);
    d.drop(4);
    for (const Iter* iter : {&a, &c, &f})
        EXPECT_EQ("end", iter->now());
    ASSERT_EQ(2u, d.iters.length());
    EXPECT_EQ(&b, d.iters[0]);
    EXPECT_EQ(&e, d.iters[1]);
    EXPECT_EQ("2=20", b.rest());
    EXPECT_EQ("2=20", e.now());
}

// Removing the entry that the iterator has been moved to as well: the
// iterator stays on it; the next step leaves for the next bucket.
TEST_F(fxDictIterTest, deliberateASecondRemovalLeavesTheIteratorOnTheRemovedEntry) {
    Iter iter = on(10);
    d.drop(10);
    const fxDictBucket* second = d.entry(5);
    EXPECT_EQ(second, iter.bucket);
    d.drop(5);
    EXPECT_EQ("moved", iter.now());
    EXPECT_EQ(second, iter.bucket);
    EXPECT_EQ(1u, iter.flags & 1u);
    EXPECT_EQ(1u, d.iters.length());

    ++iter;
    EXPECT_EQ(0u, iter.flags);
    EXPECT_EQ("7=70 2=20 4=40", iter.rest());
}

TEST_F(fxDictIterTest, parkedIteratorFinishesWhenNoBucketFollows) {
    d.add(9, 90);  // 4: 9 4
    Iter iter = on(9);
    d.drop(9);
    d.drop(4);
    EXPECT_EQ("moved", iter.now());
    ++iter;
    EXPECT_EQ("end", iter.now());
    EXPECT_EQ(0u, d.iters.length());
}

// The freed entry's memory may serve a new entry at once.
TEST_F(fxDictIterTest, parkedIteratorIgnoresFurtherRemovals) {
    Iter iter = on(10);
    d.drop(10);
    d.drop(5);
    for (int key = 20; key < 100; key += 5)
        d.add(key, key);
    for (int key = 20; key < 100; key += 5)
        d.drop(key);
    d.drop(0);
    EXPECT_EQ("moved", iter.now());
    ++iter;
    EXPECT_EQ("7=70", iter.now());
    EXPECT_EQ(0u, iter.flags);
    d.drop(7);
    EXPECT_EQ("moved", iter.now());
    ++iter;
    EXPECT_EQ("2=20", iter.now());
}

TEST_F(fxDictIterTest, stepBetweenTwoRemovalsMovesTwice) {
    Iter iter = on(10);
    d.drop(10);
    ++iter;
    EXPECT_EQ("5=50", iter.now());
    d.drop(5);
    EXPECT_EQ("moved", iter.now());
    ++iter;
    EXPECT_EQ("0=0", iter.now());
}

TEST_F(fxDictIterTest, parkedIteratorCanBeDestroyedOrStartedAgain) {
    {
        Iter iter = on(10);
        d.drop(10);
        d.drop(5);
    }
    EXPECT_EQ(0u, d.iters.length());
    Iter again = on(7);
    d.drop(7);
    d.drop(2);
    again = d;
    EXPECT_EQ(0u, again.flags);
    EXPECT_EQ("0=0 4=40", again.rest());
}

// Cleaning up under an iterator.

TEST_F(fxDictIterTest, cleanupDetachesEveryIterator) {
    Iter first = on(10), moved = on(7), finished(d);
    finished.rest();
    d.drop(7);
    d.cleanup();
    for (const Iter* iter : {&first, &moved}) {
        EXPECT_EQ(nullptr, iter->dict);
        EXPECT_EQ(nullptr, iter->bucket);
        EXPECT_EQ("end", iter->now());
    }
}

TEST_F(fxDictIterTest, deliberateCleanupDoesNotEmptyTheArrayOfIterators) {
    Iter first(d), second(d);
    d.cleanup();
    EXPECT_EQ(2u, d.iters.length());
}

TEST_F(fxDictIterTest, iteratorsCanGoOrStartAgainAfterCleanup) {
    auto gone = std::make_unique<Iter>(d);
    Iter iter(d);
    d.cleanup();
    gone.reset();
    d.add(1, 10);
    iter = d;
    EXPECT_EQ("1=10", iter.now());
    Iter another(d);
    d.drop(1);
    EXPECT_EQ("end", iter.now());
    EXPECT_EQ("end", another.now());
    d.cleanup();
    EXPECT_EQ("end", iter.now());
}

TEST_F(fxDictIterTest, iteratorMayOutliveItsDictionary) {
    Iter iter;
    {
        TestDictionary shortLived(3);
        shortLived.add(1, 10);
        iter = shortLived;
        EXPECT_EQ("1=10", iter.now());
    }
    EXPECT_EQ("end", iter.now());
    ++iter;
    EXPECT_EQ("end", iter.now());
    iter = d;
    EXPECT_EQ("10=100", iter.now());
}
