// fxGraphStandard_test.cpp - streams of fxBinaryWriter, read by a graph reader.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/graphBytes.h"
#include "tests/support/graphs.h"

namespace {

std::string standardStreamOf(fxXDRObj& object) {
    const Held<> stream;
    const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(stream.get()));
    EXPECT_EQ(1, writer->writeObject(&object, &object));
    return std::string(stream->getBase(), stream->length());
}

class fxGraphStandard : public testing::Test {
protected:
    void TearDown() override {
        EXPECT_EQ(0, Person::living);
        EXPECT_EQ(0, Household::living);
    }
};

}  // namespace

TEST_F(fxGraphStandard, sharedAndCyclicGraphsComeBack) {
    Person person;
    Person mother;
    person.name = "Ada";
    person.age = 3;
    person.mother = person.friends[1] = &mother;
    person.setText("text");
    person.setShorts({5, 6});
    mother.friends[0] = &person;
    mother.friends[1] = &mother;
    mother.arm.twin = &person.arm;
    mother.arm.length = 9;
    mother.arms = &person.arm;

    const GraphRead read = readStandard(standardStreamOf(person), Person_type);

    ASSERT_EQ("", read.error);
    const std::unique_ptr<Person> copy(static_cast<Person*>(read.object));
    const std::unique_ptr<Person> itsMother(copy->mother);
    ASSERT_TRUE(itsMother);
    EXPECT_STREQ("Ada", copy->name.c_str());
    EXPECT_EQ(itsMother.get(), copy->friends[1]);
    EXPECT_EQ(copy.get(), itsMother->friends[0]);
    EXPECT_EQ(itsMother.get(), itsMother->friends[1]);
    EXPECT_EQ(&copy->arm, itsMother->arms);
    EXPECT_EQ(&copy->arm, itsMother->arm.twin);
    EXPECT_EQ(9, itsMother->arm.length);
    EXPECT_EQ(6, copy->shorts[1]);
    EXPECT_STREQ("text", copy->text);
    EXPECT_EQ(nullptr, itsMother->text);
    EXPECT_EQ(nullptr, itsMother->doubles);
}

TEST_F(fxGraphStandard, containersComeBack) {
    Household house;
    house.title = "a house";
    for (int i = 0; i < 9; ++i)
        house.numbers.append(&i);
    house.numbers.setMaxLength(0);
    house.names.append("one");
    house.names.append("");
    house.phones.add("ada", "1815");
    house.phones.add("bob", "");
    house.keys.add("key");
    house.last = 4;

    const GraphRead read = readStandard(standardStreamOf(house), Household_type);

    ASSERT_EQ("", read.error);
    const std::unique_ptr<Household> copy(static_cast<Household*>(read.object));
    EXPECT_STREQ("a house", copy->title.c_str());
    EXPECT_EQ(8, copy->numbers[8]);
    EXPECT_STREQ("one", copy->names[0].c_str());
    EXPECT_STREQ("1815", copy->phones.find("ada")->c_str());
    EXPECT_TRUE(copy->keys.contains("key"));
    EXPECT_EQ(4, copy->last);
}

TEST_F(fxGraphStandard, theSpareCapacityOfAnArrayIsNamedAsTheCause) {
    fxIntArray numbers;
    for (int i = 0; i < 9; ++i)
        numbers.append(&i);
    ASSERT_EQ(12u * 4, numbers.getMaxLen());
    const GraphRead read = readStandard(standardStreamOf(numbers), fxIntArray_type);
    EXPECT_EQ(nullptr, read.object);
    EXPECT_EQ(
        "offset 37, record 2: 12 bytes are left that \"ARRAY\" does not read (the spare "
        "capacity of an array; setMaxLength(0) before writing leaves it out)",
        read.error);
}

TEST_F(fxGraphStandard, theVersionIsThatOfTheTypeDefinedLast) {
    const auto streamWith = [](std::uint32_t version) {
        GraphBytes b(false, "fxBinaryWriter");
        std::string type = std::string("\2\2\0\0\0", 5) + "Limb" + '\0';
        return b.raw(type).record(10, {1, 2, version}, b.word(5)).record(1).str();
    };
    const GraphRead good = readStandard(streamWith(1), Limb_type);
    EXPECT_EQ("", good.error);
    delete static_cast<Limb*>(good.object);
    const GraphRead bad = readStandard(streamWith(2), Limb_type);
    EXPECT_EQ(nullptr, bad.object);
    EXPECT_EQ("offset 36, record 2: the version of object 1 is 2, not 1", bad.error);
}

TEST_F(fxGraphStandard, noTruncatedStreamLoads) {
    Person person;
    Person mother;
    person.name = "a name";
    person.mother = &mother;
    mother.mother = &person;
    person.setShorts({1, 2, 3});
    person.setText("text");
    person.setDoubles(1, 2);
    mother.name = "mother";
    const std::string bytes = standardStreamOf(person);
    for (std::size_t n = 26; n < bytes.size(); ++n) {
        SCOPED_TRACE(n);
        const GraphRead read = readStandard(bytes.substr(0, n), Person_type);
        EXPECT_EQ(nullptr, read.object);
        EXPECT_NE("", read.error);
        EXPECT_EQ(2, Person::living);
    }
}

// Such streams have no checksum: some changes load as other data, none does harm.
TEST_F(fxGraphStandard, changedBytesDoNoHarm) {
    Household house;
    house.title = "title";
    house.names.append("one");
    house.phones.add("ada", "1815");
    house.keys.add("key");
    const std::string bytes = standardStreamOf(house);
    for (std::size_t n = 26; n < bytes.size(); ++n) {
        for (int bit = 0; bit < 8; ++bit) {
            std::string changed = bytes;
            changed[n] = static_cast<char>(changed[n] ^ 1 << bit);
            const GraphRead read = readStandard(changed, Household_type);
            EXPECT_EQ(read.object == nullptr, read.error != "");
            delete static_cast<Household*>(read.object);
        }
    }
}
