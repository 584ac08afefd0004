// fxStrSearch.cpp - searching, tokenising, comparing and hashing strings.

#include <cstdint>
#include <cstring>

#include "kelvofxds/str/fxStr.h"

namespace {

// Decides whether a byte is one given byte.
class OneByte {
public:
    explicit OneByte(char byte) : wanted(byte) {}
    bool has(char c) const { return c == wanted; }

    // The first matching byte in [from, end), or `end`.
    const char* findIn(const char* from, const char* end) const {
        const void* found = std::memchr(from, wanted, static_cast<std::size_t>(end - from));
        return found ? static_cast<const char*>(found) : end;
    }

private:
    char wanted;
};

// Decides whether a byte is one of a set; NUL can be a member.
class ByteSet {
public:
    ByteSet(const char* set, unsigned int n) : bits() {
        if (n == 0)
            n = static_cast<unsigned int>(std::strlen(set));
        for (unsigned int i = 0; i < n; ++i) {
            const unsigned char c = static_cast<unsigned char>(set[i]);
            bits[c / 32] |= std::uint32_t(1) << (c % 32);
        }
    }

    bool has(char byte) const {
        const unsigned char c = static_cast<unsigned char>(byte);
        return (bits[c / 32] >> (c % 32)) & 1;
    }

    const char* findIn(const char* from, const char* end) const {
        while (from < end && !has(*from))
            ++from;
        return from;
    }

private:
    std::uint32_t bits[256 / 32];
};

template <class Matcher>
unsigned int nextOf(const fxStr& s, unsigned int pos, const Matcher& matcher) {
    if (pos >= s.length())
        return s.length();
    const char* text = s.c_str();
    return static_cast<unsigned int>(matcher.findIn(text + pos, text + s.length()) - text);
}

template <class Matcher>
unsigned int skipOf(const fxStr& s, unsigned int pos, const Matcher& matcher) {
    if (pos >= s.length())
        return s.length();
    const char* text = s.c_str();
    while (pos < s.length() && matcher.has(text[pos]))
        ++pos;
    return pos;
}

// Backward from `pos` - 1 to the first byte whose membership is `wanted`.
template <class Matcher>
unsigned int backwardTo(const fxStr& s, unsigned int pos, const Matcher& matcher, bool wanted) {
    if (pos > s.length())
        pos = s.length();
    const char* text = s.c_str();
    while (pos > 0 && matcher.has(text[pos - 1]) != wanted)
        --pos;
    return pos;
}

template <class Matcher>
fxStr tokenOf(const fxStr& s, unsigned int& pos, const Matcher& matcher) {
    const unsigned int end = nextOf(s, pos, matcher);
    const unsigned int start = pos < end ? pos : end;
    pos = skipOf(s, end, matcher);
    return fxStr(s.c_str() + start, end - start);
}

template <class Matcher>
fxStr tokenROf(const fxStr& s, unsigned int& pos, const Matcher& matcher) {
    const unsigned int end = pos < s.length() ? pos : s.length();
    const unsigned int start = backwardTo(s, end, matcher, true);
    pos = backwardTo(s, start, matcher, false);
    return fxStr(s.c_str() + start, end - start);
}

}  // namespace

unsigned int fxStr::next(unsigned int pos, char c) const { return nextOf(*this, pos, OneByte(c)); }

unsigned int fxStr::next(unsigned int pos, const char* set, unsigned int n) const {
    return nextOf(*this, pos, ByteSet(set, n));
}

unsigned int fxStr::nextR(unsigned int pos, char c) const {
    return backwardTo(*this, pos, OneByte(c), true);
}

unsigned int fxStr::nextR(unsigned int pos, const char* set, unsigned int n) const {
    return backwardTo(*this, pos, ByteSet(set, n), true);
}

unsigned int fxStr::skip(unsigned int pos, char c) const { return skipOf(*this, pos, OneByte(c)); }

unsigned int fxStr::skip(unsigned int pos, const char* set, unsigned int n) const {
    return skipOf(*this, pos, ByteSet(set, n));
}

unsigned int fxStr::skipR(unsigned int pos, char c) const {
    return backwardTo(*this, pos, OneByte(c), false);
}

unsigned int fxStr::skipR(unsigned int pos, const char* set, unsigned int n) const {
    return backwardTo(*this, pos, ByteSet(set, n), false);
}

