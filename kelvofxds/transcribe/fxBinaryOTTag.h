// fxBinaryOTTag.h - the kinds of records in a stream of objects.
#pragma once

/// The kinds of records in a binary stream: the low six bits of a head byte.
enum fxBinaryOTTag : unsigned int {
    fxOT_Data = 0,            ///< Data that continues the record before.
    fxOT_Null = 1,            ///< A null pointer.
    fxOT_Type = 2,            ///< A type's number and name.
    fxOT_Block = 3,           ///< Pointer to a block whose body follows later.
    fxOT_OldBlock = 4,        ///< Pointer to a block that has a number.
    fxOT_Bytes = 5,           ///< Body of a block of bytes.
    fxOT_Shorts = 6,          ///< Body of a block of shorts.
    fxOT_Longs = 7,           ///< Body of a block of longs.
    fxOT_Floats = 8,          ///< Body of a block of floats.
    fxOT_Doubles = 9,         ///< Body of a block of doubles.
    fxOT_Object = 10,         ///< Body of an object.
    fxOT_ObjectPointer = 11,  ///< Pointer to an object whose body follows later.
    fxOT_OldObject = 12,      ///< Pointer to an object that has a number.
    fxOT_Embedded = 13,       ///< Embedded object, its contents inline.
    fxOT_OldEmbedded = 14     ///< Embedded object that has a number.
};
