// fxChainedCallbacks_test.cpp - dictionaries and sets whose operations on keys and values
// change them.

#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/containers/fxSet.h"
#include "tests/support/hookedContainers.h"

using namespace hooked;

namespace {

template <class Container>
class fxChainedCallbacks : public testing::Test {};
TYPED_TEST_SUITE(fxChainedCallbacks, Containers);

}  // namespace

// Ends that remove other entries.

TYPED_TEST(fxChainedCallbacks, anEndMayRemoveTheEntriesAroundIt) {
    const struct {
        std::vector<int> removed;
        const char* rest;   // of the container
        const char* ahead;  // of an iterator on 8
    } cases[] = {
        {{4}, "12 0 1 2", "0 1 2"}, {{0}, "12 4 1 2", "4 1 2"}, {{12}, "4 0 1 2", "4 0 1 2"},
        {{4, 0}, "12 1 2", "1 2"},  {{0, 4}, "12 1 2", "1 2"},  {{4, 0, 1}, "12 2", "2"},
        {{4, 0, 1, 2}, "12", ""},   {{12, 4, 0, 1, 2}, "", ""}, {{8}, "12 4 0 1 2", "4 0 1 2"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.rest);
        TypeParam container(4);
        fill(container);
        typename TypeParam::Iter iter = on(container, 8);
        container.hook = once("destroyKey", 8, [&] {
            for (int key : c.removed)
                container.drop(key);
        });
        container.drop(8);
        container.hook = nullptr;
        EXPECT_EQ(nullptr, iter.getKey());
        ++iter;
        std::string ahead;
        for (; iter.getKey(); ++iter)
            ahead += (ahead.empty() ? "" : " ") + std::to_string(numberAt(iter.getKey()));
        EXPECT_EQ(c.ahead, ahead);
        EXPECT_EQ(c.rest, walk(container));
        EXPECT_EQ(static_cast<int>(container.length()), container.keys);
    }
}

// One end inside another: 12 removes 8, whose end removes 4, whose end removes 0.
TYPED_TEST(fxChainedCallbacks, endsMayBeNested) {
    TypeParam c(4);
    fill(c);
    typename TypeParam::Iter first = on(c, 12), third = on(c, 4);
    c.hook = [&](const std::string& operation, int key) {
        if (operation == "destroyKey" && key >= 4)
            c.drop(key - 4);
    };
    c.drop(12);
    c.hook = nullptr;
    EXPECT_EQ("1 2", walk(c));
    EXPECT_EQ(2u, c.length());
    EXPECT_EQ(2, c.keys);
    for (auto* iter : {&first, &third}) {
        EXPECT_EQ(nullptr, iter->getKey());
        ++*iter;
        ASSERT_NE(nullptr, iter->getKey());
        EXPECT_EQ(1, numberAt(iter->getKey()));
    }
}

TYPED_TEST(fxChainedCallbacks, anEndMayAddEntries) {
    TypeParam c(4);
    fill(c);
    typename TypeParam::Iter iter = on(c, 8);
    c.hook = once("destroyKey", 8, [&] {
        c.put(8);
        c.put(16);
    });
    c.drop(8);
    c.hook = nullptr;
    EXPECT_EQ("16 8 12 4 0 1 2", walk(c));
    EXPECT_EQ(7u, c.length());
    ++iter;
    EXPECT_EQ(4, numberAt(iter.getKey()));
}

TYPED_TEST(fxChainedCallbacks, anEndMayMoveTheIteratorsOfTheEntry) {
    TypeParam c(4);
    fill(c);
    typename TypeParam::Iter iter = on(c, 8);
    c.hook = once("destroyKey", 8, [&] {
        c.drop(4);
        ++iter;
        EXPECT_EQ(0, numberAt(iter.getKey()));
    });
    c.drop(8);
    EXPECT_EQ(0, numberAt(iter.getKey()));
}

TYPED_TEST(fxChainedCallbacks, anEndMayCleanUp) {
    TypeParam c(4);
    fill(c);
    typename TypeParam::Iter iter = on(c, 8);
    c.hook = once("destroyKey", 8, [&] { c.cleanup(); });
    c.drop(8);
    c.hook = nullptr;
    EXPECT_EQ(nullptr, iter.getKey());
    EXPECT_EQ("", walk(c));
    EXPECT_EQ(0, c.keys);
    c.put(5);
    EXPECT_EQ("5", walk(c));
}

