// hostilePatterns.h - patterns by which searches become expensive or deep.
#pragma once

#include <string>
#include <vector>

/// A pattern and the texts to search: `unit` over and over, and `end` at last.
struct HostilePattern {
    std::string pattern;
    std::string unit;
    std::string end;

    /// One of at most `n` bytes, and hardly less: `unit` is always whole.
    /// Requires: `end` fits.
    std::string subject(std::size_t n) const {
        std::string text;
        text.reserve(n);
        while (text.size() + unit.size() + end.size() <= n)
            text += unit;
        return text + end;
    }
};

inline std::string timesOver(unsigned int n, const std::string& text) {
    std::string all;
    for (; n > 0; --n)
        all += text;
    return all;
}

inline std::vector<HostilePattern> hostilePatterns() {
    const std::string as48(48, 'a');
    return {
        // Loops within loops. A word byte behind an end of a word is never there, but that is not
        // known before everything has been tried.
        {"(a+)+[b]", "a", ""},
        {"(a+)+\\>[c]", "a", "c"},
        {"((a+)+)+$", "a", "b"},
        {"^((((a+)+)+)+)+$", "a", "b"},
        {"((((((((([ab]+)+)+)+)+)+)+)+)+)[c]", "ab", ""},
        {"((((((((([ab]+)+)+)+)+)+)+)+)+)\\>c", "ab", "c"},
        {"(a+b?)+\\>[c]", "aab", "c"},
        {"([^b]+)+b[c]", "a", "b"},
        {"(.+)+(.+)+\\>[x]", "ab", "x"},
        {"(x+x+)+y", "x", ""},
        {"(x+x+)+\\>y", "x", "y"},
        {"^(([a-z])+.)+[A-Z]([a-z])+$", "a", ""},
        {"((a+b)*(b+a)*)?\\>[c]", "ab", "c"},
        // Alternatives that begin or end alike.
        {"(a|aa)*[b]", "a", ""},
        {"(a|aa)+\\>b", "a", "b"},
        {"(aa|aaa|aaaaa)*\\>[b]", "a", "b"},
        {"(a|b|ab)*\\>[c]", "ab", "c"},
        {"(ab|a|ba|b)*[c]", "ab", ""},
        {"(a|ab|abc|abcd)*\\>[e]", "abcd", "e"},
        {"(aaaaaaaaab|aaaaaaaaac|aaaaaaaaad)", "a", ""},
        {"(a*b|a*c|a*d)[e]", "a", "b"},
        {"((a|b)|(b|a))*\\>[c]", "ab", "c"},
        {"(a+|b+)*\\>[c]", "ab", "c"},
        {"(a|(a|(a|(a|(a|a)))))*\\>[b]", "a", "b"},
        {"(a|b)*a(a|b)(a|b)(a|b)(a|b)(a|b)\\>[c]", "ab", "c"},
        {"(abababab|babababa)*[c]abababababab", "ab", ""},
        // Loops in a row.
        {".*.*.*x", "ab", ""},
        {".*.*.*\\>[x]", "ab", "x"},
        {"a*a*a*a*a*a*a*a*\\>[b]", "a", "b"},
        {"a+a+a+a+\\>b", "a", "b"},
        {".*a.*a.*a.*a[x]", "a", ""},
        {".*a.*a.*a.*a\\>[x]", "a", "x"},
        {"[ab]*[a]*[^b]*\\>[x]", "ab", "x"},
        {"a*b*a*b*a*b*\\>[c]", "ab", "c"},
        {"\"[^\"]*\"[^\"]*\"[x]", "\"a", ""},
        {"([a-z]*,[a-z]*)*;[x]", "ab,", ";"},
        // What is optional, again and again.
        {timesOver(30, "a?") + std::string(30, 'a') + "[b]", "a", ""},
        {"((a?)(a?)(a?)(a?)(a?)(a?))\\>[b]", "a", "b"},
        {"(a?b?c?d?e)+\\>[x]", "abcde", "x"},
        {timesOver(40, "[ab]?") + "[c]", "ab", ""},
        // Many groups, and long ways through them.
        {"(a)(b)(a)(b)(a)(b)(a)(b)(a)[c]", "ab", ""},
        {"((a)(b))*", "ab", ""},
        {"(((((((((a|b)))))))))*c", "ab", "c"},
        {"(((((((((a)|b)|c)|d)|e)|f)|g)|h))*\\>[i]", "abcdefgh", "i"},
        {"((a*)b)*\\>[c]", "aab", "c"},
        // Ends, starts and words.
        {"(\\<.|.\\>|.)*[c]", "ab ", ""},
        {"(\\<a+\\>|a+ |.)*\\>[c]", "aa ", "c"},
        {"(^a|a)+$", "a", "b"},
        {"a*$", "a", "b"},
        {"[ab]*\\>[a]", "ab", ""},
        {"(a$|a)*\\>b", "a", "b"},
        // Literals that are nearly there, and what has to be in a match.
        {as48 + "b", "a", ""},
        {"[a]" + as48 + "[b]", "a", ""},
        {"(a*)" + std::string(200, 'a') + "\\>[b]", "a", "b"},
        {"a*b*" + as48 + "[c]" + as48, "a", ""},
        {"x*aaaaaaaab", "aaaaaaaa", "b"},
        {"(a|aa)*" + as48 + "\\>" + as48, "a", ""},
        // Long programs; the last is one byte from being too long.
        {timesOver(200, "b|") + "[c]", "a", ""},
        {timesOver(9, "(a*)b|") + timesOver(100, "a*b|") + "[c]", "a", ""},
        {timesOver(330, "[!-~]") + std::string(410, 'a') + "[c]", "a", ""},
    };
}
