// fxArrayCheckedInternal.h - positions and counts of arrays, for the checked build.
#pragma once

#include "kelvofxds/core/fxCheckedInternal.h"

// For members of array classes.

#ifdef KELVOFXDS_CHECKED

/// The length of an array; all there is where elements have no size.
template <class Array>
unsigned int fxCheckedLength(const Array& array) {
    return array.getElemSize() != 0 ? array.length() : 0xFFFFFFFF;
}

/// That the `n` elements from `start` on are there. None are wherever they may be, and a range
/// whose bytes are no size is fatal in its own words.
#define FX_CHECK_RANGE(start, n) FX_CHECK_RANGE_OF(start, n, getElemSize())

/// The same where only the elements are counted: with `size` 1 their bytes are not looked at.
#define FX_CHECK_RANGE_OF(start, n, size)                                     \
    do {                                                                      \
        if (!fxMisuse::isStatedRange(start, n, fxCheckedLength(*this), size)) \
            fxMisuse::beyond(fxClassOf(*this), __func__, start, n, length()); \
    } while (false)

/// That something can be put in before `index`.
#define FX_CHECK_PLACE(index)                                                                \
    do {                                                                                     \
        if (!fxMisuse::isStatedPosition(index, fxCheckedLength(*this), getElemSize()))       \
            fxMisuse::beyond(fxClassOf(*this), __func__, #index, index, "length", length()); \
    } while (false)

#else

#define FX_CHECK_RANGE(...) static_cast<void>(0)
#define FX_CHECK_RANGE_OF(...) static_cast<void>(0)
#define FX_CHECK_PLACE(...) static_cast<void>(0)

#endif
