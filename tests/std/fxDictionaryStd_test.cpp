#include "kelvofxds/containers/fxDictionaryStd.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxSetStd.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "tests/support/testDictionary.h"

using namespace std::string_literals;
using namespace std::string_view_literals;

namespace host {
class Capitals : public fxStrStrDictionary {
public:
    using fxStrStrDictionary::fxStrStrDictionary;
};

// A dictionary from ints to doubles, as small as one can be.
class Weights : public fxDictionary {
public:
    explicit Weights(unsigned int numBuckets = 0)
        : fxDictionary(sizeof(int), sizeof(double), numBuckets) {}
    ~Weights() override { cleanup(); }
    const char* className() const override { return "Weights"; }
    unsigned int hashKey(const void* key) const override { return fxDictionary::hashKey(key); }
    int compareKeys(const void* a, const void* b) const override { return std::memcmp(a, b, 4); }
    void copyKey(const void* from, void* to) const override { std::memcpy(to, from, 4); }
    void copyValue(const void* from, void* to) const override { std::memcpy(to, from, 8); }
    void createValue(void* value) const override { std::memset(value, 0, 8); }
    unsigned char xdrKey(fxTranscriber&, void*) override { return 0; }
    unsigned char xdrValue(fxTranscriber&, void*) override { return 0; }
};
}  // namespace host
template <>
struct fxEntryTypes<host::Weights> {
    using Key = int;
    using Value = double;
};

namespace {
template <class D>
std::map<std::string, std::string> entriesOf(const D& dictionary) {
    std::map<std::string, std::string> entries;
    for (const auto& [key, value] : dictionary)
        entries.emplace(fxString(key), fxString(value));
    return entries;
}

void fill(fxStrStrDictionary& d, int n) {
    for (int i = 0; i < n; ++i)
        d.add(fxStrOf(std::to_string(i)), "v");
}

void fill(fxStrSet& s, int n) {
    for (int i = 0; i < n; ++i)
        s.add(fxStrOf(std::to_string(i)));
}

void addTo(fxStrStrDictionary& d, const fxStr& key) { d.add(key, "v"); }
void addTo(fxStrSet& s, const fxStr& key) { s.add(key); }

const fxStr& keyOf(const std::pair<const fxStr&, fxStr&>& entry) { return entry.first; }
const fxStr& keyOf(const fxStr& key) { return key; }

template <class Container>
struct fxWalkStd : testing::Test {};
using Containers = testing::Types<fxStrStrDictionary, fxStrSet>;
TYPED_TEST_SUITE(fxWalkStd, Containers);
}  // namespace

TEST(fxDictionaryStd, loopsGiveReferencesToKeysAndValues) {
    fxStrStrDictionary d;
    fxAddAll(d, {{"Peru", "Lima"}, {"Togo", "Lome"s}, {"Oman"sv, fxStr("Maskat")}});
    for (auto [key, value] : d)
        value.append('!');
    for (auto& [key, value] : d)
        value.append(key.c_str());
    for (const auto& entry : d)
        entry.second.append('.');
    EXPECT_EQ((std::map<std::string, std::string>{
                  {"Peru", "Lima!Peru."}, {"Togo", "Lome!Togo."}, {"Oman", "Maskat!Oman."}}),
              entriesOf(d));
}

TEST(fxDictionaryStd, referencesAreThoseOfTheClassAndConstIfThatIs) {
    fxVoidPtrDict pointers;
    const fxVoidPtrDict constant;
    fxStrStrDictionary strings;
    static_assert(std::is_same_v<decltype(begin(pointers)->second), void*&>);
    static_assert(std::is_same_v<decltype(begin(constant)->second), void* const&>);
    static_assert(std::is_same_v<decltype(begin(strings)->first), const fxStr&>);
    EXPECT_TRUE(begin(strings) == end(strings));
    EXPECT_TRUE(begin(constant) == end(constant));
}

