// fxChainIndexInternal.h - the private index beside the chains of a dictionary or set.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/core/fxIndexSeedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"

/// A block of at least `bytes`, which becomes its size; null if there is no
/// memory. A few are kept for later: a large block that comes and goes makes
/// glibc's malloc put its small free blocks together, which those who fill and
/// empty containers would pay for.
__attribute__((visibility("hidden"))) void* fxAllocateSlots(unsigned int& bytes);
/// Frees such a block, or keeps it.
__attribute__((visibility("hidden"))) void fxFreeSlots(void* block, unsigned int bytes);

/// An entry that knows the one before it in its chain, and whether it is a twin:
/// an entry that has no slot, because one in front of it has an equal key. Those
/// of a class that may have an index are made so; what they know is true while
/// there is one.
template <class Bucket>
class fxLinkedEntry : public Bucket {
public:
    fxLinkedEntry(void* block, Bucket* following) : Bucket{block, following}, link(0) {}

    static Bucket* before(const Bucket* b) {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): its lowest bit is used.
        return reinterpret_cast<Bucket*>(of(b).link & ~twin);
    }
    static void setBefore(Bucket* b, Bucket* other) {
        of(b).link = reinterpret_cast<std::uintptr_t>(other) | (of(b).link & twin);
    }
    static bool isTwin(const Bucket* b) { return (of(b).link & twin) != 0; }
    static void setTwin(Bucket* b, bool isOne) { of(b).link = (of(b).link & ~twin) | isOne; }

private:
    static const std::uintptr_t twin = 1;

    static fxLinkedEntry& of(Bucket* b) { return *static_cast<fxLinkedEntry*>(b); }
    static const fxLinkedEntry& of(const Bucket* b) {
        return *static_cast<const fxLinkedEntry*>(b);
    }

    std::uintptr_t link;
};

/// Entries of chains by a private hash of their keys, in one block of slots.
///
/// The hashes ascend from slot to slot, and an entry is never far behind the
/// slot that its hash points to, so that both a hit and a miss are a short run
/// over one or two cache lines. The lowest bit is no part of a hash: it says
/// that there are twins, entries of the same bucket behind this one whose keys
/// compare equal, which only streams bring. Those have no slots.
template <class Bucket>
class fxChainIndex {
public:
    struct Slot {
        std::uint32_t hash;
        Bucket* entry;  // null in a vacant slot, whose hash is the greatest
    };
    static const std::uint32_t twins = 1;

    /// For a container with this virtual table.
    fxChainIndex(const void* tableOfContainer, bool isByText)
        : seed(this),
          table(tableOfContainer),
          byText(isByText),
          slots(nullptr),
          bytesOfSlots(0),
          capacity(0),
          tail(0),
          count(0) {}
    fxChainIndex(const fxChainIndex&) = delete;
    fxChainIndex& operator=(const fxChainIndex&) = delete;
    ~fxChainIndex() { release(slots, bytesOfSlots); }

    /// Makes room for `n` entries. Returns false, and nothing changes, where
    /// there is no memory.
    bool reserve(unsigned int n) {
        unsigned int wanted = 0;
        return !__builtin_add_overflow(n, n / 4 + n / 20 + leastCapacity, &wanted) &&
               resize(wanted);
    }

    /// The first slot that may be of `hash`.
    Slot* begin(std::uint32_t hash) const {
        Slot* s = slots + home(hash);
        while (s->hash < hash)
            ++s;
        return s;
    }
    /// Whether the run of `hash` goes on at `s`.
    static bool isOf(const Slot* s, std::uint32_t hash) {
        return (s->hash ^ hash) <= twins && s->entry;
    }

    /// The slot of `b`; null if it has none with that hash.
    Slot* slotOf(std::uint32_t hash, const Bucket* b) const {
        for (Slot* s = begin(hash); isOf(s, hash); ++s) {
            if (s->entry == b)
                return s;
        }
        return nullptr;
    }

    /// Gives `b` a slot. Returns false, and nothing changes, where there is no
    /// memory.
    bool insert(std::uint32_t hash, Bucket* b) {
        if (count >= mostOccupied() && !reserve(count + 1))
            return false;
        Slot* s = begin(hash);
        while (isOf(s, hash))
            ++s;
        Slot* vacant = s;
        while (vacant->entry)
            ++vacant;
        if (vacant == slots + capacity + tail)
            return lengthenTail() && insert(hash, b);
        for (; vacant != s; --vacant)
            *vacant = vacant[-1];
        *s = {hash, b};
        ++count;
        return true;
    }

