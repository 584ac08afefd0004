// fxDeepCopy.h - a copy of an object with all that it leads to.
#pragma once

#include "kelvofxds/core/fxXDRObj.h"

class fxStr;

/// A copy of `object` and of everything that its class transcribes, shared and
/// cyclic as the original is: what a graph stream of it is read back as. The caller's
/// from then on, and so is what plain pointers in it lead to, as the classes say.
///
/// Null when the object cannot be written or read back, or there is no memory; then
/// `why`, unless it is null, is a line that says which. After success `why` is empty.
/// Cost: that of a stream in memory, written and read.
FX_EXPORT fxXDRObj* fxDeepCopy(fxXDRObj& object, fxStr* why = nullptr);

/// The same, known to be of the class that the original is known to be of.
template <class T>
T* fxDeepCopy(T& object, fxStr* why = nullptr) {
    return static_cast<T*>(fxDeepCopy(static_cast<fxXDRObj&>(object), why));
}
