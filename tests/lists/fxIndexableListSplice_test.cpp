// fxIndexableListSplice_test.cpp - lists that are put into lists.

#include <climits>

#include <gtest/gtest.h>

#include "kelvofxds/lists/fxIndexableList.h"
#include "tests/support/indexableLists.h"

using namespace indexableLists;

// Splicing.

TEST(fxIndexableList, insertListAtPutsAllLinksBeforeTheOneThatIsThere) {
    for (int n = 1; n < 5; ++n) {
        for (int i = 0; i < n; ++i) {
            for (int m = 1; m < 4; ++m) {
                for (int cursor = -1; cursor < n; ++cursor) {
                    SCOPED_TRACE(testing::Message()
                                 << m << " at " << i << " of " << n << ", cursor " << cursor);
                    Numbers numbers(n);
                    numbers.setCursor(cursor);
                    Numbers others(m, 50);
                    numbers->insertListAt(i, &others.list);
                    EXPECT_EQ(joined(sequence(0, i - 1), sequence(50, 49 + m), sequence(i, n - 1)),
                              numbersIn(numbers.list));
                    EXPECT_EQ(nullptr, Layout::cursorLink(numbers.list));
                    expectAllZero(others.list);
                }
            }
        }
    }
}

TEST(fxIndexableList, insertListAtInAnEmptyListTakesTheChain) {
    for (long i : {0L, 3L, -1L}) {
        SCOPED_TRACE(i);
        fxIndexableList list;
        Numbers others(3, 50);
        list.insertListAt(i, &others.list);
        EXPECT_EQ((Ints{50, 51, 52}), numbersIn(list));
        EXPECT_EQ(nullptr, Layout::cursorLink(list));
        expectAllZero(others.list);
    }
}

TEST(fxIndexableList, insertListAtTheLengthOrBeyondPutsTheLinksLast) {
    for (long i : {3L, 4L, LONG_MAX}) {
        SCOPED_TRACE(i);
        Numbers numbers(3), others(2, 50);
        numbers->insertListAt(i, &others.list);
        EXPECT_EQ((Ints{0, 1, 2, 50, 51}), numbersIn(numbers.list));
        expectAllZero(others.list);
    }
}

TEST(fxIndexableList, insertListPutsTheLinksFirst) {
    Numbers numbers(3), others(2, 50);
    numbers->insertList(&others.list);
    EXPECT_EQ((Ints{50, 51, 0, 1, 2}), numbersIn(numbers.list));
    EXPECT_EQ(nullptr, Layout::cursorLink(numbers.list));
    expectAllZero(others.list);
}

TEST(fxIndexableList, appendListAtPutsAllLinksBehindTheOneThatIsThere) {
    for (int n = 2; n < 6; ++n) {
        for (int i = 0; i < n - 1; ++i) {
            for (int m = 1; m < 4; ++m) {
                for (int cursor = -1; cursor < n; ++cursor) {
                    SCOPED_TRACE(testing::Message()
                                 << m << " at " << i << " of " << n << ", cursor " << cursor);
                    Numbers numbers(n);
                    numbers.setCursor(cursor);
                    Numbers others(m, 50);
                    numbers->appendListAt(i, &others.list);
                    EXPECT_EQ(joined(sequence(0, i), sequence(50, 49 + m), sequence(i + 1, n - 1)),
                              numbersIn(numbers.list));
                    EXPECT_EQ(nullptr, Layout::cursorLink(numbers.list));
                    expectAllZero(others.list);
                }
            }
        }
    }
}

TEST(fxIndexableList, appendListAtTheLengthOrBeyondMovesTheTail) {
    for (long i : {3L, 4L, LONG_MAX}) {
        SCOPED_TRACE(i);
        Numbers numbers(3), others(2, 50);
        numbers->appendListAt(i, &others.list);
        EXPECT_EQ((Ints{0, 1, 2, 50, 51}), numbersIn(numbers.list));
        EXPECT_EQ(others.link(1), numbers->last());
        EXPECT_EQ(nullptr, Layout::cursorLink(numbers.list));
        expectAllZero(others.list);
    }
}

TEST(fxIndexableList, appendListPutsTheLinksLast) {
    Numbers numbers(3), others(2, 50);
    numbers->appendList(&others.list);
    EXPECT_EQ((Ints{0, 1, 2, 50, 51}), numbersIn(numbers.list));
    EXPECT_EQ(nullptr, Layout::cursorLink(numbers.list));
    expectAllZero(others.list);
}

TEST(fxIndexableList, appendListToAnEmptyListTakesTheChain) {
    for (long i : {0L, 2L, -1L}) {
        SCOPED_TRACE(i);
        fxIndexableList list;
        Numbers others(2, 50);
        list.appendListAt(i, &others.list);
        EXPECT_EQ((Ints{50, 51}), numbersIn(list));
        EXPECT_EQ(nullptr, Layout::cursorLink(list));
        expectAllZero(others.list);
    }
}

TEST(fxIndexableList, deliberateAppendListAtTheLastPositionLeavesTheTail) {
    Numbers numbers(3), others(2, 50);
    numbers->appendListAt(2, &others.list);
    EXPECT_EQ(numbers.link(2), numbers->last());
    EXPECT_EQ(5, numbers->length());
    EXPECT_EQ((Ints{0, 1, 2, 50, 51}), numbersFrom(numbers->first()));
    EXPECT_EQ(nullptr, Layout::cursorLink(numbers.list));
    expectAllZero(others.list);
    // The last position gives the tail, and positions near it are counted back from there.
    EXPECT_EQ(numbers.link(2), numbers->findLink(4));
    EXPECT_EQ(numbers.link(1), numbers->findLink(3));
}

