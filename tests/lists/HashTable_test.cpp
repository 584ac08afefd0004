#include "kelvofxds/lists/HashTable.h"

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <map>
#include <random>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/heapCalls.h"

struct HashTableLayout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
    static_assert(sizeof(HashEntry) == 16, "four words");
    static_assert(offsetof(HashEntry, key) == 0, "the key comes first");
    static_assert(offsetof(HashEntry, value) == 4, "then the value");
    static_assert(offsetof(HashEntry, next) == 8, "then next");
    static_assert(offsetof(HashEntry, prev) == 12, "then prev");
    static_assert(sizeof(HashTable) == 16, "four words, no table of virtual operations");
    static_assert(offsetof(HashTable, buckets) == 0, "the buckets come first");
    static_assert(offsetof(HashTable, count) == 4, "then the count");
    static_assert(offsetof(HashTable, size) == 8, "then the number of buckets");
    static_assert(offsetof(HashTable, sizeLog2) == 12, "then its logarithm");
#pragma GCC diagnostic pop
    static_assert(std::is_same<unsigned long, decltype(HashEntry::key)>::value, "unsigned");
    static_assert(std::is_same<int, decltype(HashTable::count)>::value, "signed");
    static_assert(std::is_same<int, decltype(HashTable::size)>::value, "signed");
    static_assert(std::is_same<int, decltype(HashTable::sizeLog2)>::value, "signed");

    static HashEntry** buckets(HashTable& table) { return table.buckets; }
    static int& count(HashTable& table) { return table.count; }
    static int& size(HashTable& table) { return table.size; }
    static int& sizeLog2(HashTable& table) { return table.sizeLog2; }
};

namespace {

using Layout = HashTableLayout;
using Keys = std::vector<unsigned long>;

int places[1000];

void* value(unsigned int i) { return places + i; }

/// The keys of a bucket from its head, after a look at its links.
Keys keysOf(HashTable& table, unsigned int bucket) {
    Keys keys;
    const HashEntry* before = nullptr;
    for (const HashEntry* entry = Layout::buckets(table)[bucket]; entry; entry = entry->next) {
        EXPECT_EQ(before, entry->prev);
        before = entry;
        keys.push_back(entry->key);
    }
    return keys;
}

/// All keys, bucket by bucket; each has to be in the right one.
Keys allKeys(HashTable& table) {
    Keys all;
    for (int i = 0; i < Layout::size(table); ++i) {
        for (unsigned long key : keysOf(table, static_cast<unsigned int>(i))) {
            EXPECT_EQ(static_cast<unsigned int>(i), table.hash(key)) << "key " << key;
            all.push_back(key);
        }
    }
    return all;
}

void expectShape(HashTable& table, int count, int size, int sizeLog2) {
    EXPECT_EQ(count, Layout::count(table));
    EXPECT_EQ(size, Layout::size(table));
    EXPECT_EQ(sizeLog2, Layout::sizeLog2(table));
}

/// The table with its size set as if it had that many buckets; sets it back.
class AsIfOfSize {
public:
    AsIfOfSize(HashTable& t, int log2) : table(t), before(Layout::sizeLog2(t)) {
        Layout::sizeLog2(table) = log2;
    }
    AsIfOfSize(const AsIfOfSize&) = delete;
    AsIfOfSize& operator=(const AsIfOfSize&) = delete;
    ~AsIfOfSize() { Layout::sizeLog2(table) = before; }

private:
    HashTable& table;
    int before;
};

Keys called;
void note(HashEntry* entry) { called.push_back(entry->key); }

}  // namespace

TEST(HashTable, aNewTableHasSixtyFourEmptyBuckets) {
    HashTable table;
    expectShape(table, 0, 64, 6);
    EXPECT_EQ(0, table.getCount());
    EXPECT_EQ(64, table.getSize());
    for (unsigned int i = 0; i < 64; ++i)
        EXPECT_EQ(nullptr, Layout::buckets(table)[i]);
}

// Hashing.

