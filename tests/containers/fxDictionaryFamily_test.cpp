// fxDictionaryFamily_test.cpp - what every concrete dictionary does alike.

#include <csignal>
#include <cstdlib>
#include <set>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/transcribe/fxBinaryOTDict.h"
#include "tests/support/destructors.h"
#include "tests/support/vtable.h"

namespace {

// Key and value number `i` of each class, and a text for each value.
template <class Dictionary>
struct Traits;

template <>
struct Traits<fxStrStrDictionary> {
    using Iter = fxStrStrDictionaryIter;
    using Key = fxStr;
    using Value = fxStr;
    static const unsigned int keySize = 8, valueSize = 8;
    static Key key(int i) { return fxStr(i, "key number %d"); }
    static Value value(int i) { return fxStr(i, "value number %d, longer than the key"); }
    static std::string text(const void* v) { return static_cast<const fxStr*>(v)->c_str(); }
    static std::string defaultText() { return ""; }
    static void end(void* v) { static_cast<fxStr*>(v)->~fxStr(); }
};

template <>
struct Traits<fxVoidPtrDict> {
    using Iter = fxVoidPtrDictIter;
    using Key = fxStr;
    using Value = void*;
    static const unsigned int keySize = 8, valueSize = 4;
    static Key key(int i) { return fxStr(i, "key number %d"); }
    static Value value(int i) { return reinterpret_cast<void*>(16 * i + 16); }
    static std::string text(const void* v) {
        return std::to_string(reinterpret_cast<unsigned long>(*static_cast<void* const*>(v)));
    }
    static std::string defaultText() { return "0"; }
    static void end(void*) {}
};

template <>
struct Traits<fxBinaryOTDict> {
    using Iter = fxBinaryOTDictIter;
    using Key = unsigned int;
    using Value = unsigned int;
    static const unsigned int keySize = 4, valueSize = 4;
    static Key key(int i) { return 4 * static_cast<unsigned int>(i) + 0x8000; }
    static Value value(int i) { return static_cast<unsigned int>(i) + 1; }
    static std::string text(const void* v) {
        return std::to_string(*static_cast<const unsigned int*>(v));
    }
    static std::string defaultText() { return "0"; }
    static void end(void*) {}
};

template <class Dictionary>
class Opened : public Dictionary {
public:
    using Dictionary::Dictionary;
    using fxDictionary::iters;
    using fxDictionary::keySize;
    using fxDictionary::valueSize;
};

template <class Dictionary>
class fxDictionaryFamily : public testing::Test {
protected:
    using T = Traits<Dictionary>;

    static void add(Dictionary& d, int key, int value) {
        const auto k = T::key(key);
        const auto v = T::value(value);
        d.addInternal(&k, &v);
    }
    static std::string textAt(const Dictionary& d, int key) {
        const auto k = T::key(key);
        const fxDictionary& base = d;
        const void* value = base.find(&k);
        return value ? T::text(value) : "absent";
    }
    static std::string text(int value) {
        const auto v = T::value(value);
        return T::text(&v);
    }
    static void drop(Dictionary& d, int key) {
        const auto k = T::key(key);
        static_cast<fxDictionary&>(d).remove(&k);
    }
    static std::multiset<std::string> texts(Dictionary& d) {
        std::multiset<std::string> result;
        for (typename T::Iter iter(d); iter.getKey(); ++iter)
            result.insert(T::text(iter.getValue()));
        return result;
    }
};
using Dictionaries = testing::Types<fxStrStrDictionary, fxVoidPtrDict, fxBinaryOTDict>;
TYPED_TEST_SUITE(fxDictionaryFamily, Dictionaries);

}  // namespace

TYPED_TEST(fxDictionaryFamily, addsNoStorageToFxDictionary) {
    static_assert(sizeof(TypeParam) == 68, "no storage of its own");
    static_assert(sizeof(typename Traits<TypeParam>::Iter) == 16, "no storage of its own");
    static_assert(std::is_base_of<fxDictIter, typename Traits<TypeParam>::Iter>::value,
                  "a kind of fxDictIter");
    const Opened<TypeParam> d(0);
    EXPECT_EQ(static_cast<unsigned int>(Traits<TypeParam>::keySize), d.keySize);
    EXPECT_EQ(static_cast<unsigned int>(Traits<TypeParam>::valueSize), d.valueSize);
}

