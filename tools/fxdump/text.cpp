#include "tools/fxdump/text.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace fxdump {

namespace {
unsigned int byteAt(const char* bytes) { return static_cast<unsigned char>(*bytes); }

bool isControl(const char* bytes, std::size_t length) {
    const unsigned int first = byteAt(bytes);
    // U+0080 to U+009F are control characters, too.
    return length == 1 ? first < 0x20 || first == 0x7F
                       : length == 2 && first == 0xC2 && byteAt(bytes + 1) < 0xA0;
}

std::string formatted(const char* format, double value) {
    char text[40];
    std::snprintf(text, sizeof text, format, value);
    return text;
}
}  // namespace

std::size_t characterAt(const char* bytes, std::size_t n) {
    const unsigned int first = n == 0 ? 0x80 : byteAt(bytes);
    if (first < 0x80)
        return 1;
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || n < length)
        return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(bytes + i) & 0xC0) != 0x80)
            return 0;
    }
    const unsigned int second = byteAt(bytes + 1);
    const bool isOverlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool isSurrogate = first == 0xED && second >= 0xA0;
    const bool isTooGreat = first == 0xF4 && second >= 0x90;
    return isOverlong || isSurrogate || isTooGreat ? 0 : length;
}

bool isUtf8(const char* bytes, std::size_t n) {
    for (std::size_t at = 0; at < n;) {
        const std::size_t length = characterAt(bytes + at, n - at);
        if (length == 0)
            return false;
        at += length;
    }
    return true;
}

bool isText(const char* bytes, std::size_t n) {
    for (std::size_t at = 0; at < n;) {
        const std::size_t length = characterAt(bytes + at, n - at);
        if (length == 0)
            return false;
        if (isControl(bytes + at, length) && !std::strchr("\t\n\r", bytes[at]))
            return false;
        if (bytes[at] == '\0')
            return false;
        at += length;
    }
    return true;
}

namespace {
// A byte that cannot stand for itself between quotes of C.
std::string escaped(char c) {
    static const char special[] = "\"\\\n\t\r";
    static const char letters[] = "\"\\ntr";
    const char* const found = c == '\0' ? nullptr : std::strchr(special, c);
    if (found)
        return std::string("\\") + letters[found - special];
    if (c == '\0')
        return "\\0";
    return "\\x" + hexOf(&c, 1, "");
}
}  // namespace

std::string quoted(const char* bytes, std::size_t n, std::size_t most) {
    std::string text = "\"";
    const std::size_t shown = std::min(n, most);
    for (std::size_t at = 0; at < shown;) {
        const std::size_t length = characterAt(bytes + at, n - at);
        if (length == 0 || isControl(bytes + at, length) || std::strchr("\"\\", bytes[at])) {
            text += escaped(bytes[at]);
            ++at;
        } else {
            text.append(bytes + at, length);
            at += length;
        }
    }
    return text + (shown < n ? "\"..." : "\"");
}

std::string jsonString(const std::string& bytes) {
    std::string text = "\"";
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t length = characterAt(bytes.data() + at, bytes.size() - at);
        if (length == 0) {
            text += "\\ufffd";
            ++at;
            continue;
        }
        if (bytes[at] == '"' || bytes[at] == '\\')
            text += std::string("\\") + bytes[at];
        else if (isControl(bytes.data() + at, 1))
            text += "\\u00" + hexOf(bytes.data() + at, 1, "");
        else
            text.append(bytes, at, length);
        at += length;
    }
    return text + "\"";
}

std::string hexOf(const char* bytes, std::size_t n, const char* separator) {
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < n; ++i) {
        if (i != 0)
            text += separator;
        text += digits[byteAt(bytes + i) >> 4];
        text += digits[byteAt(bytes + i) & 15];
    }
    return text;
}

std::string printable(const char* bytes, std::size_t n) {
    std::string text(bytes, n);
    for (char& c : text) {
        if (c < ' ' || c > '~')
            c = '.';
    }
    return text;
}

std::string hexWord(std::uint32_t value) {
    char text[9];
    std::snprintf(text, sizeof text, "%08lx", static_cast<unsigned long>(value));
    return text;
}

std::string counted(std::uint64_t n, const char* what) {
    return std::to_string(n) + " " + what + (n == 1 ? "" : "s");
}

std::string valueOf(Form form, const char* bytes, const ByteOrder& order) {
    switch (form) {
        case Form::shorts:
            return std::to_string(order.getShort(bytes));
        case Form::longs:
            return std::to_string(order.getLong(bytes));
        case Form::floats:
            if (order.knowsFloats())
                return formatted("%.9g", double{order.getFloat(bytes)});
            break;
        case Form::doubles:
            if (order.knowsFloats())
                return formatted("%.17g", order.getDouble(bytes));
            break;
        case Form::bytes:
        case Form::text:
        case Form::name:
            break;
    }
    return hexOf(bytes, sizeOf(form), "");
}

std::string valuesOf(const Field& field, std::size_t most, const ByteOrder& order) {
    std::string text;
    for (std::size_t i = 0; i < std::min(field.elementCount, most); ++i)
        text += (i == 0 ? "" : " ") +
                valueOf(field.form, field.elements + i * sizeOf(field.form), order);
    return text + (field.elementCount > most ? " ..." : "");
}

std::size_t sizeOfText(const Field& field) {
    const bool hasNul = field.isLast && field.size != 0 && field.bytes[field.size - 1] == '\0';
    return field.size - hasNul;
}

}  // namespace fxdump