TEST(fxDictionaryStd, algorithmsAndContainersTakeTheIterators) {
    fxStrStrDictionary d;
    fxAddAll(d, {{"a", "1"}, {"b", "2"}, {"c", "3"}});
    EXPECT_EQ(3, std::distance(begin(d), end(d)));
    const auto found =
        std::find_if(begin(d), end(d), [](const auto& entry) { return entry.second == "2"; });
    ASSERT_TRUE(found != end(d));
    EXPECT_EQ("b"sv, fxView(found->first));
    const std::map<fxStr, fxStr> copy(begin(d), end(d));
    EXPECT_EQ(3U, copy.size());
    auto i = begin(d);
    const fxStr first = i->first;
    EXPECT_TRUE((*i++).first == first);
    EXPECT_FALSE(i->first == first);
}

TEST(fxDictionaryStd, classesDerivedInANamespaceAreTaken) {
    host::Capitals d;
    fxAddAll(d, {{"a", "1"}});
    const host::Capitals& constant = d;
    EXPECT_EQ(1U, entriesOf(constant).size());
    EXPECT_TRUE(contains(d, "a"));
    EXPECT_EQ("1"sv, fxView(value_or(d, "a", "?")));
}

TEST(fxDictionaryStd, aClassOfAHostSaysItsTypes) {
    host::Weights d;
    fxAddAll(d, {{1, 0.5}, {256, 1.5}});
    double sum = 0;
    for (auto& [key, value] : d)
        sum += key * value;
    EXPECT_EQ(384.5, sum);
    EXPECT_TRUE(contains(d, 256));
    EXPECT_FALSE(contains(d, 2));
    EXPECT_EQ(0.5, value_or(d, 1, 9));
    EXPECT_EQ(9, value_or(d, 2, 9));
    EXPECT_EQ(2U, d.length());
}

TEST(fxDictionaryStd, anyDictionaryIsWalkedByItsTypes) {
    TestDictionary d(2);
    for (int i = 0; i < 5; ++i) {
        int* const p = &i;
        d.addInternal(&p, &p);
    }
    std::multiset<int> seen;
    const TestDictionary& constant = d;
    for (auto& [key, value] : fxEntries<int*, int*>(constant))
        seen.insert(*key + *value);
    EXPECT_EQ((std::multiset<int>{0, 2, 4, 6, 8}), seen);
    int three = 3, nine = 9;
    EXPECT_TRUE(contains(fxEntries<int*, int*>(d), &three));
    EXPECT_EQ(&nine, value_or(fxEntries<int*, int*>(d), &nine, &nine));
}

TEST(fxDictionaryStd, valueOrAddsNothingAndOutlivesItsFallback) {
    fxStrStrDictionary d;
    fxAddAll(d, {{"a", "1\0"sv}});
    const fxStr missing = value_or(d, "b", "none"s + "such");
    EXPECT_EQ("nonesuch"sv, fxView(missing));
    EXPECT_EQ("1\0"sv, fxView(value_or(d, "a"sv, "")));
    EXPECT_EQ(1U, d.length());
}

TEST(fxDictionaryStd, valueOrOfPointersHasTheFallbacksType) {
    int here = 1, other = 2;
    fxVoidPtrDict d;
    fxAddAll(d, {{"here", &here}, {"null", nullptr}});
    int* const found = value_or(d, "here", &other);
    EXPECT_EQ(&here, found);
    EXPECT_EQ(&other, value_or(d, "there", &other));
    EXPECT_EQ(nullptr, value_or(d, "null", &other));
    EXPECT_EQ(nullptr, value_or(d, "there", nullptr));
    EXPECT_EQ(&here, value_or<int>(d, "here", nullptr));
}

TEST(fxDictionaryStd, addingAKnownKeyChangesItsValue) {
    fxStrStrDictionary d;
    fxAddAll(d, {{"a", "1"}, {"a", "2"}});
    EXPECT_EQ((std::map<std::string, std::string>{{"a", "2"}}), entriesOf(d));
}

