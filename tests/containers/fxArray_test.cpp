#include "kelvofxds/containers/fxArray.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxTypeObj.h"
#include "tests/support/destructors.h"
#include "tests/support/recordingTranscriber.h"
#include "tests/support/testArrays.h"
#include "tests/support/vtable.h"

struct fxArrayLayout {
    static_assert(sizeof(fxArray) == 24, "hosts embed arrays by value");
    static_assert(std::is_base_of<fxXDRObj, fxArray>::value, "arrays can be transcribed");
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"  // the class has a table; g++ defines this
    static_assert(offsetof(fxArray, data) == 8, "fields in order");
    static_assert(offsetof(fxArray, maxLen) == 12, "fields in order");
    static_assert(offsetof(fxArray, len) == 16, "fields in order");
    static_assert(offsetof(fxArray, elemSize) == 20, "fields in order");
#pragma GCC diagnostic pop
    static_assert(sizeof(fxArray::elemSize) == 2, "a 16-bit element size");
    static_assert(sizeof(fxArray::len) == 4 && sizeof(fxArray::maxLen) == 4, "32-bit lengths");

    static const void* data(const fxArray& array) { return array.data; }
};

namespace {

class NamedArray : public fxArray {
public:
    using fxArray::fxArray;
    const char* className() const override { return "NamedArray"; }
};

}  // namespace

// Layout.

TEST(fxArray, virtualOperationsHaveTheirWords) {
    EXPECT_EQ(2u, vtableWord(&fxArray::className));
    EXPECT_EQ(3u,
              vtableWord(static_cast<unsigned char (fxArray::*)(fxTranscriber&)>(&fxArray::xdr)));
    EXPECT_EQ(4u, vtableWord(&fxArray::getTypeObj));
    EXPECT_EQ(5u, vtableWord(&fxArray::xdrFail));
    EXPECT_EQ(6u, vtableWord(&fxArray::xdrSuccess));
    EXPECT_EQ(7u, vtableWord(&fxArray::getmem));
    EXPECT_EQ(8u, vtableWord(&fxArray::expand));
    EXPECT_EQ(9u, vtableWord(&fxArray::createElements));
    EXPECT_EQ(10u, vtableWord(&fxArray::destroyElements));
    EXPECT_EQ(11u, vtableWord(&fxArray::copyElements));
    EXPECT_EQ(12u, vtableWord(&fxArray::compareElements));
}

TEST(fxArray, destructorsAreWords0And1OfTheTable) {
    expectDestructorsAtWords0And1<NamedArray>(static_cast<unsigned short>(4), 2u);
}

TEST(fxArray, classNameIsLeftToSubclasses) { EXPECT_TRUE(std::is_abstract<fxArray>::value); }

// Construction.

TEST(fxArray, constructorAllocatesWithoutCreatingElements) {
    const TracingArray array(4, 3);
    EXPECT_EQ(0, array.count);
    EXPECT_EQ(3u, array.length());
    EXPECT_EQ(12u, array.getLen());
    EXPECT_EQ(12u, array.getMaxLen());
    EXPECT_EQ(4, array.getElemSize());
    EXPECT_NE(nullptr, fxArrayLayout::data(array));
    EXPECT_EQ("", array.taken());
}

TEST(fxArray, constructorOfNoElementsAllocatesNothing) {
    const TracingArray array(4, 0);
    EXPECT_EQ(nullptr, fxArrayLayout::data(array));
    EXPECT_EQ(0u, array.length());
    EXPECT_EQ(0u, array.getLen());
    EXPECT_EQ(0u, array.getMaxLen());
}

TEST(fxArray, elementsMayTakeUpTo65535Bytes) {
    const NamedArray array(static_cast<unsigned short>(65535), 2);
    EXPECT_EQ(65535, array.getElemSize());
    EXPECT_EQ(131070u, array.getLen());
    EXPECT_EQ(2u, array.length());
}

TEST(fxArray, copyHasTheSameBytesAndNoSpareCapacity) {
    TracingArray original(4, 0);
    original.count = 2;
    appendInts(original, {10, 20, 30});
    ASSERT_EQ(16u, original.getMaxLen());
    original.taken();

    const TracingArray copy(original);
    EXPECT_EQ(0, copy.count);
    EXPECT_EQ(12u, copy.getLen());
    EXPECT_EQ(12u, copy.getMaxLen());
    EXPECT_EQ(4, copy.getElemSize());
    EXPECT_NE(original.data, copy.data);
    EXPECT_EQ((std::vector<int>{10, 20, 30}), intsOf(copy));
    EXPECT_EQ("", copy.taken());
    EXPECT_EQ("", original.taken()) << "a shallow copy calls no copyElements";
}

