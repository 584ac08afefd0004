#include "kelvofxds/transcribe/fxGraphReader.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/str/fxStackBuffer.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxContentsInternal.h"
#include "kelvofxds/transcribe/fxGraphRootInternal.h"
#include "kelvofxds/transcribe/fxMemberInternal.h"

using fxBinaryFormat::Order;

namespace {
const char readerName[] = "fxGraphReader";

// What is allocated on the mere word of a stream.
const unsigned int firstStep = 64 * 1024;

const unsigned int longestName = 64 * 1024;  // of a type, in bytes
const unsigned int roomForCopy = 64;         // beside a name's bytes

template <class Rearrange>
void forUnits(char* at, unsigned int n, unsigned int unit, Rearrange rearrange) {
    for (; n >= unit; n -= unit, at += unit)
        rearrange(at);
}

void convertShorts(Order order, char* at, unsigned int n) {
    if (order == Order::bytesSwapped)
        forUnits(at, n, 2, [](char* s) { std::swap(s[0], s[1]); });
}

void convertLongs(Order order, char* at, unsigned int n) {
    switch (order) {
        case Order::bytesSwapped:
            convertShorts(order, at, n);
            break;
        case Order::halvesSwapped:
            forUnits(at, n, 4, [](char* l) {
                std::swap(l[0], l[2]);
                std::swap(l[1], l[3]);
            });
            break;
        case Order::reversed:
            forUnits(at, n, 4, [](char* l) {
                std::swap(l[0], l[3]);
                std::swap(l[1], l[2]);
            });
            break;
        case Order::same:
        case Order::unknown:
            break;
    }
}

// A double lies as a writer's two longs would, the first of which is the high
// one where the bytes of longs lie with the highest in front.
void convertDoubles(Order order, char* at, unsigned int n) {
    if (order == Order::same)
        return;
    convertLongs(order, at, n);
    if (order == Order::reversed)
        forUnits(at, n, 8, [](char* d) { std::swap_ranges(d, d + 4, d + 4); });
}
}  // namespace

// Failure.

bool fxGraphReader::Root::failWith(const char* format, std::va_list arguments) {
    if (error[0] != '\0')
        return false;
    const int used =
        std::snprintf(error, sizeof error, "offset %llu, record %u: ",
                      static_cast<unsigned long long>(headerBytes + recordAt), records);
    std::vsnprintf(error + used, sizeof error - static_cast<unsigned int>(used), format, arguments);
    return false;
}

bool fxGraphReader::Root::fail(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    failWith(format, arguments);
    va_end(arguments);
    return false;
}

// Whether contents can be read now.
inline bool fxGraphReader::Root::isOpen() { return isReading && error[0] == '\0'; }

// Records.

namespace {
const unsigned int tagCount = fxBinaryFormat::graphTagCount;
static_assert(tagCount == 16, "a table by tag");

struct WordCounts {
    unsigned char of[tagCount];
};

constexpr WordCounts makeWordCounts() {
    WordCounts counts = {};
    for (unsigned int tag = 0; tag < tagCount; ++tag)
        counts.of[tag] = static_cast<unsigned char>(fxBinaryFormat::graphWordsOf(tag));
    return counts;
}

constexpr WordCounts wordCounts = makeWordCounts();
}  // namespace

// Reads up to the next record that is not a type's.
bool fxGraphReader::Root::nextRecord() {
    do {
        if ((unread != 0 && !endPayload()) || !readRecord())
            return false;
    } while (tag == fxOT_Type);
    return true;
}

// Everything of a record is read when the next one begins.
bool fxGraphReader::Root::endPayload() {
    if (unread == 0)
        return true;
    const char* const name = body != 0 ? find(body)->record->name : nullptr;
    if (!name)
        return fail("%u bytes follow that belong to nothing", unread);
    return fail(isStandard ? "%u bytes are left that \"%.80s\" does not read (the spare capacity "
                             "of an array; setMaxLength(0) before writing leaves it out)"
                           : "%u bytes are left that \"%.80s\" does not read",
                unread, name);
}

