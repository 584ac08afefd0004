// fxGraphGenerated_test.cpp - generated graphs, written and read, compared node by node.

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/generatedGraphs.h"
#include "tests/support/graphBytes.h"

namespace {

// KELVOFXDS_EXHAUSTIVE asks for the largest ones.
bool isFullRun() { return std::getenv("KELVOFXDS_EXHAUSTIVE") != nullptr; }

std::string standardStreamOf(fxXDRObj& object) {
    const Held<> stream;
    const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(stream.get()));
    EXPECT_EQ(1, writer->writeObject(&object, &object));
    return std::string(stream->getBase(), stream->length());
}

void expectSame(const std::string& bytes, const GeneratedTown& town) {
    const GraphRead read = readGraph(bytes, Person_type);
    ASSERT_EQ("", read.error);
    EXPECT_EQ("", ReadTown(static_cast<Person*>(read.object)).differenceTo(town));
}

std::string golden(const char* name) {
    std::ifstream in(std::string(KELVOFXDS_SOURCE_DIR "/tests/transcribe/golden/") + name,
                     std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

bool hostIsBig() {
    const short one = 1;
    return *reinterpret_cast<const char*>(&one) == 0;
}

}  // namespace

TEST(fxGraphGenerated, graphsOfEveryShapeComeBack) {
    for (unsigned int seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        GeneratedTown town(1 + seed * seed / 4, seed);
        expectSame(graphStreamOf(town.root()), town);
    }
    EXPECT_EQ(0, Person::living);
}

TEST(fxGraphGenerated, aMillionObjectsComeBack) {
    GeneratedTown town(isFullRun() ? 1000000 : 20000, 7);
    expectSame(graphStreamOf(town.root()), town);
}

// The standard writer knows no types, and writes embedded objects that are met first
// by themselves: without pointers to them its streams come back, too.
TEST(fxGraphGenerated, standardStreamsOfTheSameGraphsAreReadBack) {
    for (unsigned int seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        GeneratedTown town(1 + seed * 7, seed);
        for (Person* person = &town.root(); person;) {
            person->arms = person->arm.twin = nullptr;
            Person* const next = person->mother;
            person = next == &town.root() ? nullptr : next;
        }
        fxTranscriber::addTranscriber("fxBinaryWriter", fxGraphReader::forStandardStreams);
        expectSame(standardStreamOf(town.root()), town);
        fxTranscriber::addTranscriber("fxBinaryWriter", makeBinaryReader);
    }
}

// Written on a little-endian and on a big-endian machine.
TEST(fxGraphGenerated, bothOrdersOfBytesAreWrittenAndReadAlike) {
    GeneratedTown town(40, 11);
    const std::string little = golden("town_little.fx");
    const std::string big = golden("town_big.fx");
    const std::string own = graphStreamOf(town.root());
    if (const char* folder = std::getenv("KELVOFXDS_GOLDEN"))  // to make them anew
        std::ofstream(std::string(folder) + (hostIsBig() ? "/town_big.fx" : "/town_little.fx"),
                      std::ios::binary)
            << own;
    EXPECT_TRUE((hostIsBig() ? big : little) == own);
    expectSame(little, town);
    expectSame(big, town);
}

// Depth costs no stack, in writing, reading and releasing what a failed read made. The thread makes
// its transcribers itself: what finds those of others is for the thread of the toolkit.
namespace {
Limb* readChain(const char* bytes, unsigned int n) {
    const Held<> stream(static_cast<const void*>(bytes), n);
    fxGraphReader reader(stream.get(), 0x1122, 0x33445566, "ieee");
    return static_cast<Limb*>(reader.readObject(Limb_type));
}

void* chainInASmallStack(void*) {
    std::vector<Limb> chain(100000);
    for (std::size_t i = 0; i + 1 < chain.size(); ++i)
        chain[i].twin = &chain[i + 1];
    const Held<> stream;
    fxGraphWriter writer(stream.get());
    const bool isWritten = writer.writeObject(&chain[0], &chain[0]) != 0;
    const Limb* const cut = readChain(stream->getBase(), stream->length() - 1);
    Limb* const whole = readChain(stream->getBase(), stream->length());
    std::size_t length = 0;
    for (Limb* limb = whole; limb; ++length) {
        Limb* const next = limb->twin;
        delete limb;
        limb = next;
    }
    return reinterpret_cast<void*>(isWritten && cut == nullptr && length == chain.size() &&
                                   Limb::living == static_cast<int>(chain.size()));
}
}  // namespace

TEST(fxGraphGenerated, aLongChainTakesNoStack) {
    pthread_attr_t attributes;
    ASSERT_EQ(0, pthread_attr_init(&attributes));
    // As small as the system allows, which is more than 64 KiB on some machines.
    const auto least = static_cast<std::size_t>(::sysconf(_SC_THREAD_STACK_MIN));
    ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, std::max<std::size_t>(64 * 1024, least)));
    pthread_t thread;
    ASSERT_EQ(0, pthread_create(&thread, &attributes, chainInASmallStack, nullptr));
    void* isDone = nullptr;
    pthread_join(thread, &isDone);
    pthread_attr_destroy(&attributes);
    EXPECT_NE(nullptr, isDone);
}

// Every truncation and every flipped bit. 30 files where everything is asked for.
TEST(fxGraphGenerated, noDamagedFileLoads) {
    unsigned int truncations = 0;
    unsigned int flips = 0;
    const unsigned int files = isFullRun() ? 30 : 2;
    for (unsigned int seed = 1; seed <= files && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        GeneratedTown town(4 + seed % 7, seed);
        const int before = Person::living;
        std::string bytes = graphStreamOf(town.root());
        const auto expectFailure = [&](const std::string& damaged) {
            const Held<> stream(static_cast<const void*>(damaged.data() + 25),
                                static_cast<unsigned int>(damaged.size()) - 25);
            fxGraphReader reader(stream.get(), 0x1122, 0x33445566, "ieee");
            ASSERT_EQ(nullptr, reader.readObject(Person_type));
            ASSERT_NE('\0', reader.lastError()[0]);
            ASSERT_EQ(before, Person::living);
        };
        for (std::size_t n = 25; n < bytes.size(); ++n, ++truncations)
            expectFailure(bytes.substr(0, n));
        for (std::size_t n = 25; n < bytes.size(); ++n) {
            for (int bit = 0; bit < 8; ++bit, ++flips) {
                bytes[n] = static_cast<char>(bytes[n] ^ 1 << bit);
                expectFailure(bytes);
                bytes[n] = static_cast<char>(bytes[n] ^ 1 << bit);
            }
        }
    }
    std::printf("%u truncations, %u flips of %u files\n", truncations, flips, files);
}