TYPED_TEST(fxDictionaryFamily, virtualOperationsKeepTheirWords) {
    EXPECT_EQ(2u, vtableWord(&TypeParam::className));
    EXPECT_EQ(
        3u, vtableWord(static_cast<unsigned char (TypeParam::*)(fxTranscriber&)>(&TypeParam::xdr)));
    EXPECT_EQ(4u, vtableWord(&TypeParam::getTypeObj));
    EXPECT_EQ(7u, vtableWord(&TypeParam::addInternal));
    EXPECT_EQ(8u, vtableWord(&TypeParam::hashKey));
    EXPECT_EQ(9u, vtableWord(&TypeParam::compareKeys));
    EXPECT_EQ(10u, vtableWord(&TypeParam::copyKey));
    EXPECT_EQ(11u, vtableWord(&TypeParam::destroyKey));
    EXPECT_EQ(12u, vtableWord(&TypeParam::copyValue));
    EXPECT_EQ(13u, vtableWord(&TypeParam::destroyValue));
    EXPECT_EQ(14u, vtableWord(&TypeParam::createValue));
    EXPECT_EQ(15u, vtableWord(&TypeParam::xdrKey));
    EXPECT_EQ(16u, vtableWord(&TypeParam::xdrValue));
}

TYPED_TEST(fxDictionaryFamily, destructorsAreWords0And1OfTheTable) {
    expectDestructorsAtWords0And1<TypeParam>(5u);
}

TYPED_TEST(fxDictionaryFamily, isCalledDICT) { EXPECT_STREQ("DICT", TypeParam().className()); }

TYPED_TEST(fxDictionaryFamily, zeroBucketsStandsFor31) {
    EXPECT_EQ(31u, TypeParam(0).getNumBuckets());
    EXPECT_EQ(31u, TypeParam().getNumBuckets());
    EXPECT_EQ(1u, TypeParam(1).getNumBuckets());
    EXPECT_EQ(997u, TypeParam(997).getNumBuckets());
}

TYPED_TEST(fxDictionaryFamily, findsWhatWasAdded) {
    for (unsigned int numBuckets : {1u, 31u, 211u}) {
        SCOPED_TRACE(numBuckets);
        TypeParam d(numBuckets);
        EXPECT_EQ("absent", this->textAt(d, 0));
        for (int i = 0; i < 100; ++i) {
            this->add(d, i, i);
            EXPECT_EQ(static_cast<unsigned int>(i) + 1, d.length());
        }
        for (int i = 0; i < 100; ++i)
            EXPECT_EQ(this->text(i), this->textAt(d, i));
        EXPECT_EQ("absent", this->textAt(d, 100));
        EXPECT_EQ(numBuckets, d.getNumBuckets());
    }
}

TYPED_TEST(fxDictionaryFamily, addingAKnownKeyReplacesTheValue) {
    TypeParam d;
    this->add(d, 1, 10);
    this->add(d, 2, 20);
    this->add(d, 1, 11);
    EXPECT_EQ(this->text(11), this->textAt(d, 1));
    EXPECT_EQ(this->text(20), this->textAt(d, 2));
    EXPECT_EQ(2u, d.length());
}

TYPED_TEST(fxDictionaryFamily, findCreateMakesADefaultValue) {
    using Case = Traits<TypeParam>;
    TypeParam d;
    fxDictionary& base = d;
    const auto key = Case::key(3);
    void* created = base.findCreate(&key);
    EXPECT_EQ(Case::defaultText(), Case::text(created));
    EXPECT_EQ(1u, d.length());
    EXPECT_EQ(created, base.findCreate(&key));
    EXPECT_EQ(created, base.find(&key));
    EXPECT_EQ(1u, d.length());
}

TYPED_TEST(fxDictionaryFamily, removesEntries) {
    TypeParam d(3);
    for (int i = 0; i < 20; ++i)
        this->add(d, i, i);
    for (int i = 0; i < 20; i += 2)
        this->drop(d, i);
    this->drop(d, 2);
    EXPECT_EQ(10u, d.length());
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(i % 2 == 0 ? "absent" : this->text(i), this->textAt(d, i));
}

