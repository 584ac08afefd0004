// fxMemoryStream.h - a byte stream in memory.
#pragma once

#include "kelvofxds/transcribe/fxStream.h"

/// Bytes in memory: a growing block of its own, to which everything put is
/// appended and from which it can be read, or somebody else's bytes, which can
/// only be read.
///
/// Reading begins at the first byte, whatever has been put meanwhile; a get that
/// asks for more than is left returns 0, transfers nothing and leaves the place.
/// What is put may be some of the stream's own bytes. Putting is amortised
/// O(bytes); where memory for it is refused, or all would be 2 GB or more, it
/// returns 0 and nothing has changed. Into others' bytes every put returns 0.
class FX_EXPORT fxMemoryStream : public fxStream {
public:
    /// An empty block of its own.
    fxMemoryStream();
    /// The `length` bytes at `bytes`, which stay the caller's and have to stay
    /// where and as they are.
    fxMemoryStream(const void* bytes, unsigned int length);
    /// Frees the block if it is its own.
    ~fxMemoryStream() override;

    /// The bytes, of which there are length(): all of them, read or not. They stay
    /// there until more is put.
    const char* getBase() const { return bytes; }
    /// In bytes.
    unsigned int length() const { return used; }
    /// How many of them have been read.
    unsigned int position() const { return place; }
    /// Lets reading begin at the first byte again.
    void rewind() { place = 0; }
    /// Forgets all bytes; a block of its own stays for what is put next.
    void clear();

    unsigned char hasError() override;  ///< Always 0.
    unsigned char atEOF() override;     ///< 1 when all bytes have been read.
    unsigned char isReading() override;
    unsigned char isWriting() override;
    fxStreamType getType() override;  ///< readWriteStream, or readStream for others' bytes.
    unsigned char getBytes(char* buffer, unsigned int n) override;
    unsigned char getShorts(short* buffer, unsigned int n) override;
    unsigned char getInts(int* buffer, unsigned int n) override;
    unsigned char getLongs(long* buffer, unsigned int n) override;
    unsigned char getFloats(float* buffer, unsigned int n) override;
    unsigned char getDoubles(double* buffer, unsigned int n) override;
    unsigned char putBytes(const char* buffer, unsigned int n) override;
    unsigned char putShorts(const short* buffer, unsigned int n) override;
    unsigned char putInts(const int* buffer, unsigned int n) override;
    unsigned char putLongs(const long* buffer, unsigned int n) override;
    unsigned char putFloats(const float* buffer, unsigned int n) override;
    unsigned char putDoubles(const double* buffer, unsigned int n) override;

private:
    friend struct fxMemoryStreamLayout;  // tests/transcribe/fxMemoryStream_test.cpp
    friend class fxGraphSource;          // fxGraphSourceInternal.h

    bool grow(unsigned int n);
    template <class Item>
    unsigned char get(Item* items, unsigned int n);
    template <class Item>
    unsigned char put(const Item* items, unsigned int n);

    const char* bytes;   // null as long as it has none of its own
    char* block;         // owned, from malloc, and the same; null if they are others'
    unsigned int used;   // bytes there are
    unsigned int room;   // bytes that `block` has room for
    unsigned int place;  // of the next byte to be read
    bool isOwn;          // it can grow
};
