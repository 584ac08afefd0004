// Reads graph streams and what a graph reader takes of standard ones.
//
// The first byte of an input says how the rest is read: bit 0, with a checksum
// that is made right, so that the records themselves are what matters; bit 1, as a
// standard stream; bit 2, of a host with the other order of bytes; bit 3, from a
// stream of a host's own class. Then come the records, or, with bit 4, what is
// changed in the records of a good stream.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "fuzz/blocks.h"
#include "fuzz/options.h"
#include "fuzz/records.h"
#include "fuzz/rejection.h"
#include "kelvofxds/kelvofxds.h"
#include "kelvofxds/transcribe/fxChecksumInternal.h"
#include "tests/support/script.h"

namespace {

extern fxTypeObj Node_type;

// Everything that is made and has not ended.
std::unordered_set<void*>& living() {
    static std::unordered_set<void*> objects;
    return objects;
}

class Part : public fxXDRObj {
public:
    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber& t) override {
        return t.xdr(&value, 1) && (t.objectVersion() < 2 || t.xdr(&added, 1));
    }
    static void* create(fxTypeObj&) {
        auto* part = new Part;
        part->isOfItsOwn = true;
        living().insert(part);
        return part;
    }
    static void destroy(void* object) { delete static_cast<Part*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Part*>(object)->Part::xdr(t);
    }
    ~Part() override {
        if (isOfItsOwn && living().erase(this) != 1)
            std::abort();
    }
    bool isOfItsOwn = false;
    short value = 0;
    double added = 0;
};
fxTypeObj Part_type("Part", 2, Part::create, Part::destroy, Part::xdr);
fxTypeObj& Part::getTypeObj() const { return Part_type; }

// It owns its blocks and nothing else.
class Node : public fxXDRObj {
public:
    fxTypeObj& getTypeObj() const override { return Node_type; }
    unsigned char xdr(fxTranscriber& t) override {
        return t.xdr(&count, 1) && name.xdr(t) && t.xdr(&next, next, Node_type, this, nullptr) &&
               t.xdr(&any, any, fxXDRObj_type, this, nullptr) && t.xdr(Part_type, nullptr, &part) &&
               t.xdr(&parts, parts, Part_type, this, nullptr) &&
               t.xdr(&numbers, numbers, fxIntArray_type, this, nullptr) &&
               t.xdr(&longs, count < 1000 ? count : 0) && t.xdr(&text) && array.xdr(t) &&
               texts.xdr(t) && words.xdr(t) && keys.xdr(t);
    }
    static void* create(fxTypeObj&) {
        auto* node = new Node;
        living().insert(node);
        return node;
    }
    static void destroy(void* object) { delete static_cast<Node*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Node*>(object)->Node::xdr(t);
    }
    ~Node() override {
        delete[] longs;
        delete[] text;
        if (living().erase(this) != 1)
            std::abort();
    }

    unsigned int count = 0;
    fxStr name = "unnamed";
    Node* next = nullptr;
    fxXDRObj* any = nullptr;
    Part part;
    Part* parts = nullptr;
    fxXDRObj* numbers = nullptr;
    long* longs = nullptr;
    char* text = nullptr;
    fxDoubleArray array;
    fxStrArray texts;
    fxStrStrDictionary words;
    fxStrSet keys;
};
fxTypeObj Node_type("Node", 1, Node::create, Node::destroy, Node::xdr);

class HostStream : public fxMemoryStream {
    using fxMemoryStream::fxMemoryStream;
};

// The blocks of shared owners are the host's business: here nobody shares.
bool sharesBlocks() {
    std::unordered_set<void*> blocks;
    for (void* object : living()) {
        const auto* node = dynamic_cast<Node*>(static_cast<fxXDRObj*>(object));
        if (node && ((node->longs && !blocks.insert(node->longs).second) ||
                     (node->text && !blocks.insert(node->text).second)))
            return true;
    }
    return false;
}

void use() {
    for (void* object : living()) {
        auto* node = dynamic_cast<Node*>(static_cast<fxXDRObj*>(object));
        if (!node)
            continue;
        for (unsigned int i = 0; node->longs && i < node->count && node->count < 1000; ++i)
            node->longs[i] = ~node->longs[i];
        if (node->text && fxStr(node->text).length() > 1000000)
            std::abort();
        if (node->name.length() != fxStr(node->name).length())
            std::abort();
        for (unsigned int i = 0; i < node->texts.length(); ++i)
            node->words.add(node->texts[i], node->name);
    }
}

// What is left belongs to nobody: containers have no pointers.
void endAll() {
    if (sharesBlocks()) {
        for (void* object : living()) {
            if (auto* node = dynamic_cast<Node*>(static_cast<fxXDRObj*>(object))) {
                node->longs = nullptr;
                node->text = nullptr;
            }
        }
    }
    while (!living().empty())
        delete static_cast<fxXDRObj*>(*living().begin());
}

