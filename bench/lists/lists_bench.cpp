// lists_bench.cpp - lists by position, beside std::list and, as the limit, std::vector.

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <list>
#include <string>
#include <vector>

#include "bench/support/beside.h"
#include "bench/support/inputs.h"
#include "kelvofxds/lists/GenericList.h"
#include "kelvofxds/lists/fxIndexableList.h"

namespace {

struct Item : fxLinkItem {
    unsigned int number = 0;
};

// The same `n` items in every list, in the same order, and positions to ask for.
struct Lists {
    explicit Lists(unsigned int n) : items(n), positions(n) {
        Random random;
        for (unsigned int i = 0; i < n; ++i) {
            items[i].number = random.below(1000);
            positions[i] = random.below(n);
            generic.append(&items[i]);
            indexable.append(&items[i]);
            list.push_back(&items[i]);
            vector.push_back(&items[i]);
        }
        near.push_back(static_cast<int>(n / 2));
        while (near.size() < n) {
            const int next = near.back() + static_cast<int>(random.below(17)) - 8;
            near.push_back(next < 0 || next >= static_cast<int>(n) ? near.back() : next);
        }
    }

    std::vector<Item> items;
    std::vector<unsigned int> positions;
    std::vector<int> near;  // each within 8 of the one before
    GenericList generic;
    fxIndexableList indexable;
    std::list<Item*> list;
    std::vector<Item*> vector;
};

unsigned int numberAt(const GenericList& list, std::size_t i) {
    return static_cast<const Item*>(list.findItem(static_cast<long>(i)))->number;
}
unsigned int numberAt(fxIndexableList& list, std::size_t i) {
    return static_cast<const Item*>(list.findLink(static_cast<long>(i)))->number;
}
unsigned int numberAt(const std::list<Item*>& list, std::size_t i) {
    return (*std::next(list.begin(), static_cast<std::ptrdiff_t>(i)))->number;
}
unsigned int numberAt(const std::vector<Item*>& vector, std::size_t i) { return vector[i]->number; }

/// A sum that tells the order of what is added.
class Checksum {
public:
    void add(unsigned int number) { sum = sum * 31 + number; }
    std::int64_t result() const { return sum; }

private:
    std::uint32_t sum = 0;
};

template <class List>
std::int64_t ascending(List& list, const Lists& in) {
    Checksum sum;
    for (std::size_t i = 0; i < in.items.size(); ++i)
        sum.add(numberAt(list, i));
    return sum.result();
}

template <class List>
std::int64_t descending(List& list, const Lists& in) {
    Checksum sum;
    for (std::size_t i = in.items.size(); i > 0; --i)
        sum.add(numberAt(list, i - 1));
    return sum.result();
}

template <class List, class Positions>
std::int64_t inOrder(List& list, const Positions& positions) {
    Checksum sum;
    for (const auto i : positions)
        sum.add(numberAt(list, static_cast<std::size_t>(i)));
    return sum.result();
}

// What walks from an end takes time proportional to the square of the size.
void upTo4096(benchmark::internal::Benchmark* b) {
    b->RangeMultiplier(8)->Range(8, 1 << 12)->Complexity();
}

/// One kind of access to all four lists.
template <class Access>
void accessCases(const std::string& kind, Sizes sizes, Access access) {
    beside<Lists>(
        "GenericList/" + kind, Rate::items, sizes,
        [=](Lists& in) { return access(in.generic, in); },
        Side{"std::list", [=](Lists& in) { return access(in.list, in); }},
        Side{"std::vector", [=](Lists& in) { return access(in.vector, in); }});
    beside<Lists>(
        "fxIndexableList/" + kind, Rate::items, sizes,
        [=](Lists& in) { return access(in.indexable, in); },
        Side{"std::list", [=](Lists& in) { return access(in.list, in); }},
        Side{"std::vector", [=](Lists& in) { return access(in.vector, in); }});
}

// A size that std::list, which has to start at its beginning, is left out of.
void large(benchmark::internal::Benchmark* b) { b->Arg(1 << 16); }

void sequentialCases() {
    beside<Lists>(
        "GenericList/ascending, large", Rate::items, large,
        [](Lists& in) { return ascending(in.generic, in); },
        Side{"std::vector", [](Lists& in) { return ascending(in.vector, in); }});
    beside<Lists>(
        "fxIndexableList/ascending, large", Rate::items, large,
        [](Lists& in) { return ascending(in.indexable, in); },
        Side{"std::vector", [](Lists& in) { return ascending(in.vector, in); }});
}

// Appending n items, then removing them from the front, nodes included.
void changeCases() {
    beside<Lists>(
        "GenericList/append and remove", Rate::items, sweep,
        [](const Lists& in) {
            GenericList list;
            for (const Item& item : in.items)
                list.append(const_cast<Item*>(&item));
            Checksum sum;
            while (list.length())
                sum.add(static_cast<const Item*>(list.remove(0L))->number);
            return sum.result();
        },
        Side{"std::list", [](const Lists& in) {
                 std::list<const Item*> list;
                 for (const Item& item : in.items)
                     list.push_back(&item);
                 Checksum sum;
                 while (!list.empty()) {
                     sum.add(list.front()->number);
                     list.pop_front();
                 }
                 return sum.result();
             }});
}

// Every new item goes to the middle.
void insertCases() {
    beside<Lists>(
        "fxIndexableList/insert in the middle", Rate::items, sweep,
        [](Lists& in) {
            std::vector<Item> items(in.items.size());
            fxIndexableList list;
            for (std::size_t i = 0; i < items.size(); ++i) {
                items[i].number = in.items[i].number;
                list.insertAt(list.length() / 2, &items[i]);
            }
            Checksum sum;
            for (const fxLinkItem* link = list.first(); link; link = link->next)
                sum.add(static_cast<const Item*>(link)->number);
            return sum.result();
        },
        Side{"std::vector", [](Lists& in) {
                 std::vector<Item> items(in.items.size());
                 std::vector<const Item*> vector;
                 for (std::size_t i = 0; i < items.size(); ++i) {
                     items[i].number = in.items[i].number;
                     vector.insert(vector.begin() + static_cast<std::ptrdiff_t>(i / 2), &items[i]);
                 }
                 Checksum sum;
                 for (const Item* item : vector)
                     sum.add(item->number);
                 return sum.result();
             }});
}

const bool registered = [] {
    accessCases("ascending", upTo4096, [](auto& list, Lists& in) { return ascending(list, in); });
    accessCases("descending", upTo4096, [](auto& list, Lists& in) { return descending(list, in); });
    accessCases("nearby", upTo4096, [](auto& list, Lists& in) { return inOrder(list, in.near); });
    accessCases("random", upTo4096,
                [](auto& list, Lists& in) { return inOrder(list, in.positions); });
    sequentialCases();
    changeCases();
    insertCases();
    return true;
}();

}  // namespace
