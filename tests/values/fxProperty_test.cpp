#include "kelvofxds/values/fxProperty.h"

#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/values/fxData.h"
#include "tests/support/heapCalls.h"
#include "tests/support/vtable.h"

struct fxPropertyLayout {
    static_assert(std::is_base_of<fxRCObj, fxProperty>::value, "reference-counted");
    static_assert(!std::is_copy_constructible<fxProperty>::value, "one owner of the value");
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
    static_assert(offsetof(fxProperty, tag) == 8, "the tag follows the base");
    static_assert(offsetof(fxProperty, type) == 10, "then the type");
#pragma GCC diagnostic pop
    static_assert(std::is_same<unsigned short, decltype(fxProperty::tag)>::value, "16 bits");
    static_assert(std::is_same<unsigned short, decltype(fxProperty::type)>::value, "16 bits");

    static unsigned short type(const fxProperty& property) { return property.type; }
};

namespace {
// An object and a holder that tell when they are deleted.
class CountingObj : public fxObj {
public:
    explicit CountingObj(int& deletions) : deleted(deletions) {}
    ~CountingObj() override { ++deleted; }

private:
    int& deleted;
};

class CountingData : public fxIntData {
public:
    explicit CountingData(int& deletions) : fxIntData(1), deleted(deletions) {}
    ~CountingData() override { ++deleted; }

private:
    int& deleted;
};

// A holder of a type of the host's own.
class HostData : public fxData {
public:
    HostData() : fxData(777) {}
    const char* dataName() const override { return "host"; }
    void deliverTo(void (*)(), void*) override {}
    void getValue(unsigned short, void*) override {}
    unsigned int getSize() override { return 0; }
};

// The values that destroy functions were called with.
std::vector<std::string> destroyed;

void destroyA(void* value) {
    destroyed.push_back(std::string("A ") + static_cast<const char*>(value));
}
void destroyB(void* value) {
    destroyed.push_back(std::string("B ") + static_cast<const char*>(value));
}

char one[] = "one";
char two[] = "two";
char three[] = "three";

using Calls = std::vector<std::string>;

class fxPropertyTest : public testing::Test {
protected:
    fxPropertyTest() {
        fxInitializeToolkit();
        destroyed.clear();
    }
};

using fxPropertyDeathTest = fxPropertyTest;

[[noreturn]] void endChild() {
    std::fflush(stdout);
    ::_exit(testing::Test::HasFailure() ? 1 : 0);
}

const auto succeeds = testing::ExitedWithCode(0);
}  // namespace

TEST_F(fxPropertyTest, hasNoVirtualOperationButItsDestructors) {
    struct Probe : fxProperty {
        Probe() : fxProperty(0, 0L) {}
        virtual void probe() {}
    };
    EXPECT_EQ(2u, vtableWord(&Probe::probe));
}

// Constructors and getters.

TEST_F(fxPropertyTest, constructorFixesTagTypeAndValue) {
    const fxProperty truth(1, static_cast<unsigned char>(255));
    EXPECT_EQ(1, truth.getTag());
    EXPECT_EQ(fxDT_fxBool, truth.getType());
    EXPECT_EQ(255, truth.getAsBool());
    EXPECT_EQ(0, truth.count);

    for (const long value : {0L, -1L, LONG_MAX, LONG_MIN}) {
        const fxProperty number(2, value);
        EXPECT_EQ(2, number.getTag());
        EXPECT_EQ(fxDT_long, number.getType());
        EXPECT_EQ(value, number.getAsLong());
        EXPECT_EQ(0, number.count);
    }
    for (const double value : {0.0, -0.1, 1e300, std::numeric_limits<double>::infinity()}) {
        const fxProperty number(65534, value);
        EXPECT_EQ(65534, number.getTag());
        EXPECT_EQ(fxDT_double, number.getType());
        EXPECT_EQ(value, number.getAsDouble());
        EXPECT_EQ(0, number.count);
    }
    const fxProperty pointer(0, static_cast<void*>(one), nullptr);
    EXPECT_EQ(0, pointer.getTag());
    EXPECT_EQ(fxDT_VoidPtr, pointer.getType());
    EXPECT_EQ(one, pointer.getAsVoidPtr());
    EXPECT_EQ(0, pointer.count);
}

