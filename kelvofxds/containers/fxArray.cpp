#include "kelvofxds/containers/fxArray.h"

#include <malloc.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "kelvofxds/containers/fxArrayCheckedInternal.h"
#include "kelvofxds/containers/fxArrayOwnInternal.h"
#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"

namespace {
const char* const owner = "fxArray";
const unsigned int expandElements = 4;
const unsigned int littleMore = 16;  // bytes
const unsigned int swapBufferSize = 1024;
// From here on a block is likely to be fresh memory of the system's, which calloc
// does not touch.
const unsigned int largeBlock = 65536;
const unsigned int notFound = 0xFFFFFFFF;

// Block copies of the usual element sizes without a call.
void moveBytes(void* to, const void* from, unsigned int bytes) {
    if (bytes == 4)
        std::memmove(to, from, 4);
    else if (bytes == 8)
        std::memmove(to, from, 8);
    else if (bytes != 0)
        std::memmove(to, from, bytes);
}

// Size of the block as malloc knows it, which may be more than was asked for;
// `asked` where malloc cannot tell.
unsigned int sizeOf(void* block, unsigned int asked) {
    return fxUsableSizeIsKnown ? static_cast<unsigned int>(malloc_usable_size(block)) : asked;
}

// Clears the block from `from` on. What malloc gives beyond the `bytes` asked for
// is cleared too: a later change of the capacity may bring it into use, when
// nobody can tell any more where it began. Mostly there are few bytes, for which
// a call would cost more than the clearing.
inline void clearBlock(void* block, unsigned int from, unsigned int bytes) {
    const unsigned int few = 32;
    const std::uint32_t zero = 0;
    const unsigned int end = sizeOf(block, bytes);
    if (from >= end)
        return;
    // The compiler knows what was asked for, and is not to take it for the end.
    asm("" : "+r"(block));
    char* at = static_cast<char*>(block) + from;
    unsigned int left = end - from;
    if (left > few) {
        std::memset(at, 0, left);
        return;
    }
    for (; left >= sizeof zero; at += sizeof zero, left -= sizeof zero)
        std::memcpy(at, &zero, sizeof zero);
    for (; left != 0; --left)
        *at++ = 0;
}

// fxReallocate for a block that has `had` bytes or little more. Where `bytes`
// are many more, its question whether they fit is saved.
void* reallocated(void* block, unsigned int had, unsigned int bytes) {
    if (bytes < had || bytes - had < littleMore)
        return fxReallocate(block, bytes);
    void* moved = std::realloc(block, bytes);
    if (!moved)
        fxOutOfMemory();
    return moved;
}

// Ends the process for a range whose end is no size.
void checkRange(unsigned int offset, unsigned int bytes) { fxSum(owner, offset, bytes); }

// A block whose `bytes` bytes are about to be filled.
void* newBlock(unsigned int bytes) {
    void* block = fxAllocate(bytes);
    clearBlock(block, bytes, bytes);
    return block;
}
}  // namespace

fxArray::fxArray(unsigned short size, unsigned int n)
    : data(nullptr), maxLen(0), len(0), elemSize(size) {
    len = maxLen = bytesOf(n);
    if (len != 0)
        data = newBlock(len);
}

fxArray::fxArray(const fxArray& other)
    : fxXDRObj(other), data(nullptr), maxLen(other.len), len(other.len), elemSize(other.elemSize) {
    if (len == 0)
        return;
    data = newBlock(len);
    std::memmove(data, other.data, len);
}

fxArray::fxArray(unsigned int size, unsigned int bytes, void* block)
    : data(block), maxLen(bytes), len(bytes), elemSize(static_cast<unsigned short>(size)) {
    FX_CHECK_NOT_NULL_OF("fxArray", block, bytes);
}

fxArray::~fxArray() {
    FX_CHECK_LIVES("fxArray", count);
    std::free(data);
    FX_WHEN_CHECKED(fxMisuse::leave(data, static_cast<void*>(nullptr)));
}

