// fxArrayElements_test.cpp - putting elements in, taking them out, finding them.

#include <malloc.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxArray.h"
#include "tests/support/testArrays.h"

#if defined(__SANITIZE_ADDRESS__)
// From the sanitizer's run-time library, whose headers are not always there.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace {

using Ints = std::vector<int>;

// An array that is full, or one with room for `spare` more.
class IntArray : public TracingArray {
public:
    IntArray(std::initializer_list<int> values, unsigned int spare = 0) : TracingArray(4, 0) {
        appendInts(*this, values);
        setMaxLength(length() + spare);
        taken();
    }
};

// Elements of `size` bytes that compare as fxArray compares them: element i is
// all 'a' but for its last byte, which is 'a' + i.
class PlainArray : public fxArray {
public:
    PlainArray(unsigned int size, unsigned int n) : fxArray(static_cast<unsigned short>(size), n) {
        for (unsigned int i = 0; i < n; ++i) {
            const std::string bytes = bytesOf(i);
            std::memcpy(at(i), bytes.data(), size);
        }
    }
    ~PlainArray() override { destroy(); }
    const char* className() const override { return "PlainArray"; }

    std::string bytesOf(unsigned int i) const {
        return std::string(getElemSize() - 1, 'a') + static_cast<char>('a' + i);
    }
    std::string bytesAt(unsigned int i) const {
        return std::string(static_cast<const char*>(at(i)), getElemSize());
    }
};

// The ints of a block from a raw_ operation, which is freed.
Ints takenFrom(void* block, unsigned int n) {
    Ints result(static_cast<int*>(block), static_cast<int*>(block) + n);
    std::free(block);
    return result;
}

}  // namespace

// append

TEST(fxArrayElements, appendCopiesTheElement) {
    CountingArray::resetCounts();
    CountingArray array;
    for (int i = 1; i <= 9; ++i)
        array.add(i);
    EXPECT_EQ((Ints{1, 2, 3, 4, 5, 6, 7, 8, 9}), array.values());
    EXPECT_EQ(9, CountingArray::copied);
    EXPECT_EQ(0, CountingArray::created + CountingArray::destroyed);
}

TEST(fxArrayElements, appendOfAnArrayCopiesItsElements) {
    CountingArray::resetCounts();
    CountingArray array{1, 2}, other{3, 4, 5};
    CountingArray::resetCounts();
    array.append(other);
    EXPECT_EQ((Ints{1, 2, 3, 4, 5}), array.values());
    EXPECT_EQ((Ints{3, 4, 5}), other.values());
    EXPECT_EQ(3, CountingArray::copied);
    EXPECT_EQ(0, CountingArray::created + CountingArray::destroyed);
}

TEST(fxArrayElements, appendOfItselfDoublesTheArray) {
    for (unsigned int spare : {0u, 1u, 3u, 10u}) {
        SCOPED_TRACE(spare);
        IntArray array({1, 2, 3}, spare);
        array.append(array);
        EXPECT_EQ((Ints{1, 2, 3, 1, 2, 3}), intsOf(array));
    }
    IntArray empty({});
    empty.append(empty);
    EXPECT_EQ(0u, empty.length());

    CountingArray owners{1, 2};
    owners.append(owners);
    EXPECT_EQ((Ints{1, 2, 1, 2}), owners.values());
}

TEST(fxArrayElements, appendTakesAnElementOfTheArrayItself) {
    for (unsigned int spare : {0u, 1u}) {
        for (unsigned int i = 0; i < 3; ++i) {
            SCOPED_TRACE(testing::Message() << spare << " spare, element " << i);
            IntArray array({10, 20, 30}, spare);
            array.append(array.at(i));
            EXPECT_EQ((Ints{10, 20, 30, 10 * (static_cast<int>(i) + 1)}), intsOf(array));
        }
    }
}

// insert

