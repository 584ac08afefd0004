#include "tools/fxdump/listView.h"

#include <algorithm>

#include "tools/fxdump/describe.h"
#include "tools/fxdump/text.h"

namespace fxdump {

namespace {
const std::size_t offsetWidth = 10;
const std::size_t nameWidth = 26;
const std::size_t lineWidth = 60;  // of contents
const std::size_t mostText = 60;   // bytes of a text that are shown
const std::size_t mostHex = 64;    // of other bytes
const std::size_t hexInLine = 16;
const std::size_t mostValues = 12;  // of elements

// Of the text that a field is.
std::string excerptOf(const Field& field) {
    const std::size_t size = sizeOfText(field);
    const bool isWhole = field.isLast && field.isFirst;
    return quoted(field.bytes, size, mostText) + (isWhole || size > mostText ? "" : "...");
}
}  // namespace

void ListView::begin(const std::string& file) { fileName = file; }

void ListView::header(const Header& header) {
    kind = header.kind;
    order = header.order;
    const std::string name = printable(fileName.data(), fileName.size());
    out.put(out.painted(Paint::name, name) + ": " + header.kindName() + ", " + order.name() + "\n");
    recordLine(0, "header", std::string(header.writer()) + ", " + fxBinaryFormat::floatFormat);
}

void ListView::recordLine(std::uint64_t offset, const std::string& name, const std::string& rest) {
    const std::string place = rightAligned(std::to_string(offset), offsetWidth);
    const std::string column = rest.empty() ? name : padded(name, nameWidth);
    out.put(out.painted(Paint::place, place) + "  " + out.painted(Paint::name, column) + rest +
            "\n");
}

void ListView::record(const Record& record) {
    std::string rest = argumentsOf(record);
    if (record.isRootEnd() && record.words[0] != record.sum)
        rest = out.painted(Paint::bad, rest);
    if (record.payload != 0)
        rest += (rest.empty() ? "" : "; ") + counted(record.payload, "byte") + " of payload";
    recordLine(record.offset, record.label(), rest);
}

// Values are set one behind the other, and each entry begins a line.
void ListView::add(const std::string& label, Paint paint, const std::string& value) {
    const std::size_t size = label.size() + 1 + value.size();
    if (label == "key" || width + size > lineWidth)
        flushLine();
    if (width != 0) {
        line += ", ";
        width += 2;
    }
    line += label + (label.empty() ? "" : " ") + out.painted(paint, value);
    width += size;
}

void ListView::flushLine() {
    if (width != 0)
        out.put(std::string(offsetWidth + 2 + nameWidth, ' ') + line + "\n");
    line.clear();
    width = 0;
}

// Bytes of which nothing is known may be a text all the same.
void ListView::addBytes(const Field& field) {
    if (field.form == Form::text || isText(field.bytes, sizeOfText(field))) {
        add(field.label, Paint::text, excerptOf(field));
        return;
    }
    const std::size_t size = std::min(field.size, mostHex);
    const bool isWhole = field.isLast && size == field.size;
    const std::size_t hexWidth = size > hexInLine ? 3 * hexInLine - 1 : 0;
    for (std::size_t at = 0; at < size; at += hexInLine) {
        const std::size_t n = std::min(size - at, hexInLine);
        const std::string hex = padded(hexOf(field.bytes + at, n, " "), hexWidth);
        const bool isCut = at + n == size && !isWhole;
        add(at == 0 ? field.label : "", Paint::text,
            hex + "  " + printable(field.bytes + at, n) + (isCut ? " ..." : ""));
    }
}

// A text follows, or the pointer to its block, or there is none.
void ListView::addLength(const Field& field) {
    const std::uint32_t length = order.getLong(field.elements);
    if (length == 1)
        add(field.label, Paint::text, "\"\"");
    else if (kind == Kind::standard)
        add(field.label, Paint::plain, "of " + counted(length - 1, "byte"));
}

void ListView::field(const Field& field) {
    if (field.isOne) {
        if (field.elementCount == 0)
            return;
        if (field.isLength)
            addLength(field);
        else
            add(field.label, Paint::number, valueOf(field.form, field.elements, order));
        return;
    }
    if (!field.isFirst)
        return;
    switch (field.form) {
        case Form::name:
            break;
        case Form::bytes:
        case Form::text:
            addBytes(field);
            break;
        case Form::shorts:
        case Form::longs:
        case Form::floats:
        case Form::doubles:
            add(field.label, Paint::number,
                valuesOf(field, mostValues, order) +
                    (field.isLast || field.elementCount > mostValues ? "" : " ..."));
            break;
    }
}

void ListView::recordEnd() { flushLine(); }

void ListView::damage(const Damage& damage) {
    flushLine();
    recordLine(damage.offset, "damage", out.painted(Paint::bad, damage.rule));
}

void ListView::end(std::uint64_t offset) { recordLine(offset, "end", ""); }

void ListView::close(const std::string&) { flushLine(); }

}  // namespace fxdump
