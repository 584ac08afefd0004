// fxRegEngine_bench.cpp - searching with regular expressions.
//
// The realistic cases find one match at the end of a text that has none before.
// The hostile ones fail after everything has been tried; they stand beside the
// one peer that does not take exponential time or overflow its stack on them.

#include <re2/re2.h>
#include <regex.h>

#include <cstdio>
#include <cstdlib>
#include <regex>
#include <string>
#include <utility>

#include "bench/support/beside.h"
#include "bench/support/inputs.h"
#include "kelvofxds/pattern/fxRegEngine.h"

namespace {

// Where the whole match lies; -1 and -1 if there is none.
struct Span {
    long start = -1, end = -1;
};

bool same(const Span& a, const Span& b) { return a.start == b.start && a.end == b.end; }

[[noreturn]] void refuse(const char* implementation, const char* pattern) {
    std::fprintf(stderr, "%s does not compile %s\n", implementation, pattern);
    std::abort();
}

// A pattern compiled by everybody.
class Patterns {
public:
    explicit Patterns(const char* pattern)
        : own(fxregcomp(pattern)), standard(pattern), re2(pattern, re2::RE2::Latin1) {
        if (!own)
            refuse("kelvofxds", pattern);
        if (::regcomp(&posix, pattern, REG_EXTENDED) != 0)
            refuse("POSIX regcomp", pattern);
        if (!re2.ok())
            refuse("RE2", pattern);
    }
    Patterns(const Patterns&) = delete;
    Patterns& operator=(const Patterns&) = delete;
    ~Patterns() {
        ::regfree(&posix);
        std::free(own);
    }

    Span findOwn(const std::string& text) const {
        if (!fxregexec(own, text.c_str()))
            return Span();
        return {own->startp[0] - text.c_str(), own->endp[0] - text.c_str()};
    }

    Span findPosix(const std::string& text) const {
        regmatch_t match[fxregexp::groupCount];
        if (::regexec(&posix, text.c_str(), fxregexp::groupCount, match, 0) != 0)
            return Span();
        return {match[0].rm_so, match[0].rm_eo};
    }

    Span findStandard(const std::string& text) const {
        std::cmatch match;
        if (!std::regex_search(text.c_str(), text.c_str() + text.size(), match, standard))
            return Span();
        return {match.position(0), match.position(0) + match.length(0)};
    }

    // With as many groups as the others report.
    Span findRE2(const std::string& text) const {
        re2::StringPiece groups[fxregexp::groupCount];
        const int wanted = 1 + re2.NumberOfCapturingGroups();
        if (!re2.Match(text, 0, text.size(), re2::RE2::UNANCHORED, groups, wanted))
            return Span();
        const long start = groups[0].data() - text.data();
        return {start, start + static_cast<long>(groups[0].size())};
    }

private:
    fxregexp* own;
    regex_t posix;
    std::regex standard;
    re2::RE2 re2;
};

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
        Side{"RE2", [](const Input& in) { return in.patterns.findRE2(in.text); }});
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
};

const Hostile hostile[] = {
    {"(x+x+)+y", "x"},   {"(a|aa)*b", "a"}, {"(a|aa)*[b]", "a"}, {"(a|b)*c", "ab"},
    {"(a|b)*[c]", "ab"}, {".*.*.*x", "ab"}, {".*.*.*[x]", "ab"},
};

template <int which>
struct Failing {
    explicit Failing(unsigned int n) : patterns(hostile[which].pattern) {
        while (text.size() < n)
            text += hostile[which].unit;
    }
    Patterns patterns;
    std::string text;
};

void growing(benchmark::internal::Benchmark* b) {
    for (std::int64_t n = 1 << 16; n <= 1 << 20; n *= 2)
        b->Arg(n);
    b->Unit(benchmark::kMillisecond);
}

template <int which>
void hostileCase() {
    using Input = Failing<which>;
    beside<Input>(
        std::string("fxRegEngine/hostile ") + hostile[which].pattern, Rate::bytes, growing,
        [](const Input& in) { return in.patterns.findOwn(in.text); },
        Side{"RE2", [](const Input& in) { return in.patterns.findRE2(in.text); }});
}

template <int... all>
void hostileCases(std::integer_sequence<int, all...>) {
    (hostileCase<all>(), ...);
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
    compiling();
    return true;
}();

}  // namespace
