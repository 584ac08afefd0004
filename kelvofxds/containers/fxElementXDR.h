// fxElementXDR.h - how the elements of an fxArrayOf are transcribed.
#pragma once

#include <type_traits>
#include <utility>

#include "kelvofxds/core/fxRef.h"
#include "kelvofxds/transcribe/fxTranscriber.h"
#include "kelvofxds/transcribe/fxXDRMembers.h"

template <class T>
class fxArrayOf;

/// How the elements of an fxArrayOf<T> are transcribed.
template <class T>
struct fxElementXDR {
    /// How elements are transcribed.
    enum Kind : int { cannotBe, asNumbers, asPart, byOwnXdr, asPointer, asRef };

    /// How those of T are.
    static constexpr Kind kind() {
        if constexpr (isOneOf<T, bool, char, signed char, unsigned char, short, unsigned short, int,
                              unsigned int, long, unsigned long, float, double>())
            return asNumbers;
        else if constexpr (fxXdrAccess::hasMembers<T>())
            return asPart;
        else
            return kindOf(static_cast<T*>(nullptr));
    }

    /// One element; not for numbers.
    static unsigned char element(fxTranscriber& t, T& element) {
        if constexpr (kind() == asPart)
            return t.xdr(T::classType(), nullptr, &element);
        else if constexpr (kind() == asPointer)
            return fxXdrPointer(t, element);
        else if constexpr (kind() == asRef)
            return fxXdrRef(t, element);
        else
            return element.xdr(t) ? 1 : 0;
    }

private:
    template <class U, class... Others>
    static constexpr bool isOneOf() {
        return (std::is_same_v<U, Others> || ...);
    }
    template <class U>
    static constexpr auto hasXdr(int)
        -> decltype(static_cast<bool>(std::declval<U&>().xdr(std::declval<fxTranscriber&>()))) {
        return true;
    }
    template <class U>
    static constexpr bool hasXdr(long) {
        return false;
    }
    template <class U>
    static constexpr bool isComplete(decltype(sizeof(U))) {
        return true;
    }
    template <class U>
    static constexpr bool isComplete(...) {
        return false;
    }
    template <class U>
    static constexpr Kind kindOf(fxRef<U>*) {
        return asRef;
    }
    template <class U>
    static constexpr Kind kindOf(fxArrayOf<U>*) {
        return fxElementXDR<U>::kind() == fxElementXDR<U>::cannotBe ? cannotBe : byOwnXdr;
    }
    template <class U>
    static constexpr Kind kindOf(U** /*unused*/) {
        if constexpr (std::is_class_v<U>) {
            static_assert(isComplete<U>(0),
                          "fxArrayOf: the class that the elements point to has to be complete "
                          "here; fxVoidPtrArray holds any pointers");
            return std::is_base_of_v<fxXDRObj, U> ? asPointer : cannotBe;
        } else {
            return cannotBe;
        }
    }
    static constexpr Kind kindOf(void*) { return hasXdr<T>(0) ? byOwnXdr : cannotBe; }
};
