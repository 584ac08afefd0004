// fxStrArray_bench.cpp - sorting arrays of strings, beside std::sort.

#include <algorithm>
#include <string>
#include <vector>

#include "bench/support/beside.h"
#include "bench/support/inputs.h"
#include "kelvofxds/str/fxStrArray.h"

namespace {

enum class Order { random, ascending, descending };

void sortSizes(benchmark::internal::Benchmark* b) { b->Arg(1000)->Arg(10000)->Arg(100000); }

template <Order order>
struct Strings {
    explicit Strings(unsigned int n) : peer(distinctWords(n, 6, 20)) {
        if (order != Order::random)
            std::sort(peer.begin(), peer.end());
        if (order == Order::descending)
            std::reverse(peer.begin(), peer.end());
        ours.setMaxLength(n);
        for (const std::string& text : peer)
            ours.append(text.c_str());
    }
    std::vector<std::string> peer;
    fxStrArray ours;
};

// Both sides sort a copy, which is timed too.
template <Order order>
void sortingCase(const char* name) {
    using In = Strings<order>;
    beside<In>(
        name, Rate::items, sortSizes,
        [](const In& in) {
            fxStrArray array(in.ours);
            array.qsort();
            return array;
        },
        Side{"std::sort", [](const In& in) {
                 std::vector<std::string> array(in.peer);
                 std::sort(array.begin(), array.end());
                 return array;
             }});
}

const bool registered = [] {
    sortingCase<Order::random>("fxStrArray/sort random texts");
    sortingCase<Order::ascending>("fxStrArray/sort ascending texts");
    sortingCase<Order::descending>("fxStrArray/sort descending texts");
    return true;
}();

}  // namespace
