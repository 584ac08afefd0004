// fxRegEngineSearch.cpp - where a program is tried; see fxRegEngine.h.

#include <cstddef>
#include <cstring>

#include "kelvofxds/pattern/fxRegCodeInternal.h"
#include "kelvofxds/pattern/fxRegEngine.h"
#include "kelvofxds/pattern/fxRegMatcherInternal.h"
#include "kelvofxds/pattern/fxRegProgramInternal.h"

namespace {

// memmem, which makes a table first, pays in long texts.
const char* findIn(const char* subject, std::size_t there, const char* text, unsigned int length) {
    const std::size_t few = 64;
    if (there > few)
        return static_cast<const char*>(memmem(subject, there, text, length));
    const char* const end = subject + there;
    while (end - subject >= std::ptrdiff_t(length)) {
        const std::size_t places = static_cast<std::size_t>(end - subject) - (length - 1);
        subject = static_cast<const char*>(std::memchr(subject, *text, places));
        if (!subject || std::memcmp(subject, text, length) == 0)
            return subject;
        ++subject;
    }
    return nullptr;
}

// The first occurrence of a text without a NUL; null if there is none. What is
// behind it is not looked at.
const char* find(const char* subject, const char* text, unsigned int length) {
    if (length == 1)
        return std::strchr(subject, *text);
    const std::size_t longest = 16384;
    for (std::size_t window = 256 + length;; window *= window < longest ? 4 : 1) {
        const std::size_t there = strnlen(subject, window);
        if (const char* found = findIn(subject, there, text, length))
            return found;
        if (there < window)
            return nullptr;
        subject += there - (length - 1);
    }
}

void clearRegisters(fxregexp& prog) {
    for (unsigned int i = 0; i < fxregexp::groupCount; ++i)
        prog.startp[i] = prog.endp[i] = nullptr;
}

// Where the text that every match needs is next.
class Required {
public:
    Required(const fxRegCode& decoded, const char* subject) : code(decoded), known(subject) {}

    // Whether it is anywhere from `at` on.
    bool isBehind(const char* at) {
        if (!code.required || patience == 0 || (isFound && at <= known))
            return true;
        known = find(at, code.required, code.requiredLength);
        isFound = true;
        const std::ptrdiff_t near = 256;
        if (known && known - at < near)
            --patience;
        return known != nullptr;
    }

private:
    static const unsigned int mostAsked = 8;  // where it is everywhere, asking is no use

    const fxRegCode& code;
    const char* known;
    unsigned int patience = mostAsked;
    bool isFound = false;
};

// Where to try next.
class Attempts {
public:
    Attempts(const fxRegCode& decoded, const fxregexp& prog, const char* subject)
        : code(decoded), startchar(prog.anchored ? '\0' : prog.startchar), end(subject) {}

    // The first place of all, or null.
    const char* first(const char* subject) {
        const bool isTried = code.isStartSpecial() && (startchar == '\0' || *subject == startchar);
        return isTried ? subject : from(subject);
    }

    // The first place from `at` on, which is not the subject's start, or null.
    const char* from(const char* at) {
        for (;; ++at) {
            const bool byHint = startchar != '\0' && code.starts.isAnywhere();
            at = byHint ? std::strchr(at, startchar) : code.starts.next(at, end);
            if (!at || startchar == '\0' || *at == startchar)
                return at;
            if (*at == '\0')
                return nullptr;
        }
    }

private:
    const fxRegCode& code;
    char startchar;
    fxRegTextEnd end;
};

bool matchFrom(fxRegMatcher& matcher, fxRegCode& code, Attempts& attempts, const char* at) {
    const unsigned int few = 2 * code.size();  // failures that cost less than to analyse it
    Required required(code, at);
    for (unsigned int failures = 0; at;) {
        if (matcher.regtry(at))
            return true;
        if (*at == '\0')
            return false;
        if (++failures == few)
            code.analyse();
        at = matcher.next();
        if (!at || !required.isBehind(at))
            return false;
        at = attempts.from(at);
    }
    return false;
}

}  // namespace

int fxregexec(fxregexp* prog, const char* subject) {
    if (!prog || !subject) {
        fxregerror("NULL parameter");
        return 0;
    }
    if (!fxRegIsMagic(*prog)) {
        fxregerror("corrupted program");
        return 0;
    }
    const fxRegCodeLease lease(*prog, subject);
    fxRegCode* code = lease.code();
    if (!code)
        return 0;
    if (prog->must && !find(subject, prog->must, static_cast<unsigned int>(prog->mustlen)))
        return 0;
    Attempts attempts(*code, *prog, subject);
    const char* first = prog->anchored ? subject : attempts.first(subject);
    if (!first && prog->startchar &&
        (code->starts.isByte(prog->startchar) || !std::strchr(subject, prog->startchar)))
        return 0;
    // The first try does this, also one that is left out because it must fail.
    // Those that follow find nothing to clear.
    clearRegisters(*prog);
    if (!first)
        return 0;
    fxRegMatcher matcher(*prog, *code, subject);
    if (prog->anchored)
        return matcher.regtry(subject);
    return matchFrom(matcher, *code, attempts, first);
}