TEST(HashTable, theIndexIsMadeOfPartsOfTheKeyByTheNumberOfBuckets) {
    HashTable table;
    const struct {
        int log2;
        unsigned long key;
        unsigned int index;
    } cases[] = {
        {6, 0, 0},
        {6, 5, 5},
        {6, 63, 63},
        {6, 64, 1},
        {6, 0x1000, 0x01},   // >> 6 gives 0x40, >> 12 gives 1
        {6, 0xABCDE, 0x06},  // 0x33 ^ 0x1E ^ 0x2B
        {6, 0xFFFFF, 0x3F},  // three times 0x3F
        {7, 127, 127},
        {7, 128, 1},
        {7, 0x2000, 0x41},   // >> 7 gives 0x40, >> 13 gives 1
        {7, 0xABCDE, 0x72},  // 0x79 ^ 0x5E ^ 0x55
        {8, 255, 255},
        {8, 256, 1},
        {8, 0x10000, 0x01},  // >> 8 gives 0x100, >> 16 gives 1
        {8, 0xABCDE, 0x68},  // 0xBC ^ 0xDE ^ 0x0A
        {8, 0xFFFFF, 0x0F},  // 0xFF ^ 0xFF ^ 0x0F
        {9, 511, 511},
        {9, 512, 1},
        {9, 0xABCDE, 0x180},  // 0x15E ^ 0x0DE
        {9, 0xFFFFF, 0},      // twice 0x1FF
        {10, 1023, 1023},
        {10, 1024, 1},
        {10, 0xABCDE, 0x271},  // 0x2AF ^ 0x0DE
        {10, 0xFFFFF, 0},      // twice 0x3FF
        {11, 2047, 2047},
        {11, 2048, 1},
        {11, 0xABCDE, 0x589},  // 0x157 ^ 0x4DE
        {11, 0xFFFFF, 0x600},  // 0x1FF ^ 0x7FF
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "key " << c.key << ", 2 to the power of " << c.log2);
        const AsIfOfSize size(table, c.log2);
        EXPECT_EQ(c.index, table.hash(c.key));
    }
}

TEST(HashTable, everyIndexIsThatOfTheFormulaAndABucket) {
    HashTable table;
    std::mt19937 random(20240229);
    for (int round = 0; round < 20000; ++round) {
        const unsigned long key = random();
        const unsigned long k = key & 0xFFFFF;
        const unsigned long expected[] = {
            ((k >> 6) ^ k ^ (k >> 12)) & 63,  ((k >> 7) ^ k ^ (k >> 13)) & 127,
            ((k >> 8) ^ k ^ (k >> 16)) & 255, ((k >> 9) ^ k) & 511,
            (k >> 10) ^ (key & 1023),         (k >> 11) ^ (key & 2047),
        };
        for (int log2 = 6; log2 <= 11; ++log2) {
            const AsIfOfSize size(table, log2);
            ASSERT_EQ(expected[log2 - 6], table.hash(key)) << key << ", " << log2;
            ASSERT_LT(table.hash(key), 1U << log2) << key;
        }
    }
}

TEST(HashTable, anyOtherSizeHasIndexZero) {
    HashTable table;
    for (int log2 : {-1, 0, 5, 12, 20, 31}) {
        const AsIfOfSize size(table, log2);
        EXPECT_EQ(0U, table.hash(0xABCDE)) << log2;
    }
}

TEST(HashTable, deliberateKeyBitsAboveTheTwentiethDoNotTakePart) {
    HashTable table;
    for (int log2 = 6; log2 <= 11; ++log2) {
        const AsIfOfSize size(table, log2);
        for (unsigned long key : {5UL, 0xABCDEUL, 0xFFFFFUL}) {
            EXPECT_EQ(table.hash(key), table.hash(key + 0x100000)) << log2;
            EXPECT_EQ(table.hash(key), table.hash(key | 0xFFF00000)) << log2;
        }
    }
}

// Adding, finding, removing.

TEST(HashTable, addGivesTheKeyItsValue) {
    HashTable table;
    HashEntry* entry = table.add(7, value(1));
    EXPECT_EQ(7U, entry->key);
    EXPECT_EQ(value(1), entry->value);
    EXPECT_EQ(entry, Layout::buckets(table)[7]);
    EXPECT_EQ(nullptr, entry->next);
    EXPECT_EQ(nullptr, entry->prev);
    EXPECT_EQ(1, table.getCount());
    EXPECT_EQ(value(1), table.lookup(7));
}

TEST(HashTable, addElementPutsAnEntryWithoutValueAtTheHeadOfItsBucket) {
    HashTable table;
    for (unsigned long key : {5UL, 0x100005UL, 0x200005UL}) {
        const HashEntry* entry = table.addElement(key);
        EXPECT_EQ(key, entry->key);
        EXPECT_EQ(nullptr, entry->value);
        EXPECT_EQ(entry, Layout::buckets(table)[5]);
    }
    EXPECT_EQ((Keys{0x200005, 0x100005, 5}), keysOf(table, 5));
    EXPECT_EQ(3, table.getCount());
}

