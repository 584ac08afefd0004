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

class Names : public fxStrArray {
public:
    void copyElements(const void* from, void* to, unsigned int bytes) const override {
        ++copies;
        fxStrArray::copyElements(from, to, bytes);
    }
    mutable int copies = 0;
};

// Classes with loops of their own.
class Pointers : public fxVoidPtrArray {
public:
    void** begin() { return static_cast<void**>(at(0)); }
    void** end() { return begin() + length(); }
};
class Numbers : public fxIntArray {
public:
    int* begin() { return static_cast<int*>(at(0)); }
    int* end() { return begin() + length(); }
};

// A range that cannot be iterated where it is const.
struct Countdown {
    int left;
    struct End {};
    Countdown& begin() { return *this; }
    End end() { return {}; }
    int operator*() const { return left; }
    void operator++() { --left; }
    bool operator!=(End) const { return left != 0; }
};

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

TEST(fxArrayStd, textsOfEveryKindGoThroughTheOperationsOfADerivedClass) {
    host::Names names;
    const fxStr text("c");
    fxAppend(names, "a");
    EXPECT_EQ(1, names.copies);
    fxAppend(names, "b"s);
    EXPECT_EQ(2, names.copies);
    fxAppend(names, "d"sv);
    EXPECT_EQ(3, names.copies);
    fxAppend(names, text);
    EXPECT_EQ(4, names.copies);
    fxAppend(names, text | "d");
    EXPECT_EQ(5, names.copies);
    ASSERT_EQ(5U, names.length());
    EXPECT_EQ("cd"sv, fxView(names[4U]));
}

TEST(fxArrayStd, textsOfEveryKindAreAppendedToAnyArrayOfStrings) {
    fxArrayOf<fxStr> texts;
    fxAppend(texts, "a"s);
    fxAppend(texts, "b\0"sv);
    fxAppend(texts, "c");
    fxAppend(texts, {"d"});
    ASSERT_EQ(4U, texts.length());
    EXPECT_EQ("b\0"sv, fxView(texts[1U]));
}

TEST(fxArrayStd, aClassWithLoopsOfItsOwnIsNoArrayOf) {
    static int object = 0x11111111;
    host::Pointers pointers;
    fxAppend(pointers, &object);
    ASSERT_EQ(1U, pointers.length());
    EXPECT_EQ(&object, pointers[0U]);
    host::Numbers numbers;
    fxAppend(numbers, 5);
    fxAppend(numbers, 0);
    EXPECT_EQ((std::vector<int>{5, 0}), std::vector<int>(numbers.begin(), numbers.end()));
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

TEST(fxArrayStd, rangesThatChangeAsTheyAreReadBecomeArrays) {
    host::Countdown three{3};
    const auto numbers = fxMake<fxIntArray>(three);
    EXPECT_EQ((std::vector<int>{3, 2, 1}), std::vector<int>(begin(numbers), end(numbers)));
    EXPECT_EQ(2U, fxMake<fxIntArray>(host::Countdown{2}).length());
    auto list = {1, 2};
    EXPECT_EQ(2U, fxMake<fxIntArray>(list).length());
    const std::vector<bool> flags{true, false};
    EXPECT_EQ(2U, fxMake<fxBoolArray>(flags).length());
}

TEST(fxArrayStd, containsNarrowsNoNumber) {
    EXPECT_FALSE(contains(fxMake<fxUnsignedCharArray>({44}), 300));
    EXPECT_FALSE(contains(fxMake<fxShortArray>({1}), 65537));
    EXPECT_FALSE(contains(fxMake<fxIntArray>({2}), 2.5));
    EXPECT_FALSE(contains(fxMake<fxBoolArray>({true}), 256));
    EXPECT_FALSE(contains(fxMake<fxIntArray>({-1}), 0xFFFFFFFFU));
    EXPECT_FALSE(contains(fxMake<fxUnsignedLongArray>({0xFFFFFFFFUL}), -1));
    EXPECT_FALSE(contains(fxMake<fxIntArray>({0}), 1LL << 32));
    EXPECT_FALSE(contains(fxMake<fxFloatArray>({0.1F}), 0.1));
    enum Size { large = 300 };
    EXPECT_FALSE(contains(fxMake<fxUnsignedCharArray>({44}), large));
    EXPECT_TRUE(contains(fxMake<fxShortArray>({300}), large));
    EXPECT_TRUE(contains(fxMake<fxUnsignedCharArray>({44}), 44LL));
    EXPECT_TRUE(contains(fxMake<fxLongArray>({16777217}), 16777217U));
    EXPECT_TRUE(contains(fxMake<fxIntArray>({2}), 2.0F));
    EXPECT_TRUE(contains(fxMake<fxFloatArray>({0.5F}), 0.5));
    EXPECT_TRUE(contains(fxMake<fxBoolArray>({true}), true));
    EXPECT_TRUE(contains(fxMake<fxVoidPtrArray>({nullptr}), nullptr));
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
