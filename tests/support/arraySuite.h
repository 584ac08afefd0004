// arraySuite.h - what every array class inherits from fxArray, as one suite.
#pragma once

#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxArray.h"

/// What the suite has to know of an array class: make(i) is an element that
/// differs from make(j), and numberOf(make(i)) is i, for i below 100.
template <class Array>
struct ArrayElements;

/// Each class instantiates it. Sorting is left out: the classes differ in it.
template <class Array>
class ArraySuite : public testing::Test {
protected:
    using Element = std::remove_reference_t<decltype(std::declval<Array&>()[0U])>;
    using Numbers = std::vector<unsigned int>;

    static constexpr unsigned int size = sizeof(Element);

    /// The elements from `first` on, `n` of them.
    static Array filled(unsigned int n, unsigned int first = 0) {
        Array array;
        for (unsigned int i = 0; i < n; ++i)
            add(array, first + i);
        array.setMaxLength(0);
        return array;
    }

    static void add(Array& array, unsigned int number) {
        const Element element = ArrayElements<Array>::make(number);
        array.append(static_cast<const void*>(&element));
    }

    static unsigned int find(const Array& array, unsigned int number, unsigned int start) {
        const Element element = ArrayElements<Array>::make(number);
        return array.find(static_cast<const void*>(&element), start);
    }

    static Numbers numbersOf(const Array& array) {
        Numbers numbers;
        for (unsigned int i = 0; i < array.length(); ++i)
            numbers.push_back(ArrayElements<Array>::numberOf(array[i]));
        return numbers;
    }

    /// 0 to `n` - 1.
    static Numbers upTo(unsigned int n) {
        Numbers numbers;
        for (unsigned int i = 0; i < n; ++i)
            numbers.push_back(i);
        return numbers;
    }

    /// `all` without the `n` numbers from `start` on.
    static Numbers without(Numbers all, unsigned int start, unsigned int n) {
        all.erase(all.begin() + static_cast<int>(start), all.begin() + static_cast<int>(start + n));
        return all;
    }

    static Numbers part(const Numbers& all, unsigned int start, unsigned int n) {
        return Numbers(all.begin() + static_cast<int>(start),
                       all.begin() + static_cast<int>(start + n));
    }

    static Numbers joined(Numbers all, const Numbers& more, unsigned int index) {
        all.insert(all.begin() + static_cast<int>(index), more.begin(), more.end());
        return all;
    }

    /// Length and capacity are `n` elements, and there is a block if and only
    /// if that is not 0.
    static void expectExact(const Array& array, unsigned int n) {
        EXPECT_EQ(n, array.length());
        EXPECT_EQ(n * size, array.getLen());
        EXPECT_EQ(n * size, array.getMaxLen());
        EXPECT_EQ(n == 0, array.at(0) == nullptr);
        EXPECT_EQ(size, array.getElemSize());
        EXPECT_EQ(0, array.count);
    }
};

TYPED_TEST_SUITE_P(ArraySuite);

TYPED_TEST_P(ArraySuite, addsNothingToItsBase) {
    EXPECT_TRUE((std::is_base_of<fxArray, TypeParam>::value));
    EXPECT_EQ(sizeof(fxArray), sizeof(TypeParam));
    EXPECT_STREQ("ARRAY", TypeParam().className());
}

TYPED_TEST_P(ArraySuite, emptyArrayHasNoBlock) {
    this->expectExact(TypeParam(), 0);
    this->expectExact(TypeParam(0), 0);
}

TYPED_TEST_P(ArraySuite, constructorMakesThatManyElements) {
    this->expectExact(TypeParam(1), 1);
    this->expectExact(TypeParam(3), 3);
}

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

TYPED_TEST_P(ArraySuite, cutTakesElementsOut) {
    for (unsigned int start = 0; start <= 4; ++start) {
        for (unsigned int n = 0; start + n <= 4; ++n) {
            SCOPED_TRACE(testing::Message() << n << " from " << start);
            TypeParam array = this->filled(4);
            const TypeParam piece = array.cut(start, n);
            this->expectExact(piece, n);
            EXPECT_EQ(this->part(this->upTo(4), start, n), this->numbersOf(piece));
            EXPECT_EQ(this->without(this->upTo(4), start, n), this->numbersOf(array));
            EXPECT_EQ(4 * this->size, array.getMaxLen());
        }
    }
}

TYPED_TEST_P(ArraySuite, extractHeadAndTailCopyElements) {
    const TypeParam array = this->filled(4);
    for (unsigned int start = 0; start <= 4; ++start) {
        for (unsigned int n = 0; start + n <= 4; ++n) {
            SCOPED_TRACE(testing::Message() << n << " from " << start);
            const TypeParam piece = array.extract(start, n);
            this->expectExact(piece, n);
            EXPECT_EQ(this->part(this->upTo(4), start, n), this->numbersOf(piece));
        }
    }
    for (unsigned int n = 0; n <= 4; ++n) {
        SCOPED_TRACE(n);
        const TypeParam head = array.head(n);
        const TypeParam tail = array.tail(n);
        this->expectExact(head, n);
        this->expectExact(tail, n);
        EXPECT_EQ(this->upTo(n), this->numbersOf(head));
        EXPECT_EQ(this->part(this->upTo(4), 4 - n, n), this->numbersOf(tail));
    }
    EXPECT_EQ(this->upTo(4), this->numbersOf(array));
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

TYPED_TEST_P(ArraySuite, adoptsABlockWithTheLowBitsOfTheElementSize) {
    const TypeParam array = this->filled(3);
    const TypeParam adopted(0x50000U + this->size, 3 * this->size, array.raw_copy());
    this->expectExact(adopted, 3);
    EXPECT_EQ(this->upTo(3), this->numbersOf(adopted));
    this->expectExact(TypeParam(this->size, 0, nullptr), 0);
}

TYPED_TEST_P(ArraySuite, isDeletedThroughItsBase) {
    fxRCObj* object = new TypeParam(this->filled(3));
    EXPECT_EQ(0, object->count);
    delete object;
}

REGISTER_TYPED_TEST_SUITE_P(ArraySuite, addsNothingToItsBase, emptyArrayHasNoBlock,
                            constructorMakesThatManyElements, appendGrowsByFourElements,
                            appendOfAnArrayGrowsToTheNeed, appendOfItselfDoublesIt,
                            insertGrowsByOneElement, insertOfAnArrayGrowsToTheNeed,
                            insertOfItselfDoublesItAtEveryPosition,
                            removeClosesTheGapAndKeepsTheCapacity, resizeSetsLengthAndCapacity,
                            capacityNeverFallsBelowTheLength, findReturnsTheFirstMatchFromStartOn,
                            cutTakesElementsOut, extractHeadAndTailCopyElements,
                            deliberateCopyHasTheSourcesCapacity,
                            adoptsABlockWithTheLowBitsOfTheElementSize, isDeletedThroughItsBase);
