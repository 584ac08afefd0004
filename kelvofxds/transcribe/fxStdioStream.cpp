#include "kelvofxds/transcribe/fxStdioStream.h"

#include <fcntl.h>
#include <stdio_ext.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/core/fxTableOfInternal.h"
#include "kelvofxds/core/fxUninterruptedInternal.h"
#include "kelvofxds/transcribe/fxPieceInternal.h"
#include "kelvofxds/transcribe/fxStdioStreamInternal.h"

namespace {
int openFlags(fxStream::fxStreamType type) {
    switch (type) {
        case fxStream::writeStream:
            return O_WRONLY;
        case fxStream::readWriteStream:
            return O_RDWR;
        default:
            return O_RDONLY;
    }
}

int openFile(const char* path, int flags, unsigned int mode) {
    return fxUninterrupted(-1, [=] { return ::open64(path, flags, static_cast<mode_t>(mode)); });
}

const char* stdioMode(fxStream::fxStreamType type) {
    switch (type) {
        case fxStream::readStream:
            return "r";
        case fxStream::writeStream:
            return "w";
        case fxStream::readWriteStream:
            return "r+";
        default:
            return nullptr;
    }
}
}  // namespace

std::FILE* fxOwnFile(const fxStream* stream) {
    static const void* const ownTable = [] {
        const fxStdioStream own(static_cast<std::FILE*>(nullptr), fxStream::readStream);
        return fxTableOf(&own);
    }();
    if (!stream || fxTableOf(stream) != ownTable)
        return nullptr;
    return static_cast<const fxStdioStream*>(stream)->fp;
}

// A stream that is no file's has a host's functions, whose business signals are.
std::size_t fxReadOn(std::FILE* file, char* to, std::size_t n, std::size_t got) {
    while (got < n && ::ferror_unlocked(file) && errno == EINTR && ::fileno_unlocked(file) >= 0) {
        ::clearerr_unlocked(file);
        got += ::fread_unlocked(to + got, 1, n - got, file);
    }
    return got;
}

fxStdioStream::fxStdioStream(const char* path, fxStreamType streamType, unsigned int mode)
    : fp(nullptr), type(streamType), error(1), eof(0) {
    const int flags = openFlags(type);
    int fd = openFile(path, flags, 0);
    if (fd < 0 && type != readStream)
        fd = openFile(path, flags | O_CREAT, mode);
    if (fd < 0)
        return;
    wrap(fd);
    if (!fp)
        ::close(fd);
}

fxStdioStream::fxStdioStream(int fd, fxStreamType streamType)
    : fp(nullptr), type(streamType), error(1), eof(0) {
    wrap(fd);
}

fxStdioStream::fxStdioStream(std::FILE* stream, fxStreamType streamType)
    : fp(stream), type(streamType), error(stream == nullptr), eof(0) {}

fxStdioStream* fxStdioStream::createFile(const char* path, unsigned int mode) {
    const int fd = openFile(path, O_WRONLY | O_CREAT | O_TRUNC, mode);
    fxStdioStream* made = fxNew<fxStdioStream>(fd, writeStream);
    if (!made->fp && fd >= 0)
        ::close(fd);
    return made;
}

fxStdioStream::~fxStdioStream() {
    if (!fp)
        return;
    std::fflush(fp);
    std::fclose(fp);
}

void fxStdioStream::wrap(int fd) {
    const char* mode = stdioMode(type);
    fp = mode ? ::fdopen(fd, mode) : nullptr;
    error = fp == nullptr;
}

unsigned char fxStdioStream::flush() {
    if (!fp)
        return 0;
    const unsigned char isHandedOver = fxPiece::Collecting::handOverTo(this);
    // Of a stream that was read last there is nothing to be lost.
    const bool isFlushed = std::fflush(fp) == 0 || !::__fwriting(fp);
    // What the system has not taken is gone from the buffer; the flag remembers it.
    return isHandedOver && isFlushed && !::ferror_unlocked(fp);
}

