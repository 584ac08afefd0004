// media.h - what writers write to and readers read from, the same for both sides.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <istream>
#include <iterator>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>

#include "kelvofxds/transcribe/fxStdioStream.h"
#include "kelvofxds/transcribe/fxStream.h"

/// A growing block of bytes.
using Bytes = std::string;

/// An fxStream over a block of bytes.
class MemoryStream : public fxStream {
public:
    MemoryStream(Bytes& storage, fxStreamType streamType)
        : bytes(storage), position(0), type(streamType) {
        if (type == writeStream)
            bytes.clear();
    }

    unsigned char hasError() override { return 0; }
    unsigned char atEOF() override { return position == bytes.size(); }
    unsigned char isReading() override { return type == readStream; }
    unsigned char isWriting() override { return type == writeStream; }
    fxStreamType getType() override { return type; }

    unsigned char getBytes(char* buffer, unsigned int n) override { return get(buffer, n); }
    unsigned char getShorts(short* buffer, unsigned int n) override { return get(buffer, n * 2); }
    unsigned char getInts(int* buffer, unsigned int n) override { return get(buffer, n * 4); }
    unsigned char getLongs(long* buffer, unsigned int n) override { return get(buffer, n * 4); }
    unsigned char getFloats(float* buffer, unsigned int n) override { return get(buffer, n * 4); }
    unsigned char getDoubles(double* buffer, unsigned int n) override { return get(buffer, n * 8); }
    unsigned char putBytes(const char* buffer, unsigned int n) override { return put(buffer, n); }
    unsigned char putShorts(const short* buffer, unsigned int n) override {
        return put(buffer, n * 2);
    }
    unsigned char putInts(const int* buffer, unsigned int n) override { return put(buffer, n * 4); }
    unsigned char putLongs(const long* buffer, unsigned int n) override {
        return put(buffer, n * 4);
    }
    unsigned char putFloats(const float* buffer, unsigned int n) override {
        return put(buffer, n * 4);
    }
    unsigned char putDoubles(const double* buffer, unsigned int n) override {
        return put(buffer, n * 8);
    }

private:
    unsigned char get(void* to, std::size_t n) {
        if (bytes.size() - position < n)
            return 0;
        std::memcpy(to, bytes.data() + position, n);
        position += n;
        return 1;
    }
    unsigned char put(const void* from, std::size_t n) {
        bytes.append(static_cast<const char*>(from), n);
        return 1;
    }

    Bytes& bytes;
    std::size_t position;
    fxStreamType type;
};

/// The same for a standard stream.
class MemoryBuffer : public std::streambuf {
public:
    explicit MemoryBuffer(Bytes& storage) : bytes(storage) {}

    void startReading() { setg(&bytes[0], &bytes[0], &bytes[0] + bytes.size()); }
    void startWriting() { bytes.clear(); }

protected:
    std::streamsize xsputn(const char* from, std::streamsize n) override {
        bytes.append(from, static_cast<std::size_t>(n));
        return n;
    }
    int_type overflow(int_type c) override {
        bytes.push_back(static_cast<char>(c));
        return c;
    }

private:
    Bytes& bytes;
};

/// Memory: what is measured is the transcriber alone.
class MemoryMedium {
public:
    static constexpr const char* name = "memory";

    fxStream* openToWrite() { return new MemoryStream(oursBytes, fxStream::writeStream); }
    fxStream* openToRead() { return new MemoryStream(oursBytes, fxStream::readStream); }

    /// What the library has written.
    const Bytes& written() const { return oursBytes; }

    template <class Work>
    void write(Work work) {
        MemoryBuffer buffer(peerBytes);
        buffer.startWriting();
        std::ostream stream(&buffer);
        work(stream);
    }
    template <class Work>
    void read(Work work) {
        MemoryBuffer buffer(peerBytes);
        buffer.startReading();
        std::istream stream(&buffer);
        work(stream);
    }

private:
    Bytes oursBytes;
    Bytes peerBytes;
};

/// A file without a name that the system keeps in memory: the library's own
/// stream over standard I/O beside std::fstream, opening and closing included.
class FileMedium {
public:
    static constexpr const char* name = "file";

    fxStream* openToWrite() {
        return new fxStdioStream(ours.path().c_str(), fxStream::writeStream);
    }
    fxStream* openToRead() { return new fxStdioStream(ours.path().c_str(), fxStream::readStream); }

    /// What the library has written.
    Bytes written() const {
        std::ifstream stream(ours.path(), std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    }

    // Opened for reading too, so that what is there is overwritten, as the
    // library's stream does, and not truncated first.
    template <class Work>
    void write(Work work) {
        std::ofstream stream(peer.path(), std::ios::in | std::ios::out | std::ios::binary);
        work(stream);
    }
    template <class Work>
    void read(Work work) {
        std::ifstream stream(peer.path(), std::ios::binary);
        work(stream);
    }

private:
    class File {
    public:
        File() : fd(::memfd_create("bench", MFD_CLOEXEC)) {
            if (fd < 0) {
                std::perror("memfd_create");
                std::abort();
            }
        }
        File(const File&) = delete;
        File& operator=(const File&) = delete;
        ~File() { ::close(fd); }
        std::string path() const { return "/proc/self/fd/" + std::to_string(fd); }

    private:
        int fd;
    };

    File ours;
    File peer;
};
