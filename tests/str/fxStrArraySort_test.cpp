#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStrArray.h"

namespace {
using Texts = std::vector<std::string>;

fxStrArray arrayOf(const Texts& texts) {
    fxStrArray array;
    for (const std::string& text : texts)
        array.append(fxStr(text.data(), static_cast<unsigned int>(text.size())));
    return array;
}

Texts textsOf(const fxStrArray& array) {
    Texts texts;
    for (unsigned int i = 0; i < array.length(); ++i)
        texts.push_back(std::string(array[i].c_str(), array[i].length()));
    return texts;
}

// Buffers in ascending order; those of empty strings are all the same.
std::vector<const char*> sortedBuffersOf(const fxStrArray& array) {
    std::vector<const char*> buffers;
    for (unsigned int i = 0; i < array.length(); ++i)
        buffers.push_back(array[i].c_str());
    std::sort(buffers.begin(), buffers.end());
    return buffers;
}

bool isBefore(const std::string& a, const std::string& b) {
    return std::strcmp(a.c_str(), b.c_str()) < 0;
}

Texts sorted(Texts texts) {
    std::sort(texts.begin(), texts.end(), isBefore);
    return texts;
}

// Calls check(texts) with every sequence of up to `length` of the `letters`,
// repetitions included.
template <class Check>
void forAllSequences(const Texts& letters, unsigned int length, Check check) {
    Texts texts;
    std::vector<unsigned int> digits;
    for (unsigned int n = 0; n <= length; ++n) {
        digits.assign(n, 0);
        for (bool more = true; more;) {
            texts.clear();
            for (const unsigned int digit : digits)
                texts.push_back(letters[digit]);
            check(texts);
            unsigned int i = 0;
            while (i < n && ++digits[i] == letters.size())
                digits[i++] = 0;
            more = i < n;
        }
    }
}

// A partition about the first element, which is exchanged into its place.
void referenceSort(Texts& e, unsigned int lo, unsigned int hi) {
    const std::string pivot = e[lo];
    unsigned int i = lo;
    unsigned int j = hi + 1;
    for (;;) {
        while (i < hi && isBefore(e[++i], pivot)) {
        }
        while (j > lo && isBefore(pivot, e[--j])) {
        }
        if (i >= j)
            break;
        std::swap(e[i], e[j]);
    }
    std::swap(e[lo], e[j]);
    if (j != 0 && lo < j - 1)
        referenceSort(e, lo, j - 1);
    if (j + 1 < hi)
        referenceSort(e, j + 1, hi);
}
}  // namespace

TEST(fxStrArraySort, sortsInByteOrder) {
    const struct {
        Texts before, after;
    } cases[] = {
        {{}, {}},
        {{"a"}, {"a"}},
        {{"b", "a"}, {"a", "b"}},
        {{"a", "b", "c"}, {"a", "b", "c"}},
        {{"c", "b", "a"}, {"a", "b", "c"}},
        {{"b", "B", "a"}, {"B", "a", "b"}},
        {{"a", "B", "b"}, {"B", "a", "b"}},
        {{"z", "\xE4", "a"}, {"a", "z", "\xE4"}},
        {{"10", "9", "1"}, {"1", "10", "9"}},
        {{"b", "", "a", ""}, {"", "", "a", "b"}},
        {{"same", "same", "same"}, {"same", "same", "same"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.before));
        fxStrArray array = arrayOf(c.before);
        array.qsort();
        EXPECT_EQ(c.after, textsOf(array));
    }
}

TEST(fxStrArraySort, sortsEverySequenceOfFive) {
    forAllSequences({"a", "b", "c", "d", "e"}, 5, [](const Texts& texts) {
        fxStrArray array = arrayOf(texts);
        array.qsort();
        ASSERT_EQ(sorted(texts), textsOf(array)) << testing::PrintToString(texts);
    });
}

TEST(fxStrArraySort, exchangesStringsSoThatEachIsHeldOnce) {
    forAllSequences({"a", "b", "", "d"}, 4, [](const Texts& texts) {
        fxStrArray array = arrayOf(texts);
        const auto buffers = sortedBuffersOf(array);
        array.qsort();
        ASSERT_EQ(buffers, sortedBuffersOf(array)) << testing::PrintToString(texts);
    });
}

TEST(fxStrArraySort, sortsThroughItsBaseClass) {
    forAllSequences({"a", "b", "c", "d"}, 4, [](const Texts& texts) {
        fxStrArray array = arrayOf(texts);
        fxArray& base = array;
        base.qsort();
        ASSERT_EQ(sorted(texts), textsOf(array)) << testing::PrintToString(texts);
    });
}