TYPED_TEST(fxChainedCallbacks, cleanupMayMeetRemovalsAndIterators) {
    TypeParam c(4);
    fill(c);
    typename TypeParam::Iter behind = on(c, 12), ahead = on(c, 1);
    c.hook = once("destroyKey", 8, [&] {
        c.drop(4);
        c.drop(2);
        EXPECT_EQ(nullptr, behind.getKey()) << "its entry has gone";
        ++behind;
        ++ahead;
    });
    c.cleanup();
    c.hook = nullptr;
    EXPECT_EQ(nullptr, behind.getKey());
    EXPECT_EQ(nullptr, ahead.getKey());
    EXPECT_EQ("", walk(c));
    EXPECT_EQ(0, c.keys);
}

// Set algebra.

TEST(fxSetCallbacks, differenceWithItselfMeetsRemovals) {
    for (int other : {4, 0, 1, 2}) {
        for (int ending : {12, 8, 4}) {
            SCOPED_TRACE(testing::Message() << ending << " removes " << other);
            IntSet s(4);
            fill(s);
            const fxSet& self = s;
            s.hook = once("destroyKey", ending, [&] {
                s.drop(other);
                s.drop(other - 4);
            });
            s -= self;
            EXPECT_EQ("", walk(s));
            EXPECT_EQ(0u, s.length());
            EXPECT_EQ(0, s.keys);
        }
    }
}

TEST(fxSetCallbacks, intersectionMeetsRemovals) {
    // In the first bucket 8 and 0 go, 12 and 4 stay.
    const struct {
        int ending;
        std::vector<int> removed;
        const char* rest;
    } cases[] = {{8, {12}, "4 2"},  {8, {4}, "12 2"},       {8, {0}, "12 4 2"}, {8, {4, 0}, "12 2"},
                 {8, {12, 4}, "2"}, {8, {2}, "12 4"},       {0, {4}, "12 2"},   {0, {12}, "4 2"},
                 {0, {12, 4}, "2"}, {0, {4, 12, 1, 2}, ""}, {1, {2, 12}, "4"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.ending << " leaves " << c.rest);
        IntSet s(4), other(3);
        fill(s);
        for (int key : {12, 4, 2})
            other.put(key);
        s.hook = once("destroyKey", c.ending, [&] {
            for (int key : c.removed)
                s.drop(key);
        });
        s &= other;
        s.hook = nullptr;
        EXPECT_EQ(c.rest, walk(s));
        EXPECT_EQ(static_cast<int>(s.length()), s.keys);
    }
}

TEST(fxSetCallbacks, intersectionWithItselfMeetsRemovals) {
    IntSet s(4);
    fill(s);
    const fxSet& self = s;
    s.hook = once("hashKey", 8, [&] { s.drop(4); });
    s &= self;
    s.hook = nullptr;
    EXPECT_EQ("12 8 0 1 2", walk(s));
    EXPECT_EQ(5, s.keys);
}

// A comparison in the other set removes the key behind the one that is asked for.
TEST(fxSetCallbacks, intersectionMeetsRemovalsByTheOthersComparisons) {
    IntSet s(4), other(3);
    fill(s);
    for (int key : {12, 8, 4, 2})
        other.put(key);
    other.hook = once("compareKeys", 8, [&] { s.drop(4); });
    s &= other;
    other.hook = nullptr;
    EXPECT_EQ("12 8 2", walk(s));
    EXPECT_EQ(3u, s.length());
    EXPECT_EQ(3, s.keys);
}

// The end of a key in one set, or its copy, removes keys of the other.
TEST(fxSetCallbacks, algebraMeetsRemovalsFromTheOtherSet) {
    IntSet s(4), other(4);
    fill(s);
    fill(other);
    s.hook = once("destroyKey", 12, [&] {
        other.drop(12);
        other.drop(8);
    });
    s -= other;
    s.hook = nullptr;
    EXPECT_EQ("8", walk(s));
    EXPECT_EQ("4 0 1 2", walk(other));
    s.hook = once("copyKey", 4, [&] {
        other.drop(0);
        other.drop(1);
    });
    s |= other;
    s.hook = nullptr;
    EXPECT_EQ("4 8 2", walk(s));
}

// Values that are replaced.