bool fxGraphReader::Root::readRecord() {
    recordAt = source.count();
    ++records;
    const char* at = source.peekHead(fxBinaryFormat::mostHeadBytes);
    if (!at)
        return readSlowly();
    const unsigned char head = static_cast<unsigned char>(*at++);
    const unsigned int n = fxBinaryFormat::lengthBytes[fxBinaryFormat::lengthClassOf(head)];
    tag = fxBinaryFormat::tagOf(head);
    unread = n == 0   ? 0
             : n == 1 ? static_cast<unsigned char>(*at)
                      : fxBinaryFormat::getLittle(at, n);
    at += n;
    // Words that are not the record's are not looked at.
    words[0] = fxBinaryFormat::getWord(at);
    words[1] = fxBinaryFormat::getWord(at + fxBinaryFormat::wordBytes);
    words[2] = fxBinaryFormat::getWord(at + 2 * fxBinaryFormat::wordBytes);
    if (tag < tagCount)
        at += wordCounts.of[tag] * fxBinaryFormat::wordBytes;
    if (tag == fxBinaryFormat::rootEndTag)
        rootSum = source.sumBeforeHead();
    source.skipTo(at);
    return takeHead();
}

bool fxGraphReader::Root::readSlowly() {
    unsigned char head;
    return source.getHead(head) ? readHead(head) : failForEnd();
}

// Reads what follows a head byte.
bool fxGraphReader::Root::readHead(unsigned char head) {
    tag = fxBinaryFormat::tagOf(head);
    if (tag == fxBinaryFormat::rootEndTag)
        rootSum = source.sumBeforeHead();
    const unsigned int n = fxBinaryFormat::lengthBytes[fxBinaryFormat::lengthClassOf(head)];
    const unsigned int wordCount = tag < tagCount ? wordCounts.of[tag] : 0;
    char bytes[fxBinaryFormat::mostHeadBytes];
    if (!source.getMore(bytes, n + wordCount * fxBinaryFormat::wordBytes))
        return failForEnd();
    unread = fxBinaryFormat::getLittle(bytes, n);
    for (unsigned int i = 0; i < wordCount; ++i)
        words[i] = fxBinaryFormat::getWord(bytes + n + i * fxBinaryFormat::wordBytes);
    return takeHead();
}

// Looks at a record of which all is read but text and payload.
inline bool fxGraphReader::Root::takeHead() {
    if (tag >= (isStandard ? fxBinaryFormat::recordCount : tagCount))
        return fail("there are no records of kind %u", tag);
    if (!isStandard && unread > fxBinaryFormat::mostGraphPayload)
        return fail("its payload of %u bytes is too long", unread);
    return isWithinLimits() && (tag != fxOT_Type || readType(words[0]));
}

bool fxGraphReader::Root::readName(fxStackBuffer& name) {
    char c = 0;
    do {
        if (!source.get(&c, 1))
            return failForEnd();
        if (name.length() == longestName)
            return fail("the name of a type has more than %u bytes", longestName);
        if (!name.tryAddc(c))
            return failForMemory();
    } while (c != '\0');
    return canLookUp(name.length()) || failForMemory();
}

// A name is copied where it is looked up, and a refusal would end the process there.
// Volatile, or the compiler leaves both calls out.
bool fxGraphReader::Root::canLookUp(std::size_t nameLength) {
    void* volatile probe = std::malloc(nameLength + roomForCopy);
    const bool isThere = probe != nullptr;
    std::free(probe);
    return isThere;
}

