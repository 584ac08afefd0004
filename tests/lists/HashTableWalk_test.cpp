// HashTableWalk_test.cpp - tables that change while mapcar walks them.

#include <cstddef>
#include <set>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/lists/HashTable.h"

namespace {

using Keys = std::vector<unsigned long>;

HashTable* walked;
Keys visited;
Keys toRemove;

// Keys that share a bucket at every size; the last one added comes first.
unsigned long inOneBucket(unsigned long i) { return i << 20; }

void removeSome(HashEntry* entry) {
    visited.push_back(entry->key);
    for (const unsigned long key : toRemove)
        walked->remove(key);
}

Keys visitedWhileRemoving(HashTable& table, const Keys& keys) {
    walked = &table;
    toRemove = keys;
    visited.clear();
    table.mapcar(removeSome);
    return visited;
}

// A table of five keys in one bucket and one behind it.
struct Chain : HashTable {
    Chain() {
        for (unsigned long i = 0; i < 5; ++i)
            add(inOneBucket(i), nullptr);
        add(1, nullptr);
    }
};

}  // namespace

TEST(HashTableWalk, entriesThatAreRemovedAreNotVisitedAnyMore) {
    const unsigned long a = inOneBucket(4), b = inOneBucket(3), c = inOneBucket(2),
                        d = inOneBucket(1), e = inOneBucket(0), other = 1;
    const struct {
        Keys removed, visited;
    } rows[] = {
        {{}, {a, b, c, d, e, other}},  {{a}, {a, b, c, d, e, other}}, {{b}, {a, c, d, e, other}},
        {{a, b}, {a, c, d, e, other}}, {{b, a}, {a, c, d, e, other}}, {{b, c}, {a, d, e, other}},
        {{c, b}, {a, d, e, other}},    {{e}, {a, b, c, d, other}},    {{b, c, d, e}, {a, other}},
        {{other}, {a, b, c, d, e}},    {{a, b, c, d, e, other}, {a}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        Chain table;
        EXPECT_EQ(row.visited, visitedWhileRemoving(table, row.removed));
        Keys left;
        const std::set<unsigned long> gone(row.removed.begin(), row.removed.end());
        for (const unsigned long key : {a, b, c, d, e, other}) {
            if (gone.count(key) == 0)
                left.push_back(key);
        }
        EXPECT_EQ(left, visitedWhileRemoving(table, {}));
    }
}

namespace {
void walkInside(HashEntry* entry) {
    visited.push_back(entry->key);
    if (entry->key == inOneBucket(4))
        walked->mapcar(
            [](HashEntry* inner) { walked->remove(inner->key == 1 ? 1 : inOneBucket(3)); });
}
}  // namespace

TEST(HashTableWalk, aWalkInAWalkRemovesForBoth) {
    Chain table;
    walked = &table;
    visited.clear();
    table.mapcar(walkInside);
    EXPECT_EQ((Keys{inOneBucket(4), inOneBucket(2), inOneBucket(1), inOneBucket(0)}), visited);
}

TEST(HashTableWalk, removingFromAnotherTableChangesNothing) {
    Chain table, other;
    walked = &other;
    visited.clear();
    toRemove = {inOneBucket(3)};
    table.mapcar(removeSome);
    EXPECT_EQ(6U, visited.size());
}

namespace {
void addMore(HashEntry* entry) {
    visited.push_back(entry->key);
    for (unsigned int i = 0; i < 300 && entry->value; ++i)
        walked->addElement(1000 + visited.size() * 300 + i);
    entry->value = nullptr;
}
}  // namespace

// The table is doubled several times under the walk.
TEST(HashTableWalk, aTableMayGrow) {
    HashTable table;
    for (unsigned long key = 0; key < 20; ++key)
        table.add(key, &table);
    walked = &table;
    visited.clear();
    table.mapcar(addMore);
    EXPECT_LE(128, table.getSize());
    EXPECT_EQ(static_cast<std::size_t>(table.getCount()), visitedWhileRemoving(table, {}).size());
    EXPECT_EQ(static_cast<std::size_t>(table.getCount()),
              std::set<unsigned long>(visited.begin(), visited.end()).size());
}

namespace {
void destroyTable(HashEntry* entry) {
    visited.push_back(entry->key);
    delete walked;
}
}  // namespace

TEST(HashTableWalk, aTableMayBeDestroyed) {
    walked = new Chain;
    visited.clear();
    walked->mapcar(destroyTable);
    EXPECT_EQ(Keys{inOneBucket(4)}, visited);
}

// An exception of the function passes; what it leaves can be walked again.
TEST(HashTableWalk, anExceptionOfTheFunctionEndsTheWalk) {
    Chain table;
    EXPECT_THROW(table.mapcar([](HashEntry* entry) { throw entry->key; }), unsigned long);
    EXPECT_EQ(5U, visitedWhileRemoving(table, {inOneBucket(3)}).size());
}
