// fxGraphLengths_test.cpp - records of every length of a payload, and where one ends and the next
// begins: what is written, taken apart by the format's description, and read back.

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxGraphReader.h"
#include "kelvofxds/transcribe/fxGraphWriter.h"
#include "tests/support/graphBytes.h"
#include "tests/support/graphs.h"

namespace {

// Bytes in place, in pieces of these sizes, and some of them in a block.
class Pieces : public fxXDRObj {
public:
    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber& t) override {
        char* at = bytes.data();
        for (const unsigned int n : sizes) {
            if (!t.xdr(at, n))
                return 0;
            at += n;
        }
        return inBlock == 0 || t.xdr(&block, inBlock);
    }
    // For the sizes that are set.
    void fill() {
        unsigned int n = 0;
        for (const unsigned int size : sizes)
            n += size;
        bytes.resize(n);
        for (unsigned int i = 0; i < n; ++i)
            bytes[i] = static_cast<char>(i * 7 + i / 256);
    }
    static void* create(fxTypeObj&) {
        auto* const made = new Pieces;
        made->fill();
        std::fill(made->bytes.begin(), made->bytes.end(), '\0');
        return made;
    }
    static void destroy(void* object) { delete static_cast<Pieces*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Pieces*>(object)->Pieces::xdr(t);
    }

    inline static std::vector<unsigned int> sizes;
    inline static unsigned int inBlock = 0;
    std::vector<char> bytes;
    char* block = nullptr;
};

fxTypeObj Pieces_type("Pieces", 1, Pieces::create, Pieces::destroy, Pieces::xdr);
fxTypeObj& Pieces::getTypeObj() const { return Pieces_type; }

std::uint32_t littleAt(const std::string& bytes, std::size_t at, unsigned int n) {
    std::uint32_t value = 0;
    for (unsigned int i = 0; i < n; ++i)
        value |= std::uint32_t(static_cast<unsigned char>(bytes[at + i])) << 8 * i;
    return value;
}

// The payloads of the records with `tag` and of those that go on after them. Expects each length
// in the shortest field for it, and the checksum at the end.
std::string payloadsOf(const std::string& stream, unsigned int tag) {
    const unsigned int words[] = {0, 0, 1, 2, 1, 2, 2, 2, 2, 2, 3, 1, 1, 1, 1, 1};
    const std::size_t root = std::strlen("fxGraphWriter") + 1 + 5 + 2 + 4;
    std::string payloads;
    bool isIn = false;
    for (std::size_t at = root; at < stream.size();) {
        const std::size_t start = at;
        const unsigned int head = static_cast<unsigned char>(stream[at++]);
        const unsigned int lengthBytes[] = {0, 1, 2, 4};
        const std::uint32_t length = littleAt(stream, at, lengthBytes[head >> 6]);
        EXPECT_EQ(length == 0 ? 0u : length < 256 ? 1u : length < 65536 ? 2u : 3u, head >> 6);
        EXPECT_GE(65536u, length);
        at += lengthBytes[head >> 6] + 4 * words[head & 15];
        if ((head & 63) == 2)
            at += std::strlen(stream.c_str() + at) + 1;
        isIn = (head & 63) == tag || (isIn && (head & 63) == 0);
        if (isIn)
            payloads += stream.substr(at, length);
        if ((head & 63) == 15) {
            EXPECT_EQ(slowChecksum(stream.substr(root, start - root)),
                      littleAt(stream, start + 1, 4));
            EXPECT_EQ(stream.size(), at);
        }
        at += length;
    }
    return payloads;
}

// Pieces of these sizes are in the stream as they are, and come back.
void expectWhole(const std::vector<unsigned int>& sizes, unsigned int inBlock = 0) {
    SCOPED_TRACE(testing::PrintToString(sizes) + " and a block of " + std::to_string(inBlock));
    Pieces::sizes = sizes;
    Pieces::inBlock = inBlock;
    Pieces pieces;
    pieces.fill();
    std::vector<char> block(inBlock, 'b');
    for (unsigned int i = 0; i < inBlock; ++i)
        block[i] = static_cast<char>(i * 5 + i / 256);
    pieces.block = block.data();
    const std::string bytes(pieces.bytes.data(), pieces.bytes.size());
    const std::string blockBytes(block.data(), block.size());

    const std::string stream = graphStreamOf(pieces);

    EXPECT_TRUE(bytes == payloadsOf(stream, 10));
    EXPECT_TRUE(blockBytes == payloadsOf(stream, 5));
    const Held<> source(static_cast<const void*>(stream.data()),
                        static_cast<unsigned int>(stream.size()));
    const auto reader = graphReaderOn(source.get());
    auto* const copy = static_cast<Pieces*>(reader->readObject(Pieces_type));
    ASSERT_NE(nullptr, copy) << reader->lastError();
    EXPECT_TRUE(pieces.bytes == copy->bytes);
    EXPECT_TRUE(inBlock == 0 || std::memcmp(block.data(), copy->block, inBlock) == 0);
    delete[] copy->block;
    delete copy;
}

}  // namespace

TEST(fxGraphLengths, payloadsOfEveryLengthFieldAreWhole) {
    for (unsigned int n = 0; n < 600; ++n) {
        expectWhole({n});
        expectWhole({n / 2, n - n / 2}, n);
    }
}

TEST(fxGraphLengths, largePayloadsAreWholeWhereverTheyAreDivided) {
    for (const unsigned int near : {4096U, 8192U, 32768U, 65535U, 65536U}) {
        for (unsigned int n = near - 5; n < near + 5; ++n) {
            expectWhole({n});
            expectWhole({5}, n);
        }
    }
}

// Many small pieces before it fill what is collected, up to each byte.
TEST(fxGraphLengths, piecesThatFillWhatIsCollectedAreWhole) {
    for (unsigned int n = 32 * 1024 - 80; n < 32 * 1024 + 8; ++n) {
        for (const unsigned int last : {1U, 300U})
            expectWhole({4000, 4001, 4002, 4003, 4004, 4005, 4006, n - 7 * 4003, last}, 40);
    }
}
