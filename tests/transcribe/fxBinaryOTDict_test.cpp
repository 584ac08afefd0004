#include "kelvofxds/transcribe/fxBinaryOTDict.h"

#include <cstdint>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "tests/support/memoryStream.h"

static_assert(sizeof(fxBinaryOTDict) == sizeof(fxDictionary), "no fields of its own");
static_assert(sizeof(fxBinaryOTDict) == 68, "a dictionary");
static_assert(sizeof(fxBinaryOTDictIter) == 16, "a dictionary's iterator");
static_assert(std::is_base_of<fxDictionary, fxBinaryOTDict>::value, "public base");
static_assert(std::is_base_of<fxDictIter, fxBinaryOTDictIter>::value, "public base");

namespace {
using Word = std::uint32_t;

Word valueOf(const fxBinaryOTDict& table, Word key) {
    const void* value = table.find(&key);
    return value ? *static_cast<const Word*>(value) : 0xDEAD;
}

void add(fxBinaryOTDict& table, Word key, Word value) { table.addInternal(&key, &value); }

std::vector<Word> keysOf(fxBinaryOTDictIter& iter) {
    std::vector<Word> keys;
    for (; iter.getKey(); ++iter)
        keys.push_back(*static_cast<const Word*>(iter.getKey()));
    return keys;
}
}  // namespace

TEST(fxBinaryOTDict, hashIsTheKeyShiftedRightLogically) {
    const fxBinaryOTDict table;
    const struct {
        Word key, hash;
    } cases[] = {{0, 0},
                 {3, 0},
                 {4, 1},
                 {0x12345678, 0x048D159E},
                 {0x80000000, 0x20000000},
                 {0xFFFFFFFF, 0x3FFFFFFF}};
    for (const auto& c : cases)
        EXPECT_EQ(c.hash, table.hashKey(&c.key)) << c.key;
}

TEST(fxBinaryOTDict, comparisonIsTheDifferenceModulo32Bits) {
    const fxBinaryOTDict table;
    const struct {
        Word a, b;
        int difference;
    } cases[] = {{5, 5, 0},
                 {7, 5, 2},
                 {5, 7, -2},
                 {0, 0xFFFFFFFF, 1},
                 {0x80000000, 0, INT32_MIN},
                 {0xC0000000, 0x40000000, INT32_MIN}};
    for (const auto& c : cases)
        EXPECT_EQ(c.difference, table.compareKeys(&c.a, &c.b)) << c.a << " and " << c.b;
}

TEST(fxBinaryOTDict, keysAndValuesAreCopiedAsWords) {
    const fxBinaryOTDict table;
    const Word from = 0x81828384;
    Word to[] = {1, 2};
    table.copyKey(&from, &to[0]);
    EXPECT_EQ(from, to[0]);
    table.copyValue(&from, &to[1]);
    EXPECT_EQ(from, to[1]);
    table.destroyKey(&to[0]);
    table.destroyValue(&to[1]);
    EXPECT_EQ(from, to[0]) << "destroying does nothing";
    EXPECT_EQ(from, to[1]);
    table.createValue(&to[1]);
    EXPECT_EQ(0u, to[1]);
}

TEST(fxBinaryOTDict, valueFollowsAKeyOfFourBytes) {
    fxBinaryOTDict table;
    const Word key = 0x1000;
    const Word value = 7;
    const fxDictBucket* entry = table.addInternal(&key, &value);
    EXPECT_EQ(key, static_cast<const Word*>(entry->kvmem)[0]);
    EXPECT_EQ(value, static_cast<const Word*>(entry->kvmem)[1]);
}

TEST(fxBinaryOTDict, hasTheDictionarysDefaultSizeUnlessToldOtherwise) {
    EXPECT_EQ(31u, fxBinaryOTDict().getNumBuckets());
    EXPECT_EQ(31u, fxBinaryOTDict(0).getNumBuckets());
    EXPECT_EQ(5u, fxBinaryOTDict(5).getNumBuckets());
}

TEST(fxBinaryOTDict, cannotBeTranscribed) {
    MemoryStream stream;
    fxBinaryWriter writer(&stream);
    fxBinaryOTDict table;
    Word word = 1;
    EXPECT_EQ(0, table.xdrKey(writer, &word));
    EXPECT_EQ(0, table.xdrValue(writer, &word));
    EXPECT_EQ(1u, word);
}

