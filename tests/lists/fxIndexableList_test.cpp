#include "kelvofxds/lists/fxIndexableList.h"

#include <climits>
#include <cstddef>
#include <random>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

struct fxIndexableListLayout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
    static_assert(sizeof(fxLinkItem) == 8, "two words");
    static_assert(offsetof(fxLinkItem, next) == 0, "next comes first");
    static_assert(offsetof(fxLinkItem, prev) == 4, "then prev");
    static_assert(sizeof(fxIndexableList) == 20, "five words, no table of virtual operations");
    static_assert(offsetof(fxIndexableList, head) == 0, "the head comes first");
    static_assert(offsetof(fxIndexableList, tail) == 4, "then the tail");
    static_assert(offsetof(fxIndexableList, cursorIndex) == 8, "then the cursor's position");
    static_assert(offsetof(fxIndexableList, cursorLink) == 12, "then the cursor's link");
    static_assert(offsetof(fxIndexableList, count) == 16, "then the count");
#pragma GCC diagnostic pop
    static_assert(std::is_same<int, decltype(fxIndexableList::count)>::value, "signed");
    static_assert(std::is_same<int, decltype(fxIndexableList::cursorIndex)>::value, "signed");

    static int& count(fxIndexableList& list) { return list.count; }
    static int& cursorIndex(fxIndexableList& list) { return list.cursorIndex; }
    static fxLinkItem*& head(fxIndexableList& list) { return list.head; }
    static fxLinkItem*& tail(fxIndexableList& list) { return list.tail; }
    static fxLinkItem*& cursorLink(fxIndexableList& list) { return list.cursorLink; }
};

namespace {

using Layout = fxIndexableListLayout;
using Ints = std::vector<int>;

/// What is listed: a number.
struct Number : fxLinkItem {
    int number = 0;
};

/// A list of the numbers from `first` on, `n` of them.
class Numbers {
public:
    explicit Numbers(int n, int first = 0) : links(static_cast<std::size_t>(n)) {
        for (Number& link : links) {
            link.number = first++;
            list.append(&link);
        }
    }

    fxLinkItem* link(int i) { return &links[static_cast<std::size_t>(i)]; }
    fxIndexableList* operator->() { return &list; }

    /// The cursor on position `i`; -1 for none.
    void setCursor(int i) {
        Layout::cursorIndex(list) = i < 0 ? 0 : i;
        Layout::cursorLink(list) = i < 0 ? nullptr : link(i);
    }

    std::vector<Number> links;
    fxIndexableList list;
};

int numberOf(const fxLinkItem* link) { return static_cast<const Number*>(link)->number; }

/// The numbers in the chain that starts with `link`, after a look at its links.
Ints numbersFrom(const fxLinkItem* link) {
    Ints numbers;
    const fxLinkItem* before = nullptr;
    for (; link; link = link->next) {
        EXPECT_EQ(before, link->prev);
        before = link;
        numbers.push_back(numberOf(link));
    }
    return numbers;
}

/// The numbers in `list`, whose head, tail and count have to be right.
Ints numbersIn(const fxIndexableList& list) {
    const Ints numbers = numbersFrom(list.first());
    const fxLinkItem* last = list.first();
    while (last && last->next)
        last = last->next;
    EXPECT_EQ(last, list.last());
    EXPECT_EQ(static_cast<long>(numbers.size()), list.length());
    return numbers;
}

Ints sequence(int first, int last) {
    Ints numbers;
    while (first <= last)
        numbers.push_back(first++);
    return numbers;
}

Ints joined(Ints a, const Ints& b, const Ints& c = Ints()) {
    a.insert(a.end(), b.begin(), b.end());
    a.insert(a.end(), c.begin(), c.end());
    return a;
}

void expectCursor(fxIndexableList& list, int index, const fxLinkItem* link) {
    EXPECT_EQ(index, Layout::cursorIndex(list));
    EXPECT_EQ(link, Layout::cursorLink(list));
}

void expectAllZero(fxIndexableList& list) {
    EXPECT_EQ(nullptr, Layout::head(list));
    EXPECT_EQ(nullptr, Layout::tail(list));
    expectCursor(list, 0, nullptr);
    EXPECT_EQ(0, Layout::count(list));
}

}  // namespace

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

