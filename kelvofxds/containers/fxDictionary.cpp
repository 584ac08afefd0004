#include "kelvofxds/containers/fxDictionary.h"

#include <cxxabi.h>

#include <cstdlib>
#include <cstring>

#include "kelvofxds/containers/fxArrayFamilyInternal.h"
#include "kelvofxds/containers/fxChainedInternal.h"
#include "kelvofxds/containers/fxChainedItersInternal.h"
#include "kelvofxds/containers/fxChainsCheckedInternal.h"
#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"

// The two tables.

// Their elements are pointers.
// NOLINTBEGIN(bugprone-sizeof-expression)
FX_DEFINE_ARRAY(fxDictBuckets, fxDictBucket*)
FX_DEFINE_ARRAY(fxDictIters, fxDictIter*)
// NOLINTEND(bugprone-sizeof-expression)

void fxDictBuckets::createElements(void* at, unsigned int bytes) { fxClearPointers(at, bytes); }

void fxDictIters::createElements(void* at, unsigned int bytes) { fxClearPointers(at, bytes); }

bool fxDictBuckets::makeEmptyBuckets(unsigned int n) {
    std::free(data);
    data = fxAllocateHeads(n);
    len = maxLen = data ? n * static_cast<unsigned int>(sizeof(void*)) : 0;
    return data != nullptr || n == 0;
}

// Construction.

namespace {
const char owner[] = "fxDictionary";
using HeldEntry = fxHeldEntry<fxDictBucket>;
using Place = fxPlace<fxDictBucket>;
}  // namespace

fxDictionary::fxDictionary(unsigned int keyBytes, unsigned int valueBytes, unsigned int numBuckets)
    : numItems(0), keySize(keyBytes), valueSize(valueBytes) {
    fxSum(owner, keyBytes, valueBytes);
    fxMakeBuckets(owner, buckets, numBuckets);
}

fxDictionary::fxDictionary(const fxDictionary& other)
    : fxXDRObj(other), numItems(0), keySize(other.keySize), valueSize(other.valueSize) {
    buckets.resize(other.bucketCount());
    fxChains::copyKnowledge(*this, other);
    for (unsigned int i = 0; i < other.bucketCount(); ++i) {
        // Adding an entry would hash its key, which only a subclass can.
        if (other.buckets[i])
            abi::__cxa_pure_virtual();
    }
}

fxDictionary::~fxDictionary() {
    FX_CHECK_LIVES("fxDictionary", count);
    FX_CHECK_CLEANED_UP("fxDictionary");
    fxChains::dropIndex(*this);
}

void fxDictionary::operator=(const fxDictionary& other) {
    if (this == &other)
        return;
    fxVisitEntries<fxDictBucket>(
        other.buckets, [this](const fxDictBucket* b) { addInternal(b->kvmem, valueOf(b)); });
}

// The operations on keys and values that have a default.

unsigned int fxDictionary::hashKey(const void* key) const { return fxHashWords(key, keySize); }

void fxDictionary::destroyKey(void*) const {}

void fxDictionary::destroyValue(void*) const {}

void fxDictionary::equalKeysHashEqually() { fxChains::promise(*this); }

// Looking up.

void* fxDictionary::find(const void* key, void** bucketOut) const {
    FX_CHECK_LIVES("fxDictionary", count);
    FX_CHECK_NOT_NULL_OF(fxClassOf(*this), key, keySize);
    fxDictBucket* b = fxChains::find<fxDictionary>(*this, key);
    if (bucketOut)
        *bucketOut = b;
    return b ? valueOf(b) : nullptr;
}

// Adding.

namespace {
// The block of a new entry, with a copy of `key` and what `makeValue` makes.
template <class MakeValue>
[[gnu::always_inline]] inline void* makeBlock(const fxDictionary& d, const void* key,
                                              unsigned int keySize, unsigned int valueSize,
                                              MakeValue makeValue) {
    void* block = fxAllocate(fxSum(owner, keySize, valueSize));
    bool hasKey = false;
    try {
        d.copyKey(key, block);
        hasKey = true;
        makeValue(static_cast<char*>(block) + keySize);
    } catch (...) {
        if (hasKey)
            d.destroyKey(block);
        std::free(block);
        throw;
    }
    return block;
}

// Puts the block's entry in front of its bucket. It is counted once it is there.
[[gnu::always_inline]] inline fxDictBucket* addEntry(fxDictionary& d, const Place& place,
                                                     void* block, unsigned int& numItems) {
    fxDictBucket* b = fxChains::push(d, place.bucketIndex, block, &place);
    if (!b)
        fxOutOfMemory();
    ++numItems;
    return b;
}
}  // namespace

fxDictBucket* fxDictionary::addInternal(const void* key, const void* value) {
    FX_CHECK_LIVES("fxDictionary", count);
    FX_CHECK_NOT_NULL_OF(fxClassOf(*this), key, keySize);
    FX_CHECK_NOT_NULL_OF(fxClassOf(*this), value, valueSize);
    const Place place = fxChains::lookUp<fxDictionary>(*this, key);
    if (!place.entry) {
        if (bucketCount() == 0)
            fxNoBuckets(className());
        void* block = makeBlock(*this, key, keySize, valueSize,
                                [this, value](void* at) { copyValue(value, at); });
        return addEntry(*this, place, block, numItems);
    }
    fxDictBucket* b = place.entry;
    if (value == valueOf(b))
        return b;  // the entry's own value
    const void* block = b->kvmem;
    const HeldEntry held(b, HeldEntry::drops);
    destroyValue(valueOf(b));
    if (!b)
        return addAgain(key, value, block);
    try {
        copyValue(value, valueOf(b));
    } catch (...) {
        if (b)
            removeEntry(b, place.bucketIndex);
        throw;
    }
    return b;
}

