// fxArrayOwn.cpp - what fxArray's own operations look like in a table; see fxArrayOwnInternal.h.
//
// A file of its own: beside the operations themselves, the table made here would hold their
// addresses in the library, which are not those that the tables of other files and of hosts hold.

#include "kelvofxds/containers/fxArrayOwnInternal.h"

namespace {
// An array whose class changes nothing.
class PlainArray : public fxArray {
public:
    PlainArray() : fxArray(1, 0) {}
    const char* className() const override { return ""; }
};

template <class Operation>
std::uintptr_t entryOfPlainArray(Operation fxArray::*operation) {
    const PlainArray array;
    return fxVirtualEntry<fxArray>(array, operation);
}
}  // namespace

std::uintptr_t fxArrayGetmem = entryOfPlainArray(&fxArray::getmem);
std::uintptr_t fxArrayCompareElements = entryOfPlainArray(&fxArray::compareElements);
