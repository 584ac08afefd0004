// source.h - where the bytes of a stream come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace fxdump {

/// Bytes that are read once, from front to back, through a buffer of fixed size.
class Source {
public:
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    virtual ~Source();

    /// Lets `bytes` point to bytes that are there, valid until the next call, and
    /// returns how many there are; 0 at the end, or when they cannot be read.
    std::size_t ready(const char*& bytes);
    /// Goes on by `n` bytes, of those that are ready.
    void drop(std::size_t n);
    /// Copies the next `n` bytes to `to`; returns how many there were.
    std::size_t take(char* to, std::size_t n);

    /// Bytes before the next one.
    std::uint64_t offset() const { return position; }
    /// Why the bytes ended before the end, as an errno; 0 if they did not.
    int error() const { return failure; }

protected:
    Source();
    /// Puts up to `room` bytes at `at` and returns how many; 0 at the end. What
    /// fails returns 0, too, and calls fail.
    virtual std::size_t read(char* at, std::size_t room) = 0;
    void fail(int errorNumber) { failure = errorNumber; }

private:
    std::unique_ptr<char[]> buffer;
    std::size_t begin = 0;  // of what is ready, in the buffer
    std::size_t end = 0;
    std::uint64_t position = 0;
    int failure = 0;
    bool atEnd = false;
};

/// What a descriptor gives, which stays the caller's.
class FileSource : public Source {
public:
    explicit FileSource(int descriptor) : fd(descriptor) {}

protected:
    std::size_t read(char* at, std::size_t room) override;

private:
    int fd;
};

/// Bytes in memory, which have to stay there.
class MemorySource : public Source {
public:
    MemorySource(const void* bytes, std::size_t n)
        : next(static_cast<const char*>(bytes)), left(n) {}

protected:
    std::size_t read(char* at, std::size_t room) override;

private:
    const char* next;
    std::size_t left;
};

}  // namespace fxdump
