// fxDictionary.h - the hashed map, its entries and its iterator.
#pragma once

#include "kelvofxds/containers/fxArrayFamily.h"

class fxDictIter;

/// One entry of a dictionary.
struct fxDictBucket {
    void* kvmem;         ///< A malloced block: the key, then the value at offset keySize.
    fxDictBucket* next;  ///< The next entry of the same bucket, or null.
};

/// The bucket heads of a dictionary; new ones are empty.
class FX_EXPORT fxDictBuckets : public fxArray {
    FX_ARRAY_MEMBERS(fxDictBuckets, fxDictBucket*)
    void createElements(void* at, unsigned int bytes) override;

    /// Replaces the block by one of `n` empty buckets whose memory is not
    /// touched. Returns false, with no bucket, when there is no such memory.
    bool makeEmptyBuckets(unsigned int n);

private:
    friend struct fxIndexing;

    mutable fxBesideBuckets beside;
};

/// The live iterators of a dictionary, in registration order.
class FX_EXPORT fxDictIters : public fxArray {
    FX_ARRAY_MEMBERS(fxDictIters, fxDictIter*)
    void createElements(void* at, unsigned int bytes) override;
};

/// A map from keys to values of fixed sizes, hashed into a fixed number of
/// buckets, each a singly linked chain with the newest entry first.
///
/// What keys and values mean is left to virtual operations of subclasses; a
/// key or value is passed by its address. The number of buckets is set by the
/// constructor and never changes, so a look-up is O(entries / buckets), unless
/// the class has an index for long chains: the library's own with strings or
/// words as keys have, and others may (equalKeysHashEqually). Iterators
/// (fxDictIter) register themselves and are moved on when their entry is
/// removed; they may outlive the dictionary.
/// A subclass's destructor calls cleanup() first, while its own destroyKey and
/// destroyValue can still be reached.
///
/// Those operations, but for hashKey and compareKeys, may change the dictionary:
/// an entry is out of its chain before its key and value end, and what an
/// operation still needs is kept up to date. They may not end it. What they
/// throw passes through and leaves the dictionary as it was before the step (but
/// see addInternal); a removal that has begun is gone through with. Running out
/// of memory is fatal, "out of memory"; while reading it is a failed read.
///
/// Separate dictionaries may be used in separate threads; one may not, not even
/// to look keys up.
class FX_EXPORT fxDictionary : public fxXDRObj {
public:
    /// `keySize` and `valueSize` are in bytes; a sum or a number of buckets that
    /// no memory can hold is fatal, "fxDictionary: size too large", here or
    /// when an entry is made. 0 buckets stands for 31.
    fxDictionary(unsigned int keySize, unsigned int valueSize, unsigned int numBuckets);
    /// Deliberate: only an empty dictionary can be copied. Hashing is still
    /// pure while the base is made, so copying an entry ends the process as a
    /// call of a pure virtual operation does.
    FX_SURPRISING(
        "a copy of a dictionary with entries ends the process; "
        "fxCopyInto(from, to) of <kelvofxds/std.h> copies one")
    fxDictionary(const fxDictionary& other);
    /// The form for newInstance: no buckets until doxdr has read their number.
    /// Without buckets nothing is found, and adding is fatal: "%s: no buckets",
    /// with the class's name.
    explicit fxDictionary(fxTypeObj& type);
    ~fxDictionary() override;

    /// Deliberate: assignment merges. Every entry of `other` is added; entries
    /// that are here already stay, and equal keys get the new value.
    FX_SURPRISING(
        "assignment adds entries to those that are there; "
        "fxCopyInto(from, to) of <kelvofxds/std.h> makes a copy")
    void operator=(const fxDictionary& other);

    const char* className() const override = 0;
    /// Makes the embedded-object call on itself, which transcribes nothing.
    unsigned char xdr(fxTranscriber& t) override;
    fxTypeObj& getTypeObj() const override;

    /// Gives `key` a copy of `value` and returns the entry. A key that is here
    /// already keeps its key object; its old value is destroyed first. If that
    /// removes the entry, the key is added anew, in front (null comes back if
    /// `key` or `value` was the entry's own). If copying the new value throws,
    /// the entry is removed, since the old one is gone.
    virtual fxDictBucket* addInternal(const void* key, const void* value);
    /// The hash of a key. The body here, for subclasses to call, is the
    /// exclusive or of the key's 32-bit words; 0 for keys under 4 bytes.
    virtual unsigned int hashKey(const void* key) const = 0;
    /// 0 when the keys are equal.
    virtual int compareKeys(const void* a, const void* b) const = 0;
    /// Makes a copy of a key in memory that holds none.
    virtual void copyKey(const void* from, void* to) const = 0;
    virtual void destroyKey(void* key) const;
    /// Makes a copy of a value in memory that holds none.
    virtual void copyValue(const void* from, void* to) const = 0;
    virtual void destroyValue(void* value) const;
    /// Makes a default value in memory that holds none.
    virtual void createValue(void* value) const = 0;
    /// Transcribes a key; while reading, into memory that holds none. Returns
    /// 1 on success.
    virtual unsigned char xdrKey(fxTranscriber& t, void* key) = 0;
    /// The same for a value.
    virtual unsigned char xdrValue(fxTranscriber& t, void* value) = 0;

    /// The embedded-object call, for the type record; a subclass's xdr is not
    /// reached.
    static unsigned char xdr(void* object, fxTranscriber& t);

    /// Address of the value of `key`, or null; valid until the entry is
    /// removed. `bucketOut`, unless null, receives the entry, or null.
    void* find(const void* key, void** bucketOut = nullptr) const;
    /// The same, but a key that is absent is added with a default value.
    void* findCreate(const void* key);
    /// Removes the entry of `key`, if there is one.
    void remove(const void* key);
    /// Removes the entry of `key` and returns its value, byte for byte, in a
    /// malloced block that the caller owns; null when there is none. The value
    /// is not destroyed, the key is.
    void* cut(const void* key);

