#include "kelvofxds/containers/fxArrayOf.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/str/fxStrArray.h"
#include "tests/support/operations.h"

static_assert(sizeof(fxArrayOf<int>) == sizeof(fxArray), "no storage of its own");
static_assert(sizeof(fxArrayOf<std::string>) == sizeof(fxArray), "no storage of its own");
static_assert(std::is_base_of_v<fxArray, fxArrayOf<int>>, "an array");
static_assert(std::is_nothrow_move_constructible_v<fxArrayOf<int>>, "it hands its block over");
static_assert(std::is_nothrow_move_assignable_v<fxArrayOf<int>>, "it hands its block over");

namespace {

// Knows its own address and tells when it was moved behind its back. Ordered by value.
class Tracked {
public:
    Tracked(int v = 0) : value(v), self(this) { ++alive; }
    Tracked(const Tracked& other) : value(other.value), self(this) {
        EXPECT_TRUE(other.isHere());
        ++alive;
        ++copies;
    }
    Tracked(Tracked&& other) noexcept : value(other.value), self(this) {
        EXPECT_TRUE(other.isHere());
        other.value = -1;
        ++alive;
    }
    Tracked& operator=(const Tracked& other) {
        EXPECT_TRUE(isHere() && other.isHere());
        value = other.value;
        ++copies;
        return *this;
    }
    Tracked& operator=(Tracked&& other) noexcept {
        EXPECT_TRUE(isHere() && other.isHere());
        value = other.value;
        return *this;
    }
    ~Tracked() {
        EXPECT_TRUE(isHere());
        self = nullptr;
        --alive;
    }
    bool isHere() const { return self == this; }

    int value;

    static int alive;
    static int copies;

private:
    const Tracked* self;
};
int Tracked::alive = 0;
int Tracked::copies = 0;

bool operator<(const Tracked& a, const Tracked& b) { return a.value < b.value; }
bool operator==(const Tracked& a, const Tracked& b) { return a.value == b.value; }

// Three bytes, no operators.
struct Triple {
    unsigned char bytes[3];
};
bool same(const Triple& a, const Triple& b) { return std::equal(a.bytes, a.bytes + 3, b.bytes); }
template <class T>
bool same(const T& a, const T& b) {
    return a == b;
}

template <class T>
T made(int i) {
    return T(i);
}
template <>
std::string made(int i) {
    return std::to_string(i) + (i % 2 == 0 ? "" : " and a text that is longer than a word");
}
template <>
fxStr made(int i) {
    return fxStr(made<std::string>(i).c_str());
}
template <>
Triple made(int i) {
    return {{static_cast<unsigned char>(i), 2, static_cast<unsigned char>(i / 256)}};
}

template <class T>
fxArrayOf<T> numbered(int n) {
    fxArrayOf<T> array;
    for (int i = 0; i < n; ++i)
        array.append(made<T>(i));
    return array;
}

template <class T>
class fxArrayOfTyped : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(0, Tracked::alive); }

    static void expectSame(const std::vector<T>& model, const fxArrayOf<T>& array) {
        ASSERT_EQ(model.size(), array.length());
        for (unsigned int i = 0; i < array.length(); ++i)
            ASSERT_TRUE(same(model[i], array[i])) << i;
        EXPECT_LE(array.getLen(), array.getMaxLen());
        if constexpr (std::is_same_v<T, Tracked>) {
            EXPECT_EQ(static_cast<int>(2 * model.size()), Tracked::alive)
                << "the model's, the array's and no others";
        }
    }
};
using Types = testing::Types<char, int, double, Triple, std::string, fxStr, Tracked>;
TYPED_TEST_SUITE(fxArrayOfTyped, Types);

// Builds and changes an array and a vector in the same ways.
template <class T>
class Pair {
public:
    explicit Pair(unsigned int seed) : random(seed) {}

