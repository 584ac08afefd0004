#include "kelvofxds/lists/NameSpace.h"

#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <sys/resource.h>

struct NameSpaceLayout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
    static_assert(sizeof(NameSpace_Node) == 20, "five words");
    static_assert(offsetof(NameSpace_Node, left) == 0, "left comes first");
    static_assert(offsetof(NameSpace_Node, right) == 4, "then right");
    static_assert(offsetof(NameSpace_Node, atom) == 8, "then the atom");
    static_assert(offsetof(NameSpace_Node, hash) == 12, "then the hash");
    static_assert(offsetof(NameSpace_Node, name) == 16, "then the name");
    static_assert(sizeof(NameSpace) == 28, "seven words, no table of virtual operations");
    static_assert(offsetof(NameSpace, noAtom) == 0, "noAtom comes first");
    static_assert(offsetof(NameSpace, lastAtom) == 4, "then the highest atom");
    static_assert(offsetof(NameSpace, root) == 8, "then the tree");
    static_assert(offsetof(NameSpace, tableSize) == 12, "then the number of slots");
    static_assert(offsetof(NameSpace, table) == 16, "then the slots");
    static_assert(offsetof(NameSpace, numberingMode) == 20, "then the mode");
    static_assert(offsetof(NameSpace, firstDynamicAtom) == 24, "then the first atom of a copy");
#pragma GCC diagnostic pop
    static_assert(std::is_same<unsigned long, decltype(NameSpace::lastAtom)>::value, "unsigned");
    static_assert(std::is_same<int, decltype(NameSpace::numberingMode)>::value, "signed");
    static_assert(std::is_same<char*, decltype(NameSpace_Node::name)>::value, "text");

    static unsigned long noAtom(const NameSpace& names) { return names.noAtom; }
    static unsigned long lastAtom(const NameSpace& names) { return names.lastAtom; }
    static NameSpace_Node* root(const NameSpace& names) { return names.root; }
    static unsigned long tableSize(const NameSpace& names) { return names.tableSize; }
    static NameSpace_Node** table(const NameSpace& names) { return names.table; }
    static int numberingMode(const NameSpace& names) { return names.numberingMode; }
    static unsigned long& firstDynamicAtom(NameSpace& names) { return names.firstDynamicAtom; }
};

namespace {

using Layout = NameSpaceLayout;

const int numbersItself = 0;
const int callerNumbers = 1;

int nothing(NameSpace*) { return 0; }

/// Without predefined names.
struct Names : NameSpace {
    explicit Names(int mode = numbersItself) : NameSpace(nothing, mode) {}
};

unsigned int lengthOf(const char* name) { return static_cast<unsigned int>(std::strlen(name)); }

unsigned long create(NameSpace& names, unsigned long atom, const char* name) {
    return names.makeAtom(atom, name, lengthOf(name), 1);
}

/// The tree as text: "name(left,right)", with "-" for no node.
std::string shape(const NameSpace_Node* node) {
    if (!node)
        return "-";
    if (!node->left && !node->right)
        return node->name;
    return node->name + ("(" + shape(node->left) + "," + shape(node->right) + ")");
}

std::string shape(const NameSpace& names) { return shape(Layout::root(names)); }

}  // namespace

// Making one.

TEST(NameSpace, aNewOneHasAHundredEmptySlotsAndNoTree) {
    Names names;
    EXPECT_EQ(0U, Layout::noAtom(names));
    EXPECT_EQ(0U, Layout::lastAtom(names));
    EXPECT_EQ(nullptr, Layout::root(names));
    EXPECT_EQ(100U, Layout::tableSize(names));
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(nullptr, Layout::table(names)[i]);
    EXPECT_EQ(0, Layout::numberingMode(names));
    EXPECT_EQ(1U, Layout::firstDynamicAtom(names));
    EXPECT_EQ(0U, names.getNoAtom());
    EXPECT_EQ(0U, names.getLastAtom());
}

