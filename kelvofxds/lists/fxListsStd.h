// fxListsStd.h - lists as ranges.
#pragma once

#include <cstddef>
#include <iterator>

#include "kelvofxds/lists/GenericList.h"
#include "kelvofxds/lists/fxIndexableList.h"

/// Walks the items of a GenericList. The present item may be removed during the walk.
class fxItemIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = void*;
    using difference_type = std::ptrdiff_t;
    using reference = void*&;
    using pointer = void**;

    explicit fxItemIterator(GenericNode* first = nullptr)
        : node(first), next(first ? first->next : nullptr) {}
    reference operator*() const { return node->item; }
    fxItemIterator& operator++() { return *this = fxItemIterator(next); }
    fxItemIterator operator++(int) {
        const fxItemIterator before(*this);
        ++*this;
        return before;
    }
    friend bool operator==(const fxItemIterator& a, const fxItemIterator& b) {
        return a.node == b.node;
    }
    friend bool operator!=(const fxItemIterator& a, const fxItemIterator& b) { return !(a == b); }

private:
    GenericNode* node;
    GenericNode* next;
};

inline fxItemIterator begin(const GenericList& list) { return fxItemIterator(list.first()); }
inline fxItemIterator end(const GenericList&) { return fxItemIterator(); }

/// Walks the links of an fxIndexableList. The present link may be taken out during the walk.
class fxLinkIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = fxLinkItem;
    using difference_type = std::ptrdiff_t;
    using reference = fxLinkItem&;
    using pointer = fxLinkItem*;

    explicit fxLinkIterator(fxLinkItem* first = nullptr)
        : link(first), next(first ? first->next : nullptr) {}
    reference operator*() const { return *link; }
    pointer operator->() const { return link; }
    fxLinkIterator& operator++() { return *this = fxLinkIterator(next); }
    fxLinkIterator operator++(int) {
        const fxLinkIterator before(*this);
        ++*this;
        return before;
    }
    friend bool operator==(const fxLinkIterator& a, const fxLinkIterator& b) {
        return a.link == b.link;
    }
    friend bool operator!=(const fxLinkIterator& a, const fxLinkIterator& b) { return !(a == b); }

private:
    fxLinkItem* link;
    fxLinkItem* next;
};

inline fxLinkIterator begin(const fxIndexableList& list) { return fxLinkIterator(list.first()); }
inline fxLinkIterator end(const fxIndexableList&) { return fxLinkIterator(); }
