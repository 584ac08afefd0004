// fxArrayOfMemory_test.cpp - what is compiled into a host ends it like the library, when there is
// no memory: arrays of its own elements, sorting by its own order, inputs of its own functions.

#include <csignal>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxArrayOf.h"
#include "kelvofxds/containers/fxSortStd.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/objects/fxInputFunction.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxWiring.h"
#include "kelvofxds/str/fxStr.h"
#include "tests/support/heapCalls.h"

#ifndef __SANITIZE_ADDRESS__
namespace {

const auto aborted = testing::KilledBySignal(SIGABRT);

// A number that knows its own place, so that its bytes cannot be moved.
class Placed {
public:
    Placed() = default;
    Placed(const Placed& other) : number(other.number) {}
    Placed& operator=(const Placed&) = default;
    bool isThere() const { return place == this; }

private:
    const Placed* place = this;
    int number = 5;
};

void growWithoutMemory() {
    fxArrayOf<Placed> array(2U);
    refuseBlocksFrom(0);
    array.append(Placed());
}

void cutWithoutMemory() {
    fxArrayOf<Placed> array(8U);
    refuseBlocksFrom(0);
    array.raw_cut(0, 4);
}

void sortWithoutMemory() {
    fxArrayOf<fxStr> array(8U);
    refuseBlocksFrom(0);
    fxSort(array);
}

void addWithoutMemory() {
    fxObj object;
    refuseBlocksFrom(0);
    int sum = 0;
    fxOnInput(&object, "in", [&sum](int value) { sum += value; });
}

}  // namespace

TEST(fxArrayOfMemoryDeathTest, anArrayThatCannotGrowIsFatal) {
    EXPECT_EXIT(growWithoutMemory(), aborted, "^out of memory\n$");
}

TEST(fxArrayOfMemoryDeathTest, aCutWithoutABlockIsFatal) {
    EXPECT_EXIT(cutWithoutMemory(), aborted, "^out of memory\n$");
}

TEST(fxArrayOfMemoryDeathTest, sortingWithoutABlockIsFatal) {
    EXPECT_EXIT(sortWithoutMemory(), aborted, "^out of memory\n$");
}

TEST(fxArrayOfMemoryDeathTest, anInputWithoutMemoryIsFatal) {
    EXPECT_EXIT(addWithoutMemory(), aborted, "^out of memory\n$");
}
#endif
