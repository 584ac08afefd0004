// fxEventHandler.h - posting and distributing events.
#pragma once

#include "kelvofxds/objects/fxEventQueue.h"
#include "kelvofxds/objects/fxObj.h"

class fxData;
class fxInputChannel;
class fxOutputChannel;

/// Takes events and messages and delivers them when the dispatch loop asks for
/// it. There is one, fx_theEventHandler. Receivers may post and remove events,
/// and delete objects, while events are distributed. The memory of messages is
/// kept for the next ones, as much as the longest queue has taken.
class FX_EXPORT fxEventHandler {
public:
    fxEventHandler();
    fxEventHandler(const fxEventHandler&) = delete;
    fxEventHandler& operator=(const fxEventHandler&) = delete;
    ~fxEventHandler();

    /// Queues `e` at the head or the tail; it belongs to the queue then. An
    /// event that is queued already stays where it is.
    void postEvent(fxEvent* e, unsigned char atFront);

    /// Sends `data` to every connection of `out`, in connection order. An
    /// undelivered message of a latest-only connection is removed first,
    /// whatever the flags. Without connections the holder is deleted.
    /// Deliberate: with fxSendNow the holder is deleted afterwards whatever
    /// its count, and so is one without a connection. Urgent messages end up
    /// in reverse connection order. Flags of another value send nothing. A
    /// receiver's exception passes through, and the holder is deleted.
    void postMessage(fxOutputChannel* out, fxData* data, fxObj::fxSendFlags flags);

    /// Delivers and deletes events from the head, as many as are queued when
    /// it is called. A host's exception passes through; the event that threw it
    /// is deleted.
    /// Deliberate: the bound keeps one call finite; what is posted at the tail
    /// meanwhile waits for the next call.
    void distributeEvents();

    /// Removes every event for which predicate(event, arg) is not 0.
    void removeEvents(unsigned char (*predicate)(fxEvent*, void*), void* arg);
    /// Removes the messages for connection `ch` itself; those that are for it
    /// through a conversion link stay. In a long queue, its cost is that of the
    /// messages removed.
    void removeMessageEvents(fxInputChannel* ch);
    /// Removes the messages that would be delivered to `target`, directly or
    /// through a conversion link. In a long queue, its cost is that of the
    /// messages removed and of a look at each channel that has messages, but
    /// for inputs of fxOnInput and of member functions.
    void removeEventsFor(const void* target);

    /// The queue itself.
    fxEventQueue& getQueue() { return queue; }
    /// Number of events queued.
    unsigned int numberOfEvents() const { return queue.getCount(); }

    // How the library sends.
    class Sending;

private:
    friend struct fxEventQueueLayout;  // tests/objects/fxEventQueue_test.cpp

    fxEventQueue queue;
};

/// True for a message to the connection `ch`, an fxInputChannel; clears the
/// channel's pending message if this is the one.
FX_EXPORT unsigned char zapMessageEvents(fxEvent* e, void* ch);

/// The process's event handler; null until the toolkit is initialised.
extern FX_EXPORT fxEventHandler* fx_theEventHandler;
