// fxSetXDR.cpp - sets as transcribable objects.

#include <cstdlib>

#include "kelvofxds/containers/fxChainsInternal.h"
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

unsigned char fxSet::doxdr(fxTranscriber& t) {
    unsigned int numBuckets = bucketCount();
    if (t.isReading()) {
        fxClaimedSizes claimed;
        unsigned int items = 0;
        return readHeader(t, claimed, items, numBuckets) &&
               readEntries(t, claimed, items, numBuckets);
    }
    return t.xdr(&numItems, 1) && t.xdr(&keySize, 1) && t.xdr(&numBuckets, 1) && writeEntries(t);
}

// Reads the sizes and makes the buckets. What a stream claims is only believed
// where it fits: keys at least as large as the class's own but not out of all
// proportion to the bytes that fill them, buckets for the entries.
unsigned char fxSet::readHeader(fxTranscriber& t, fxClaimedSizes& claimed, unsigned int& items,
                                unsigned int& numBuckets) {
    unsigned int keyBytes = 0;
    numBuckets = 0;
    if (!t.xdr(&items, 1) || !t.xdr(&keyBytes, 1) || !t.xdr(&numBuckets, 1))
        return 0;
    if (!claimed.add(keyBytes, keySize) || (numBuckets == 0 && items != 0))
        return 0;
    cleanup();
    numItems = 0;
    if (!buckets.makeEmptyBuckets(numBuckets))
        return 0;
    keySize = keyBytes;
    return 1;
}

unsigned char fxSet::readEntries(fxTranscriber& t, fxClaimedSizes& claimed, unsigned int items,
                                 unsigned int numBuckets) {
    for (unsigned int i = 0; i < items; ++i) {
        if (!claimed.takeEntry())
            return 0;
        // On failure the block is not freed: the reader may have noted
        // addresses in it.
        void* block = std::malloc(keySize);
        unsigned int index = 0;
        if (!block || !xdrKey(t, block) || !t.xdr(&index, 1) || index >= numBuckets)
            return 0;
        pushEntry(index, block);
    }
    return 1;
}

unsigned char fxSet::writeEntries(fxTranscriber& t) {
    for (unsigned int i = 0; i < bucketCount(); ++i) {
        for (const fxSetBucket* b = buckets[i]; b; b = b->next) {
            unsigned int index = i;
            if (!xdrKey(t, b->key) || !t.xdr(&index, 1))
                return 0;
        }
    }
    return 1;
}
