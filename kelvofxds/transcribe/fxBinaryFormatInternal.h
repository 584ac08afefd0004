// fxBinaryFormatInternal.h - the stream formats: every fact about their bytes.
#pragma once

#include <cstdint>

#include "kelvofxds/transcribe/fxBinaryOTTag.h"

// What writes, reads or shows streams takes from here what stands where.
// docs/stream-format.md tells it to strangers; a test holds it to this table.
// Programs that only look at streams use it too, so it needs nothing of the
// library's and stands for itself on every host.
namespace fxBinaryFormat {

// The header: two texts with their NULs, then two marks in the writer's order.

inline constexpr char writerName[] = "fxBinaryWriter";
inline constexpr char graphWriterName[] = "fxGraphWriter";
inline constexpr char floatFormat[] = "ieee";
inline constexpr short shortMark = 0x1122;
inline constexpr long longMark = 0x33445566;

/// Where the bytes 0 1 2 3 of a writer's numbers lie, seen from here.
enum class Order : unsigned char {
    same,
    bytesSwapped,   ///< 1 0 3 2
    halvesSwapped,  ///< 2 3 0 1
    reversed,       ///< 3 2 1 0
    unknown
};

/// What a mark is read as, and the order that this shows.
struct Mark {
    std::uint32_t readAs;
    Order order;
};

inline constexpr Mark shortMarks[] = {{shortMark, Order::same}, {0x2211, Order::bytesSwapped}};

inline constexpr Mark longMarks[] = {{longMark, Order::same},
                                     {0x44336655, Order::bytesSwapped},
                                     {0x55663344, Order::halvesSwapped},
                                     {0x66554433, Order::reversed}};

template <unsigned int N>
constexpr Order orderOf(std::uint32_t mark, const Mark (&marks)[N]) {
    for (const Mark& known : marks) {
        if (known.readAs == mark)
            return known.order;
    }
    return Order::unknown;
}

// Records: a head byte, the length of the payload, words, for some a text, and
// the payload. All but the payload is little-endian on every host.

inline constexpr unsigned int tagBits = 6;  // of the head byte; the others are the length class
inline constexpr unsigned int wordBytes = 4;
inline constexpr unsigned int mostWords = 3;
inline constexpr unsigned char lengthBytes[] = {0, 1, 2, 4};  // size of the length, by its class

/// What a word is. The values are the places of the transcribers' arguments:
/// arg1 is the number, and so on. A word that is ignored is written as 0.
enum class Word : unsigned char { ignored, number, typeNumber, version, size };

/// A kind of record.
struct Record {
    fxBinaryOTTag tag;
    const char* name;
    Word words[mostWords];
    unsigned char wordsWritten;
    unsigned char wordsRead;  ///< Deliberate: not what is written, for five of them.
    bool hasText;             ///< Behind the words, with its NUL.
};

/// All kinds, by tag. Each side takes the column that is its own.
inline constexpr Record records[] = {
    {fxOT_Data, "data", {}, 0, 0, false},
    {fxOT_Null, "null pointer", {}, 0, 0, false},
    {fxOT_Type, "type", {Word::typeNumber}, 1, 1, true},
    {fxOT_Block, "pointer to a block", {Word::number, Word::size}, 2, 2, false},
    {fxOT_OldBlock, "pointer to a known block", {Word::number}, 1, 2, false},
    {fxOT_Bytes, "block of bytes", {Word::number, Word::size}, 2, 2, false},
    {fxOT_Shorts, "block of shorts", {Word::number, Word::size}, 2, 2, false},
    {fxOT_Longs, "block of longs", {Word::number, Word::size}, 2, 2, false},
    {fxOT_Floats, "block of floats", {Word::number, Word::size}, 2, 2, false},
    {fxOT_Doubles, "block of doubles", {Word::number, Word::size}, 2, 2, false},
    {fxOT_Object, "object", {Word::number, Word::typeNumber, Word::version}, 3, 3, false},
    {fxOT_ObjectPointer, "pointer to an object", {Word::number}, 1, 2, false},
    {fxOT_OldObject, "pointer to a known object", {Word::number}, 1, 2, false},
    {fxOT_Embedded, "embedded object", {Word::number}, 1, 2, false},
    {fxOT_OldEmbedded, "known embedded object", {Word::number}, 1, 2, false},
};
inline constexpr unsigned int recordCount = sizeof records / sizeof records[0];

constexpr bool recordsAreByTag() {
    for (unsigned int i = 0; i < recordCount; ++i) {
        if (records[i].tag != i)
            return false;
    }
    return true;
}
static_assert(recordsAreByTag(), "a tag is the place of its record");

/// The kind with that tag; null if there is none.
inline const Record* recordOf(unsigned int tag) {
    return tag < recordCount ? records + tag : nullptr;
}

// Graph streams have one kind more, and both sides have the words of the writer.

/// The end of a root, with the checksum of all bytes since the one before.
inline constexpr unsigned int rootEndTag = recordCount;
inline constexpr unsigned int graphTagCount = rootEndTag + 1;

/// Words of the records of graph streams, by tag, which is below graphTagCount.
constexpr unsigned int graphWordsOf(unsigned int tag) {
    return tag == rootEndTag ? 1 : records[tag].wordsWritten;
}

/// Most bytes of payload that a record of a graph stream has.
inline constexpr std::uint32_t mostGraphPayload = 65536;

constexpr unsigned int tagOf(unsigned char head) { return head & ((1U << tagBits) - 1); }
constexpr unsigned int lengthClassOf(unsigned char head) { return head >> tagBits; }

/// The class with the shortest length that can say `payload` bytes.
constexpr unsigned int shortestClassFor(std::uint32_t payload) {
    return payload == 0 ? 0 : payload <= 0xFF ? 1 : payload <= 0xFFFF ? 2 : 3;
}

/// Puts the `n` low bytes of `value` at `at`; returns where the next one goes.
inline char* putLittle(char* at, std::uint32_t value, unsigned int n) {
    for (unsigned int i = 0; i < n; ++i)
        at[i] = static_cast<char>(value >> 8 * i);
    return at + n;
}

/// What putLittle has put at `at`.
inline std::uint32_t getLittle(const char* at, unsigned int n) {
    std::uint32_t value = 0;
    for (unsigned int i = 0; i < n; ++i)
        value |= static_cast<std::uint32_t>(static_cast<unsigned char>(at[i])) << 8 * i;
    return value;
}

// Words are spelt out: compilers make one access of them.

inline char* putWord(char* at, std::uint32_t value) {
    at[0] = static_cast<char>(value);
    at[1] = static_cast<char>(value >> 8);
    at[2] = static_cast<char>(value >> 16);
    at[3] = static_cast<char>(value >> 24);
    return at + wordBytes;
}

inline std::uint32_t getWord(const char* at) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(at);
    return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
           static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

/// Most bytes of a record up to its text or payload.
inline constexpr unsigned int mostHeadBytes = 1 + 4 + mostWords * wordBytes;

/// Puts head byte and length at `at`; returns where the words go.
inline char* putHead(char* at, unsigned int tag, std::uint32_t payload) {
    const unsigned int lengthClass = shortestClassFor(payload);
    *at = static_cast<char>(tag | lengthClass << tagBits);
    return putLittle(at + 1, payload, lengthBytes[lengthClass]);
}

}  // namespace fxBinaryFormat
