// fxBinaryOTDict.h - the object table of the binary transcribers.
#pragma once

#include "kelvofxds/containers/fxDictionary.h"

/// Maps 32-bit words to 32-bit words: addresses to record numbers while
/// writing, record numbers to addresses while reading.
class FX_EXPORT fxBinaryOTDict : public fxDictionary {
public:
    /// 0 buckets stands for 31.
    explicit fxBinaryOTDict(unsigned int numBuckets = 0);
    ~fxBinaryOTDict() override;

    const char* className() const override;  ///< "DICT".
    /// The word shifted right by 2: addresses are multiples of 4.
    unsigned int hashKey(const void* key) const override;
    /// First word minus second word.
    int compareKeys(const void* a, const void* b) const override;
    void copyKey(const void* from, void* to) const override;
    void destroyKey(void* key) const override;
    void copyValue(const void* from, void* to) const override;
    void destroyValue(void* value) const override;
    void createValue(void* value) const override;  ///< 0.
    /// Returns 0: the table is never transcribed itself.
    unsigned char xdrKey(fxTranscriber& t, void* key) override;
    unsigned char xdrValue(fxTranscriber& t, void* value) override;

    using fxDictionary::operator=;

    /// Adds an entry for a key that is known to have none, in front of its
    /// bucket; O(1). False when there is no memory for it.
    bool addNew(unsigned int key, unsigned int value);
    /// Removes every entry; iterators come to their end.
    void removeAll();
};

/// Walks an fxBinaryOTDict.
class FX_EXPORT fxBinaryOTDictIter : public fxDictIter {
public:
    /// Attached to nothing.
    fxBinaryOTDictIter();
    /// On the first entry of `d`.
    explicit fxBinaryOTDictIter(fxBinaryOTDict& d);
    /// On the first entry of `*d`, which must not be null.
    explicit fxBinaryOTDictIter(fxBinaryOTDict* d);
    using fxDictIter::operator=;
};
