#include "kelvofxds/containers/fxTypedArrays.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxTypeObj.h"
#include "tests/support/arrayFamily.h"
#include "tests/support/destructors.h"
#include "tests/support/recordingTranscriber.h"
#include "tests/support/vtable.h"

// The suite that every concrete array class runs, the dictionary's two tables
// included.

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

// Shape.

TYPED_TEST(fxTypedArrays, addsNoStorageToFxArray) {
    static_assert(sizeof(TypeParam) == 24, "no storage of its own");
    static_assert(std::is_base_of<fxArray, TypeParam>::value, "a kind of fxArray");
    EXPECT_EQ(this->size, sizeof(Element<TypeParam>));
    EXPECT_EQ(this->size, TypeParam().getElemSize());
    EXPECT_EQ(this->size, TypeParam(2).getElemSize());
}

TYPED_TEST(fxTypedArrays, virtualOperationsKeepTheirWords) {
    EXPECT_EQ(2u, vtableWord(&TypeParam::className));
    EXPECT_EQ(
        3u, vtableWord(static_cast<unsigned char (TypeParam::*)(fxTranscriber&)>(&TypeParam::xdr)));
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

TYPED_TEST(fxTypedArrays, destructorsAreWords0And1OfTheTable) {
    expectDestructorsAtWords0And1<TypeParam>();
}

TYPED_TEST(fxTypedArrays, isCalledARRAY) { EXPECT_STREQ("ARRAY", TypeParam().className()); }

// Construction.

TYPED_TEST(fxTypedArrays, defaultConstructorMakesAnEmptyArray) {
    const Opened<TypeParam> array;
    EXPECT_EQ(nullptr, array.data);
    EXPECT_EQ(0u, array.length());
    EXPECT_EQ(0u, array.getLen());
    EXPECT_EQ(0u, array.getMaxLen());
    EXPECT_EQ(0, array.count);
}

TYPED_TEST(fxTypedArrays, countConstructorMakesThatManyElements) {
    for (unsigned int n : {0u, 1u, 3u, 100u}) {
        SCOPED_TRACE(n);
        const Opened<TypeParam> array(n);
        EXPECT_EQ(n, array.length());
        EXPECT_EQ(n * this->size, array.getLen());
        EXPECT_EQ(n * this->size, array.getMaxLen());
        EXPECT_EQ(n == 0, array.data == nullptr);
    }
}

TYPED_TEST(fxTypedArrays, deliberateACopyHasTheSourcesCapacity) {
    TypeParam original;
    original.count = 3;
    appendDigits(original, "12345");
    ASSERT_EQ(8 * this->size, original.getMaxLen());

    TypeParam copy(original);
    EXPECT_EQ(0, copy.count);
    EXPECT_EQ(5 * this->size, copy.getLen());
    EXPECT_EQ(8 * this->size, copy.getMaxLen());
    EXPECT_EQ("12345", digitsOf(copy));
    EXPECT_NE(original.at(0), copy.at(0));

    appendDigits(copy, "678");  // into the capacity, which is there
    EXPECT_EQ(8 * this->size, copy.getMaxLen());
    EXPECT_EQ("12345678", digitsOf(copy));
    EXPECT_EQ("12345", digitsOf(original));
}

TYPED_TEST(fxTypedArrays, spareBytesOfACopyAreZero) {
    TypeParam original;
    appendDigits(original, "1234");
    original.remove(1, 3);
    const TypeParam copy(original);
    const char* bytes = static_cast<const char*>(copy.at(0));
    for (unsigned int i = copy.getLen(); i < copy.getMaxLen(); ++i)
        EXPECT_EQ(0, bytes[i]);
}

TYPED_TEST(fxTypedArrays, copyOfAnEmptyArrayIsEmpty) {
    const Opened<TypeParam> nothing{};
    const Opened<TypeParam> copyOfNothing(nothing);
    EXPECT_EQ(nullptr, copyOfNothing.data);
    EXPECT_EQ(0u, copyOfNothing.getMaxLen());

    TypeParam roomy;
    roomy.setMaxLength(4);
    TypeParam copy(roomy);
    EXPECT_EQ(0u, copy.getLen());
    EXPECT_EQ(4 * this->size, copy.getMaxLen());
    appendDigits(copy, "1234");
    EXPECT_EQ("1234", digitsOf(copy));
    EXPECT_EQ(4 * this->size, copy.getMaxLen());
}

TYPED_TEST(fxTypedArrays, adoptingConstructorTakesTheBlockItself) {
    void* block = std::malloc(2 * this->size);
    std::memset(block, 7, 2 * this->size);
    const Opened<TypeParam> array(this->size, 2 * this->size, block);
    EXPECT_EQ(block, array.data);
    EXPECT_EQ("77", digitsOf(array));
    EXPECT_EQ(2 * this->size, array.getMaxLen());
    EXPECT_EQ(0, array.count);
}

// Sub-arrays by value.

TYPED_TEST(fxTypedArrays, cutMovesElementsOut) {
    TypeParam array;
    appendDigits(array, "12345");
    const TypeParam cut = array.cut(1, 2);
    EXPECT_EQ("23", digitsOf(cut));
    EXPECT_EQ(2 * this->size, cut.getMaxLen());
    EXPECT_EQ("145", digitsOf(array));
    EXPECT_EQ(8 * this->size, array.getMaxLen());
}

TYPED_TEST(fxTypedArrays, cutOfAllLeavesAnEmptyArray) {
    TypeParam array;
    appendDigits(array, "123");
    EXPECT_EQ("123", digitsOf(array.cut(0, 3)));
    EXPECT_EQ(0u, array.length());
    EXPECT_EQ(4 * this->size, array.getMaxLen());
}

TYPED_TEST(fxTypedArrays, extractHeadAndTailCopyElements) {
    TypeParam array;
    appendDigits(array, "12345");
    const TypeParam extract = array.extract(1, 3), head = array.head(2), tail = array.tail(2);
    EXPECT_EQ("234", digitsOf(extract));
    EXPECT_EQ("12", digitsOf(head));
    EXPECT_EQ("45", digitsOf(tail));
    EXPECT_EQ(3 * this->size, extract.getMaxLen());
    EXPECT_EQ(2 * this->size, head.getMaxLen());
    EXPECT_EQ(2 * this->size, tail.getMaxLen());
    EXPECT_EQ("12345", digitsOf(array));
    EXPECT_EQ("12345", digitsOf(array.head(5)));
    EXPECT_EQ("12345", digitsOf(array.tail(5)));
}

TYPED_TEST(fxTypedArrays, subArraysOfNothingAreEmpty) {
    TypeParam array;
    appendDigits(array, "123");
    const TypeParam parts[] = {array.cut(1, 0), array.extract(1, 0), array.head(0), array.tail(0),
                               array.cut(3, 0)};
    for (const TypeParam& part : parts) {
        EXPECT_EQ(0u, part.length());
        EXPECT_EQ(0u, part.getMaxLen());
        EXPECT_EQ(this->size, part.getElemSize());
        EXPECT_EQ(nullptr, part.at(0));
    }
    EXPECT_EQ("123", digitsOf(array));
}

TYPED_TEST(fxTypedArrays, subArraysOfAnEmptyArrayAreEmpty) {
    TypeParam array;
    EXPECT_EQ(0u, array.cut(0, 0).length());
    EXPECT_EQ(0u, array.extract(0, 0).length());
    EXPECT_EQ(0u, array.head(0).length());
    EXPECT_EQ(0u, array.tail(0).length());
}

// The operations inherited from fxArray.

TYPED_TEST(fxTypedArrays, indexingGivesTheElement) {
    TypeParam array;
    appendDigits(array, "123");
    static_assert(std::is_same<decltype(array[0]), Element<TypeParam>&>::value,
                  "elements can be assigned");
    EXPECT_EQ(array.at(2), &array[2]);
    array[1] = elementOf<Element<TypeParam>>('9');
    EXPECT_EQ("193", digitsOf(array));
    const TypeParam& constant = array;
    EXPECT_EQ(array.at(1), &constant[1]);
}

TYPED_TEST(fxTypedArrays, appendGrowsByFourElements) {
    TypeParam array, other;
    appendDigits(array, "1");
    EXPECT_EQ(4 * this->size, array.getMaxLen());
    appendDigits(array, "2345");
    EXPECT_EQ(8 * this->size, array.getMaxLen());
    appendDigits(other, "6789");
    array.append(other);
    EXPECT_EQ("123456789", digitsOf(array));
    EXPECT_EQ(9 * this->size, array.getMaxLen());
    other.append(other);
    EXPECT_EQ("67896789", digitsOf(other));
    other.append(&other[1]);
    EXPECT_EQ("678967897", digitsOf(other));
}

TYPED_TEST(fxTypedArrays, insertGrowsByOneElement) {
    TypeParam array, other;
    const Element<TypeParam> nine = elementOf<Element<TypeParam>>('9');
    array.insert(&nine, 0);
    EXPECT_EQ(this->size, array.getMaxLen());
    appendDigits(other, "12");
    array.insert(other, 0);
    EXPECT_EQ("129", digitsOf(array));
    EXPECT_EQ(3 * this->size, array.getMaxLen());
    array.insert(&nine, 1);
    EXPECT_EQ("1929", digitsOf(array));
    array.insert(&nine, 4);
    EXPECT_EQ("19299", digitsOf(array));
    EXPECT_EQ(5 * this->size, array.getMaxLen());
    array.insert(array, 5);
    EXPECT_EQ("1929919299", digitsOf(array));
}

TYPED_TEST(fxTypedArrays, removeClosesTheGap) {
    TypeParam array;
    appendDigits(array, "12345");
    array.remove(1, 2);
    EXPECT_EQ("145", digitsOf(array));
    array.remove(2, 1);
    array.remove(0, 0);
    EXPECT_EQ("14", digitsOf(array));
    array.remove(0, 2);
    EXPECT_EQ(0u, array.length());
    EXPECT_EQ(8 * this->size, array.getMaxLen());
}

TYPED_TEST(fxTypedArrays, resizeAndSetMaxLengthSetTheCapacity) {
    TypeParam array;
    appendDigits(array, "123");
    array.resize(5);
    EXPECT_EQ(5u, array.length());
    EXPECT_EQ(5 * this->size, array.getMaxLen());
    array.resize(2);
    EXPECT_EQ("12", digitsOf(array));
    EXPECT_EQ(2 * this->size, array.getMaxLen());
    array.setMaxLength(9);
    EXPECT_EQ(9 * this->size, array.getMaxLen());
    array.setMaxLength(0);
    EXPECT_EQ(2 * this->size, array.getMaxLen());
    EXPECT_EQ("12", digitsOf(array));
    array.destroy();
    EXPECT_EQ("12", digitsOf(array));
}

TYPED_TEST(fxTypedArrays, swapFindAndSortWorkOnBytes) {
    TypeParam array;
    appendDigits(array, "121");
    const Element<TypeParam> one = elementOf<Element<TypeParam>>('1'),
                             three = elementOf<Element<TypeParam>>('3');
    EXPECT_EQ(0u, array.find(&one));
    EXPECT_EQ(2u, array.find(&one, 1));
    EXPECT_EQ(0xFFFFFFFF, array.find(&one, 3));
    EXPECT_EQ(0xFFFFFFFF, array.find(&three));
    array.swap(0, 1);
    EXPECT_EQ("211", digitsOf(array));

    TypeParam sorted;
    appendDigits(sorted, "231");
    sorted.qsort();
    EXPECT_EQ("333", digitsOf(sorted)) << "as fxArray sorts these";
    sorted.qsort(1, 1);
    EXPECT_EQ("303", digitsOf(sorted));
}

TYPED_TEST(fxTypedArrays, rawOperationsReturnBlocks) {
    TypeParam array;
    appendDigits(array, "12345");
    EXPECT_EQ("12345", digitsOf(TypeParam(this->size, 5 * this->size, array.raw_copy())));
    EXPECT_EQ("23", digitsOf(TypeParam(this->size, 2 * this->size, array.raw_extract(1, 2))));
    EXPECT_EQ("123", digitsOf(TypeParam(this->size, 3 * this->size, array.raw_head(3))));
    EXPECT_EQ("345", digitsOf(TypeParam(this->size, 3 * this->size, array.raw_tail(3))));
    EXPECT_EQ("234", digitsOf(TypeParam(this->size, 3 * this->size, array.raw_cut(1, 3))));
    EXPECT_EQ("15", digitsOf(array));
    EXPECT_EQ(nullptr, TypeParam().raw_copy());
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
TYPED_TEST_SUITE(fxZeroedArrays, ArraysWithoutRecords);

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
