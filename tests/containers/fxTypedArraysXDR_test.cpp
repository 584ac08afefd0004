// fxTypedArraysXDR_test.cpp - what the typed arrays tell a transcriber.

#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "tests/support/arrayFamily.h"
#include "tests/support/memory.h"
#include "tests/support/recordingTranscriber.h"

namespace {

template <class Array>
class fxTypedArraysXDR : public testing::Test {
protected:
    static constexpr unsigned int size = ArrayTraits<Array>::size;

    // The three calls of a transcription of `n` elements.
    static std::string callsFor(unsigned int n) {
        return std::string("uint*:1 ushort*:1 ") + ArrayTraits<Array>::operation() + ":" +
               std::to_string(n);
    }

    // What a transcription of elements starts with: a length in bytes and an
    // element size.
    static std::string head(unsigned int length, unsigned int elementSize) {
        RecordingTranscriber t(RecordingTranscriber::reader);
        t.give(length).give(static_cast<unsigned short>(elementSize));
        return t.bytes;
    }

    static std::string elements(const std::string& digits) {
        std::string bytes;
        for (char digit : digits)
            bytes.append(size, static_cast<char>(digit - '0'));
        return bytes;
    }

    // Through the virtual operation and through the record's function.
    static unsigned char xdrBy(int way, Array& array, fxTranscriber& t) {
        return way == 0 ? static_cast<fxXDRObj&>(array).xdr(t)
                        : ArrayTraits<Array>::record().xdr(&array, t);
    }
};
TYPED_TEST_SUITE(fxTypedArraysXDR, ArraysWithRecords);

}  // namespace

// Writing.

TYPED_TEST(fxTypedArraysXDR, writesLengthElementSizeAndElements) {
    for (int way : {0, 1}) {
        Opened<TypeParam> array;
        appendDigits(static_cast<TypeParam&>(array), "123");
        array.setMaxLength(0);
        RecordingTranscriber t(RecordingTranscriber::writer);
        EXPECT_EQ(1, this->xdrBy(way, array, t));
        ASSERT_EQ(this->callsFor(3), t.log());
        EXPECT_EQ(&array.len, t.calls[0].address);
        EXPECT_EQ(&array.elemSize, t.calls[1].address);
        EXPECT_EQ(array.data, t.calls[2].address);

        EXPECT_EQ(this->head(3 * this->size, this->size) + this->elements("123"), t.bytes);
    }
}

TYPED_TEST(fxTypedArraysXDR, deliberateWritesTheSpareCapacityToo) {
    TypeParam array;
    appendDigits(array, "12345");
    ASSERT_EQ(8 * this->size, array.getMaxLen());
    RecordingTranscriber t(RecordingTranscriber::writer);
    EXPECT_EQ(1, array.xdr(t));
    EXPECT_EQ(this->callsFor(8), t.log());

    EXPECT_EQ(this->head(5 * this->size, this->size) + this->elements("12345000"), t.bytes);
}

TYPED_TEST(fxTypedArraysXDR, writesTheSpareCapacityOfACopy) {
    TypeParam array;
    appendDigits(array, "1");
    TypeParam copy(array);
    RecordingTranscriber t(RecordingTranscriber::writer);
    EXPECT_EQ(1, copy.xdr(t));
    EXPECT_EQ(this->callsFor(4), t.log());

    EXPECT_EQ(this->head(this->size, this->size) + this->elements("1000"), t.bytes);
}

TYPED_TEST(fxTypedArraysXDR, writesAnEmptyArray) {
    TypeParam array;
    RecordingTranscriber t(RecordingTranscriber::writer);
    EXPECT_EQ(1, array.xdr(t));
    EXPECT_EQ(this->callsFor(0), t.log());
}

TYPED_TEST(fxTypedArraysXDR, writingStopsAtTheFirstFailure) {
    for (int way : {0, 1}) {
        for (unsigned int step = 0; step < 3; ++step) {
            SCOPED_TRACE(step);
            TypeParam array;
            appendDigits(array, "12");
            RecordingTranscriber t(RecordingTranscriber::writer);
            t.failAt = step;
            EXPECT_EQ(0, this->xdrBy(way, array, t));
            EXPECT_EQ(step + 1, t.calls.size());
            EXPECT_EQ("12", digitsOf(array));
        }
    }
}

// Reading.

TYPED_TEST(fxTypedArraysXDR, readsLengthElementSizeAndElements) {
    for (int way : {0, 1}) {
        fxTypeObj& record = ArrayTraits<TypeParam>::record();
        auto* array = static_cast<TypeParam*>(record.create(record));
        RecordingTranscriber t(RecordingTranscriber::reader,
                               this->head(3 * this->size, this->size) + this->elements("123"));
        EXPECT_EQ(1, this->xdrBy(way, *array, t));
        EXPECT_EQ(this->callsFor(3), t.log());
        EXPECT_EQ(array->at(0), t.calls[2].address);
        EXPECT_EQ("123", digitsOf(*array));
        EXPECT_EQ(3 * this->size, array->getLen());
        EXPECT_EQ(3 * this->size, array->getMaxLen());
        EXPECT_EQ(this->size, array->getElemSize());
        record.destroy(array);
    }
}

