// fxRegStartsInternal.h - where in a text a match can begin.
#pragma once

#include <cstdint>
#include <cstring>

/// The bytes that something can match; NUL stands for the subject's end.
struct fxRegByteSet {
    std::uint32_t words[8];

    void add(unsigned char c) { words[c / 32] |= std::uint32_t(1) << (c % 32); }
    bool has(unsigned char c) const { return words[c / 32] >> (c % 32) & 1; }
    void add(const fxRegByteSet& other) {
        for (unsigned int i = 0; i < 8; ++i)
            words[i] |= other.words[i];
    }
    unsigned int count() const;
    /// Calls `use` with every byte.
    template <class Use>
    void each(Use use) const {
        for (unsigned int i = 0; i < 8; ++i) {
            for (std::uint32_t rest = words[i]; rest != 0; rest &= rest - 1)
                use(i * 32 + static_cast<unsigned int>(__builtin_ctz(rest)));
        }
    }
    bool isDisjointFrom(const fxRegByteSet& other) const;
    bool operator==(const fxRegByteSet& other) const {
        return std::memcmp(words, other.words, sizeof words) == 0;
    }
};

/// Where the NUL of a text is, as far as that has been looked for.
class fxRegTextEnd {
public:
    explicit fxRegTextEnd(const char* text) : known(text), window(256), isEnd(false) {}

    /// Looks further; false if the NUL is at `known` already. What lies far behind
    /// a match is never looked at.
    bool extend();
    /// Looks further at once from now on.
    void expectMuch() { window = window < much ? much : window; }
    /// Like extend, by one byte.
    bool passOne() {
        isEnd = isEnd || *known == '\0';
        known += !isEnd;
        return !isEnd;
    }
    const char* get() const { return known; }

private:
    static const unsigned int much = 4096, most = 8192;

    const char* known;  // no NUL before it
    unsigned int window;
    bool isEnd;
};

/// Finds the places that begin like a match.
class fxRegStarts {
public:
    static const unsigned int mostPrefixes = 8;
    static const unsigned int depth = 4;  // bytes of the longest prefix

    /// Every place is one.
    void clear() { kind = anywhere; }
    /// No place is one.
    void setNowhere() {
        kind = nowhere;
        isOneByte = false;
    }

    /// Those that begin with a byte of `first`, unless it is NUL before one of `second`.
    void assign(const fxRegByteSet& first, const fxRegByteSet& second);

    /// Forgets the prefixes.
    void clearPrefixes();
    /// Adds one of 1 to `depth` bytes. False if there are too many.
    bool addPrefix(const char* bytes, unsigned int length);
    /// From now on the places are those with one of the prefixes.
    /// Requires: all of them have been added, and begin with no NUL.
    void usePrefixes();

    bool isAnywhere() const { return kind == anywhere; }
    /// Whether the places are those of this byte, whatever is behind it.
    bool isByte(char c) const {
        return kind != anywhere && isOneByte && static_cast<char>(prefixes[0].byte[0][0]) == c;
    }

    /// The first such place from `at` on, or null. `end` is that of this text, the
    /// same in all calls for it.
    const char* next(const char* at, fxRegTextEnd& end) const;

private:
    enum Kind : unsigned char { anywhere, nowhere, byTable, byPrefix };
    enum Flag : unsigned char { starts = 1, follows = 2, stops = 4 };
    static const unsigned int block = 16;  // places looked at at once

    // Each byte 16 times; where any byte will do, all bits of `any` are set.
    struct Prefix {
        unsigned char byte[depth][block], any[depth][block];
    };

    bool isStart(const char* at) const {
        const unsigned char first = static_cast<unsigned char>(at[0]);
        return flags[first] & starts &&
               (first == 0 || flags[static_cast<unsigned char>(at[1])] & follows);
    }
    const char* nextByte(const char* at) const;
    const char* nextByTable(const char* at) const;
    const char* nextByPrefix(const char* at, const char* end) const;
    template <unsigned int length>
    unsigned int startsOf(const char* at) const;
    template <unsigned int length>
    const char* nextBlock(const char* at, const char* end) const;
    const char* skipWithoutByte(const char* at, const char* end) const;

    Kind kind;
    bool isOneByte;      // one prefix, of one byte
    mutable bool isFar;  // it was, when sought last; strchr is best nearby
    unsigned int prefixCount;
    unsigned int longest;  // prefix, in bytes
    Prefix prefixes[mostPrefixes];
    unsigned char flags[256];  // Flag, by byte
};
