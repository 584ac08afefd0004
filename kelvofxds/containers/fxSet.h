// fxSet.h - the hashed set, its entries, its iterator and its temporary.
#pragma once

#include "kelvofxds/containers/fxArrayFamily.h"

class fxSetIter;
class fxTmpSet;

/// One entry of a set.
struct fxSetBucket {
    void* key;          ///< A malloced block of keySize bytes.
    fxSetBucket* next;  ///< The next entry of the same bucket, or null.
};

/// The bucket heads of a set; new ones are empty.
class FX_EXPORT fxSetBuckets : public fxArray {
    FX_ARRAY_MEMBERS(fxSetBuckets, fxSetBucket*)
    void createElements(void* at, unsigned int bytes) override;

    /// Replaces the block by one of `n` empty buckets whose memory is not
    /// touched. Returns false, with no bucket, when there is no such memory.
    bool makeEmptyBuckets(unsigned int n);

private:
    friend struct fxIndexing;

    mutable fxBesideBuckets beside;
};

/// The live iterators of a set, in registration order.
class FX_EXPORT fxSetIters : public fxArray {
    FX_ARRAY_MEMBERS(fxSetIters, fxSetIter*)
    void createElements(void* at, unsigned int bytes) override;
};

/// A set of keys of one fixed size, hashed into a fixed number of buckets,
/// each a singly linked chain with the newest key first.
///
/// What keys mean is left to virtual operations, whose defaults suit plain
/// records: such a set only adds xdrKey. A key is passed by its address. The
/// number of buckets is set by the constructor and never changes, so a look-up
/// is O(keys / buckets), unless the class has an index; fxStrSet has, others may
/// (equalKeysHashEqually). fxDictionary is the better choice when something
/// belongs to each key. Iterators (fxSetIter) register themselves and are moved
/// on when their key is removed; they may outlive the set. A subclass's
/// destructor calls cleanup() first, while its own destroyKey can still be
/// reached.
///
/// Those operations, but for hashKey and compareKeys, may change the set: an
/// entry is out of its chain before its key ends, and what an operation still
/// needs is kept up to date. They may not end it. What they throw passes through
/// and leaves the set as it was before the step; a removal that has begun is gone
/// through with. Running out of memory is fatal, "out of memory"; while reading
/// it is a failed read.
///
/// Separate sets may be used in separate threads; one may not, not even to look
/// keys up.
class FX_EXPORT fxSet : public fxXDRObj {
public:
    /// `keySize` is in bytes. 0 buckets stands for 31; more than memory can hold
    /// are fatal, "fxSet: size too large".
    fxSet(unsigned int keySize, unsigned int numBuckets);
    /// A set without buckets whose key size is 0.
    /// Deliberate: only an empty set can be copied. There is no bucket to put a
    /// key into, so copying one ends in a division by zero (SIGFPE).
    FX_SURPRISING(
        "a copy of a set with keys ends the process; "
        "fxCopyInto(from, to) of <kelvofxds/std.h> copies one")
    fxSet(const fxSet& other);
    fxSet(const fxTmpSet& other);
    /// The form for newInstance: no buckets until doxdr has read their number.
    /// Without buckets nothing is found, and adding is fatal: "%s: no buckets",
    /// with the class's name.
    explicit fxSet(fxTypeObj& type);
    ~fxSet() override;

    /// Drops all keys and detaches all iterators; assignment to itself does
    /// nothing. A source that holds a key is fatal:
    /// "fxSet::operator=: not usable on a non-empty set".
    /// Deliberate: the entries dropped are not released, nor their keys ended.
    FX_SURPRISING(
        "assignment of a set with keys ends the process, and that of an empty one frees "
        "nothing; fxCopyInto(from, to) of <kelvofxds/std.h> makes a copy")
    fxSet& operator=(const fxSet& other);

    /// Makes the embedded-object call on itself, which transcribes nothing.
    unsigned char xdr(fxTranscriber& t) override;
    fxTypeObj& getTypeObj() const override;

    /// The hash of a key; here the exclusive or of its 32-bit words, 0 for keys
    /// under 4 bytes.
    virtual unsigned int hashKey(const void* key) const;
    /// 0 when the keys are equal. Here -1, 0 or 1, by the first byte that
    /// differs, unsigned.
    virtual int compareKeys(const void* a, const void* b) const;
    /// Makes a copy of a key in memory that holds none; here byte for byte.
    virtual void copyKey(const void* from, void* to) const;
    /// Ends a key; here nothing.
    virtual void destroyKey(void* key) const;
    /// Transcribes a key; while reading, into memory that holds none. Returns
    /// 1 on success.
    virtual unsigned char xdrKey(fxTranscriber& t, void* key) = 0;

    /// The embedded-object call, for the type record; a subclass's xdr is not
    /// reached.
    static unsigned char xdr(void* object, fxTranscriber& t);

    /// 1 when `key` is in the set, else 0.
    unsigned char contains(const void* key) const;
    /// Address of the set's own copy of `key`, or null; valid until the key is
    /// removed.
    void* find(const void* key) const;
    /// Adds a copy of `key` and returns its entry; null when the key is here
    /// already, and nothing changes then.
    fxSetBucket* add(const void* key);
    /// Removes `key`, if it is here.
    void remove(const void* key);

