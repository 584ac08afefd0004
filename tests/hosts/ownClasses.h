// ownClasses.h - classes that a host and its plug-ins share.
#pragma once

#include <cstdio>

#include "kelvofxds/core/fxTypeOf.h"
#include "kelvofxds/transcribe/fxGraphReader.h"
#include "kelvofxds/transcribe/fxGraphWriter.h"
#include "kelvofxds/transcribe/fxMemoryStream.h"
#include "kelvofxds/transcribe/fxXDRMembers.h"

/// Defined by the host.
class Node : public fxXDRObj {
    FX_XDR_MEMBERS(Node)
    int value = 0;
    Node* next = nullptr;
};

/// A copy of `object` and all that it leads to, written and read as a graph; null, and a line of
/// why, when that fails.
template <class T>
T* copied(T& object) {
    fxRef<fxMemoryStream> stream(new fxMemoryStream);
    fxGraphWriter writer(stream.get());
    if (!writer.writeObject(&object, &object)) {
        std::fprintf(stderr, "cannot be written: %s\n", writer.lastError());
        return nullptr;
    }
    fxGraphReader reader(stream.get(), 0x1122, 0x33445566, "ieee");
    T* const copy = static_cast<T*>(reader.readObject(fxTypeOf<T>()));
    if (!copy)
        std::fprintf(stderr, "cannot be read: %s\n", reader.lastError());
    return copy;
}
