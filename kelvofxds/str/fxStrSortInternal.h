// fxStrSortInternal.h - a shorter way to what sorting strings step by step comes to.
#pragma once

/// Sorts the `n` strings at `strings` by strcmp. Returns false, with nothing changed, when texts
/// that strcmp takes for equal differ behind a NUL, or when there is no memory: then only the
/// stated steps tell which comes first. Which buffer of texts that are alike comes first is not
/// told. O(n log n).
bool fxSortStrings(void* strings, unsigned int n);