    /// Releases all entries, moving iterators on as remove does, then detaches
    /// all iterators.
    /// Deliberate: an iterator's flags are left as they are.
    void cleanup();

    /// Registers an iterator; one that is registered already is left alone.
    void addIter(fxSetIter* iter);
    /// Deregisters an iterator; an unknown one is ignored.
    void removeIter(fxSetIter* iter);
    /// Moves every iterator off `b`, which has been unlinked but not freed.
    void invalidateIters(const fxSetBucket* b) const;

    /// Adds every key of `other`, which may be this set.
    fxSet& operator|=(const fxSet& other);
    /// Removes every key that `other` does not contain.
    fxSet& operator&=(const fxSet& other);
    /// Removes every key of `other`, which may be this set.
    fxSet& operator-=(const fxSet& other);

    /// Deliberate: the three operators that would return a set are not
    /// implemented. Each writes "Unimplemented operator overloading is called!
    ///  fxTmpSet operator|(fxSet const &)", with its own sign, as one line to
    /// standard output, flushes it and aborts (SIGABRT).
    FX_SURPRISING("operator| of sets ends the process; use operator|=")
    fxTmpSet operator|(const fxSet& other);
    FX_SURPRISING("operator& of sets ends the process; use operator&=")
    fxTmpSet operator&(const fxSet& other);
    FX_SURPRISING("operator- of sets ends the process; use operator-=")
    fxTmpSet operator-(const fxSet& other);

    /// Transcribes size, bucket count and every key with its bucket's index.
    /// Returns 1 on success. A key read lands in the bucket the stream names,
    /// each chain in reverse order. The stream's size and number of keys are
    /// taken as they come (doxdrOfSize does not trust them); what is refused is
    /// a block or a number of buckets that no memory can hold, and a bucket
    /// that does not exist. A failed read leaves the keys read so far, and the
    /// stream's number of them.
    /// Deliberate: reading replaces what the set holds, whatever the number of
    /// buckets.
    unsigned char doxdr(fxTranscriber& t);

    /// Number of keys.
    unsigned int length() const { return numItems; }
    /// Number of buckets.
    unsigned int getNumBuckets() const { return bucketCount(); }

protected:
    friend class fxSetIter;
    friend struct fxIndexing;
    friend struct fxChains;
    friend struct fxChainedIters;
    friend struct fxChainedTranscription;
    friend struct fxSetLayout;  // tests/containers/fxSet_test.cpp

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
    /// doxdr for a class that knows the size of its keys, in bytes, and reads
    /// what nobody vouches for. Reading also fails where the stream's size is
    /// smaller or makes the keys together over 16 KB larger (32 bytes a key not
    /// counted).
    unsigned char doxdrOfSize(fxTranscriber& t, unsigned int keyBytes);

    fxSetBuckets buckets;   // chain heads
    unsigned int numItems;  // keys
    unsigned int keySize;   // bytes
    fxSetIters iters;       // registered iterators; null where one was detached

private:
    void copyKeys(const fxSet& other) const;
    void endEntry(fxSetBucket* b);

    struct Going;
};

/// What the operators that return a set were to return. Keys are plain bytes,
/// of no size.
/// Deliberate: it cannot be transcribed.
class FX_EXPORT fxTmpSet : public fxSet {
public:
    /// The copy of an empty set; see fxSet.
    fxTmpSet(const fxSet& other);
    ~fxTmpSet() override;

    /// Returns 0.
    unsigned char xdrKey(fxTranscriber& t, void* key) override;
};

/// Walks the keys of a set, bucket by bucket, chain order.
///
/// At the end, and for an empty set at once, getKey() is null. When its key is
/// removed the iterator moves on to the next one at once and the following ++
/// stays there, so that no key is skipped; in between getKey() is null. An
/// iterator is registered with its set while it is attached; it need not be
/// destroyed first.
class FX_EXPORT fxSetIter {
public:
    /// Attached to nothing.
    fxSetIter();
    /// On the first key of `s`.
    explicit fxSetIter(fxSet& s);
    fxSetIter(const fxSetIter& other);
    virtual ~fxSetIter();

    /// Detaches from the present set and starts on `s`.
    void operator=(fxSet& s);
    fxSetIter& operator=(const fxSetIter& other);

    /// Address of the present key, or null.
    FX_EXPORT void* getKey() const { return !(flags & advanced) && bucket ? bucket->key : nullptr; }
    /// Moves to the next key.
    FX_EXPORT void operator++() {
        if (set && flags == 0 && bucket->next)
            bucket = bucket->next;
        else
            step();
    }
    /// Moves to the first key of the next bucket that has one, or ends.
    void advanceToValid();

protected:
    friend class fxSet;
    friend struct fxChainedIters;
    friend struct fxSetLayout;  // tests/containers/fxSet_test.cpp

    static const unsigned int advanced = 1;  // already on the next key, or at the end
    static const unsigned int parked = 2;    // on an entry that has been removed
    static const unsigned int follows = 4;   // never parks, but moves on again: loops of std.h

    /// What ++ does where it is not just a move along a chain.
    void step();

    fxSet* set;                // not owned; null when unattached or at the end
    unsigned int bucketIndex;  // of the present bucket
    unsigned int flags;        // advanced, parked
    fxSetBucket* bucket;       // the present entry
};

/// The record of fxSet, "fxSet", version 1; abstract.
extern FX_EXPORT fxTypeObj fxSet_type;
