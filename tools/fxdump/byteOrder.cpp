#include "tools/fxdump/byteOrder.h"

#include <cstring>

namespace fxdump {

ByteOrder::ByteOrder(const char* shortMark, const char* longMark)
    : shorts(fxBinaryFormat::orderOf(fxBinaryFormat::getLittle(shortMark, 2),
                                     fxBinaryFormat::shortMarks)),
      longs(fxBinaryFormat::orderOf(fxBinaryFormat::getWord(longMark), fxBinaryFormat::longMarks)) {
}

const char* ByteOrder::name() const {
    if (isLittle())
        return "little-endian";
    return isBig() ? "big-endian" : "mixed byte order";
}

std::uint16_t ByteOrder::getShort(const char* bytes) const {
    const std::uint32_t value = fxBinaryFormat::getLittle(bytes, 2);
    const bool isSwapped = shorts == fxBinaryFormat::Order::bytesSwapped;
    return static_cast<std::uint16_t>(isSwapped ? value >> 8 | value << 8 : value);
}

std::uint32_t ByteOrder::getLong(const char* bytes) const {
    const std::uint32_t value = fxBinaryFormat::getWord(bytes);
    const std::uint32_t swapped = (value >> 8 & 0x00FF00FF) | (value & 0x00FF00FF) << 8;
    switch (longs) {
        case fxBinaryFormat::Order::bytesSwapped:
            return swapped;
        case fxBinaryFormat::Order::halvesSwapped:
            return value >> 16 | value << 16;
        case fxBinaryFormat::Order::reversed:
            return swapped >> 16 | swapped << 16;
        case fxBinaryFormat::Order::same:
        case fxBinaryFormat::Order::unknown:
            break;
    }
    return value;
}

float ByteOrder::getFloat(const char* bytes) const {
    static_assert(sizeof(float) == 4, "a float is a word");
    const std::uint32_t bits = getLong(bytes);
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

double ByteOrder::getDouble(const char* bytes) const {
    static_assert(sizeof(double) == 8, "a double is two words");
    const std::uint64_t first = getLong(bytes);
    const std::uint64_t second = getLong(bytes + fxBinaryFormat::wordBytes);
    const std::uint64_t bits = isBig() ? first << 32 | second : second << 32 | first;
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

}  // namespace fxdump
