#include "tools/fxdump/hexView.h"

#include <algorithm>
#include <cstdio>

#include "tools/fxdump/describe.h"
#include "tools/fxdump/text.h"

namespace fxdump {

namespace {
const std::size_t bytesInLine = 16;
const std::size_t bytesWidth = 3 * bytesInLine - 1;
}  // namespace

void HexView::begin(const std::string& file) {
    fileName = printable(file.data(), file.size());
    at = 0;
}

void HexView::line(const char* bytes, std::size_t n, const std::string& remark) {
    char offset[24];
    std::snprintf(offset, sizeof offset, "%04llx", static_cast<unsigned long long>(at));
    out.put(out.painted(Paint::place, offset) + "  " + padded(hexOf(bytes, n, " "), bytesWidth) +
            "  ; " + remark + "\n");
    at += n;
}

// The bytes in lines, the first with the remark. Texts show what they are themselves.
void HexView::lines(const char* bytes, std::size_t n, const std::string& remark) {
    for (std::size_t done = 0; done < n;) {
        const std::size_t step = std::min(n - done, bytesInLine);
        line(bytes + done, step, done == 0 ? remark : printable(bytes + done, step));
        done += step;
    }
}

void HexView::header(const Header& header) {
    order = header.order;
    out.put(out.painted(Paint::name, fileName) + ": " + header.kindName() + ", " + order.name() +
            "\n");
    const unsigned int marks = header.size - 6;
    const unsigned int format = marks - static_cast<unsigned>(sizeof fxBinaryFormat::floatFormat);
    const char* const bytes = header.bytes;
    line(bytes, format, std::string("header: \"") + header.writer() + "\"");
    line(bytes + format, marks - format, std::string("\"") + fxBinaryFormat::floatFormat + "\"");
    line(bytes + marks, 2, "short mark 0x1122");
    line(bytes + marks + 2, 4, "long mark 0x33445566");
}

void HexView::record(const Record& record) {
    const char* bytes = record.head;
    std::string label = out.painted(Paint::name, record.label());
    if (record.lengthBytes != 0)
        label += ", payload of " + counted(record.payload, "byte");
    line(bytes, 1 + record.lengthBytes, label);
    bytes += 1 + record.lengthBytes;
    for (unsigned int i = 0; i < record.wordCount; ++i, bytes += fxBinaryFormat::wordBytes)
        line(bytes, fxBinaryFormat::wordBytes, wordOf(record, i));
    if (record.is(fxOT_Type))
        lines(record.name.c_str(), record.name.size() + record.isNameWhole,
              "its name: " + out.painted(Paint::text, nameOf(record)));
}

// Elements, with their values beside them.
void HexView::elements(const Field& field) {
    const std::size_t size = sizeOf(field.form);
    const std::size_t inLine = bytesInLine / size;
    Field some = field;
    for (std::size_t done = 0; done < field.elementCount; done += some.elementCount) {
        some.elements = field.elements + done * size;
        some.elementCount = std::min(field.elementCount - done, inLine);
        const std::string values = valuesOf(some, inLine, order);
        const std::string label = field.isFirst && done == 0 ? field.label : "";
        line(field.bytes + done * size, some.elementCount * size,
             label + (label.empty() ? "" : ": ") + out.painted(Paint::number, values));
    }
}

void HexView::field(const Field& field) {
    const std::string label = field.label;
    const std::string colon = label.empty() ? "" : label + ": ";
    const bool isPart = field.elementCount == 0;
    switch (field.form) {
        case Form::bytes:
        case Form::text:
            lines(field.bytes, field.size,
                  colon + out.painted(Paint::text,
                                      printable(field.bytes, std::min(field.size, bytesInLine))));
            break;
        case Form::name:
            lines(field.bytes, field.size,
                  "more of the name: " + printable(field.bytes, std::min(field.size, bytesInLine)));
            break;
        case Form::shorts:
        case Form::longs:
        case Form::floats:
        case Form::doubles:
            if (isPart)
                lines(field.bytes, field.size, colon + "a part of it");
            else if (field.isOne || field.elements != field.bytes)
                line(field.bytes, field.size,
                     label +
                         (field.isLength  ? ": length + 1 is "
                          : label.empty() ? ""
                                          : ": ") +
                         out.painted(Paint::number, valuesOf(field, 1, order)));
            else
                elements(field);
            break;
    }
}

void HexView::recordEnd() {}

void HexView::damage(const Damage& damage) {
    const bool isBegun = damage.place != 0 && damage.offset < at;
    if (!isBegun)
        lines(damage.bytes.data(), damage.bytes.size(), "a record that is damaged");
    out.put(out.painted(Paint::bad, damage.text()) + "\n");
}

void HexView::end(std::uint64_t) {}

void HexView::close(const std::string&) {}

}  // namespace fxdump
