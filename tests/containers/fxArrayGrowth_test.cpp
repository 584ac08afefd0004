// fxArrayGrowth_test.cpp - how much an array allocates, and when.

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxArray.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "tests/support/testArrays.h"

namespace {

bool isZero(const void* bytes, unsigned int n) {
    for (unsigned int i = 0; i < n; ++i) {
        if (static_cast<const char*>(bytes)[i] != 0)
            return false;
    }
    return true;
}

void fillWithOnes(fxArray& array) {
    if (array.getLen() != 0)
        std::memset(array.at(0), 1, array.getLen());
}

bool spareIsZero(const fxArray& array) {
    return isZero(static_cast<const char*>(array.at(0)) + array.getLen(),
                  array.getMaxLen() - array.getLen());
}

}  // namespace

// getmem and expand.

TEST(fxArrayGrowth, getmemFreesAtCapacityZero) {
    class Array : public TracingArray {
    public:
        Array() : TracingArray(4, 2) {}
        void setFields(unsigned int newMax, unsigned int newLen) {
            maxLen = newMax;
            len = newLen;
        }
    } array;
    array.setFields(0, 0);
    array.getmem();
    EXPECT_EQ(nullptr, array.data);
    array.getmem();
    EXPECT_EQ(nullptr, array.data);

    array.setFields(24, 0);
    array.getmem();
    EXPECT_NE(nullptr, array.data);
    std::memset(array.data, 1, 24);
}

TEST(fxArrayGrowth, getmemKeepsTheContents) {
    TracingArray array(4, 0);
    appendInts(array, {1, 2, 3});
    array.setMaxLength(1000);
    EXPECT_EQ((std::vector<int>{1, 2, 3}), intsOf(array));
    array.setMaxLength(0);
    EXPECT_EQ((std::vector<int>{1, 2, 3}), intsOf(array));
}

TEST(fxArrayGrowth, deliberateExpandAddsFourElements) {
    for (unsigned int size : {1u, 2u, 3u, 8u, 100u}) {
        SCOPED_TRACE(size);
        TracingArray array(static_cast<unsigned short>(size), 0);
        array.expand();
        EXPECT_EQ(4u * size, array.getMaxLen());
        array.expand();
        EXPECT_EQ(8u * size, array.getMaxLen());
        EXPECT_EQ(0u, array.getLen());
    }
}

// append

TEST(fxArrayGrowth, appendGrowsByFourOnlyWhenFull) {
    TracingArray array(4, 0);
    const struct {
        unsigned int length, capacity;
        const char* trace;
    } cases[] = {
        {1, 16, "expand getmem:16 copy:4"}, {2, 16, "copy:4"}, {3, 16, "copy:4"}, {4, 16, "copy:4"},
        {5, 32, "expand getmem:32 copy:4"}, {6, 32, "copy:4"}, {7, 32, "copy:4"}, {8, 32, "copy:4"},
        {9, 48, "expand getmem:48 copy:4"}, {10, 48, "copy:4"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.length);
        array.append(&c.length);
        EXPECT_EQ(c.length, array.length());
        EXPECT_EQ(c.capacity, array.getMaxLen());
        EXPECT_EQ(c.trace, array.taken());
    }
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}), intsOf(array));
}

TEST(fxArrayGrowth, appendGrowsByFourFromAnyFullCapacity) {
    TracingArray array(4, 7);
    const int value = 8;
    array.append(&value);
    EXPECT_EQ(44u, array.getMaxLen());
    EXPECT_EQ(32u, array.getLen());
}

