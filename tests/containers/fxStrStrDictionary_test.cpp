#include "kelvofxds/containers/fxStrStrDictionary.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/str/fxTempStr.h"
#include "tests/support/destructors.h"
#include "tests/support/recordingTranscriber.h"

namespace {

const auto writer = RecordingTranscriber::writer;
const auto reader = RecordingTranscriber::reader;

// Remembers which memory was last read into.
class Watched : public fxStrStrDictionary {
public:
    using fxStrStrDictionary::fxStrStrDictionary;
    unsigned char xdrKey(fxTranscriber& t, void* key) override {
        lastKey = key;
        lastValue = nullptr;
        return fxStrStrDictionary::xdrKey(t, key);
    }
    unsigned char xdrValue(fxTranscriber& t, void* value) override {
        lastValue = value;
        return fxStrStrDictionary::xdrValue(t, value);
    }

    // Frees the entry at which a read failed, which the dictionary does not.
    void freeUnfinishedEntry() {
        if (!lastKey)
            return;
        static_cast<fxStr*>(lastKey)->~fxStr();
        if (lastValue)
            static_cast<fxStr*>(lastValue)->~fxStr();
        std::free(lastKey);
    }

    std::string contents() const {
        std::string text;
        for (unsigned int i = 0; i < buckets.length(); ++i) {
            if (!buckets[i])
                continue;
            text += (text.empty() ? "" : " ") + std::to_string(i) + ":";
            for (const fxDictBucket* b = buckets[i]; b; b = b->next)
                text += std::string(" ") + static_cast<const fxStr*>(b->kvmem)->c_str() + "=" +
                        static_cast<const fxStr*>(valueOf(b))->c_str();
        }
        return text;
    }

    using fxDictionary::buckets;
    using fxDictionary::keySize;
    using fxDictionary::numItems;
    using fxDictionary::valueSize;

    void* lastKey = nullptr;
    void* lastValue = nullptr;
};

std::string head(unsigned int items, unsigned int keySize, unsigned int valueSize,
                 unsigned int numBuckets) {
    RecordingTranscriber t(reader);
    t.give(items).give(keySize).give(valueSize).give(numBuckets);
    return t.bytes;
}

std::string entry(const std::string& key, const std::string& value, unsigned int bucket) {
    RecordingTranscriber t(reader);
    t.giveStr(key).giveStr(value).give(bucket);
    return t.bytes;
}

}  // namespace

// Keys and values.

TEST(fxStrStrDictionary, keysHashAsStringsDo) {
    const fxStrStrDictionary d;
    for (const char* text : {"", "A", "abcd", "abcdef", "abcdefghijkl"}) {
        const fxStr key(text);
        EXPECT_EQ(key.hash(), d.hashKey(&key));
    }
}

TEST(fxStrStrDictionary, keysCompareAsTextsDo) {
    const fxStrStrDictionary d;
    const fxStr abc("abc"), abd("abd"), empty, longer("abc\0x", 5);
    EXPECT_LT(d.compareKeys(&abc, &abd), 0);
    EXPECT_GT(d.compareKeys(&abd, &abc), 0);
    EXPECT_EQ(0, d.compareKeys(&abc, &abc));
    EXPECT_LT(d.compareKeys(&empty, &abc), 0);
    EXPECT_EQ(0, d.compareKeys(&abc, &longer));
}

// The value itself, not only its sign.
TEST(fxStrStrDictionary, comparisonOfKeysIsTheValueOfCompare) {
    const fxStrStrDictionary d;
    const fxStr keys[] = {"", "a", "c", "ab", "ad", "\xff", fxStr("a\0x", 3)};
    for (const fxStr& a : keys) {
        for (const fxStr& b : keys)
            EXPECT_EQ(compare(a, b), d.compareKeys(&a, &b)) << a << " and " << b;
    }
}

