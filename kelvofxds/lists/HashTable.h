// HashTable.h - a table from unsigned integers to pointers.
#pragma once

#include "kelvofxds/core/fxExport.h"

/// One entry of a HashTable, which allocates and owns it. The table has more
/// than these fields to keep right: hosts read the links and set values.
struct HashEntry {
    unsigned long key;  ///< Not to be changed while the entry is in a table.
    void* value;        ///< Not owned.
    HashEntry* next;    ///< The next entry of the same bucket, or null. Only the table sets it.
    HashEntry* prev;    ///< The one before it, or null. Only the table sets it.
};

/// A map from unsigned integers to untyped pointers, hashed into chains.
///
/// Ownership: entries belong to the table, values do not; an entry is valid
/// until it is removed.
/// Complexity: adding, removing and looking up take constant time on the
/// average, whatever the keys: as soon as there are 64 entries, a private index
/// finds them by the whole key. Where there is no memory for the index, a look-up
/// takes as many steps as its bucket has entries. The buckets are the order of
/// mapcar; their number grows from 64 to 2048 and no further.
/// Invariant: an entry is in the bucket that hash gives for its key.
///
/// Deliberate: only the low 20 bits of a key take part in hashing; keys that
/// differ in the others alone share a bucket at every size.
///
/// Misuse and running out of memory call abort(), without a message.
class FX_EXPORT HashTable {
public:
    /// 64 empty buckets.
    HashTable();
    HashTable(const HashTable&) = delete;
    HashTable& operator=(const HashTable&) = delete;
    /// Releases all entries; the values are left alone.
    ~HashTable();

    /// Gives `key` the value and returns the entry. A key that is here already
    /// is misuse.
    HashEntry* add(unsigned long key, void* value);
    /// Puts an entry for `key`, with a null value, before the others of its
    /// bucket and returns it, after doubling the table if that is due: when as
    /// many entries have been added as 4 times the number of buckets. Constant
    /// time otherwise.
    /// Deliberate: it does not look whether `key` is here already; look-ups then
    /// find the newest entry, and removing that brings the older one back.
    HashEntry* addElement(unsigned long key);
    /// Removes the entry of `key`, if there is one.
    /// Deliberate: the count is not lowered. It counts additions, and the table
    /// grows by it.
    void remove(unsigned long key);

    /// The value of `key`; null if there is none.
    void* lookup(unsigned long key);
    /// The first entry of `chain` and behind it that has `key`, or null.
    HashEntry* searchBucketFor(HashEntry* chain, unsigned long key);
    /// Calls `fn` for every entry, bucket by bucket, each from its head. `fn` may
    /// remove entries, which are then not visited any more, and destroy the
    /// table, which ends the walk. It may add entries too, but those may be
    /// visited or not, and where they double the table others may be visited
    /// twice or not at all.
    /// Requires: `fn` is not null.
    void mapcar(void (*fn)(HashEntry*));

    /// The bucket of `key`, 0 to the number of buckets less 1.
    unsigned int hash(unsigned long key);
    /// Doubles the number of buckets.
    /// Deliberate: entries that stay together come out in reverse order. Tables
    /// of more than 2048 buckets, which only this makes, use bucket 0 alone.
    void rebuildTable();

    /// Number of entries added so far.
    int getCount() const { return count; }
    /// Number of buckets.
    int getSize() const { return size; }

private:
    friend struct HashTableLayout;  // tests/lists/HashTable_test.cpp

    HashEntry** buckets;  // `size` chains, owned
    int count;            // entries added
    int size;             // buckets
    int sizeLog2;         // its logarithm
};
