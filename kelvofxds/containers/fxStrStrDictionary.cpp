#include "kelvofxds/containers/fxStrStrDictionary.h"

#include "kelvofxds/containers/fxChainedInternal.h"
#include "kelvofxds/containers/fxStrKeysInternal.h"
#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/core/fxTypeObj.h"

fxTypeObj fxStrStrDictionary_type("DICT", 1, fxStrStrDictionary::newInstance,
                                  fxStrStrDictionary::deleteInstance, fxStrStrDictionary::xdr);

fxStrStrDictionary::fxStrStrDictionary(unsigned int numBuckets)
    : fxDictionary(sizeof(fxStr), sizeof(fxStr), numBuckets) {
    fxChains::note<fxDictionary>(*this, fxKeysAreStrings | fxSizesAreOfStrings);
}

fxStrStrDictionary::fxStrStrDictionary(fxTypeObj& type) : fxDictionary(type) {
    keySize = sizeof(fxStr);
    valueSize = sizeof(fxStr);
    fxChains::note<fxDictionary>(*this, fxKeysAreStrings | fxSizesAreOfStrings);
}

fxStrStrDictionary::~fxStrStrDictionary() { cleanup(); }

const char* fxStrStrDictionary::className() const { return "DICT"; }

fxTypeObj& fxStrStrDictionary::getTypeObj() const { return fxStrStrDictionary_type; }

unsigned int fxStrStrDictionary::hashKey(const void* key) const { return fxHashStr(fxStrAt(key)); }

int fxStrStrDictionary::compareKeys(const void* a, const void* b) const {
    return fxCompareStrs(a, b);
}

void fxStrStrDictionary::copyKey(const void* from, void* to) const { fxCopyStr(from, to); }

void fxStrStrDictionary::destroyKey(void* key) const { fxDestroyStr(key); }

void fxStrStrDictionary::copyValue(const void* from, void* to) const { fxCopyStr(from, to); }

void fxStrStrDictionary::destroyValue(void* value) const { fxDestroyStr(value); }

void fxStrStrDictionary::createValue(void* value) const {
    if (value)
        new (value) fxStr(0u);
}

unsigned char fxStrStrDictionary::xdrKey(fxTranscriber& t, void* key) {
    return keySize >= sizeof(fxStr) ? fxXdrStr(t, key) : 0;
}

unsigned char fxStrStrDictionary::xdrValue(fxTranscriber& t, void* value) {
    return valueSize >= sizeof(fxStr) ? fxXdrStr(t, value) : 0;
}

unsigned char fxStrStrDictionary::doxdr(fxTranscriber& t) {
    return doxdrOfSizes(t, sizeof(fxStr), sizeof(fxStr));
}

unsigned char fxStrStrDictionary::xdr(fxTranscriber& t) { return doxdr(t); }

void* fxStrStrDictionary::newInstance(fxTypeObj& type) {
    return fxTryNew<fxStrStrDictionary>(type);
}

void fxStrStrDictionary::deleteInstance(void* dictionary) {
    delete static_cast<fxStrStrDictionary*>(dictionary);
}

unsigned char fxStrStrDictionary::xdr(void* dictionary, fxTranscriber& t) {
    return static_cast<fxStrStrDictionary*>(dictionary)->doxdr(t);
}

fxStrStrDictionaryIter::fxStrStrDictionaryIter() {}

fxStrStrDictionaryIter::fxStrStrDictionaryIter(fxStrStrDictionary& d) : fxDictIter(d) {}

fxStrStrDictionaryIter::fxStrStrDictionaryIter(fxStrStrDictionary* d)
    : fxDictIter((FX_CHECK_ARGUMENT("fxStrStrDictionaryIter", d), *d)) {}
