// fxGraphStreams_bench.cpp - graph streams beside cereal (shared_ptr) and Boost.Serialization
// (tracked shared_ptr).

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <boost/serialization/shared_ptr.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/unordered_map.hpp>
#include <boost/serialization/vector.hpp>
#include <cereal/types/memory.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/unordered_map.hpp>
#include <cereal/types/vector.hpp>

#include "bench/support/graphInputs.h"
#include "bench/support/transcripts.h"
#include "kelvofxds/transcribe/fxGraphReader.h"
#include "kelvofxds/transcribe/fxGraphWriter.h"
#include "kelvofxds/transcribe/fxMemoryStream.h"

template <class Archive>
void serialize(Archive& archive, PeerNode& node) {
    archive(node.id, node.left, node.right);
}

namespace {

// Where the library writes to and reads from; where peers do is MemoryMedium's and
// FileMedium's business.
class OwnMemory {
public:
    static constexpr const char* name = "memory";
    using Peers = MemoryMedium;

    OwnMemory() : stream(new fxMemoryStream) { ++stream->count; }
    OwnMemory(const OwnMemory&) = delete;
    OwnMemory& operator=(const OwnMemory&) = delete;
    ~OwnMemory() { delete stream; }

    fxStream* openToWrite() {
        stream->clear();
        return stream;
    }
    fxStream* openToRead() {
        stream->rewind();
        return stream;
    }

private:
    fxMemoryStream* stream;
};

class OwnFile : public FileMedium {
public:
    using Peers = FileMedium;
};

// Nodes that point to two others, and the list of all of them.

struct Node : fxXDRObj {
    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber& t) override;
    static void* create(fxTypeObj&) { return new Node; }
    static void destroy(void* object) { delete static_cast<Node*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Node*>(object)->Node::xdr(t);
    }

    int id = 0;
    Node* left = nullptr;
    Node* right = nullptr;
};

fxTypeObj nodeType("GraphNode", 1, Node::create, Node::destroy, Node::xdr);

fxTypeObj& Node::getTypeObj() const { return nodeType; }

unsigned char Node::xdr(fxTranscriber& t) {
    return t.xdr(&id, 1) && t.xdr(&left, left, nodeType, this, nullptr) &&
           t.xdr(&right, right, nodeType, this, nullptr);
}

struct NodeList : fxXDRObj {
    ~NodeList() override {
        for (Node* node : nodes)
            delete node;
    }
    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber& t) override {
        auto n = static_cast<unsigned int>(nodes.size());
        if (!t.xdr(&n, 1))
            return 0;
        nodes.resize(n);
        for (Node*& node : nodes) {
            if (!t.xdr(&node, node, nodeType, this, nullptr))
                return 0;
        }
        return 1;
    }
    static void* create(fxTypeObj&) { return new NodeList; }
    static void destroy(void* object) { delete static_cast<NodeList*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<NodeList*>(object)->xdr(t);
    }

    std::vector<Node*> nodes;
};

fxTypeObj nodeListType("GraphNodes", 1, NodeList::create, NodeList::destroy, NodeList::xdr);

fxTypeObj& NodeList::getTypeObj() const { return nodeListType; }

bool same(const Node* a, const PeerNode* b) { return a && b ? a->id == b->id : !a && !b; }

bool same(const NodeList& a, const PeerNodes& b) {
    if (a.nodes.size() != b.size())
        return false;
    for (std::size_t i = 0; i < b.size(); ++i) {
        const Node* node = a.nodes[i];
        if (!same(node, b[i].get()) || !same(node->left, b[i]->left.get()) ||
            !same(node->right, b[i]->right.get()))
            return false;
    }
    return true;
}

void addNode(NodeList& ours, PeerNodes& peer) {
    ours.nodes.push_back(new Node);
    peer.push_back(std::make_shared<PeerNode>());
    peer.back()->id = ours.nodes.back()->id = static_cast<int>(peer.size()) * 7;
}

// Each points to two before it.
void fill(NodeList& ours, PeerNodes& peer, unsigned int n) {
    Random random;
    for (unsigned int i = 0; i < n; ++i) {
        addNode(ours, peer);
        if (i == 0)
            continue;
        const unsigned int left = random.below(i);
        const unsigned int right = random.below(i);
        ours.nodes[i]->left = ours.nodes[left];
        ours.nodes[i]->right = ours.nodes[right];
        peer[i]->left = peer[left];
        peer[i]->right = peer[right];
    }
}

// Each points to the next one. Peers call themselves once a node, so their chains
// are no longer than their stack bears: 10,000 nodes end Boost.Serialization and
// 100,000 cereal, with 8 MiB.

struct Chain : Node {
    fxTypeObj& getTypeObj() const override;
    static void* create(fxTypeObj&) { return new Chain; }
    ~Chain() override {
        while (Node* node = left) {
            left = node->left;
            delete node;
        }
    }
};

fxTypeObj chainType("GraphChain", 1, Chain::create, Node::destroy, Node::xdr);

fxTypeObj& Chain::getTypeObj() const { return chainType; }