TEST_F(fxPropertyTest, textIsKeptByPointer) {
    const fxProperty property(5, one, 0);
    EXPECT_EQ(5, property.getTag());
    EXPECT_EQ(fxDT_CharPtr, property.getType());
    EXPECT_EQ(one, property.getAsCharPtr());
    EXPECT_EQ(0, property.count);
}

TEST_F(fxPropertyTest, stringIsKeptAsACopy) {
    fxStr text("a\0b", 3);
    const fxProperty property(5, text);
    EXPECT_EQ(fxDT_fxStr, property.getType());
    ASSERT_NE(nullptr, property.getAsStr());
    EXPECT_NE(&text, property.getAsStr());
    text = "changed";
    EXPECT_EQ(fxStr("a\0b", 3), *property.getAsStr());
    EXPECT_EQ(0, property.count);
}

TEST_F(fxPropertyTest, objectIsHeldByOneReference) {
    int deleted = 0;
    auto* object = new CountingObj(deleted);
    auto* property = new fxProperty(5, object);
    EXPECT_EQ(fxDT_ObjPtr, property->getType());
    EXPECT_EQ(object, property->getAsObjPtr());
    EXPECT_EQ(1, object->count);
    EXPECT_EQ(0, property->count);

    auto* other = new fxProperty(6, object);
    EXPECT_EQ(2, object->count);
    delete property;
    EXPECT_EQ(1, object->count);
    EXPECT_EQ(0, deleted);
    delete other;
    EXPECT_EQ(1, deleted);
}

TEST_F(fxPropertyTest, holderIsHeldByOneReference) {
    int deleted = 0;
    auto* data = new CountingData(deleted);
    auto* property = new fxProperty(5, data);
    EXPECT_EQ(data, property->getAsData());
    EXPECT_EQ(1u, data->count);

    auto* other = new fxProperty(6, data);
    EXPECT_EQ(2u, data->count);
    delete property;
    EXPECT_EQ(1u, data->count);
    EXPECT_EQ(0, deleted);
    delete other;
    EXPECT_EQ(1, deleted);
}

TEST_F(fxPropertyTest, heldObjectSurvivesWhileOthersHoldIt) {
    int deletedObjects = 0, deletedHolders = 0;
    CountingObj object(deletedObjects);
    CountingData data(deletedHolders);
    object.count = 1;
    data.count = 1;
    delete new fxProperty(5, &object);
    delete new fxProperty(5, &data);
    EXPECT_EQ(1, object.count);
    EXPECT_EQ(1u, data.count);
    EXPECT_EQ(0, deletedObjects + deletedHolders);
}

TEST_F(fxPropertyTest, typeOfAHolderPropertyIsTheHolders) {
    fxProperty property(5, new fxFloatData(1.5f));
    EXPECT_EQ(fxDT_float, property.getType());
    EXPECT_EQ(fxDT_DataPtr, fxPropertyLayout::type(property)) << "its own stays";
    property.setAsData(new fxVoidData);
    EXPECT_EQ(fxDT_void, property.getType());
    property.setAsData(new HostData);
    EXPECT_EQ(777, property.getType());
    EXPECT_EQ(fxDT_DataPtr, fxPropertyLayout::type(property));
}

TEST_F(fxPropertyTest, gettersDoNotConvert) {
    const fxProperty number(5, 5.0);
    EXPECT_NE(5, number.getAsLong());
    const fxProperty integer(5, 5L);
    EXPECT_NE(5.0, integer.getAsDouble());
    const fxProperty text(5, "5", 0);
    EXPECT_NE(5, text.getAsLong());
}

// Setters.