    void step() {
        const unsigned int n = array.length();
        const unsigned int at = below(n + 1);
        const unsigned int some = below(std::min(n - at + 1, 6U));
        const T value = made<T>(static_cast<int>(below(1000)));
        switch (below(n > 60 ? 16 : 15)) {
            case 0:
                array.append(value);
                model.push_back(value);
                break;
            case 1:
                array.insert(value, at);
                model.insert(inModel(at), value);
                break;
            case 2:
                array.append(T(value));
                model.push_back(value);
                break;
            case 3:
                array.insert(T(value), at);
                model.insert(inModel(at), value);
                break;
            case 4:
                ownElement(at);
                break;
            case 5:
                array.remove(at, some);
                model.erase(inModel(at), inModel(at + some));
                break;
            case 6:
                resize(n + some - std::min(n, 3U));
                break;
            case 7:
                array.setMaxLength(below(2 * n + 1));
                break;
            case 8:
                swap();
                break;
            case 9:
                array.append(array);
                doubled(model.size());
                break;
            case 10:
                array.insert(array, at);
                doubled(at);
                break;
            case 11:
                parts(at, some);
                break;
            case 12:
                cut(at, some);
                break;
            case 13:
                throughBase(value);
                break;
            case 14:
                array = fxArrayOf<T>(array);
                array = fxArrayOf<T>(fxArrayOf<T>(array));
                break;
            default:
                array.remove(10, n - 20);
                model.erase(model.begin() + 10, model.end() - 10);
        }
    }

    fxArrayOf<T> array;
    std::vector<T> model;

private:
    typename std::vector<T>::iterator inModel(std::size_t at) {
        return model.begin() + static_cast<int>(at);
    }
    unsigned int below(unsigned int n) { return static_cast<unsigned int>(random() % n); }

    void ownElement(unsigned int at) {
        if (model.empty())
            return;
        const unsigned int from = below(array.length());
        const T value = model[from];
        array.append(array[from]);
        model.push_back(value);
        array.insert(array[from], at);
        model.insert(inModel(at), value);
    }

    void resize(unsigned int n) {
        array.resize(n);
        model.resize(n, T());
    }

    void swap() {
        if (model.empty())
            return;
        const unsigned int i = below(array.length());
        const unsigned int j = below(array.length());
        array.swap(i, j);
        const T value = model[i];
        model[i] = model[j];
        model[j] = value;
    }

    void doubled(std::size_t at) {
        const std::vector<T> copy(model);
        model.insert(inModel(at), copy.begin(), copy.end());
    }

    void parts(unsigned int at, unsigned int n) {
        const fxArrayOf<T> part = array.extract(at, n);
        const fxArrayOf<T> head = array.head(at);
        const fxArrayOf<T> tail = array.tail(array.length() - at);
        array = head;
        array.append(part);
        array.append(tail);
        const std::vector<T> copy(inModel(at), inModel(at + n));
        model.insert(inModel(at), copy.begin(), copy.end());
    }

    void cut(unsigned int at, unsigned int n) {
        fxArrayOf<T> part = array.cut(at, n);
        part.append(array);
        array = std::move(part);
        std::rotate(model.begin(), inModel(at), inModel(at + n));
    }

    void throughBase(const T& value) {
        fxArray& base = array;
        base.append(&value);
        base.append(base);
        model.push_back(value);
        doubled(model.size());
        base.resize(base.length() - 1);
        model.resize(model.size() - 1, T());
    }

    std::mt19937 random;
};

}  // namespace

// The same operations on every kind of element.

TYPED_TEST(fxArrayOfTyped, isEmptyAtFirst) {
    const fxArrayOf<TypeParam> array;
    EXPECT_EQ(0u, array.length());
    EXPECT_EQ(0u, array.getMaxLen());
    EXPECT_EQ(sizeof(TypeParam), array.getElemSize());
    EXPECT_EQ(array.begin(), array.end());
    EXPECT_STREQ("ARRAY", array.className());
}

TYPED_TEST(fxArrayOfTyped, makesElementsWithoutArguments) {
    const fxArrayOf<TypeParam> array(5);
    ASSERT_EQ(5u, array.length());
    for (const TypeParam& each : array)
        EXPECT_TRUE(same(TypeParam(), each));
}

TYPED_TEST(fxArrayOfTyped, doesWhatAVectorDoes) {
    const unsigned int seed = 20260712;
    for (unsigned int run = 0; run < operations(40); ++run) {
        SCOPED_TRACE(testing::Message() << "seed " << seed + run);
        Pair<TypeParam> pair(seed + run);
        for (int i = 0; i < 60; ++i) {
            pair.step();
            TestFixture::expectSame(pair.model, pair.array);
            if (testing::Test::HasFatalFailure())
                return;
        }
    }
}

