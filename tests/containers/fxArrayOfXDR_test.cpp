// fxArrayOfXDR_test.cpp - arrays of any element, written and read back.

#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxArrayOf.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "tests/support/graphs.h"
#include "tests/support/recordingTranscriber.h"

namespace {

// An element with a transcription of its own; the version is that of what has it.
class Phone {
public:
    Phone() { ++alive; }
    Phone(const Phone& other) : number(other.number), kind(other.kind) { ++alive; }
    Phone& operator=(const Phone&) = default;
    ~Phone() { --alive; }
    bool xdr(fxTranscriber& t) {
        versionSeen = t.objectVersion();
        return number.xdr(t) && t.xdr(&kind, 1);
    }

    fxStr number;
    short kind = 0;
    unsigned int versionSeen = 0;

    static int alive;
};
int Phone::alive = 0;

// An element that is an object: a part with a version of its own.
class Entry : public fxXDRObj {
    FX_XDR_MEMBERS(Entry)
    Entry() { ++alive; }
    Entry(const Entry& other) : fxXDRObj(other), key(other.key), next(other.next) { ++alive; }
    Entry& operator=(const Entry&) = default;
    ~Entry() override { --alive; }

    int key = 0;
    Entry* next = nullptr;  // another element
    unsigned int versionSeen = 0;

    static int alive;
};
int Entry::alive = 0;
FX_DEFINE_XDR(Entry, "ArrayEntry", 7)
unsigned char Entry::xdr(fxTranscriber& t) {
    versionSeen = t.objectVersion();
    return t.xdr(&key, 1) && fxXdrPointer(t, next);
}

template <class Element>
class Owner : public fxXDRObj {
public:
    unsigned char xdr(fxTranscriber& t) override {
        return before.xdr(t) && elements.xdr(t) && t.xdr(&after, 1);
    }
    fxTypeObj& getTypeObj() const override { return classType(); }
    static fxTypeObj& classType() {
        static fxTypeObj type("ArrayOwner", 2, newInstance, deleteInstance, xdr);
        fxTypeObj::registerType(&type);
        return type;
    }
    static void* newInstance(fxTypeObj&) { return new Owner; }
    static void deleteInstance(void* object) { delete static_cast<Owner*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Owner*>(object)->xdr(t);
    }

    fxStr before;
    fxArrayOf<Element> elements;
    int after = 0;
};

template <class T>
std::unique_ptr<T> copied(T& object) {
    const GraphRead read = readGraph(graphStreamOf(object), fxTypeOf<T>());
    EXPECT_EQ("", read.error);
    return std::unique_ptr<T>(static_cast<T*>(read.object));
}

template <class Number>
class fxArrayOfNumbers : public testing::Test {
protected:
    static std::vector<Number> values() {
        using limits = std::numeric_limits<Number>;
        return {Number(0), Number(1), limits::lowest(), limits::max(), limits::min(), Number(1)};
    }
};
using NumberTypes = testing::Types<bool, char, signed char, unsigned char, short, unsigned short,
                                   int, unsigned int, long, unsigned long, float, double>;
TYPED_TEST_SUITE(fxArrayOfNumbers, NumberTypes);

class fxArrayOfXDR : public testing::Test {
protected:
    void TearDown() override {
        EXPECT_EQ(0, Phone::alive);
        EXPECT_EQ(0, Entry::alive);
    }
};

}  // namespace

// Numbers.

TYPED_TEST(fxArrayOfNumbers, comeBack) {
    Owner<TypeParam> owner;
    for (const TypeParam value : this->values())
        owner.elements.append(value);
    owner.elements.setMaxLength(100);
    owner.after = 5;
    const auto copy = copied(owner);
    ASSERT_NE(nullptr, copy);
    ASSERT_EQ(owner.elements.length(), copy->elements.length());
    for (unsigned int i = 0; i < owner.elements.length(); ++i)
        EXPECT_EQ(owner.elements[i], copy->elements[i]);
    EXPECT_EQ(5, copy->after);
}

