// fxArray_bench.cpp - the growable arrays, beside std::vector.

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include "bench/support/beside.h"
#include "bench/support/inputs.h"
#include "kelvofxds/containers/fxTypedArrays.h"

namespace {

// `n` random elements in both forms, and a last one that occurs once.
template <class Array, class Element>
struct Elements {
    explicit Elements(unsigned int n) : ours(n), peer(n) {
        Random random;
        for (Element& element : peer)
            element = static_cast<Element>(random.below(100));
        peer.back() = sought;
        std::copy(peer.begin(), peer.end(), &ours[0]);
    }

    const Element sought = 101;
    Array ours;
    std::vector<Element> peer;
};

using Ints = Elements<fxIntArray, int>;

void sortSizes(benchmark::internal::Benchmark* b) {
    b->Arg(1000)->Arg(10000)->Arg(65536)->Arg(1000000);
}

void appendingCases() {
    beside<Ints>(
        "fxArray/append ints", Rate::items, sweep,
        [](const Ints& in) {
            fxIntArray array;
            for (int value : in.peer)
                array.append(&value);
            return array;
        },
        Side{"std::vector", [](const Ints& in) {
                 std::vector<int> array;
                 for (int value : in.peer)
                     array.push_back(value);
                 return array;
             }});
    beside<Ints>(
        "fxArray/append ints within the capacity", Rate::items, sweep,
        [](const Ints& in) {
            fxIntArray array;
            array.setMaxLength(in.ours.length());
            for (int value : in.peer)
                array.append(&value);
            return array;
        },
        Side{"std::vector", [](const Ints& in) {
                 std::vector<int> array;
                 array.reserve(in.peer.size());
                 for (int value : in.peer)
                     array.push_back(value);
                 return array;
             }});
    beside<Ints>(
        "fxArray/append an array to itself", Rate::items, sweep,
        [](const Ints& in) {
            fxIntArray array(in.ours);
            array.append(array);
            return array;
        },
        Side{"std::vector", [](const Ints& in) {
                 std::vector<int> array(in.peer);
                 array.resize(in.peer.size() * 2);
                 std::copy(in.peer.begin(), in.peer.end(), array.begin() + long(in.peer.size()));
                 return array;
             }});
}

void insertingCases() {
    beside<Ints>(
        "fxArray/insert ints at the front", Rate::items, shortSweep,
        [](const Ints& in) {
            fxIntArray array;
            for (int value : in.peer)
                array.insert(&value, 0);
            return array;
        },
        Side{"std::vector", [](const Ints& in) {
                 std::vector<int> array;
                 for (int value : in.peer)
                     array.insert(array.begin(), value);
                 return array;
             }});
    beside<Ints>(
        "fxArray/insert and remove in the middle", Rate::items, sweep,
        [](Ints& in) {
            const unsigned int middle = in.ours.length() / 2;
            in.ours.insert(&in.sought, middle);
            in.ours.remove(middle, 1);
            return in.ours.length();
        },
        Side{"std::vector", [](Ints& in) {
                 const long middle = static_cast<long>(in.peer.size() / 2);
                 in.peer.insert(in.peer.begin() + middle, in.sought);
                 in.peer.erase(in.peer.begin() + middle);
                 return in.peer.size();
             }});
}

template <class Array, class Element>
void findingCase(const char* name) {
    using In = Elements<Array, Element>;
    beside<In>(
        name, Rate::items, sweep, [](const In& in) { return in.ours.find(&in.sought); },
        Side{"std::find", [](const In& in) {
                 return std::find(in.peer.begin(), in.peer.end(), in.sought) - in.peer.begin();
             }});
}

void findingCases() {
    findingCase<fxCharArray, char>("fxArray/find a char");
    findingCase<fxShortArray, short>("fxArray/find a short");
    findingCase<fxIntArray, int>("fxArray/find an int");
    findingCase<fxDoubleArray, double>("fxArray/find a double");
}

void wholeArrayCases() {
    beside<Ints>(
        "fxArray/copy", Rate::items, sweep, [](const Ints& in) { return fxIntArray(in.ours); },
        Side{"std::vector", [](const Ints& in) { return std::vector<int>(in.peer); }});
    beside<Ints>(
        "fxArray/extract the middle", Rate::items, sweep,
        [](const Ints& in) {
            const unsigned int n = in.ours.length();
            return in.ours.extract(n / 4, n / 2);
        },
        Side{"std::vector", [](const Ints& in) {
                 const long n = static_cast<long>(in.peer.size());
                 const auto start = in.peer.begin() + n / 4;
                 return std::vector<int>(start, start + n / 2);
             }});
    beside<Ints>(
        "fxArray/sum by index", Rate::items, sweep,
        [](const Ints& in) {
            int sum = 0;
            for (unsigned int i = 0; i < in.ours.length(); ++i)
                sum += in.ours[i];
            return sum;
        },
        Side{"std::vector", [](const Ints& in) {
                 int sum = 0;
                 for (unsigned int i = 0; i < in.peer.size(); ++i)
                     sum += in.peer[i];
                 return sum;
             }});
    beside<Ints>(
        "fxArray/reverse by swaps", Rate::items, sweep,
        [](Ints& in) {
            const unsigned int n = in.ours.length();
            for (unsigned int i = 0; i < n / 2; ++i)
                in.ours.swap(i, n - 1 - i);
            return in.ours[n / 2];
        },
        Side{"std::vector", [](Ints& in) {
                 const unsigned int n = static_cast<unsigned int>(in.peer.size());
                 for (unsigned int i = 0; i < n / 2; ++i)
                     std::swap(in.peer[i], in.peer[n - 1 - i]);
                 return in.peer[n / 2];
             }});
}

// Ints in several orders, and one array that each side sorts afresh.
enum class Order { random, ascending, descending, fewValues };

template <Order order>
struct Unsorted {
    explicit Unsorted(unsigned int n) : ours(n), peer(n) {
        Random random;
        for (unsigned int i = 0; i < n; ++i) {
            const unsigned int value = order == Order::ascending    ? i
                                       : order == Order::descending ? n - i
                                                                    : random.below(0xFFFFFFFFU);
            peer[i] = static_cast<int>(order == Order::fewValues ? value % 10 : value);
        }
        std::copy(peer.begin(), peer.end(), &ours[0]);
    }

    fxIntArray ours;
    std::vector<int> peer;
};

// The library's sort overwrites elements and orders by bytes, so that the sides
// have only the number of elements in common.
template <Order order>
void sortingCase(const char* name) {
    using In = Unsorted<order>;
    beside<In>(
        name, Rate::items, sortSizes,
        [](const In& in) {
            fxIntArray array(in.ours);
            array.qsort();
            return array.length();
        },
        Side{"std::sort", [](const In& in) {
                 std::vector<int> array(in.peer);
                 std::sort(array.begin(), array.end());
                 return array.size();
             }});
}

void sortingCases() {
    sortingCase<Order::random>("fxArray/sort random ints");
    sortingCase<Order::ascending>("fxArray/sort ascending ints");
    sortingCase<Order::descending>("fxArray/sort descending ints");
    sortingCase<Order::fewValues>("fxArray/sort ints of few values");
}

const bool registered = [] {
    sortingCases();
    appendingCases();
    insertingCases();
    findingCases();
    wholeArrayCases();
    return true;
}();

}  // namespace
