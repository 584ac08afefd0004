// arrayFamily.h - what tests know of each concrete array class.
#pragma once

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/containers/fxSet.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/containers/fxTypedArraysInternal.h"
#include "tests/support/arrayFixture.h"

/// `Element` is the element type, `size` its declared width in bytes.
template <class Array>
struct ArrayTraits;

#define ARRAY_TRAITS(Class, ElementType, elementSize)     \
    template <>                                           \
    struct ArrayTraits<Class> {                           \
        using Element = ElementType;                      \
        static constexpr unsigned int size = elementSize; \
    };

ARRAY_TRAITS(fxVoidPtrArray, void*, 4)
ARRAY_TRAITS(fxDictBuckets, fxDictBucket*, 4)
ARRAY_TRAITS(fxDictIters, fxDictIter*, 4)
ARRAY_TRAITS(fxSetBuckets, fxSetBucket*, 4)
ARRAY_TRAITS(fxSetIters, fxSetIter*, 4)
#undef ARRAY_TRAITS

/// The classes with a record also have that, and `operation`, the overload
/// that transcribes elements as RecordingTranscriber calls it. Each class of
/// FX_TYPED_ARRAYS needs its line.
#define ARRAY_TRAITS(Class, ElementType, elementSize, operationName) \
    template <>                                                      \
    struct ArrayTraits<Class> {                                      \
        using Element = ElementType;                                 \
        static constexpr unsigned int size = elementSize;            \
        static fxTypeObj& record() { return Class##_type; }          \
        static const char* operation() { return operationName; }     \
    };

ARRAY_TRAITS(fxBoolArray, unsigned char, 1, "uchar*")
ARRAY_TRAITS(fxCharArray, char, 1, "char*")
ARRAY_TRAITS(fxUnsignedCharArray, unsigned char, 1, "uchar*")
ARRAY_TRAITS(fxShortArray, short, 2, "short*")
ARRAY_TRAITS(fxUnsignedShortArray, unsigned short, 2, "ushort*")
ARRAY_TRAITS(fxIntArray, int, 4, "int*")
ARRAY_TRAITS(fxLongArray, long, 4, "long*")
ARRAY_TRAITS(fxUnsignedLongArray, unsigned long, 4, "ulong*")
ARRAY_TRAITS(fxFloatArray, float, 4, "float*")
ARRAY_TRAITS(fxDoubleArray, double, 8, "double*")
#undef ARRAY_TRAITS

/// `testing::Types` of all but the first, which stands for nothing.
template <class, class... Classes>
struct TypesOf {
    using Types = testing::Types<Classes...>;
};

// Each with a comma in front.
#define NEXT(Class, Element) , Class
#define POINTER_ARRAYS(ARRAY)           \
    ARRAY(fxVoidPtrArray, void*)        \
    ARRAY(fxDictBuckets, fxDictBucket*) \
    ARRAY(fxDictIters, fxDictIter*)     \
    ARRAY(fxSetBuckets, fxSetBucket*)   \
    ARRAY(fxSetIters, fxSetIter*)
using ArraysWithRecords = TypesOf<void FX_TYPED_ARRAYS(NEXT)>::Types;
using ArraysOfPointers = TypesOf<void POINTER_ARRAYS(NEXT)>::Types;
using AllArrays = TypesOf<void FX_TYPED_ARRAYS(NEXT) POINTER_ARRAYS(NEXT)>::Types;
#undef NEXT

/// Any bytes will do for their elements.
#define UNIFORM_ELEMENTS(Class, Element) \
    template <>                          \
    struct ArrayElements<Class> : UniformElements<Class> {};

FX_TYPED_ARRAYS(UNIFORM_ELEMENTS)
POINTER_ARRAYS(UNIFORM_ELEMENTS)
#undef UNIFORM_ELEMENTS
#undef POINTER_ARRAYS

/// Elements are told apart by a digit that fills all their bytes.
template <class Element>
Element elementOf(char digit) {
    Element element;
    std::memset(&element, digit - '0', sizeof element);
    return element;
}

/// Adds an element for each digit.
template <class Array>
void appendDigits(Array& array, const std::string& digits) {
    for (char digit : digits) {
        const auto element = elementOf<typename ArrayTraits<Array>::Element>(digit);
        array.append(&element);
    }
}

/// The elements' digits; "?" stands for an element of different bytes.
inline std::string digitsOf(const fxArray& array) {
    std::string digits;
    for (unsigned int i = 0; i < array.length(); ++i) {
        const std::string bytes(static_cast<const char*>(array.at(i)), array.getElemSize());
        const bool uniform = bytes.find_first_not_of(bytes[0]) == std::string::npos;
        digits += uniform ? static_cast<char>('0' + bytes[0]) : '?';
    }
    return digits;
}

/// Gives tests the protected fields of an array class.
template <class Array>
class Opened : public Array {
public:
    using Array::Array;
    using fxArray::data;
    using fxArray::elemSize;
    using fxArray::len;
    using fxArray::maxLen;
};