TEST(fxArrayGrowth, appendOfAnArrayGrowsToTheExactNeed) {
    const struct {
        unsigned int length, capacity, added, capacityAfter;
        bool grows;
    } cases[] = {{0, 0, 0, 0, false},   {0, 0, 1, 4, true},   {3, 3, 2, 20, true},
                 {3, 3, 0, 12, false},  {3, 5, 2, 20, false}, {3, 5, 1, 20, false},
                 {3, 5, 3, 24, true},   {0, 4, 4, 16, false}, {0, 4, 5, 20, true},
                 {1, 1, 100, 404, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.length << " of " << c.capacity << " + " << c.added);
        TracingArray array(4, c.length);
        array.setMaxLength(c.capacity);
        TracingArray other(4, c.added);
        fillWithOnes(other);
        array.taken();
        array.append(other);
        EXPECT_EQ(c.length + c.added, array.length());
        EXPECT_EQ(c.capacityAfter, array.getMaxLen());
        std::string expected = c.grows ? "getmem:" + std::to_string(c.capacityAfter) + " " : "";
        if (c.added != 0)
            expected += "copy:" + std::to_string(4 * c.added);
        EXPECT_EQ(expected, array.taken());
        EXPECT_EQ("", other.taken());
    }
}

// insert

TEST(fxArrayGrowth, insertGrowsByOneElementOnly) {
    TracingArray array(4, 0);
    for (unsigned int n = 1; n <= 10; ++n) {
        array.insert(&n, 0);
        EXPECT_EQ(4 * n, array.getMaxLen());
        EXPECT_EQ("getmem:" + std::to_string(4 * n) + " copy:4", array.taken());
    }
    EXPECT_EQ((std::vector<int>{10, 9, 8, 7, 6, 5, 4, 3, 2, 1}), intsOf(array));
}

TEST(fxArrayGrowth, insertIntoSpareCapacityDoesNotGrow) {
    TracingArray array(4, 0);
    array.setMaxLength(2);
    array.taken();
    const int value = 5;
    array.insert(&value, 0);
    array.insert(&value, 1);
    EXPECT_EQ(8u, array.getMaxLen());
    EXPECT_EQ("copy:4 copy:4", array.taken());
    array.insert(&value, 2);
    EXPECT_EQ(12u, array.getMaxLen());
}

TEST(fxArrayGrowth, insertOfAnArrayGrowsToTheExactNeed) {
    const struct {
        unsigned int length, capacity, added, index, capacityAfter;
        bool grows;
    } cases[] = {{0, 0, 0, 0, 0, false},  {0, 0, 2, 0, 8, true},  {3, 3, 2, 1, 20, true},
                 {3, 5, 2, 3, 20, false}, {3, 4, 2, 0, 20, true}, {3, 3, 0, 1, 12, false},
                 {3, 9, 1, 3, 36, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.length << " of " << c.capacity << " + " << c.added);
        TracingArray array(4, c.length);
        array.setMaxLength(c.capacity);
        TracingArray other(4, c.added);
        fillWithOnes(other);
        array.taken();
        array.insert(other, c.index);
        EXPECT_EQ(c.length + c.added, array.length());
        EXPECT_EQ(c.capacityAfter, array.getMaxLen());
        std::string expected = c.grows ? "getmem:" + std::to_string(c.capacityAfter) + " " : "";
        if (c.added != 0)
            expected += "copy:" + std::to_string(4 * c.added);
        EXPECT_EQ(expected, array.taken());
    }
}

// What counts of the other array is its length in bytes when it is appended, and
// its number of elements when it is inserted.
TEST(fxArrayGrowth, anArrayShorterThanItsElementSizeIsAppendedButNotInserted) {
    for (unsigned int bytes : {1u, 7u}) {
        SCOPED_TRACE(bytes);
        void* block = std::malloc(bytes);
        std::memset(block, 'x', bytes);
        const TracingArray other(8u, bytes, block);
        ASSERT_EQ(0u, other.length());

        TracingArray inserted(1, 0);
        inserted.insert(other, 0);
        EXPECT_EQ("", inserted.taken());
        EXPECT_EQ(0u, inserted.getLen());

        TracingArray appended(1, 0);
        appended.append(other);
        EXPECT_EQ("getmem:" + std::to_string(bytes) + " copy:" + std::to_string(bytes),
                  appended.taken());
        EXPECT_EQ(bytes, appended.getLen());
    }
}

