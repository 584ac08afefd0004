// fxStrKeysInternal.h - string keys and values as containers hold them.
#pragma once

#include <cstdint>
#include <cstring>
#include <new>

#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxStrHashInternal.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

/// The string at `p`.
inline const fxStr& fxStrAt(const void* p) { return *static_cast<const fxStr*>(p); }

/// compare() of the strings at `a` and `b`.
inline int fxCompareStrs(const void* a, const void* b) {
    return std::strcmp(fxStrAt(a).c_str(), fxStrAt(b).c_str());
}

/// Makes a copy of the string at `from` in raw memory; a null target is left.
inline void fxCopyStr(const void* from, void* to) {
    if (to)
        new (to) fxStr(fxStrAt(from));
}

inline void fxDestroyStr(void* p) { static_cast<fxStr*>(p)->~fxStr(); }

/// Transcribes the string at `p`; while reading, that is raw memory. Fails when
/// the sizes in a stream put it where no string can be.
inline unsigned char fxXdrStr(fxTranscriber& t, void* p) {
    if (reinterpret_cast<std::uintptr_t>(p) % alignof(fxStr) != 0)
        return 0;
    if (t.isReading())
        new (p) fxStr(fxStr_type);
    return static_cast<fxStr*>(p)->xdr(t);
}
