#include "kelvofxds/transcribe/fxBinaryReader.h"

#include <cstring>

#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/str/fxStackBuffer.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxBinaryReaderInternal.h"
#include "kelvofxds/transcribe/fxStream.h"

namespace {
unsigned int wordAt(const unsigned char* s) {
    return static_cast<unsigned int>(s[0]) | static_cast<unsigned int>(s[1]) << 8 |
           static_cast<unsigned int>(s[2]) << 16 | static_cast<unsigned int>(s[3]) << 24;
}
}  // namespace

fxBinaryReader::fxBinaryReader(fxStream* s, short shortMark, long longMark, const char* floatFormat)
    : shortsConv(nullptr),
      longsConv(nullptr),
      floatsConv(nullptr),
      doublesConv(nullptr),
      unreadPayload(0),
      index(new Index) {
    reading = 1;
    holdStream(s);
    selectConverters(shortMark, longMark, floatFormat);
}

fxBinaryReader::~fxBinaryReader() {
    table.removeAll();  // its entries are the index's
    delete index;
}

const char* fxBinaryReader::className() const { return "fxBinaryReader"; }

void fxBinaryReader::selectConverters(short shortMark, long longMark, const char* floatFormat) {
    const unsigned int mark = static_cast<unsigned int>(longMark);
    switch (static_cast<unsigned short>(shortMark)) {
        case 0x1122:
            shortsConv = fxBinaryReader_shorts;
            break;
        case 0x2211:
            shortsConv = fxBinaryReader_BS;
            break;
        default:
            fxFatal("fxBinaryReader: unknown short ordering %x", mark);
    }
    switch (mark) {
        case 0x33445566:
            longsConv = fxBinaryReader_longs;
            break;
        case 0x44336655:
            longsConv = fxBinaryReader_BS;
            break;
        case 0x55663344:
            longsConv = fxBinaryReader_longsSS;
            break;
        case 0x66554433:
            longsConv = fxBinaryReader_longsBSSS;
            break;
        default:
            fxFatal("fxBinaryReader: unknown long ordering %x", mark);
    }
    if (std::strcmp(floatFormat, "ieee") != 0)
        fxFatal("fxBinaryReader: unsupported floating point format %s", floatFormat);
    floatsConv = fxBinaryReader_floats;
    doublesConv = fxBinaryReader_doubles;
}

void fxBinaryReader::reset() {
    table.removeAll();
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
    tag = static_cast<unsigned char>(head) & tagMask;
    if (!readLength(static_cast<unsigned char>(head) >> lengthShift) || !readArguments()) {
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
    static const unsigned int lengthBytes[] = {0, 1, 2, 4};
    unsigned char bytes[4] = {};
    const unsigned int n = lengthBytes[lengthClass];
    if (n != 0 && !stream->getBytes(reinterpret_cast<char*>(bytes), n))
        return 0;
    unreadPayload = wordAt(bytes);
    return 1;
}

// Reads `n` words, at most three. Framing is little-endian on every host.
unsigned char fxBinaryReader::readWords(unsigned int* words, unsigned int n) {
    unsigned char bytes[3 * 4];
    if (!stream->getBytes(reinterpret_cast<char*>(bytes), n * 4))
        return 0;
    for (unsigned int i = 0; i < n; ++i)
        words[i] = wordAt(bytes + i * 4);
    return 1;
}

unsigned char fxBinaryReader::readArguments() {
    unsigned int words[3];
    switch (tag) {
        case fxOT_Data:
        case fxOT_Null:
            return 1;
        case fxOT_Type:
            return readType();
        case fxOT_Block:
        case fxOT_Bytes:
        case fxOT_Shorts:
        case fxOT_Longs:
        case fxOT_Floats:
        case fxOT_Doubles:
            if (!readWords(words, 2))
                return 0;
            arg1 = words[0];
            arg4 = words[1];
            return 1;
        case fxOT_OldBlock:
        case fxOT_ObjectPointer:
        case fxOT_OldObject:
        case fxOT_Embedded:
        case fxOT_OldEmbedded:
            if (!readWords(words, 2))
                return 0;
            arg1 = words[0];
            return 1;
        case fxOT_Object:
            if (!readWords(words, 3))
                return 0;
            arg1 = words[0];
            arg2 = words[1];
            arg3 = words[2];
            return 1;
        default:
            fxFatal("Whoops!");
    }
}

unsigned char fxBinaryReader::readType() {
    fxStackBuffer name;
    if (!readWords(&arg2, 1) || !readName(name))
        return 0;
    fxTypeObj* type = fxTypeObj::findType(name.getBase());
    if (!type)
        fxFatal("unknown type %s", name.getBase());
    enter(arg2, type).kind = Record::type;
    return 1;
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

// Bytes of `n` elements; tooLong, which no block can have, when they exceed a
// word.
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

// Pointers to blocks. How long a block is the stream says; the length given
// here is what the caller will rely on.

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
