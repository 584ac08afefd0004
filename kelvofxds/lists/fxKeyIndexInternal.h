// fxKeyIndexInternal.h - a private index beside the structures that HashTable and NameSpace show.
#pragma once

#include <sys/auxv.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

/// Two numbers that nobody outside knows: what of the process's random bytes and
/// an address can be had, so that keys cannot be chosen to share a slot.
class fxIndexSeed {
public:
    explicit fxIndexSeed(const void* owner) : sum(0), factor(0) {
        std::uint32_t bytes[2] = {0x3C6EF372, 0x9E3779B1};
        if (const auto random = ::getauxval(AT_RANDOM))
            // NOLINTNEXTLINE(performance-no-int-to-ptr): the system gives it as a number.
            std::memcpy(bytes, reinterpret_cast<const void*>(random), sizeof bytes);
        const auto address = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(owner));
        sum = bytes[0] ^ address;
        factor = (bytes[1] + address * 0x2C1B3C6DU) | 0x40000001;
    }

    /// Of a number.
    std::uint32_t hash(std::uint32_t key) const { return fold(key ^ sum, factor); }

    /// Of `length` bytes.
    std::uint32_t hash(const char* text, unsigned int length) const {
        std::uint32_t low = sum ^ length, high = factor;
        for (; length > 8; text += 8, length -= 8)
            mix(low, high, wordAt(text), wordAt(text + 4));
        std::uint32_t first = 0, second = 0;
        if (length >= 4) {
            first = wordAt(text);
            second = wordAt(text + length - 4);
        } else if (length > 0) {
            first = static_cast<unsigned char>(text[0]) |
                    static_cast<std::uint32_t>(static_cast<unsigned char>(text[length / 2])) << 8;
            second = static_cast<unsigned char>(text[length - 1]);
        }
        mix(low, high, first, second);
        return fold(low ^ sum, high ^ factor);
    }

private:
    static std::uint32_t wordAt(const char* text) {
        std::uint32_t word;
        std::memcpy(&word, text, sizeof word);
        return word;
    }

    static void mix(std::uint32_t& low, std::uint32_t& high, std::uint32_t a, std::uint32_t b) {
        const std::uint64_t product = std::uint64_t{low ^ a} * (high ^ b);
        low = static_cast<std::uint32_t>(product);
        high = static_cast<std::uint32_t>(product >> 32);
    }

    static std::uint32_t fold(std::uint32_t a, std::uint32_t b) {
        const std::uint64_t product = std::uint64_t{a} * b;
        return static_cast<std::uint32_t>(product) ^ static_cast<std::uint32_t>(product >> 32);
    }

    std::uint32_t sum;
    std::uint32_t factor;  // odd
};

/// Slots of chains through records of others, which have a field `link` and
/// know their place: Record::slotIn(index). It owns its slots alone.
///
/// Records that are alike stand in a chain as they were added, newest first.
template <class Record>
class fxKeyIndex {
public:
    /// An index with room for `n` records; null where there is no memory for it.
    /// The lowest `alike` bits of all keys are the same.
    static fxKeyIndex* make(unsigned int n, unsigned int alike = 0) {
        unsigned int log2 = 6;
        while (log2 < most && n > roomIn(log2))
            ++log2;
        void* block = std::calloc(1, sizeof(fxKeyIndex) + (sizeof(Record*) << log2));
        return block ? new (block) fxKeyIndex(log2, alike) : nullptr;
    }
    fxKeyIndex(const fxKeyIndex&) = delete;
    fxKeyIndex& operator=(const fxKeyIndex&) = delete;

    bool isFull(unsigned int n) const { return n > room; }

    const fxIndexSeed& seed() const { return itsSeed; }

    /// The slot of a number. Neighbours have neighbouring slots, so that keys in
    /// order go through memory in order; what they differ in beyond that is hashed.
    std::uint32_t slotOf(std::uint32_t key) const {
        const std::uint32_t turned = key >> turn | key << ((32 - turn) & 31);
        return turned ^ itsSeed.hash(turned >> itsLog2);
    }

    /// The first record of a chain.
    Record*& at(std::uint32_t slot) { return slots()[slot & mask]; }

    void add(Record* record) {
        Record*& first = at(record->slotIn(*this));
        record->link = first;
        first = record;
    }

    /// Takes out a record that is there.
    void remove(const Record* record) {
        Record** link = &at(record->slotIn(*this));
        while (*link != record)
            link = &(*link)->link;
        *link = record->link;
    }

    /// Calls `visit` with all records, which may go to another index.
    template <class Visit>
    void forEach(Visit visit) {
        const std::uint32_t ahead = 8;  // to be in the cache in time
        for (std::uint32_t i = 0; i <= mask; ++i) {
            __builtin_prefetch(slots()[(i + ahead) & mask]);
            for (Record* record = slots()[i]; record;) {
                Record* next = record->link;
                visit(record);
                record = next;
            }
        }
    }

private:
    static const unsigned int most = 28;  // bits of the number of slots

    fxKeyIndex(unsigned int log2, unsigned int alike)
        : itsSeed(this), itsLog2(log2), turn(alike), mask((1U << log2) - 1), room(roomIn(log2)) {}

    // Three quarters.
    static unsigned int roomIn(unsigned int log2) {
        return log2 < most ? 3U << log2 >> 2 : 0xFFFFFFFF;
    }

    Record** slots() { return reinterpret_cast<Record**>(this + 1); }

    fxIndexSeed itsSeed;
    unsigned int itsLog2;  // of the number of slots
    unsigned int turn;     // bits, 0 to 31
    std::uint32_t mask;    // slots less 1
    unsigned int room;     // records
};
