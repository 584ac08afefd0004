#include "kelvofxds/containers/fxDictionary.h"

#include <cxxabi.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/containers/fxArrayFamilyInternal.h"
#include "kelvofxds/containers/fxChainsInternal.h"
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
}  // namespace

fxDictionary::fxDictionary(unsigned int keyBytes, unsigned int valueBytes, unsigned int numBuckets)
    : numItems(0), keySize(keyBytes), valueSize(valueBytes) {
    fxSum(owner, keyBytes, valueBytes);
    fxMakeBuckets(owner, buckets, numBuckets);
}

fxDictionary::fxDictionary(const fxDictionary& other)
    : fxXDRObj(other), numItems(0), keySize(other.keySize), valueSize(other.valueSize) {
    buckets.resize(other.bucketCount());
    for (unsigned int i = 0; i < other.bucketCount(); ++i) {
        // Adding an entry would hash its key, which only a subclass can.
        if (other.buckets[i])
            abi::__cxa_pure_virtual();
    }
}

fxDictionary::~fxDictionary() {}

void fxDictionary::operator=(const fxDictionary& other) {
    if (this == &other)
        return;
    fxVisitEntries<fxDictBucket>(
        other.buckets, [this](const fxDictBucket* b) { addInternal(b->kvmem, valueOf(b)); });
}

void fxDictionary::cleanup() {
    for (unsigned int i = 0; i < bucketCount(); ++i) {
        while (buckets[i]) {
            fxDictBucket* b = fxUnlink(&buckets[i]);
            endEntry(b, true);
            parkIters(b);
            release(b);
        }
    }
    // An iterator detached here does not know us any more, so it could not take
    // its pointer back when it goes.
    for (unsigned int i = 0; i < iters.length(); ++i) {
        fxDictIter* iter = iters[i];
        iters[i] = nullptr;
        if (!iter)
            continue;
        iter->dict = nullptr;
        iter->bucket = nullptr;
        iter->flags = fxDictIter::advanced;
    }
}

// Takes the iterators off an entry that goes while all entries do.
void fxDictionary::parkIters(const fxDictBucket* b) const {
    fxVisitIters(iters, [b](fxDictIter& iter) {
        if (iter.bucket != b)
            return;
        iter.bucket = nullptr;
        iter.flags = fxDictIter::advanced | fxDictIter::parked;
    });
}

// The operations on keys and values that have a default.

unsigned int fxDictionary::hashKey(const void* key) const { return fxHashWords(key, keySize); }

void fxDictionary::destroyKey(void*) const {}

void fxDictionary::destroyValue(void*) const {}

// Looking up.

// Where a key is, or would be.
struct fxDictionary::Place {
    unsigned int bucketIndex;
    fxDictBucket** link;  // the pointer to the key's entry; null if it has none
};

fxDictionary::Place fxDictionary::lookUp(const void* key) const {
    const unsigned int n = bucketCount();
    if (n == 0)
        return {0, nullptr};  // as read from a stream; there is nothing to find
    const unsigned int index = hashKey(key) % n;
    auto* heads = static_cast<fxDictBucket**>(const_cast<void*>(buckets.at(0)));
    for (fxDictBucket** link = heads + index; *link; link = &(*link)->next) {
        if (compareKeys(key, (*link)->kvmem) == 0)
            return {index, link};
    }
    return {index, nullptr};
}

fxDictionary::Place fxDictionary::lookUpToAdd(const void* key) const {
    if (bucketCount() == 0)
        fxNoBuckets(className());
    return lookUp(key);
}

void* fxDictionary::find(const void* key, void** bucketOut) const {
    const Place place = lookUp(key);
    fxDictBucket* b = place.link ? *place.link : nullptr;
    if (bucketOut)
        *bucketOut = b;
    return b ? valueOf(b) : nullptr;
}

// Adding.

fxDictBucket* fxDictionary::pushEntry(unsigned int bucketIndex, void* kvmem) {
    auto* b = fxTryNew<fxDictBucket>();
    if (!b)
        return nullptr;
    fxDictBucket*& head = buckets[bucketIndex];
    b->kvmem = kvmem;
    b->next = head;
    head = b;
    return b;
}

