// fxCounted.h - a counted object and its smart-pointer base, for users.
#pragma once

#include "kelvofxds/core/fxExport.h"

/// A reference-counted object for use with RPtr_base; the library itself uses
/// fxRCObj. The count is kept by whoever shares the object.
class FX_EXPORT Counted {
public:
    /// A new object, without holders.
    Counted() : count(0) {}
    Counted(const Counted&) : count(0) {}
    /// Leaves the count alone.
    Counted& operator=(const Counted&) { return *this; }
    virtual ~Counted();

    int count;  ///< Number of holders; 0 on construction.
};

/// Holds one pointer to a Counted and gives up one reference when destroyed.
///
/// Construction does not touch the count: whoever makes the pointer adds the
/// reference. Not copyable, since a copy would give up a reference it never
/// took.
class FX_EXPORT RPtr_base {
public:
    /// Holds `object`, or nothing; the caller has added the reference.
    explicit RPtr_base(Counted* object = nullptr) : ptr(object) {}
    RPtr_base(const RPtr_base&) = delete;
    RPtr_base& operator=(const RPtr_base&) = delete;

    /// Subtracts one from the count and deletes the object when the result is
    /// 0 or less. A null pointer is left alone.
    /// Deliberate: the test is "0 or less", where fxRCObj holders test for
    /// exactly 0; an object whose count was already 0 is deleted.
    ~RPtr_base();

protected:
    Counted* ptr;  // one reference is ours, or null
};
