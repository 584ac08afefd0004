// fxValueTypesInternal.h - the one list of the types that values can have.
#pragma once

/// Every type, in the order of the codes, as
///
///     Kind(number, code, Holder, Type, name, shown)
///
/// From it are made the code `fxDT_code` with its number, its draw at start-up,
/// what messages and pictures call it, which is `shown`, and of a VALUE the
/// members of the class fx`Holder`Data, which holds a `Type` under the data name
/// `name`. What the public headers declare is written in fxData.h, and what
/// parameters take each in fxInputFunction.h; a `Type` that is not simply copied
/// into place has overloads in fxData.cpp.
///
/// NOTHING has a holder without a value, and of a POINTER only properties are
/// made.
#define FX_VALUE_TYPES(NOTHING, VALUE, POINTER)           \
    NOTHING(0, void, Void, void, "void", "void")          \
    VALUE(1, fxBool, Bool, unsigned char, "TYPE", "bool") \
    VALUE(2, int, Int, int, "TYPE", "int")                \
    VALUE(3, long, Long, long, "TYPE", "long")            \
    VALUE(4, float, Float, float, "TYPE", "float")        \
    VALUE(5, double, Double, double, "TYPE", "double")    \
    VALUE(6, CharPtr, CharPtr, char*, "char *", "char*")  \
    VALUE(7, fxStr, Str, fxStr, "TYPE", "fxStr")          \
    POINTER(8, VoidPtr, , void*, "", "void*")             \
    POINTER(9, ObjPtr, , fxObj*, "", "fxObj*")            \
    POINTER(10, DataPtr, , fxData*, "", "fxData*")        \
    VALUE(11, fxStrArray, StrArray, fxStrArray, "TYPE", "fxStrArray")
