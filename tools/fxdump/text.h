// text.h - bytes and numbers as people and programs read them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "tools/fxdump/byteOrder.h"
#include "tools/fxdump/view.h"

namespace fxdump {

/// Bytes of the UTF-8 character at `bytes`, 1 to 4; 0 if there is none.
std::size_t characterAt(const char* bytes, std::size_t n);

/// Whether all bytes are UTF-8, and none of them a control character but tabs and
/// line ends.
bool isText(const char* bytes, std::size_t n);
/// Whether all bytes are UTF-8, control characters included.
bool isUtf8(const char* bytes, std::size_t n);

/// `bytes` in double quotes on one line, with the escapes of C; of more than
/// `most` bytes the first ones and "...".
std::string quoted(const char* bytes, std::size_t n, std::size_t most);
/// `bytes` between double quotes as a string of JSON. What is not UTF-8 becomes
/// U+FFFD.
std::string jsonString(const std::string& bytes);
/// Pairs of hexadecimal digits with `separator` between them.
std::string hexOf(const char* bytes, std::size_t n, const char* separator);
/// The bytes that are printable, and dots for the others.
std::string printable(const char* bytes, std::size_t n);
/// Eight hexadecimal digits.
std::string hexWord(std::uint32_t value);
/// "1 byte", "2 bytes"; the plural is made with an s.
std::string counted(std::uint64_t n, const char* what);

/// The element at `bytes`, in decimal.
std::string valueOf(Form form, const char* bytes, const ByteOrder& order);
/// Up to `most` elements of a field, with blanks between them.
std::string valuesOf(const Field& field, std::size_t most, const ByteOrder& order);
/// Without the NUL at its end.
std::size_t sizeOfText(const Field& field);

}  // namespace fxdump