TEST(fxIndexableList, deliberateAppendListBehindATailThatStayedCutsOffWhatWasSplicedIn) {
    for (long i : {5L, 6L, LONG_MAX}) {
        SCOPED_TRACE(i);
        Numbers numbers(3), others(2, 50), more(2, 60);
        numbers->appendListAt(2, &others.list);
        if (i == 5)
            numbers->appendList(&more.list);
        else
            numbers->appendListAt(i, &more.list);
        EXPECT_EQ((Ints{0, 1, 2, 60, 61}), numbersFrom(numbers->first()));
        EXPECT_EQ(more.link(1), numbers->last());
        EXPECT_EQ(7, numbers->length());
        EXPECT_EQ(numbers.link(2), others.link(0)->prev);
        EXPECT_EQ(others.link(1), others.link(0)->next);
    }
}

TEST(fxIndexableList, aWalkThatLeavesTheListEndsInNull) {
    Numbers numbers(2), others(8, 50);
    numbers->appendListAt(1, &others.list);    // the tail stays at position 1 of 10
    EXPECT_EQ(nullptr, numbers->findLink(7));  // two steps back from it
    EXPECT_EQ(nullptr, Layout::cursorLink(numbers.list));
    EXPECT_EQ(nullptr, numbers->findLink(6));
    numbers->unlinkAt(6);
    numbers->splitAt(6);
    EXPECT_EQ(10, numbers->length());
    EXPECT_EQ(joined(sequence(0, 1), sequence(50, 57)), numbersFrom(numbers->first()));

    Number last;
    last.number = 9;
    numbers->insertAt(6, &last);  // the end: behind the tail
    EXPECT_EQ((Ints{0, 1, 9}), numbersFrom(numbers->first()));
    EXPECT_EQ(&last, numbers->last());
}

TEST(fxIndexableList, aListWhoseTailWasUnlinkedBeforeItsEndCanBeUsedOn) {
    Numbers numbers(1), others(2, 50);
    numbers->appendListAt(0, &others.list);
    numbers->unlinkAt(0);  // head and tail, but not the end
    EXPECT_EQ((Ints{50, 51}), numbersFrom(numbers->first()));
    EXPECT_EQ(nullptr, numbers->last());
    EXPECT_EQ(2, numbers->length());
    EXPECT_EQ(nullptr, numbers->findLink(1));

    numbers->append(numbers.link(0));
    EXPECT_EQ((Ints{50, 51, 0}), numbersIn(numbers.list));

    Numbers more(1, 20), target(2, 30), rest(1, 60);
    more->appendListAt(0, &rest.list);
    more->unlinkAt(0);
    target->insertList(&more.list);  // from a list without a tail
    EXPECT_EQ((Ints{60, 30, 31}), numbersIn(target.list));
}

TEST(fxIndexableList, aCursorThatAWrongPositionPutOnTheLinkIsForgottenWithIt) {
    Numbers numbers(2), others(3, 50);
    numbers->appendListAt(1, &others.list);
    EXPECT_EQ(numbers.link(0), numbers->findLink(3));  // one step back from the old tail
    expectCursor(numbers.list, 3, numbers.link(0));
    numbers->unlinkAt(0);
    EXPECT_EQ(nullptr, Layout::cursorLink(numbers.list));
    EXPECT_EQ((Ints{1, 50, 51, 52}), numbersFrom(numbers->first()));
}

TEST(fxIndexableList, splicingAnEmptyListChangesNoLinkButForgetsTheCursor) {
    Numbers numbers(4);
    fxIndexableList none;
    numbers.setCursor(2);
    numbers->insertListAt(1, &none);
    EXPECT_EQ(nullptr, Layout::cursorLink(numbers.list));
    numbers.setCursor(2);
    numbers->appendListAt(1, &none);
    EXPECT_EQ(nullptr, Layout::cursorLink(numbers.list));
    numbers->insertList(&none);
    numbers->appendList(&none);
    EXPECT_EQ(sequence(0, 3), numbersIn(numbers.list));
    expectAllZero(none);

    fxIndexableList other;
    none.insertList(&other);
    none.appendList(&other);
    expectAllZero(none);
    expectAllZero(other);
}

TEST(fxIndexableList, aListGivenToItselfStaysAsItIs) {
    Numbers numbers(4);
    numbers.setCursor(2);
    numbers->insertListAt(1, &numbers.list);
    numbers->insertList(&numbers.list);
    numbers->appendListAt(1, &numbers.list);
    numbers->appendList(&numbers.list);
    EXPECT_EQ(sequence(0, 3), numbersIn(numbers.list));
    expectCursor(numbers.list, 2, numbers.link(2));
}

TEST(fxIndexableList, whatWasSplicedCanBeCutOutAgain) {
    Numbers numbers(4), others(3, 50);
    numbers->insertListAt(2, &others.list);
    fxIndexableList rest(others.link(0));
    numbers->split(others.link(0));
    rest.split(numbers.link(2));
    EXPECT_EQ((Ints{0, 1}), numbersIn(numbers.list));
    EXPECT_EQ((Ints{50, 51, 52}), numbersIn(rest));
    EXPECT_EQ((Ints{2, 3}), numbersFrom(numbers.link(2)));
}
