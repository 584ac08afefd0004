// propertyKinds_test.cpp - each setter on a property of each type: where an owned value would be
// lost or made up, the checked build stops; everywhere else a host may mix them.

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/values/fxData.h"
#include "kelvofxds/values/fxProperty.h"
#include "tests/support/misuse.h"

namespace {

int number = 0;
void destroyNothing(void*) {}

struct Object : fxObj {
    const char* className() const override { return "Object"; }
};

// A property, and what there is to lose in it.
struct Kind {
    const char* name;
    const char* type;
    fxProperty* (*make)();
    bool owns;    ///< Storing anything of another type loses something.
    bool isZero;  ///< All bits of the value are.
};

const Kind kinds[] = {
    {"false", "fxBool", [] { return new fxProperty(3, static_cast<unsigned char>(0)); }, false,
     true},
    {"true", "fxBool", [] { return new fxProperty(3, static_cast<unsigned char>(1)); }, false,
     false},
    {"zero", "long", [] { return new fxProperty(3, 0L); }, false, true},
    {"a number", "long", [] { return new fxProperty(3, 5L); }, false, false},
    {"a fraction", "double", [] { return new fxProperty(3, 0.1); }, false, false},
    {"a text", "CharPtr", [] { return new fxProperty(3, "text", 0); }, false, false},
    {"no text", "CharPtr", [] { return new fxProperty(3, static_cast<const char*>(nullptr), 0); },
     false, true},
    {"an owned text", "CharPtr", [] { return new fxProperty(3, ::strdup("text"), 1); }, true,
     false},
    {"a string", "fxStr", [] { return new fxProperty(3, fxStr("string")); }, true, false},
    {"a pointer", "VoidPtr", [] { return new fxProperty(3, &number, nullptr); }, false, false},
    {"a pointer that is destroyed", "VoidPtr",
     [] { return new fxProperty(3, &number, destroyNothing); }, true, false},
    {"no object", "ObjPtr", [] { return new fxProperty(3, static_cast<fxObj*>(nullptr)); }, true,
     true},
    {"an object", "ObjPtr", [] { return new fxProperty(3, new Object); }, true, false},
    {"no holder", "DataPtr", [] { return new fxProperty(3, static_cast<fxData*>(nullptr)); }, true,
     true},
    {"a holder", "DataPtr", [] { return new fxProperty(3, new fxIntData(5)); }, true, false},
};

// A setter, and what it takes the old value for.
struct Setter {
    const char* name;
    const char* type;
    void (*set)(fxProperty&);
    bool takesAny;      ///< Whatever is there is used.
    bool takesNonZero;  ///< It is used unless it is null.
};

const Setter setters[] = {
    {"setAsBool", "fxBool", [](fxProperty& p) { p.setAsBool(1); }, false, false},
    {"setAsLong", "long", [](fxProperty& p) { p.setAsLong(1); }, false, false},
    {"setAsDouble", "double", [](fxProperty& p) { p.setAsDouble(1); }, false, false},
    {"setAsCharPtr", "CharPtr", [](fxProperty& p) { p.setAsCharPtr("a", 0); }, false, false},
    {"setAsStr", "fxStr", [](fxProperty& p) { p.setAsStr("a"); }, true, false},
    {"setAsVoidPtr", "VoidPtr", [](fxProperty& p) { p.setAsVoidPtr(&number, nullptr); }, false,
     false},
    {"setAsObjPtr", "ObjPtr", [](fxProperty& p) { p.setAsObjPtr(nullptr); }, false, true},
    {"setAsData", "DataPtr", [](fxProperty& p) { p.setAsData(nullptr); }, false, true},
};

bool isStopped(const Setter& setter, const Kind& kind) {
    if (std::strcmp(setter.type, kind.type) == 0)
        return false;
    return kind.owns || setter.takesAny || (setter.takesNonZero && !kind.isZero);
}

}  // namespace

TEST(propertyKindsDeathTest, onlyWhatLosesOrMakesUpAnOwnedValueIsStopped) {
    for (const Kind& kind : kinds) {
        for (const Setter& setter : setters) {
            SCOPED_TRACE(std::string(setter.name) + " on " + kind.name);
            const std::unique_ptr<fxProperty> property(kind.make());
            if (!isStopped(setter, kind)) {
                setter.set(*property);
                continue;
            }
            if (!libraryIsChecked)
                continue;
            const std::string message = std::string("fxProperty::") + setter.name +
                                        ": the property's value is of type " + kind.type +
                                        ", not " + setter.type + '\n';
            EXPECT_EXIT(setter.set(*property), testing::KilledBySignal(SIGABRT),
                        testing::Eq(message));
        }
    }
}
