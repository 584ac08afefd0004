// fxChannelNames.cpp - what types, classes and channels are called in messages.

#include <cxxabi.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <typeinfo>

#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/core/fxTableOfInternal.h"
#include "kelvofxds/objects/fxChannelsInternal.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/str/fxTempStr.h"
#include "kelvofxds/values/fxValueTypesInternal.h"

namespace {
#define FX_SHOWN(number, code, Holder, Type, name, shown) shown,
const char* const typeNames[] = {FX_VALUE_TYPES(FX_SHOWN, FX_SHOWN, FX_SHOWN)};
#undef FX_SHOWN

// The class of an object in C++: the word in front of its table. It is null in
// what was compiled without run-time type information.
const std::type_info* typeInfoOf(const void* object) {
    const void* const* table = static_cast<const void* const*>(fxTableOf(object));
    return static_cast<const std::type_info*>(table[-1]);
}

fxStr demangled(const std::type_info& info) {
    int status = 0;
    char* text = abi::__cxa_demangle(info.name(), nullptr, nullptr, &status);
    fxStr name(text ? text : info.name());
    std::free(text);
    const char unnamed[] = "(anonymous namespace)::";
    if (std::strncmp(name.c_str(), unnamed, sizeof unnamed - 1) == 0)
        name.remove(0, sizeof unnamed - 1);
    return name;
}

// On one line: with escapes for what is no character of a line.
fxStr escaped(const char* name) {
    fxStr text;
    for (const char* at = name ? name : ""; *at; ++at) {
        const unsigned char byte = static_cast<unsigned char>(*at);
        const unsigned char firstPrintable = 0x20;
        const unsigned char deleted = 0x7F;
        if (byte < firstPrintable || byte == deleted)
            text.append(fxStr(static_cast<int>(byte), "\\x%02X").c_str());
        else
            text.append(*at);
    }
    return text;
}

const unsigned int mostListed = 20;
}  // namespace

fxStr fxChannels::typeName(unsigned short code) {
    if (code < sizeof typeNames / sizeof typeNames[0])
        return typeNames[code];
    return fxStr(static_cast<int>(code), "type %d");
}

fxStr fxChannels::className(const fxObj* object) {
    const char* said = object->className();
    const std::type_info* info = typeInfoOf(object);
    const bool isOwn = said && std::strcmp(said, "fxXDRObj") != 0;
    return isOwn || !info ? escaped(said) : demangled(*info);
}

fxStr fxChannels::quoted(const char* name) { return "\"" | escaped(name) | "\""; }

fxStrArray fxChannels::namesIn(fxVoidPtrDict* channels) {
    fxStrArray names;
    if (!channels)
        return names;
    for (fxVoidPtrDictIter iter(channels); iter.getValue(); ++iter) {
        if (*iter.value())
            names.append(*iter.key());
    }
    return names;
}

fxStr fxChannels::joined(const fxStrArray& names) {
    fxStr text;
    for (unsigned int i = 0; i < names.length(); ++i) {
        if (i != 0)
            text.append(", ");
        if (i == mostListed) {
            text.append("...");
            break;
        }
        text.append(names[i].length() == 0 ? "\"\"" : escaped(names[i].c_str()).c_str());
    }
    return text;
}

fxStr fxChannels::named(const fxObj* owner, const char* kind, const char* name,
                        unsigned short type) {
    return className(owner) | " " | kind | " " | quoted(name) | " (" | typeName(type) | ")";
}

fxStr fxChannels::hasNo(const fxObj* object, const char* owner, const char* kind,
                        const char* name) {
    const bool isInput = std::strcmp(kind, "input") == 0;
    const fxStrArray names = namesIn(isInput ? inputsOf(*object) : outputsOf(*object));
    const fxStr missing = fxStr(owner) | " has no " | kind | " " | quoted(name) | "; it has";
    return names.length() == 0 ? missing | " none" : missing | ": " | joined(names);
}

fxStr fxChannels::keyOf(const void* address) {
    return fxStr(static_cast<int>(reinterpret_cast<std::uintptr_t>(address)), "%x");
}