TYPED_TEST(fxDictionaryFamily, cutReturnsTheValueInABlock) {
    using Case = Traits<TypeParam>;
    TypeParam d(3);
    this->add(d, 1, 10);
    this->add(d, 2, 20);
    const auto key = Case::key(1);
    void* block = static_cast<fxDictionary&>(d).cut(&key);
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(this->text(10), Case::text(block));
    Case::end(block);
    std::free(block);
    EXPECT_EQ("absent", this->textAt(d, 1));
    EXPECT_EQ(this->text(20), this->textAt(d, 2));
    EXPECT_EQ(1u, d.length());
    EXPECT_EQ(nullptr, static_cast<fxDictionary&>(d).cut(&key));
}

TYPED_TEST(fxDictionaryFamily, cleanupEmptiesAllChains) {
    TypeParam d;
    for (int i = 0; i < 50; ++i)
        this->add(d, i, i);
    d.cleanup();
    EXPECT_TRUE(this->texts(d).empty());
    EXPECT_EQ("absent", this->textAt(d, 7));
    this->add(d, 7, 8);
    EXPECT_EQ(this->text(8), this->textAt(d, 7));
}

TYPED_TEST(fxDictionaryFamily, onlyAnEmptyOneCanBeCopied) {
    TypeParam empty(5);
    const TypeParam copy(empty);
    EXPECT_EQ(5u, copy.getNumBuckets());
    EXPECT_EQ(0u, copy.length());
}

TYPED_TEST(fxDictionaryFamily, assignmentMerges) {
    TypeParam target(3), source(7);
    this->add(target, 1, 10);
    this->add(target, 2, 20);
    this->add(source, 2, 21);
    this->add(source, 3, 30);
    static_cast<fxDictionary&>(target) = source;
    EXPECT_EQ(3u, target.length());
    EXPECT_EQ(this->text(10), this->textAt(target, 1));
    EXPECT_EQ(this->text(21), this->textAt(target, 2));
    EXPECT_EQ(this->text(30), this->textAt(target, 3));
    EXPECT_EQ(this->text(21), this->textAt(source, 2));
    target = source;
    EXPECT_EQ(3u, target.length());
}

TYPED_TEST(fxDictionaryFamily, iteratorVisitsEachEntryOnce) {
    TypeParam d;
    std::multiset<std::string> expected;
    for (int i = 0; i < 60; ++i) {
        this->add(d, i, i);
        expected.insert(this->text(i));
    }
    EXPECT_EQ(expected, this->texts(d));
}

TYPED_TEST(fxDictionaryFamily, iteratorStartsOnAReferenceOrAPointer) {
    using Iter = typename Traits<TypeParam>::Iter;
    Opened<TypeParam> d(0);
    this->add(d, 1, 10);
    Iter none, byReference(d), byPointer(&d);
    EXPECT_EQ(nullptr, none.getKey());
    EXPECT_EQ(2u, d.iters.length());
    EXPECT_EQ(this->text(10), Traits<TypeParam>::text(byReference.getValue()));
    EXPECT_EQ(byReference.getKey(), byPointer.getKey());
    none = d;
    EXPECT_EQ(byReference.getKey(), none.getKey());
    ++none;
    EXPECT_EQ(nullptr, none.getKey());
    EXPECT_EQ(2u, d.iters.length());
}

TYPED_TEST(fxDictionaryFamily, removingUnderAnIteratorSkipsNothing) {
    TypeParam d(3);
    for (int i = 0; i < 30; ++i)
        this->add(d, i, i);
    unsigned int visited = 0;
    for (typename Traits<TypeParam>::Iter iter(d); iter.getKey(); ++iter) {
        ++visited;
        static_cast<fxDictionary&>(d).remove(iter.getKey());
        EXPECT_EQ(nullptr, iter.getKey());
    }
    EXPECT_EQ(30u, visited);
    EXPECT_EQ(0u, d.length());
}

TYPED_TEST(fxDictionaryFamily, destructorEndsEntriesAndDetachesIterators) {
    typename Traits<TypeParam>::Iter iter;
    {
        TypeParam d;
        for (int i = 0; i < 40; ++i)
            this->add(d, i, i);
        iter = d;
        EXPECT_NE(nullptr, iter.getKey());
    }
    EXPECT_EQ(nullptr, iter.getKey());
    ++iter;
}
