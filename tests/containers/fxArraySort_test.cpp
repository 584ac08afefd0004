#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxArray.h"
#include "tests/support/heapCalls.h"
#include "tests/support/testArrays.h"

// The expected results were worked out by hand from the algorithm. In the
// derivations T is the temporary, zero at first; "i, j" are where the two
// scans stop; "place" is the final placement, which writes T over e[lo] and
// e[j]. Elements are single digits.

namespace {

using Places = std::vector<std::pair<unsigned int, unsigned int>>;

// An array with one element of `size` equal bytes for each digit.
class DigitArray : public TracingArray {
public:
    DigitArray(unsigned short size, const std::string& digits)
        : TracingArray(size, static_cast<unsigned int>(digits.size())) {
        for (unsigned int i = 0; i < length(); ++i)
            std::memset(at(i), digits[i] - '0', size);
    }

    std::string digits() const {
        std::string result;
        for (unsigned int i = 0; i < length(); ++i) {
            const char* element = static_cast<const char*>(at(i));
            result += static_cast<char>('0' + *element);
            EXPECT_EQ(std::string(getElemSize(), *element), std::string(element, getElemSize()));
        }
        return result;
    }

    // The positions of the elements compared.
    Places compared() const {
        Places places;
        for (const Comparison& c : comparisons)
            places.push_back({positionOf(c.a), positionOf(c.b)});
        return places;
    }

private:
    unsigned int positionOf(const void* element) const {
        const auto offset = static_cast<const char*>(element) - static_cast<const char*>(data);
        return static_cast<unsigned int>(offset) / getElemSize();
    }
};

// The steps of the sort as they are stated, on digits.
class StatedSort {
public:
    explicit StatedSort(const std::string& digits) : e(digits), temp('0') {
        if (!e.empty())
            sort(0, static_cast<unsigned int>(e.size()) - 1);
    }

    std::string e;
    Places compared;

private:
    int compare(unsigned int i, unsigned int pivot) {
        compared.push_back({i, pivot});
        return e[i] - e[pivot];
    }

    void sort(unsigned int lo, unsigned int hi) {
        unsigned int i = lo, j = hi + 1;
        for (;;) {
            while (i < hi && compare(++i, lo) < 0) {
            }
            while (j > lo && compare(--j, lo) > 0) {
            }
            if (i >= j)
                break;
            temp = e[i];
            e[i] = e[j];
            e[j] = temp;
        }
        e[lo] = temp;
        e[j] = temp;
        if (j != 0 && lo < j - 1)
            sort(lo, j - 1);
        if (j + 1 < hi)
            sort(j + 1, hi);
    }

    char temp;
};

// The next of `count` numbers below `limit`, the same in every run.
unsigned int nextRandom(unsigned int& seed, unsigned int limit) {
    seed = seed * 1664525U + 1013904223U;
    return (seed >> 16) % limit;
}

struct SortCase {
    const char *before, *after;
};

const SortCase sortCases[] = {
    {"", ""},

    // lo=hi=0: i=0, j=0; place.
    {"5", "0"},

    // Two. 12: i=1 (2>=1); j=0; place e0; right part empty.
    {"12", "02"},
    // 21: i=1 at the end; j=1 (1<=2); place e0, e1.
    {"21", "00"},
    // 77: i=1, j=1; place e0, e1.
    {"77", "00"},

    // Three. 123: i=1, j=0; place e0. [1,2]: i=2, j=1; place e1.
    {"123", "003"},
    // 132: i=1, j=0; place e0. [1,2] is 32: i=2 at the end, j=2; place both.
    {"132", "000"},
    // 213: i=2 (3>=2); j=1 (1<=2); place e0, e1.
    {"213", "003"},
    // 231: i=1 (3), j=2 (1): exchange, T=3: 213. i=2, j=1; place e0, e1.
    {"231", "333"},
    // 312: i=2 at the end; j=2 (2<=3); place e0, e2: 010. [0,1] is 01: i=1,
    // j=0; place e0.
    {"312", "010"},
    // 321: i=2 at the end, j=2; place e0, e2: 020. [0,1] is 02: place e0.
    {"321", "020"},

    // Five. 12345: each part [lo,4] places T over its first element, up to
    // [3,4]; e4 is a part of its own only for j+1<hi, so it stays.
    {"12345", "00005"},
    // 54321: i=4 at the end, j=4; place e0, e4: 04320. [0,3] is 0432: i=1,
    // j=0; place e0. [1,3] is 432: i=3 at the end, j=3; place e1, e3: 030.
    // [1,2] is 03: i=2, j=1; place e1.
    {"54321", "00300"},
    // 35142: i=1 (5), j=4 (2): exchange, T=5: 32145. i=3 (4), j=2 (1); place
    // e0, e2: 52545. [0,1] is 52: i=1 at the end, j=1; place: 55. [3,4] is
    // 45: i=4, j=3; place e3: 55.
    {"35142", "55555"},
    // 24310: i=1 (4), j=4 (0): T=4: 20314. i=2 (3), j=3 (1): T=3: 20134. i=3,
    // j=2; place e0, e2: 30334. [0,1] is 30: i=1 at the end, j=1; place: 33.
    // [3,4] is 34: i=4, j=3; place e3.
    {"24310", "33334"},
    // 33333: i=1, j=4: T=3. i=2, j=3: T=3. i=3, j=2; place. The parts place 3.
    {"33333", "33333"}};

}  // namespace

