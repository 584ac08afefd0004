// fxObjChannels.cpp - an object's inputs and outputs, and sending on them.

#include <cstring>

#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/values/fxDataInternal.h"
#include "kelvofxds/values/fxProperty.h"

namespace {
const char inputs[] = "inputs";
const char outputs[] = "outputs";

// The channels in `property`; null if there is none, or if a host has put a
// value of another type under the channels' name.
fxVoidPtrDict* dictOf(const fxProperty* property) {
    const bool holdsDict = property && property->getType() == fxDT_VoidPtr;
    return holdsDict ? static_cast<fxVoidPtrDict*>(property->getAsVoidPtr()) : nullptr;
}

// The channels that the property called `name` holds; null if there is none.
fxVoidPtrDict* channelsOf(const fxObj& object, const char* name) {
    return dictOf(object.findProperty(name));
}

// The same, but the property is made if it is missing; null if the object takes
// no more properties.
fxVoidPtrDict* ownChannelsOf(fxObj& object, const char* name, void (*destroy)(void*)) {
    if (fxVoidPtrDict* dict = channelsOf(object, name))
        return dict;
    unsigned short tag = fxProperty::findTag(name);
    if (tag == fxProperty::noTag)
        tag = fxProperty::allocNewTag(name);
    void* dict = fxNew<fxVoidPtrDict>();
    object.setProperty(fxNew<fxProperty>(tag, dict, destroy));
    return channelsOf(object, name);
}

// The channel called `name`, or null.
template <class Channel>
Channel* channelIn(const fxVoidPtrDict* dict, const char* name) {
    void** found = dict ? dict->find(name) : nullptr;
    return found ? static_cast<Channel*>(*found) : nullptr;
}
}  // namespace

fxInputChannel* fxObj::addInput(const char* name, unsigned short type, void* target,
                                void (*function)(), unsigned char latestOnly) {
    fxVoidPtrDict* channels = ownChannelsOf(*this, inputs, dt_input_dict);
    if (!channels)
        return nullptr;
    auto* channel = fxNew<fxInputChannel>(type, target, function, latestOnly);
    channel->count = 1;
    void*& entry = channels->findCreate(name);
    auto* old = static_cast<fxInputChannel*>(entry);
    entry = channel;
    if (old)
        old->dec();
    return channel;
}

fxOutputChannel* fxObj::addOutput(const char* name, unsigned short type) {
    fxVoidPtrDict* channels = ownChannelsOf(*this, outputs, dt_output_dict);
    if (!channels)
        return nullptr;
    auto* channel = fxNew<fxOutputChannel>(type);
    void*& entry = channels->findCreate(name);
    auto* old = static_cast<fxOutputChannel*>(entry);
    entry = channel;
    delete old;
    return channel;
}

void fxObj::connect(const char* outputName, fxObj* dst, const char* inputName) {
    if (!dst)
        return;
    auto* out = channelIn<fxOutputChannel>(channelsOf(*this, outputs), outputName);
    auto* in = channelIn<fxInputChannel>(channelsOf(*dst, inputs), inputName);
    if (out && in && !out->isConnectedTo(in))
        out->add(in);
}

void fxObj::disconnect(const char* outputName, fxObj* dst, const char* inputName) {
    if (!dst)
        return;
    auto* out = channelIn<fxOutputChannel>(channelsOf(*this, outputs), outputName);
    auto* in = channelIn<fxInputChannel>(channelsOf(*dst, inputs), inputName);
    if (out && in)
        out->remove(in);
}

void fxObj::removeInput(const char* name) {
    fxVoidPtrDict* dict = channelsOf(*this, inputs);
    auto* channel = channelIn<fxInputChannel>(dict, name);
    if (!channel)
        return;
    dict->remove(name);
    channel->flush();
    channel->disconnect();
    channel->dec();
}

void fxObj::removeOutput(const char* name) {
    fxVoidPtrDict* dict = channelsOf(*this, outputs);
    auto* channel = channelIn<fxOutputChannel>(dict, name);
    if (!channel)
        return;
    dict->remove(name);
    delete channel;
}

void dt_input_dict(void* dict) {
    auto* channels = static_cast<fxVoidPtrDict*>(dict);
    for (fxVoidPtrDictIter iter(channels); iter.getValue(); ++iter) {
        auto* channel = static_cast<fxInputChannel*>(*iter.value());
        if (!channel)
            continue;
        channel->flush();
        channel->disconnect();
        *iter.value() = nullptr;
        channel->dec();
    }
    delete channels;
}

void dt_output_dict(void* dict) {
    auto* channels = static_cast<fxVoidPtrDict*>(dict);
    for (fxVoidPtrDictIter iter(channels); iter.getValue(); ++iter) {
        auto* channel = static_cast<fxOutputChannel*>(*iter.value());
        *iter.value() = nullptr;
        delete channel;
    }
    delete channels;
}

// Sending.

void fxObj::sendData(fxOutputChannel* out, fxData* data, fxSendFlags flags) {
    if (!fx_theEventHandler && data && out->getNumberOfConnections() != 0)
        fxFatal("fxObj: call fxInitializeToolkit first");
    if (fx_theEventHandler)
        fx_theEventHandler->postMessage(out, data, flags);
    else
        delete data;
}

void fxObj::sendVoid(fxOutputChannel* out, fxSendFlags flags) {
    sendData(out, fxNewVoidData(), flags);
}

void fxObj::sendBool(fxOutputChannel* out, unsigned char value, fxSendFlags flags) {
    sendData(out, fxNewBoolData(value), flags);
}

void fxObj::sendInt(fxOutputChannel* out, int value, fxSendFlags flags) {
    sendData(out, fxNewIntData(value), flags);
}

void fxObj::sendLong(fxOutputChannel* out, long value, fxSendFlags flags) {
    sendData(out, fxNewLongData(value), flags);
}

void fxObj::sendFloat(fxOutputChannel* out, float value, fxSendFlags flags) {
    sendData(out, fxNewFloatData(value), flags);
}

void fxObj::sendDouble(fxOutputChannel* out, double value, fxSendFlags flags) {
    sendData(out, fxNewDoubleData(value), flags);
}

void fxObj::sendCharPtr(fxOutputChannel* out, const char* text, fxSendFlags flags) {
    char* copy = ::strdup(text ? text : "");
    if (!copy)
        fxOutOfMemory();
    sendData(out, fxNewCharPtrData(copy), flags);
}
