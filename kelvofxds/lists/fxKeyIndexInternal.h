// fxKeyIndexInternal.h - a private index beside the structures that HashTable and NameSpace show.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "kelvofxds/core/fxIndexSeedInternal.h"

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