    /// Releases all entries and detaches all iterators.
    /// Deliberate: numItems keeps its value, and the array of iterators its
    /// length.
    void cleanup();

    /// Registers an iterator; one that is registered already is left alone.
    void addIter(fxDictIter* iter);
    /// Deregisters an iterator; an unknown one is ignored.
    void removeIter(fxDictIter* iter);
    /// Moves every iterator off `b`, which has been unlinked but not freed.
    void invalidateIters(const fxDictBucket* b) const;

    /// Transcribes sizes, bucket count and every entry with its bucket's
    /// index. Returns 1 on success. A read entry lands in the bucket the stream
    /// names, each chain in reverse order. The stream's sizes and number of
    /// entries are taken as they come (doxdrOfSizes does not trust them); what
    /// is refused is a sum of sizes, a block or a number of buckets that no
    /// memory can hold, and a bucket that does not exist. A failed read leaves
    /// the entries read so far, and the stream's number of them.
    /// Deliberate: reading replaces what the dictionary holds, whatever the
    /// number of buckets.
    unsigned char doxdr(fxTranscriber& t);

    /// Number of entries.
    unsigned int length() const { return numItems; }
    /// Number of buckets.
    unsigned int getNumBuckets() const { return bucketCount(); }

protected:
    friend class fxDictIter;
    friend struct fxIndexing;
    friend struct fxChains;
    friend struct fxChainedIters;
    friend struct fxChainedTranscription;
    friend struct fxDictionaryLayout;  // tests/containers/fxDictionary_test.cpp

    /// For the constructors of a class: promises that keys that compare equal
    /// have equal hashKey, that neither operation does anything but look, and
    /// that nobody but the library changes the chains. Long chains then get a
    /// private index, by hashKey, and a look-up does not walk them; what it finds
    /// stays the same, only compareKeys is asked less often and hashKey more.
    /// A class derived from this one promises for itself, or walks. Without
    /// effect once there are entries.
    void equalKeysHashEqually();
    /// Number of buckets.
    unsigned int bucketCount() const {
        return buckets.getLen() / static_cast<unsigned int>(sizeof(void*));
    }
    /// Address of the value of an entry.
    void* valueOf(const fxDictBucket* b) const { return static_cast<char*>(b->kvmem) + keySize; }
    /// doxdr for a class that knows the sizes of its keys and values, in bytes,
    /// and reads what nobody vouches for. Reading also fails where the stream's
    /// sizes are smaller, would put values where no pointer may lie, or make
    /// the entries together over 16 KB larger (32 bytes a key or value not counted).
    unsigned char doxdrOfSizes(fxTranscriber& t, unsigned int keyBytes, unsigned int valueBytes);
    /// Frees an entry that has been unlinked, and its block.
    void release(fxDictBucket* b);

    unsigned int numItems;   // entries
    unsigned int keySize;    // bytes
    unsigned int valueSize;  // bytes
    fxDictBuckets buckets;   // chain heads
    fxDictIters iters;       // registered iterators; null where one was detached

private:
    fxDictBucket* addAgain(const void* key, const void* value, const void* gone);
    void removeEntry(fxDictBucket* b, unsigned int bucketIndex);
    void parkIters(const fxDictBucket* b) const;

    struct Going;
};

/// Walks the entries of a dictionary, bucket by bucket, chain order.
///
/// At the end, and for an empty dictionary at once, getKey() and getValue()
/// are null. When its entry is removed the iterator moves on to the next one
/// at once and the following ++ stays there, so that no entry is skipped; in
/// between getKey() and getValue() are null. An iterator is registered with
/// its dictionary while it is attached; it need not be destroyed first.
class FX_EXPORT fxDictIter {
public:
    /// Attached to nothing.
    fxDictIter();
    /// On the first entry of `d`.
    explicit fxDictIter(fxDictionary& d);
    fxDictIter(const fxDictIter& other);
    ~fxDictIter();

    /// Detaches from the present dictionary and starts on `d`.
    void operator=(fxDictionary& d);
    fxDictIter& operator=(const fxDictIter& other);

    /// Address of the present entry's key, or null.
    FX_EXPORT void* getKey() const { return atEntry() ? bucket->kvmem : nullptr; }
    /// Address of the present entry's value, or null.
    FX_EXPORT void* getValue() const { return atEntry() ? dict->valueOf(bucket) : nullptr; }
    /// Moves to the next entry.
    FX_EXPORT void operator++() {
        if (dict && flags == 0 && bucket->next)
            bucket = bucket->next;
        else
            step();
    }
    /// Moves to the first entry of the next bucket that has one, or ends.
    void advanceToValid();

protected:
    friend class fxDictionary;
    friend struct fxChainedIters;
    friend struct fxDictionaryLayout;  // tests/containers/fxDictionary_test.cpp

    static const unsigned int advanced = 1;  // already on the next entry, or at the end
    static const unsigned int parked = 2;    // on an entry that has been removed
    static const unsigned int follows = 4;   // never parks, but moves on again: loops of std.h

    /// Whether there is a present entry.
    bool atEntry() const { return !(flags & advanced) && bucket; }
    /// What ++ does where it is not just a move along a chain.
    void step();

    fxDictionary* dict;        // not owned; null when unattached or at the end
    unsigned int bucketIndex;  // of the present bucket
    unsigned int flags;        // advanced, parked
    fxDictBucket* bucket;      // the present entry
};

/// The record of fxDictionary, "fxDictionary", version 1; abstract.
extern FX_EXPORT fxTypeObj fxDictionary_type;