void read(const std::string& bytes, unsigned int mode) {
    const bool isForeign = (mode & 4) != 0;
    const short shortMark = isForeign ? 0x2211 : 0x1122;
    const long longMark = isForeign ? 0x66554433 : 0x33445566;
    auto* stream = (mode & 8) != 0
                       ? new HostStream(bytes.data(), static_cast<unsigned int>(bytes.size()))
                       : new fxMemoryStream(bytes.data(), static_cast<unsigned int>(bytes.size()));
    const auto make = (mode & 2) != 0 ? fxGraphReader::forStandardStreams : makeGraphReader;
    auto* reader = static_cast<fxGraphReader*>(make(stream, shortMark, longMark, "ieee"));
    while (void* root = reader->readObject(Node_type)) {
        require(reader->lastError()[0] == '\0' && living().count(root) == 1);
        fuzz::reachesEnd(use);
        endAll();
    }
    require(reader->lastError()[0] != '\0' && living().empty());
    delete reader;
}

// --- good streams --------------------------------------------------------------------------------

void fill(Node& node, const char* name) {
    node.name = name;
    node.count = 2;
    node.longs = new long[2]{1, -2};
    node.text = new char[5]{'t', 'e', 'x', 't', 0};
    node.part.value = 3;
    const double number = 0.5;
    node.array.append(&number);
    node.array.setMaxLength(0);
    const fxStr text("a text");
    node.texts.append(&text);
    node.texts.setMaxLength(0);
    node.words.add("key", "value");
    node.keys.add("key");
}

std::size_t headerSize(bool isStandard) {
    const std::size_t marks = sizeof(short) + 4;
    return (isStandard ? sizeof fxBinaryFormat::writerName
                       : sizeof fxBinaryFormat::graphWriterName) +
           sizeof fxBinaryFormat::floatFormat + marks;
}

std::string written(Node& root, bool isStandard) {
    const fxRef<fxMemoryStream> held(new fxMemoryStream);
    if (!isStandard)
        fxTranscriber::changeDefaultWriter(makeGraphWriter);
    const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(held.get()));
    fxTranscriber::resetToDefaultWriter();
    require(writer->writeObject(&root, &root) == 1);
    return std::string(held->getBase() + headerSize(isStandard),
                       held->length() - headerSize(isStandard));
}

// One node, then three in a circle.
const std::vector<std::string>& streams(bool isStandard) {
    static std::vector<std::string> all[2];
    if (all[isStandard].empty()) {
        auto node = [](const char* name) {
            auto* made = static_cast<Node*>(Node::create(Node_type));
            fill(*made, name);
            return made;
        };
        Node* const first = node("first");
        all[isStandard].push_back(written(*first, isStandard));
        Node* const second = node("second");
        Node* const third = node("third");
        first->next = second;
        first->any = third;
        first->parts = static_cast<Part*>(Part::create(Part_type));
        second->next = third;
        third->next = first;
        third->any = third;
        third->parts = isStandard ? first->parts : &second->part;
        all[isStandard].push_back(written(*first, isStandard));
        endAll();
    }
    return all[isStandard];
}

fuzz::Records recordsOf(const std::string& bytes, bool isStandard) {
    return fuzz::Records(bytes, 0, isStandard ? fuzz::Records::written : fuzz::Records::graph);
}

std::string changed(Script script, bool isStandard) {
    const std::vector<std::string>& all = streams(isStandard);
    fuzz::Records records = recordsOf(all[script.byte() % all.size()], isStandard);
    records.change(script);
    return records.bytes();
}

// The end of a root, with the checksum of all.
void endRoot(std::string& bytes) {
    fxChecksum sum;
    sum.add(bytes.data(), bytes.size());
    char end[1 + fxBinaryFormat::wordBytes] = {fxBinaryFormat::rootEndTag};
    fxBinaryFormat::putWord(end + 1, sum.value());
    bytes.append(end, sizeof end);
}

}  // namespace

// Of a whole root arrays that nodes point to are lost, and shared blocks.
FUZZ_OPTIONS(FUZZ_READER_OPTIONS)

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fxInitializeToolkit();
    for (const bool isStandard : {false, true}) {
        for (const std::string& stream : streams(isStandard))
            require(recordsOf(stream, isStandard).bytes() == stream);
    }
    fuzz::isStated = fuzz::isOutOfMemory;  // of what is read, not of reading it
    fuzz::limitBlocks(1 << 18);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const unsigned int mode = data[0];
    const bool isStandard = (mode & 2) != 0;
    std::string bytes;
    if ((mode & 16) != 0)
        bytes = changed(Script(data + 1, size - 1), isStandard);
    else
        bytes.assign(reinterpret_cast<const char*>(data) + 1, size - 1);
    if ((mode & 1) != 0)
        endRoot(bytes);
    read(bytes, mode);
    return 0;
}
