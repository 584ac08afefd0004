// fxChannelsInternal.h - the channels of an object, and what types are called.
#pragma once

#include "kelvofxds/objects/fxInputFunction.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxStrArray.h"

class fxOutputChannel;
class fxVoidPtrDict;

// Finds channels, whose dictionaries are values of two properties, and names them.
namespace fxChannels {

inline constexpr char inputs[] = "inputs";    ///< Name of the property of inputs.
inline constexpr char outputs[] = "outputs";  ///< Name of the property of outputs.

/// The object's channels by name; null if it never had any.
fxVoidPtrDict* inputsOf(const fxObj& object);
fxVoidPtrDict* outputsOf(const fxObj& object);
/// The channel called `name`, or null.
fxInputChannel* inNamed(const fxObj& object, const char* name);
fxOutputChannel* outNamed(const fxObj& object, const char* name);

/// From now on those among the inputs of `object` that receive for it call nothing: of
/// an object that is being destroyed its class's part is gone.
void silence(fxVoidPtrDict& channels, const fxObj& object);

/// The object that the channel at the end of the conversion links receives for.
inline const void* receiverOf(const fxInputChannel* channel) {
    while (channel->isLink())
        channel = static_cast<const fxInputChannel*>(channel->target);
    const bool isOwn = channel->flags & fxInputChannel::ownFlag;
    return isOwn ? static_cast<const fxOwnInput*>(channel)->getOwner() : channel->target;
}

/// What a data type code is called, such as "char*"; "type 37" if it is a
/// host's own.
fxStr typeName(unsigned short code);
/// The name of the object's class: what className() says or, where no class
/// but fxXDRObj says it, the class's own name in C++, if the host has it. With
/// escapes, as in `quoted`.
fxStr className(const fxObj* object);
/// `name` in quotation marks, with escapes for what is no character of a line.
fxStr quoted(const char* name);
/// The names of the channels in `channels`, which may be null, in its order.
fxStrArray namesIn(fxVoidPtrDict* channels);
/// The names with commas between them, and escapes, as in `quoted`; behind the
/// twentieth, "..." stands for the others.
fxStr joined(const fxStrArray& names);
/// Class, name and type of a channel; `kind` is "input" or "output".
fxStr named(const fxObj* owner, const char* kind, const char* name, unsigned short type);
/// What `object`, called `owner`, has instead of a channel that is missing:
/// "Meter has no input "x"; it has: lines, longest".
fxStr hasNo(const fxObj* object, const char* owner, const char* kind, const char* name);

/// The key of an address in a dictionary, whose keys end at their first NUL.
fxStr keyOf(const void* address);

}  // namespace fxChannels
