// arraySuite.h - what every array class has of fxArray, as one suite.
#pragma once

#include <type_traits>

#include <gtest/gtest.h>

#include "tests/support/arrayFixture.h"
#include "tests/support/arrayPartsSuite.h"
#include "tests/support/destructors.h"
#include "tests/support/vtable.h"

/// Each class of the family runs it by INSTANTIATE_ARRAY_SUITE. Sorting, comparing, transcription
/// and what new elements hold are left out: the classes differ in them.
template <class Array>
class ArraySuite : public ArrayFixture<Array> {};

TYPED_TEST_SUITE_P(ArraySuite);

// Shape.

TYPED_TEST_P(ArraySuite, addsNothingToItsBase) {
    EXPECT_TRUE((std::is_base_of<fxArray, TypeParam>::value));
    EXPECT_EQ(sizeof(fxArray), sizeof(TypeParam));
    EXPECT_STREQ("ARRAY", TypeParam().className());
}

TYPED_TEST_P(ArraySuite, virtualOperationsKeepTheirWords) {
    EXPECT_EQ(2u, vtableWord(&TypeParam::className));
    EXPECT_EQ(3u, vtableWord<unsigned char (TypeParam::*)(fxTranscriber&)>(&TypeParam::xdr));
    EXPECT_EQ(4u, vtableWord(&TypeParam::getTypeObj));
    EXPECT_EQ(5u, vtableWord(&TypeParam::xdrFail));
    EXPECT_EQ(6u, vtableWord(&TypeParam::xdrSuccess));
    EXPECT_EQ(7u, vtableWord(&TypeParam::getmem));
    EXPECT_EQ(8u, vtableWord(&TypeParam::expand));
    EXPECT_EQ(9u, vtableWord(&TypeParam::createElements));
    EXPECT_EQ(10u, vtableWord(&TypeParam::destroyElements));
    EXPECT_EQ(11u, vtableWord(&TypeParam::copyElements));
    EXPECT_EQ(12u, vtableWord(&TypeParam::compareElements));
}

TYPED_TEST_P(ArraySuite, addsNoVirtualOperation) {
    struct Probe : TypeParam {
        virtual void probe() {}
    };
    EXPECT_EQ(13u, vtableWord(&Probe::probe));
}

TYPED_TEST_P(ArraySuite, destructorsAreWords0And1OfTheTable) {
    expectDestructorsAtWords0And1<TypeParam>();
}

TYPED_TEST_P(ArraySuite, isDeletedThroughItsBase) {
    fxRCObj* object = new TypeParam(this->filled(3));
    EXPECT_EQ(0, object->count);
    delete object;
}

// Construction.

TYPED_TEST_P(ArraySuite, emptyArrayHasNoBlock) {
    this->expectExact(TypeParam(), 0);
    this->expectExact(TypeParam(0), 0);
}

TYPED_TEST_P(ArraySuite, constructorMakesThatManyElements) {
    for (unsigned int n : {1u, 3u, 100u})
        this->expectExact(TypeParam(n), n);
}

TYPED_TEST_P(ArraySuite, deliberateCopyHasTheSourcesCapacity) {
    for (unsigned int n = 0; n < 3; ++n) {
        SCOPED_TRACE(n);
        TypeParam array = this->filled(n);
        array.setMaxLength(6);
        array.count = 7;

        TypeParam copy(array);
        EXPECT_EQ(0, copy.count);
        EXPECT_EQ(n * this->size, copy.getLen());
        EXPECT_EQ(6 * this->size, copy.getMaxLen());
        EXPECT_NE(array.at(0), copy.at(0));
        for (unsigned int i = n; i < 6; ++i)
            this->add(copy, i);
        EXPECT_EQ(this->upTo(6), this->numbersOf(copy));
        EXPECT_EQ(6 * this->size, copy.getMaxLen()) << "there was room for all";
        EXPECT_EQ(this->upTo(n), this->numbersOf(array));
    }
}

TYPED_TEST_P(ArraySuite, spareBytesOfACopyAreZero) {
    TypeParam array = this->filled(4);
    array.remove(1, 3);
    const TypeParam copy(array);
    EXPECT_EQ(this->upTo(1), this->numbersOf(copy));
    this->expectZero(copy.at(1), 3 * this->size);
}

TYPED_TEST_P(ArraySuite, copyOfAnEmptyArrayHasNoBlock) {
    const TypeParam empty;
    this->expectExact(TypeParam(empty), 0);
}

TYPED_TEST_P(ArraySuite, adoptsTheBlockItself) {
    const TypeParam array = this->filled(3);
    void* block = array.raw_copy();
    const TypeParam adopted(0x50000U + this->size, 3 * this->size, block);
    EXPECT_EQ(block, adopted.at(0));
    this->expectExact(adopted, 3);
    EXPECT_EQ(this->upTo(3), this->numbersOf(adopted));
    this->expectExact(TypeParam(this->size, 0, nullptr), 0);
}

