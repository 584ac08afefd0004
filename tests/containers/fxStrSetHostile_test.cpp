// fxStrSetHostile_test.cpp - sets in streams that nobody vouches for.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "tests/support/hostileReading.h"
#include "tests/support/hostileStreams.h"
#include "tests/support/trialRunner.h"

namespace {

enum Outcome { value, null, fatal, failed };

void use(fxStrSet& s) {
    if (s.getNumBuckets() > 1U << 20)
        return;  // walking them takes its time
    unsigned int known = 0;
    for (fxStrSetIter iter(s); iter.key(); ++iter) {
        known += s.contains(*iter.key());
        fxStr copied(*iter.key());
        hostile::use(copied);
    }
    hostile::sink = known;
    MemoryStream out;
    fxBinaryWriter t(&out);
    hostile::sink = t.writeObject(&s, &s);
    if (s.getNumBuckets() == 0)
        return;  // nothing can be added
    s.add("added");
    fxStrSet other(3);
    other |= s;
    s &= other;
    s.remove("added");
    s.remove("absent");
    const fxSet& self = s;
    s |= self;
    s -= self;
    s -= other;
    fxStrSetIter iter(s);
    if (iter.key())
        s.remove(fxStr(*iter.key()));
}

std::vector<fxStrSet*> made;

// Reads one object and uses the sets that were made for it: the object itself
// need not be one. Takes over the name "SET", so it is for child processes.
bool readAndUse(const std::string& bytes) {
    fxInitializeToolkit();
    static fxTypeObj noting(
        "SET", 1,
        [](fxTypeObj& type) -> void* {
            made.push_back(static_cast<fxStrSet*>(fxStrSet::newInstance(type)));
            return made.back();
        },
        nullptr, fxStrSet::xdr);
    made.clear();
    MemoryStream stream(bytes);
    fxTranscriber* t = fxTranscriber::getReader(&stream);
    const bool read = t && t->readObject(noting);
    delete t;
    if (!read)
        return false;
    for (fxStrSet* s : made) {
        use(*s);
        delete s;
    }
    return true;
}

TrialReport tryAll(unsigned int n, const std::function<bool(unsigned int)>& trial) {
    const TrialReport report = runTrials(n, trial, hostile::isStatedMessage);
    for (const std::string& failure : report.failures)
        ADD_FAILURE() << failure;
    EXPECT_TRUE(report.trials() == n || !report.failures.empty());
    return report;
}

Outcome outcomeOf(const std::string& bytes) {
    const TrialReport report = tryAll(1, [&bytes](unsigned int) { return readAndUse(bytes); });
    return report.values ? value : report.nulls ? null : report.fatals ? fatal : failed;
}

std::string setStream(int n) {
    fxStrSet s(7);
    for (int i = 0; i < n; ++i)
        s.add(i == 0 ? fxStr() : fxStr(i * 7919, "%x"));
    return hostile::written(s, fxStrSet_type);
}

std::string head(std::uint32_t items, std::uint32_t keySize, std::uint32_t buckets) {
    return hostHeader() + hex("02 02000000 'SET' 00 4a 0c 01000000 02000000 01000000") +
           host(items) + host(keySize) + host(buckets);
}

// `n` empty keys in bucket `bucket`.
std::string emptyKeys(unsigned int n, std::uint32_t bucket) {
    std::string bytes;
    for (unsigned int i = 0; i < n; ++i)
        bytes += hex("40 08") + host(1) + host(bucket);
    return bytes;
}

}  // namespace

// The tests are death tests in that their children may die.

TEST(fxStrSetHostileDeathTest, streamsAreSound) {
    EXPECT_EQ(value, outcomeOf(setStream(6)));
    EXPECT_EQ(value, outcomeOf(head(2, 8, 31) + emptyKeys(2, 0)));
}