    /// Makes a slot vacant.
    void erase(Slot* s) {
        for (; s[1].entry && slots + home(s[1].hash) <= s; ++s)
            *s = s[1];
        *s = vacantSlot();
        if (--count < capacity / 8 && capacity > 8 * leastCapacity)
            reserve(count);
    }

    const fxIndexSeed seed;
    const void* const table;
    const bool byText;  // not by the container's own operations

private:
    static const unsigned int leastCapacity = 8;  // slots
    static const unsigned int leastTail = 4;      // slots

    static Slot vacantSlot() { return {0xFFFFFFFF, nullptr}; }
    unsigned int home(std::uint32_t hash) const { return homeAmong(capacity, hash); }
    static unsigned int homeAmong(unsigned int n, std::uint32_t hash) {
        return static_cast<unsigned int>(std::uint64_t(hash & ~twins) * n >> 32);
    }

    // Entries of words are small, and so is what may stand beside them.
    unsigned int mostOccupied() const { return capacity - capacity / (byText ? 5 : 8); }
    void* allocate(unsigned int& bytes) const {
        return byText ? fxAllocateSlots(bytes) : std::malloc(bytes);
    }
    void release(void* block, unsigned int bytes) const {
        byText ? fxFreeSlots(block, bytes) : std::free(block);
    }

    bool lengthenTail() {
        const unsigned int old = tail;
        tail *= 2;
        if (resize(capacity))
            return true;
        tail = old;
        return false;
    }

    // The slots after the last home are for those that do not fit theirs; the
    // very last one stays vacant.
    bool resize(unsigned int newCapacity) {
        unsigned int newTail = tail > leastTail ? tail : leastTail;
        for (;; newTail *= 2) {
            unsigned int n = 0;
            unsigned int bytes = 0;
            if (__builtin_add_overflow(newCapacity, newTail + 1, &n) ||
                __builtin_mul_overflow(n, static_cast<unsigned int>(sizeof(Slot)), &bytes))
                return false;
            auto* made = static_cast<Slot*>(allocate(bytes));
            if (!made)
                return false;
            // What the block has to spare is used.
            const unsigned int wider = bytes / unsigned(sizeof(Slot)) - newTail - 1;
            if (moveTo(made, wider, made + wider + newTail)) {
                release(slots, bytesOfSlots);
                slots = made;
                bytesOfSlots = bytes;
                capacity = wider;
                tail = newTail;
                return true;
            }
            release(made, bytes);
        }
    }

    // Copies the occupied slots to `to`. Returns false where they do not fit.
    bool moveTo(Slot* to, unsigned int newCapacity, const Slot* last) const {
        Slot* at = to;
        const Slot* from = slots;
        for (unsigned int left = count; left != 0; ++from) {
            if (!from->entry)
                continue;
            --left;
            const Slot* start = to + homeAmong(newCapacity, from->hash);
            while (at < start)
                *at++ = vacantSlot();
            if (at == last)
                return false;
            *at++ = *from;
        }
        while (at <= last)
            *at++ = vacantSlot();
        return true;
    }

    Slot* slots;  // capacity + tail + 1 of them
    unsigned int bytesOfSlots;
    unsigned int capacity;  // how many a hash can point to
    unsigned int tail;      // how many follow those
    unsigned int count;     // occupied ones
};

// Where a container keeps its index. An object whose layout is fixed has two
// bytes to spare: a number, and what the class's constructors said.

/// Equal keys have equal hashKey, by the word of a class.
constexpr unsigned short fxKeysArePromised = 0x8000;
/// A class of the library whose keys are fxStr, or one derived from it.
constexpr unsigned short fxKeysAreStrings = 0x4000;
/// Keys and values are fxStr, and what a stream claims of their sizes is weighed.
constexpr unsigned short fxSizesAreOfStrings = 0x2000;
constexpr unsigned short fxIndexNumber = 0x1FFF;

extern __attribute__((visibility("hidden"))) void* fxIndexOf[fxIndexNumber + 1U];

/// A number for an index to come; 0, which is none, when all are in use.
__attribute__((visibility("hidden"))) unsigned short fxTakeIndexNumber();
/// Gives a number back.
__attribute__((visibility("hidden"))) void fxReturnIndexNumber(unsigned short number);

/// Remembers that the class with this virtual table has promised. Without
/// memory the promise goes unheard.
__attribute__((visibility("hidden"))) void fxNotePromise(const void* table);
__attribute__((visibility("hidden"))) bool fxHasPromised(const void* table);