TEST_F(fxPropertyTest, settersStore) {
    fxProperty truth(5, static_cast<unsigned char>(0));
    truth.setAsBool(2);
    EXPECT_EQ(2, truth.getAsBool());
    fxProperty integer(5, 0L);
    integer.setAsLong(LONG_MIN);
    EXPECT_EQ(LONG_MIN, integer.getAsLong());
    fxProperty number(5, 0.0);
    number.setAsDouble(0.1);
    EXPECT_EQ(0.1, number.getAsDouble());
}

TEST_F(fxPropertyTest, settersNeverChangeTheType) {
    fxProperty truth(5, static_cast<unsigned char>(1));
    truth.setAsLong(7);
    EXPECT_EQ(fxDT_fxBool, truth.getType());
    EXPECT_EQ(7, truth.getAsLong());
    truth.setAsDouble(2.5);
    EXPECT_EQ(fxDT_fxBool, truth.getType());
    EXPECT_EQ(2.5, truth.getAsDouble());
    fxProperty integer(5, 1L);
    integer.setAsBool(3);
    EXPECT_EQ(fxDT_long, integer.getType());
    EXPECT_EQ(3, integer.getAsBool());
    integer.setAsCharPtr(one, 0);
    EXPECT_EQ(fxDT_long, integer.getType());
    EXPECT_EQ(one, integer.getAsCharPtr());
    integer.setAsLong(4);
}

TEST_F(fxPropertyTest, ownedTextIsFreedWhenReplaced) {
    fxProperty property(5, ::strdup("first"), 1);
    property.setAsCharPtr(::strdup("second"), 1);
    EXPECT_STREQ("second", property.getAsCharPtr());
    property.setAsCharPtr(one, 0);
    EXPECT_EQ(one, property.getAsCharPtr());
    property.setAsCharPtr(two, 0);
    EXPECT_EQ(two, property.getAsCharPtr());
    property.setAsCharPtr(::strdup("third"), 1);
    EXPECT_EQ(fxDT_CharPtr, property.getType());
}

TEST_F(fxPropertyTest, ownedTextAndStringGoWithTheProperty) {
    const long blocks = heapCalls().blocks;
    delete new fxProperty(5, ::strdup("text"), 1);
    delete new fxProperty(5, fxStr("a string of its own"));
    auto* property = new fxProperty(5, ::strdup("first"), 1);
    property->setAsCharPtr(::strdup("second"), 1);
    EXPECT_EQ(heapCallsAreCounted() ? blocks + 2 : blocks, heapCalls().blocks)
        << "the property and the second text";
    delete property;
    EXPECT_EQ(blocks, heapCalls().blocks);
}

TEST_F(fxPropertyTest, heldTextSetAgainOnlyChangesTheOwner) {
    char* text = ::strdup("text");
    {
        fxProperty property(5, text, 1);
        property.setAsCharPtr(text, 1);
        EXPECT_STREQ("text", property.getAsCharPtr());
        property.setAsCharPtr(text, 0);
        EXPECT_STREQ("text", property.getAsCharPtr());
    }
    EXPECT_STREQ("text", text) << "ours again";
    {
        fxProperty property(5, text, 0);
        property.setAsCharPtr(text, 1);
        EXPECT_STREQ("text", property.getAsCharPtr());
    }
}

TEST_F(fxPropertyTest, nullTextIsKept) {
    fxProperty property(5, static_cast<const char*>(nullptr), 1);
    EXPECT_EQ(nullptr, property.getAsCharPtr());
    property.setAsCharPtr(::strdup("text"), 1);
    property.setAsCharPtr(nullptr, 1);
    EXPECT_EQ(nullptr, property.getAsCharPtr());
}

TEST_F(fxPropertyTest, stringIsAssignedTo) {
    fxProperty property(5, fxStr("first"));
    fxStr* held = property.getAsStr();
    property.setAsStr(fxStr("a longer second"));
    EXPECT_EQ(held, property.getAsStr()) << "the same string with another text";
    EXPECT_EQ("a longer second", *held);
    property.setAsStr(*held);
    EXPECT_EQ("a longer second", *held);
}