TEST(fxArray, copyOfAnEmptyArrayHasNoBlock) {
    TracingArray original(4, 0);
    original.setMaxLength(5);
    const TracingArray copy(original);
    EXPECT_EQ(nullptr, copy.data);
    EXPECT_EQ(0u, copy.getLen());
    EXPECT_EQ(0u, copy.getMaxLen());
    EXPECT_EQ(4, copy.getElemSize());
}

TEST(fxArray, adoptingConstructorTakesTheBlockItself) {
    int* block = static_cast<int*>(std::malloc(8));
    block[0] = 1;
    block[1] = 2;
    const TracingArray array(4u, 8u, block);
    EXPECT_EQ(block, array.data);
    EXPECT_EQ(8u, array.getLen());
    EXPECT_EQ(8u, array.getMaxLen());
    EXPECT_EQ(4, array.getElemSize());
    EXPECT_EQ(0, array.count);
    EXPECT_EQ((std::vector<int>{1, 2}), intsOf(array));
    EXPECT_EQ("", array.taken());
}

TEST(fxArray, adoptingConstructorUsesTheLow16BitsOfTheElementSize) {
    EXPECT_EQ(4, TracingArray(0x10004u, 0u, nullptr).getElemSize());
    EXPECT_EQ(65535, TracingArray(0xFFFFFFFFu, 0u, nullptr).getElemSize());
}

TEST(fxArray, constructorForStreamsHasNoBlock) {
    const TracingArray array(fxArray_type);
    EXPECT_EQ(nullptr, array.data);
    EXPECT_EQ(0, array.count);
    EXPECT_EQ(0u, array.getLen());
    EXPECT_EQ(0u, array.getMaxLen());
    EXPECT_EQ(0u, array.getElemSize());
}

// Destruction.

TEST(fxArray, destroyEndsAllElementsAndLeavesTheFields) {
    TracingArray array(4, 3);
    const void* block = array.data;
    array.destroy();
    EXPECT_EQ("destroy:0+12@12", array.taken());
    EXPECT_EQ(12u, array.getLen());
    EXPECT_EQ(12u, array.getMaxLen());
    EXPECT_EQ(block, array.data);
}

TEST(fxArray, destroyOfAnEmptyArrayEndsNothing) {
    TracingArray array(4, 0);
    array.setMaxLength(2);
    array.taken();
    array.destroy();
    EXPECT_EQ("", array.taken());
}

TEST(fxArray, baseDestructorFreesTheBlockWithoutEndingElements) {
    static int ended;
    class Array : public fxArray {
    public:
        Array() : fxArray(4, 3) {}
        const char* className() const override { return "Array"; }
        void destroyElements(void*, unsigned int) override { ++ended; }
    };
    ended = 0;
    { Array array; }
    EXPECT_EQ(0, ended);
}

TEST(fxArray, concreteDestructorEndsEachElementOnce) {
    CountingArray::resetCounts();
    {
        CountingArray created(3);
        CountingArray copied{1, 2};
        EXPECT_EQ(5, CountingArray::alive());
    }
    EXPECT_EQ(3, CountingArray::created);
    EXPECT_EQ(2, CountingArray::copied);
    EXPECT_EQ(5, CountingArray::destroyed);
}

// The element operations of plain bytes.

TEST(fxArray, createAndDestroyElementsDoNothing) {
    unsigned char bytes[4] = {1, 2, 3, 4};
    NamedArray array(static_cast<unsigned short>(1), 0);
    array.createElements(bytes, 4);
    array.destroyElements(bytes, 4);
    const unsigned char before[4] = {1, 2, 3, 4};
    EXPECT_EQ(0, std::memcmp(before, bytes, 4));
}