TYPED_TEST(fxArrayOfTyped, givesBlocksToItsCaller) {
    auto array = numbered<TypeParam>(6);
    fxArrayOf<TypeParam> cut(sizeof(TypeParam), 2 * sizeof(TypeParam), array.raw_cut(1, 2));
    const fxArrayOf<TypeParam> copy(sizeof(TypeParam), array.getLen(), array.raw_copy());
    EXPECT_EQ(nullptr, array.raw_cut(0, 0));
    ASSERT_EQ(4u, array.length());
    ASSERT_EQ(4u, copy.length());
    ASSERT_EQ(2u, cut.length());
    const int left[] = {0, 3, 4, 5};
    for (unsigned int i = 0; i < 4; ++i) {
        EXPECT_TRUE(same(made<TypeParam>(left[i]), array[i]));
        EXPECT_TRUE(same(array[i], copy[i]));
    }
    EXPECT_TRUE(same(made<TypeParam>(1), cut[0]));
    EXPECT_TRUE(same(made<TypeParam>(2), cut[1]));
}

TYPED_TEST(fxArrayOfTyped, movingLeavesAnEmptyArray) {
    auto array = numbered<TypeParam>(3);
    const void* block = array.begin();
    fxArrayOf<TypeParam> moved(std::move(array));
    EXPECT_EQ(block, moved.begin());
    EXPECT_EQ(0u, array.length());
    EXPECT_EQ(nullptr, array.begin());
    array = std::move(moved);
    EXPECT_EQ(block, array.begin());
    fxArrayOf<TypeParam>& same = array;
    array = std::move(same);
    array = same;
    EXPECT_EQ(3u, array.length());
}

TYPED_TEST(fxArrayOfTyped, copiesHaveNoSpareCapacityAndACountOfTheirOwn) {
    auto array = numbered<TypeParam>(5);
    array.setMaxLength(100);
    array.count = 3;
    const fxArrayOf<TypeParam> copy(array);
    EXPECT_EQ(0, copy.count);
    EXPECT_EQ(5u, copy.length());
    EXPECT_EQ(copy.getLen(), copy.getMaxLen());
}

TYPED_TEST(fxArrayOfTyped, emptyPartsOfEmptyArrays) {
    fxArrayOf<TypeParam> array;
    array.append(array);
    array.insert(array, 0);
    array.remove(0, 0);
    array.qsort();
    EXPECT_EQ(0u, array.cut(0, 0).length());
    EXPECT_EQ(0u, array.extract(0, 0).length());
    EXPECT_EQ(0u, array.head(0).length());
    EXPECT_EQ(0u, array.tail(0).length());
    EXPECT_EQ(0u, fxArrayOf<TypeParam>(array).length());
}

// Growth.

TEST(fxArrayOf, growsByHalf) {
    fxArrayOf<int> array;
    unsigned int blocks = 0;
    unsigned int capacity = 0;
    for (int i = 0; i < 100000; ++i) {
        array.append(i);
        blocks += array.getMaxLen() != capacity;
        capacity = array.getMaxLen();
    }
    EXPECT_LE(blocks, 40u);
    EXPECT_GE(blocks, 20u);
    for (int i = 0; i < 100000; ++i)
        ASSERT_EQ(i, array[static_cast<unsigned int>(i)]);
}

TEST(fxArrayOf, movesElementsInsteadOfCopyingThem) {
    fxArrayOf<Tracked> array;
    Tracked::copies = 0;
    for (int i = 0; i < 100; ++i)
        array.append(Tracked(i));
    array.insert(Tracked(7), 0);
    array.remove(3, 5);
    array.setMaxLength(1000);
    array.cut(1, 2);
    array.qsort();
    EXPECT_EQ(0, Tracked::copies);
}

TEST(fxArrayOf, stringsMoveWithTheirBuffers) {
    fxArrayOf<fxStr> array;
    array.append("a text");
    const char* text = array[0].c_str();
    array.setMaxLength(1000);
    array.insert("before", 0);
    EXPECT_EQ(text, array[1].c_str());
}

