#include "kelvofxds/containers/fxStrSet.h"

#include "kelvofxds/containers/fxChainedInternal.h"
#include "kelvofxds/containers/fxStrKeysInternal.h"
#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/core/fxTypeObj.h"

fxTypeObj fxStrSet_type("SET", 1, fxStrSet::newInstance, fxStrSet::deleteInstance, fxStrSet::xdr);

fxStrSet::fxStrSet(unsigned int numBuckets) : fxSet(sizeof(fxStr), numBuckets) {
    fxChains::note<fxSet>(*this, fxKeysAreStrings | fxSizesAreOfStrings);
}

fxStrSet::fxStrSet(fxTypeObj& type) : fxSet(type) {
    keySize = sizeof(fxStr);
    fxChains::note<fxSet>(*this, fxKeysAreStrings | fxSizesAreOfStrings);
}

fxStrSet::fxStrSet(const fxStrSet& other) : fxSet(other) {
    keySize = sizeof(fxStr);
    fxChains::note<fxSet>(*this, fxKeysAreStrings | fxSizesAreOfStrings);
}

fxStrSet::~fxStrSet() { cleanup(); }

fxTypeObj& fxStrSet::getTypeObj() const { return fxStrSet_type; }

unsigned int fxStrSet::hashKey(const void* key) const { return fxHashStr(fxStrAt(key)); }

int fxStrSet::compareKeys(const void* a, const void* b) const { return fxCompareStrs(a, b); }

void fxStrSet::copyKey(const void* from, void* to) const { fxCopyStr(from, to); }

void fxStrSet::destroyKey(void* key) const { fxDestroyStr(key); }

unsigned char fxStrSet::xdrKey(fxTranscriber& t, void* key) {
    return keySize >= sizeof(fxStr) ? fxXdrStr(t, key) : 0;
}

unsigned char fxStrSet::doxdr(fxTranscriber& t) { return doxdrOfSize(t, sizeof(fxStr)); }

unsigned char fxStrSet::xdr(fxTranscriber& t) { return doxdr(t); }

void* fxStrSet::newInstance(fxTypeObj& type) { return fxTryNew<fxStrSet>(type); }

void fxStrSet::deleteInstance(void* set) { delete static_cast<fxStrSet*>(set); }

unsigned char fxStrSet::xdr(void* set, fxTranscriber& t) {
    return static_cast<fxStrSet*>(set)->doxdr(t);
}

fxStrSetIter::fxStrSetIter() {}

fxStrSetIter::fxStrSetIter(fxStrSet& s) : fxSetIter(s) {}

fxStrSetIter::fxStrSetIter(fxStrSet* s) : fxSetIter((FX_CHECK_ARGUMENT("fxStrSetIter", s), *s)) {}

fxStrSetIter::~fxStrSetIter() {}
