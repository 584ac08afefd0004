// fxArrayOwnInternal.h - whether an array's class has replaced an operation of fxArray.
#pragma once

#include <cstdint>

#include "kelvofxds/containers/fxArray.h"
#include "kelvofxds/containers/fxVirtualEntryInternal.h"

/// What an array has in place whose class does not replace the operation. 0
/// until fxArrayOwn.cpp is initialised: until then the operations are called as
/// if every class replaced them, which comes to the same.
extern __attribute__((visibility("hidden"))) std::uintptr_t fxArrayGetmem;
extern __attribute__((visibility("hidden"))) std::uintptr_t fxArrayCompareElements;

/// Whether `array` gets memory as fxArray itself does.
inline bool fxGetsOwnMemory(const fxArray& array) {
    return fxVirtualEntry(array, &fxArray::getmem) == fxArrayGetmem;
}

/// Whether `array` compares elements as fxArray itself does.
inline bool fxComparesBytes(const fxArray& array) {
    return fxVirtualEntry(array, &fxArray::compareElements) == fxArrayCompareElements;
}