TEST(fxSetStd, loopsGiveConstKeys) {
    fxStrSet s;
    fxAddAll(s, {"b", "a"s, "b"sv, fxStr("c")});
    static_assert(std::is_same_v<const fxStr&, decltype(*begin(s))>);
    std::set<std::string> seen;
    for (const fxStr& key : s)
        seen.insert(fxString(key));
    EXPECT_EQ((std::set<std::string>{"a", "b", "c"}), seen);
    const fxStrSet& constant = s;
    EXPECT_EQ(3, std::distance(begin(constant), end(constant)));
    EXPECT_TRUE(contains(constant, "a"sv));
    EXPECT_FALSE(contains(constant, "d"));
    EXPECT_EQ(3, std::distance(fxKeys<fxStr>(s).begin(), fxKeys<fxStr>(s).end()));
    EXPECT_TRUE(contains(fxKeys<fxStr>(s), "b"));
}

TYPED_TEST(fxWalkStd, removingEveryPresentEntrySkipsNone) {
    TypeParam c(3);
    fill(c, 50);
    int visits = 0;
    for (auto& entry : c) {
        c.remove(fxStr(keyOf(entry)));
        ++visits;
    }
    EXPECT_EQ(50, visits);
    EXPECT_EQ(0U, c.length());
}

TYPED_TEST(fxWalkStd, whateverIsRemovedTheRestIsVisitedOnce) {
    std::mt19937 random(5);
    for (unsigned int trial = 0; trial < 400; ++trial) {
        SCOPED_TRACE(testing::Message() << "trial " << trial << ", seed 5");
        const int n = 40;
        TypeParam c(1 + trial % 3);
        fill(c, n);
        std::set<std::string> left, visited;
        for (int i = 0; i < n; ++i)
            left.insert(std::to_string(i));
        for (auto& entry : c) {
            const std::string present = fxString(keyOf(entry));
            EXPECT_TRUE(visited.insert(present).second) << present;
            EXPECT_TRUE(left.count(present)) << present;
            std::vector<std::string> going;
            if (random() % 2)
                going.push_back(present);
            for (unsigned int k = random() % 5; k != 0; --k)
                going.push_back(std::to_string(random() % n));
            for (const std::string& key : going) {
                c.remove(fxStrOf(key));
                left.erase(key);
            }
        }
        EXPECT_TRUE(std::includes(visited.begin(), visited.end(), left.begin(), left.end()));
        EXPECT_EQ(left.size(), c.length());
    }
}

TYPED_TEST(fxWalkStd, theEntriesBehindThePresentOneMayGoWithIt) {
    TypeParam c(1);
    fill(c, 20);
    std::vector<std::string> order;
    for (auto& entry : c)
        order.push_back(fxString(keyOf(entry)));
    std::vector<std::string> visited;
    std::size_t at = 0;
    for (auto& entry : c) {
        visited.push_back(fxString(keyOf(entry)));
        for (std::size_t i = 0; i < 3 && at + i < order.size(); ++i)
            c.remove(fxStrOf(order[at + i]));
        at += 3;
    }
    EXPECT_EQ((std::vector<std::string>{order[0], order[3], order[6], order[9], order[12],
                                        order[15], order[18]}),
              visited);
}

TYPED_TEST(fxWalkStd, entriesAddedBeforeWhatWasSeenDoNotRepeatTheWalk) {
    TypeParam c(1);
    fill(c, 10);
    int visits = 0;
    for (auto& entry : c) {
        const fxStr present(keyOf(entry));
        if (visits++ % 3 == 1)
            c.remove(present);
        addTo(c, fxStrOf("new " + std::to_string(visits)));
        ASSERT_LT(visits, 100);
    }
    EXPECT_EQ(10, visits);
}

TYPED_TEST(fxWalkStd, anEntryInTheMemoryOfOneThatWasSeenIsNoPlaceOfTheWalk) {
    const auto key = [](int i) { return fxStr(i, "a key with many letters %d"); };
    TypeParam c(1);
    for (int i = 0; i < 4; ++i)
        addTo(c, key(i));
    std::vector<std::string> visited;
    for (auto& entry : c) {
        visited.push_back(fxString(keyOf(entry)));
        if (visited.back() == fxView(key(3)) && visited.size() == 1) {
            c.remove(key(0));
            addTo(c, key(4));  // likely to be where that was
        } else if (visited.back() == fxView(key(2))) {
            c.remove(key(2));
            c.remove(key(1));
            addTo(c, key(5));
            addTo(c, key(6));
        }
    }
    EXPECT_EQ((std::vector<std::string>{fxString(key(3)), fxString(key(2))}), visited);
}

