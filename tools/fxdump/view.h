// view.h - what shows a stream takes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "tools/fxdump/stream.h"

namespace fxdump {

/// What the bytes of a field are.
enum class Form : unsigned char {
    bytes,  ///< Nothing is known of them.
    text,
    shorts,
    longs,
    floats,
    doubles,
    name  ///< More of a type's name than the record has.
};

/// Bytes of each element; 1 where there are none.
unsigned int sizeOf(Form form);

/// Bytes of a payload that belong together: a value, elements in a row, a text, or
/// a piece of these. It has no more than mostBytes bytes, all in one record.
struct Field {
    static const std::size_t mostBytes = 4096;

    std::uint64_t offset = 0;
    const char* bytes = nullptr;
    std::size_t size = 0;
    const char* label = "";  ///< What it is, such as "bucket"; "" if that is not known.
    Form form = Form::bytes;
    bool isFirst = true;    ///< Else it goes on with the field before, maybe in another record.
    bool isLast = true;     ///< Else the next one goes on with it.
    bool isOne = false;     ///< One value, and not elements in a row.
    bool isLength = false;  ///< The length + 1 of a text, which has the same label.
    /// The elements, whole. They are `bytes`, unless an element began in another
    /// record; none where an element ends in another one.
    const char* elements = nullptr;
    std::size_t elementCount = 0;
};

/// Shows streams, one after the other. A stream is begin(), then what a parser
/// finds, fields in place of payloads, and then close().
class View {
public:
    View() = default;
    View(const View&) = delete;
    View& operator=(const View&) = delete;
    virtual ~View() = default;

    virtual void begin(const std::string& file) = 0;
    virtual void header(const Header& header) = 0;
    virtual void record(const Record& record) = 0;
    virtual void field(const Field& field) = 0;
    virtual void recordEnd() = 0;
    virtual void damage(const Damage& damage) = 0;
    virtual void end(std::uint64_t offset) = 0;
    /// The stream is over, for whatever reason; `reason` is the system's if it
    /// could not be read to its end, else empty.
    virtual void close(const std::string& reason) = 0;
    /// All streams are over.
    virtual void finish() {}
    virtual bool hasEnough() const { return false; }
};

}  // namespace fxdump
