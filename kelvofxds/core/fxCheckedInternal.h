// fxCheckedInternal.h - what the checked build looks at, and how it says what it finds.
#pragma once

// Misuse whose outcome nothing states is undefined. A library that is configured with
// KELVOFXDS_CHECKED looks for it at every operation that is not inline in a public header, and
// ends the process with one line:
//
//     CLASS::OPERATION: ARGUMENT VALUE beyond LIMIT VALUE       it may be the limit itself
//     CLASS::OPERATION: ARGUMENT VALUE not below LIMIT VALUE    it may not
//     CLASS::OPERATION: ARGUMENT is null
//     CLASS::OPERATION: a clause that says what is wrong with the state
//
// CLASS is that of the object, a host's too, and OPERATION the function that was called.
// docs/safety.md lists what is looked at. Otherwise nothing of this is compiled: the macros'
// arguments are not even evaluated.

#ifdef KELVOFXDS_CHECKED

#include <cstdint>
#include <type_traits>

class fxXDRObj;

/// How a check ends the process. `owner` is the class, `operation` its member.
struct __attribute__((visibility("hidden"))) fxMisuse {
    [[noreturn, gnu::cold]] static void isNull(const char* owner, const char* operation,
                                               const char* what);
    [[noreturn, gnu::cold]] static void beyond(const char* owner, const char* operation,
                                               const char* what, unsigned int value,
                                               const char* limitName, unsigned int limit);
    [[noreturn, gnu::cold]] static void notBelow(const char* owner, const char* operation,
                                                 const char* what, unsigned int value,
                                                 const char* limitName, unsigned int limit);
    /// `start` and `n` together; or `start`, if that is too much by itself.
    [[noreturn, gnu::cold]] static void beyond(const char* owner, const char* operation,
                                               unsigned int start, unsigned int n,
                                               unsigned int limit);
    /// What the format, as for printf, and its arguments say.
    [[noreturn, gnu::cold]] static void says(const char* owner, const char* operation,
                                             const char* format, ...)
        __attribute__((format(printf, 3, 4)));

    /// The name of the class of an object with virtual operations; null if it is a host's
    /// without run-time type information.
    static const char* nameOf(const void* object);

    /// Whether the `n` elements from `start` on are among `length`, or something else is stated:
    /// none are asked for, or their bytes are too many for a size.
    static bool isStatedRange(unsigned int start, unsigned int n, unsigned int length,
                              unsigned int elementSize) {
        const std::uint64_t end = std::uint64_t{start} + n;
        return n == 0 || end <= length || end * elementSize > 0xFFFFFFFF;
    }
    /// The same for one position, of which `most` is the last that may be.
    static bool isStatedPosition(unsigned int index, unsigned int most, unsigned int elementSize) {
        return index <= most || std::uint64_t{index} * elementSize > 0xFFFFFFFF;
    }

    // Threads.

    /// Notes the calling thread as the one that has initialised the toolkit.
    static void isInitializing();
    /// Whether another one has.
    static bool isOtherThread();

    // Counts. They are the holders' own, so only what the library itself holds is known.

    static void holds(const void* object);
    static void releases(const void* object);
    /// What becomes of the object is stated, whoever holds it.
    static void forgets(const void* object);
    /// The number of references that the library holds.
    static unsigned int holdersOf(const void* object);

    // What a destructor leaves, to be met by whoever goes on using the object.

    static const int ended = -0x21524111;  ///< As a count.
    static char endedText;                 ///< As the address of a text.
    /// A store that is not left out although the object's life is over.
    template <class Value>
    static void leave(Value& field, Value value) {
        *static_cast<volatile Value*>(&field) = value;
    }
};

/// The name of the class of `object`, for messages.
template <class Class>
const char* fxClassOf(const Class& object) {
    const char* name = fxMisuse::nameOf(&object);
    if constexpr (std::is_base_of_v<fxXDRObj, Class>)
        return name ? name : object.className();
    else
        return name ? name : "fxRCObj";
}

#define FX_CHECK_NOT_NULL(owner, what)                \
    do {                                              \
        if (__builtin_expect(!(what), false))         \
            fxMisuse::isNull(owner, __func__, #what); \
    } while (false)

/// The same as an expression, for what initialises a base or a member.
#define FX_CHECK_ARGUMENT(owner, what) \
    static_cast<void>((what) ? 0 : (fxMisuse::isNull(owner, __func__, #what), 0))

/// For what may be null while there are none.
#define FX_CHECK_NOT_NULL_OF(owner, what, n)              \
    do {                                                  \
        if (__builtin_expect(!(what) && (n) != 0, false)) \
            fxMisuse::isNull(owner, __func__, #what);     \
    } while (false)

#define FX_CHECK_BELOW(owner, what, limitName, limit)                           \
    do {                                                                        \
        if (__builtin_expect((what) >= (limit), false))                         \
            fxMisuse::notBelow(owner, __func__, #what, what, limitName, limit); \
    } while (false)

/// That `n` elements of `size` bytes have a number of bytes that a word can say.
#define FX_CHECK_COUNT(owner, n, size)                                                        \
    do {                                                                                      \
        if (__builtin_expect((n) > 0xFFFFFFFF / (size), false))                               \
            fxMisuse::beyond(owner, __func__, #n, n, "the addressable", 0xFFFFFFFF / (size)); \
    } while (false)

/// That `condition` holds; else the rest is a clause, as for printf.
#define FX_CHECK_THAT(owner, condition, ...)              \
    do {                                                  \
        if (__builtin_expect(!(condition), false))        \
            fxMisuse::says(owner, __func__, __VA_ARGS__); \
    } while (false)

/// That it is the thread that has initialised the toolkit, if any has.
#define FX_CHECK_THREAD(owner)                       \
    FX_CHECK_THAT(owner, !fxMisuse::isOtherThread(), \
                  "called by another thread than the one that called fxInitializeToolkit")

/// That a counted object has not been destroyed.
#define FX_CHECK_LIVES(owner, count) \
    FX_CHECK_THAT(owner, (count) != fxMisuse::ended, "the object has been destroyed already")

/// What is done in the checked build alone.
#define FX_WHEN_CHECKED(...) \
    do {                     \
        __VA_ARGS__;         \
    } while (false)

#else

#define FX_CHECK_NOT_NULL(...) static_cast<void>(0)
#define FX_CHECK_ARGUMENT(...) static_cast<void>(0)
#define FX_CHECK_NOT_NULL_OF(...) static_cast<void>(0)
#define FX_CHECK_BELOW(...) static_cast<void>(0)
#define FX_CHECK_COUNT(...) static_cast<void>(0)
#define FX_CHECK_THAT(...) static_cast<void>(0)
#define FX_CHECK_THREAD(...) static_cast<void>(0)
#define FX_CHECK_LIVES(...) static_cast<void>(0)
#define FX_WHEN_CHECKED(...) static_cast<void>(0)

#endif