TEST(HashTable, deliberateAddElementDoesNotLookForDuplicates) {
    HashTable table;
    table.addElement(5)->value = value(1);
    table.addElement(5)->value = value(2);
    EXPECT_EQ((Keys{5, 5}), keysOf(table, 5));
    EXPECT_EQ(2, table.getCount());
    EXPECT_EQ(value(2), table.lookup(5));
    table.remove(5);
    EXPECT_EQ(value(1), table.lookup(5));
}

TEST(HashTable, lookupOfAKeyThatIsNotThereIsNull) {
    HashTable table;
    EXPECT_EQ(nullptr, table.lookup(5));
    table.add(5, value(1));
    EXPECT_EQ(nullptr, table.lookup(6));
    EXPECT_EQ(nullptr, table.lookup(0x100005));  // of the same bucket
    EXPECT_EQ(nullptr, table.lookup(0xFFFFFFFF));
}

TEST(HashTable, keysOfOneBucketKeepTheirOwnValues) {
    HashTable table;
    for (unsigned int i = 0; i < 10; ++i)
        table.add(5 + i * 0x100000UL, value(i));
    for (unsigned int i = 0; i < 10; ++i)
        EXPECT_EQ(value(i), table.lookup(5 + i * 0x100000UL));
    EXPECT_EQ(10U, keysOf(table, 5).size());
}

TEST(HashTable, theWholeRangeOfKeysCanBeUsed) {
    HashTable table;
    unsigned int i = 0;
    const Keys keys = {0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF};
    for (unsigned long key : keys)
        table.add(key, value(i++));
    i = 0;
    for (unsigned long key : keys)
        EXPECT_EQ(value(i++), table.lookup(key)) << key;
}

TEST(HashTable, searchBucketForFindsTheFirstEntryOfTheChain) {
    HashTable table;
    EXPECT_EQ(nullptr, table.searchBucketFor(nullptr, 5));
    HashEntry* const last = table.addElement(5);
    HashEntry* const middle = table.addElement(0x100005);
    HashEntry* const first = table.addElement(5);
    EXPECT_EQ(first, table.searchBucketFor(first, 5));
    EXPECT_EQ(middle, table.searchBucketFor(first, 0x100005));
    EXPECT_EQ(last, table.searchBucketFor(middle, 5));
    EXPECT_EQ(nullptr, table.searchBucketFor(last, 0x100005));
}

TEST(HashTable, removeUnlinksTheEntryFromAnyPlaceOfItsChain) {
    const Keys chain = {0x300005, 0x200005, 0x100005, 5};  // from the head
    for (unsigned long key : chain) {
        SCOPED_TRACE(key);
        HashTable table;
        for (unsigned int i = 4; i > 0; --i)
            table.add(chain[i - 1], value(i - 1));
        table.remove(key);
        Keys expected;
        for (unsigned int i = 0; i < 4; ++i) {
            if (chain[i] != key)
                expected.push_back(chain[i]);
            EXPECT_EQ(chain[i] != key ? value(i) : nullptr, table.lookup(chain[i]));
        }
        EXPECT_EQ(expected, keysOf(table, 5));
    }
}

TEST(HashTable, removeOfTheOnlyEntryLeavesAnEmptyBucket) {
    HashTable table;
    table.add(5, value(1));
    table.remove(5);
    EXPECT_EQ(nullptr, Layout::buckets(table)[5]);
}

TEST(HashTable, removeOfAKeyThatIsNotThereDoesNothing) {
    HashTable table;
    table.remove(5);
    table.add(5, value(1));
    table.remove(0x100005);
    table.remove(6);
    EXPECT_EQ((Keys{5}), allKeys(table));
}

TEST(HashTable, aRemovedKeyCanBeAddedAgain) {
    HashTable table;
    table.add(5, value(1));
    table.remove(5);
    EXPECT_EQ(nullptr, table.lookup(5));
    table.add(5, value(2));
    EXPECT_EQ(value(2), table.lookup(5));
}

TEST(HashTable, deliberateRemoveDoesNotLowerTheCount) {
    HashTable table;
    for (unsigned int i = 1; i <= 256; ++i) {
        table.add(5, value(1));
        table.remove(5);
        EXPECT_EQ(static_cast<int>(i), table.getCount());
    }
    EXPECT_EQ(64, table.getSize());
    table.add(5, value(1));  // the table is empty, but this is the 257th addition
    expectShape(table, 257, 128, 7);
}

TEST(HashTable, destructionLeavesTheValuesAlone) {
    int object = 3;
    {
        HashTable table;
        table.add(1, &object);
        table.add(2, &object);
    }
    EXPECT_EQ(3, object);
}

