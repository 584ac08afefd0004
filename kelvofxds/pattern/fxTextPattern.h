// fxTextPattern.h - what every search pattern can be asked.
#pragma once

#include "kelvofxds/core/fxRCObj.h"

/// Something that occurs in texts: fxRegEx for regular expressions,
/// fxSLinearPattern for fixed bytes.
///
/// Shared by counting its holders, see fxRCObj. Searches change nothing in the
/// text; offsets are in bytes from `text`. The first occurrence is found. One
/// of which an offset is above INT_MAX counts as none.
class FX_EXPORT fxTextPattern : public fxRCObj {
public:
    ~fxTextPattern() override;

    /// Where the pattern begins in the `length` bytes of `text`; negative if it
    /// does not occur.
    virtual int findBuffer(const char* text, unsigned int length) const = 0;
    /// Where it ends, one past its last byte; 0 if it does not occur.
    virtual int findEndBuffer(const char* text, unsigned int length) const = 0;
    /// Sets `start` and `end` to what findBuffer and findEndBuffer answer.
    /// Returns 1 if the pattern occurs, 0 if not.
    virtual int bracketBuffer(const char* text, unsigned int length, int& start,
                              int& end) const = 0;
};
