#include "kelvofxds/transcribe/fxBinaryWriter.h"

#include <cstdint>
#include <cstring>

#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/core/fxXDRObj.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxStream.h"
#include "kelvofxds/transcribe/fxWordIndexInternal.h"

namespace {
const unsigned int objectItem = 0;
const unsigned int blockItem = 1;

std::uint32_t wordOf(const void* address) { return reinterpret_cast<std::uint32_t>(address); }

// The pointer in `field`, whose type may be another than the one it came as: an
// int* comes as a long*.
void* pointerAt(const void* field) {
    void* address = nullptr;
    std::memcpy(&address, field, sizeof address);
    return address;
}

// The head of a record under construction: head byte, length, arguments.
// Framing is little-endian on every host.
class HeadBytes {
public:
    HeadBytes() : end(bytes) {}

    void addByte(std::uint32_t value) { *end++ = static_cast<char>(value); }

    void addShort(std::uint32_t value) {
        end[0] = static_cast<char>(value);
        end[1] = static_cast<char>(value >> 8);
        end += 2;
    }

    void addWord(std::uint32_t value) {
        end[0] = static_cast<char>(value);
        end[1] = static_cast<char>(value >> 8);
        end[2] = static_cast<char>(value >> 16);
        end[3] = static_cast<char>(value >> 24);
        end += 4;
    }

    unsigned char writeTo(fxStream* s) const {
        return s->putBytes(bytes, static_cast<unsigned int>(end - bytes));
    }

private:
    char bytes[1 + 4 + 3 * 4];
    char* end;
};

// The head byte and the length that go with `payloadCount` bytes of payload.
// Class 0 has no length field, class 1 one byte, class 2 two, class 3 four.
void addTagAndLength(HeadBytes& head, unsigned int tag, unsigned int lengthShift,
                     unsigned int payloadCount) {
    if (payloadCount == 0) {
        head.addByte(tag);
    } else if (payloadCount <= 0xFF) {
        head.addByte(tag | 1U << lengthShift);
        head.addByte(payloadCount);
    } else if (payloadCount <= 0xFFFF) {
        head.addByte(tag | 2U << lengthShift);
        head.addShort(payloadCount);
    } else {
        head.addByte(tag | 3U << lengthShift);
        head.addWord(payloadCount);
    }
}
}  // namespace

// Allocated addresses are multiples of 16.
struct fxBinaryWriter::Index : fxWordIndex<fxBinaryOTEntry, 4> {};

fxBinaryWriter::fxBinaryWriter(fxStream* s) : nextId(0), index(new Index) {
    reading = 0;
    holdStream(s);
    recordIdForAddress(nullptr);  // 0 means "has no number"
}

fxBinaryWriter::~fxBinaryWriter() {
    table.removeAll();  // its entries are the index's
    delete index;
}

const char* fxBinaryWriter::className() const { return "fxBinaryWriter"; }

void fxBinaryWriter::reset() {
    table.removeAll();
    index->clear();
    freeItems();
}

// Record numbers and the work list.

unsigned long fxBinaryWriter::recordIdForAddress(void* address) {
    fxBinaryOTEntry& entry = index->findOrAdd(wordOf(address));
    entry.value = nextId++;
    if (!entry.isLinked())
        table.link(entry);
    return entry.value;
}

unsigned long fxBinaryWriter::alreadyWritten(void* address) {
    const fxBinaryOTEntry* entry = index->find(wordOf(address));
    return entry && entry->isLinked() ? entry->value : 0;
}

unsigned long fxBinaryWriter::queue(fxBinaryWriterItem* item) {
    pushItem(item);
    return recordIdForAddress(item->address);
}

fxBinaryWriterItem* fxBinaryWriter::pop() { return static_cast<fxBinaryWriterItem*>(popItem()); }

// Records.

void fxBinaryWriter::setPending(fxBinaryOTTag pendingTag, unsigned long number) {
    tag = pendingTag;
    arg1 = static_cast<unsigned int>(number);
}

unsigned char fxBinaryWriter::flush() {
    if (tag == fxOT_Data && payloadCount == 0)
        return 1;
    return flushPayload(buffer);
}

// Writes the pending record with the payload at `payload`.
unsigned char fxBinaryWriter::flushPayload(const char* payload) {
    if (!writeHead() || (payloadCount != 0 && !stream->putBytes(payload, payloadCount)))
        return 0;
    cursor = buffer;
    payloadCount = 0;
    tag = fxOT_Data;
    return 1;
}

