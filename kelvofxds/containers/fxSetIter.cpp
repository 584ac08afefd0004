// fxSetIter.cpp - walking the keys of a set.

#include "kelvofxds/containers/fxSet.h"

fxSetIter::fxSetIter() : set(nullptr), bucketIndex(0), flags(0), bucket(nullptr) {}

fxSetIter::fxSetIter(fxSet& s) : fxSetIter() { attach(&s); }

fxSetIter::fxSetIter(const fxSetIter& other)
    : set(other.set), bucketIndex(other.bucketIndex), flags(other.flags), bucket(other.bucket) {
    if (set)
        set->addIter(this);
}

fxSetIter::~fxSetIter() { detach(); }

void fxSetIter::operator=(fxSet& s) {
    detach();
    attach(&s);
}

fxSetIter& fxSetIter::operator=(const fxSetIter& other) {
    if (this == &other)
        return *this;
    detach();
    set = other.set;
    bucketIndex = other.bucketIndex;
    flags = other.flags;
    bucket = other.bucket;
    if (set)
        set->addIter(this);
    return *this;
}

void fxSetIter::attach(fxSet* s) {
    set = s;
    bucketIndex = 0;
    flags = 0;
    bucket = s->bucketCount() != 0 ? s->buckets[0] : nullptr;
    s->addIter(this);
    if (!bucket)
        advanceToValid();
}

void fxSetIter::detach() {
    if (set)
        set->removeIter(this);
}

// Inline in the header; this puts a copy into the library, for hosts that do
// not inline it.
[[gnu::used]] static void* (fxSetIter::*const exportedAccess)() const = &fxSetIter::getKey;
[[gnu::used]] static void (fxSetIter::*const exportedMove)() = &fxSetIter::operator++;

void fxSetIter::step() {
    if (!set)
        return;
    if (flags & parked) {
        flags = 0;
        advanceToValid();
    } else if (flags & advanced) {
        flags &= ~advanced;
    } else {
        bucket = bucket->next;
        if (!bucket)
            advanceToValid();
    }
}

void fxSetIter::advanceToValid() {
    const unsigned int count = set->bucketCount();
    while (++bucketIndex < count) {
        bucket = set->buckets[bucketIndex];
        if (bucket)
            return;
    }
    bucket = nullptr;
    detach();
    set = nullptr;
    flags |= advanced;
}

void fxSetIter::leave(const fxSetBucket* b) {
    if (bucket != b || !set || (flags & parked))
        return;
    if (flags & advanced) {
        // A second removal leaves the iterator on the removed entry.
        flags |= parked;
    } else {
        bucket = b->next;
        if (!bucket)
            advanceToValid();
    }
    if (set)
        flags |= advanced;
}
