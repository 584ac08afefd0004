// fxXDRMembers.h - what a class of your own needs in order to be transcribed.
#pragma once

#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

#include "kelvofxds/core/fxRef.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/core/fxTypeOf.h"
#include "kelvofxds/core/fxXDRObj.h"
#include "kelvofxds/transcribe/fxGraphReader.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

// A class of your own derives from fxXDRObj, or from another class with these macros:
//
//     class Contact : public fxXDRObj {                 // contact.h
//         FX_XDR_MEMBERS(Contact)
//         fxStr name;
//         Contact* spouse = nullptr;
//     };
//
//     FX_DEFINE_XDR(Contact, "Contact", 1)              // contact.cpp
//
//     unsigned char Contact::xdr(fxTranscriber& t) {
//         return name.xdr(t) && fxXdrPointer(t, spouse);
//     }
//
// docs/own-classes.md goes on from here.

// The macros' arguments are names, not values.
// NOLINTBEGIN(bugprone-macro-parentheses)

/// Declares, inside a class, what transcription asks of it. xdr(fxTranscriber&) is the
/// one of them that the class defines itself; FX_DEFINE_XDR defines the others. What
/// follows the macro is public.
#define FX_XDR_MEMBERS(Class)                                     \
public:                                                           \
    using fxXdrClass = Class;                                     \
    const char* className() const override;                       \
    unsigned char xdr(::fxTranscriber& t) override;               \
    ::fxTypeObj& getTypeObj() const override;                     \
    [[maybe_unused]] static ::fxTypeObj& classType();             \
    [[maybe_unused]] static void* newInstance(::fxTypeObj& type); \
    [[maybe_unused]] static void deleteInstance(void* object);    \
    [[maybe_unused]] static unsigned char xdr(void* object, ::fxTranscriber& t);

/// Defines all of them but xdr(fxTranscriber&), in one source file and in the namespace
/// of the class, and with them its type record, the global Class_type. `Class` is the
/// class's name without its namespace; `name`, a literal, is what it is called in
/// streams and by className(); `version`, from 1 on, is what t.objectVersion() is while
/// objects are transcribed as the class is now. A record is known to readers as soon as
/// the file is initialised; it stays so, and a plug-in with such classes stays loaded.
///
/// The class has a public default constructor, which makes an object that has nothing
/// yet and can be written: its pointers to objects and to blocks, and its fxRefs, are
/// null. The first newInstance makes one object more, in memory that is not null, to
/// look at that through the class's xdr. A pointer that is not null is fatal: "%s: a
/// pointer is not null in a new object", and so is a class of several bases in which
/// fxXDRObj is not at the front: "%s: fxXDRObj is not at the start of the object", both
/// with the name. Strings may have a text.
#define FX_DEFINE_XDR(Class, name, version)                                               \
    static_assert(::std::is_default_constructible_v<Class>,                               \
                  "FX_DEFINE_XDR: " #Class                                                \
                  " has no public default constructor, or is "                            \
                  "abstract: then it is FX_DEFINE_ABSTRACT_XDR");                         \
    FX_DEFINE_XDR_COMMON(Class, name, version, Class::newInstance, Class::deleteInstance) \
    void* Class::newInstance(::fxTypeObj& type) { return ::fxXdrAccess::make<Class>(type); }

/// The same for a class of which there are no objects, such as an abstract one. Streams
/// have it as a part of derived classes: t.xdr(Class_type, nullptr,
/// static_cast<Class*>(this)). newInstance returns null.
#define FX_DEFINE_ABSTRACT_XDR(Class, name, version)             \
    FX_DEFINE_XDR_COMMON(Class, name, version, nullptr, nullptr) \
    void* Class::newInstance(::fxTypeObj&) { return nullptr; }

