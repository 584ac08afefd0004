#include "kelvofxds/lists/GenericList.h"

#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

struct GenericListLayout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
    static_assert(sizeof(GenericNode) == 12, "three words");
    static_assert(offsetof(GenericNode, prev) == 0, "prev comes first");
    static_assert(offsetof(GenericNode, next) == 4, "then next");
    static_assert(offsetof(GenericNode, item) == 8, "then the item");
    static_assert(sizeof(GenericList) == 20, "five words, no table of virtual operations");
    static_assert(offsetof(GenericList, count) == 0, "the count comes first");
    static_assert(offsetof(GenericList, cursorIndex) == 4, "then the cursor's position");
    static_assert(offsetof(GenericList, head) == 8, "then the head");
    static_assert(offsetof(GenericList, tail) == 12, "then the tail");
    static_assert(offsetof(GenericList, cursorNode) == 16, "then the cursor's node");
#pragma GCC diagnostic pop
    static_assert(std::is_same<int, decltype(GenericList::count)>::value, "signed");
    static_assert(std::is_same<int, decltype(GenericList::cursorIndex)>::value, "signed");

    static int& count(GenericList& list) { return list.count; }
    static int& cursorIndex(GenericList& list) { return list.cursorIndex; }
    static GenericNode*& head(GenericList& list) { return list.head; }
    static GenericNode*& tail(GenericList& list) { return list.tail; }
    static GenericNode*& cursorNode(GenericList& list) { return list.cursorNode; }
};

namespace {

using Layout = GenericListLayout;

char places[100];

/// The items of the tests: addresses that stand for numbers.
void* item(int i) { return places + i; }

int numberOf(const void* pointer) {
    return static_cast<int>(static_cast<const char*>(pointer) - places);
}

/// A list of the items 0 to `n` - 1; the cursor is on the last one.
struct Numbers : GenericList {
    explicit Numbers(int n) {
        for (int i = 0; i < n; ++i)
            append(item(i));
    }
};

/// The numbers in `list`, after a look at all its links from both ends.
std::vector<int> numbersIn(GenericList& list) {
    std::vector<int> numbers;
    const GenericNode* before = nullptr;
    for (const GenericNode* node = list.first(); node; node = node->next) {
        EXPECT_EQ(before, node->prev);
        before = node;
        numbers.push_back(numberOf(node->item));
    }
    EXPECT_EQ(before, list.last());
    EXPECT_EQ(static_cast<long>(numbers.size()), list.length());
    return numbers;
}

void expectCursor(GenericList& list, int index, const GenericNode* node) {
    EXPECT_EQ(index, Layout::cursorIndex(list));
    EXPECT_EQ(node, Layout::cursorNode(list));
}

void expectAllZero(GenericList& list) {
    EXPECT_EQ(0, Layout::count(list));
    expectCursor(list, 0, nullptr);
    EXPECT_EQ(nullptr, Layout::head(list));
    EXPECT_EQ(nullptr, Layout::tail(list));
}

using Ints = std::vector<int>;

}  // namespace

// Making and changing.

TEST(GenericList, aNewListIsAllZero) {
    GenericList list;
    expectAllZero(list);
    EXPECT_EQ(0, list.length());
    EXPECT_EQ(nullptr, list.first());
    EXPECT_EQ(nullptr, list.last());
}

TEST(GenericList, appendPutsTheItemLastAndTheCursorOnIt) {
    GenericList list;
    for (int i = 0; i < 4; ++i) {
        list.append(item(i));
        EXPECT_EQ(i + 1, list.length());
        EXPECT_EQ(item(i), list.last()->item);
        expectCursor(list, i, list.last());
    }
    EXPECT_EQ((Ints{0, 1, 2, 3}), numbersIn(list));
}

TEST(GenericList, prependPutsTheItemFirstAndTheCursorOnIt) {
    GenericList list;
    for (int i = 0; i < 4; ++i) {
        list.prepend(item(i));
        EXPECT_EQ(i + 1, list.length());
        EXPECT_EQ(item(i), list.first()->item);
        expectCursor(list, 0, list.first());
    }
    EXPECT_EQ((Ints{3, 2, 1, 0}), numbersIn(list));
}

