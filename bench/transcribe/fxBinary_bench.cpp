// fxBinary_bench.cpp - the binary writer and reader, beside cereal's binary archives.

#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include <cereal/types/array.hpp>
#include <cereal/types/memory.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/unordered_map.hpp>
#include <cereal/types/vector.hpp>

#include "bench/support/inputs.h"
#include "bench/support/transcripts.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/core/fxTypeObj.h"

namespace {

// Arrays of ints; `n` is in bytes.

template <class Medium>
struct IntArrays {
    explicit IntArrays(unsigned int n) : ours(n / sizeof(int)) {
        Random random;
        for (unsigned int i = 0; i < ours.length(); ++i) {
            ours[i] = static_cast<int>(random.below(1000000));
            peer.push_back(ours[i]);
        }
        writeOurs();
        writePeer();
    }

    void writeOurs() { require(writerOn(medium)->writeObject(&ours, &ours), "writeObject"); }
    void writePeer() { archiveTo(medium, peer); }
    // Read by its name in the stream, an array comes back as the array class
    // that was registered last.
    std::unique_ptr<fxIntArray> readOurs() {
        fxTypeObj::registerType(&fxIntArray_type);
        return readRoot<fxIntArray>(*readerOn(medium));
    }
    std::unique_ptr<std::vector<int>> readPeer() {
        auto array = std::make_unique<std::vector<int>>();
        restoreFrom(medium, *array);
        return array;
    }

    Medium medium;
    fxIntArray ours;
    std::vector<int> peer;
};

// Maps of `n` strings.

using Map = std::unordered_map<std::string, std::string>;

template <class Medium>
struct Maps {
    explicit Maps(unsigned int n) : peer(n), ours(unsigned(peer.bucket_count())) {
        for (const std::string& word : distinctWords(n, 5, 11)) {
            ours.add(fxStr(word.c_str()), fxStr((word + "=" + word).c_str()));
            peer[word] = word + "=" + word;
        }
        writeOurs();
        writePeer();
    }

    void writeOurs() { require(writerOn(medium)->writeObject(&ours, &ours), "writeObject"); }
    void writePeer() { archiveTo(medium, peer); }
    std::unique_ptr<fxStrStrDictionary> readOurs() {
        return readRoot<fxStrStrDictionary>(*readerOn(medium));
    }
    std::unique_ptr<Map> readPeer() {
        auto map = std::make_unique<Map>(peer.bucket_count());
        restoreFrom(medium, *map);
        return map;
    }

    Medium medium;
    Map peer;
    fxStrStrDictionary ours;
};

// An object that points to `n` blocks of 16 ints.

const unsigned int blockInts = 16;

class BlockOwner : public fxXDRObj {
public:
    BlockOwner() {}
    BlockOwner(const BlockOwner&) = delete;
    BlockOwner& operator=(const BlockOwner&) = delete;
    ~BlockOwner() override {
        for (int* block : blocks)
            delete[] block;
    }

    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber& t) override {
        unsigned int n = static_cast<unsigned int>(blocks.size());
        if (!t.xdr(&n, 1))
            return 0;
        if (t.isReading())
            blocks.resize(n);
        for (int*& block : blocks) {
            if (!t.xdr(&block, blockInts))
                return 0;
        }
        return 1;
    }
    static void* create(fxTypeObj&) { return new BlockOwner; }
    static void destroy(void* object) { delete static_cast<BlockOwner*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<BlockOwner*>(object)->xdr(t);
    }

    std::vector<int*> blocks;
};

fxTypeObj blockOwnerType("BlockOwner", 1, BlockOwner::create, BlockOwner::destroy, BlockOwner::xdr);

fxTypeObj& BlockOwner::getTypeObj() const { return blockOwnerType; }

struct PeerBlock {
    std::array<int, blockInts> ints;
    template <class Archive>
    void serialize(Archive& archive) {
        archive(ints);
    }
};

// Shared pointers, since both sides then notice a block that was met before.
using PeerBlocks = std::vector<std::shared_ptr<PeerBlock>>;

bool same(const BlockOwner& a, const PeerBlocks& b) {
    if (a.blocks.size() != b.size())
        return false;
    for (std::size_t i = 0; i < b.size(); ++i) {
        if (std::memcmp(a.blocks[i], b[i]->ints.data(), sizeof(PeerBlock)) != 0)
            return false;
    }
    return true;
}

template <class Medium>
struct Blocks {
    explicit Blocks(unsigned int n) {
        for (unsigned int i = 0; i < n; ++i) {
            auto block = std::make_shared<PeerBlock>();
            for (unsigned int j = 0; j < blockInts; ++j)
                block->ints[j] = static_cast<int>(i * j);
            peer.push_back(block);
            ours.blocks.push_back(new int[blockInts]);
            std::copy(block->ints.begin(), block->ints.end(), ours.blocks.back());
        }
        writeOurs();
        writePeer();
    }

