#include "kelvofxds/containers/fxCopyStd.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/testDictionary.h"

template <>
struct fxEntryTypes<TestDictionary> {
    using Key = int*;
    using Value = int*;
};

namespace {
class Derived : public fxStrStrDictionary {
public:
    using fxStrStrDictionary::fxStrStrDictionary;
};

std::vector<std::string> walk(const fxStrStrDictionary& d) {
    std::vector<std::string> seen;
    for (auto& [key, value] : d)
        seen.push_back(fxString(key) + "=" + fxString(value));
    return seen;
}
std::vector<std::string> walk(const fxStrSet& s) {
    std::vector<std::string> seen;
    for (const fxStr& key : s)
        seen.push_back(fxString(key));
    return seen;
}
}  // namespace

TEST(fxCopyInto, aFilledDictionaryIsCopiedInItsOrder) {
    fxStrStrDictionary from(3), to(3);
    for (int i = 0; i < 30; ++i)
        from.add(fxStrOf(std::to_string(i)), fxStrOf(std::to_string(i * i)));
    fxAddAll(to, {{"old", "x"}, {"1", "x"}});
    EXPECT_EQ(&to, &fxCopyInto(from, to));
    EXPECT_EQ(30U, to.length());
    EXPECT_EQ(walk(from), walk(to));
}

TEST(fxCopyInto, valuesAreCopiesOfTheirOwn) {
    fxStrStrDictionary from, to;
    fxAddAll(from, {{"a", "1"}});
    fxCopyInto(from, to);
    *to.find("a") = "2";
    EXPECT_EQ((std::vector<std::string>{"a=1"}), walk(from));
    EXPECT_NE(from.find("a")->c_str(), to.find("a")->c_str());
}

TEST(fxCopyInto, ontoItselfChangesNothing) {
    fxStrStrDictionary d;
    fxAddAll(d, {{"a", "1"}, {"b", "2"}});
    const fxStr* const value = d.find("a");
    fxCopyInto(d, d);
    EXPECT_EQ(2U, d.length());
    EXPECT_EQ(value, d.find("a"));
    fxStrSet s;
    fxAddAll(s, {"a"});
    fxCopyInto(s, s);
    EXPECT_EQ(1U, s.length());
}

TEST(fxCopyInto, anEmptySourceEmptiesTheTarget) {
    fxStrStrDictionary from, to;
    fxAddAll(to, {{"a", "1"}, {"b", "2"}});
    fxCopyInto(from, to);
    EXPECT_EQ(0U, to.length());
    EXPECT_TRUE(begin(to) == end(to));
}

TEST(fxCopyInto, classesWithTheSameEntriesAreCopiedIntoEachOther) {
    Derived derived;
    fxStrStrDictionary base;
    fxAddAll(derived, {{"a", "1"}});
    fxCopyInto(derived, base);
    EXPECT_EQ((std::vector<std::string>{"a=1"}), walk(base));
    fxCopyInto(base, derived);
    EXPECT_EQ(1U, derived.length());
}

TEST(fxCopyInto, setsAreCopiedToo) {
    fxStrSet from(2), to(2);
    fxAddAll(from, {"a", "b", "c", "d"});
    fxAddAll(to, {"x", "a"});
    EXPECT_EQ(&to, &fxCopyInto(from, to));
    EXPECT_EQ(4U, to.length());
    EXPECT_EQ(walk(from), walk(to));
}

TEST(fxCopyInto, walksOfTheTargetAreAtTheirEnd) {
    fxStrStrDictionary from(1), to(1);
    fxAddAll(from, {{"a", "1"}, {"b", "2"}, {"c", "3"}});
    fxAddAll(to, {{"x", "1"}, {"y", "2"}});
    auto walked = begin(to);
    fxStrStrDictionaryIter iter(to);
    fxCopyInto(from, to);
    EXPECT_TRUE(walked == end(to));
    EXPECT_TRUE(++walked == end(to));
    EXPECT_EQ(nullptr, iter.key());
    ++iter;
    EXPECT_EQ(nullptr, iter.key());
    iter = fxStrStrDictionaryIter(to);
    EXPECT_NE(nullptr, iter.key());
    EXPECT_EQ(3U, walk(to).size());

    fxStrSet some(1), others(1);
    fxAddAll(some, {"a", "b"});
    fxAddAll(others, {"x", "y"});
    auto key = begin(others);
    fxStrSetIter setIter(others);
    fxCopyInto(some, others);
    EXPECT_TRUE(key == end(others));
    EXPECT_TRUE(++key == end(others));
    EXPECT_EQ(nullptr, setIter.getKey());
    EXPECT_EQ(2U, walk(others).size());
}

TEST(fxCopyInto, aLoopOverTheTargetEnds) {
    for (const unsigned int buckets : {1U, 31U}) {
        SCOPED_TRACE(buckets);
        fxStrStrDictionary from(buckets), to(buckets);
        fxAddAll(from, {{"a", "1"}, {"b", "2"}, {"c", "3"}});
        fxAddAll(to, {{"x", "1"}, {"y", "2"}});
        int visits = 0;
        for (auto& entry : to) {
            (void)entry;
            fxCopyInto(from, to);
            ASSERT_EQ(1, ++visits);
        }
        fxStrSet some(buckets), others(buckets);
        fxAddAll(some, {"a", "b"});
        fxAddAll(others, {"x", "y"});
        for (auto& key : others) {
            (void)key;
            fxCopyInto(some, others);
            ASSERT_EQ(2, ++visits);
        }
        EXPECT_EQ(2, visits);
    }
}

TEST(fxCopyInto, aHostsOperationsMakeAndEndEveryKeyAndValue) {
    int numbers[] = {1, 2, 3};
    TestDictionary from(2), to(5);
    for (int& number : numbers) {
        int* const p = &number;
        from.addInternal(&p, &p);
    }
    int* const p = &numbers[0];
    to.addInternal(&p, &p);
    fxCopyInto(from, to);
    EXPECT_EQ(3U, to.length());
    for (auto& [key, value] : to) {
        int* const* const original = fxStdParts::findValue(fxEntries<int*, int*>(from), key);
        ASSERT_NE(nullptr, original);
        EXPECT_EQ(**original, *value);
        EXPECT_NE(*original, value);
    }
}
