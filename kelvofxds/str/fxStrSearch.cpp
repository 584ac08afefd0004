// fxStrSearch.cpp - searching, tokenising, comparing and hashing strings.

#include <cstdint>
#include <cstring>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxStrCheckedInternal.h"
#include "kelvofxds/str/fxStrHashInternal.h"

namespace {

// Decides whether a byte is one given byte.
class OneByte {
public:
    explicit OneByte(char byte) : wanted(byte) {}
    bool has(char c) const { return c == wanted; }

    // The first matching byte in [from, end), or `end`. A few bytes are looked
    // at before the C library is called: words are short.
    const char* findIn(const char* from, const char* end) const {
        const int nearStart = 12;
        for (int i = 0; i < nearStart; ++i, ++from) {
            if (from == end || *from == wanted)
                return from;
        }
        const void* found = std::memchr(from, wanted, static_cast<std::size_t>(end - from));
        return found ? static_cast<const char*>(found) : end;
    }

    // One past the last matching byte in [start, end), or `start`. It is mostly
    // near the end, where a call would cost more than the search.
    const char* lastIn(const char* start, const char* end) const {
        const int nearEnd = 8;
        for (int i = 0; i < nearEnd; ++i) {
            if (end == start || end[-1] == wanted)
                return end;
            --end;
        }
        return lastFarFrom(start, end);
    }

private:
    [[gnu::noinline]] const char* lastFarFrom(const char* start, const char* end) const {
        const void* found = ::memrchr(start, wanted, static_cast<std::size_t>(end - start));
        return found ? static_cast<const char*>(found) + 1 : start;
    }

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

    const char* lastIn(const char* start, const char* end) const {
        while (end > start && !has(end[-1]))
            --end;
        return end;
    }

private:
    std::uint32_t bits[256 / 32];
};

// The same for a set that is a NUL-terminated text, in a text that ends in a
// NUL: the C library looks at many bytes at once, though not beyond a NUL.
class TextSet {
public:
    explicit TextSet(const char* members) : set(members) {}

