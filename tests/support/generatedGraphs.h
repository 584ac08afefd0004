// generatedGraphs.h - graphs of every shape, made from a seed.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/support/graphs.h"

/// Persons who know each other in a shape that the seed decides: chains, trees, dags,
/// circles, with shared and missing parts. All hang together: everybody is found from
/// the first by mothers.
class GeneratedTown {
public:
    GeneratedTown(unsigned int n, unsigned int seed) : random(seed), people(n) {
        const unsigned int shape = seed % 4;
        for (unsigned int i = 0; i < n; ++i) {
            people[i] = std::make_unique<Person>();
            fill(*people[i], i);
        }
        for (unsigned int i = 0; i < n; ++i) {
            Person& person = *people[i];
            // The next one, so that all are found, or a circle in the end.
            person.mother = i + 1 < n    ? people[i + 1].get()
                            : shape == 0 ? people[0].get()
                                         : nullptr;
            person.friends[0] = shape == 1 ? (2 * i + 2 < n ? people[2 * i + 2].get() : nullptr)
                                           : people[below(n)].get();
            person.friends[1] =
                shape == 2 ? (i != 0 ? people[below(i)].get() : nullptr) : people[below(n)].get();
            if (below(3) == 0)
                person.arms = &people[below(n)]->arm;
            if (below(3) == 0)
                person.arm.twin = &people[below(n)]->arm;
        }
    }

    Person& root() { return *people[0]; }
    unsigned int size() const { return static_cast<unsigned int>(people.size()); }
    const Person& person(unsigned int i) const { return *people[i]; }

private:
    unsigned int below(unsigned int n) { return static_cast<unsigned int>(random() % n); }

    void fill(Person& person, unsigned int i) {
        person.age = static_cast<int>(random());
        person.name = std::string(below(20), static_cast<char>('a' + i % 26)).c_str();
        person.arm.length = static_cast<int>(i);
        std::vector<short> shorts(below(5));
        for (short& value : shorts)
            value = static_cast<short>(random());
        if (!shorts.empty())
            person.setShorts(shorts);
        if (below(2) == 0)
            person.setDoubles(i / 7.0, -1e300 / (i + 1));
        if (below(2) == 0)
            person.setText(("text " + std::to_string(i)).c_str());
        person.weight = static_cast<float>(i) / 3;
        person.height = i / 3.0;
        person.initial = static_cast<char>(i);
        person.year = static_cast<short>(i);
    }

    std::mt19937 random;
    std::vector<std::unique_ptr<Person>> people;
};

/// What was read of such a town, in its order; it owns the persons.
class ReadTown {
public:
    explicit ReadTown(Person* first) {
        for (Person* person = first; person && !(person == first && !people.empty());
             person = person->mother)
            people.emplace_back(person);
    }

    /// "" if it is the same, node by node; else what differs first.
    std::string differenceTo(const GeneratedTown& town) const {
        if (people.size() != town.size())
            return "the number of persons";
        std::map<const void*, unsigned int> ours;
        std::map<const void*, unsigned int> theirs;
        for (unsigned int i = 0; i < town.size(); ++i) {
            number(ours, *people[i], i);
            number(theirs, town.person(i), i);
        }
        for (unsigned int i = 0; i < town.size(); ++i) {
            if (!areSame(*people[i], town.person(i)) ||
                places(ours, *people[i]) != places(theirs, town.person(i)))
                return "person " + std::to_string(i);
        }
        return "";
    }

private:
    static void number(std::map<const void*, unsigned int>& numbers, const Person& person,
                       unsigned int i) {
        numbers[&person] = 2 * i + 1;
        numbers[&person.arm] = 2 * i + 2;
    }

    // Where the pointers lead to.
    static std::vector<unsigned int> places(std::map<const void*, unsigned int>& numbers,
                                            const Person& person) {
        std::vector<unsigned int> found;
        for (const void* target :
             {static_cast<const void*>(person.mother), static_cast<const void*>(person.friends[0]),
              static_cast<const void*>(person.friends[1]), static_cast<const void*>(person.arms),
              static_cast<const void*>(person.arm.twin)})
            found.push_back(target ? numbers.at(target) : 0);
        return found;
    }

    static bool areSame(const Person& a, const Person& b) {
        return a.age == b.age && a.name == b.name && a.arm.length == b.arm.length &&
               a.count == b.count &&
               (a.count == 0 || std::memcmp(a.shorts, b.shorts, a.count * sizeof(short)) == 0) &&
               (a.doubles != nullptr) == (b.doubles != nullptr) &&
               (!a.doubles || std::memcmp(a.doubles, b.doubles, 2 * sizeof(double)) == 0) &&
               (a.text != nullptr) == (b.text != nullptr) &&
               (!a.text || std::strcmp(a.text, b.text) == 0) && a.weight == b.weight &&
               a.height == b.height && a.initial == b.initial && a.year == b.year;
    }

    std::vector<std::unique_ptr<Person>> people;
};
