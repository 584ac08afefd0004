// fxXDRObj.h - the base of every object that can be transcribed.
#pragma once

#include "kelvofxds/core/fxRCObj.h"

class fxTranscriber;
class fxTypeObj;

/// An object that can be written to a transcriber and read back from one.
///
/// A subclass describes its contents once, in xdr(fxTranscriber&); the same
/// calls write the object on a writing transcriber and fill it in on a reading
/// one. The type of an object is known through getTypeObj() alone. Subclasses
/// keep the order of the virtual operations and append their own; each
/// transcribable class also has its own newInstance, deleteInstance and static
/// xdr, and a type record (fxTypeObj) made of them.
class FX_EXPORT fxXDRObj : public fxRCObj {
public:
    fxXDRObj() {}
    /// The form that subclasses pass their type record to. The record is not
    /// stored and may not have been constructed yet.
    explicit fxXDRObj(fxTypeObj& type);
    fxXDRObj(const fxXDRObj&) = default;
    fxXDRObj& operator=(const fxXDRObj&) = default;
    ~fxXDRObj() override;

    /// The class's name: "fxXDRObj" here. The text is never freed.
    virtual const char* className() const;

    /// Transcribes the object's contents. Returns 1 on success, 0 on failure;
    /// here it returns 1 and transcribes nothing.
    virtual unsigned char xdr(fxTranscriber& t);

    /// The record under which the object's class is written: fxXDRObj_type
    /// here. Records live for the whole process.
    virtual fxTypeObj& getTypeObj() const;

    /// For a host's own transcribers and subclasses: nothing in the library
    /// calls it. Returns 0 here.
    virtual unsigned char xdrFail(fxTranscriber& t, void* where);

    /// The same; does nothing here.
    virtual void xdrSuccess(fxTranscriber& t);

    /// A new default object with count 0, owned by the caller; null if there is
    /// no memory.
    static void* newInstance(fxTypeObj& type);

    /// Deletes an object made by newInstance; null is ignored.
    static void deleteInstance(void* object);

    /// Returns 1 and transcribes nothing.
    static unsigned char xdr(void* object, fxTranscriber& t);
};

/// The record of fxXDRObj, "fxXDRObj", version 1.
extern FX_EXPORT fxTypeObj fxXDRObj_type;