    const char* findIn(const char* from, const char* end) const {
        from += std::strcspn(from, set);
        return from < end && *from == '\0' ? ByteSet(set, 0).findIn(from, end) : from;
    }

private:
    const char* set;
};

// A set of `n` bytes as a NUL-terminated text, if it is a short one without
// NULs.
class TextCopy {
public:
    TextCopy(const char* set, unsigned int n) : isMade(n < sizeof text) {
        if (!isMade)
            return;
        std::memcpy(text, set, n);
        text[n] = '\0';
        isMade = std::memchr(text, '\0', n) == nullptr;
    }
    explicit operator bool() const { return isMade; }
    const char* c_str() const { return text; }

private:
    char text[32];
    bool isMade;
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

// Backward from `pos` - 1 to the first byte that matches.
template <class Matcher>
unsigned int nextROf(const fxStr& s, unsigned int pos, const Matcher& matcher) {
    if (pos > s.length())
        pos = s.length();
    const char* text = s.c_str();
    return static_cast<unsigned int>(matcher.lastIn(text, text + pos) - text);
}

// Backward from `pos` - 1 to the first byte that does not.
template <class Matcher>
unsigned int skipROf(const fxStr& s, unsigned int pos, const Matcher& matcher) {
    if (pos > s.length())
        pos = s.length();
    const char* text = s.c_str();
    while (pos > 0 && matcher.has(text[pos - 1]))
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
    const unsigned int start = nextROf(s, end, matcher);
    pos = skipROf(s, start, matcher);
    return fxStr(s.c_str() + start, end - start);
}

}  // namespace

unsigned int fxStr::next(unsigned int pos, char c) const {
    FX_CHECK_STR(*this);
    return nextOf(*this, pos, OneByte(c));
}

unsigned int fxStr::next(unsigned int pos, const char* set, unsigned int n) const {
    FX_CHECK_STR(*this);
    FX_CHECK_NOT_NULL("fxStr", set);
    if (n == 0)
        return nextOf(*this, pos, TextSet(set));
    const TextCopy copy(set, n);
    return copy ? nextOf(*this, pos, TextSet(copy.c_str())) : nextOf(*this, pos, ByteSet(set, n));
}

unsigned int fxStr::nextR(unsigned int pos, char c) const {
    FX_CHECK_STR(*this);
    return nextROf(*this, pos, OneByte(c));
}

unsigned int fxStr::nextR(unsigned int pos, const char* set, unsigned int n) const {
    FX_CHECK_STR(*this);
    FX_CHECK_NOT_NULL("fxStr", set);
    return nextROf(*this, pos, ByteSet(set, n));
}

unsigned int fxStr::skip(unsigned int pos, char c) const {
    FX_CHECK_STR(*this);
    return skipOf(*this, pos, OneByte(c));
}

unsigned int fxStr::skip(unsigned int pos, const char* set, unsigned int n) const {
    FX_CHECK_STR(*this);
    FX_CHECK_NOT_NULL("fxStr", set);
    return skipOf(*this, pos, ByteSet(set, n));
}

unsigned int fxStr::skipR(unsigned int pos, char c) const {
    FX_CHECK_STR(*this);
    return skipROf(*this, pos, OneByte(c));
}

unsigned int fxStr::skipR(unsigned int pos, const char* set, unsigned int n) const {
    FX_CHECK_STR(*this);
    FX_CHECK_NOT_NULL("fxStr", set);
    return skipROf(*this, pos, ByteSet(set, n));
}

fxStr fxStr::token(unsigned int& pos, char delimiter) const {
    FX_CHECK_STR(*this);
    return tokenOf(*this, pos, OneByte(delimiter));
}

fxStr fxStr::token(unsigned int& pos, const char* set, unsigned int n) const {
    FX_CHECK_STR(*this);
    FX_CHECK_NOT_NULL("fxStr", set);
    return tokenOf(*this, pos, ByteSet(set, n));
}

fxStr fxStr::tokenR(unsigned int& pos, char delimiter) const {
    FX_CHECK_STR(*this);
    return tokenROf(*this, pos, OneByte(delimiter));
}

fxStr fxStr::tokenR(unsigned int& pos, const char* set, unsigned int n) const {
    FX_CHECK_STR(*this);
    FX_CHECK_NOT_NULL("fxStr", set);
    return tokenROf(*this, pos, ByteSet(set, n));
}

fxStr fxStr::trim(const char* set) const {
    FX_CHECK_STR(*this);
    FX_CHECK_NOT_NULL("fxStr", set);
    const ByteSet trimmed(set, 0);
    const unsigned int start = skipOf(*this, 0, trimmed);
    const unsigned int end = skipROf(*this, length(), trimmed);
    return start < end ? extract(start, end - start) : fxStr();
}

fxStr fxStr::trimRight(const char* set) const {
    FX_CHECK_STR(*this);
    FX_CHECK_NOT_NULL("fxStr", set);
    return extract(0, skipR(length(), set));
}

unsigned int fxStr::hash() const {
    FX_CHECK_STR(*this);
    return fxHashStr(*this);
}

// Comparing.

namespace {
const char* textOf(const char* s) { return s ? s : ""; }

// Short texts are compared by words, of which the last may overlap the one
// before it.
inline bool bytesAreEqual(const char* a, const char* b, std::size_t n) {
    using Word = std::uint32_t;
    const auto wordAt = [](const char* from) {
        Word word;
        std::memcpy(&word, from, sizeof word);
        return word;
    };
    const std::size_t few = 32;
    if (n < sizeof(Word) || n > few)
        return std::memcmp(a, b, n) == 0;
    const std::size_t last = n - sizeof(Word);
    for (std::size_t i = 0; i < last; i += sizeof(Word)) {
        if (wordAt(a + i) != wordAt(b + i))
            return false;
    }
    return wordAt(a + last) == wordAt(b + last);
}

bool equal(const fxStr& a, const char* b, std::size_t bLength) {
    return a.length() == bLength && bytesAreEqual(a.c_str(), b, bLength);
}
}  // namespace

bool operator==(const fxStr& a, const fxStr& b) {
    FX_CHECK_STR(a);
    FX_CHECK_STR(b);
    return equal(a, b.c_str(), b.length());
}
bool operator==(const fxStr& a, const char* b) {
    FX_CHECK_STR(a);
    return equal(a, textOf(b), std::strlen(textOf(b)));
}
bool operator==(const char* a, const fxStr& b) { return b == a; }
bool operator!=(const fxStr& a, const fxStr& b) { return !(a == b); }
bool operator!=(const fxStr& a, const char* b) { return !(a == b); }
bool operator!=(const char* a, const fxStr& b) { return !(b == a); }

int compare(const char* a, const char* b) { return std::strcmp(textOf(a), textOf(b)); }
int compare(const fxStr& a, const char* b) {
    FX_CHECK_STR(a);
    return std::strcmp(a.c_str(), textOf(b));
}
int compare(const fxStr& a, const fxStr& b) {
    FX_CHECK_STR(a);
    FX_CHECK_STR(b);
    return std::strcmp(a.c_str(), b.c_str());
}

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
