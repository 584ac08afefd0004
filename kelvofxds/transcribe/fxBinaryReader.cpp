#include "kelvofxds/transcribe/fxBinaryReader.h"

#include <algorithm>
#include <cstring>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/str/fxStackBuffer.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxBinaryFormatInternal.h"
#include "kelvofxds/transcribe/fxBinaryReaderInternal.h"
#include "kelvofxds/transcribe/fxMemberInternal.h"
#include "kelvofxds/transcribe/fxStream.h"

fxBinaryReader::fxBinaryReader(fxStream* s, short shortMark, long longMark, const char* floatFormat)
    : shortsConv(nullptr),
      longsConv(nullptr),
      floatsConv(nullptr),
      doublesConv(nullptr),
      unreadPayload(0),
      index(nullptr) {
    reading = 1;
    holdStream(s);
    selectConverters(shortMark, longMark, floatFormat);
    // Last: a reader that is refused has entered its table nowhere.
    index = fxNew<Index>(table, *this);
}

fxBinaryReader::~fxBinaryReader() { delete index; }

const char* fxBinaryReader::className() const { return "fxBinaryReader"; }

namespace {
// The converters for an order of bytes; null where there is none.

fxBinaryConverter converterOfShorts(fxBinaryFormat::Order order) {
    switch (order) {
        case fxBinaryFormat::Order::same:
            return fxBinaryReader_shorts;
        case fxBinaryFormat::Order::bytesSwapped:
            return fxBinaryReader_BS;
        case fxBinaryFormat::Order::halvesSwapped:
        case fxBinaryFormat::Order::reversed:
        case fxBinaryFormat::Order::unknown:
            break;
    }
    return nullptr;
}

fxBinaryConverter converterOfLongs(fxBinaryFormat::Order order) {
    switch (order) {
        case fxBinaryFormat::Order::same:
            return fxBinaryReader_longs;
        case fxBinaryFormat::Order::bytesSwapped:
            return fxBinaryReader_BS;
        case fxBinaryFormat::Order::halvesSwapped:
            return fxBinaryReader_longsSS;
        case fxBinaryFormat::Order::reversed:
            return fxBinaryReader_longsBSSS;
        case fxBinaryFormat::Order::unknown:
            break;
    }
    return nullptr;
}
}  // namespace

void fxBinaryReader::selectConverters(short shortMark, long longMark, const char* floatFormat) {
    const unsigned int mark = static_cast<unsigned int>(longMark);
    shortsConv = converterOfShorts(fxBinaryFormat::orderOf(static_cast<unsigned short>(shortMark),
                                                           fxBinaryFormat::shortMarks));
    if (!shortsConv)
        fxFatal("fxBinaryReader: unknown short ordering %x", mark);
    longsConv = converterOfLongs(fxBinaryFormat::orderOf(mark, fxBinaryFormat::longMarks));
    if (!longsConv)
        fxFatal("fxBinaryReader: unknown long ordering %x", mark);
    if (std::strcmp(floatFormat, fxBinaryFormat::floatFormat) != 0)
        fxFatal("fxBinaryReader: unsupported floating point format %s", floatFormat);
    floatsConv = fxBinaryReader_floats;
    doublesConv = fxBinaryReader_doubles;
}

void fxBinaryReader::reset() {
    index->forget();
    freeItems();
}

// Records. A record is read in full before the next one, but a payload longer
// than the buffer is read in pieces of the buffer's size.

unsigned char fxBinaryReader::get(char* to, unsigned int n) {
    return index->source.get(*stream, to, n);
}

unsigned char fxBinaryReader::fill() { return fillHead() && readPayload(); }

// Reads everything of the next record but its payload.
unsigned char fxBinaryReader::fillHead() {
    if (!skipPayload())
        return 0;
    char head;
    if (!get(&head, 1))
        return 0;
    tag = fxBinaryFormat::tagOf(static_cast<unsigned char>(head));
    if (readFields(fxBinaryFormat::lengthClassOf(static_cast<unsigned char>(head))))
        return 1;
    unreadPayload = 0;
    return 0;
}

