#include "kelvofxds/lists/fxIndexableList.h"

#include <climits>

#include "kelvofxds/core/fxCheckedInternal.h"

namespace {
using Direction = fxLinkItem* fxLinkItem::*;

// Stops at null: behind a tail that is not the last link, a position may lie
// more links away than there are.
fxLinkItem* walk(fxLinkItem* link, long steps, Direction direction) {
    for (; link && steps > 0; --steps)
        link = link->*direction;
    return link;
}

#ifdef KELVOFXDS_CHECKED
// Whether the link's neighbours lead to it, and its chain begins where the list's does. Nothing
// is asked of the tail, which need not be the last link.
bool isLinked(const fxLinkItem* link, const fxLinkItem* head) {
    return (link->prev ? link->prev->next : head) == link &&
           (!link->next || link->next->prev == link);
}
#endif
}  // namespace

void doUnlink(fxIndexableList* list, fxLinkItem* link) {
    FX_CHECK_NOT_NULL("fxIndexableList", list);
    FX_CHECK_NOT_NULL("fxIndexableList", link);
    FX_CHECK_THAT("fxIndexableList", isLinked(link, list->head),
                  "the link is in no list, or in another");
    fxLinkItem* next = link->next;
    fxLinkItem* prev = link->prev;
    if (prev)
        prev->next = next;
    if (next)
        next->prev = prev;
    if (list->head == link) {
        list->head = next;
        if (!next)
            list->tail = nullptr;
    }
    if (list->tail == link)
        list->tail = prev;
    link->next = link->prev = nullptr;
    --list->count;
}

void doSplit(fxIndexableList* list, fxLinkItem* link) {
    FX_CHECK_NOT_NULL("fxIndexableList", list);
    FX_CHECK_NOT_NULL("fxIndexableList", link);
    FX_CHECK_THAT("fxIndexableList", isLinked(link, list->head),
                  "the link is in no list, or in another");
    if (link == list->head) {
        list->makeEmpty();
        return;
    }
    list->tail = link->prev;
    list->tail->next = nullptr;
    link->prev = nullptr;
    list->count = 0;
    for (const fxLinkItem* left = list->head; left; left = left->next)
        ++list->count;
}

fxIndexableList::fxIndexableList() { makeEmpty(); }

fxIndexableList::fxIndexableList(fxLinkItem* chain) {
    makeEmpty();
    head = cursorLink = chain;
    for (fxLinkItem* link = chain; link; link = link->next) {
        FX_CHECK_THAT("fxIndexableList", !link->next || link->next->prev == link,
                      "the prev of link %d of the chain does not lead back", count + 1);
        tail = link;
        ++count;
    }
}

void fxIndexableList::makeEmpty() {
    head = tail = nullptr;
    setCursor(0, nullptr);
    count = 0;
}

void fxIndexableList::setCursor(long i, fxLinkItem* link) {
    cursorIndex = static_cast<int>(i);
    cursorLink = link;
}

// Null stands for the end.
fxLinkItem* fxIndexableList::placeOf(long i) {
    if (isEmpty() || i >= count)
        return nullptr;
    return findLink(i < 0 ? 0 : i);
}

// The tail, unless unlinking one that was not the last link has left none.
fxLinkItem* fxIndexableList::lastLink() const {
    fxLinkItem* last = tail;
    for (fxLinkItem* link = last ? nullptr : head; link; link = link->next)
        last = link;
    return last;
}

void fxIndexableList::insertAt(long i, fxLinkItem* link) {
    FX_CHECK_NOT_NULL("fxIndexableList", link);
    FX_CHECK_THAT("fxIndexableList", isEmpty() || (link != head && link != tail),
                  "the link is in this list already");
    fxLinkItem* place = placeOf(i);
    if (place) {
        link->next = place;
        link->prev = place == head ? nullptr : place->prev;
        if (link->prev)
            link->prev->next = link;
        else
            head = link;
        place->prev = link;
        if (i <= cursorIndex)
            ++cursorIndex;
    } else if (isEmpty()) {
        head = tail = link;
        setCursor(0, link);
        count = 0;
    } else {
        link->next = nullptr;
        link->prev = lastLink();
        link->prev->next = link;
        tail = link;
    }
    ++count;
}

void fxIndexableList::insert(fxLinkItem* link) { insertAt(0, link); }

