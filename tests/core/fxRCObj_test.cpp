#include "kelvofxds/core/fxRCObj.h"

#include <cstddef>
#include <type_traits>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "tests/support/destructors.h"

static_assert(sizeof(fxRCObj) == 8, "the table and the count");
static_assert(std::has_virtual_destructor<fxRCObj>::value, "holders delete through the base");
static_assert(std::is_same<decltype(fxRCObj::count), int>::value, "the count is signed");

namespace {

// A stream for holders to hold.
using HeldStream = CountedEnd<fxStdioStream>;

HeldStream* newStream() {
    HeldStream::destroyed = HeldStream::freed = 0;
    return new HeldStream(static_cast<std::FILE*>(nullptr), fxStream::writeStream);
}

}  // namespace

TEST(fxRCObj, countFollowsTheTable) {
    fxRCObj object;
    EXPECT_EQ(4, reinterpret_cast<char*>(&object.count) - reinterpret_cast<char*>(&object));
}

TEST(fxRCObj, destructorsAreWords0And1OfTheTable) { expectDestructorsAtWords0And1<fxRCObj>(); }

TEST(fxRCObj, newObjectHasCountZero) {
    fxRCObj object;
    EXPECT_EQ(0, object.count);
}

TEST(fxRCObj, copyIsANewObjectWithCountZero) {
    fxRCObj original;
    original.count = 3;
    fxRCObj copy(original);
    EXPECT_EQ(0, copy.count);
    EXPECT_EQ(3, original.count);
}

TEST(fxRCObj, assignmentLeavesBothCountsAlone) {
    fxRCObj source, target;
    source.count = 3;
    target.count = 5;
    target = source;
    EXPECT_EQ(5, target.count);
    EXPECT_EQ(3, source.count);
}

TEST(fxRCObj, holderAddsOneWhenItStoresAPointer) {
    fxStream* stream = newStream();
    stream->count = 1;
    fxTranscriber* holder = new fxBinaryWriter(stream);
    EXPECT_EQ(2, stream->count);
    delete holder;
    EXPECT_EQ(1, stream->count);
    delete stream;
}

TEST(fxRCObj, holderOfANullPointerCountsNothing) {
    fxTranscriber* holder = new fxBinaryWriter(nullptr);
    EXPECT_EQ(nullptr, holder->getStream());
    delete holder;
}

TEST(fxRCObj, lastHolderDeletesThroughTheVirtualDestructor) {
    fxStream* stream = newStream();
    fxTranscriber* first = new fxBinaryWriter(stream);
    fxTranscriber* second = new fxBinaryWriter(stream);
    EXPECT_EQ(2, stream->count);
    delete first;
    EXPECT_EQ(0, HeldStream::destroyed);
    delete second;
    EXPECT_EQ(1, HeldStream::destroyed);
    EXPECT_EQ(1, HeldStream::freed);
}

TEST(fxRCObj, deliberateHolderDeletesAtExactlyZeroOnly) {
    fxStream* stream = newStream();
    fxTranscriber* holder = new fxBinaryWriter(stream);
    stream->count = 0;
    delete holder;
    EXPECT_EQ(0, HeldStream::destroyed);
    EXPECT_EQ(-1, stream->count);
    delete stream;
}
