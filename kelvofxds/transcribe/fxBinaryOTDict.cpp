#include "kelvofxds/transcribe/fxBinaryOTDict.h"

#include <cstdint>
#include <cstring>

namespace {
const unsigned int wordSize = sizeof(std::uint32_t);

std::uint32_t wordAt(const void* p) {
    std::uint32_t word;
    std::memcpy(&word, p, wordSize);
    return word;
}
}  // namespace

fxBinaryOTDict::fxBinaryOTDict(unsigned int numBuckets)
    : fxDictionary(wordSize, wordSize, numBuckets) {}

fxBinaryOTDict::~fxBinaryOTDict() {
    releaseAll();
    cleanup();
}

const char* fxBinaryOTDict::className() const { return "DICT"; }

unsigned int fxBinaryOTDict::hashKey(const void* key) const { return wordAt(key) >> 2; }

int fxBinaryOTDict::compareKeys(const void* a, const void* b) const {
    return static_cast<int>(wordAt(a) - wordAt(b));
}

void fxBinaryOTDict::copyKey(const void* from, void* to) const { std::memcpy(to, from, wordSize); }

void fxBinaryOTDict::destroyKey(void*) const {}

void fxBinaryOTDict::copyValue(const void* from, void* to) const {
    std::memcpy(to, from, wordSize);
}

void fxBinaryOTDict::destroyValue(void*) const {}

void fxBinaryOTDict::createValue(void* value) const { std::memset(value, 0, wordSize); }

unsigned char fxBinaryOTDict::xdrKey(fxTranscriber&, void*) { return 0; }

unsigned char fxBinaryOTDict::xdrValue(fxTranscriber&, void*) { return 0; }

void fxBinaryOTDict::link(fxBinaryOTEntry& entry) {
    entry.bucket.kvmem = &entry.key;
    fxDictBucket*& head = buckets[hashKey(&entry.key) % bucketCount()];
    entry.bucket.next = head;
    head = &entry.bucket;
    ++numItems;
}

void fxBinaryOTDict::removeAll() {
    releaseAll();
    cleanup();
    numItems = 0;
}

// Unlinks the entries, of each bucket one in turn, the newest first. That is
// about the reverse of the order in which they were made, so that millions of
// them are visited without jumping about in memory. Words need no destroying.
// With many buckets the chains are short, and cleanup does as well.
void fxBinaryOTDict::releaseAll() {
    const unsigned int usualBuckets = 31;
    const unsigned int n = bucketCount();
    if (n > usualBuckets)
        return;
    for (bool more = true; more;) {
        more = false;
        for (unsigned int i = 0; i < n; ++i) {
            fxDictBucket* b = buckets[i];
            if (!b)
                continue;
            buckets[i] = b->next;
            release(b);
            more = true;
        }
    }
}

fxBinaryOTDictIter::fxBinaryOTDictIter() {}

fxBinaryOTDictIter::fxBinaryOTDictIter(fxBinaryOTDict& d) : fxDictIter(d) {}

fxBinaryOTDictIter::fxBinaryOTDictIter(fxBinaryOTDict* d) : fxDictIter(*d) {}
