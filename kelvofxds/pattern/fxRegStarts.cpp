// fxRegStarts.cpp - where in a text a match can begin; see fxRegStartsInternal.h.

#include "kelvofxds/pattern/fxRegStartsInternal.h"

#include <cstddef>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {
// Whether a block of places can be looked at at once.
#ifdef __SSE2__
const bool hasBlocks = true;
#else
const bool hasBlocks = false;
#endif
}  // namespace

unsigned int fxRegByteSet::count() const {
    unsigned int bits = 0;
    for (std::uint32_t word : words) {
        for (; word != 0; word &= word - 1)
            ++bits;
    }
    return bits;
}

bool fxRegByteSet::isDisjointFrom(const fxRegByteSet& other) const {
    std::uint32_t common = 0;
    for (unsigned int i = 0; i < 8; ++i)
        common |= words[i] & other.words[i];
    return common == 0;
}

void fxRegStarts::assign(const fxRegByteSet& first, const fxRegByteSet& second) {
    kind = byTable;
    isOneByte = false;
    std::memset(flags, 0, sizeof flags);
    const auto flag = [this](Flag added) {
        return [=](unsigned int c) { flags[c] = static_cast<unsigned char>(flags[c] | added); };
    };
    first.each(flag(starts));
    second.each(flag(follows));
    flags[0] |= stops;
}

void fxRegStarts::clearPrefixes() { prefixCount = longest = 0; }

bool fxRegStarts::addPrefix(const char* bytes, unsigned int length) {
    if (prefixCount == mostPrefixes)
        return false;
    Prefix& added = prefixes[prefixCount++];
    for (unsigned int i = 0; i < depth; ++i) {
        std::memset(added.byte[i], i < length ? bytes[i] : 0, block);
        std::memset(added.any[i], i < length ? 0 : 0xFF, block);
    }
    if (length > longest)
        longest = length;
    return true;
}

void fxRegStarts::usePrefixes() {
    isOneByte = prefixCount == 1 && longest == 1;
    isFar = false;
    if (isOneByte || hasBlocks)
        kind = byPrefix;
}

bool fxRegTextEnd::extend() {
    if (isEnd)
        return false;
    // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker): a subject is never null.
    const std::size_t length = strnlen(known, window);
    isEnd = length < window;
    known += length;
    window = window < most ? window * 4 : most;
    return length != 0;
}

const char* fxRegStarts::next(const char* at, fxRegTextEnd& end) const {
    if (kind == anywhere)
        return at;
    if (kind == nowhere)
        return nullptr;
    if (kind == byTable)
        return nextByTable(at);
    if (isOneByte && !(isFar && hasBlocks))
        return nextByte(at);
    // Most are near, and texts short.
    const unsigned int peeked = isFar ? 0 : 4;
    for (unsigned int i = 0; at == end.get() && i < peeked; ++i) {
        if (isStart(at))
            return at;
        if (!end.passOne())
            return nullptr;
        ++at;
    }
    if (isFar)
        end.expectMuch();
    do {
        if (at < end.get()) {
            if (const char* found = nextByPrefix(at, end.get()))
                return found;
            at = end.get();
        }
    } while (end.extend());
    return nullptr;
}

const char* fxRegStarts::nextByte(const char* at) const {
    const std::ptrdiff_t far = 1024;
    const char* found = std::strchr(at, static_cast<char>(prefixes[0].byte[0][0]));
    if (!found || found - at > far)
        isFar = strnlen(at, far) == far;
    return found;
}

const char* fxRegStarts::nextByTable(const char* at) const {
    for (;; ++at) {
        while (!(flags[static_cast<unsigned char>(*at)] & (starts | stops)))
            ++at;
        if (isStart(at))
            return at;
        if (*at == '\0')
            return nullptr;
    }
}

#ifdef __SSE2__
namespace {
__m128i load(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }
}  // namespace

// Of the 16 places from `at` on, a bit for each that begins with the first
// `length` bytes of a prefix.
template <unsigned int length>
inline unsigned int fxRegStarts::startsOf(const char* at) const {
    __m128i hits = _mm_setzero_si128();
    for (unsigned int i = 0; i < prefixCount; ++i) {
        const Prefix& prefix = prefixes[i];
        __m128i same = _mm_cmpeq_epi8(load(at), load(prefix.byte[0]));
        for (unsigned int k = 1; k < length; ++k) {
            const __m128i here = _mm_cmpeq_epi8(load(at + k), load(prefix.byte[k]));
            same = _mm_and_si128(same, _mm_or_si128(here, load(prefix.any[k])));
        }
        hits = _mm_or_si128(hits, same);
    }
    return static_cast<unsigned int>(_mm_movemask_epi8(hits));
}

// Skips 64 places at once in which the only byte is not.
const char* fxRegStarts::skipWithoutByte(const char* at, const char* end) const {
    const __m128i byte = load(prefixes[0].byte[0]);
    const auto isByteAt = [&](const char* place) { return _mm_cmpeq_epi8(load(place), byte); };
    const std::ptrdiff_t blocks = 4 * block;
    for (; end - at >= blocks; at += blocks) {
        const __m128i first = _mm_or_si128(isByteAt(at), isByteAt(at + block));
        const __m128i second = _mm_or_si128(isByteAt(at + 2 * block), isByteAt(at + 3 * block));
        if (_mm_movemask_epi8(_mm_or_si128(first, second)) != 0)
            break;
    }
    return at;
}

// Sixteen places at once; the last block overlaps the one before. The byte at
// `end` can be read.
template <unsigned int length>
const char* fxRegStarts::nextBlock(const char* at, const char* end) const {
    const std::ptrdiff_t read = block + length - 2;  // from a place to the last byte needed
    if (end - at >= read) {
        const char* const last = end - read;
        // One prefix is rare: more of it is looked at only where it begins.
        const bool isRare = length > 2 && prefixCount == 1;
        for (;;) {
            if (!isRare || startsOf<2>(at) != 0) {
                if (const unsigned int hits = startsOf<length>(at))
                    return at + __builtin_ctz(hits);
            }
            if (at == last)
                break;
            at = last - at < std::ptrdiff_t(block) ? last : at + block;
        }
        at += block;
    }
    for (; at < end; ++at) {
        if (isStart(at))
            return at;
    }
    return nullptr;
}

const char* fxRegStarts::nextByPrefix(const char* at, const char* end) const {
    if (longest == 1)
        return nextBlock<1>(isOneByte ? skipWithoutByte(at, end) : at, end);
    return longest == 2 ? nextBlock<2>(at, end) : nextBlock<depth>(at, end);
}
#else
const char* fxRegStarts::nextByPrefix(const char*, const char*) const { return nullptr; }
#endif
