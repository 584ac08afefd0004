// streamBytes.h - writing down the bytes of a stream in a test.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

/// The bytes that `text` lists as pairs of hexadecimal digits; characters in
/// single quotes stand for themselves, blanks and bars only separate.
/// "02 02000000 'Obj' 00" is a type record.
inline std::string hex(const char* text) {
    std::string bytes;
    while (*text) {
        if (*text == ' ' || *text == '|') {
            ++text;
        } else if (*text == '\'') {
            const char* end = std::strchr(text + 1, '\'');
            bytes.append(text + 1, end);
            text = end + 1;
        } else {
            const char digits[] = {text[0], text[1], '\0'};
            bytes += static_cast<char>(std::stoi(digits, nullptr, 16));
            text += 2;
        }
    }
    return bytes;
}

/// `bytes` in hexadecimal, for comparisons that fail legibly.
inline std::string dump(const std::string& bytes) {
    std::string text;
    for (const char c : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02x ", static_cast<unsigned char>(c));
        text += digits;
    }
    return text;
}

/// A value's bytes in this host's memory, which is how payloads are written.
template <class Value>
std::string host(Value value) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(&bytes[0], &value, sizeof value);
    return bytes;
}

/// The same as a host of the opposite byte order has them.
template <class Value>
std::string foreign(Value value) {
    std::string bytes = host(value);
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

/// The same with the two bytes of every two swapped.
template <class Value>
std::string pairSwapped(Value value) {
    std::string bytes = host(value);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        std::swap(bytes[i], bytes[i + 1]);
    return bytes;
}

/// Four bytes, least significant first, as framing is on every host.
inline std::string word(std::uint32_t value) {
    std::string bytes;
    for (int i = 0; i < 4; ++i)
        bytes += static_cast<char>(value >> (8 * i));
    return bytes;
}

/// A run of `n` bytes that differ from their neighbours.
inline std::string run(unsigned int n) {
    std::string bytes;
    for (unsigned int i = 0; i < n; ++i)
        bytes += static_cast<char>('!' + i % 89);
    return bytes;
}

/// The stream header as a little-endian and as a big-endian host writes it.
inline std::string littleHeader() { return hex("'fxBinaryWriter' 00 'ieee' 00 2211 66554433"); }
inline std::string bigHeader() { return hex("'fxBinaryWriter' 00 'ieee' 00 1122 33445566"); }
/// As this host writes it.
inline std::string hostHeader() {
    return hex("'fxBinaryWriter' 00 'ieee' 00") + host<short>(0x1122) + host<long>(0x33445566);
}
