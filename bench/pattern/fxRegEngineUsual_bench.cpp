// fxRegEngineUsual_bench.cpp - usual expressions over the lines of a log, each
// line by itself, and over the whole of it, match after match. What goes to the
// end of the subject is for lines alone: how far that is, only the engine has to
// find out.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "bench/support/beside.h"
#include "bench/support/inputs.h"
#include "bench/support/patterns.h"

namespace {

struct Usual {
    const char* name;
    const char* pattern;
    const char* perl;  // the same in the words of the peers, or null
};

const Usual usual[] = {
    {"identifier", "[A-Za-z_][A-Za-z0-9_]*", nullptr},
    {"number", "-?[0-9]+(\\.[0-9]+)?", nullptr},
    {"date", "[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9]", nullptr},
    {"ip address", "[0-9]+\\.[0-9]+\\.[0-9]+\\.[0-9]+", nullptr},
    {"e-mail", "[A-Za-z0-9._-]+@[A-Za-z0-9-]+(\\.[A-Za-z0-9-]+)+", nullptr},
    {"url", "https?://[A-Za-z0-9.-]+(:[0-9]+)?(/[^ ]*)?", nullptr},
    {"quoted text", "\"([^\"]*)\"", nullptr},
    {"key and value", "([a-z_]+)=([^ ;]+)", nullptr},
    {"words", "(error|warning|failed|timeout)", nullptr},
    {"whole word", "\\<user\\>", "\\buser\\b"},
    {"anchored line", "^[0-9-]+ [0-9:]+ ([A-Z]+) ([a-z]+): .*$", nullptr},
    {"trailing text", "status ([0-9]+).*$", nullptr},
};

const int usualInText = 10;

// Lines of eight kinds with numbers in them.
std::string logLine(Random& random) {
    const std::string a = std::to_string(random.below(1000)), b = std::to_string(random.below(60));
    std::string line = "2024-06-1" + std::to_string(random.below(10)) + " 12:01:" + b;
    switch (random.below(8)) {
        case 0:
            return line + " INFO server: listening on 10.0." + b + ".1 port " + a;
        case 1:
            return line + " WARN auth: user \"jane." + a + "\" failed to log in";
        case 2:
            return line + " INFO mail: sent to jane.doe" + a + "@mail.example.co.uk in " + b + " s";
        case 3:
            return line + " DEBUG cache: size=" + a + " limit=4096; mode=lru";
        case 4:
            return line + " INFO http: GET https://www.example.org:8080/a/" + a + " status 200";
        case 5:
            return line + " ERROR disk: error while writing block " + a + ", timeout of " + b +
                   ".5";
        case 6:
            return line + " INFO worker: nothing to do, so the worker goes to sleep for a while";
        default:
            return "    at the place where the last request had been left by its handler " + a;
    }
}

template <int which>
struct Lines {
    explicit Lines(unsigned int n) : patterns(usual[which].pattern, usual[which].perl) {
        Random random;
        for (unsigned int i = 0; i < n; ++i)
            lines.push_back(logLine(random));
    }
    Patterns patterns;
    std::vector<std::string> lines;
};

// A number in which every match counts, with its place.
std::uint32_t noted(std::uint32_t sum, const Span& match) {
    return sum * 31 + static_cast<std::uint32_t>(match.start) * 7 +
           static_cast<std::uint32_t>(match.end);
}

template <int which, Span (Patterns::*find)(const std::string&, std::size_t) const>
std::int64_t inLines(const Lines<which>& in) {
    std::uint32_t sum = 0;
    for (const std::string& line : in.lines)
        sum = noted(sum, (in.patterns.*find)(line, 0));
    return sum;
}

template <int which>
struct Whole {
    explicit Whole(unsigned int n) : patterns(usual[which].pattern, usual[which].perl) {
        Random random;
        while (text.size() < n)
            text += logLine(random) + "\n";
    }
    Patterns patterns;
    std::string text;
};

template <int which, Span (Patterns::*find)(const std::string&, std::size_t) const>
std::int64_t inWhole(const Whole<which>& in) {
    std::uint32_t sum = 0;
    Span match;
    for (std::size_t from = 0; from < in.text.size(); from = static_cast<std::size_t>(match.end)) {
        match = (in.patterns.*find)(in.text, from);
        sum = noted(sum, match);
        if (match.end <= match.start)
            break;
    }
    return sum;
}

template <int which>
void usualCase() {
    const std::string name = std::string("fxRegEngine/usual ") + usual[which].name;
    beside<Lines<which>>(
        name + ", lines", Rate::items, [](benchmark::internal::Benchmark* b) { b->Arg(200); },
        inLines<which, &Patterns::findOwn>, Side{"PCRE2", inLines<which, &Patterns::findPCRE2>},
        Side{"RE2", inLines<which, &Patterns::findRE2>});
    if constexpr (which < usualInText)
        beside<Whole<which>>(
            name + ", text", Rate::bytes,
            [](benchmark::internal::Benchmark* b) { b->Arg(1 << 16); },
            inWhole<which, &Patterns::findOwn>, Side{"PCRE2", inWhole<which, &Patterns::findPCRE2>},
            Side{"RE2", inWhole<which, &Patterns::findRE2>});
}

template <int... all>
void usualCases(std::integer_sequence<int, all...>) {
    (usualCase<all>(), ...);
}

const bool registered = [] {
    usualCases(std::make_integer_sequence<int, sizeof usual / sizeof *usual>());
    return true;
}();

}  // namespace