TEST_F(fxPropertyTest, voidPointerIsDestroyedWhenReplaced) {
    {
        fxProperty property(5, static_cast<void*>(one), destroyA);
        property.setAsVoidPtr(two, destroyB);
        EXPECT_EQ(Calls{"A one"}, destroyed);
        EXPECT_EQ(two, property.getAsVoidPtr());
        property.setAsVoidPtr(three, nullptr);
        EXPECT_EQ((Calls{"A one", "B two"}), destroyed);
        property.setAsVoidPtr(one, destroyA);
        EXPECT_EQ(2u, destroyed.size()) << "there was no function";
        EXPECT_EQ(fxDT_VoidPtr, property.getType());
    }
    EXPECT_EQ((Calls{"A one", "B two", "A one"}), destroyed);
}

TEST_F(fxPropertyTest, voidPointerSetAgainIsDestroyedAllTheSame) {
    fxProperty property(5, static_cast<void*>(one), destroyA);
    property.setAsVoidPtr(one, destroyB);
    EXPECT_EQ(Calls{"A one"}, destroyed);
    EXPECT_EQ(one, property.getAsVoidPtr());
}

TEST_F(fxPropertyTest, nullVoidPointerIsDestroyedToo) {
    static int nulls;
    nulls = 0;
    void (*const countNulls)(void*) = [](void* value) { nulls += value == nullptr; };
    {
        fxProperty property(5, static_cast<void*>(nullptr), countNulls);
        property.setAsVoidPtr(nullptr, countNulls);
        EXPECT_EQ(1, nulls);
    }
    EXPECT_EQ(2, nulls);
}

TEST_F(fxPropertyTest, destroyFunctionRunsBeforeTheNewValueIsStored) {
    static fxProperty* property;
    static void* seen;
    void (*const look)(void*) = [](void*) { seen = property->getAsVoidPtr(); };
    property = new fxProperty(5, static_cast<void*>(one), look);
    property->setAsVoidPtr(two, nullptr);
    EXPECT_EQ(one, seen);
    delete property;
}

TEST_F(fxPropertyTest, destroyFunctionMaySetThePropertyAgain) {
    static fxProperty* property;
    static int calls;
    calls = 0;
    void (*const setAgain)(void*) = [](void* value) {
        ++calls;
        EXPECT_EQ(one, value);
        property->setAsVoidPtr(three, nullptr);
        EXPECT_EQ(three, property->getAsVoidPtr());
    };
    property = new fxProperty(5, static_cast<void*>(one), setAgain);
    property->setAsVoidPtr(two, destroyB);
    EXPECT_EQ(1, calls) << "once, not without end";
    EXPECT_EQ(two, property->getAsVoidPtr()) << "the outer call stores last";
    delete property;
    EXPECT_EQ(Calls{"B two"}, destroyed);
}

TEST_F(fxPropertyTest, destroyFunctionMaySetThePropertyThatGoes) {
    static fxProperty* property;
    static int calls;
    calls = 0;
    void (*const setAgain)(void*) = [](void*) {
        ++calls;
        property->setAsVoidPtr(three, nullptr);
    };
    property = new fxProperty(5, static_cast<void*>(one), setAgain);
    delete property;
    EXPECT_EQ(1, calls);
}