TEST(fxDictionaryCallbacks, aKeyThatTheEndOfItsValueRemovedIsAddedAnewInFront) {
    IntDictionary d(4);
    fill(d);
    fxDictIter iter = on(d, 4);
    d.hook = once("destroyValue", 40, [&] { d.drop(4); });
    const fxDictBucket* b = d.put(4, 41);
    d.hook = nullptr;
    ASSERT_NE(nullptr, b);
    EXPECT_EQ("4 12 8 0 1 2", walk(d));
    EXPECT_EQ(41, d.valueAt(4));
    EXPECT_EQ(b->kvmem, static_cast<char*>(d.find(b->kvmem)) - 4);
    EXPECT_EQ(6u, d.length());
    EXPECT_EQ(6, d.keys);
    EXPECT_EQ(nullptr, iter.getKey());
    ++iter;
    EXPECT_EQ(0, numberAt(iter.getKey()));
}

TEST(fxDictionaryCallbacks, theEndOfAValueMayPutItsKeyElsewhere) {
    IntDictionary d(4);
    fill(d);
    d.hook = once("destroyValue", 40, [&] {
        d.drop(4);
        d.put(16, 160);  // perhaps where the entry was
        d.put(4, 42);
    });
    d.put(4, 41);
    d.hook = nullptr;
    EXPECT_EQ("4 16 12 8 0 1 2", walk(d));
    EXPECT_EQ(41, d.valueAt(4));
    EXPECT_EQ(160, d.valueAt(16));
    EXPECT_EQ(7u, d.length());
    EXPECT_EQ(7, d.keys);
}

TEST(fxDictionaryCallbacks, anotherEntryInThePlaceOfTheRemovedOneIsLeftAlone) {
    IntDictionary d(4);
    fill(d);
    d.hook = once("destroyValue", 40, [&] {
        d.drop(4);
        d.put(16, 160);
    });
    d.put(4, 41);
    d.hook = nullptr;
    EXPECT_EQ(41, d.valueAt(4));
    EXPECT_EQ(160, d.valueAt(16));
    EXPECT_EQ("4 16 12 8 0 1 2", walk(d));
}

TEST(fxDictionaryCallbacks, theEndOfAValueMayRemoveOthersOrAll) {
    IntDictionary d(4);
    fill(d);
    d.hook = once("destroyValue", 80, [&] {
        d.drop(12);
        d.drop(4);
    });
    d.put(8, 81);
    EXPECT_EQ("8 0 1 2", walk(d));
    EXPECT_EQ(81, d.valueAt(8));
    d.hook = once("destroyValue", 81, [&] { d.cleanup(); });
    d.put(8, 82);
    d.hook = nullptr;
    EXPECT_EQ("8", walk(d));
    EXPECT_EQ(82, d.valueAt(8));
    EXPECT_EQ(1, d.keys);
}

// Nothing is left to add when what was to be added was part of the entry.
TEST(fxDictionaryCallbacks, aRemovedEntrysOwnKeyIsNotAdded) {
    IntDictionary d(4);
    fill(d);
    const fxDictIter iter = on(d, 4);
    const int value = 41;
    d.hook = once("destroyValue", 40, [&] { d.drop(4); });
    EXPECT_EQ(nullptr, d.addInternal(iter.getKey(), &value));
    d.hook = nullptr;
    EXPECT_EQ("12 8 0 1 2", walk(d));
}

TEST(fxDictionaryCallbacks, theEndOfAValueMayRemoveTheNextEntry) {
    IntDictionary d(4);
    fill(d);
    fxDictIter iter = on(d, 8);
    d.hook = once("destroyValue", 80, [&] { d.drop(4); });
    d.drop(8);
    d.hook = nullptr;
    ++iter;
    EXPECT_EQ(0, numberAt(iter.getKey()));
}

TEST(fxDictionaryCallbacks, cutMeetsTheRemovalOfTheNextEntry) {
    IntDictionary d(4);
    fill(d);
    fxDictIter iter = on(d, 8);
    d.hook = once("destroyKey", 8, [&] { d.drop(4); });
    const int key = 8;
    void* value = d.cut(&key);
    d.hook = nullptr;
    EXPECT_EQ(80, numberAt(value));
    std::free(value);
    ++iter;
    EXPECT_EQ(0, numberAt(iter.getKey()));
    EXPECT_EQ("12 0 1 2", walk(d));
}

TEST(fxDictionaryCallbacks, assignmentMeetsRemovalsFromItsSource) {
    IntDictionary target(4), source(4);
    fill(source);
    target.hook = once("copyValue", 80, [&] {
        source.drop(4);
        source.drop(0);
    });
    target = source;
    target.hook = nullptr;
    EXPECT_EQ("8 12 1 2", walk(target));
}
