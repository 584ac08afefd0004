#include "kelvofxds/transcribe/fxBinaryWriter.h"

#include <cstdint>
#include <cstring>
#include <memory>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/core/fxShortCopyInternal.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/core/fxXDRObj.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxBinaryFormatInternal.h"
#include "kelvofxds/transcribe/fxContentsInternal.h"
#include "kelvofxds/transcribe/fxMemberInternal.h"
#include "kelvofxds/transcribe/fxObjectTableInternal.h"
#include "kelvofxds/transcribe/fxPieceInternal.h"
#include "kelvofxds/transcribe/fxStream.h"
#include "kelvofxds/transcribe/fxWordIndexInternal.h"
#include "kelvofxds/transcribe/fxWorkListInternal.h"

namespace {
const unsigned int objectItem = 0;
const unsigned int blockItem = 1;
const unsigned int listed = 2;  // it waits in `workQueue`

void* addressOf(const fxObjectTable::Entry& entry) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the table holds words.
    return reinterpret_cast<void*>(entry.key);
}
}  // namespace

// An item of the writer's own. Its number is read when its turn has come: a host
// may have given the address another one by then.
struct fxBinaryWriter::Work {
    unsigned int kind;
    fxObjectTable::Entry* entry;  // of the address
    unsigned int extra;
    unsigned int blockTag;
};

// Allocated addresses are multiples of 16.
struct fxBinaryWriter::Index : fxObjectTable, fxWordIndex<fxObjectTable::Entry, 4> {
    Index(fxBinaryOTDict& dictionary, const fxBinaryWriter& writer)
        : fxObjectTable(dictionary), ownClass(writer) {}

    // Its value is 0 as long as it has no number. Looked up once a pointer.
    Entry& entryOf(const void* address) {
        Entry* entry = findOrAdd(fxWordOf(address));
        if (!entry)
            fxOutOfMemory();
        return *entry;
    }

    // Gives the address of `entry` the number `value`.
    void number(Entry& entry, std::uint32_t value) {
        if (!enter(entry, value))
            fxOutOfMemory();
    }

    const fxOwnClass ownClass;
    fxWorkList<Work> works;  // of the class as itself
    fxPiece piece;
    const fxTypeObj* type = nullptr;  // the one met last
    Entry* typeEntry = nullptr;       // its entry
};

fxBinaryWriter::fxBinaryWriter(fxStream* s) : nextId(0), index(fxNew<Index>(table, *this)) {
    reading = 0;
    holdStream(s);
    recordIdForAddress(nullptr);  // 0 means "has no number"
}

fxBinaryWriter::~fxBinaryWriter() { delete index; }

const char* fxBinaryWriter::className() const { return fxBinaryFormat::writerName; }

void fxBinaryWriter::reset() {
    index->removeAll();
    index->clear();
    index->type = nullptr;
    index->works.clear();
    freeItems();
}

// Record numbers and the work list.

unsigned long fxBinaryWriter::recordIdForAddress(void* address) {
    fxObjectTable::Entry& entry = index->entryOf(address);
    index->number(entry, nextId++);
    return entry.value;
}

unsigned long fxBinaryWriter::alreadyWritten(void* address) {
    const fxObjectTable::Entry* entry = index->find(fxWordOf(address));
    return entry ? entry->value : 0;
}

unsigned long fxBinaryWriter::queue(fxBinaryWriterItem* item) {
    pushItem(item);
    if (index->ownClass.isOf(*this) && !index->works.push({listed, nullptr, 0, 0}))
        fxOutOfMemory();
    return recordIdForAddress(item->address);
}

fxBinaryWriterItem* fxBinaryWriter::pop() {
    Work work;
    if (!takeWork(work))
        return nullptr;
    if (work.kind == listed)
        return static_cast<fxBinaryWriterItem*>(popItem());
    return fxNew<fxBinaryWriterItem>(work.kind, addressOf(*work.entry), work.extra, work.blockTag);
}

// Queues a piece of the writer's own work and gives its address the next number.
void fxBinaryWriter::addWork(const Work& work) {
    if (!index->ownClass.isOf(*this))
        pushItem(fxNew<fxBinaryWriterItem>(work.kind, addressOf(*work.entry), work.extra,
                                           work.blockTag));
    else if (!index->works.push(work))
        fxOutOfMemory();
    index->number(*work.entry, nextId++);
}

// Takes what comes last. False if there is nothing; what is listed has yet to be
// taken off the list.
inline bool fxBinaryWriter::takeWork(Work& work) {
    if (index->ownClass.isOf(*this))
        return index->works.pop(work);
    work.kind = listed;
    return true;
}

