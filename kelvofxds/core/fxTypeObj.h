// fxTypeObj.h - run-time type records and their registry.
#pragma once

#include "kelvofxds/core/fxExport.h"

class fxStr;
class fxTranscriber;
class fxVoidPtrDict;

/// What a reader needs to re-create an object from the type name in a stream.
///
/// Records are static globals, one per transcribable class, that live for the
/// whole process; they are never unregistered and the registry is never freed,
/// so other static objects may use both while the process ends. Constructing a
/// record registers it. Concrete containers share the generic names "ARRAY",
/// "DICT" and "SET".
class FX_EXPORT fxTypeObj {
public:
    /// Stores the five fields and registers the record under `name`.
    /// `name` is not copied and must outlive the record. `create` and
    /// `destroy` are null for an abstract type.
    fxTypeObj(const char* name, unsigned int version, void* (*create)(fxTypeObj&),
              void (*destroy)(void*), unsigned char (*xdr)(void*, fxTranscriber&));

    /// Enters `type` under its name, making the registry if there is none.
    /// Deliberate: a later record replaces an earlier one of the same name,
    /// silently, so "ARRAY" is the array record constructed last.
    /// Cost: one dictionary look-up.
    static void registerType(fxTypeObj* type);

    /// The record registered under exactly `name` (case-sensitive), or null.
    /// A look-up never makes the registry.
    static fxTypeObj* findType(const char* name);

    /// The same for a string; embedded NULs count.
    static fxTypeObj* findType(fxStr& name);

    const char* name;                                    ///< As written in streams.
    unsigned int version;                                ///< 1 for every library type.
    void* (*create)(fxTypeObj& type);                    ///< Makes a default instance.
    void (*destroy)(void* object);                       ///< Frees what create made.
    unsigned char (*xdr)(void* object, fxTranscriber&);  ///< Transcribes an instance.

    /// Name to record address; null until the first registration.
    static fxVoidPtrDict* knownTypes;
};