TEST(GenericList, insertAtAnyPositionUpToTheLengthPutsTheCursorOnTheItem) {
    for (int n = 0; n < 8; ++n) {
        for (int i = 0; i <= n; ++i) {
            for (int cursor = 0; cursor < (n ? n : 1); ++cursor) {
                SCOPED_TRACE(testing::Message()
                             << "at " << i << " of " << n << ", cursor " << cursor);
                Numbers list(n);
                if (n)
                    list.findNode(cursor);

                list.insertAt(i, item(50));

                Ints expected;
                for (int k = 0; k < n; ++k)
                    expected.push_back(k);
                expected.insert(expected.begin() + i, 50);
                EXPECT_EQ(expected, numbersIn(list));
                EXPECT_EQ(i, Layout::cursorIndex(list));
                EXPECT_EQ(item(50), Layout::cursorNode(list)->item);
            }
        }
    }
}

TEST(GenericList, theSameItemAndNullMayBeInTheListAnyNumberOfTimes) {
    GenericList list;
    list.append(item(1));
    list.append(nullptr);
    list.append(item(1));
    EXPECT_EQ(3, list.length());
    EXPECT_EQ(item(1), list.findItem(0));
    EXPECT_EQ(nullptr, list.findItem(1));
    EXPECT_EQ(item(1), list.findItem(2));
}

TEST(GenericList, aCopySharesTheItemsButNotTheNodes) {
    Numbers list(5);
    list.findNode(2);
    GenericList copy(list);
    EXPECT_EQ((Ints{0, 1, 2, 3, 4}), numbersIn(copy));
    expectCursor(copy, 4, copy.last());  // as after appending
    expectCursor(list, 2, list.first()->next->next);

    copy.remove(item(3));
    list.remove(item(0));
    EXPECT_EQ((Ints{0, 1, 2, 4}), numbersIn(copy));
    EXPECT_EQ((Ints{1, 2, 3, 4}), numbersIn(list));
}

TEST(GenericList, aCopyOfAnEmptyListIsEmpty) {
    const GenericList list;
    GenericList copy(list);
    expectAllZero(copy);
}

TEST(GenericList, destructionLeavesTheItemsAlone) {
    int object = 5;
    {
        GenericList list;
        list.append(&object);
        list.append(&object);
    }
    EXPECT_EQ(5, object);
}

TEST(GenericList, removeOfANodeReturnsItsItemAndPutsTheCursorOnTheHead) {
    for (int n = 1; n < 6; ++n) {
        for (int i = 0; i < n; ++i) {
            for (int cursor = 0; cursor < n; ++cursor) {
                SCOPED_TRACE(testing::Message() << i << " of " << n << ", cursor " << cursor);
                Numbers list(n);
                GenericNode* node = list.findNode(i);
                list.findNode(cursor);

                EXPECT_EQ(item(i), list.remove(node));

                Ints expected;
                for (int k = 0; k < n; ++k)
                    if (k != i)
                        expected.push_back(k);
                EXPECT_EQ(expected, numbersIn(list));
                expectCursor(list, 0, list.first());
            }
        }
    }
}

TEST(GenericList, removeOfAPositionReturnsItsItem) {
    Numbers list(4);
    EXPECT_EQ(item(2), list.remove(2));
    EXPECT_EQ(item(0), list.remove(0L));
    EXPECT_EQ(item(3), list.remove(1));
    EXPECT_EQ(item(1), list.remove(0L));
    expectAllZero(list);
}

TEST(GenericList, removeOfAnItemTakesTheFirstNodeFromTheHead) {
    GenericList list;
    for (int i : {1, 2, 1, 3, 1})
        list.append(item(i));
    EXPECT_EQ(item(1), list.remove(item(1)));
    EXPECT_EQ((Ints{2, 1, 3, 1}), numbersIn(list));
    expectCursor(list, 0, list.first());
    EXPECT_EQ(item(1), list.remove(item(1)));
    EXPECT_EQ((Ints{2, 3, 1}), numbersIn(list));
    EXPECT_EQ(item(1), list.remove(item(1)));
    EXPECT_EQ((Ints{2, 3}), numbersIn(list));
}

