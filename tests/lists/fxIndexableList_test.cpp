#include "kelvofxds/lists/fxIndexableList.h"

#include <climits>

#include <gtest/gtest.h>

#include "tests/support/indexableLists.h"

using namespace indexableLists;

// Making.

TEST(fxLinkItem, startsWithoutNeighbours) {
    const fxLinkItem link;
    EXPECT_EQ(nullptr, link.next);
    EXPECT_EQ(nullptr, link.prev);
}

TEST(fxIndexableList, aNewListIsAllZero) {
    fxIndexableList list;
    expectAllZero(list);
    EXPECT_EQ(0, list.length());
    EXPECT_EQ(nullptr, list.first());
    EXPECT_EQ(nullptr, list.last());
}

TEST(fxIndexableList, adoptsALinkedChain) {
    for (int n = 1; n < 5; ++n) {
        SCOPED_TRACE(n);
        Numbers numbers(n);
        fxIndexableList list(numbers.link(0));
        EXPECT_EQ(sequence(0, n - 1), numbersIn(list));
        expectCursor(list, 0, numbers.link(0));
    }
}

TEST(fxIndexableList, aNullChainMakesAnEmptyList) {
    fxIndexableList list(nullptr);
    expectAllZero(list);
}

TEST(fxIndexableList, destructionLeavesTheLinksAsTheyAre) {
    Number a, b;
    {
        fxIndexableList list;
        list.append(&a);
        list.append(&b);
    }
    EXPECT_EQ(&b, a.next);
    EXPECT_EQ(&a, b.prev);
}

// Inserting.

TEST(fxIndexableList, insertAtPutsTheLinkBeforeTheOneThatIsThere) {
    for (int n = 1; n < 7; ++n) {
        for (int i = 0; i < n; ++i) {
            for (int cursor = -1; cursor < n; ++cursor) {
                SCOPED_TRACE(testing::Message()
                             << "at " << i << " of " << n << ", cursor " << cursor);
                Numbers numbers(n);
                numbers.setCursor(cursor);
                Number added;
                added.number = 50;

                // Where looking the position up leaves the cursor.
                const int before = cursor < 0 ? 0 : cursor;
                const int lookedUp = i == 0 || i == n - 1 ? before : i;
                numbers->insertAt(i, &added);

                EXPECT_EQ(joined(sequence(0, i - 1), Ints{50}, sequence(i, n - 1)),
                          numbersIn(numbers.list));
                expectCursor(numbers.list, i <= lookedUp ? lookedUp + 1 : lookedUp,
                             numbers.link(lookedUp));
            }
        }
    }
}

TEST(fxIndexableList, insertAtTheLengthOrBeyondPutsTheLinkLastAndLeavesTheCursor) {
    for (long i : {3L, 4L, 1000L, LONG_MAX}) {
        for (int cursor = -1; cursor < 3; ++cursor) {
            SCOPED_TRACE(testing::Message() << "at " << i << ", cursor " << cursor);
            Numbers numbers(3);
            numbers.setCursor(cursor);
            Number added;
            added.number = 50;
            numbers->insertAt(i, &added);
            EXPECT_EQ((Ints{0, 1, 2, 50}), numbersIn(numbers.list));
            expectCursor(numbers.list, cursor < 0 ? 0 : cursor,
                         cursor < 0 ? nullptr : numbers.link(cursor));
        }
    }
}

TEST(fxIndexableList, insertAtInAnEmptyListMakesTheLinkHeadTailAndCursor) {
    for (long i : {0L, 1L, 7L, -1L}) {
        SCOPED_TRACE(i);
        fxIndexableList list;
        Number link;
        list.insertAt(i, &link);
        EXPECT_EQ((Ints{0}), numbersIn(list));
        expectCursor(list, 0, &link);
    }
}

TEST(fxIndexableList, deliberateALinkEnteringAnEmptyListKeepsItsPointers) {
    Number link, other, another;
    link.next = &other;
    link.prev = &another;
    fxIndexableList list;
    list.insertAt(0, &link);
    EXPECT_EQ(&other, link.next);
    EXPECT_EQ(&another, link.prev);
    EXPECT_EQ(&link, list.first());
    EXPECT_EQ(&link, list.last());
    EXPECT_EQ(1, list.length());
    expectCursor(list, 0, &link);
}

TEST(fxIndexableList, theFormerPointersOfALinkDoNotMatterInAListThatHasOthers) {
    Numbers numbers(3);
    for (long i : {0L, 1L, 4L, 5L}) {
        Number link, other;
        link.next = link.prev = &other;
        link.number = 9;
        numbers->insertAt(i, &link);
        EXPECT_EQ(4u, numbersIn(numbers.list).size());
        numbers->unlink(&link);
        EXPECT_EQ((Ints{0, 1, 2}), numbersIn(numbers.list));
        EXPECT_EQ(nullptr, other.next);
        EXPECT_EQ(nullptr, other.prev);
    }
}

