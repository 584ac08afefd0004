#include "kelvofxds/transcribe/fxMemoryStream.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"

namespace {
const unsigned int mostBytes = 0x7FFFFFFF;
const unsigned int firstRoom = 256;
}  // namespace

fxMemoryStream::fxMemoryStream()
    : bytes(nullptr), block(nullptr), used(0), room(0), place(0), isOwn(true) {}

fxMemoryStream::fxMemoryStream(const void* others, unsigned int length)
    : bytes(static_cast<const char*>(others)),
      block(nullptr),
      used(length),
      room(0),
      place(0),
      isOwn(false) {
    FX_CHECK_NOT_NULL_OF("fxMemoryStream", others, length);
}

fxMemoryStream::~fxMemoryStream() { std::free(block); }

void fxMemoryStream::clear() {
    used = 0;
    place = 0;
}

unsigned char fxMemoryStream::hasError() { return 0; }

unsigned char fxMemoryStream::atEOF() { return place == used; }

unsigned char fxMemoryStream::isReading() { return 1; }

unsigned char fxMemoryStream::isWriting() { return isOwn; }

fxStream::fxStreamType fxMemoryStream::getType() { return isOwn ? readWriteStream : readStream; }

// Makes room for `n` more bytes.
bool fxMemoryStream::grow(unsigned int n) {
    if (!isOwn || n > mostBytes - used)
        return false;
    const unsigned int wanted = used + n;
    const unsigned int more = room <= mostBytes - room / 2 ? room + room / 2 : mostBytes;
    unsigned int next = std::max(std::max(wanted, more), firstRoom);
    char* grown = static_cast<char*>(std::realloc(block, next));
    if (!grown && next != wanted) {
        next = wanted;  // there may still be memory for what is asked for
        grown = static_cast<char*>(std::realloc(block, next));
    }
    if (!grown)
        return false;
    bytes = block = grown;
    room = next;
    return true;
}

template <class Item>
unsigned char fxMemoryStream::get(Item* items, unsigned int n) {
    if (n > (used - place) / sizeof(Item))
        return 0;
    if (n != 0)
        std::memcpy(items, bytes + place, n * sizeof(Item));
    place += n * static_cast<unsigned int>(sizeof(Item));
    return 1;
}

template <class Item>
unsigned char fxMemoryStream::put(const Item* items, unsigned int n) {
    if (n > mostBytes / sizeof(Item))
        return 0;
    const unsigned int size = n * static_cast<unsigned int>(sizeof(Item));
    if (!isOwn)
        return 0;
    const void* from = items;
    if (size > room - used) {
        const bool isOfBlock = fxPointsInto(items, block, used);
        const std::ptrdiff_t offset = isOfBlock ? reinterpret_cast<const char*>(items) - block : 0;
        if (!grow(size))
            return 0;
        if (isOfBlock)
            from = block + offset;
    }
    if (size != 0)
        std::memcpy(block + used, from, size);
    used += size;
    return 1;
}

unsigned char fxMemoryStream::getBytes(char* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxMemoryStream", buffer, n);
    return get(buffer, n);
}

unsigned char fxMemoryStream::getShorts(short* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxMemoryStream", buffer, n);
    return get(buffer, n);
}

unsigned char fxMemoryStream::getInts(int* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxMemoryStream", buffer, n);
    return get(buffer, n);
}

unsigned char fxMemoryStream::getLongs(long* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxMemoryStream", buffer, n);
    return get(buffer, n);
}

unsigned char fxMemoryStream::getFloats(float* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxMemoryStream", buffer, n);
    return get(buffer, n);
}

unsigned char fxMemoryStream::getDoubles(double* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxMemoryStream", buffer, n);
    return get(buffer, n);
}

unsigned char fxMemoryStream::putBytes(const char* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxMemoryStream", buffer, n);
    return put(buffer, n);
}

unsigned char fxMemoryStream::putShorts(const short* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxMemoryStream", buffer, n);
    return put(buffer, n);
}

unsigned char fxMemoryStream::putInts(const int* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxMemoryStream", buffer, n);
    return put(buffer, n);
}

unsigned char fxMemoryStream::putLongs(const long* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxMemoryStream", buffer, n);
    return put(buffer, n);
}

unsigned char fxMemoryStream::putFloats(const float* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxMemoryStream", buffer, n);
    return put(buffer, n);
}

unsigned char fxMemoryStream::putDoubles(const double* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxMemoryStream", buffer, n);
    return put(buffer, n);
}
