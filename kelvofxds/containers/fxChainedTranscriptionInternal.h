// fxChainedTranscriptionInternal.h - dictionaries and sets as transcribable objects.
#pragma once

#include <cstdlib>
#include <cstring>

#include "kelvofxds/containers/fxChainedInternal.h"
#include "kelvofxds/containers/fxStrKeysInternal.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

/// What doxdr of dictionaries and of sets does alike. A set has no values, and
/// nothing of them in its stream.
struct fxChainedTranscription {
    /// Reads what `claimed` lets pass, or writes.
    template <class C>
    static unsigned char doxdr(C& c, fxTranscriber& t, const fxClaimedSizes& claimed) {
        return t.isReading() ? Reading<C>{c, t, claimed, 0}.read() : write(c, t);
    }

private:
    static unsigned int* valueSizeOf(fxDictionary& d) { return &d.valueSize; }
    static unsigned int* valueSizeOf(fxSet&) { return nullptr; }

    static unsigned char xdrEntry(fxDictionary& d, fxTranscriber& t, void* block) {
        return d.xdrKey(t, block) && d.xdrValue(t, static_cast<char*>(block) + d.keySize);
    }
    static unsigned char xdrEntry(fxSet& s, fxTranscriber& t, void* block) {
        return s.xdrKey(t, block);
    }

    template <class C>
    struct Reading {
        C& c;
        fxTranscriber& t;
        fxClaimedSizes claimed;
        unsigned int items;

        unsigned char read() { return readHead() && readEntries(); }

        // Nothing is replaced by a head that cannot be.
        unsigned char readHead() {
            unsigned int keyBytes = 0;
            unsigned int valueBytes = 0;
            unsigned int numBuckets = 0;
            unsigned int* const valueSize = valueSizeOf(c);
            if (!t.xdr(&items, 1) || !t.xdr(&keyBytes, 1) ||
                (valueSize && !t.xdr(&valueBytes, 1)) || !t.xdr(&numBuckets, 1))
                return 0;
            if (!claimed.claim(keyBytes, valueBytes) || (numBuckets == 0 && items != 0))
                return 0;
            // A graph stream has what the class writes.
            if (!t.transcribesSpareElements() &&
                (keyBytes != c.keySize || (valueSize && valueBytes != *valueSize)))
                return 0;
            c.cleanup();
            c.numItems = 0;
            if (!c.buckets.makeEmptyBuckets(numBuckets))
                return 0;
            c.numItems = items;
            c.keySize = keyBytes;
            if (valueSize)
                *valueSize = valueBytes;
            return 1;
        }

        unsigned char readEntries() {
            const unsigned int size = c.keySize + (valueSizeOf(c) ? *valueSizeOf(c) : 0);
            for (unsigned int i = 0; i < items; ++i) {
                if (!claimed.takeEntry())
                    return 0;
                // On failure the reader may have noted addresses in the block.
                void* block = std::malloc(size);
                if (block && !t.transcribesSpareElements())
                    std::memset(block, 0, size);
                if ((!block && size != 0) || !readEntry(block)) {
                    giveUp(block, i);
                    return 0;
                }
            }
            return 1;
        }

        unsigned char readEntry(void* block) {
            unsigned int index = 0;
            return xdrEntry(c, t, block) && t.xdr(&index, 1) && index < c.bucketCount() &&
                   fxChains::push<C>(c, index, block, nullptr);
        }

        // Of a key and a value nobody knows how far they were read, but strings are
        // the library's own.
        void giveUp(void* block, unsigned int read) {
            if (!block || t.transcribesSpareElements())
                return;
            c.numItems = read;
            if (fxIndexing::isByText(c)) {
                destroyEntry(c, block);
                std::free(block);
            } else {
                t.freeOnFailure(block);
            }
        }
    };

    // Of strings, or of zero bytes where none has been read.
    static void destroyEntry(fxDictionary& d, void* block) {
        fxDestroyStr(block);
        if (d.valueSize == sizeof(fxStr))
            fxDestroyStr(static_cast<char*>(block) + d.keySize);
    }
    static void destroyEntry(fxSet&, void* block) { fxDestroyStr(block); }

    template <class C>
    static unsigned char write(C& c, fxTranscriber& t) {
        using Bucket = fxChains::Bucket<C>;
        unsigned int numBuckets = c.bucketCount();
        if (!t.xdr(&c.numItems, 1) || !t.xdr(&c.keySize, 1) ||
            (valueSizeOf(c) && !t.xdr(valueSizeOf(c), 1)) || !t.xdr(&numBuckets, 1))
            return 0;
        for (unsigned int i = 0; i < c.bucketCount(); ++i) {
            Bucket* next = c.buckets[i];
            const fxHeldEntry<Bucket> held(next, fxHeldEntry<Bucket>::movesOn);
            while (const Bucket* b = next) {
                next = b->next;
                unsigned int index = i;
                if (!xdrEntry(c, t, fxBlockOf(b)) || !t.xdr(&index, 1))
                    return 0;
            }
        }
        return 1;
    }
};
