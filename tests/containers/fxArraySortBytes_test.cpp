// The sort of arrays that compare bytes, beside the steps as they are stated: every byte of the
// array and of the temporary has to come out the same.

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxArray.h"
#include "kelvofxds/containers/fxTypedArrays.h"

namespace {

// The stated steps on elements of `size` bytes.
class StatedBytes {
public:
    StatedBytes(const std::string& bytes, unsigned int elemSize, const std::string& temporary)
        : e(bytes), temp(temporary), size(elemSize) {}

    void sort(unsigned int lo, unsigned int hi) {
        for (;;) {
            const unsigned int j = partitioned(lo, hi);
            if (j != 0 && lo < j - 1)
                sort(lo, j - 1);
            if (j + 1 >= hi)
                return;
            lo = j + 1;
        }
    }

    std::string e, temp;

private:
    char* at(unsigned int i) { return &e[i * size]; }
    int compare(unsigned int i, unsigned int pivot) { return std::memcmp(at(i), at(pivot), size); }

    unsigned int partitioned(unsigned int lo, unsigned int hi) {
        unsigned int i = lo, j = hi + 1;
        for (;;) {
            while (i < hi && compare(++i, lo) < 0) {
            }
            while (j > lo && compare(--j, lo) > 0) {
            }
            if (i >= j)
                break;
            std::memcpy(&temp[0], at(i), size);
            std::memmove(at(i), at(j), size);
            std::memcpy(at(j), &temp[0], size);
        }
        std::memcpy(at(lo), &temp[0], size);
        std::memcpy(at(j), &temp[0], size);
        return j;
    }

    unsigned int size;
};

// An array whose class changes nothing but its name, sorted with a temporary
// that is known.
class Bytes : public fxArray {
public:
    Bytes(const std::string& bytes, unsigned int size)
        : fxArray(static_cast<unsigned short>(size),
                  static_cast<unsigned int>(bytes.size()) / size) {
        std::memcpy(data, bytes.data(), bytes.size());
    }
    const char* className() const override { return "Bytes"; }
    void sort(unsigned int lo, unsigned int hi, std::string& temp) {
        qsortInternal(lo, hi, &temp[0]);
    }
    std::string bytes() const { return std::string(static_cast<const char*>(data), len); }
};

testing::AssertionResult sortsAsStated(const std::string& bytes, unsigned int size, unsigned int lo,
                                       unsigned int hi, const std::string& temp) {
    StatedBytes stated(bytes, size, temp);
    stated.sort(lo, hi);
    Bytes array(bytes, size);
    std::string carried = temp;
    array.sort(lo, hi, carried);
    if (array.bytes() == stated.e && carried == stated.temp)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << bytes.size() / size << " elements of " << size;
}

// `value` as an element of `size` bytes, the most significant byte first or
// last.
std::string element(unsigned int value, unsigned int size, bool mostFirst) {
    std::string bytes(size, '\0');
    const unsigned int used = std::min(size, 4u);
    for (unsigned int i = 0; i < used; ++i)
        bytes[mostFirst ? used - 1 - i : i] = static_cast<char>(value >> (8 * i));
    return bytes;
}

const char* const kinds[] = {"random",     "few values",       "ascending",         "descending",
                             "organ pipe", "nearly ascending", "nearly descending", "saw",
                             "zigzag"};

// `n` values in the order called `kind`.
std::vector<unsigned int> valuesOf(const std::string& kind, unsigned int n, std::mt19937& random) {
    std::vector<unsigned int> values(n);
    for (unsigned int& value : values)
        value = static_cast<unsigned int>(random()) % (kind == "few values" ? 4 : 4 * n);
    if (kind.find("scending") != std::string::npos || kind == "organ pipe")
        std::sort(values.begin(), values.end());
    if (kind == "organ pipe")
        std::reverse(values.begin() + n / 2, values.end());
    if (kind.find("descending") != std::string::npos)
        std::reverse(values.begin(), values.end());
    for (int i = 0; i < 3 && kind.find("nearly") == 0; ++i)
        std::swap(values[random() % n], values[random() % n]);
    for (unsigned int i = 0; i < n && (kind == "saw" || kind == "zigzag"); ++i)
        values[i] = kind == "saw" ? i % 7 * 100 + i / 7 : i % 2 == 0 ? n + i : n - i;
    return values;
}

}  // namespace

