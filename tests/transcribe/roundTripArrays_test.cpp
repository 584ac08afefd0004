// The arrays' part of the roundTrip suite.

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "tests/support/memoryStream.h"
#include "tests/support/scriptedObject.h"
#include "tests/support/streamBytes.h"

namespace {
// The stream that `object` makes, header included.
std::string streamOf(fxXDRObj& object) {
    MemoryStream stream;
    const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(&stream));
    EXPECT_EQ(1, writer->writeObject(&object, &object));
    return stream.written;
}

// The object that a stream makes.
template <class Class>
std::unique_ptr<Class> objectIn(const std::string& bytes, fxTypeObj& type) {
    fxInitializeToolkit();
    MemoryStream stream(bytes);
    const std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(&stream));
    return std::unique_ptr<Class>(static_cast<Class*>(reader->readObject(type)));
}

// While it lives, "ARRAY" is read as what `type` makes.
class ArraysAre {
public:
    explicit ArraysAre(fxTypeObj& type) : last(fxTypeObj::findType("ARRAY")) {
        fxTypeObj::registerType(&type);
    }
    ArraysAre(const ArraysAre&) = delete;
    ArraysAre& operator=(const ArraysAre&) = delete;
    ~ArraysAre() { fxTypeObj::registerType(last); }

private:
    fxTypeObj* last;
};

template <class Array, class Element>
void expectComesBack(const char* name, std::vector<Element> elements) {
    SCOPED_TRACE(name);
    Array array;
    for (const Element element : elements)
        array.append(&element);
    array.setMaxLength(0);
    MemoryStream out;
    {
        fxBinaryWriter writer(&out);
        EXPECT_EQ(1, array.xdr(writer));
        EXPECT_EQ(1, writer.flush());
    }
    std::string expected = host(static_cast<unsigned int>(elements.size() * sizeof(Element))) +
                           host(static_cast<unsigned short>(sizeof(Element)));
    for (const Element element : elements)
        expected += host(element);
    EXPECT_EQ(dump(hex("40") + static_cast<char>(expected.size()) + expected), dump(out.written));

    MemoryStream in(out.written);
    fxBinaryReader reader(&in, 0x1122, 0x33445566, "ieee");
    Array read;
    EXPECT_EQ(1, read.xdr(reader));
    ASSERT_EQ(elements.size(), read.length());
    for (unsigned int i = 0; i < elements.size(); ++i)
        EXPECT_EQ(elements[i], read[i]);
    EXPECT_EQ(read.getLen(), read.getMaxLen());
    read.append(&elements[0]);
    EXPECT_EQ(elements[0], read[read.length() - 1]);
}
}  // namespace

TEST(roundTrip, arraysOfEveryTypeAreLengthElementSizeAndElements) {
    expectComesBack<fxBoolArray, unsigned char>("fxBoolArray", {0, 1, 1});
    expectComesBack<fxCharArray, char>("fxCharArray", {'a', '\0', '\xFF'});
    expectComesBack<fxUnsignedCharArray, unsigned char>("fxUnsignedCharArray", {0, 255});
    expectComesBack<fxShortArray, short>("fxShortArray", {-1, 0x1234});
    expectComesBack<fxUnsignedShortArray, unsigned short>("fxUnsignedShortArray", {0xFEDC});
    expectComesBack<fxIntArray, int>("fxIntArray", {-1, 0x12345678, 0});
    expectComesBack<fxLongArray, long>("fxLongArray", {-1, 0x12345678});
    expectComesBack<fxUnsignedLongArray, unsigned long>("fxUnsignedLongArray", {0xFEDCBA98});
    expectComesBack<fxFloatArray, float>("fxFloatArray", {-0.5f, 1e30f});
    expectComesBack<fxDoubleArray, double>("fxDoubleArray", {-0.5, 1e300});
}

TEST(roundTrip, emptyArrayIsItsTwoSizes) {
    MemoryStream out;
    fxBinaryWriter writer(&out);
    fxDoubleArray array;
    EXPECT_EQ(1, array.xdr(writer));
    EXPECT_EQ(1, writer.flush());
    EXPECT_EQ(dump(hex("40 06") + host(0) + host<short>(8)), dump(out.written));
    MemoryStream in(out.written);
    fxBinaryReader reader(&in, 0x1122, 0x33445566, "ieee");
    fxDoubleArray read;
    EXPECT_EQ(1, read.xdr(reader));
    EXPECT_EQ(0u, read.length());
}

TEST(roundTrip, arraysOfForeignOrderAreConvertedUnlessTheyFloat) {
    MemoryStream in(hex("40 0e") + foreign(8) + foreign<short>(4) + foreign(0x0A0B0C0D) +
                    foreign(-2) + hex("40 0a") + foreign(4) + foreign<short>(2) +
                    foreign<short>(0x0A0B) + foreign<short>(-3) + hex("40 0a") + foreign(4) +
                    foreign<short>(4) + host(1.5f));
    fxBinaryReader reader(&in, 0x2211, 0x66554433, "ieee");
    fxLongArray longs;
    fxShortArray shorts;
    fxFloatArray floats;
    EXPECT_EQ(1, longs.xdr(reader));
    EXPECT_EQ(1, shorts.xdr(reader));
    EXPECT_EQ(1, floats.xdr(reader));
    EXPECT_TRUE(longs.length() == 2 && longs[0] == 0x0A0B0C0D && longs[1] == -2);
    EXPECT_TRUE(shorts.length() == 2 && shorts[0] == 0x0A0B && shorts[1] == -3);
    EXPECT_TRUE(floats.length() == 1 && floats[0] == 1.5f);
}