TEST(NameSpace, theModeIsKeptAsItIsGiven) {
    for (int mode : {0, 1, 7, -1}) {
        Names names(mode);
        EXPECT_EQ(mode, Layout::numberingMode(names));
    }
}

namespace {
char firstName[] = "first";
char secondName[] = "second";

struct Seen {
    const NameSpace* names;
    int mode;
    unsigned long firstDynamic, last, size, first, second, again, absent;
    bool hasTree;
} seen;

int predefineTwo(NameSpace* names) {
    seen.names = names;
    seen.mode = Layout::numberingMode(*names);
    seen.firstDynamic = Layout::firstDynamicAtom(*names);
    seen.last = names->getLastAtom();
    seen.size = Layout::tableSize(*names);
    seen.hasTree = Layout::root(*names) != nullptr;
    seen.first = names->makeAtom(firstName, 1);
    seen.second = names->makeAtom(secondName, 6, 1);
    seen.again = names->makeAtom("first", 1);
    seen.absent = names->makeAtom("third", 0);
    return 0;
}
}  // namespace

TEST(NameSpace, theCallbackMakesThePredefinedNamesInAutomaticNumbering) {
    for (int mode : {numbersItself, callerNumbers}) {
        SCOPED_TRACE(mode);
        seen = Seen();
        NameSpace names(predefineTwo, mode);
        EXPECT_EQ(&names, seen.names);
        EXPECT_EQ(0, seen.mode);
        EXPECT_EQ(0U, seen.firstDynamic);
        EXPECT_EQ(0U, seen.last);
        EXPECT_EQ(100U, seen.size);
        EXPECT_FALSE(seen.hasTree);
        EXPECT_EQ(1U, seen.first);
        EXPECT_EQ(2U, seen.second);
        EXPECT_EQ(1U, seen.again);
        EXPECT_EQ(0U, seen.absent);
        EXPECT_EQ(mode, Layout::numberingMode(names));
        EXPECT_EQ(3U, Layout::firstDynamicAtom(names));
        EXPECT_EQ(2U, names.getLastAtom());
        EXPECT_EQ(1U, names.makeAtom("first", 0));
        EXPECT_EQ(2U, names.makeAtom("second", 0));
    }
}

TEST(NameSpace, predefinedNamesAreStoredAsTheyAreAndOthersCopied) {
    NameSpace names(predefineTwo, numbersItself);
    EXPECT_EQ(firstName, names.nameForAtom(1));
    EXPECT_EQ(secondName, names.nameForAtom(2));

    char third[] = "third";
    EXPECT_EQ(3U, names.makeAtom(third, 1));
    EXPECT_NE(third, names.nameForAtom(3));
    third[0] = 'X';
    EXPECT_STREQ("third", names.nameForAtom(3));
}

TEST(NameSpace, withoutACallbackThereAreNoPredefinedNames) {
    NameSpace names(nullptr, numbersItself);
    EXPECT_EQ(1U, Layout::firstDynamicAtom(names));
    EXPECT_EQ(1U, names.makeAtom("a", 1));
}

namespace {
int predefineAtFifty(NameSpace* names) {
    names->internAtom(50, "fifty", 5, 1);
    return 0;
}
}  // namespace

TEST(NameSpace, theCallbackMayNumberThroughInternAtom) {
    NameSpace names(predefineAtFifty, numbersItself);
    EXPECT_EQ(51U, Layout::firstDynamicAtom(names));
    EXPECT_STREQ("fifty", names.nameForAtom(50));
    EXPECT_EQ(51U, names.makeAtom("next", 1));
}

// Interning.

TEST(NameSpace, aNameGetsTheNextNumberAndKeepsIt) {
    Names names;
    EXPECT_EQ(1U, names.makeAtom("a", 1));
    EXPECT_EQ(1U, names.makeAtom("a", 1));
    EXPECT_EQ(0U, names.makeAtom("b", 0));
    EXPECT_EQ(2U, names.makeAtom("b", 1));
    EXPECT_EQ(1U, names.makeAtom("a", 0));
    EXPECT_EQ(2U, names.getLastAtom());
}