TYPED_TEST(fxArrayOfNumbers, goInOneCall) {
    fxArrayOf<TypeParam> array(1000);
    RecordingTranscriber host(RecordingTranscriber::writer);
    ASSERT_EQ(1, array.xdr(host));
    ASSERT_EQ(3u, host.calls.size());
    EXPECT_EQ(1000u, host.calls[2].n);

    RecordingTranscriber reader(RecordingTranscriber::reader, host.bytes);
    fxArrayOf<TypeParam> copy;
    ASSERT_EQ(1, copy.xdr(reader));
    ASSERT_EQ(3u, reader.calls.size());
    EXPECT_EQ(1000u, copy.length());
}

TYPED_TEST(fxArrayOfNumbers, aFailedReadLeavesAnArray) {
    fxArrayOf<TypeParam> array(10);
    RecordingTranscriber host(RecordingTranscriber::writer);
    ASSERT_EQ(1, array.xdr(host));
    for (std::size_t length = 0; length < host.bytes.size(); ++length) {
        RecordingTranscriber reader(RecordingTranscriber::reader, host.bytes.substr(0, length));
        fxArrayOf<TypeParam> copy(3);
        EXPECT_EQ(0, copy.xdr(reader));
        EXPECT_EQ(0u, copy.length());
        copy.append(TypeParam());
        EXPECT_EQ(1u, copy.length());
    }
}

TEST_F(fxArrayOfXDR, numbersHaveTheFormOfTheLibrarysArrays) {
    Owner<short> owner;
    fxShortArray numbers;
    for (short i = 0; i < 300; ++i) {
        owner.elements.append(i);
        numbers.append(&i);
    }
    RecordingTranscriber host(RecordingTranscriber::writer);
    ASSERT_EQ(1, owner.elements.xdr(host));
    RecordingTranscriber other(RecordingTranscriber::writer);
    numbers.setMaxLength(0);
    ASSERT_EQ(1, numbers.xdr(other));
    EXPECT_EQ(other.bytes, host.bytes);
}

TEST_F(fxArrayOfXDR, aBooleanIsOneOfTwo) {
    fxArrayOf<bool> array(2);
    RecordingTranscriber host(RecordingTranscriber::writer);
    ASSERT_EQ(1, array.xdr(host));
    host.bytes.back() = 2;
    RecordingTranscriber reader(RecordingTranscriber::reader, host.bytes);
    ASSERT_EQ(1, array.xdr(reader));
    EXPECT_EQ(false, array[0]);
    EXPECT_EQ(true, array[1]);
}

TEST_F(fxArrayOfXDR, sizesThatAreNoArraysAreRefused) {
    const struct {
        unsigned int bytes;
        unsigned short size;
    } cases[] = {{8, 2}, {8, 8}, {8, 0}, {7, 4}, {1, 4}, {0, 3}, {0xFFFFFFFC, 4}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.bytes << " bytes of " << c.size);
        std::string bytes(100, '\0');
        std::memcpy(&bytes[0], &c.bytes, 4);
        std::memcpy(&bytes[4], &c.size, 2);
        RecordingTranscriber reader(RecordingTranscriber::reader, bytes);
        fxArrayOf<int> array(1);
        EXPECT_EQ(0, array.xdr(reader));
        EXPECT_EQ(0u, array.length());
        EXPECT_EQ(0u, array.getLen());
    }
}

// Elements that transcribe themselves.

TEST_F(fxArrayOfXDR, elementsWithAnXdrComeBack) {
    Owner<Phone> owner;
    owner.elements.resize(3);
    owner.elements[0].number = "0815";
    owner.elements[0].kind = 3;
    owner.elements[1].number = "";
    owner.elements.setMaxLength(10);
    const auto copy = copied(owner);
    ASSERT_NE(nullptr, copy);
    ASSERT_EQ(3u, copy->elements.length());
    EXPECT_STREQ("0815", copy->elements[0].number.c_str());
    EXPECT_EQ(3, copy->elements[0].kind);
    EXPECT_STREQ("", copy->elements[1].number.c_str());
    EXPECT_STREQ("", copy->elements[2].number.c_str());
    EXPECT_EQ(2u, copy->elements[0].versionSeen) << "that of the owner";
    EXPECT_EQ(copy->elements.getLen(), copy->elements.getMaxLen());
}