// Look-ups.

TEST(fxIndexableList, findLinkGivesTheLinkOfEveryPositionFromEveryCursor) {
    for (int n = 1; n < 10; ++n) {
        for (int i = 0; i < n; ++i) {
            for (int cursor = -1; cursor < n; ++cursor) {
                SCOPED_TRACE(testing::Message() << i << " of " << n << ", cursor " << cursor);
                Numbers numbers(n);
                numbers.setCursor(cursor);
                EXPECT_EQ(numbers.link(i), numbers->findLink(i));
                const int before = cursor < 0 ? 0 : cursor;
                const int after = i == 0 || i == n - 1 ? before : i;
                expectCursor(numbers.list, after, numbers.link(after));
            }
        }
    }
}

TEST(fxIndexableList, aPositionOutOfRangeGivesNullAndLeavesTheCursor) {
    Numbers numbers(4);
    numbers.setCursor(2);
    for (long i : {-1L, 4L, 5L, LONG_MIN, LONG_MAX}) {
        SCOPED_TRACE(i);
        EXPECT_EQ(nullptr, numbers->findLink(i));
        numbers->unlinkAt(i);
        numbers->splitAt(i);
        EXPECT_EQ(sequence(0, 3), numbersIn(numbers.list));
        expectCursor(numbers.list, 2, numbers.link(2));
    }
    fxIndexableList none;
    EXPECT_EQ(nullptr, none.findLink(0));
    EXPECT_EQ(nullptr, none.findLink(-1));
    none.unlinkAt(0);
    none.splitAt(0);
    expectAllZero(none);
}

TEST(fxIndexableList, afterASpliceALookUpStartsAtTheHead) {
    Numbers numbers(9), others(1, 50);
    numbers->findLink(6);
    numbers->insertListAt(4, &others.list);
    EXPECT_EQ(nullptr, Layout::cursorLink(numbers.list));
    EXPECT_EQ(numbers.link(0), numbers->findLink(0));  // does not move the cursor, but sets it
    expectCursor(numbers.list, 0, numbers.link(0));
}

namespace {

enum Direction { forward, backward };

/// A list of `n` links that lead astray: every link has a chain of its own for
/// either direction, so that the link found tells where the walk to it started,
/// which way it went and how many steps it took.
class Trails {
public:
    /// The cursor is on `cursor`; -1 for none.
    Trails(int n, int cursor)
        : length(n),
          links(static_cast<std::size_t>(n)),
          decoys(static_cast<std::size_t>(2 * n * n)) {
        for (int k = 0; k < n; ++k) {
            link(k)->next = decoy(k, forward, 1);
            link(k)->prev = decoy(k, backward, 1);
            for (int steps = 1; steps < n; ++steps) {
                decoy(k, forward, steps)->next = decoy(k, forward, steps + 1);
                decoy(k, backward, steps)->prev = decoy(k, backward, steps + 1);
            }
        }
        Layout::count(list) = n;
        Layout::head(list) = link(0);
        Layout::tail(list) = link(n - 1);
        Layout::cursorIndex(list) = cursor < 0 ? n / 2 : cursor;  // without a link it means nothing
        Layout::cursorLink(list) = cursor < 0 ? nullptr : link(cursor);
    }

    fxLinkItem* link(int k) { return &links[static_cast<std::size_t>(k)]; }

    /// What a walk of `steps` from link `start` finds.
    fxLinkItem* decoy(int start, Direction direction, int steps) {
        if (steps >= length)
            return nullptr;
        return &decoys[static_cast<std::size_t>((start * 2 + direction) * length + steps)];
    }

    fxIndexableList list;

private:
    int length;
    std::vector<fxLinkItem> links, decoys;
};

}  // namespace