TEST(GenericList, removeOfAnItemThatIsNotThereReturnsNullAndChangesNothing) {
    Numbers list(5);
    const GenericNode* node = list.findNode(2);
    EXPECT_EQ(nullptr, list.remove(item(9)));
    EXPECT_EQ(5, list.length());
    expectCursor(list, 2, node);

    GenericList empty;
    EXPECT_EQ(nullptr, empty.remove(item(0)));
    expectAllZero(empty);
}

TEST(GenericList, aNullItemIsFoundAndRemoved) {
    void* const nothing = nullptr;
    Numbers list(2);
    list.insertAt(1, nothing);
    EXPECT_EQ(nullptr, list.remove(nothing));
    EXPECT_EQ((Ints{0, 1}), numbersIn(list));
}

TEST(GenericList, clearRemovesAllNodesAndTheListCanBeUsedOn) {
    Numbers list(5);
    list.clear();
    expectAllZero(list);
    list.clear();
    expectAllZero(list);
    list.append(item(7));
    EXPECT_EQ((Ints{7}), numbersIn(list));
    expectCursor(list, 0, list.first());
}

TEST(GenericNode, destructionJoinsTheNeighbours) {
    GenericNode a(item(1)), c(item(3));
    {
        GenericNode b(item(2));
        EXPECT_EQ(nullptr, b.prev);
        EXPECT_EQ(nullptr, b.next);
        a.next = &b;
        b.prev = &a;
        b.next = &c;
        c.prev = &b;
    }
    EXPECT_EQ(&c, a.next);
    EXPECT_EQ(&a, c.prev);
    {
        GenericNode first(item(0));
        first.next = &a;
        a.prev = &first;
    }
    EXPECT_EQ(nullptr, a.prev);
    {
        GenericNode last(item(4));
        last.prev = &c;
        c.next = &last;
    }
    EXPECT_EQ(nullptr, c.next);
    a.next = c.prev = nullptr;
}

// Look-ups.

TEST(GenericList, findGivesNodeAndItemOfEveryPosition) {
    const Numbers list(9);
    const GenericNode* node = list.first();
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(node, list.findNode(i));
        EXPECT_EQ(item(i), list.findItem(i));
        EXPECT_EQ(item(i), list.findItem(static_cast<long>(i)));
        node = node->next;
    }
}

namespace {

enum Direction { forward, backward };

/// A list of `n` nodes whose links lead astray: every node has a chain of its
/// own for either direction, so that the node found tells where the walk to it
/// started, which way it went and how many steps it took.
class Trails {
public:
    Trails(int n, int cursor)
        : length(n),
          nodes(static_cast<std::size_t>(n)),
          decoys(static_cast<std::size_t>(2 * n * n)) {
        for (int k = 0; k < n; ++k) {
            nodes[index(k)].next = decoy(k, forward, 1);
            nodes[index(k)].prev = decoy(k, backward, 1);
            for (int steps = 1; steps < n; ++steps) {
                decoy(k, forward, steps)->next = decoy(k, forward, steps + 1);
                decoy(k, backward, steps)->prev = decoy(k, backward, steps + 1);
            }
        }
        Layout::count(list) = n;
        Layout::head(list) = node(0);
        Layout::tail(list) = node(n - 1);
        Layout::cursorIndex(list) = cursor;
        Layout::cursorNode(list) = node(cursor);
    }

    ~Trails() {
        for (GenericNode& n : nodes)
            n.prev = n.next = nullptr;
        for (GenericNode& d : decoys)
            d.prev = d.next = nullptr;
        Layout::count(list) = 0;
        Layout::head(list) = Layout::tail(list) = Layout::cursorNode(list) = nullptr;
    }

    GenericNode* node(int k) { return &nodes[index(k)]; }

