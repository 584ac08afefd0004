// fxEventQueueInternal.h - linking events, and walking the queue while it changes.
#pragma once

#include "kelvofxds/core/fxInProgressInternal.h"
#include "kelvofxds/objects/fxEvent.h"
#include "kelvofxds/objects/fxEventQueue.h"
#include "kelvofxds/objects/fxMessageIndexInternal.h"

/// Visits the events from one of them to the tail, although deleting an event
/// may remove others. The queue tells the walks in progress what it unlinks.
class __attribute__((visibility("hidden"))) fxEventQueue::Walk
    : public fxInProgress<fxEventQueue::Walk> {
public:
    explicit Walk(fxEvent* first) : current(nullptr), following(first) {}

    /// The next event, or null at the end.
    fxEvent* next();
    /// False once the event that next() returned last has been unlinked.
    bool currentIsQueued() const { return current != nullptr; }

    /// `e` is about to be unlinked.
    static void unlinking(const fxEvent* e, fxEvent* itsNext) {
        forEach([e, itsNext](Walk& walk) {
            if (walk.current == e)
                walk.current = nullptr;
            if (walk.following == e)
                walk.following = itsNext;
        });
    }

private:
    fxEvent* current;
    fxEvent* following;
};

// An event without neighbours is queued only as the single one.
inline bool fxEventQueue::isLinked(const fxEvent* e) const {
    return e->next || e->prev || e == head;
}

inline void fxEventQueue::linkLast(fxEvent* e) {
    e->next = nullptr;
    e->prev = tail;
    if (tail)
        tail->next = e;
    else
        head = e;
    tail = e;
    ++count;
}

inline void fxEventQueue::linkFirst(fxEvent* e) {
    e->prev = nullptr;
    e->next = head;
    if (head)
        head->prev = e;
    else
        tail = e;
    head = e;
    ++count;
}

inline void fxEventQueue::unlink(fxEvent* e) {
    // The walks see to it that no event is met again once it is deleted.
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete)
    Walk::unlinking(e, e->next);
    if (Index* index = Index::of(this))
        index->unlinking(e);
    if (e->prev)
        e->prev->next = e->next;
    else
        head = e->next;
    if (e->next)
        e->next->prev = e->prev;
    else
        tail = e->prev;
    e->next = nullptr;
    e->prev = nullptr;
    --count;
}

// The same of the head.
inline void fxEventQueue::unlinkFirst(fxEvent* e) {
    Walk::unlinking(e, e->next);
    if (Index* index = Index::of(this))
        index->unlinking(e);
    head = e->next;
    if (head)
        head->prev = nullptr;
    else
        tail = nullptr;
    e->next = nullptr;
    --count;
}
