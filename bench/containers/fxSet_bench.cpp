// fxSet_bench.cpp - sets of strings, beside std::unordered_set.

#include <algorithm>
#include <memory>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "bench/support/beside.h"
#include "bench/support/inputs.h"
#include "kelvofxds/containers/fxStrSet.h"

using Peer = std::unordered_set<std::string>;

static bool same(const fxStrSet& a, const Peer& b) {
    return a.length() == b.size() && std::all_of(b.begin(), b.end(), [&a](const std::string& key) {
               return a.contains(key.c_str()) != 0;
           });
}

namespace {

/// A set whose number of buckets stays what it is.
std::unique_ptr<Peer> fixedSet(unsigned int buckets) {
    auto set = std::make_unique<Peer>(buckets);
    set->max_load_factor(1e9F);
    return set;
}

struct ShortKeys {
    static std::vector<std::string> make(unsigned int n) { return distinctWords(n, 5, 11); }
};
struct LongKeys {
    static std::vector<std::string> make(unsigned int n) { return distinctWords(n, 40, 40); }
};

template <class Key>
void shuffle(std::vector<Key>& keys) {
    std::mt19937 engine(1);
    for (std::size_t i = keys.size(); i > 1; --i)
        std::swap(keys[i - 1], keys[engine() % i]);
}

// Two sets of `n` keys that have half of them in common, with `Load` keys to a
// bucket. Both sides have as many buckets; the peer rounds the number asked for
// up to a prime.
template <class Keys, unsigned int Load>
struct Sets {
    explicit Sets(unsigned int n) {
        const std::vector<std::string> words = Keys::make(n + n / 2);
        peer = fixedSet(n / Load);
        peerOther = fixedSet(n / Load);
        buckets = static_cast<unsigned int>(peer->bucket_count());
        ours = std::make_unique<fxStrSet>(buckets);
        oursOther = std::make_unique<fxStrSet>(buckets);
        for (unsigned int i = 0; i < words.size(); ++i) {
            if (i < n) {
                keys.push_back(words[i]);
                ours->add(words[i].c_str());
                peer->insert(words[i]);
            }
            if (i >= n / 2) {
                oursOther->add(words[i].c_str());
                peerOther->insert(words[i]);
            }
        }
        absent.assign(words.begin() + long(n), words.end());
        // Looked up in another order than they were added in.
        shuffle(keys);
        for (const std::string& key : keys)
            oursKeys.push_back(fxStr(key.c_str()));
        for (const std::string& key : absent)
            oursAbsent.push_back(fxStr(key.c_str()));
    }

