// fxdump: bytes that make no sense.

#ifdef KELVOFXDS_FXDUMP

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/dumping.h"
#include "tests/support/heapCalls.h"
#include "tests/support/jsonCheck.h"
#include "tests/support/streamBytes.h"
#include "tests/support/streamSamples.h"

namespace {
using fxdump::Show;

// A standard stream with every record.
std::string standardSample() {
    return bigHeader() +
           hex("02 02000000 'DICT' 00 | 4a 14 01000000 02000000 01000000"
               "00000001 00000008 00000008 00000003 00000002 | 43 04 03000000 02000000 00000001"
               "40 04 00000002 | 02 04000000 'A' 00 | 0b 05000000 | 0c 05000000 | 0d 06000000"
               "0e 06000000 | 01 | 03 07000000 04000000 | 04 07000000 | 0a 05000000 04000000"
               "01000000 | 46 04 07000000 04000000 00010002 | 45 02 03000000 02000000 'A' 00");
}

std::vector<std::string> samples() {
    return {graphSample(false), graphSample(true), standardSample()};
}

// Whatever the bytes: an outcome, one line about damage, and JSON that is some.
void showAll(const std::string& bytes) {
    for (const Show show : everyShow) {
        for (const bool readerWords : {false, true}) {
            const Shown result = shown(show, bytes, readerWords);
            EXPECT_EQ(result.message.empty() ? 0 : 1, result.outcome);
            EXPECT_EQ(std::string::npos, result.message.find('\n'));
            if (show == Show::json) {
                EXPECT_TRUE(JsonCheck::isDocument(result.out)) << result.out;
            }
        }
    }
}

// A stream that is made while it is read: a beginning, and then parts by number.
class MadeSource : public fxdump::Source {
public:
    using Part = std::string (*)(unsigned int i);

    MadeSource(std::string first, Part p, unsigned int n)
        : next(std::move(first)), part(p), parts(n) {}

    long blocksAtEnd = 0;  // of the heap, while the stream is still being shown

protected:
    std::size_t read(char* at, std::size_t room) override {
        if (next.empty() && made < parts)
            next = part(made++);
        if (next.empty())
            blocksAtEnd = heapCalls().blocks;
        const std::size_t n = std::min(room, next.size());
        std::memcpy(at, next.data(), n);
        next.erase(0, n);
        return n;
    }

private:
    std::string next;
    const Part part;
    const unsigned int parts;
    unsigned int made = 0;
};

// Types that never were before, and an object of each.
std::string newTypes(unsigned int part) {
    const unsigned int n = 8000;
    std::string bytes;
    for (std::uint32_t i = part * n + 1; i <= (part + 1) * n; ++i)
        bytes += hex("02") + word(i) + "T" + std::to_string(i) + std::string(1, '\0') + hex("0a") +
                 word(1) + word(i) + word(1);
    return bytes;
}

std::string moreOfAName(unsigned int) { return std::string(1 << 16, 'n'); }
}  // namespace

TEST(fxdumpHostile, theSamplesAreSound) {
    for (const std::string& bytes : samples())
        EXPECT_EQ("", shown(Show::verify, bytes).message);
}

TEST(fxdumpHostile, everyCutIsShownUpToThere) {
    for (const std::string& bytes : samples()) {
        for (std::size_t n = 0; n < bytes.size(); ++n) {
            SCOPED_TRACE(n);
            showAll(bytes.substr(0, n));
        }
    }
}

TEST(fxdumpHostile, everyFlippedBitIsShownSomehow) {
    for (const std::string& sound : samples()) {
        for (std::size_t bit = 0; bit < sound.size() * 8; bit += 3) {
            SCOPED_TRACE(bit);
            std::string bytes = sound;
            bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ 1 << bit % 8);
            showAll(bytes);
        }
    }
}

