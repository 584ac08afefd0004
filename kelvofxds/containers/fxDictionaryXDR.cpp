// fxDictionaryXDR.cpp - dictionaries as transcribable objects.

#include <cstdlib>

#include "kelvofxds/containers/fxChainsInternal.h"
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

unsigned char fxDictionary::doxdr(fxTranscriber& t) {
    unsigned int numBuckets = bucketCount();
    if (t.isReading()) {
        fxClaimedSizes claimed;
        return readHeader(t, claimed, numBuckets) && readEntries(t, claimed, numBuckets);
    }
    return t.xdr(&numItems, 1) && t.xdr(&keySize, 1) && t.xdr(&valueSize, 1) &&
           t.xdr(&numBuckets, 1) && writeEntries(t);
}

// Reads the sizes and makes the buckets. What a stream claims is only believed
// where it fits: keys and values at least as large as the class's own but not
// out of all proportion to the bytes that fill them, buckets for the entries.
unsigned char fxDictionary::readHeader(fxTranscriber& t, fxClaimedSizes& claimed,
                                       unsigned int& numBuckets) {
    unsigned int items = 0;
    unsigned int keyBytes = 0;
    unsigned int valueBytes = 0;
    numBuckets = 0;
    if (!t.xdr(&items, 1) || !t.xdr(&keyBytes, 1) || !t.xdr(&valueBytes, 1) ||
        !t.xdr(&numBuckets, 1))
        return 0;
    if (!claimed.add(keyBytes, keySize) || !claimed.add(valueBytes, valueSize) ||
        (numBuckets == 0 && items != 0))
        return 0;
    cleanup();
    numItems = 0;
    if (!buckets.makeEmptyBuckets(numBuckets))
        return 0;
    numItems = items;
    keySize = keyBytes;
    valueSize = valueBytes;
    return 1;
}

unsigned char fxDictionary::readEntries(fxTranscriber& t, fxClaimedSizes& claimed,
                                        unsigned int numBuckets) {
    for (unsigned int i = 0; i < numItems; ++i) {
        if (!claimed.takeEntry())
            return 0;
        // On failure the block is not freed: the reader may have noted
        // addresses in it.
        void* block = std::malloc(keySize + valueSize);
        unsigned int index = 0;
        if (!block || !xdrKey(t, block) || !xdrValue(t, static_cast<char*>(block) + keySize) ||
            !t.xdr(&index, 1) || index >= numBuckets)
            return 0;
        pushEntry(index, block);
    }
    return 1;
}

unsigned char fxDictionary::writeEntries(fxTranscriber& t) {
    for (unsigned int i = 0; i < bucketCount(); ++i) {
        for (fxDictBucket* b = buckets[i]; b; b = b->next) {
            unsigned int index = i;
            if (!xdrKey(t, b->kvmem) || !xdrValue(t, valueOf(b)) || !t.xdr(&index, 1))
                return 0;
        }
    }
    return 1;
}
