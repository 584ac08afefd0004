#include "kelvofxds/transcribe/fxBinaryOTDict.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/containers/fxChainedInternal.h"
#include "kelvofxds/core/fxCheckedInternal.h"

namespace {
const unsigned int wordSize = sizeof(std::uint32_t);

std::uint32_t wordAt(const void* p) {
    std::uint32_t word;
    std::memcpy(&word, p, wordSize);
    return word;
}

// Addresses are multiples of 4.
unsigned int hashOf(std::uint32_t word) { return word >> 2; }
}  // namespace

fxBinaryOTDict::fxBinaryOTDict(unsigned int numBuckets)
    : fxDictionary(wordSize, wordSize, numBuckets) {
    equalKeysHashEqually();
}

fxBinaryOTDict::~fxBinaryOTDict() { cleanup(); }

const char* fxBinaryOTDict::className() const { return "DICT"; }

unsigned int fxBinaryOTDict::hashKey(const void* key) const { return hashOf(wordAt(key)); }

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

bool fxBinaryOTDict::addNew(unsigned int key, unsigned int value) {
    char* block = static_cast<char*>(std::malloc(wordSize + wordSize));
    if (!block)
        return false;
    std::memcpy(block, &key, wordSize);
    std::memcpy(block + wordSize, &value, wordSize);
    if (!fxChains::push<fxDictionary>(*this, hashOf(key) % bucketCount(), block, nullptr)) {
        std::free(block);
        return false;
    }
    // NOLINTNEXTLINE(clang-analyzer-unix.Malloc): the entry has the block.
    ++numItems;
    return true;
}

void fxBinaryOTDict::removeAll() {
    cleanup();
    numItems = 0;
}

fxBinaryOTDictIter::fxBinaryOTDictIter() {}

fxBinaryOTDictIter::fxBinaryOTDictIter(fxBinaryOTDict& d) : fxDictIter(d) {}

fxBinaryOTDictIter::fxBinaryOTDictIter(fxBinaryOTDict* d)
    : fxDictIter((FX_CHECK_ARGUMENT("fxBinaryOTDictIter", d), *d)) {}
