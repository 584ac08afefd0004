// HashTable_bench.cpp - the table of integers, beside std::unordered_map.

#include <cstdint>
#include <random>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "bench/support/beside.h"
#include "kelvofxds/lists/HashTable.h"

namespace {

using Map = std::unordered_map<unsigned int, void*>;

void* valueOf(unsigned int key) { return reinterpret_cast<void*>(std::uintptr_t{key | 1}); }

std::int64_t number(const void* value) {
    return static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(value));
}

// The kinds of keys, as `n` that are used and `n` that are not, all different.
struct Sequential {
    static unsigned int key(unsigned int i) { return i; }
};
// Odd multipliers make a permutation of all numbers.
struct Scattered {
    static unsigned int key(unsigned int i) { return i * 2654435761U; }
};
// Addresses of objects of 16 bytes.
struct Addresses {
    static unsigned int key(unsigned int i) { return 0x08100000 + i * 16; }
};

// Keys that the table hashes alike: their lowest 20 bits are the same for long.
struct InOneBucket {
    static unsigned int key(unsigned int i) { return (i << 20) | (i >> 12); }
};

template <class Kind>
struct Keys {
    explicit Keys(unsigned int n) {
        for (unsigned int i = 0; i < n; ++i) {
            keys.push_back(Kind::key(i));
            absent.push_back(Kind::key(n + i));
        }
        for (unsigned int key : keys) {
            ours.addElement(key)->value = valueOf(key);
            peer.emplace(key, valueOf(key));
        }
        // Looked up in another order than they were added in.
        std::mt19937 engine(1);
        shuffled = keys;
        for (unsigned int i = n; i > 1; --i)
            std::swap(shuffled[i - 1], shuffled[static_cast<unsigned int>(engine()) % i]);
    }

    std::vector<unsigned int> keys, absent, shuffled;
    HashTable ours;
    Map peer;
};

std::int64_t found(HashTable& table, const std::vector<unsigned int>& keys) {
    std::int64_t sum = 0;
    for (unsigned int key : keys)
        sum += number(table.lookup(key));
    return sum;
}

std::int64_t found(const Map& map, const std::vector<unsigned int>& keys) {
    std::int64_t sum = 0;
    for (unsigned int key : keys) {
        const auto entry = map.find(key);
        if (entry != map.end())
            sum += number(entry->second);
    }
    return sum;
}

/// How many entries a walk over all of them meets.
std::int64_t entries;
std::int64_t entriesOf(HashTable& table) {
    entries = 0;
    table.mapcar([](HashEntry*) { ++entries; });
    return entries;
}

template <class In>
void changeCases(const std::string& kind, Sizes sizes) {
    beside<In>(
        "HashTable/add, " + kind, Rate::items, sizes,
        [](const In& in) {
            HashTable table;
            for (unsigned int key : in.keys)
                table.add(key, valueOf(key));
            return std::int64_t{table.getCount()};
        },
        Side{"std::unordered_map", [](const In& in) {
                 Map map;
                 for (unsigned int key : in.keys)
                     map.emplace(key, valueOf(key));
                 return static_cast<std::int64_t>(map.size());
             }});
    beside<In>(
        "HashTable/add and remove, " + kind, Rate::items, sizes,
        [](const In& in) {
            HashTable table;
            for (unsigned int key : in.keys)
                table.add(key, valueOf(key));
            for (unsigned int key : in.shuffled)
                table.remove(key);
            return entriesOf(table);
        },
        Side{"std::unordered_map", [](const In& in) {
                 Map map;
                 for (unsigned int key : in.keys)
                     map.emplace(key, valueOf(key));
                 for (unsigned int key : in.shuffled)
                     map.erase(key);
                 return static_cast<std::int64_t>(map.size());
             }});
}

template <class In>
void lookUpCases(const std::string& kind, Sizes sizes) {
    beside<In>(
        "HashTable/lookup, " + kind, Rate::items, sizes,
        [](In& in) { return found(in.ours, in.shuffled); },
        Side{"std::unordered_map", [](In& in) { return found(in.peer, in.shuffled); }});
    beside<In>(
        "HashTable/miss, " + kind, Rate::items, sizes,
        [](In& in) { return found(in.ours, in.absent); },
        Side{"std::unordered_map", [](In& in) { return found(in.peer, in.absent); }});
}

// Adding without a look for duplicates stays constant time at any size.
template <class In>
void addElementCase(const std::string& kind, Sizes sizes) {
    beside<In>(
        "HashTable/addElement, " + kind, Rate::items, sizes,
        [](const In& in) {
            HashTable table;
            for (unsigned int key : in.keys)
                table.addElement(key)->value = valueOf(key);
            return std::int64_t{table.getCount()};
        },
        Side{"std::unordered_map", [](const In& in) {
                 Map map;
                 for (unsigned int key : in.keys)
                     map.emplace(key, valueOf(key));
                 return static_cast<std::int64_t>(map.size());
             }});
}

// 64 to 8192: up to 4 keys to each of the 2048 buckets.
void withinTheLimit(benchmark::internal::Benchmark* b) {
    b->RangeMultiplier(8)->Range(64, 1 << 12)->Arg(1 << 13);
}

// Beyond, chains lengthen: 16 keys to a bucket.
void beyondTheLimit(benchmark::internal::Benchmark* b) { b->Arg(1 << 15); }

// 64 to a bucket.
void farBeyondTheLimit(benchmark::internal::Benchmark* b) { b->Arg(1 << 17); }

// 488 to a bucket.
struct AmongAMillion : Keys<Scattered> {
    /// `n` keys to look up in tables of a million.
    explicit AmongAMillion(unsigned int n) : Keys(1000000) {
        shuffled.resize(n);
        absent.resize(n);
    }
};

void fewLookUps(benchmark::internal::Benchmark* b) { b->Arg(1 << 12); }

template <class Kind>
void casesOf(const std::string& kind) {
    changeCases<Keys<Kind>>(kind, withinTheLimit);
    lookUpCases<Keys<Kind>>(kind, withinTheLimit);
    lookUpCases<Keys<Kind>>(kind + ", 16 to a bucket", beyondTheLimit);
}

const bool registered = [] {
    casesOf<Sequential>("sequential keys");
    casesOf<Scattered>("scattered keys");
    casesOf<Addresses>("addresses");
    changeCases<Keys<Scattered>>("scattered keys, 16 to a bucket", beyondTheLimit);
    addElementCase<Keys<Scattered>>("scattered keys", sweep);
    addElementCase<Keys<Scattered>>("scattered keys/large", doubling);
    changeCases<Keys<Sequential>>("sequential keys/large", doubling);
    changeCases<Keys<Scattered>>("scattered keys/large", doubling);
    lookUpCases<Keys<Sequential>>("sequential keys/large", doubling);
    lookUpCases<Keys<Scattered>>("scattered keys/large", doubling);
    casesOf<InOneBucket>("keys of one bucket");
    changeCases<Keys<Scattered>>("scattered keys, 64 to a bucket/large", farBeyondTheLimit);
    lookUpCases<Keys<Scattered>>("scattered keys, 64 to a bucket/large", farBeyondTheLimit);
    lookUpCases<AmongAMillion>("scattered keys, among a million/large", fewLookUps);
    return true;
}();

}  // namespace
