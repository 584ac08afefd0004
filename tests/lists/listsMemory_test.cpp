// listsMemory_test.cpp - which blocks the lists, the hash table and the name space own, and when
// they give them back.

#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/lists/GenericList.h"
#include "kelvofxds/lists/HashTable.h"
#include "tests/support/heapCalls.h"
#include "tests/support/indexableLists.h"
#include "tests/support/nameSpaces.h"

namespace {

/// Blocks in use beyond those that there were when it was made.
class NewBlocks {
public:
    NewBlocks() : before(heapCalls().blocks) {}
    long operator()() const { return heapCalls().blocks - before; }

private:
    long before;
};

/// Counts blocks, and so has nothing to say where nobody counts them.
class listsMemory : public testing::Test {
protected:
    void SetUp() override {
        if (!heapCallsAreCounted())
            GTEST_SKIP() << "heap calls are not counted";
    }
};

char text[] = "text";

int predefineOne(NameSpace* names) {
    names->makeAtom(text, 1);
    return 0;
}

}  // namespace

TEST_F(listsMemory, aGenericListHasOneBlockForEachNode) {
    const NewBlocks blocks;
    {
        GenericList list;
        EXPECT_EQ(0, blocks());
        for (int i = 0; i < 10; ++i)
            list.append(text);
        EXPECT_EQ(10, blocks());
        list.remove(list.first());
        list.remove(3L);
        list.remove(static_cast<void*>(text));
        EXPECT_EQ(7, blocks());
        {
            GenericList copy(list);
            EXPECT_EQ(14, blocks());
            copy.append(text);
            EXPECT_EQ(15, blocks());
        }
        EXPECT_EQ(7, blocks());
        list.clear();
        EXPECT_EQ(0, blocks());
        list.prepend(text);
        list.insertAt(1, text);
        EXPECT_EQ(2, blocks());
    }
    EXPECT_EQ(0, blocks());
}

TEST_F(listsMemory, anIndexableListHasNone) {
    indexableLists::Number links[3], spliced[2];
    const unsigned long before = heapCalls().allocations;
    fxIndexableList list, other;
    for (indexableLists::Number& link : links)
        list.append(&link);
    for (indexableLists::Number& link : spliced)
        other.append(&link);
    list.insertListAt(1, &other);
    list.findLink(2);
    list.unlinkAt(0);
    list.splitAt(2);
    EXPECT_EQ(before, heapCalls().allocations);
}

TEST_F(listsMemory, aHashTableHasItsBucketsAndOneBlockForEachEntryAndAnIndex) {
    const NewBlocks blocks;
    {
        HashTable table;
        EXPECT_EQ(1, blocks());
        for (unsigned long key = 0; key < 63; ++key)
            table.add(key, text);
        EXPECT_EQ(64, blocks());
        for (unsigned long key = 63; key < 256; ++key)
            table.add(key, text);
        EXPECT_EQ(258, blocks());  // of which one is the index
        table.add(256, text);      // doubles the table; the old buckets are freed
        EXPECT_EQ(128, table.getSize());
        EXPECT_EQ(259, blocks());
        table.remove(0);
        table.remove(256);
        table.remove(256);
        EXPECT_EQ(257, blocks());
    }
    EXPECT_EQ(0, blocks());
}

TEST_F(listsMemory, aNameSpaceHasItsTableANodeForEachAtomAndTheCopiesOfNames) {
    const NewBlocks blocks;
    {
        NameSpace names(predefineOne, nameSpaces::numbersItself);
        EXPECT_EQ(2, blocks());  // the table and a node: the name is the caller's
        names.makeAtom("copied", 1);
        EXPECT_EQ(4, blocks());
        names.makeAtom("copied", 1);
        names.makeAtom("text", 1);
        names.makeAtom("absent", 0);
        EXPECT_EQ(4, blocks());
        names.internAtom(1000, "far", 3, 1);  // a larger table in the place of the other
        EXPECT_EQ(6, blocks());
        names.freeAllAtoms();
        EXPECT_EQ(0, blocks());
    }
    EXPECT_EQ(0, blocks());
    {
        nameSpaces::Names names;
        names.freeAllAtoms();
        EXPECT_EQ(1, blocks());  // the table stays
        names.makeAtom("a", 1);  // whose atom is the first of a copy
        EXPECT_EQ(3, blocks());
    }
    EXPECT_EQ(0, blocks());
}

TEST_F(listsMemory, aNameSpaceWhoseCallbackThrowsHasNothingLeft) {
    const NewBlocks blocks;
    const auto throwing = [](NameSpace* names) -> int {
        names->makeAtom(text, 1);
        names->internAtom(1000, "far", 3, 1);
        throw 1;
    };
    try {
        NameSpace names(throwing, 0);
        ADD_FAILURE() << "it did not throw";
    } catch (int) {
    }
    EXPECT_EQ(0, blocks());
}
