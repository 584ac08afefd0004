#include "kelvofxds/containers/fxTypedArrays.h"

#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxTypeObj.h"
#include "tests/support/arrayFamily.h"
#include "tests/support/arraySuite.h"
#include "tests/support/destructors.h"
#include "tests/support/recordingTranscriber.h"

INSTANTIATE_ARRAY_SUITE(fxTypedArrays, AllArrays);

// What they have beyond that, the tables of dictionaries and sets included.

namespace {

template <class Array>
using Element = typename ArrayTraits<Array>::Element;

template <class Array>
class fxTypedArrays : public testing::Test {
protected:
    static constexpr unsigned int size = ArrayTraits<Array>::size;
};
TYPED_TEST_SUITE(fxTypedArrays, AllArrays);

}  // namespace

// Elements are bytes.

TYPED_TEST(fxTypedArrays, elementsHaveTheirDeclaredWidth) {
    EXPECT_EQ(this->size, sizeof(Element<TypeParam>));
    EXPECT_EQ(this->size, TypeParam().getElemSize());
    EXPECT_EQ(this->size, TypeParam(2).getElemSize());
}

TYPED_TEST(fxTypedArrays, sortsAsItsBaseDoes) {
    TypeParam sorted;
    appendDigits(sorted, "231");
    sorted.qsort();
    EXPECT_EQ("333", digitsOf(sorted));
    sorted.qsort(1, 1);
    EXPECT_EQ("303", digitsOf(sorted));
}

TYPED_TEST(fxTypedArrays, deliberateElementsCompareAsUnsignedBytesInMemoryOrder) {
    const TypeParam array;
    unsigned char low[8] = {0}, high[8] = {0};
    for (unsigned int i = 0; i < this->size; ++i) {
        low[i] = 0x7F;
        high[i] = 0x80;
        EXPECT_EQ(-1, array.compareElements(low, high));
        EXPECT_EQ(1, array.compareElements(high, low));
        EXPECT_EQ(0, array.compareElements(low, low));
        high[i] = 0x7F;  // equal so far
    }
}

// New elements.

namespace {
template <class Array>
class fxZeroedArrays : public testing::Test {};
TYPED_TEST_SUITE(fxZeroedArrays, ArraysOfPointers);

template <class Array>
class fxScalarArrays : public testing::Test {};
TYPED_TEST_SUITE(fxScalarArrays, ArraysWithRecords);
}  // namespace

TYPED_TEST(fxZeroedArrays, newElementsAreNull) {
    TypeParam array(3);
    for (unsigned int i = 0; i < 3; ++i)
        EXPECT_EQ(nullptr, array[i]);
    array.resize(40);
    for (unsigned int i = 0; i < 40; ++i)
        EXPECT_EQ(nullptr, array[i]);
}

TYPED_TEST(fxZeroedArrays, createElementsZeroesTheBytesGiven) {
    TypeParam array;
    unsigned char bytes[8];
    std::memset(bytes, 0xAA, sizeof bytes);
    array.createElements(bytes + 2, 4);
    const unsigned char expected[8] = {0xAA, 0xAA, 0, 0, 0, 0, 0xAA, 0xAA};
    EXPECT_EQ(0, std::memcmp(expected, bytes, sizeof bytes));
    array.createElements(nullptr, 0);
}

TYPED_TEST(fxZeroedArrays, elementsThatStayKeepTheirValueOnResize) {
    TypeParam array;
    appendDigits(array, "12");
    array.resize(3);
    EXPECT_EQ("120", digitsOf(array));
}

TYPED_TEST(fxZeroedArrays, hasNoRecordOfItsOwnAndTranscribesNothing) {
    TypeParam array(2);
    EXPECT_EQ(&fxArray_type, &array.getTypeObj());
    RecordingTranscriber t(RecordingTranscriber::writer);
    EXPECT_EQ(1, static_cast<fxXDRObj&>(array).xdr(t));
    ASSERT_EQ("embedded:0", t.log());
    EXPECT_EQ(&fxXDRObj_type, t.calls[0].type);
    EXPECT_EQ(&array, t.calls[0].previous);
    EXPECT_EQ(&array, t.calls[0].address);
}

TYPED_TEST(fxScalarArrays, createElementsLeavesTheBytes) {
    TypeParam array;
    unsigned char bytes[8];
    std::memset(bytes, 0xAA, sizeof bytes);
    array.createElements(bytes, sizeof bytes);
    for (unsigned char byte : bytes)
        EXPECT_EQ(0xAA, byte);
}

// Type records.

TYPED_TEST(fxScalarArrays, typeIsTheClassesOwnRecord) {
    fxTypeObj& record = ArrayTraits<TypeParam>::record();
    EXPECT_EQ(&record, &TypeParam().getTypeObj());
    EXPECT_STREQ("ARRAY", record.name);
    EXPECT_EQ(1u, record.version);
}

TYPED_TEST(fxScalarArrays, newInstanceMakesAnEmptyArray) {
    fxTypeObj& record = ArrayTraits<TypeParam>::record();
    void* instance = TypeParam::newInstance(record);
    ASSERT_NE(nullptr, instance);
    auto* array = static_cast<TypeParam*>(instance);
    EXPECT_EQ(0, array->count);
    EXPECT_EQ(&record, &array->getTypeObj());
    EXPECT_STREQ("ARRAY", array->className());
    EXPECT_EQ(nullptr, array->at(0));
    EXPECT_EQ(0u, array->length());
    TypeParam::deleteInstance(instance);
    TypeParam::deleteInstance(nullptr);
}

TYPED_TEST(fxScalarArrays, deleteInstanceUsesTheVirtualDeletingDestructor) {
    using Sample = CountedEnd<TypeParam>;
    Sample::destroyed = Sample::freed = 0;
    TypeParam::deleteInstance(static_cast<TypeParam*>(new Sample));
    EXPECT_EQ(1, Sample::destroyed);
    EXPECT_EQ(1, Sample::freed);
}

// What comparing bytes means for numbers.

TEST(fxTypedArraysOrder, deliberate256SortsBefore1) {
    if (__BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__)
        GTEST_SKIP() << "with its bytes the other way round it does not";
    const fxIntArray array;
    const int low = 256, high = 1;
    EXPECT_EQ(-1, array.compareElements(&low, &high));
    EXPECT_EQ(1, array.compareElements(&high, &low));
}

TEST(fxTypedArraysOrder, deliberateMinusOneSortsLast) {
    const fxIntArray array;
    const int minusOne = -1;
    for (int other : {0, 1, 255, 0x7FFFFFFF, -2, static_cast<int>(0x80000000)})
        EXPECT_EQ(1, array.compareElements(&minusOne, &other));
}

TEST(fxTypedArraysOrder, deliberateFloatsAreFoundByTheirBytes) {
    fxFloatArray array;
    const float minusZero = -0.0f, zero = 0.0f, notANumber = std::nanf("");
    array.append(&minusZero);
    array.append(&notANumber);
    EXPECT_EQ(0xFFFFFFFF, array.find(&zero));
    EXPECT_EQ(0u, array.find(&minusZero));
    EXPECT_EQ(1u, array.find(&notANumber));
}
