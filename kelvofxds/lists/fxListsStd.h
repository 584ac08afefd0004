// fxListsStd.h - lists, the hash table and the name space as ranges.
#pragma once

#include <cstddef>
#include <iterator>
#include <type_traits>
#include <utility>

#include "kelvofxds/lists/GenericList.h"
#include "kelvofxds/lists/HashTable.h"
#include "kelvofxds/lists/NameSpace.h"
#include "kelvofxds/lists/fxIndexableList.h"

// A list knows of no walk. The present item may be removed during one, since the walk has looked
// up the next one before; that one may not. What is put behind the last item while that is the
// present one is not visited. The cursor stays where it is.

/// Walks the nodes of a list: Node is GenericNode or fxLinkItem.
template <class Node>
class fxListIterator {
public:
    using iterator_category = std::input_iterator_tag;  ///< It reads once over.
    using value_type = std::conditional_t<std::is_same_v<Node, GenericNode>, void*,
                                          Node>;  ///< What it walks over.
    using difference_type = std::ptrdiff_t;       ///< Of distances.
    using reference = value_type&;                ///< What * gives.
    using pointer = value_type*;                  ///< What -> gives.

    /// On `first`; at the end if that is null.
    explicit fxListIterator(Node* first = nullptr)
        : node(first), following(first ? first->next : nullptr) {}

    /// The item of a GenericList, which may be changed, or the link.
    reference operator*() const {
        if constexpr (std::is_same_v<Node, GenericNode>)
            return node->item;
        else
            return *node;
    }
    /// The same.
    pointer operator->() const { return &**this; }
    /// On the next one.
    fxListIterator& operator++() { return *this = fxListIterator(following); }
    /// The same; gives what it was before.
    fxListIterator operator++(int) {
        const fxListIterator before(*this);
        ++*this;
        return before;
    }
    friend bool operator==(const fxListIterator& a, const fxListIterator& b) {
        return a.node == b.node;
    }
    friend bool operator!=(const fxListIterator& a, const fxListIterator& b) { return !(a == b); }

private:
    Node* node;       // null at the end
    Node* following;  // behind it
};

/// The items, as they are: for (void* item : list).
inline fxListIterator<GenericNode> begin(const GenericList& list) {
    return fxListIterator<GenericNode>(list.first());
}
/// The same.
inline fxListIterator<GenericNode> begin(GenericList& list) {
    return fxListIterator<GenericNode>(list.first());
}
/// The end.
inline fxListIterator<GenericNode> end(const GenericList&) { return fxListIterator<GenericNode>(); }
/// The same.
inline fxListIterator<GenericNode> end(GenericList&) { return fxListIterator<GenericNode>(); }
/// The links: for (fxLinkItem& link : list). To the last one, also after appendListAt.
inline fxListIterator<fxLinkItem> begin(const fxIndexableList& list) {
    return fxListIterator<fxLinkItem>(list.first());
}
/// The same.
inline fxListIterator<fxLinkItem> begin(fxIndexableList& list) {
    return fxListIterator<fxLinkItem>(list.first());
}
/// The end.
inline fxListIterator<fxLinkItem> end(const fxIndexableList&) {
    return fxListIterator<fxLinkItem>();
}
/// The same.
inline fxListIterator<fxLinkItem> end(fxIndexableList&) { return fxListIterator<fxLinkItem>(); }

/// Walks a list as one of objects of class T; see fxItems.
template <class T, class Node>
class fxItemIterator {
    static constexpr bool ofPointers = std::is_same_v<Node, GenericNode>;

public:
    using iterator_category = std::input_iterator_tag;         ///< It reads once over.
    using value_type = std::conditional_t<ofPointers, T*, T>;  ///< What it walks over.
    using difference_type = std::ptrdiff_t;                    ///< Of distances.
    using reference = std::conditional_t<ofPointers, T*, T&>;  ///< What * gives.
    using pointer = T*;                                        ///< What -> gives.

    /// At the end.
    fxItemIterator() = default;
    /// Where `at` is.
    explicit fxItemIterator(fxListIterator<Node> at) : walk(at) {}

    /// The pointer of a GenericList, or the object that is the link.
    reference operator*() const { return static_cast<reference>(*walk); }
    /// On the next one.
    fxItemIterator& operator++() {
        ++walk;
        return *this;
    }
    /// The same; gives what it was before.
    fxItemIterator operator++(int) {
        const fxItemIterator before(*this);
        ++*this;
        return before;
    }
    friend bool operator==(const fxItemIterator& a, const fxItemIterator& b) {
        return a.walk == b.walk;
    }
    friend bool operator!=(const fxItemIterator& a, const fxItemIterator& b) { return !(a == b); }

private:
    fxListIterator<Node> walk;
};