// Takes the last item off the queue, and the number of its address.
bool fxBinaryWriter::takeItem(fxBinaryWriterItem& item, unsigned long& number) {
    Work work;
    if (!takeWork(work))
        return false;
    if (work.kind == listed) {
        const std::unique_ptr<fxBinaryWriterItem> taken(
            static_cast<fxBinaryWriterItem*>(popItem()));
        if (!taken)
            return false;
        item = *taken;
        number = alreadyWritten(item.address);
        return true;
    }
    item = {work.kind, addressOf(*work.entry), work.extra, work.blockTag};
    number = work.entry->value;
    return true;
}

// Records.

void fxBinaryWriter::setPending(fxBinaryOTTag pendingTag, unsigned long number) {
    tag = pendingTag;
    arg1 = static_cast<unsigned int>(number);
}

unsigned char fxBinaryWriter::flush() { return writePending() && index->piece.handOverFor(stream); }

unsigned char fxBinaryWriter::writePending() {
    if (tag == fxOT_Data && payloadCount == 0)
        return 1;
    return writePendingWith(buffer);
}

// Puts everything before text and payload at `at`; returns where those go.
inline char* fxBinaryWriter::putFields(char* at, const fxBinaryFormat::Record& record) const {
    const unsigned int arguments[] = {0, arg1, arg2, arg3, arg4};
    at = fxBinaryFormat::putHead(at, tag, payloadCount);
    for (unsigned int i = 0; i < record.wordsWritten; ++i)
        at = fxBinaryFormat::putWord(at, arguments[static_cast<unsigned int>(record.words[i])]);
    return at;
}

inline unsigned char fxBinaryWriter::putRecord(const fxBinaryFormat::Record& record,
                                               const char* text, const char* payload) {
    char bytes[fxBinaryFormat::mostHeadBytes];
    const char* const end = putFields(bytes, record);
    return stream->putBytes(bytes, static_cast<unsigned int>(end - bytes)) &&
           (!text || stream->putBytes(text, fxSizeWithNul(text))) &&
           (payloadCount == 0 || stream->putBytes(payload, payloadCount));
}

unsigned char fxBinaryWriter::collectRecord(const fxBinaryFormat::Record& record, const char* text,
                                            const char* payload) {
    fxPiece& piece = index->piece;
    const unsigned int textSize = text ? fxSizeWithNul(text) : 0;
    char* const at = piece.room(fxBinaryFormat::mostHeadBytes + textSize + payloadCount);
    if (!at)
        return 0;
    piece.take(static_cast<unsigned int>(putFields(at, record) - at));
    return piece.add(text, textSize) && piece.add(payload, payloadCount);
}

// Writes the pending record with the payload at `payload`.
unsigned char fxBinaryWriter::writePendingWith(const char* payload) {
    const fxBinaryFormat::Record* record = fxBinaryFormat::recordOf(tag);
    if (!record)
        fxFatal("Whoops!");
    const char* const text = record->hasText ? typeName : nullptr;
    fxPiece& piece = index->piece;
    if (!(piece.isCollecting() ? collectRecord(*record, text, payload)
                               : piece.handOverFor(stream) && putRecord(*record, text, payload)))
        return 0;
    cursor = buffer;
    payloadCount = 0;
    tag = fxOT_Data;
    return 1;
}

// Writes the pending record with `n` bytes that need not go through the buffer.
// Requires: no payload is pending, and `n` is at most the buffer's size.
inline unsigned char fxBinaryWriter::writeInPlace(const char* data, unsigned int n) {
    payloadCount = n;
    if (writePendingWith(data))
        return 1;
    std::memcpy(buffer, data, n);
    cursor = buffer + n;
    return 0;
}

unsigned char fxBinaryWriter::writeBytes(char* data, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryWriter", data, n);
    while (n != 0) {
        if (payloadCount == capacity && !writePending())
            return 0;
        if (payloadCount == 0 && n > capacity) {
            if (!writeInPlace(data, capacity))
                return 0;
            data += capacity;
            n -= capacity;
            continue;
        }
        const unsigned int room = capacity - payloadCount;
        const unsigned int step = n < room ? n : room;
        fxCopyShort(cursor, data, step);
        cursor += step;
        payloadCount += step;
        data += step;
        n -= step;
    }
    return 1;
}

unsigned char fxBinaryWriter::writeNullPointer() {
    if (!writePending())
        return 0;
    tag = fxOT_Null;
    return 1;
}