namespace {
struct Tree {
    int value = 0;
    fxArrayOf<Tree> branches;  // of what is not complete yet
};
int sumOf(const Tree& tree) {
    int sum = tree.value;
    for (const Tree& branch : tree.branches)
        sum += sumOf(branch);
    return sum;
}
}  // namespace

TEST(fxArrayOf, holdsTheClassItIsAMemberOf) {
    Tree root;
    for (int i = 0; i < 10; ++i) {
        Tree branch;
        branch.value = i;
        branch.branches.resize(2);
        branch.branches[1].value = 100;
        root.branches.append(branch);
    }
    EXPECT_EQ(1045, sumOf(root));
    const Tree copy(root);
    root.branches.remove(0, 9);
    EXPECT_EQ(1045, sumOf(copy));
    EXPECT_EQ(109, sumOf(root));
}

TEST(fxArrayOf, holdsArrays) {
    fxArrayOf<fxArrayOf<std::string>> rows(2);
    rows[1].append("text that is longer than a word");
    rows.append(rows[1]);
    rows.insert(rows, 1);
    EXPECT_EQ(6u, rows.length());
    EXPECT_EQ(1u, rows[2].length());
    EXPECT_EQ("text that is longer than a word", rows[5][0]);
}

namespace {
// Cannot be copied or made any more when `left` is 0.
class Limited {
public:
    Limited() { use(); }
    Limited(const Limited& other) : text(other.text) { use(); }
    Limited(Limited&&) = default;
    Limited& operator=(const Limited&) = default;

    std::string text = "text that is longer than a word";
    static int left;

private:
    static void use() {
        if (left-- == 0)
            throw 1;
    }
};
int Limited::left = 0;
}  // namespace

TEST(fxArrayOf, anExceptionLeavesTheElements) {
    Limited::left = 100;
    fxArrayOf<Limited> array(4);
    array[3].text = "last";
    const auto expectSame = [&array] {
        ASSERT_EQ(4u, array.length());
        EXPECT_EQ("text that is longer than a word", array[0].text);
        EXPECT_EQ("last", array[3].text);
    };
    for (int left = 0; left < 2; ++left) {
        const auto restrict = [left] { Limited::left = left; };
        restrict();
        EXPECT_THROW(array.resize(9), int);
        expectSame();
        restrict();
        EXPECT_THROW(array.append(array), int);
        expectSame();
        restrict();
        EXPECT_THROW(array.insert(array, 1), int);
        expectSame();
        restrict();
        EXPECT_THROW(array.extract(0, 3), int);
        restrict();
        EXPECT_THROW(fxArrayOf<Limited> copy(array), int);
        restrict();
        EXPECT_THROW(array = fxArrayOf<Limited>(array), int);
        expectSame();
    }
    Limited::left = 0;
    EXPECT_THROW(array.append(array[0]), int);
    Limited::left = 0;
    EXPECT_THROW(array.insert(array[3], 2), int);
    expectSame();
}

// Finding and sorting.

TEST(fxArrayOf, findsByTheOperators) {
    auto numbers = numbered<double>(5);
    numbers.append(std::nan(""));
    numbers.append(-0.0);
    EXPECT_EQ(3u, numbers.find(3));
    EXPECT_EQ(0u, numbers.find(0));
    EXPECT_EQ(6u, numbers.find(0, 6));
    EXPECT_EQ(0xFFFFFFFFu, numbers.find(7, 7));
    const auto strings = numbered<std::string>(5);
    EXPECT_EQ(3u, strings.find(made<std::string>(3)));
    EXPECT_EQ(0xFFFFFFFFu, strings.find("none"));
    const auto triples = numbered<Triple>(300);
    EXPECT_EQ(270u, triples.find(made<Triple>(270)));
}

namespace {
// Equal by ==, without an order.
struct Named {
    std::string name;
    int unused = 0;
};
bool operator==(const Named& a, const Named& b) { return a.name == b.name; }
}  // namespace

TEST(fxArrayOf, findsByEqualityWhereThereIsNoOrder) {
    fxArrayOf<Named> array;
    array.append({"one", 1});
    array.append({"two", 2});
    EXPECT_EQ(1u, array.find({"two", 77}));
    EXPECT_EQ(0xFFFFFFFFu, array.find({"three", 3}));
}