// Both hash to bucket 4 of 31, and "a\0?" to bucket 8.
TEST(fxStrStrDictionary, deliberateKeysAlikeUpToANulInOneBucketAreOneKey) {
    Watched d;
    const fxStr plain("a"), alike("a\0>", 3), apart("a\0?", 3);
    d.add(plain, "first");
    d.add(alike, "second");
    EXPECT_EQ(1u, d.length());
    EXPECT_STREQ("second", d.find(plain)->c_str());
    EXPECT_EQ(d.find(plain), d.find(alike));
    EXPECT_EQ(1u, static_cast<fxStr*>(d.buckets[4]->kvmem)->length()) << "the first key stays";

    EXPECT_EQ(nullptr, d.find(apart));
    d.add(apart, "third");
    EXPECT_EQ(2u, d.length());
    EXPECT_EQ("4: a=second 8: a=third", d.contents());
    d.remove(alike);
    EXPECT_EQ("8: a=third", d.contents());
}

TEST(fxStrStrDictionary, keysAndValuesAreCopies) {
    fxStrStrDictionary d;
    fxStr key("key"), value("value");
    d.add(key, value);
    key = "changed";
    value = "changed too";
    ASSERT_NE(nullptr, d.find("key"));
    EXPECT_STREQ("value", d.find("key")->c_str());
    *d.find("key") = "new";
    EXPECT_STREQ("new", d.find("key")->c_str());
    EXPECT_STREQ("changed too", value.c_str());
}

TEST(fxStrStrDictionary, addingAnEntrysOwnValueKeepsIt) {
    fxStrStrDictionary d;
    d.add("key", "a value that is on the heap");
    d.add("key", *d.find("key"));
    EXPECT_STREQ("a value that is on the heap", d.find("key")->c_str());
    EXPECT_EQ(1u, d.length());
}

TEST(fxStrStrDictionary, copyingToNullIsSkipped) {
    const fxStrStrDictionary d;
    const fxStr text("text");
    d.copyKey(&text, nullptr);
    d.copyValue(&text, nullptr);
}

TEST(fxStrStrDictionary, copiesAreMadeInRawMemory) {
    const fxStrStrDictionary d;
    const fxStr text("text");
    alignas(fxStr) unsigned char key[sizeof(fxStr)], value[sizeof(fxStr)];
    std::memset(key, 0xAA, sizeof key);
    std::memset(value, 0xAA, sizeof value);
    d.copyKey(&text, key);
    d.copyValue(&text, value);
    EXPECT_STREQ("text", reinterpret_cast<fxStr*>(key)->c_str());
    EXPECT_STREQ("text", reinterpret_cast<fxStr*>(value)->c_str());
    d.destroyKey(key);
    d.destroyValue(value);
}

TEST(fxStrStrDictionary, createdValueIsTheEmptyString) {
    fxStrStrDictionary d;
    EXPECT_EQ(&fxStr::emptyString, d.findCreate("key").c_str());
    EXPECT_EQ(0u, d.findCreate("key").length());
}

// The typed forms.

TEST(fxStrStrDictionary, typedFormsAreTheSameOperations) {
    fxStrStrDictionary d;
    const fxStr key("key");
    d.add(key, "value");
    EXPECT_EQ(d.find(static_cast<const void*>(&key)), d.find(key));
    EXPECT_EQ(d.find(key), d.find("key"));
    EXPECT_EQ(nullptr, d.find("other"));
    EXPECT_EQ(d.find(key), &d.findCreate(key));
    EXPECT_EQ(d.find(key), &d.findCreate("key"));
    d.findCreate("second") = "2";
    EXPECT_EQ(2u, d.length());
    d.remove(key);
    d.remove("second");
    EXPECT_EQ(0u, d.length());
}

TEST(fxStrStrDictionary, iteratorGivesKeyAndValue) {
    fxStrStrDictionary d;
    d.add("key", "value");
    fxStrStrDictionaryIter iter(d);
    ASSERT_NE(nullptr, iter.key());
    EXPECT_STREQ("key", iter.key()->c_str());
    EXPECT_STREQ("value", iter.value()->c_str());
    ++iter;
    EXPECT_EQ(nullptr, iter.key());
    EXPECT_EQ(nullptr, iter.value());
}

