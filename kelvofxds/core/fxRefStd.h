// fxRefStd.h - fxRef in the standard library's containers.
#pragma once

#include <cstddef>
#include <functional>

#include "kelvofxds/core/fxRef.h"

namespace std {
/// The object's address counts, as in the comparisons.
template <class T>
struct hash<fxRef<T>> {
    /// O(1).
    std::size_t operator()(const fxRef<T>& ref) const noexcept {
        return std::hash<T*>()(ref.get());
    }
};
}  // namespace std

// What is missing beside operator<, in its forms: by address, null in front of every object.

/// Orders them by address.
template <class T, class U>
bool operator>(const fxRef<T>& a, const fxRef<U>& b) noexcept {
    return b < a;
}
/// Orders them by address.
template <class T, class U>
bool operator>(const fxRef<T>& a, U* b) noexcept {
    return b < a;
}
/// Orders them by address.
template <class T, class U>
bool operator>(T* a, const fxRef<U>& b) noexcept {
    return b < a;
}
/// Whether there is an object.
template <class T>
bool operator>(const fxRef<T>& a, std::nullptr_t) noexcept {
    return nullptr < a;
}
/// Never.
template <class T>
bool operator>(std::nullptr_t, const fxRef<T>& b) noexcept {
    return b < nullptr;
}

/// Orders them by address.
template <class T, class U>
bool operator<=(const fxRef<T>& a, const fxRef<U>& b) noexcept {
    return !(b < a);
}
/// Orders them by address.
template <class T, class U>
bool operator<=(const fxRef<T>& a, U* b) noexcept {
    return !(b < a);
}
/// Orders them by address.
template <class T, class U>
bool operator<=(T* a, const fxRef<U>& b) noexcept {
    return !(b < a);
}
/// Whether there is no object.
template <class T>
bool operator<=(const fxRef<T>& a, std::nullptr_t) noexcept {
    return !(nullptr < a);
}
/// Always.
template <class T>
bool operator<=(std::nullptr_t, const fxRef<T>& b) noexcept {
    return !(b < nullptr);
}

/// Orders them by address.
template <class T, class U>
bool operator>=(const fxRef<T>& a, const fxRef<U>& b) noexcept {
    return !(a < b);
}
/// Orders them by address.
template <class T, class U>
bool operator>=(const fxRef<T>& a, U* b) noexcept {
    return !(a < b);
}
/// Orders them by address.
template <class T, class U>
bool operator>=(T* a, const fxRef<U>& b) noexcept {
    return !(a < b);
}
/// Always.
template <class T>
bool operator>=(const fxRef<T>& a, std::nullptr_t) noexcept {
    return !(a < nullptr);
}
/// Whether there is no object.
template <class T>
bool operator>=(std::nullptr_t, const fxRef<T>& b) noexcept {
    return !(nullptr < b);
}