TEST(NameSpace, anyCreateThatIsNotZeroCreates) {
    Names names;
    EXPECT_EQ(1U, names.makeAtom("a", -1));
    EXPECT_EQ(2U, names.makeAtom("b", 1, 256));
}

TEST(NameSpace, anExplicitLengthTakesThatManyBytes) {
    Names names;
    EXPECT_EQ(1U, names.makeAtom("abcdef", 3, 1));
    EXPECT_STREQ("abc", names.nameForAtom(1));
    EXPECT_EQ(1U, names.makeAtom("abc", 0));
    EXPECT_EQ(1U, names.makeAtom("abcxyz", 3, 0));
    EXPECT_EQ(0U, names.makeAtom("abcdef", 0));
    EXPECT_EQ(0U, names.makeAtom("abcdef", 2, 0));
}

TEST(NameSpace, theEmptyNameIsAName) {
    Names names;
    EXPECT_EQ(0U, names.makeAtom("", 0));
    EXPECT_EQ(1U, names.makeAtom("", 1));
    EXPECT_EQ(0U, Layout::root(names)->hash);
    EXPECT_EQ(1U, names.makeAtom("anything", 0, 1));
    EXPECT_STREQ("", names.nameForAtom(1));
}

TEST(NameSpace, theCallersNumberIsUsedInTheOtherMode) {
    Names names(callerNumbers);
    EXPECT_EQ(7U, create(names, 7, "seven"));
    EXPECT_EQ(3U, create(names, 3, "three"));
    EXPECT_EQ(7U, names.getLastAtom());
    EXPECT_EQ(7U, create(names, 9, "seven"));  // it has one
    EXPECT_EQ(7U, names.getLastAtom());
    EXPECT_STREQ("three", names.nameForAtom(3));
    EXPECT_EQ(nullptr, names.nameForAtom(5));
}

TEST(NameSpace, askingIsAllowedInBothModes) {
    Names automatic;
    automatic.makeAtom("a", 1);
    EXPECT_EQ(1U, automatic.makeAtom(5, "a", 1, 0));
    EXPECT_EQ(0U, automatic.makeAtom(5, "b", 1, 0));
    EXPECT_EQ(0U, automatic.makeAtom(0UL, "b", 1, 0));

    Names explicitly(callerNumbers);
    create(explicitly, 4, "a");
    EXPECT_EQ(4U, explicitly.makeAtom("a", 0));
    EXPECT_EQ(4U, explicitly.makeAtom("a", 1, 0));
    EXPECT_EQ(0U, explicitly.makeAtom("b", 0));
    EXPECT_EQ(0U, explicitly.makeAtom("b", 1, 0));
}

TEST(NameSpace, internAtomCreatesInAnyMode) {
    for (int mode : {numbersItself, callerNumbers}) {
        Names names(mode);
        EXPECT_EQ(0U, names.internAtom(6, "a", 1, 0));
        EXPECT_EQ(6U, names.internAtom(6, "a", 1, 1));
        EXPECT_EQ(6U, names.internAtom(8, "a", 1, 1));
        EXPECT_EQ(6U, names.getLastAtom());
    }
}

TEST(NameSpace, automaticNumbersGoOnFromTheHighest) {
    Names names;
    names.internAtom(41, "a", 1, 1);
    names.internAtom(5, "b", 1, 1);
    EXPECT_EQ(42U, names.makeAtom("c", 1));
}

TEST(NameSpace, deliberateAnAtomInUseGetsASecondName) {
    Names names(callerNumbers);
    create(names, 5, "old");
    EXPECT_EQ(5U, create(names, 5, "new"));
    EXPECT_STREQ("new", names.nameForAtom(5));
    EXPECT_EQ(5U, names.makeAtom("old", 0));
    EXPECT_EQ(5U, names.makeAtom("new", 0));
}