// A type's record: the number has been read. Each type has a number of its own.
bool fxGraphReader::Root::readType(std::uint32_t number) {
    fxStackBuffer name;
    if (!readName(name))
        return false;
    fxTypeObj* record = fxTypeObj::findType(name.getBase());
    if (!record)
        return fail("type \"%.80s\" is not registered", name.getBase());
    Type type = {record, record->version};
    if (!isStandard) {
        char version[sizeof type.version];
        if (unread != sizeof version)
            return fail("the version of type \"%.80s\" is missing", name.getBase());
        if (!readPayload(version, sizeof version))
            return false;
        convertLongs(longs, version, sizeof version);
        std::memcpy(&type.version, version, sizeof version);
    }
    return defineType(number, type);
}

// Data.

// Goes on to the record in which data continues.
bool fxGraphReader::Root::nextData() {
    if (!nextRecord())
        return false;
    return tag == fxOT_Data ||
           fail("a record \"%s\" comes where data should", tag < fxBinaryFormat::recordCount
                                                               ? fxBinaryFormat::records[tag].name
                                                               : "end of the root");
}

// Reads data that goes on in other records.
bool fxGraphReader::Root::readData(char* to, unsigned int n) {
    while (n != 0) {
        if (unread == 0 && !nextData())
            return false;
        const unsigned int step = std::min(n, unread);
        unread -= step;
        if (!source.get(to, step))
            return failForEnd();
        to += step;
        n -= step;
    }
    return true;
}

void fxGraphReader::Root::convertBlock(unsigned char blockTag, char* block,
                                       unsigned int size) const {
    if (blockTag == fxOT_Shorts)
        convertShorts(shorts, block, size);
    else if (blockTag == fxOT_Longs || blockTag == fxOT_Floats)
        convertLongs(longs, block, size);
    else if (blockTag == fxOT_Doubles)
        convertDoubles(longs, block, size);
}

// Memory with `n` bytes of data: it grows as they arrive. Null on failure.
char* fxGraphReader::Root::readBuffer(unsigned int n, bool isForString) {
    if (source.lacks(n)) {
        failForEnd();
        return nullptr;
    }
    unsigned int size = std::max(1U, std::min(n, firstStep));
    char* block = fxAllocateBlock(isForString, size);
    unsigned int have = 0;
    while (block) {
        const unsigned int step = std::min(n, size) - have;
        if (!readPayload(block + have, step)) {
            fxFreeBlock(isForString, block);
            return nullptr;
        }
        have += step;
        if (have == n)
            return block;
        size = n / 2 < size ? n : size * 2;
        char* const grown = fxAllocateBlock(isForString, size);
        if (grown)
            std::memcpy(grown, block, have);
        fxFreeBlock(isForString, block);
        block = grown;
    }
    failForMemory();
    return nullptr;
}

// The reader.

fxGraphReader::fxGraphReader(fxStream* s, short shortMark, long longMark, const char* floatFormat)
    : fxGraphReader(fxNew<Root>(), s, shortMark, longMark, floatFormat) {}

fxGraphReader::fxGraphReader(Root* owned, fxStream* s, short shortMark, long longMark,
                             const char* floatFormat)
    : root(owned) {
    reading = 1;
    fxContents::setGraphs(*this);
    holdStream(s);
    Root& r = *root;
    r.reader = this;
    r.shorts =
        fxBinaryFormat::orderOf(static_cast<unsigned short>(shortMark), fxBinaryFormat::shortMarks);
    r.longs =
        fxBinaryFormat::orderOf(static_cast<std::uint32_t>(longMark), fxBinaryFormat::longMarks);
    r.headerBytes = sizeof fxBinaryFormat::graphWriterName + std::strlen(floatFormat) + 1 +
                    sizeof shortMark + sizeof longMark;
    if (r.shorts == Order::unknown || r.longs == Order::unknown)
        std::snprintf(r.error, sizeof r.error, "the header has an unknown order of bytes");
    else if (std::strcmp(floatFormat, fxBinaryFormat::floatFormat) != 0)
        std::snprintf(r.error, sizeof r.error,
                      "the header has an unknown format of floating-point numbers, \"%.80s\"",
                      floatFormat);
    r.isBroken = r.error[0] != '\0';
}

