// memoryStream.h - a byte stream in memory that fails on demand.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "kelvofxds/transcribe/fxStream.h"

/// Reads the bytes it was given and keeps those written to it.
///
/// The test holds it: its count starts at 1, so transcribers never delete it.
/// One that a transcriber is to own is made with new and gets count 0. A read
/// beyond the end takes what is left and fails, as standard I/O does.
class MemoryStream : public fxStream {
public:
    static const unsigned int never = 0xFFFFFFFF;

    explicit MemoryStream(std::string bytes = std::string())
        : input(std::move(bytes)), initialCount(count) {
        count = 1;
    }

    ~MemoryStream() override {
        if (deleted)
            *deleted = true;
    }

    unsigned char hasError() override { return 0; }
    unsigned char atEOF() override { return 0; }
    unsigned char isReading() override { return 1; }
    unsigned char isWriting() override { return 1; }
    fxStreamType getType() override { return readWriteStream; }
    unsigned char getBytes(char* p, unsigned int n) override { return get("getBytes", p, n); }
    unsigned char getShorts(short* p, unsigned int n) override { return get("getShorts", p, n); }
    unsigned char getInts(int* p, unsigned int n) override { return get("getInts", p, n); }
    unsigned char getLongs(long* p, unsigned int n) override { return get("getLongs", p, n); }
    unsigned char getFloats(float* p, unsigned int n) override { return get("getFloats", p, n); }
    unsigned char getDoubles(double* p, unsigned int n) override { return get("getDoubles", p, n); }
    unsigned char putBytes(const char* p, unsigned int n) override { return put("putBytes", p, n); }
    unsigned char putShorts(const short* p, unsigned int n) override {
        return put("putShorts", p, n);
    }
    unsigned char putInts(const int* p, unsigned int n) override { return put("putInts", p, n); }
    unsigned char putLongs(const long* p, unsigned int n) override { return put("putLongs", p, n); }
    unsigned char putFloats(const float* p, unsigned int n) override {
        return put("putFloats", p, n);
    }
    unsigned char putDoubles(const double* p, unsigned int n) override {
        return put("putDoubles", p, n);
    }

    /// Bytes not yet read.
    std::size_t left() const { return input.size() - position; }

    std::string input;         ///< What is read.
    std::size_t position = 0;  ///< Of the next byte to read.
    std::string written;       ///< What was written.

    const int initialCount;  ///< The count as fxStream's constructor left it.

    unsigned int failAtCall = never;  ///< Index of the get or put from which on all fail.
    unsigned int byteLimit = never;   ///< Bytes after which a put fails.
    bool logging = false;
    std::vector<std::string> calls;  ///< "putBytes 15" for each call while logging.
    bool* deleted = nullptr;         ///< Set by the destructor.

private:
    bool mayGoOn(const char* name, unsigned int n) {
        if (logging)
            calls.push_back(std::string(name) + " " + std::to_string(n));
        return callCount++ < failAtCall;
    }

    template <class Item>
    unsigned char get(const char* name, Item* items, unsigned int n) {
        if (!mayGoOn(name, n))
            return 0;
        const std::size_t wanted = std::size_t(n) * sizeof(Item);
        const std::size_t got = std::min(wanted, left());
        if (got != 0)
            std::memcpy(items, input.data() + position, got);
        position += got;
        return got == wanted;
    }

    template <class Item>
    unsigned char put(const char* name, const Item* items, unsigned int n) {
        if (!mayGoOn(name, n))
            return 0;
        const std::size_t wanted = std::size_t(n) * sizeof(Item);
        const std::size_t room = byteLimit - std::min<std::size_t>(byteLimit, written.size());
        written.append(reinterpret_cast<const char*>(items), std::min(wanted, room));
        return wanted <= room;
    }

    unsigned int callCount = 0;
};
