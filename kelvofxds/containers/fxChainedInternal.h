// fxChainedInternal.h - the engine of dictionaries and sets: looking up, pushing, unlinking.
#pragma once

#include <cstdint>

#include "kelvofxds/containers/fxChainsInternal.h"
#include "kelvofxds/containers/fxIndexedInternal.h"

/// Where a key is, or would be.
template <class Bucket>
struct fxPlace {
    unsigned int bucketIndex;
    Bucket* entry;       ///< Null if the key has none.
    Bucket** link;       ///< The pointer to the entry; null if the index gave it.
    bool isHashed;       ///< The index's hash is known.
    std::uint32_t hash;  ///< That one.
};

/// What fxDictionary and fxSet do alike with their chains. The index, where
/// there is one, is kept up.
struct fxChains : fxIndexing {
    // Looking up.

    /// hash % n, where n is mostly what it is by default.
    static unsigned int remainder(unsigned int hash, unsigned int n) {
        return n == fxDefaultBuckets ? hash % fxDefaultBuckets : hash % n;
    }

    template <class C>
    static fxPlace<Bucket<C>> lookUpIndexed(const C& c, const Index<C>& index, const void* key,
                                            unsigned int n) {
        const unsigned int keyHash = index.byText ? fxHashStr(textAt(key)) : c.hashKey(key);
        const unsigned int bucketIndex = remainder(keyHash, n);
        const std::uint32_t hash =
            hashIn(bucketIndex, index.byText ? hashOfText(index.seed, textAt(key))
                                             : index.seed.hash(std::uint32_t{keyHash}));
        const auto* slot = slotOfKey(c, index, hash, key);
        return {bucketIndex, slot ? slot->entry : nullptr, nullptr, true, hash};
    }

    /// The entry of a key, or null: lookUp for those who change nothing.
    template <class C>
    [[gnu::always_inline]] static Bucket<C>* find(const C& c, const void* key) {
        const unsigned int n = numBuckets(c);
        const Index<C>* index = n != 0 ? indexOf(c) : nullptr;
        if (index && index->byText && index->table == fxTableOf(&c) && !isToCome(textAt(key)))
            return findText<C>(*index, textAt(key), n);
        return lookUp(c, key).entry;
    }
    template <class C>
    static Bucket<C>* findText(const Index<C>& index, const fxStr& key, unsigned int n) {
        const std::uint32_t hash =
            hashIn(remainder(fxHashStr(key), n), hashOfText(index.seed, key));
        for (auto* s = index.begin(hash); Index<C>::isOf(s, hash); ++s) {
            if (textsAreAlike(key, textAt(fxBlockOf(s->entry))))
                return s->entry;
        }
        return nullptr;
    }

    /// Looks a key up by the container's own operations. Without buckets, as
    /// read from a stream, there is nothing to find.
    template <class C>
    [[gnu::always_inline]] static fxPlace<Bucket<C>> lookUp(const C& c, const void* key) {
        const unsigned int n = numBuckets(c);
        if (n == 0)
            return {0, nullptr, nullptr, false, 0};
        if (const Index<C>* index = indexOf(c)) {
            if (index->table != fxTableOf(&c))
                dropIndex(c);
            else if (!index->byText || !isToCome(textAt(key)))
                return lookUpIndexed(c, *index, key, n);
        }
        const unsigned int i = remainder(c.hashKey(key), n);
        unsigned int passed = 0;
        auto** heads = const_cast<Bucket<C>**>(&c.buckets[0]);
        Bucket<C>** link = heads + i;
        while (*link && c.compareKeys(key, fxBlockOf(*link)) != 0) {
            link = &(*link)->next;
            ++passed;
        }
        if (passed > longWalk && wordBeside(c) != 0 && (c.numItems / 2 > n || passed > longestWalk))
            makeIndex(c);
        return {i, *link, link, false, 0};
    }

    // Changing chains.

