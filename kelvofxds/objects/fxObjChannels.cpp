// fxObjChannels.cpp - an object's inputs and outputs, and sending on them.

#include <cstring>

#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/core/fxShortCopyInternal.h"
#include "kelvofxds/objects/fxChannelsInternal.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxInputFunction.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/objects/fxSendingInternal.h"
#include "kelvofxds/objects/fxWiringLogInternal.h"
#include "kelvofxds/values/fxDataInternal.h"
#include "kelvofxds/values/fxProperty.h"

namespace {
// The channels that the property called `name` holds; null if there is none. A
// host may have put a value of another type under the channels' name.
fxVoidPtrDict* channelsOf(const fxObj& object, const char* name) {
    const fxProperty* property = object.findProperty(name);
    const bool holdsDict = property && property->getType() == fxDT_VoidPtr;
    return holdsDict ? static_cast<fxVoidPtrDict*>(property->getAsVoidPtr()) : nullptr;
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

fxVoidPtrDict* ownInputsOf(fxObj& object) {
    return ownChannelsOf(object, fxChannels::inputs, dt_input_dict);
}

// The channel called `name`, or null.
template <class Channel>
Channel* channelIn(const fxVoidPtrDict* dict, const char* name) {
    void** found = dict ? dict->find(name) : nullptr;
    return found ? static_cast<Channel*>(*found) : nullptr;
}

// Cuts an input off that its object gives up. A message that comes to one that owns
// its function by way of a conversion finds nobody any more.
void cutOff(fxInputChannel* channel) {
    if (channel->flags & fxInputChannel::ownFlag)
        static_cast<fxOwnInput*>(channel)->setOwner(nullptr);
    channel->flush();
    channel->disconnect();
}

void removeForGood(fxInputChannel* channel) {
    cutOff(channel);
    channel->dec();
}

enum class Old { isLetGo, isRemoved };

// Gives the inputs of an object a new one in place of an old one, which may call
// back when it goes. One that owns its function is removed in any case, since that
// may refer to the object.
fxInputChannel* put(const fxObj& owner, fxVoidPtrDict* channels, const char* name,
                    fxInputChannel* channel, Old fate) {
    channel->count = 1;
    if (fxWiringLog::isOn())
        fxWiringLog::added(owner, name, channel);
    void*& entry = channels->findCreate(name);
    auto* old = static_cast<fxInputChannel*>(entry);
    entry = channel;
    if (old && (fate == Old::isRemoved || old->flags & fxInputChannel::ownFlag))
        removeForGood(old);
    else if (old)
        old->dec();
    return channel;
}

fxInputChannel* addPlain(fxObj& object, const char* name, unsigned short type, void* target,
                         void (*function)(), unsigned char latestOnly, Old fate) {
    fxVoidPtrDict* channels = ownInputsOf(object);
    if (!channels)
        return nullptr;
    auto* channel = fxNew<fxInputChannel>(type, target, function, latestOnly);
    return put(object, channels, name, channel, fate);
}
}  // namespace

fxVoidPtrDict* fxChannels::inputsOf(const fxObj& object) { return channelsOf(object, inputs); }

fxVoidPtrDict* fxChannels::outputsOf(const fxObj& object) { return channelsOf(object, outputs); }

fxInputChannel* fxChannels::inNamed(const fxObj& object, const char* name) {
    return channelIn<fxInputChannel>(inputsOf(object), name);
}

fxOutputChannel* fxChannels::outNamed(const fxObj& object, const char* name) {
    return channelIn<fxOutputChannel>(outputsOf(object), name);
}

namespace {
// Receives any value, as an input without one does.
void receiveNothing(void*) {}
}  // namespace

void fxChannels::silence(fxVoidPtrDict& channels, const fxObj& object) {
    for (fxVoidPtrDictIter iter(channels); iter.getValue(); ++iter) {
        auto* channel = static_cast<fxInputChannel*>(*iter.value());
        if (channel && receiverOf(channel) == &object)
            channel->function = reinterpret_cast<void (*)()>(receiveNothing);
    }
}

fxInputChannel* fxObj::addInput(const char* name, unsigned short type, void* target,
                                void (*function)(), unsigned char latestOnly) {
    return addPlain(*this, name, type, target, function, latestOnly, Old::isLetGo);
}

fxInputChannel* fxAddPlainInput(fxObj* object, const char* name, unsigned short type, void* target,
                                void (*function)(), bool latestOnly) {
    return addPlain(*object, name, type, target, function, latestOnly, Old::isRemoved);
}

fxInputChannel* fxAddOwnInput(fxObj* object, const char* name, fxOwnInput* input) {
    fxVoidPtrDict* channels = ownInputsOf(*object);
    if (!channels) {
        input->end();
        return nullptr;
    }
    input->setOwner(object);
    return put(*object, channels, name, input, Old::isRemoved);
}

fxOutputChannel* fxObj::addOutput(const char* name, unsigned short type) {
    fxVoidPtrDict* channels = ownChannelsOf(*this, fxChannels::outputs, dt_output_dict);
    if (!channels)
        return nullptr;
    auto* channel = fxNew<fxOutputChannel>(type);
    if (fxWiringLog::isOn())
        fxWiringLog::added(*this, name, channel);
    void*& entry = channels->findCreate(name);
    auto* old = static_cast<fxOutputChannel*>(entry);
    entry = channel;
    delete old;
    return channel;
}

namespace {
// The channels that an operation on both is asked for; null is what is not there.
struct Ends {
    Ends(const char* operation, const fxObj& from, const char* outputName, const fxObj* to,
         const char* inputName)
        : out(to ? fxChannels::outNamed(from, outputName) : nullptr),
          in(to ? fxChannels::inNamed(*to, inputName) : nullptr) {
        if (fxWiringLog::isOn())
            fxWiringLog::lookedUp(operation, from, outputName, out, to, inputName, in);
    }

