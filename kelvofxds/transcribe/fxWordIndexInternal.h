// fxWordIndexInternal.h - the private index beside an object table.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/core/fxMemoryInternal.h"

/// Finds records by a 32-bit word in O(1): an open-addressing hash table that
/// doubles when it is half full.
///
/// The object table itself keeps few buckets and long chains, because its
/// shape is part of the library's behaviour; look-ups go here instead. Record
/// has a field `key` and, since it is moved and cleared byte-wise, is trivial;
/// all bytes zero and `used` false is a vacant place.
template <class Record>
class fxWordIndex {
public:
    fxWordIndex() : records(nullptr), capacity(0), count(0) {}
    fxWordIndex(const fxWordIndex&) = delete;
    fxWordIndex& operator=(const fxWordIndex&) = delete;
    ~fxWordIndex() { std::free(records); }

    /// The record of `key`, or null; valid until the next add.
    Record* find(std::uint32_t key) const {
        if (count == 0)
            return nullptr;
        Record& record = records[placeOf(key)];
        return record.used ? &record : nullptr;
    }

    /// The record of `key`, made with zero bytes if there was none.
    Record& findOrAdd(std::uint32_t key) {
        if (count * 2 >= capacity)
            grow();
        Record& record = records[placeOf(key)];
        if (!record.used) {
            record.used = true;
            record.key = key;
            ++count;
        }
        return record;
    }

    void clear() {
        std::free(records);
        records = nullptr;
        capacity = count = 0;
    }

private:
    static const std::uint32_t smallest = 64;

    // Multiplying spreads what the low bits of aligned addresses lack.
    std::uint32_t startOf(std::uint32_t key) const {
        return static_cast<std::uint32_t>((std::uint64_t(key * 0x9E3779B1U) * capacity) >> 32);
    }

    std::uint32_t placeOf(std::uint32_t key) const {
        std::uint32_t place = startOf(key);
        while (records[place].used && records[place].key != key)
            place = place + 1 < capacity ? place + 1 : 0;
        return place;
    }

    void grow() {
        Record* old = records;
        const std::uint32_t oldCapacity = capacity;
        capacity = capacity != 0 ? capacity * 2 : smallest;
        const std::size_t bytes = std::size_t(capacity) * sizeof(Record);
        records = static_cast<Record*>(fxAllocate(bytes));
        std::memset(static_cast<void*>(records), 0, bytes);
        for (std::uint32_t i = 0; i < oldCapacity; ++i) {
            if (old[i].used)
                records[placeOf(old[i].key)] = old[i];
        }
        std::free(old);
    }

    Record* records;         // owned
    std::uint32_t capacity;  // places, a power of two
    std::uint32_t count;     // places used
};