    void writeOurs() { require(writerOn(medium)->writeObject(&ours, &ours), "writeObject"); }
    void writePeer() { archiveTo(medium, peer); }
    std::unique_ptr<BlockOwner> readOurs() { return readRoot<BlockOwner>(*readerOn(medium)); }
    std::unique_ptr<PeerBlocks> readPeer() {
        auto blocks = std::make_unique<PeerBlocks>();
        restoreFrom(medium, *blocks);
        return blocks;
    }

    Medium medium;
    BlockOwner ours;
    PeerBlocks peer;
};

// `n` objects one after the other in one stream.

class Point : public fxXDRObj {
public:
    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber& t) override {
        return t.xdr(&id, 1) && t.xdr(position, 2) ? 1 : 0;
    }
    static void* create(fxTypeObj&) { return new Point; }
    static void destroy(void* object) { delete static_cast<Point*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Point*>(object)->xdr(t);
    }

    int id = 0;
    double position[2] = {};
};

fxTypeObj pointType("Point", 1, Point::create, Point::destroy, Point::xdr);

fxTypeObj& Point::getTypeObj() const { return pointType; }

struct PeerPoint {
    int id = 0;
    double position[2] = {};
    template <class Archive>
    void serialize(Archive& archive) {
        archive(id, position);
    }
};

using Points = std::vector<std::unique_ptr<Point>>;
using PeerPoints = std::vector<std::shared_ptr<PeerPoint>>;

bool same(const Points& a, const PeerPoints& b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < b.size(); ++i) {
        if (a[i]->id != b[i]->id || a[i]->position[0] < b[i]->position[0] ||
            a[i]->position[0] > b[i]->position[0] || a[i]->position[1] < b[i]->position[1] ||
            a[i]->position[1] > b[i]->position[1])
            return false;
    }
    return true;
}

template <class Medium>
struct Objects {
    explicit Objects(unsigned int n) {
        for (unsigned int i = 0; i < n; ++i) {
            ours.push_back(std::make_unique<Point>());
            peer.push_back(std::make_shared<PeerPoint>());
            ours[i]->id = peer[i]->id = static_cast<int>(i);
            ours[i]->position[0] = peer[i]->position[0] = i * 0.5;
            ours[i]->position[1] = peer[i]->position[1] = -1.0 * i;
        }
        writeOurs();
        writePeer();
    }

    void writeOurs() {
        const auto writer = writerOn(medium);
        for (const auto& point : ours)
            require(writer->writeObject(point.get(), point.get()), "writeObject");
    }
    void writePeer() {
        medium.write([this](std::ostream& stream) {
            cereal::BinaryOutputArchive archive(stream);
            for (const auto& point : peer)
                archive(point);
        });
    }
    Points readOurs() {
        const auto reader = readerOn(medium);
        Points points;
        for (std::size_t i = 0; i < peer.size(); ++i)
            points.push_back(readRoot<Point>(*reader));
        return points;
    }
    PeerPoints readPeer() {
        PeerPoints points;
        medium.read([&](std::istream& stream) {
            cereal::BinaryInputArchive archive(stream);
            for (std::size_t i = 0; i < peer.size(); ++i) {
                std::shared_ptr<PeerPoint> point;
                archive(point);
                points.push_back(point);
            }
        });
        return points;
    }

    Medium medium;
    Points ours;
    PeerPoints peer;
};

// 100 to 100000.
void decades(benchmark::internal::Benchmark* b) {
    b->RangeMultiplier(10)->Range(100, 100000)->Complexity();
}

// 64 bytes to 4 MiB.
void byteSweep(benchmark::internal::Benchmark* b) {
    b->RangeMultiplier(64)->Range(64, 1 << 22)->Complexity();
}

template <class Medium>
void casesOn() {
    const std::string on = std::string(", ") + Medium::name;
    writeCase<IntArrays<Medium>>("an int array" + on, Rate::bytes, byteSweep);
    readCase<IntArrays<Medium>>("an int array" + on, Rate::bytes, byteSweep);
    writeCase<Maps<Medium>>("a string map" + on, Rate::items, decades);
    readCase<Maps<Medium>>("a string map" + on, Rate::items, decades);
    writeCase<Blocks<Medium>>("blocks" + on, Rate::items, decades);
    readCase<Blocks<Medium>>("blocks" + on, Rate::items, decades);
    writeCase<Objects<Medium>>("objects" + on, Rate::items, decades);
    readCase<Objects<Medium>>("objects" + on, Rate::items, decades);
}

const bool registered = [] {
    casesOn<MemoryMedium>();
    casesOn<FileMedium>();
    writeCase<Blocks<MemoryMedium>>("blocks/large", Rate::items, doubling);
    readCase<Blocks<MemoryMedium>>("blocks/large", Rate::items, doubling);
    writeCase<Objects<MemoryMedium>>("objects/large", Rate::items, doubling);
    readCase<Objects<MemoryMedium>>("objects/large", Rate::items, doubling);
    return true;
}();

}  // namespace