TYPED_TEST(fxTypedArraysXDR, deliberateReadsTheLengthButNotTheSpareCapacity) {
    TypeParam array;
    appendDigits(array, "12345");
    RecordingTranscriber writer(RecordingTranscriber::writer);
    ASSERT_EQ(1, array.xdr(writer));

    RecordingTranscriber reader(RecordingTranscriber::reader, writer.bytes);
    TypeParam read;
    EXPECT_EQ(1, read.xdr(reader));
    EXPECT_EQ(this->callsFor(5), reader.log());
    EXPECT_EQ("12345", digitsOf(read));
    EXPECT_EQ(5 * this->size, read.getMaxLen());
    EXPECT_EQ(3 * this->size, reader.bytes.size() - reader.used);
}

TYPED_TEST(fxTypedArraysXDR, readsAnEmptyArray) {
    TypeParam array;
    RecordingTranscriber t(RecordingTranscriber::reader, this->head(0, this->size));
    EXPECT_EQ(1, array.xdr(t));
    EXPECT_EQ(this->callsFor(0), t.log());
    EXPECT_EQ(nullptr, array.at(0));
    EXPECT_EQ(0u, array.getMaxLen());
}

namespace {
// Notes the capacities for which it is to bring memory, and brings none above
// `most`.
template <class Array>
class AskedArray : public Array {
public:
    void getmem() override {
        asked += std::to_string(this->maxLen) + " ";
        if (this->maxLen <= most)
            Array::getmem();
    }
    std::string asked;
    unsigned int most = 0xFFFFFFFF;
};
}  // namespace

TYPED_TEST(fxTypedArraysXDR, readingGetsExactlyTheMemoryOfTheLength) {
    for (unsigned int n : {0u, 2u, 300000u}) {
        SCOPED_TRACE(n);
        AskedArray<TypeParam> array;
        RecordingTranscriber t(
            RecordingTranscriber::reader,
            this->head(n * this->size, this->size) + this->elements(std::string(n, '1')));
        EXPECT_EQ(1, array.xdr(t));
        EXPECT_EQ(std::to_string(n * this->size) + " ", array.asked);
        EXPECT_EQ(this->callsFor(n), t.log());
    }
}

TYPED_TEST(fxTypedArraysXDR, memoryThatIsRefusedFailsTheRead) {
    AskedArray<TypeParam> array;
    array.most = this->size;
    RecordingTranscriber t(RecordingTranscriber::reader,
                           this->head(2 * this->size, this->size) + this->elements("12"));
    EXPECT_EQ(0, array.xdr(t));
    EXPECT_EQ("uint*:1 ushort*:1", t.log()) << "no element is asked for";
    EXPECT_EQ(nullptr, array.at(0));
}

TYPED_TEST(fxTypedArraysXDR, deliberateReadingDoesNotFreeTheOldBlock) {
    TypeParam array;
    appendDigits(array, "99");
    auto* old = static_cast<char*>(array.at(0));
    RecordingTranscriber t(RecordingTranscriber::reader,
                           this->head(this->size, this->size) + this->elements("1"));
    EXPECT_EQ(1, array.xdr(t));
    EXPECT_EQ("1", digitsOf(array));
    EXPECT_NE(old, array.at(0));
    EXPECT_EQ(9, old[0]);
    EXPECT_EQ(9, old[2 * this->size - 1]);
    std::free(old);
}

TYPED_TEST(fxTypedArraysXDR, readingStopsAtTheFirstFailure) {
    for (unsigned int step = 0; step < 3; ++step) {
        SCOPED_TRACE(step);
        TypeParam array;
        RecordingTranscriber t(RecordingTranscriber::reader,
                               this->head(2 * this->size, this->size) + this->elements("12"));
        t.failAt = step;
        EXPECT_EQ(0, array.xdr(t));
        EXPECT_EQ(step + 1, t.calls.size());
    }
}

TYPED_TEST(fxTypedArraysXDR, failureBeforeTheElementsLeavesBlockAndCapacity) {
    for (unsigned int step = 0; step < 2; ++step) {
        SCOPED_TRACE(step);
        TypeParam array;
        appendDigits(array, "12");
        const void* block = array.at(0);
        RecordingTranscriber t(RecordingTranscriber::reader,
                               this->head(2 * this->size, this->size));
        t.failAt = step;
        EXPECT_EQ(0, array.xdr(t));
        EXPECT_EQ(block, array.at(0));
        EXPECT_EQ(4 * this->size, array.getMaxLen());
        EXPECT_EQ("12", digitsOf(array));
    }
}

// Bad input.

TYPED_TEST(fxTypedArraysXDR, elementsThatEndEarlyFail) {
    for (unsigned int missing : {1u, 2u}) {
        TypeParam array;
        RecordingTranscriber t(RecordingTranscriber::reader,
                               this->head(2 * this->size, this->size) + this->elements("12"));
        t.bytes.resize(t.bytes.size() - missing);
        EXPECT_EQ(0, array.xdr(t));
    }
}

