// testSet.h - a set that tells what was done to its keys.
#pragma once

#include <string>

#include "kelvofxds/containers/fxSet.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

/// A set of ints that it keeps in memory of their own: a key is a pointer to
/// an int, hashed by its number, so that key k is in bucket k modulo the bucket
/// count. A copy or an end too many or too few shows in the count, and to a
/// memory checker. Each virtual call is noted in a trace as "copyKey:7",
/// separated by blanks.
class TestSet : public fxSet {
public:
    explicit TestSet(unsigned int numBuckets = 0) : fxSet(sizeof(int*), numBuckets) {}
    explicit TestSet(fxTypeObj& type) : fxSet(type) { keySize = sizeof(int*); }
    TestSet(const TestSet& other) : fxSet(other) {}
    ~TestSet() override { cleanup(); }
    TestSet& operator=(const TestSet& other) {
        fxSet::operator=(other);
        return *this;
    }

    unsigned int hashKey(const void* key) const override {
        return static_cast<unsigned int>(number(key));
    }
    int compareKeys(const void* a, const void* b) const override {
        note("compare:" + std::to_string(number(a)) + ",", b);
        return number(a) - number(b);
    }
    void copyKey(const void* from, void* to) const override {
        note("copyKey:", from);
        *static_cast<int**>(to) = new int(number(from));
        ++keys;
    }
    void destroyKey(void* key) const override {
        note("destroyKey:", key);
        if (onDestroyKey)
            onDestroyKey(*this);
        delete *static_cast<int**>(key);
        --keys;
        fxSet::destroyKey(key);
    }
    unsigned char xdrKey(fxTranscriber& t, void* key) override {
        keyAddress = key;
        if (!t.isReading())
            return t.xdr(*static_cast<int**>(key), 1);
        int read = 0;
        if (!t.xdr(&read, 1))
            return 0;
        *static_cast<int**>(key) = new int(read);
        ++keys;
        return 1;
    }

    // The operations on ints.

    fxSetBucket* put(int key) {
        const int* k = &key;
        return add(&k);
    }
    bool has(int key) const {
        const int* k = &key;
        return contains(&k) != 0;
    }
    /// The set's own copy of `key`; null if there is none.
    int* at(int key) const {
        const int* k = &key;
        void* found = find(&k);
        return found ? *static_cast<int**>(found) : nullptr;
    }
    /// The entry of `key`, which is in its bucket.
    fxSetBucket* entry(int key) const {
        fxSetBucket* b = buckets[static_cast<unsigned int>(key) % buckets.length()];
        while (number(b->key) != key)
            b = b->next;
        return b;
    }
    void drop(int key) {
        const int* k = &key;
        remove(&k);
    }

    /// The keys of each bucket that has any, in chain order.
    std::string contents() const {
        std::string text;
        for (unsigned int i = 0; i < buckets.length(); ++i) {
            if (!buckets[i])
                continue;
            text += (text.empty() ? "" : " ") + std::to_string(i) + ":";
            for (const fxSetBucket* b = buckets[i]; b; b = b->next)
                text += " " + std::to_string(number(b->key));
        }
        return text;
    }

    /// What was noted since the last call; comparisons only if asked for.
    std::string taken() const {
        std::string result;
        result.swap(trace);
        return result;
    }

    static int number(const void* p) { return **static_cast<int* const*>(p); }

    using fxSet::buckets;
    using fxSet::iters;
    using fxSet::keySize;
    using fxSet::numItems;

    mutable int keys = 0;  // alive
    bool noteComparisons = false;
    void (*onDestroyKey)(const TestSet&) = nullptr;
    void* keyAddress = nullptr;  // last transcribed

private:
    void note(const std::string& event, const void* p) const {
        if (!noteComparisons && event.compare(0, 8, "compare:") == 0)
            return;
        trace += (trace.empty() ? "" : " ") + event + std::to_string(number(p));
    }

    mutable std::string trace;
};

/// Plain records of any size: all that a set of them has to bring.
class RecordSet : public fxSet {
public:
    explicit RecordSet(unsigned int keyBytes, unsigned int numBuckets = 0)
        : fxSet(keyBytes, numBuckets) {}
    ~RecordSet() override { cleanup(); }
    unsigned char xdrKey(fxTranscriber& t, void* key) override {
        return t.xdr(static_cast<char*>(key), keySize);
    }
};
