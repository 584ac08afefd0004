// fxRef.h - a pointer that counts.
#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>

#include "kelvofxds/core/fxRCObj.h"

/// Holds an object by its count, as the rules of fxRCObj have it: taking an object
/// adds one, giving it up subtracts one and deletes the object when the result is
/// exactly 0. Null, or a `T` that derives publicly from fxRCObj.
///
/// It is one pointer, and what can have a pointer can have an fxRef, in any number:
/// the count is the object's own. `T` need not be complete where an fxRef is only
/// named, as for a member, but where it is made, assigned or destroyed. Objects
/// that hold each other in a circle are never deleted: one of the pointers has to
/// be a plain one. Nor does an fxRef to an object know who else deletes it, so an
/// object that is a variable, or part of another, is no object for it unless its
/// owner has counted himself.
///
/// A chain of objects, each held by the one before, is deleted one inside the
/// other; give up long ones link by link. fxXdrRef transcribes an fxRef; see
/// transcribe/fxXDRMembers.h. Single-threaded, as the count is.
template <class T>
class fxRef {
public:
    /// What it leads to.
    using element_type = T;

    /// Holds nothing.
    constexpr fxRef() noexcept : pointer(nullptr) {}
    constexpr fxRef(std::nullptr_t) noexcept : pointer(nullptr) {}
    /// Holds `object`, which may be a new one, or one that others hold, or null.
    fxRef(T* object) : pointer(object) { take(pointer); }
    fxRef(const fxRef& other) : pointer(other.pointer) { take(pointer); }
    /// Takes over what `other` held, which holds nothing then. No count changes.
    fxRef(fxRef&& other) noexcept : pointer(other.pointer) { other.pointer = nullptr; }
    /// The same from a class derived from T.
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    fxRef(const fxRef<U>& other) : pointer(other.pointer) {
        take(pointer);
    }
    /// The same from one that is given up.
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    fxRef(fxRef<U>&& other) noexcept : pointer(other.pointer) {
        other.pointer = nullptr;
    }
    ~fxRef() { give(pointer); }

    /// The new object is taken before the old one is given up, and when that one is
    /// deleted the new one is in place. The object held already may come again.
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): reset leaves the same object.
    fxRef& operator=(const fxRef& other) {
        reset(other.pointer);
        return *this;
    }
    /// The same for another one, or one that is given up.
    fxRef& operator=(fxRef&& other) noexcept {
        fxRef(static_cast<fxRef&&>(other)).swap(*this);
        return *this;
    }
    /// The same for another one, or one that is given up.
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    fxRef& operator=(const fxRef<U>& other) {
        reset(other.pointer);
        return *this;
    }
    /// The same for another one, or one that is given up.
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    fxRef& operator=(fxRef<U>&& other) noexcept {
        fxRef(static_cast<fxRef<U>&&>(other)).swap(*this);
        return *this;
    }

    /// Holds `object` instead, or nothing.
    void reset(T* object = nullptr) {
        if (object == pointer)
            return;
        T* const old = pointer;
        take(object);
        pointer = object;
        give(old);
    }

    /// Gives the object up without deleting it, and returns it: its count is one less,
    /// and if that is 0 the object is as a new one, which belongs to the caller until
    /// somebody holds it. Null if nothing was held.
    [[nodiscard]] T* release() {
        T* const released = pointer;
        pointer = nullptr;
        if (released)
            --counted(released)->count;
        return released;
    }

    /// Lets both change places.
    void swap(fxRef& other) noexcept {
        T* const mine = pointer;
        pointer = other.pointer;
        other.pointer = mine;
    }
    friend void swap(fxRef& a, fxRef& b) noexcept { a.swap(b); }

    /// The object; null if there is none. It stays the holders'.
    T* get() const noexcept { return pointer; }
    /// Requires: an object is held.
    T& operator*() const { return *pointer; }
    T* operator->() const noexcept { return pointer; }
    explicit operator bool() const noexcept { return pointer != nullptr; }

private:
    template <class U>
    friend class fxRef;
    friend struct fxXdrAccess;  // transcribe/fxXDRMembers.h

    // The part of the object that has the count and the virtual destructor.
    static fxRCObj* counted(T* object) { return const_cast<std::remove_const_t<T>*>(object); }
    static void take(T* object) {
        if (object)
            ++counted(object)->count;
    }
// Of two pointers to one object g++ may believe that each was the last, and warn of the second.
#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ >= 12
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuse-after-free"
#endif
    static void give(T* object) {
        if (object && --counted(object)->count == 0)
            delete counted(object);
    }
#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ >= 12
#pragma GCC diagnostic pop
#endif

    T* pointer;  // counted, or null
};

static_assert(sizeof(fxRef<fxRCObj>) == sizeof(void*), "it can stand where a pointer stood");

// Comparisons are of addresses. Two pointers of different types are compared as the
// one that both can become.

/// Whether both lead to the same object.
template <class T, class U>
bool operator==(const fxRef<T>& a, const fxRef<U>& b) noexcept {
    return a.get() == b.get();
}
/// Whether both lead to the same object.
template <class T, class U>
bool operator==(const fxRef<T>& a, U* b) noexcept {
    return a.get() == b;
}
/// Whether both lead to the same object.
template <class T, class U>
bool operator==(T* a, const fxRef<U>& b) noexcept {
    return a == b.get();
}
/// Whether both lead to the same object.
template <class T>
bool operator==(const fxRef<T>& a, std::nullptr_t) noexcept {
    return !a;
}
/// Whether both lead to the same object.
template <class T>
bool operator==(std::nullptr_t, const fxRef<T>& b) noexcept {
    return !b;
}

/// Whether they lead to different objects, or one to none.
template <class T, class U>
bool operator!=(const fxRef<T>& a, const fxRef<U>& b) noexcept {
    return a.get() != b.get();
}
/// Whether they lead to different objects, or one to none.
template <class T, class U>
bool operator!=(const fxRef<T>& a, U* b) noexcept {
    return a.get() != b;
}
/// Whether they lead to different objects, or one to none.
template <class T, class U>
bool operator!=(T* a, const fxRef<U>& b) noexcept {
    return a != b.get();
}
/// Whether they lead to different objects, or one to none.
template <class T>
bool operator!=(const fxRef<T>& a, std::nullptr_t) noexcept {
    return static_cast<bool>(a);
}
/// Whether they lead to different objects, or one to none.
template <class T>
bool operator!=(std::nullptr_t, const fxRef<T>& b) noexcept {
    return static_cast<bool>(b);
}

/// Orders them by address.
template <class T, class U>
bool operator<(const fxRef<T>& a, const fxRef<U>& b) noexcept {
    return std::less<std::common_type_t<T*, U*>>()(a.get(), b.get());
}
/// Orders them by address.
template <class T, class U>
bool operator<(const fxRef<T>& a, U* b) noexcept {
    return std::less<std::common_type_t<T*, U*>>()(a.get(), b);
}
/// Orders them by address.
template <class T, class U>
bool operator<(T* a, const fxRef<U>& b) noexcept {
    return std::less<std::common_type_t<T*, U*>>()(a, b.get());
}
/// Null is in front of every object.
template <class T>
bool operator<(const fxRef<T>& a, std::nullptr_t) noexcept {
    return std::less<T*>()(a.get(), nullptr);
}
/// Orders them by address.
template <class T>
bool operator<(std::nullptr_t, const fxRef<T>& b) noexcept {
    return std::less<T*>()(nullptr, b.get());
}
