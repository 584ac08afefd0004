// fxTypeOf.h - the type record of a class.
#pragma once

#include <type_traits>

#include "kelvofxds/core/fxTypeObj.h"

/// Whether T has a static classType(), its own or a base class's.
template <class T, class = void>
struct fxHasClassType : std::false_type {};
template <class T>
struct fxHasClassType<T, std::void_t<decltype(T::classType())>> : std::true_type {};

/// Whether T is a class with FX_XDR_MEMBERS, or derived from one.
template <class T, class = void>
struct fxHasXdrClass : std::false_type {};
template <class T>
struct fxHasXdrClass<T, std::void_t<typename T::fxXdrClass>> : std::true_type {};

/// Whether classType() is T's own, and not that of a base class with FX_XDR_MEMBERS.
template <class T>
constexpr bool fxHasOwnClassType() {
    if constexpr (fxHasXdrClass<T>::value)
        return std::is_same_v<typename T::fxXdrClass, T>;
    else
        return fxHasClassType<T>::value;
}

/// The record under which objects of class T are written: T::classType() if T has it,
/// as classes with FX_XDR_MEMBERS do, else getTypeObj() of a T that is made for it.
template <class T>
fxTypeObj& fxTypeOf() {
    if constexpr (fxHasOwnClassType<T>()) {
        return T::classType();
    } else {
        static_assert(!fxHasXdrClass<T>::value ||
                          std::is_same_v<decltype(&T::getTypeObj), fxTypeObj& (T::*)() const>,
                      "the class has no type record: FX_XDR_MEMBERS is missing in it");
        return T().getTypeObj();
    }
}