// resize

TEST(fxArrayGrowth, resizeUpwardGetsMemoryThenCreates) {
    TracingArray array(4, 2);
    array.resize(5);
    EXPECT_EQ("getmem:20 create:8+12@8", array.taken());
    EXPECT_EQ(20u, array.getLen());
    EXPECT_EQ(20u, array.getMaxLen());
}

TEST(fxArrayGrowth, resizeDownwardEndsThenGivesMemoryBack) {
    TracingArray array(4, 5);
    array.resize(2);
    EXPECT_EQ("destroy:8+12@20 getmem:8", array.taken());
    EXPECT_EQ(8u, array.getLen());
    EXPECT_EQ(8u, array.getMaxLen());
}

TEST(fxArrayGrowth, resizeToZeroFreesTheBlock) {
    TracingArray array(4, 5);
    array.resize(0);
    EXPECT_EQ("destroy:0+20@20 getmem:0", array.taken());
    EXPECT_EQ(nullptr, array.data);
    EXPECT_EQ(0u, array.getMaxLen());
}

TEST(fxArrayGrowth, resizeFromNothingCreatesAll) {
    TracingArray array(8, 0);
    array.resize(3);
    EXPECT_EQ("getmem:24 create:0+24@0", array.taken());
}

TEST(fxArrayGrowth, resizeToTheLengthTouchesNothingButTheCapacity) {
    TracingArray array(4, 0);
    appendInts(array, {1, 2, 3});
    const void* block = array.data;
    array.taken();
    array.resize(3);
    EXPECT_EQ("", array.taken());
    EXPECT_EQ(12u, array.getMaxLen());
    EXPECT_EQ(12u, array.getLen());
    EXPECT_EQ(block, array.data);
}

TEST(fxArrayGrowth, resizeOfAnEmptyArrayToZeroTouchesNothingButTheCapacity) {
    TracingArray array(4, 0);
    array.setMaxLength(4);
    array.taken();
    array.resize(0);
    EXPECT_EQ("", array.taken());
    EXPECT_EQ(0u, array.getMaxLen());
    const int value = 1;
    array.append(&value);
    EXPECT_EQ(16u, array.getMaxLen());
    EXPECT_EQ((std::vector<int>{1}), intsOf(array));
}

TEST(fxArrayGrowth, resizeWithinTheCapacityShrinksItToTheNewSize) {
    TracingArray array(4, 2);
    array.setMaxLength(100);
    array.taken();
    array.resize(4);
    EXPECT_EQ(16u, array.getMaxLen());
    EXPECT_EQ("getmem:16 create:8+8@8", array.taken());
}

TEST(fxArrayGrowth, resizeKeepsTheElementsThatStay) {
    TracingArray array(4, 0);
    appendInts(array, {1, 2, 3, 4, 5});
    array.resize(2);
    EXPECT_EQ((std::vector<int>{1, 2}), intsOf(array));
    array.resize(3);
    *static_cast<int*>(array.at(2)) = 9;
    EXPECT_EQ((std::vector<int>{1, 2, 9}), intsOf(array));
}

TEST(fxArrayGrowth, resizeCreatesAndEndsElementsExactly) {
    CountingArray::resetCounts();
    {
        CountingArray array;
        array.resize(3);
        EXPECT_EQ(3, CountingArray::created);
        array.resize(1);
        EXPECT_EQ(2, CountingArray::destroyed);
        array.resize(1);
        array.resize(4);
        EXPECT_EQ(6, CountingArray::created);
        EXPECT_EQ(4, CountingArray::alive());
        EXPECT_EQ(0, CountingArray::copied);
    }
    EXPECT_EQ(0, CountingArray::alive());
}

