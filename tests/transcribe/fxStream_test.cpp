#include "kelvofxds/transcribe/fxStream.h"

#include <type_traits>

#include <gtest/gtest.h>

#include "tests/support/memoryStream.h"
#include "tests/support/vtable.h"

static_assert(sizeof(fxStream) == sizeof(fxRCObj), "no fields of its own");
static_assert(std::is_base_of<fxRCObj, fxStream>::value, "reference-counted");
static_assert(std::is_abstract<fxStream>::value, "every operation is abstract");
static_assert(std::has_virtual_destructor<fxStream>::value, "deleted through the base");
static_assert(fxStream::readStream == 0 && fxStream::writeStream == 1 &&
                  fxStream::readWriteStream == 2,
              "the values are part of the interface");

TEST(fxStream, countIsZeroOnConstruction) { EXPECT_EQ(0, MemoryStream().initialCount); }

TEST(fxStream, operationsFollowTheTwoDestructorsInTheStatedOrder) {
    EXPECT_EQ(2u, vtableWord(&fxStream::hasError));
    EXPECT_EQ(3u, vtableWord(&fxStream::atEOF));
    EXPECT_EQ(4u, vtableWord(&fxStream::isReading));
    EXPECT_EQ(5u, vtableWord(&fxStream::isWriting));
    EXPECT_EQ(6u, vtableWord(&fxStream::getType));
    EXPECT_EQ(7u, vtableWord(&fxStream::getBytes));
    EXPECT_EQ(8u, vtableWord(&fxStream::getShorts));
    EXPECT_EQ(9u, vtableWord(&fxStream::getInts));
    EXPECT_EQ(10u, vtableWord(&fxStream::getLongs));
    EXPECT_EQ(11u, vtableWord(&fxStream::getFloats));
    EXPECT_EQ(12u, vtableWord(&fxStream::getDoubles));
    EXPECT_EQ(13u, vtableWord(&fxStream::putBytes));
    EXPECT_EQ(14u, vtableWord(&fxStream::putShorts));
    EXPECT_EQ(15u, vtableWord(&fxStream::putInts));
    EXPECT_EQ(16u, vtableWord(&fxStream::putLongs));
    EXPECT_EQ(17u, vtableWord(&fxStream::putFloats));
    EXPECT_EQ(18u, vtableWord(&fxStream::putDoubles));
}

TEST(fxStream, isDeletedThroughItsBase) {
    bool deleted = false;
    auto* stream = new MemoryStream;
    stream->deleted = &deleted;
    fxRCObj* object = stream;
    delete object;
    EXPECT_TRUE(deleted);
}
