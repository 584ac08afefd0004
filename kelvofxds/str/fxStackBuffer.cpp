#include "kelvofxds/str/fxStackBuffer.h"

#include <cstdlib>
#include <cstring>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"

namespace {
const char* const owner = "fxStackBuffer";
const unsigned int defaultIncrement = 500;
}  // namespace

fxStackBuffer::fxStackBuffer(unsigned int increment)
    : next(inlineBuffer),
      end(inlineBuffer + sizeof inlineBuffer),
      base(inlineBuffer),
      growIncrement(increment != 0 ? increment : defaultIncrement) {}

fxStackBuffer::fxStackBuffer(const fxStackBuffer& other) : fxStackBuffer(other.growIncrement) {
    if (other.capacity() > sizeof inlineBuffer) {
        base = static_cast<char*>(fxAllocate(other.capacity()));
        end = base + other.capacity();
    }
    std::memcpy(base, other.base, other.length());
    next = base + other.length();
}

fxStackBuffer::~fxStackBuffer() {
    if (!isInline())
        std::free(base);
}

void fxStackBuffer::addc(char c) {
    if (next == end)
        setCapacity(fxSum(owner, capacity(), growIncrement));
    *next++ = c;
}

bool fxStackBuffer::tryAddc(char c) {
    if (next == end) {
        unsigned int bytes = 0;
        if (__builtin_add_overflow(capacity(), growIncrement, &bytes))
            return false;
        void* block = std::realloc(isInline() ? nullptr : base, bytes);
        if (!block)
            return false;
        moveTo(static_cast<char*>(block), bytes);
    }
    *next++ = c;
    return true;
}

void fxStackBuffer::put(const char* data, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxStackBuffer", data, n);
    if (n == 0)
        return;
    const unsigned int room = static_cast<unsigned int>(end - next);
    const bool own = fxPointsInto(data, base, capacity());
    const std::ptrdiff_t offset = own ? data - base : 0;
    if (n > room)
        grow(n - room);
    std::memmove(next, own ? base + offset : data, n);
    next += n;
}

void fxStackBuffer::grow(unsigned int n) {
    setCapacity(fxSum(owner, capacity(), n > growIncrement ? n : growIncrement));
}

void fxStackBuffer::setCapacity(unsigned int bytes) {
    moveTo(static_cast<char*>(isInline() ? fxAllocate(bytes) : fxReallocate(base, bytes)), bytes);
}

// Goes on in `block`, which has `bytes` bytes and, unless the content was inline,
// the content.
void fxStackBuffer::moveTo(char* block, unsigned int bytes) {
    const unsigned int used = length();
    if (isInline())
        std::memcpy(block, inlineBuffer, sizeof inlineBuffer);
    base = block;
    end = base + bytes;
    next = base + used;
}
