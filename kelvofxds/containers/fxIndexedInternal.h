// fxIndexedInternal.h - which dictionaries and sets have an index, and what it is made of.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "kelvofxds/containers/fxChainIndexInternal.h"
#include "kelvofxds/containers/fxChainsInternal.h"
#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/containers/fxSet.h"
#include "kelvofxds/core/fxTableOfInternal.h"
#include "kelvofxds/str/fxStrHashInternal.h"

// The block of an entry starts with its key.
inline void* fxBlockOf(const fxDictBucket* b) { return b->kvmem; }
inline void* fxBlockOf(const fxSetBucket* b) { return b->key; }

// The virtual tables of the classes that are indexed by their keys' texts when
// they are nothing more. Their addresses are known before any initialiser runs.
extern "C" __attribute__((visibility("default")))
const char fxStrStrDictionaryTable[] __asm__("_ZTV18fxStrStrDictionary");
extern "C" __attribute__((visibility("default")))
const char fxVoidPtrDictTable[] __asm__("_ZTV13fxVoidPtrDict");
extern "C" __attribute__((visibility("default")))
const char fxStrSetTable[] __asm__("_ZTV8fxStrSet");

/// The index that stands beside the chains of a dictionary or set while they are
/// long.
///
/// It answers what a walk would: the first entry of the key's bucket, in chain
/// order, whose key compares equal. It is only a help: whoever cannot keep it up
/// drops it. A class gets one only when nobody but the library changes its
/// chains and equal keys are known to hash equally.
struct fxIndexing {
    template <class C>
    using Bucket = std::remove_pointer_t<std::remove_reference_t<
        decltype(std::declval<decltype(std::declval<C&>().buckets)&>()[0])>>;
    template <class C>
    using Index = fxChainIndex<Bucket<C>>;

    template <class C>
    static unsigned int numBuckets(const C& c) {
        return c.buckets.getLen() / static_cast<unsigned int>(sizeof(void*));
    }

    // Which classes.

    /// What is kept beside the buckets: fxIndexNumber and the bits above it.
    template <class C>
    static unsigned short& wordBeside(const C& c) {
        return c.buckets.beside.word;
    }

    static bool isByText(const fxDictionary& d) {
        const char* table = static_cast<const char*>(fxTableOf(&d)) - 2 * sizeof(void*);
        return (wordBeside(d) & fxKeysAreStrings) != 0 &&
               (table == fxStrStrDictionaryTable || table == fxVoidPtrDictTable);
    }
    static bool isByText(const fxSet& s) {
        const char* table = static_cast<const char*>(fxTableOf(&s)) - 2 * sizeof(void*);
        return (wordBeside(s) & fxKeysAreStrings) != 0 && table == fxStrSetTable;
    }
    /// Whether entries are made with a link back, once and for all: a class that
    /// is found without a promise of its own loses that of its base.
    template <class C>
    static bool isLinked(C& c) {
        unsigned short& beside = wordBeside(c);
        if ((beside & (fxKeysAreStrings | fxKeysArePromised)) == 0)
            return false;
        if (isByText(c))
            return true;
        beside &= static_cast<unsigned short>(~fxKeysAreStrings);
        if ((beside & fxKeysArePromised) != 0 && fxHasPromised(fxTableOf(&c)))
            return true;
        beside &= static_cast<unsigned short>(~fxKeysArePromised);
        return false;
    }
    template <class C>
    static void promise(C& c) {
        if (c.numItems != 0 || indexOf(c))
            return;
        fxNotePromise(fxTableOf(&c));
        wordBeside(c) |= fxKeysArePromised;
    }
    /// Notes what the constructors of the library's string-keyed classes say.
    template <class C>
    static void note(C& c, unsigned int what) {
        wordBeside(c) |= static_cast<unsigned short>(what);
    }
    template <class C>
    static bool knowsItsSizes(const C& c) {
        return (wordBeside(c) & fxSizesAreOfStrings) != 0 && isByText(c);
    }
    template <class C>
    static void copyKnowledge(C& c, const C& other) {
        wordBeside(c) = wordBeside(other) & static_cast<unsigned short>(~fxIndexNumber);
    }

    // The index.

    template <class C>
    static Index<C>* indexOf(const C& c) {
        const unsigned int number = wordBeside(c) & fxIndexNumber;
        return number != 0 ? static_cast<Index<C>*>(fxIndexOf[number]) : nullptr;
    }

    template <class C>
    static void dropIndex(const C& c) {
        Index<C>* index = indexOf(c);
        if (!index)
            return;
        fxReturnIndexNumber(wordBeside(c) & fxIndexNumber);
        wordBeside(c) &= static_cast<unsigned short>(~fxIndexNumber);
        delete index;
    }

