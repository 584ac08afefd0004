// NameSpaceMemory_test.cpp - the table of a name space, freeing it, and misuse.

#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/lists/NameSpace.h"
#include "tests/support/heapCalls.h"
#include "tests/support/nameSpaces.h"

using namespace nameSpaces;

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
    NameSpace names(predefineAtFifty, numbersItself);
    names.makeAtom("another", 1);
    names.freeAllAtoms();
    EXPECT_EQ(nullptr, Layout::root(names));
    EXPECT_EQ(nullptr, Layout::table(names));
    EXPECT_EQ(0U, names.getLastAtom());
    for (unsigned long atom : {0UL, 1UL, 50UL, 51UL, 200UL}) {
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

TEST(NameSpaceDeathTest, anyCreateThatIsNotZeroAbortsInTheWrongMode) {
    for (int any : {2, 256, -1, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(any);
        Names automatic, explicitly(callerNumbers);
        EXPECT_EXIT(automatic.makeAtom(5, "a", 1, any), testing::KilledBySignal(SIGABRT), "^$");
        EXPECT_EXIT(explicitly.makeAtom("a", any), testing::KilledBySignal(SIGABRT), "^$");
        EXPECT_EXIT(explicitly.makeAtom("a", 1, any), testing::KilledBySignal(SIGABRT), "^$");
        EXPECT_EXIT(explicitly.internAtom(0, "a", 1, any), testing::KilledBySignal(SIGABRT), "^$");
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

// A copy would be one byte longer.
TEST(NameSpaceDeathTest, aNameOfTheGreatestLengthAborts) {
    Names names;
    EXPECT_EXIT(names.makeAtom("a", UINT_MAX, 1), testing::KilledBySignal(SIGABRT), "^$");
    EXPECT_EXIT(names.internAtom(1, "a", UINT_MAX, 1), testing::KilledBySignal(SIGABRT), "^$");
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
namespace {

void makeWithoutMemory() {
    refuseBlocksFrom(0);
    NameSpace names(nothing, 0);
}

void createWithoutMemory() {
    Names names;
    refuseBlocksFrom(0);
    names.makeAtom("a", 1);
}

void copyWithoutMemory() {
    Names names;
    const std::string name(100000, 'a');
    refuseBlocksFrom(64);
    names.makeAtom(name.c_str(), 1);
}

void growWithoutMemory() {
    Names names(callerNumbers);
    refuseBlocksFrom(64);
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
