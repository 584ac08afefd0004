// fxIdentityTableInternal.h - what a graph writer has met.
#pragma once

#include <cstdint>
#include <cstdlib>

/// Finds numbers by address and kind in O(1): a hash table with open addressing,
/// at most two thirds full. Forgetting is O(1), too.
class fxIdentityTable {
public:
    struct Entry {
        std::uint32_t address;
        std::uint32_t kind;    // a word that tells types and kinds of blocks apart
        std::uint32_t number;  // 0 if it is new
        std::uint32_t era;     // in which it was met; any other is forgotten
    };

    fxIdentityTable() : places(nullptr), capacity(0), count(0), era(1) {}
    fxIdentityTable(const fxIdentityTable&) = delete;
    fxIdentityTable& operator=(const fxIdentityTable&) = delete;
    ~fxIdentityTable() { std::free(places); }

    /// The entry of `address` and `kind`, made with number 0 if there was none;
    /// valid until the next one is made. Null when there is no memory for it.
    Entry* findOrAdd(std::uint32_t address, std::uint32_t kind) {
        if (count >= capacity / 3 * 2 && !grow())
            return nullptr;
        Entry& entry = placeOf(address, kind);
        if (entry.era != era) {
            entry = {address, kind, 0, era};
            ++count;
        }
        return &entry;
    }

    /// Forgets all entries.
    void clear() {
        count = 0;
        if (++era != 0)
            return;
        // GCOVR_EXCL_START: the eras of four billion roots take days.
        std::free(places);
        places = nullptr;
        capacity = 0;
        era = 1;
        // GCOVR_EXCL_STOP
    }

private:
    static const std::uint32_t smallest = 64;

    // Objects that lie side by side have places side by side. What collides goes
    // on to places that all its bits decide, in the end through all of them.
    Entry& placeOf(std::uint32_t address, std::uint32_t kind) const {
        const std::uint32_t mask = capacity - 1;
        const std::uint32_t offset = kind * 0x9E3779B1U;
        std::uint32_t place = ((address >> 4) + (offset >> 12)) & mask;
        if (isFor(places[place], address, kind))
            return places[place];
        std::uint32_t rest = address ^ offset;
        rest = (rest ^ rest >> 15) * 0x2C1B3C6DU;
        rest = (rest ^ rest >> 12) * 0x297A2D39U;
        rest ^= rest >> 15;
        do {
            place = (place * 5 + rest + 1) & mask;
            rest >>= 5;
        } while (!isFor(places[place], address, kind));
        return places[place];
    }

    bool isFor(const Entry& entry, std::uint32_t address, std::uint32_t kind) const {
        return entry.era != era || (entry.address == address && entry.kind == kind);
    }

    bool grow() {
        const std::uint32_t oldCapacity = capacity;
        const std::uint32_t newCapacity = capacity != 0 ? capacity * 2 : smallest;
        Entry* const old = places;
        Entry* const grown = static_cast<Entry*>(std::calloc(newCapacity, sizeof(Entry)));
        if (!grown)
            return false;
        places = grown;
        capacity = newCapacity;
        for (std::uint32_t i = 0; i < oldCapacity; ++i) {
            if (old[i].era == era)
                placeOf(old[i].address, old[i].kind) = old[i];
        }
        std::free(old);
        return true;
    }

    Entry* places;           // owned
    std::uint32_t capacity;  // places, a power of two
    std::uint32_t count;     // entries of this era
    std::uint32_t era;       // never 0
};
