#include "kelvofxds/pattern/fxSLinearPattern.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/str/fxStr.h"

namespace {
const int notFound = -1;

// By measurement: in search of these lengths memmem skips so much text that
// looking at all of it takes longer. Longer patterns it searches in another way.
const unsigned int firstForMemmem = 48;
const unsigned int lastForMemmem = 256;

unsigned int indexOf(char c) { return static_cast<unsigned char>(c); }

// Looks for one pattern in one text. Fast as long as few places look like the
// pattern; hands over to memmem, whose time is linear whatever the bytes, when
// too many turn out not to be it.
class LinearSearch {
public:
    // Requires: 2 <= n <= length.
    LinearSearch(const char* p, unsigned int n, const char* t, unsigned int length)
        : pattern(p), patternLength(n), text(t), places(length - n + 1), wasted(0) {}

    // The first occurrence; null if there is none. `skip` is the pattern's.
    const char* run(const int* skip);

private:
    static const unsigned int headLength = 16;
    static const unsigned int patience = 4;  // bytes compared in vain for each byte searched

    bool isAt(const char* place) {
        const unsigned int head = patternLength < headLength ? patternLength : headLength;
        if (std::memcmp(place, pattern, head) == 0) {
            const unsigned int rest = patternLength - head;
            if (rest == 0 || std::memcmp(place + head, pattern + head, rest) == 0)
                return true;
            wasted += rest;
        }
        wasted += head;
        return false;
    }

    bool isTooSlow(unsigned int place) const {
        return wasted > patience * (std::uint64_t(place) + patternLength);
    }

    // For the places from `place` on.
    const char* byMemmem(unsigned int place) const {
        const std::size_t rest = std::size_t(places - place) + patternLength - 1;
        return static_cast<const char*>(::memmem(text + place, rest, pattern, patternLength));
    }

    const char* pattern;
    unsigned int patternLength;
    const char* text;
    unsigned int places;   // where the pattern can begin: 0 to places - 1
    std::uint64_t wasted;  // bytes compared of what was not the pattern
};

#ifdef __SSE2__
// The 16 places from `block` on whose first and last bytes are the pattern's.
class EndsMask {
public:
    EndsMask(const char* pattern, unsigned int n)
        : first(_mm_set1_epi8(pattern[0])), last(_mm_set1_epi8(pattern[n - 1])), toLast(n - 1) {}

    __m128i at(const char* block) const {
        return _mm_and_si128(_mm_cmpeq_epi8(first, load(block)),
                             _mm_cmpeq_epi8(last, load(block + toLast)));
    }

private:
    static __m128i load(const char* from) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    }

    __m128i first, last;
    unsigned int toLast;
};

// Looks at all places whose first and last bytes are the pattern's, 32 at once.
const char* LinearSearch::run(const int*) {
    const unsigned int half = 16, blockLength = 2 * half;
    const EndsMask ends(pattern, patternLength);
    unsigned int place = 0;
    for (; places - place >= blockLength; place += blockLength) {
        const char* block = text + place;
        const __m128i low = ends.at(block), high = ends.at(block + half);
        if (_mm_movemask_epi8(_mm_or_si128(low, high)) == 0)
            continue;
        std::uint32_t candidates = static_cast<std::uint32_t>(_mm_movemask_epi8(low)) |
                                   static_cast<std::uint32_t>(_mm_movemask_epi8(high)) << half;
        for (; candidates != 0; candidates &= candidates - 1) {
            const char* candidate = block + __builtin_ctz(candidates);
            if (isAt(candidate))
                return candidate;
        }
        if (isTooSlow(place))
            return byMemmem(place + blockLength);
    }
    for (; place < places; ++place) {
        if (text[place] == pattern[0] && isAt(text + place))
            return text + place;
    }
    return nullptr;
}
#else
// Horspool's way: the byte that the text has below the pattern's last one says
// how far the pattern can be moved.
const char* LinearSearch::run(const int* skip) {
    const unsigned int toLast = patternLength - 1;
    for (unsigned int place = 0; place < places;) {
        const char c = text[place + toLast];
        if (c == pattern[toLast] && isAt(text + place))
            return text + place;
        place += static_cast<unsigned int>(skip[indexOf(c)]);
        if (place < places && isTooSlow(place))
            return byMemmem(place);
    }
    return nullptr;
}
#endif

}  // namespace

fxSLinearPattern::fxSLinearPattern(const char* s, unsigned int n) { constructor(s, n); }

fxSLinearPattern::fxSLinearPattern(const fxStr& s) { constructor(s.c_str(), s.length()); }

fxSLinearPattern::~fxSLinearPattern() { delete[] pattern; }

void fxSLinearPattern::constructor(const char* s, unsigned int n) {
    if (!s)
        n = 0;
    else if (n == 0)
        n = static_cast<unsigned int>(std::strlen(s));
    // Called as a function, since a new expression checks the size by throwing.
    pattern = static_cast<char*>(::operator new[](n, std::nothrow));
    if (!pattern)
        fxOutOfMemory();
    patternLength = n;
    if (n != 0)
        std::memcpy(pattern, s, n);

    for (int& shift : skip)
        shift = static_cast<int>(n);
    for (unsigned int i = 0; i + 1 < n; ++i)
        skip[indexOf(pattern[i])] = static_cast<int>(n - 1 - i);
}

int fxSLinearPattern::findBuffer(const char* text, unsigned int length) const {
    if (patternLength == 0)
        return 0;
    if (length > INT_MAX)
        length = INT_MAX;
    FX_CHECK_NOT_NULL_OF("fxSLinearPattern", text, length);
    if (patternLength > length)
        return notFound;
    const void* found;
    if (patternLength == 1)
        found = std::memchr(text, pattern[0], length);
    else if (patternLength >= firstForMemmem && patternLength <= lastForMemmem)
        found = ::memmem(text, length, pattern, patternLength);
    else
        found = LinearSearch(pattern, patternLength, text, length).run(skip);
    return found ? static_cast<int>(static_cast<const char*>(found) - text) : notFound;
}

int fxSLinearPattern::findEndBuffer(const char* text, unsigned int length) const {
    const int start = findBuffer(text, length);
    return start < 0 ? 0 : static_cast<int>(static_cast<unsigned int>(start) + patternLength);
}

int fxSLinearPattern::bracketBuffer(const char* text, unsigned int length, int& start,
                                    int& end) const {
    start = findBuffer(text, length);
    const bool found = start >= 0;
    end = found ? static_cast<int>(static_cast<unsigned int>(start) + patternLength) : 0;
    return found;
}
