// Streams that nobody vouches for. Whatever the bytes, reading ends in a
// value, in null or in one of the stated messages, and a value can be used.

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/transcribe/fxBinaryFormatInternal.h"
#include "tests/support/hostileReading.h"
#include "tests/support/hostileStreams.h"
#include "tests/support/trialRunner.h"

namespace {
// The tests are death tests in that their children may die.

const unsigned int shards = 12;

std::vector<std::string> seeds() {
    return {hostile::sampleStream(20),      hostile::dictionaryStream(6), hostile::arrayStream(20),
            hostile::bigDictionaryStream(), hostile::stringStream(),      hostile::nodeStream()};
}

TrialReport tryAll(unsigned int n, const std::function<bool(unsigned int)>& trial) {
    const TrialReport report = runTrials(n, trial, hostile::isStatedMessage);
    for (const std::string& failure : report.failures)
        ADD_FAILURE() << failure;
    EXPECT_TRUE(report.trials() == n || !report.failures.empty());
    return report;
}

// The outcome of reading one root.
enum Outcome { value, null, fatal, failed };

Outcome outcomeOf(const std::string& bytes) {
    const TrialReport report =
        tryAll(1, [&bytes](unsigned int) { return hostile::readAndUse(bytes, 1); });
    return report.values ? value : report.nulls ? null : report.fatals ? fatal : failed;
}

class Random {
public:
    explicit Random(std::uint64_t seed) : state(seed) {}

    // A number below `limit`, the same sequence on every host.
    std::uint32_t below(std::uint32_t limit) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        const std::uint32_t high = static_cast<std::uint32_t>(state >> 32);
        return static_cast<std::uint32_t>((std::uint64_t(high) * limit) >> 32);
    }

private:
    std::uint64_t state;
};

// Values that lengths, counts and numbers are best attacked with.
const std::uint32_t edges[] = {
    0,          1,          2,          3,          4,          8,          31,         255,
    256,        512,        513,        4096,       4097,       65535,      65536,      0x000FFFFF,
    0x1FFFFFFF, 0x20000000, 0x3FFFFFFF, 0x40000000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF};

std::string mutated(const std::vector<std::string>& streams, Random& random) {
    const auto pick = [&random, &streams]() -> const std::string& {
        return streams[random.below(static_cast<std::uint32_t>(streams.size()))];
    };
    std::string bytes = pick();
    const auto place = [&random, &bytes]() {
        // Behind the header most of the time.
        const std::uint32_t first = random.below(20) == 0 || bytes.size() <= 26 ? 0 : 26;
        return first + random.below(static_cast<std::uint32_t>(bytes.size()) - first);
    };
    for (std::uint32_t changes = 1 + random.below(4); changes != 0 && !bytes.empty(); --changes) {
        const std::size_t at = place();
        switch (random.below(7)) {
            case 0:
                bytes[at] = static_cast<char>(random.below(256));
                break;
            case 1:  // a word of framing
                bytes.replace(at, 4, word(edges[random.below(sizeof edges / sizeof edges[0])]));
                break;
            case 2:  // a word of payload
                bytes.replace(at, 4, host(edges[random.below(sizeof edges / sizeof edges[0])]));
                break;
            case 3:  // a head with a valid tag
                bytes[at] = static_cast<char>(random.below(fxBinaryFormat::recordCount) |
                                              random.below(4) << 6);
                break;
            case 4:
                bytes.erase(at, 1 + random.below(20));
                break;
            case 5:
                bytes.insert(at, bytes.substr(place(), 1 + random.below(60)));
                break;
            default: {  // the rest of another stream
                const std::string& other = pick();
                bytes = bytes.substr(0, at) +
                        other.substr(random.below(static_cast<std::uint32_t>(other.size())));
            }
        }
    }
    return bytes;
}
}  // namespace

// The inputs themselves are sound.

TEST(hostileStreamDeathTest, seedsAreRead) {
    for (const std::string& seed : seeds()) {
        EXPECT_EQ(value, outcomeOf(seed));
    }
}

