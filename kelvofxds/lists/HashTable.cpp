#include "kelvofxds/lists/HashTable.h"

#include <cstdlib>
#include <new>
#include <utility>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxInProgressInternal.h"
#include "kelvofxds/lists/fxKeyIndexInternal.h"

namespace {
const int firstSize = 64;
const int firstSizeLog2 = 6;
const int lastSizeLog2 = 11;
const int mostPerBucket = 4;  // on the average, before the table grows

// An entry as it is allocated. What it has more is no larger than what malloc
// rounds up to.
struct Entry : HashEntry {
    std::uint32_t slotIn(const fxKeyIndex<Entry>& index) const {
        return index.slotOf(static_cast<std::uint32_t>(key));
    }

    Entry* link;     // in the index
    Entry* older;    // the one added before, or null
    Entry* younger;  // the one added next, or null
};

// What lies before the buckets, since hosts know the fields of a table. All
// entries are linked by age, in which order they lie in memory. Of equal keys
// those further back in their chain are the older ones.
struct Head {
    fxKeyIndex<Entry>* index;  // of all entries; owned; null while it does not pay
    unsigned int entries;      // in the table now
    unsigned int indexFrom;    // so many entries have an index
    std::uint32_t varying;     // the bits that keys have differed in
    Entry* oldest;
    Entry* youngest;
};

// By measurement: for fewer entries a walk along the chains is as fast.
const unsigned int firstIndexFrom = 64;

Head& headOf(HashEntry** buckets) { return reinterpret_cast<Head*>(buckets)[-1]; }

HashEntry** newBuckets(unsigned int n, const Head& head) {
    static_assert(sizeof(Head) % sizeof(void*) == 0, "a number of words");
    void* block = std::calloc(n + sizeof(Head) / sizeof(void*), sizeof(void*));
    if (!block)
        std::abort();
    return reinterpret_cast<HashEntry**>(new (block) Head(head) + 1);
}

void freeBuckets(HashEntry** buckets) { std::free(&headOf(buckets)); }

void putFirst(HashEntry*& chain, HashEntry* entry) {
    entry->prev = nullptr;
    entry->next = chain;
    if (chain)
        chain->prev = entry;
    chain = entry;
}

void appendByAge(Head& head, Entry* entry) {
    entry->older = head.youngest;
    entry->younger = nullptr;
    (head.youngest ? head.youngest->younger : head.oldest) = entry;
    head.youngest = entry;
}

// A new index for all entries. Where there is no memory for one, there is none
// until there are twice as many.
void makeIndex(Head& head) {
    std::free(head.index);
    const int alike = head.varying != 0 ? __builtin_ctz(head.varying) : 0;
    head.index = fxKeyIndex<Entry>::make(head.entries, static_cast<unsigned int>(alike));
    if (!head.index)
        head.indexFrom = head.entries * 2;
    for (Entry* entry = head.oldest; head.index && entry; entry = entry->younger)
        head.index->add(entry);
}

// A new entry, which is in its chain already.
void enter(Head& head, Entry* entry) {
    appendByAge(head, entry);
    ++head.entries;
    head.varying |= static_cast<std::uint32_t>(entry->key ^ head.oldest->key);
    if (head.index ? head.index->isFull(head.entries) : head.entries >= head.indexFrom)
        makeIndex(head);
    else if (head.index)
        head.index->add(entry);
}

// An entry on its way out.
void leave(Head& head, const Entry* entry) {
    --head.entries;
    if (head.index)
        head.index->remove(entry);
    (entry->older ? entry->older->younger : head.oldest) = entry->younger;
    (entry->younger ? entry->younger->older : head.youngest) = entry->older;
}

Entry* indexed(fxKeyIndex<Entry>& index, unsigned long key) {
    Entry* entry = index.at(index.slotOf(static_cast<std::uint32_t>(key)));
    while (entry && entry->key != key)
        entry = entry->link;
    return entry;
}

// A mapcar under way. Removing an entry takes it from the way of all of them.
class Walk : public fxInProgress<Walk> {
public:
    explicit Walk(const HashTable* t) : table(t), next(nullptr) {}

