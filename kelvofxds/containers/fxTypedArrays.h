// fxTypedArrays.h - arrays of every scalar type and of pointers.
#pragma once

#ifdef KELVOFXDS_WARN_SURPRISES
#include <type_traits>
#endif

#include "kelvofxds/containers/fxArrayFamily.h"

// Each class binds fxArray to one element type and adds no storage. Elements
// are copied byte-wise and, deliberately, compared as unsigned bytes in memory
// order, also by find and qsort: fxSort and contains of <kelvofxds/std.h> go by
// value, and fxAppend takes one. New elements of the numeric arrays are not
// initialised. All are called "ARRAY", in streams too: which class an "ARRAY"
// becomes when it is read by name is decided by the record registered last.
//
// Deliberate: while writing, xdr transcribes the elements of the whole
// capacity, while reading those of the length only; call setMaxLength(0)
// before writing an array that other data follows.

/// Booleans, one byte each.
class FX_EXPORT fxBoolArray : public fxArray {
    FX_ARRAY_MEMBERS(fxBoolArray, unsigned char)
    FX_ARRAY_TYPE_MEMBERS(fxBoolArray)
};

class FX_EXPORT fxCharArray : public fxArray {
    FX_ARRAY_MEMBERS(fxCharArray, char)
    FX_ARRAY_TYPE_MEMBERS(fxCharArray)
};

class FX_EXPORT fxShortArray : public fxArray {
    FX_ARRAY_MEMBERS(fxShortArray, short)
    FX_ARRAY_TYPE_MEMBERS(fxShortArray)
};

class FX_EXPORT fxIntArray : public fxArray {
    FX_ARRAY_MEMBERS(fxIntArray, int)
    FX_ARRAY_TYPE_MEMBERS(fxIntArray)
};

class FX_EXPORT fxLongArray : public fxArray {
    FX_ARRAY_MEMBERS(fxLongArray, long)
    FX_ARRAY_TYPE_MEMBERS(fxLongArray)
};

class FX_EXPORT fxFloatArray : public fxArray {
    FX_ARRAY_MEMBERS(fxFloatArray, float)
    FX_ARRAY_TYPE_MEMBERS(fxFloatArray)
};

class FX_EXPORT fxDoubleArray : public fxArray {
    FX_ARRAY_MEMBERS(fxDoubleArray, double)
    FX_ARRAY_TYPE_MEMBERS(fxDoubleArray)
};

class FX_EXPORT fxUnsignedCharArray : public fxArray {
    FX_ARRAY_MEMBERS(fxUnsignedCharArray, unsigned char)
    FX_ARRAY_TYPE_MEMBERS(fxUnsignedCharArray)
};

class FX_EXPORT fxUnsignedShortArray : public fxArray {
    FX_ARRAY_MEMBERS(fxUnsignedShortArray, unsigned short)
    FX_ARRAY_TYPE_MEMBERS(fxUnsignedShortArray)
};

class FX_EXPORT fxUnsignedLongArray : public fxArray {
    FX_ARRAY_MEMBERS(fxUnsignedLongArray, unsigned long)
    FX_ARRAY_TYPE_MEMBERS(fxUnsignedLongArray)
};

/// Pointers that the array does not own; new elements are null. It has no type
/// record of its own and transcribes nothing.
class FX_EXPORT fxVoidPtrArray : public fxArray {
    FX_ARRAY_MEMBERS(fxVoidPtrArray, void*)
#ifdef KELVOFXDS_WARN_SURPRISES
    using fxArray::append;
    // An address of anything else than a pointer is taken for the pointer itself. What a void*
    // leads to is not known: it may be an element.
    template <class T, class = std::enable_if_t<std::is_convertible_v<T*, const void*> &&
                                                !std::is_pointer_v<T> && !std::is_void_v<T>>>
    FX_SURPRISING(
        "append takes the address of a pointer, and appends what is there; "
        "fxAppend(array, pointer) of <kelvofxds/std.h> appends the pointer itself")
    void append(T* object) {
        fxArray::append(static_cast<const void*>(object));
    }
#endif
    void createElements(void* at, unsigned int bytes) override;
};

/// A record called "ARRAY", version 1; they are constructed in this order.
extern FX_EXPORT fxTypeObj fxBoolArray_type;
extern FX_EXPORT fxTypeObj fxCharArray_type;
extern FX_EXPORT fxTypeObj fxShortArray_type;
extern FX_EXPORT fxTypeObj fxIntArray_type;
extern FX_EXPORT fxTypeObj fxLongArray_type;
extern FX_EXPORT fxTypeObj fxFloatArray_type;
extern FX_EXPORT fxTypeObj fxDoubleArray_type;
extern FX_EXPORT fxTypeObj fxUnsignedCharArray_type;
extern FX_EXPORT fxTypeObj fxUnsignedShortArray_type;
extern FX_EXPORT fxTypeObj fxUnsignedLongArray_type;