TEST_F(fxArrayOfXDR, stringsAndArraysAreElements) {
    Owner<fxArrayOf<fxStr>> owner;
    owner.elements.resize(2);
    owner.elements[0].append("one");
    owner.elements[0].append("");
    const auto copy = copied(owner);
    ASSERT_NE(nullptr, copy);
    ASSERT_EQ(2u, copy->elements.length());
    ASSERT_EQ(2u, copy->elements[0].length());
    EXPECT_STREQ("one", copy->elements[0][0].c_str());
    EXPECT_EQ(0u, copy->elements[1].length());
}

TEST_F(fxArrayOfXDR, objectsHaveAVersionOfTheirOwnAndMayBePointedTo) {
    Owner<Entry> owner;
    owner.elements.resize(3);
    for (int i = 0; i < 3; ++i) {
        owner.elements[static_cast<unsigned int>(i)].key = i;
        owner.elements[static_cast<unsigned int>(i)].next =
            &owner.elements[static_cast<unsigned int>((i + 1) % 3)];
    }
    const auto copy = copied(owner);
    ASSERT_NE(nullptr, copy);
    ASSERT_EQ(3u, copy->elements.length());
    for (unsigned int i = 0; i < 3; ++i) {
        EXPECT_EQ(static_cast<int>(i), copy->elements[i].key);
        EXPECT_EQ(7u, copy->elements[i].versionSeen);
        EXPECT_EQ(&copy->elements[(i + 1) % 3], copy->elements[i].next);
    }
}

TEST_F(fxArrayOfXDR, oldElementsAreEnded) {
    fxArrayOf<Phone> array(2);
    RecordingTranscriber host(RecordingTranscriber::writer);
    ASSERT_EQ(1, array.xdr(host));
    array.resize(50);
    EXPECT_EQ(50, Phone::alive);
    RecordingTranscriber reader(RecordingTranscriber::reader, host.bytes);
    ASSERT_EQ(1, array.xdr(reader));
    EXPECT_EQ(2u, array.length());
    EXPECT_EQ(2, Phone::alive);
}

TEST_F(fxArrayOfXDR, aFailedReadLeavesWhatArrived) {
    fxArrayOf<Phone> array(4);
    for (Phone& phone : array)
        phone.number = "12345";
    RecordingTranscriber host(RecordingTranscriber::writer);
    ASSERT_EQ(1, array.xdr(host));
    unsigned int most = 0;
    for (std::size_t length = 0; length < host.bytes.size(); ++length) {
        RecordingTranscriber reader(RecordingTranscriber::reader, host.bytes.substr(0, length));
        fxArrayOf<Phone> copy(3);
        EXPECT_EQ(0, copy.xdr(reader));
        EXPECT_LE(copy.length(), 4u);
        EXPECT_GE(copy.length(), most);
        most = copy.length();
        for (unsigned int i = 0; i + 1 < copy.length(); ++i)
            EXPECT_STREQ("12345", copy[i].number.c_str());
        EXPECT_EQ(4 + static_cast<int>(copy.length()), Phone::alive);
    }
    EXPECT_EQ(4u, most);
}

TEST_F(fxArrayOfXDR, countsThatNoMemoryHoldsAreRefused) {
    for (const unsigned int n : {0xFFFFFFFFU, 0x7FFFFFFFU, 0x10000000U}) {
        std::string bytes(100, '\0');
        std::memcpy(&bytes[0], &n, 4);
        RecordingTranscriber reader(RecordingTranscriber::reader, bytes);
        fxArrayOf<Phone> array(1);
        EXPECT_EQ(0, array.xdr(reader));
        EXPECT_LE(array.length(), 20u);
    }
}

// Pointers.

