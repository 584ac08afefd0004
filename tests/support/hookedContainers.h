// hookedContainers.h - dictionaries and sets as small as a host's can be, whose operations can do
// something beside their work.
#pragma once

#include <cstring>
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/containers/fxSet.h"

namespace hooked {

/// What a host's operations do beside their work: called with the operation's
/// name and the number it works on.
using Hook = std::function<void(const std::string& operation, int number)>;

inline int numberAt(const void* p) {
    int number;
    std::memcpy(&number, p, sizeof number);
    return number;
}

/// From ints to ints. Keys that are made and ended, and values, are counted.
class IntDictionary : public fxDictionary {
public:
    using Iter = fxDictIter;
    explicit IntDictionary(unsigned int numBuckets)
        : fxDictionary(sizeof(int), sizeof(int), numBuckets) {}
    ~IntDictionary() override {
        hook = nullptr;
        cleanup();
    }
    using fxDictionary::operator=;

    const char* className() const override { return "IntDictionary"; }
    unsigned int hashKey(const void* key) const override {
        call("hashKey", key);
        return fxDictionary::hashKey(key);
    }
    int compareKeys(const void* a, const void* b) const override {
        call("compareKeys", a);
        return numberAt(a) != numberAt(b);
    }
    void copyKey(const void* from, void* to) const override {
        call("copyKey", from);
        std::memcpy(to, from, sizeof(int));
        ++keys;
    }
    void destroyKey(void* key) const override {
        call("destroyKey", key);
        --keys;
    }
    void copyValue(const void* from, void* to) const override {
        call("copyValue", from);
        std::memcpy(to, from, sizeof(int));
        ++values;
    }
    void destroyValue(void* value) const override {
        call("destroyValue", value);
        --values;
    }
    void createValue(void* value) const override {
        const int none = -1;
        call("createValue", &none);
        std::memcpy(value, &none, sizeof none);
        ++values;
    }
    unsigned char xdrKey(fxTranscriber&, void*) override { return 0; }
    unsigned char xdrValue(fxTranscriber&, void*) override { return 0; }

    void put(int key) { put(key, 10 * key); }
    fxDictBucket* put(int key, int value) { return addInternal(&key, &value); }
    void drop(int key) { remove(&key); }
    bool has(int key) const { return find(&key) != nullptr; }
    int valueAt(int key) const { return numberAt(find(&key)); }

    mutable int keys = 0;    // alive
    mutable int values = 0;  // alive
    Hook hook;

private:
    void call(const char* operation, const void* p) const {
        if (hook)
            hook(operation, numberAt(p));
    }
};

class IntSet : public fxSet {
public:
    using Iter = fxSetIter;
    explicit IntSet(unsigned int numBuckets) : fxSet(sizeof(int), numBuckets) {}
    ~IntSet() override {
        hook = nullptr;
        cleanup();
    }

    unsigned int hashKey(const void* key) const override {
        call("hashKey", key);
        return fxSet::hashKey(key);
    }
    int compareKeys(const void* a, const void* b) const override {
        call("compareKeys", a);
        return fxSet::compareKeys(a, b);
    }
    void copyKey(const void* from, void* to) const override {
        call("copyKey", from);
        fxSet::copyKey(from, to);
        ++keys;
    }
    void destroyKey(void* key) const override {
        call("destroyKey", key);
        --keys;
    }
    unsigned char xdrKey(fxTranscriber&, void*) override { return 0; }

    void put(int key) { add(&key); }
    void drop(int key) { remove(&key); }
    bool has(int key) const { return contains(&key) != 0; }

    mutable int keys = 0;  // alive
    Hook hook;

private:
    void call(const char* operation, const void* p) const {
        if (hook)
            hook(operation, numberAt(p));
    }
};

/// The keys in the order of a walk: "8 4 0 1".
template <class Container>
std::string walk(Container& c) {
    std::string keys;
    for (typename Container::Iter iter(c); iter.getKey(); ++iter)
        keys += (keys.empty() ? "" : " ") + std::to_string(numberAt(iter.getKey()));
    return keys;
}

/// Four buckets: 0: 12 8 4 0, 1: 1, 2: 2.
template <class Container>
void fill(Container& c) {
    for (int key : {0, 4, 8, 12, 1, 2})
        c.put(key);
}

template <class Container>
typename Container::Iter on(Container& c, int key) {
    typename Container::Iter iter(c);
    while (numberAt(iter.getKey()) != key)
        ++iter;
    return iter;
}

/// Runs `action` the first time that `operation` is called for `number`.
inline Hook once(const std::string& operation, int number, const std::function<void()>& action) {
    return [=, done = false](const std::string& called, int n) mutable {
        if (done || called != operation || n != number)
            return;
        done = true;
        action();
    };
}

/// Both, for TYPED_TEST_SUITE.
using Containers = testing::Types<IntDictionary, IntSet>;

}  // namespace hooked
