// indexableLists.h - lists of numbers, and what tests see of them.
#pragma once

#include <cstddef>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/lists/fxIndexableList.h"

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

namespace indexableLists {

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

inline int numberOf(const fxLinkItem* link) { return static_cast<const Number*>(link)->number; }

/// The numbers in the chain that starts with `link`, after a look at its links.
inline Ints numbersFrom(const fxLinkItem* link) {
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
inline Ints numbersIn(const fxIndexableList& list) {
    const Ints numbers = numbersFrom(list.first());
    const fxLinkItem* last = list.first();
    while (last && last->next)
        last = last->next;
    EXPECT_EQ(last, list.last());
    EXPECT_EQ(static_cast<long>(numbers.size()), list.length());
    return numbers;
}

inline Ints sequence(int first, int last) {
    Ints numbers;
    while (first <= last)
        numbers.push_back(first++);
    return numbers;
}

inline Ints joined(Ints a, const Ints& b, const Ints& c = Ints()) {
    a.insert(a.end(), b.begin(), b.end());
    a.insert(a.end(), c.begin(), c.end());
    return a;
}

inline void expectCursor(fxIndexableList& list, int index, const fxLinkItem* link) {
    EXPECT_EQ(index, Layout::cursorIndex(list));
    EXPECT_EQ(link, Layout::cursorLink(list));
}

inline void expectAllZero(fxIndexableList& list) {
    EXPECT_EQ(nullptr, Layout::head(list));
    EXPECT_EQ(nullptr, Layout::tail(list));
    expectCursor(list, 0, nullptr);
    EXPECT_EQ(0, Layout::count(list));
}

}  // namespace indexableLists
