// fxSLinearPattern_bench.cpp - searching fixed bytes.

#include <cstring>
#include <functional>
#include <string>
#include <utility>

#include "bench/support/beside.h"
#include "bench/support/inputs.h"
#include "kelvofxds/pattern/fxSLinearPattern.h"

namespace {

using Searcher = std::boyer_moore_horspool_searcher<const char*>;

// A text and what is sought in it, with everything made that can be made before the search.
struct Search {
    Search(std::string t, std::string p)
        : text(std::move(t)),
          pattern(std::move(p)),
          ours(pattern.data(), static_cast<unsigned int>(pattern.size())),
          searcher(pattern.data(), pattern.data() + pattern.size()) {}
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    std::string text, pattern;
    fxSLinearPattern ours;
    Searcher searcher;
};

enum class Place { early, late, absent };

std::string placed(std::string text, const std::string& pattern, Place place) {
    const std::size_t room = text.size() - pattern.size();
    if (place != Place::absent)
        text.replace(place == Place::early ? room / 64 : room, pattern.size(), pattern);
    return text;
}

// Letters in a text of the same letters, except for one in the middle, so that it is there once at
// most.
template <unsigned int length, Place place>
struct Letters : Search {
    explicit Letters(unsigned int n)
        : Search(placed(Random().letters(n), sought(), place), sought()) {}

    static std::string sought() {
        std::string letters = Random().letters(2 * length).substr(length);
        letters[length / 2] = 'z';
        return letters;
    }
};

// A text in which every place looks like the pattern for a while.
template <unsigned int length, unsigned int odd>
struct Hostile : Search {
    explicit Hostile(unsigned int n) : Search(std::string(n, 'a'), sought()) {}

    static std::string sought() {
        std::string letters(length, 'a');
        letters[odd] = 'b';
        return letters;
    }
};

void textSizes(benchmark::internal::Benchmark* b) {
    b->RangeMultiplier(16)->Range(1 << 12, 1 << 20)->Complexity();
}

int offset(const Search& in, const void* found) {
    return found ? static_cast<int>(static_cast<const char*>(found) - in.text.data()) : -1;
}

template <class Input>
void searchCase(const std::string& name) {
    beside<Input>(
        "fxSLinearPattern/" + name, Rate::bytes, textSizes,
        [](const Input& in) {
            return in.ours.findBuffer(in.text.data(), static_cast<unsigned int>(in.text.size()));
        },
        Side{"memmem",
             [](const Input& in) {
                 return offset(in, ::memmem(in.text.data(), in.text.size(), in.pattern.data(),
                                            in.pattern.size()));
             }},
        Side{"std::boyer_moore_horspool_searcher", [](const Input& in) {
                 const char* end = in.text.data() + in.text.size();
                 const char* found = in.searcher(in.text.data(), end).first;
                 return found != end ? offset(in, found) : -1;
             }});
}

template <unsigned int length>
void lettersCases() {
    const std::string bytes = std::to_string(length) + " bytes ";
    searchCase<Letters<length, Place::early>>(bytes + "early");
    searchCase<Letters<length, Place::late>>(bytes + "late");
    searchCase<Letters<length, Place::absent>>(bytes + "absent");
}

const bool registered = [] {
    lettersCases<2>();
    lettersCases<4>();
    lettersCases<16>();
    lettersCases<64>();
    lettersCases<256>();
    lettersCases<1024>();
    searchCase<Hostile<20, 0>>("20 bytes odd first");
    searchCase<Hostile<20, 10>>("20 bytes odd in the middle");
    searchCase<Hostile<200, 0>>("200 bytes odd first");
    searchCase<Hostile<200, 100>>("200 bytes odd in the middle");
    return true;
}();

}  // namespace
