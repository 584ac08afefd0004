// fxWiringLog.cpp - the log of what happens to the wiring.

#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/objects/fxChannelsInternal.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/objects/fxWiring.h"
#include "kelvofxds/objects/fxWiringLogInternal.h"
#include "kelvofxds/str/fxTempStr.h"
#include "kelvofxds/values/fxConverter.h"

std::FILE* fxWiringLog::out = nullptr;

namespace {
// What the channels that are known are called; keys are addresses. Null while the
// log is off.
fxStrStrDictionary* names = nullptr;

const unsigned int numberOfBuckets = 1021;

void remember(const fxObj& owner, const char* kind, const char* name, const void* channel) {
    names->findCreate(fxChannels::keyOf(channel)) =
        fxChannels::className(&owner) | " " | kind | " " | fxChannels::quoted(name);
}

fxStr nameOf(const void* channel, const char* other) {
    const fxStr* known = names->find(fxChannels::keyOf(channel));
    return known ? *known : fxStr(other);
}

fxStr nameOf(const fxOutputChannel* output) { return nameOf(output, "an output"); }

fxStr nameOf(const fxInputChannel* input) { return nameOf(input, "an input"); }

// With the type, in parentheses.
template <class Channel>
fxStr typed(const Channel* channel) {
    return nameOf(channel) | " (" | fxChannels::typeName(channel->getType()) | ")";
}

// The object by its class.
fxStr hasNo(const fxObj& object, const char* kind, const char* name) {
    return fxChannels::hasNo(&object, fxChannels::className(&object).c_str(), kind, name);
}
}  // namespace

// Flushed, since the next thing to happen may be the end of the process.
void fxWiringLog::write(const fxStr& line) {
    std::fprintf(out, "wiring: %s\n", line.c_str());
    std::fflush(out);
}

void fxWiringLog::added(const fxObj& owner, const char* name, const fxInputChannel* in) {
    remember(owner, "input", name, in);
}

void fxWiringLog::added(const fxObj& owner, const char* name, const fxOutputChannel* output) {
    remember(owner, "output", name, output);
}

void fxWiringLog::lookedUp(const char* operation, const fxObj& from, const char* outputName,
                           const fxOutputChannel* output, const fxObj* to, const char* inputName,
                           const fxInputChannel* in) {
    const fxStr ignored = "ignored " | fxStr(operation) | ": ";
    if (!to) {
        write(ignored | fxChannels::className(&from) | " output " | fxChannels::quoted(outputName) |
              " and a null pointer to an object");
        return;
    }
    if (output)
        remember(from, "output", outputName, output);
    else
        write(ignored | hasNo(from, "output", outputName));
    if (in)
        remember(*to, "input", inputName, in);
    else
        write(ignored | hasNo(*to, "input", inputName));
}

void fxWiringLog::missedInput(const fxObj& owner, const char* name) {
    write("ignored removeInput: " | hasNo(owner, "input", name));
}

void fxWiringLog::missedOutput(const fxObj& owner, const char* name) {
    write("ignored removeOutput: " | hasNo(owner, "output", name));
}

void fxWiringLog::connected(const fxOutputChannel* output, fxInputChannel* in,
                            const fxInputChannel* first) {
    write("connected " | typed(output) | " to " | typed(in));
    for (const fxInputChannel* link = first; link->isLink();
         link = static_cast<const fxInputChannel*>(link->target)) {
        const auto* converter = static_cast<const fxConverter*>(link);
        write("converts " | fxChannels::typeName(link->getType()) | " to " |
              fxChannels::typeName(converter->getTargetType()) | " from " | nameOf(output) |
              " to " | nameOf(in));
    }
}

void fxWiringLog::disconnected(const fxOutputChannel* output, const fxInputChannel* in) {
    write("disconnected " | typed(output) | " from " | typed(in));
}

void fxWiringLog::notConverted(const fxOutputChannel* output, const fxInputChannel* in) {
    write("cannot convert from " | typed(output) | " to " | typed(in));
}

void fxWiringLog::ends(const void* channel) { names->remove(fxChannels::keyOf(channel)); }

void fxWiringLog::setFile(std::FILE* file) {
    out = file;
    if (file && !names)
        names = fxNew<fxStrStrDictionary>(numberOfBuckets);
    if (file || !names)
        return;
    delete names;
    names = nullptr;
}

void fxSetWiringLog(std::FILE* out) { fxWiringLog::setFile(out); }
