// fxChainedHosts_test.cpp - dictionaries and sets of a host's own class, as small as they can be.

#include <cstring>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/containers/fxSet.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxTranscriber.h"
#include "tests/support/memoryStream.h"

namespace {

const unsigned int wide = 8192;  // bytes

std::string wideText(unsigned int i) { return std::string(wide, static_cast<char>(i % 251)); }

// From numbers to wide records.
class WideDictionary : public fxDictionary {
public:
    explicit WideDictionary(unsigned int numBuckets)
        : fxDictionary(sizeof(unsigned int), wide, numBuckets) {}
    explicit WideDictionary(fxTypeObj& type) : fxDictionary(type) {}
    ~WideDictionary() override { cleanup(); }

    const char* className() const override { return "WideDictionary"; }
    unsigned int hashKey(const void* key) const override { return fxDictionary::hashKey(key); }
    int compareKeys(const void* a, const void* b) const override {
        return std::memcmp(a, b, sizeof(unsigned int));
    }
    void copyKey(const void* from, void* to) const override {
        std::memcpy(to, from, sizeof(unsigned int));
    }
    void copyValue(const void* from, void* to) const override { std::memcpy(to, from, wide); }
    void createValue(void* value) const override { std::memset(value, 0, wide); }
    unsigned char xdrKey(fxTranscriber& t, void* key) override {
        return t.xdr(static_cast<unsigned int*>(key), 1);
    }
    unsigned char xdrValue(fxTranscriber& t, void* value) override {
        return t.xdr(static_cast<char*>(value), wide);
    }
    unsigned char xdr(fxTranscriber& t) override { return doxdr(t); }
    fxTypeObj& getTypeObj() const override { return record(); }

    static fxTypeObj& record() {
        static fxTypeObj type(
            "WideDictionary", 1, [](fxTypeObj& t) -> void* { return new WideDictionary(t); },
            [](void* p) { delete static_cast<WideDictionary*>(p); },
            [](void* p, fxTranscriber& t) { return static_cast<WideDictionary*>(p)->doxdr(t); });
        return type;
    }
    void put(unsigned int i) { addInternal(&i, wideText(i).data()); }
    bool has(unsigned int i) const {
        const void* value = find(&i);
        return value && std::memcmp(value, wideText(i).data(), wide) == 0;
    }
};

// Of wide records whose first bytes tell them apart.
class WideSet : public fxSet {
public:
    explicit WideSet(unsigned int numBuckets) : fxSet(wide, numBuckets) {}
    explicit WideSet(fxTypeObj& type) : fxSet(type) {}
    ~WideSet() override { cleanup(); }

    unsigned char xdrKey(fxTranscriber& t, void* key) override {
        return t.xdr(static_cast<char*>(key), wide);
    }
    unsigned char xdr(fxTranscriber& t) override { return doxdr(t); }
    fxTypeObj& getTypeObj() const override { return record(); }

    static fxTypeObj& record() {
        static fxTypeObj type(
            "WideSet", 1, [](fxTypeObj& t) -> void* { return new WideSet(t); },
            [](void* p) { delete static_cast<WideSet*>(p); },
            [](void* p, fxTranscriber& t) { return static_cast<WideSet*>(p)->doxdr(t); });
        return type;
    }
    void put(unsigned int i) { add(text(i).data()); }
    bool has(unsigned int i) const { return contains(text(i).data()) != 0; }

private:
    static std::string text(unsigned int i) {
        std::string bytes = wideText(i);
        std::memcpy(&bytes[0], &i, sizeof i);
        return bytes;
    }
};

template <class Container>
class fxChainedHosts : public testing::Test {};
using WideContainers = testing::Types<WideDictionary, WideSet>;
TYPED_TEST_SUITE(fxChainedHosts, WideContainers);

}  // namespace

TYPED_TEST(fxChainedHosts, manyWideEntriesComeBackThroughTheLibrarysReader) {
    fxInitializeToolkit();
    const unsigned int n = 300;
    TypeParam original(7);
    for (unsigned int i = 0; i < n; ++i)
        original.put(i);
    MemoryStream out;
    const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(&out));
    ASSERT_EQ(1, writer->writeObject(&original, &original));

    MemoryStream in(out.written);
    const std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(&in));
    const std::unique_ptr<TypeParam> read(
        static_cast<TypeParam*>(reader->readObject(TypeParam::record())));
    ASSERT_NE(nullptr, read);
    EXPECT_EQ(n, read->length());
    EXPECT_EQ(7u, read->getNumBuckets());
    for (unsigned int i = 0; i < n; ++i)
        EXPECT_TRUE(read->has(i)) << i;
    EXPECT_FALSE(read->has(n));
}
