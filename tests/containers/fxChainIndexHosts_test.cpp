// fxChainIndexHosts_test.cpp - what hosts do with containers of strings that have an index.

#include <cstring>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxTranscriber.h"
#include "tests/support/memoryStream.h"

namespace {

extern fxTypeObj asking_type;

// A host's object that looks keys up while it is being read.
class Asking : public fxXDRObj {
public:
    Asking() : set(1), dict(1) {}
    explicit Asking(fxTypeObj& type) : fxXDRObj(type), set(1), dict(1) {}
    unsigned char xdr(fxTranscriber& t) override {
        if (!set.doxdr(t) || !dict.doxdr(t))
            return 0;
        if (t.isReading()) {
            const fxStr key("any");
            found = set.contains(&key) || dict.find(key);
        }
        return 1;
    }
    fxTypeObj& getTypeObj() const override { return asking_type; }
    static void* make(fxTypeObj& type) { return new Asking(type); }
    static void end(void* object) { delete static_cast<Asking*>(object); }
    static unsigned char xdrOf(void* object, fxTranscriber& t) {
        return static_cast<Asking*>(object)->xdr(t);
    }

    fxStrSet set;
    fxStrStrDictionary dict;
    bool found = false;
};

fxTypeObj asking_type("Asking", 1, Asking::make, Asking::end, Asking::xdrOf);

// Values of another kind and size in a dictionary keyed by strings.
class Records : public fxStrStrDictionary {
public:
    Records() { valueSize = size; }
    ~Records() override { cleanup(); }
    void copyValue(const void* from, void* to) const override { std::memcpy(to, from, size); }
    void createValue(void* value) const override { std::memset(value, 0, size); }
    void destroyValue(void*) const override {}
    unsigned char xdrValue(fxTranscriber& t, void* value) override {
        return t.xdr(static_cast<char*>(value), size);
    }
    unsigned char xdr(fxTranscriber& t) override { return fxDictionary::doxdr(t); }
    using fxStrStrDictionary::length;

    static const unsigned int size = 1024;
};

const unsigned int many = 2000;

std::string written(fxXDRObj& object) {
    MemoryStream stream;
    const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(&stream));
    EXPECT_EQ(1, writer->writeObject(&object, &object));
    return stream.written;
}
}  // namespace

TEST(fxChainIndexHosts, keysAreFoundAfterALookUpDuringReading) {
    fxInitializeToolkit();
    Asking object;
    for (int i = 0; i < 40; ++i) {
        const fxStr key(i, "key %d");
        object.set.add(&key);
        object.dict.add(key, key);
    }
    MemoryStream stream(written(object));
    const std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(&stream));
    const std::unique_ptr<Asking> copy(static_cast<Asking*>(reader->readObject(asking_type)));
    ASSERT_NE(nullptr, copy);
    EXPECT_FALSE(copy->found);
    for (int i = 0; i < 40; ++i) {
        const fxStr key(i, "key %d");
        EXPECT_EQ(1, copy->set.contains(&key)) << key.c_str();
        EXPECT_NE(nullptr, copy->dict.find(key)) << key.c_str();
        EXPECT_EQ(nullptr, copy->set.add(&key));
    }
}

TEST(fxChainIndexHosts, theBaseReadsValuesOfADerivedClassesOwnSize) {
    fxInitializeToolkit();
    Records records;
    char record[Records::size] = "record";
    for (unsigned int i = 0; i < many; ++i) {
        const fxStr key(int(i), "%d");
        records.addInternal(&key, record);
    }
    MemoryStream out;
    const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(&out));
    EXPECT_EQ(1, records.xdr(*writer));
    EXPECT_EQ(1, writer->writeObject(&records, &records));
    Records copy;
    MemoryStream in(out.written);
    const std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(&in));
    EXPECT_EQ(1, copy.xdr(*reader));
    EXPECT_EQ(many, copy.length());
}

// It is not looked for again where it was, but nothing else suffers.
TEST(fxChainIndexHosts, keyChangedInPlaceIsRemovedWithTheOthers) {
    fxStrSet set(1), none(1);
    for (int i = 0; i < 40; ++i) {
        const fxStr key(i, "key %d");
        set.add(&key);
    }
    const fxStr before("key 7");
    EXPECT_EQ(1, set.contains(&before));
    for (fxStrSetIter iter(set); iter.getKey(); ++iter) {
        auto* key = static_cast<fxStr*>(iter.getKey());
        if (*key == before)
            *key = "another";
    }
    EXPECT_EQ(0, set.contains(&before));
    set &= none;
    EXPECT_EQ(0u, set.length());
    for (int i = 0; i < 40; ++i) {
        const fxStr key(i, "key %d");
        EXPECT_EQ(0, set.contains(&key));
        EXPECT_NE(nullptr, set.add(&key));
    }
}