// Writes everything of the pending record but its payload.
unsigned char fxBinaryWriter::writeHead() {
    if (tag > fxOT_OldEmbedded)
        fxFatal("Whoops!");
    HeadBytes head;
    addTagAndLength(head, tag, lengthShift, payloadCount);

    switch (tag) {
        case fxOT_Data:
        case fxOT_Null:
            break;
        case fxOT_Type:
            head.addWord(arg2);
            return head.writeTo(stream) &&
                   stream->putBytes(typeName, static_cast<unsigned int>(std::strlen(typeName)) + 1);
        case fxOT_OldBlock:
        case fxOT_ObjectPointer:
        case fxOT_OldObject:
        case fxOT_Embedded:
        case fxOT_OldEmbedded:
            head.addWord(arg1);
            break;
        case fxOT_Object:
            head.addWord(arg1);
            head.addWord(arg2);
            head.addWord(arg3);
            break;
        default:  // a block's first pointer, or its body
            head.addWord(arg1);
            head.addWord(arg4);
            break;
    }
    return head.writeTo(stream);
}

unsigned char fxBinaryWriter::writeBytes(char* data, unsigned int n) {
    while (n != 0) {
        if (payloadCount == capacity && !flush())
            return 0;
        if (payloadCount == 0 && n > capacity) {
            // A full buffer that more bytes will follow is written from where
            // it lies.
            payloadCount = capacity;
            if (!flushPayload(data)) {
                std::memcpy(buffer, data, capacity);
                cursor = buffer + capacity;
                return 0;
            }
            data += capacity;
            n -= capacity;
            continue;
        }
        const unsigned int room = capacity - payloadCount;
        const unsigned int step = n < room ? n : room;
        std::memcpy(cursor, data, step);
        cursor += step;
        payloadCount += step;
        data += step;
        n -= step;
    }
    return 1;
}

unsigned char fxBinaryWriter::writeNullPointer() {
    if (!flush())
        return 0;
    tag = fxOT_Null;
    return 1;
}

unsigned char fxBinaryWriter::writeType(fxTypeObj& type, unsigned long* number) {
    *number = alreadyWritten(&type);
    if (*number != 0)
        return 1;
    *number = recordIdForAddress(&type);
    tag = fxOT_Type;
    arg2 = static_cast<unsigned int>(*number);
    arg3 = type.version;
    typeName = type.name;
    return flush();
}

unsigned char fxBinaryWriter::writePrimPointer(void* address, unsigned int length,
                                               unsigned int blockTag) {
    if (!address)
        return writeNullPointer();
    if (!flush())
        return 0;
    const unsigned long known = alreadyWritten(address);
    if (known != 0) {
        setPending(fxOT_OldBlock, known);
        return flush();
    }
    setPending(fxOT_Block, queue(new fxBinaryWriterItem{blockItem, address, length, blockTag}));
    arg4 = length;
    return 1;
}

// Objects.

unsigned char fxBinaryWriter::xdr(void* field, fxXDRObj* object, fxTypeObj&, fxXDRObj*, void*) {
    void* address = pointerAt(field);
    if (!address)
        return writeNullPointer();
    if (!object || !flush())
        return 0;
    fxTypeObj& type = object->getTypeObj();
    unsigned long typeNumber;
    if (!writeType(type, &typeNumber))
        return 0;
    const unsigned long known = alreadyWritten(address);
    if (known != 0)
        setPending(fxOT_OldObject, known);
    else
        setPending(fxOT_ObjectPointer,
                   queue(new fxBinaryWriterItem{objectItem, address, wordOf(&type), 0}));
    return 1;
}

unsigned char fxBinaryWriter::xdr(fxTypeObj& type, void* previous, void* address) {
    if (previous == address)
        return 1;
    if (!flush())
        return 0;
    const unsigned long known = alreadyWritten(address);
    if (known != 0) {
        setPending(fxOT_OldEmbedded, known);
        return 1;
    }
    setPending(fxOT_Embedded, recordIdForAddress(address));
    return type.xdr(address, *this);
}

void* fxBinaryWriter::readObject(fxTypeObj&) {
    fxFatal("tried to invoke fxBinaryWriter::readObject");
}

unsigned char fxBinaryWriter::writeObject(void* address, fxXDRObj* object) {
    if (!object)
        return 0;
    queue(new fxBinaryWriterItem{objectItem, address, wordOf(&object->getTypeObj()), 0});
    while (fxBinaryWriterItem* item = pop()) {
        const unsigned char written = writeItem(*item);
        delete item;
        if (!written || !flush())
            return 0;
    }
    return 1;
}

