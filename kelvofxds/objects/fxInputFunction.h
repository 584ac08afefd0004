// fxInputFunction.h - inputs of functions whose parameter says what they take.
#pragma once

#include <new>
#include <type_traits>
#include <utility>

#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/values/fxData.h"

// What fxAddInput and fxOnInput (fxWiring.h) are made of.

/// Of a parameter of type `T`: the data type code of the values it takes, and the
/// type as which they are delivered. A type without a code has none. A host that
/// sends holders of its own class specialises it for their values.
template <class T>
struct fxInputType;

/// Says what parameters of type T are delivered as; for this file.
#define FX_INPUT_TYPE(T, Delivers, typeCode)                     \
    template <>                                                  \
    struct fxInputType<T> {                                      \
        using Delivered = Delivers;                              \
        static unsigned short code() { return fxDT_##typeCode; } \
    };
FX_INPUT_TYPE(bool, unsigned char, fxBool)
FX_INPUT_TYPE(unsigned char, unsigned char, fxBool)
FX_INPUT_TYPE(int, int, int)
FX_INPUT_TYPE(long, long, long)
FX_INPUT_TYPE(float, float, float)
FX_INPUT_TYPE(double, double, double)
FX_INPUT_TYPE(char*, char*, CharPtr)
FX_INPUT_TYPE(const char*, char*, CharPtr)
FX_INPUT_TYPE(fxStr, fxStr, fxStr)
FX_INPUT_TYPE(fxStrArray, fxStrArray, fxStrArray)
#undef FX_INPUT_TYPE

/// An input that is more than its channel, and knows how to end itself. It receives
/// for the object that it was added to, whatever its target is: with that object goes
/// what is queued for the input, also by way of a conversion.
class fxOwnInput : public fxInputChannel {
public:
    /// The object that it receives for; null before it is added and once it is removed,
    /// although a message that is converted may still reach it then.
    fxObj* getOwner() const { return owner; }
    /// For what adds and removes inputs.
    void setOwner(fxObj* object) { owner = object; }
    /// Ends the input: fxInputChannel::dec calls it with the last reference.
    void end() { destroy(this); }

protected:
    /// `ending` deletes an input as the class that it is.
    fxOwnInput(unsigned short type, void (*receive)(), bool latestOnly, void (*ending)(fxOwnInput*))
        : fxInputChannel(type, nullptr, receive, latestOnly), owner(nullptr), destroy(ending) {
        flags |= ownFlag;
    }

private:
    fxObj* owner;
    void (*destroy)(fxOwnInput*);
};

/// Adds an input that the object owns from then on. One of the same name is removed,
/// as by removeInput. Null, and the input is ended, if the object takes none
/// any more.
FX_EXPORT fxInputChannel* fxAddOwnInput(fxObj* object, const char* name, fxOwnInput* input);

/// object->addInput(...), but one of the same name is removed, as by removeInput.
FX_EXPORT fxInputChannel* fxAddPlainInput(fxObj* object, const char* name, unsigned short type,
                                          void* target, void (*function)(), bool latestOnly);

/// How the types of functions are taken apart.
namespace fxInputs {

/// The parameters of a function.
template <class... T>
struct Parameters {};

/// Of anything that is no function: not known.
template <class F>
struct Signature {
    static constexpr bool isKnown = false;  ///< It is no function.
};

/// Of a function, or of a member function of `Object`.
template <class Object, class... T>
struct KnownSignature {
    static constexpr bool isKnown = true;  ///< It is a function.
    using Class = Object;                  ///< Of which it is a member; void if it is none.
    using Takes = Parameters<T...>;        ///< Its parameters.
};

// The macro's argument is no value.
// NOLINTBEGIN(bugprone-macro-parentheses)
/// Knows member functions with such qualifiers; for this file.
#define FX_SIGNATURE(qualifiers)            \
    template <class R, class C, class... T> \
    struct Signature<R (C::*)(T...) qualifiers> : KnownSignature<C, T...> {};
FX_SIGNATURE()
FX_SIGNATURE(const)
FX_SIGNATURE(&)
FX_SIGNATURE(const&)
FX_SIGNATURE(noexcept)
FX_SIGNATURE(const noexcept)
FX_SIGNATURE(&noexcept)
FX_SIGNATURE(const& noexcept)
#undef FX_SIGNATURE
// NOLINTEND(bugprone-macro-parentheses)
template <class R, class... T>
struct Signature<R (*)(T...)> : KnownSignature<void, T...> {};
template <class R, class... T>
struct Signature<R (*)(T...) noexcept> : KnownSignature<void, T...> {};

/// Of an object that can be called, such as a lambda: its operator's.
template <class F, class = void>
struct CallSignature : Signature<F> {};
template <class F>
struct CallSignature<F, std::void_t<decltype(&F::operator())>>
    : Signature<decltype(&F::operator())> {};

/// A parameter's type without const and reference.
template <class T>
using Bare = std::remove_cv_t<std::remove_reference_t<T>>;

/// Whether values of the type have a code.
template <class T, class = void>
inline constexpr bool hasCode = false;
template <class T>
inline constexpr bool hasCode<T, std::void_t<decltype(fxInputType<T>::code())>> = true;

/// Whether a parameter cannot change what it is given, which would be a copy.
template <class T>
inline constexpr bool isCopied =
    !std::is_lvalue_reference_v<T> || std::is_const_v<std::remove_reference_t<T>>;

/// Whether an input's function may have such parameters; if not, it does not
/// compile, and says why.
template <class... T>
constexpr bool mayTake(Parameters<T...>) {
    static_assert(sizeof...(T) <= 1, "an input's function takes one value, or none");
    static_assert((hasCode<Bare<T>> && ...),
                  "an input's function takes no value, or one of the types bool, unsigned char, "
                  "int, long, float, double, const char*, char*, fxStr and fxStrArray");
    static_assert((isCopied<T> && ...),
                  "an input's function takes its value by copy or as a constant reference");
    return sizeof...(T) <= 1 && (hasCode<Bare<T>> && ...) && (isCopied<T> && ...);
}

/// The code of the values that such parameters take.
template <class... T>
unsigned short codeOf(Parameters<T...>) {
    if constexpr (sizeof...(T) == 0)
        return fxDT_void;
    else
        return (fxInputType<Bare<T>>::code(), ...);
}

/// A delivered value as a parameter of type `T` takes it.
template <class T>
decltype(auto) passed(typename fxInputType<Bare<T>>::Delivered& value) {
    using Delivered = typename fxInputType<Bare<T>>::Delivered;
    if constexpr (std::is_same_v<Bare<T>, Delivered>)
        return static_cast<Delivered&&>(value);
    else
        return static_cast<Bare<T>>(value);
}

/// A reference on an input, so that what it calls may remove it.
class Calling {
public:
    /// Until the end of the object.
    explicit Calling(fxInputChannel* c) : channel(c) { ++channel->count; }
    Calling(const Calling&) = delete;
    Calling& operator=(const Calling&) = delete;
    ~Calling() {
        if (channel->count > 1)
            --channel->count;
        else
            channel->dec();
    }

private:
    fxInputChannel* channel;
};

/// An input that owns the function it calls, which is therefore there until it
/// returns, whatever it does.
template <class F, class... T>
class Owning final : public fxOwnInput {
public:
    /// A copy of `f`, or what is moved out of it.
    template <class Given>
    Owning(Given&& f, bool latestOnly)
        : fxOwnInput(codeOf(Parameters<T...>()), reinterpret_cast<void (*)()>(deliver), latestOnly,
                     destroy),
          callee(std::forward<Given>(f)) {
        target = this;
    }

private:
    static void deliver(void* input, typename fxInputType<Bare<T>>::Delivered... value) {
        auto* self = static_cast<Owning*>(input);
        if (!self->getOwner())
            return;
        const Calling call(self);
        static_cast<void>(self->callee(passed<T>(value)...));
    }

    static void destroy(fxOwnInput* input) { delete static_cast<Owning*>(input); }

    F callee;
};

/// Whether a plain function of this result and value can be called as it is.
template <class R, class... T>
inline constexpr bool isRaw = std::is_void_v<R>;
template <class R, class T>
inline constexpr bool isRaw<R, T> =
    std::is_void_v<R>&& std::is_same_v<T, typename fxInputType<Bare<T>>::Delivered>;

/// Makes an input of a function that it owns.
template <class F, class... T>
fxInputChannel* add(fxObj* object, const char* name, F&& function, bool latestOnly,
                    Parameters<T...>) {
    if constexpr (mayTake(Parameters<T...>())) {
        using Input = Owning<std::decay_t<F>, T...>;
        auto* input = new (std::nothrow) Input(std::forward<F>(function), latestOnly);
        if (!input)
            fxFatal("out of memory");
        return fxAddOwnInput(object, name, input);
    } else {
        return nullptr;
    }
}

/// The same of a member function.
template <class Class, class F, class... T>
fxInputChannel* addMember(fxObj* object, const char* name, Class* self, F member, bool latestOnly,
                          Parameters<T...> takes) {
    const auto call = [=](auto&&... value) {
        static_cast<void>((self->*member)(std::forward<decltype(value)>(value)...));
    };
    return add(object, name, call, latestOnly, takes);
}

/// The same of a plain function, whose first argument is the object.
template <class Object, class R, class Class, class... T>
fxInputChannel* addPlain(Object* object, const char* name, R (*function)(Class*, T...),
                         bool latestOnly) {
    Class* target = object;
    if constexpr (mayTake(Parameters<T...>())) {
        void* first = const_cast<void*>(static_cast<const volatile void*>(target));
        // What is queued for an object is found by its own address.
        const bool isObject = first == static_cast<void*>(static_cast<fxObj*>(object));
        if (isRaw<R, T...> && isObject)
            return fxAddPlainInput(object, name, codeOf(Parameters<T...>()), first,
                                   reinterpret_cast<void (*)()>(function), latestOnly);
        const auto call = [=](auto&&... value) {
            static_cast<void>(function(target, std::forward<decltype(value)>(value)...));
        };
        return add(object, name, call, latestOnly, Parameters<T...>());
    } else {
        return nullptr;
    }
}

/// Whether it is a function whose first argument is an object.
template <class F>
inline constexpr bool isPlainReceiver = false;
template <class R, class C, class... T>
inline constexpr bool isPlainReceiver<R (*)(C*, T...)> = true;
template <class R, class C, class... T>
inline constexpr bool isPlainReceiver<R (*)(C*, T...) noexcept> = true;

/// Whether fxAddInput takes such a function.
template <class F>
inline constexpr bool isReceiver = std::is_member_function_pointer_v<F> || isPlainReceiver<F>;

/// Whether `F` is a member function that can be called on an `Object`; one that is
/// none that can be does not compile, and says why.
template <class Object, class F>
constexpr bool isMemberOf() {
    if constexpr (!std::is_member_function_pointer_v<F>) {
        return false;
    } else if constexpr (!Signature<F>::isKnown) {
        static_assert(Signature<F>::isKnown,
                      "fxAddInput takes a member function that is not declared with &&, volatile "
                      "or ...");
        return false;
    } else {
        using Class = typename Signature<F>::Class;
        static_assert(std::is_base_of_v<Class, Object>,
                      "fxAddInput takes a member function of the object's class or of its bases");
        return std::is_base_of_v<Class, Object>;
    }
}

}  // namespace fxInputs