TYPED_TEST(fxTypedArraysXDR, elementSizeBelowTheTypesFails) {
    for (unsigned int elementSize = 0; elementSize < this->size; ++elementSize) {
        for (unsigned int length : {0u, 1u, 4 * this->size, 0xFFFFFFFFu}) {
            SCOPED_TRACE(testing::Message() << length << " bytes of " << elementSize);
            TypeParam array;
            RecordingTranscriber t(RecordingTranscriber::reader,
                                   this->head(length, elementSize) + this->elements("12345678"));
            EXPECT_EQ(0, array.xdr(t));
        }
    }
}

// A block of 3 * (size + 1) bytes gets three elements, packed as the type is.
TYPED_TEST(fxTypedArraysXDR, elementSizeAboveTheTypesReadsThatManyFewerElements) {
    const unsigned int elementSize = this->size + 1;
    TypeParam array;
    RecordingTranscriber t(RecordingTranscriber::reader,
                           this->head(3 * elementSize, elementSize) + this->elements("123"));
    EXPECT_EQ(1, array.xdr(t));
    EXPECT_EQ(this->callsFor(3), t.log());
    EXPECT_EQ(3u, array.length());
    EXPECT_EQ(elementSize, array.getElemSize());
    EXPECT_EQ(3 * elementSize, array.getMaxLen());
    for (unsigned int i = 0; i < 3 * this->size; ++i)
        EXPECT_EQ(static_cast<int>(i / this->size) + 1, static_cast<const char*>(array.at(0))[i]);
}

TYPED_TEST(fxTypedArraysXDR, aLengthThatIsNoMultipleReadsTheWholeElements) {
    const unsigned int length = 3 * this->size - 1;
    const unsigned int whole = length / this->size;
    TypeParam array;
    RecordingTranscriber t(RecordingTranscriber::reader,
                           this->head(length, this->size) + this->elements("123"));
    EXPECT_EQ(1, array.xdr(t));
    EXPECT_EQ(this->callsFor(whole), t.log());
    EXPECT_EQ(length, array.getLen());
    EXPECT_EQ(length, array.getMaxLen());
    EXPECT_EQ(std::string("123").substr(0, whole), digitsOf(array));
}

// Memory is touched only as far as elements arrive. Memory checkers complain of
// sizes that no process can have, so those are asked for in a child process.
TYPED_TEST(fxTypedArraysXDR, aLengthWithoutElementsTakesNoMemory) {
    const std::size_t before = residentBytes();
    TypeParam array;
    RecordingTranscriber t(RecordingTranscriber::reader,
                           this->head(0x10000000u, this->size) + this->elements("12"));
    EXPECT_EQ(0, array.xdr(t));
    EXPECT_EQ(this->callsFor(0x10000000u / this->size), t.log());
    EXPECT_LT(residentBytes() - before, std::size_t(64) << 20) << "a checker's own share";
}

namespace {
template <class Array>
class fxTypedArraysXDRDeathTest : public fxTypedArraysXDR<Array> {};
TYPED_TEST_SUITE(fxTypedArraysXDRDeathTest, ArraysWithRecords);
}  // namespace

TYPED_TEST(fxTypedArraysXDRDeathTest, aLengthThatNoBlockCanHaveFailsTheRead) {
    const auto check = [] {
        for (unsigned int length : {0xFFFFFFFFu, 0xFFFFFFF8u}) {
            TypeParam array;
            RecordingTranscriber t(
                RecordingTranscriber::reader,
                TestFixture::head(length, TestFixture::size) + TestFixture::elements("12"));
            if (array.xdr(t) != 0 || t.log() != "uint*:1 ushort*:1")
                std::_Exit(1);
        }
        std::_Exit(0);
    };
    EXPECT_EXIT(check(), testing::ExitedWithCode(0), "");
}

TYPED_TEST(fxTypedArraysXDR, aLongArrayIsReadCompletely) {
    const unsigned int n = (9u << 20) / this->size + 3;
    TypeParam original(n);
    auto* bytes = static_cast<unsigned char*>(original.at(0));
    unsigned int state = 1;
    for (unsigned int i = 0; i < original.getLen(); ++i) {
        state = state * 1664525 + 1013904223;
        bytes[i] = static_cast<unsigned char>(state >> 24);
    }
    RecordingTranscriber writer(RecordingTranscriber::writer);
    ASSERT_EQ(1, original.xdr(writer));
    EXPECT_EQ(this->callsFor(n), writer.log());

    RecordingTranscriber reader(RecordingTranscriber::reader, writer.bytes);
    TypeParam read;
    ASSERT_EQ(1, read.xdr(reader));
    EXPECT_EQ(this->callsFor(n), reader.log()) << "all elements at once";
    ASSERT_EQ(original.getLen(), read.getLen());
    EXPECT_EQ(original.getLen(), read.getMaxLen());
    EXPECT_EQ(0, std::memcmp(bytes, read.at(0), read.getLen()));
    EXPECT_EQ(reader.bytes.size(), reader.used);
}
