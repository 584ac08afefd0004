#include "kelvofxds/containers/fxSet.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/containers/fxArrayFamilyInternal.h"
#include "kelvofxds/containers/fxChainedInternal.h"
#include "kelvofxds/containers/fxChainedItersInternal.h"
#include "kelvofxds/containers/fxChainsCheckedInternal.h"
#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxMemoryInternal.h"

// The two tables.

// Their elements are pointers.
// NOLINTBEGIN(bugprone-sizeof-expression)
FX_DEFINE_ARRAY(fxSetBuckets, fxSetBucket*)
FX_DEFINE_ARRAY(fxSetIters, fxSetIter*)
// NOLINTEND(bugprone-sizeof-expression)

void fxSetBuckets::createElements(void* at, unsigned int bytes) { fxClearPointers(at, bytes); }

void fxSetIters::createElements(void* at, unsigned int bytes) { fxClearPointers(at, bytes); }

bool fxSetBuckets::makeEmptyBuckets(unsigned int n) {
    std::free(data);
    data = fxAllocateHeads(n);
    len = maxLen = data ? n * static_cast<unsigned int>(sizeof(void*)) : 0;
    return data != nullptr || n == 0;
}

// Construction.

namespace {
using HeldEntry = fxHeldEntry<fxSetBucket>;
using Place = fxPlace<fxSetBucket>;
}  // namespace

fxSet::fxSet(unsigned int keyBytes, unsigned int numBuckets) : numItems(0), keySize(keyBytes) {
    fxMakeBuckets("fxSet", buckets, numBuckets);
}

fxSet::fxSet(const fxSet& other) : fxXDRObj(other), numItems(0), keySize(0) { copyKeys(other); }

fxSet::fxSet(const fxTmpSet& other) : fxSet(static_cast<const fxSet&>(other)) {}

fxSet::~fxSet() {
    FX_CHECK_LIVES("fxSet", count);
    FX_CHECK_CLEANED_UP("fxSet");
    fxChains::dropIndex(*this);
}

namespace {
// Ends the process the way it ends when there is no bucket to choose from. The
// divisor is volatile so that no compiler foresees the division's outcome.
__attribute__((noreturn, noinline, no_sanitize("integer-divide-by-zero"))) void divideByNoBuckets(
    unsigned int hash, unsigned int numBuckets) {
    volatile unsigned int divisor = numBuckets;
    [[maybe_unused]] volatile unsigned int bucketIndex = hash % divisor;
    std::raise(SIGFPE);  // where division does not trap
    std::abort();
}
}  // namespace

// Copies keys into a set that has no buckets. The base's hash is meant: the
// copy under construction is nothing more yet, and its keys have no size.
void fxSet::copyKeys(const fxSet& other) const {
    for (unsigned int i = 0; i < other.bucketCount(); ++i) {
        if (other.buckets[i])
            divideByNoBuckets(fxSet::hashKey(other.buckets[i]->key), bucketCount());
    }
}

fxSet& fxSet::operator=(const fxSet& other) {
    if (this == &other)
        return *this;
    for (unsigned int i = 0; i < other.bucketCount(); ++i) {
        if (other.buckets[i])
            fxFatal("fxSet::operator=: not usable on a non-empty set");
    }
    // The entries are lost with the heads that lead to them.
    fxChains::dropIndex(*this);
    const unsigned int numBuckets = bucketCount();
    buckets.resize(0);
    buckets.resize(numBuckets);
    fxChainedIters::letGo(iters);
    iters.resize(0);
    numItems = 0;
    return *this;
}

void fxSet::cleanup() {
    FX_CHECK_LIVES("fxSet", count);
    fxChains::dropIndex(*this);
    for (unsigned int i = 0; i < bucketCount(); ++i) {
        while (buckets[i])
            endEntry(fxChains::unlink<fxSet>(*this, buckets[i], i));
    }
    fxChains::dropIndex(*this);
    fxChainedIters::letGo(iters);
}

// The operations on keys that have a default.

unsigned int fxSet::hashKey(const void* key) const { return fxHashWords(key, keySize); }

int fxSet::compareKeys(const void* a, const void* b) const {
    const int order = std::memcmp(a, b, keySize);
    return (order > 0) - (order < 0);
}

void fxSet::copyKey(const void* from, void* to) const { std::memcpy(to, from, keySize); }

void fxSet::destroyKey(void*) const {}

void fxSet::equalKeysHashEqually() { fxChains::promise(*this); }

// Looking up.

void* fxSet::find(const void* key) const {
    FX_CHECK_LIVES("fxSet", count);
    FX_CHECK_NOT_NULL_OF(fxClassOf(*this), key, keySize);
    const fxSetBucket* b = fxChains::find<fxSet>(*this, key);
    return b ? b->key : nullptr;
}