TEST(hostileStreamDeathTest, runnerSeesEveryKindOfEnd) {
    const TrialReport report = runTrials(
        7,
        [](unsigned int i) {
            if (i == 2)
                fxFatal("Whoops!");
            if (i == 3)
                fxFatal("Something else");
            if (i == 4)
                throw i;
            if (i == 5)
                std::raise(SIGSEGV);
            if (i == 6)
                std::abort();
            return i == 0;
        },
        hostile::isStatedMessage);
    EXPECT_EQ(1u, report.values);
    EXPECT_EQ(1u, report.nulls);
    EXPECT_EQ(1u, report.fatals);
    ASSERT_EQ(4u, report.failures.size());
    EXPECT_EQ("trial 3 died by signal 6: Something else\n", report.failures[0]);
    EXPECT_EQ("trial 4 threw an exception: ", report.failures[1]);
    EXPECT_EQ(0u, report.failures[2].find("trial 5 "));
    EXPECT_EQ("trial 6 died by signal 6: ", report.failures[3]);
}

TEST(hostileStreamDeathTest, runnerSeesHangsAndWastedMemory) {
    const TrialReport hang = runTrials(
        1,
        [](unsigned int) {
            while (hostile::sink != 0xFFFFFFFF)
                hostile::sink = 0;
            return true;
        },
        hostile::isStatedMessage, 1, 1);
    ASSERT_EQ(1u, hang.failures.size());
    EXPECT_EQ(0u, hang.failures[0].find("trial 0 died by signal 27"));
    const TrialReport waste = runTrials(
        1,
        [](unsigned int) {
            std::vector<char> memory(80 << 20, 'x');
            volatile char* const bytes = memory.data();  // no compiler does without it
            return bytes[1000] == 'x';
        },
        hostile::isStatedMessage);
    EXPECT_GE(waste.growth, 80 * 1024);
    EXPECT_EQ(waste.growth > trialMemoryLimit, !waste.failures.empty());
}

TEST(hostileStream, messagesAreToldApart) {
    const struct {
        const char* text;
        bool stated;
    } cases[] = {{"Whoops!\n", true},
                 {"Whoops!", false},
                 {"Whoops!\n\n", false},
                 {"unknown type anything\n", true},
                 {"Unknown transcriber type \"x\"\n", true},
                 {"Unknown transcriber type x\n", false},
                 {"fxBinaryReader: unknown long ordering 1a2b\n", true},
                 {"fxBinaryReader: unknown long ordering \n", false},
                 {"fxBinaryReader: unknown short ordering 123456789\n", false},
                 {"tried to invoke fxBinaryReader::writeObject\n", false},
                 {"", false}};
    for (const auto& c : cases)
        EXPECT_EQ(c.stated, hostile::isStatedMessage(c.text)) << c.text;
}

// Every truncation and every flipped bit of every stream.

namespace {
// The stream that one of its bits, counted through all of `streams`, is
// flipped in; empty behind the last one.
std::string withFlippedBit(const std::vector<std::string>& streams, std::size_t bit) {
    for (std::string bytes : streams) {
        if (bit < bytes.size() * 8) {
            bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ 1 << bit % 8);
            return bytes;
        }
        bit -= bytes.size() * 8;
    }
    return std::string();
}
}  // namespace

class hostileStreamShardDeathTest : public testing::TestWithParam<unsigned int> {};

TEST_P(hostileStreamShardDeathTest, everyFlippedBitHasAStatedOutcome) {
    const std::vector<std::string> streams = seeds();
    unsigned int bits = 0;
    for (const std::string& seed : streams)
        bits += static_cast<unsigned int>(seed.size()) * 8;
    const unsigned int first = GetParam();
    const TrialReport report =
        tryAll((bits - first + shards - 1) / shards, [&streams, first](unsigned int i) {
            return hostile::readAndUse(withFlippedBit(streams, first + i * shards));
        });
    EXPECT_GT(report.values, 100u);
    EXPECT_GT(report.nulls, 10u);
    EXPECT_GT(report.fatals, 10u);
}

INSTANTIATE_TEST_SUITE_P(shard, hostileStreamShardDeathTest, testing::Range(0U, shards));

