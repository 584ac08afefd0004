// script.h - bytes, of a fuzzer or at random, taken as decisions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

/// Ends the program where `condition` does not hold, which a fuzzer reports.
inline void require(bool condition) {
    if (!condition)
        std::abort();
}

/// Bytes that say what to do next, and with what. Behind their end all are zero.
class Script {
public:
    Script(const std::uint8_t* bytes, std::size_t size) : next(bytes), end(bytes + size) {}

    bool isOver() const { return next == end; }
    /// Whether there is another step, which is counted.
    bool goesOn() {
        steps += isOver() ? 0 : 1;
        return !isOver();
    }
    unsigned long stepsTaken() const { return steps; }
    unsigned int byte() { return next == end ? 0 : *next++; }
    unsigned int word() { return byte() << 8 | byte(); }
    /// A number below `n`, which is 1 to 256.
    unsigned int below(unsigned int n) { return byte() % n; }
    /// Up to `limit` bytes.
    std::string text(unsigned int limit) {
        std::string bytes(below(limit + 1), '\0');
        for (char& c : bytes)
            c = static_cast<char>(byte());
        return bytes;
    }
    /// A text without NULs, few of whose letters are different.
    std::string word(unsigned int limit, const char* letters) {
        const std::size_t n = std::char_traits<char>::length(letters);
        std::string bytes(below(limit + 1), '\0');
        for (char& c : bytes)
            c = letters[byte() % n];
        return bytes;
    }

private:
    const std::uint8_t* next;
    const std::uint8_t* end;
    unsigned long steps = 0;
};
