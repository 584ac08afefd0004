// fxSequencer.h - allocates small numbers.
#pragma once

#include "kelvofxds/containers/fxArrayFamily.h"
#include "kelvofxds/core/fxRCObj.h"

/// The numbers from `start` to `start` + `count` - 1.
struct fxSeqRange {
    unsigned int start;  ///< The first number.
    unsigned int count;  ///< How many numbers.
};

/// Ranges of numbers.
class FX_EXPORT fxSeqRangeArray : public fxArray {
    FX_ARRAY_MEMBERS(fxSeqRangeArray, fxSeqRange)
};

/// Plain functions.
class FX_EXPORT fxStubFuncArray : public fxArray {
public:
    using Function = void (*)();  ///< The element type.

    FX_ARRAY_MEMBERS(fxStubFuncArray, Function)
};

/// Hands out unsigned numbers and keeps those in use as sorted ranges, merged
/// where they touch. Numbers are never given back. Constant time while there
/// is one range; reserving is linear in the number of ranges.
class FX_EXPORT fxSequencer : public fxRCObj {
public:
    fxSequencer();
    ~fxSequencer() override;

    /// Takes a free number: the one behind the first range, 0 at first.
    /// Deliberate: while the first range starts above 0, the largest number
    /// below it is taken, not the smallest free one.
    unsigned int operator()();

    /// Marks `n` as used and returns it.
    /// Deliberate: a number in use already is entered again, in a range that
    /// overlaps.
    unsigned int operator()(unsigned int n);

    /// Merges the ranges `i` and `i` + 1 if the one ends where the other
    /// starts.
    void trymerge(unsigned int i);

    /// The numbers in use.
    const fxSeqRangeArray& getRanges() const { return ranges; }

private:
    friend struct fxSequencerLayout;  // tests/objects/fxSequencer_test.cpp

    fxSeqRangeArray ranges;  // by ascending start
};

/// Where data type codes come from; null until the toolkit is initialised.
extern FX_EXPORT fxSequencer* fx_nextDataType;
/// Where event type codes come from; null until the toolkit is initialised.
extern FX_EXPORT fxSequencer* fx_nextEventType;
