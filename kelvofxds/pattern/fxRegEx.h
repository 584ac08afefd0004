// fxRegEx.h - a regular expression as a search pattern.
#pragma once

#include "kelvofxds/pattern/fxTextPattern.h"

class fxStr;
struct fxregexp;

/// Finds what a regular expression matches; fxSLinearPattern is the better
/// choice for fixed bytes. docs/patterns.md describes the expressions.
///
/// Owns its compiled expression. The first match is the leftmost one and, of
/// those at one place, the one found first, not the longest: "a|ab" finds "a"
/// in "ab". The cost of a search is fxregexec's.
///
/// Deliberate: the `length` of a search is ignored; the text goes up to its
/// NUL, which it must have.
class FX_EXPORT fxRegEx : public fxTextPattern {
public:
    /// Compiles `expr`, up to its first NUL. One that is null or not a regular
    /// expression is not reported; it makes a pattern that finds nothing.
    explicit fxRegEx(const char* expr);
    explicit fxRegEx(const fxStr& expr);
    fxRegEx(const fxRegEx&) = delete;
    fxRegEx& operator=(const fxRegEx&) = delete;
    ~fxRegEx() override;

    /// The offset of the first match; -1 if there is none, -2 if the expression
    /// did not compile.
    int findBuffer(const char* text, unsigned int length) const override;
    /// The offset one past the end of the first match; 0 if there is none or
    /// the expression did not compile.
    int findEndBuffer(const char* text, unsigned int length) const override;
    /// Both of these at once. Returns 1 if there is a match, otherwise 0.
    int bracketBuffer(const char* text, unsigned int length, int& start, int& end) const override;

private:
    friend struct fxRegExLayout;  // tests/pattern/fxRegEx_test.cpp

    fxregexp* expression;  // owned, from malloc; null if it did not compile
};

/// True if `s` has at least one of the bytes . + * ^ $ ( ) { } [ ] and so, as a
/// pattern, needs an fxRegEx. False for null. O(length).
/// Deliberate: braces count although fxRegEx takes them literally; "|", "?" and
/// the backslash do not count.
FX_EXPORT bool fxIsRegEx(const char* s);
