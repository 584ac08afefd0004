#include "kelvofxds/objects/fxMessageEvent.h"

#include "kelvofxds/objects/fxMessagePoolInternal.h"

fxMessageEvent::fxMessageEvent(fxInputChannel* in, fxData* holder)
    : fxEvent(fxET_MessageEvent), channel(in), data(holder) {
    ++channel->count;
    ++data->count;
}

fxMessageEvent::~fxMessageEvent() {
    if (channel)
        Pool::releaseContents(this);
}

void fxMessageEvent::deliver() {
    channel->pending = nullptr;
    data->deliverTo(channel->function, channel->target);
}

void fxMessageEvent::dump(std::FILE* out) { fxEvent::dump(out); }

fxInputChannel* fxMessageEvent::getChannel() { return channel; }

// The library's own.

fxMessageEvent::Pool::Message* fxMessageEvent::Pool::first = nullptr;
unsigned int fxMessageEvent::Pool::length = 0;
const void* fxMessageEvent::Pool::ownTable = nullptr;

// One that has had properties may have inputs.
fxMessageEvent::Pool::Message::~Message() {
    releaseContents(this);
    channel = nullptr;
    if (!properties)
        properties = nobodysTarget();
}

fxMessageEvent* fxMessageEvent::Pool::make(fxInputChannel* channel, fxData* data) {
    auto* e = fxNew<Message>(channel, data);
    ownTable = tableOf(e);
    return e;
}

void fxMessageEvent::Pool::put(fxEvent* event) {
    if (length >= fxMostKept || !isPooled(event) || event->properties) {
        delete event;
        return;
    }
    auto* e = static_cast<Message*>(event);
    releaseContents(e);
    e->count = 0;
    e->next = first;
    first = e;
    ++length;
}