// Growth.

TEST(HashTable, growsWhenFourTimesAsManyWereAddedAsThereAreBuckets) {
    HashTable table;
    int added = 0;
    for (int log2 = 6; log2 < 11; ++log2) {
        while (added < 4 << log2)
            table.add(static_cast<unsigned long>(added++), nullptr);
        expectShape(table, added, 1 << log2, log2);  // at 4 times, still the same
        table.add(static_cast<unsigned long>(added++), nullptr);
        expectShape(table, added, 2 << log2, log2 + 1);
    }
    EXPECT_EQ(4097, added);
    EXPECT_EQ(4097U, allKeys(table).size());
}

TEST(HashTable, growsUpTo2048BucketsAndNoFurther) {
    HashTable table;
    for (unsigned int i = 0; i < 20000; ++i)
        table.add(i * 77, value(i % 1000));
    expectShape(table, 20000, 2048, 11);
    for (unsigned int i = 0; i < 20000; ++i)
        ASSERT_EQ(value(i % 1000), table.lookup(i * 77)) << i;
    EXPECT_EQ(20000U, allKeys(table).size());
}

TEST(HashTable, deliberateRebuildingReversesEntriesThatStayTogether) {
    HashTable table;
    // In bucket 5 of 64 and, of 128, in bucket 5 too: the bits above the twentieth do not count.
    for (unsigned long i = 0; i < 4; ++i)
        table.addElement(5 + i * 0x100000);
    // In bucket 5 of 64 and in bucket 69 of 128: (68 >> 6) ^ 68 is 69, of which 6 bits are 5.
    table.addElement(68);
    table.addElement(68 + 0x100000);
    EXPECT_EQ((Keys{0x100044, 68, 0x300005, 0x200005, 0x100005, 5}), keysOf(table, 5));

    table.rebuildTable();

    expectShape(table, 6, 128, 7);
    EXPECT_EQ((Keys{5, 0x100005, 0x200005, 0x300005}), keysOf(table, 5));
    EXPECT_EQ((Keys{68, 0x100044}), keysOf(table, 68));
    EXPECT_EQ(6U, allKeys(table).size());
}

TEST(HashTable, rebuildingTakesTheOldBucketsInOrder) {
    HashTable table;
    table.addElement(64);   // bucket 1 of 64, bucket 64 of 128
    table.addElement(192);  // 3 ^ 192 is 195: bucket 3 of 64; 1 ^ 192 is 193: bucket 65 of 128
    table.addElement(65);   // 1 ^ 65: bucket 0 of 64, bucket 65 of 128
    EXPECT_EQ((Keys{65}), keysOf(table, 0));
    EXPECT_EQ((Keys{64}), keysOf(table, 1));
    EXPECT_EQ((Keys{192}), keysOf(table, 3));
    table.rebuildTable();
    EXPECT_EQ((Keys{64}), keysOf(table, 64));
    EXPECT_EQ((Keys{192, 65}), keysOf(table, 65));  // 65 was moved first
}

TEST(HashTable, deliberateATableRebuiltBeyond2048BucketsUsesTheFirstAlone) {
    HashTable table;
    for (unsigned long i = 0; i < 10; ++i)
        table.add(i, value(static_cast<unsigned int>(i)));
    for (int log2 = 7; log2 <= 14; ++log2) {
        table.rebuildTable();
        expectShape(table, 10, 1 << log2, log2);
    }
    EXPECT_EQ(10U, keysOf(table, 0).size());
    EXPECT_EQ(10U, allKeys(table).size());
    table.add(99, value(99));
    EXPECT_EQ(value(99), table.lookup(99));
    EXPECT_EQ(value(3), table.lookup(3));
    table.remove(3);
    EXPECT_EQ(nullptr, table.lookup(3));
}

TEST(HashTable, theCountWrapsAround) {
    HashTable table;
    for (int i = 0; i < 5; ++i)
        table.rebuildTable();
    Layout::count(table) = 0x7FFFFFFF;
    table.add(1, value(1));
    EXPECT_EQ(static_cast<int>(0x80000000), table.getCount());
    table.add(2, value(2));
    expectShape(table, static_cast<int>(0x80000001), 2048, 11);
    EXPECT_EQ(value(1), table.lookup(1));
    EXPECT_EQ(value(2), table.lookup(2));
}

// Walking.

