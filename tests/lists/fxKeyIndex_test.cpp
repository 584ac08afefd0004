// fxKeyIndex_test.cpp - the index beside hash tables and name spaces, by itself.

#include "kelvofxds/lists/fxKeyIndexInternal.h"

#include <malloc.h>

#include <cstdlib>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

namespace {

struct Row {
    std::uint32_t slotIn(const fxKeyIndex<Row>& index) const { return index.slotOf(key); }

    std::uint32_t key;
    Row* link;
};

struct Freed {
    void operator()(void* block) const { std::free(block); }
};
using Index = std::unique_ptr<fxKeyIndex<Row>, Freed>;

Row* found(fxKeyIndex<Row>& index, std::uint32_t key) {
    Row* row = index.at(index.slotOf(key));
    while (row && row->key != key)
        row = row->link;
    return row;
}

}  // namespace

// Room is for three quarters of the slots, which are the least power of two that does, from 64 on.
TEST(fxKeyIndex, itsSlotsAreAsManyAsItsRecordsNeed) {
    const struct {
        unsigned int records, room, slots;
    } rows[] = {{0, 48, 64},      {1, 48, 64},       {48, 48, 64},         {49, 96, 128},
                {96, 96, 128},    {97, 192, 256},    {192, 192, 256},      {193, 384, 512},
                {768, 768, 1024}, {769, 1536, 2048}, {49152, 49152, 65536}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.records);
        const Index index(fxKeyIndex<Row>::make(row.records));
        ASSERT_NE(nullptr, index);
        EXPECT_FALSE(index->isFull(row.room));
        EXPECT_TRUE(index->isFull(row.room + 1));
        const std::size_t least = row.slots * sizeof(Row*);
        EXPECT_LE(least, ::malloc_usable_size(index.get()));
        EXPECT_GT(least + 256 + least / 8, ::malloc_usable_size(index.get()));
    }
}

TEST(fxKeyIndex, recordsAreFoundThatWereAddedAndNotRemoved) {
    for (const unsigned int alike : {0U, 4U, 31U}) {
        SCOPED_TRACE(alike);
        std::vector<Row> rows;
        for (std::uint32_t i = 0; i < 300; ++i)
            rows.push_back({alike < 31 ? i << alike : i % 2 << 31 | i, nullptr});
        const Index index(fxKeyIndex<Row>::make(300, alike));
        for (Row& row : rows)
            index->add(&row);
        for (std::size_t i = 0; i < rows.size(); i += 3)
            index->remove(&rows[i]);
        for (std::size_t i = 0; i < rows.size(); ++i)
            EXPECT_EQ(i % 3 != 0 ? &rows[i] : nullptr, found(*index, rows[i].key)) << i;
        std::size_t left = 0;
        index->forEach([&left](const Row*) { ++left; });
        EXPECT_EQ(200u, left);
    }
}

// Those that are alike stand in a chain, the newest first.
TEST(fxKeyIndex, theNewestOfThoseThatAreAlikeIsFound) {
    const Index index(fxKeyIndex<Row>::make(3));
    Row rows[] = {{7, nullptr}, {7, nullptr}, {7, nullptr}};
    for (Row& row : rows)
        index->add(&row);
    EXPECT_EQ(&rows[2], found(*index, 7));
    index->remove(&rows[2]);
    EXPECT_EQ(&rows[1], found(*index, 7));
    index->remove(&rows[0]);
    EXPECT_EQ(&rows[1], found(*index, 7));
}