    // The hash that the index keeps. Equal texts in different buckets are
    // different keys and never have the same.
    static std::uint32_t hashIn(unsigned int bucketIndex, std::uint32_t ofKey) {
        return (ofKey + bucketIndex * 0x9E3779B1U) << 1;
    }
    // Of what compareKeys sees: the text up to its first NUL.
    [[gnu::always_inline]] static std::uint32_t hashOfText(const fxIndexSeed& seed,
                                                           const fxStr& key) {
        std::uint32_t zero = 0;
        const std::uint32_t hash = seed.hash(key.c_str(), key.length(), zero);
        if (__builtin_expect(zero == 0, 1))
            return hash;
        return seed.hash(key.c_str(), static_cast<unsigned int>(std::strlen(key.c_str())));
    }
    static const fxStr& textAt(const void* key) { return *static_cast<const fxStr*>(key); }
    /// Whether a reader has yet to bring the text, whose length is known.
    static bool isToCome(const fxStr& key) {
        return key.c_str() == &fxStr::emptyString && key.length() != 0;
    }

    template <class C>
    static std::uint32_t hashOf(const C& c, const Index<C>& index, const void* key,
                                unsigned int bucketIndex) {
        return hashIn(bucketIndex, index.byText ? hashOfText(index.seed, textAt(key))
                                                : index.seed.hash(std::uint32_t(c.hashKey(key))));
    }

    // Whether the keys compare equal, given equal hashes.
    static bool textsAreAlike(const fxStr& a, const fxStr& b) {
        if (__builtin_expect(a.length() == b.length() && areAlike(a.c_str(), b.c_str(), a.length()),
                             1))
            return true;
        return std::strcmp(a.c_str(), b.c_str()) == 0;
    }
    // memcmp without the call, for texts that are mostly short and equal.
    static bool areAlike(const char* a, const char* b, unsigned int n) {
        const unsigned int word = 4;
        if (n < word) {
            for (; n != 0 && *a == *b; --n, ++a, ++b) {
            }
            return n == 0;
        }
        unsigned int at = 0;
        while (at < n - word && std::memcmp(a + at, b + at, word) == 0)
            at += word;
        return at >= n - word && std::memcmp(a + n - word, b + n - word, word) == 0;
    }
    template <class C>
    static bool areAlike(const C& c, const Index<C>& index, const void* key, const Bucket<C>* b) {
        return index.byText ? textsAreAlike(textAt(key), textAt(fxBlockOf(b)))
                            : c.compareKeys(key, fxBlockOf(b)) == 0;
    }

    template <class C>
    static typename Index<C>::Slot* slotOfKey(const C& c, const Index<C>& index, std::uint32_t hash,
                                              const void* key) {
        for (auto* s = index.begin(hash); Index<C>::isOf(s, hash); ++s) {
            if (areAlike(c, index, key, s->entry))
                return s;
        }
        return nullptr;
    }

    // Enters an entry that is behind all that are equal and have been entered,
    // or in front of them.
    template <class C>
    static bool enter(const C& c, Index<C>& index, Bucket<C>* b, std::uint32_t hash,
                      bool isInFront) {
        auto* slot = slotOfKey(c, index, hash, fxBlockOf(b));
        if (!slot)
            return index.insert(hash, b);
        slot->hash |= Index<C>::twins;
        fxLinkedEntry<Bucket<C>>::setTwin(isInFront ? slot->entry : b, true);
        if (isInFront)
            slot->entry = b;
        return true;
    }

    template <class C>
    static bool enterAll(const C& c, Index<C>& index) {
        const unsigned int n = numBuckets(c);
        unsigned int entries = 0;
        for (unsigned int i = 0; i < n; ++i) {
            // What is being read stands in front.
            if (c.buckets[i] && index.byText && isToCome(textAt(fxBlockOf(c.buckets[i]))))
                return false;
            for (const Bucket<C>* b = c.buckets[i]; b; b = b->next)
                ++entries;
        }
        if (!index.reserve(entries))
            return false;
        for (unsigned int i = 0; i < n; ++i) {
            Bucket<C>* before = nullptr;
            for (Bucket<C>* b = c.buckets[i]; b; before = b, b = b->next) {
                fxLinkedEntry<Bucket<C>>::setBefore(b, before);
                fxLinkedEntry<Bucket<C>>::setTwin(b, false);
                if (index.byText && isToCome(textAt(fxBlockOf(b))))
                    return false;
                if (!enter(c, index, b, hashOf(c, index, fxBlockOf(b), i), false))
                    return false;
            }
        }
        return true;
    }

    /// Makes an index, if the class may have one and there is memory.
    template <class C>
    [[gnu::cold, gnu::noinline]] static void makeIndex(const C& c) {
        if (indexOf(c) || !isLinked(const_cast<C&>(c)))
            return;
        const unsigned short number = fxTakeIndexNumber();
        if (number == 0)
            return;
        auto* index = fxTryNew<Index<C>>(fxTableOf(&c), isByText(c));
        bool isComplete = false;
        try {
            isComplete = index && enterAll(c, *index);
        } catch (...) {
            isComplete = false;  // what the host's operations say, a walk will hear
        }
        if (isComplete) {
            fxIndexOf[number] = index;
            wordBeside(c) |= number;
            return;
        }
        fxReturnIndexNumber(number);
        delete index;
    }
};