// A new entry with a copy of `key` and one of `*value`; without a `value`, with
// a default one. It is counted once it is there.
fxDictBucket* fxDictionary::addEntry(unsigned int bucketIndex, const void* key,
                                     const void* const* value) {
    void* block = fxAllocate(fxSum(owner, keySize, valueSize));
    void* valueAt = static_cast<char*>(block) + keySize;
    bool hasKey = false;
    try {
        copyKey(key, block);
        hasKey = true;
        if (value)
            copyValue(*value, valueAt);
        else
            createValue(valueAt);
    } catch (...) {
        if (hasKey)
            destroyKey(block);
        std::free(block);
        throw;
    }
    fxDictBucket* b = pushEntry(bucketIndex, block);
    if (!b)
        fxOutOfMemory();
    ++numItems;
    return b;
}

fxDictBucket* fxDictionary::addInternal(const void* key, const void* value) {
    const Place place = lookUpToAdd(key);
    if (!place.link)
        return addEntry(place.bucketIndex, key, &value);
    fxDictBucket* b = *place.link;
    if (value == valueOf(b))
        return b;  // the entry's own value
    return replaceValue(b, place.bucketIndex, key, value);
}

// The end of the old value may remove the entry.
fxDictBucket* fxDictionary::replaceValue(fxDictBucket* b, unsigned int bucketIndex, const void* key,
                                         const void* value) {
    const void* block = b->kvmem;
    const unsigned int size = keySize + valueSize;
    const HeldEntry held(b, HeldEntry::drops);
    destroyValue(valueOf(b));
    if (!b) {
        const bool areGone = fxPointsInto(key, block, size) || fxPointsInto(value, block, size);
        return areGone ? nullptr : fxDictionary::addInternal(key, value);
    }
    try {
        copyValue(value, valueOf(b));
    } catch (...) {
        if (b)
            removeEntry(b, bucketIndex);
        throw;
    }
    return b;
}

void* fxDictionary::findCreate(const void* key) {
    const Place place = lookUpToAdd(key);
    return valueOf(place.link ? *place.link : addEntry(place.bucketIndex, key, nullptr));
}

// Removing.

// Takes the entry of `key` out of its chain; null when there is none.
fxDictBucket* fxDictionary::unlink(const void* key) {
    const Place place = lookUp(key);
    return place.link ? fxUnlink(place.link) : nullptr;
}

// Ends the key of an entry that has been unlinked, and its value. That may
// remove the entry that followed it, to which its iterators are still to move.
void fxDictionary::endEntry(fxDictBucket* b, bool withValue) {
    void* value = valueOf(b);
    const HeldEntry held(b->next, HeldEntry::movesOn);
    destroyKey(b->kvmem);
    if (withValue)
        destroyValue(value);
}

// Removes an entry whose value is gone.
void fxDictionary::removeEntry(fxDictBucket* b, unsigned int bucketIndex) {
    fxDictBucket** link = &buckets[bucketIndex];
    while (*link != b)
        link = &(*link)->next;
    fxUnlink(link);
    endEntry(b, false);
    invalidateIters(b);
    release(b);
    --numItems;
}

void fxDictionary::release(fxDictBucket* b) {
    std::free(b->kvmem);
    delete b;
}

void fxDictionary::remove(const void* key) {
    fxDictBucket* b = unlink(key);
    if (!b)
        return;
    endEntry(b, true);
    invalidateIters(b);
    release(b);
    --numItems;
}

void* fxDictionary::cut(const void* key) {
    fxDictBucket* b = unlink(key);
    if (!b)
        return nullptr;
    void* value = fxAllocate(valueSize);
    std::memcpy(value, valueOf(b), valueSize);
    endEntry(b, false);
    invalidateIters(b);
    release(b);
    --numItems;
    return value;
}

// Iterators.

void fxDictionary::addIter(fxDictIter* iter) { fxRegisterIter(iters, iter); }

void fxDictionary::removeIter(fxDictIter* iter) { fxDeregisterIter(iters, iter); }

void fxDictionary::invalidateIters(const fxDictBucket* b) const {
    fxVisitIters(iters, [b](fxDictIter& iter) {
        if (iter.bucket != b || !iter.dict || (iter.flags & fxDictIter::parked))
            return;
        if (iter.flags & fxDictIter::advanced) {
            // A second removal leaves the iterator on the removed entry.
            iter.flags |= fxDictIter::parked;
        } else {
            iter.bucket = b->next;
            if (!iter.bucket)
                iter.advanceToValid();
        }
        if (iter.dict)
            iter.flags |= fxDictIter::advanced;
    });
}
