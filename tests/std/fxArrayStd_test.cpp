#include "kelvofxds/containers/fxArrayStd.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxArrayFamilyInternal.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/core/fxTypeObj.h"

using namespace std::string_literals;
using namespace std::string_view_literals;

namespace host {
struct Point {
    int x, y;
    bool operator==(const Point& other) const { return x == other.x && y == other.y; }
};
// An array class of a host, in a namespace, which counts what goes through its own operations.
class Points : public fxArray {
    FX_ARRAY_MEMBERS(Points, Point)
    void copyElements(const void* from, void* to, unsigned int bytes) const override {
        ++copies;
        fxArray::copyElements(from, to, bytes);
    }
    static int copies;
};
int Points::copies = 0;
FX_DEFINE_ARRAY(Points, Point)

class Names : public fxStrArray {};

template <class Container>
int countAll(Container& container) {
    int n = 0;
    for (auto& element : container)
        n += sizeof element != 0;
    return n;
}
}  // namespace host

namespace {
template <class A>
struct fxArrayStdOf : testing::Test {};
using Numbers = testing::Types<fxCharArray, fxShortArray, fxIntArray, fxLongArray, fxFloatArray,
                               fxDoubleArray, fxUnsignedCharArray, fxUnsignedShortArray,
                               fxUnsignedLongArray, fxBoolArray, fxArrayOf<int>, fxArrayOf<short>>;
TYPED_TEST_SUITE(fxArrayStdOf, Numbers);
}  // namespace

TYPED_TEST(fxArrayStdOf, loopsGiveReferencesToTheElements) {
    using T = fxElementOf<TypeParam>;
    TypeParam a = fxMake<TypeParam>({T(1), T(2), T(3)});
    for (T& element : a)
        element = static_cast<T>(element + 1);
    const TypeParam& constant = a;
    std::vector<T> seen;
    for (const T& element : constant)
        seen.push_back(element);
    EXPECT_EQ((std::vector<T>{2, 3, 4}), seen);
}

TYPED_TEST(fxArrayStdOf, anEmptyArrayHasAnEmptyRange) {
    TypeParam a = fxMake<TypeParam>({});
    EXPECT_EQ(0U, a.length());
    for (auto& element : a)
        FAIL() << +element;
}

TYPED_TEST(fxArrayStdOf, whatIsMadeHasNoSpareCapacity) {
    using T = fxElementOf<TypeParam>;
    EXPECT_EQ(3 * sizeof(T), fxMake<TypeParam>({T(1), T(2), T(3)}).getMaxLen());
    EXPECT_EQ(3 * sizeof(T), fxMake<TypeParam>(std::vector<T>{1, 2, 3}).getMaxLen());
}

TYPED_TEST(fxArrayStdOf, appendedValuesArrive) {
    using T = fxElementOf<TypeParam>;
    TypeParam a;
    for (int i = 0; i < 100; ++i)
        fxAppend(a, static_cast<T>(i));
    ASSERT_EQ(100U, a.length());
    for (unsigned int i = 0; i < 100; ++i)
        EXPECT_EQ(static_cast<T>(i), a[i]);
}

TYPED_TEST(fxArrayStdOf, anElementOfTheArrayMayBeAppendedAlsoWhenItMoves) {
    using T = fxElementOf<TypeParam>;
    TypeParam a = fxMake<TypeParam>({T(7)});
    for (int i = 0; i < 50; ++i)
        fxAppend(a, a[0U]);
    EXPECT_EQ(51, std::count(&a[0U], &a[0U] + a.length(), T(7)));
}

TEST(fxArrayStd, typesOfReferencesAreThoseOfTheClasses) {
    fxBoolArray flags;
    fxVoidPtrArray pointers;
    fxStrArray strings;
    const fxIntArray numbers;
    static_assert(std::is_same_v<unsigned char*, decltype(begin(flags))>);
    static_assert(std::is_same_v<void**, decltype(end(pointers))>);
    static_assert(std::is_same_v<fxStr*, decltype(begin(strings))>);
    static_assert(std::is_same_v<const int*, decltype(begin(numbers))>);
    EXPECT_EQ(begin(numbers), end(numbers));
}

TEST(fxArrayStd, appendGrowsGeometrically) {
    fxIntArray a;
    unsigned int capacity = 0, changes = 0;
    for (int i = 0; i < 100000; ++i) {
        fxAppend(a, i);
        changes += a.getMaxLen() != capacity;
        capacity = a.getMaxLen();
    }
    EXPECT_LT(changes, 30U);
    EXPECT_LT(capacity, 2 * a.getLen());
    EXPECT_EQ(4999950000LL, std::accumulate(begin(a), end(a), 0LL));
}