// Objects.

TEST(fxStrStrDictionary, typeIsItsOwnRecord) {
    EXPECT_EQ(&fxStrStrDictionary_type, &fxStrStrDictionary().getTypeObj());
    EXPECT_STREQ("DICT", fxStrStrDictionary_type.name);
    EXPECT_EQ(1u, fxStrStrDictionary_type.version);
}

TEST(fxStrStrDictionary, newInstanceHasNoBuckets) {
    void* instance = fxStrStrDictionary::newInstance(fxStrStrDictionary_type);
    ASSERT_NE(nullptr, instance);
    auto* d = static_cast<fxStrStrDictionary*>(instance);
    EXPECT_EQ(0, d->count);
    EXPECT_EQ(0u, d->length());
    EXPECT_EQ(0u, d->getNumBuckets());
    EXPECT_EQ(nullptr, d->find("key"));
    fxStrStrDictionary::deleteInstance(instance);
    fxStrStrDictionary::deleteInstance(nullptr);
}

TEST(fxStrStrDictionary, deleteInstanceUsesTheVirtualDeletingDestructor) {
    using Sample = CountedEnd<fxStrStrDictionary>;
    Sample::destroyed = Sample::freed = 0;
    auto* d = new Sample(5u);
    d->add("key", "value");
    fxStrStrDictionary::deleteInstance(static_cast<fxStrStrDictionary*>(d));
    EXPECT_EQ(1, Sample::destroyed);
    EXPECT_EQ(1, Sample::freed);
}

// Writing.

TEST(fxStrStrDictionary, allThreeFormsOfXdrAreDoxdr) {
    Watched d(7);
    d.add("k", "val");
    for (int form : {0, 1, 2}) {
        SCOPED_TRACE(form);
        RecordingTranscriber t(writer);
        EXPECT_EQ(1, form == 0   ? d.doxdr(t)
                     : form == 1 ? static_cast<fxXDRObj&>(d).xdr(t)
                                 : fxStrStrDictionary_type.xdr(&d, t));
        EXPECT_EQ("uint*:1 uint*:1 uint*:1 uint*:1 uint*:1 char**:2 uint*:1 char**:4 uint*:1",
                  t.log());
        const fxStr key("k");
        EXPECT_EQ(head(1, 8, 8, 7) + entry("k", "val", key.hash() % 7), t.bytes);
        EXPECT_EQ(&d.numItems, t.calls[0].address);
        EXPECT_EQ(&d.keySize, t.calls[1].address);
        EXPECT_EQ(&d.valueSize, t.calls[2].address);
        EXPECT_EQ(d.lastKey, t.calls[4].address);
        EXPECT_EQ(static_cast<char*>(d.lastKey) + 4, t.calls[5].address);
        EXPECT_EQ(static_cast<char*>(d.lastKey) + 8, t.calls[6].address);
        EXPECT_EQ(static_cast<char*>(d.lastKey) + 12, t.calls[7].address);
    }
}

TEST(fxStrStrDictionary, emptyStringsAreWrittenAsTheirLengthAlone) {
    fxStrStrDictionary d(1);
    d.add("", "");
    RecordingTranscriber t(writer);
    EXPECT_EQ(1, d.xdr(t));
    EXPECT_EQ("uint*:1 uint*:1 uint*:1 uint*:1 uint*:1 uint*:1 uint*:1", t.log());
    EXPECT_EQ(head(1, 8, 8, 1) + entry("", "", 0), t.bytes);
}

TEST(fxStrStrDictionary, writingStopsAtTheFirstFailure) {
    for (unsigned int step = 0; step < 9; ++step) {
        SCOPED_TRACE(step);
        fxStrStrDictionary d(7);
        d.add("k", "val");
        RecordingTranscriber t(writer);
        t.failAt = step;
        EXPECT_EQ(0, fxStrStrDictionary::xdr(&d, t));
        EXPECT_EQ(step + 1, t.calls.size());
    }
}

