// separateThreads_test.cpp - threads of a host that use objects of their own beside each other.

#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/lists/HashTable.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/transcribe/fxTranscriber.h"
#include "tests/support/memoryStream.h"

namespace {

const int rounds = 2000;

// Keys that come and go. Returns how many are left, 16 when all is well.
unsigned int useKeys(int seed) {
    fxStrSet set;
    fxStrStrDictionary dict;
    for (int i = 0; i < rounds; ++i) {
        const fxStr key(i % 16, "%d"), value(seed, "%d");
        set.add(&key);
        dict.addInternal(&key, &value);
        const fxStr gone((i + 7) % 16, "%d");
        set.remove(&gone);
        dict.remove(&gone);
    }
    for (int i = 0; i < 16; ++i) {
        const fxStr key(i, "%d");
        set.add(&key);
        dict.findCreate(&key);
    }
    return set.length() == dict.length() ? set.length() : 0;
}

// Sets whose keys share one chain, made and ended again and again. Returns how
// many keys a set has, 24 when all is well.
unsigned int useLongChains(int seed) {
    unsigned int least = 24;
    for (int i = 0; i < rounds; ++i) {
        fxStrSet set;
        for (int k = 0; k < 24; ++k) {
            const fxStr key(k + seed, "alike in the beginning %d");
            set.add(&key);
        }
        for (int k = 0; k < 24; ++k) {
            const fxStr key(k + seed, "alike in the beginning %d");
            if (!set.contains(&key))
                least = 0;
        }
        least = set.length() < least ? set.length() : least;
    }
    return least;
}

unsigned int useArrays() {
    fxIntArray ints;
    fxStrArray strings;
    for (int i = 0; i < rounds; ++i) {
        ints.append(&i);
        ints.resize(ints.length() % 64);
        const fxStr text(i, "%d");
        strings.append(&text);
        strings.setMaxLength(strings.length() + 8);
        if (strings.length() > 20)
            strings.resize(3);
    }
    return ints.length() < 64 && strings.length() <= 20 ? 1 : 0;
}

thread_local HashTable* tableWalked = nullptr;

void removeVisited(HashEntry* entry) { tableWalked->remove(entry->key); }

// Hash tables that a walk empties. Returns 1 when none keeps an entry.
unsigned int useHashTables() {
    for (int i = 0; i < rounds; ++i) {
        HashTable table;
        for (unsigned long key = 0; key < 20; ++key)
            table.add(key, &table);
        tableWalked = &table;
        table.mapcar(removeVisited);
        for (unsigned long key = 0; key < 20; ++key) {
            if (table.lookup(key))
                return 0;
        }
    }
    return 1;
}

unsigned int useTranscribers() {
    for (int i = 0; i < rounds / 10; ++i) {
        MemoryStream stream;
        fxTranscriber* writer = fxTranscriber::getWriter(&stream);
        fxStrArray strings(5);
        if (!writer || !writer->writeObject(&strings, &strings))
            return 0;
        delete writer;
    }
    return 1;
}

void useAll(int seed, std::string* outcome) {
    *outcome = std::to_string(useKeys(seed)) + std::to_string(useLongChains(seed)) +
               std::to_string(useArrays()) + std::to_string(useHashTables()) +
               std::to_string(useTranscribers());
}

}  // namespace

TEST(separateThreads, useObjectsOfTheirOwnBesideEachOther) {
    fxInitializeToolkit();
    std::vector<std::string> outcomes(4);
    std::vector<std::thread> threads;
    for (std::string& outcome : outcomes)
        threads.emplace_back(useAll, static_cast<int>(threads.size()), &outcome);
    for (std::thread& thread : threads)
        thread.join();
    for (const std::string& outcome : outcomes)
        EXPECT_EQ("1624111", outcome);
}