void fxArray::copyFrom(const fxArray& other) {
    data = other.raw_copy();
    maxLen = other.maxLen;
    len = other.len;
    if (maxLen <= len)
        return;
    data = data ? fxReallocate(data, maxLen) : fxAllocate(maxLen);
    clearBlock(data, len, maxLen);
}

// Size of `n` elements.
unsigned int fxArray::bytesOf(unsigned int n) const { return fxProduct(owner, n, elemSize); }

// The virtual operations.

// Brings the block to maxLen bytes, of which those from `from` on are zero.
[[gnu::always_inline]] inline void fxArray::bringBlock(unsigned int from) {
    if (maxLen == 0) {
        std::free(data);
        data = nullptr;
        return;
    }
    if (data) {
        data = reallocated(data, from, maxLen);
    } else if (from < maxLen && maxLen - from >= largeBlock) {
        data = std::calloc(maxLen, 1);
        return;
    } else {
        data = std::malloc(maxLen);
    }
    if (data)
        clearBlock(data, from < maxLen ? from : maxLen, maxLen);
}

// It is not told of any change: a subclass's getmem may have brought the block
// before it calls this one, or may fill bytes afterwards. What is new here lies
// behind the block that there is; where malloc cannot tell its size, it is taken
// to have the new one.
void fxArray::getmem() { bringBlock(data ? sizeOf(data, maxLen) : len); }

void fxArray::expand() { setCapacity(fxSum(owner, maxLen, expandElements * elemSize)); }

void fxArray::createElements(void*, unsigned int) {}

void fxArray::destroyElements(void*, unsigned int) {}

void fxArray::copyElements(const void* from, void* to, unsigned int bytes) const {
    moveBytes(to, from, bytes);
}

int fxArray::compareElements(const void* a, const void* b) const {
    if (elemSize == sizeof(std::uint32_t)) {
        std::uint32_t x, y;
        std::memcpy(&x, a, sizeof x);
        std::memcpy(&y, b, sizeof y);
        if (x == y)
            return 0;
    }
    const int order = elemSize != 0 ? std::memcmp(a, b, elemSize) : 0;
    return (order > 0) - (order < 0);
}

// Capacity.

// Bytes beyond the length can reach a stream, so new ones are cleared, those from
// `from` on. When a subclass's getmem throws, nobody knows whether it has brought
// the block; the smaller one of both capacities fits in any case. Elements behind
// that have ended before.
[[gnu::always_inline]] inline void fxArray::setCapacity(unsigned int bytes, unsigned int from) {
    const unsigned int fits = bytes < maxLen ? bytes : maxLen;
    maxLen = bytes;
    if (fxGetsOwnMemory(*this)) {
        bringBlock(from);
    } else {
        try {
            getmem();
        } catch (...) {
            maxLen = fits;
            if (len > fits)
                len = fits;
            throw;
        }
    }
    if (!data && maxLen != 0)
        fxOutOfMemory();
}

void fxArray::setCapacity(unsigned int bytes) { setCapacity(bytes, maxLen); }

void fxArray::setMaxLength(unsigned int n) {
    FX_CHECK_LIVES("fxArray", count);
    const unsigned int wanted = bytesOf(n);
    const unsigned int bytes = wanted > len ? wanted : len;
    if (bytes != maxLen)
        setCapacity(bytes);
}

void fxArray::resize(unsigned int n) {
    FX_CHECK_LIVES("fxArray", count);
    const unsigned int bytes = bytesOf(n);
    if (bytes > len) {
        setCapacity(bytes, bytes);
        createElements(byteAt(len), bytes - len);
    } else if (bytes < len) {
        endFrom(bytes);
        setCapacity(bytes);
    } else {
        maxLen = bytes;
    }
    len = bytes;
}

// Ends the elements from `bytes` on, for an array that will have that capacity.
void fxArray::endFrom(unsigned int bytes) {
    const unsigned int oldMax = maxLen;
    maxLen = bytes;
    try {
        destroyElements(byteAt(bytes), len - bytes);
    } catch (...) {
        maxLen = oldMax;
        throw;
    }
}

// Changing elements.

void fxArray::destroy() {
    FX_CHECK_LIVES("fxArray", count);
    if (len != 0 && data)
        destroyElements(data, len);
}

