// arrayPartsSuite.h - parts of arrays as blocks and as arrays: the second half of arraySuite.h.
#pragma once

#include <gtest/gtest.h>

#include "tests/support/arrayFixture.h"

template <class Array>
class ArrayPartsSuite : public ArrayFixture<Array> {};

TYPED_TEST_SUITE_P(ArrayPartsSuite);

TYPED_TEST_P(ArrayPartsSuite, cutTakesElementsOut) {
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

TYPED_TEST_P(ArrayPartsSuite, extractHeadAndTailCopyElements) {
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

TYPED_TEST_P(ArrayPartsSuite, rawOperationsReturnBlocksOfTheCallers) {
    TypeParam array = this->filled(5);
    array.setMaxLength(7);
    EXPECT_EQ(this->upTo(5), this->numbersOf(this->adopted(array.raw_copy(), 5)));
    EXPECT_EQ(this->upTo(3), this->numbersOf(this->adopted(array.raw_head(3), 3)));
    EXPECT_EQ(this->part(this->upTo(5), 1, 2),
              this->numbersOf(this->adopted(array.raw_extract(1, 2), 2)));
    EXPECT_EQ(this->part(this->upTo(5), 2, 3),
              this->numbersOf(this->adopted(array.raw_tail(3), 3)));
    EXPECT_EQ(this->upTo(5), this->numbersOf(array));
    EXPECT_EQ(this->part(this->upTo(5), 1, 3),
              this->numbersOf(this->adopted(array.raw_cut(1, 3), 3)));
    EXPECT_EQ((typename TestFixture::Numbers{0, 4}), this->numbersOf(array));
    EXPECT_EQ(7 * this->size, array.getMaxLen());
}

TYPED_TEST_P(ArrayPartsSuite, rawOperationsOnNothingReturnNull) {
    TypeParam array = this->filled(3);
    EXPECT_EQ(nullptr, TypeParam().raw_copy());
    EXPECT_EQ(nullptr, array.raw_extract(1, 0));
    EXPECT_EQ(nullptr, array.raw_head(0));
    EXPECT_EQ(nullptr, array.raw_tail(0));
    EXPECT_EQ(nullptr, array.raw_cut(1, 0));
    EXPECT_EQ(this->upTo(3), this->numbersOf(array));
}

TYPED_TEST_P(ArrayPartsSuite, subArraysOfAnEmptyArrayAreEmpty) {
    TypeParam array;
    this->expectExact(array.cut(0, 0), 0);
    this->expectExact(array.extract(0, 0), 0);
    this->expectExact(array.head(0), 0);
    this->expectExact(array.tail(0), 0);
}

REGISTER_TYPED_TEST_SUITE_P(ArrayPartsSuite, cutTakesElementsOut, extractHeadAndTailCopyElements,
                            rawOperationsReturnBlocksOfTheCallers, rawOperationsOnNothingReturnNull,
                            subArraysOfAnEmptyArrayAreEmpty);