TEST(fxdumpHostile, bytesByChanceBehindAHeaderAreShownSomehow) {
    const unsigned int seed = 4711;
    std::mt19937 random(seed);
    for (unsigned int i = 0; i < 500; ++i) {
        SCOPED_TRACE(testing::Message() << "seed " << seed << ", stream " << i);
        std::string bytes = i % 2 == 0 ? littleHeader() : GraphBytes(i % 4 == 1).str();
        for (unsigned int n = random() % 300; n != 0; --n)
            bytes += static_cast<char>(random() % 3 == 0 ? random() % 16 : random());
        showAll(bytes);
    }
}

// Pieces from a pipe come as they like.
TEST(fxdumpHostile, whatIsShownDoesNotDependOnHowBytesCome) {
    for (const std::string& bytes : samples()) {
        for (const Show show : everyShow) {
            fxdump::Options options;
            options.show = show;
            const Shown atOnce = shown(show, bytes);
            for (const std::size_t step : {1, 2, 3, 7}) {
                SlowSource source(bytes, step);
                EXPECT_EQ(atOnce.out, shown(options, source).out) << step;
            }
        }
    }
}

TEST(fxdumpHostile, longContentsAreTheSameHoweverTheyCome) {
    GraphBytes g;
    g.type(2, "fxStr", 1).record(fxOT_Object, {1, 2, 1}, g.string(run(60000)));
    g.record(fxOT_Data, {}, run(20000)).end();
    for (const Show show : everyShow) {
        fxdump::Options options;
        options.show = show;
        SlowSource source(g.str(), 997);
        EXPECT_EQ(shown(show, g.str()).out, shown(options, source).out);
    }
}

TEST(fxdumpHostile, aReadThatFailsIsTroubleAndNoDamage) {
    class Failing : public fxdump::Source {
    protected:
        std::size_t read(char* at, std::size_t room) override {
            const std::string bytes = graphSample(false).substr(0, 100);
            if (offset() == 0 && room >= bytes.size()) {
                std::memcpy(at, bytes.data(), bytes.size());
                return bytes.size();
            }
            fail(EIO);
            return 0;
        }
    };
    for (const Show show : everyShow) {
        fxdump::Options options;
        options.show = show;
        Failing source;
        const Shown result = shown(options, source);
        EXPECT_EQ(2, result.outcome);
        EXPECT_EQ(std::strerror(EIO), result.message);
        if (show == Show::json) {
            EXPECT_TRUE(JsonCheck::isDocument(result.out)) << result.out;
        }
    }
}

TEST(fxdumpHostile, memoryDoesNotGrowWithTheStream) {
    if (!heapCallsAreCounted())
        GTEST_SKIP() << "the heap is not counted";
    for (const Show show : {Show::list, Show::hex, Show::json, Show::dot, Show::stats}) {
        long blocks[2] = {};
        for (const unsigned int parts : {1, 5}) {
            fxdump::Options options;
            options.show = show;
            MadeSource source(littleHeader(), newTypes, parts);
            std::FILE* const file = std::fopen("/dev/null", "w");
            ASSERT_NE(nullptr, file);
            fxdump::Output out(file, false);
            fxdump::Dump dump(options, out);
            std::string message;
            EXPECT_EQ(0, dump.show(source, "file", message)) << message;
            blocks[parts == 5] = source.blocksAtEnd;
            std::fclose(file);
        }
        EXPECT_LT(0, blocks[0]);
        EXPECT_GE(blocks[0] + 100, blocks[1]);
    }
}

TEST(fxdumpHostile, aNameWithoutAnEndIsNotKept) {
    fxdump::Options options;
    MadeSource source(littleHeader() + hex("02 01000000"), moreOfAName, 500);
    const Shown result = shown(options, source);
    EXPECT_EQ(1, result.outcome);
    EXPECT_EQ("offset 26, record 1: the stream ends within the name of a type", result.message);
    EXPECT_GT(1000u, result.out.size());
}

TEST(fxdumpHostile, numbersFarApartTakeMemoryInProportion) {
    std::string bytes = littleHeader();
    for (std::uint32_t i = 1; i < 100000; ++i)
        bytes += hex("0b") + word(i * 2654435761U);
    EXPECT_NE("", shown(Show::verify, bytes).message);
}

#endif