// Changing elements.

TYPED_TEST_P(ArraySuite, appendGrowsByFourElements) {
    TypeParam array;
    for (unsigned int i = 0; i < 9; ++i) {
        SCOPED_TRACE(i);
        this->add(array, i);
        EXPECT_EQ((i / 4 + 1) * 4 * this->size, array.getMaxLen());
        EXPECT_EQ(this->upTo(i + 1), this->numbersOf(array));
    }
}

TYPED_TEST_P(ArraySuite, appendOfAnArrayGrowsToTheNeed) {
    for (unsigned int n = 0; n < 4; ++n) {
        SCOPED_TRACE(n);
        TypeParam array = this->filled(2);
        const TypeParam more = this->filled(n, 2);
        array.append(static_cast<const fxArray&>(more));
        this->expectExact(array, 2 + n);
        EXPECT_EQ(this->upTo(2 + n), this->numbersOf(array));
        EXPECT_EQ(n, more.length());
    }
}

TYPED_TEST_P(ArraySuite, appendOfItselfDoublesIt) {
    TypeParam array = this->filled(3);
    array.append(static_cast<const fxArray&>(array));
    EXPECT_EQ((typename TestFixture::Numbers{0, 1, 2, 0, 1, 2}), this->numbersOf(array));
}

TYPED_TEST_P(ArraySuite, appendTakesAnElementOfTheArrayItself) {
    for (unsigned int spare : {0u, 1u}) {
        TypeParam array = this->filled(3);
        array.setMaxLength(3 + spare);
        array.append(array.at(1));
        EXPECT_EQ((typename TestFixture::Numbers{0, 1, 2, 1}), this->numbersOf(array));
    }
}

TYPED_TEST_P(ArraySuite, insertGrowsByOneElement) {
    for (unsigned int index = 0; index <= 3; ++index) {
        SCOPED_TRACE(index);
        TypeParam array = this->filled(3);
        const auto element = ArrayElements<TypeParam>::make(9);
        array.insert(static_cast<const void*>(&element), index);
        this->expectExact(array, 4);
        EXPECT_EQ(this->joined(this->upTo(3), {9}, index), this->numbersOf(array));
    }
}

TYPED_TEST_P(ArraySuite, insertOfAnArrayGrowsToTheNeed) {
    for (unsigned int index = 0; index <= 3; ++index) {
        for (unsigned int n = 0; n < 4; ++n) {
            SCOPED_TRACE(testing::Message() << n << " at " << index);
            TypeParam array = this->filled(3);
            const TypeParam more = this->filled(n, 10);
            array.insert(static_cast<const fxArray&>(more), index);
            this->expectExact(array, 3 + n);
            EXPECT_EQ(this->joined(this->upTo(3), this->numbersOf(more), index),
                      this->numbersOf(array));
        }
    }
}

TYPED_TEST_P(ArraySuite, insertOfItselfDoublesItAtEveryPosition) {
    for (unsigned int n = 0; n < 5; ++n) {
        for (unsigned int index = 0; index <= n; ++index) {
            SCOPED_TRACE(testing::Message() << n << " at " << index);
            TypeParam array = this->filled(n);
            array.insert(static_cast<const fxArray&>(array), index);
            EXPECT_EQ(this->joined(this->upTo(n), this->upTo(n), index), this->numbersOf(array));
        }
    }
}

TYPED_TEST_P(ArraySuite, removeClosesTheGapAndKeepsTheCapacity) {
    for (unsigned int start = 0; start <= 4; ++start) {
        for (unsigned int n = 0; start + n <= 4; ++n) {
            SCOPED_TRACE(testing::Message() << n << " from " << start);
            TypeParam array = this->filled(4);
            array.remove(start, n);
            EXPECT_EQ(this->without(this->upTo(4), start, n), this->numbersOf(array));
            EXPECT_EQ(4 * this->size, array.getMaxLen());
        }
    }
}

TYPED_TEST_P(ArraySuite, resizeSetsLengthAndCapacity) {
    for (unsigned int n = 0; n < 6; ++n) {
        SCOPED_TRACE(n);
        TypeParam array = this->filled(3);
        array.setMaxLength(5);
        array.resize(n);
        EXPECT_EQ(n * this->size, array.getLen());
        EXPECT_EQ(n * this->size, array.getMaxLen());
        const unsigned int kept = n < 3 ? n : 3;
        for (unsigned int i = 0; i < kept; ++i)
            EXPECT_EQ(i, ArrayElements<TypeParam>::numberOf(array[i]));
    }
}