namespace {
int predefineShorter(NameSpace* names) {
    names->makeAtom("predefined", 3, 1);
    return 0;
}
}  // namespace

TEST(NameSpace, deliberateAPredefinedNameShorterThanItsTextIsNotFoundAgain) {
    NameSpace names(predefineShorter, numbersItself);
    EXPECT_STREQ("predefined", names.nameForAtom(1));
    EXPECT_EQ(0U, names.makeAtom("pre", 0));
    EXPECT_EQ(0U, names.makeAtom("predefined", 3, 0));
    EXPECT_EQ(0U, names.makeAtom("predefined", 0));
    // Both have the hash of "pre"; the new one is the shorter and goes left.
    EXPECT_EQ(2U, names.makeAtom("pre", 1));
    EXPECT_EQ("predefined(pre,-)", shape(names));
    EXPECT_EQ(2U, names.makeAtom("pre", 0));
}

TEST(NameSpace, deliberateANameWithANulIsNotFoundAgain) {
    Names names;
    EXPECT_EQ(1U, names.makeAtom("a\0b", 3, 1));
    EXPECT_STREQ("a", names.nameForAtom(1));
    EXPECT_EQ(0, std::memcmp("a\0b", names.nameForAtom(1), 4));
    EXPECT_EQ(0U, names.makeAtom("a\0b", 3, 0));
    EXPECT_EQ(2U, names.makeAtom("a\0b", 3, 1));
    EXPECT_EQ(0U, names.makeAtom("a", 0));  // of another hash
}

// Hashes and the tree.

TEST(NameSpace, theHashMixesTheNameFromBothEndsAsSignedBytes) {
    const struct {
        const char* name;
        std::uint32_t hash;
    } cases[] = {
        {"", 0},
        {"a", 2716},               // 97 * 27 + 97
        {"ab", 2717},              // 97 * 27 + 98
        {"abc", 1984166},          // (2718 * 27 + 98) * 27 + 98
        {"abcd", 1984896},         // (2719 * 27 + 98) * 27 + 99
        {"bG", 2717},              // 98 * 27 + 71
        {"\xff", 0xFFFFFFE4},      // -1 * 27 - 1
        {"a\x80", 2491},           // 97 * 27 - 128
        {"\x80\x80", 0xFFFFF200},  // -128 * 28
        {"\x01\xe6", 1},           // 27 - 26
        {"\x01\xe6\xe6", 1},       // (1 * 27 - 26) * 27 - 26
        {"zzzzzzz", 2396359392U},  // 1325246286560 modulo 2 to the power of 32
    };
    for (const auto& c : cases) {
        Names names;
        names.makeAtom(c.name, 1);
        EXPECT_EQ(c.hash, Layout::root(names)->hash) << c.name;
    }
}

TEST(NameSpace, smallerHashesGoLeftAndLargerOnesRight) {
    Names names;
    for (const char* name : {"m", "c", "x", "d", "a", "n"})
        names.makeAtom(name, 1);
    EXPECT_EQ("m(c(a,d),x(n,-))", shape(names));
    unsigned long atom = 1;
    for (const char* name : {"m", "c", "x", "d", "a", "n"})
        EXPECT_EQ(atom++, names.makeAtom(name, 0)) << name;
}

TEST(NameSpace, hashesAreComparedWithoutASign) {
    Names names;
    names.makeAtom("a", 1);
    names.makeAtom("\xff", 1);  // 0xFFFFFFE4
    names.makeAtom("", 1);      // 0
    EXPECT_EQ("a(,\xff)", shape(names));
}

TEST(NameSpace, ofOneHashTheTextDecides) {
    Names names;
    names.makeAtom("ab", 1);
    names.makeAtom("bG", 1);
    EXPECT_EQ("ab(-,bG)", shape(names));
    EXPECT_EQ(1U, names.makeAtom("ab", 0));
    EXPECT_EQ(2U, names.makeAtom("bG", 0));

    Names turned;
    turned.makeAtom("bG", 1);
    turned.makeAtom("ab", 1);
    EXPECT_EQ("bG(ab,-)", shape(turned));
    EXPECT_EQ(1U, turned.makeAtom("bG", 0));
    EXPECT_EQ(2U, turned.makeAtom("ab", 0));
}

