// fxGraphStreams_test.cpp - graphs that are written and come back.

#include <gtest/gtest.h>

#include "tests/support/graphs.h"

namespace {

class fxGraphStreams : public testing::Test {
protected:
    void TearDown() override {
        EXPECT_EQ(0, Person::living);
        EXPECT_EQ(0, Limb::living);
        EXPECT_EQ(0, Household::living);
    }
};

template <class T>
std::unique_ptr<T> copied(T& object, fxTypeObj& type) {
    const GraphRead read = readGraph(graphStreamOf(object), type);
    EXPECT_EQ("", read.error);
    return std::unique_ptr<T>(static_cast<T*>(read.object));
}

}  // namespace

TEST_F(fxGraphStreams, anObjectComesBackWithItsMembers) {
    Person person;
    person.age = -41;
    person.name = "Ada";
    person.arm.length = 73;
    person.setShorts({1, -2, 300});
    person.setDoubles(0.1, -1e300);
    person.setText("a text");
    person.weight = 71.5f;
    person.height = 1.82;
    person.initial = 'A';
    person.year = 1815;

    const auto copy = copied(person, Person_type);

    ASSERT_TRUE(copy);
    EXPECT_EQ(-41, copy->age);
    EXPECT_STREQ("Ada", copy->name.c_str());
    EXPECT_EQ(nullptr, copy->mother);
    EXPECT_EQ(73, copy->arm.length);
    ASSERT_EQ(3u, copy->count);
    EXPECT_EQ(300, copy->shorts[2]);
    EXPECT_EQ(-1e300, copy->doubles[1]);
    EXPECT_STREQ("a text", copy->text);
    EXPECT_EQ(71.5f, copy->weight);
    EXPECT_EQ(1.82, copy->height);
    EXPECT_EQ('A', copy->initial);
    EXPECT_EQ(1815, copy->year);
}

TEST_F(fxGraphStreams, twoPointersToOneObjectLeadToOne) {
    Person person;
    Person mother;
    person.mother = person.friends[0] = &mother;
    mother.friends[1] = &person;

    const auto copy = copied(person, Person_type);

    ASSERT_TRUE(copy);
    const std::unique_ptr<Person> itsMother(copy->mother);
    ASSERT_TRUE(itsMother);
    EXPECT_EQ(copy->mother, copy->friends[0]);
    EXPECT_EQ(nullptr, copy->friends[1]);
    EXPECT_EQ(copy.get(), itsMother->friends[1]);
}

TEST_F(fxGraphStreams, aPointerLeadsToAnEmbeddedObject) {
    Person person;
    Person other;
    person.friends[0] = &other;
    person.arms = &other.arm;  // met before and after its person
    other.arms = &person.arm;
    person.arm.length = 1;
    other.arm.length = 2;
    other.arm.twin = &person.arm;

    const auto copy = copied(person, Person_type);

    ASSERT_TRUE(copy);
    const std::unique_ptr<Person> itsFriend(copy->friends[0]);
    ASSERT_TRUE(itsFriend);
    EXPECT_EQ(&itsFriend->arm, copy->arms);
    EXPECT_EQ(&copy->arm, itsFriend->arms);
    EXPECT_EQ(&copy->arm, itsFriend->arm.twin);
    EXPECT_EQ(1, copy->arm.length);
    EXPECT_EQ(2, itsFriend->arm.length);
}

// The arm of the friend is written by itself: nobody knows yet whose it is.
TEST_F(fxGraphStreams, anObjectThatIsMetBeforeWhatEmbedsItIsOne) {
    Person person;
    Person other;
    Limb far;
    person.arm.twin = &other.arm;
    person.arms = &far;
    far.twin = &other.arm;
    other.arm.twin = &far;
    other.arm.length = 5;
    person.mother = &other;

    const auto copy = copied(person, Person_type);

    ASSERT_TRUE(copy);
    const std::unique_ptr<Person> mother(copy->mother);
    const std::unique_ptr<Limb> itsFar(copy->arms);
    ASSERT_TRUE(mother && itsFar);
    EXPECT_EQ(&mother->arm, copy->arm.twin);
    EXPECT_EQ(&mother->arm, itsFar->twin);
    EXPECT_EQ(itsFar.get(), mother->arm.twin);
    EXPECT_EQ(5, mother->arm.length);
}

TEST_F(fxGraphStreams, containersComeBackWithWhatIsInUse) {
    Household house;
    house.title = "";
    for (int i = 0; i < 100; ++i)
        house.numbers.append(&i);
    const double half = 0.5;
    house.ratios.append(&half);
    house.names.append("one");
    house.names.append("");
    house.names.append("three");
    house.phones.add("ada", "1815");
    house.phones.add("bob", "");
    house.keys.add("key");
    fxShortArray pages;
    const short page = 77;
    pages.append(&page);
    house.array = &pages;
    house.last = 99;

    const auto copy = copied(house, Household_type);

    ASSERT_TRUE(copy);
    EXPECT_STREQ("", copy->title.c_str());
    ASSERT_EQ(100u, copy->numbers.length());
    EXPECT_EQ(99, copy->numbers[99]);
    EXPECT_EQ(copy->numbers.getLen(), copy->numbers.getMaxLen());
    EXPECT_EQ(0.5, copy->ratios[0]);
    ASSERT_EQ(3u, copy->names.length());
    EXPECT_STREQ("three", copy->names[2].c_str());
    EXPECT_EQ(2u, copy->phones.length());
    EXPECT_STREQ("1815", copy->phones.find("ada")->c_str());
    EXPECT_TRUE(copy->keys.contains("key"));
    EXPECT_EQ(99, copy->last);
    ASSERT_NE(nullptr, copy->array);
    EXPECT_EQ(&fxShortArray_type, &copy->array->getTypeObj());
    EXPECT_EQ(77, (*static_cast<fxShortArray*>(copy->array))[0]);
    delete copy->array;
}
