// fxStrCheckedInternal.h - whether a string is whole, for the checked build.
#pragma once

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/str/fxStr.h"

#ifdef KELVOFXDS_CHECKED

/// Ends the process in `operation` where the string has been destroyed, its text is still to be
/// read, or somebody has written where no text is: into the string that all empty ones share, or
/// behind the end.
inline void fxCheckStr(const char* operation, const fxStr& s) {
    const char* const owner = "fxStr";
    const char* const text = s.c_str();
    const unsigned int n = s.length();
    if (fxStr::emptyString != '\0')
        fxMisuse::says(owner, operation,
                       "emptyString is byte %d: something was written to an empty string",
                       static_cast<unsigned char>(fxStr::emptyString));
    if (text == &fxMisuse::endedText)
        fxMisuse::says(owner, operation, "the string has been destroyed already");
    if (n == 0)
        return;
    if (!text || text == &fxStr::emptyString)
        fxMisuse::says(owner, operation,
                       "the text is not there before the reader has finished the root object");
    if (text[n] != '\0')
        fxMisuse::says(owner, operation,
                       "byte %d stands behind the text: something was written beyond length %u",
                       static_cast<unsigned char>(text[n]), n);
}

#define FX_CHECK_STR(string) fxCheckStr(__func__, string)

#else

#define FX_CHECK_STR(string) static_cast<void>(0)

#endif
