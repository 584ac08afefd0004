// fxStrXDR.cpp - writing strings to a transcriber and reading them back.

#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

fxStr::fxStr(fxTypeObj&) : fxStr() {}

void* fxStr::newInstance(fxTypeObj& type) { return new fxStr(type); }

void fxStr::deleteInstance(void* string) { delete static_cast<fxStr*>(string); }

unsigned char fxStr::xdr(void* string, fxTranscriber& t) {
    return static_cast<fxStr*>(string)->xdr(t) ? 1 : 0;
}

fxTypeObj& fxStr::getTypeObj() const { return fxStr_type; }

bool fxStr::xdr(fxTranscriber& t) {
    if (!t.isReading())
        return t.xdr(&slength, 1) && (slength == 1 || t.xdr(&data, slength));

    // Dictionaries read into fresh memory, so what stood here before is neither
    // looked at nor freed.
    slength = 1;
    data = &emptyString;
    unsigned int size = 0;
    if (!t.xdr(&size, 1) || size == 0)
        return false;
    if (size == 1)
        return true;
    // The block becomes our buffer once the reader has it, so it has to come
    // from the strings' allocator and hold `size` bytes.
    slength = size;
    t.stringBuffer = true;
    const bool read = t.xdr(&data, size) != 0;
    t.stringBuffer = false;
    if (!read)
        slength = 1;
    return read;
}
