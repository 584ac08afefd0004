// fxDictIter.cpp - walking the entries of a dictionary.

#include "kelvofxds/containers/fxChainedItersInternal.h"
#include "kelvofxds/core/fxCheckedInternal.h"

fxDictIter::fxDictIter() : dict(nullptr), bucketIndex(0), flags(0), bucket(nullptr) {}

fxDictIter::fxDictIter(fxDictionary& d) : fxDictIter() { fxChainedIters::attach(*this, d); }

fxDictIter::fxDictIter(const fxDictIter& other) : fxDictIter() {
    fxChainedIters::copy(*this, other);
}

fxDictIter::~fxDictIter() { fxChainedIters::detach(*this); }

void fxDictIter::operator=(fxDictionary& d) {
    fxChainedIters::detach(*this);
    fxChainedIters::attach(*this, d);
}

fxDictIter& fxDictIter::operator=(const fxDictIter& other) {
    if (this != &other) {
        fxChainedIters::detach(*this);
        fxChainedIters::copy(*this, other);
    }
    return *this;
}

// Inline in the header; this puts copies into the library, for hosts that do
// not inline them.
[[gnu::used]] static void* (fxDictIter::*const exportedAccess[])() const = {&fxDictIter::getKey,
                                                                            &fxDictIter::getValue};
[[gnu::used]] static void (fxDictIter::*const exportedMove)() = &fxDictIter::operator++;

void fxDictIter::step() { fxChainedIters::step(*this); }

void fxDictIter::advanceToValid() {
    FX_CHECK_THAT("fxDictIter", dict, "the iterator is at the end, or attached to nothing");
    fxChainedIters::advanceToValid(*this);
}
