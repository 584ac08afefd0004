// valuesChecked_test.cpp - misuse of holders, properties and conversions, which the checked build
// stops.

#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/pattern/fxSLinearPattern.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/values/fxConverter.h"
#include "kelvofxds/values/fxData.h"
#include "kelvofxds/values/fxProperty.h"
#include "tests/support/misuse.h"

namespace {

int number = 0;
void receive(void*, int value) { number = value; }
void (*receiver())() { return reinterpret_cast<void (*)()>(receive); }

struct Text : fxProperty {
    Text() : fxProperty(3, ::strdup("text"), 1) {}
};
struct String : fxProperty {
    String() : fxProperty(3, fxStr("string")) {}
};
struct Number : fxProperty {
    explicit Number(long v = 5) : fxProperty(3, v) {}
};
void destroyNothing(void*) {}
struct Pointer : fxProperty {
    Pointer() : fxProperty(3, &number, destroyNothing) {}
};

const Misuse kinds[] = {
    {"a number into a string", [] { Number().setAsLong(1); }, [] { String().setAsLong(1); },
     "fxProperty::setAsLong: the property's value is of type fxStr, not long"},
    {"a truth value into an owned text", [] { Number().setAsBool(1); }, [] { Text().setAsBool(1); },
     "fxProperty::setAsBool: the property's value is of type CharPtr, not fxBool"},
    {"a double into a pointer with a destroy function", [] { Number().setAsDouble(1); },
     [] { Pointer().setAsDouble(1); },
     "fxProperty::setAsDouble: the property's value is of type VoidPtr, not double"},
    {"a string into a number", [] { String().setAsStr("a"); }, [] { Number().setAsStr("a"); },
     "fxProperty::setAsStr: the property's value is of type long, not fxStr"},
    {"a string that went", [] { String().setAsStr("a"); },
     [] {
         String string;
         string.cleanup();
         string.setAsStr("a");
     },
     "fxProperty::setAsStr: the string went with cleanup()"},
    {"an object into a number other than 0", [] { Number(0).setAsObjPtr(nullptr); },
     [] { Number(5).setAsObjPtr(nullptr); },
     "fxProperty::setAsObjPtr: the property's value is of type long, not ObjPtr"},
    {"a holder into a number other than 0", [] { Number(0).setAsData(nullptr); },
     [] { Number(5).setAsData(nullptr); },
     "fxProperty::setAsData: the property's value is of type long, not DataPtr"},
    {"a text in the place of a destroy function", [] { Text().setAsCharPtr("a", 0); },
     [] { Pointer().setAsCharPtr("a", 0); },
     "fxProperty::setAsCharPtr: the property's value is of type VoidPtr, not CharPtr"},
    {"a pointer in the place of an owned text", [] { Pointer().setAsVoidPtr(&number, nullptr); },
     [] { Text().setAsVoidPtr(&number, nullptr); },
     "fxProperty::setAsVoidPtr: the property's value is of type CharPtr, not VoidPtr"},
};

const Misuse nulls[] = {
    {"a value into nothing", [] { fxIntData(1).getValue(0, &number); },
     [] { fxIntData(1).getValue(0, nullptr); }, "fxIntData::getValue: out is null"},
    {"no value into nothing", [] { fxVoidData().getValue(0, nullptr); },
     [] { fxStrData("a").getValue(0, nullptr); }, "fxStrData::getValue: out is null"},
    {"nobody to deliver to", [] { fxIntData(1).deliverTo(receiver(), nullptr); },
     [] { fxIntData(1).deliverTo(nullptr, nullptr); },
     "fxInputChannel::function: null where a value arrives"},
    {"a conversion without a routine", [] {}, [] { new fxConverter(1, 2, nullptr); },
     "fxConverter::fxConverter: routine is null"},
    {"no link",
     [] {
         fxInputChannel in(fxDT_fxBool, nullptr, receiver(), 0);
         auto* link = fxConverter::findConverter(fxDT_int, fxDT_fxBool);
         in.count = 1;
         fxConverter::splice(link, &in);
         link->count = 1;
         link->dec();
     },
     [] {
         fxInputChannel in(fxDT_int, nullptr, receiver(), 0);
         fxConverter::splice(nullptr, &in);
     },
     "fxConverter::splice: link is null"},
    {"a link to nothing", [] {},
     [] { fxConverter::splice(fxConverter::findConverter(fxDT_int, fxDT_fxBool), nullptr); },
     "fxConverter::splice: in is null"},
    {"a link that is none", [] {},
     [] {
         fxInputChannel in(fxDT_int, nullptr, receiver(), 0);
         fxConverter::splice(&in, &in);
     },
     "fxConverter::splice: link is no conversion link"},
    {"a conversion for nobody",
     [] {
         fxInputChannel in(fxDT_int, nullptr, receiver(), 0);
         CBool2int(&in, 1);
     },
     [] { CBool2int(nullptr, 1); }, "fxConverter::routine: in is null"},
    {"a pattern in no text",
     [] {
         fxSLinearPattern("").findBuffer(nullptr, 3);
         fxSLinearPattern("a").findBuffer(nullptr, 0);
     },
     [] { fxSLinearPattern("a").findBuffer(nullptr, 1); },
     "fxSLinearPattern::findBuffer: text is null"},
};

const Misuse holders[] = {
    {"deleted although a property has it",
     [] {
         auto* holder = new fxIntData(1);
         const fxProperty property(3, holder);
     },
     [] {
         auto* holder = new fxIntData(1);
         const fxProperty property(3, holder);
         delete holder;
     },
     "fxData::~fxData: the holder is still held by 1 of all properties and messages"},
    {"an object deleted although two properties have it",
     [] {
         auto* object = new fxObj;
         const fxProperty first(3, object), second(3, object);
     },
     [] {
         auto* object = new fxObj;
         const fxProperty first(3, object), second(3, object);
         delete object;
     },
     "fxRCObj::~fxRCObj: the object is still held by 2 of all properties, transcribers and "
     "messages"},
};

}  // namespace

TEST(valuesCheckedDeathTest, settersOfAnotherTypeThanTheValues) { expectStops(kinds); }

TEST(valuesCheckedDeathTest, nullWhereSomethingHasToBe) {
    fxInitializeToolkit();
    expectStops(nulls);
}

TEST(valuesCheckedDeathTest, whatThePropertiesHoldIsNotDeleted) {
    fxInitializeToolkit();
    expectStops(holders);
}

#if KELVOFXDS_LIBRARY_IS_CHECKED

TEST(valuesCheckedDeathTest, aHolderIsDeletedOnce) {
    if (endsAreWatched)
        GTEST_SKIP() << "a sanitizer speaks first";
    const auto deleteTwice = [] {
        fxData* volatile holder = new fxIntData(1);
        delete holder;
        delete holder;
    };
    const auto useAfterwards = [] {
        fxData* volatile holder = new fxStrData("a");
        delete holder;
        holder->getSize();
    };
    const char clause[] =
        ": the holder has been deleted already; what is sent belongs to its "
        "receivers\n";
    EXPECT_EXIT(deleteTwice(), testing::KilledBySignal(SIGABRT),
                testing::Eq(std::string("fxData::~fxData") + clause));
    EXPECT_EXIT(useAfterwards(), testing::KilledBySignal(SIGABRT),
                testing::Eq(std::string("fxData::getSize") + clause));
}

#endif
