// fxRCObj.h - the intrusively reference-counted base.
#pragma once

#include "kelvofxds/core/fxExport.h"

/// An object with a count of its holders.
///
/// There is no retain or release operation; each holder does it inline:
/// - a new object has count 0 and belongs to nobody;
/// - storing a non-null pointer adds one to `count`;
/// - dropping the pointer subtracts one and, when the result is exactly 0,
///   deletes the object through its virtual destructor;
/// - replacing a held pointer by the same pointer does nothing.
///
/// Copies are new objects: their count starts at 0, and assignment leaves the
/// target's count alone, because holders hold objects, not values.
/// Single-threaded: the count is a plain int.
class FX_EXPORT fxRCObj {
public:
    /// A new object, without holders.
    fxRCObj() : count(0) {}
    fxRCObj(const fxRCObj&) : count(0) {}
    /// Leaves the count alone.
    fxRCObj& operator=(const fxRCObj&) { return *this; }
    virtual ~fxRCObj();

    int count;  ///< Number of holders; changed by holders only.
};