    /// What a walk of `steps` from node `start` finds.
    GenericNode* decoy(int start, Direction direction, int steps) {
        if (steps >= length)
            return nullptr;
        return &decoys[index((start * 2 + direction) * length + steps)];
    }

    GenericList list;

private:
    static std::size_t index(int i) { return static_cast<std::size_t>(i); }

    int length;
    std::vector<GenericNode> nodes, decoys;
};

}  // namespace

TEST(GenericList, everyLookUpWalksTheStatedWayFromEveryCursor) {
    for (int n = 1; n <= 12; ++n) {
        for (int c = 0; c < n; ++c) {
            for (int i = 0; i < n; ++i) {
                SCOPED_TRACE(testing::Message() << i << " of " << n << ", cursor " << c);
                Trails trails(n, c);
                GenericNode* const found = trails.list.findNode(i);

                if (i == 0 || i == n - 1 || i == c) {
                    EXPECT_EQ(trails.node(i), found);
                    expectCursor(trails.list, c, trails.node(c));
                    continue;
                }
                GenericNode* expected;
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

TEST(GenericList, deliberateATieOfTailAndCursorGoesToTheTail) {
    Trails trails(9, 2);
    EXPECT_EQ(trails.decoy(8, backward, 3), trails.list.findNode(5));
}

TEST(GenericList, deliberateATieOfHeadAndCursorGoesToTheCursor) {
    Trails trails(9, 6);
    EXPECT_EQ(trails.decoy(6, backward, 3), trails.list.findNode(3));
}

TEST(GenericList, sequentialAccessTakesOneStepEach) {
    for (int i = 1; i < 8; ++i) {
        Trails ascending(100, i * 5);
        EXPECT_EQ(ascending.decoy(i * 5, forward, 1), ascending.list.findNode(i * 5 + 1));
        Trails descending(100, 99 - i * 5);
        EXPECT_EQ(descending.decoy(99 - i * 5, backward, 1),
                  descending.list.findNode(99 - i * 5 - 1));
    }
}

TEST(GenericList, afterRemoveALookUpOfOneStartsAtTheHead) {
    Numbers list(9);
    list.findNode(5);
    list.remove(7);
    expectCursor(list, 0, list.first());
    EXPECT_EQ(list.first()->next, list.findNode(1));
    expectCursor(list, 1, list.first()->next);
}

TEST(GenericList, randomChangesKeepItemsAndCursorRight) {
    std::mt19937 random(20240229);
    GenericList list;
    Ints model;
    for (int round = 0; round < 20000; ++round) {
        const int length = static_cast<int>(model.size());
        const int i = length ? static_cast<int>(random() % static_cast<unsigned>(length)) : 0;
        const int number = static_cast<int>(random() % 100);
        const unsigned int what = random() % 5;
        if (what <= 1 && length < 40) {
            list.insertAt(i, item(number));
            model.insert(model.begin() + i, number);
            EXPECT_EQ(i, Layout::cursorIndex(list));
        } else if (what == 2 && length) {
            EXPECT_EQ(item(model[static_cast<std::size_t>(i)]), list.remove(static_cast<long>(i)));
            model.erase(model.begin() + i);
            expectCursor(list, 0, list.first());
        } else if (length) {
            EXPECT_EQ(item(model[static_cast<std::size_t>(i)]), list.findItem(i));
        }
        if (list.length() && Layout::cursorNode(list)->item !=
                                 item(model[static_cast<std::size_t>(Layout::cursorIndex(list))]))
            FAIL() << "the cursor is wrong after round " << round;
    }
    EXPECT_EQ(model, numbersIn(list));
}

// Misuse.

namespace {

const char boundsMessage[] =
    "^List bounds violation in \\.\\./GenericList\\.cxx aborting \\.\\.\\.\n$";
const char underflowMessage[] = "^List underflow in \\.\\./GenericList\\.cxx aborting \\.\\.\\.\n$";

struct ChildReport {
    std::string output, errors;
    int status;
};

std::string textFrom(int fd) {
    std::string text;
    char buffer[256];
    for (ssize_t n; (n = ::read(fd, buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<std::size_t>(n));
    ::close(fd);
    return text;
}

/// What `work` writes in a child whose standard streams are pipes, both of them
/// fully buffered.
template <class Work>
ChildReport reportThroughPipes(Work work) {
    int out[2];
    int err[2];
    EXPECT_EQ(0, ::pipe(out));
    EXPECT_EQ(0, ::pipe(err));
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        static char buffers[2][4096];
        ::dup2(out[1], STDOUT_FILENO);
        ::dup2(err[1], STDERR_FILENO);
        std::setvbuf(stdout, buffers[0], _IOFBF, sizeof buffers[0]);
        std::setvbuf(stderr, buffers[1], _IOFBF, sizeof buffers[1]);
        work();
        ::_exit(0);
    }
    ::close(out[1]);
    ::close(err[1]);
    ChildReport report;
    report.output = textFrom(out[0]);
    report.errors = textFrom(err[0]);
    ::waitpid(child, &report.status, 0);
    return report;
}

}  // namespace

TEST(GenericListDeathTest, findOutOfRangeIsFatal) {
    for (int n : {0, 1, 5}) {
        const Numbers list(n);
        for (long i : {-1L, static_cast<long>(n), n + 1L, LONG_MIN, LONG_MAX}) {
            SCOPED_TRACE(testing::Message() << i << " of " << n);
            EXPECT_EXIT(list.findNode(i), testing::KilledBySignal(SIGABRT), boundsMessage);
            EXPECT_EXIT(list.findItem(i), testing::KilledBySignal(SIGABRT), boundsMessage);
            EXPECT_EXIT(list.findItem(static_cast<int>(i)), testing::KilledBySignal(SIGABRT),
                        boundsMessage);
        }
    }
}

TEST(GenericListDeathTest, insertAtOutOfRangeIsFatal) {
    for (int n : {0, 1, 5}) {
        Numbers list(n);
        for (long i : {-1L, n + 1L, LONG_MIN, LONG_MAX}) {
            SCOPED_TRACE(testing::Message() << i << " of " << n);
            EXPECT_EXIT(list.insertAt(i, item(0)), testing::KilledBySignal(SIGABRT), boundsMessage);
        }
    }
}

TEST(GenericListDeathTest, removeOfAPositionOutOfRangeIsABoundsViolation) {
    for (int n : {0, 1, 5}) {
        Numbers list(n);
        SCOPED_TRACE(n);
        EXPECT_EXIT(list.remove(-1L), testing::KilledBySignal(SIGABRT), boundsMessage);
        EXPECT_EXIT(list.remove(static_cast<long>(n)), testing::KilledBySignal(SIGABRT),
                    boundsMessage);
    }
}

TEST(GenericListDeathTest, removeOfANodeFromAnEmptyListIsAnUnderflow) {
    GenericList list;
    GenericNode node(item(1));
    GenericNode* const none = nullptr;
    EXPECT_EXIT(list.remove(&node), testing::KilledBySignal(SIGABRT), underflowMessage);
    EXPECT_EXIT(list.remove(none), testing::KilledBySignal(SIGABRT), underflowMessage);
}

TEST(GenericListDeathTest, theMessagesArriveOnStandardErrorThroughAPipe) {
    GenericList list;
    const ChildReport bounds = reportThroughPipes([&] { list.findItem(-1); });
    EXPECT_EQ("List bounds violation in ../GenericList.cxx aborting ...\n", bounds.errors);
    EXPECT_EQ("", bounds.output);
    EXPECT_TRUE(WIFSIGNALED(bounds.status));
    EXPECT_EQ(SIGABRT, WTERMSIG(bounds.status));

    GenericNode node;
    const ChildReport empty = reportThroughPipes([&] { list.remove(&node); });
    EXPECT_EQ("List underflow in ../GenericList.cxx aborting ...\n", empty.errors);
    EXPECT_EQ("", empty.output);
    EXPECT_TRUE(WIFSIGNALED(empty.status));
    EXPECT_EQ(SIGABRT, WTERMSIG(empty.status));
}
