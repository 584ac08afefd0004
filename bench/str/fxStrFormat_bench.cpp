// fxStrFormat_bench.cpp - formatting, beside snprintf.

#include <cstdio>
#include <string>

#include "bench/support/beside.h"
#include "bench/support/inputs.h"
#include "kelvofxds/str/fxStr.h"

namespace {

// What a program does that has to give the text exactly the room it takes.
template <class... Arguments>
std::string printed(const char* format, Arguments... arguments) {
    const int length = std::snprintf(nullptr, 0, format, arguments...);
    std::string text(static_cast<std::size_t>(length), '\0');
    std::snprintf(&text[0], text.size() + 1, format, arguments...);
    return text;
}

// The other way: a buffer that is known to be large enough.
template <class... Arguments>
std::string printedBounded(const char* format, Arguments... arguments) {
    char text[128];
    const int length = std::snprintf(text, sizeof text, format, arguments...);
    return std::string(text, static_cast<std::size_t>(length));
}

// Values that the compiler cannot know.
struct Values {
    explicit Values(unsigned int n)
        : text(Random().letters(8)),
          negative(-12345 * static_cast<int>(n)),
          count(67890 * n),
          real(1234.5678 * n) {}
    std::string text;
    int negative;
    unsigned int count;
    double real;
};

const char mixed[] = "%s: %d of %u at %s";

void mixedCases() {
    beside<Values>(
        "fxStrFormat/format texts and numbers", Rate::items, single,
        [](const Values& in) {
            fxStr s;
            s.format(mixed, in.text.c_str(), in.negative, in.count, "the third place");
            return s;
        },
        Side{"snprintf twice",
             [](const Values& in) {
                 return printed(mixed, in.text.c_str(), in.negative, in.count, "the third place");
             }},
        Side{"snprintf to a buffer", [](const Values& in) {
                 return printedBounded(mixed, in.text.c_str(), in.negative, in.count,
                                       "the third place");
             }});
    beside<Text>(
        "fxStrFormat/format a text", Rate::bytes, sweep,
        [](const Text& in) {
            fxStr s;
            s.format("<%s>", in.peer.c_str());
            return s;
        },
        Side{"snprintf twice", [](const Text& in) { return printed("<%s>", in.peer.c_str()); }});
}

void numberCases() {
    beside<Values>(
        "fxStrFormat/int to text", Rate::items, single,
        [](const Values& in) { return fxStr(in.negative, nullptr); },
        Side{"snprintf to a buffer",
             [](const Values& in) { return printedBounded("%d", in.negative); }},
        Side{"std::to_string", [](const Values& in) { return std::to_string(in.negative); }});
    beside<Values>(
        "fxStrFormat/double to text", Rate::items, single,
        [](const Values& in) { return fxStr(in.real, nullptr); },
        Side{"snprintf to a buffer",
             [](const Values& in) { return printedBounded("%lg", in.real); }});
}

const bool registered = [] {
    mixedCases();
    numberCases();
    return true;
}();

}  // namespace
