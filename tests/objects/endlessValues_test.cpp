// endlessValues_test.cpp - values that others hold, in properties that are set without an end while
// their object goes.

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/values/fxData.h"
#include "kelvofxds/values/fxProperty.h"

namespace {

const unsigned short itself = 5;
const unsigned short value = 6;

// Sets itself again in its end, and a property of each kind that holds a reference.
struct Endless {
    fxObj* object;
    fxObj* heldObject;
    fxData* heldData;
    fxProperty* shared;
    int ends;

    static void renew(void* property) {
        auto* self = static_cast<Endless*>(property);
        ++self->ends;
        self->object->setProperty(new fxProperty(itself, self, renew));
        self->object->setProperty(new fxProperty(value, self->heldObject));
        self->object->setProperty(new fxProperty(value, self->heldData));
        self->object->setProperty(new fxProperty(value, static_cast<fxObj*>(nullptr)));
        self->object->setProperty(new fxProperty(value, static_cast<fxData*>(nullptr)));
        self->object->setProperty(new fxProperty(value, 1L));
        self->object->setProperty(self->shared);
    }
};

}  // namespace

TEST(endlessValues, whatOthersHoldIsHeldByThemAlone) {
    fxInitializeToolkit();
    auto* const held = new fxObj;
    auto* const data = new fxIntData(7);
    ++held->count;
    ++data->count;
    fxObj other;
    auto* const shared = new fxProperty(value, 5L);
    other.setProperty(shared);
    auto* const object = new fxObj;
    Endless endless{object, held, data, shared, 0};
    object->setProperty(new fxProperty(itself, &endless, Endless::renew));
    delete object;
    EXPECT_EQ(2 + 100, endless.ends);
    EXPECT_EQ(1, held->count);
    EXPECT_EQ(1u, static_cast<unsigned int>(data->count));
    EXPECT_EQ(shared, other.findProperty(value));
    EXPECT_EQ(5, shared->getAsLong());
    EXPECT_EQ(1u, static_cast<unsigned int>(shared->count));
    --held->count;
    --data->count;
    delete held;
    delete data;
}

// A class may say instead that it compares nothing.
TEST(endlessValues, aClassThatSaysNothingComparesAsEqual) {
    struct Silent : fxObj {
        void subClassMustDefine(const char* method) const override { missed = method; }
        mutable const char* missed = "";
    };
    const Silent a;
    const Silent b;
    EXPECT_EQ(0, a.compare(&b));
    EXPECT_STREQ("compare", a.missed);
}