/// What both macros define.
#define FX_DEFINE_XDR_COMMON(Class, name, version, create, destroy)                      \
    static_assert(::fxXdrAccess::hasMembers<Class>(),                                    \
                  "FX_DEFINE_XDR: FX_XDR_MEMBERS(" #Class ") is missing in the class");  \
    static_assert(::std::is_base_of_v<::fxXDRObj, Class>,                                \
                  "FX_DEFINE_XDR: " #Class " is not derived from fxXDRObj");             \
    static_assert((version) >= 1, "FX_DEFINE_XDR: versions are numbered from 1 on");     \
    extern ::fxTypeObj Class##_type;                                                     \
    ::fxTypeObj Class##_type(name, version, create, destroy, Class::xdr);                \
    const char* Class::className() const { return name; }                                \
    ::fxTypeObj& Class::getTypeObj() const { return Class##_type; }                      \
    ::fxTypeObj& Class::classType() { return Class##_type; }                             \
    void Class::deleteInstance(void* object) { delete static_cast<Class*>(object); }     \
    unsigned char Class::xdr(void* object, ::fxTranscriber& t) {                         \
        return ::fxXdrContents(Class##_type, object, t,                                  \
                               [](void* self, ::fxTranscriber& inner) -> unsigned char { \
                                   return static_cast<Class*>(self)->Class::xdr(inner);  \
                               });                                                       \
    }

// NOLINTEND(bugprone-macro-parentheses)

/// Ends the process unless the pointers to objects and blocks that the xdr of `type`
/// hands over are null in `object`, and `base` is at its start. For FX_DEFINE_XDR.
FX_EXPORT void fxCheckNewObject(fxTypeObj& type, void* object, const fxXDRObj* base);

/// Whether fxXdrPointer and fxXdrRef can tell the class of an object here.
#ifdef __cpp_rtti
inline constexpr bool fxXdrChecksClasses = true;
#else
inline constexpr bool fxXdrChecksClasses = false;
#endif

/// What the macros, fxXdrPointer and fxXdrRef are made of.
struct fxXdrAccess {
    /// Whether T has the members of FX_XDR_MEMBERS itself.
    template <class T>
    static constexpr bool hasMembers() {
        if constexpr (fxHasXdrClass<T>::value)
            return std::is_same_v<typename T::fxXdrClass, T>;
        else
            return false;
    }

    /// newInstance of T.
    template <class T>
    static void* make(fxTypeObj& type) {
        static bool isChecked = false;
        if (!isChecked) {
            isChecked = true;  // the constructor, or xdr, might come here again
            isChecked = check<T>(type);
        }
        return new (std::nothrow) T;
    }

    /// A pointer to the class that T or const T is.
    template <class T>
    static fxXDRObj* asObject(T* object) {
        static_assert(std::is_base_of_v<fxXDRObj, T>, "the class is not derived from fxXDRObj");
        return const_cast<std::remove_const_t<T>*>(object);
    }

    /// The pointer of a reference, as a field to be set.
    template <class T>
    static T** fieldOf(fxRef<T>& ref) {
        return &ref.pointer;
    }

    /// The record that a pointer to T hands over: it decides which class it is that is
    /// called "ARRAY" in the stream, for instance.
    template <class T>
    static fxTypeObj& typeOf() {
        if constexpr (fxHasOwnClassType<T>()) {
            return T::classType();
        } else if constexpr (std::is_default_constructible_v<T>) {
            static fxTypeObj& type = fxTypeOf<T>();
            return type;
        } else {
            return fxXDRObj_type;
        }
    }

    /// Lets `reader` refuse objects that are no T.
    template <class T, bool checks>
    static void expect(fxGraphReader& reader) {
        if constexpr (checks && !std::is_same_v<T, fxXDRObj>)
            reader.checkNext(isA<T>);
    }

private:
    // False if there is no memory to look into.
    template <class T>
    static bool check(fxTypeObj& type) {
        struct Room {
            alignas(T) unsigned char bytes[sizeof(T)];
        };
        const std::unique_ptr<Room> room(new (std::nothrow) Room);
        if (!room)
            return false;
        // What stands there before an object is made is nothing to the compiler, but it
        // has to take it that the bytes are looked at, here and again behind it.
        const int notNull = 0xA5;
        void* place = std::memset(room->bytes, notNull, sizeof(T));
        asm volatile("" : "+r"(place) : : "memory");
        T* object = ::new (place) T;
        asm volatile("" : "+r"(object) : : "memory");
        fxCheckNewObject(type, object, object);
        object->~T();
        return true;
    }

    // The object may be of a class that was compiled without type information: then its
    // table leads to none, and it is no T.
    template <class T>
    static bool isA(fxXDRObj* object) {
        const void* const* table;
        std::memcpy(&table, static_cast<const void*>(object), sizeof table);
        if (!table[-1])
            return false;
        const T* part = dynamic_cast<const T*>(object);
        return part && static_cast<const void*>(part) == static_cast<const void*>(object);
    }
};

/// Transcribes `member`, a pointer to an object or null. The object is written once,
/// however many pointers lead to it. After reading, the member leads to the object and
/// does not count it; whose it is, is the class's business. Until the whole root has
/// been read it is not set; it has to be null then.
///
/// Read from a graph stream, and where the file that calls this is compiled with type
/// information, an object that is no T fails the read. Anything else that a reader can
/// be made of stores what the stream says.
template <class T, bool checks = fxXdrChecksClasses>
unsigned char fxXdrPointer(fxTranscriber& t, T*& member) {
    static_assert(sizeof(T) != 0, "the class has to be complete here");
    using Class = std::remove_const_t<T>;
    if (t.isReading()) {
        if (fxGraphReader* reader = fxGraphReader::of(t))
            fxXdrAccess::expect<Class, checks>(*reader);
    }
    return t.xdr(&member, fxXdrAccess::asObject(member), fxXdrAccess::typeOf<Class>(), nullptr,
                 nullptr);
}

/// The same for an fxRef, which counts the object when it is set; what it held before
/// is given up. Returns 0 on any reader but an fxGraphReader, since no other one counts.
template <class T, bool checks = fxXdrChecksClasses>
unsigned char fxXdrRef(fxTranscriber& t, fxRef<T>& ref) {
    static_assert(sizeof(T) != 0, "the class has to be complete here");
    using Class = std::remove_const_t<T>;
    if (t.isReading()) {
        fxGraphReader* const reader = fxGraphReader::of(t);
        if (!reader)
            return 0;
        ref.reset();
        fxXdrAccess::expect<Class, checks>(*reader);
        t.markCounted(true);
    }
    const unsigned char isDone = t.xdr(fxXdrAccess::fieldOf(ref), fxXdrAccess::asObject(ref.get()),
                                       fxXdrAccess::typeOf<Class>(), nullptr, nullptr);
    t.markCounted(false);
    return isDone;
}