/// See fxItems.
template <class T, class Node>
class fxItemRange {
public:
    /// From `first` on.
    explicit fxItemRange(fxListIterator<Node> first) : start(first) {}
    fxItemIterator<T, Node> begin() const { return fxItemIterator<T, Node>(start); }
    fxItemIterator<T, Node> end() const { return {}; }

private:
    fxListIterator<Node> start;
};

/// The items of a list, all of which are pointers to T: for (Job* job : fxItems<Job>(jobs)).
template <class T>
fxItemRange<T, GenericNode> fxItems(const GenericList& list) {
    return fxItemRange<T, GenericNode>(begin(list));
}
/// The links of a list, all of which are Ts, a class derived from fxLinkItem:
/// for (Job& job : fxItems<Job>(jobs)).
template <class T>
fxItemRange<T, fxLinkItem> fxItems(const fxIndexableList& list) {
    static_assert(std::is_base_of_v<fxLinkItem, T>, "fxItems: links are classes from fxLinkItem");
    return fxItemRange<T, fxLinkItem>(begin(list));
}
/// A temporary one would end before its items are walked.
template <class T>
void fxItems(const GenericList&&) = delete;
/// The same.
template <class T>
void fxItems(const fxIndexableList&&) = delete;

/// Whether the list has exactly that pointer. Linear.
inline bool contains(const GenericList& list, const void* item) {
    for (const void* other : list) {
        if (other == item)
            return true;
    }
    return false;
}
/// Whether the object is in the list. Linear.
inline bool contains(const fxIndexableList& list, const fxLinkItem& link) {
    for (const fxLinkItem& other : list) {
        if (&other == &link)
            return true;
    }
    return false;
}

namespace fxStdParts {
/// What mapcar calls, which hands nothing on: the call in progress is remembered here.
template <class Call>
struct Mapping {
    explicit Mapping(Call& call) : outer(present) { present = &call; }
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;
    ~Mapping() { present = outer; }
    static void entry(HashEntry* e) { (*present)(*e); }

    Call* outer;
    static inline Call* present = nullptr;
};
}  // namespace fxStdParts

/// Calls `call` with every HashEntry& of the table, as mapcar does: entries may be removed.
template <class Call>
void fxForEach(HashTable& table, Call call) {
    const fxStdParts::Mapping<Call> mapping(call);
    table.mapcar(fxStdParts::Mapping<Call>::entry);
}

/// Walks the atoms of a name space in ascending order. An entry is a pair of values, the atom and
/// its name: for (auto [atom, name] : names). Names may be added during the walk, and are visited.
class fxAtomIterator {
public:
    using iterator_category = std::input_iterator_tag;         ///< It reads once over.
    using value_type = std::pair<unsigned long, const char*>;  ///< What it walks over.
    using difference_type = std::ptrdiff_t;                    ///< Of distances.
    using reference = const value_type&;                       ///< What * gives.
    using pointer = const value_type*;                         ///< What -> gives.

    /// At the end.
    fxAtomIterator() = default;
    /// On the first atom of `s`.
    explicit fxAtomIterator(NameSpace& s) : space(&s) { ++*this; }

    /// The present entry.
    reference operator*() const { return entry; }
    /// The same.
    pointer operator->() const { return &entry; }
    /// On the next atom.
    fxAtomIterator& operator++() {
        while (entry.first < space->getLastAtom()) {
            ++entry.first;
            entry.second = space->nameForAtom(entry.first);
            if (entry.second)
                return *this;
        }
        return *this = fxAtomIterator();
    }
    /// The same; gives what it was before.
    fxAtomIterator operator++(int) {
        const fxAtomIterator before(*this);
        ++*this;
        return before;
    }
    friend bool operator==(const fxAtomIterator& a, const fxAtomIterator& b) {
        return a.space == b.space && a.entry.first == b.entry.first;
    }
    friend bool operator!=(const fxAtomIterator& a, const fxAtomIterator& b) { return !(a == b); }

private:
    NameSpace* space = nullptr;  // not owned; null at the end
    value_type entry;            // 0 and null there
};

/// The first atom, for loops.
inline fxAtomIterator begin(NameSpace& names) { return fxAtomIterator(names); }
/// The end.
inline fxAtomIterator end(NameSpace&) { return fxAtomIterator(); }