TEST(HashTable, mapcarGoesFromBucketZeroOnAndEachChainFromItsHead) {
    HashTable table;
    for (unsigned long key : {63UL, 5UL, 0UL, 0x100005UL, 0x10003FUL})
        table.add(key, nullptr);
    called.clear();
    table.mapcar(note);
    EXPECT_EQ((Keys{0, 0x100005, 5, 0x10003F, 63}), called);
}

TEST(HashTable, mapcarEndsWithTheLastBucketOfTheTable) {
    HashTable table;
    for (unsigned long key : {0UL, 62UL, 63UL})
        table.add(key, nullptr);
    called.clear();
    Layout::size(table) = 63;
    table.mapcar(note);
    Layout::size(table) = 64;
    EXPECT_EQ((Keys{0, 62}), called);
}

TEST(HashTable, mapcarOfAnEmptyTableCallsNothing) {
    HashTable table;
    called.clear();
    table.mapcar(note);
    EXPECT_TRUE(called.empty());
}

namespace {
HashTable* walked;
void removeIt(HashEntry* entry) { walked->remove(entry->key); }
void setIt(HashEntry* entry) { entry->value = value(static_cast<unsigned int>(entry->key)); }
}  // namespace

TEST(HashTable, mapcarMayRemoveTheEntryItIsAt) {
    HashTable table;
    for (unsigned long key = 0; key < 200; ++key)
        table.add(key, nullptr);
    walked = &table;
    table.mapcar(removeIt);
    EXPECT_TRUE(allKeys(table).empty());
}

TEST(HashTable, mapcarMaySetValues) {
    HashTable table;
    for (unsigned long key = 0; key < 200; ++key)
        table.add(key, nullptr);
    table.mapcar(setIt);
    for (unsigned int key = 0; key < 200; ++key)
        EXPECT_EQ(value(key), table.lookup(key));
}

TEST(HashTable, randomChangesGiveWhatAMapGives) {
    std::mt19937 random(20240229);
    HashTable table;
    std::map<unsigned long, void*> model;
    int additions = 0;
    for (int round = 0; round < 50000; ++round) {
        const unsigned long key = (random() % 500) * 0x20001UL;
        if (random() % 2) {
            if (!model.count(key)) {
                model[key] = value(static_cast<unsigned int>(round) % 1000);
                table.add(key, model[key]);
                ++additions;
            }
        } else {
            model.erase(key);
            table.remove(key);
        }
        const auto found = model.find(key);
        ASSERT_EQ(found == model.end() ? nullptr : found->second, table.lookup(key)) << round;
    }
    EXPECT_EQ(additions, table.getCount());
    EXPECT_EQ(model.size(), allKeys(table).size());
}

// Misuse.

TEST(HashTableDeathTest, addingAKeyThatIsThereAbortsWithoutAMessage) {
    HashTable table;
    table.add(5, value(1));
    table.add(0x100005, value(1));
    EXPECT_EXIT(table.add(5, value(1)), testing::KilledBySignal(SIGABRT), "^$");
    EXPECT_EXIT(table.add(0x100005, value(2)), testing::KilledBySignal(SIGABRT), "^$");
}

TEST(HashTableDeathTest, aNullValueIsAsGoodAsAbsentToLookUpsButNotToAdd) {
    HashTable table;
    table.add(5, nullptr);
    EXPECT_EQ(nullptr, table.lookup(5));
    EXPECT_EXIT(table.add(5, nullptr), testing::KilledBySignal(SIGABRT), "^$");
}

// A sanitizer's allocator says something of its own when it returns null.
TEST(HashTableDeathTest, aTableThatCannotBeDoubledAborts) {
    HashTable table;
    table.add(5, value(1));
    EXPECT_EXIT(
        {
            for (int i = 0; i < 32; ++i)
                table.rebuildTable();
        },
        testing::KilledBySignal(SIGABRT), "");
}

#ifndef __SANITIZE_ADDRESS__
namespace {
void addWithoutMemory() {
    HashTable table;
    refuseBlocksFrom(0);
    table.addElement(1);
}

void makeWithoutMemory() {
    refuseBlocksFrom(0);
    HashTable table;
}

void rebuildWithoutMemory() {
    HashTable table;
    refuseBlocksFrom(0);
    table.rebuildTable();
}
}  // namespace

TEST(HashTableDeathTest, runningOutOfMemoryAborts) {
    EXPECT_EXIT(addWithoutMemory(), testing::KilledBySignal(SIGABRT), "^$");
    EXPECT_EXIT(makeWithoutMemory(), testing::KilledBySignal(SIGABRT), "^$");
    EXPECT_EXIT(rebuildWithoutMemory(), testing::KilledBySignal(SIGABRT), "^$");
}
#endif
