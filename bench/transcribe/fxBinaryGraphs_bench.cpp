// fxBinaryGraphs_bench.cpp - whole graphs of usual kinds and sizes, beside cereal's binary
// archives.

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <cereal/types/memory.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/unordered_map.hpp>
#include <cereal/types/vector.hpp>

#include "bench/support/graphInputs.h"
#include "bench/support/transcripts.h"
#include "kelvofxds/transcribe/fxBinaryFormatInternal.h"

namespace {

// What the library reads back as `Root`, the peer as `Peer`.
template <class Medium, class Root, class Peer>
struct Graph {
    void writeOurs() { require(writerOn(medium)->writeObject(&ours, &ours), "writeObject"); }
    void writePeer() { archiveTo(medium, peer); }
    // By its name in the stream, an array comes back as the array class that
    // was registered last.
    std::unique_ptr<Root> readOurs() {
        fxTypeObj::registerType(&ours.getTypeObj());
        return readRoot<Root>(*readerOn(medium));
    }
    std::unique_ptr<Peer> readPeer() {
        auto root = std::make_unique<Peer>();
        restoreFrom(medium, *root);
        return root;
    }

    Medium medium;
    Root ours;
    Peer peer;
};

template <class Medium, class Root, class Peer>
struct Filled : Graph<Medium, Root, Peer> {
    explicit Filled(unsigned int n) {
        fill(this->ours, this->peer, n);
        this->writeOurs();
        this->writePeer();
    }
};

template <class Medium>
using Ints = Filled<Medium, fxIntArray, std::vector<int>>;
template <class Medium>
using Strings = Filled<Medium, fxStrArray, Texts>;
template <class Medium>
using Map = Filled<Medium, fxStrStrDictionary, Pairs>;

// Objects that share others. The library does not read back what it writes of
// them, so what it wrote is taken apart here.

struct Node : fxXDRObj {
    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber& t) override;
    static void* create(fxTypeObj&) { return new Node; }
    static void destroy(void* object) { delete static_cast<Node*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Node*>(object)->xdr(t);
    }

    int id = 0;
    Node* left = nullptr;
    Node* right = nullptr;
};

fxTypeObj nodeType("Node", 1, Node::create, Node::destroy, Node::xdr);

fxTypeObj& Node::getTypeObj() const { return nodeType; }

unsigned char Node::xdr(fxTranscriber& t) {
    return t.xdr(&id, 1) && t.xdr(&left, left, nodeType, this, nullptr) &&
           t.xdr(&right, right, nodeType, this, nullptr);
}

struct NodeList : fxXDRObj {
    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber& t) override {
        for (Node*& node : nodes) {
            if (!t.xdr(&node, node, nodeType, this, nullptr))
                return 0;
        }
        return 1;
    }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<NodeList*>(object)->xdr(t);
    }

    std::vector<Node*> nodes;
};

fxTypeObj nodeListType("NodeList", 1, nullptr, nullptr, NodeList::xdr);

fxTypeObj& NodeList::getTypeObj() const { return nodeListType; }

}  // namespace

template <class Archive>
void serialize(Archive& archive, PeerNode& node) {
    archive(node.id, node.left, node.right);
}

namespace {

struct Written {
    struct Known {
        std::uint32_t id = 0, left = 0, right = 0;
    };

    // What a stream says of each number, its header being skipped.
    explicit Written(const std::string& bytes) {
        const std::size_t header = sizeof fxBinaryFormat::writerName +
                                   sizeof fxBinaryFormat::floatFormat +
                                   sizeof fxBinaryFormat::shortMark + fxBinaryFormat::wordBytes;
        const char* at = bytes.data() + header;
        const char* const end = bytes.data() + bytes.size();
        std::uint32_t object = 0;
        while (at < end)
            at = take(at, object);
    }