TEST(NameSpace, ofOneHashAndBeginningTheShorterNameGoesLeft) {
    // Both have the hash 1.
    Names names;
    names.makeAtom("\x01\xe6\xe6", 1);
    EXPECT_EQ(0U, names.makeAtom("\x01\xe6", 0));
    names.makeAtom("\x01\xe6", 1);
    EXPECT_EQ("\x01\xe6\xe6(\x01\xe6,-)", shape(names));
    EXPECT_EQ(1U, names.makeAtom("\x01\xe6\xe6", 0));
    EXPECT_EQ(2U, names.makeAtom("\x01\xe6", 0));

    Names turned;
    turned.makeAtom("\x01\xe6", 1);
    EXPECT_EQ(0U, turned.makeAtom("\x01\xe6\xe6", 0));
    turned.makeAtom("\x01\xe6\xe6", 1);
    EXPECT_EQ("\x01\xe6(-,\x01\xe6\xe6)", shape(turned));
    EXPECT_EQ(1U, turned.makeAtom("\x01\xe6", 0));
    EXPECT_EQ(2U, turned.makeAtom("\x01\xe6\xe6", 0));
}

TEST(NameSpace, deliberateTheTreeIsNotBalanced) {
    Names names;
    for (const char* name : {"a", "b", "c", "d", "e"})
        names.makeAtom(name, 1);
    EXPECT_EQ("a(-,b(-,c(-,d(-,e))))", shape(names));
}

TEST(NameSpace, aNodeHoldsAtomHashAndName) {
    Names names(callerNumbers);
    create(names, 12, "ab");
    const NameSpace_Node* node = Layout::root(names);
    EXPECT_EQ(node, Layout::table(names)[12]);
    EXPECT_EQ(12U, node->atom);
    EXPECT_EQ(2717U, node->hash);
    EXPECT_STREQ("ab", node->name);
    EXPECT_EQ(nullptr, node->left);
    EXPECT_EQ(nullptr, node->right);
}

TEST(NameSpace, manyNamesAllHaveTheirAtoms) {
    std::mt19937 random(20240229);
    Names names;
    std::map<std::string, unsigned long> model;
    for (int round = 0; round < 20000; ++round) {
        std::string name(random() % 4, 'x');
        for (char& c : name)
            c = static_cast<char>(1 + random() % 255);
        const auto known = model.find(name);
        const unsigned long expected = known == model.end() ? 0 : known->second;
        ASSERT_EQ(expected, names.makeAtom(name.c_str(), 0));
        if (known == model.end() && random() % 2)
            model[name] = names.makeAtom(name.data(), static_cast<unsigned int>(name.size()), 1);
    }
    EXPECT_EQ(model.size(), names.getLastAtom());
    for (const auto& pair : model)
        ASSERT_EQ(pair.first, names.nameForAtom(pair.second));
}

// The table.

TEST(NameSpace, theTableIsDoubledUntilItHasTheSlot) {
    const struct {
        unsigned long atom, size;
    } cases[] = {{1, 100},   {99, 100},  {100, 200}, {199, 200},        {200, 400},
                 {250, 400}, {400, 800}, {799, 800}, {1000000, 1638400}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.atom);
        Names names(callerNumbers);
        create(names, 3, "three");
        EXPECT_EQ(c.atom, create(names, c.atom, "name"));
        EXPECT_EQ(c.size, Layout::tableSize(names));
        EXPECT_STREQ("name", names.nameForAtom(c.atom));
        EXPECT_STREQ("three", names.nameForAtom(3));
        for (unsigned long i = 0; i < c.size; ++i) {
            if (i != 3 && i != c.atom) {
                ASSERT_EQ(nullptr, Layout::table(names)[i]) << i;
                ASSERT_FALSE(names.validAtom(i)) << i;
            }
        }
    }
}