TEST(fxStrArraySort, sortsAsASubclass) {
    struct Sub : fxStrArray {
        unsigned int field = 0;
    };
    forAllSequences({"a", "b", "c", "d"}, 4, [](const Texts& texts) {
        Sub array;
        array.append(static_cast<const fxArray&>(arrayOf(texts)));
        static_cast<fxArray&>(array).qsort();
        ASSERT_EQ(sorted(texts), textsOf(array)) << testing::PrintToString(texts);
    });
}

TEST(fxStrArraySort, comparesByTheSubclass) {
    struct Reverse : fxStrArray {
        int compareElements(const void* a, const void* b) const override {
            return fxStrArray::compareElements(b, a);
        }
    };
    forAllSequences({"a", "b", "c", "d"}, 4, [](const Texts& texts) {
        Reverse array;
        array.append(static_cast<const fxArray&>(arrayOf(texts)));
        array.qsort();
        Texts expected = sorted(texts);
        std::reverse(expected.begin(), expected.end());
        ASSERT_EQ(expected, textsOf(array)) << testing::PrintToString(texts);
    });
}

TEST(fxStrArraySort, sortsARangeAndNothingElse) {
    const Texts texts = {"e", "d", "c", "b", "a"};
    for (unsigned int start = 0; start <= 5; ++start) {
        for (unsigned int n = 0; start + n <= 5; ++n) {
            SCOPED_TRACE(testing::Message() << n << " from " << start);
            fxStrArray array = arrayOf(texts);
            array.qsort(start, n);
            Texts expected = texts;
            const auto first = expected.begin() + static_cast<int>(start);
            std::sort(first, first + static_cast<int>(n));
            EXPECT_EQ(expected, textsOf(array));
        }
    }
}

// Strings that only differ behind a NUL compare equal; their order is that in
// which the partition leaves them.
TEST(fxStrArraySort, orderOfEqualStringsFollowsThePartition) {
    const Texts letters = {"a", std::string("a\0x", 3), "b", std::string("b\0y", 3)};
    forAllSequences(letters, 5, [](const Texts& texts) {
        fxStrArray array = arrayOf(texts);
        array.qsort();
        Texts expected = texts;
        if (!expected.empty())
            referenceSort(expected, 0, static_cast<unsigned int>(expected.size()) - 1);
        ASSERT_EQ(expected, textsOf(array)) << testing::PrintToString(texts);
    });
}

TEST(fxStrArraySort, sortsAThousandStrings) {
    unsigned int seed = 20240817;
    RecordProperty("seed", static_cast<int>(seed));
    Texts texts;
    for (int i = 0; i < 1000; ++i) {
        seed = seed * 1664525U + 1013904223U;
        texts.push_back(std::to_string(seed % 500));
    }
    fxStrArray array = arrayOf(texts);
    array.qsort();
    EXPECT_EQ(sorted(texts), textsOf(array)) << "seed 20240817";
}

namespace {
// Texts of five digits, which sort as the numbers do.
Texts numbered(const std::vector<unsigned int>& numbers) {
    Texts texts;
    for (const unsigned int number : numbers)
        texts.push_back(std::to_string(10000 + number));
    return texts;
}

// An order of 0 to 3n in which each partition of the whole leaves two numbers
// behind the pivot's place and all others in front of it.
std::vector<unsigned int> alwaysThirdLast(unsigned int n) {
    std::vector<unsigned int> front = {0};
    for (unsigned int i = 0; i < n; ++i) {
        const auto size = static_cast<unsigned int>(front.size());
        std::vector<unsigned int> whole = {size};  // the pivot
        whole.insert(whole.end(), front.begin() + 1, front.end());
        whole.insert(whole.end(), {front[0], size + 1, size + 2});
        front = whole;
    }
    return front;
}

class DepthArray : public fxStrArray {
public:
    int compareElements(const void* a, const void* b) const override {
        const char here = 0;
        const auto address = reinterpret_cast<std::uintptr_t>(&here);
        lowest = std::min(lowest, address);
        highest = std::max(highest, address);
        return fxStrArray::compareElements(a, b);
    }
    std::uintptr_t depth() const { return highest - lowest; }

private:
    mutable std::uintptr_t lowest = UINTPTR_MAX;
    mutable std::uintptr_t highest = 0;
};
}  // namespace

TEST(fxStrArraySort, theDepthOfTheCallDoesNotDependOnTheOrder) {
    std::vector<unsigned int> ascending;
    for (unsigned int i = 0; i < 2500; ++i)
        ascending.push_back(i);
    const std::vector<unsigned int> descending(ascending.rbegin(), ascending.rend());
    const std::vector<unsigned int> equal(2500, 7);
    for (const auto& numbers : {ascending, descending, equal, alwaysThirdLast(800)}) {
        const Texts texts = numbered(numbers);
        DepthArray array;
        array.append(static_cast<const fxArray&>(arrayOf(texts)));
        array.qsort();
        EXPECT_LT(array.depth(), 4096u);
        EXPECT_EQ(sorted(texts), textsOf(array));
    }
}

