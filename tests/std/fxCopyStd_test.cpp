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
