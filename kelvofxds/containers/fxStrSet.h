// fxStrSet.h - a set of strings.
#pragma once

#include "kelvofxds/containers/fxSet.h"
#include "kelvofxds/str/fxStr.h"

/// Holds fxStr keys, owned copies, and can be transcribed as "SET". Keys are
/// hashed by fxStr::hash() and compared by strcmp, so they are alike when they
/// are equal up to the first NUL and hash to one bucket.
class FX_EXPORT fxStrSet : public fxSet {
public:
    /// 0 buckets stands for 31.
    explicit fxStrSet(unsigned int numBuckets = 0);
    /// The form for newInstance.
    explicit fxStrSet(fxTypeObj& type);
    /// The copy of an empty set; see fxSet.
    FX_SURPRISING(
        "a copy of a set with keys ends the process; "
        "fxCopyInto(from, to) of <kelvofxds/std.h> copies one")
    fxStrSet(const fxStrSet& other);
    FX_SURPRISING(
        "assignment of a set with keys ends the process, and that of an empty one frees "
        "nothing; fxCopyInto(from, to) of <kelvofxds/std.h> makes a copy")
    fxStrSet& operator=(const fxStrSet&) = default;
    ~fxStrSet() override;

    unsigned char xdr(fxTranscriber& t) override;
    fxTypeObj& getTypeObj() const override;
    unsigned int hashKey(const void* key) const override;
    int compareKeys(const void* a, const void* b) const override;
    void copyKey(const void* from, void* to) const override;
    void destroyKey(void* key) const override;
    unsigned char xdrKey(fxTranscriber& t, void* key) override;

    /// As fxSet's, but for streams that nobody vouches for: see doxdrOfSize. A
    /// call of the base's leads to the same.
    unsigned char doxdr(fxTranscriber& t);

    /// An empty set without buckets, owned by the caller; null where there is
    /// no memory.
    static void* newInstance(fxTypeObj& type);
    /// Deletes what newInstance made; null is ignored.
    static void deleteInstance(void* set);
    /// doxdr, for the type record; a subclass's xdr is not reached.
    static unsigned char xdr(void* set, fxTranscriber& t);

    using fxSet::operator=;
    using fxSet::add;
    using fxSet::contains;
    using fxSet::find;
    using fxSet::remove;

    /// Adds `key` and returns its entry; null when it is here already.
    fxSetBucket* add(const fxStr& key) { return add(&key); }
    fxSetBucket* add(const char* key) { return add(fxStr(key)); }
    /// 1 when `key` is in the set, else 0.
    unsigned char contains(const fxStr& key) const { return contains(&key); }
    unsigned char contains(const char* key) const { return contains(fxStr(key)); }
    /// The set's own copy of `key`, or null; valid until the key is removed.
    const fxStr* find(const fxStr& key) const { return static_cast<const fxStr*>(find(&key)); }
    const fxStr* find(const char* key) const { return find(fxStr(key)); }
    void remove(const fxStr& key) { remove(&key); }
    void remove(const char* key) { remove(fxStr(key)); }
};

/// Walks an fxStrSet; keys are fxStr.
class FX_EXPORT fxStrSetIter : public fxSetIter {
public:
    /// Attached to nothing.
    fxStrSetIter();
    /// On the first key of `s`.
    explicit fxStrSetIter(fxStrSet& s);
    /// On the first key of `*s`, which must not be null.
    explicit fxStrSetIter(fxStrSet* s);
    ~fxStrSetIter() override;
    fxStrSetIter(const fxStrSetIter&) = default;
    fxStrSetIter& operator=(const fxStrSetIter&) = default;
    using fxSetIter::operator=;

    /// The present key, or null.
    const fxStr* key() const { return static_cast<const fxStr*>(getKey()); }
};

/// The record of fxStrSet, "SET", version 1.
extern FX_EXPORT fxTypeObj fxStrSet_type;
