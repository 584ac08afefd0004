// fxMessagePoolInternal.h - how message events begin and end.
#pragma once

#include <cstring>

#include "kelvofxds/core/fxFreeListInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxMessageEvent.h"
#include "kelvofxds/values/fxData.h"

/// Keeps delivered message events, still constructed, for the next messages:
/// what makes and ends an event along its five base classes costs more than
/// all that a message does. Bounded, single-threaded.
class __attribute__((visibility("hidden"))) fxMessageEvent::Pool {
public:
    /// A message event that the library has made itself. Hosts make message
    /// events, and classes of them, of their own; those are simply deleted.
    class Message final : public fxMessageEvent {
    public:
        using fxMessageEvent::fxMessageEvent;
        ~Message() override;

    private:
        friend class Pool;
    };

    /// A message event that nobody can tell from a new one.
    static fxMessageEvent* take(fxInputChannel* channel, fxData* data) {
        Message* e = first;
        if (!e)
            return make(channel, data);
        first = static_cast<Message*>(e->next);
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
    static void put(fxEvent* event);

    /// What a message holds goes in this order, also in its destructor.
    static void releaseContents(fxMessageEvent* e) {
        e->channel->dec();
        if (--e->data->count == 0)
            delete e->data;
    }

    // Of a host's class no run-time type information may be asked for, since
    // it may have none. But every object begins with the address of its
    // class's table of virtual functions.

    /// What tells the class of `e`, or the base that is under construction.
    static const void* tableOf(const fxEvent* e) {
        const void* table;
        std::memcpy(&table, static_cast<const void*>(e), sizeof table);
        return table;
    }
    /// True of a message that the library has made.
    static bool isPooled(const fxEvent* e) { return tableOf(e) == ownTable; }

private:
    static fxMessageEvent* make(fxInputChannel* channel, fxData* data);

    static Message* first;  // linked by `next`
    static unsigned int length;
    static const void* ownTable;  // null until the first one is made
};

// The destructor of the library's messages says it to the one of their base:
// what that would look for in the queue are messages to a message.
inline fxVoidPtrArray* fxObj::nobodysTarget() {
    static char place;
    return reinterpret_cast<fxVoidPtrArray*>(&place);
}
