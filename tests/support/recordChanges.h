// recordChanges.h - what can be said otherwise in the records of a stream.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/graphBytes.h"

/// A stream of either format, a header and records.
struct RecordStream {
    std::string bytes;
    bool isGraph;
    bool isBig;        ///< The writer's order.
    bool readerWords;  ///< Whether the tags 4 and 11 to 14 have two words.
};

/// Another text instead of `removed` bytes at `at`.
struct RecordChange {
    std::size_t at;
    std::size_t removed;
    std::string inserted;
};

/// Finds the records of a stream, and makes the changes.
class RecordChanges {
public:
    explicit RecordChanges(const RecordStream& s) : stream(s), place(headerLength(s.bytes)) {}

    /// The head says another kind: each of those that there are, and some that there are not.
    /// The length says another size, in four bytes. Each argument is another word, each type
    /// has another name, and in the payload each word, and each short, is another one.
    std::vector<RecordChange> all() {
        while (place < stream.bytes.size())
            takeRecord();
        return changes;
    }

    /// `change` made; the end of a root in a graph stream gets the checksum that is right then,
    /// so that the rest of the reader is met, too.
    static std::string changed(const RecordStream& stream, const RecordChange& change) {
        std::string bytes = stream.bytes;
        bytes.replace(change.at, change.removed, change.inserted);
        const std::size_t header = headerLength(stream.bytes);
        const std::size_t endLength = 5;
        if (!stream.isGraph || change.at < header ||
            change.at + change.removed > stream.bytes.size() - endLength)
            return bytes;
        const std::size_t end = bytes.size() - endLength;
        const std::uint32_t sum = slowChecksum(bytes.substr(header, end - header));
        return bytes.replace(end + 1, 4, numberOf(sum, 4, false));
    }

    /// Two texts, a short and a long.
    static std::size_t headerLength(const std::string& bytes) {
        return bytes.find('\0', bytes.find('\0') + 1) + 7;
    }

    static std::string numberOf(std::uint32_t value, unsigned int n, bool isBig) {
        std::string bytes;
        for (unsigned int i = 0; i < n; ++i)
            bytes += static_cast<char>(value >> 8 * (isBig ? n - 1 - i : i));
        return bytes;
    }

    /// What sizes, counts and numbers are said to be. A table of 2^24 buckets can be had.
    static constexpr std::uint32_t words[] = {
        0, 1, 2, 512, 513, 0x01000000, 0x3FFFFFFF, 0x40000000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    static constexpr std::uint32_t shorts[] = {0, 1, 3, 512, 513, 0x7FFF, 0xFFFF};
    /// Types by whose records nothing is created, and others.
    static constexpr const char* names[] = {"NoCreate", "CreatesNone", "ARRAY", "DICT",
                                            "SET",      "fxStr",       "Node",  "fxXDRObj",
                                            "Person",   "nobody",      ""};

private:
    unsigned char byteAt(std::size_t at) const {
        return at < stream.bytes.size() ? static_cast<unsigned char>(stream.bytes[at]) : '\0';
    }

    void replace(std::size_t at, std::size_t n, const std::string& text) {
        if (at + n <= stream.bytes.size() && stream.bytes.compare(at, n, text) != 0)
            changes.push_back({at, n, text});
    }

    void takeRecord() {
        static const unsigned int tags[] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,
                                            10, 11, 12, 13, 14, 15, 16, 31, 62, 63};
        static const unsigned int lengthBytes[] = {0, 1, 2, 4};
        const std::size_t start = place;
        const unsigned int head = byteAt(place++);
        const unsigned int tag = head & 0x3F;
        const unsigned int n = lengthBytes[head >> 6];
        for (const unsigned int other : tags)
            replace(start, 1, std::string(1, static_cast<char>((head & 0xC0) | other)));
        for (const std::uint32_t word : words)
            replace(start, 1 + n, static_cast<char>(tag | 0xC0) + numberOf(word, 4, false));
        std::size_t length = 0;
        for (unsigned int i = 0; i < n; ++i)
            length |= std::size_t{byteAt(place++)} << 8 * i;
        for (unsigned int i = argumentsOf(tag); i != 0; --i) {
            replaceWords(false);
            place += 4;
        }
        if (tag == 2)
            takeName();
        const std::size_t end = place + length;
        for (const std::size_t seen = std::min(end, place + mostPayload); place < seen; ++place)
            replaceWords(stream.isBig);
        place = end;
    }

    void replaceWords(bool isBig) {
        for (const std::uint32_t word : words)
            replace(place, 4, numberOf(word, 4, isBig));
        for (const std::uint32_t word : shorts)
            replace(place, 2, numberOf(word, 2, isBig));
    }

    void takeName() {
        const std::size_t length = std::strlen(stream.bytes.c_str() + place);
        for (const char* name : names)
            replace(place, length, name);
        place += length + 1;
    }

    unsigned int argumentsOf(unsigned int tag) const {
        static const unsigned int written[] = {0, 0, 1, 2, 1, 2, 2, 2, 2, 2, 3, 1, 1, 1, 1, 1};
        if (tag > 15)
            return 0;
        const bool isTwo = stream.readerWords && (tag == 4 || tag > 10);
        return isTwo ? 2 : written[tag];
    }

    static const std::size_t mostPayload = 4096;  // of a record; what is behind is text

    const RecordStream& stream;
    std::size_t place;
    std::vector<RecordChange> changes;
};