fxStr fxStr::token(unsigned int& pos, char delimiter) const {
    return tokenOf(*this, pos, OneByte(delimiter));
}

fxStr fxStr::token(unsigned int& pos, const char* set, unsigned int n) const {
    return tokenOf(*this, pos, ByteSet(set, n));
}

fxStr fxStr::tokenR(unsigned int& pos, char delimiter) const {
    return tokenROf(*this, pos, OneByte(delimiter));
}

fxStr fxStr::tokenR(unsigned int& pos, const char* set, unsigned int n) const {
    return tokenROf(*this, pos, ByteSet(set, n));
}

fxStr fxStr::trim(const char* set) const {
    const ByteSet trimmed(set, 0);
    const unsigned int start = skipOf(*this, 0, trimmed);
    const unsigned int end = backwardTo(*this, length(), trimmed, false);
    return start < end ? extract(start, end - start) : fxStr();
}

fxStr fxStr::trimRight(const char* set) const { return extract(0, skipR(length(), set)); }

// Hashing. Words are little-endian on every host, since the values are stored.

namespace {
std::uint32_t wordAt(const unsigned char* s) {
    return std::uint32_t(s[0]) | std::uint32_t(s[1]) << 8 | std::uint32_t(s[2]) << 16 |
           std::uint32_t(s[3]) << 24;
}

// The first `n` bytes, 1 to 4, in the most significant bytes of a word.
std::uint32_t topBytes(const unsigned char* s, unsigned int n) {
    std::uint32_t word = 0;
    for (unsigned int i = 0; i < n; ++i)
        word = word >> 8 | std::uint32_t(s[i]) << 24;
    return word;
}
}  // namespace

unsigned int fxStr::hash() const {
    const unsigned int n = length();
    const auto* s = reinterpret_cast<const unsigned char*>(data);
    if (n >= 8)
        return wordAt(s + 4) << 3 ^ wordAt(s);
    if (n > 4)
        return topBytes(s, n - 4) << 3 ^ wordAt(s);
    return topBytes(s, n) << 3;
}

// Comparing.

namespace {
const char* textOf(const char* s) { return s ? s : ""; }

bool equal(const fxStr& a, const char* b, std::size_t bLength) {
    return a.length() == bLength && std::memcmp(a.c_str(), b, bLength) == 0;
}
}  // namespace

bool operator==(const fxStr& a, const fxStr& b) { return equal(a, b.c_str(), b.length()); }
bool operator==(const fxStr& a, const char* b) {
    return equal(a, textOf(b), std::strlen(textOf(b)));
}
bool operator==(const char* a, const fxStr& b) { return b == a; }
bool operator!=(const fxStr& a, const fxStr& b) { return !(a == b); }
bool operator!=(const fxStr& a, const char* b) { return !(a == b); }
bool operator!=(const char* a, const fxStr& b) { return !(b == a); }

int compare(const char* a, const char* b) { return std::strcmp(a, b); }
int compare(const fxStr& a, const char* b) { return std::strcmp(a.c_str(), b); }
int compare(const fxStr& a, const fxStr& b) { return std::strcmp(a.c_str(), b.c_str()); }

bool operator<(const fxStr& a, const fxStr& b) { return compare(a, b) < 0; }
bool operator<(const fxStr& a, const char* b) { return compare(a, b) < 0; }
bool operator<(const char* a, const fxStr& b) { return compare(b, a) > 0; }
bool operator<=(const fxStr& a, const fxStr& b) { return compare(a, b) <= 0; }
bool operator<=(const fxStr& a, const char* b) { return compare(a, b) <= 0; }
bool operator<=(const char* a, const fxStr& b) { return compare(b, a) >= 0; }
bool operator>(const fxStr& a, const fxStr& b) { return compare(a, b) > 0; }
bool operator>(const fxStr& a, const char* b) { return compare(a, b) > 0; }
bool operator>(const char* a, const fxStr& b) { return compare(b, a) < 0; }
bool operator>=(const fxStr& a, const fxStr& b) { return compare(a, b) >= 0; }
bool operator>=(const fxStr& a, const char* b) { return compare(a, b) >= 0; }
bool operator>=(const char* a, const fxStr& b) { return compare(b, a) <= 0; }
