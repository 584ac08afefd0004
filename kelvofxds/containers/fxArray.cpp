#include "kelvofxds/containers/fxArray.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "kelvofxds/containers/fxVirtualEntryInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"

namespace {
const char* const owner = "fxArray";
const unsigned int expandElements = 4;
const unsigned int swapBufferSize = 1024;
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

// An array whose class changes nothing.
class PlainArray : public fxArray {
public:
    PlainArray() : fxArray(1, 0) {}
    const char* className() const override { return ""; }
};

template <class Operation>
std::uintptr_t entryOfPlainArray(Operation fxArray::*operation) {
    const PlainArray array;
    return fxVirtualEntry<fxArray>(array, operation);
}

// What an array has in place whose class does not replace the operation. 0
// until this file is initialised: until then the operations are called as if
// every class replaced them, which comes to the same.
const std::uintptr_t ownGetmem = entryOfPlainArray(&fxArray::getmem);
const std::uintptr_t ownCompareElements = entryOfPlainArray(&fxArray::compareElements);
}  // namespace

fxArray::fxArray(unsigned short size, unsigned int n)
    : data(nullptr), maxLen(0), len(0), elemSize(size) {
    len = maxLen = bytesOf(n);
    if (len != 0)
        data = fxAllocate(len);
}

fxArray::fxArray(const fxArray& other)
    : fxXDRObj(other), data(nullptr), maxLen(other.len), len(other.len), elemSize(other.elemSize) {
    if (len == 0)
        return;
    data = fxAllocate(len);
    std::memmove(data, other.data, len);
}

fxArray::fxArray(unsigned int size, unsigned int bytes, void* block)
    : data(block), maxLen(bytes), len(bytes), elemSize(static_cast<unsigned short>(size)) {}

fxArray::~fxArray() { std::free(data); }

void fxArray::copyFrom(const fxArray& other) {
    data = other.raw_copy();
    maxLen = other.maxLen;
    len = other.len;
    if (maxLen <= len)
        return;
    data = data ? fxReallocate(data, maxLen) : fxAllocate(maxLen);
    clearSpare(len);
}

// Size of `n` elements.
unsigned int fxArray::bytesOf(unsigned int n) const { return fxProduct(owner, n, elemSize); }

// A change of an array's capacity, from the moment maxLen says the new one. The
// old one comes back if an exception prevents the change.
class fxArray::CapacityChange {
public:
    // The bytes from `from` on will be spare ones that were never used.
    CapacityChange(fxArray& changed, unsigned int bytes, unsigned int from)
        : array(changed), unused(from), maxLenOnFailure(changed.maxLen), outer(innermost) {
        array.maxLen = bytes;
        innermost = this;
    }
    CapacityChange(const CapacityChange&) = delete;
    CapacityChange& operator=(const CapacityChange&) = delete;
    ~CapacityChange() {
        innermost = outer;
        array.maxLen = maxLenOnFailure;
    }

    void bringMemory() {
        array.getmem();
        if (!array.data && array.maxLen != 0)
            fxOutOfMemory();
        maxLenOnFailure = array.maxLen;
    }

    // fxArray's own getmem has brought the block to maxLen bytes. It is told of
    // no change, and a subclass's may fill bytes before or after it calls it, so
    // none but the new ones are cleared, and those here.
    static void brought(fxArray& changed) {
        if (!innermost || &innermost->array != &changed || !changed.data)
            return;
        changed.clearSpare(innermost->unused);
        innermost->unused = innermost->maxLenOnFailure = changed.maxLen;
    }

private:
    fxArray& array;
    unsigned int unused;
    unsigned int maxLenOnFailure;
    CapacityChange* outer;  // during whose getmem this one happens

    static CapacityChange* innermost;
};

fxArray::CapacityChange* fxArray::CapacityChange::innermost = nullptr;

// The virtual operations.

