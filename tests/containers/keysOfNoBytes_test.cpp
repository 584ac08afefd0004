// keysOfNoBytes_test.cpp - containers whose keys and values have no bytes, and so no address.

#include <cstdlib>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/containers/fxSet.h"

namespace {

// What its operations are given is never looked at.
class Nothings : public fxDictionary {
public:
    Nothings() : fxDictionary(0, 0, 3) {}
    ~Nothings() override { cleanup(); }
    const char* className() const override { return "Nothings"; }
    unsigned int hashKey(const void*) const override { return 1; }
    int compareKeys(const void*, const void*) const override { return 0; }
    void copyKey(const void*, void*) const override {}
    void copyValue(const void*, void*) const override {}
    void createValue(void*) const override {}
    unsigned char xdrKey(fxTranscriber&, void*) override { return 1; }
    unsigned char xdrValue(fxTranscriber&, void*) override { return 1; }
    using fxDictionary::addInternal;
};

class SetOfNothings : public fxSet {
public:
    SetOfNothings() : fxSet(0, 3) {}
    ~SetOfNothings() override { cleanup(); }
    const char* className() const override { return "SetOfNothings"; }
    unsigned int hashKey(const void*) const override { return 1; }
    int compareKeys(const void*, const void*) const override { return 0; }
    void copyKey(const void*, void*) const override {}
    unsigned char xdrKey(fxTranscriber&, void*) override { return 1; }
};

}  // namespace

TEST(keysOfNoBytes, aDictionaryHasAtMostOne) {
    Nothings nothings;
    EXPECT_EQ(nullptr, nothings.find(nullptr));
    EXPECT_NE(nullptr, nothings.addInternal(nullptr, nullptr));
    nothings.addInternal(nullptr, nullptr);
    nothings.findCreate(nullptr);
    EXPECT_EQ(1u, nothings.length());
    nothings.remove(nullptr);
    EXPECT_EQ(0u, nothings.length());
    nothings.findCreate(nullptr);
    EXPECT_EQ(1u, nothings.length());
    std::free(nothings.cut(nullptr));
    EXPECT_EQ(0u, nothings.length());
    EXPECT_EQ(nullptr, nothings.cut(nullptr));
}

TEST(keysOfNoBytes, aSetHasAtMostOne) {
    SetOfNothings nothings;
    EXPECT_EQ(0, nothings.contains(nullptr));
    EXPECT_NE(nullptr, nothings.add(nullptr));
    EXPECT_EQ(nullptr, nothings.add(nullptr));
    EXPECT_EQ(1u, nothings.length());
    EXPECT_EQ(1, nothings.contains(nullptr));
    nothings.find(nullptr);
    nothings.remove(nullptr);
    EXPECT_EQ(0u, nothings.length());
}
