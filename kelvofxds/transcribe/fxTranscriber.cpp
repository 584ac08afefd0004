#include "kelvofxds/transcribe/fxTranscriber.h"

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/str/fxStackBuffer.h"
#include "kelvofxds/transcribe/fxContentsInternal.h"
#include "kelvofxds/transcribe/fxGraphReader.h"
#include "kelvofxds/transcribe/fxStream.h"

fxTranscriber::fxTranscriber()
    : reading(0), stringBuffer(0), traits(0), version(0), stream(nullptr) {}

fxTranscriber::~fxTranscriber() {
    FX_CHECK_LIVES("fxTranscriber", fxRCObj::count);
    FX_WHEN_CHECKED(fxMisuse::releases(stream));
    if (stream && --stream->count == 0)
        delete stream;
}

void fxTranscriber::holdStream(fxStream* s) {
    stream = s;
    FX_WHEN_CHECKED(fxMisuse::holds(stream));
    if (stream)
        ++stream->count;
}

unsigned char fxTranscriber::freeOnFailure(void* block) {
    fxGraphReader* const reader = fxGraphReader::of(*this);
    return reader ? reader->takeCharge(block) : 0;
}

unsigned int fxTranscriber::objectVersion() const { return fxContents::versionOf(*this); }

unsigned char fxXdrContents(fxTypeObj& type, void* object, fxTranscriber& t,
                            unsigned char (*contents)(void*, fxTranscriber&)) {
    FX_CHECK_NOT_NULL("fxTranscriber", contents);
    if (fxContents::tellsVersions(t))
        return contents(object, t);
    return fxContents::withVersion(t, type.version, [=, &t] { return contents(object, t); });
}

unsigned char fxTranscriber::xdr(int* elements, unsigned int n) {
    return xdr(reinterpret_cast<long*>(elements), n);
}

unsigned char fxTranscriber::xdr(unsigned int* elements, unsigned int n) {
    return xdr(reinterpret_cast<unsigned long*>(elements), n);
}

unsigned char fxTranscriber::xdr(int** block, unsigned int n) {
    return xdr(reinterpret_cast<long**>(block), n);
}

unsigned char fxTranscriber::xdr(unsigned int** block, unsigned int n) {
    return xdr(reinterpret_cast<unsigned long**>(block), n);
}

unsigned char readNullTerminatedString(fxStream* stream, fxStackBuffer& buffer) {
    FX_CHECK_NOT_NULL("fxStream", stream);
    char c = 0;
    do {
        if (!stream->getBytes(&c, 1) || !buffer.tryAddc(c))
            return 0;
    } while (c != '\0');
    return 1;
}
