#include "kelvofxds/objects/fxMessageEvent.h"

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/objects/fxMessagePoolInternal.h"

fxMessageEvent::fxMessageEvent(fxInputChannel* in, fxData* holder)
    : fxEvent(fxET_MessageEvent),
      channel((FX_CHECK_ARGUMENT("fxMessageEvent", in), in)),
      data((FX_CHECK_ARGUMENT("fxMessageEvent", holder), holder)) {
    FX_WHEN_CHECKED(fxMisuse::holds(data));
    ++channel->count;
    ++data->count;
}

fxMessageEvent::fxMessageEvent(fxInputChannel* in)
    : fxEvent(fxET_MessageEvent), channel(in), data(nullptr) {
    ++channel->count;
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
unsigned int fxMessageEvent::Pool::living = 0;
const void* fxMessageEvent::Pool::ownTable = nullptr;

fxMessageEvent::Pool::Message::Message(fxInputChannel* in) : fxMessageEvent(in), ownType(noType) {}

// One that has had properties may have inputs.
fxMessageEvent::Pool::Message::~Message() {
    --living;
    forgetPending(this);
    releaseChannel(channel);
    if (!carriesItsOwn())
        releaseData(data);
    channel = nullptr;
    dropOwn();
    if (!properties)
        properties = nobodysTarget();
}

void fxMessageEvent::Pool::Message::dropOwn() {
    if (std::exchange(ownType, noType) != noType)
        own<fxData>()->~fxData();
}

fxMessageEvent::Pool::Message* fxMessageEvent::Pool::make(fxInputChannel* channel) {
    auto* e = fxNew<Message>(channel);
    ownTable = fxTableOf(e);
    fxMostKept::follow(++living);
    return e;
}
