// Sizes of arrays, dictionaries and sets.

#if KELVOFXDS_LIBRARY_IS_CHECKED

#include <cstdlib>
#include <string>
#include <vector>

#include "kelvofxds/containers/fxArrayOf.h"
#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/str/fxStrArray.h"
#include "tests/figures/sizes.h"

namespace {

const auto isStated = SizeOutcome::isStated;
const auto hasNoMemory = SizeOutcome::hasNoMemory;
const auto isMisuse = SizeOutcome::isMisuse;
const auto isMisuseIfAddressable = SizeOutcome::isMisuseIfAddressable;

// Where `change` returns, there are five elements still.
template <class Array, class Change>
bool stays(Change change) {
    Array array(5U);
    change(array);
    return array.length() == 5;
}

// What a class of arrays takes: what changes one, sorting and searching, and parts of one.
template <class A>
std::vector<SizeRow> rowsOf(const std::string& name) {
    const std::string of = name + "::";
    const unsigned int size = A().getElemSize();
    return {
        {of + "constructor", "fxArray", size, 0, hasNoMemory,
         [](unsigned int n) { return A(n).length() == 0; }},
        {of + "resize", "fxArray", size, 0, hasNoMemory,
         [](unsigned int n) { return stays<A>([n](A& a) { a.resize(n); }); }},
        {of + "setMaxLength", "fxArray", size, 0, hasNoMemory,
         [](unsigned int n) { return stays<A>([n](A& a) { a.setMaxLength(n); }); }},
        {of + "remove", "fxArray", size, 0, isMisuseIfAddressable,
         [](unsigned int n) { return stays<A>([n](A& a) { a.remove(0, n); }); }},
        {of + "remove", "fxArray", size, size, isMisuseIfAddressable,
         [](unsigned int n) { return stays<A>([n](A& a) { a.remove(n, 1); }); }},
        {of + "remove", "", size, 0, isStated,
         [](unsigned int n) { return stays<A>([n](A& a) { a.remove(n, 0); }); }},
        {of + "insert", "fxArray", size, 0, isMisuseIfAddressable,
         [](unsigned int n) { return stays<A>([n](A& a) { a.insert(&a[0U], n); }); }},
        {of + "insert", "fxArray", size, 0, isMisuseIfAddressable,
         [](unsigned int n) { return stays<A>([n](A& a) { a.insert(A(a), n); }); }},
        {of + "swap", "", size, 0, isMisuse,
         [](unsigned int n) { return stays<A>([n](A& a) { a.swap(n, 0); }); }},
        {of + "swap", "", size, 0, isMisuse,
         [](unsigned int n) { return stays<A>([n](A& a) { a.swap(0, n); }); }},
        {of + "find", "", size, 0, isStated,
         [](unsigned int n) {
             A a(5U);
             return a.find(&a[0U], n) == 0xFFFFFFFF;
         }},
        {of + "qsort", "", size, 0, isMisuse,
         [](unsigned int n) { return stays<A>([n](A& a) { a.qsort(0, n); }); }},
        {of + "qsort", "", size, 0, isMisuse,
         [](unsigned int n) { return stays<A>([n](A& a) { a.qsort(n - 1, 1); }); }},
        {of + "cut", "fxArray", size, 0, isMisuseIfAddressable,
         [](unsigned int n) { return A(5U).cut(0, n).length() == 0; }},
        {of + "cut", "fxArray", size, size, isMisuseIfAddressable,
         [](unsigned int n) { return A(5U).cut(n, 1).length() == 0; }},
        {of + "extract", "fxArray", size, 0, isMisuseIfAddressable,
         [](unsigned int n) { return A(5U).extract(0, n).length() == 0; }},
        {of + "extract", "fxArray", size, size, isMisuseIfAddressable,
         [](unsigned int n) { return A(5U).extract(n, 1).length() == 0; }},
        {of + "head", "fxArray", size, 0, isMisuseIfAddressable,
         [](unsigned int n) { return A(5U).head(n).length() == 0; }},
        {of + "tail", "fxArray", size, 0, isMisuseIfAddressable,
         [](unsigned int n) { return A(5U).tail(n).length() == 0; }},
        {of + "raw_extract", "fxArray", size, 0, isMisuseIfAddressable,
         [](unsigned int n) { return !A(5U).raw_extract(0, n); }},
        {of + "raw_cut", "fxArray", size, 0, isMisuseIfAddressable,
         [](unsigned int n) { return !A(5U).raw_cut(0, n); }},
        {of + "raw_head", "fxArray", size, 0, isMisuseIfAddressable,
         [](unsigned int n) { return !A(5U).raw_head(n); }},
        {of + "raw_tail", "fxArray", size, 0, isMisuseIfAddressable,
         [](unsigned int n) { return !A(5U).raw_tail(n); }},
    };
}

const std::vector<SizeRow> arrays[] = {rowsOf<fxUnsignedCharArray>("fxUnsignedCharArray"),
                                       rowsOf<fxShortArray>("fxShortArray"),
                                       rowsOf<fxIntArray>("fxIntArray"),
                                       rowsOf<fxDoubleArray>("fxDoubleArray"),
                                       rowsOf<fxVoidPtrArray>("fxVoidPtrArray"),
                                       rowsOf<fxStrArray>("fxStrArray")};

// The other operations of these arrays are inline.
using Doubles = fxArrayOf<double>;
const std::vector<SizeRow> arraysOfHosts = {
    {"fxArrayOf<double>::resize", "fxArray", 8, 0, hasNoMemory,
     [](unsigned int n) { return Doubles(n).length() == 0; }},
    {"fxArrayOf<double>::setMaxLength", "fxArray", 8, 0, hasNoMemory,
     [](unsigned int n) { return stays<Doubles>([n](Doubles& a) { a.setMaxLength(n); }); }},
    {"fxArrayOf<double>::find", "", 8, 0, isStated,
     [](unsigned int n) { return Doubles(5U).find(0, n) == 0xFFFFFFFF; }},
    {"fxArrayOf<double>::raw_extract", "fxArray", 8, 0, isMisuseIfAddressable,
     [](unsigned int n) { return Doubles(5U).head(n).length() == 0; }},
    {"fxArrayOf<double>::raw_extract", "fxArray", 8, 8, isMisuseIfAddressable,
     [](unsigned int n) { return Doubles(5U).extract(n, 1).length() == 0; }},
};

const std::vector<SizeRow> tables = {
    {"fxStrStrDictionary", "fxDictionary", 4, 0, hasNoMemory,
     [](unsigned int n) { return fxStrStrDictionary(n).getNumBuckets() == 0; }},
    {"fxVoidPtrDict", "fxDictionary", 4, 0, hasNoMemory,
     [](unsigned int n) { return fxVoidPtrDict(n).getNumBuckets() == 0; }},
    {"fxStrSet", "fxSet", 4, 0, hasNoMemory,
     [](unsigned int n) { return fxStrSet(n).getNumBuckets() == 0; }},
};

const AddSizeRows added[] = {AddSizeRows(arrays[0]),     AddSizeRows(arrays[1]),
                             AddSizeRows(arrays[2]),     AddSizeRows(arrays[3]),
                             AddSizeRows(arrays[4]),     AddSizeRows(arrays[5]),
                             AddSizeRows(arraysOfHosts), AddSizeRows(tables)};

}  // namespace

#endif
