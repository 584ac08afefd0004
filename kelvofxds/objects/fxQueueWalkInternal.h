// fxQueueWalkInternal.h - walking the event queue while it changes.
#pragma once

#include "kelvofxds/objects/fxEvent.h"

/// Visits the events from one of them to the tail, although deleting an event
/// may remove others. The queue tells the walks in progress what it unlinks.
class fxQueueWalk {
public:
    explicit fxQueueWalk(fxEvent* first) : current(nullptr), following(first), outer(innermost) {
        innermost = this;
    }
    fxQueueWalk(const fxQueueWalk&) = delete;
    fxQueueWalk& operator=(const fxQueueWalk&) = delete;
    ~fxQueueWalk() { innermost = outer; }

    /// The next event, or null at the end.
    fxEvent* next();
    /// False once the event that next() returned last has been unlinked.
    bool currentIsQueued() const { return current != nullptr; }

    /// `e` is about to be unlinked.
    static void unlinking(const fxEvent* e, fxEvent* itsNext) {
        for (fxQueueWalk* walk = innermost; walk; walk = walk->outer) {
            if (walk->current == e)
                walk->current = nullptr;
            if (walk->following == e)
                walk->following = itsNext;
        }
    }

private:
    static fxQueueWalk* innermost;  // the walks in progress, newest first

    fxEvent* current;
    fxEvent* following;
    fxQueueWalk* outer;
};
