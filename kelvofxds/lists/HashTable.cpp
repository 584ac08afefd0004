#include "kelvofxds/lists/HashTable.h"

#include <cstdlib>
#include <new>

namespace {
const int firstSize = 64;
const int firstSizeLog2 = 6;
const int lastSizeLog2 = 11;
const int mostPerBucket = 4;  // on the average, before the table grows

HashEntry** newBuckets(unsigned int n) {
    void* block = std::calloc(n, sizeof(void*));
    if (!block)
        std::abort();
    return static_cast<HashEntry**>(block);
}

void putFirst(HashEntry*& chain, HashEntry* entry) {
    entry->prev = nullptr;
    entry->next = chain;
    if (chain)
        chain->prev = entry;
    chain = entry;
}

// A mapcar under way. The innermost one knows the others, so that removing an
// entry takes it from the way of all of them.
class Walk {
public:
    explicit Walk(const HashTable* t) : table(t), next(nullptr), outer(innermost) {
        innermost = this;
    }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;
    ~Walk() { innermost = outer; }

    static void leave(const HashEntry* entry) {
        for (Walk* walk = innermost; walk; walk = walk->outer) {
            if (walk->next == entry)
                walk->next = entry->next;
        }
    }
    static void leave(const HashTable* table) {
        for (Walk* walk = innermost; walk; walk = walk->outer) {
            if (walk->table == table)
                walk->table = nullptr;
        }
    }

    const HashTable* table;  // null once it is destroyed
    HashEntry* next;         // the entry to go on with, or null

private:
    static Walk* innermost;
    Walk* outer;
};

Walk* Walk::innermost = nullptr;
}  // namespace

HashTable::HashTable()
    : buckets(newBuckets(firstSize)), count(0), size(firstSize), sizeLog2(firstSizeLog2) {}

HashTable::~HashTable() {
    Walk::leave(this);
    for (int i = 0; i < size; ++i) {
        while (HashEntry* entry = buckets[i]) {
            buckets[i] = entry->next;
            delete entry;
        }
    }
    std::free(buckets);
}

HashEntry* HashTable::add(unsigned long key, void* value) {
    if (searchBucketFor(buckets[hash(key)], key))
        std::abort();
    HashEntry* entry = addElement(key);
    entry->value = value;
    return entry;
}

HashEntry* HashTable::addElement(unsigned long key) {
    if (sizeLog2 < lastSizeLog2 && count >= mostPerBucket * size)
        rebuildTable();
    HashEntry* entry = new (std::nothrow) HashEntry{key, nullptr, nullptr, nullptr};
    if (!entry)
        std::abort();
    putFirst(buckets[hash(key)], entry);
    // Wraps around where a signed sum must not: entries may come and go for ever.
    count = static_cast<int>(static_cast<unsigned int>(count) + 1);
    return entry;
}

void HashTable::remove(unsigned long key) {
    HashEntry*& chain = buckets[hash(key)];
    HashEntry* entry = searchBucketFor(chain, key);
    if (!entry)
        return;
    if (entry->prev)
        entry->prev->next = entry->next;
    else
        chain = entry->next;
    if (entry->next)
        entry->next->prev = entry->prev;
    Walk::leave(entry);
    delete entry;
}

void* HashTable::lookup(unsigned long key) {
    const HashEntry* entry = searchBucketFor(buckets[hash(key)], key);
    return entry ? entry->value : nullptr;
}

HashEntry* HashTable::searchBucketFor(HashEntry* chain, unsigned long key) {
    while (chain && chain->key != key)
        chain = chain->next;
    return chain;
}

void HashTable::mapcar(void (*fn)(HashEntry*)) {
    Walk walk(this);
    for (int i = 0; walk.table && i < size; ++i) {
        walk.next = buckets[i];
        while (walk.table && walk.next) {
            HashEntry* entry = walk.next;
            walk.next = entry->next;
            fn(entry);
        }
    }
}

unsigned int HashTable::hash(unsigned long key) {
    if (sizeLog2 < firstSizeLog2 || sizeLog2 > lastSizeLog2)
        return 0;
    const unsigned int k = key & 0xFFFFF;
    // Of the larger tables two parts make the index: a shift by 20 leaves nothing.
    const int third = sizeLog2 == 6 ? 12 : sizeLog2 == 7 ? 13 : sizeLog2 == 8 ? 16 : 20;
    return ((k >> sizeLog2) ^ k ^ (k >> third)) & ((1U << sizeLog2) - 1);
}

void HashTable::rebuildTable() {
    const unsigned int oldSize = static_cast<unsigned int>(size);
    HashEntry** oldBuckets = buckets;
    // Of 2 to the power of 30 buckets there is no room for twice as many.
    buckets = newBuckets(oldSize * 2);
    size = static_cast<int>(oldSize * 2);
    ++sizeLog2;
    for (unsigned int i = 0; i < oldSize; ++i) {
        HashEntry* entry = oldBuckets[i];
        while (entry) {
            HashEntry* next = entry->next;
            putFirst(buckets[hash(entry->key)], entry);
            entry = next;
        }
    }
    std::free(oldBuckets);
}
