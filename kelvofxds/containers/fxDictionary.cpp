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

fxDictionary::fxDictionary(unsigned int keyBytes, unsigned int valueBytes, unsigned int numBuckets)
    : numItems(0), keySize(keyBytes), valueSize(valueBytes) {
    buckets.resize(numBuckets != 0 ? numBuckets : fxDefaultBuckets);
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
    for (unsigned int i = 0; i < other.bucketCount(); ++i) {
        for (fxDictBucket* b = other.buckets[i]; b; b = b->next)
            addInternal(b->kvmem, valueOf(b));
    }
}

void fxDictionary::cleanup() {
    for (unsigned int i = 0; i < bucketCount(); ++i) {
        while (fxDictBucket* b = buckets[i]) {
            buckets[i] = b->next;
            destroyKey(b->kvmem);
            destroyValue(valueOf(b));
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
        iter->flags |= fxDictIter::advanced;
    }
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

fxDictionary::Place fxDictionary::lookUpToAdd(const void* key) {
    if (bucketCount() == 0)
        buckets.resize(fxDefaultBuckets);
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
    fxDictBucket*& head = buckets[bucketIndex];
    head = new fxDictBucket{kvmem, head};
    return head;
}

fxDictBucket* fxDictionary::addInternal(const void* key, const void* value) {
    const Place place = lookUpToAdd(key);
    if (!place.link) {
        void* block = fxAllocate(keySize + valueSize);
        copyKey(key, block);
        copyValue(value, static_cast<char*>(block) + keySize);
        ++numItems;
        return pushEntry(place.bucketIndex, block);
    }
    fxDictBucket* b = *place.link;
    if (value != valueOf(b)) {  // else it is the entry's own value
        destroyValue(valueOf(b));
        copyValue(value, valueOf(b));
    }
    return b;
}

void* fxDictionary::findCreate(const void* key) {
    const Place place = lookUpToAdd(key);
    if (place.link)
        return valueOf(*place.link);
    void* block = fxAllocate(keySize + valueSize);
    copyKey(key, block);
    createValue(static_cast<char*>(block) + keySize);
    ++numItems;
    return valueOf(pushEntry(place.bucketIndex, block));
}

// Removing.

// Takes the entry of `key` out of its chain; null when there is none.
fxDictBucket* fxDictionary::unlink(const void* key) {
    const Place place = lookUp(key);
    if (!place.link)
        return nullptr;
    fxDictBucket* b = *place.link;
    *place.link = b->next;
    return b;
}

void fxDictionary::release(fxDictBucket* b) {
    std::free(b->kvmem);
    delete b;
}

void fxDictionary::remove(const void* key) {
    fxDictBucket* b = unlink(key);
    if (!b)
        return;
    destroyKey(b->kvmem);
    destroyValue(valueOf(b));
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
    destroyKey(b->kvmem);
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
