#include "kelvofxds/transcribe/fxBinaryReader.h"

#include <cstring>

#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/str/fxStackBuffer.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxBinaryFormatInternal.h"
#include "kelvofxds/transcribe/fxBinaryReaderInternal.h"
#include "kelvofxds/transcribe/fxStream.h"

fxBinaryReader::fxBinaryReader(fxStream* s, short shortMark, long longMark, const char* floatFormat)
    : shortsConv(nullptr),
      longsConv(nullptr),
      floatsConv(nullptr),
      doublesConv(nullptr),
      unreadPayload(0),
      index(fxNew<Index>(table)) {
    reading = 1;
    holdStream(s);
    selectConverters(shortMark, longMark, floatFormat);
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
    index->removeAll();
    index->clear();
    freeItems();
}

// Records. A record is read in full before the next one, but a payload longer
// than the buffer is read in pieces of the buffer's size.

unsigned char fxBinaryReader::fill() { return fillHead() && readPayload(); }

// Reads everything of the next record but its payload.
unsigned char fxBinaryReader::fillHead() {
    if (!skipPayload())
        return 0;
    char head;
    if (!stream->getBytes(&head, 1))
        return 0;
    tag = fxBinaryFormat::tagOf(static_cast<unsigned char>(head));
    if (!readLength(fxBinaryFormat::lengthClassOf(static_cast<unsigned char>(head))) ||
        !readArguments()) {
        unreadPayload = 0;
        return 0;
    }
    return 1;
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

// Fills the buffer with the next piece of the payload.
unsigned char fxBinaryReader::readPayload() {
    const unsigned int piece = unreadPayload < capacity ? unreadPayload : capacity;
    cursor = buffer;
    payloadCount = 0;
    unreadPayload -= piece;
    if (piece != 0 && !stream->getBytes(buffer, piece)) {
        unreadPayload = 0;
        return 0;
    }
    payloadCount = piece;
    return 1;
}

unsigned char fxBinaryReader::readLength(unsigned int lengthClass) {
    char bytes[fxBinaryFormat::wordBytes] = {};
    const unsigned int n = fxBinaryFormat::lengthBytes[lengthClass];
    if (n != 0 && !stream->getBytes(bytes, n))
        return 0;
    unreadPayload = fxBinaryFormat::getWord(bytes);
    return 1;
}

unsigned char fxBinaryReader::readArguments() {
    const fxBinaryFormat::Record* record = fxBinaryFormat::recordOf(tag);
    if (!record)
        fxFatal("Whoops!");
    char bytes[fxBinaryFormat::mostWords * fxBinaryFormat::wordBytes];
    const unsigned int n = record->wordsRead;
    if (n != 0 && !stream->getBytes(bytes, n * fxBinaryFormat::wordBytes))
        return 0;
    for (unsigned int i = 0; i < n; ++i) {
        const unsigned int word = fxBinaryFormat::getWord(bytes + i * fxBinaryFormat::wordBytes);
        switch (record->words[i]) {
            case fxBinaryFormat::Word::ignored:
                break;
            case fxBinaryFormat::Word::number:
                arg1 = word;
                break;
            case fxBinaryFormat::Word::typeNumber:
                arg2 = word;
                break;
            case fxBinaryFormat::Word::version:
                arg3 = word;
                break;
            case fxBinaryFormat::Word::size:
                arg4 = word;
                break;
        }
    }
    return !record->hasText || readType();
}

// Reads the name of the type whose number has been read, and enters the type.
unsigned char fxBinaryReader::readType() {
    fxStackBuffer name;
    if (!readName(name))
        return 0;
    fxTypeObj* type = fxTypeObj::findType(name.getBase());
    if (!type)
        fxFatal("unknown type %s", name.getBase());
    return enter(arg2, type, Record::type) != nullptr;
}

unsigned char fxBinaryReader::readName(fxStackBuffer& name) {
    return readNullTerminatedString(stream, name);
}

unsigned char fxBinaryReader::readBytes(char* data, unsigned int n) {
    while (n != 0) {
        const unsigned int left = payloadCount - static_cast<unsigned int>(cursor - buffer);
        if (left != 0) {
            const unsigned int step = n < left ? n : left;
            std::memcpy(data, cursor, step);
            cursor += step;
            data += step;
            n -= step;
            continue;
        }
        if (unreadPayload == 0 && !fillHead())
            return 0;
        if (unreadPayload < capacity || n < capacity) {
            if (!readPayload())
                return 0;
            continue;
        }
        // A whole buffer of it is wanted: it need not stop there.
        unreadPayload -= capacity;
        if (!stream->getBytes(data, capacity)) {
            unreadPayload = 0;
            return 0;
        }
        data += capacity;
        n -= capacity;
    }
    return 1;
}

// Elements in place.

namespace {
const unsigned int tooLong = 0xFFFFFFFF;

// Bytes of `n` elements; tooLong when they exceed a word.
template <class Element>
unsigned int bytesOf(unsigned int n) {
    return n <= tooLong / sizeof(Element) ? n * static_cast<unsigned int>(sizeof(Element))
                                          : tooLong;
}

template <class Element>
unsigned char readElements(fxBinaryReader& reader, fxBinaryConverter convert, Element* elements,
                           unsigned int n) {
    const unsigned int bytes = bytesOf<Element>(n);
    return bytes != tooLong && convert(reader, reinterpret_cast<char*>(elements), bytes);
}
}  // namespace

unsigned char fxBinaryReader::xdr(char* elements, unsigned int n) { return readBytes(elements, n); }

unsigned char fxBinaryReader::xdr(unsigned char* elements, unsigned int n) {
    return readBytes(reinterpret_cast<char*>(elements), n);
}

unsigned char fxBinaryReader::xdr(short* elements, unsigned int n) {
    return readElements(*this, shortsConv, elements, n);
}

unsigned char fxBinaryReader::xdr(unsigned short* elements, unsigned int n) {
    return readElements(*this, shortsConv, elements, n);
}

unsigned char fxBinaryReader::xdr(long* elements, unsigned int n) {
    return readElements(*this, longsConv, elements, n);
}

unsigned char fxBinaryReader::xdr(unsigned long* elements, unsigned int n) {
    return readElements(*this, longsConv, elements, n);
}

unsigned char fxBinaryReader::xdr(float* elements, unsigned int n) {
    return readElements(*this, floatsConv, elements, n);
}

unsigned char fxBinaryReader::xdr(double* elements, unsigned int n) {
    return readElements(*this, doublesConv, elements, n);
}

unsigned char fxBinaryReader::xdr(fxStr* strings, unsigned int n) {
    for (unsigned int i = 0; i < n; ++i) {
        if (!strings[i].xdr(*this))
            return 0;
    }
    return 1;
}

// Pointers to blocks. How long a block is the stream says.

unsigned char fxBinaryReader::xdr(char** block, unsigned int n) {
    return readPrimPointer(block, n);
}

unsigned char fxBinaryReader::xdr(unsigned char** block, unsigned int n) {
    return readPrimPointer(block, n);
}

unsigned char fxBinaryReader::xdr(short** block, unsigned int n) {
    return readPrimPointer(block, bytesOf<short>(n));
}

unsigned char fxBinaryReader::xdr(unsigned short** block, unsigned int n) {
    return readPrimPointer(block, bytesOf<unsigned short>(n));
}

unsigned char fxBinaryReader::xdr(long** block, unsigned int n) {
    return readPrimPointer(block, bytesOf<long>(n));
}

unsigned char fxBinaryReader::xdr(unsigned long** block, unsigned int n) {
    return readPrimPointer(block, bytesOf<unsigned long>(n));
}

unsigned char fxBinaryReader::xdr(float** block, unsigned int n) {
    return readPrimPointer(block, bytesOf<float>(n));
}

unsigned char fxBinaryReader::xdr(double** block, unsigned int n) {
    return readPrimPointer(block, bytesOf<double>(n));
}

unsigned char fxBinaryReader::xdr(char** text) { return readPrimPointer(text, 0); }

unsigned char fxBinaryReader::xdr(unsigned char** text) { return readPrimPointer(text, 0); }