fxGraphReader::~fxGraphReader() { delete root; }

// Null when there is no memory.
fxGraphReader* fxGraphReader::make(fxStream* stream, short shortMark, long longMark,
                                   const char* floatFormat) {
    auto* root = fxTryNew<Root>();
    auto* reader = root ? new (std::nothrow)
                              fxGraphReader(root, stream, shortMark, longMark, floatFormat)
                        : nullptr;
    if (!reader)
        delete root;
    return reader;
}

fxTranscriber* fxGraphReader::forStandardStreams(fxStream* stream, short shortMark, long longMark,
                                                 const char* floatFormat) {
    fxGraphReader* reader = make(stream, shortMark, longMark, floatFormat);
    if (reader) {
        reader->root->isStandard = true;
        reader->root->headerBytes +=
            sizeof fxBinaryFormat::writerName - sizeof fxBinaryFormat::graphWriterName;
    }
    return reader;
}

fxTranscriber* makeGraphReader(fxStream* stream, short shortMark, long longMark,
                               const char* floatFormat) {
    return fxGraphReader::make(stream, shortMark, longMark, floatFormat);
}

const char* fxGraphReader::className() const { return readerName; }

const char* fxGraphReader::lastError() const { return root->error; }

unsigned char fxGraphReader::atEnd() const { return root->isAtEnd; }

void fxGraphReader::setLimits(unsigned int objects, unsigned int bytes) {
    root->mostObjects = objects;
    root->mostBytes = bytes;
}

void fxGraphReader::expectOneRoot(bool isOnly) { root->isOnly = isOnly; }

void fxGraphReader::reset() {
    if (!root->isReading)
        root->forget();
}

unsigned char fxGraphReader::writeObject(void*, fxXDRObj*) { return 0; }

void* fxGraphReader::readObject(fxTypeObj& type) { return root->read(type); }

fxGraphReader* fxGraphReader::of(fxTranscriber& t) {
    return fxContents::areGraphs(t) && t.isReading() ? static_cast<fxGraphReader*>(&t) : nullptr;
}

void fxGraphReader::checkNext(bool (*isRight)(fxXDRObj* object)) { root->nextIsRight = isRight; }

unsigned char fxGraphReader::fail(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    root->failWith(format, arguments);
    va_end(arguments);
    return 0;
}

unsigned char fxGraphReader::takeCharge(void* block) {
    return root->isReading && root->leftovers.push({block, nullptr});
}

// Elements in place.

namespace {
template <class Root>
bool readElements(Root& root, void* elements, unsigned int bytes) {
    return root.isOpen() && bytes != fxTooLong &&
           root.readPayload(static_cast<char*>(elements), bytes);
}
}  // namespace

unsigned char fxGraphReader::xdr(char* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxGraphReader", elements, n);
    return readElements(*root, elements, n);
}

unsigned char fxGraphReader::xdr(unsigned char* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxGraphReader", elements, n);
    return readElements(*root, elements, n);
}

unsigned char fxGraphReader::xdr(short* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxGraphReader", elements, n);
    if (!readElements(*root, elements, fxBytesOf<short>(n)))
        return 0;
    convertShorts(root->shorts, reinterpret_cast<char*>(elements), fxBytesOf<short>(n));
    return 1;
}

unsigned char fxGraphReader::xdr(unsigned short* elements, unsigned int n) {
    return xdr(reinterpret_cast<short*>(elements), n);
}

unsigned char fxGraphReader::xdr(long* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxGraphReader", elements, n);
    if (!readElements(*root, elements, fxBytesOf<long>(n)))
        return 0;
    if (root->longs != Order::same)
        convertLongs(root->longs, reinterpret_cast<char*>(elements), fxBytesOf<long>(n));
    return 1;
}

