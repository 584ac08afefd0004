#include "kelvofxds/containers/fxVoidPtrDict.h"

#include "kelvofxds/containers/fxChainedInternal.h"
#include "kelvofxds/containers/fxStrKeysInternal.h"
#include "kelvofxds/core/fxCheckedInternal.h"

fxVoidPtrDict::fxVoidPtrDict(unsigned int numBuckets)
    : fxDictionary(sizeof(fxStr), sizeof(void*), numBuckets) {
    fxChains::note<fxDictionary>(*this, fxKeysAreStrings);
}

fxVoidPtrDict::~fxVoidPtrDict() { cleanup(); }

const char* fxVoidPtrDict::className() const { return "DICT"; }

unsigned int fxVoidPtrDict::hashKey(const void* key) const { return fxHashStr(fxStrAt(key)); }

int fxVoidPtrDict::compareKeys(const void* a, const void* b) const { return fxCompareStrs(a, b); }

void fxVoidPtrDict::copyKey(const void* from, void* to) const { fxCopyStr(from, to); }

void fxVoidPtrDict::destroyKey(void* key) const { fxDestroyStr(key); }

void fxVoidPtrDict::copyValue(const void* from, void* to) const {
    std::memcpy(to, from, sizeof(void*));
}

void fxVoidPtrDict::destroyValue(void*) const {}

void fxVoidPtrDict::createValue(void* value) const { std::memset(value, 0, sizeof(void*)); }

unsigned char fxVoidPtrDict::xdrKey(fxTranscriber&, void*) { return 0; }

unsigned char fxVoidPtrDict::xdrValue(fxTranscriber&, void*) { return 0; }

fxVoidPtrDictIter::fxVoidPtrDictIter() {}

fxVoidPtrDictIter::fxVoidPtrDictIter(fxVoidPtrDict& d) : fxDictIter(d) {}

fxVoidPtrDictIter::fxVoidPtrDictIter(fxVoidPtrDict* d)
    : fxDictIter((FX_CHECK_ARGUMENT("fxVoidPtrDictIter", d), *d)) {}
