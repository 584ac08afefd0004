// fxChainedSizes_test.cpp - dictionaries and sets larger than memory.

#include <csignal>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/containers/fxSet.h"
#include "tests/support/hookedContainers.h"

using namespace hooked;

namespace {

// As large as it is told to be.
class Sized : public IntDictionary {
public:
    Sized(unsigned int keyBytes, unsigned int valueBytes) : IntDictionary(4) {
        keySize = keyBytes;
        valueSize = valueBytes;
    }
    unsigned int hashKey(const void*) const override { return 0; }
};

class OfSizes : public fxDictionary {
public:
    using fxDictionary::fxDictionary;
    const char* className() const override { return ""; }
    unsigned int hashKey(const void*) const override { return 0; }
    int compareKeys(const void*, const void*) const override { return 1; }
    void copyKey(const void*, void*) const override {}
    void copyValue(const void*, void*) const override {}
    void createValue(void*) const override {}
    unsigned char xdrKey(fxTranscriber&, void*) override { return 0; }
    unsigned char xdrValue(fxTranscriber&, void*) override { return 0; }
};

class OfSize : public IntSet {
public:
    explicit OfSize(unsigned int keyBytes) : IntSet(4) { keySize = keyBytes; }
    unsigned int hashKey(const void*) const override { return 0; }
};

const auto aborted = testing::KilledBySignal(SIGABRT);

}  // namespace

TEST(fxDictionaryDeathTest, sizesThatWrapAreFatal) {
    const char message[] = "^fxDictionary: size too large\n$";
    const int key = 1;
    EXPECT_EXIT(OfSizes(0xFFFFFFFF, 1, 3), aborted, message);
    EXPECT_EXIT(OfSizes(4, 0xFFFFFFFC, 3), aborted, message);
    EXPECT_EXIT(OfSizes(0x80000000, 0x80000000, 3), aborted, message);
    EXPECT_EXIT(OfSizes(4, 4, 0x40000000), aborted, message);
    EXPECT_EXIT(OfSizes(4, 4, 0xFFFFFFFF), aborted, message);
    EXPECT_EXIT(Sized(8, 0xFFFFFFF8).put(1), aborted, message);
    EXPECT_EXIT(Sized(0xFFFFFFFF, 1).findCreate(&key), aborted, message);
}

// A sanitizer's allocator says something of its own before it returns null.
TEST(fxDictionaryDeathTest, aRefusedBlockIsFatal) {
    const int key = 1;
    EXPECT_EXIT(Sized(4, 0xFFFFFFF0).put(1), aborted, "out of memory\n$");
    EXPECT_EXIT(Sized(4, 0xFFFFFFF0).findCreate(&key), aborted, "out of memory\n$");
}

TEST(fxSetDeathTest, sizesThatMemoryCannotHoldAreFatal) {
    EXPECT_EXIT(IntSet(0x40000000), aborted, "^fxSet: size too large\n$");
    EXPECT_EXIT(IntSet(0xFFFFFFFF), aborted, "^fxSet: size too large\n$");
    EXPECT_EXIT(OfSize(0xFFFFFFF0).put(1), aborted, "out of memory\n$");
}