TEST(NameSpace, theHundredthAutomaticAtomDoublesTheTable) {
    Names names;
    char name[16];
    for (unsigned long i = 1; i <= 100; ++i) {
        EXPECT_EQ(100U, Layout::tableSize(names)) << i;
        std::snprintf(name, sizeof name, "name %lu", i);
        EXPECT_EQ(i, names.makeAtom(name, 1));
    }
    EXPECT_EQ(200U, Layout::tableSize(names));
}

TEST(NameSpace, validAtomTellsWhetherTheAtomHasAName) {
    Names names(callerNumbers);
    EXPECT_FALSE(names.validAtom(0));
    EXPECT_FALSE(names.validAtom(1));
    create(names, 5, "five");
    EXPECT_FALSE(names.validAtom(0));
    EXPECT_FALSE(names.validAtom(4));
    EXPECT_TRUE(names.validAtom(5));
    EXPECT_FALSE(names.validAtom(6));
    EXPECT_FALSE(names.validAtom(1000));
    EXPECT_FALSE(names.validAtom(0xFFFFFFFF));
}

TEST(NameSpace, nameForAtomIsNullWhereThereIsNoName) {
    Names names(callerNumbers);
    EXPECT_EQ(nullptr, names.nameForAtom(0));
    create(names, 5, "five");
    EXPECT_EQ(nullptr, names.nameForAtom(0));
    EXPECT_EQ(nullptr, names.nameForAtom(4));
    EXPECT_STREQ("five", names.nameForAtom(5));
    EXPECT_EQ(nullptr, names.nameForAtom(6));
    EXPECT_EQ(nullptr, names.nameForAtom(0xFFFFFFFF));
}

// Freeing.

TEST(NameSpace, freeAllAtomsLeavesNoTreeNoTableAndNoAtom) {
    NameSpace names(predefineTwo, numbersItself);
    names.makeAtom("third", 1);
    names.freeAllAtoms();
    EXPECT_EQ(nullptr, Layout::root(names));
    EXPECT_EQ(nullptr, Layout::table(names));
    EXPECT_EQ(0U, names.getLastAtom());
    for (unsigned long atom : {0UL, 1UL, 3UL, 200UL}) {
        EXPECT_FALSE(names.validAtom(atom));
        EXPECT_EQ(nullptr, names.nameForAtom(atom));
    }
    EXPECT_EQ(0U, names.makeAtom("first", 0));
    names.freeAllAtoms();
    EXPECT_EQ(nullptr, Layout::table(names));
}

TEST(NameSpace, afterFreeAllAtomsNumbersStartAgain) {
    Names names;
    names.makeAtom("a", 1);
    names.internAtom(150, "b", 1, 1);
    names.freeAllAtoms();
    EXPECT_EQ(1U, names.makeAtom("b", 1));
    EXPECT_EQ(2U, names.makeAtom("a", 1));
    EXPECT_STREQ("b", names.nameForAtom(1));
    EXPECT_EQ(nullptr, names.nameForAtom(150));
    EXPECT_EQ(250U, names.internAtom(250, "c", 1, 1));
    EXPECT_STREQ("c", names.nameForAtom(250));
}

TEST(NameSpace, deliberateFreeAllAtomsWithoutAtomsKeepsTheTable) {
    Names names;
    NameSpace_Node** const table = Layout::table(names);
    names.freeAllAtoms();
    EXPECT_EQ(table, Layout::table(names));
    EXPECT_EQ(100U, Layout::tableSize(names));
    EXPECT_EQ(1U, names.makeAtom("a", 1));
}

