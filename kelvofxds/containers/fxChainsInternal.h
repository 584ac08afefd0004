// fxChainsInternal.h - what dictionaries and sets do alike.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/containers/fxChainIndexInternal.h"
#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxInProgressInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"

/// What 0 buckets stands for.
constexpr unsigned int fxDefaultBuckets = 31;

/// Makes pointers of raw memory, all null.
inline void fxClearPointers(void* at, unsigned int bytes) {
    if (bytes != 0)
        std::memset(at, 0, bytes);
}

/// A block of `n` null pointers whose memory is not touched; null when there is
/// no such memory.
inline void* fxAllocateHeads(unsigned int n) {
    const unsigned int most = 0x1FFFFFFF;  // what half of the address space holds
    return n <= most ? std::calloc(n, sizeof(void*)) : nullptr;
}

/// The exclusive or of the key's 32-bit words; bytes behind them do not count.
inline unsigned int fxHashWords(const void* key, unsigned int keySize) {
    std::uint32_t hash = 0;
    for (unsigned int offset = 0; offset + sizeof hash <= keySize; offset += sizeof hash) {
        std::uint32_t word;
        std::memcpy(&word, static_cast<const char*>(key) + offset, sizeof word);
        hash ^= word;
    }
    return hash;
}

/// What a stream claims of the sizes of keys and values. A host's class knows
/// best and is believed. A class that knows its own sizes has the claims weighed
/// against the bytes that the stream has to give for them: its own size and a
/// little more is believed of every key and value; what goes beyond that is
/// limited for all entries of a container together.
class fxClaimedSizes {
public:
    /// Believes.
    fxClaimedSizes() : weighs(false), ownKey(0), ownValue(0), gap(0), left(0) {}
    /// Weighs, for a class of these sizes; those of a set's values are 0.
    fxClaimedSizes(unsigned int keyBytes, unsigned int valueBytes)
        : weighs(true), ownKey(keyBytes), ownValue(valueBytes), gap(0), left(mostGaps) {}

    /// The sizes of every entry to come. Returns false if they cannot be
    /// believed of a single one.
    bool claim(unsigned int keyBytes, unsigned int valueBytes) {
        unsigned int block = 0;
        if (__builtin_add_overflow(keyBytes, valueBytes, &block))
            return false;
        if (!weighs)
            return true;
        const bool valueIsAligned = ownValue == 0 || keyBytes % alignof(void*) == 0;
        return valueIsAligned && weigh(keyBytes, ownKey) && weigh(valueBytes, ownValue);
    }

    /// Whether there is credit for one more entry.
    bool takeEntry() {
        if (gap > left)
            return false;
        left -= gap;
        return true;
    }

private:
    static const unsigned int smallGap = 32;        // bytes
    static const unsigned int mostGaps = 1U << 14;  // bytes

    bool weigh(unsigned int claimed, unsigned int own) {
        if (claimed < own || claimed - own > mostGaps)
            return false;
        gap += claimed - own > smallGap ? claimed - own - smallGap : 0;
        return true;
    }

    bool weighs;
    unsigned int ownKey;    // bytes
    unsigned int ownValue;  // bytes
    unsigned int gap;       // of an entry, in bytes
    unsigned int left;      // bytes
};

/// Makes the buckets that a constructor of `owner` was asked for.
template <class Buckets>
void fxMakeBuckets(const char* owner, Buckets& buckets, unsigned int numBuckets) {
    const unsigned int n = numBuckets != 0 ? numBuckets : fxDefaultBuckets;
    fxProduct(owner, n, sizeof(void*));
    buckets.resize(n);
}

/// Ends the process: something was to be added where there are no buckets.
[[noreturn, gnu::cold]] inline void fxNoBuckets(const char* className) {
    fxFatal("%s: no buckets", className);
}

/// A pointer to an entry that an operation holds while the host's code runs.
/// When that code removes the entry, the pointer moves on to the next one, or
/// becomes null. A removal pays a look at those that are held.
template <class Bucket>
class fxHeldEntry : public fxInProgress<fxHeldEntry<Bucket>> {
public:
    enum Removal { movesOn, drops };

    fxHeldEntry(Bucket*& entry, Removal removal) : held(entry), onRemoval(removal) {}

    /// Tells all pointers that `b` has been taken out of its chain.
    static void leave(const Bucket* b) {
        fxHeldEntry::forEach([b](fxHeldEntry& h) {
            if (h.held == b)
                h.held = h.onRemoval == movesOn ? b->next : nullptr;
        });
    }

private:
    Bucket*& held;
    Removal onRemoval;
};

/// Calls `visit` with every entry of the chains in `buckets`. The entry that is
/// visited may be removed meanwhile, and any other; one that is added in front
/// is not visited any more.
template <class Bucket, class Buckets, class Visit>
void fxVisitEntries(const Buckets& buckets, Visit visit) {
    for (unsigned int i = 0; i < buckets.getLen() / sizeof(void*); ++i) {
        Bucket* next = buckets[i];
        const fxHeldEntry<Bucket> held(next, fxHeldEntry<Bucket>::movesOn);
        while (Bucket* b = next) {
            next = b->next;
            visit(b);
        }
    }
}
