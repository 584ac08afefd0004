// fxBinaryReaderObjects.cpp - making objects and blocks, and pointing to them.

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryReaderInternal.h"
#include "kelvofxds/transcribe/fxContentsInternal.h"
#include "kelvofxds/transcribe/fxMemberInternal.h"

namespace {

// A body that is shorter than a pointer's owner expects is followed by zero
// bytes, but not by more than this: memory has to be paid for in bytes read.
// All of them together are limited as well; of strings' only those that exceed
// a little.
const unsigned int longestPadding = 4096;
const unsigned int smallPadding = 32;

// What is allocated on the mere word of a stream.
const unsigned int firstStep = 64 * 1024;

// Memory for a block while its body arrives. It has one zero byte more than
// its size says, so that a text ends in it.
class BlockMemory {
public:
    explicit BlockMemory(bool isForString) : forString(isForString), bytes(nullptr) {}
    BlockMemory(const BlockMemory&) = delete;
    BlockMemory& operator=(const BlockMemory&) = delete;
    ~BlockMemory() { fxFreeBlock(forString, bytes); }

    char* address() const { return bytes; }

    // Makes room for `size` bytes, of which the first `kept` are kept and those
    // from `filled` on are cleared; the bytes between are about to be read.
    bool resize(unsigned int size, unsigned int kept, unsigned int filled) {
        if (size + 1 == 0)
            return false;
        char* memory = fxAllocateBlock(forString, size + 1);
        if (!memory)
            return false;
        if (kept != 0)
            std::memcpy(memory, bytes, kept);
        std::memset(memory + filled, 0, size + 1 - filled);
        fxFreeBlock(forString, bytes);
        bytes = memory;
        return true;
    }

    char* release() {
        char* released = bytes;
        bytes = nullptr;
        return released;
    }

private:
    bool forString;
    char* bytes;
};

}  // namespace

// A string has the length that it says, or it cannot be read.
bool fxBinaryReader::Index::padString(unsigned int padding) {
    if (padding <= smallPadding)
        return true;
    if (padding > longestPadding || padding > stringPadding)
        return false;
    stringPadding -= padding;
    return true;
}

// What an array's owner asked for may be garbage: it is often read after the
// pointer. So the block is never refused for it.
void fxBinaryReader::Index::padArray(unsigned int& padding) {
    padding = std::min(padding, std::min(longestPadding, arrayPadding));
    arrayPadding -= padding;
}

// The table and its index.

// Null when there is no memory for it.
fxBinaryReader::Record* fxBinaryReader::enter(unsigned int number, void* address,
                                              unsigned char kind) {
    Record* record = index->madeRecordOf(number);
    if (!record)
        return nullptr;
    if (!index->enter(*record, reinterpret_cast<std::uint32_t>(address)))
        return nullptr;
    record->kind = static_cast<Record::Kind>(kind);
    record->taken = false;
    return record;
}

void* fxBinaryReader::alreadyRead(unsigned long number) {
    const Record* record = index->recordOf(static_cast<std::uint32_t>(number));
    return record && record->isEntered() ? record->address() : nullptr;
}

void fxBinaryReader::queue(fxBinaryReaderItem* item) {
    const bool isOwn = index->ownClass.isOf(*this);
    Work work = {nullptr, nullptr, item->target, 0};
    if (!isOwn || index->works.push(work)) {
        if (hasRoomForItem()) {
            pushItem(item);
            return;
        }
        if (isOwn)
            index->works.pop(work);
    }
    index->refused = true;
    delete item;
}

fxBinaryReaderItem* fxBinaryReader::pop() {
    Work work;
    if (!takeWork(work))
        return nullptr;
    if (!work.record)
        return static_cast<fxBinaryReaderItem*>(popItem());
    auto* item =
        fxTryNew<fxBinaryReaderItem>(work.field, work.record->key, work.target, work.wantedSize);
    index->refused = index->refused || !item;
    return item;
}

// Takes what comes last. False if there is nothing; without a record, it has yet to
// be taken off the list.
inline bool fxBinaryReader::takeWork(Work& work) {
    if (index->ownClass.isOf(*this))
        return index->works.pop(work);
    work.record = nullptr;
    return true;
}

// Takes the last item off the queue; what it waits for is awaited from then on.
bool fxBinaryReader::takeItem(fxBinaryReaderItem& item) {
    Work work;
    const bool isThere = takeWork(work);
    index->awaited = isThere ? work.record : nullptr;
    if (!isThere)
        return false;
    if (work.record) {
        item = {work.field, work.record->key, work.target, work.wantedSize};
        return true;
    }
    const std::unique_ptr<fxBinaryReaderItem> taken(static_cast<fxBinaryReaderItem*>(popItem()));
    if (!taken)
        return false;
    item = *taken;
    return true;
}

