// fxSLinearPattern.h - fixed bytes as a search pattern.
#pragma once

#include "kelvofxds/pattern/fxTextPattern.h"

class fxStr;

/// Finds a fixed run of bytes, NULs included; fxRegEx finds what varies.
///
/// Owns a copy of the pattern. A search reads no byte outside the text, which
/// needs no terminator, and takes O(length) for patterns of up to 256 bytes and
/// O(length + pattern) for longer ones, whatever the bytes are; far less when
/// few places look like the pattern. The pattern is searched in the first
/// INT_MAX bytes of the text only.
class FX_EXPORT fxSLinearPattern : public fxTextPattern {
public:
    /// A copy of the `n` bytes at `s`; 0 means strlen(s). A null `s` is an empty
    /// pattern. Running out of memory is fatal: "out of memory".
    explicit fxSLinearPattern(const char* s, unsigned int n = 0);
    /// The whole string, NULs included.
    explicit fxSLinearPattern(const fxStr& s);
    fxSLinearPattern(const fxSLinearPattern&) = delete;
    fxSLinearPattern& operator=(const fxSLinearPattern&) = delete;
    ~fxSLinearPattern() override;

    /// The offset of the first occurrence, -1 if there is none. An empty
    /// pattern occurs at 0 in every text.
    int findBuffer(const char* text, unsigned int length) const override;
    /// The offset one past the occurrence that findBuffer, called through the
    /// virtual table, finds; 0 if there is none.
    int findEndBuffer(const char* text, unsigned int length) const override;
    /// Both of these from one virtual call of findBuffer. Returns 1 if the
    /// pattern occurs, otherwise 0, with `start` negative and `end` 0.
    int bracketBuffer(const char* text, unsigned int length, int& start, int& end) const override;

private:
    friend struct fxSLinearPatternLayout;  // tests/pattern/fxSLinearPattern_test.cpp

    void constructor(const char* s, unsigned int n);

    int skip[256];               // by byte: how far the pattern can be moved when the text has it
                                 // below the pattern's last byte
    char* pattern;               // owned, from new[], not NUL-terminated
    unsigned int patternLength;  // bytes of `pattern`
};
