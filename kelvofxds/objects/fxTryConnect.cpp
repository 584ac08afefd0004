// fxTryConnect.cpp - connecting, or saying why not.

#include "kelvofxds/objects/fxChannelsInternal.h"
#include "kelvofxds/objects/fxConnectingInternal.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/objects/fxSendWalkInternal.h"
#include "kelvofxds/objects/fxWiring.h"
#include "kelvofxds/str/fxTempStr.h"
#include "kelvofxds/values/fxConverter.h"
#include "kelvofxds/values/fxData.h"
#include "kelvofxds/values/fxValueTypesInternal.h"

namespace {
#define FX_NUMBER(number, code, Holder, Type, name, shown) number,
const unsigned short libraryTypes[] = {FX_VALUE_TYPES(FX_NUMBER, FX_NUMBER, FX_NUMBER)};
#undef FX_NUMBER

bool canConvert(unsigned short from, unsigned short to) {
    if (from == to || to == fxDT_void)
        return true;
    fxConverter* link = fxConverter::findConverter(from, to);
    delete link;
    return link != nullptr;
}

// What values of type `from` are converted to.
fxStr conversionsOf(unsigned short from) {
    fxStrArray names;
    for (const unsigned short to : libraryTypes) {
        if (to != from && to != fxDT_void && canConvert(from, to))
            names.append(fxChannels::typeName(to));
    }
    return names.length() == 0 ? fxStr("nothing") : fxChannels::joined(names);
}

fxStr whyNotConverted(fxObj* from, const char* outputName, unsigned short outType, fxObj* to,
                      const char* inputName, unsigned short inType) {
    if (!fx_theEventHandler)
        return "call fxInitializeToolkit first: before that, no types convert";
    const fxStr given = fxChannels::typeName(outType);
    return fxChannels::named(from, "output", outputName, outType) | " does not convert to " |
           fxChannels::named(to, "input", inputName, inType) | "; " | given | " converts to " |
           conversionsOf(outType);
}

// One attempt at connecting.
class Attempt {
public:
    Attempt(fxObj* f, const char* outName, fxObj* t, const char* inName)
        : from(f), outputName(outName), to(t), inputName(inName) {}

    // Whether they are connected now. `why` is told otherwise.
    bool run(fxStr& why) {
        if (!isComplete(why))
            return false;
        fxOutputChannel* out = fxChannels::outNamed(*from, outputName);
        fxInputChannel* in = fxChannels::inNamed(*to, inputName);
        if (out && in && !canConvert(out->getType(), in->getType())) {
            why = whyNotConverted(from, outputName, out->getType(), to, inputName, in->getType());
            return false;
        }
        const unsigned int before = numberOfSources();
        fxConnecting connecting(from, to);
        from->connect(outputName, to, inputName);
        if (!connecting.areThere()) {
            why = "connect, which a class overrides, deleted one of the two objects";
            return false;
        }
        return isConnected() || numberOfSources() > before || explain(why);
    }

private:
    bool isComplete(fxStr& why) const {
        if (!from)
            why = "there is no object to connect from: the pointer is null";
        else if (!to)
            why = "there is no object to connect to: the pointer is null";
        else if (!outputName)
            why = "the name of the output is null";
        else if (!inputName)
            why = "the name of the input is null";
        return from && to && outputName && inputName;
    }

    unsigned int numberOfSources() const {
        const fxInputChannel* in = fxChannels::inNamed(*to, inputName);
        return in && in->sources ? in->sources->length() : 0;
    }

    bool isConnected() const {
        fxOutputChannel* out = fxChannels::outNamed(*from, outputName);
        fxInputChannel* in = fxChannels::inNamed(*to, inputName);
        return out && in && fxOutputChannel::Walk::leadsTo(out, in);
    }

    bool explain(fxStr& why) const {
        if (!fxChannels::outNamed(*from, outputName))
            why = fxChannels::hasNo(from, "object", "output", outputName);
        else if (!fxChannels::inNamed(*to, inputName))
            why = fxChannels::hasNo(to, "object", "input", inputName);
        else
            why = fxChannels::className(from) | " overrides connect, which left output " |
                  fxChannels::quoted(outputName) | " without input " |
                  fxChannels::quoted(inputName) | " of " | fxChannels::className(to);
        return false;
    }

    fxObj* from;
    const char* outputName;
    fxObj* to;
    const char* inputName;
};
}  // namespace

bool fxTryConnect(fxObj* from, const char* outputName, fxObj* to, const char* inputName,
                  fxStr* why) {
    fxStr reason;
    if (Attempt(from, outputName, to, inputName).run(reason))
        return true;
    if (why)
        *why = reason;
    return false;
}