TEST(fxArraySort, deliberateTheFinalPlacementOverwritesElements) {
    for (const SortCase& c : sortCases) {
        SCOPED_TRACE(c.before);
        DigitArray array(1, c.before);
        array.qsort();
        EXPECT_EQ(c.after, array.digits());
    }
}

// What is in front of the pivot's place is sorted first, and its last exchange
// decides what the part behind is overwritten with.
TEST(fxArraySort, theFrontHalfIsSortedBeforeTheOther) {
    unsigned int seed = 20240817;
    for (unsigned int n = 0; n < 400; ++n) {
        std::string digits;
        for (unsigned int i = 0; i < n; ++i)
            digits += static_cast<char>('0' + nextRandom(seed, n % 2 == 0 ? 10 : 60));
        SCOPED_TRACE(testing::Message() << n << " elements, seed 20240817");
        const StatedSort stated(digits);
        DigitArray array(1, digits);
        array.qsort();
        ASSERT_EQ(stated.e, array.digits());
        ASSERT_EQ(stated.compared, array.compared());
    }
}

namespace {
// Notes how deep in the stack its elements are compared.
class DepthArray : public DigitArray {
public:
    using DigitArray::DigitArray;
    int compareElements(const void* a, const void* b) const override {
        const char here = 0;
        const auto address = reinterpret_cast<std::uintptr_t>(&here);
        lowest = std::min(lowest, address);
        highest = std::max(highest, address);
        return std::memcmp(a, b, 1);
    }
    std::uintptr_t depth() const { return highest - lowest; }

private:
    mutable std::uintptr_t lowest = UINTPTR_MAX;
    mutable std::uintptr_t highest = 0;
};
}  // namespace

TEST(fxArraySort, theDepthOfTheCallDoesNotDependOnTheOrder) {
    std::string ascending, descending;
    for (int i = 0; i < 2500; ++i)
        ascending += static_cast<char>('0' + i / 20);
    descending.assign(ascending.rbegin(), ascending.rend());
    for (const std::string& digits : {ascending, descending, std::string(2500, '5')}) {
        DepthArray array(1, digits);
        array.qsort();
        EXPECT_LT(array.depth(), 4096u);
    }
}

// Up to 32 bytes the temporary is on the stack, from 33 on the heap. It is
// zero at first in both places.
TEST(fxArraySort, elementSizeDoesNotMatter) {
    for (unsigned int size : {2u, 4u, 7u, 8u, 31u, 32u, 33u, 100u, 2000u}) {
        for (const SortCase& c : sortCases) {
            SCOPED_TRACE(testing::Message() << c.before << ", size " << size);
            DigitArray array(static_cast<unsigned short>(size), c.before);
            array.qsort();
            EXPECT_EQ(c.after, array.digits());
        }
    }
}