// The work of getmem.
void fxArray::bringBlock() {
    if (maxLen == 0) {
        std::free(data);
        data = nullptr;
    } else if (data) {
        data = fxReallocate(data, maxLen);
    } else {
        data = std::malloc(maxLen);
    }
}

void fxArray::getmem() {
    bringBlock();
    CapacityChange::brought(*this);
}

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

// Bytes beyond the length can reach a stream, so new ones are cleared.
void fxArray::clearSpare(unsigned int from) {
    if (from < maxLen)
        std::memset(byteAt(from), 0, maxLen - from);
}

void fxArray::setCapacity(unsigned int bytes) {
    if (fxVirtualEntry(*this, &fxArray::getmem) != ownGetmem) {
        CapacityChange(*this, bytes, maxLen).bringMemory();
        return;
    }
    const unsigned int oldMax = maxLen;
    maxLen = bytes;
    bringBlock();
    if (!data && maxLen != 0)
        fxOutOfMemory();
    clearSpare(oldMax);
}

void fxArray::setMaxLength(unsigned int n) {
    const unsigned int wanted = bytesOf(n);
    const unsigned int bytes = wanted > len ? wanted : len;
    if (bytes != maxLen)
        setCapacity(bytes);
}

void fxArray::resize(unsigned int n) {
    const unsigned int bytes = bytesOf(n);
    if (bytes > len) {
        CapacityChange(*this, bytes, bytes).bringMemory();
        createElements(byteAt(len), bytes - len);
    } else if (bytes < len) {
        CapacityChange change(*this, bytes, bytes);
        destroyElements(byteAt(bytes), len - bytes);
        change.bringMemory();
    } else {
        maxLen = bytes;
    }
    len = bytes;
}

// Changing elements.

void fxArray::destroy() {
    if (len != 0 && data)
        destroyElements(data, len);
}

// Inline in the header; this puts a copy into the library, for hosts that do
// not inline it.
[[gnu::used]] static unsigned int (fxArray::*const exportedLength)() const = &fxArray::length;

void fxArray::append(const void* elem) {
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
    const unsigned int p = bytesOf(index);
    const unsigned int needed = fxSum(owner, len, added);
    if (needed > maxLen)
        setCapacity(needed);
    insertCopies(other.data, p, added);
}

// Moves what follows the `bytes` bytes at `offset` down over them.
void fxArray::closeGap(unsigned int offset, unsigned int bytes) {
    if (offset + bytes < len)
        std::memmove(byteAt(offset), byteAt(offset + bytes), len - offset - bytes);
    len -= bytes;
}

void fxArray::remove(unsigned int start, unsigned int n) {
    if (n == 0)
        return;
    const unsigned int offset = bytesOf(start);
    const unsigned int bytes = bytesOf(n);
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
// Whether `array` compares elements as fxArray itself does.
bool comparesBytes(const fxArray& array) {
    return fxVirtualEntry(array, &fxArray::compareElements) == ownCompareElements;
}

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
    if (!comparesBytes(*this)) {
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
    std::unique_ptr<void, decltype(&std::free)> block(fxAllocate(bytes), &std::free);
    copyElements(from, block.get(), bytes);
    return block.release();
}

void* fxArray::raw_copy() const { return copied(data, len); }

void* fxArray::raw_extract(unsigned int start, unsigned int n) const {
    return copied(byteAt(bytesOf(start)), bytesOf(n));
}

void* fxArray::raw_head(unsigned int n) const { return raw_extract(0, n); }

void* fxArray::raw_tail(unsigned int n) const {
    const unsigned int bytes = bytesOf(n);
    return copied(byteAt(len - bytes), bytes);
}

void* fxArray::raw_cut(unsigned int start, unsigned int n) {
    const unsigned int offset = bytesOf(start);
    const unsigned int bytes = bytesOf(n);
    if (bytes == 0)
        return nullptr;
    void* block = fxAllocate(bytes);
    std::memcpy(block, byteAt(offset), bytes);
    closeGap(offset, bytes);
    return block;
}