// Reading.

// In one bucket, so that the chain's order shows.
TEST(fxStrStrDictionary, readsTheSamePairsWithEachChainReversed) {
    Watched original(1);
    for (const char* key : {"one", "two", "", "a longer key than the others"})
        original.add(key, fxStr(key) | " value");
    original.add("empty", "");
    RecordingTranscriber written(writer);
    ASSERT_EQ(1, original.xdr(written));

    for (int form : {0, 1, 2}) {
        SCOPED_TRACE(form);
        Watched read(fxStrStrDictionary_type);
        RecordingTranscriber t(reader, written.bytes);
        EXPECT_EQ(1, form == 0   ? read.doxdr(t)
                     : form == 1 ? static_cast<fxXDRObj&>(read).xdr(t)
                                 : fxStrStrDictionary_type.xdr(&read, t));
        EXPECT_EQ(written.log(), t.log());
        EXPECT_EQ(
            "0: empty= a longer key than the others=a longer key than the others value "
            "= value two=two value one=one value",
            original.contents());
        EXPECT_EQ(
            "0: one=one value two=two value = value a longer key than the others="
            "a longer key than the others value empty=",
            read.contents());
        EXPECT_EQ(5u, read.length());
        EXPECT_STREQ("two value", read.find("two")->c_str());
    }
}

TEST(fxStrStrDictionary, readBackEntriesAreInTheSameBuckets) {
    Watched original(31);
    for (int i = 0; i < 20; ++i)
        original.add(fxStr(i, "%d"), fxStr(i, "value %d"));
    RecordingTranscriber written(writer);
    ASSERT_EQ(1, original.xdr(written));
    Watched read(fxStrStrDictionary_type);
    RecordingTranscriber t(reader, written.bytes);
    ASSERT_EQ(1, read.xdr(t));
    EXPECT_EQ(31u, read.getNumBuckets());
    for (unsigned int i = 0; i < 31; ++i) {
        unsigned int before = 0, after = 0;
        for (const fxDictBucket* b = original.buckets[i]; b; b = b->next)
            ++before;
        for (const fxDictBucket* b = read.buckets[i]; b; b = b->next)
            ++after;
        EXPECT_EQ(before, after) << "bucket " << i;
    }
    for (int i = 0; i < 20; ++i) {
        const fxStr* value = read.find(fxStr(i, "%d"));
        ASSERT_NE(nullptr, value);
        EXPECT_TRUE(*value == fxStr(i, "value %d"));
    }
}

TEST(fxStrStrDictionary, keysAndValuesAreReadIntoRawMemory) {
    fxStrStrDictionary d;
    alignas(fxStr) unsigned char memory[sizeof(fxStr)];
    for (bool key : {true, false}) {
        for (const char* text : {"text", ""}) {
            std::memset(memory, 0xAA, sizeof memory);
            RecordingTranscriber t(reader);
            t.giveStr(text);
            EXPECT_EQ(1, key ? d.xdrKey(t, memory) : d.xdrValue(t, memory));
            EXPECT_STREQ(text, reinterpret_cast<fxStr*>(memory)->c_str());
            d.destroyKey(memory);
        }
        std::memset(memory, 0xAA, sizeof memory);
        RecordingTranscriber nothing(reader);
        EXPECT_EQ(0, key ? d.xdrKey(nothing, memory) : d.xdrValue(nothing, memory));
        d.destroyValue(memory);  // what failed can be destroyed all the same
    }
}

TEST(fxStrStrDictionary, largerKeySizeMovesTheValues) {
    Watched d(fxStrStrDictionary_type);
    RecordingTranscriber t(reader, head(1, 24, 12, 3) + entry("key", "value", 1));
    EXPECT_EQ(1, d.xdr(t));
    EXPECT_EQ(static_cast<char*>(d.lastKey) + 24, d.lastValue);
    EXPECT_EQ("1: key=value", d.contents());
}