TEST(fxBinaryOTDict, isCalledDict) { EXPECT_STREQ("DICT", fxBinaryOTDict().className()); }

TEST(fxBinaryOTDict, entriesAreAddedFoundReplacedAndRemoved) {
    fxBinaryOTDict table(3);
    for (Word key = 0; key < 400; key += 4) {
        const Word value = key + 1;
        table.addInternal(&key, &value);
    }
    EXPECT_EQ(100u, table.length());
    for (Word key = 0; key < 400; key += 4)
        EXPECT_EQ(key + 1, valueOf(table, key));
    EXPECT_EQ(0xDEADu, valueOf(table, 2)) << "keys are compared in full";

    const Word key = 40;
    const Word value = 77;
    table.addInternal(&key, &value);
    EXPECT_EQ(100u, table.length());
    EXPECT_EQ(77u, valueOf(table, 40));

    table.remove(&key);
    EXPECT_EQ(99u, table.length());
    EXPECT_EQ(0xDEADu, valueOf(table, 40));
    EXPECT_EQ(0u, *static_cast<Word*>(table.findCreate(&key))) << "a created value is 0";
}

TEST(fxBinaryOTDict, addNewPutsAnEntryInFrontOfItsBucket) {
    fxBinaryOTDict table(2);
    table.addNew(8, 1);   // bucket 0
    table.addNew(4, 2);   // bucket 1
    table.addNew(16, 3);  // bucket 0
    EXPECT_EQ(3u, table.length());
    EXPECT_EQ(1u, valueOf(table, 8));
    EXPECT_EQ(2u, valueOf(table, 4));
    EXPECT_EQ(3u, valueOf(table, 16));
    fxBinaryOTDictIter iter(table);
    EXPECT_EQ((std::vector<Word>{16, 8, 4}), keysOf(iter));
    const Word removed = 8;
    table.remove(&removed);
    add(table, 24, 4);
    fxBinaryOTDictIter again(table);
    EXPECT_EQ((std::vector<Word>{24, 16, 4}), keysOf(again));
}

TEST(fxBinaryOTDict, removeAllEmptiesItAndEndsItsIterators) {
    fxBinaryOTDict table(2);
    table.addNew(8, 1);
    add(table, 12, 2);
    fxBinaryOTDictIter iter(table);
    table.removeAll();
    EXPECT_EQ(0u, table.length());
    EXPECT_EQ(2u, table.getNumBuckets());
    EXPECT_EQ(nullptr, iter.getKey());
    EXPECT_EQ(0xDEADu, valueOf(table, 8));
    table.addNew(8, 2);
    EXPECT_EQ(2u, valueOf(table, 8));
}

TEST(fxBinaryOTDict, assignmentMerges) {
    fxBinaryOTDict from(2);
    fxBinaryOTDict to(7);
    add(from, 4, 1);
    add(to, 8, 2);
    to = from;
    EXPECT_EQ(2u, to.length());
    EXPECT_EQ(1u, valueOf(to, 4));
    EXPECT_EQ(2u, valueOf(to, 8));
}

TEST(fxBinaryOTDictIter, startsOnTheFirstEntryOfTheTableItWasGiven) {
    fxBinaryOTDict table(2);
    add(table, 4, 40);
    fxBinaryOTDictIter unattached;
    EXPECT_EQ(nullptr, unattached.getKey());
    fxBinaryOTDictIter fromReference(table);
    EXPECT_EQ(4u, *static_cast<const Word*>(fromReference.getKey()));
    EXPECT_EQ(40u, *static_cast<const Word*>(fromReference.getValue()));
    fxBinaryOTDictIter fromPointer(&table);
    EXPECT_EQ(4u, *static_cast<const Word*>(fromPointer.getKey()));
    unattached = table;
    EXPECT_EQ(4u, *static_cast<const Word*>(unattached.getKey()));
}

TEST(fxBinaryOTDictIter, movesOnWhenItsEntryIsRemoved) {
    fxBinaryOTDict table(2);
    add(table, 8, 1);
    add(table, 16, 2);
    fxBinaryOTDictIter iter(table);
    const Word removed = 16;
    table.remove(&removed);
    EXPECT_EQ(nullptr, iter.getKey()) << "between the entries";
    ++iter;
    EXPECT_EQ((std::vector<Word>{8}), keysOf(iter));
}
