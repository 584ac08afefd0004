// contents.h - what the bytes of an object or a block are.
#pragma once

#include <cstdint>

#include "tools/fxdump/fieldMaker.h"
#include "tools/fxdump/shape.h"
#include "tools/fxdump/stream.h"

namespace fxdump {

/// Follows the contents of one object or block, and says what comes next as far as
/// that can be told. Once they turn out to be other than the class's, all that
/// follows is bytes.
class Contents {
public:
    void setStream(const Header& header);

    /// What follows belongs to nothing known.
    void beginNothing();
    /// The contents of an object, whose type's name may be "".
    void beginObject(const std::string& typeName);
    /// Those of a block, whose record is `record`.
    void beginBlock(const Record& record);

    /// What comes next in a payload of which `left` bytes are left.
    Item next(std::uint32_t left);
    /// The item that next() told is there; its first bytes are at `bytes`.
    void done(const Item& item, const char* bytes);
    /// What an item that is held turns out to be. `left` bytes are behind it; a record that
    /// `isFull` may have been ended by the writer's buffer.
    Item decided(const char* bytes, std::uint32_t left, bool isFull);
    /// A pointer or an embedded object stands here.
    void pointer(const Record& record);
    /// It is not what it seemed to be.
    void lose();

private:
    const Part* part() const;
    void advance();
    Item elements();
    void lengthIs(std::uint32_t size);

    Kind kind = Kind::standard;
    ByteOrder order;

    Item block;                    // elements of a block; of size 0 when they are over
    const Shape* shape = nullptr;  // null when it is not known, or has been lost
    bool isInEntry = false;
    unsigned int place = 0;  // of the part
    std::uint32_t entriesLeft = 0;
    std::uint32_t size = 0;         // of the elements, in bytes
    std::uint32_t width = 0;        // of one
    std::uint32_t stringsLeft = 0;  // among the elements
    std::uint32_t textSize = 0;     // of the text that comes next
    bool awaitsBlock = false;       // of a string
};

}  // namespace fxdump