    // Takes a record; returns where the next one is.
    const char* take(const char* at, std::uint32_t& object) {
        const auto head = static_cast<unsigned char>(*at++);
        const fxBinaryFormat::Record* record =
            fxBinaryFormat::recordOf(fxBinaryFormat::tagOf(head));
        require(record != nullptr, "finding a record");
        const unsigned int n = fxBinaryFormat::lengthBytes[fxBinaryFormat::lengthClassOf(head)];
        const std::uint32_t payload = fxBinaryFormat::getLittle(at, n);
        at += n;
        const std::uint32_t number = record->wordsWritten ? fxBinaryFormat::getWord(at) : 0;
        at += record->wordsWritten * fxBinaryFormat::wordBytes;
        if (record->hasText)
            at += std::strlen(at) + 1;
        if (record->tag == fxOT_Object) {
            object = number;
            if (payload != 0)
                std::memcpy(&knownOf(object).id, at, sizeof(int));
            pointers = 0;
        } else if (record->tag != fxOT_Type) {
            require(object != 0, "finding an object");
            if (object == 1)
                list.push_back(number);
            else
                (pointers++ == 0 ? knownOf(object).left : knownOf(object).right) = number;
        }
        return at + payload;
    }

    Known& knownOf(std::uint32_t number) {
        if (known.size() <= number)
            known.resize(number * 2);
        return known[number];
    }

    std::vector<Known> known;         // by number; 0 is the null pointer
    std::vector<std::uint32_t> list;  // numbers of the nodes in order
    unsigned int pointers = 0;        // of the object that is being read
};

bool same(const Written& a, const PeerNodes& b) {
    const auto agree = [&a](std::uint32_t number, const std::shared_ptr<PeerNode>& node) {
        return node ? number != 0 && a.known[number].id == static_cast<std::uint32_t>(node->id)
                    : number == 0;
    };
    if (a.list.size() != b.size())
        return false;
    for (std::size_t i = 0; i < b.size(); ++i) {
        const Written::Known& node = a.known.at(a.list[i]);
        if (!agree(a.list[i], b[i]) || !agree(node.left, b[i]->left) ||
            !agree(node.right, b[i]->right))
            return false;
    }
    return true;
}

template <class Medium>
struct Dag {
    explicit Dag(unsigned int n) : own(n) {
        Random random;
        for (unsigned int i = 0; i < n; ++i) {
            peer.push_back(std::make_shared<PeerNode>());
            own[i].id = peer[i]->id = static_cast<int>(i * 7);
            if (i != 0) {
                const unsigned int left = random.below(i);
                const unsigned int right = random.below(i);
                own[i].left = &own[left];
                own[i].right = &own[right];
                peer[i]->left = peer[left];
                peer[i]->right = peer[right];
            }
            ours.nodes.push_back(&own[i]);
        }
        writeOurs();
        writePeer();
    }

    void writeOurs() { require(writerOn(medium)->writeObject(&ours, &ours), "writeObject"); }
    void writePeer() { archiveTo(medium, peer); }
    Written readOurs() { return Written(medium.written()); }
    PeerNodes readPeer() {
        PeerNodes nodes;
        restoreFrom(medium, nodes);
        return nodes;
    }

    Medium medium;
    std::vector<Node> own;
    NodeList ours;
    PeerNodes peer;
};

void million(benchmark::internal::Benchmark* b) { b->Arg(1000000)->Unit(benchmark::kMicrosecond); }
void hundredThousand(benchmark::internal::Benchmark* b) {
    b->Arg(100000)->Unit(benchmark::kMicrosecond);
}
void tenThousand(benchmark::internal::Benchmark* b) {
    b->Arg(10000)->Unit(benchmark::kMicrosecond);
}

template <class Medium>
void casesOn() {
    const std::string on = std::string(", ") + Medium::name;
    writeCase<Ints<Medium>>("ints" + on, Rate::items, million);
    writeCase<Strings<Medium>>("strings" + on, Rate::items, hundredThousand);
    writeCase<Map<Medium>>("map" + on, Rate::items, tenThousand);
    writeCase<Dag<Medium>>("dag" + on, Rate::items, hundredThousand);
    readCase<Ints<Medium>>("ints" + on, Rate::items, million);
    readCase<Strings<Medium>>("strings" + on, Rate::items, hundredThousand);
    readCase<Map<Medium>>("map" + on, Rate::items, tenThousand);
}

const bool registered = [] {
    casesOn<MemoryMedium>();
    casesOn<FileMedium>();
    return true;
}();

}  // namespace