TEST(fxArrayElements, insertMovesTheElementsBehind) {
    const struct {
        unsigned int index;
        Ints expected;
    } cases[] = {{0, {9, 1, 2, 3}}, {1, {1, 9, 2, 3}}, {2, {1, 2, 9, 3}}, {3, {1, 2, 3, 9}}};
    const int value = 9;
    for (const auto& c : cases) {
        for (unsigned int spare : {0u, 1u, 5u}) {
            SCOPED_TRACE(testing::Message() << "at " << c.index << ", spare " << spare);
            IntArray array({1, 2, 3}, spare);
            array.insert(&value, c.index);
            EXPECT_EQ(c.expected, intsOf(array));
        }
    }
}

TEST(fxArrayElements, insertCopiesOneElementAndMovesTheRestByteWise) {
    CountingArray array{1, 2, 3};
    int value = 9;
    int* element = &value;
    CountingArray::resetCounts();
    array.insert(&element, 1);
    EXPECT_EQ((Ints{1, 9, 2, 3}), array.values());
    EXPECT_EQ(1, CountingArray::copied);
    EXPECT_EQ(0, CountingArray::created + CountingArray::destroyed);
}

TEST(fxArrayElements, insertOfAnArrayMovesTheElementsBehind) {
    const struct {
        unsigned int index;
        Ints expected;
    } cases[] = {
        {0, {7, 8, 1, 2, 3}}, {1, {1, 7, 8, 2, 3}}, {2, {1, 2, 7, 8, 3}}, {3, {1, 2, 3, 7, 8}}};
    for (const auto& c : cases) {
        for (unsigned int spare : {0u, 1u, 2u, 5u}) {
            SCOPED_TRACE(testing::Message() << "at " << c.index << ", spare " << spare);
            IntArray array({1, 2, 3}, spare);
            const IntArray other({7, 8});
            array.insert(other, c.index);
            EXPECT_EQ(c.expected, intsOf(array));
            EXPECT_EQ((Ints{7, 8}), intsOf(other));
        }
    }
}

TEST(fxArrayElements, insertOfAnArrayCopiesItsElements) {
    CountingArray array{1, 2}, other{7, 8, 9};
    CountingArray::resetCounts();
    array.insert(other, 1);
    EXPECT_EQ((Ints{1, 7, 8, 9, 2}), array.values());
    EXPECT_EQ(3, CountingArray::copied);
    EXPECT_EQ(0, CountingArray::created + CountingArray::destroyed);
}

// The elements behind the index move up by three first, which leaves
// 1 2 3 2 3 with the copy of 1 2 3 still to come to positions 1 to 3.
TEST(fxArrayElements, insertOfItselfReadsTheElementsAfterTheyMoved) {
    const struct {
        unsigned int index;
        Ints expected;
    } cases[] = {{0, {1, 2, 3, 1, 2, 3}}, {1, {1, 1, 2, 3, 2, 3}}, {3, {1, 2, 3, 1, 2, 3}}};
    for (const auto& c : cases) {
        for (unsigned int spare : {0u, 3u}) {
            SCOPED_TRACE(testing::Message() << "at " << c.index << ", spare " << spare);
            IntArray array({1, 2, 3}, spare);
            array.insert(array, c.index);
            EXPECT_EQ(c.expected, intsOf(array));
        }
    }
}

// 10 20 30 becomes 10 20 20 30 before the element is read at its old position.
TEST(fxArrayElements, insertReadsAnElementOfTheArrayAfterItMoved) {
    for (unsigned int spare : {0u, 1u}) {
        SCOPED_TRACE(spare);
        IntArray behind({10, 20, 30}, spare);
        behind.insert(behind.at(2), 1);
        EXPECT_EQ((Ints{10, 20, 20, 30}), intsOf(behind));

        IntArray before({10, 20, 30}, spare);
        before.insert(before.at(0), 2);
        EXPECT_EQ((Ints{10, 20, 10, 30}), intsOf(before));

        IntArray atEnd({10, 20, 30}, spare);
        atEnd.insert(atEnd.at(2), 3);
        EXPECT_EQ((Ints{10, 20, 30, 30}), intsOf(atEnd));
    }
}

