// fxChainedThrowing_test.cpp - dictionaries and sets whose operations on keys and values throw.

#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/containers/fxSet.h"
#include "tests/support/hookedContainers.h"

using namespace hooked;

namespace {

struct Refused {};

Hook throwing(const std::string& operation, int number) {
    return once(operation, number, [] { throw Refused(); });
}

template <class Container>
class fxChainedThrowing : public testing::Test {};
TYPED_TEST_SUITE(fxChainedThrowing, Containers);

}  // namespace

TYPED_TEST(fxChainedThrowing, whatIsThrownWhileAddingLeavesTheContainerAsItWas) {
    for (const char* operation : {"hashKey", "compareKeys", "copyKey"}) {
        SCOPED_TRACE(operation);
        TypeParam c(4);
        fill(c);
        const int keys = c.keys;
        c.hook = throwing(operation, 16);
        EXPECT_THROW(c.put(16), Refused);
        EXPECT_EQ("12 8 4 0 1 2", walk(c));
        EXPECT_EQ(6u, c.length());
        EXPECT_EQ(keys, c.keys);
        c.put(16);
        EXPECT_EQ("16 12 8 4 0 1 2", walk(c));
        EXPECT_EQ(7u, c.length());
    }
}

TYPED_TEST(fxChainedThrowing, whatIsThrownWhileLookingUpLeavesTheContainerAsItWas) {
    for (const char* operation : {"hashKey", "compareKeys"}) {
        SCOPED_TRACE(operation);
        TypeParam c(4);
        fill(c);
        c.hook = throwing(operation, 8);
        EXPECT_THROW(c.has(8), Refused);
        c.hook = throwing(operation, 8);
        EXPECT_THROW(c.drop(8), Refused);
        EXPECT_EQ("12 8 4 0 1 2", walk(c));
        EXPECT_EQ(6u, c.length());
        c.drop(8);
        EXPECT_EQ("12 4 0 1 2", walk(c));
    }
}

// Its key is gone, so it cannot be put back.
TYPED_TEST(fxChainedThrowing, aRemovalWhoseKeyThrowsIsGoneThroughWith) {
    TypeParam c(4);
    fill(c);
    typename TypeParam::Iter iter(c);
    c.hook = throwing("destroyKey", 12);
    EXPECT_THROW(c.drop(12), Refused);
    EXPECT_EQ("8 4 0 1 2", walk(c));
    EXPECT_EQ(5u, c.length());
    EXPECT_EQ(nullptr, iter.getKey());
    ++iter;
    EXPECT_EQ(8, numberAt(iter.getKey()));
}

TEST(fxDictionaryThrowing, aRemovalWhoseValueThrowsIsGoneThroughWith) {
    IntDictionary d(4);
    fill(d);
    const int key = 4;
    d.hook = throwing("destroyValue", 120);
    EXPECT_THROW(d.drop(12), Refused);
    d.hook = throwing("destroyKey", 4);
    EXPECT_THROW(d.cut(&key), Refused);
    EXPECT_EQ("8 0 1 2", walk(d));
    EXPECT_EQ(4u, d.length());
}

TEST(fxDictionaryThrowing, valuesThatCannotBeMadeLeaveNoKey) {
    IntDictionary d(4);
    fill(d);
    const int key = 16;
    d.hook = throwing("copyValue", 160);
    EXPECT_THROW(d.put(16), Refused);
    d.hook = throwing("createValue", -1);
    EXPECT_THROW(d.findCreate(&key), Refused);
    d.hook = throwing("copyKey", 16);
    EXPECT_THROW(d.findCreate(&key), Refused);
    EXPECT_EQ("12 8 4 0 1 2", walk(d));
    EXPECT_EQ(6u, d.length());
    EXPECT_EQ(6, d.keys);
    EXPECT_EQ(6, d.values);
    d.findCreate(&key);
    EXPECT_EQ(-1, d.valueAt(16));
}

TEST(fxDictionaryThrowing, anEntryWhoseNewValueCannotBeMadeIsRemoved) {
    IntDictionary d(4);
    fill(d);
    fxDictIter iter = on(d, 4);
    std::string ended;
    d.hook = [&](const std::string& operation, int number) {
        if (operation == "destroyKey" || operation == "destroyValue")
            ended += operation + std::to_string(number) + " ";
        if (operation == "copyValue" && number == 41)
            throw Refused();
    };
    EXPECT_THROW(d.put(4, 41), Refused);
    d.hook = nullptr;
    EXPECT_EQ("destroyValue40 destroyKey4 ", ended) << "its value ends once";
    EXPECT_EQ("12 8 0 1 2", walk(d));
    EXPECT_EQ(5u, d.length());
    EXPECT_EQ(5, d.keys);
    EXPECT_EQ(5, d.values);
    EXPECT_EQ(nullptr, iter.getKey());
    ++iter;
    EXPECT_EQ(0, numberAt(iter.getKey()));
}

TEST(fxDictionaryThrowing, anEndOfAnOldValueThatThrowsLeavesTheEntry) {
    IntDictionary d(4);
    fill(d);
    d.hook = throwing("destroyValue", 40);
    EXPECT_THROW(d.put(4, 41), Refused);
    d.put(4, 42);
    EXPECT_EQ(42, d.valueAt(4));
    EXPECT_EQ("12 8 4 0 1 2", walk(d));
    EXPECT_EQ(6, d.values);
}
