// fxDictionaryXDR.cpp - dictionaries as transcribable objects.

#include <cstdlib>

#include "kelvofxds/containers/fxChainedInternal.h"
#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

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

struct fxDictionary::Reading {
    fxTranscriber& t;
    fxClaimedSizes claimed;
    unsigned int items;
    unsigned int numBuckets;
};

unsigned char fxDictionary::doxdr(fxTranscriber& t) {
    if (fxChains::knowsItsSizes(*this))
        return doxdrOfSizes(t, sizeof(fxStr), sizeof(fxStr));
    return t.isReading() ? read({t, fxClaimedSizes(), 0, 0}) : write(t);
}

unsigned char fxDictionary::doxdrOfSizes(fxTranscriber& t, unsigned int keyBytes,
                                         unsigned int valueBytes) {
    return t.isReading() ? read({t, fxClaimedSizes(keyBytes, valueBytes), 0, 0}) : write(t);
}

unsigned char fxDictionary::read(Reading reading) {
    return readHead(reading) && readEntries(reading);
}

// Nothing is replaced by a head that cannot be.
unsigned char fxDictionary::readHead(Reading& reading) {
    fxTranscriber& t = reading.t;
    unsigned int keyBytes = 0;
    unsigned int valueBytes = 0;
    if (!t.xdr(&reading.items, 1) || !t.xdr(&keyBytes, 1) || !t.xdr(&valueBytes, 1) ||
        !t.xdr(&reading.numBuckets, 1))
        return 0;
    if (!reading.claimed.claim(keyBytes, valueBytes) ||
        (reading.numBuckets == 0 && reading.items != 0))
        return 0;
    cleanup();
    numItems = 0;
    if (!buckets.makeEmptyBuckets(reading.numBuckets))
        return 0;
    numItems = reading.items;
    keySize = keyBytes;
    valueSize = valueBytes;
    return 1;
}

unsigned char fxDictionary::readEntries(Reading& reading) {
    fxTranscriber& t = reading.t;
    const unsigned int size = keySize + valueSize;
    for (unsigned int i = 0; i < reading.items; ++i) {
        if (!reading.claimed.takeEntry())
            return 0;
        // On failure the block is not freed: the reader may have noted
        // addresses in it.
        void* block = std::malloc(size);
        unsigned int index = 0;
        if ((!block && size != 0) || !xdrKey(t, block) ||
            !xdrValue(t, static_cast<char*>(block) + keySize) || !t.xdr(&index, 1) ||
            index >= bucketCount() || !fxChains::push<fxDictionary>(*this, index, block, nullptr))
            return 0;
    }
    return 1;
}

unsigned char fxDictionary::write(fxTranscriber& t) {
    unsigned int numBuckets = bucketCount();
    if (!t.xdr(&numItems, 1) || !t.xdr(&keySize, 1) || !t.xdr(&valueSize, 1) ||
        !t.xdr(&numBuckets, 1))
        return 0;
    for (unsigned int i = 0; i < bucketCount(); ++i) {
        fxDictBucket* next = buckets[i];
        const fxHeldEntry<fxDictBucket> held(next, fxHeldEntry<fxDictBucket>::movesOn);
        while (fxDictBucket* b = next) {
            next = b->next;
            unsigned int index = i;
            if (!xdrKey(t, b->kvmem) || !xdrValue(t, valueOf(b)) || !t.xdr(&index, 1))
                return 0;
        }
    }
    return 1;
}