TEST(hostileStreamDeathTest, everyTruncationHasAStatedOutcome) {
    for (const std::string& seed : seeds()) {
        const TrialReport report = tryAll(
            static_cast<unsigned int>(seed.size()),
            [&seed](unsigned int length) { return hostile::readAndUse(seed.substr(0, length)); });
        EXPECT_GE(report.nulls, 26u) << "the header, at the least";
    }
}

TEST_P(hostileStreamShardDeathTest, randomChangesHaveAStatedOutcome) {
    const std::uint64_t seed = 20240229 + GetParam();
    RecordProperty("seed", std::to_string(seed));
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::vector<std::string> streams = seeds();
    streams.push_back(hostile::sampleStream(1));
    streams.push_back(hostile::dictionaryStream(2));
    Random random(seed);
    std::vector<std::string> inputs;
    for (int i = 0; i < 400; ++i)
        inputs.push_back(mutated(streams, random));
    const TrialReport report =
        tryAll(400, [&inputs](unsigned int i) { return hostile::readAndUse(inputs[i]); });
    EXPECT_GT(report.values, 10u);
    EXPECT_GT(report.nulls, 10u);
    EXPECT_GT(report.fatals, 10u);
}

// A class's own reading operation, on an object that the caller made.

TEST(hostileStreamDeathTest, containersReadInPlaceHaveAStatedOutcome) {
    fxStrStrDictionary dictionary(7);
    hostile::fill(dictionary, 6);
    fxDoubleArray array;
    hostile::fill<double>(array, 30);
    const auto contents = [](fxXDRObj& object) {
        MemoryStream out;
        fxBinaryWriter writer(&out);
        EXPECT_TRUE(object.xdr(writer) && writer.flush());
        return out.written;
    };
    const std::string dictionaryBytes = contents(dictionary);
    const std::string arrayBytes = contents(array);
    const auto changed = [](std::string bytes, unsigned int i) {
        const unsigned int bits = static_cast<unsigned int>(bytes.size()) * 8;
        if (i >= bits)
            return bytes.substr(0, i - bits);
        bytes[i / 8] = static_cast<char>(bytes[i / 8] ^ 1 << i % 8);
        return bytes;
    };
    tryAll(static_cast<unsigned int>(dictionaryBytes.size()) * 9, [&](unsigned int i) {
        fxStrStrDictionary read;
        return hostile::readInPlace(changed(dictionaryBytes, i), read);
    });
    tryAll(static_cast<unsigned int>(arrayBytes.size()) * 9, [&](unsigned int i) {
        fxDoubleArray read;
        const bool complete = hostile::readInPlace(changed(arrayBytes, i), read);
        if (complete)
            hostile::use<double>(read);
        return complete;
    });
}

// Worst cases made by hand.

namespace {
std::string dictionaryHead(std::uint32_t items, std::uint32_t keySize, std::uint32_t valueSize,
                           std::uint32_t buckets) {
    return hostHeader() + hex("02 02000000 'DICT' 00 4a 10 01000000 02000000 01000000") +
           host(items) + host(keySize) + host(valueSize) + host(buckets);
}

// `n` entries with an empty key and an empty value in bucket `bucket`.
std::string emptyEntries(unsigned int n, std::uint32_t bucket) {
    std::string bytes;
    for (unsigned int i = 0; i < n; ++i)
        bytes += hex("40 0c") + host(1) + host(1) + host(bucket);
    return bytes;
}

std::string arrayHead(std::uint32_t length, std::uint16_t elementSize) {
    return hostHeader() + hex("02 02000000 'ARRAY' 00 4a 06 01000000 02000000 01000000") +
           host(length) + host(elementSize);
}
}  // namespace