void fxIndexableList::append(fxLinkItem* link) { insertAt(count, link); }

void fxIndexableList::appendAt(long i, fxLinkItem* link) {
    insertAt(i < LONG_MAX ? i + 1 : i, link);
}

void fxIndexableList::unlink(fxLinkItem* link) {
    FX_CHECK_NOT_NULL("fxIndexableList", link);
    FX_CHECK_THAT("fxIndexableList", isLinked(link, head), "the link is in no list, or in another");
    doUnlink(this, link);
    setCursor(0, head);
}

void fxIndexableList::unlinkAt(long i) {
    fxLinkItem* link = findLink(i);
    if (!link)
        return;
    if (i < cursorIndex)
        --cursorIndex;
    else if (i == cursorIndex && link->next)
        cursorLink = link->next;
    else if (i == cursorIndex && link->prev)
        setCursor(i - 1, link->prev);
    else if (i == cursorIndex)
        setCursor(0, nullptr);
    // Positions counted from a tail that is not the last link are wrong ones.
    if (cursorLink == link)
        cursorLink = nullptr;
    doUnlink(this, link);
}

void fxIndexableList::split(fxLinkItem* link) {
    FX_CHECK_NOT_NULL("fxIndexableList", link);
    FX_CHECK_THAT("fxIndexableList", isLinked(link, head), "the link is in no list, or in another");
    doSplit(this, link);
    setCursor(0, head);
}

void fxIndexableList::splitAt(long i) {
    fxLinkItem* link = findLink(i);
    if (!link)
        return;
    doSplit(this, link);
    if (cursorLink && i <= cursorIndex)
        setCursor(0, head);
}

// Puts the links of `other` between two neighbours, of which either may be null.
void fxIndexableList::join(fxLinkItem* before, fxIndexableList* other, fxLinkItem* after) {
    fxLinkItem* last = other->lastLink();
    other->head->prev = before;
    last->next = after;
    if (before)
        before->next = other->head;
    else
        head = other->head;
    if (after)
        after->prev = last;
}

void fxIndexableList::joinLast(fxIndexableList* other) {
    if (isEmpty()) {
        head = other->head;
        count = 0;
    } else {
        fxLinkItem* last = lastLink();
        last->next = other->head;
        other->head->prev = last;
    }
    tail = other->tail;
}

void fxIndexableList::takeCount(fxIndexableList* other) {
    cursorLink = nullptr;
    if (!other->isEmpty())
        count += other->count;
    other->makeEmpty();
}

void fxIndexableList::insertListAt(long i, fxIndexableList* other) {
    FX_CHECK_NOT_NULL("fxIndexableList", other);
    if (other == this)
        return;
    if (!other->isEmpty()) {
        fxLinkItem* place = placeOf(i);
        if (place)
            join(place == head ? nullptr : place->prev, other, place);
        else
            joinLast(other);
    }
    takeCount(other);
}

void fxIndexableList::insertList(fxIndexableList* other) { insertListAt(0, other); }

void fxIndexableList::appendListAt(long i, fxIndexableList* other) {
    FX_CHECK_NOT_NULL("fxIndexableList", other);
    if (other == this)
        return;
    if (!other->isEmpty()) {
        fxLinkItem* place = placeOf(i);
        if (place)
            join(place, other, place->next);
        else
            joinLast(other);
    }
    takeCount(other);
}

void fxIndexableList::appendList(fxIndexableList* other) { appendListAt(count, other); }

fxLinkItem* fxIndexableList::findLink(long i) {
    if (!cursorLink)
        setCursor(0, head);
    if (i < 0 || i >= count)
        return nullptr;
    const long last = count - 1L;
    if (i == 0)
        return head;
    if (i == last)
        return tail;
    if (i == cursorIndex)
        return cursorLink;
    fxLinkItem* found;
    if (i > cursorIndex)
        found = i - cursorIndex < last - i ? walk(cursorLink, i - cursorIndex, &fxLinkItem::next)
                                           : walk(tail, last - i, &fxLinkItem::prev);
    else
        found = i < cursorIndex - i ? walk(head, i, &fxLinkItem::next)
                                    : walk(cursorLink, cursorIndex - i, &fxLinkItem::prev);
    setCursor(i, found);
    return found;
}
