// fxDictIter.cpp - walking the entries of a dictionary.

#include "kelvofxds/containers/fxDictionary.h"

fxDictIter::fxDictIter() : dict(nullptr), bucketIndex(0), flags(0), bucket(nullptr) {}

fxDictIter::fxDictIter(fxDictionary& d) : fxDictIter() { attach(&d); }

fxDictIter::fxDictIter(const fxDictIter& other)
    : dict(other.dict), bucketIndex(other.bucketIndex), flags(other.flags), bucket(other.bucket) {
    if (dict)
        dict->addIter(this);
}

fxDictIter::~fxDictIter() { detach(); }

void fxDictIter::operator=(fxDictionary& d) {
    detach();
    attach(&d);
}

fxDictIter& fxDictIter::operator=(const fxDictIter& other) {
    if (this == &other)
        return *this;
    detach();
    dict = other.dict;
    bucketIndex = other.bucketIndex;
    flags = other.flags;
    bucket = other.bucket;
    if (dict)
        dict->addIter(this);
    return *this;
}

void fxDictIter::attach(fxDictionary* d) {
    dict = d;
    bucketIndex = 0;
    flags = 0;
    bucket = d->bucketCount() != 0 ? d->buckets[0] : nullptr;
    d->addIter(this);
    if (!bucket)
        advanceToValid();
}

void fxDictIter::detach() {
    if (dict)
        dict->removeIter(this);
}

// Inline in the header; this puts copies into the library, for hosts that do
// not inline them.
[[gnu::used]] static void* (fxDictIter::*const exportedAccess[])() const = {&fxDictIter::getKey,
                                                                            &fxDictIter::getValue};
[[gnu::used]] static void (fxDictIter::*const exportedMove)() = &fxDictIter::operator++;

void fxDictIter::step() {
    if (!dict)
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

void fxDictIter::advanceToValid() {
    const unsigned int count = dict->bucketCount();
    while (++bucketIndex < count) {
        bucket = dict->buckets[bucketIndex];
        if (bucket)
            return;
    }
    bucket = nullptr;
    detach();
    dict = nullptr;
    flags |= advanced;
}