unsigned char fxGraphReader::xdr(unsigned long* elements, unsigned int n) {
    return xdr(reinterpret_cast<long*>(elements), n);
}

unsigned char fxGraphReader::xdr(float* elements, unsigned int n) {
    return xdr(reinterpret_cast<long*>(elements), n);
}

unsigned char fxGraphReader::xdr(double* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxGraphReader", elements, n);
    if (!readElements(*root, elements, fxBytesOf<double>(n)))
        return 0;
    convertDoubles(root->longs, reinterpret_cast<char*>(elements), fxBytesOf<double>(n));
    return 1;
}

unsigned char fxGraphReader::xdr(fxStr* strings, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxGraphReader", strings, n);
    for (unsigned int i = 0; i < n; ++i) {
        if (!strings[i].xdr(*this))
            return 0;
    }
    return 1;
}

// Pointers to blocks. The text of a string is in place, but not in standard
// streams.

unsigned char fxGraphReader::xdr(char** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxGraphReader", block);
    Root& r = *root;
    if (!r.isOpen())
        return 0;
    if (!isStringBuffer())
        return r.point(block, fxOT_Bytes, n, false, false);
    if (r.isStandard)
        return r.point(block, fxOT_Bytes, n, true, true);
    char* const text = r.readBuffer(n, true);
    if (!text)
        return 0;
    if (n == 0 || text[n - 1] != '\0') {
        std::free(text);
        return r.fail("a string of %u bytes has no end", n);
    }
    *block = text;
    return 1;
}

unsigned char fxGraphReader::xdr(unsigned char** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxGraphReader", block);
    return root->isOpen() && root->point(block, fxOT_Bytes, n, false, false);
}

unsigned char fxGraphReader::xdr(short** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxGraphReader", block);
    return root->isOpen() && root->point(block, fxOT_Shorts, fxBytesOf<short>(n), false, false);
}

unsigned char fxGraphReader::xdr(unsigned short** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxGraphReader", block);
    return root->isOpen() && root->point(block, fxOT_Shorts, fxBytesOf<short>(n), false, false);
}

unsigned char fxGraphReader::xdr(long** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxGraphReader", block);
    return root->isOpen() && root->point(block, fxOT_Longs, fxBytesOf<long>(n), false, false);
}

unsigned char fxGraphReader::xdr(unsigned long** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxGraphReader", block);
    return root->isOpen() && root->point(block, fxOT_Longs, fxBytesOf<long>(n), false, false);
}

unsigned char fxGraphReader::xdr(float** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxGraphReader", block);
    return root->isOpen() && root->point(block, fxOT_Floats, fxBytesOf<float>(n), false, false);
}

unsigned char fxGraphReader::xdr(double** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxGraphReader", block);
    return root->isOpen() && root->point(block, fxOT_Doubles, fxBytesOf<double>(n), false, false);
}

unsigned char fxGraphReader::xdr(char** text) {
    FX_CHECK_NOT_NULL("fxGraphReader", text);
    return root->isOpen() && root->point(text, fxOT_Bytes, 0, true, false);
}

unsigned char fxGraphReader::xdr(unsigned char** text) {
    FX_CHECK_NOT_NULL("fxGraphReader", text);
    return root->isOpen() && root->point(text, fxOT_Bytes, 0, true, false);
}

// Objects.

unsigned char fxGraphReader::xdr(void* field, fxXDRObj*, fxTypeObj& type, fxXDRObj*, void*) {
    FX_CHECK_NOT_NULL("fxGraphReader", field);
    return root->isOpen() && root->pointToObject(field, type);
}

unsigned char fxGraphReader::xdr(fxTypeObj& type, void* previous, void* address) {
    FX_CHECK_THAT("fxGraphReader", address || !previous, "address is null");
    return previous == address || (root->isOpen() && root->embed(type, address));
}