struct ChainPeer {
    ChainPeer() = default;
    ChainPeer(const ChainPeer&) = delete;
    ChainPeer& operator=(const ChainPeer&) = delete;
    ~ChainPeer() {
        while (first) {
            const std::shared_ptr<PeerNode> next = std::move(first->left);
            first = next;
        }
    }
    template <class Archive>
    void serialize(Archive& archive) {
        archive(first);
    }

    std::shared_ptr<PeerNode> first;
};

}  // namespace

namespace boost::serialization {
template <class Archive>
void serialize(Archive& archive, PeerNode& node, unsigned int) {
    archive& node.id& node.left& node.right;
}
template <class Archive>
void serialize(Archive& archive, ChainPeer& chain, unsigned int) {
    archive& chain.first;
}
}  // namespace boost::serialization

namespace {

bool same(const Node& a, const ChainPeer& b) {
    const PeerNode* peer = b.first.get();
    const Node* node = a.left;
    for (; node && peer; node = node->left, peer = peer->left.get()) {
        if (node->id != peer->id)
            return false;
    }
    return !node && !peer;
}

void fill(Node& ours, ChainPeer& peer, unsigned int n) {
    for (unsigned int i = 0; i < n; ++i) {
        auto* node = new Node;
        auto peerNode = std::make_shared<PeerNode>();
        node->id = peerNode->id = static_cast<int>(i);
        node->left = ours.left;
        ours.left = node;
        peerNode->left = peer.first;
        peer.first = peerNode;
    }
}

template <class Medium, class Root, class Peer>
struct Case {
    explicit Case(unsigned int n) {
        fill(ours, peer, n);
        writeOurs();
        writePeer();
        writeBoost();
    }

    void writeOurs() {
        fxTranscriber::changeDefaultWriter(makeGraphWriter);
        require(writerOn(medium)->writeObject(&ours, &ours), "writeObject");
        fxTranscriber::resetToDefaultWriter();
    }
    void writePeer() { archiveTo(cerealMedium, peer); }
    void writeBoost() {
        boostMedium.write([&](std::ostream& stream) {
            boost::archive::binary_oarchive archive(stream);
            const Peer& constant = peer;
            archive << constant;
        });
    }
    std::unique_ptr<Root> readOurs() {
        const auto reader = readerOn(medium);
        auto* root = static_cast<Root*>(reader->readObject(ours.getTypeObj()));
        require(root != nullptr, "readObject");
        return std::unique_ptr<Root>(root);
    }
    std::unique_ptr<Peer> readPeer() {
        auto root = std::make_unique<Peer>();
        restoreFrom(cerealMedium, *root);
        return root;
    }
    std::unique_ptr<Peer> readBoost() {
        auto root = std::make_unique<Peer>();
        boostMedium.read([&](std::istream& stream) {
            boost::archive::binary_iarchive archive(stream);
            archive >> *root;
        });
        return root;
    }

    Medium medium;
    typename Medium::Peers cerealMedium;
    typename Medium::Peers boostMedium;
    Root ours;
    Peer peer;
};

template <class Input>
struct BoostWritten {
    Input& input;
};

template <class Input>
bool same(const OursWritten<Input>& a, const BoostWritten<Input>& b) {
    return same(a.input.readOurs(), b.input.readBoost());
}

template <class Input>
void cases(const std::string& name, Sizes sizes) {
    beside<Input>(
        "fxGraph/write " + name, Rate::items, sizes,
        [](Input& in) {
            in.writeOurs();
            return OursWritten<Input>{in};
        },
        Side{"cereal",
             [](Input& in) {
                 in.writePeer();
                 return PeerWritten<Input>{in};
             }},
        Side{"Boost.Serialization", [](Input& in) {
                 in.writeBoost();
                 return BoostWritten<Input>{in};
             }});
    beside<Input>(
        "fxGraph/read " + name, Rate::items, sizes, [](Input& in) { return in.readOurs(); },
        Side{"cereal", [](Input& in) { return in.readPeer(); }},
        Side{"Boost.Serialization", [](Input& in) { return in.readBoost(); }});
}

void million(benchmark::internal::Benchmark* b) {
    b->Arg(10000)->Arg(1000000)->Unit(benchmark::kMicrosecond);
}
void hundredThousand(benchmark::internal::Benchmark* b) {
    b->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
}
void thousand(benchmark::internal::Benchmark* b) { b->Arg(1000)->Unit(benchmark::kMicrosecond); }

template <class Medium>
void casesOn() {
    const std::string on = std::string(", ") + Medium::name;
    cases<Case<Medium, fxIntArray, std::vector<int>>>("ints" + on, million);
    cases<Case<Medium, fxStrArray, Texts>>("strings" + on, hundredThousand);
    cases<Case<Medium, fxStrStrDictionary, Pairs>>("map" + on, hundredThousand);
    cases<Case<Medium, NodeList, PeerNodes>>("dag" + on, hundredThousand);
    cases<Case<Medium, Chain, ChainPeer>>("chain" + on, thousand);
}

const bool registered = [] {
    fxTranscriber::addTranscriber("fxGraphWriter", makeGraphReader);
    casesOn<OwnMemory>();
    casesOn<OwnFile>();
    return true;
}();

}  // namespace