namespace {

NameSpace_Node* newNode(unsigned long atom, char* name) {
    auto* node = static_cast<NameSpace_Node*>(std::malloc(sizeof(NameSpace_Node)));
    *node = NameSpace_Node{nullptr, nullptr, atom, 0, name};
    return node;
}

char* copyOf(const char* text) { return ::strdup(text); }

}  // namespace

// That everything else is freed, sanitizers and memory checkers tell.
TEST(NameSpace, freeAtomFreesTheNamesOfAtomsMadeAfterConstruction) {
    Names names;
    Layout::firstDynamicAtom(names) = 10;
    char permanent[] = "permanent";
    NameSpace_Node* node = newNode(9, permanent);
    node->left = newNode(10, copyOf("ten"));
    node->left->right = newNode(1, permanent);
    node->right = newNode(1000, copyOf("thousand"));
    node->right->left = newNode(11, copyOf("eleven"));
    names.freeAtom(node);
    EXPECT_STREQ("permanent", permanent);

    Layout::firstDynamicAtom(names) = 0;  // as during construction
    names.freeAtom(newNode(20, permanent));
    Layout::firstDynamicAtom(names) = 1;
    names.freeAtom(nullptr);
}

TEST(NameSpace, deliberateACopyWithTheAtomOfAPredefinedNameIsNotFreed) {
    char* copy;
    {
        NameSpace names(predefineAtFifty, callerNumbers);
        create(names, 7, "seven");
        copy = const_cast<char*>(names.nameForAtom(7));
    }
    EXPECT_STREQ("seven", copy);
    std::free(copy);
}

namespace {

const int many = 1000000;

/// A tree of a million nodes, each but one below another: the i-th on the
/// left, where `goesLeft(i)` says so.
template <class GoesLeft>
NameSpace_Node* longTree(char* name, GoesLeft goesLeft) {
    NameSpace_Node* root = nullptr;
    for (int i = 0; i < many; ++i) {
        NameSpace_Node* node = newNode(0, name);
        (goesLeft(i) ? node->left : node->right) = root;
        root = node;
    }
    return root;
}

}  // namespace

TEST(NameSpace, freeAtomTakesTreesOfAnyDepth) {
    Names names;
    char name[] = "any";
    names.freeAtom(longTree(name, [](int) { return true; }));
    names.freeAtom(longTree(name, [](int) { return false; }));
    names.freeAtom(longTree(name, [](int i) { return i % 2 == 0; }));
    EXPECT_STREQ("any", name);
}

// Misuse.

namespace {

int fails(NameSpace*) { return 1; }
int failsWithMinusOne(NameSpace*) { return -1; }
int failsWith256(NameSpace*) { return 256; }
int numbersByItself(NameSpace* names) {
    names->makeAtom(1, "a", 1, 1);
    return 0;
}
int createsAtomZero(NameSpace* names) {
    names->internAtom(0, "a", 1, 1);
    return 0;
}

void failWithExitHandler() {
    std::atexit([] { std::fputs("handler\n", stderr); });
    NameSpace names(fails, numbersItself);
}

}  // namespace

TEST(NameSpaceDeathTest, aFailingCallbackEndsTheProcessWithStatus255) {
    EXPECT_EXIT(NameSpace(fails, 0), testing::ExitedWithCode(255), "^$");
    EXPECT_EXIT(NameSpace(fails, 1), testing::ExitedWithCode(255), "^$");
    EXPECT_EXIT(NameSpace(failsWithMinusOne, 0), testing::ExitedWithCode(255), "^$");
    EXPECT_EXIT(NameSpace(failsWith256, 0), testing::ExitedWithCode(255), "^$");
}

TEST(NameSpaceDeathTest, aFailingCallbackExitsWithTheExitHandlers) {
    EXPECT_EXIT(failWithExitHandler(), testing::ExitedWithCode(255), "^handler\n$");
}