TEST(fxIndexableList, insertAppendAndAppendAtAreInsertAt) {
    Numbers numbers(3);
    Number first, last, second;
    first.number = 10;
    last.number = 11;
    second.number = 12;
    numbers->insert(&first);
    numbers->append(&last);
    numbers->appendAt(0, &second);
    EXPECT_EQ((Ints{10, 12, 0, 1, 2, 11}), numbersIn(numbers.list));

    Number more[3];
    for (int i = 0; i < 3; ++i)
        more[i].number = 20 + i;
    numbers->appendAt(5, &more[0]);         // behind the last one
    numbers->appendAt(LONG_MAX, &more[1]);  // no position behind it
    numbers->appendAt(-1, &more[2]);        // position 0
    EXPECT_EQ((Ints{22, 10, 12, 0, 1, 2, 11, 20, 21}), numbersIn(numbers.list));
}

TEST(fxIndexableList, aPositionBelowZeroCountsAsZeroWhereLinksAreInserted) {
    Numbers numbers(3);
    Number link;
    link.number = 10;
    numbers->insertAt(-5, &link);
    Numbers others(2, 20);
    numbers->insertListAt(LONG_MIN, &others.list);
    EXPECT_EQ((Ints{20, 21, 10, 0, 1, 2}), numbersIn(numbers.list));
    Numbers more(2, 30);
    numbers->appendListAt(-1, &more.list);
    EXPECT_EQ((Ints{20, 30, 31, 21, 10, 0, 1, 2}), numbersIn(numbers.list));
}

// Unlinking.

TEST(fxIndexableList, unlinkTakesTheLinkOutAndPutsTheCursorOnTheHead) {
    for (int n = 1; n < 6; ++n) {
        for (int i = 0; i < n; ++i) {
            for (int cursor = -1; cursor < n; ++cursor) {
                SCOPED_TRACE(testing::Message() << i << " of " << n << ", cursor " << cursor);
                Numbers numbers(n);
                numbers.setCursor(cursor);
                numbers->unlink(numbers.link(i));
                EXPECT_EQ(joined(sequence(0, i - 1), sequence(i + 1, n - 1)),
                          numbersIn(numbers.list));
                EXPECT_EQ(nullptr, numbers.link(i)->next);
                EXPECT_EQ(nullptr, numbers.link(i)->prev);
                expectCursor(numbers.list, 0, numbers->first());
            }
        }
    }
}

TEST(fxIndexableList, unlinkAtKeepsTheCursorOnItsLinkOrMovesItToANeighbour) {
    for (int n = 1; n < 7; ++n) {
        for (int i = 0; i < n; ++i) {
            for (int cursor = -1; cursor < n; ++cursor) {
                SCOPED_TRACE(testing::Message() << i << " of " << n << ", cursor " << cursor);
                Numbers numbers(n);
                numbers.setCursor(cursor);
                const int before = cursor < 0 ? 0 : cursor;
                const int lookedUp = i == 0 || i == n - 1 ? before : i;

                numbers->unlinkAt(i);

                EXPECT_EQ(joined(sequence(0, i - 1), sequence(i + 1, n - 1)),
                          numbersIn(numbers.list));
                EXPECT_EQ(nullptr, numbers.link(i)->next);
                EXPECT_EQ(nullptr, numbers.link(i)->prev);
                if (i < lookedUp)
                    expectCursor(numbers.list, lookedUp - 1, numbers.link(lookedUp));
                else if (i > lookedUp)
                    expectCursor(numbers.list, lookedUp, numbers.link(lookedUp));
                else if (i + 1 < n)
                    expectCursor(numbers.list, i, numbers.link(i + 1));
                else if (i > 0)
                    expectCursor(numbers.list, i - 1, numbers.link(i - 1));
                else
                    expectCursor(numbers.list, 0, nullptr);
            }
        }
    }
}

TEST(fxIndexableList, unlinkAtOfTheLastLinkMovesACursorOnItBack) {
    Numbers numbers(5);
    numbers.setCursor(4);
    numbers->unlinkAt(4);
    expectCursor(numbers.list, 3, numbers.link(3));
}

TEST(fxIndexableList, aListFromWhichAllLinksAreGoneIsEmpty) {
    Numbers numbers(3);
    while (numbers->length())
        numbers->unlinkAt(0);
    expectAllZero(numbers.list);
    numbers->append(numbers.link(1));
    EXPECT_EQ((Ints{1}), numbersIn(numbers.list));
}

