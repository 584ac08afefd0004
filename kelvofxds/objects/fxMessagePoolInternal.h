// fxMessagePoolInternal.h - message events that come and go.
#pragma once

#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxMessageEvent.h"
#include "kelvofxds/values/fxData.h"

/// Keeps delivered message events, still constructed, for the next messages:
/// what makes and ends an event along its four base classes costs more than
/// all that a message does. Bounded, single-threaded.
class fxMessagePool {
public:
    /// A message event that nobody can tell from a new one.
    static fxMessageEvent* take(fxInputChannel* channel, fxData* data) {
        fxMessageEvent* e = first;
        if (!e)
            return new fxMessageEvent(channel, data);
        first = static_cast<fxMessageEvent*>(e->next);
        --length;
        e->next = nullptr;
        e->type = fxET_MessageEvent;
        e->sequence = ++fxEvent::nextSequenceNumber;
        e->channel = channel;
        e->data = data;
        ++channel->count;
        ++data->count;
        return e;
    }

    /// Ends an event that is not queued any more, as deleting it would.
    static void put(fxEvent* e);

private:
    // As many as a busy pass of the loop may queue.
    static constexpr unsigned int limit() {
#ifdef __SANITIZE_ADDRESS__
        return 0;  // it could not tell a kept event from a live one
#else
        return 4096;
#endif
    }

    static fxMessageEvent* first;  // linked by `next`
    static unsigned int length;
};