unsigned char fxBinaryWriter::writeType(fxTypeObj& type, unsigned long* number) {
    if (index->type != &type) {
        index->typeEntry = &index->entryOf(&type);
        index->type = &type;
    }
    fxObjectTable::Entry& entry = *index->typeEntry;
    *number = entry.value;
    if (*number != 0)
        return 1;
    index->number(entry, nextId++);
    *number = entry.value;
    tag = fxOT_Type;
    arg2 = static_cast<unsigned int>(*number);
    arg3 = type.version;
    typeName = type.name;
    return writePending();
}

unsigned char fxBinaryWriter::writePrimPointer(void* address, unsigned int length,
                                               unsigned int blockTag) {
    if (!address)
        return writeNullPointer();
    if (!writePending())
        return 0;
    fxObjectTable::Entry& entry = index->entryOf(address);
    if (entry.value != 0) {
        setPending(fxOT_OldBlock, entry.value);
        return writePending();
    }
    addWork({blockItem, &entry, length, blockTag});
    setPending(fxOT_Block, entry.value);
    arg4 = length;
    return 1;
}

// Objects.

unsigned char fxBinaryWriter::xdr(void* field, fxXDRObj* object, fxTypeObj&, fxXDRObj*, void*) {
    FX_CHECK_NOT_NULL("fxBinaryWriter", field);
    void* address = fxPointerIn(field);
    if (!address)
        return writeNullPointer();
    if (!object || !writePending())
        return 0;
    fxTypeObj& type = object->getTypeObj();
    unsigned long typeNumber;
    if (!writeType(type, &typeNumber))
        return 0;
    fxObjectTable::Entry& entry = index->entryOf(address);
    const bool isKnown = entry.value != 0;
    if (!isKnown)
        addWork({objectItem, &entry, fxWordOf(&type), 0});
    setPending(isKnown ? fxOT_OldObject : fxOT_ObjectPointer, entry.value);
    return 1;
}

unsigned char fxBinaryWriter::xdr(fxTypeObj& type, void* previous, void* address) {
    if (previous == address)
        return 1;
    FX_CHECK_NOT_NULL("fxBinaryWriter", address);
    if (!writePending())
        return 0;
    fxObjectTable::Entry& entry = index->entryOf(address);
    if (entry.value != 0) {
        setPending(fxOT_OldEmbedded, entry.value);
        return 1;
    }
    index->number(entry, nextId++);
    setPending(fxOT_Embedded, entry.value);
    return fxContents::withVersion(*this, type.version, [&] { return type.xdr(address, *this); });
}

void* fxBinaryWriter::readObject(fxTypeObj&) {
    fxFatal("tried to invoke fxBinaryWriter::readObject");
}

unsigned char fxBinaryWriter::writeObject(void* address, fxXDRObj* object) {
    if (!object)
        return 0;
    const unsigned int type = fxWordOf(&object->getTypeObj());
    const fxPiece::Collecting collecting(index->piece, stream);
    if (!index->piece.handOver())
        return 0;
    addWork({objectItem, &index->entryOf(address), type, 0});
    fxBinaryWriterItem item;
    unsigned long number;
    while (takeItem(item, number)) {
        if (!writeItem(item, number) || !writePending())
            return 0;
    }
    return index->piece.handOver();
}

unsigned char fxBinaryWriter::writeItem(const fxBinaryWriterItem& item, unsigned long number) {
    if (item.kind != objectItem) {
        setPending(static_cast<fxBinaryOTTag>(item.blockTag), number);
        arg4 = item.extra;
        return writeBlock(static_cast<char*>(item.address), item.extra);
    }
    // NOLINTNEXTLINE(performance-no-int-to-ptr): an item holds it as a word.
    fxTypeObj& type = *reinterpret_cast<fxTypeObj*>(item.extra);
    unsigned long typeNumber;
    if (!writeType(type, &typeNumber))
        return 0;
    setPending(fxOT_Object, number);
    arg2 = static_cast<unsigned int>(typeNumber);
    return fxContents::withVersion(*this, type.version,
                                   [&] { return type.xdr(item.address, *this); });
}

// Writes the body of a block, whose record is pending.
unsigned char fxBinaryWriter::writeBlock(char* data, unsigned int n) {
    if (payloadCount != 0)
        return writeBytes(data, n);
    while (n > capacity) {
        if (!writeInPlace(data, capacity))
            return 0;
        data += capacity;
        n -= capacity;
    }
    return writeInPlace(data, n);
}

// Elements in place.

