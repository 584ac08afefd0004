// fxDictionary_bench.cpp - string-keyed dictionaries, beside std::unordered_map.

#include <algorithm>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "bench/support/beside.h"
#include "bench/support/inputs.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxVoidPtrDict.h"

namespace {

using Map = std::unordered_map<std::string, std::string>;

/// A map whose number of buckets stays what it is.
std::unique_ptr<Map> fixedMap(unsigned int buckets) {
    auto map = std::make_unique<Map>(buckets);
    map->max_load_factor(1e9F);
    return map;
}

// The kinds of keys. Of a text of 5 to 7 bytes fxStr::hash takes the first four
// into account, of a longer one the first eight.
struct ShortKeys {
    static std::vector<std::string> make(unsigned int n) { return distinctWords(n, 5, 11); }
};
struct LongKeys {
    static std::vector<std::string> make(unsigned int n) { return distinctWords(n, 40, 40); }
};
struct PrefixedKeys {
    static std::vector<std::string> make(unsigned int n) {
        return distinctWords(n, 5, 11, "/usr/include/");
    }
};

// `n` entries, with `Load` of them to a bucket. Both sides have as many buckets;
// the peer rounds the number asked for up to a prime.
template <class Keys, unsigned int Load>
struct Entries {
    explicit Entries(unsigned int n) : keys(Keys::make(n * 2)) {
        absent.assign(keys.begin() + long(n), keys.end());
        keys.resize(n);
        peer = fixedMap(n / Load);
        buckets = static_cast<unsigned int>(peer->bucket_count());
        ours = std::make_unique<fxStrStrDictionary>(buckets);
        for (const std::string& key : keys) {
            oursKeys.push_back(fxStr(key.c_str()));
            ours->add(oursKeys.back(), oursKeys.back());
            (*peer)[key] = key;
        }
        rehashing = std::make_unique<Map>(*peer);
        rehashing->max_load_factor(1);
        // Looked up in another order than they were added in.
        std::mt19937 engine(1);
        for (unsigned int i = n; i > 1; --i) {
            const unsigned int j = static_cast<unsigned int>(engine()) % i;
            std::swap(keys[i - 1], keys[j]);
            std::swap(oursKeys[i - 1], oursKeys[j]);
        }
        for (const std::string& key : absent)
            oursAbsent.push_back(fxStr(key.c_str()));
    }