// remove

TEST(fxArrayElements, removeEndsTheElementsThenMovesTheTail) {
    const struct {
        unsigned int start, n;
        const char* trace;
        Ints expected;
    } cases[] = {{0, 0, "", {1, 2, 3, 4, 5}},
                 {5, 0, "", {1, 2, 3, 4, 5}},
                 {0, 1, "destroy:0+4@20", {2, 3, 4, 5}},
                 {1, 2, "destroy:4+8@20", {1, 4, 5}},
                 {1, 3, "destroy:4+12@20", {1, 5}},
                 {4, 1, "destroy:16+4@20", {1, 2, 3, 4}},
                 {3, 2, "destroy:12+8@20", {1, 2, 3}},
                 {0, 5, "destroy:0+20@20", {}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.n << " from " << c.start);
        IntArray array({1, 2, 3, 4, 5});
        array.remove(c.start, c.n);
        EXPECT_EQ(c.expected, intsOf(array));
        EXPECT_EQ(c.trace, array.taken());
        EXPECT_EQ(20u, array.getMaxLen());
    }
}

TEST(fxArrayElements, removeEndsExactlyTheElementsRemoved) {
    CountingArray array{1, 2, 3, 4, 5};
    CountingArray::resetCounts();
    array.remove(1, 3);
    EXPECT_EQ((Ints{1, 5}), array.values());
    EXPECT_EQ(3, CountingArray::destroyed);
    EXPECT_EQ(0, CountingArray::copied + CountingArray::created);
}

// swap

TEST(fxArrayElements, swapExchangesByteWise) {
    IntArray array({1, 2, 3, 4});
    array.swap(0, 3);
    EXPECT_EQ((Ints{4, 2, 3, 1}), intsOf(array));
    array.swap(2, 1);
    EXPECT_EQ((Ints{4, 3, 2, 1}), intsOf(array));
    array.swap(1, 1);
    EXPECT_EQ((Ints{4, 3, 2, 1}), intsOf(array));
    EXPECT_EQ("", array.taken());
}

TEST(fxArrayElements, swapMovesOwnedElementsWithoutCopyingThem) {
    CountingArray array{1, 2};
    CountingArray::resetCounts();
    array.swap(0, 1);
    EXPECT_EQ((Ints{2, 1}), array.values());
    EXPECT_EQ(0, CountingArray::copied + CountingArray::created + CountingArray::destroyed);
}

namespace {

// Bytes in use on the heap.
std::size_t heapInUse() {
#if defined(__SANITIZE_ADDRESS__)
    return __sanitizer_get_current_allocated_bytes();
#else
    return mallinfo2().uordblks;
#endif
}

// Not under a tool with a heap of its own.
bool heapUseIsKnown() {
    const std::size_t before = heapInUse();
    void* volatile block = std::malloc(5000);
    const bool isKnown = heapInUse() > before;
    std::free(block);
    return isKnown;
}

// Exchanges two elements of `size` bytes and returns how far heap use grew.
std::size_t heapGrowthBySwap(unsigned short size) {
    TracingArray array(size, 2);
    std::memset(array.at(0), 'a', size);
    std::memset(array.at(1), 'b', size);
    const std::size_t before = heapInUse();
    array.swap(0, 1);
    const std::size_t growth = heapInUse() - before;
    const std::string first(static_cast<char*>(array.at(0)), size);
    const std::string second(static_cast<char*>(array.at(1)), size);
    EXPECT_EQ(std::string(size, 'b'), first);
    EXPECT_EQ(std::string(size, 'a'), second);
    return growth;
}

}  // namespace

TEST(fxArrayElements, swapOfElementsUpTo1024BytesNeedsNoHeap) {
    for (unsigned int size : {1u, 2u, 1000u, 1024u}) {
        SCOPED_TRACE(size);
        EXPECT_EQ(0u, heapGrowthBySwap(static_cast<unsigned short>(size)));
    }
}

