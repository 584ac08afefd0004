// fxDefaultBuckets_bench.cpp - dictionaries and sets that nobody told how much they will hold,
// beside std::unordered_map and std::unordered_set that nobody told either, and both told.

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "bench/support/beside.h"
#include "bench/support/inputs.h"
#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"

namespace {

using Map = std::unordered_map<std::string, std::string>;
using Set = std::unordered_set<std::string>;

// The kinds of keys. fxStr::hash takes the first eight bytes into account.

struct DistinctKeys {
    static std::string make(unsigned int i) {
        char text[32];
        std::snprintf(text, sizeof text, "%08x.item", i * 2654435761U);
        return text;
    }
};
struct AlikeKeys {
    static std::string make(unsigned int i) {
        char text[40];
        std::snprintf(text, sizeof text, "application.resource.%06u", i);
        return text;
    }
};
// The words 0 and 1 of a text count as w0 ^ w1 << 3: these differ in their
// first eight bytes and hash to one value all the same.
struct CollidingKeys {
    static std::string make(unsigned int i) {
        std::uint32_t first = 0x41424344U;
        std::uint32_t second = 0x40404040U;
        for (unsigned int bit = 0; bit < 16; ++bit) {
            const unsigned int at = bit / 4 * 8 + bit % 4;
            if ((i >> bit & 1) != 0) {
                second ^= 1U << at;
                first ^= 1U << at << 3;
            }
        }
        std::string text;
        for (const std::uint32_t word : {first, second}) {
            for (unsigned int shift = 0; shift < 32; shift += 8)
                text += static_cast<char>(word >> shift & 0xFF);
        }
        return text + ".item";
    }
};

template <class T>
void shuffle(std::vector<T>& keys) {
    Random random;
    for (std::size_t i = keys.size(); i > 1; --i)
        std::swap(keys[i - 1], keys[random.below(static_cast<unsigned int>(i))]);
}

template <class Keys>
struct KeysOf {
    explicit KeysOf(unsigned int n) {
        for (unsigned int i = 0; i < n; ++i) {
            keys.push_back(Keys::make(2 * i));
            absent.push_back(Keys::make(2 * i + 1));
        }
        shuffle(keys);
        for (unsigned int i = 0; i < n; ++i) {
            ours.push_back(fxStr(keys[i].c_str()));
            oursAbsent.push_back(fxStr(absent[i].c_str()));
        }
    }
    std::vector<std::string> keys, absent;
    std::vector<fxStr> ours, oursAbsent;
};

// What is looked up is another object than what is kept, and in another order.
template <class Keys, bool IsTold>
struct Entries : KeysOf<Keys> {
    explicit Entries(unsigned int n) : KeysOf<Keys>(n) {
        dictionary = ourMap();
        map = peerMap();
        for (unsigned int i = 0; i < n; ++i) {
            dictionary->add(this->ours[i], this->ours[i]);
            map->emplace(this->keys[i], this->keys[i]);
        }
        shuffle(this->keys);
        shuffle(this->ours);
    }
    std::unique_ptr<fxStrStrDictionary> ourMap() const {
        return std::make_unique<fxStrStrDictionary>(IsTold ? unsigned(this->keys.size()) : 0U);
    }
    std::unique_ptr<Map> peerMap() const {
        auto made = std::make_unique<Map>();
        if (IsTold)
            made->reserve(this->keys.size());
        return made;
    }
    std::unique_ptr<fxStrStrDictionary> dictionary;
    std::unique_ptr<Map> map;
};

std::size_t found(const fxStrStrDictionary& d, const std::vector<fxStr>& keys) {
    std::size_t sum = 0;
    for (const fxStr& key : keys) {
        const fxStr* value = d.find(key);
        sum += value ? value->length() : 0;
    }
    return sum;
}

std::size_t found(const Map& m, const std::vector<std::string>& keys) {
    std::size_t sum = 0;
    for (const std::string& key : keys) {
        const auto at = m.find(key);
        sum += at != m.end() ? at->second.size() : 0;
    }
    return sum;
}

template <class In>
std::unique_ptr<fxStrStrDictionary> filledOurs(const In& in) {
    auto d = in.ourMap();
    for (const fxStr& key : in.ours)
        d->add(key, key);
    return d;
}

template <class In>
std::unique_ptr<Map> filledPeer(const In& in) {
    auto m = in.peerMap();
    for (const std::string& key : in.keys)
        m->insert_or_assign(key, key);
    return m;
}

template <class In>
void dictionaryCases(const std::string& kind, Sizes sizes) {
    const char* const peer = "std::unordered_map";
    beside<In>(
        "fxDictionary/hit, " + kind, Rate::items, sizes,
        [](const In& in) { return found(*in.dictionary, in.ours); },
        Side{peer, [](const In& in) { return found(*in.map, in.keys); }});
    beside<In>(
        "fxDictionary/no hit, " + kind, Rate::items, sizes,
        [](const In& in) { return found(*in.dictionary, in.oursAbsent); },
        Side{peer, [](const In& in) { return found(*in.map, in.absent); }});
    beside<In>(
        "fxDictionary/fill, " + kind, Rate::items, sizes,
        [](const In& in) { return filledOurs(in); },
        Side{peer, [](const In& in) { return filledPeer(in); }});
    beside<In>(
        "fxDictionary/fill and erase, " + kind, Rate::items, sizes,
        [](const In& in) {
            const auto d = filledOurs(in);
            for (const fxStr& key : in.ours)
                d->remove(key);
            return d->length();
        },
        Side{peer, [](const In& in) {
                 const auto m = filledPeer(in);
                 for (const std::string& key : in.keys)
                     m->erase(key);
                 return m->size();
             }});
    beside<In>(
        "fxDictionary/walk, " + kind, Rate::items, sizes,
        [](const In& in) {
            std::size_t sum = 0;
            for (fxStrStrDictionaryIter iter(*in.dictionary); iter.key(); ++iter)
                sum += iter.value()->length();
            return sum;
        },
        Side{peer, [](const In& in) {
                 std::size_t sum = 0;
                 for (const auto& pair : *in.map)
                     sum += pair.second.size();
                 return sum;
             }});
}

// Two sets with half of their keys in common.
template <class Keys, bool IsTold>
struct Sets : KeysOf<Keys> {
    explicit Sets(unsigned int n) : KeysOf<Keys>(n), others(this->keys), ourOthers(this->ours) {
        for (unsigned int i = 0; i < n; i += 2) {
            others[i] = this->absent[i];
            ourOthers[i] = this->oursAbsent[i];
        }
        other = ourSet(ourOthers);
        peerOther = peerSet(others);
    }
    std::unique_ptr<fxStrSet> ourSet(const std::vector<fxStr>& from) const {
        auto s = std::make_unique<fxStrSet>(IsTold ? unsigned(from.size()) : 0U);
        for (const fxStr& key : from)
            s->add(key);
        return s;
    }
    std::unique_ptr<Set> peerSet(const std::vector<std::string>& from) const {
        auto s = std::make_unique<Set>();
        if (IsTold)
            s->reserve(from.size());
        s->insert(from.begin(), from.end());
        return s;
    }
    std::vector<std::string> others;
    std::vector<fxStr> ourOthers;
    std::unique_ptr<fxStrSet> other;
    std::unique_ptr<Set> peerOther;
};

template <class In>
void setCase(const std::string& kind, Sizes sizes) {
    beside<In>(
        "fxSet/fill, |=, &=, -=, " + kind, Rate::items, sizes,
        [](const In& in) {
            const auto s = in.ourSet(in.ours);
            *s |= *in.other;
            const unsigned int all = s->length();
            *s &= *in.other;
            const unsigned int common = s->length();
            *s -= *in.other;
            return all * 31 + common + s->length();
        },
        Side{"std::unordered_set", [](const In& in) {
                 const auto s = in.peerSet(in.keys);
                 s->insert(in.peerOther->begin(), in.peerOther->end());
                 const auto all = unsigned(s->size());
                 for (auto at = s->begin(); at != s->end();)
                     at = in.peerOther->count(*at) != 0 ? std::next(at) : s->erase(at);
                 const auto common = unsigned(s->size());
                 for (const std::string& key : *in.peerOther)
                     s->erase(key);
                 return all * 31 + common + unsigned(s->size());
             }});
}

void usual(benchmark::internal::Benchmark* b) { b->Arg(200)->Arg(2000)->Arg(20000); }

const bool registered = [] {
    dictionaryCases<Entries<DistinctKeys, false>>("default buckets, distinct keys", usual);
    dictionaryCases<Entries<AlikeKeys, false>>("default buckets, keys that begin alike", usual);
    dictionaryCases<Entries<CollidingKeys, false>>("default buckets, colliding keys", usual);
    dictionaryCases<Entries<DistinctKeys, true>>("size told, distinct keys", usual);
    dictionaryCases<Entries<AlikeKeys, true>>("size told, keys that begin alike", usual);
    setCase<Sets<DistinctKeys, false>>("default buckets, distinct keys", usual);
    setCase<Sets<AlikeKeys, false>>("default buckets, keys that begin alike", usual);
    setCase<Sets<DistinctKeys, true>>("size told, distinct keys", usual);
    return true;
}();

}  // namespace
