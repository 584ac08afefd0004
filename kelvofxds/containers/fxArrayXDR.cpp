// fxArrayXDR.cpp - arrays as transcribable objects.

#include "kelvofxds/containers/fxArray.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

fxTypeObj fxArray_type("fxArray", 1, nullptr, nullptr, fxArray::xdr);

fxArray::fxArray(fxTypeObj& type) : fxXDRObj(type), data(nullptr), maxLen(0), len(0), elemSize(0) {}

fxTypeObj& fxArray::getTypeObj() const { return fxArray_type; }

unsigned char fxArray::xdr(fxTranscriber& t) {
    return t.xdr(fxXDRObj::getTypeObj(), this, this) != 0;
}

unsigned char fxArray::xdr(void* object, fxTranscriber& t) {
    return t.xdr(fxXDRObj_type, object, object) != 0;
}
