#include "kelvofxds/lists/fxListsStd.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {
struct Job : fxLinkItem {
    explicit Job(int n) : number(n) {}
    int number;
};

std::vector<int> numbersOf(const GenericList& list) {
    std::vector<int> numbers;
    for (const int* item : fxItems<int>(list))
        numbers.push_back(*item);
    return numbers;
}
}  // namespace

TEST(fxListsStd, itemsOfAGenericListMayBeReadAndChanged) {
    int numbers[] = {1, 2, 3};
    GenericList list;
    EXPECT_TRUE(begin(list) == end(list));
    for (int& number : numbers)
        list.append(&number);
    for (void*& item : list) {
        if (item == &numbers[1])
            item = &numbers[0];
    }
    EXPECT_EQ((std::vector<int>{1, 1, 3}), numbersOf(list));
    EXPECT_TRUE(contains(list, &numbers[2]));
    EXPECT_FALSE(contains(list, &numbers[1]));
    EXPECT_EQ(3, std::distance(begin(list), end(list)));
}

TEST(fxListsStd, thePresentItemMayBeRemoved) {
    int numbers[] = {1, 2, 3, 4};
    GenericList list;
    for (int& number : numbers)
        list.append(&number);
    for (void* item : list) {
        if (*static_cast<int*>(item) % 2 == 0)
            list.remove(item);
    }
    EXPECT_EQ((std::vector<int>{1, 3}), numbersOf(list));
    for (void* item : list)
        list.remove(item);
    EXPECT_EQ(0, list.length());
}

TEST(fxListsStd, linksAreTheObjectsThemselves) {
    Job jobs[] = {Job(1), Job(2), Job(3)};
    fxIndexableList list;
    for (Job& job : jobs)
        list.append(&job);
    for (Job& job : fxItems<Job>(list))
        job.number *= 10;
    EXPECT_EQ(20, jobs[1].number);
    EXPECT_TRUE(contains(list, jobs[2]));
    for (fxLinkItem& link : list)
        list.unlink(&link);
    EXPECT_EQ(0, list.length());
    EXPECT_FALSE(contains(list, jobs[2]));
}

TEST(fxListsStd, linksBehindAStaleTailAreVisited) {
    Job jobs[] = {Job(1), Job(2), Job(3)};
    fxIndexableList list, other;
    list.append(&jobs[0]);
    other.append(&jobs[1]);
    other.append(&jobs[2]);
    list.appendListAt(0, &other);
    EXPECT_EQ(3, std::distance(begin(list), end(list)));
}

TEST(fxListsStd, everyEntryOfATableIsVisitedWithWhatTheCallKnows) {
    HashTable table;
    int values[100];
    for (unsigned long i = 0; i < 100; ++i)
        table.add(i, &values[i]);
    std::set<unsigned long> keys;
    fxForEach(table, [&](HashEntry& entry) {
        keys.insert(entry.key);
        if (entry.key % 2)
            table.remove(entry.key);
    });
    EXPECT_EQ(100U, keys.size());
    EXPECT_EQ(nullptr, table.lookup(1));
    EXPECT_EQ(&values[2], table.lookup(2));
}

TEST(fxListsStd, visitsOfTablesAreNested) {
    HashTable table;
    for (unsigned long i = 0; i < 7; ++i)
        table.add(i, nullptr);
    int pairs = 0, depth = 0;
    struct Visit {
        HashTable& table;
        int &pairs, &depth;
        void operator()(HashEntry&) const {
            ++pairs;
            if (depth == 0) {
                ++depth;
                fxForEach(table, *this);
                --depth;
            }
        }
    };
    fxForEach(table, Visit{table, pairs, depth});
    EXPECT_EQ(7 + 49, pairs);
}

TEST(fxListsStd, namesComeWithTheirAtomsInAscendingOrder) {
    NameSpace names(nullptr, 1);
    EXPECT_TRUE(begin(names) == end(names));
    names.makeAtom(7, "seven", 5, 1);
    names.makeAtom(3, "three", 5, 1);
    names.makeAtom(1000, "thousand", 8, 1);
    std::vector<std::pair<unsigned long, std::string>> seen;
    for (auto [atom, name] : names)
        seen.emplace_back(atom, name);
    EXPECT_EQ((std::vector<std::pair<unsigned long, std::string>>{
                  {3, "three"}, {7, "seven"}, {1000, "thousand"}}),
              seen);
}
