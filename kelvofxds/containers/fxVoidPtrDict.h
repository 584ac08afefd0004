// fxVoidPtrDict.h - a dictionary from strings to pointers.
#pragma once

#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/str/fxStr.h"

/// Maps fxStr keys, owned copies, to pointers that it does not own. Keys are
/// hashed and compared as in fxStrStrDictionary.
/// Deliberate: it has no type record; xdr writes nothing and succeeds, and
/// xdrKey and xdrValue, which doxdr calls, fail.
class FX_EXPORT fxVoidPtrDict : public fxDictionary {
public:
    /// 0 buckets stands for 31.
    explicit fxVoidPtrDict(unsigned int numBuckets = 0);
    ~fxVoidPtrDict() override;
#ifdef KELVOFXDS_WARN_SURPRISES
    FX_SURPRISING(
        "a copy of a dictionary with entries ends the process; "
        "fxCopyInto(from, to) of <kelvofxds/std.h> copies one")
    fxVoidPtrDict(const fxVoidPtrDict&) = default;
    FX_SURPRISING(
        "assignment adds entries to those that are there; "
        "fxCopyInto(from, to) of <kelvofxds/std.h> makes a copy")
    fxVoidPtrDict& operator=(const fxVoidPtrDict&) = default;
#endif

    const char* className() const override;  ///< "DICT".
    unsigned int hashKey(const void* key) const override;
    int compareKeys(const void* a, const void* b) const override;
    void copyKey(const void* from, void* to) const override;
    void destroyKey(void* key) const override;
    void copyValue(const void* from, void* to) const override;
    void destroyValue(void* value) const override;
    void createValue(void* value) const override;
    unsigned char xdrKey(fxTranscriber& t, void* key) override;
    unsigned char xdrValue(fxTranscriber& t, void* value) override;

    using fxDictionary::operator=;
    using fxDictionary::find;
    using fxDictionary::findCreate;
    using fxDictionary::remove;

    /// Gives `key` the value, in place of an old one.
    void add(const fxStr& key, void* value) { addInternal(&key, &value); }
    /// Address of the pointer of `key`, or null if it has none.
    void** find(const fxStr& key) const { return static_cast<void**>(find(&key)); }
    void** find(const char* key) const { return find(fxStr(key)); }
    /// The pointer of `key`, a null one if there was none.
    void*& findCreate(const fxStr& key) { return *static_cast<void**>(findCreate(&key)); }
    void*& findCreate(const char* key) { return findCreate(fxStr(key)); }
    void remove(const fxStr& key) { remove(&key); }
    void remove(const char* key) { remove(fxStr(key)); }
};

/// Walks an fxVoidPtrDict; keys are fxStr, values void*.
class FX_EXPORT fxVoidPtrDictIter : public fxDictIter {
public:
    /// Attached to nothing.
    fxVoidPtrDictIter();
    /// On the first entry of `d`.
    explicit fxVoidPtrDictIter(fxVoidPtrDict& d);
    /// On the first entry of `*d`, which must not be null.
    explicit fxVoidPtrDictIter(fxVoidPtrDict* d);
    using fxDictIter::operator=;

    /// The present key, or null.
    const fxStr* key() const { return static_cast<const fxStr*>(getKey()); }
    /// Address of the present pointer, or null.
    void** value() const { return static_cast<void**>(getValue()); }
};
