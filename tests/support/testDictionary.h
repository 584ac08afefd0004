// testDictionary.h - a dictionary that tells what was done to keys and values.
#pragma once

#include <cstring>
#include <string>

#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

/// Maps ints to ints, both of which it keeps in memory of their own: a key or
/// value is a pointer to an int, hashed by its number, so that key k is in
/// bucket k modulo the bucket count. A copy or an end too many or too few
/// shows in the counts, and to a memory checker. Each virtual call is noted in
/// a trace as "copyKey:7", separated by blanks.
class TestDictionary : public fxDictionary {
public:
    explicit TestDictionary(unsigned int numBuckets = 0)
        : fxDictionary(sizeof(int*), sizeof(int*), numBuckets) {}
    explicit TestDictionary(fxTypeObj& type) : fxDictionary(type) {
        keySize = valueSize = sizeof(int*);
    }
    TestDictionary(const TestDictionary& other) : fxDictionary(other) {}
    ~TestDictionary() override { cleanup(); }
    using fxDictionary::operator=;
    TestDictionary& operator=(const TestDictionary& other) {
        fxDictionary::operator=(other);
        return *this;
    }

    const char* className() const override { return "TestDictionary"; }
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
        fxDictionary::destroyKey(key);
    }
    void copyValue(const void* from, void* to) const override {
        note("copyValue:", from);
        *static_cast<int**>(to) = new int(number(from));
        ++values;
    }
    void destroyValue(void* value) const override {
        note("destroyValue:", value);
        delete *static_cast<int**>(value);
        --values;
        fxDictionary::destroyValue(value);
    }
    void createValue(void* value) const override {
        *static_cast<int**>(value) = new int(-1);
        note("createValue:", value);
        ++values;
    }
    unsigned char xdrKey(fxTranscriber& t, void* key) override {
        keyAddress = key;
        return xdrNumber(t, key, keys);
    }
    unsigned char xdrValue(fxTranscriber& t, void* value) override {
        valueAddress = value;
        return xdrNumber(t, value, values);
    }

    // The operations on ints.

    fxDictBucket* add(int key, int value) {
        const int *k = &key, *v = &value;
        return addInternal(&k, &v);
    }
    /// The value of `key`; null if there is none.
    int* at(int key) const {
        const int* k = &key;
        void* value = find(&k);
        return value ? *static_cast<int**>(value) : nullptr;
    }
    fxDictBucket* entry(int key) const {
        const int* k = &key;
        void* found = nullptr;
        find(&k, &found);
        return static_cast<fxDictBucket*>(found);
    }
    void drop(int key) {
        const int* k = &key;
        remove(&k);
    }

    /// The entries of each bucket that has any, in chain order.
    std::string contents() const {
        std::string text;
        for (unsigned int i = 0; i < buckets.length(); ++i) {
            if (!buckets[i])
                continue;
            text += (text.empty() ? "" : " ") + std::to_string(i) + ":";
            for (const fxDictBucket* b = buckets[i]; b; b = b->next)
                text += " " + std::to_string(number(b->kvmem)) + "=" +
                        std::to_string(number(valueOf(b)));
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

    using fxDictionary::buckets;
    using fxDictionary::iters;
    using fxDictionary::keySize;
    using fxDictionary::numItems;
    using fxDictionary::valueOf;
    using fxDictionary::valueSize;

    mutable int keys = 0;    // alive
    mutable int values = 0;  // alive
    bool noteComparisons = false;
    void (*onDestroyKey)(const TestDictionary&) = nullptr;
    void* keyAddress = nullptr;    // last transcribed
    void* valueAddress = nullptr;  // last transcribed

private:
    void note(const std::string& event, const void* p) const {
        if (!noteComparisons && event.compare(0, 8, "compare:") == 0)
            return;
        trace += (trace.empty() ? "" : " ") + event + std::to_string(number(p));
    }

    unsigned char xdrNumber(fxTranscriber& t, void* p, int& alive) {
        if (!t.isReading())
            return t.xdr(*static_cast<int**>(p), 1);
        int read = 0;
        if (!t.xdr(&read, 1))
            return 0;
        *static_cast<int**>(p) = new int(read);
        ++alive;
        return 1;
    }

    mutable std::string trace;
};

/// Keys are plain bytes of any number, hashed by the default body; values are
/// ints.
class ByteKeyDictionary : public fxDictionary {
public:
    explicit ByteKeyDictionary(unsigned int keyBytes) : fxDictionary(keyBytes, sizeof(int), 0) {}
    ~ByteKeyDictionary() override { cleanup(); }
    const char* className() const override { return "ByteKeyDictionary"; }
    unsigned int hashKey(const void* key) const override { return fxDictionary::hashKey(key); }
    int compareKeys(const void* a, const void* b) const override {
        return std::memcmp(a, b, keySize);
    }
    void copyKey(const void* from, void* to) const override { std::memcpy(to, from, keySize); }
    void copyValue(const void* from, void* to) const override {
        std::memcpy(to, from, sizeof(int));
    }
    void createValue(void* value) const override { std::memset(value, 0, sizeof(int)); }
    unsigned char xdrKey(fxTranscriber&, void*) override { return 0; }
    unsigned char xdrValue(fxTranscriber&, void*) override { return 0; }
    using fxDictionary::operator=;

    void add(const void* key, int value) { addInternal(key, &value); }
};
