// byteOrder.h - numbers in the order of the host that wrote them.
#pragma once

#include <cstdint>

#include "kelvofxds/transcribe/fxBinaryFormatInternal.h"

namespace fxdump {

/// The order in which a writer has the bytes of its numbers, told by the marks in
/// the header. Its orders are seen from a little-endian host, whichever this is.
class ByteOrder {
public:
    ByteOrder() = default;
    /// `shortMark` and `longMark` are the 2 and the 4 bytes of the marks.
    ByteOrder(const char* shortMark, const char* longMark);

    bool knowsShorts() const { return shorts != fxBinaryFormat::Order::unknown; }
    bool knowsLongs() const { return longs != fxBinaryFormat::Order::unknown; }
    /// Floats and doubles are told for hosts that have all in one order.
    bool knowsFloats() const { return isLittle() || isBig(); }
    /// Such as "little-endian".
    const char* name() const;

    std::uint16_t getShort(const char* bytes) const;
    std::uint32_t getLong(const char* bytes) const;
    /// Requires: knowsFloats(), for these two.
    float getFloat(const char* bytes) const;
    double getDouble(const char* bytes) const;

private:
    bool isLittle() const {
        return shorts == fxBinaryFormat::Order::same && longs == fxBinaryFormat::Order::same;
    }
    bool isBig() const {
        return shorts == fxBinaryFormat::Order::bytesSwapped &&
               longs == fxBinaryFormat::Order::reversed;
    }

    fxBinaryFormat::Order shorts = fxBinaryFormat::Order::unknown;
    fxBinaryFormat::Order longs = fxBinaryFormat::Order::unknown;
};

}  // namespace fxdump
