// fxSendingInternal.h - bringing a value to the connections of an output.
#pragma once

#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxEventQueueInternal.h"
#include "kelvofxds/objects/fxMessagePoolInternal.h"
#include "kelvofxds/objects/fxSendWalkInternal.h"

/// What the event handler does with a value for each connection of an output.
class __attribute__((visibility("hidden"))) fxEventHandler::Sending {
public:
    /// Calls each(connection) in connection order, after the undelivered
    /// message of a latest-only connection has been removed. That may hold the
    /// last reference on the very `data` that is being sent; null: on none.
    template <class Each>
    static void forEach(fxEventHandler& handler, const fxOutputChannel* out, fxData* data,
                        Each each) {
        // Once the value is on its way to the only connection, nothing more is
        // asked of the output.
        if (fxInputChannel* connection = fxOutputChannel::Walk::onlyOneOf(out)) {
            each(connection);
            return;
        }
        fxOutputChannel::Walk walk(out);
        while (fxInputChannel* connection = walk.next()) {
            if (connection->isLatestOnly()) {
                while (walk.currentIsConnected() && connection->pending)
                    dropPending(handler, connection, data);
                if (!walk.currentIsConnected())
                    continue;
            }
            each(connection);
        }
    }

    /// Queues `message`.
    template <bool isUrgent>
    static void post(fxEventHandler& handler, fxMessageEvent* message, fxInputChannel* connection) {
        if (isUrgent)
            handler.queue.linkFirst(message);
        else
            handler.queue.linkLast(message);
        if (connection->isLatestOnly())
            connection->pending = message;
    }

private:
    static void dropPending(fxEventHandler& handler, fxInputChannel* connection, fxData* data);
};