// Everything of the class that can be replaced is, and yet they are strings.
TEST(fxStrArraySort, exchangesTheStringsOfAClassThatReplacesItsElementOperations) {
    struct Watched : fxStrArray {
        void createElements(void* at, unsigned int bytes) override {
            fxStrArray::createElements(at, bytes);
        }
        void destroyElements(void* at, unsigned int bytes) override {
            fxStrArray::destroyElements(at, bytes);
        }
        void copyElements(const void* from, void* to, unsigned int bytes) const override {
            fxStrArray::copyElements(from, to, bytes);
        }
        int compareElements(const void* a, const void* b) const override {
            return fxStrArray::compareElements(a, b);
        }
        const char* className() const override { return "Watched"; }
    };
    forAllSequences({"a", "b", "c", "d"}, 4, [](const Texts& texts) {
        Watched array;
        array.append(static_cast<const fxArray&>(arrayOf(texts)));
        static_cast<fxArray&>(array).qsort();
        ASSERT_EQ(sorted(texts), textsOf(array)) << testing::PrintToString(texts);
    });
}

// The name and the record say nothing of the elements. Here they are ints, each
// with a word behind it.
TEST(fxStrArraySort, aClassThatReplacesAllThatKnowsStringsIsSortedAsAnyOther) {
    struct IntArray : fxStrArray {
        ~IntArray() override { len = 0; }
        void createElements(void*, unsigned int) override {}
        void destroyElements(void*, unsigned int) override {}
        void copyElements(const void* from, void* to, unsigned int bytes) const override {
            std::memmove(to, from, bytes);
        }
        int compareElements(const void* a, const void* b) const override {
            return *static_cast<const int*>(a) - *static_cast<const int*>(b);
        }
        unsigned char xdr(fxTranscriber&) override { return 1; }
    } array;
    const int values[][2] = {{2, 0}, {3, 0}, {1, 0}};
    for (const auto& value : values)
        static_cast<fxArray&>(array).append(value);
    array.qsort();
    for (unsigned int i = 0; i < 3; ++i)
        EXPECT_EQ(3, *static_cast<const int*>(array.at(i))) << i;
}

TEST(fxStrArraySort, sortedArrayCanBeChangedAndCopied) {
    fxStrArray array = arrayOf({"c", "a", "b"});
    array.qsort();
    const fxStrArray copy(array);
    array[0] = "changed";
    array.remove(1, 1);
    EXPECT_EQ((Texts{"changed", "c"}), textsOf(array));
    EXPECT_EQ((Texts{"a", "b", "c"}), textsOf(copy));
}

// Common beginnings of every length, ends around the eighth byte behind them,
// and texts that are alike.
TEST(fxStrArraySort, sortsManyStringsInEveryOrder) {
    unsigned int seed = 20240817;
    for (const char* beginning : {"", "a", "application.resource."}) {
        Texts texts;
        for (int i = 0; i < 3000; ++i) {
            seed = seed * 1664525U + 1013904223U;
            std::string text = beginning;
            for (unsigned int n = (seed >> 16) % 12; n > 0; --n)
                text += "ab\xFF"[(seed >> (n + 8)) % 3];
            texts.push_back(text);
        }
        const Texts ascending = sorted(texts);
        const Texts descending(ascending.rbegin(), ascending.rend());
        for (const Texts& before : {texts, ascending, descending}) {
            fxStrArray array = arrayOf(before);
            const auto buffers = sortedBuffersOf(array);
            array.qsort();
            ASSERT_EQ(ascending, textsOf(array)) << beginning << ", seed 20240817";
            ASSERT_EQ(buffers, sortedBuffersOf(array)) << beginning << ", seed 20240817";
        }
    }
}

// Step by step it would take minutes.
TEST(fxStrArraySort, sortsManyStringsThatAreInOrderAtOnce) {
    std::vector<unsigned int> ascending;
    for (unsigned int i = 0; i < 80000; ++i)
        ascending.push_back(i);
    const std::vector<unsigned int> descending(ascending.rbegin(), ascending.rend());
    const Texts expected = sorted(numbered(ascending));
    for (const auto& numbers : {ascending, descending, std::vector<unsigned int>(80000, 7)}) {
        const Texts texts = numbered(numbers);
        fxStrArray array = arrayOf(texts);
        array.qsort();
        ASSERT_EQ(numbers.back() == 7 ? texts : expected, textsOf(array));
    }
}
