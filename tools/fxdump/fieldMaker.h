// fieldMaker.h - cuts payloads into fields.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tools/fxdump/view.h"

namespace fxdump {

/// What comes next in some contents. It may be spread over records.
struct Item {
    const char* label = "";
    Form form = Form::bytes;
    std::uint64_t size = 0;  ///< In bytes; not 0.
    bool isOne = false;
    bool isLength = false;
    bool isHeld = false;  ///< What it is can be told only when it is there.
};

/// Makes fields of the bytes of items, and shows them. Where fields end depends on
/// the items and the records, not on the pieces in which bytes come.
class FieldMaker {
public:
    explicit FieldMaker(View& v) : view(v) {}

    /// Begins an item. What is left of the one before is given up.
    void start(const Item& item);
    /// The held item turns out to be the beginning of `whole`.
    void release(const Item& whole);
    /// Gives up the item.
    void abandon();
    /// Whether a new item has to be started for more bytes.
    bool isIdle() const { return left == 0; }
    bool isHolding() const { return item.isHeld; }

    /// Takes bytes that lie at `offset`, as many as the item still has; returns how
    /// many. Requires: !isIdle().
    std::size_t take(const char* bytes, std::size_t n, std::uint64_t offset);
    /// Shows what has been taken: the item goes on in another record, if at all.
    void recordEnd();

    const Item& present() const { return item; }
    /// The 8 bytes that were taken first. Later ones are not kept.
    const char* firstBytes() const { return first; }

private:
    static const unsigned int mostElement = 8;

    std::size_t stepOf(std::size_t n) const;
    void emitAll();
    void emit(const char* bytes, std::size_t n, const char* elements, std::size_t count,
              bool isLast);
    void emitCompleted();

    View& view;
    Item item;
    std::uint64_t left = 0;   // bytes of the item that have not been taken
    std::uint64_t taken = 0;  // bytes that have
    bool isFirst = true;
    char first[mostElement] = {};
    char piece[Field::mostBytes] = {};  // what has been taken and not been shown
    std::size_t filled = 0;
    std::uint64_t pieceOffset = 0;
    char element[mostElement] = {};  // one that began in another record
    unsigned int inElement = 0;      // bytes of it
};

}  // namespace fxdump
