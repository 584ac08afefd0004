#include "kelvofxds/str/fxStackBuffer.h"

#include <cstdlib>
#include <cstring>

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

void fxStackBuffer::put(const char* data, unsigned int n) {
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

// Moves the content to a heap block of `bytes` bytes.
void fxStackBuffer::setCapacity(unsigned int bytes) {
    const unsigned int used = length();
    if (isInline()) {
        base = static_cast<char*>(fxAllocate(bytes));
        std::memcpy(base, inlineBuffer, sizeof inlineBuffer);
    } else {
        base = static_cast<char*>(fxReallocate(base, bytes));
    }
    end = base + bytes;
    next = base + used;
}
