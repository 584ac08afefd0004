// Reads graph streams and what a graph reader takes of standard ones.
//
// The first byte of an input says how the rest is read: bit 0, with a checksum
// that is made right, so that the records themselves are what matters; bit 1, as a
// standard stream; bit 2, of a host with the other order of bytes; bit 3, from a
// stream of a host's own class. Then come the records.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <unordered_set>

#include "fuzz/options.h"
#include "kelvofxds/kelvofxds.h"
#include "kelvofxds/transcribe/fxChecksumInternal.h"

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
            node->longs[i] = -node->longs[i];
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

}  // namespace

// Of a whole root arrays that nodes point to are lost, and shared blocks.
FUZZ_OPTIONS("allocator_may_return_null=1:detect_leaks=0")

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const unsigned int mode = data[0];
    std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    if ((mode & 1) != 0) {
        fxChecksum sum;
        sum.add(bytes.data(), bytes.size());
        bytes += '\x0F';
        for (unsigned int i = 0; i < 4; ++i)
            bytes += static_cast<char>(sum.value() >> 8 * i);
    }
    const bool isForeign = (mode & 4) != 0;
    const short shortMark = isForeign ? 0x2211 : 0x1122;
    const long longMark = isForeign ? 0x66554433 : 0x33445566;
    auto* stream = (mode & 8) != 0
                       ? new HostStream(bytes.data(), static_cast<unsigned int>(bytes.size()))
                       : new fxMemoryStream(bytes.data(), static_cast<unsigned int>(bytes.size()));
    const auto make = (mode & 2) != 0 ? fxGraphReader::forStandardStreams : makeGraphReader;
    auto* reader = static_cast<fxGraphReader*>(make(stream, shortMark, longMark, "ieee"));
    while (void* root = reader->readObject(Node_type)) {
        if (reader->lastError()[0] != '\0' || living().count(root) != 1)
            std::abort();
        use();
        endAll();
    }
    if (reader->lastError()[0] == '\0' || !living().empty())
        std::abort();
    delete reader;
    return 0;
}
