// fxStream.h - the byte source or sink under a transcriber.
#pragma once

#include "kelvofxds/core/fxRCObj.h"

/// An abstract stream of bytes; fxStdioStream is the library's own kind.
///
/// Transcribers hold it by its reference count. Every get and put transfers
/// `n` elements in the host's byte order and returns 1 when all of them were
/// transferred, 0 otherwise.
class FX_EXPORT fxStream : public fxRCObj {
public:
    /// What a stream is for.
    enum fxStreamType : int { readStream = 0, writeStream = 1, readWriteStream = 2 };

    fxStream();
    fxStream(const fxStream&) = delete;
    fxStream& operator=(const fxStream&) = delete;
    ~fxStream() override;

    /// 1 when nothing can be read or written.
    virtual unsigned char hasError() = 0;
    /// 1 at the end of the stream.
    virtual unsigned char atEOF() = 0;
    /// 1 when it can be read.
    virtual unsigned char isReading() = 0;
    /// 1 when it can be written.
    virtual unsigned char isWriting() = 0;
    /// What it is for.
    virtual fxStreamType getType() = 0;
    /// Reads `n` elements to `buffer`.
    virtual unsigned char getBytes(char* buffer, unsigned int n) = 0;
    virtual unsigned char getShorts(short* buffer, unsigned int n) = 0;
    virtual unsigned char getInts(int* buffer, unsigned int n) = 0;
    virtual unsigned char getLongs(long* buffer, unsigned int n) = 0;
    virtual unsigned char getFloats(float* buffer, unsigned int n) = 0;
    virtual unsigned char getDoubles(double* buffer, unsigned int n) = 0;
    /// Writes the `n` elements at `buffer`.
    virtual unsigned char putBytes(const char* buffer, unsigned int n) = 0;
    virtual unsigned char putShorts(const short* buffer, unsigned int n) = 0;
    virtual unsigned char putInts(const int* buffer, unsigned int n) = 0;
    virtual unsigned char putLongs(const long* buffer, unsigned int n) = 0;
    virtual unsigned char putFloats(const float* buffer, unsigned int n) = 0;
    virtual unsigned char putDoubles(const double* buffer, unsigned int n) = 0;
};
