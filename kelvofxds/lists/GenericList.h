// GenericList.h - a doubly linked list of pointers that can be addressed by position.
#pragma once

#include "kelvofxds/core/fxExport.h"

/// One item of a GenericList, which allocates and owns it.
class FX_EXPORT GenericNode {
public:
    /// A node without neighbours.
    explicit GenericNode(void* pointer = nullptr) : prev(nullptr), next(nullptr), item(pointer) {}
    GenericNode(const GenericNode&) = delete;
    GenericNode& operator=(const GenericNode&) = delete;
    /// Joins its neighbours to each other. A list does not learn of it: nodes
    /// of a list go through GenericList::remove.
    ~GenericNode();

    GenericNode* prev;  ///< The node before this one, or null.
    GenericNode* next;  ///< The node behind this one, or null.
    void* item;         ///< Not owned.
};

/// A list of untyped pointers in nodes of its own. To thread objects without
/// allocating, or to cut and join whole chains, use fxIndexableList.
///
/// Ownership: nodes belong to the list, items do not; a node is valid until it
/// is removed.
/// Complexity: the list remembers the position looked up last, its cursor, and
/// a look-up walks from the nearest of head, cursor and tail: one step for the
/// neighbour of the last one, a quarter of the length at worst once the cursor
/// is in the middle, half of it when the cursor is at an end. Whatever names no
/// position is constant time, except removal by item, which searches.
/// Invariant: the cursor is (0, null) in an empty list and else on a node.
/// Even look-ups move the cursor, so no two threads may use one list.
///
/// A position is 0 to the length less 1. One that is out of range is fatal, with
/// the message "List bounds violation in ../GenericList.cxx aborting ..." and a
/// newline on standard error, then abort(). Running out of memory ends the
/// process.
class FX_EXPORT GenericList {
public:
    /// An empty list.
    GenericList();
    /// New nodes for the items of `other`, which both lists then share; the
    /// cursor is on the last one. That of `other` stays. Linear.
    GenericList(const GenericList& other);
    GenericList& operator=(const GenericList&) = delete;
    /// Releases every node; the items are left alone. Linear.
    ~GenericList();

    /// Puts `item` behind the last one; the cursor is on it.
    void append(void* item);
    /// Puts `item` before the first one; the cursor is on it.
    void prepend(void* item);
    /// Makes `item` the one at position `i`, which may be the length; the cursor
    /// is on it.
    void insertAt(long i, void* item);

    /// Removes and deletes `node` and returns its item; the cursor is on the
    /// head. Fatal when the list is empty: "List underflow in
    /// ../GenericList.cxx aborting ..." and a newline on standard error, then
    /// abort().
    /// Requires: `node` is a node of this list if that has any.
    void* remove(GenericNode* node);
    /// Removes the first node that holds exactly `item`, and returns `item`;
    /// null if there is none. Linear.
    void* remove(void* item);
    /// Removes the node at position `i` and returns its item. A literal 0 also
    /// stands for a null pointer: write 0L.
    void* remove(long i);
    /// Removes all nodes. Linear.
    void clear();

    /// The node at position `i`; the cursor is on it, unless it was the head,
    /// the tail or the cursor already.
    /// Deliberate: of two equal ways the one backward is taken.
    GenericNode* findNode(long i) const;
    /// Its item.
    void* findItem(long i) const;
    void* findItem(int i) const;

    /// Number of items.
    long length() const { return count; }
    /// The first node, or null.
    GenericNode* first() const { return head; }
    /// The last node, or null.
    GenericNode* last() const { return tail; }

private:
    friend struct GenericListLayout;  // tests/lists/GenericList_test.cpp

    void setCursor(long i, GenericNode* node) const;

    int count;                        // nodes
    mutable int cursorIndex;          // position of cursorNode
    GenericNode* head;                // owned, and so are the nodes behind it
    GenericNode* tail;                // the last node
    mutable GenericNode* cursorNode;  // the node looked up last
};
