// fxEvent.h - something to be done later, in the event queue.
#pragma once

#include <cstdio>

#include "kelvofxds/objects/fxObj.h"

class fxInputChannel;

/// An event type code: 0 and 1, once the toolkit is initialised. Hosts draw
/// further ones from fx_nextEventType.
extern FX_EXPORT unsigned long fxET_Unknown;
extern FX_EXPORT unsigned long fxET_MessageEvent;

/// An event with a type and a number of its own. A queued event belongs to the
/// queue, which deletes it after delivery or on removal.
class FX_EXPORT fxEvent : public fxObj {
public:
    /// Draws the next sequence number; the first event of a process has 1.
    explicit fxEvent(unsigned long type);
    /// Not queued, with the type and the sequence number of `other`.
    fxEvent(const fxEvent& other);
    fxEvent& operator=(const fxEvent&) = delete;
    ~fxEvent() override;

    /// Does what the event is for; called once.
    virtual void deliver() = 0;
    /// Prints "Event: seq=%d type=%d\n".
    virtual void dump(std::FILE* out);
    /// The channel a message is for; null for other events. Asked only of
    /// events of type fxET_MessageEvent, and the same as long as one is queued.
    virtual fxInputChannel* getChannel();

    /// Event type code.
    unsigned long getType() const { return type; }
    /// The number drawn when the event, or the one it is a copy of, was made.
    unsigned long getSequence() const { return sequence; }

    static unsigned long nextSequenceNumber;  ///< The last number drawn; 0 at first.

protected:
    friend class fxEventQueue;
    friend struct fxEventLayout;  // tests/objects/fxEvent_test.cpp

    fxEvent* next;           // toward the tail of the queue
    fxEvent* prev;           // toward its head
    unsigned long type;      // event type code
    unsigned long sequence;  // copies share it
};
