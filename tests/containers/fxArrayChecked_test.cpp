// fxArrayChecked_test.cpp - misuse of arrays, which the checked build stops.

#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxArrayOf.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/str/fxStrArray.h"
#include "tests/support/misuse.h"

namespace {

// Five numbers.
struct Five : fxIntArray {
    Five() : fxIntArray(5U) {
        for (unsigned int i = 0; i < 5; ++i)
            (*this)[i] = static_cast<int>(i);
    }
};

fxIntArray five() { return Five(); }

void* const null = nullptr;
const int value = 7;
const unsigned int huge = 0x40000000;  // so many ints have more bytes than a word can say

const Misuse positions[] = {
    {"insert", [] { Five().insert(&value, 5); }, [] { five().insert(&value, 6); },
     "fxIntArray::insert: index 6 beyond length 5"},
    {"insert an array", [] { five().insert(Five(), 5); }, [] { five().insert(Five(), 6); },
     "fxIntArray::insert: index 6 beyond length 5"},
    {"remove behind the end", [] { five().remove(4, 1); }, [] { five().remove(7, 1); },
     "fxIntArray::remove: start 7 beyond length 5"},
    {"remove too many", [] { five().remove(3, 2); }, [] { five().remove(3, 3); },
     "fxIntArray::remove: start 3 and n 3 beyond length 5"},
    {"remove more than there are", [] { five().remove(0, 5); }, [] { five().remove(0, 6); },
     "fxIntArray::remove: n 6 beyond length 5"},
    {"remove nothing anywhere", [] { five().remove(9, 0); }, [] { five().remove(5, 1); },
     "fxIntArray::remove: start 5 and n 1 beyond length 5"},
    {"swap, the first", [] { five().swap(4, 0); }, [] { five().swap(5, 0); },
     "fxIntArray::swap: i 5 not below length 5"},
    {"swap, the second", [] { five().swap(0, 4); }, [] { five().swap(0, 5); },
     "fxIntArray::swap: j 5 not below length 5"},
    {"swap in an empty array", [] { five().swap(0, 0); }, [] { fxIntArray().swap(0, 0); },
     "fxIntArray::swap: i 0 not below length 0"},
    {"qsort", [] { five().qsort(2, 3); }, [] { five().qsort(2, 4); },
     "fxIntArray::qsort: start 2 and n 4 beyond length 5"},
    {"qsort of more than can be addressed", [] { five().qsort(9, 0); },
     [] { five().qsort(0, huge); }, "fxIntArray::qsort: n 1073741824 beyond length 5"},
    {"cut", [] { five().cut(1, 4); }, [] { five().cut(1, 5); },
     "fxIntArray::cut: start 1 and n 5 beyond length 5"},
    {"extract", [] { five().extract(5, 0); }, [] { five().extract(6, 1); },
     "fxIntArray::extract: start 6 beyond length 5"},
    {"head", [] { five().head(5); }, [] { five().head(6); },
     "fxIntArray::head: n 6 beyond length 5"},
    {"tail", [] { five().tail(5); }, [] { five().tail(6); },
     "fxIntArray::tail: n 6 beyond length 5"},
    {"raw_extract", [] { std::free(five().raw_extract(3, 2)); },
     [] { std::free(five().raw_extract(3, 3)); },
     "fxIntArray::raw_extract: start 3 and n 3 beyond length 5"},
    {"raw_head", [] { std::free(five().raw_head(5)); }, [] { std::free(five().raw_head(6)); },
     "fxIntArray::raw_head: n 6 beyond length 5"},
    {"raw_tail", [] { std::free(five().raw_tail(5)); }, [] { std::free(five().raw_tail(6)); },
     "fxIntArray::raw_tail: n 6 beyond length 5"},
    {"raw_cut", [] { std::free(five().raw_cut(0, 5)); }, [] { std::free(five().raw_cut(0, 6)); },
     "fxIntArray::raw_cut: n 6 beyond length 5"},
    {"of strings", [] { fxStrArray(2).remove(1, 1); }, [] { fxStrArray(2).remove(2, 1); },
     "fxStrArray::remove: start 2 and n 1 beyond length 2"},
    {"through the base, of a host's elements", [] { fxArrayOf<double>(2).head(2); },
     [] { fxArrayOf<double>(2).extract(2, 1); },
     "fxArrayOf<double>::raw_extract: start 2 and n 1 beyond length 2"},
};

const Misuse nulls[] = {
    {"append", [] { five().append(&value); }, [] { five().append(null); },
     "fxIntArray::append: elem is null"},
    {"append(0), which is no number", [] { five().append(&value); }, [] { five().append(0); },
     "fxIntArray::append: elem is null"},
    {"insert", [] { five().insert(&value, 0); }, [] { five().insert(null, 0); },
     "fxIntArray::insert: elem is null"},
    {"find", [] { fxIntArray().find(null); }, [] { five().find(null); },
     "fxIntArray::find: elem is null"},
    {"adopting", [] { fxIntArray(4, 0, nullptr); }, [] { fxIntArray(4, 8, nullptr); },
     "fxArray::fxArray: block is null"},
};

// An array whose destructor has run.
template <class Array>
struct Ended {
    Ended() : array(new (room) Array) { array->~Array(); }
    alignas(Array) unsigned char room[sizeof(Array)];
    Array* array;
};

const Misuse ends[] = {
    {"destroyed twice", [] { Ended<fxIntArray>(); },
     [] { Ended<fxIntArray>().array->~fxIntArray(); },
     "fxRCObj::~fxRCObj: the object has been destroyed already"},
    {"destroyed twice as what it was", [] { Ended<fxIntArray>(); },
     [] { Ended<fxIntArray>().array->fxIntArray::~fxIntArray(); },
     "fxArray::destroy: the object has been destroyed already"},
    {"used after its end", [] { Ended<fxIntArray>(); },
     [] { Ended<fxIntArray>().array->append(&value); },
     "fxArray::append: the object has been destroyed already"},
    {"resized after its end", [] { Ended<fxIntArray>(); },
     [] { Ended<fxIntArray>().array->resize(1); },
     "fxArray::resize: the object has been destroyed already"},
};

}  // namespace

TEST(fxArrayCheckedDeathTest, positionsAndCounts) { expectStops(positions); }

TEST(fxArrayCheckedDeathTest, nullWhereAnElementHasToBe) { expectStops(nulls); }

TEST(fxArrayCheckedDeathTest, arraysThatHaveEnded) { expectEndsToStop(ends); }

TEST(fxArrayCheckedDeathTest, whatIsTooLargeForASizeIsSaidAsItAlwaysIs) {
    const char message[] = "^fxArray: size too large\n$";
    EXPECT_EXIT(five().remove(huge, 1), testing::KilledBySignal(SIGABRT), message);
    EXPECT_EXIT(five().insert(&value, huge), testing::KilledBySignal(SIGABRT), message);
    EXPECT_EXIT(std::free(five().raw_extract(1, huge)), testing::KilledBySignal(SIGABRT), message);
    EXPECT_EXIT(five().head(huge), testing::KilledBySignal(SIGABRT), message);
}
