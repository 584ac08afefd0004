// fxRegEngineSearch.cpp - where a program is tried; see fxRegEngine.h.

#include <cstring>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "kelvofxds/pattern/fxRegMatcherInternal.h"
#include "kelvofxds/pattern/fxRegProgramInternal.h"

namespace {

bool contains(const char* subject, const char* text, int length) {
    return memmem(subject, std::strlen(subject), text, static_cast<std::size_t>(length)) != nullptr;
}

void clearRegisters(fxregexp& prog) {
    for (unsigned int i = 0; i < fxregexp::groupCount; ++i)
        prog.startp[i] = prog.endp[i] = nullptr;
}

// Tries every occurrence of the byte with which all matches begin, from `at` on.
// It is that of the literal run that they begin with.
bool matchFromStartChar(fxRegMatcher& matcher, const fxregexp& prog, const char* at) {
    const char* branch = prog.program + 1;
    const char* node = fxRegIsBranch(branch) ? fxRegOperand(branch) : branch;
    const char* run = fxRegOp(node) == OP_EXACT ? fxRegOperand(node) : "";
    const bool isRun = *run == prog.startchar && run[1] != '\0';
    for (;; ++at) {
        at = isRun ? std::strstr(at, run) : std::strchr(at, prog.startchar);
        if (!at)
            return false;
        if (matcher.regtry(at))
            return true;
    }
}

// Tries every position, after a few failures only those that have a chance.
bool matchAnywhere(fxRegMatcher& matcher, const char* subject) {
    const int patience = 8;
    const fxRegByteSet* first = nullptr;
    const char* at = subject;
    for (int failures = 0;; ++failures) {
        if (failures == patience)
            first = matcher.firstBytes();
        if (first) {
            while (!first->contains(*at) && *at != '\0')
                ++at;
            if (!first->contains(*at))
                return false;
        }
        if (matcher.regtry(at))
            return true;
        if (*at == '\0')
            return false;
        at = matcher.next();
    }
}

}  // namespace

int fxregexec(fxregexp* prog, const char* subject) {
    if (!prog || !subject) {
        fxregerror("NULL parameter");
        return 0;
    }
    if (!fxRegIsMagic(*prog) || !fxRegIsSound(*prog)) {
        fxregerror("corrupted program");
        return 0;
    }
    if (prog->must && !contains(subject, prog->must, prog->mustlen))
        return 0;
    const bool hasStartChar = !prog->anchored && prog->startchar;
    const char* first = hasStartChar ? std::strchr(subject, prog->startchar) : subject;
    if (!first)
        return 0;
    // The first try does this, also one that is left out because it must fail.
    // Those that follow find nothing to clear.
    clearRegisters(*prog);
    fxRegMatcher matcher(*prog, subject);
    if (prog->anchored)
        return matcher.regtry(subject);
    if (hasStartChar)
        return matchFromStartChar(matcher, *prog, first);
    return matchAnywhere(matcher, subject);
}