TEST(fxArrayOf, comparesNumbersAsNumbers) {
    const fxArrayOf<int> ints;
    const int minus = -1, one = 1, many = 256;
    EXPECT_EQ(-1, ints.compareElements(&minus, &one));
    EXPECT_EQ(1, ints.compareElements(&many, &one));
    EXPECT_EQ(0, ints.compareElements(&one, &one));
}

namespace {
struct Ranked {
    int rank;
    int place;
};
bool operator<(const Ranked& a, const Ranked& b) { return a.rank < b.rank; }
}  // namespace

TEST(fxArrayOf, sortsAndKeepsTheOrderOfEquals) {
    std::mt19937 random(4711);
    for (const unsigned int n : {0U, 1U, 2U, 3U, 17U, 1000U, 20000U}) {
        SCOPED_TRACE(n);
        fxArrayOf<Ranked> array;
        for (unsigned int i = 0; i < n; ++i)
            array.append({static_cast<int>(random() % 50), static_cast<int>(i)});
        array.qsort();
        ASSERT_EQ(n, array.length());
        for (unsigned int i = 1; i < n; ++i) {
            EXPECT_LE(array[i - 1].rank, array[i].rank);
            EXPECT_TRUE(array[i - 1].rank < array[i].rank || array[i - 1].place < array[i].place);
        }
    }
}

TEST(fxArrayOf, sortsPartsAndLeavesTheRest) {
    fxArrayOf<Tracked> array;
    for (const int value : {9, 8, 3, 2, 1, 0})
        array.append(value);
    array.qsort(2, 3);
    const int expected[] = {9, 8, 1, 2, 3, 0};
    for (unsigned int i = 0; i < 6; ++i)
        EXPECT_EQ(expected[i], array[i].value);
}

namespace {
class Backward : public fxArrayOf<int> {
public:
    int compareElements(const void* a, const void* b) const override {
        return fxArrayOf<int>::compareElements(b, a);
    }
};
}  // namespace

TEST(fxArrayOf, sortsAndFindsAsASubclassCompares) {
    Backward array;
    for (int i = 0; i < 100; ++i)
        array.append(i * 37 % 100);
    array.qsort();
    for (unsigned int i = 0; i < 100; ++i)
        EXPECT_EQ(99 - static_cast<int>(i), array[i]);
}

TEST(fxArrayOf, sortsWhatHasNoOrderWithoutLoss) {
    // Comparisons with a NaN contradict each other.
    fxArrayOf<double> array;
    for (int i = 0; i < 1000; ++i)
        array.append(i % 3 == 0 ? std::numeric_limits<double>::quiet_NaN() : i * 37 % 1000);
    array.qsort();
    double sum = 0;
    int missing = 0;
    for (const double each : array) {
        if (std::isnan(each))
            ++missing;
        else
            sum += each;
    }
    EXPECT_EQ(334, missing);
    double expected = 0;
    for (int i = 0; i < 1000; ++i)
        expected += i % 3 == 0 ? 0 : i * 37 % 1000;
    EXPECT_EQ(expected, sum);
}

// The type record.

TEST(fxArrayOf, itsRecordDoesNotAnswerToTheName) {
    fxTypeObj* const before = fxTypeObj::findType("ARRAY");
    fxTypeObj& type = fxArrayOf<Ranked>::classType();
    EXPECT_STREQ("ARRAY", type.name);
    EXPECT_EQ(1u, type.version);
    EXPECT_EQ(before, fxTypeObj::findType("ARRAY"));
    EXPECT_NE(&type, before);
    EXPECT_EQ(&type, &fxTypeOf<fxArrayOf<Ranked>>());
    EXPECT_NE(&type, &fxArrayOf<Tracked>::classType());
    EXPECT_EQ(before, fxTypeObj::findType("ARRAY"));
    const fxArrayOf<Ranked> array;
    EXPECT_EQ(&type, &array.getTypeObj());
}

TEST(fxArrayOf, itsRecordMakesAndEndsArrays) {
    fxTypeObj& type = fxArrayOf<Tracked>::classType();
    void* made = type.create(type);
    static_cast<fxArrayOf<Tracked>*>(made)->resize(3);
    EXPECT_EQ(3, Tracked::alive);
    type.destroy(made);
    EXPECT_EQ(0, Tracked::alive);
    type.destroy(nullptr);
}
