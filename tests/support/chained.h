// chained.h - dictionaries and sets behind one face, for suites that run on both.
#pragma once

#include <cstdlib>
#include <initializer_list>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/recordingTranscriber.h"
#include "tests/support/testDictionary.h"
#include "tests/support/testSet.h"

/// A dictionary of ints in which the value of key k is 10 k.
class ChainedDictionary : public TestDictionary {
public:
    using Base = fxDictionary;
    using BaseIter = fxDictIter;
    using Bucket = fxDictBucket;
    using Plain = ByteKeyDictionary;
    using TestDictionary::TestDictionary;

    class Iter;

    static fxTypeObj& type() { return fxDictionary_type; }

    Bucket* put(int key) { return add(key, 10 * key); }
    bool has(int key) const { return at(key) != nullptr; }
    static const void* blockOf(const Bucket* b) { return b->kvmem; }
    /// The number of the key in an entry, whose value must be that key's.
    int numberIn(const Bucket* b) const {
        EXPECT_EQ(10 * number(b->kvmem), number(valueOf(b)));
        return number(b->kvmem);
    }

    /// What is noted when keys are added and removed.
    static std::string added(std::initializer_list<int> keys) {
        return noted(keys, "copyKey:", "copyValue:");
    }
    static std::string ended(std::initializer_list<int> keys) {
        return noted(keys, "destroyKey:", "destroyValue:");
    }

    // Streams.

    static std::string headCalls() { return "uint*:1 uint*:1 uint*:1 uint*:1"; }
    static std::string entryCalls() { return "int*:1 int*:1 uint*:1"; }
    static std::string head(unsigned int items, unsigned int size, unsigned int numBuckets) {
        RecordingTranscriber t(RecordingTranscriber::reader);
        t.give(items).give(size).give(size).give(numBuckets);
        return t.bytes;
    }
    static std::string entryBytes(int key, unsigned int bucket) {
        RecordingTranscriber t(RecordingTranscriber::reader);
        t.give(key).give(10 * key).give(bucket);
        return t.bytes;
    }
    /// The head of a stream whose entries are blocks of that many bytes.
    static std::string headOfBlocks(unsigned int items, unsigned int block,
                                    unsigned int numBuckets) {
        RecordingTranscriber t(RecordingTranscriber::reader);
        t.give(items).give(block - 4).give(4u).give(numBuckets);
        return t.bytes;
    }
    void setSizes(unsigned int size) { keySize = valueSize = size; }
    /// Frees the entry at which a read failed after `made` of its numbers.
    void freeUnfinished(unsigned int made) const {
        if (made > 0)
            delete *static_cast<int**>(keyAddress);
        if (made > 1)
            delete *static_cast<int**>(valueAddress);
        std::free(keyAddress);
    }

private:
    static std::string noted(std::initializer_list<int> keys, const char* key, const char* value) {
        std::string text;
        for (int k : keys)
            text += (text.empty() ? "" : " ") + (key + std::to_string(k)) + " " + value +
                    std::to_string(10 * k);
        return text;
    }
};

/// A set of ints.
class ChainedSet : public TestSet {
public:
    using Base = fxSet;
    using BaseIter = fxSetIter;
    using Bucket = fxSetBucket;
    using Plain = RecordSet;
    using TestSet::TestSet;

    class Iter;

    static fxTypeObj& type() { return fxSet_type; }

    static const void* blockOf(const Bucket* b) { return b->key; }
    static int numberIn(const Bucket* b) { return number(b->key); }

    static std::string added(std::initializer_list<int> keys) { return noted(keys, "copyKey:"); }
    static std::string ended(std::initializer_list<int> keys) { return noted(keys, "destroyKey:"); }

    static std::string headCalls() { return "uint*:1 uint*:1 uint*:1"; }
    static std::string entryCalls() { return "int*:1 uint*:1"; }
    static std::string head(unsigned int items, unsigned int size, unsigned int numBuckets) {
        RecordingTranscriber t(RecordingTranscriber::reader);
        t.give(items).give(size).give(numBuckets);
        return t.bytes;
    }
    static std::string entryBytes(int key, unsigned int bucket) {
        RecordingTranscriber t(RecordingTranscriber::reader);
        t.give(key).give(bucket);
        return t.bytes;
    }
    static std::string headOfBlocks(unsigned int items, unsigned int block,
                                    unsigned int numBuckets) {
        return head(items, block, numBuckets);
    }
    void setSizes(unsigned int size) { keySize = size; }
    void freeUnfinished(unsigned int made) const {
        if (made > 0)
            delete *static_cast<int**>(keyAddress);
        std::free(keyAddress);
    }

private:
    static std::string noted(std::initializer_list<int> keys, const char* key) {
        std::string text;
        for (int k : keys)
            text += (text.empty() ? "" : " ") + (key + std::to_string(k));
        return text;
    }
};

/// An iterator whose state tests can see.
class ChainedDictionary::Iter : public fxDictIter {
public:
    using fxDictIter::fxDictIter;
    using fxDictIter::operator=;
    using fxDictIter::bucket;
    using fxDictIter::bucketIndex;
    using fxDictIter::flags;
    Iter() {}

    const fxDictionary* owner() const { return dict; }
    /// A dictionary's iterator has a value when it has a key.
    void checkValue() const {
        if (!getKey())
            EXPECT_EQ(nullptr, getValue());
        else
            EXPECT_EQ(10 * number(getKey()), number(getValue()));
    }
};

class ChainedSet::Iter : public fxSetIter {
public:
    using fxSetIter::fxSetIter;
    using fxSetIter::operator=;
    using fxSetIter::bucket;
    using fxSetIter::bucketIndex;
    using fxSetIter::flags;
    Iter() {}

    const fxSet* owner() const { return set; }
    static void checkValue() {}
};

/// Both, for TYPED_TEST_SUITE.
using ChainedContainers = testing::Types<ChainedDictionary, ChainedSet>;

/// The keys of each bucket that has any, in chain order: "2: 7 2 4: 4".
template <class Container>
std::string chains(const Container& c) {
    std::string text;
    for (unsigned int i = 0; i < c.buckets.length(); ++i) {
        if (!c.buckets[i])
            continue;
        text += (text.empty() ? "" : " ") + std::to_string(i) + ":";
        for (const auto* b = c.buckets[i]; b; b = b->next)
            text += " " + std::to_string(c.numberIn(b));
    }
    return text;
}

/// Where an iterator is: its key, "end" when it is detached, "moved" when it
/// has no key because the entry has been removed.
template <class Iter>
std::string now(const Iter& iter) {
    iter.checkValue();
    if (iter.getKey())
        return std::to_string(TestSet::number(iter.getKey()));
    EXPECT_EQ(1u, iter.flags & 1u);
    return iter.owner() ? "moved" : "end";
}

/// What an iterator visits from here on.
template <class Iter>
std::string rest(Iter& iter) {
    std::string keys;
    for (; iter.getKey(); ++iter)
        keys += (keys.empty() ? "" : " ") + now(iter);
    return keys;
}

/// An iterator on `key`.
template <class Container>
typename Container::Iter on(Container& c, int key) {
    typename Container::Iter iter(c);
    while (TestSet::number(iter.getKey()) != key)
        ++iter;
    return iter;
}

/// Five buckets: 0: 10 5 0 2: 7 2 4: 4.
template <class Container>
class Filled : public Container {
public:
    Filled() : Container(5) {
        for (int key : {0, 5, 10, 2, 7, 4})
            this->put(key);
        this->taken();
    }
};
