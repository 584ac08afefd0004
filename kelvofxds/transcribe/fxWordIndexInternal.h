// fxWordIndexInternal.h - the private index beside an object table.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <new>

/// Makes records and finds them by a 32-bit word in O(1), and keeps them where
/// they are until it is cleared.
///
/// A hash table with open addressing, at most three quarters full, points to the records,
/// which lie in chunks in the order in which they were added. Record has a
/// field `key` and is an aggregate without a destructor. Words that differ by
/// 1 << Shift are expected to be looked up one after the other.
template <class Record, unsigned int Shift = 0>
class fxWordIndex {
public:
    fxWordIndex()
        : places(nullptr),
          capacity(0),
          count(0),
          vacant(nullptr),
          chunkEnd(nullptr),
          chunks(nullptr) {}
    fxWordIndex(const fxWordIndex&) = delete;
    fxWordIndex& operator=(const fxWordIndex&) = delete;
    ~fxWordIndex() { clear(); }

    /// The record of `key`, or null.
    Record* find(std::uint32_t key) const {
        return count != 0 ? places[placeOf(key)].record : nullptr;
    }

    /// The record of `key`, made with zero fields if there was none; null when
    /// there is no memory for it.
    Record* findOrAdd(std::uint32_t key) {
        if (count >= capacity - capacity / 4 && !grow())
            return find(key);
        Place& place = places[placeOf(key)];
        if (!place.record) {
            place.record = newRecord();
            if (!place.record)
                return nullptr;
            place.record->key = place.key = key;
            ++count;
        }
        return place.record;
    }

    /// Frees all records.
    void clear() {
        std::free(places);
        places = nullptr;
        capacity = count = 0;
        vacant = chunkEnd = nullptr;
        while (Chunk* chunk = chunks) {
            chunks = chunk->next;
            std::free(chunk);
        }
    }

private:
    static const std::uint32_t smallest = 64;
    static const std::uint32_t largestChunk = 4096;  // records

    // The key stands here too: most look-ups need not go to the record.
    struct Place {
        std::uint32_t key;
        Record* record;  // null in a free place
    };

    struct Chunk {  // from malloc; the records lie behind it
        Chunk* next;
    };
    static_assert(sizeof(Chunk) % alignof(Record) == 0, "records are aligned");

    // A key's first place is beside those of its neighbours, so that keys in
    // order are looked up without jumping about in memory. Keys that collide
    // go on to places which all their bits and our address decide, in the end
    // through all places.
    std::uint32_t placeOf(std::uint32_t key) const {
        const std::uint32_t mask = capacity - 1;
        std::uint32_t place = key >> Shift & mask;
        if (isFor(place, key))
            return place;
        std::uint32_t rest =
            key ^ static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(this));
        rest = (rest ^ rest >> 15) * 0x2C1B3C6DU;
        rest = (rest ^ rest >> 12) * 0x297A2D39U;
        rest ^= rest >> 15;
        do {
            place = (place * 5 + rest + 1) & mask;
            rest >>= 5;
        } while (!isFor(place, key));
        return place;
    }

    bool isFor(std::uint32_t place, std::uint32_t key) const {
        return !places[place].record || places[place].key == key;
    }

    bool grow() {
        const std::uint32_t oldCapacity = capacity;
        const std::uint32_t newCapacity = capacity != 0 ? capacity * 2 : smallest;
        Place* const grown = static_cast<Place*>(std::calloc(newCapacity, sizeof(Place)));
        if (!grown)
            return false;
        Place* const old = places;
        places = grown;
        capacity = newCapacity;
        for (std::uint32_t i = 0; i < oldCapacity; ++i) {
            if (old[i].record)
                places[placeOf(old[i].key)] = old[i];
        }
        std::free(old);
        return true;
    }

    Record* newRecord() {
        if (vacant == chunkEnd) {
            const std::uint32_t n = count < smallest       ? smallest
                                    : count < largestChunk ? count
                                                           : largestChunk;
            Chunk* chunk = static_cast<Chunk*>(std::malloc(sizeof(Chunk) + n * sizeof(Record)));
            if (!chunk)
                return nullptr;
            chunk->next = chunks;
            chunks = chunk;
            vacant = reinterpret_cast<Record*>(chunk + 1);
            chunkEnd = vacant + n;
        }
        return new (vacant++) Record();
    }

    Place* places;           // owned
    std::uint32_t capacity;  // places, a power of two
    std::uint32_t count;     // places used, and records
    Record* vacant;          // the next record of the newest chunk
    Record* chunkEnd;        // one past its last
    Chunk* chunks;           // owned, newest first
};
