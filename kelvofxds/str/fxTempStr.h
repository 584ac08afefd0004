// fxTempStr.h - the temporary that joins texts, and operator|.
#pragma once

#include "kelvofxds/core/fxExport.h"

class fxStr;

/// What operator| returns: a text of up to 99 bytes inline, a longer one on
/// the heap, so that `a | b | "c"` needs no allocation before the result is
/// assigned to an fxStr.
///
/// Meant to live within one expression. Owns its heap block, if any. Running
/// out of memory ends the process ("out of memory"), and so does a size that
/// does not fit a word ("fxStr: size too large").
class FX_EXPORT fxTempStr {
public:
    /// The `aLength` bytes of `a` followed by the `bLength` bytes of `b`.
    fxTempStr(const char* a, unsigned int aLength, const char* b, unsigned int bLength);
    /// Deliberate: a copy of exactly 99 bytes is on the heap, although a text
    /// built at that length is inline.
    fxTempStr(const fxTempStr& other);
    fxTempStr& operator=(const fxTempStr&) = delete;
    ~fxTempStr();

    /// Appends `n` bytes of `s` in place and returns this object. Growth is to
    /// the exact size.
    fxTempStr& concat(const char* s, unsigned int n);

    /// Bytes of text.
    unsigned int length() const { return slength - 1; }
    /// NUL-terminated; valid until the next change.
    const char* c_str() const { return data; }

private:
    friend struct fxTempStrLayout;  // tests/str/fxTempStr_test.cpp

    bool isInline() const { return data == inlineBuffer; }

    char inlineBuffer[100];
    char* data;            // inlineBuffer or a malloced block
    unsigned int slength;  // bytes with the terminating NUL
};

/// `a` followed by `b`. A null text is empty.
FX_EXPORT fxTempStr operator|(const fxStr& a, const fxStr& b);
FX_EXPORT fxTempStr operator|(const fxStr& a, const char* b);
FX_EXPORT fxTempStr operator|(const char* a, const fxStr& b);

/// Appends `b` to `a` itself and returns it, so that a chain is built in one
/// place.
/// Deliberate: the left operand is changed although it is const.
FX_EXPORT fxTempStr& operator|(const fxTempStr& a, const fxStr& b);
FX_EXPORT fxTempStr& operator|(const fxTempStr& a, const char* b);
