// fxDictIter_test.cpp - what the iterators of dictionaries have beside those of sets.

#include <cstdlib>
#include <type_traits>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxDictionary.h"
#include "tests/support/chained.h"

static_assert(!std::is_polymorphic<fxDictIter>::value, "iterators have no table");

namespace {

using Dictionary = Filled<ChainedDictionary>;
using Iter = ChainedDictionary::Iter;

}  // namespace

TEST(fxDictIter, keyAndValueAreAddressesInTheEntry) {
    Dictionary d;
    Iter iter(d);
    EXPECT_EQ(d.entry(10)->kvmem, iter.getKey());
    EXPECT_EQ(static_cast<char*>(d.entry(10)->kvmem) + 4, iter.getValue());
}

TEST(fxDictIter, replacedValueIsSeen) {
    Dictionary d;
    Iter iter(d);
    d.add(10, 11);
    EXPECT_EQ(11, TestDictionary::number(iter.getValue()));
}

TEST(fxDictIter, cutMovesIteratorsToo) {
    Dictionary d;
    Iter iter = on(d, 7);
    const int key = 7;
    const int* k = &key;
    void* block = d.cut(&k);
    EXPECT_EQ("moved", now(iter));
    ++iter;
    EXPECT_EQ("2", now(iter));
    delete *static_cast<int**>(block);
    std::free(block);
}

TEST(fxDictIter, cutEndsTheKeyBeforeIteratorsMove) {
    Dictionary d;
    const Iter iter = on(d, 7);
    static const Iter* watched;
    static bool linked;
    static const void *key, *value;
    static unsigned int length;
    watched = &iter;
    key = value = nullptr;
    d.onDestroyKey = [](const TestDictionary& dictionary) {
        linked = dictionary.buckets[2] != watched->bucket->next;
        key = watched->getKey();
        value = watched->getValue();
        length = dictionary.length();
    };
    const void* block = d.entry(7)->kvmem;
    const int seven = 7;
    const int* k = &seven;
    void* cut = d.cut(&k);
    d.onDestroyKey = nullptr;
    EXPECT_FALSE(linked);
    EXPECT_EQ(block, key);
    EXPECT_NE(nullptr, value);
    EXPECT_EQ(6u, length);
    EXPECT_EQ("moved", now(iter));
    EXPECT_EQ(5u, d.length());
    delete *static_cast<int**>(cut);
    std::free(cut);
}

TEST(fxDictIter, deliberateCleanupDoesNotEmptyTheArrayOfIterators) {
    Dictionary d;
    Iter first(d), second(d);
    d.cleanup();
    EXPECT_EQ(2u, d.iters.length());
}