// A little more than its own sizes is believed however many entries there are.
TEST(fxStrStrDictionary, anyNumberOfEntriesCanBeALittleLarger) {
    const unsigned int n = 1000;
    std::string entries;
    for (unsigned int i = 0; i < n; ++i)
        entries += entry("k" + std::to_string(i), "v", i % 3);
    for (unsigned int more = 0; more <= 32; more += 4) {
        SCOPED_TRACE(more);
        for (const bool isOfKeys : {true, false}) {
            fxStrStrDictionary d(fxStrStrDictionary_type);
            const std::string bytes =
                head(n, isOfKeys ? 8 + more : 8, isOfKeys ? 8 : 8 + more, 3) + entries;
            RecordingTranscriber t(reader, bytes);
            EXPECT_EQ(1, d.xdr(t));
            EXPECT_EQ(n, d.length());
        }
    }
}

// The rest is, for all of them together, 16 KiB.
TEST(fxStrStrDictionary, muchLargerOnesAreCounted) {
    for (const unsigned int n : {16u, 17u}) {
        SCOPED_TRACE(n);
        std::string entries;
        for (unsigned int i = 0; i < n; ++i)
            entries += entry("k" + std::to_string(i), "v", i % 3);
        for (const bool isOfKeys : {true, false}) {
            const unsigned int large = 8 + 32 + 1024;
            fxStrStrDictionary d(fxStrStrDictionary_type);
            const std::string bytes =
                head(n, isOfKeys ? large : 8, isOfKeys ? 8 : large, 3) + entries;
            RecordingTranscriber t(reader, bytes);
            EXPECT_EQ(n == 16, d.xdr(t) != 0);
        }
    }
}

TEST(fxStrStrDictionary, readingStopsAtTheFirstFailure) {
    const std::string bytes = head(2, 8, 8, 3) + entry("k", "val", 1) + entry("", "w", 2);
    for (unsigned int step = 0; step < 13; ++step) {
        SCOPED_TRACE(step);
        Watched d(fxStrStrDictionary_type);
        RecordingTranscriber t(reader, bytes);
        t.failAt = step;
        EXPECT_EQ(0, d.xdr(t));
        EXPECT_EQ(step + 1, t.calls.size());
        EXPECT_EQ(step < 9 ? "" : "1: k=val", d.contents());
        d.freeUnfinishedEntry();
    }
}

// Bad input.

TEST(fxStrStrDictionary, bytesThatEndAnywhereFail) {
    const std::string bytes = head(2, 8, 8, 3) + entry("key", "value", 1) + entry("", "w", 2);
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        SCOPED_TRACE(length);
        Watched d(fxStrStrDictionary_type);
        RecordingTranscriber t(reader, bytes.substr(0, length));
        EXPECT_EQ(0, d.xdr(t));
        d.freeUnfinishedEntry();
    }
}

TEST(fxStrStrDictionary, sizesBelowAStringFail) {
    const struct {
        unsigned int keySize, valueSize;
    } cases[] = {{7, 8},          {8, 7}, {0, 8}, {8, 0}, {8 + 0x100001, 8}, {8, 8 + 0x100001},
                 {0xFFFFFFF8, 16}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.keySize << " and " << c.valueSize);
        fxStrStrDictionary d(fxStrStrDictionary_type);
        RecordingTranscriber t(reader, head(1, c.keySize, c.valueSize, 3) + entry("k", "v", 1));
        EXPECT_EQ(0, d.xdr(t));
        EXPECT_EQ(nullptr, d.find("k"));
    }
}

