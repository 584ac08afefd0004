#include "kelvofxds/transcribe/fxBinaryWriter.h"

#include <cstdint>
#include <cstring>

#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/core/fxXDRObj.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxBinaryFormatInternal.h"
#include "kelvofxds/transcribe/fxObjectTableInternal.h"
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
}  // namespace

// Allocated addresses are multiples of 16.
struct fxBinaryWriter::Index : fxObjectTable, fxWordIndex<fxObjectTable::Entry, 4> {
    explicit Index(fxBinaryOTDict& dictionary) : fxObjectTable(dictionary) {}
};

fxBinaryWriter::fxBinaryWriter(fxStream* s) : nextId(0), index(fxNew<Index>(table)) {
    reading = 0;
    holdStream(s);
    recordIdForAddress(nullptr);  // 0 means "has no number"
}

fxBinaryWriter::~fxBinaryWriter() { delete index; }

const char* fxBinaryWriter::className() const { return fxBinaryFormat::writerName; }

void fxBinaryWriter::reset() {
    index->removeAll();
    index->clear();
    freeItems();
}

// Record numbers and the work list.

unsigned long fxBinaryWriter::recordIdForAddress(void* address) {
    fxObjectTable::Entry* entry = index->findOrAdd(wordOf(address));
    if (!entry)
        fxOutOfMemory();
    index->enter(*entry, nextId++);
    return entry->value;
}

unsigned long fxBinaryWriter::alreadyWritten(void* address) {
    const fxObjectTable::Entry* entry = index->find(wordOf(address));
    return entry ? entry->value : 0;
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
    const fxBinaryFormat::Record* record = fxBinaryFormat::recordOf(tag);
    if (!record)
        fxFatal("Whoops!");
    const unsigned int arguments[] = {0, arg1, arg2, arg3, arg4};
    fxBinaryFormat::Head head(tag, payloadCount);
    for (unsigned int i = 0; i < record->wordsWritten; ++i)
        head.addWord(arguments[static_cast<unsigned int>(record->words[i])]);
    if (!stream->putBytes(head.data(), head.size()))
        return 0;
    return !record->hasText ||
           stream->putBytes(typeName, static_cast<unsigned int>(std::strlen(typeName)) + 1);
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
    setPending(fxOT_Block, queue(fxNew<fxBinaryWriterItem>(blockItem, address, length, blockTag)));
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
                   queue(fxNew<fxBinaryWriterItem>(objectItem, address, wordOf(&type), 0U)));
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
    queue(fxNew<fxBinaryWriterItem>(objectItem, address, wordOf(&object->getTypeObj()), 0U));
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