    fxOutputChannel* out;
    fxInputChannel* in;
};
}  // namespace

void fxObj::connect(const char* outputName, fxObj* dst, const char* inputName) {
    FX_CHECK_THREAD(fxClassOf(*this));
    const Ends ends("connect", *this, outputName, dst, inputName);
    if (ends.out && ends.in && !ends.out->isConnectedTo(ends.in))
        ends.out->add(ends.in);
}

void fxObj::disconnect(const char* outputName, fxObj* dst, const char* inputName) {
    FX_CHECK_THREAD(fxClassOf(*this));
    const Ends ends("disconnect", *this, outputName, dst, inputName);
    if (ends.out && ends.in)
        ends.out->remove(ends.in);
}

void fxObj::removeInput(const char* name) {
    fxVoidPtrDict* dict = fxChannels::inputsOf(*this);
    auto* channel = channelIn<fxInputChannel>(dict, name);
    if (channel) {
        dict->remove(name);
        removeForGood(channel);
    } else if (fxWiringLog::isOn()) {
        fxWiringLog::missedInput(*this, name);
    }
}

void fxObj::removeOutput(const char* name) {
    fxVoidPtrDict* dict = fxChannels::outputsOf(*this);
    auto* channel = channelIn<fxOutputChannel>(dict, name);
    if (!channel) {
        if (fxWiringLog::isOn())
            fxWiringLog::missedOutput(*this, name);
        return;
    }
    dict->remove(name);
    delete channel;
}

void dt_input_dict(void* dict) {
    auto* channels = static_cast<fxVoidPtrDict*>(dict);
    for (fxVoidPtrDictIter iter(channels); iter.getValue(); ++iter) {
        auto* channel = static_cast<fxInputChannel*>(*iter.value());
        if (!channel)
            continue;
        cutOff(channel);
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

namespace {
const char noToolkit[] = "fxObj: call fxInitializeToolkit first";

// Whether there is somebody to send to; fatal before the toolkit is initialised.
bool hasReceivers(const fxOutputChannel* out) {
    if (fxOutputChannel::Walk::countOf(out) == 0)
        return false;
    if (!fx_theEventHandler)
        fxFatal(noToolkit);
    return true;
}

// Queues a message of the value for one connection.
template <class Holder, bool isUrgent, class... Value>
[[gnu::always_inline]] inline void queueOne(fxInputChannel* connection, Value... value) {
    fxMessageEvent* message = fxMessageEvent::Pool::takeWith<Holder>(connection, value...);
    fxEventHandler::Sending::post<isUrgent>(*fx_theEventHandler, message, connection);
}

template <class Holder, class... Value>
[[gnu::noinline]] void sendToAll(fxOutputChannel* out, fxObj::fxSendFlags flags, Value... value) {
    const auto toEach = [out](auto each) {
        fxEventHandler::Sending::forEach(*fx_theEventHandler, out, nullptr, each);
    };
    if (!hasReceivers(out))
        return;
    if (flags == fxObj::fxSendNow)
        toEach([=](fxInputChannel* connection) {
            fxReceive<Value...>(connection->function, connection->target, value...);
        });
    else if (flags == fxObj::fxSendQueued)
        toEach([=](fxInputChannel* c) { queueOne<Holder, false>(c, value...); });
    else if (flags == fxObj::fxSendUrgent)
        toEach([=](fxInputChannel* c) { queueOne<Holder, true>(c, value...); });
    else
        fx_theEventHandler->postMessage(out, fxNew<Holder>(value...), flags);
}

// Sends what a new Holder of the value would hold. Nobody could see that one,
// so receivers are called without one and each message has its own.
template <class Holder, class... Value>
void send(fxOutputChannel* out, fxObj::fxSendFlags flags, Value... value) {
    fxInputChannel* only = fx_theEventHandler ? fxOutputChannel::Walk::onlyOneOf(out) : nullptr;
    if (only && flags == fxObj::fxSendQueued)
        queueOne<Holder, false>(only, value...);
    else if (only && flags == fxObj::fxSendNow)
        fxReceive<Value...>(only->function, only->target, value...);
    else
        sendToAll<Holder>(out, flags, value...);
}
}  // namespace

// Receivers are called as functions of the output's type. One that takes no value may be sent any.
#define FX_CHECK_SENDS(out, code)                                                \
    FX_CHECK_THAT(fxClassOf(*this),                                              \
                  (out)->getType() == (code) || (out)->getType() == fxDT_void || \
                      (out)->getNumberOfConnections() == 0,                      \
                  "the output is of type %s", fxChannels::typeName((out)->getType()).c_str())

void fxObj::sendData(fxOutputChannel* out, fxData* data, fxSendFlags flags) {
    FX_CHECK_NOT_NULL(fxClassOf(*this), out);
    FX_CHECK_THREAD(fxClassOf(*this));
    if (!fx_theEventHandler && data && out->getNumberOfConnections() != 0)
        fxFatal(noToolkit);
    if (fx_theEventHandler) {
        fx_theEventHandler->postMessage(out, data, flags);
    } else {
        FX_WHEN_CHECKED(fxMisuse::forgets(data));
        delete data;
    }
}

void fxObj::sendVoid(fxOutputChannel* out, fxSendFlags flags) {
    FX_CHECK_NOT_NULL(fxClassOf(*this), out);
    FX_CHECK_THREAD(fxClassOf(*this));
    FX_CHECK_SENDS(out, fxDT_void);
    send<fxVoidData>(out, flags);
}

void fxObj::sendBool(fxOutputChannel* out, unsigned char value, fxSendFlags flags) {
    FX_CHECK_NOT_NULL(fxClassOf(*this), out);
    FX_CHECK_THREAD(fxClassOf(*this));
    FX_CHECK_SENDS(out, fxDT_fxBool);
    send<fxBoolData>(out, flags, value);
}

void fxObj::sendInt(fxOutputChannel* out, int value, fxSendFlags flags) {
    FX_CHECK_NOT_NULL(fxClassOf(*this), out);
    FX_CHECK_THREAD(fxClassOf(*this));
    FX_CHECK_SENDS(out, fxDT_int);
    send<fxIntData>(out, flags, value);
}

void fxObj::sendLong(fxOutputChannel* out, long value, fxSendFlags flags) {
    FX_CHECK_NOT_NULL(fxClassOf(*this), out);
    FX_CHECK_THREAD(fxClassOf(*this));
    FX_CHECK_SENDS(out, fxDT_long);
    send<fxLongData>(out, flags, value);
}

void fxObj::sendFloat(fxOutputChannel* out, float value, fxSendFlags flags) {
    FX_CHECK_NOT_NULL(fxClassOf(*this), out);
    FX_CHECK_THREAD(fxClassOf(*this));
    FX_CHECK_SENDS(out, fxDT_float);
    send<fxFloatData>(out, flags, value);
}

void fxObj::sendDouble(fxOutputChannel* out, double value, fxSendFlags flags) {
    FX_CHECK_NOT_NULL(fxClassOf(*this), out);
    FX_CHECK_THREAD(fxClassOf(*this));
    FX_CHECK_SENDS(out, fxDT_double);
    send<fxDoubleData>(out, flags, value);
}

namespace {
const unsigned int shortText = 64;  // bytes, with the NUL
}  // namespace

// The receivers of a text share one copy, which they may write to. It goes with
// its message, if there is but one.
void fxObj::sendCharPtr(fxOutputChannel* out, const char* text, fxSendFlags flags) {
    FX_CHECK_NOT_NULL(fxClassOf(*this), out);
    FX_CHECK_THREAD(fxClassOf(*this));
    FX_CHECK_SENDS(out, fxDT_CharPtr);
    if (!hasReceivers(out))
        return;
    const char* source = text ? text : "";
    const auto size = static_cast<unsigned int>(std::strlen(source) + 1);
    if (flags == fxSendNow && size <= shortText) {
        char copy[shortText];
        fxCopyShort(copy, source, size);
        send<fxCharPtrData, char*>(out, flags, copy);
        return;
    }
    char* copy = static_cast<char*>(fxAllocate(size));
    fxCopyShort(copy, source, size);
    const bool isQueued = flags == fxSendQueued || flags == fxSendUrgent;
    if (isQueued && fxOutputChannel::Walk::onlyOneOf(out))
        send<fxCharPtrData>(out, flags, copy);
    else
        fx_theEventHandler->postMessage(out, fxNew<fxCharPtrData>(copy), flags);
}
