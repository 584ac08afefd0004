// fxDictionaryXDR.cpp - dictionaries as transcribable objects.

#include "kelvofxds/containers/fxChainedTranscriptionInternal.h"

fxTypeObj fxDictionary_type("fxDictionary", 1, nullptr, nullptr, fxDictionary::xdr);

fxDictionary::fxDictionary(fxTypeObj& type)
    : fxXDRObj(type), numItems(0), keySize(0), valueSize(0) {}

fxTypeObj& fxDictionary::getTypeObj() const { return fxDictionary_type; }

unsigned char fxDictionary::xdr(fxTranscriber& t) {
    return t.xdr(fxXDRObj::getTypeObj(), this, this) != 0;
}

unsigned char fxDictionary::xdr(void* object, fxTranscriber& t) {
    return t.xdr(fxXDRObj_type, object, object) != 0;
}

unsigned char fxDictionary::doxdr(fxTranscriber& t) {
    if (fxChains::knowsItsSizes(*this))
        return doxdrOfSizes(t, sizeof(fxStr), sizeof(fxStr));
    return fxChainedTranscription::doxdr(*this, t, fxClaimedSizes());
}

unsigned char fxDictionary::doxdrOfSizes(fxTranscriber& t, unsigned int keyBytes,
                                         unsigned int valueBytes) {
    return fxChainedTranscription::doxdr(*this, t, fxClaimedSizes(keyBytes, valueBytes));
}
