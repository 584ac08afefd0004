// fxSetXDR.cpp - sets as transcribable objects.

#include <cstdlib>

#include "kelvofxds/containers/fxChainedInternal.h"
#include "kelvofxds/containers/fxSet.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

fxTypeObj fxSet_type("fxSet", 1, nullptr, nullptr, fxSet::xdr);

fxSet::fxSet(fxTypeObj& type) : fxXDRObj(type), numItems(0), keySize(0) {}

fxTypeObj& fxSet::getTypeObj() const { return fxSet_type; }

unsigned char fxSet::xdr(fxTranscriber& t) {
    return t.xdr(fxXDRObj::getTypeObj(), this, this) != 0;
}

unsigned char fxSet::xdr(void* object, fxTranscriber& t) {
    return t.xdr(fxXDRObj_type, object, object) != 0;
}

struct fxSet::Reading {
    fxTranscriber& t;
    fxClaimedSizes claimed;
    unsigned int items;
    unsigned int numBuckets;
};

unsigned char fxSet::doxdr(fxTranscriber& t) {
    if (fxChains::knowsItsSizes(*this))
        return doxdrOfSize(t, sizeof(fxStr));
    return t.isReading() ? read({t, fxClaimedSizes(), 0, 0}) : write(t);
}

unsigned char fxSet::doxdrOfSize(fxTranscriber& t, unsigned int keyBytes) {
    return t.isReading() ? read({t, fxClaimedSizes(keyBytes, 0), 0, 0}) : write(t);
}

unsigned char fxSet::read(Reading reading) { return readHead(reading) && readEntries(reading); }

// Nothing is replaced by a head that cannot be.
unsigned char fxSet::readHead(Reading& reading) {
    fxTranscriber& t = reading.t;
    unsigned int keyBytes = 0;
    if (!t.xdr(&reading.items, 1) || !t.xdr(&keyBytes, 1) || !t.xdr(&reading.numBuckets, 1))
        return 0;
    if (!reading.claimed.claim(keyBytes, 0) || (reading.numBuckets == 0 && reading.items != 0))
        return 0;
    cleanup();
    numItems = 0;
    if (!buckets.makeEmptyBuckets(reading.numBuckets))
        return 0;
    numItems = reading.items;
    keySize = keyBytes;
    return 1;
}

unsigned char fxSet::readEntries(Reading& reading) {
    fxTranscriber& t = reading.t;
    for (unsigned int i = 0; i < reading.items; ++i) {
        if (!reading.claimed.takeEntry())
            return 0;
        // On failure the block is not freed: the reader may have noted
        // addresses in it.
        void* block = std::malloc(keySize);
        unsigned int index = 0;
        if ((!block && keySize != 0) || !xdrKey(t, block) || !t.xdr(&index, 1) ||
            index >= bucketCount() || !fxChains::push<fxSet>(*this, index, block, nullptr))
            return 0;
    }
    return 1;
}

unsigned char fxSet::write(fxTranscriber& t) {
    unsigned int numBuckets = bucketCount();
    if (!t.xdr(&numItems, 1) || !t.xdr(&keySize, 1) || !t.xdr(&numBuckets, 1))
        return 0;
    for (unsigned int i = 0; i < bucketCount(); ++i) {
        fxSetBucket* next = buckets[i];
        const fxHeldEntry<fxSetBucket> held(next, fxHeldEntry<fxSetBucket>::movesOn);
        while (const fxSetBucket* b = next) {
            next = b->next;
            unsigned int index = i;
            if (!xdrKey(t, b->key) || !t.xdr(&index, 1))
                return 0;
        }
    }
    return 1;
}
