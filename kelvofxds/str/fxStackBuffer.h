// fxStackBuffer.h - an append-only byte buffer that starts on the stack.
#pragma once

#include "kelvofxds/core/fxExport.h"

/// Collects bytes one at a time or in blocks; the first 1000 are inside the
/// object, longer content moves to one heap block that the buffer owns.
///
/// It adds no terminator and knows nothing of text. Appending is amortised
/// over growIncrement bytes. Running out of memory ends the process ("out of
/// memory"), and so does a capacity that does not fit a word ("fxStackBuffer:
/// size too large").
/// Invariant: base <= next <= end; the content is [base, next).
class FX_EXPORT fxStackBuffer {
public:
    /// An empty buffer that grows by at least `increment` bytes at a time; 0
    /// stands for 500.
    explicit fxStackBuffer(unsigned int increment = 0);
    /// A copy of `other`'s content, capacity and increment.
    fxStackBuffer(const fxStackBuffer& other);
    fxStackBuffer& operator=(const fxStackBuffer&) = delete;
    ~fxStackBuffer();

    /// Appends one byte.
    void addc(char c);
    /// The same, but where memory for it is refused returns false and changes
    /// nothing. For content whose length somebody else decides.
    bool tryAddc(char c);
    /// Appends `n` bytes of `data`, which may lie in this buffer.
    void put(const char* data, unsigned int n);
    /// Makes room for at least `n` more bytes, and for growIncrement at least.
    /// Deliberate: it adds them to the capacity whatever room there is.
    void grow(unsigned int n);

    /// Start of the content; valid until the next growth.
    const char* getBase() const { return base; }
    /// Bytes of content.
    unsigned int length() const { return static_cast<unsigned int>(next - base); }
    /// Bytes that fit before the buffer grows.
    unsigned int capacity() const { return static_cast<unsigned int>(end - base); }
    /// Empties the buffer and keeps its storage.
    void reset() { next = base; }

private:
    friend struct fxStackBufferLayout;  // tests/str/fxStackBuffer_test.cpp

    bool isInline() const { return base == inlineBuffer; }
    void setCapacity(unsigned int bytes);
    void moveTo(char* block, unsigned int bytes);

    char inlineBuffer[1000];
    char* next;                  // where the next byte goes
    char* end;                   // one past the last usable byte
    char* base;                  // inlineBuffer or a malloced block
    unsigned int growIncrement;  // least number of bytes added by a growth
};
