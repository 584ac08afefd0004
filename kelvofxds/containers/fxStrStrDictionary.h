// fxStrStrDictionary.h - a dictionary from strings to strings.
#pragma once

#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/str/fxStr.h"

/// Maps fxStr keys to fxStr values, both owned copies, and can be transcribed
/// as "DICT". Keys are hashed by fxStr::hash() and compared by strcmp, so they
/// are alike when they are equal up to the first NUL and hash to one bucket.
class FX_EXPORT fxStrStrDictionary : public fxDictionary {
public:
    /// 0 buckets stands for 31.
    explicit fxStrStrDictionary(unsigned int numBuckets = 0);
    /// The form for newInstance.
    explicit fxStrStrDictionary(fxTypeObj& type);
    ~fxStrStrDictionary() override;
#ifdef KELVOFXDS_WARN_SURPRISES
    FX_SURPRISING(
        "a copy of a dictionary with entries ends the process; "
        "fxCopyInto(from, to) of <kelvofxds/std.h> copies one")
    fxStrStrDictionary(const fxStrStrDictionary&) = default;
    FX_SURPRISING(
        "assignment adds entries to those that are there; "
        "fxCopyInto(from, to) of <kelvofxds/std.h> makes a copy")
    fxStrStrDictionary& operator=(const fxStrStrDictionary&) = default;
#endif

    const char* className() const override;  ///< "DICT".
    unsigned char xdr(fxTranscriber& t) override;
    fxTypeObj& getTypeObj() const override;
    unsigned int hashKey(const void* key) const override;
    int compareKeys(const void* a, const void* b) const override;
    void copyKey(const void* from, void* to) const override;
    void destroyKey(void* key) const override;
    void copyValue(const void* from, void* to) const override;
    void destroyValue(void* value) const override;
    void createValue(void* value) const override;
    unsigned char xdrKey(fxTranscriber& t, void* key) override;
    unsigned char xdrValue(fxTranscriber& t, void* value) override;

    /// As fxDictionary's, but for streams that nobody vouches for: see
    /// doxdrOfSizes. A call of the base's leads to the same.
    unsigned char doxdr(fxTranscriber& t);

    /// An empty dictionary without buckets, owned by the caller; null where
    /// there is no memory.
    static void* newInstance(fxTypeObj& type);
    /// Deletes what newInstance made; null is ignored.
    static void deleteInstance(void* dictionary);
    /// doxdr, for the type record; a subclass's xdr is not reached.
    static unsigned char xdr(void* dictionary, fxTranscriber& t);

    using fxDictionary::operator=;
    using fxDictionary::find;
    using fxDictionary::findCreate;
    using fxDictionary::remove;

    /// Gives `key` the value, in place of an old one.
    void add(const fxStr& key, const fxStr& value) { addInternal(&key, &value); }
    /// The value of `key`, or null; valid until the entry is removed.
    fxStr* find(const fxStr& key) const { return static_cast<fxStr*>(find(&key)); }
    fxStr* find(const char* key) const { return find(fxStr(key)); }
    /// The value of `key`, an empty one if there was none.
    fxStr& findCreate(const fxStr& key) { return *static_cast<fxStr*>(findCreate(&key)); }
    fxStr& findCreate(const char* key) { return findCreate(fxStr(key)); }
    void remove(const fxStr& key) { remove(&key); }
    void remove(const char* key) { remove(fxStr(key)); }
};

/// Walks an fxStrStrDictionary; keys and values are fxStr.
class FX_EXPORT fxStrStrDictionaryIter : public fxDictIter {
public:
    /// Attached to nothing.
    fxStrStrDictionaryIter();
    /// On the first entry of `d`.
    explicit fxStrStrDictionaryIter(fxStrStrDictionary& d);
    /// On the first entry of `*d`, which must not be null.
    explicit fxStrStrDictionaryIter(fxStrStrDictionary* d);
    using fxDictIter::operator=;

    /// The present key, or null.
    const fxStr* key() const { return static_cast<const fxStr*>(getKey()); }
    /// The present value, or null.
    fxStr* value() const { return static_cast<fxStr*>(getValue()); }
};

/// The record of fxStrStrDictionary, "DICT", version 1.
extern FX_EXPORT fxTypeObj fxStrStrDictionary_type;