TYPED_TEST(fxWalkStd, whateverIsAddedAndRemovedEachEntryComesOnce) {
    for (unsigned int seed = 0; seed < 3000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        TypeParam c(1 + seed % 3);
        int made = 0;
        std::set<std::string> alive, visited;
        const auto add = [&] {
            alive.insert(std::to_string(made));
            addTo(c, fxStrOf(std::to_string(made++)));
        };
        for (unsigned int n = random() % 12; n != 0; --n)
            add();
        std::set<std::string> staying = alive;
        for (auto& entry : c) {
            const std::string present = fxString(keyOf(entry));
            ASSERT_TRUE(visited.insert(present).second) << present;
            ASSERT_TRUE(alive.count(present)) << present;
            for (unsigned int n = random() % 5; n != 0; --n) {
                if (random() % 3 == 0 && made < 100)
                    add();
                const std::string going =
                    random() % 2 ? present : std::to_string(random() % static_cast<unsigned>(made));
                c.remove(fxStrOf(going));
                alive.erase(going);
                staying.erase(going);
            }
        }
        EXPECT_TRUE(std::includes(visited.begin(), visited.end(), staying.begin(), staying.end()));
    }
}

TYPED_TEST(fxWalkStd, removingThePresentEntryAndTheNextTakesNoSearch) {
    TypeParam c(1);
    const int n = 60000;
    fill(c, n);
    int visits = 0;
    for (auto& entry : c) {
        const int present = std::stoi(fxString(keyOf(entry)));
        c.remove(fxStrOf(std::to_string(present)));
        c.remove(fxStrOf(std::to_string(present - 1)));
        ++visits;
    }
    EXPECT_EQ(n / 2, visits);
}

TYPED_TEST(fxWalkStd, walksAreNestedAndBrokenOff) {
    TypeParam c(2);
    fill(c, 10);
    int pairs = 0;
    for (auto& outer : c) {
        const std::string present = fxString(keyOf(outer));
        for (auto& inner : c) {
            ++pairs;
            if (fxView(keyOf(inner)) == present)
                break;
        }
    }
    EXPECT_EQ(55, pairs);
    for (auto& outer : c) {
        (void)outer;
        for (auto& inner : c)
            c.remove(fxStr(keyOf(inner)));
    }
    EXPECT_EQ(0U, c.length());
}

TYPED_TEST(fxWalkStd, cleanupAndTheContainersEndEndTheWalk) {
    auto c = std::make_unique<TypeParam>(2);
    fill(*c, 10);
    int visits = 0;
    for (auto& entry : *c) {
        (void)entry;
        ++visits;
        c->cleanup();
    }
    EXPECT_EQ(1, visits);
    c = std::make_unique<TypeParam>(2);
    fill(*c, 10);
    for (auto& entry : *c) {
        (void)entry;
        ++visits;
        c.reset();
    }
    EXPECT_EQ(2, visits);
}

TYPED_TEST(fxWalkStd, aCopyOfAnIteratorWalksByItself) {
    TypeParam c(1);
    fill(c, 9);
    auto one = begin(c);
    ++one;
    auto two = one;
    EXPECT_TRUE(one == two);
    ++two;
    EXPECT_TRUE(one != two);
    c.remove(fxStr(keyOf(*two)));
    ++one;
    ++two;
    EXPECT_TRUE(one == two);
    one = end(c);
    EXPECT_TRUE(one == end(c));
    EXPECT_EQ(6, std::distance(two, end(c)));
}

TYPED_TEST(fxWalkStd, aContainerWithoutBucketsIsEmpty) {
    fxTypeObj& type = TypeParam().getTypeObj();
    const std::unique_ptr<TypeParam> c(static_cast<TypeParam*>(TypeParam::newInstance(type)));
    EXPECT_TRUE(begin(*c) == end(*c));
}
