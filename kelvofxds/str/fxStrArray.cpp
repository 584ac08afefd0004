#include "kelvofxds/str/fxStrArray.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "kelvofxds/containers/fxArrayFamilyInternal.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

FX_DEFINE_ARRAY(fxStrArray, fxStr)
FX_DEFINE_ARRAY_TYPE(fxStrArray, fxStr)

namespace {
const unsigned int strSize = sizeof(fxStr);

// Makes a copy of the string at `from` in the raw memory at `to`, which may be
// the same place: then the string there becomes its own copy.
void copyStr(const char* from, char* to) {
    alignas(fxStr) char copy[strSize];
    new (copy) fxStr(*reinterpret_cast<const fxStr*>(from));
    std::memcpy(to, copy, strSize);
}
}  // namespace

void fxStrArray::createElements(void* at, unsigned int bytes) {
    for (unsigned int offset = 0; bytes - offset >= strSize; offset += elemSize)
        new (static_cast<char*>(at) + offset) fxStr(0u);
}

void fxStrArray::destroyElements(void* at, unsigned int bytes) {
    for (unsigned int offset = 0; bytes - offset >= strSize; offset += elemSize)
        reinterpret_cast<fxStr*>(static_cast<char*>(at) + offset)->~fxStr();
}

void fxStrArray::copyElements(const void* from, void* to, unsigned int bytes) const {
    const char* source = static_cast<const char*>(from);
    char* target = static_cast<char*>(to);
    if (source >= target) {
        for (unsigned int offset = 0; offset < bytes; offset += strSize)
            copyStr(source + offset, target + offset);
    } else {
        for (unsigned int offset = bytes; offset >= strSize; offset -= strSize)
            copyStr(source + offset - strSize, target + offset - strSize);
    }
}

int fxStrArray::compareElements(const void* a, const void* b) const {
    return compare(*static_cast<const fxStr*>(a), *static_cast<const fxStr*>(b));
}

unsigned char fxStrArray::xdr(fxTranscriber& t) {
    unsigned int bytes = len;
    unsigned short size = elemSize;
    if (!t.xdr(&bytes, 1) || !t.xdr(&size, 1))
        return 0;
    if (t.isReading())
        return readStrings(t, bytes, size);
    for (unsigned int i = 0; i < length(); ++i) {
        if (!(*this)[i].xdr(t))
            return 0;
    }
    return 1;
}

// Reads as many strings as the length says. The reader notes where each of
// them is, so the block is allocated at once and never moves; but it is only
// used as far as strings have arrived.
bool fxStrArray::readStrings(fxTranscriber& t, unsigned int claimed, unsigned short size) {
    if (!t.transcribesSpareElements()) {
        destroy();
        std::free(data);
    }
    data = nullptr;
    maxLen = len = 0;
    if (size != strSize || claimed % strSize != 0)
        return false;
    maxLen = claimed;
    getmem();
    if (!data && claimed != 0) {
        maxLen = 0;
        return false;
    }
    // `len` covers the strings made so far, so that they can be destroyed.
    while (len < claimed) {
        auto* string = new (byteAt(len)) fxStr(fxStr_type);
        len += strSize;
        if (!string->xdr(t))
            return false;
    }
    return true;
}
