// fxSetXDR.cpp - sets as transcribable objects.

#include "kelvofxds/containers/fxChainedTranscriptionInternal.h"

fxTypeObj fxSet_type("fxSet", 1, nullptr, nullptr, fxSet::xdr);

fxSet::fxSet(fxTypeObj& type) : fxXDRObj(type), numItems(0), keySize(0) {}

fxTypeObj& fxSet::getTypeObj() const { return fxSet_type; }

unsigned char fxSet::xdr(fxTranscriber& t) {
    return t.xdr(fxXDRObj::getTypeObj(), this, this) != 0;
}

unsigned char fxSet::xdr(void* object, fxTranscriber& t) {
    return t.xdr(fxXDRObj_type, object, object) != 0;
}

unsigned char fxSet::doxdr(fxTranscriber& t) {
    if (fxChains::knowsItsSizes(*this))
        return doxdrOfSize(t, sizeof(fxStr));
    return fxChainedTranscription::doxdr(*this, t, fxClaimedSizes());
}

unsigned char fxSet::doxdrOfSize(fxTranscriber& t, unsigned int keyBytes) {
    return fxChainedTranscription::doxdr(*this, t, fxClaimedSizes(keyBytes, 0));
}
