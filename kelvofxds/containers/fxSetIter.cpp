// fxSetIter.cpp - walking the keys of a set.

#include "kelvofxds/containers/fxChainedItersInternal.h"
#include "kelvofxds/core/fxCheckedInternal.h"

fxSetIter::fxSetIter() : set(nullptr), bucketIndex(0), flags(0), bucket(nullptr) {}

fxSetIter::fxSetIter(fxSet& s) : fxSetIter() { fxChainedIters::attach(*this, s); }

fxSetIter::fxSetIter(const fxSetIter& other) : fxSetIter() { fxChainedIters::copy(*this, other); }

fxSetIter::~fxSetIter() { fxChainedIters::detach(*this); }

void fxSetIter::operator=(fxSet& s) {
    fxChainedIters::detach(*this);
    fxChainedIters::attach(*this, s);
}

fxSetIter& fxSetIter::operator=(const fxSetIter& other) {
    if (this != &other) {
        fxChainedIters::detach(*this);
        fxChainedIters::copy(*this, other);
    }
    return *this;
}

// Inline in the header; this puts copies into the library, for hosts that do
// not inline them.
[[gnu::used]] static void* (fxSetIter::*const exportedAccess)() const = &fxSetIter::getKey;
[[gnu::used]] static void (fxSetIter::*const exportedMove)() = &fxSetIter::operator++;

void fxSetIter::step() { fxChainedIters::step(*this); }

void fxSetIter::advanceToValid() {
    FX_CHECK_THAT("fxSetIter", set, "the iterator is at the end, or attached to nothing");
    fxChainedIters::advanceToValid(*this);
}
