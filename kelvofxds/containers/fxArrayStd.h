// fxArrayStd.h - arrays as ranges: loops, values, lists of values.
#pragma once

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <type_traits>
#include <utility>

#include "kelvofxds/containers/fxArray.h"
#include "kelvofxds/containers/fxArrayOf.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/str/fxStrStd.h"

namespace fxStdParts {

template <class A, class = void>
struct ElementOf {};
template <class A>
struct ElementOf<A, std::enable_if_t<std::is_base_of_v<fxArray, A> &&
                                     std::is_reference_v<decltype(std::declval<A&>()[0U])>>> {
    using type = std::remove_reference_t<decltype(std::declval<A&>()[0U])>;
};

template <class A, class = void>
struct HasBegin : std::false_type {};
template <class A>
struct HasBegin<A, std::void_t<decltype(std::declval<A&>().begin())>> : std::true_type {};

// The element type of arrays that have no begin() of their own.
template <class A>
using Looped = typename std::enable_if_t<!HasBegin<A>::value, ElementOf<A>>::type;

// Whether elements may be put into the block as they are: the library's own arrays of scalars.
template <class A>
struct TakesBytes : std::false_type {};
template <>
struct TakesBytes<fxBoolArray> : std::true_type {};
template <>
struct TakesBytes<fxCharArray> : std::true_type {};
template <>
struct TakesBytes<fxShortArray> : std::true_type {};
template <>
struct TakesBytes<fxIntArray> : std::true_type {};
template <>
struct TakesBytes<fxLongArray> : std::true_type {};
template <>
struct TakesBytes<fxFloatArray> : std::true_type {};
template <>
struct TakesBytes<fxDoubleArray> : std::true_type {};
template <>
struct TakesBytes<fxUnsignedCharArray> : std::true_type {};
template <>
struct TakesBytes<fxUnsignedShortArray> : std::true_type {};
template <>
struct TakesBytes<fxUnsignedLongArray> : std::true_type {};
template <>
struct TakesBytes<fxVoidPtrArray> : std::true_type {};

// What fxArray keeps for its subclasses, which append, too.
struct ArrayFields : fxArray {
    static unsigned int& bytesInUse(fxArray& a) { return a.*(&ArrayFields::len); }
    static char* block(fxArray& a) { return static_cast<char*>(a.*(&ArrayFields::data)); }
};

// Room for half as many elements again.
[[gnu::noinline]] inline void growBlock(fxArray& a) {
    const unsigned int fewest = 8;
    const unsigned int n = a.length();
    a.setMaxLength(n + std::max(fewest, n / 2));
}

}  // namespace fxStdParts

/// The type of an array's elements.
template <class A>
using fxElementOf = typename fxStdParts::ElementOf<std::remove_const_t<A>>::type;

/// The first element of any array class, for loops; valid until the next growth. An array's
/// pointers are what std::sort, std::find and std::vector's constructor take.
template <class A>
fxStdParts::Looped<A>* begin(A& array) {
    return array.length() != 0 ? &array[0U] : nullptr;
}
/// Behind the last element.
template <class A>
fxStdParts::Looped<A>* end(A& array) {
    return array.length() != 0 ? &array[0U] + array.length() : nullptr;
}
/// The first element.
template <class A>
const fxStdParts::Looped<A>* begin(const A& array) {
    return begin(const_cast<A&>(array));
}
/// Behind the last element.
template <class A>
const fxStdParts::Looped<A>* end(const A& array) {
    return end(const_cast<A&>(array));
}

/// Appends `value` in amortised O(1): the block grows by half, where append of the classes
/// grows by four elements. `value` may be an element of the array.
///
/// An array of numbers writes its whole capacity to streams; call setMaxLength(0) before it is
/// written.
template <class A>
void fxAppend(A& array, const fxElementOf<A>& value) {
    using Element = fxElementOf<A>;
    if constexpr (fxStdParts::TakesBytes<A>::value) {
        const Element copy = value;
        unsigned int& used = fxStdParts::ArrayFields::bytesInUse(array);
        if (array.getMaxLen() - used < sizeof copy)
            fxStdParts::growBlock(array);
        std::memcpy(fxStdParts::ArrayFields::block(array) + used, &copy, sizeof copy);
        used += static_cast<unsigned int>(sizeof copy);
    } else if constexpr (fxStdParts::HasBegin<A>::value) {
        array.append(value);
    } else {
        if (array.getMaxLen() - array.getLen() >= array.getElemSize()) {
            array.append(static_cast<const void*>(&value));
        } else {
            const Element copy(value);
            fxStdParts::growBlock(array);
            array.append(static_cast<const void*>(&copy));
        }
    }
}
/// The same for texts of any kind.
inline void fxAppend(fxStrArray& array, const fxText& text) { fxAppend(array, text.str()); }

/// An array of these values: fxMake<fxIntArray>({1, 2, 3}).
template <class A>
A fxMake(std::initializer_list<fxElementOf<A>> values) {
    A array;
    if (values.size() != 0)
        array.setMaxLength(static_cast<unsigned int>(values.size()));
    for (const auto& value : values)
        fxAppend(array, value);
    return array;
}

/// Whether an element equals `value`, by ==: numbers as numbers, strings in all their bytes.
template <class A>
bool contains(const A& array, const fxElementOf<A>& value) {
    using std::begin;
    using std::end;
    return std::find(begin(array), end(array), value) != end(array);
}

/// Sorts by `less`, by default by the values: numbers as numbers, in place of qsort, which
/// compares bytes and overwrites elements. What `less` does not tell apart keeps its order.
template <class A, class Less = std::less<fxElementOf<A>>>
std::enable_if_t<std::is_base_of_v<fxArray, A>> fxSort(A& array, Less less = Less()) {
    using std::begin;
    using std::end;
    std::stable_sort(begin(array), end(array), less);
}
