// fxEventQueue.h - events in the order of their delivery.
#pragma once

#include "kelvofxds/core/fxExport.h"

class fxEvent;

/// A doubly linked list through the events themselves. It owns what is queued,
/// but leaves it alone when it is destroyed. An event can be in one queue at a
/// time. Everything but contains is O(1).
class FX_EXPORT fxEventQueue {
public:
    fxEventQueue();
    fxEventQueue(const fxEventQueue&) = delete;
    fxEventQueue& operator=(const fxEventQueue&) = delete;
    ~fxEventQueue();

    /// Links `e` at the tail.
    void append(fxEvent* e);
    /// Links `e` at the head.
    void insert(fxEvent* e);
    /// Unlinks and returns the head, which the caller deletes; null when the
    /// queue is empty.
    fxEvent* get();
    /// Unlinks and deletes `e`; one that is not linked is left alone.
    void remove(fxEvent* e);
    /// True when `e` is in this queue. Linear.
    bool contains(fxEvent* e);

    /// Number of events queued.
    unsigned int getCount() const { return count; }

    // How the library finds and visits what is queued.
    class Index;
    class Walk;

private:
    friend class fxEventHandler;
    friend struct fxEventQueueLayout;  // tests/objects/fxEventQueue_test.cpp

    // Inline in fxEventQueueInternal.h.
    bool isLinked(const fxEvent* e) const;
    void linkLast(fxEvent* e);
    void linkFirst(fxEvent* e);
    void unlink(fxEvent* e);
    void unlinkFirst(fxEvent* e);

    fxEvent* head;  // next to be delivered
    fxEvent* tail;
    unsigned int count;  // events queued
};
