// fxTypedArraysInternal.h - the one list of the typed arrays that have a type record.
#pragma once

/// Every one, as ARRAY(Class, Element), in the order in which their records are
/// constructed. That order is part of the library's behaviour: all are called
/// "ARRAY", and the last one answers to the name.
#define FX_TYPED_ARRAYS(ARRAY)                  \
    ARRAY(fxBoolArray, unsigned char)           \
    ARRAY(fxCharArray, char)                    \
    ARRAY(fxShortArray, short)                  \
    ARRAY(fxIntArray, int)                      \
    ARRAY(fxLongArray, long)                    \
    ARRAY(fxFloatArray, float)                  \
    ARRAY(fxDoubleArray, double)                \
    ARRAY(fxUnsignedCharArray, unsigned char)   \
    ARRAY(fxUnsignedShortArray, unsigned short) \
    ARRAY(fxUnsignedLongArray, unsigned long)