TEST(fxArrayElements, deliberateSwapOfLargerElementsLeaksItsTemporary) {
    if (!heapUseIsKnown())
        GTEST_SKIP() << "the heap is not the C library's under this tool";
    EXPECT_LE(1025u, heapGrowthBySwap(1025));
}

// find

TEST(fxArrayElements, findReturnsTheFirstPositionFromStart) {
    const IntArray array({5, 6, 5, 7});
    const struct {
        int value;
        unsigned int start, expected;
    } cases[] = {{5, 0, 0},          {5, 1, 2},          {5, 2, 2},
                 {5, 3, 0xFFFFFFFF}, {7, 0, 3},          {8, 0, 0xFFFFFFFF},
                 {5, 4, 0xFFFFFFFF}, {5, 5, 0xFFFFFFFF}, {5, 0xFFFFFFFF, 0xFFFFFFFF}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.value << " from " << c.start);
        EXPECT_EQ(c.expected, array.find(&c.value, c.start));
    }
    const int five = 5;
    EXPECT_EQ(0u, array.find(&five));
}

TEST(fxArrayElements, findComparesTheArgumentWithEachElement) {
    IntArray array({5, 6, 7});
    const int six = 6;
    array.find(&six, 0);
    ASSERT_EQ(2u, array.comparisons.size());
    EXPECT_EQ(&six, array.comparisons[0].a);
    EXPECT_EQ(array.at(0), array.comparisons[0].b);
    EXPECT_EQ(&six, array.comparisons[1].a);
    EXPECT_EQ(array.at(1), array.comparisons[1].b);
}

TEST(fxArrayElements, findAtOrPastTheEndComparesNothing) {
    const IntArray array({5, 6, 7});
    const int six = 6;
    EXPECT_EQ(0xFFFFFFFF, array.find(&six, 3));
    EXPECT_EQ(0xFFFFFFFF, array.find(&six, 4));
    const IntArray empty({});
    EXPECT_EQ(0xFFFFFFFF, empty.find(&six, 0));
    EXPECT_TRUE(array.comparisons.empty());
    EXPECT_TRUE(empty.comparisons.empty());
}

TEST(fxArrayElements, findUsesTheSubclassesComparison) {
    const CountingArray array{3, 1, 2};
    int value = 2;
    int* element = &value;
    EXPECT_EQ(2u, array.find(&element, 0));
}

TEST(fxArrayElements, findAndSwapWorkOnEverySizeOfElement) {
    for (unsigned int size : {1u, 2u, 3u, 4u, 5u, 8u, 12u, 16u, 1500u}) {
        SCOPED_TRACE(size);
        PlainArray array(size, 11);
        for (unsigned int i = 0; i < 11; ++i) {
            EXPECT_EQ(i, array.find(array.bytesOf(i).data(), 0));
            EXPECT_EQ(i, array.find(array.bytesOf(i).data(), i));
            EXPECT_EQ(0xFFFFFFFF, array.find(array.bytesOf(i).data(), i + 1));
        }
        EXPECT_EQ(0xFFFFFFFF, array.find(array.bytesOf(11).data(), 0));
    }
    for (unsigned int size : {1u, 2u, 3u, 4u, 5u, 8u, 12u, 16u, 1024u}) {
        SCOPED_TRACE(size);
        PlainArray array(size, 3);
        array.swap(0, 2);
        EXPECT_EQ(array.bytesOf(2), array.bytesAt(0));
        EXPECT_EQ(array.bytesOf(1), array.bytesAt(1));
        EXPECT_EQ(array.bytesOf(0), array.bytesAt(2));
        array.swap(1, 1);
        EXPECT_EQ(array.bytesOf(1), array.bytesAt(1));
    }
}

// The raw_ operations.

