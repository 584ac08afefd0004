#include "kelvofxds/lists/NameSpace.h"

#include <cstdint>
#include <cstring>
#include <map>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/nameSpaces.h"

using namespace nameSpaces;

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

TEST(NameSpace, aNullNameIsTheEmptyOne) {
    Names names;
    EXPECT_EQ(0U, names.makeAtom(nullptr, 0));
    EXPECT_EQ(1U, names.makeAtom(nullptr, 1));
    EXPECT_EQ(1U, names.makeAtom("", 0));
    EXPECT_EQ(1U, names.makeAtom(nullptr, 5U, 0));
    EXPECT_EQ(1U, names.internAtom(7, nullptr, 0, 1));
    EXPECT_STREQ("", names.nameForAtom(1));
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

TEST(NameSpace, aNameIsTheSameWhereverItLies) {
    Names names;
    const std::string letters(40, 'n');
    for (unsigned int length = 0; length <= letters.size(); ++length)
        names.makeAtom(letters.c_str(), length, 1);
    for (const char neighbour : {'\0', 'a', '\xFF'}) {
        for (unsigned int at = 1; at <= 8; ++at) {
            for (unsigned int length = 0; length <= letters.size(); ++length) {
                const std::string around(8, neighbour);
                const std::string text = around.substr(0, at) + letters.substr(0, length) + around;
                ASSERT_EQ(length + 1, names.makeAtom(text.data() + at, length, 0))
                    << length << " bytes beside " << int{neighbour};
            }
        }
    }
}

TEST(NameSpace, everyByteOfANameTellsItFromOthers) {
    for (unsigned int length = 1; length <= 40; ++length) {
        Names names;
        for (unsigned int changed = 0; changed <= length; ++changed) {
            std::string name(length, 'n');
            if (changed < length)
                name[changed] = 'm';
            ASSERT_EQ(changed + 1, names.makeAtom(name.c_str(), 1));
        }
        ASSERT_EQ(length + 1, names.makeAtom(std::string(length, 'n').c_str(), 0));
    }
}