TEST(fxArraySort, theTemporaryIsOnTheStackUpTo32Bytes) {
    if (!heapCallsAreCounted())
        GTEST_SKIP() << "the calls of malloc are not counted in this build";
    const struct {
        unsigned short size;
        unsigned long blocks;
    } cases[] = {{1, 0}, {31, 0}, {32, 0}, {33, 1}, {2000, 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.size);
        DigitArray array(c.size, "1");
        array.comparisons.reserve(10);
        const HeapCalls before = heapCalls();
        array.qsort();
        const HeapCalls after = heapCalls();
        EXPECT_EQ(c.blocks, after.allocations - before.allocations);
        EXPECT_EQ(c.blocks, after.releases - before.releases);
    }
}

TEST(fxArraySort, deliberateOneElementIsOverwrittenToo) {
    DigitArray array(4, "7");
    array.qsort(0, 1);
    EXPECT_EQ("0", array.digits());
}

// 32-byte elements leave no trace of an earlier sort in the temporary.
TEST(fxArraySort, eachSortStartsWithAZeroTemporary) {
    DigitArray first(32, "231"), second(32, "123");
    first.qsort();
    second.qsort();
    EXPECT_EQ("333", first.digits());
    EXPECT_EQ("003", second.digits());
}

TEST(fxArraySort, partOfTheArrayIsSortedAlone) {
    const struct {
        unsigned int start, n;
        const char* after;
    } cases[] = {{1, 0, "92318"},
                 {5, 0, "92318"},
                 // 231 as above.
                 {1, 3, "93338"},
                 // 1 alone.
                 {3, 1, "92308"},
                 // 18: i=4, j=3; place e3.
                 {3, 2, "92308"},
                 // 9231: i=3 at the end, j=3; place e0, e3: 0230. [0,2] is
                 // 023: i=1, j=0; place e0. [1,2] is 23: place e1: 03.
                 {0, 4, "00308"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.n << " from " << c.start);
        DigitArray array(4, "92318");
        array.qsort(c.start, c.n);
        EXPECT_EQ(c.after, array.digits());
    }
}

TEST(fxArraySort, sortingNothingComparesNothing) {
    DigitArray array(4, "21"), empty(4, "");
    array.qsort(0, 0);
    array.qsort(1, 0);
    empty.qsort();
    EXPECT_TRUE(array.comparisons.empty());
    EXPECT_TRUE(empty.comparisons.empty());
    EXPECT_EQ("21", array.digits());
}

// The pivot is the element at lo itself, by address, and the second argument.
TEST(fxArraySort, elementsAreComparedWithThePivotInPlace) {
    const struct {
        const char* before;
        Places compared;
    } cases[] = {{"5", {{0, 0}}},
                 {"21", {{1, 0}, {1, 0}}},
                 {"12", {{1, 0}, {1, 0}, {0, 0}}},
                 {"123", {{1, 0}, {2, 0}, {1, 0}, {0, 0}, {2, 1}, {2, 1}, {1, 1}}},
                 {"231", {{1, 0}, {2, 0}, {2, 0}, {1, 0}}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.before);
        DigitArray array(4, c.before);
        array.qsort();
        EXPECT_EQ(c.compared, array.compared());
    }
}

// With the order reversed 123 sorts as 321 does above: i=2 at the end, j=2;
// place e0, e2: 020. [0,1] is 02, of which 2 now comes first: i=1 at the end,
// j=1; place e0, e1.
TEST(fxArraySort, theSubclassesComparisonDecides) {
    class Reversed : public DigitArray {
    public:
        using DigitArray::DigitArray;
        int compareElements(const void* a, const void* b) const override {
            return -DigitArray::compareElements(a, b);
        }
    } array(1, "123");
    array.qsort();
    EXPECT_EQ("000", array.digits());
}

TEST(fxArraySort, noElementIsCopiedByTheVirtualOperations) {
    DigitArray array(4, "35142");
    array.qsort();
    EXPECT_EQ("", array.taken());
}
