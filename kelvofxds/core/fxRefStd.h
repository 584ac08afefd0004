// fxRefStd.h - fxRef in the standard library's containers.
#pragma once

#include <cstddef>
#include <functional>

#include "kelvofxds/core/fxRef.h"

/// The object's address counts, as in the comparisons.
template <class T>
struct std::hash<fxRef<T>> {
    /// O(1).
    std::size_t operator()(const fxRef<T>& ref) const noexcept {
        return std::hash<T*>()(ref.get());
    }
};

/// Orders them by address.
template <class T, class U>
bool operator>(const fxRef<T>& a, const fxRef<U>& b) noexcept {
    return b < a;
}
/// Orders them by address.
template <class T, class U>
bool operator<=(const fxRef<T>& a, const fxRef<U>& b) noexcept {
    return !(b < a);
}
/// Orders them by address.
template <class T, class U>
bool operator>=(const fxRef<T>& a, const fxRef<U>& b) noexcept {
    return !(a < b);
}
