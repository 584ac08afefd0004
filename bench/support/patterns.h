// patterns.h - a pattern as the library and its peers compile it.
#pragma once

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>
#include <re2/re2.h>
#include <regex.h>

#include <cstdio>
#include <cstdlib>
#include <regex>
#include <string>

#include "kelvofxds/pattern/fxRegEngine.h"

/// Where a whole match lies; -1 and -1 if there is none.
struct Span {
    long start = -1, end = -1;
};

inline bool same(const Span& a, const Span& b) { return a.start == b.start && a.end == b.end; }

/// A pattern compiled by everybody. Each search begins at an offset of a text
/// that it takes for the start of its subject, and reports all groups.
class Patterns {
public:
    /// `perl` is the same pattern in the words of RE2, PCRE2 and std::regex.
    explicit Patterns(const char* pattern, const char* perl = nullptr)
        : own(fxregcomp(pattern)),
          standard(perl ? perl : pattern),
          re2(perl ? perl : pattern, re2Options()) {
        int error;
        PCRE2_SIZE place;
        pcre = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(perl ? perl : pattern),
                             PCRE2_ZERO_TERMINATED, PCRE2_DOTALL, &error, &place, nullptr);
        if (!own || !pcre || !re2.ok() || ::regcomp(&posix, pattern, REG_EXTENDED) != 0) {
            std::fprintf(stderr, "not everybody compiles %s\n", pattern);
            std::abort();
        }
        pcreMatch = pcre2_match_data_create_from_pattern(pcre, nullptr);
    }
    Patterns(const Patterns&) = delete;
    Patterns& operator=(const Patterns&) = delete;
    ~Patterns() {
        pcre2_match_data_free(pcreMatch);
        pcre2_code_free(pcre);
        ::regfree(&posix);
        std::free(own);
    }

    Span findOwn(const std::string& text, std::size_t from = 0) const {
        if (!fxregexec(own, text.c_str() + from))
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

    Span findRE2(const std::string& text, std::size_t from = 0) const {
        re2::StringPiece groups[fxregexp::groupCount];
        const int wanted = 1 + re2.NumberOfCapturingGroups();
        const re2::StringPiece subject(text.data() + from, text.size() - from);
        if (!re2.Match(subject, 0, subject.size(), re2::RE2::UNANCHORED, groups, wanted))
            return Span();
        const long start = groups[0].data() - text.data();
        return {start, start + static_cast<long>(groups[0].size())};
    }

    // By its interpreter; the block for the match is used again.
    Span findPCRE2(const std::string& text, std::size_t from = 0) const {
        const auto* subject = reinterpret_cast<PCRE2_SPTR>(text.data() + from);
        if (pcre2_match(pcre, subject, text.size() - from, 0, 0, pcreMatch, nullptr) < 0)
            return Span();
        const PCRE2_SIZE* ends = pcre2_get_ovector_pointer(pcreMatch);
        return {static_cast<long>(from + ends[0]), static_cast<long>(from + ends[1])};
    }

private:
    // Bytes, and a dot that matches them all.
    static re2::RE2::Options re2Options() {
        re2::RE2::Options options(re2::RE2::Latin1);
        options.set_dot_nl(true);
        return options;
    }

    fxregexp* own;
    regex_t posix;
    std::regex standard;
    re2::RE2 re2;
    pcre2_code* pcre;
    pcre2_match_data* pcreMatch;
};