// The object that holds the property goes in the middle of the setter, and the
// property with it: then the new value is given up as well.
TEST_F(fxPropertyDeathTest, destroyFunctionMayDeleteTheObjectOfTheProperty) {
    const auto check = [] {
        static fxObj* object;
        void (*const deleteObject)(void*) = [](void*) { delete object; };
        object = new fxObj;
        auto* property = new fxProperty(5, static_cast<void*>(one), deleteObject);
        object->setProperty(property);
        property->setAsVoidPtr(two, destroyB);
        EXPECT_EQ(Calls{"B two"}, destroyed);
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxPropertyTest, replacedObjectIsReleased) {
    int deleted = 0;
    auto* first = new CountingObj(deleted);
    auto* second = new CountingObj(deleted);
    fxProperty property(5, first);
    property.setAsObjPtr(second);
    EXPECT_EQ(1, deleted);
    EXPECT_EQ(second, property.getAsObjPtr());
    EXPECT_EQ(1, second->count);
    EXPECT_EQ(fxDT_ObjPtr, property.getType());

    second->count = 2;
    property.setAsObjPtr(nullptr);
    EXPECT_EQ(1, second->count);
    EXPECT_EQ(nullptr, property.getAsObjPtr());
    property.setAsObjPtr(second);
    EXPECT_EQ(2, second->count);
    second->count = 1;
}

TEST_F(fxPropertyTest, replacedHolderIsReleased) {
    int deleted = 0;
    auto* first = new CountingData(deleted);
    auto* second = new CountingData(deleted);
    fxProperty property(5, first);
    property.setAsData(second);
    EXPECT_EQ(1, deleted);
    EXPECT_EQ(second, property.getAsData());
    EXPECT_EQ(1u, second->count);

    second->count = 2;
    property.setAsData(nullptr);
    EXPECT_EQ(1u, second->count);
    EXPECT_EQ(nullptr, property.getAsData());
    EXPECT_EQ(fxDT_DataPtr, property.getType());
    property.setAsData(second);
    EXPECT_EQ(2u, second->count);
    second->count = 1;
}

TEST_F(fxPropertyTest, sameObjectOrHolderAgainChangesNoCount) {
    int deleted = 0;
    auto* object = new CountingObj(deleted);
    auto* data = new CountingData(deleted);
    fxProperty objectProperty(5, object);
    fxProperty dataProperty(5, data);
    objectProperty.setAsObjPtr(object);
    dataProperty.setAsData(data);
    EXPECT_EQ(0, deleted);
    EXPECT_EQ(1, object->count);
    EXPECT_EQ(1u, data->count);
}

TEST_F(fxPropertyTest, nullObjectAndHolderAreKept) {
    fxProperty object(5, static_cast<fxObj*>(nullptr));
    EXPECT_EQ(nullptr, object.getAsObjPtr());
    EXPECT_EQ(fxDT_ObjPtr, object.getType());
    fxProperty data(5, static_cast<fxData*>(nullptr));
    EXPECT_EQ(nullptr, data.getAsData());
    EXPECT_EQ(fxDT_DataPtr, data.getType());
}

TEST_F(fxPropertyTest, releasedObjectFindsThePropertyWhole) {
    static fxProperty* property;
    static fxObj* seen;
    struct Looking : fxObj {
        ~Looking() override { seen = property->getAsObjPtr(); }
    };
    int deleted = 0;
    auto* second = new CountingObj(deleted);
    property = new fxProperty(5, new Looking);
    property->setAsObjPtr(second);
    EXPECT_EQ(second, seen) << "the new object is in place already";
    delete property;
    EXPECT_EQ(1, deleted);
}

TEST_F(fxPropertyTest, cleanupGivesUpTheValueOnce) {
    int deleted = 0;
    fxProperty text(5, ::strdup("text"), 1);
    fxProperty string(5, fxStr("a string of its own"));
    fxProperty pointer(5, static_cast<void*>(one), destroyA);
    fxProperty object(5, new CountingObj(deleted));
    fxProperty data(5, new CountingData(deleted));
    fxProperty number(5, 7L);
    for (fxProperty* property : {&text, &string, &pointer, &object, &data, &number})
        property->cleanup();
    EXPECT_EQ(Calls{"A one"}, destroyed);
    EXPECT_EQ(2, deleted);
    for (fxProperty* property : {&text, &string, &pointer, &object, &data, &number})
        property->cleanup();
    EXPECT_EQ(Calls{"A one"}, destroyed);
    EXPECT_EQ(2, deleted);
}

TEST_F(fxPropertyTest, textThatIsNotOwnedIsLeftAlone) {
    delete new fxProperty(5, one, 0);
    EXPECT_STREQ("one", one);
}

TEST_F(fxPropertyTest, isDeletedThroughItsBase) {
    fxRCObj* property = new fxProperty(5, static_cast<void*>(one), destroyA);
    delete property;
    EXPECT_EQ(Calls{"A one"}, destroyed);
}
