// NameSpace_bench.cpp - interning names, beside std::unordered_map.

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "bench/support/beside.h"
#include "bench/support/inputs.h"
#include "kelvofxds/lists/NameSpace.h"

namespace {

/// The same with a standard map: it numbers names, and knows the name of a number.
class PeerNames {
public:
    unsigned int intern(const std::string& name) {
        const auto entry = numbers.try_emplace(name, names.size() + 1);
        if (entry.second)
            names.push_back(&entry.first->first);
        return entry.first->second;
    }

    unsigned int find(const std::string& name) const {
        const auto entry = numbers.find(name);
        return entry == numbers.end() ? 0 : entry->second;
    }

private:
    std::unordered_map<std::string, unsigned int> numbers;
    std::vector<const std::string*> names;
};

unsigned long intern(NameSpace& names, const std::string& name, int create) {
    return names.makeAtom(name.data(), static_cast<unsigned int>(name.size()), create);
}

/// A name space that does the numbering.
std::unique_ptr<NameSpace> newNames() { return std::make_unique<NameSpace>(nullptr, 0); }

// `n` names that are known, in the order they were made in and in another one,
// and `n` that are not.
struct Names {
    explicit Names(unsigned int n) : known(distinctWords(n * 2, 5, 11)), ours(newNames()) {
        absent.assign(known.begin() + static_cast<long>(n), known.end());
        known.resize(n);
        for (const std::string& name : known) {
            intern(*ours, name, 1);
            peer.intern(name);
        }
        std::mt19937 engine(1);
        shuffled = known;
        for (unsigned int i = n; i > 1; --i)
            std::swap(shuffled[i - 1], shuffled[static_cast<unsigned int>(engine()) % i]);
    }

    std::vector<std::string> known, absent, shuffled;
    std::unique_ptr<NameSpace> ours;
    PeerNames peer;
};

/// What `numberOf` gives for each of `names`, as one number that tells the order.
template <class NumberOf>
std::int64_t numbers(const std::vector<std::string>& names, NumberOf numberOf) {
    std::uint32_t sum = 0;
    for (const std::string& name : names)
        sum = sum * 31 + static_cast<std::uint32_t>(numberOf(name));
    return sum;
}

// The name space is made and destroyed as well.
void internCase(const std::string& name, Sizes sizes) {
    beside<Names>(
        name, Rate::items, sizes,
        [](const Names& in) {
            const auto names = newNames();
            return numbers(in.known, [&](const std::string& n) { return intern(*names, n, 1); });
        },
        Side{"std::unordered_map", [](const Names& in) {
                 PeerNames names;
                 return numbers(in.known, [&](const std::string& n) { return names.intern(n); });
             }});
}

void knownCases(const std::string& ending, Sizes sizes) {
    beside<Names>(
        "NameSpace/intern known names" + ending, Rate::items, sizes,
        [](Names& in) {
            return numbers(in.shuffled,
                           [&](const std::string& n) { return intern(*in.ours, n, 1); });
        },
        Side{"std::unordered_map", [](Names& in) {
                 return numbers(in.shuffled,
                                [&](const std::string& n) { return in.peer.intern(n); });
             }});
    beside<Names>(
        "NameSpace/look up" + ending, Rate::items, sizes,
        [](Names& in) {
            return numbers(in.shuffled,
                           [&](const std::string& n) { return intern(*in.ours, n, 0); });
        },
        Side{"std::unordered_map", [](Names& in) {
                 return numbers(in.shuffled, [&](const std::string& n) { return in.peer.find(n); });
             }});
    beside<Names>(
        "NameSpace/miss" + ending, Rate::items, sizes,
        [](Names& in) {
            return numbers(in.absent, [&](const std::string& n) { return intern(*in.ours, n, 0); });
        },
        Side{"std::unordered_map", [](Names& in) {
                 return numbers(in.absent, [&](const std::string& n) { return in.peer.find(n); });
             }});
}

const bool registered = [] {
    internCase("NameSpace/intern new names", sweep);
    knownCases("", sweep);
    internCase("NameSpace/intern new names/large", doubling);
    knownCases("/large", doubling);
    return true;
}();

}  // namespace
