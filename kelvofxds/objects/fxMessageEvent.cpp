#include "kelvofxds/objects/fxMessageEvent.h"

#include "kelvofxds/objects/fxMessagePoolInternal.h"

fxMessageEvent::fxMessageEvent(fxInputChannel* in, fxData* holder)
    : fxEvent(fxET_MessageEvent), channel(in), data(holder) {
    ++channel->count;
    ++data->count;
}

fxMessageEvent::~fxMessageEvent() {
    fxMessagePool::releaseContents(this);
    fxMessagePool::sayNobodysTarget(this);
}

void fxMessageEvent::deliver() {
    channel->pending = nullptr;
    data->deliverTo(channel->function, channel->target);
}

void fxMessageEvent::dump(std::FILE* out) { fxEvent::dump(out); }

fxInputChannel* fxMessageEvent::getChannel() { return channel; }

// The library's own.

fxPooledMessage* fxMessagePool::first = nullptr;
unsigned int fxMessagePool::length = 0;
const void* fxMessagePool::ownTable = nullptr;
void* fxMessagePool::markPlace = nullptr;

fxPooledMessage::~fxPooledMessage() {}

fxMessageEvent* fxMessagePool::make(fxInputChannel* channel, fxData* data) {
    auto* e = fxNew<fxPooledMessage>(channel, data);
    ownTable = tableOf(e);
    return e;
}

void fxMessagePool::put(fxEvent* event) {
    if (length >= fxMostKept || !isPooled(event) || event->properties) {
        delete event;
        return;
    }
    auto* e = static_cast<fxPooledMessage*>(event);
    releaseContents(e);
    e->count = 0;
    e->next = first;
    first = e;
    ++length;
}
