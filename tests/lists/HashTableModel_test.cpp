// HashTableModel_test.cpp - the table beside a plain model of its chains.

#include <cstddef>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/lists/HashTable.h"
#include "tests/support/operations.h"

namespace {

using Keys = std::vector<unsigned long>;

/// What a table is by its description: chains, each searched from its head.
class Model {
public:
    const void* lookup(unsigned int bucket, unsigned long key) const {
        for (const Entry& entry : chains[bucket]) {
            if (entry.key == key)
                return entry.value;
        }
        return nullptr;
    }

    void addElement(HashTable& hashes, unsigned long key, const void* value) {
        if (additions++ >= 4 * chains.size() && chains.size() < 2048)
            rebuild(hashes);
        Chain& chain = chains[hashes.hash(key)];
        chain.insert(chain.begin(), {key, value});
    }

    void remove(unsigned int bucket, unsigned long key) {
        Chain& chain = chains[bucket];
        for (auto entry = chain.begin(); entry != chain.end(); ++entry) {
            if (entry->key == key) {
                chain.erase(entry);
                return;
            }
        }
    }

    /// `hashes` has as many buckets as there will be.
    void rebuild(HashTable& hashes) {
        const std::vector<Chain> old = std::move(chains);
        chains.assign(old.size() * 2, {});
        for (const Chain& from : old) {
            for (const Entry& entry : from) {
                Chain& to = chains[hashes.hash(entry.key)];
                to.insert(to.begin(), entry);
            }
        }
    }

    std::size_t size() const { return chains.size(); }

    std::vector<const void*> values() const {
        std::vector<const void*> all;
        for (const Chain& chain : chains) {
            for (const Entry& entry : chain)
                all.push_back(entry.value);
        }
        return all;
    }

private:
    struct Entry {
        unsigned long key;
        const void* value;
    };
    using Chain = std::vector<Entry>;

    std::vector<Chain> chains = std::vector<Chain>(64);
    unsigned int additions = 0;
};

std::vector<const void*> walked;

std::vector<const void*> valuesOf(HashTable& table) {
    walked.clear();
    table.mapcar([](HashEntry* entry) { walked.push_back(entry->value); });
    return walked;
}

/// Keys of some families: few, so that many are met again.
unsigned long keyOf(std::uint32_t number, unsigned int family, unsigned int range) {
    const std::uint32_t n = number % range;
    switch (family) {
        case 0:
            return n;
        case 1:
            return n * 2654435761U;
        case 2:
            return 0x08100000 + n * 16;
        default:
            return (n << 20) | (n >> 12);
    }
}

void compare(std::uint32_t seed, unsigned int family, unsigned int range, unsigned long rounds) {
    SCOPED_TRACE(testing::Message() << "seed " << seed << ", family " << family);
    std::mt19937 random(seed);
    HashTable table;
    Model model;
    std::uintptr_t id = 0;
    for (unsigned long round = 0; round < rounds; ++round) {
        const unsigned long key = keyOf(random(), family, range);
        const unsigned int what = random() % 16;
        const void* const present = model.lookup(table.hash(key), key);
        ASSERT_EQ(present, table.lookup(key)) << round;
        if (what < 6 && (!present || what < 2)) {
            HashEntry* entry = present ? table.addElement(key) : table.add(key, nullptr);
            entry->value = reinterpret_cast<void*>(++id);
            model.addElement(table, key, entry->value);
        } else if (what >= 9) {
            table.remove(key);
            model.remove(table.hash(key), key);
        }
        if (round % (rounds / 16 + 1) == 0) {
            ASSERT_EQ(model.values(), valuesOf(table)) << round;
        }
        if (round % (rounds / 3 + 1) == rounds / 3 && model.size() < 2048) {
            table.rebuildTable();
            model.rebuild(table);
        }
    }
    ASSERT_EQ(static_cast<int>(model.size()), table.getSize());
    ASSERT_EQ(model.values(), valuesOf(table));
}

}  // namespace

TEST(HashTableModel, randomOperationsGiveWhatAWalkAlongTheChainsGives) {
    const std::uint32_t seed = 20261121;
    for (unsigned int family = 0; family < 4; ++family) {
        for (const unsigned int range : {50U, 600U, 5000U})
            compare(seed + range, family, range, operations(120000) / 12);
    }
}