    static void leave(const HashEntry* entry) {
        forEach([entry](Walk& walk) {
            if (walk.next == entry)
                walk.next = entry->next;
        });
    }
    static void leave(const HashTable* table) {
        forEach([table](Walk& walk) {
            if (walk.table == table)
                walk.table = nullptr;
        });
    }

    const HashTable* table;  // null once it is destroyed
    HashEntry* next;         // the entry to go on with, or null
};
// The first entry of `key` in its chain, or null.
inline Entry* find(HashTable& table, HashEntry** buckets, unsigned long key) {
    if (auto* index = headOf(buckets).index)
        return indexed(*index, key);
    return static_cast<Entry*>(table.searchBucketFor(buckets[table.hash(key)], key));
}
}  // namespace

HashTable::HashTable()
    : buckets(newBuckets(firstSize, Head{nullptr, 0, firstIndexFrom, 0, nullptr, nullptr})),
      count(0),
      size(firstSize),
      sizeLog2(firstSizeLog2) {}

HashTable::~HashTable() {
    Walk::leave(this);
    const Head& head = headOf(buckets);
    for (Entry* entry = head.oldest; entry;) {
        Entry* next = entry->younger;
        delete entry;
        entry = next;
    }
    std::free(head.index);
    freeBuckets(buckets);
}

HashEntry* HashTable::add(unsigned long key, void* value) {
    if (find(*this, buckets, key))
        std::abort();
    HashEntry* entry = addElement(key);
    entry->value = value;
    return entry;
}

HashEntry* HashTable::addElement(unsigned long key) {
    if (sizeLog2 < lastSizeLog2 && count >= mostPerBucket * size)
        rebuildTable();
    auto* entry =
        new (std::nothrow) Entry{{key, nullptr, nullptr, nullptr}, nullptr, nullptr, nullptr};
    if (!entry)
        std::abort();
    putFirst(buckets[hash(key)], entry);
    enter(headOf(buckets), entry);
    // Wraps around where a signed sum must not: entries may come and go for ever.
    count = static_cast<int>(static_cast<unsigned int>(count) + 1);
    return entry;
}

void HashTable::remove(unsigned long key) {
    Entry* entry = find(*this, buckets, key);
    if (!entry)
        return;
    if (entry->prev)
        entry->prev->next = entry->next;
    else
        buckets[hash(key)] = entry->next;
    if (entry->next)
        entry->next->prev = entry->prev;
    leave(headOf(buckets), entry);
    Walk::leave(entry);
    delete entry;
}

void* HashTable::lookup(unsigned long key) {
    const Entry* entry = find(*this, buckets, key);
    return entry ? entry->value : nullptr;
}

HashEntry* HashTable::searchBucketFor(HashEntry* chain, unsigned long key) {
    while (chain && chain->key != key)
        chain = chain->next;
    return chain;
}

void HashTable::mapcar(void (*fn)(HashEntry*)) {
    FX_CHECK_NOT_NULL("HashTable", fn);
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
    buckets = newBuckets(oldSize * 2, headOf(oldBuckets));
    size = static_cast<int>(oldSize * 2);
    ++sizeLog2;
    // The order of equal keys turns round, so the ages are given anew.
    Head& head = headOf(buckets);
    head.oldest = head.youngest = nullptr;
    for (unsigned int i = 0; i < oldSize; ++i) {
        HashEntry* entry = oldBuckets[i];
        while (entry) {
            HashEntry* next = entry->next;
            putFirst(buckets[hash(entry->key)], entry);
            appendByAge(head, static_cast<Entry*>(entry));
            entry = next;
        }
    }
    freeBuckets(oldBuckets);
    if (head.index)
        makeIndex(head);
}