unsigned char fxSet::contains(const void* key) const {
    FX_CHECK_LIVES("fxSet", count);
    FX_CHECK_NOT_NULL_OF(fxClassOf(*this), key, keySize);
    return fxChains::find<fxSet>(*this, key) != nullptr;
}

// Adding and removing.

fxSetBucket* fxSet::add(const void* key) {
    FX_CHECK_LIVES("fxSet", count);
    FX_CHECK_NOT_NULL_OF(fxClassOf(*this), key, keySize);
    const Place place = fxChains::lookUp<fxSet>(*this, key);
    if (place.entry)
        return nullptr;
    if (bucketCount() == 0)
        fxNoBuckets(className());
    void* block = fxAllocate(keySize);
    try {
        copyKey(key, block);
    } catch (...) {
        std::free(block);
        throw;
    }
    // NOLINTNEXTLINE(clang-analyzer-unix.Malloc): the entry has the block.
    fxSetBucket* b = fxChains::push<fxSet>(*this, place.bucketIndex, block, &place);
    if (!b)
        fxOutOfMemory();
    ++numItems;
    return b;
}

// The removal of an entry that has been unlinked, to be gone through with also
// when the host's end of its key throws.
struct fxSet::Going {
    fxSet& from;
    fxSetBucket* b;

    ~Going() {
        from.invalidateIters(b);
        std::free(b->key);
        fxChains::release(b);
        --from.numItems;
    }
};

// Ends the key of an entry that has been unlinked, and frees the entry. The end
// of the key may remove the entry that followed it, to which its iterators are
// still to move.
void fxSet::endEntry(fxSetBucket* b) {
    const Going going{*this, b};
    const HeldEntry held(b->next, HeldEntry::movesOn);
    destroyKey(b->key);
}

void fxSet::remove(const void* key) {
    FX_CHECK_LIVES("fxSet", count);
    FX_CHECK_NOT_NULL_OF(fxClassOf(*this), key, keySize);
    const Place place = fxChains::lookUp<fxSet>(*this, key);
    if (place.entry)
        endEntry(fxChains::unlink<fxSet>(*this, place));
}

// Set algebra. The host's code may change both sets meanwhile.

fxSet& fxSet::operator|=(const fxSet& other) {
    fxVisitEntries<fxSetBucket>(other.buckets, [this](const fxSetBucket* b) { add(b->key); });
    return *this;
}

fxSet& fxSet::operator&=(const fxSet& other) {
    for (unsigned int i = 0; i < bucketCount(); ++i) {
        fxSetBucket* kept = nullptr;  // the last one
        fxSetBucket* b = nullptr;
        fxSetBucket* next = buckets[i];
        const HeldEntry heldKept(kept, HeldEntry::drops);
        const HeldEntry heldNow(b, HeldEntry::drops);
        const HeldEntry heldNext(next, HeldEntry::movesOn);
        while ((b = next) != nullptr) {
            next = b->next;
            const bool stays = other.contains(b->key) != 0;
            if (!b)
                continue;  // a comparison has removed it
            if (stays) {
                kept = b;
                continue;
            }
            endEntry(fxChains::unlink<fxSet>(*this, b, i, kept));
        }
    }
    return *this;
}

fxSet& fxSet::operator-=(const fxSet& other) {
    fxVisitEntries<fxSetBucket>(other.buckets, [this](const fxSetBucket* b) { remove(b->key); });
    return *this;
}

namespace {
[[noreturn]] void refuse(const char* message) {
    std::puts(message);
    std::fflush(stdout);
    std::abort();
}
}  // namespace

fxTmpSet fxSet::operator|(const fxSet&) {
    refuse(
        "Unimplemented operator overloading is called!  "
        "fxTmpSet operator|(fxSet const &)");
}

fxTmpSet fxSet::operator&(const fxSet&) {
    refuse(
        "Unimplemented operator overloading is called!  "
        "fxTmpSet operator&(fxSet const &)");
}

fxTmpSet fxSet::operator-(const fxSet&) {
    refuse(
        "Unimplemented operator overloading is called!  "
        "fxTmpSet operator-(fxSet const &)");
}

// Iterators.

void fxSet::addIter(fxSetIter* iter) {
    FX_CHECK_NOT_NULL(fxClassOf(*this), iter);
    fxChainedIters::add(iters, iter);
}

void fxSet::removeIter(fxSetIter* iter) { fxChainedIters::remove(iters, iter); }

void fxSet::invalidateIters(const fxSetBucket* b) const {
    if (iters.getLen() == 0)
        return;
    fxChainedIters::visit(iters, [b](fxSetIter& iter) { fxChainedIters::leave(iter, b); });
}

// The temporary.

fxTmpSet::fxTmpSet(const fxSet& other) : fxSet(other) {}

fxTmpSet::~fxTmpSet() {}

unsigned char fxTmpSet::xdrKey(fxTranscriber&, void*) { return 0; }