TEST(doUnlink, joinsTheNeighboursAndLeavesTheCursor) {
    for (int n = 1; n < 5; ++n) {
        for (int i = 0; i < n; ++i) {
            for (int cursor = -1; cursor < n; ++cursor) {
                SCOPED_TRACE(testing::Message() << i << " of " << n << ", cursor " << cursor);
                Numbers numbers(n);
                numbers.setCursor(cursor);
                doUnlink(&numbers.list, numbers.link(i));
                EXPECT_EQ(joined(sequence(0, i - 1), sequence(i + 1, n - 1)),
                          numbersIn(numbers.list));
                EXPECT_EQ(nullptr, numbers.link(i)->next);
                EXPECT_EQ(nullptr, numbers.link(i)->prev);
                expectCursor(numbers.list, cursor < 0 ? 0 : cursor,
                             cursor < 0 ? nullptr : numbers.link(cursor));
            }
        }
    }
}

TEST(doUnlink, ofAHeadWithoutANextLeavesNoTailWhateverItWas) {
    Numbers numbers(1);
    Number other;
    Layout::tail(numbers.list) = &other;
    doUnlink(&numbers.list, numbers.link(0));
    EXPECT_EQ(nullptr, numbers->first());
    EXPECT_EQ(nullptr, numbers->last());
    EXPECT_EQ(0, numbers->length());
}

// Splitting.

TEST(fxIndexableList, splitCutsInFrontOfTheLinkAndPutsTheCursorOnTheHead) {
    for (int n = 1; n < 6; ++n) {
        for (int i = 0; i < n; ++i) {
            for (int cursor = -1; cursor < n; ++cursor) {
                SCOPED_TRACE(testing::Message() << i << " of " << n << ", cursor " << cursor);
                Numbers numbers(n);
                numbers.setCursor(cursor);
                numbers->split(numbers.link(i));
                EXPECT_EQ(sequence(0, i - 1), numbersIn(numbers.list));
                expectCursor(numbers.list, 0, numbers->first());
                EXPECT_EQ(sequence(i, n - 1), numbersFrom(numbers.link(i)));

                fxIndexableList cutOff(numbers.link(i));
                EXPECT_EQ(sequence(i, n - 1), numbersIn(cutOff));
            }
        }
    }
}

TEST(fxIndexableList, splitAtTheHeadEmptiesTheList) {
    Numbers numbers(3);
    numbers->split(numbers.link(0));
    expectAllZero(numbers.list);
}

TEST(fxIndexableList, splitAtTheThirdLinkLeavesTwo) {
    Numbers numbers(5);
    numbers->split(numbers.link(2));
    EXPECT_EQ((Ints{0, 1}), numbersIn(numbers.list));
    EXPECT_EQ(numbers.link(1), numbers->last());
    EXPECT_EQ(2, numbers->length());
}

TEST(fxIndexableList, splitAtMovesTheCursorOnlyIfItWasCutOff) {
    for (int n = 1; n < 7; ++n) {
        for (int i = 0; i < n; ++i) {
            for (int cursor = -1; cursor < n; ++cursor) {
                SCOPED_TRACE(testing::Message() << i << " of " << n << ", cursor " << cursor);
                Numbers numbers(n);
                numbers.setCursor(cursor);
                const int before = cursor < 0 ? 0 : cursor;
                const int lookedUp = i == 0 || i == n - 1 ? before : i;

                numbers->splitAt(i);

                EXPECT_EQ(sequence(0, i - 1), numbersIn(numbers.list));
                EXPECT_EQ(sequence(i, n - 1), numbersFrom(numbers.link(i)));
                if (i == 0)
                    expectAllZero(numbers.list);
                else if (i <= lookedUp)
                    expectCursor(numbers.list, 0, numbers.link(0));
                else
                    expectCursor(numbers.list, lookedUp, numbers.link(lookedUp));
            }
        }
    }
}

TEST(doSplit, leavesTheCursorUnlessItCutsAtTheHead) {
    for (int i = 0; i < 4; ++i) {
        for (int cursor = -1; cursor < 4; ++cursor) {
            SCOPED_TRACE(testing::Message() << i << ", cursor " << cursor);
            Numbers numbers(4);
            numbers.setCursor(cursor);
            doSplit(&numbers.list, numbers.link(i));
            EXPECT_EQ(sequence(0, i - 1), numbersIn(numbers.list));
            EXPECT_EQ(sequence(i, 3), numbersFrom(numbers.link(i)));
            if (i == 0 || cursor < 0)
                expectCursor(numbers.list, 0, nullptr);
            else
                expectCursor(numbers.list, cursor, numbers.link(cursor));
        }
    }
}

TEST(doSplit, countsWhatIsLeft) {
    Numbers numbers(4);
    Layout::count(numbers.list) = 77;
    doSplit(&numbers.list, numbers.link(3));
    EXPECT_EQ(3, numbers->length());
}