TEST(fxArray, copyElementsMayOverlap) {
    const NamedArray array(static_cast<unsigned short>(1), 0);
    for (unsigned int bytes : {1u, 3u, 4u, 5u, 8u, 9u, 100u}) {
        SCOPED_TRACE(bytes);
        char upward[128], downward[128], expected[128];
        for (int i = 0; i < 128; ++i)
            upward[i] = downward[i] = expected[i] = static_cast<char>(i);
        array.copyElements(upward, upward + 1, bytes);
        std::memmove(expected + 1, expected, bytes);
        EXPECT_EQ(0, std::memcmp(expected, upward, 128));

        for (int i = 0; i < 128; ++i)
            expected[i] = static_cast<char>(i);
        array.copyElements(downward + 1, downward, bytes);
        std::memmove(expected, expected + 1, bytes);
        EXPECT_EQ(0, std::memcmp(expected, downward, 128));
    }
}

TEST(fxArray, compareElementsOrdersUnsignedBytesInMemoryOrder) {
    const struct {
        unsigned short size;
        unsigned char a[9], b[9];
        int order;
    } cases[] = {{1, {0x7F}, {0x80}, -1},
                 {1, {0xFF}, {0x01}, 1},
                 {1, {5, 1}, {5, 2}, 0},
                 {2, {0, 1}, {1, 0}, -1},
                 {2, {0, 200}, {0, 100}, 1},
                 {3, {1, 2, 3}, {1, 2, 3}, 0},
                 {3, {1, 2, 3}, {1, 2, 4}, -1},
                 {4, {0, 0, 0, 1}, {1, 0, 0, 0}, -1},
                 {4, {0x80, 0, 0, 0}, {0x7F, 0xFF, 0xFF, 0xFF}, 1},
                 {4, {1, 2, 3, 4, 5}, {1, 2, 3, 4, 6}, 0},
                 {5, {1, 2, 3, 4, 5}, {1, 2, 3, 4, 6}, -1},
                 {8, {0, 0, 0, 0, 0, 0, 0, 0x80}, {0, 0, 0, 0, 0, 0, 0, 1}, 1},
                 {9, {9, 8, 7, 6, 5, 4, 3, 2, 1}, {9, 8, 7, 6, 5, 4, 3, 2, 1}, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "size " << c.size << ", row " << &c - cases);
        const NamedArray array(c.size, 0);
        EXPECT_EQ(c.order, array.compareElements(c.a, c.b));
        EXPECT_EQ(-c.order, array.compareElements(c.b, c.a));
    }
}

TEST(fxArray, elementsOfNoSizeCompareEqual) {
    const NamedArray array(static_cast<unsigned short>(0), 0);
    EXPECT_EQ(0, array.compareElements("a", "b"));
}

// Access.

TEST(fxArray, atIsTheAddressOfAnElement) {
    TracingArray array(3, 4);
    char* block = static_cast<char*>(array.data);
    EXPECT_EQ(block, array.at(0));
    EXPECT_EQ(block + 9, array.at(3));
    const fxArray& constant = array;
    EXPECT_EQ(block + 6, constant.at(2));
}

// Transcription.

TEST(fxArray, typeIsFxArrayType) { EXPECT_EQ(&fxArray_type, &TracingArray(4, 0).getTypeObj()); }

TEST(fxArray, deliberateXdrMakesTheEmbeddedCallWithTheGenericRecord) {
    for (auto direction : {RecordingTranscriber::writer, RecordingTranscriber::reader}) {
        TracingArray array(4, 3);
        fxXDRObj& object = array;
        RecordingTranscriber t(direction);
        EXPECT_EQ(1, object.xdr(t));
        EXPECT_EQ(1, fxArray::xdr(&array, t));
        ASSERT_EQ("embedded:0 embedded:0", t.log());
        for (const TranscriberCall& call : t.calls) {
            EXPECT_EQ(&fxXDRObj_type, call.type);
            EXPECT_EQ(&array, call.previous);
            EXPECT_EQ(&array, call.address);
        }
        EXPECT_EQ(12u, array.getLen());
    }
}

TEST(fxArray, xdrReturnsTheTruthValueOfTheCall) {
    TracingArray array(4, 0);
    for (int returned : {0, 1, 2, 255}) {
        SCOPED_TRACE(returned);
        RecordingTranscriber t(RecordingTranscriber::writer);
        t.success = static_cast<unsigned char>(returned);
        const int expected = returned != 0 ? 1 : 0;
        EXPECT_EQ(expected, static_cast<fxXDRObj&>(array).xdr(t));
        EXPECT_EQ(expected, fxArray::xdr(&array, t));
    }
}
