#include "kelvofxds/objects/fxEventQueue.h"

#include "kelvofxds/objects/fxEvent.h"
#include "kelvofxds/objects/fxQueueWalkInternal.h"

fxQueueWalk* fxQueueWalk::innermost = nullptr;

fxEvent* fxQueueWalk::next() {
    current = following;
    if (current)
        following = current->next;
    return current;
}

fxEventQueue::fxEventQueue() : head(nullptr), tail(nullptr), count(0) {}

fxEventQueue::~fxEventQueue() {}

void fxEventQueue::append(fxEvent* e) {
    e->next = nullptr;
    e->prev = tail;
    if (tail)
        tail->next = e;
    else
        head = e;
    tail = e;
    ++count;
}

void fxEventQueue::insert(fxEvent* e) {
    e->prev = nullptr;
    e->next = head;
    if (head)
        head->prev = e;
    else
        tail = e;
    head = e;
    ++count;
}

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

// An event without neighbours is queued only as the single one.
bool fxEventQueue::isLinked(const fxEvent* e) const { return e->next || e->prev || e == head; }

void fxEventQueue::unlink(fxEvent* e) {
    fxQueueWalk::unlinking(e, e->next);
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