// Inline in the header; this puts a copy into the library, for hosts that do
// not inline it.
[[gnu::used]] static unsigned int (fxArray::*const exportedLength)() const = &fxArray::length;

void fxArray::append(const void* elem) {
    FX_CHECK_LIVES("fxArray", count);
    FX_CHECK_NOT_NULL(fxClassOf(*this), elem);
    if (len == maxLen) {
        const bool own = fxPointsInto(elem, data, len);
        const std::ptrdiff_t offset = own ? static_cast<const char*>(elem) - byteAt(0) : 0;
        expand();
        if (own)
            elem = byteAt(0) + offset;
    }
    copyElements(elem, byteAt(len), elemSize);
    len += elemSize;
}

void fxArray::append(const fxArray& other) {
    FX_CHECK_LIVES("fxArray", count);
    const unsigned int added = other.len;
    if (added == 0)
        return;
    const unsigned int needed = fxSum(owner, len, added);
    if (needed > maxLen)
        setCapacity(needed);
    copyElements(other.data, byteAt(len), added);
    len = needed;
}

// Puts copies of the elements at `from` in at `offset`, for which there is room.
// The gap is closed again if an exception prevents that they are made. Inserting
// is frequent, and a call of its own would cost a tenth of it.
[[gnu::always_inline]] inline void fxArray::insertCopies(const void* from, unsigned int offset,
                                                         unsigned int bytes) {
    const unsigned int behind = offset < len ? len - offset : 0;
    if (behind != 0)
        std::memmove(byteAt(offset + bytes), byteAt(offset), behind);
    try {
        copyElements(from, byteAt(offset), bytes);
    } catch (...) {
        if (behind != 0)
            std::memmove(byteAt(offset), byteAt(offset + bytes), behind);
        throw;
    }
    len += bytes;
}

void fxArray::insert(const void* elem, unsigned int index) {
    FX_CHECK_LIVES("fxArray", count);
    FX_CHECK_NOT_NULL(fxClassOf(*this), elem);
    FX_CHECK_PLACE(index);
    const unsigned int p = bytesOf(index);
    if (maxLen <= len) {
        const bool own = fxPointsInto(elem, data, len);
        const std::ptrdiff_t offset = own ? static_cast<const char*>(elem) - byteAt(0) : 0;
        setCapacity(fxSum(owner, len, elemSize));
        if (own)
            elem = byteAt(0) + offset;
    }
    insertCopies(elem, p, elemSize);
}

void fxArray::insert(const fxArray& other, unsigned int index) {
    const unsigned int added = other.len;
    if (other.length() == 0)
        return;
    FX_CHECK_LIVES("fxArray", count);
    FX_CHECK_PLACE(index);
    const unsigned int p = bytesOf(index);
    const unsigned int needed = fxSum(owner, len, added);
    if (needed > maxLen)
        setCapacity(needed);
    insertCopies(other.data, p, added);
}

// Moves what follows the `bytes` bytes at `offset` down over them. The sum of
// both is a size.
void fxArray::closeGap(unsigned int offset, unsigned int bytes) {
    const unsigned int behind = offset + bytes;
    if (behind < len)
        std::memmove(byteAt(offset), byteAt(behind), len - behind);
    len -= bytes;
}

void fxArray::remove(unsigned int start, unsigned int n) {
    if (n == 0)
        return;
    FX_CHECK_LIVES("fxArray", count);
    FX_CHECK_RANGE(start, n);
    const unsigned int offset = bytesOf(start);
    const unsigned int bytes = bytesOf(n);
    checkRange(offset, bytes);
    destroyElements(byteAt(offset), bytes);
    closeGap(offset, bytes);
}

namespace {
template <class Word>
void swapWords(void* a, void* b) {
    Word x, y;
    std::memcpy(&x, a, sizeof x);
    std::memcpy(&y, b, sizeof y);
    std::memcpy(a, &y, sizeof y);
    std::memcpy(b, &x, sizeof x);
}
}  // namespace

