#include "kelvofxds/core/fxXDRObj.h"

#include <cstring>
#include <type_traits>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/str/fxStr.h"
#include "tests/support/destructors.h"
#include "tests/support/recordingTranscriber.h"
#include "tests/support/vtable.h"

static_assert(sizeof(fxXDRObj) == 8, "no fields of its own");
static_assert(std::is_base_of<fxRCObj, fxXDRObj>::value, "transcribable objects are counted");

namespace {
const auto anyDirection = RecordingTranscriber::writer;
}  // namespace

TEST(fxXDRObj, virtualOperationsHaveTheirWords) {
    EXPECT_EQ(2u, vtableWord(&fxXDRObj::className));
    EXPECT_EQ(3u,
              vtableWord(static_cast<unsigned char (fxXDRObj::*)(fxTranscriber&)>(&fxXDRObj::xdr)));
    EXPECT_EQ(4u, vtableWord(&fxXDRObj::getTypeObj));
    EXPECT_EQ(5u, vtableWord(&fxXDRObj::xdrFail));
    EXPECT_EQ(6u, vtableWord(&fxXDRObj::xdrSuccess));
}

TEST(fxXDRObj, destructorsAreWords0And1OfTheTable) { expectDestructorsAtWords0And1<fxXDRObj>(); }

TEST(fxXDRObj, isCalledFxXDRObj) {
    fxXDRObj object;
    EXPECT_STREQ("fxXDRObj", object.className());
}

TEST(fxXDRObj, typeIsFxXDRObjType) {
    fxXDRObj object;
    EXPECT_EQ(&fxXDRObj_type, &object.getTypeObj());
}

TEST(fxXDRObj, xdrSucceedsAndTranscribesNothing) {
    fxXDRObj object;
    RecordingTranscriber t(anyDirection);
    EXPECT_EQ(1, object.xdr(t));
    EXPECT_EQ(1, fxXDRObj::xdr(&object, t));
    EXPECT_EQ(1, fxXDRObj::xdr(nullptr, t));
    EXPECT_EQ("", t.log());
}

TEST(fxXDRObj, xdrFailReturnsZeroAndTranscribesNothing) {
    fxXDRObj object;
    RecordingTranscriber t(anyDirection);
    EXPECT_EQ(0, object.xdrFail(t, &object));
    EXPECT_EQ(0, object.xdrFail(t, nullptr));
    EXPECT_EQ("", t.log());
}

TEST(fxXDRObj, xdrSuccessDoesNothing) {
    fxXDRObj object;
    RecordingTranscriber t(anyDirection);
    char before[sizeof object];
    std::memcpy(before, static_cast<void*>(&object), sizeof object);
    object.xdrSuccess(t);
    EXPECT_EQ("", t.log());
    EXPECT_EQ(0, std::memcmp(before, static_cast<void*>(&object), sizeof object));
}

TEST(fxXDRObj, typeGivenToTheConstructorIsNotStored) {
    fxXDRObj object(fxStr_type);
    EXPECT_EQ(0, object.count);
    EXPECT_EQ(&fxXDRObj_type, &object.getTypeObj());
    EXPECT_STREQ("fxXDRObj", object.className());
}

TEST(fxXDRObj, constructorTakesARecordThatIsNotConstructedYet) {
    alignas(fxTypeObj) unsigned char raw[sizeof(fxTypeObj)];
    std::memset(raw, 0xFF, sizeof raw);
    fxXDRObj object(reinterpret_cast<fxTypeObj&>(raw));
    EXPECT_EQ(0, object.count);
}

TEST(fxXDRObj, copiesStartAtCountZero) {
    fxXDRObj object;
    object.count = 4;
    fxXDRObj copy(object);
    EXPECT_EQ(0, copy.count);
}

TEST(fxXDRObj, newInstanceMakesAnObjectWithoutHolders) {
    void* object = fxXDRObj::newInstance(fxXDRObj_type);
    ASSERT_NE(nullptr, object);
    EXPECT_EQ(0, static_cast<fxXDRObj*>(object)->count);
    EXPECT_STREQ("fxXDRObj", static_cast<fxXDRObj*>(object)->className());
    fxXDRObj::deleteInstance(object);
}

TEST(fxXDRObj, deleteInstanceIgnoresNull) { fxXDRObj::deleteInstance(nullptr); }

TEST(fxXDRObj, deleteInstanceUsesTheVirtualDeletingDestructor) {
    using Counted = CountedEnd<fxXDRObj>;
    Counted::destroyed = Counted::freed = 0;
    fxXDRObj::deleteInstance(static_cast<fxXDRObj*>(new Counted));
    EXPECT_EQ(1, Counted::destroyed);
    EXPECT_EQ(1, Counted::freed);
}