TEST(fxArrayElements, rawOperationsOnNothingReturnNull) {
    const IntArray empty({}, 4);
    EXPECT_EQ(nullptr, empty.raw_copy());
    IntArray array({1, 2, 3});
    EXPECT_EQ(nullptr, array.raw_extract(1, 0));
    EXPECT_EQ(nullptr, array.raw_head(0));
    EXPECT_EQ(nullptr, array.raw_tail(0));
    EXPECT_EQ(nullptr, array.raw_cut(1, 0));
    EXPECT_EQ((Ints{1, 2, 3}), intsOf(array));
    EXPECT_EQ("", array.taken());
}

TEST(fxArrayElements, rawCopiesAreBlocksOfTheCallers) {
    const IntArray array({1, 2, 3, 4, 5}, 3);
    EXPECT_EQ((Ints{1, 2, 3, 4, 5}), takenFrom(array.raw_copy(), 5));
    EXPECT_EQ("copy:20", array.taken());
    EXPECT_EQ((Ints{2, 3, 4}), takenFrom(array.raw_extract(1, 3), 3));
    EXPECT_EQ("copy:12", array.taken());
    EXPECT_EQ((Ints{1, 2}), takenFrom(array.raw_head(2), 2));
    EXPECT_EQ("copy:8", array.taken());
    EXPECT_EQ((Ints{4, 5}), takenFrom(array.raw_tail(2), 2));
    EXPECT_EQ("copy:8", array.taken());
    EXPECT_EQ((Ints{1, 2, 3, 4, 5}), takenFrom(array.raw_tail(5), 5));
    EXPECT_EQ((Ints{1, 2, 3, 4, 5}), intsOf(array));
    EXPECT_EQ(32u, array.getMaxLen());
}

TEST(fxArrayElements, rawCutMovesTheElementsOut) {
    const struct {
        unsigned int start, n;
        Ints cut, left;
    } cases[] = {{0, 1, {1}, {2, 3, 4, 5}},
                 {1, 3, {2, 3, 4}, {1, 5}},
                 {3, 2, {4, 5}, {1, 2, 3}},
                 {0, 5, {1, 2, 3, 4, 5}, {}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.n << " from " << c.start);
        IntArray array({1, 2, 3, 4, 5});
        EXPECT_EQ(c.cut, takenFrom(array.raw_cut(c.start, c.n), c.n));
        EXPECT_EQ(c.left, intsOf(array));
        EXPECT_EQ(20u, array.getMaxLen());
        EXPECT_EQ("", array.taken()) << "elements that move are neither copied nor ended";
    }
}

TEST(fxArrayElements, cutElementsBelongToWhoeverAdoptsTheBlock) {
    CountingArray::resetCounts();
    {
        CountingArray array{1, 2, 3, 4};
        CountingArray::resetCounts();
        const CountingArray cut(2, array.raw_cut(1, 2));
        EXPECT_EQ((Ints{2, 3}), cut.values());
        EXPECT_EQ((Ints{1, 4}), array.values());
        EXPECT_EQ(0, CountingArray::copied + CountingArray::created + CountingArray::destroyed);
    }
    EXPECT_EQ(4, CountingArray::destroyed);
}

TEST(fxArrayElements, extractedElementsAreCopies) {
    const CountingArray array{1, 2, 3, 4};
    CountingArray::resetCounts();
    {
        const CountingArray all(4, array.raw_copy());
        const CountingArray middle(2, array.raw_extract(1, 2));
        const CountingArray head(1, array.raw_head(1));
        const CountingArray tail(3, array.raw_tail(3));
        EXPECT_EQ((Ints{1, 2, 3, 4}), all.values());
        EXPECT_EQ((Ints{2, 3}), middle.values());
        EXPECT_EQ((Ints{1}), head.values());
        EXPECT_EQ((Ints{2, 3, 4}), tail.values());
    }
    EXPECT_EQ(10, CountingArray::copied);
    EXPECT_EQ(10, CountingArray::destroyed);
    EXPECT_EQ((Ints{1, 2, 3, 4}), array.values());
}