// setMaxLength

TEST(fxArrayGrowth, setMaxLengthSetsTheCapacityButKeepsTheLength) {
    const struct {
        unsigned int length, capacity, wanted, capacityAfter;
        const char* trace;
    } cases[] = {{0, 0, 0, 0, ""},           {0, 0, 10, 40, "getmem:40"},
                 {3, 3, 3, 12, ""},          {3, 3, 5, 20, "getmem:20"},
                 {3, 9, 4, 16, "getmem:16"}, {3, 9, 0, 12, "getmem:12"},
                 {3, 9, 2, 12, "getmem:12"}, {3, 3, 0, 12, ""},
                 {0, 9, 0, 0, "getmem:0"},   {3, 9, 9, 36, ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.length << " of " << c.capacity << " to " << c.wanted);
        TracingArray array(4, c.length);
        array.setMaxLength(c.capacity);
        array.taken();
        array.setMaxLength(c.wanted);
        EXPECT_EQ(c.capacityAfter, array.getMaxLen());
        EXPECT_EQ(4 * c.length, array.getLen());
        EXPECT_EQ(c.trace, array.taken());
        EXPECT_EQ(c.capacityAfter == 0, array.data == nullptr);
    }
}

// Nothing else gives memory back.

TEST(fxArrayGrowth, removingElementsKeepsTheCapacity) {
    TracingArray array(4, 0);
    appendInts(array, {1, 2, 3, 4, 5});
    array.taken();
    array.remove(0, 2);
    EXPECT_EQ("destroy:0+8@20", array.taken());
    std::free(array.raw_cut(0, 3));
    EXPECT_EQ("", array.taken());
    EXPECT_EQ(0u, array.length());
    EXPECT_EQ(32u, array.getMaxLen());
    EXPECT_NE(nullptr, array.data);
}

// Spare bytes can reach a stream.

TEST(fxArrayGrowth, newSpareBytesAreZero) {
    TracingArray array(4, 0);
    const int value = -1;
    array.append(&value);
    EXPECT_TRUE(spareIsZero(array));
    array.setMaxLength(50);
    EXPECT_TRUE(spareIsZero(array));
    array.expand();
    EXPECT_TRUE(spareIsZero(array));
}

namespace {
// An array whose getmem prepares the bytes that it brings, once.
class PreparingArray : public fxArray {
public:
    explicit PreparingArray(bool callsBase) : fxArray(4, 0), forwards(callsBase) {}
    ~PreparingArray() override { destroy(); }
    const char* className() const override { return "PreparingArray"; }
    void getmem() override {
        if (forwards)
            fxArray::getmem();
        else
            data = std::realloc(data, maxLen);
        if (maxLen > prepared)
            std::memset(byteAt(prepared), 7, maxLen - prepared);
        prepared = maxLen;
        // While another array grows, too.
        TracingArray other(4, 0);
        other.setMaxLength(3);
        EXPECT_TRUE(spareIsZero(other));
    }
    std::string spare() const { return std::string(byteAt(len), maxLen - len); }

private:
    bool forwards;
    unsigned int prepared = 0;
};
}  // namespace

TEST(fxArrayGrowth, spareBytesThatASubclassPreparesStay) {
    const int value = -1;
    for (bool forwards : {false, true}) {
        SCOPED_TRACE(forwards);
        PreparingArray array(forwards);
        array.expand();
        EXPECT_EQ(std::string(16, 7), array.spare());
        array.expand();
        EXPECT_EQ(std::string(32, 7), array.spare());
        array.append(&value);
        EXPECT_EQ(std::string(28, 7), array.spare());
        array.setMaxLength(10);
        EXPECT_EQ(std::string(36, 7), array.spare());
        array.resize(2);
        array.setMaxLength(4);
        EXPECT_EQ(std::string(8, 7), array.spare());
        array.insert(&value, 0);
        EXPECT_EQ(std::string(4, 7), array.spare());
        array.append(&value);
        array.append(&value);
        EXPECT_EQ(std::string(12, 7), array.spare());
    }
}

