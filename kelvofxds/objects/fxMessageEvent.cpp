#include "kelvofxds/objects/fxMessageEvent.h"

#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/values/fxData.h"

fxMessageEvent::fxMessageEvent(fxInputChannel* in, fxData* holder)
    : fxEvent(fxET_MessageEvent), channel(in), data(holder) {
    ++channel->count;
    ++data->count;
}

fxMessageEvent::~fxMessageEvent() {
    channel->dec();
    if (--data->count == 0)
        delete data;
    // What fxObj's destructor looks for in the queue would be messages to a
    // message.
    if (fx_theEventHandler && getNumberOfProperties() == 0)
        fxEventHandler::messageIsGoing(this);
}

void fxMessageEvent::deliver() {
    channel->pending = nullptr;
    data->deliverTo(channel->function, channel->target);
}

void fxMessageEvent::dump(std::FILE* out) { fxEvent::dump(out); }

fxInputChannel* fxMessageEvent::getChannel() { return channel; }