    std::vector<std::string> keys, absent;
    std::vector<fxStr> oursKeys, oursAbsent;
    unsigned int buckets;
    std::unique_ptr<fxStrSet> ours, oursOther;
    std::unique_ptr<Peer> peer, peerOther;
};

template <class In>
std::unique_ptr<fxStrSet> filled(const In& in) {
    auto set = std::make_unique<fxStrSet>(in.buckets);
    for (const fxStr& key : in.oursKeys)
        set->add(key);
    return set;
}

std::unique_ptr<Peer> filled(std::unique_ptr<Peer> set, const std::vector<std::string>& keys) {
    for (const std::string& key : keys)
        set->insert(key);
    return set;
}

template <class In>
void addCases(const std::string& kind, Sizes sizes) {
    beside<In>(
        "fxSet/add, " + kind, Rate::items, sizes, [](const In& in) { return filled(in); },
        Side{"std::unordered_set",
             [](const In& in) { return filled(fixedSet(in.buckets), in.keys); }},
        Side{"std::unordered_set, rehashing",
             [](const In& in) { return filled(std::make_unique<Peer>(), in.keys); }});
    beside<In>(
        "fxSet/add and remove, " + kind, Rate::items, sizes,
        [](const In& in) {
            const auto set = filled(in);
            for (const fxStr& key : in.oursKeys)
                set->remove(key);
            return set->length();
        },
        Side{"std::unordered_set", [](const In& in) {
                 const auto set = filled(fixedSet(in.buckets), in.keys);
                 for (const std::string& key : in.keys)
                     set->erase(key);
                 return set->size();
             }});
}

std::size_t present(const fxStrSet& set, const std::vector<fxStr>& keys) {
    std::size_t count = 0;
    for (const fxStr& key : keys)
        count += set.contains(key);
    return count;
}

std::size_t present(const Peer& set, const std::vector<std::string>& keys) {
    std::size_t count = 0;
    for (const std::string& key : keys)
        count += set.count(key);
    return count;
}

template <class In>
void containsCases(const std::string& kind, Sizes sizes) {
    beside<In>(
        "fxSet/contains, " + kind, Rate::items, sizes,
        [](const In& in) { return present(*in.ours, in.oursKeys); },
        Side{"std::unordered_set", [](const In& in) { return present(*in.peer, in.keys); }});
    beside<In>(
        "fxSet/contains not, " + kind, Rate::items, sizes,
        [](const In& in) { return present(*in.ours, in.oursAbsent); },
        Side{"std::unordered_set", [](const In& in) { return present(*in.peer, in.absent); }});
}

// The first set's keys in a set of its own, which the operation then changes.
template <class In>
std::unique_ptr<fxStrSet> copied(const In& in) {
    auto set = std::make_unique<fxStrSet>(in.buckets);
    *set |= *in.ours;
    return set;
}

template <class In>
std::unique_ptr<Peer> copiedPeer(const In& in) {
    auto set = fixedSet(in.buckets);
    for (const std::string& key : *in.peer)
        set->insert(key);
    return set;
}

template <class In>
void algebraCases(const std::string& kind, Sizes sizes) {
    beside<In>(
        "fxSet/|=, " + kind, Rate::items, sizes,
        [](const In& in) {
            auto set = copied(in);
            *set |= *in.oursOther;
            return set;
        },
        Side{"std::unordered_set", [](const In& in) {
                 auto set = copiedPeer(in);
                 for (const std::string& key : *in.peerOther)
                     set->insert(key);
                 return set;
             }});
    beside<In>(
        "fxSet/&=, " + kind, Rate::items, sizes,
        [](const In& in) {
            auto set = copied(in);
            *set &= *in.oursOther;
            return set;
        },
        Side{"std::unordered_set", [](const In& in) {
                 auto set = copiedPeer(in);
                 for (auto key = set->begin(); key != set->end();) {
                     if (in.peerOther->count(*key) != 0)
                         ++key;
                     else
                         key = set->erase(key);
                 }
                 return set;
             }});
    beside<In>(
        "fxSet/-=, " + kind, Rate::items, sizes,
        [](const In& in) {
            auto set = copied(in);
            *set -= *in.oursOther;
            return set;
        },
        Side{"std::unordered_set", [](const In& in) {
                 auto set = copiedPeer(in);
                 for (const std::string& key : *in.peerOther)
                     set->erase(key);
                 return set;
             }});
}

// Nothing changes: what is timed are look-ups alone, in the order of the sets.
template <class In>
void unchangingCase(const std::string& kind, Sizes sizes) {
    beside<In>(
        "fxSet/|= of what is there, " + kind, Rate::items, sizes,
        [](In& in) {
            *in.ours |= *in.ours;
            return in.ours->length();
        },
        Side{"std::unordered_set", [](In& in) {
                 for (const std::string& key : *in.peer)
                     in.peer->insert(key);
                 return in.peer->size();
             }});
}

template <class In>
void walkCase(const std::string& kind, Sizes sizes) {
    beside<In>(
        "fxSet/iterate, " + kind, Rate::items, sizes,
        [](const In& in) {
            std::size_t bytes = 0;
            for (fxStrSetIter iter(*in.ours); iter.key(); ++iter)
                bytes += iter.key()->length();
            return bytes;
        },
        Side{"std::unordered_set", [](const In& in) {
                 std::size_t bytes = 0;
                 for (const std::string& key : *in.peer)
                     bytes += key.size();
                 return bytes;
             }});
}

// One size is enough to see what the load does.
void upper(benchmark::internal::Benchmark* b) { b->Arg(1 << 16); }

const bool registered = [] {
    addCases<Sets<ShortKeys, 1>>("short keys", sweep);
    containsCases<Sets<ShortKeys, 1>>("short keys", sweep);
    algebraCases<Sets<ShortKeys, 1>>("short keys", sweep);
    unchangingCase<Sets<ShortKeys, 1>>("short keys", sweep);
    walkCase<Sets<ShortKeys, 1>>("short keys", sweep);
    addCases<Sets<LongKeys, 1>>("long keys", sweep);
    containsCases<Sets<LongKeys, 1>>("long keys", sweep);
    algebraCases<Sets<LongKeys, 1>>("long keys", sweep);
    containsCases<Sets<ShortKeys, 16>>("short keys, 16 to a bucket", upper);
    walkCase<Sets<ShortKeys, 16>>("short keys, 16 to a bucket", upper);
    return true;
}();

}  // namespace