namespace {
// Of an array that prepares them with 0x55.
void expectSpareBytesStay(fxIntArray& array) {
    for (int i = 0; i < 40; ++i) {
        SCOPED_TRACE(i);
        array.append(&i);
        const unsigned int spare = array.getMaxLen() - array.getLen();
        EXPECT_EQ(std::string(spare, 0x55),
                  std::string(static_cast<char*>(array.at(array.length())), spare));
    }
}
}  // namespace

// The base brings nothing then, and so it clears nothing.
TEST(fxArrayGrowth, spareBytesStayThatASubclassPreparesBeforeItCallsTheBase) {
    class Array : public fxIntArray {
    public:
        void getmem() override {
            data = std::realloc(data, maxLen);
            if (maxLen > len)
                std::memset(byteAt(len), 0x55, maxLen - len);
            fxIntArray::getmem();
        }
    } array;
    expectSpareBytesStay(array);
}

TEST(fxArrayGrowth, spareBytesStayThatASubclassPreparesBeyondTheCapacity) {
    class Array : public fxIntArray {
    public:
        void getmem() override {
            if (maxLen <= prepared)
                return;
            prepared = 2 * maxLen;
            data = std::realloc(data, prepared);
            std::memset(byteAt(len), 0x55, prepared - len);
        }

    private:
        unsigned int prepared = 0;
    } array;
    expectSpareBytesStay(array);
}

namespace {
// Grows in steps of its own.
class SteppingArray : public fxIntArray {
public:
    using fxIntArray::fxIntArray;
    void expand() override {
        maxLen += step;
        getmem();
    }
    unsigned int step = 64;
};

// Blocks of all small sizes, as they are handed out next, hold no zero.
void soilTheHeap() {
    void* blocks[64];
    for (unsigned int round = 0; round < 4; ++round) {
        for (unsigned int i = 0; i < 64; ++i)
            blocks[i] = std::memset(std::malloc(16 * i + 12), 0xAA, 16 * i + 12);
        for (void* block : blocks)
            std::free(block);
    }
}
}  // namespace

TEST(fxArrayGrowth, newSpareBytesAreZeroWhenASubclassSetsTheCapacity) {
    for (unsigned int step : {4u, 8u, 12u, 20u, 64u}) {
        for (unsigned int length : {0u, 1u, 2u, 5u, 9u, 20u}) {
            SCOPED_TRACE(testing::Message() << length << " ints, steps of " << step);
            soilTheHeap();
            SteppingArray array(length);
            array.step = step;
            fillWithOnes(array);
            for (int i = 0; i < 40; ++i) {
                array.append(&i);
                EXPECT_TRUE(spareIsZero(array));
                soilTheHeap();
            }
            SteppingArray copy(array);
            copy.step = step;
            while (copy.getLen() != copy.getMaxLen())
                copy.append(&length);
            copy.append(&length);
            EXPECT_TRUE(spareIsZero(copy));
        }
    }
}

// Also where the library has changed the capacity before.
TEST(fxArrayGrowth, newSpareBytesAreZeroWhenASubclassSetsTheCapacityInTurn) {
    for (unsigned int n = 1; n < 20; ++n) {
        SCOPED_TRACE(n);
        void (*const steps[])(fxArray&, unsigned int) = {
            [](fxArray& array, unsigned int count) { array.resize(count); },
            [](fxArray& array, unsigned int count) { array.setMaxLength(count); },
            [](fxArray& array, unsigned int count) { array.insert(&count, 0); },
            [](fxArray& array, unsigned int count) { array.append(fxIntArray(count)); }};
        for (const auto& step : steps) {
            soilTheHeap();
            SteppingArray array;
            array.step = 4;
            step(array, n);
            fillWithOnes(array);
            array.expand();
            EXPECT_TRUE(spareIsZero(array));
            array.expand();
            EXPECT_TRUE(spareIsZero(array));
        }
    }
}