// Instances. The payload need not have been read: a block's goes to the block.

unsigned char fxBinaryReader::readInstance(void** instance) {
    while (tag == fxOT_Type) {
        if (!fillHead())
            return 0;
    }
    if (const fxBinaryConverter convert = converterOf(tag))
        return readBlock(convert, instance);
    if (firstPiece() != 0 && !readPayload())
        return 0;
    if (tag == fxOT_Object)
        return readObjectBody(instance);
    fxFatal("XXX baddest news");
}

// Null when the tag is that of no block's body.
fxBinaryConverter fxBinaryReader::converterOf(unsigned int blockTag) const {
    switch (static_cast<fxBinaryOTTag>(blockTag)) {
        case fxOT_Bytes:
            return [](fxBinaryReader& reader, char* destination, unsigned int byteCount) {
                return reader.readBytes(destination, byteCount);
            };
        case fxOT_Shorts:
            return shortsConv;
        case fxOT_Longs:
            return longsConv;
        case fxOT_Floats:
            return floatsConv;
        case fxOT_Doubles:
            return doublesConv;
        case fxOT_Data:
        case fxOT_Null:
        case fxOT_Type:
        case fxOT_Block:
        case fxOT_OldBlock:
        case fxOT_Object:
        case fxOT_ObjectPointer:
        case fxOT_OldObject:
        case fxOT_Embedded:
        case fxOT_OldEmbedded:
            break;
    }
    return nullptr;
}

unsigned char fxBinaryReader::readBlock(fxBinaryConverter convert, void** instance) {
    // The records that the body spans set the arguments anew.
    const unsigned int number = arg1;
    const unsigned int length = arg4;

    const Record* awaited = index->recordOf(number);
    const bool forString = awaited && awaited->awaitedByString;
    unsigned int padding = awaited && awaited->wanted > length ? awaited->wanted - length : 0;
    bool isAllowed = true;
    if (forString)
        isAllowed = index->padString(padding);
    else
        index->padArray(padding);
    unsigned int size = 0;
    isAllowed = isAllowed && !__builtin_add_overflow(length, padding, &size);
    // What does not fit is dropped later, but read now.
    const unsigned int piece = firstPiece();
    if (piece != 0 && (!isAllowed || piece > length) && !readPayload())
        return 0;
    if (!isAllowed)
        return 0;

    BlockMemory memory(forString);
    unsigned int done = 0;
    do {
        const unsigned int step = done > firstStep ? done : firstStep;
        const unsigned int next = length - done > step ? done + step : length;
        if (!memory.resize(next == length ? size : next, done, next) ||
            !convert(*this, memory.address() + done, next - done))
            return 0;
        done = next;
    } while (done < length);

    Record* record =
        enter(number, memory.address(), forString ? Record::stringBlock : Record::arrayBlock);
    if (!record)
        return 0;
    record->size = size;
    *instance = memory.release();
    return 1;
}

unsigned char fxBinaryReader::readObjectBody(void** instance) {
    const Record* typeRecord = index->recordOf(arg2);
    if (!typeRecord || typeRecord->kind != Record::type)
        return 0;
    fxTypeObj& type = *static_cast<fxTypeObj*>(typeRecord->address());
    if (arg3 != type.version)
        fxFatal("XXX version error handling is missing");
    void* object = type.create ? type.create(type) : nullptr;
    if (!object)
        return 0;
    if (!enter(arg1, object, Record::object)) {
        if (type.destroy)
            type.destroy(object);
        return 0;
    }
    if (!fxContents::withVersion(*this, type.version, [&] { return type.xdr(object, *this); }))
        fxFatal("XXX error handling is missing");
    *instance = object;
    return 1;
}

// Pointers.

unsigned char fxBinaryReader::readPrimPointer(void* field, unsigned int length) {
    fxBinaryReaderItem item;
    item.field = static_cast<void**>(field);
    item.target =
        isStringBuffer() ? fxBinaryReaderItem::stringTarget : fxBinaryReaderItem::blockTarget;
    item.wantedSize = length;
    markStringBuffer(false);
    if (item.target == fxBinaryReaderItem::stringTarget && length == 0)
        return 0;  // a string's buffer has a NUL at least
    if (!fill())
        return 0;
    item.number = arg1;
    if (tag == fxOT_Block)
        return awaitTarget(item);
    if (tag == fxOT_OldBlock)
        return store(item);
    fxFatal("format error");
}