TEST(fxArrayStd, appendOfPointersTakesThePointerItself) {
    int object = 0;
    fxVoidPtrArray a = fxMake<fxVoidPtrArray>({&object, nullptr});
    fxAppend(a, &object);
    fxAppend(a, nullptr);
    ASSERT_EQ(4U, a.length());
    EXPECT_EQ(&object, a[2U]);
    EXPECT_EQ(nullptr, a[3U]);
    EXPECT_TRUE(contains(a, &object));
}

TEST(fxArrayStd, stringsOfAnyKindAreAppended) {
    fxStrArray a;
    const fxStr kept("kept");
    fxAppend(a, kept);
    fxAppend(a, "literal");
    fxAppend(a, "nul\0nul"sv);
    fxAppend(a, "std"s);
    fxAppend(a, kept | "!");
    fxAppend(a, fxStr("moved"));
    fxAppend(a, a[0U]);
    ASSERT_EQ(7U, a.length());
    const std::string_view expected[] = {"kept",  "literal", "nul\0nul"sv, "std",
                                         "kept!", "moved",   "kept"};
    for (unsigned int i = 0; i < 7; ++i)
        EXPECT_EQ(expected[i], fxView(a[i]));
    EXPECT_NE(kept.c_str(), a[0U].c_str());
}

TEST(fxArrayStd, aStringThatIsGivenUpIsTakenOverWithoutACopy) {
    fxStrArray a;
    fxStr given("a text of some length");
    const char* const text = given.c_str();
    fxAppend(a, std::move(given));
    EXPECT_EQ(text, a[0U].c_str());
    EXPECT_EQ(0U, given.length());  // NOLINT(bugprone-use-after-move): that is what is promised
    for (int i = 0; i < 40; ++i)
        fxAppend(a, std::move(a[static_cast<unsigned int>(i)]));
    EXPECT_EQ(text, a[40U].c_str());
    EXPECT_EQ(0U, a[0U].length());
}

TEST(fxArrayStd, arraysOfAHostGoThroughTheirOwnOperations) {
    host::Points points = fxMake<host::Points>({{1, 2}, {3, 4}});
    const int before = host::Points::copies;
    for (int i = 0; i < 100; ++i)
        fxAppend(points, points[1U]);
    EXPECT_EQ(before + 100, host::Points::copies);
    EXPECT_EQ(102U, points.length());
    EXPECT_EQ((host::Point{3, 4}), points[101U]);
    EXPECT_TRUE(contains(points, {3, 4}));
    EXPECT_EQ(102, host::countAll(points));
}

TEST(fxArrayStd, derivedClassesAndNamespacesAreFoundInTemplates) {
    host::Names names;
    fxAppend(names, "a");
    fxAppend(names, "b"s);
    const host::Names& constant = names;
    EXPECT_EQ(2, host::countAll(names));
    EXPECT_EQ(2, host::countAll(constant));
    EXPECT_TRUE(contains(names, "b"));
}

TEST(fxArrayStd, rangesOfOtherKindsBecomeArraysAndBack) {
    const auto strings = fxMake<fxStrArray>(std::vector<std::string>{"a", "b\0c"s});
    EXPECT_EQ("b\0c"sv, fxView(strings[1U]));
    const auto characters = fxMake<fxCharArray>(fxStr("xyz"));
    EXPECT_EQ((std::vector<char>{'x', 'y', 'z'}),
              std::vector<char>(begin(characters), end(characters)));
    const auto numbers = fxMake<fxDoubleArray>(fxMake<fxShortArray>({1, 2}));
    EXPECT_EQ(2.0, numbers[1U]);
    EXPECT_EQ(0U, fxMake<fxIntArray>(std::vector<int>()).getMaxLen());
}

TEST(fxArrayStd, containsComparesValuesWhereFindComparesBytes) {
    const double minusZero = -0.0;
    auto a = fxMake<fxDoubleArray>({0.0, 1.5});
    EXPECT_TRUE(contains(a, minusZero));
    EXPECT_EQ(0xFFFFFFFFU, a.find(&minusZero));
    EXPECT_FALSE(contains(a, 2));
}

TEST(fxArrayStd, containsLooksAtAllBytesOfStrings) {
    const auto a = fxMake<fxStrArray>({"a\0b"sv});
    EXPECT_TRUE(contains(a, "a\0b"sv));
    EXPECT_FALSE(contains(a, "a"));
    EXPECT_FALSE(contains(fxStrArray(), ""));
}

TEST(fxArrayStd, elementsOfOnesOwnAreMovedIntoTheirArray) {
    auto a = fxMake<fxArrayOf<std::string>>({"x"s, "y"s});
    std::string longText(100, 'q');
    const char* const text = longText.data();
    fxAppend(a, std::move(longText));
    EXPECT_EQ(text, a[2U].data());
    EXPECT_TRUE(contains(a, "y"));
    fxRef<fxStrStrDictionary> object(new fxStrStrDictionary);
    auto refs = fxMake<fxArrayOf<fxRef<fxStrStrDictionary>>>({object});
    fxAppend(refs, object);
    EXPECT_EQ(3, object->count);
}