TEST(fxArrayGrowth, newSpareBytesAreZeroWhenAnotherArrayGrowsMeanwhile) {
    class Array : public fxArray {
    public:
        Array() : fxArray(4, 0) {}
        const char* className() const override { return "Array"; }
        void getmem() override {
            TracingArray other(4, 0);
            other.setMaxLength(3);
            std::memset(other.data, 7, 12);
            fxArray::getmem();
        }
    } array;
    // What a block held before is there again when it is new.
    std::free(std::memset(std::malloc(400), 7, 400));
    array.setMaxLength(100);
    EXPECT_TRUE(spareIsZero(array));
}

TEST(fxArrayGrowth, bytesOfRemovedElementsStayInTheSpareCapacity) {
    TracingArray array(4, 0);
    appendInts(array, {1, 2, 3, 4});
    array.remove(2, 2);
    array.setMaxLength(6);
    const int expected[] = {1, 2, 3, 4, 0, 0};
    EXPECT_EQ(0, std::memcmp(expected, array.data, sizeof expected));
}

// Sizes that cannot be met.

namespace {
void expectTooLarge(void (*act)(TracingArray&)) {
    TracingArray array(4, 3);
    EXPECT_EXIT(act(array), testing::KilledBySignal(SIGABRT), "^fxArray: size too large\n$");
}

// Says that its elements are almost 4 GB.
class HugeArray : public TracingArray {
public:
    HugeArray() : TracingArray(4, 0) { len = maxLen = 0xFFFFFFF8; }
    ~HugeArray() override { len = maxLen = 0; }
};
}  // namespace

TEST(fxArrayGrowthDeathTest, aNumberOfElementsOver32BitsEndsTheProcess) {
    expectTooLarge([](TracingArray&) { TracingArray(4, 0x40000000); });
    expectTooLarge([](TracingArray&) { TracingArray(65535, 65538); });
    expectTooLarge([](TracingArray&) { fxIntArray(0x40000001); });
    expectTooLarge([](TracingArray& array) { array.resize(0x40000001); });
    expectTooLarge([](TracingArray& array) { array.resize(0xFFFFFFFF); });
    expectTooLarge([](TracingArray& array) { array.setMaxLength(0x40000000); });
    expectTooLarge([](TracingArray& array) { array.setMaxLength(0xFFFFFFFF); });
    expectTooLarge([](TracingArray& array) { array.remove(0, 0x40000000); });
    expectTooLarge([](TracingArray& array) { array.insert(array.at(0), 0x40000000); });
    expectTooLarge([](TracingArray& array) { array.insert(array, 0x40000001); });
    expectTooLarge([](TracingArray& array) { array.raw_extract(0, 0x40000000); });
    expectTooLarge([](TracingArray& array) { array.raw_extract(0x40000000, 1); });
    expectTooLarge([](TracingArray& array) { array.raw_head(0x40000001); });
    expectTooLarge([](TracingArray& array) { array.raw_tail(0x40000001); });
    expectTooLarge([](TracingArray& array) { array.raw_cut(0, 0x40000000); });
    expectTooLarge([](TracingArray& array) { array.raw_cut(0x40000001, 1); });
    expectTooLarge([](TracingArray& array) { array.qsort(1, 0xFFFFFFFF); });
    expectTooLarge([](TracingArray&) { fxIntArray(3).extract(0, 0x40000000); });
    expectTooLarge([](TracingArray&) { fxIntArray(3).cut(0, 0x40000001); });
}

