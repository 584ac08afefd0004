// fxValueTypesInternal.h - the one list of the types that values can have.
#pragma once

/// Every type, in the order of the codes, as
///
///     Kind(number, code, Holder, Type, name)
///
/// From it are made the code `fxDT_code` with its number, its draw at start-up,
/// and of a VALUE the members of the class fx`Holder`Data, which holds a `Type`
/// under the data name `name`. What the public headers declare is written in
/// fxData.h; a `Type` that is not simply copied into place has overloads in
/// fxData.cpp.
///
/// NOTHING has a holder without a value, and of a POINTER only properties are
/// made.
#define FX_VALUE_TYPES(NOTHING, VALUE, POINTER)   \
    NOTHING(0, void, Void, void, "void")          \
    VALUE(1, fxBool, Bool, unsigned char, "TYPE") \
    VALUE(2, int, Int, int, "TYPE")               \
    VALUE(3, long, Long, long, "TYPE")            \
    VALUE(4, float, Float, float, "TYPE")         \
    VALUE(5, double, Double, double, "TYPE")      \
    VALUE(6, CharPtr, CharPtr, char*, "char *")   \
    VALUE(7, fxStr, Str, fxStr, "TYPE")           \
    POINTER(8, VoidPtr, , void*, "")              \
    POINTER(9, ObjPtr, , fxObj*, "")              \
    POINTER(10, DataPtr, , fxData*, "")           \
    VALUE(11, fxStrArray, StrArray, fxStrArray, "TYPE")
