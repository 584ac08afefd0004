// fxIndexableListLookUp_test.cpp - finding links by position.

#include <climits>
#include <cstddef>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/lists/fxIndexableList.h"
#include "tests/support/indexableLists.h"

using namespace indexableLists;

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