// The value would start where no string can.
TEST(fxStrStrDictionary, keySizesThatMisalignTheValueFail) {
    for (unsigned int keySize : {9u, 10u, 11u, 4095u, 4097u}) {
        for (unsigned int items : {0u, 1u}) {
            SCOPED_TRACE(testing::Message() << items << " of " << keySize);
            Watched d(fxStrStrDictionary_type);
            RecordingTranscriber t(reader, head(items, keySize, 8, 3) + entry("key", "value", 1));
            EXPECT_EQ(0, d.xdr(t));
            EXPECT_EQ("", d.contents());
            EXPECT_EQ(nullptr, d.lastKey);
            EXPECT_EQ(8u, d.keySize);
        }
    }
}

// What the base's own form believes cannot hurt: no string is made outside its
// entry, or where none can be.
TEST(fxStrStrDictionary, sizesBelowAStringFailThroughTheBaseToo) {
    const struct {
        unsigned int keySize, valueSize;
    } cases[] = {{0, 8}, {7, 8}, {8, 0}, {8, 7}, {0, 0}, {9, 8}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.keySize << " and " << c.valueSize);
        Watched d(fxStrStrDictionary_type);
        RecordingTranscriber t(reader, head(1, c.keySize, c.valueSize, 3) + entry("k", "v", 1));
        EXPECT_EQ(0, static_cast<fxDictionary&>(d).doxdr(t));
        EXPECT_EQ("", d.contents());
        if (c.keySize >= 8)
            static_cast<fxStr*>(d.lastKey)->~fxStr();
        std::free(d.lastKey);
    }
}

TEST(fxStrStrDictionary, stringsThatCannotBeFail) {
    RecordingTranscriber noLength(reader, head(1, 8, 8, 3));
    noLength.give(0u);
    RecordingTranscriber tooLong(reader, head(1, 8, 8, 3));
    tooLong.give(0x10000u).give('x');
    for (RecordingTranscriber* t : {&noLength, &tooLong}) {
        Watched d(fxStrStrDictionary_type);
        EXPECT_EQ(0, d.xdr(*t));
        EXPECT_EQ("", d.contents());
        d.freeUnfinishedEntry();
    }
}

TEST(fxStrStrDictionary, sizesOutOfProportionFail) {
    const unsigned int n = 20000;
    std::string bytes = head(n, 8, 4096, 3);
    for (unsigned int i = 0; i < n; ++i)
        bytes += entry("", "", i % 3);
    Watched d(fxStrStrDictionary_type);
    RecordingTranscriber t(reader, bytes);
    EXPECT_EQ(0, d.xdr(t));
    unsigned int entries = 0;
    for (fxStrStrDictionaryIter iter(d); iter.key(); ++iter)
        ++entries;
    EXPECT_GT(entries, 1u) << "entries read so far stay";
    EXPECT_LT(entries, 1000u);
}

TEST(fxStrStrDictionary, staticXdrIsDoxdrWhateverASubclassMakesOfXdr) {
    class Refusing : public fxStrStrDictionary {
    public:
        unsigned char xdr(fxTranscriber&) override { return 0; }
    } d;
    RecordingTranscriber t(writer);
    EXPECT_EQ(1, fxStrStrDictionary_type.xdr(static_cast<fxStrStrDictionary*>(&d), t));
    EXPECT_EQ(head(0, 8, 8, 31), t.bytes);
}

TEST(fxStrStrDictionary, aDictionaryWithoutBucketsFindsNothing) {
    fxStrStrDictionary d(fxStrStrDictionary_type);
    RecordingTranscriber t(reader, head(0, 8, 8, 0));
    EXPECT_EQ(1, d.xdr(t));
    EXPECT_EQ(nullptr, d.find("key"));
    d.remove("key");
    EXPECT_EQ(0u, d.length());
}

TEST(fxStrStrDictionaryDeathTest, addingWithoutBucketsIsFatal) {
    fxStrStrDictionary d(fxStrStrDictionary_type);
    const char message[] = "^DICT: no buckets\n$";
    EXPECT_EXIT(d.add("key", "value"), testing::KilledBySignal(SIGABRT), message);
    EXPECT_EXIT(d.findCreate("key"), testing::KilledBySignal(SIGABRT), message);
}