    std::vector<std::string> keys, absent;
    std::vector<fxStr> oursKeys, oursAbsent;
    unsigned int buckets;
    std::unique_ptr<fxStrStrDictionary> ours;
    std::unique_ptr<Map> peer, rehashing;
};

std::unique_ptr<Map> filled(std::unique_ptr<Map> map, const std::vector<std::string>& keys) {
    for (const std::string& key : keys)
        map->insert_or_assign(key, key);
    return map;
}

template <class In>
std::unique_ptr<fxStrStrDictionary> filled(const In& in) {
    auto dictionary = std::make_unique<fxStrStrDictionary>(in.buckets);
    for (const fxStr& key : in.oursKeys)
        dictionary->add(key, key);
    return dictionary;
}

template <class In>
void insertCases(const std::string& kind, Sizes sizes) {
    beside<In>(
        "fxDictionary/insert, " + kind, Rate::items, sizes, [](const In& in) { return filled(in); },
        Side{"std::unordered_map",
             [](const In& in) { return filled(fixedMap(in.buckets), in.keys); }},
        Side{"std::unordered_map, rehashing",
             [](const In& in) { return filled(std::make_unique<Map>(), in.keys); }});
    beside<In>(
        "fxDictionary/insert and remove, " + kind, Rate::items, sizes,
        [](const In& in) {
            const auto dictionary = filled(in);
            for (const fxStr& key : in.oursKeys)
                dictionary->remove(key);
            return dictionary->length();
        },
        Side{"std::unordered_map", [](const In& in) {
                 const auto map = filled(fixedMap(in.buckets), in.keys);
                 for (const std::string& key : in.keys)
                     map->erase(key);
                 return map->size();
             }});
}

std::size_t lengthsFound(const Map& map, const std::vector<std::string>& keys) {
    std::size_t bytes = 0;
    for (const std::string& key : keys) {
        const auto found = map.find(key);
        if (found != map.end())
            bytes += found->second.size();
    }
    return bytes;
}

std::size_t lengthsFound(const fxStrStrDictionary& dictionary, const std::vector<fxStr>& keys) {
    std::size_t bytes = 0;
    for (const fxStr& key : keys) {
        const fxStr* value = dictionary.find(key);
        if (value)
            bytes += value->length();
    }
    return bytes;
}

template <class In>
void lookUpCases(const std::string& kind, Sizes sizes) {
    beside<In>(
        "fxDictionary/find, " + kind, Rate::items, sizes,
        [](const In& in) { return lengthsFound(*in.ours, in.oursKeys); },
        Side{"std::unordered_map", [](const In& in) { return lengthsFound(*in.peer, in.keys); }},
        Side{"std::unordered_map, rehashing",
             [](const In& in) { return lengthsFound(*in.rehashing, in.keys); }});
    beside<In>(
        "fxDictionary/miss, " + kind, Rate::items, sizes,
        [](const In& in) { return lengthsFound(*in.ours, in.oursAbsent); },
        Side{"std::unordered_map", [](const In& in) { return lengthsFound(*in.peer, in.absent); }});
}

template <class In>
void walkCase(const std::string& kind, Sizes sizes) {
    beside<In>(
        "fxDictionary/iterate, " + kind, Rate::items, sizes,
        [](const In& in) {
            std::size_t bytes = 0;
            for (fxStrStrDictionaryIter iter(*in.ours); iter.key(); ++iter)
                bytes += iter.value()->length();
            return bytes;
        },
        Side{"std::unordered_map", [](const In& in) {
                 std::size_t bytes = 0;
                 for (const auto& pair : *in.peer)
                     bytes += pair.second.size();
                 return bytes;
             }});
}

// Counting words in a map from strings to pointer-sized values.
void countingCase() {
    using In = Entries<ShortKeys, 1>;
    beside<In>(
        "fxDictionary/count with findCreate", Rate::items, sweep,
        [](const In& in) {
            fxVoidPtrDict counts(in.buckets);
            std::uintptr_t sum = 0;
            for (int round = 0; round < 4; ++round) {
                for (const fxStr& key : in.oursKeys) {
                    void*& value = counts.findCreate(key);
                    const std::uintptr_t count = reinterpret_cast<std::uintptr_t>(value) + 1;
                    value = reinterpret_cast<void*>(count);
                    sum += count;
                }
            }
            return sum;
        },
        Side{"std::unordered_map", [](const In& in) {
                 std::unordered_map<std::string, std::uintptr_t> counts(in.buckets);
                 counts.max_load_factor(1e9F);
                 std::uintptr_t sum = 0;
                 for (int round = 0; round < 4; ++round) {
                     for (const std::string& key : in.keys)
                         sum += ++counts[key];
                 }
                 return sum;
             }});
}

// Keys that begin alike share one bucket.
void upTo512(benchmark::internal::Benchmark* b) { b->RangeMultiplier(8)->Range(8, 512); }

// One size is enough to see what the load does.
void upper(benchmark::internal::Benchmark* b) { b->Arg(1 << 16); }

const bool registered = [] {
    insertCases<Entries<ShortKeys, 1>>("short keys", sweep);
    lookUpCases<Entries<ShortKeys, 1>>("short keys", sweep);
    walkCase<Entries<ShortKeys, 1>>("short keys", sweep);
    insertCases<Entries<LongKeys, 1>>("long keys", sweep);
    lookUpCases<Entries<LongKeys, 1>>("long keys", sweep);
    lookUpCases<Entries<ShortKeys, 4>>("short keys, 4 to a bucket", upper);
    lookUpCases<Entries<ShortKeys, 16>>("short keys, 16 to a bucket", upper);
    walkCase<Entries<ShortKeys, 16>>("short keys, 16 to a bucket", upper);
    insertCases<Entries<PrefixedKeys, 1>>("keys that begin alike", upTo512);
    lookUpCases<Entries<PrefixedKeys, 1>>("keys that begin alike", upTo512);
    countingCase();
    return true;
}();

}  // namespace