// Reads the length of the payload and the record's arguments.
unsigned char fxBinaryReader::readFields(unsigned int lengthClass) {
    const fxBinaryFormat::Record* record = fxBinaryFormat::recordOf(tag);
    const unsigned int lengthSize = fxBinaryFormat::lengthBytes[lengthClass];
    const unsigned int wordsSize = record ? record->wordsRead * fxBinaryFormat::wordBytes : 0;
    const bool atOnce = index->source.isOwn();
    char bytes[fxBinaryFormat::mostHeadBytes];
    const unsigned int first = atOnce ? lengthSize + wordsSize : lengthSize;
    const char* fields = index->source.ready(first);
    if (!fields) {
        fields = bytes;
        if (first != 0 && !get(bytes, first))
            return 0;
    }
    if (!record)
        fxFatal("Whoops!");
    if (!atOnce && wordsSize != 0 && !get(bytes + lengthSize, wordsSize))
        return 0;
    const char* const words = fields + lengthSize;
    unreadPayload = fxBinaryFormat::getLittle(fields, lengthSize);
    unsigned int arguments[] = {0, arg1, arg2, arg3, arg4};
    for (unsigned int i = 0; i < record->wordsRead; ++i)
        arguments[static_cast<unsigned int>(record->words[i])] =
            fxBinaryFormat::getWord(words + i * fxBinaryFormat::wordBytes);
    arg1 = arguments[1];
    arg2 = arguments[2];
    arg3 = arguments[3];
    arg4 = arguments[4];
    return !record->hasText || readType();
}

// Drops what is left of the current record's payload.
unsigned char fxBinaryReader::skipPayload() {
    while (unreadPayload != 0) {
        if (!readPayload())
            return 0;
    }
    payloadCount = 0;
    cursor = buffer;
    return 1;
}

// Bytes of the first piece of the payload; 0 when it has been read.
unsigned int fxBinaryReader::firstPiece() const {
    return payloadCount == 0 ? std::min(unreadPayload, capacity) : 0;
}

// Fills the buffer with the next piece of the payload.
unsigned char fxBinaryReader::readPayload() {
    const unsigned int piece = unreadPayload < capacity ? unreadPayload : capacity;
    cursor = buffer;
    payloadCount = 0;
    unreadPayload -= piece;
    if (piece != 0 && !get(buffer, piece)) {
        unreadPayload = 0;
        return 0;
    }
    payloadCount = piece;
    return 1;
}

namespace {
// What a copy of a text may take beside its bytes.
const unsigned int roomForCopy = 16;
}  // namespace

// Reads the name of the type whose number has been read, and enters the type.
unsigned char fxBinaryReader::readType() {
    fxStackBuffer name;
    if (!readName(name))
        return 0;
    // It is copied there. Where that may be refused is no end.
    if (!hasMemory(name.length() + roomForCopy))
        return 0;
    fxTypeObj* type = fxTypeObj::findType(name.getBase());
    if (!type)
        fxFatal("unknown type %s", name.getBase());
    return enter(arg2, type, Record::type) != nullptr;
}

unsigned char fxBinaryReader::readName(fxStackBuffer& name) {
    char c = 0;
    do {
        if (!get(&c, 1) || !name.tryAddc(c))
            return 0;
    } while (c != '\0');
    return 1;
}

