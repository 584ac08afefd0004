// fxSortStd.h - arrays sorted by value.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <type_traits>

#include "kelvofxds/containers/fxArrayStd.h"
#include "kelvofxds/core/fxFatal.h"

namespace fxStdParts {

/// By operator<, which for floating-point numbers orders all but NaNs: these are last.
struct LessByValue {
    template <class T>
    bool operator()(const T& a, const T& b) const {
        if constexpr (std::is_floating_point_v<T>)
            return a < b || (b != b && a == a);  // NOLINT(misc-redundant-expression): NaN
        else
            return std::less<T>()(a, b);
    }
};

/// A block that ends with its owner, also when a comparison throws.
class Block {
public:
    explicit Block(unsigned int bytes) : start(std::malloc(bytes)) {
        if (!start)
            fxFatal("out of memory");
    }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block() { std::free(start); }

    template <class T>
    T* as() const {
        return static_cast<T*>(start);
    }

private:
    void* start;  // owned
};

/// Sorts pointers and then moves the elements by their bytes, each once. Until then `less` has
/// seen every element in its place.
template <class T, class Less>
void sortByBytes(T* first, unsigned int n, Less less) {
    const Block order(n * static_cast<unsigned int>(sizeof(const T*)));
    const auto places = order.as<const T*>();
    for (unsigned int i = 0; i < n; ++i)
        places[i] = first + i;
    std::stable_sort(places, places + n, [&less](const T* a, const T* b) { return less(*a, *b); });
    const Block copy(n * static_cast<unsigned int>(sizeof(T)));
    const auto bytes = copy.as<char>();
    std::memcpy(bytes, static_cast<const void*>(first), n * sizeof(T));
    for (unsigned int i = 0; i < n; ++i)
        std::memcpy(static_cast<void*>(first + i),
                    bytes + static_cast<unsigned int>(places[i] - first) * sizeof(T), sizeof(T));
}

/// Whether the elements of an array class know no other move than by bytes, or none as quick.
template <class A, class T>
constexpr bool movesByBytesAlone() {
    return !std::is_trivially_copyable_v<T> &&
           (!From<fxArrayOfElements<T>, A>::value || fxMovesByBytes<T>::value);
}

}  // namespace fxStdParts

/// Sorts by `less`, which says whether its first argument belongs in front of its second one.
/// What it does not tell apart keeps its order. If it throws, an array of strings is as it was.
/// O(n log n) on the average and at worst; takes memory for the elements once more.
template <class A, class Less>
void fxSort(A& array, Less less) {
    using T = fxElementOf<A>;
    if (array.length() < 2)
        return;
    T* const first = &array[0U];
    if constexpr (fxStdParts::movesByBytesAlone<A, T>())
        fxStdParts::sortByBytes(first, array.length(), less);
    else
        std::stable_sort(first, first + array.length(), less);
}
/// Sorts by operator<: numbers as numbers, NaNs last; strings as texts up to a NUL; pointers by
/// address. It stands in place of qsort, which compares numbers by their bytes in memory (256 is
/// in front of 1, -1 behind all) and overwrites elements.
template <class A>
void fxSort(A& array) {
    using T = fxElementOf<A>;
    if constexpr (std::is_integral_v<T>)
        std::sort(array.length() != 0 ? &array[0U] : nullptr,
                  array.length() != 0 ? &array[0U] + array.length() : nullptr);
    else
        fxSort(array, fxStdParts::LessByValue());
}
