#include "kelvofxds/containers/fxSortStd.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {
template <class A>
struct fxSortOf : testing::Test {};
using Numbers = testing::Types<fxCharArray, fxShortArray, fxIntArray, fxLongArray, fxFloatArray,
                               fxDoubleArray, fxUnsignedCharArray, fxUnsignedShortArray,
                               fxUnsignedLongArray, fxBoolArray, fxArrayOf<int>, fxArrayOf<double>>;
TYPED_TEST_SUITE(fxSortOf, Numbers);

std::vector<std::string> textsOf(const fxStrArray& a) {
    std::vector<std::string> texts;
    for (const fxStr& s : a)
        texts.push_back(fxString(s));
    return texts;
}
}  // namespace

TYPED_TEST(fxSortOf, sortsByValueWhateverTheSize) {
    using T = fxElementOf<TypeParam>;
    std::mt19937 random(11);
    for (unsigned int n : {0U, 1U, 2U, 3U, 17U, 1000U}) {
        SCOPED_TRACE(testing::Message() << n << " elements, seed 11");
        std::vector<T> expected;
        for (unsigned int i = 0; i < n; ++i)
            expected.push_back(static_cast<T>(static_cast<int>(random() % 60000) - 30000));
        TypeParam a = fxMake<TypeParam>(expected);
        std::sort(expected.begin(), expected.end());
        fxSort(a);
        std::vector<T> sorted;
        for (const T element : a)
            sorted.push_back(element);
        EXPECT_EQ(expected, sorted);
    }
}

TEST(fxSort, ordersWhatQsortDoesNot) {
    auto a = fxMake<fxIntArray>({256, -1, 1});
    fxSort(a);
    EXPECT_EQ((std::vector<int>{-1, 1, 256}), std::vector<int>(begin(a), end(a)));
}

TEST(fxSort, putsNaNsLastAndKeepsTheOrderOfZeros) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    auto a = fxMake<fxDoubleArray>({nan, 0.0, 2, nan, -0.0, -1, nan});
    fxSort(a);
    EXPECT_EQ(-1, a[0U]);
    EXPECT_FALSE(std::signbit(a[1U]));
    EXPECT_TRUE(std::signbit(a[2U]));
    EXPECT_EQ(2, a[3U]);
    for (unsigned int i = 4; i < 7; ++i)
        EXPECT_TRUE(std::isnan(a[i]));
}

TEST(fxSort, byAnOrderOfOnesOwnIsStable) {
    auto a = fxMake<fxIntArray>({31, 12, 11, 32, 21, 22});
    fxSort(a, [](int x, int y) { return x % 10 < y % 10; });
    EXPECT_EQ((std::vector<int>{31, 11, 21, 12, 32, 22}), std::vector<int>(begin(a), end(a)));
}

TEST(fxSort, sortsStringsWithoutACopyOfAText) {
    auto a = fxMake<fxStrArray>({"b", "", "abc", "a", "\xff", ""});
    std::vector<const char*> before, after;
    for (const fxStr& s : a)
        before.push_back(s.c_str());
    fxSort(a);
    for (const fxStr& s : a)
        after.push_back(s.c_str());
    EXPECT_EQ((std::vector<std::string>{"", "", "a", "abc", "b", "\xff"}), textsOf(a));
    EXPECT_TRUE(std::is_permutation(before.begin(), before.end(), after.begin(), after.end()));
}

TEST(fxSort, stringsAlikeUpToANulKeepTheirOrderUnlessAllBytesAreAskedFor) {
    auto a = fxMake<fxStrArray>({"a\0c"sv, "a\0b"sv, "a"sv});
    fxSort(a);
    EXPECT_EQ((std::vector<std::string>{"a\0c"s, "a\0b"s, "a"}), textsOf(a));
    fxSort(a, [](const fxStr& x, const fxStr& y) { return fxView(x) < fxView(y); });
    EXPECT_EQ((std::vector<std::string>{"a", "a\0b"s, "a\0c"s}), textsOf(a));
}

TEST(fxSort, anOrderThatThrowsLeavesStringsAsTheyWere) {
    auto a = fxMake<fxStrArray>({"c", "b", "a", "d"});
    int left = 3;
    const auto order = [&left](const fxStr& x, const fxStr& y) {
        if (left-- == 0)
            throw 1;
        return x < y;
    };
    EXPECT_THROW(fxSort(a, order), int);
    EXPECT_EQ((std::vector<std::string>{"c", "b", "a", "d"}), textsOf(a));
}

TEST(fxSort, sortsElementsOfOnesOwn) {
    auto texts = fxMake<fxArrayOf<std::string>>({"b"s, std::string(50, 'a'), "c"s});
    fxSort(texts, [](const std::string& x, const std::string& y) { return x > y; });
    EXPECT_EQ("c", texts[0U]);
    EXPECT_EQ(50U, texts[2U].size());
    auto strings = fxMake<fxArrayOf<fxStr>>({"b", "a"});
    fxSort(strings);
    EXPECT_EQ("a"sv, fxView(strings[0U]));
}

TEST(fxSort, sortsPointersByAddressOrByWhatTheyLeadTo) {
    int numbers[] = {3, 1, 2};
    auto a = fxMake<fxVoidPtrArray>({&numbers[2], &numbers[0], &numbers[1]});
    fxSort(a);
    EXPECT_EQ(&numbers[0], a[0U]);
    fxSort(a, [](void* x, void* y) { return *static_cast<int*>(x) < *static_cast<int*>(y); });
    EXPECT_EQ(&numbers[1], a[0U]);
    EXPECT_EQ(&numbers[0], a[2U]);
}
