// fxRegEngine_bench.cpp - searching with regular expressions.
//
// The realistic cases find one match at the end of a text that has none before.
// The hostile ones fail after everything has been tried; they stand beside the
// one peer that does not take exponential time or overflow its stack on them.

#include <cstdlib>
#include <string>
#include <utility>

#include "bench/support/beside.h"
#include "bench/support/inputs.h"
#include "bench/support/patterns.h"
#include "kelvofxds/pattern/fxRegEngine.h"

namespace {

// Realistic cases.

struct Case {
    const char* name;
    const char* pattern;
    const char* filler;  // repeated; holds no match, also across its ends
    const char* match;   // at the end
};

const Case cases[] = {
    {"e-mail", "[A-Za-z0-9._]+@[A-Za-z0-9]+\\.[A-Za-z.]+",
     "please write to us, or call; we are here from nine to five. ", "jane.doe@example.co.uk"},
    {"date", "[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9]", "build 1442 took 17 s, 3 of 12 left; ",
     "2024-06-11"},
    {"identifier", "[A-Za-z_][A-Za-z0-9_]*", "12 + (34 * 5) - 6 / 78; { } 9, ", "line_count2"},
    {"quoted string", "\"[^\"]*\"", "the quick brown fox jumps over the lazy dog; ",
     "\"a quoted string\""},
    {"log line", "(ERROR|FATAL): ([a-z]+) .*$", "12:01:44 INFO: server listens; DEBUG: ok; ",
     "12:01:45 ERROR: disk is full"},
    {"key and value", "([a-z_]+)=([^ ;]*)", "some words without any setting; and more of them, ",
     "max_size=4096;"},
    {"url", "https?://[A-Za-z0-9.]+(/[^ ]*)?", "the home page has hints on how to set this up. ",
     "https://www.example.org/a/page.html"},
    {"path", "(/[a-z0-9_.]+)+", "no separator in these words, nor in the next ones. ",
     "/usr/share/doc/readme.txt"},
    {"number", "-?[0-9]+\\.[0-9]+", "row 12 has 7 columns, 340 in all, - or none; ", "-273.15"},
    {"word list", "(apple|banana|cherry|grape)", "a basket of apricots, bananes, pears and plums, ",
     "cherry"},
    {"comment", "/\\*[^*]*\\*/", "x = y * 2 / z; if (a < b) return c; ", "/* why this is */"},
    {"csv field", ",(\"[^\"]*\"|[^,;]*),", "one; two three; four five; six; ", ",\"7,8\",nine"},
};

template <int which>
struct Realistic {
    explicit Realistic(unsigned int n) : patterns(cases[which].pattern) {
        const std::string match = cases[which].match;
        while (text.size() + match.size() < n)
            text += cases[which].filler;
        text.resize(n - match.size());
        text.back() = ' ';  // no letter right before the match
        text += match;
    }
    Patterns patterns;
    std::string text;
};

void realisticSizes(benchmark::internal::Benchmark* b) {
    b->Arg(64)->Arg(2048)->Arg(65536)->Complexity();
}

template <int which>
void realisticCase() {
    using Input = Realistic<which>;
    beside<Input>(
        std::string("fxRegEngine/") + cases[which].name, Rate::bytes, realisticSizes,
        [](const Input& in) { return in.patterns.findOwn(in.text); },
        Side{"regexec", [](const Input& in) { return in.patterns.findPosix(in.text); }},
        Side{"std::regex", [](const Input& in) { return in.patterns.findStandard(in.text); }},
        Side{"RE2", [](const Input& in) { return in.patterns.findRE2(in.text); }},
        Side{"PCRE2", [](const Input& in) { return in.patterns.findPCRE2(in.text); }});
}

template <int... all>
void realisticCases(std::integer_sequence<int, all...>) {
    (realisticCase<all>(), ...);
}

// Hostile cases. Where the pattern ends in a literal that the subject does not
// have, the engine sees this before it tries; a class in its place hides it.

struct Hostile {
    const char* pattern;
    const char* unit;  // of which the subject consists
    const char* tail;  // and what it ends in
};

const Hostile hostile[] = {
    {"(x+x+)+y", "x", ""},      {"(x+x+)+[y]", "x", ""},      {"(a|aa)*b", "a", ""},
    {"(a|aa)*[b]", "a", ""},    {"(a|b)*c", "ab", ""},        {"(a|b)*[c]", "ab", ""},
    {".*.*.*x", "ab", ""},      {".*.*.*[x]", "ab", ""},      {"((a+)+)+$", "a", "b"},
    {"(a|b|ab)*[c]", "ab", ""}, {"([a-z]+)*[0-9]", "ab", ""}, {"^(([a-z]+)+)+[c]$", "a", "!"},
};

template <int which>
struct Failing {
    explicit Failing(unsigned int n) : patterns(hostile[which].pattern) {
        while (text.size() < n)
            text += hostile[which].unit;
        text += hostile[which].tail;
    }
    Patterns patterns;
    std::string text;
};

// Where attempts double with every byte, and where they have to be cut short.
void shortAndGrowing(benchmark::internal::Benchmark* b) {
    b->Arg(20)->Arg(30)->Arg(1000)->Arg(1 << 14)->Arg(1 << 17)->Arg(1 << 20);
}

template <int which>
void hostileCase() {
    using Input = Failing<which>;
    beside<Input>(
        std::string("fxRegEngine/hostile ") + hostile[which].pattern, Rate::bytes, shortAndGrowing,
        [](const Input& in) { return in.patterns.findOwn(in.text); },
        Side{"RE2", [](const Input& in) { return in.patterns.findRE2(in.text); }});
}

template <int... all>
void hostileCases(std::integer_sequence<int, all...>) {
    (hostileCase<all>(), ...);
}

// Alternatives, in a text of words that often begin like one of them.

struct Words {
    explicit Words(unsigned int n) : patterns("(needle|haystack|thread)") {
        const char* const words[] = {"the ",    "farmer ", "needs ", "his ",   "hay ",   "and ",
                                     "then ",   "three ",  "new ",   "red ",   "hats ",  "now ",
                                     "where ",  "cattle ", "graze ", "all ",   "day ",   "in ",
                                     "summer ", "under ",  "old ",   "apple ", "trees ", "of "};
        Random random;
        while (text.size() < n)
            text += words[random.below(sizeof words / sizeof *words)];
        text += "haystack";
    }
    Patterns patterns;
    std::string text;
};

void alternatives() {
    beside<Words>(
        "fxRegEngine/three alternatives", Rate::bytes,
        [](benchmark::internal::Benchmark* b) { b->Arg(100)->Arg(1 << 14)->Arg(1 << 20); },
        [](const Words& in) { return in.patterns.findOwn(in.text); },
        Side{"RE2", [](const Words& in) { return in.patterns.findRE2(in.text); }},
        Side{"PCRE2", [](const Words& in) { return in.patterns.findPCRE2(in.text); }});
}

// Compiling.

struct Source {
    explicit Source(unsigned int) {}
};

const char compiledPattern[] = "([A-Za-z0-9._]+)@([A-Za-z0-9]+\\.)+([a-z][a-z]+|[0-9]*)";

void compiling() {
    beside<Source>(
        "fxRegEngine/compile", Rate::items, single,
        [](const Source&) {
            fxregexp* const program = fxregcomp(compiledPattern);
            const bool done = program != nullptr;
            std::free(program);
            return static_cast<std::int64_t>(done);
        },
        Side{"regcomp",
             [](const Source&) {
                 regex_t program;
                 const bool done = ::regcomp(&program, compiledPattern, REG_EXTENDED) == 0;
                 if (done)
                     ::regfree(&program);
                 return static_cast<std::int64_t>(done);
             }},
        Side{"std::regex",
             [](const Source&) {
                 const std::regex program(compiledPattern);
                 return static_cast<std::int64_t>(program.mark_count() == 3);
             }},
        Side{"RE2", [](const Source&) {
                 const re2::RE2 program(compiledPattern, re2::RE2::Latin1);
                 return static_cast<std::int64_t>(program.ok());
             }});
}

const bool registered = [] {
    realisticCases(std::make_integer_sequence<int, sizeof cases / sizeof *cases>());
    hostileCases(std::make_integer_sequence<int, sizeof hostile / sizeof *hostile>());
    alternatives();
    compiling();
    return true;
}();

}  // namespace