TEST(NameSpaceDeathTest, creatingInTheWrongModeAbortsWithoutAMessage) {
    Names automatic;
    automatic.makeAtom("known", 1);
    EXPECT_EXIT(create(automatic, 5, "a"), testing::KilledBySignal(SIGABRT), "^$");
    EXPECT_EXIT(create(automatic, 1, "known"), testing::KilledBySignal(SIGABRT), "^$");

    for (int mode : {callerNumbers, 2, -1}) {
        SCOPED_TRACE(mode);
        Names explicitly(mode);
        create(explicitly, 5, "known");
        EXPECT_EXIT(explicitly.makeAtom("a", 1), testing::KilledBySignal(SIGABRT), "^$");
        EXPECT_EXIT(explicitly.makeAtom("a", 1, 1), testing::KilledBySignal(SIGABRT), "^$");
        EXPECT_EXIT(explicitly.makeAtom("known", 1), testing::KilledBySignal(SIGABRT), "^$");
        EXPECT_EXIT(explicitly.makeAtom("known", 5, 1), testing::KilledBySignal(SIGABRT), "^$");
    }
}

TEST(NameSpaceDeathTest, theCallbackIsInAutomaticNumbering) {
    EXPECT_EXIT(NameSpace(numbersByItself, callerNumbers), testing::KilledBySignal(SIGABRT), "^$");
}

TEST(NameSpaceDeathTest, creatingTheAtomZeroAborts) {
    Names names(callerNumbers);
    EXPECT_EXIT(create(names, 0, "a"), testing::KilledBySignal(SIGABRT), "^$");
    EXPECT_EXIT(names.internAtom(0, "a", 1, 1), testing::KilledBySignal(SIGABRT), "^$");
    EXPECT_EXIT(NameSpace(createsAtomZero, 0), testing::KilledBySignal(SIGABRT), "^$");
}

TEST(NameSpaceDeathTest, atomErrorAborts) {
    Names names;
    EXPECT_EXIT(names.atomError(), testing::KilledBySignal(SIGABRT), "^$");
}

// A sanitizer's allocator says something of its own when it returns null.
TEST(NameSpaceDeathTest, anAtomThatNoTableHasRoomForAborts) {
    Names names(callerNumbers);
    for (unsigned long atom : {0xFFFFFFFFUL, 0x80000000UL, 0x40000000UL, 0x20000000UL}) {
        SCOPED_TRACE(atom);
        EXPECT_EXIT(create(names, atom, "a"), testing::KilledBySignal(SIGABRT), "");
    }
}

#ifndef __SANITIZE_ADDRESS__
// A sanitizer's allocator needs memory of its own to say that there is none.
namespace {

/// From now on malloc has no block of `smallest` bytes or more.
void exhaustMemory(std::size_t smallest) {
    const rlimit none = {0, 0};
    ::setrlimit(RLIMIT_AS, &none);
    for (std::size_t size = 1 << 16; size >= smallest; size -= size > 1024 ? 1024 : 4) {
        while (void* volatile block = std::malloc(size))
            static_cast<void>(block);
    }
}

void makeWithoutMemory() {
    exhaustMemory(4);
    NameSpace names(nothing, 0);
}

void createWithoutMemory() {
    Names names;
    exhaustMemory(4);
    names.makeAtom("a", 1);
}

void copyWithoutMemory() {
    Names names;
    const std::string name(100000, 'a');
    exhaustMemory(64);
    names.makeAtom(name.c_str(), 1);
}

void growWithoutMemory() {
    Names names(callerNumbers);
    exhaustMemory(64);
    create(names, 100000, "a");
}

}  // namespace

TEST(NameSpaceDeathTest, runningOutOfMemoryAborts) {
    EXPECT_EXIT(makeWithoutMemory(), testing::KilledBySignal(SIGABRT), "^$");
    EXPECT_EXIT(createWithoutMemory(), testing::KilledBySignal(SIGABRT), "^$");
    EXPECT_EXIT(copyWithoutMemory(), testing::KilledBySignal(SIGABRT), "^$");
    EXPECT_EXIT(growWithoutMemory(), testing::KilledBySignal(SIGABRT), "^$");
}
#endif