// The end of the old value has removed the entry, whose block was `gone`.
fxDictBucket* fxDictionary::addAgain(const void* key, const void* value, const void* gone) {
    const unsigned int size = keySize + valueSize;
    if (fxPointsInto(key, gone, size) || fxPointsInto(value, gone, size))
        return nullptr;
    return fxDictionary::addInternal(key, value);
}

void* fxDictionary::findCreate(const void* key) {
    FX_CHECK_LIVES("fxDictionary", count);
    FX_CHECK_NOT_NULL_OF(fxClassOf(*this), key, keySize);
    const Place place = fxChains::lookUp<fxDictionary>(*this, key);
    if (place.entry)
        return valueOf(place.entry);
    if (bucketCount() == 0)
        fxNoBuckets(className());
    void* block = makeBlock(*this, key, keySize, valueSize, [this](void* at) { createValue(at); });
    return valueOf(addEntry(*this, place, block, numItems));
}

// Removing.

namespace {
// Ends the key of an entry that has been unlinked. That may remove the entry
// that followed it, to which its iterators are still to move.
[[gnu::always_inline]] inline void endKey(const fxDictionary& d, fxDictBucket* b) {
    const HeldEntry held(b->next, HeldEntry::movesOn);
    d.destroyKey(b->kvmem);
}

// The same, and then its value.
[[gnu::always_inline]] inline void endKeyAndValue(const fxDictionary& d, fxDictBucket* b,
                                                  void* value) {
    const HeldEntry held(b->next, HeldEntry::movesOn);
    d.destroyKey(b->kvmem);
    d.destroyValue(value);
}
}  // namespace

// The removal of an entry that has been unlinked, to be gone through with also
// when the host's end of its key or value throws.
struct fxDictionary::Going {
    fxDictionary& from;
    fxDictBucket* b;

    ~Going() {
        from.invalidateIters(b);
        from.release(b);
        --from.numItems;
    }
};

// Removes an entry whose value is gone.
void fxDictionary::removeEntry(fxDictBucket* b, unsigned int bucketIndex) {
    const Going going{*this, fxChains::unlink<fxDictionary>(*this, b, bucketIndex)};
    endKey(*this, b);
}

void fxDictionary::release(fxDictBucket* b) {
    std::free(b->kvmem);
    fxChains::release(b);
}

void fxDictionary::remove(const void* key) {
    FX_CHECK_LIVES("fxDictionary", count);
    FX_CHECK_NOT_NULL_OF(fxClassOf(*this), key, keySize);
    const Place place = fxChains::lookUp<fxDictionary>(*this, key);
    if (!place.entry)
        return;
    const Going going{*this, fxChains::unlink<fxDictionary>(*this, place)};
    endKeyAndValue(*this, going.b, valueOf(going.b));
}

void* fxDictionary::cut(const void* key) {
    FX_CHECK_LIVES("fxDictionary", count);
    FX_CHECK_NOT_NULL_OF(fxClassOf(*this), key, keySize);
    const Place place = fxChains::lookUp<fxDictionary>(*this, key);
    if (!place.entry)
        return nullptr;
    void* value = fxAllocate(valueSize);
    const Going going{*this, fxChains::unlink<fxDictionary>(*this, place)};
    std::memcpy(value, valueOf(going.b), valueSize);
    try {
        endKey(*this, going.b);
    } catch (...) {
        std::free(value);  // which nobody gets
        throw;
    }
    return value;
}

// Cleaning up.

void fxDictionary::cleanup() {
    FX_CHECK_LIVES("fxDictionary", count);
    fxChains::dropIndex(*this);
    for (unsigned int i = 0; i < bucketCount(); ++i) {
        while (buckets[i]) {
            fxDictBucket* b = fxChains::unlink<fxDictionary>(*this, buckets[i], i);
            endKeyAndValue(*this, b, valueOf(b));
            parkIters(b);
            release(b);
        }
    }
    fxChains::dropIndex(*this);
    fxChainedIters::visit(iters, [](fxDictIter& iter) { iter.flags = fxDictIter::advanced; });
    fxChainedIters::letGo(iters);
}

// Takes the iterators off an entry that goes while all entries do.
void fxDictionary::parkIters(const fxDictBucket* b) const {
    fxChainedIters::visit(iters, [b](fxDictIter& iter) {
        if (iter.bucket != b)
            return;
        iter.bucket = nullptr;
        iter.flags = fxDictIter::advanced | fxDictIter::parked;
    });
}

// Iterators.

void fxDictionary::addIter(fxDictIter* iter) {
    FX_CHECK_NOT_NULL(fxClassOf(*this), iter);
    fxChainedIters::add(iters, iter);
}

void fxDictionary::removeIter(fxDictIter* iter) { fxChainedIters::remove(iters, iter); }

void fxDictionary::invalidateIters(const fxDictBucket* b) const {
    if (iters.getLen() == 0)
        return;
    fxChainedIters::visit(iters, [b](fxDictIter& iter) { fxChainedIters::leave(iter, b); });
}
