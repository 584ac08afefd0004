// fxArrayStd.h - arrays as ranges: loops, lists of values, appends, look-ups.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <new>
#include <type_traits>
#include <utility>

#include "kelvofxds/containers/fxArrayOf.h"
#include "kelvofxds/containers/fxArrayStdParts.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/str/fxStrStd.h"

/// The type of the elements of an array class.
template <class A>
using fxElementOf = typename fxStdParts::ElementOf<std::remove_const_t<A>>::type;

// Loops over any array class, a host's own included: for (int& i : array). The pointers are what
// std::sort, std::find and std::vector's constructor take. They are valid until the next growth.
// An fxArrayOf has the same as members.

/// The first element.
template <class A>
FX_STD_REQUIRES((fxStdParts::From<fxArray, A>::value))
fxStdParts::Looped<A>* begin(A& array) {
    return fxStdParts::first(array);
}
/// The same.
template <class A>
FX_STD_REQUIRES((fxStdParts::From<fxArray, A>::value))
fxStdParts::Looped<const A>* begin(const A& array) {
    return fxStdParts::first(array);
}
/// Behind the last element.
template <class A>
FX_STD_REQUIRES((fxStdParts::From<fxArray, A>::value))
fxStdParts::Looped<A>* end(A& array) {
    return fxStdParts::first(array) + array.length();
}
/// The same.
template <class A>
FX_STD_REQUIRES((fxStdParts::From<fxArray, A>::value))
fxStdParts::Looped<const A>* end(const A& array) {
    return fxStdParts::first(array) + array.length();
}

/// Appends `value` in amortised O(1): a full block grows by half, where append of the classes
/// grows by four elements. `value` may be an element of the array. Elements of the library's own
/// arrays of numbers and pointers are put into the block without a call; those of a class of your
/// own go through its append.
///
/// The standard writer writes an array of numbers with its spare capacity: call setMaxLength(0)
/// before, as always. fxSaveFile and graph streams have the elements in use alone.
template <class A>
void fxAppend(A& array, const fxElementOf<A>& value) {
    using T = fxElementOf<A>;
    if constexpr (fxStdParts::IsArrayOf<A, T>::value)
        array.append(value);
    else if constexpr (fxStdParts::TakesBytes<A>::value)
        fxStdParts::appendBytes(array, value);
    else
        fxStdParts::appendByClass(array, &value);
}
/// The same with a value that is given up: an fxArrayOf moves it, an fxStrArray takes the text
/// over.
template <class A>
void fxAppend(A& array, fxElementOf<A>&& value) {
    using T = fxElementOf<A>;
    if constexpr (fxStdParts::IsArrayOf<A, T>::value)
        array.append(std::move(value));
    else if constexpr (std::is_same_v<A, fxStrArray>)
        fxStdParts::appendMoved(array, value);
    else
        fxAppend(array, static_cast<const T&>(value));
}
/// The same with a text of any kind, to any array of strings.
template <class A, class Text>
std::enable_if_t<fxStdParts::IsTextFor<fxElementOf<A>, Text>::value> fxAppend(A& array,
                                                                              const Text& text) {
    fxAppend(array, fxText(text).str());
}
/// Numbers and null are no texts.
template <class A, class Value>
std::enable_if_t<fxStdParts::IsNoTextFor<fxElementOf<A>, Value>::value> fxAppend(
    A& array, const Value& value) = delete;

/// An array of the values of any range, such as a std::vector. It has room for them and no more.
template <class A, class Range>
A fxMake(Range&& values) {
    using Element = typename fxStdParts::ElementOf<A>::type;
    static_assert(sizeof(typename fxStdParts::ItemOf<A>::type) != 0);
    A array;
    for (auto&& value : values)
        fxAppend(array, fxStdParts::madeOf<Element>(value));
    array.setMaxLength(0);
    return array;
}
/// An array of these values: fxMake<fxIntArray>({1, 2, 3}), fxMake<fxStrArray>({"a", "b"}).
template <class A>
A fxMake(std::initializer_list<typename fxStdParts::ItemOf<A>::type> values) {
    using Element = fxElementOf<A>;
    A array;
    if (values.size() != 0)
        array.setMaxLength(static_cast<unsigned int>(values.size()));
    for (const auto& value : values)
        fxAppend(array, fxStdParts::madeOf<Element>(value));
    return array;
}

/// Whether an element equals `value`, by ==: numbers as numbers of whatever types, so that no
/// short equals 65537, where find compares bytes; strings in all their bytes, where find stops at
/// a NUL. O(n).
template <class A>
bool contains(const A& array, const fxElementOf<A>& value) {
    for (const auto& element : array) {
        if (element == value)
            return true;
    }
    return false;
}
/// The same for a number of another type than that of the elements.
template <class A, class Number>
std::enable_if_t<fxStdParts::OtherNumber<fxElementOf<A>, Number>::value, bool> contains(
    const A& array, const Number& value) {
    for (const auto& element : array) {
        if (fxStdParts::sameNumber(element, value))
            return true;
    }
    return false;
}
/// The same for a text of any kind.
inline bool contains(const fxStrArray& array, const fxText& text) {
    for (const fxStr& element : array) {
        if (fxView(element) == text.view())
            return true;
    }
    return false;
}
