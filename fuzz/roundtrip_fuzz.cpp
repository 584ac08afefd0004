// Writes graphs that a script makes, in both formats and to streams of both kinds, and
// compares what is read back.
//
// The script says how many nodes there are, what they hold, and who points to whom: chains,
// circles, shared nodes, pointers to what is embedded.

#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/options.h"
#include "kelvofxds/kelvofxds.h"
#include "tests/support/script.h"

namespace {

class Part : public fxXDRObj {
    FX_XDR_MEMBERS(Part)
    double size = 0;
    Part* twin = nullptr;  // a node's part
};
FX_DEFINE_XDR(Part, "Part", 3)

unsigned char Part::xdr(fxTranscriber& t) { return t.xdr(&size, 1) && fxXdrPointer(t, twin); }

// Points to others and owns none.
class Node : public fxXDRObj {
    FX_XDR_MEMBERS(Node)
    ~Node() override { delete[] numbers; }

    fxStr name;
    unsigned int count = 0;
    long* numbers = nullptr;  // owned, `count` of them; null if there are none
    Part part;
    Node* first = nullptr;
    Node* second = nullptr;
    Part* other = nullptr;
    fxXDRObj* any = nullptr;
    fxIntArray values;
    fxStrStrDictionary words{3};  // few buckets: each takes time, and chains are longer
    fxStrSet marks{2};
};
FX_DEFINE_XDR(Node, "Node", 1)

unsigned char Node::xdr(fxTranscriber& t) {
    if (!t.xdr(&count, 1) || !name.xdr(t))
        return 0;
    if (count != 0 && !t.xdr(&numbers, count))
        return 0;
    return t.xdr(Part::classType(), nullptr, &part) && fxXdrPointer(t, first) &&
           fxXdrPointer(t, second) && fxXdrPointer(t, other) &&
           t.xdr(&any, any, fxXDRObj_type, this, nullptr) && values.xdr(t) && words.xdr(t) &&
           marks.xdr(t);
}

using Nodes = std::vector<std::unique_ptr<Node>>;

void fill(Node& node, Script& script) {
    const std::string name = script.text(20);
    node.name = fxStr(name.data(), static_cast<unsigned int>(name.size()));
    node.count = script.below(4);
    if (node.count != 0)
        node.numbers = new long[node.count];
    for (unsigned int i = 0; i < node.count; ++i)
        node.numbers[i] = static_cast<long>(script.word() * 65537U);
    node.part.size = script.byte() / 7.0;
    for (unsigned int n = script.below(6); n > 0; --n) {
        const int value = static_cast<int>(script.word());
        node.values.append(&value);
        node.words.add(script.word(3, "ab").c_str(), script.word(9, "xyz").c_str());
        node.marks.add(script.word(4, "ab").c_str());
    }
    node.values.setMaxLength(0);  // standard streams have the spare capacity, too
}

// All are found from the first. As many as there is something said of, and up to two more.
Nodes graphOf(Script& script) {
    Nodes nodes;
    const unsigned int most = 40;
    unsigned int unsaid = script.below(3);
    do {
        nodes.push_back(std::make_unique<Node>());
        fill(*nodes.back(), script);
    } while (nodes.size() < most && (!script.isOver() || unsaid-- != 0));
    const unsigned int n = static_cast<unsigned int>(nodes.size());
    for (unsigned int i = 0; i < n; ++i) {
        Node& node = *nodes[i];
        node.first = i + 1 < n ? nodes[i + 1].get() : nullptr;
        const unsigned int what = script.byte();
        Node* const target = nodes[script.below(n)].get();
        if ((what & 1) != 0)
            node.second = target;
        if ((what & 2) != 0)
            node.other = &target->part;
        if ((what & 4) != 0)
            node.any = target;
        if ((what & 8) != 0)
            node.part.twin = &nodes[script.below(n)]->part;
    }
    return nodes;
}

// Standard streams do not tell where an embedded object begins that is met first by itself.
void leaveOutPointersToParts(Nodes& nodes) {
    for (std::unique_ptr<Node>& node : nodes)
        node->other = node->part.twin = nullptr;
}

Nodes chainFrom(Node* first) {
    Nodes nodes;
    for (; first; first = first->first)
        nodes.emplace_back(first);
    return nodes;
}

// The number of whatever a node points to; 0 is nothing.
std::map<const void*, unsigned int> numbersOf(const Nodes& nodes) {
    std::map<const void*, unsigned int> numbers{{nullptr, 0}};
    for (const std::unique_ptr<Node>& node : nodes) {
        numbers.emplace(static_cast<fxXDRObj*>(node.get()), numbers.size());
        numbers.emplace(static_cast<fxXDRObj*>(&node->part), numbers.size());
    }
    return numbers;
}

void requireSameWords(Node& a, Node& b) {
    require(a.words.length() == b.words.length() && a.marks.length() == b.marks.length());
    // Chains come back reversed, so the order is another.
    for (fxStrStrDictionaryIter word(a.words); word.key(); ++word) {
        const fxStr* const value = b.words.find(*word.key());
        require(value && *word.value() == *value);
    }
    for (fxStrSetIter mark(a.marks); mark.key(); ++mark)
        require(b.marks.contains(*mark.key()) == 1);
}

void requireSame(const Nodes& a, const Nodes& b) {
    require(a.size() == b.size());
    auto here = numbersOf(a);
    auto there = numbersOf(b);
    for (std::size_t i = 0; i < a.size(); ++i) {
        Node& x = *a[i];
        Node& y = *b[i];
        require(x.name == y.name && x.count == y.count && x.part.size == y.part.size);
        require(x.count == 0 || std::memcmp(x.numbers, y.numbers, x.count * sizeof(long)) == 0);
        require(x.values.length() == y.values.length());
        for (unsigned int k = 0; k < x.values.length(); ++k)
            require(x.values[k] == y.values[k]);
        requireSameWords(x, y);
        require(here.at(x.second) == there.at(y.second));
        require(here.at(x.other) == there.at(y.other));
        require(here.at(x.any) == there.at(y.any));
        require(here.at(x.part.twin) == there.at(y.part.twin));
    }
}

// The pair sees it through its virtual operations alone.
class HostStream : public fxMemoryStream {
    using fxMemoryStream::fxMemoryStream;
};

void goAndComeBack(const Nodes& nodes, bool isStandard, bool isHosts) {
    const fxRef<fxMemoryStream> held(isHosts ? new HostStream : new fxMemoryStream);
    fxMemoryStream* const stream = held.get();
    if (!isStandard)
        fxTranscriber::changeDefaultWriter(makeGraphWriter);
    const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(stream));
    fxTranscriber::resetToDefaultWriter();
    require(writer->writeObject(nodes[0].get(), nodes[0].get()) == 1);
    stream->rewind();
    const std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(stream));
    require(reader != nullptr);
    void* const root = reader->readObject(Node::classType());
    require(root != nullptr);
    requireSame(nodes, chainFrom(static_cast<Node*>(root)));
}

}  // namespace

FUZZ_OPTIONS("")

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fxInitializeToolkit();
    fxTranscriber::addTranscriber("fxBinaryWriter", fxGraphReader::forStandardStreams);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script script(data, size);
    const unsigned int mode = script.byte();
    Nodes nodes = graphOf(script);
    if ((mode & 1) != 0)
        leaveOutPointersToParts(nodes);
    goAndComeBack(nodes, (mode & 1) != 0, (mode & 2) != 0);
    return 0;
}
