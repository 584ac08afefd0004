// fxIndexableList.h - a doubly linked list of the caller's own objects, by position.
#pragma once

#include "kelvofxds/core/fxExport.h"

/// What threads an object onto an fxIndexableList: the object derives from it
/// or has one as its first member. An object that has left a list by unlink or
/// unlinkAt has null pointers again.
struct fxLinkItem {
    fxLinkItem* next = nullptr;  ///< The link behind this one, or null.
    fxLinkItem* prev = nullptr;  ///< The link before this one, or null.
};

class fxIndexableList;

/// Takes `link` out of `list`: joins its neighbours, moves head and tail off it
/// and clears its pointers. The cursor stays as it is; unlink and unlinkAt care
/// for it.
/// Requires: `link` is in `list`; the cursor is set again before it is used.
FX_EXPORT void doUnlink(fxIndexableList* list, fxLinkItem* link);

/// Cuts `list` in front of `link` and counts what is left. The part cut off
/// keeps its links, and fxIndexableList(link) makes a list of it. The cursor
/// stays as it is, except that cutting at the head clears it too; split and
/// splitAt care for it. Linear.
/// Requires: `link` is in `list`; the cursor is set again before it is used.
FX_EXPORT void doSplit(fxIndexableList* list, fxLinkItem* link);

/// A list of links that belong to the caller and that can be split and spliced
/// as whole chains. It allocates nothing. GenericList lists any pointer, and the
/// same one as often as wanted.
///
/// Ownership: links stay the caller's, who keeps each alive while it is listed
/// and lists it once; a list that is destroyed leaves them as they are.
/// Complexity: a cursor remembers the position looked up last, and a look-up
/// walks from the nearest of head, cursor and tail. Constant time beyond that,
/// except what counts links: adopting a chain and splitting.
/// Invariant: a null cursor link means that the cursor is not known; the next
/// look-up then starts from (0, head). Even look-ups move the cursor, so no two
/// threads may use one list.
///
/// Positions are 0 to the length less 1, and nothing is reported: where one is
/// out of range, findLink gives null, unlinkAt and splitAt do nothing, and what
/// inserts takes a position below 0 for 0 and any other for the end.
/// Deliberate: appendListAt at the last position leaves the tail where it was.
/// Until the tail is set again by an append, positions near the end are then
/// counted back from a link that is not the last one, and find a wrong link or,
/// beyond the head, null; that append goes behind the old tail and so cuts off
/// what was spliced in. Use appendList.
class FX_EXPORT fxIndexableList {
public:
    /// An empty list.
    fxIndexableList();
    /// Adopts `chain` and all that is linked behind it; a null chain gives an
    /// empty list. The cursor is on `chain`. Linear.
    /// Requires: the chain ends, its `prev` links are right, and that of `chain`
    /// is null.
    explicit fxIndexableList(fxLinkItem* chain);
    fxIndexableList(const fxIndexableList&) = delete;
    fxIndexableList& operator=(const fxIndexableList&) = delete;

    /// Makes `link` the one at position `i`, or the last one where `i` is the
    /// length or more. The cursor stays on the link looked up for it; in a list
    /// that was empty it is on `link`.
    /// Deliberate: the pointers of a link that enters an empty list are not
    /// cleared.
    /// Requires: `link` is in no list; its pointers are null if this list is
    /// empty.
    void insertAt(long i, fxLinkItem* link);
    /// insertAt the front.
    void insert(fxLinkItem* link);
    /// insertAt the end.
    void append(fxLinkItem* link);
    /// insertAt `i` + 1: behind the link at position `i`.
    void appendAt(long i, fxLinkItem* link);

    /// Takes `link` out; the cursor is on the head.
    /// Requires: `link` is in this list.
    void unlink(fxLinkItem* link);
    /// Takes the link at position `i` out. A cursor on it moves to the next
    /// link, from the last one to the previous one; a cursor elsewhere stays on
    /// its link.
    void unlinkAt(long i);

    /// Cuts the list in front of `link` (see doSplit); the cursor is on the head.
    /// Requires: `link` is in this list.
    void split(fxLinkItem* link);
    /// Cuts the list in front of the link at position `i`. A cursor on what was
    /// cut off moves to the head.
    void splitAt(long i);

    /// Moves all links of `other` in front of the link at position `i`. The
    /// cursor is not known afterwards; `other` is empty, and a list is left
    /// alone that is given to itself.
    /// Requires: `other` is not null.
    void insertListAt(long i, fxIndexableList* other);
    /// insertListAt the front.
    void insertList(fxIndexableList* other);
    /// Moves all links of `other` behind the link at position `i`, or behind the
    /// last one where `i` is the length or more. Otherwise as insertListAt.
    /// Deliberate: with `i` the last position the tail keeps pointing at the
    /// link that was the last one (see above).
    /// Requires: `other` is not null.
    void appendListAt(long i, fxIndexableList* other);
    /// appendListAt the end.
    void appendList(fxIndexableList* other);

    /// The link at position `i`, or null; the cursor is on it, unless it was the
    /// head, the tail or the cursor already.
    /// Deliberate: of two equal ways the one backward is taken.
    fxLinkItem* findLink(long i);

    /// Number of links.
    long length() const { return count; }
    /// The first link, or null.
    fxLinkItem* first() const { return head; }
    /// The last link, or null; after appendListAt the last position, the link
    /// that was the last one before.
    fxLinkItem* last() const { return tail; }

private:
    friend void doUnlink(fxIndexableList* list, fxLinkItem* link);
    friend void doSplit(fxIndexableList* list, fxLinkItem* link);
    friend struct fxIndexableListLayout;  // tests/support/indexableLists.h

    bool isEmpty() const { return !head || count <= 0; }
    void setCursor(long i, fxLinkItem* link);
    void makeEmpty();
    fxLinkItem* placeOf(long i);
    fxLinkItem* lastLink() const;
    void join(fxLinkItem* before, fxIndexableList* other, fxLinkItem* after);
    void joinLast(fxIndexableList* other);
    void takeCount(fxIndexableList* other);

    fxLinkItem* head;        // the caller's, as all links
    fxLinkItem* tail;        // the last link
    int cursorIndex;         // position of cursorLink
    fxLinkItem* cursorLink;  // the link looked up last; null: not known
    int count;               // links
};
