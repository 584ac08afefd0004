#include "kelvofxds/objects/fxEventHandler.h"

#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxMessageEvent.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/objects/fxQueueWalkInternal.h"
#include "kelvofxds/objects/fxSendWalkInternal.h"
#include "kelvofxds/values/fxData.h"

fxEventHandler* fx_theEventHandler = nullptr;

fxEventHandler::fxEventHandler() {}

fxEventHandler::~fxEventHandler() {}

void fxEventHandler::postEvent(fxEvent* e, unsigned char atFront) {
    if (queue.isLinked(e))
        return;
    if (atFront)
        queue.insert(e);
    else
        queue.append(e);
}

// Messages.

void fxEventHandler::postMessage(fxOutputChannel* out, fxData* data, fxObj::fxSendFlags flags) {
    if (out->getNumberOfConnections() == 0) {
        delete data;
        return;
    }
    if (!data)
        return;
    {
        fxSendWalk walk(out);
        while (fxInputChannel* connection = walk.next()) {
            if (connection->isLatestOnly() && connection->pending) {
                dropPending(connection, data);
                if (!walk.currentIsConnected())
                    continue;
            }
            if (flags == fxObj::fxSendNow) {
                data->deliverTo(connection->function, connection->target);
            } else if (flags == fxObj::fxSendQueued || flags == fxObj::fxSendUrgent) {
                auto* message = new fxMessageEvent(connection, data);
                postEvent(message, flags == fxObj::fxSendUrgent);
                if (connection->isLatestOnly())
                    connection->pending = message;
            }
        }
    }
    if (flags == fxObj::fxSendNow || data->count == 0)
        delete data;
}

// Removes the undelivered message of a connection. It may hold the last
// reference on the very value that is being sent.
void fxEventHandler::dropPending(fxInputChannel* connection, fxData* data) {
    fxMessageEvent* old = connection->pending;
    connection->pending = nullptr;
    ++data->count;
    queue.remove(old);
    --data->count;
}

void fxEventHandler::distributeEvents() {
    for (unsigned int n = queue.getCount(); n != 0; --n) {
        fxEvent* e = queue.get();
        if (!e)
            break;
        e->deliver();
        delete e;
    }
}

// Removing.

void fxEventHandler::removeEvents(unsigned char (*predicate)(fxEvent*, void*), void* arg) {
    fxQueueWalk walk(queue.head);
    while (fxEvent* e = walk.next()) {
        if (predicate(e, arg) && walk.currentIsQueued())
            queue.remove(e);
    }
}

unsigned char zapMessageEvents(fxEvent* e, void* ch) {
    if (e->getType() != fxET_MessageEvent || e->getChannel() != ch)
        return 0;
    auto* channel = static_cast<fxInputChannel*>(ch);
    if (channel->pending == e)
        channel->pending = nullptr;
    return 1;
}

void fxEventHandler::removeMessageEvents(fxInputChannel* ch) { removeEvents(zapMessageEvents, ch); }

namespace {
const fxEvent* goingEvent = nullptr;

unsigned char isMessageFor(fxEvent* e, void* target) {
    fxInputChannel* channel = e->getType() == fxET_MessageEvent ? e->getChannel() : nullptr;
    if (!channel || channel->finalChannel()->target != target)
        return 0;
    return zapMessageEvents(e, channel);
}
}  // namespace

void fxEventHandler::eventIsGoing(const fxEvent* e) { goingEvent = e; }

void fxEventHandler::removeEventsFor(const void* target) {
    if (target == goingEvent) {
        goingEvent = nullptr;
        return;
    }
    if (queue.head)
        removeEvents(isMessageFor, const_cast<void*>(target));
}