unsigned char fxBinaryWriter::writeItem(const fxBinaryWriterItem& item) {
    const unsigned long number = alreadyWritten(item.address);
    if (item.kind != objectItem) {
        setPending(static_cast<fxBinaryOTTag>(item.blockTag), number);
        arg4 = item.extra;
        return writeBytes(static_cast<char*>(item.address), item.extra);
    }
    // NOLINTNEXTLINE(performance-no-int-to-ptr): an item holds it as a word.
    fxTypeObj& type = *reinterpret_cast<fxTypeObj*>(item.extra);
    unsigned long typeNumber;
    if (!writeType(type, &typeNumber))
        return 0;
    setPending(fxOT_Object, number);
    arg2 = static_cast<unsigned int>(typeNumber);
    return type.xdr(item.address, *this);
}

// Elements in place.

namespace {
template <class Element>
unsigned char writeElements(fxBinaryWriter& writer, Element* elements, unsigned int n) {
    return writer.writeBytes(reinterpret_cast<char*>(elements),
                             n * static_cast<unsigned int>(sizeof(Element)));
}

template <class Element>
unsigned char writeBlock(fxBinaryWriter& writer, Element* const* block, unsigned int n,
                         fxBinaryOTTag blockTag) {
    return writer.writePrimPointer(pointerAt(block), n * static_cast<unsigned int>(sizeof(Element)),
                                   blockTag);
}

unsigned char writeText(fxBinaryWriter& writer, const void* field) {
    void* text = pointerAt(field);
    const std::size_t size = text ? std::strlen(static_cast<const char*>(text)) + 1 : 0;
    return writer.writePrimPointer(text, static_cast<unsigned int>(size), fxOT_Bytes);
}
}  // namespace

unsigned char fxBinaryWriter::xdr(char* elements, unsigned int n) {
    return writeElements(*this, elements, n);
}

unsigned char fxBinaryWriter::xdr(unsigned char* elements, unsigned int n) {
    return writeElements(*this, elements, n);
}

unsigned char fxBinaryWriter::xdr(short* elements, unsigned int n) {
    return writeElements(*this, elements, n);
}

unsigned char fxBinaryWriter::xdr(unsigned short* elements, unsigned int n) {
    return writeElements(*this, elements, n);
}

unsigned char fxBinaryWriter::xdr(long* elements, unsigned int n) {
    return writeElements(*this, elements, n);
}

unsigned char fxBinaryWriter::xdr(unsigned long* elements, unsigned int n) {
    return writeElements(*this, elements, n);
}

unsigned char fxBinaryWriter::xdr(float* elements, unsigned int n) {
    return writeElements(*this, elements, n);
}

unsigned char fxBinaryWriter::xdr(double* elements, unsigned int n) {
    return writeElements(*this, elements, n);
}

unsigned char fxBinaryWriter::xdr(fxStr* strings, unsigned int n) {
    for (unsigned int i = 0; i < n; ++i) {
        if (!strings[i].xdr(*this))
            return 0;
    }
    return 1;
}

// Pointers to blocks.

unsigned char fxBinaryWriter::xdr(char** block, unsigned int n) {
    return writeBlock(*this, block, n, fxOT_Bytes);
}

unsigned char fxBinaryWriter::xdr(unsigned char** block, unsigned int n) {
    return writeBlock(*this, block, n, fxOT_Bytes);
}

unsigned char fxBinaryWriter::xdr(short** block, unsigned int n) {
    return writeBlock(*this, block, n, fxOT_Shorts);
}

unsigned char fxBinaryWriter::xdr(unsigned short** block, unsigned int n) {
    return writeBlock(*this, block, n, fxOT_Shorts);
}

unsigned char fxBinaryWriter::xdr(long** block, unsigned int n) {
    return writeBlock(*this, block, n, fxOT_Longs);
}

unsigned char fxBinaryWriter::xdr(unsigned long** block, unsigned int n) {
    return writeBlock(*this, block, n, fxOT_Longs);
}

unsigned char fxBinaryWriter::xdr(float** block, unsigned int n) {
    return writeBlock(*this, block, n, fxOT_Floats);
}

unsigned char fxBinaryWriter::xdr(double** block, unsigned int n) {
    return writeBlock(*this, block, n, fxOT_Doubles);
}

unsigned char fxBinaryWriter::xdr(char** text) { return writeText(*this, text); }

unsigned char fxBinaryWriter::xdr(unsigned char** text) { return writeText(*this, text); }