TEST(fxArraySortBytes, everySmallArrayEndsAsTheStatedStepsLeaveIt) {
    for (unsigned int n = 1; n <= 6; ++n) {
        std::string digits(n, '\0');
        for (;;) {
            for (unsigned int temp = 0; temp <= n; ++temp)
                ASSERT_TRUE(
                    sortsAsStated(digits, 1, 0, n - 1, std::string(1, static_cast<char>(temp))));
            unsigned int p = 0;
            while (p < n && digits[p] == static_cast<char>(n))
                digits[p++] = '\0';
            if (p == n)
                break;
            ++digits[p];
        }
    }
}

TEST(fxArraySortBytes, arraysInEveryOrderEndAsTheStatedStepsLeaveThem) {
    std::mt19937 random(20240817);
    for (unsigned int size : {1u, 2u, 4u, 8u, 12u, 40u}) {
        for (const char* kind : kinds) {
            for (unsigned int run = 0; run < 150; ++run) {
                SCOPED_TRACE(testing::Message() << kind << ", run " << run << ", seed 20240817");
                const unsigned int longest = run % 30 == 0 ? 2500 : run % 5 == 0 ? 300 : 40;
                const unsigned int n = 1 + static_cast<unsigned int>(random()) % longest;
                const bool mostFirst = run % 2 == 0;
                std::string bytes;
                for (unsigned int value : valuesOf(kind, n, random))
                    bytes += element(value, size, mostFirst);
                const auto below = [&](unsigned int limit) {
                    return static_cast<unsigned int>(random()) % limit;
                };
                const unsigned int lo = run % 3 == 0 ? below(n) : 0;
                const unsigned int hi = run % 4 == 0 ? lo + below(n - lo) : n - 1;
                const std::string temp = element(run % 3 == 1 ? below(4 * n) : 0, size, mostFirst);
                ASSERT_TRUE(sortsAsStated(bytes, size, lo, hi, temp));
            }
        }
    }
}

// Step by step each of these would take minutes.
TEST(fxArraySortBytes, noOrderMakesALongSort) {
    const unsigned int n = 400000;
    std::mt19937 random(1);
    for (const char* kind : kinds) {
        SCOPED_TRACE(kind);
        const std::vector<unsigned int> values = valuesOf(kind, n, random);
        fxIntArray array(n);
        for (unsigned int i = 0; i < n; ++i)
            std::memcpy(array.at(i), element(values[i], 4, true).data(), 4);
        std::vector<int> before(&array[0], &array[0] + n);
        before.push_back(0);  // what the temporary holds at first
        std::sort(before.begin(), before.end());

        array.qsort();
        for (unsigned int i = 0; i < n; ++i)
            ASSERT_TRUE(std::binary_search(before.begin(), before.end(), array[i])) << i;
    }
}

TEST(fxArraySortBytes, longRunsInOrderAreOverwrittenLikeShortOnes) {
    const unsigned int n = 300001;
    fxIntArray ascending(n), descending(n);
    for (unsigned int i = 0; i < n; ++i) {
        std::memcpy(ascending.at(i), element(i + 1, 4, true).data(), 4);
        std::memcpy(descending.at(i), element(n - i, 4, true).data(), 4);
    }
    const int last = ascending[n - 1], middle = descending[n / 2];

    ascending.qsort();
    descending.qsort();
    for (unsigned int i = 0; i < n; ++i) {
        ASSERT_EQ(i == n - 1 ? last : 0, ascending[i]) << i;
        ASSERT_EQ(i == n / 2 ? middle : 0, descending[i]) << i;
    }
}
