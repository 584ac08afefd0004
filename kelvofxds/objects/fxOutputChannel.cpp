#include "kelvofxds/objects/fxOutputChannel.h"

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxSendWalkInternal.h"
#include "kelvofxds/objects/fxTickOutputInternal.h"
#include "kelvofxds/objects/fxWiringLogInternal.h"
#include "kelvofxds/values/fxConverter.h"
#include "kelvofxds/values/fxData.h"

// Walks in progress.

void fxOutputChannel::Walk::removed(const fxOutputChannel* out, unsigned int gone) {
    forEach([out, gone](Walk& walk) {
        if (walk.output != out)
            return;
        if (gone + 1 == walk.index)
            walk.current = false;
        if (gone < walk.index)
            --walk.index;
        if (gone < walk.end)
            --walk.end;
    });
}

void fxOutputChannel::Walk::destroyed(const fxOutputChannel* out) {
    forEach([out](Walk& walk) {
        if (walk.output != out)
            return;
        walk.index = walk.end;
        walk.current = false;
    });
}

bool fxOutputChannel::Walk::leadsTo(const fxOutputChannel* out, const fxInputChannel* in) {
    for (unsigned int i = countOf(out); i-- > 0;) {
        auto* connection = static_cast<fxInputChannel*>((*out->connections)[i]);
        if ((connection->isLink() ? connection->finalChannel() : connection) == in)
            return true;
    }
    return false;
}

// The channel.

fxOutputChannel::fxOutputChannel(unsigned short typeCode) : type(typeCode), connections(nullptr) {}

fxOutputChannel::~fxOutputChannel() {
    Walk::destroyed(this);
    if (type == fxDT_void)
        fxTickOutput::isGoing(this);
    // No input leads here any more before the first one goes: what inputs own
    // may call back when it ends.
    const unsigned int n = getNumberOfConnections();
    for (unsigned int i = 0; i < n; ++i) {
        fxInputChannel* in = (*this)[i]->finalChannel();
        in->remove(this);
        if (fxWiringLog::isOn())
            fxWiringLog::disconnected(this, in);
    }
    for (unsigned int i = 0; i < n; ++i)
        (*this)[i]->dec();
    delete connections;
    if (fxWiringLog::isOn())
        fxWiringLog::ends(this);
}

void fxOutputChannel::add(fxInputChannel* in) {
    FX_CHECK_NOT_NULL("fxOutputChannel", in);
    FX_CHECK_THREAD("fxOutputChannel");
    in->add(this);
    fxInputChannel* element = in;
    if (type != in->getType() && in->getType() != fxDT_void) {
        fxConverter* link = fxConverter::findConverter(type, in->getType());
        if (!link && !fx_theEventHandler)
            fxFatal("fxConverter: call fxInitializeToolkit first");
        if (!link && fxWiringLog::isOn())
            fxWiringLog::notConverted(this, in);
        if (!link)
            fxFatal("Can't convert from %d to %d", type, in->getType());
        fxConverter::splice(link, in);
        element = link;
    }
    ++element->count;
    if (!connections)
        connections = fxNew<fxVoidPtrArray>();
    connections->append(&element);
    if (fxWiringLog::isOn())
        fxWiringLog::connected(this, in, element);
}

int fxOutputChannel::find(fxInputChannel* in) {
    const unsigned int n = getNumberOfConnections();
    for (unsigned int i = 0; i < n; ++i) {
        if ((*this)[i]->finalChannel() == in)
            return static_cast<int>(i);
    }
    return -1;
}

bool fxOutputChannel::isConnectedTo(fxInputChannel* in) { return find(in) != -1; }

void fxOutputChannel::remove(fxInputChannel* in) {
    const int found = find(in);
    if (found < 0)
        return;
    const unsigned int i = static_cast<unsigned int>(found);
    fxInputChannel* element = (*this)[i];
    in->remove(this);
    if (fxWiringLog::isOn())
        fxWiringLog::disconnected(this, in);
    connections->remove(i, 1);
    Walk::removed(this, i);
    element->dec();  // last: what an input owns may call back when it ends
}

fxInputChannel* fxOutputChannel::operator[](unsigned int index) {
    FX_CHECK_BELOW("fxOutputChannel", index, "number of connections", getNumberOfConnections());
    return static_cast<fxInputChannel*>((*connections)[index]);
}

unsigned int fxOutputChannel::getNumberOfConnections() { return Walk::countOf(this); }