unsigned char fxStdioStream::close() {
    if (!fp)
        return 0;
    const unsigned char isFlushed = flush();
    std::FILE* const closing = fp;
    fp = nullptr;
    error = 1;
    return std::fclose(closing) == 0 && isFlushed;
}

unsigned char fxStdioStream::hasError() { return error; }

unsigned char fxStdioStream::atEOF() { return eof; }

unsigned char fxStdioStream::isReading() { return type == readStream || type == readWriteStream; }

unsigned char fxStdioStream::isWriting() { return type == writeStream || type == readWriteStream; }

fxStream::fxStreamType fxStdioStream::getType() { return type; }

namespace {
// False when they have more bytes than a size can say.
template <class Item>
bool haveASize(unsigned int n) {
    return n <= SIZE_MAX / sizeof(Item);
}
}  // namespace

template <class Item>
unsigned char fxStdioStream::get(Item* items, unsigned int n) {
    const std::size_t size = sizeof(Item) * n;
    return fp && haveASize<Item>(n) &&
           (n == 0 || fxReadFrom(fp, reinterpret_cast<char*>(items), size) == size);
}

template <class Item>
unsigned char fxStdioStream::put(const Item* items, unsigned int n) {
    return fp && haveASize<Item>(n) && fxPiece::Collecting::handOverTo(this) &&
           (n == 0 || ::fwrite_unlocked(items, sizeof(Item), n, fp) == n);
}

unsigned char fxStdioStream::getBytes(char* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxStdioStream", buffer, n);
    if (n != 1 || !fp)
        return get(buffer, n);
    const int c = fxNextOf(fp);
    if (c == EOF)
        return 0;
    *buffer = static_cast<char>(c);
    return 1;
}

unsigned char fxStdioStream::getShorts(short* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxStdioStream", buffer, n);
    FX_CHECK_COUNT("fxStdioStream", n, sizeof(*buffer));
    return get(buffer, n);
}

unsigned char fxStdioStream::getInts(int* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxStdioStream", buffer, n);
    FX_CHECK_COUNT("fxStdioStream", n, sizeof(*buffer));
    return get(buffer, n);
}

unsigned char fxStdioStream::getLongs(long* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxStdioStream", buffer, n);
    FX_CHECK_COUNT("fxStdioStream", n, sizeof(*buffer));
    return get(buffer, n);
}

unsigned char fxStdioStream::getFloats(float* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxStdioStream", buffer, n);
    FX_CHECK_COUNT("fxStdioStream", n, sizeof(*buffer));
    return get(buffer, n);
}

unsigned char fxStdioStream::getDoubles(double* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxStdioStream", buffer, n);
    FX_CHECK_COUNT("fxStdioStream", n, sizeof(*buffer));
    return get(buffer, n);
}

unsigned char fxStdioStream::putBytes(const char* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxStdioStream", buffer, n);
    if (n != 1 || !fp || !fxPiece::Collecting::handOverTo(this))
        return put(buffer, n);
    return ::putc_unlocked(static_cast<unsigned char>(*buffer), fp) != EOF;
}

unsigned char fxStdioStream::putShorts(const short* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxStdioStream", buffer, n);
    FX_CHECK_COUNT("fxStdioStream", n, sizeof(*buffer));
    return put(buffer, n);
}

unsigned char fxStdioStream::putInts(const int* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxStdioStream", buffer, n);
    FX_CHECK_COUNT("fxStdioStream", n, sizeof(*buffer));
    return put(buffer, n);
}

unsigned char fxStdioStream::putLongs(const long* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxStdioStream", buffer, n);
    FX_CHECK_COUNT("fxStdioStream", n, sizeof(*buffer));
    return put(buffer, n);
}

unsigned char fxStdioStream::putFloats(const float* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxStdioStream", buffer, n);
    FX_CHECK_COUNT("fxStdioStream", n, sizeof(*buffer));
    return put(buffer, n);
}

unsigned char fxStdioStream::putDoubles(const double* buffer, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxStdioStream", buffer, n);
    FX_CHECK_COUNT("fxStdioStream", n, sizeof(*buffer));
    return put(buffer, n);
}