TEST_F(fxArrayOfXDR, pointersLeadToTheSameObjects) {
    Owner<Entry*> owner;
    Entry first, second;
    first.key = 1;
    second.key = 2;
    for (Entry* each : {&first, &second, static_cast<Entry*>(nullptr), &first})
        owner.elements.append(each);
    const auto copy = copied(owner);
    ASSERT_NE(nullptr, copy);
    ASSERT_EQ(4u, copy->elements.length());
    const std::unique_ptr<Entry> firstCopy(copy->elements[0]), secondCopy(copy->elements[1]);
    ASSERT_NE(nullptr, firstCopy);
    EXPECT_EQ(1, firstCopy->key);
    EXPECT_EQ(2, secondCopy->key);
    EXPECT_EQ(nullptr, copy->elements[2]);
    EXPECT_EQ(firstCopy.get(), copy->elements[3]);
}

TEST_F(fxArrayOfXDR, refsCount) {
    Owner<fxRef<Entry>> owner;
    owner.elements.append(new Entry);
    owner.elements.append(owner.elements[0]);
    owner.elements.append(nullptr);
    {
        const auto copy = copied(owner);
        ASSERT_NE(nullptr, copy);
        ASSERT_EQ(3u, copy->elements.length());
        EXPECT_EQ(2, copy->elements[0]->count);
        EXPECT_TRUE(copy->elements[0] == copy->elements[1]);
        EXPECT_EQ(nullptr, copy->elements[2]);
        EXPECT_EQ(2, Entry::alive);
    }
    EXPECT_EQ(1, Entry::alive);
}

TEST_F(fxArrayOfXDR, everyCutOfAGraphIsRefusedAndNothingIsLeft) {
    Owner<fxRef<Entry>> owner;
    for (int i = 0; i < 5; ++i)
        owner.elements.append(new Entry);
    const std::string bytes = graphStreamOf(owner);
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        const GraphRead read = readGraph(bytes.substr(0, length), owner.getTypeObj());
        EXPECT_EQ(nullptr, read.object) << length;
        EXPECT_EQ(5, Entry::alive);
    }
}

// As objects of their own.

TEST_F(fxArrayOfXDR, anArrayIsARootAndWhatPointersLeadTo) {
    fxArrayOf<Phone> array(2);
    array[1].number = "4711";
    const auto copy = copied(array);
    ASSERT_NE(nullptr, copy);
    ASSERT_EQ(2u, copy->length());
    EXPECT_STREQ("4711", (*copy)[1].number.c_str());
    EXPECT_EQ(1u, (*copy)[1].versionSeen) << "that of the array";

    Owner<fxArrayOf<Phone>*> owner;
    owner.elements.append(&array);
    const auto ownerCopy = copied(owner);
    ASSERT_NE(nullptr, ownerCopy);
    const std::unique_ptr<fxArrayOf<Phone>> pointedTo(ownerCopy->elements[0]);
    ASSERT_NE(nullptr, pointedTo);
    EXPECT_STREQ("4711", (*pointedTo)[1].number.c_str());
}

TEST_F(fxArrayOfXDR, theStandardPairTakesThemAsMembers) {
    const Held<> stream;
    Owner<long> owner;
    owner.elements.append(-3);
    owner.elements.setMaxLength(20);
    owner.after = 6;
    fxBinaryWriter writer(stream.get());
    ASSERT_EQ(1, writer.writeObject(&owner, &owner));
    fxBinaryReader reader(stream.get(), 0x1122, 0x33445566, "ieee");
    const std::unique_ptr<Owner<long>> copy(
        static_cast<Owner<long>*>(reader.readObject(owner.getTypeObj())));
    ASSERT_NE(nullptr, copy);
    ASSERT_EQ(1u, copy->elements.length());
    EXPECT_EQ(-3, copy->elements[0]);
    EXPECT_EQ(6, copy->after);
}

TEST_F(fxArrayOfXDR, elementsThatCannotBeFailAsAnObject) {
    struct Plain {
        int a, b;
    };
    fxArrayOf<Plain> array(2);
    fxXDRObj& object = array;
    RecordingTranscriber host(RecordingTranscriber::writer);
    EXPECT_EQ(0, object.xdr(host));
    EXPECT_EQ(0u, host.calls.size());
}