void fxArray::swap(unsigned int i, unsigned int j) {
    FX_CHECK_BELOW(fxClassOf(*this), i, "length", fxCheckedLength(*this));
    FX_CHECK_BELOW(fxClassOf(*this), j, "length", fxCheckedLength(*this));
    if (elemSize == sizeof(std::uint32_t)) {
        swapWords<std::uint32_t>(at(i), at(j));
        return;
    }
    if (elemSize == sizeof(std::uint64_t)) {
        swapWords<std::uint64_t>(at(i), at(j));
        return;
    }
    char buffer[swapBufferSize];
    void* temp = elemSize > swapBufferSize ? fxAllocate(elemSize) : buffer;
    std::memmove(temp, at(i), elemSize);
    std::memmove(at(i), at(j), elemSize);
    std::memmove(at(j), temp, elemSize);
    // NOLINTNEXTLINE(clang-analyzer-unix.Malloc): the leak is deliberate.
}

namespace {
// Position of the first of the elements [start, n) at `block` that has the
// bytes of `*elem`; n if none has. The elements are of Word's size.
template <class Word>
unsigned int findWord(const char* block, const void* elem, unsigned int start, unsigned int n) {
    Word wanted;
    std::memcpy(&wanted, elem, sizeof wanted);
#pragma GCC unroll 4
    for (unsigned int i = start; i < n; ++i) {
        Word word;
        std::memcpy(&word, block + i * sizeof word, sizeof word);
        if (word == wanted)
            return i;
    }
    return n;
}
}  // namespace

unsigned int fxArray::find(const void* elem, unsigned int start) const {
    const unsigned int n = length();
    unsigned int i = start;
    if (i >= n)
        return notFound;
    FX_CHECK_LIVES("fxArray", count);
    FX_CHECK_NOT_NULL(fxClassOf(*this), elem);
    if (!fxComparesBytes(*this)) {
        while (i < n && compareElements(elem, at(i)) != 0)
            ++i;
    } else if (elemSize == 1) {
        const void* found = std::memchr(at(i), *static_cast<const unsigned char*>(elem), n - i);
        i = found ? static_cast<unsigned int>(static_cast<const char*>(found) - byteAt(0)) : n;
    } else if (elemSize == sizeof(std::uint16_t)) {
        i = findWord<std::uint16_t>(byteAt(0), elem, i, n);
    } else if (elemSize == sizeof(std::uint32_t)) {
        i = findWord<std::uint32_t>(byteAt(0), elem, i, n);
    } else if (elemSize == sizeof(std::uint64_t)) {
        i = findWord<std::uint64_t>(byteAt(0), elem, i, n);
    } else {
        while (i < n && std::memcmp(elem, at(i), elemSize) != 0)
            ++i;
    }
    return i < n ? i : notFound;
}

// Blocks of elements for the caller.

void* fxArray::copied(const void* from, unsigned int bytes) const {
    if (bytes == 0)
        return nullptr;
    std::unique_ptr<void, decltype(&std::free)> block(newBlock(bytes), &std::free);
    copyElements(from, block.get(), bytes);
    return block.release();
}

void* fxArray::raw_copy() const { return copied(data, len); }

void* fxArray::raw_extract(unsigned int start, unsigned int n) const {
    FX_CHECK_RANGE(start, n);
    const unsigned int offset = bytesOf(start);
    const unsigned int bytes = bytesOf(n);
    checkRange(offset, bytes);
    return copied(byteAt(offset), bytes);
}

void* fxArray::raw_head(unsigned int n) const {
    FX_CHECK_RANGE(0, n);
    return raw_extract(0, n);
}

void* fxArray::raw_tail(unsigned int n) const {
    FX_CHECK_RANGE(0, n);
    const unsigned int bytes = bytesOf(n);
    return copied(byteAt(len - bytes), bytes);
}

void* fxArray::raw_cut(unsigned int start, unsigned int n) {
    FX_CHECK_RANGE(start, n);
    const unsigned int offset = bytesOf(start);
    const unsigned int bytes = bytesOf(n);
    if (bytes == 0)
        return nullptr;
    checkRange(offset, bytes);
    void* block = newBlock(bytes);
    std::memcpy(block, byteAt(offset), bytes);
    closeGap(offset, bytes);
    return block;
}