TEST(fxIndexableList, everyLookUpWalksTheStatedWayFromEveryCursor) {
    for (int n = 1; n <= 12; ++n) {
        for (int cursor = -1; cursor < n; ++cursor) {
            for (int i = 0; i < n; ++i) {
                SCOPED_TRACE(testing::Message() << i << " of " << n << ", cursor " << cursor);
                Trails trails(n, cursor);
                const int c = cursor < 0 ? 0 : cursor;
                fxLinkItem* const found = trails.list.findLink(i);

                if (i == 0 || i == n - 1 || i == c) {
                    EXPECT_EQ(trails.link(i), found);
                    expectCursor(trails.list, c, trails.link(c));
                    continue;
                }
                fxLinkItem* expected;
                if (i > c && i - c < n - 1 - i)
                    expected = trails.decoy(c, forward, i - c);
                else if (i > c)
                    expected = trails.decoy(n - 1, backward, n - 1 - i);
                else if (i < c - i)
                    expected = trails.decoy(0, forward, i);
                else
                    expected = trails.decoy(c, backward, c - i);
                EXPECT_EQ(expected, found);
                expectCursor(trails.list, i, expected);
            }
        }
    }
}

TEST(fxIndexableList, deliberateATieOfTailAndCursorGoesToTheTail) {
    Trails trails(9, 2);
    EXPECT_EQ(trails.decoy(8, backward, 3), trails.list.findLink(5));
}

TEST(fxIndexableList, deliberateATieOfHeadAndCursorGoesToTheCursor) {
    Trails trails(9, 6);
    EXPECT_EQ(trails.decoy(6, backward, 3), trails.list.findLink(3));
}

TEST(fxIndexableList, randomChangesKeepLinksAndCursorRight) {
    std::mt19937 random(20240229);
    std::vector<Number> links(60);
    std::vector<Number*> model, unlisted;
    for (Number& link : links)
        unlisted.push_back(&link);
    fxIndexableList list;
    for (int round = 0; round < 20000; ++round) {
        const long length = static_cast<long>(model.size());
        const long i = length ? static_cast<long>(random() % model.size()) : 0;
        const unsigned int what = random() % 8;
        if (what <= 2 && !unlisted.empty()) {
            list.insertAt(i, unlisted.back());
            model.insert(model.begin() + i, unlisted.back());
            unlisted.pop_back();
        } else if (what == 3 && !unlisted.empty()) {
            list.append(unlisted.back());
            model.push_back(unlisted.back());
            unlisted.pop_back();
        } else if (what == 4 && length) {
            list.unlinkAt(i);
            unlisted.push_back(model[static_cast<std::size_t>(i)]);
            model.erase(model.begin() + i);
        } else if (what == 5 && length) {  // the front goes to the back
            fxLinkItem* link = model[static_cast<std::size_t>(i)];
            list.splitAt(i);
            fxIndexableList back(link);
            back.appendList(&list);
            list.insertList(&back);
            std::vector<Number*> turned(model.begin() + i, model.end());
            turned.insert(turned.end(), model.begin(), model.begin() + i);
            model = turned;
        } else if (length) {
            ASSERT_EQ(model[static_cast<std::size_t>(i)], list.findLink(i)) << "round " << round;
        }
        ASSERT_EQ(static_cast<long>(model.size()), list.length()) << "round " << round;
        const fxLinkItem* cursor = Layout::cursorLink(list);
        ASSERT_TRUE(!cursor || cursor == model[static_cast<std::size_t>(Layout::cursorIndex(list))])
            << "round " << round;
    }
    std::vector<fxLinkItem*> chain;
    for (fxLinkItem* link = list.first(); link; link = link->next)
        chain.push_back(link);
    EXPECT_EQ(std::vector<fxLinkItem*>(model.begin(), model.end()), chain);
    EXPECT_EQ(model.empty() ? nullptr : model.back(), list.last());
}