unsigned char fxBinaryReader::xdr(void* field, fxXDRObj*, fxTypeObj&, fxXDRObj*, void*) {
    FX_CHECK_NOT_NULL("fxBinaryReader", field);
    fxBinaryReaderItem item;
    item.field = static_cast<void**>(field);
    item.target = fxBinaryReaderItem::objectTarget;
    if (!fill())
        return 0;
    item.number = arg1;
    if (tag == fxOT_ObjectPointer)
        return awaitTarget(item);
    if (tag == fxOT_OldObject)
        return store(item);
    if (tag != fxOT_Null)
        fxFatal("XXX bad news!");
    fxSetPointer(item.field, nullptr);
    return 1;
}

unsigned char fxBinaryReader::xdr(fxTypeObj& type, void* previous, void* address) {
    if (previous == address)
        return 1;
    FX_CHECK_NOT_NULL("fxBinaryReader", address);
    if (!fill())
        return 0;
    if (tag == fxOT_Embedded) {
        if (alreadyRead(arg1))
            fxFatal("XXX new base for old base");
        return enter(arg1, address, Record::object) &&
               fxContents::withVersion(*this, type.version,
                                       [&] { return type.xdr(address, *this); });
    }
    if (tag != fxOT_OldEmbedded)
        fxFatal("XXX bad news!");
    if (!alreadyRead(arg1))
        fxFatal("XXX old base previously unseen");
    return 1;
}

// Queues an item; false when there is no memory for it.
inline bool fxBinaryReader::addWork(const Work& work) {
    if (index->ownClass.isOf(*this))
        return index->works.push(work);
    fxBinaryReaderItem* item = nullptr;
    if (hasRoomForItem())
        item = fxTryNew<fxBinaryReaderItem>(work.field, work.record->key, work.target,
                                            work.wantedSize);
    if (item)
        pushItem(item);
    return item != nullptr;
}

// Queues a copy of `item` and notes what its target will have to be.
unsigned char fxBinaryReader::awaitTarget(const fxBinaryReaderItem& item) {
    Record* record = index->madeRecordOf(item.number);
    if (!record || !addWork({item.field, record, item.target, item.wantedSize}))
        return 0;
    if (record->wanted < item.wantedSize)
        record->wanted = item.wantedSize;
    if (item.target == fxBinaryReaderItem::stringTarget)
        record->awaitedByString = true;
    return 1;
}

bool fxBinaryReader::Record::suits(const fxBinaryReaderItem& item) const {
    switch (item.target) {
        case fxBinaryReaderItem::anyTarget:
            return true;
        case fxBinaryReaderItem::objectTarget:
            return !address() || kind == object;
        case fxBinaryReaderItem::blockTarget:
            return !address() || kind == arrayBlock;
        case fxBinaryReaderItem::stringTarget:
            // It has no null buffer and owns its buffer alone.
            return address() && kind == stringBlock && !taken && size >= item.wantedSize;
    }
    return false;
}

// Points the item's member to its target; an unknown number is a null pointer.
// Fails when the number belongs to something the member cannot point to.
unsigned char fxBinaryReader::store(const fxBinaryReaderItem& item) {
    Record* record = index->recordOf(item.number);
    if (!record || !record->isEntered()) {
        record = enter(item.number, nullptr, Record::unknown);
        if (!record)
            return 0;
    }
    if (record->address()) {
        // Whoever else waits gets this one, too; a later body is nobody's yet.
        record->awaitedByString = false;
        record->wanted = 0;
    }
    if (!record->suits(item))
        return 0;
    if (item.target == fxBinaryReaderItem::stringTarget)
        static_cast<char*>(record->address())[item.wantedSize - 1] = '\0';
    record->taken = true;
    fxSetPointer(item.field, record->address());
    return 1;
}

// Roots.

void* fxBinaryReader::readObject(fxTypeObj&) {
    const fxSource::Use use(index->source, stream);
    void* root = nullptr;
    if (!fillHead() || !readInstance(&root))
        return nullptr;
    fxBinaryReaderItem item;
    while (takeItem(item)) {
        void* instance;
        while (!alreadyRead(item.number)) {
            if (!fillHead() || !readInstance(&instance))
                return nullptr;
        }
        if (!store(item))
            return nullptr;
    }
    if (index->refused) {
        index->refused = false;
        return nullptr;
    }
    return root;
}

unsigned char fxBinaryReader::writeObject(void*, fxXDRObj*) {
    fxFatal("tried to invoke fxBinaryReader::writeObject");
}