    /// Puts an entry with `block` in front of a chain. `place` is where its key
    /// was found absent, null if nobody looked. Null comes back, and nothing
    /// changes, where there is no memory for the entry.
    template <class C>
    static Bucket<C>* push(C& c, unsigned int bucketIndex, void* block,
                           const fxPlace<Bucket<C>>* place) {
        Bucket<C>*& head = c.buckets[bucketIndex];
        const bool links = isLinked(c);
        if (!links)
            dropIndex(c);
        Bucket<C>* b = links ? fxTryNew<fxLinkedEntry<Bucket<C>>>(block, head)
                             : fxTryNew<Bucket<C>>(Bucket<C>{block, head});
        if (!b)
            return nullptr;
        head = b;
        if (indexOf(c))
            pushed(c, b, bucketIndex, place);
        return b;
    }

    template <class C>
    static void pushed(C& c, Bucket<C>* b, unsigned int bucketIndex,
                       const fxPlace<Bucket<C>>* place) {
        Index<C>& index = *indexOf(c);
        if (index.byText && isToCome(textAt(fxBlockOf(b)))) {
            dropIndex(c);
            return;
        }
        if (b->next)
            fxLinkedEntry<Bucket<C>>::setBefore(b->next, b);
        bool isEntered = false;
        try {
            const std::uint32_t hash = place && place->isHashed
                                           ? place->hash
                                           : hashOf(c, index, fxBlockOf(b), bucketIndex);
            // The operations of a host may have added the key meanwhile.
            isEntered =
                place && index.byText ? index.insert(hash, b) : enter(c, index, b, hash, true);
        } catch (...) {
            isEntered = false;  // a later walk will be told
        }
        if (!isEntered)
            dropIndex(c);
    }

    /// Takes the entry at `place` out of its chain and returns it.
    template <class C>
    static Bucket<C>* unlink(C& c, const fxPlace<Bucket<C>>& place) {
        Bucket<C>* b = place.entry;
        Bucket<C>** link = place.link;
        if (indexOf(c)) {
            Bucket<C>* before = fxLinkedEntry<Bucket<C>>::before(b);
            link = before ? &before->next : &c.buckets[place.bucketIndex];
            leaveIndex(c, place);
        } else if (!link) {
            // The index that gave the place is gone.
            for (link = &c.buckets[place.bucketIndex]; *link != b; link = &(*link)->next) {
            }
        }
        *link = b->next;
        fxHeldEntry<Bucket<C>>::leave(b);
        return b;
    }

    /// The same for an entry that is known; the walk to it starts at `from`,
    /// which comes before it, or at its bucket.
    template <class C>
    static Bucket<C>* unlink(C& c, Bucket<C>* b, unsigned int bucketIndex,
                             Bucket<C>* from = nullptr) {
        Bucket<C>** link = from ? &from->next : nullptr;
        while (link && *link != b)
            link = &(*link)->next;
        return unlink(c, fxPlace<Bucket<C>>{bucketIndex, b, link, false, 0});
    }

    // Takes an entry, which is still in its chain, out of the index. The next
    // of its twins takes its place.
    template <class C>
    static void leaveIndex(C& c, const fxPlace<Bucket<C>>& place) {
        using Linked = fxLinkedEntry<Bucket<C>>;
        Index<C>& index = *indexOf(c);
        Bucket<C>* b = place.entry;
        if (b->next)
            Linked::setBefore(b->next, Linked::before(b));
        if (Linked::isTwin(b))
            return;
        try {
            const std::uint32_t hash =
                place.isHashed ? place.hash : hashOf(c, index, fxBlockOf(b), place.bucketIndex);
            auto* slot = index.slotOf(hash, b);
            if (!slot) {
                dropIndex(c);  // the key has been changed where it is
                return;
            }
            Bucket<C>* next = slot->hash == hash ? nullptr : b->next;
            while (next && !(Linked::isTwin(next) && areAlike(c, index, fxBlockOf(b), next)))
                next = next->next;
            if (next) {
                Linked::setTwin(next, false);
                slot->entry = next;
            } else {
                index.erase(slot);
            }
        } catch (...) {
            dropIndex(c);
        }
    }

    /// Frees an entry that has been unlinked, but not its block.
    template <class B>
    static void release(B* b) {
        ::operator delete(b);  // the size is the class's at the time of making
    }

    // An index pays for walks of more entries than this: where all chains are
    // long, and where one is in a container with buckets enough.
    static const unsigned int longWalk = 6;
    static const unsigned int longestWalk = 20;
};
