// fxWiring.h - inputs that know their types, and connections that say what is wrong.
#pragma once

#include <cstdio>
#include <type_traits>
#include <utility>

#include "kelvofxds/objects/fxInputFunction.h"
#include "kelvofxds/objects/fxObj.h"

class fxStr;

// Inputs whose function says what they take: no value; or, by copy or as a constant
// reference, one of bool, unsigned char, int, long, float, double, const char*,
// char*, fxStr and fxStrArray. Other functions do not compile. What a function
// returns is ignored.
//
// An input may be removed, and its object deleted, from within its own function:
// what the input owns stays until that returns. An exception of the function passes
// through, as it does for fxObj::addInput.

/// Adds an input to `object`, whose values go to a member function of it:
///
///     fxAddInput(this, "number", &NumberSum::take);
///
/// or to a plain function that has the object as its first argument, such as
/// void f(NumberSum*, int). An input of the same name is removed, with its
/// connections and what is queued for it; in other respects `latestOnly` and the
/// result are those of fxObj::addInput. Of several functions of one name, cast to the
/// type of the one that is meant.
template <class Object, class Function>
fxInputChannel* fxAddInput(Object* object, const char* name, Function function,
                           bool latestOnly = false) {
    static_assert(fxInputs::isReceiver<Function>,
                  "fxAddInput takes a member function or a function void f(Class*, value); "
                  "fxOnInput takes a lambda");
    if constexpr (fxInputs::isMemberOf<Object, Function>()) {
        using Signature = fxInputs::Signature<Function>;
        typename Signature::Class* self = object;
        return fxInputs::addMember(object, name, self, function, latestOnly,
                                   typename Signature::Takes());
    } else if constexpr (fxInputs::isPlainReceiver<Function>) {
        return fxInputs::addPlain(object, name, function, latestOnly);
    } else {
        return nullptr;
    }
}

/// Adds an input to `object`, whose values go to `function`, a lambda, a plain
/// function or anything else with one call operator whose parameter has a type; the
/// input owns it, and ends it when it ends itself:
///
///     fxOnInput(this, "tick", [this] { redraw(); });
///
/// An input goes with its object, so the function may refer to that. In other
/// respects this is fxAddInput. Requires: what else it refers to lives as long.
template <class Function>
fxInputChannel* fxOnInput(fxObj* object, const char* name, Function&& function,
                          bool latestOnly = false) {
    using Callee = std::decay_t<Function>;
    using Signature = fxInputs::CallSignature<Callee>;
    static_assert(!std::is_member_pointer_v<Callee>,
                  "fxOnInput takes a lambda; fxAddInput takes a member function");
    static_assert(Signature::isKnown || std::is_member_pointer_v<Callee>,
                  "fxOnInput takes a function with one call operator whose parameter has a type, "
                  "such as [](int value) {}");
    if constexpr (Signature::isKnown && !std::is_member_pointer_v<Callee>)
        return fxInputs::add(object, name, std::forward<Function>(function), latestOnly,
                             typename Signature::Takes());
    else
        return nullptr;
}

/// Does what from->connect(outputName, to, inputName) does, and returns true when
/// the two are connected, also if they were before. Otherwise it returns false, and
/// `*why`, unless null, says why in one line: an object is null; it has no channel
/// of the name, and which it has; the types do not convert, for which connect ends
/// the process; or connect, which a class may override, did not connect them, or deleted
/// one of them.
///
/// A class that overrides connect is asked also for names that it has no channel of:
/// it may pass them on to another object, and a connection that is new at the input
/// counts, but one that was there is not told from those of others: a second call of
/// the same returns false. It is not asked where the types of two channels that are
/// there do not convert.
FX_EXPORT bool fxTryConnect(fxObj* from, const char* outputName, fxObj* to, const char* inputName,
                            fxStr* why = nullptr);

/// From now on writes to `out`, one line each: every name that connect, disconnect,
/// removeInput and removeOutput ignore because there is no such channel; every
/// connection and the conversion it needs; and every disconnection, also those that
/// come about because an end goes. Null turns the log off, as it is at first.
///
/// Lines name classes, channels and types: `connected LineReader output "line"
/// (char*) to NumberSum input "number" (int)`. The names of a channel are known if it
/// was added, connected or disconnected by name since the log was turned on; another
/// is "an output" or "an input". Each line is flushed. Nothing is called back but
/// className() of the objects.
///
/// Requires: the file stays open until the log is turned off, which frees what it
/// remembers. While it is off, each of these operations asks for it once; sending
/// never does.
FX_EXPORT void fxSetWiringLog(std::FILE* out);

/// Writes `n` objects and their wiring as a graph for Graphviz, and flushes: classes,
/// inputs and outputs with their types, the connections between them, and what they
/// convert. Node names depend on the order of the objects and the names of their
/// channels alone. True when everything was written; false for a null `out` too.
///
/// Null pointers, and objects after their first place in the list, are passed over.
/// A connection to or from a channel that none of the objects has is dashed, and
/// ends at a node that says only the type.
FX_EXPORT bool fxWriteDot(std::FILE* out, fxObj* const* objects, unsigned int n);
