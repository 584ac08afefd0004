#include "kelvofxds/objects/fxEventHandler.h"

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/objects/fxChannelsInternal.h"
#include "kelvofxds/objects/fxMessageIndexInternal.h"
#include "kelvofxds/objects/fxMessagePoolInternal.h"
#include "kelvofxds/objects/fxSendingInternal.h"

fxEventHandler* fx_theEventHandler = nullptr;

fxEventHandler::fxEventHandler() {}

fxEventHandler::~fxEventHandler() {}

void fxEventHandler::postEvent(fxEvent* e, unsigned char atFront) {
    FX_CHECK_THREAD("fxEventHandler");
    FX_CHECK_NOT_NULL("fxEventHandler", e);
    if (queue.isLinked(e))
        return;
    if (atFront)
        queue.linkFirst(e);
    else
        queue.linkLast(e);
}

// Messages.

namespace {
// Deletes a holder that has been sent, unless messages hold it; also when a
// host's exception passes.
class Sent {
public:
    Sent(fxData* d, fxObj::fxSendFlags f) : data(d), flags(f) {}
    Sent(const Sent&) = delete;
    Sent& operator=(const Sent&) = delete;
    ~Sent() {
        if (flags == fxObj::fxSendNow || data->count == 0) {
            FX_WHEN_CHECKED(fxMisuse::forgets(data));
            delete data;
        }
    }

private:
    fxData* data;
    fxObj::fxSendFlags flags;
};
}  // namespace

void fxEventHandler::postMessage(fxOutputChannel* out, fxData* data, fxObj::fxSendFlags flags) {
    FX_CHECK_THREAD("fxEventHandler");
    FX_CHECK_NOT_NULL("fxEventHandler", out);
    if (fxOutputChannel::Walk::countOf(out) == 0) {
        FX_WHEN_CHECKED(fxMisuse::forgets(data));
        delete data;
        return;
    }
    if (!data)
        return;
    const Sent ended(data, flags);
    Sending::forEach(*this, out, data, [this, data, flags](fxInputChannel* connection) {
        if (flags == fxObj::fxSendNow)
            data->deliverTo(connection->function, connection->target);
        else if (flags == fxObj::fxSendQueued)
            Sending::post<false>(*this, fxMessageEvent::Pool::take(connection, data), connection);
        else if (flags == fxObj::fxSendUrgent)
            Sending::post<true>(*this, fxMessageEvent::Pool::take(connection, data), connection);
    });
}

// Removes the undelivered message of a connection.
void fxEventHandler::Sending::dropPending(fxEventHandler& handler, fxInputChannel* connection,
                                          fxData* data) {
    fxMessageEvent* old = connection->pending;
    connection->pending = nullptr;
    if (data)
        ++data->count;
    if (handler.queue.isLinked(old)) {
        handler.queue.unlink(old);
        fxMessageEvent::Pool::put(old);
    }
    if (data)
        --data->count;
}

namespace {
// Ends an event that has been delivered, also when a host's exception passes.
class Delivered {
public:
    explicit Delivered(fxEvent* e) : event(e) {}
    Delivered(const Delivered&) = delete;
    Delivered& operator=(const Delivered&) = delete;
    ~Delivered() { fxMessageEvent::Pool::put(event); }

private:
    fxEvent* event;
};
}  // namespace

void fxEventHandler::distributeEvents() {
    FX_CHECK_THREAD("fxEventHandler");
    for (unsigned int n = queue.getCount(); n != 0; --n) {
        fxEvent* e = queue.head;
        if (!e)
            break;
        fxEventQueue::Index::beforeDelivery(queue);
        queue.unlinkFirst(e);
        const Delivered ended(e);
        if (__builtin_expect(fxMessageEvent::Pool::isPooled(e), true))
            fxMessageEvent::Pool::deliver(e);
        else
            e->deliver();
    }
    fxEventQueue::Index::afterDistribution(queue);
}

// Removing.

void fxEventHandler::removeEvents(unsigned char (*predicate)(fxEvent*, void*), void* arg) {
    FX_CHECK_THREAD("fxEventHandler");
    FX_CHECK_NOT_NULL("fxEventHandler", predicate);
    fxEventQueue::Walk walk(queue.head);
    while (fxEvent* e = walk.next()) {
        if (predicate(e, arg) && walk.currentIsQueued())
            queue.remove(e);
    }
}

unsigned char zapMessageEvents(fxEvent* e, void* ch) {
    FX_CHECK_NOT_NULL("fxEventHandler", e);
    if (e->getType() != fxET_MessageEvent || e->getChannel() != ch)
        return 0;
    auto* channel = static_cast<fxInputChannel*>(ch);
    if (channel->pending == e)
        channel->pending = nullptr;
    return 1;
}

void fxEventHandler::removeMessageEvents(fxInputChannel* ch) {
    FX_CHECK_THREAD("fxEventHandler");
    if (!ch || !fxEventQueue::Index::removeFor(queue, ch, zapMessageEvents))
        removeEvents(zapMessageEvents, ch);
}

namespace {
unsigned char isMessageFor(fxEvent* e, void* target) {
    fxInputChannel* channel = e->getType() == fxET_MessageEvent ? e->getChannel() : nullptr;
    if (!channel || fxChannels::receiverOf(channel) != target)
        return 0;
    return zapMessageEvents(e, channel);
}
}  // namespace

void fxEventHandler::removeEventsFor(const void* address) {
    if (!queue.head)
        return;
    FX_CHECK_THREAD("fxEventHandler");
    void* target = const_cast<void*>(address);
    if (!fxEventQueue::Index::removeForTarget(queue, target, isMessageFor))
        removeEvents(isMessageFor, target);
}
