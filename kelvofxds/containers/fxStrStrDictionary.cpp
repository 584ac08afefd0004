#include "kelvofxds/containers/fxStrStrDictionary.h"

#include "kelvofxds/containers/fxStrKeysInternal.h"
#include "kelvofxds/core/fxTypeObj.h"

fxTypeObj fxStrStrDictionary_type("DICT", 1, fxStrStrDictionary::newInstance,
                                  fxStrStrDictionary::deleteInstance, fxStrStrDictionary::xdr);

fxStrStrDictionary::fxStrStrDictionary(unsigned int numBuckets)
    : fxDictionary(sizeof(fxStr), sizeof(fxStr), numBuckets) {}

// The sizes are the least that a stream may give.
fxStrStrDictionary::fxStrStrDictionary(fxTypeObj& type) : fxDictionary(type) {
    keySize = sizeof(fxStr);
    valueSize = sizeof(fxStr);
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

unsigned char fxStrStrDictionary::xdrKey(fxTranscriber& t, void* key) { return fxXdrStr(t, key); }

unsigned char fxStrStrDictionary::xdrValue(fxTranscriber& t, void* value) {
    return fxXdrStr(t, value);
}

// A key size that puts values where no string can be has let no entry in.
unsigned char fxStrStrDictionary::xdr(fxTranscriber& t) {
    const unsigned char done = doxdr(t);
    if (keySize % alignof(fxStr) == 0)
        return done;
    keySize = sizeof(fxStr);
    return 0;
}

void* fxStrStrDictionary::newInstance(fxTypeObj& type) { return new fxStrStrDictionary(type); }

void fxStrStrDictionary::deleteInstance(void* dictionary) {
    delete static_cast<fxStrStrDictionary*>(dictionary);
}

unsigned char fxStrStrDictionary::xdr(void* dictionary, fxTranscriber& t) {
    return static_cast<fxStrStrDictionary*>(dictionary)->fxStrStrDictionary::xdr(t);
}

fxStrStrDictionaryIter::fxStrStrDictionaryIter() {}

fxStrStrDictionaryIter::fxStrStrDictionaryIter(fxStrStrDictionary& d) : fxDictIter(d) {}

fxStrStrDictionaryIter::fxStrStrDictionaryIter(fxStrStrDictionary* d) : fxDictIter(*d) {}
