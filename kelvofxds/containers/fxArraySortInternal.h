// fxArraySortInternal.h - shorter ways to what the stated steps of a sort come to.
#pragma once

/// Leaves the elements `lo` to `hi` of `size` bytes at `block`, and the temporary, exactly as
/// fxArray's steps do with a comparison by unsigned bytes, overwritten elements included. No order
/// of the elements makes it take more than O(n log n).
/// Requires: lo <= hi, size > 0.
void fxSortBytes(void* block, unsigned int size, unsigned int lo, unsigned int hi, void* temp);
