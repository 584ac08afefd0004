// fxMessagePoolInternal.h - how message events begin and end.
#pragma once

#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxFreeListInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/core/fxTableOfInternal.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxMessageEvent.h"
#include "kelvofxds/values/fxDataInternal.h"

/// Keeps delivered message events, still constructed, for the next messages:
/// what makes and ends an event along its five base classes costs more than
/// all that a message does. As many are kept as have been in use at once.
/// Single-threaded.
class __attribute__((visibility("hidden"))) fxMessageEvent::Pool {
public:
    /// A message event that the library has made itself. Hosts make message
    /// events, and classes of them, of their own; those are simply deleted.
    ///
    /// It has room for the holder of a value that the library sends: nobody
    /// else ever sees that one, so it need not be counted, nor made anew as
    /// long as the message carries values of one type.
    class Message final : public fxMessageEvent {
    public:
        /// For `channel`, with the holder to come.
        explicit Message(fxInputChannel* channel);
        ~Message() override;

    private:
        friend class Pool;

        template <class Holder>
        Holder* own() {
            return static_cast<Holder*>(static_cast<void*>(room));
        }
        bool carriesItsOwn() const { return data == static_cast<const void*>(room); }
        void dropOwn();

        alignas(fxDoubleData) unsigned char room[sizeof(fxDoubleData)];
        int ownType;  // of the holder in `room`; noType without one
    };

    /// A message event of the holder `data` that nobody can tell from a new one.
    static fxMessageEvent* take(fxInputChannel* channel, fxData* data) {
        Message* e = takeBlank(channel);
        FX_WHEN_CHECKED(fxMisuse::holds(data));
        e->data = data;
        ++data->count;
        return e;
    }

    /// The same of a new `Holder` of `value`. A text belongs to the message.
    template <class Holder, class... Value>
    static fxMessageEvent* takeWith(fxInputChannel* channel, Value... value) {
        static_assert(sizeof(Holder) <= sizeof(Message::room), "each has room");
        Message* e = takeBlank(channel);
        if (__builtin_expect(e->ownType == fxNumberOf<Holder>, true)) {
            ((fxHeld::in(e->own<Holder>()) = value), ...);
        } else {
            e->dropOwn();
            new (static_cast<void*>(e->room)) Holder(value...);
            e->ownType = fxNumberOf<Holder>;
        }
        e->data = e->own<Holder>();
        return e;
    }

    /// Does what e->deliver() does, for an event that isPooled.
    static void deliver(fxEvent* event) {
        auto* e = static_cast<Message*>(event);
        fxInputChannel* channel = e->channel;
        channel->pending = nullptr;
        if (e->carriesItsOwn() && e->ownType == fxNumberOf<fxIntData>)
            fxReceive<int>(channel->function, channel->target, fxHeld::in(e->own<fxIntData>()));
        else
            e->data->deliverTo(channel->function, channel->target);
    }

    /// Ends an event that is not queued any more, as deleting it would.
    static void put(fxEvent* event) {
        const bool isKept = fxMostKept::isAny && isPooled(event) && !event->properties;
        if (__builtin_expect(isKept, true))
            keep(static_cast<Message*>(event));
        else
            delete event;
    }

    /// What a message holds goes in this order, also in its destructor.
    static void releaseContents(fxMessageEvent* e) {
        forgetPending(e);
        releaseChannel(e->channel);
        releaseData(e->data);
    }

    /// True of a message that the library has made.
    static bool isPooled(const fxEvent* e) { return fxTableOf(e) == ownTable; }

    /// True of a message whose end, now, is the library's business alone.
    static bool callsNobody(const fxEvent* event) {
        if (!isPooled(event))
            return false;
        const auto* e = static_cast<const Message*>(event);
        return e->carriesItsOwn() && e->channel->count > 1 && !e->properties;
    }

private:
    static constexpr int noType = -1;

    static Message* takeBlank(fxInputChannel* channel) {
        Message* e = first;
        if (__builtin_expect(!e, false))
            return make(channel);
        first = static_cast<Message*>(e->next);
        e->sequence = ++fxEvent::nextSequenceNumber;
        e->channel = channel;
        ++channel->count;
        return e;
    }

    static void keep(Message* e) {
        releaseChannel(e->channel);
        if (__builtin_expect(!e->carriesItsOwn(), false))
            releaseData(e->data);
        else if (e->ownType == fxNumberOf<fxCharPtrData>)
            std::free(std::exchange(fxHeld::in(e->own<fxCharPtrData>()), nullptr));
        e->count = 0;
        e->next = first;
        first = e;
    }

    // A message that is deleted without having been delivered is waited for no more.
    static void forgetPending(const fxMessageEvent* e) {
        if (e->channel->pending == e)
            e->channel->pending = nullptr;
    }

    static void releaseChannel(fxInputChannel* channel) {
        if (__builtin_expect(channel->count > 1, true))
            --channel->count;
        else
            channel->dec();
    }

    static void releaseData(fxData* data) {
        FX_WHEN_CHECKED(fxMisuse::releases(data));
        if (--data->count == 0)
            delete data;
    }

    static Message* make(fxInputChannel* channel);

    static Message* first;        // linked by `next`
    static unsigned int living;   // messages, those kept among them
    static const void* ownTable;  // null until the first one is made
};

// The destructor of the library's messages says it to the one of their base:
// what that would look for in the queue are messages to a message.
inline fxVoidPtrArray* fxObj::nobodysTarget() {
    static char place;
    return reinterpret_cast<fxVoidPtrArray*>(&place);
}