TEST(fxStrSetHostileDeathTest, everyFlippedBitHasAStatedOutcome) {
    const std::string stream = setStream(6);
    const TrialReport report =
        tryAll(static_cast<unsigned int>(stream.size()) * 8, [&stream](unsigned int i) {
            std::string bytes = stream;
            bytes[i / 8] = static_cast<char>(bytes[i / 8] ^ 1 << i % 8);
            return readAndUse(bytes);
        });
    EXPECT_GT(report.values, 100u);
    EXPECT_GT(report.nulls, 10u);
    EXPECT_GT(report.fatals, 10u);
}

TEST(fxStrSetHostileDeathTest, everyTruncationHasAStatedOutcome) {
    const std::string stream = setStream(6);
    const TrialReport report =
        tryAll(static_cast<unsigned int>(stream.size()),
               [&stream](unsigned int length) { return readAndUse(stream.substr(0, length)); });
    EXPECT_GE(report.nulls, 26u) << "the header, at the least";
    EXPECT_EQ(0u, report.values);
}

TEST(fxStrSetHostileDeathTest, headsWithWildSizes) {
    const struct {
        std::uint32_t items, keySize, buckets;
        Outcome outcome;
    } cases[] = {
        {0, 8, 31, value},          {0, 8, 0, value},
        {1, 8, 31, value},          {2, 8, 31, value},
        {1, 8, 0, fatal},   // a key without a bucket
        {3, 8, 31, fatal},  // there are two
        {0xFFFFFFFF, 8, 31, fatal}, {0xFFFFFFFF, 8, 0, fatal},
        {1, 9, 31, value},          {1, 12, 31, value},  // larger keys are kept
        {1, 4096, 31, value},       {1, 4097, 31, value},
        {1, 0x00100009, 31, fatal}, {1, 0, 31, fatal},
        {1, 7, 31, fatal},          {1, 0xFFFFFFFF, 31, fatal},
        {1, 0xFFFFFFF8, 31, fatal}, {0, 8, 0xFFFFFFFF, fatal},
        {0, 8, 0x40000000, fatal},  // times four is 0
        {0, 8, 0x40000001, fatal},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << c.items << " items of " << c.keySize << ", "
                                        << c.buckets << " buckets");
        EXPECT_EQ(c.outcome, outcomeOf(head(c.items, c.keySize, c.buckets) + emptyKeys(2, 0)));
    }
}

TEST(fxStrSetHostileDeathTest, bucketIndexesBeyondTheBuckets) {
    for (const std::uint32_t index : {31U, 32U, 0x40000000U, 0x80000000U, 0xFFFFFFFFU})
        EXPECT_EQ(fatal, outcomeOf(head(1, 8, 31) + emptyKeys(1, index))) << index;
    EXPECT_EQ(value, outcomeOf(head(1, 8, 31) + emptyKeys(1, 30)));
}

// Whether there are so many buckets depends on the machine, but they cost no
// memory until they are used.
TEST(fxStrSetHostileDeathTest, bucketCountsThatMayJustFit) {
    for (const std::uint32_t buckets : {0x3FFFFFFFU, 0x20000000U, 0x10000000U, 0x01000000U}) {
        SCOPED_TRACE(buckets);
        const std::string bytes = head(1, 8, buckets) + emptyKeys(1, buckets - 1);
        const TrialReport report = tryAll(1, [&bytes](unsigned int) {
            MemoryStream stream(bytes);
            fxInitializeToolkit();
            fxTranscriber* t = fxTranscriber::getReader(&stream);
            const bool read = t->readObject(fxStrSet_type) != nullptr;
            delete t;
            return read;
        });
        EXPECT_EQ(1u, report.values + report.fatals);
    }
}

// Eight bytes a key.
TEST(fxStrSetHostileDeathTest, sizesThatAreClaimedTakeMemoryInProportion) {
    const unsigned int n = 20000;
    for (const std::uint32_t size : {8U, 40U, 64U, 1000U, 4096U}) {
        EXPECT_NE(failed, outcomeOf(head(n, size, 31) + emptyKeys(n, 0))) << size;
    }
}
