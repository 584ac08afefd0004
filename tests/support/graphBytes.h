// graphBytes.h - graph streams made by hand.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

/// CRC-32C, bit by bit.
inline std::uint32_t slowChecksum(const std::string& bytes) {
    std::uint32_t state = 0xFFFFFFFF;
    for (const char c : bytes) {
        state ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            state = state >> 1 ^ (state & 1 ? 0x82F63B78U : 0);
    }
    return ~state;
}

/// A stream of records, written by a little-endian host, or by a big-endian one.
class GraphBytes {
public:
    explicit GraphBytes(bool big = false, const char* writer = "fxGraphWriter") : isBig(big) {
        text += writer;
        text += '\0';
        text += "ieee";
        text += '\0';
        text += number(0x1122, 2);
        text += number(0x33445566, 4);
        root = text.size();
    }

    /// A record with the shortest length field.
    GraphBytes& record(unsigned int tag, std::initializer_list<std::uint32_t> words = {},
                       const std::string& payload = "") {
        const std::size_t n = payload.size();
        const unsigned int lengthClass = n == 0 ? 0 : n < 256 ? 1 : n < 65536 ? 2 : 3;
        const unsigned int lengthBytes[] = {0, 1, 2, 4};
        text += static_cast<char>(tag | lengthClass << 6);
        text += little(static_cast<std::uint32_t>(n), lengthBytes[lengthClass]);
        for (const std::uint32_t word : words)
            text += little(word, 4);
        text += payload;
        return *this;
    }
    GraphBytes& type(std::uint32_t id, const std::string& name, std::uint32_t version = 1) {
        text += static_cast<char>(2 | 1 << 6);
        text += '\4';
        text += little(id, 4) + name + '\0' + number(version, 4);
        return *this;
    }
    /// The end of the root, with the right checksum or with another one.
    GraphBytes& end(std::uint32_t difference = 0) {
        const std::uint32_t sum = slowChecksum(text.substr(root)) ^ difference;
        text += '\x0F';
        text += little(sum, 4);
        root = text.size();
        return *this;
    }
    GraphBytes& raw(const std::string& bytes) {
        text += bytes;
        return *this;
    }

    /// A number in the writer's order.
    std::string number(std::uint32_t value, unsigned int n) const {
        std::string bytes;
        for (unsigned int i = 0; i < n; ++i)
            bytes += static_cast<char>(value >> 8 * (isBig ? n - 1 - i : i));
        return bytes;
    }
    std::string word(std::uint32_t value) const { return number(value, 4); }
    /// A string in place.
    std::string string(const std::string& value) const {
        const std::string length = word(static_cast<std::uint32_t>(value.size()) + 1);
        return value.empty() ? length : length + value + '\0';
    }

    const std::string& str() const { return text; }

private:
    static std::string little(std::uint32_t value, unsigned int n) {
        std::string bytes;
        for (unsigned int i = 0; i < n; ++i)
            bytes += static_cast<char>(value >> 8 * i);
        return bytes;
    }

    bool isBig;
    std::string text;
    std::size_t root;  // where it begins
};
