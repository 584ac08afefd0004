#include "kelvofxds/objects/fxEventQueue.h"

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/objects/fxEvent.h"
#include "kelvofxds/objects/fxEventQueueInternal.h"

fxEvent* fxEventQueue::Walk::next() {
    current = following;
    if (current)
        following = current->next;
    return current;
}

fxEventQueue::fxEventQueue() : head(nullptr), tail(nullptr), count(0) {}

fxEventQueue::~fxEventQueue() { delete Index::of(this); }

void fxEventQueue::append(fxEvent* e) {
    FX_CHECK_NOT_NULL("fxEventQueue", e);
    FX_CHECK_THAT("fxEventQueue", !isLinked(e), "the event is queued already, here or elsewhere");
    linkLast(e);
}

void fxEventQueue::insert(fxEvent* e) {
    FX_CHECK_NOT_NULL("fxEventQueue", e);
    FX_CHECK_THAT("fxEventQueue", !isLinked(e), "the event is queued already, here or elsewhere");
    linkFirst(e);
}

fxEvent* fxEventQueue::get() {
    fxEvent* e = head;
    if (e)
        unlink(e);
    return e;
}

void fxEventQueue::remove(fxEvent* e) {
    FX_CHECK_NOT_NULL("fxEventQueue", e);
    if (!isLinked(e))
        return;
    FX_CHECK_THAT("fxEventQueue", (e->prev || e == head) && (e->next || e == tail),
                  "the event is in another queue");
    unlink(e);
    delete e;
}

bool fxEventQueue::contains(fxEvent* e) {
    for (const fxEvent* queued = head; queued; queued = queued->next) {
        if (queued == e)
            return true;
    }
    return false;
}
