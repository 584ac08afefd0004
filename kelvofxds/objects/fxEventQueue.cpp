#include "kelvofxds/objects/fxEventQueue.h"

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

void fxEventQueue::append(fxEvent* e) { linkLast(e); }

void fxEventQueue::insert(fxEvent* e) { linkFirst(e); }

fxEvent* fxEventQueue::get() {
    fxEvent* e = head;
    if (e)
        unlink(e);
    return e;
}

void fxEventQueue::remove(fxEvent* e) {
    if (!isLinked(e))
        return;
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