namespace {
template <class Element>
unsigned char writeElements(fxBinaryWriter& writer, Element* elements, unsigned int n) {
    return writer.writeBytes(reinterpret_cast<char*>(elements),
                             n * static_cast<unsigned int>(sizeof(Element)));
}

template <class Element>
unsigned char writePointer(fxBinaryWriter& writer, Element* const* block, unsigned int n,
                           fxBinaryOTTag blockTag) {
    return writer.writePrimPointer(fxPointerIn(block),
                                   n * static_cast<unsigned int>(sizeof(Element)), blockTag);
}

unsigned char writeText(fxBinaryWriter& writer, const void* field) {
    void* text = fxPointerIn(field);
    const unsigned int size = text ? fxSizeWithNul(static_cast<const char*>(text)) : 0;
    return writer.writePrimPointer(text, size, fxOT_Bytes);
}
}  // namespace

unsigned char fxBinaryWriter::xdr(char* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryWriter", elements, n);
    return writeElements(*this, elements, n);
}

unsigned char fxBinaryWriter::xdr(unsigned char* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryWriter", elements, n);
    return writeElements(*this, elements, n);
}

unsigned char fxBinaryWriter::xdr(short* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryWriter", elements, n);
    FX_CHECK_COUNT("fxBinaryWriter", n, sizeof(*elements));
    return writeElements(*this, elements, n);
}

unsigned char fxBinaryWriter::xdr(unsigned short* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryWriter", elements, n);
    FX_CHECK_COUNT("fxBinaryWriter", n, sizeof(*elements));
    return writeElements(*this, elements, n);
}

unsigned char fxBinaryWriter::xdr(long* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryWriter", elements, n);
    FX_CHECK_COUNT("fxBinaryWriter", n, sizeof(*elements));
    return writeElements(*this, elements, n);
}

unsigned char fxBinaryWriter::xdr(unsigned long* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryWriter", elements, n);
    FX_CHECK_COUNT("fxBinaryWriter", n, sizeof(*elements));
    return writeElements(*this, elements, n);
}

unsigned char fxBinaryWriter::xdr(float* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryWriter", elements, n);
    FX_CHECK_COUNT("fxBinaryWriter", n, sizeof(*elements));
    return writeElements(*this, elements, n);
}

unsigned char fxBinaryWriter::xdr(double* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryWriter", elements, n);
    FX_CHECK_COUNT("fxBinaryWriter", n, sizeof(*elements));
    return writeElements(*this, elements, n);
}

unsigned char fxBinaryWriter::xdr(fxStr* strings, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryWriter", strings, n);
    for (unsigned int i = 0; i < n; ++i) {
        if (!strings[i].xdr(*this))
            return 0;
    }
    return 1;
}

// Pointers to blocks.

unsigned char fxBinaryWriter::xdr(char** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxBinaryWriter", block);
    return writePointer(*this, block, n, fxOT_Bytes);
}

unsigned char fxBinaryWriter::xdr(unsigned char** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxBinaryWriter", block);
    return writePointer(*this, block, n, fxOT_Bytes);
}

unsigned char fxBinaryWriter::xdr(short** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxBinaryWriter", block);
    FX_CHECK_COUNT("fxBinaryWriter", n, sizeof(**block));
    return writePointer(*this, block, n, fxOT_Shorts);
}

unsigned char fxBinaryWriter::xdr(unsigned short** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxBinaryWriter", block);
    FX_CHECK_COUNT("fxBinaryWriter", n, sizeof(**block));
    return writePointer(*this, block, n, fxOT_Shorts);
}

unsigned char fxBinaryWriter::xdr(long** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxBinaryWriter", block);
    FX_CHECK_COUNT("fxBinaryWriter", n, sizeof(**block));
    return writePointer(*this, block, n, fxOT_Longs);
}

unsigned char fxBinaryWriter::xdr(unsigned long** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxBinaryWriter", block);
    FX_CHECK_COUNT("fxBinaryWriter", n, sizeof(**block));
    return writePointer(*this, block, n, fxOT_Longs);
}

unsigned char fxBinaryWriter::xdr(float** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxBinaryWriter", block);
    FX_CHECK_COUNT("fxBinaryWriter", n, sizeof(**block));
    return writePointer(*this, block, n, fxOT_Floats);
}

unsigned char fxBinaryWriter::xdr(double** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxBinaryWriter", block);
    FX_CHECK_COUNT("fxBinaryWriter", n, sizeof(**block));
    return writePointer(*this, block, n, fxOT_Doubles);
}

unsigned char fxBinaryWriter::xdr(char** text) {
    FX_CHECK_NOT_NULL("fxBinaryWriter", text);
    return writeText(*this, text);
}

unsigned char fxBinaryWriter::xdr(unsigned char** text) {
    FX_CHECK_NOT_NULL("fxBinaryWriter", text);
    return writeText(*this, text);
}