TYPED_TEST_P(ArraySuite, capacityNeverFallsBelowTheLength) {
    for (unsigned int n = 0; n < 6; ++n) {
        SCOPED_TRACE(n);
        TypeParam array = this->filled(3);
        array.setMaxLength(n);
        EXPECT_EQ((n < 3 ? 3 : n) * this->size, array.getMaxLen());
        EXPECT_EQ(this->upTo(3), this->numbersOf(array));
    }
}

TYPED_TEST_P(ArraySuite, destroyEndsTheElementsAndKeepsTheFields) {
    TypeParam array = this->filled(2);
    const void* block = array.at(0);
    array.destroy();
    EXPECT_EQ(2 * this->size, array.getLen());
    EXPECT_EQ(2 * this->size, array.getMaxLen());
    EXPECT_EQ(block, array.at(0));
    array.createElements(array.at(0), array.getLen());  // for the destructor
}

TYPED_TEST_P(ArraySuite, swapExchangesTwoElements) {
    TypeParam array = this->filled(3);
    array.swap(0, 2);
    EXPECT_EQ((typename TestFixture::Numbers{2, 1, 0}), this->numbersOf(array));
    array.swap(1, 1);
    array.swap(2, 1);
    EXPECT_EQ((typename TestFixture::Numbers{2, 0, 1}), this->numbersOf(array));
}

// Access.

TYPED_TEST_P(ArraySuite, indexingGivesTheElement) {
    static_assert(
        std::is_same<decltype(std::declval<TypeParam&>()[0]), ElementOf<TypeParam>&>::value,
        "elements can be assigned");
    static_assert(std::is_same<decltype(std::declval<const TypeParam&>()[0]),
                               ElementOf<TypeParam> const&>::value,
                  "but not those of a constant");
    TypeParam array = this->filled(3);
    EXPECT_EQ(array.at(2), static_cast<void*>(&array[2]));
    array[1] = ArrayElements<TypeParam>::make(9);
    EXPECT_EQ((typename TestFixture::Numbers{0, 9, 2}), this->numbersOf(array));
    const TypeParam& constant = array;
    EXPECT_EQ(constant.at(1), static_cast<const void*>(&constant[1]));
}

TYPED_TEST_P(ArraySuite, findReturnsTheFirstMatchFromStartOn) {
    TypeParam array = this->filled(3);
    array.append(static_cast<const fxArray&>(this->filled(3)));
    for (unsigned int number = 0; number < 3; ++number) {
        for (unsigned int start = 0; start <= 7; ++start) {
            SCOPED_TRACE(testing::Message() << number << " from " << start);
            const unsigned int second = start <= number + 3 ? number + 3 : 0xFFFFFFFF;
            const unsigned int expected = start <= number ? number : second;
            EXPECT_EQ(expected, this->find(array, number, start));
        }
    }
    EXPECT_EQ(0xFFFFFFFFu, this->find(array, 3, 0));
    EXPECT_EQ(0xFFFFFFFFu, this->find(TypeParam(), 0, 0));
}

REGISTER_TYPED_TEST_SUITE_P(
    ArraySuite, addsNothingToItsBase, virtualOperationsKeepTheirWords, addsNoVirtualOperation,
    destructorsAreWords0And1OfTheTable, isDeletedThroughItsBase, emptyArrayHasNoBlock,
    constructorMakesThatManyElements, deliberateCopyHasTheSourcesCapacity, spareBytesOfACopyAreZero,
    copyOfAnEmptyArrayHasNoBlock, adoptsTheBlockItself, appendGrowsByFourElements,
    appendOfAnArrayGrowsToTheNeed, appendOfItselfDoublesIt, appendTakesAnElementOfTheArrayItself,
    insertGrowsByOneElement, insertOfAnArrayGrowsToTheNeed, insertOfItselfDoublesItAtEveryPosition,
    removeClosesTheGapAndKeepsTheCapacity, resizeSetsLengthAndCapacity,
    capacityNeverFallsBelowTheLength, destroyEndsTheElementsAndKeepsTheFields,
    swapExchangesTwoElements, indexingGivesTheElement, findReturnsTheFirstMatchFromStartOn);

/// Runs the suite, both halves of it, for a class or for testing::Types<...>.
// The arguments are names.
// NOLINTBEGIN(bugprone-macro-parentheses)
#define INSTANTIATE_ARRAY_SUITE(Name, Types)                 \
    INSTANTIATE_TYPED_TEST_SUITE_P(Name, ArraySuite, Types); \
    INSTANTIATE_TYPED_TEST_SUITE_P(Name, ArrayPartsSuite, Types)
// NOLINTEND(bugprone-macro-parentheses)
