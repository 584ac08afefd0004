// fxArrayStdParts.h - what fxArrayStd.h is made of; not for hosts.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

#include "kelvofxds/containers/fxArrayOf.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/str/fxStrStd.h"

/// What a function template of loops is for. Where the language has concepts, std::ranges takes
/// it only if this is said as one.
#ifdef __cpp_concepts
#define FX_STD_REQUIRES(condition) requires(condition)
#else
#define FX_STD_REQUIRES(condition)
#endif

namespace fxStdParts {

template <class Base>
std::true_type derives(const Base*);
template <class Base>
std::false_type derives(...);
/// Whether a class is derived from another; one that is not complete is not, where
/// std::is_base_of does not compile. An alias, since it may be complete the next time.
template <class Base, class T>
using From = decltype(fxStdParts::derives<Base>(static_cast<std::remove_cv_t<T>*>(nullptr)));

/// What operator[] of an array class leads to; nothing for other classes, which are not asked.
template <class A, bool = From<fxArray, A>::value, class = void>
struct ElementOf {};
template <class A>
struct ElementOf<A, true, std::void_t<decltype(std::declval<A&>()[0U])>> {
    using type = std::remove_reference_t<decltype(std::declval<A&>()[0U])>;
};

/// Whether a class has begin() of its own, as fxArrayOf has.
template <class T, class = void>
struct HasBegin : std::false_type {};
template <class T>
struct HasBegin<T, std::void_t<decltype(std::declval<T&>().begin())>> : std::true_type {};

/// The elements of an array class that has none; const ones of a const array.
template <class A>
using Looped =
    typename std::enable_if_t<From<fxArray, A>::value && !HasBegin<A>::value, ElementOf<A>>::type;

template <class A>
Looped<A>* first(A& array) {
    using Base = std::conditional_t<std::is_const_v<A>, const fxArray, fxArray>;
    return static_cast<Looped<A>*>(static_cast<Base&>(array).at(0));
}

template <class A, class... Classes>
struct IsOneOf : std::disjunction<std::is_same<A, Classes>...> {};

/// Whether elements may be put into the block as they are: the library's arrays of scalars.
template <class A>
struct TakesBytes : IsOneOf<A, fxBoolArray, fxCharArray, fxShortArray, fxIntArray, fxLongArray,
                            fxFloatArray, fxDoubleArray, fxUnsignedCharArray, fxUnsignedShortArray,
                            fxUnsignedLongArray, fxVoidPtrArray> {};

/// What fxArray keeps for those that are derived from it.
struct ArrayFields : fxArray {
    static unsigned int& bytesInUse(fxArray& array) { return array.*(&ArrayFields::len); }
};

/// Room for half as many elements again, at least eight; above a gigabyte for a 64th, since
/// no block is larger than two.
[[gnu::noinline]] inline void growBlock(fxArray& array) {
    const unsigned int fewest = 8;
    const unsigned int n = array.length();
    const unsigned int part = array.getLen() < 1U << 30 ? 2 : 64;
    array.setMaxLength(n + std::max(fewest, n / part));
}

inline bool isFull(const fxArray& array, unsigned int bytes) {
    return array.getMaxLen() - array.getLen() < bytes;
}

template <class Element>
void appendBytes(fxArray& array, const Element& value) {
    const Element copy = value;  // it may be an element, which moves
    unsigned int& used = ArrayFields::bytesInUse(array);
    if (isFull(array, sizeof copy))
        growBlock(array);
    std::memcpy(static_cast<char*>(array.at(0)) + used, &copy, sizeof copy);
    used += static_cast<unsigned int>(sizeof copy);
}

/// By the class's own operations. Its append takes an element of the array, too, but by the
/// address where that is then.
inline void appendByClass(fxArray& array, const void* value) {
    if (isFull(array, array.getElemSize())) {
        const auto block = reinterpret_cast<std::uintptr_t>(array.at(0));
        const auto offset = reinterpret_cast<std::uintptr_t>(value) - block;
        const bool isElement = offset < array.getLen();
        growBlock(array);
        if (isElement)
            value = static_cast<const char*>(array.at(0)) + offset;
    }
    array.append(value);
}

/// Strings may be moved by their bytes.
inline void appendMoved(fxStrArray& array, fxStr& text) {
    unsigned char bytes[sizeof(fxStr)];
    std::memcpy(bytes, static_cast<const void*>(&text), sizeof bytes);
    ::new (static_cast<void*>(&text)) fxStr;  // it may be an element, which moves
    if (isFull(array, sizeof bytes))
        growBlock(array);
    unsigned int& used = ArrayFields::bytesInUse(array);
    std::memcpy(static_cast<char*>(array.at(0)) + used, bytes, sizeof bytes);
    used += static_cast<unsigned int>(sizeof bytes);
}

/// Whether an array class is an fxArrayOf, or derived from one.
template <class A, class T>
using IsArrayOf = From<fxArrayOf<T>, A>;

/// Whether a value is a number to compare with elements of another type of numbers.
template <class T, class Value, bool = std::is_enum_v<Value>>
struct OtherNumber : std::bool_constant<std::is_arithmetic_v<T> && std::is_arithmetic_v<Value> &&
                                        !std::is_same_v<T, Value>> {};
template <class T, class Value>
struct OtherNumber<T, Value, true>
    : std::bool_constant<std::is_arithmetic_v<T> &&
                         std::is_convertible_v<Value, std::underlying_type_t<Value>>> {};

/// Whether two numbers of any types are the same one: whatever their signs and sizes, as the
/// std::cmp_equal of later versions of the language has it.
template <class A, class B>
bool sameNumber(A a, B b) {
    if constexpr (std::is_enum_v<B>) {
        return sameNumber(a, static_cast<std::underlying_type_t<B>>(b));
    } else if constexpr (std::is_floating_point_v<A> || std::is_floating_point_v<B>) {
        using Common = std::common_type_t<double, A, B>;
        return static_cast<Common>(a) == static_cast<Common>(b);
    } else if constexpr (std::is_signed_v<A> && std::is_signed_v<B>) {
        return static_cast<long long>(a) == static_cast<long long>(b);
    } else if constexpr (std::is_signed_v<A>) {
        return a >= 0 && sameNumber(static_cast<unsigned long long>(a), b);
    } else if constexpr (std::is_signed_v<B>) {
        return sameNumber(b, a);
    } else {
        return static_cast<unsigned long long>(a) == static_cast<unsigned long long>(b);
    }
}

/// What is given for a T, be it a key, a value or an element: for a string any text.
template <class T>
struct GivenAs {
    using type = T;
};
template <>
struct GivenAs<fxStr> {
    using type = fxText;
};
template <class T>
using Given = typename GivenAs<T>::type;

/// Whether a value is a number or null, which is no text.
template <class T, class Value>
using IsNoTextFor = std::bool_constant<std::is_same_v<T, fxStr> && (std::is_arithmetic_v<Value> ||
                                                                    std::is_null_pointer_v<Value>)>;
/// Whether a value is appended as a text: to strings, and not a string itself.
template <class T, class Value>
using IsTextFor = std::bool_constant<std::is_same_v<T, fxStr> && !std::is_same_v<Value, fxStr> &&
                                     !IsNoTextFor<T, Value>::value &&
                                     std::is_convertible_v<const Value&, fxText>>;

/// A T of what was given for it.
template <class T, class Value>
T madeOf(const Value& given) {
    if constexpr (std::is_same_v<T, fxStr>)
        return fxText(given).str();
    else
        return static_cast<T>(given);
}

/// What an array is made of; says so where something else is to be made.
template <class A>
struct ItemOf {
    static_assert(From<fxArray, A>::value,
                  "fxMake makes arrays; make a dictionary or a set first and call fxAddAll");
    using type = Given<typename ElementOf<A>::type>;
};

}  // namespace fxStdParts
