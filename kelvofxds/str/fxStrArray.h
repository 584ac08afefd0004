// fxStrArray.h - an array of strings.
#pragma once

#include "kelvofxds/containers/fxArrayFamily.h"
#include "kelvofxds/str/fxStr.h"

/// Owned strings, back to back. Elements are made, copied and ended as fxStr
/// objects; find and qsort compare by strcmp. cut moves its strings out of the
/// array, the other sub-arrays copy them.
///
/// Unlike the arrays of numbers it is sorted by true exchanges, and xdr
/// transcribes exactly its length, never the spare capacity. It is "ARRAY" in
/// streams, and its record is the one that answers to that name.
class FX_EXPORT fxStrArray : public fxArray {
    FX_ARRAY_MEMBERS(fxStrArray, fxStr)
    FX_ARRAY_TYPE_MEMBERS(fxStrArray)
    void createElements(void* at, unsigned int bytes) override;
    void destroyElements(void* at, unsigned int bytes) override;
    void copyElements(const void* from, void* to, unsigned int bytes) const override;
    int compareElements(const void* a, const void* b) const override;

#ifdef KELVOFXDS_WARN_SURPRISES
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    // Strings are sorted by what they are, and none is lost.
    void qsort(unsigned int start, unsigned int n) { fxArray::qsort(start, n); }
    void qsort() { fxArray::qsort(); }
#pragma GCC diagnostic pop
#endif

    using fxArray::append;
    using fxArray::find;
    using fxArray::insert;

    /// The same operations on a string; a text makes one.
    void append(const fxStr& s) { append(static_cast<const void*>(&s)); }
    void insert(const fxStr& s, unsigned int index) { insert(static_cast<const void*>(&s), index); }
    unsigned int find(const fxStr& s, unsigned int start = 0) const {
        return find(static_cast<const void*>(&s), start);
    }
    void append(const char* s) { append(fxStr(s)); }
    void insert(const char* s, unsigned int index) { insert(fxStr(s), index); }
    unsigned int find(const char* s, unsigned int start = 0) const { return find(fxStr(s), start); }

private:
    bool readStrings(fxTranscriber& t, unsigned int claimed, unsigned short size);
};

/// The record of fxStrArray, "ARRAY", version 1; the last of that name.
extern FX_EXPORT fxTypeObj fxStrArray_type;
