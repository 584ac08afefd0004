// stream.h - what a stream consists of, as the parser tells it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "kelvofxds/transcribe/fxBinaryFormatInternal.h"
#include "tools/fxdump/byteOrder.h"

namespace fxdump {

enum class Kind : unsigned char { standard, graph };

/// How a stream begins.
struct Header {
    static const unsigned int mostBytes =
        sizeof fxBinaryFormat::writerName + sizeof fxBinaryFormat::floatFormat + 2 + 4;

    Kind kind = Kind::standard;
    ByteOrder order;
    char bytes[mostBytes] = {};
    unsigned int size = 0;  ///< Bytes of it.

    const char* writer() const {
        return kind == Kind::graph ? fxBinaryFormat::graphWriterName : fxBinaryFormat::writerName;
    }
    const char* kindName() const {
        return kind == Kind::graph ? "graph stream" : "standard stream";
    }
};

/// A record, without its payload.
struct Record {
    static const unsigned int longestName = 255;  ///< Of a type; what exceeds it is not kept.

    std::uint64_t offset = 0;       ///< Of the head byte, from the beginning of the stream.
    std::uint64_t place = 0;        ///< Among the records of the stream, from 1.
    std::uint64_t root = 0;         ///< Of a graph stream, from 1.
    std::uint64_t placeInRoot = 0;  ///< From 1; of graph streams only.
    unsigned int tag = 0;
    std::uint32_t payload = 0;  ///< Bytes of it.
    unsigned int wordCount = 0;
    std::uint32_t words[fxBinaryFormat::mostWords] = {};
    char head[fxBinaryFormat::mostHeadBytes] = {};  ///< All before the name, as it is.
    unsigned int lengthBytes = 0;                   ///< Of the length field.
    std::uint32_t sum = 0;    ///< For the end of a root: what its word should be.
    std::string name;         ///< Of a type, without its NUL.
    bool isNameWhole = true;  ///< Else the rest comes as fields.
    std::string typeName;     ///< Of an object, if it is known; else empty.

    bool isRootEnd() const { return tag == fxBinaryFormat::rootEndTag; }
    bool is(fxBinaryOTTag wanted) const { return tag == wanted; }
    bool isBlockBody() const { return tag >= fxOT_Bytes && tag <= fxOT_Doubles; }
    /// A body ends the contents before it.
    bool isBody() const { return isBlockBody() || is(fxOT_Object); }
    /// The standard writer gives these one word, and the standard reader takes two.
    bool isReference() const {
        return !isRootEnd() &&
               fxBinaryFormat::records[tag].wordsWritten != fxBinaryFormat::records[tag].wordsRead;
    }
    const char* label() const {
        return isRootEnd() ? "end of root" : fxBinaryFormat::records[tag].name;
    }
    unsigned int headSize() const {
        return 1 + lengthBytes + wordCount * fxBinaryFormat::wordBytes;
    }
    /// What the word at `i` is.
    fxBinaryFormat::Word wordAt(unsigned int i) const {
        return isRootEnd() ? fxBinaryFormat::Word::ignored : fxBinaryFormat::records[tag].words[i];
    }
    /// The word that is the `wanted` one; 0 if there is none.
    std::uint32_t wordOf(fxBinaryFormat::Word wanted) const {
        for (unsigned int i = 0; i < wordCount; ++i) {
            if (wordAt(i) == wanted)
                return words[i];
        }
        return 0;
    }
    /// The number that it gives or mentions. A type's is a type's.
    std::uint32_t number() const {
        return wordOf(is(fxOT_Type) ? fxBinaryFormat::Word::typeNumber
                                    : fxBinaryFormat::Word::number);
    }
};

/// What is wrong with a stream, and where.
struct Damage {
    std::uint64_t offset = 0;  ///< Of the record, or of the place.
    std::uint64_t place = 0;   ///< Of the record; 0 for the header.
    std::string rule;          ///< What is broken.
    std::string bytes;         ///< Of the record, as far as they are there.

    /// "offset 1234, record 57: " and the rule.
    std::string text() const;
};

/// Takes what the parser finds, in order: a header, then for each record record(),
/// its payload in pieces and recordEnd(); at last either damage() or end().
class RecordSink {
public:
    RecordSink() = default;
    RecordSink(const RecordSink&) = delete;
    RecordSink& operator=(const RecordSink&) = delete;
    virtual ~RecordSink() = default;

    virtual void header(const Header& header) = 0;
    virtual void record(const Record& record) = 0;
    /// What the record's name has beyond what is kept of it, in pieces.
    virtual void restOfName(const char* bytes, std::size_t n) = 0;
    virtual void payload(const char* bytes, std::size_t n) = 0;
    virtual void recordEnd() = 0;
    /// Nothing more can be told. The present record may have begun.
    virtual void damage(const Damage& damage) = 0;
    /// The stream has ended where it may, at that offset.
    virtual void end(std::uint64_t offset) = 0;
    /// Whether no more is wanted, so that the parser may stop.
    virtual bool hasEnough() const { return false; }
};

}  // namespace fxdump