TEST(fxArrayGrowthDeathTest, aSumOfSizesOver32BitsEndsTheProcess) {
    expectTooLarge([](TracingArray& array) { array.append(HugeArray()); });
    expectTooLarge([](TracingArray& array) { array.insert(HugeArray(), 1); });
    expectTooLarge([](TracingArray&) { HugeArray().expand(); });
    expectTooLarge([](TracingArray& array) { HugeArray().append(array.at(0)); });
    expectTooLarge([](TracingArray&) {
        TracingArray eight(8, 1);
        class Huge : public HugeArray {
        public:
            Huge() { elemSize = 8; }
        } huge;
        huge.insert(eight.at(0), 0);
    });
}

TEST(fxArrayGrowthDeathTest, aRangeThatEndsOver32BitsEndsTheProcess) {
    void (*const acts[])(fxArray&) = {
        [](fxArray& array) { array.remove(1, 0xFFFFFFFF); },
        [](fxArray& array) { array.remove(0xFFFFFFFF, 1); },
        [](fxArray& array) { array.raw_cut(1, 0xFFFFFFFF); },
        [](fxArray& array) { array.raw_cut(0xFFFFFFFF, 1); },
        [](fxArray& array) { array.raw_extract(1, 0xFFFFFFFF); },
        [](fxArray& array) { array.raw_extract(0xFFFFFFFF, 1); },
    };
    for (const auto& act : acts) {
        SCOPED_TRACE(&act - acts);
        fxCharArray array(8);
        fillWithOnes(array);
        EXPECT_EXIT(act(array), testing::KilledBySignal(SIGABRT), "^fxArray: size too large\n$");
    }
    fxShortArray shorts(8);
    EXPECT_EXIT(shorts.remove(0x7FFFFFFF, 2), testing::KilledBySignal(SIGABRT),
                "^fxArray: size too large\n$");
    EXPECT_EXIT(shorts.cut(0x7FFFFFFF, 2), testing::KilledBySignal(SIGABRT),
                "^fxArray: size too large\n$");
}

// A sanitizer's allocator says something of its own when it returns null.
TEST(fxArrayGrowthDeathTest, runningOutOfMemoryEndsTheProcess) {
    const char* const message = "out of memory\n$";
    EXPECT_EXIT(TracingArray(1, 0xFFFFFF00), testing::KilledBySignal(SIGABRT), message);
    TracingArray empty(1, 0), array(1, 3);
    EXPECT_EXIT(empty.resize(0xFFFFFF00), testing::KilledBySignal(SIGABRT), message);
    EXPECT_EXIT(empty.setMaxLength(0xFFFFFF00), testing::KilledBySignal(SIGABRT), message);
    EXPECT_EXIT(array.resize(0xFFFFFF00), testing::KilledBySignal(SIGABRT), message);
    EXPECT_EXIT(array.setMaxLength(0xFFFFFF00), testing::KilledBySignal(SIGABRT), message);
}

// Each thread with arrays of its own.

TEST(fxArrayGrowth, arraysOfDifferentThreadsHaveNothingInCommon) {
    std::vector<std::thread> threads;
    std::atomic<unsigned int> wrong(0);
    for (int n = 0; n < 4; ++n) {
        threads.emplace_back([n, &wrong] {
            for (int i = 0; i < 100000; ++i) {
                TracingArray array(4, 0);
                array.append(&n);
                array.resize(5);
                array.resize(1);
                if (*static_cast<int*>(array.at(0)) != n || array.getMaxLen() != 4)
                    ++wrong;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(0u, wrong);
}

// Up to the last byte of the block, which may be larger than what was asked for.
TEST(fxArrayGrowth, spareBytesAreZeroAtEverySize) {
    for (unsigned int n = 1; n < 60; ++n) {
        for (unsigned int more = 1; more < 60; ++more) {
            fxCharArray array;
            array.resize(n);
            fillWithOnes(array);
            array.setMaxLength(n + more);
            ASSERT_EQ(n + more, array.getMaxLen());
            ASSERT_TRUE(spareIsZero(array)) << n << " and " << more;
        }
    }
}
