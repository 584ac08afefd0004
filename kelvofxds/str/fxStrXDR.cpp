// fxStrXDR.cpp - writing strings to a transcriber and reading them back.

#include <cstdlib>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

fxStr::fxStr(fxTypeObj&) : fxStr() {}

void* fxStr::newInstance(fxTypeObj& type) { return fxTryNew<fxStr>(type); }

void fxStr::deleteInstance(void* string) { delete static_cast<fxStr*>(string); }

unsigned char fxStr::xdr(void* string, fxTranscriber& t) {
    FX_CHECK_NOT_NULL("fxStr", string);
    return static_cast<fxStr*>(string)->xdr(t) ? 1 : 0;
}

fxTypeObj& fxStr::getTypeObj() const { return fxStr_type; }

namespace {
// Tells a transcriber that the pointer it gets is a string's, also when a
// host's own transcriber throws.
class BufferMark {
public:
    explicit BufferMark(fxTranscriber& t) : marked(t) { t.markStringBuffer(true); }
    BufferMark(const BufferMark&) = delete;
    BufferMark& operator=(const BufferMark&) = delete;
    ~BufferMark() { marked.markStringBuffer(false); }

private:
    fxTranscriber& marked;
};
}  // namespace

bool fxStr::xdr(fxTranscriber& t) {
    if (!t.isReading()) {
        if (!t.xdr(&slength, 1))
            return false;
        if (slength == 1)
            return true;
        const BufferMark mark(t);
        return t.xdr(&data, slength) != 0;
    }

    // Where the standard format is read, what stood here before is neither looked
    // at nor freed: dictionaries read into fresh memory.
    if (!t.transcribesSpareElements() && data != &emptyString)
        std::free(data);
    slength = 1;
    data = &emptyString;
    unsigned int size = 0;
    if (!t.xdr(&size, 1) || size == 0)
        return false;
    if (size == 1)
        return true;
    // The block becomes our buffer once the reader has it, so it has to come
    // from the strings' allocator and hold `size` bytes.
    const BufferMark mark(t);
    if (!t.xdr(&data, size))
        return false;
    slength = size;
    return true;
}