TEST(roundTrip, arrayOfManyElementsComesBack) {
    const unsigned int n = 1000000;
    fxLongArray array(n);
    for (unsigned int i = 0; i < n; ++i)
        array[i] = static_cast<long>(i * 2654435761U);
    MemoryStream out;
    {
        fxBinaryWriter writer(&out);
        EXPECT_EQ(1, array.xdr(writer));
        EXPECT_EQ(1, writer.flush());
    }
    MemoryStream in(out.written);
    fxBinaryReader reader(&in, 0x1122, 0x33445566, "ieee");
    fxLongArray read;
    EXPECT_EQ(1, read.xdr(reader));
    ASSERT_EQ(n, read.length());
    EXPECT_EQ(0, std::memcmp(array.at(0), read.at(0), n * sizeof(long)));
}

TEST(roundTrip, deliberateSpareCapacityIsWrittenAndMisleadsWhatFollows) {
    fxIntArray array;
    const int one = 1;
    array.append(&one);  // room for four
    const auto contents = [&array](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(array.xdr(t) && t.xdr(self.numbers, 1));
    };
    ScriptedObject root(objType, contents);
    root.numbers[0] = 7;
    MemoryStream out;
    {
        fxBinaryWriter writer(&out);
        EXPECT_EQ(1, writer.writeObject(&root, &root));
    }
    EXPECT_EQ(dump(hex("02 02000000 'Obj' 00 4a 1a 01000000 02000000 01000000") + host(4) +
                   host<short>(4) + host(1) + host(0) + host(0) + host(0) + host(7)),
              dump(out.written));

    fxIntArray read;
    const ReadScript script([&read](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(read.xdr(t) && t.xdr(self.numbers, 1));
    });
    MemoryStream in(out.written);
    fxBinaryReader reader(&in, 0x1122, 0x33445566, "ieee");
    ASSERT_NE(nullptr, reader.readObject(objType));
    EXPECT_TRUE(read.length() == 1 && read[0] == 1);
    EXPECT_EQ(0, ReadScript::made()[0]->numbers[0]) << "a spare element";
}

TEST(roundTrip, copiedArrayIsWrittenWithTheSourcesCapacity) {
    fxIntArray array;
    const int one = 1;
    array.append(&one);
    fxIntArray copy(array);
    MemoryStream out;
    fxBinaryWriter writer(&out);
    EXPECT_EQ(1, copy.xdr(writer));
    EXPECT_EQ(1, writer.flush());
    EXPECT_EQ(dump(hex("40 16") + host(4) + host<short>(4) + host(1) + host(0) + host(0) + host(0)),
              dump(out.written));
}

TEST(roundTrip, deliberateArrayRootBecomesTheClassRegisteredLast) {
    fxIntArray array;
    const int one = 0x01020304;
    array.append(&one);
    array.setMaxLength(0);
    const std::string bytes = streamOf(array);
    EXPECT_EQ(dump(hostHeader() + hex("02 02000000 'ARRAY' 00 4a 0a 01000000 02000000 01000000") +
                   host(4) + host<short>(4) + host(0x01020304)),
              dump(bytes));

    {
        const ArraysAre shorts(fxShortArray_type);
        const auto read = objectIn<fxShortArray>(bytes, fxIntArray_type);
        ASSERT_NE(nullptr, read) << "elements of 4 bytes suffice for shorts";
        EXPECT_EQ(&fxShortArray_type, &read->getTypeObj());
        EXPECT_EQ(4u, read->getElemSize());
    }
    const ArraysAre ints(fxIntArray_type);
    const auto read = objectIn<fxIntArray>(bytes, fxIntArray_type);
    ASSERT_NE(nullptr, read);
    EXPECT_TRUE(read->length() == 1 && (*read)[0] == 0x01020304);
}

TEST(roundTrip, arrayClassIsExactWhenItsRecordIsGivenDirectly) {
    fxIntArray array;
    const int one = 0x01020304;
    array.append(&one);
    MemoryStream out;
    fxBinaryWriter writer(&out);
    EXPECT_EQ(1, fxIntArray_type.xdr(&array, writer));
    EXPECT_EQ(1, writer.flush());
    MemoryStream in(out.written);
    fxBinaryReader reader(&in, 0x1122, 0x33445566, "ieee");
    void* read = fxIntArray_type.create(fxIntArray_type);
    EXPECT_EQ(1, fxIntArray_type.xdr(read, reader));
    EXPECT_EQ(0x01020304, (*static_cast<fxIntArray*>(read))[0]);
    fxIntArray_type.destroy(read);
}

TEST(roundTrip, deliberatePointerArrayIsWrittenAsAnAbstractNothing) {
    fxVoidPtrArray array;
    void* const something = &array;
    array.append(&something);
    EXPECT_EQ(dump(hostHeader() + hex("02 02000000 'fxArray' 00 0a 01000000 02000000 01000000")),
              dump(streamOf(array)));
    EXPECT_EQ(nullptr, objectIn<fxXDRObj>(streamOf(array), fxArray_type));
}