unsigned char fxBinaryReader::readBytes(char* data, unsigned int n) {
    while (n != 0) {
        const unsigned int left = payloadCount - static_cast<unsigned int>(cursor - buffer);
        if (left != 0) {
            const unsigned int step = n < left ? n : left;
            fxCopyShort(data, cursor, step);
            cursor += step;
            data += step;
            n -= step;
            continue;
        }
        index->source.expect(n);
        if (unreadPayload == 0 && !fillHead())
            return 0;
        const unsigned int piece = std::min(unreadPayload, capacity);
        if (piece == 0 || piece > n) {
            if (!readPayload())
                return 0;
            continue;
        }
        // All of it is wanted: it need not stop in the buffer.
        unreadPayload -= piece;
        if (!get(data, piece)) {
            unreadPayload = 0;
            return 0;
        }
        data += piece;
        n -= piece;
    }
    return 1;
}

// Elements in place.

namespace {
template <class Element>
unsigned char readElements(fxBinaryReader& reader, fxBinaryConverter convert, Element* elements,
                           unsigned int n) {
    const unsigned int bytes = fxBytesOf<Element>(n);
    return bytes != fxTooLong && convert(reader, reinterpret_cast<char*>(elements), bytes);
}
}  // namespace

unsigned char fxBinaryReader::xdr(char* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryReader", elements, n);
    return readBytes(elements, n);
}

unsigned char fxBinaryReader::xdr(unsigned char* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryReader", elements, n);
    return readBytes(reinterpret_cast<char*>(elements), n);
}

unsigned char fxBinaryReader::xdr(short* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryReader", elements, n);
    return readElements(*this, shortsConv, elements, n);
}

unsigned char fxBinaryReader::xdr(unsigned short* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryReader", elements, n);
    return readElements(*this, shortsConv, elements, n);
}

unsigned char fxBinaryReader::xdr(long* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryReader", elements, n);
    return readElements(*this, longsConv, elements, n);
}

unsigned char fxBinaryReader::xdr(unsigned long* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryReader", elements, n);
    return readElements(*this, longsConv, elements, n);
}

unsigned char fxBinaryReader::xdr(float* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryReader", elements, n);
    return readElements(*this, floatsConv, elements, n);
}

unsigned char fxBinaryReader::xdr(double* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryReader", elements, n);
    return readElements(*this, doublesConv, elements, n);
}

unsigned char fxBinaryReader::xdr(fxStr* strings, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxBinaryReader", strings, n);
    for (unsigned int i = 0; i < n; ++i) {
        if (!strings[i].xdr(*this))
            return 0;
    }
    return 1;
}

// Pointers to blocks. How long a block is the stream says.

unsigned char fxBinaryReader::xdr(char** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxBinaryReader", block);
    return readPrimPointer(block, n);
}

unsigned char fxBinaryReader::xdr(unsigned char** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxBinaryReader", block);
    return readPrimPointer(block, n);
}

unsigned char fxBinaryReader::xdr(short** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxBinaryReader", block);
    return readPrimPointer(block, fxBytesOf<short>(n));
}

unsigned char fxBinaryReader::xdr(unsigned short** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxBinaryReader", block);
    return readPrimPointer(block, fxBytesOf<unsigned short>(n));
}

unsigned char fxBinaryReader::xdr(long** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxBinaryReader", block);
    return readPrimPointer(block, fxBytesOf<long>(n));
}

unsigned char fxBinaryReader::xdr(unsigned long** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxBinaryReader", block);
    return readPrimPointer(block, fxBytesOf<unsigned long>(n));
}

unsigned char fxBinaryReader::xdr(float** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxBinaryReader", block);
    return readPrimPointer(block, fxBytesOf<float>(n));
}

unsigned char fxBinaryReader::xdr(double** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxBinaryReader", block);
    return readPrimPointer(block, fxBytesOf<double>(n));
}

unsigned char fxBinaryReader::xdr(char** text) {
    FX_CHECK_NOT_NULL("fxBinaryReader", text);
    return readPrimPointer(text, 0);
}

unsigned char fxBinaryReader::xdr(unsigned char** text) {
    FX_CHECK_NOT_NULL("fxBinaryReader", text);
    return readPrimPointer(text, 0);
}
