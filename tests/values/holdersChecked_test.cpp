// holdersChecked_test.cpp - value holders of every type without a place for their value, and
// holders that are used after they were deleted. The checked build stops.

#include <cstring>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/values/fxData.h"
#include "tests/support/misuse.h"

namespace {

// A good place, and none.
template <class Value, class Holder>
void takeFrom(Holder holder) {
    Value value{};
    holder().getValue(0, &value);
}

#define PLACE(Holder, Value, argument)                                            \
    {                                                                             \
#Holder, [] { takeFrom<Value>([] { return Holder(argument); }); },              \
            [] { Holder(argument).getValue(0, nullptr); }, #Holder "::getValue: out is null" \
    }

const Misuse places[] = {
    PLACE(fxBoolData, unsigned char, 1), PLACE(fxIntData, int, 1),
    PLACE(fxLongData, long, 1),          PLACE(fxFloatData, float, 1),
    PLACE(fxDoubleData, double, 1),      PLACE(fxCharPtrData, char*, ::strdup("text")),
    PLACE(fxStrData, fxStr, "a"),        PLACE(fxStrArrayData, fxStrArray, fxStrArray()),
};

// Deleted; the compiler does not know it.
fxData* deleted() {
    fxData* volatile holder = new fxIntData(1);
    delete holder;
    return holder;
}

void receive(void*, int) {}

#define IS_DELETED(operation) \
    "fxData::" operation      \
    ": the holder has been deleted already; what is sent belongs to its receivers"

const Misuse uses[] = {
    {"deleted again", [] { deleted(); }, [] { delete deleted(); }, IS_DELETED("~fxData")},
    {"asked for its name", [] { fxIntData(1).dataName(); }, [] { deleted()->dataName(); },
     IS_DELETED("dataName")},
    {"delivered", [] { fxIntData(1).deliverTo(reinterpret_cast<void (*)()>(receive), nullptr); },
     [] { deleted()->deliverTo(reinterpret_cast<void (*)()>(receive), nullptr); },
     IS_DELETED("deliverTo")},
    {"asked for its value", [] {},
     [] {
         int value = 0;
         deleted()->getValue(fxDT_int, &value);
     },
     IS_DELETED("getValue")},
    {"asked for its size", [] { fxIntData(1).getSize(); }, [] { deleted()->getSize(); },
     IS_DELETED("getSize")},
};

class holdersCheckedDeathTest : public testing::Test {
protected:
    static void SetUpTestSuite() { fxInitializeToolkit(); }
};

}  // namespace

TEST_F(holdersCheckedDeathTest, noPlaceForTheValue) { expectStops(places); }

TEST_F(holdersCheckedDeathTest, holdersThatWereDeleted) { expectEndsToStop(uses); }
