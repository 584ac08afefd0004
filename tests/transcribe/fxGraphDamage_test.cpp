// fxGraphDamage_test.cpp - graph streams that were cut short or changed.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/graphBytes.h"
#include "tests/support/graphs.h"

namespace {

// People who know each other, and pointers to their arms.
struct Town {
    explicit Town(unsigned int n) : people(n) {
        for (unsigned int i = 0; i < n; ++i) {
            Person& person = people[i];
            person.age = static_cast<int>(i);
            person.name = ("person " + std::to_string(i)).c_str();
            person.mother = &people[i / 2];
            person.friends[0] = &people[(i * 7 + 3) % n];
            person.friends[1] = i % 3 == 0 ? nullptr : &people[n - 1 - i];
            person.arms = &people[(i * 5 + 1) % n].arm;
            person.arm.twin = &people[(i + 1) % n].arm;
            if (i % 2 == 0)
                person.setShorts({1, 2, static_cast<short>(i)});
            person.setText("some text");
            person.setDoubles(i, 0.25);
        }
        for (int i = 0; i < 20; ++i)
            house.numbers.append(&i);
        house.names.append("a");
        house.names.append("name");
        house.phones.add("ada", "1815");
        house.phones.add("bob", "7");
        house.keys.add("k1");
        house.keys.add("k2");
        house.array = &pages;
        house.head = &people[0];
    }

    std::vector<Person> people;
    Household house;
    fxShortArray pages;
};

// Whatever it is, it fails with a reason and leaves nothing.
void expectFailure(const std::string& bytes, const Town& town) {
    const Held<> stream(static_cast<const void*>(bytes.data() + 25),
                        static_cast<unsigned int>(bytes.size()) - 25);
    fxGraphReader reader(stream.get(), 0x1122, 0x33445566, "ieee");
    EXPECT_EQ(nullptr, reader.readObject(Household_type));
    EXPECT_NE('\0', reader.lastError()[0]);
    EXPECT_EQ(static_cast<int>(town.people.size()), Person::living);
    EXPECT_EQ(1, Household::living);
}

}  // namespace

TEST(fxGraphDamage, noTruncatedStreamLoads) {
    Town town(12);
    const std::string bytes = graphStreamOf(town.house);
    for (std::size_t n = 25; n < bytes.size() && !HasFailure(); ++n) {
        SCOPED_TRACE(n);
        expectFailure(bytes.substr(0, n), town);
    }
}

TEST(fxGraphDamage, noChangedBitLoads) {
    Town town(6);
    std::string bytes = graphStreamOf(town.house);
    for (std::size_t n = 25; n < bytes.size() && !HasFailure(); ++n) {
        for (int bit = 0; bit < 8; ++bit) {
            SCOPED_TRACE(testing::Message() << "byte " << n << " bit " << bit);
            bytes[n] = static_cast<char>(bytes[n] ^ 1 << bit);
            expectFailure(bytes, town);
            bytes[n] = static_cast<char>(bytes[n] ^ 1 << bit);
        }
    }
}

// The checksum is made right again, so that nothing else is in the way.
TEST(fxGraphDamage, changedBytesWithARightChecksumDoNoHarm) {
    Town town(6);
    const std::string bytes = graphStreamOf(town.house);
    const std::string records = bytes.substr(25, bytes.size() - 30);
    const bool isBig = bytes[19] == 0x11;
    static auto* const loaded = new std::vector<void*>;  // what they lead to stays
    for (std::size_t n = 0; n < records.size() && !HasFailure(); ++n) {
        for (const int value : {0, 1, 4, 10, 12, 13, 15, 0x80, 0xFF}) {
            SCOPED_TRACE(testing::Message() << "byte " << n << " is " << value);
            std::string changed = records;
            changed[n] = static_cast<char>(value);
            GraphBytes b(isBig);
            b.raw(changed).end();
            const Held<> stream(static_cast<const void*>(b.str().data()),
                                static_cast<unsigned int>(b.str().size()));
            const auto reader = graphReaderOn(stream.get());
            std::unique_ptr<Household> house(
                static_cast<Household*>(reader->readObject(Household_type)));
            if (house) {
                loaded->push_back(house->head);
                loaded->push_back(house->array);
                continue;
            }
            EXPECT_NE('\0', reader->lastError()[0]);
        }
    }
    EXPECT_LT(0u, loaded->size());
    Person::living = Limb::living = static_cast<int>(town.people.size());
    Household::living = 1;
}