TEST(hostileStreamDeathTest, dictionaryHeadsWithWildSizes) {
    const struct {
        std::uint32_t items, keySize, valueSize, buckets;
        Outcome outcome;
    } cases[] = {
        {0, 8, 8, 31, value},          {0, 8, 8, 0, value},
        {1, 8, 8, 31, value},          {1, 8, 8, 0, fatal},   // an entry without a bucket
        {2, 8, 8, 31, value},          {3, 8, 8, 31, fatal},  // there are two
        {0xFFFFFFFF, 8, 8, 31, fatal}, {0xFFFFFFFF, 8, 8, 0, fatal},
        {1, 12, 8, 31, value},  // larger keys and values are kept
        {1, 8, 12, 31, value},         {1, 12, 12, 31, value},
        {1, 16392, 8, 31, value},      {1, 16400, 8, 31, fatal},  // 16 KB larger, and more
        {1, 0, 8, 31, fatal},          {1, 7, 8, 31, fatal},
        {1, 8, 0, 31, fatal},          {1, 8, 7, 31, fatal},
        {1, 0xFFFFFFFF, 8, 31, fatal}, {1, 0xFFFFFFF8, 8, 31, fatal},  // the sum is 0
        {1, 8, 0xFFFFFFF8, 31, fatal}, {1, 0x80000000, 0x80000008, 31, fatal},
        {0, 8, 8, 0xFFFFFFFF, fatal},  {0, 8, 8, 0x40000000, fatal},  // times four is 0
        {0, 8, 8, 0x40000001, fatal},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << c.items << " items of " << c.keySize << " + "
                                        << c.valueSize << ", " << c.buckets << " buckets");
        EXPECT_EQ(c.outcome, outcomeOf(dictionaryHead(c.items, c.keySize, c.valueSize, c.buckets) +
                                       emptyEntries(2, 0)));
    }
}

// Whether there are so many buckets depends on the machine, but they cost no
// memory until they are used.
TEST(hostileStreamDeathTest, bucketCountsThatMayJustFit) {
    for (const std::uint32_t buckets : {0x3FFFFFFFU, 0x20000000U, 0x10000000U, 0x01000000U}) {
        SCOPED_TRACE(buckets);
        const std::string bytes = dictionaryHead(1, 8, 8, buckets) + emptyEntries(1, buckets - 1);
        const TrialReport report = tryAll(1, [&bytes](unsigned int) {
            MemoryStream stream(bytes);
            fxInitializeToolkit();
            fxTranscriber* reader = fxTranscriber::getReader(&stream);
            const bool read = reader->readObject(fxStrStrDictionary_type) != nullptr;
            delete reader;
            return read;
        });
        EXPECT_EQ(1u, report.values + report.fatals);
    }
}

TEST(hostileStreamDeathTest, bucketIndexesBeyondTheBuckets) {
    for (const std::uint32_t index : {31U, 32U, 0x40000000U, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(fatal, outcomeOf(dictionaryHead(1, 8, 8, 31) + emptyEntries(1, index))) << index;
    }
    EXPECT_EQ(value, outcomeOf(dictionaryHead(1, 8, 8, 31) + emptyEntries(1, 30)));
}

// Twelve bytes an entry, and a few more a string.
TEST(hostileStreamDeathTest, sizesThatAreClaimedTakeMemoryInProportion) {
    const unsigned int n = 20000;
    for (const std::uint32_t size : {8U, 40U, 4096U}) {
        EXPECT_NE(failed, outcomeOf(dictionaryHead(n, size, size, 31) + emptyEntries(n, 0)))
            << "keys and values of " << size;
    }
    for (const std::uint32_t size : {2U, 34U, 4097U}) {
        std::string bytes = dictionaryHead(n, 8, 8, 31);
        for (unsigned int i = 0; i < n; ++i) {
            bytes += hex("40 04") + host(size) + hex("43 08") + word(10 + i) + word(1) + host(1) +
                     host(0);
        }
        for (unsigned int i = n; i-- > 0;)
            bytes += hex("45 01") + word(10 + i) + word(1) + 'k';
        EXPECT_NE(failed, outcomeOf(bytes)) << "strings of " << size;
    }
}

TEST(hostileStreamDeathTest, arraysWithWildSizes) {
    const struct {
        std::uint32_t length;
        std::uint16_t elementSize;
        Outcome outcome;
    } cases[] = {
        {8, 4, value},          {0, 4, value},
        {3, 4, value},                          // no whole element
        {8, 0, fatal},                          // no element size
        {0, 0, fatal},          {8, 1, fatal},  // too small for an int
        {8, 3, fatal},          {8, 5, value},  // one element of five bytes
        {8, 65535, value},                      // none
        {65535, 65535, value},                  // one, in 65535 bytes
        {12, 4, fatal},                         // there are two ints
        {0xFFFFFFFF, 4, fatal}, {0xFFFFFFFC, 4, fatal},
        {0x80000000, 4, fatal}, {0xFFFFFFFF, 65535, fatal},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.length << " bytes, elements of " << c.elementSize);
        EXPECT_EQ(c.outcome,
                  outcomeOf(arrayHead(c.length, c.elementSize) + hex("40 08 01020304 05060708")));
    }
}

TEST(hostileStreamDeathTest, manyRecordsOfOneNumberAreReadInLinearTime) {
    const unsigned int n = 100000;
    std::string types = hostHeader();
    for (unsigned int i = 0; i < n; ++i)
        types += hex("02 02000000 'fxXDRObj' 00");
    types += hex("0a 01000000 02000000 01000000");
    EXPECT_EQ(value, outcomeOf(types));

    std::string objects = hostHeader() + hex("02 02000000 'fxXDRObj' 00");
    std::string distinct = objects;
    for (unsigned int i = 0; i < n; ++i) {
        objects += hex("0a 01000000 02000000 01000000");
        distinct += hex("0a") + word(i * 31 * 4 + 4) + hex("02000000 01000000");  // one bucket
    }
    for (const std::string& bytes : {objects, distinct}) {
        const TrialReport report = tryAll(1, [&bytes](unsigned int) {
            MemoryStream stream(bytes);
            fxInitializeToolkit();
            fxTranscriber* reader = fxTranscriber::getReader(&stream);
            unsigned int roots = 0;
            while (void* root = reader->readObject(fxXDRObj_type)) {
                fxXDRObj_type.destroy(root);
                ++roots;
            }
            delete reader;
            return roots == n;
        });
        EXPECT_EQ(1u, report.values);
    }
}

TEST(hostileStreamDeathTest, manyPointersToOneNumberAreReadInLinearTime) {
    const unsigned int n = 100000;
    // Strings that all wait for one block.
    std::string bytes = dictionaryHead(n, 8, 8, 1);
    for (unsigned int i = 0; i < n; ++i)
        bytes += hex("40 04") + host(2) + hex("43 08 09000000 02000000") + host(1) + host(0);
    bytes += hex("45 02 09000000 02000000 'k' 00");
    EXPECT_EQ(null, outcomeOf(bytes)) << "only one of them can have it";
}

TEST(hostileStreamDeathTest, endlessRecordsWithoutPayload) {
    const unsigned int n = 1000000;
    const std::string head = hostHeader() + hex("02 02000000 'DICT' 00");
    const std::string object = hex("0a 01000000 02000000 01000000");
    EXPECT_EQ(fatal, outcomeOf(head + object + std::string(n, '\0')));
    EXPECT_EQ(fatal, outcomeOf(head + object + std::string(n, '\1')));
    EXPECT_EQ(fatal, outcomeOf(head + std::string(n, '\0')));
    std::string types = head;
    for (unsigned int i = 0; i < n / 10; ++i)
        types += hex("02") + word(i) + hex("'DICT' 00");
    EXPECT_EQ(null, outcomeOf(types));
    // Empty records between the bytes of the contents.
    const std::string sizes = host(0) + host(8) + host(8) + host(1);
    std::string spread = head + object;
    for (const char c : sizes)
        spread += std::string(n / 100, '\0') + hex("40 01") + c;
    EXPECT_EQ(value, outcomeOf(spread));
}

TEST(hostileStreamDeathTest, recordsThatClaimEndlessPayloads) {
    const std::string head = hostHeader() + hex("02 02000000 'DICT' 00");
    for (const char* record :
         {"ca ffffffff 01000000 02000000 01000000", "c0 ffffffff", "c2 ffffffff 03000000 'DICT' 00",
          "c5 ffffffff 03000000 ffffffff", "c9 ffffffff 03000000 f8ffffff"}) {
        SCOPED_TRACE(record);
        const Outcome outcome = outcomeOf(head + hex(record) + run(2000));
        EXPECT_TRUE(outcome == null || outcome == fatal);
    }
}
