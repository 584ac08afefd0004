#include "kelvofxds/pattern/fxRegEx.h"

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "kelvofxds/str/fxStr.h"

namespace {
const int notFound = -1;
const int notCompiled = -2;

unsigned int offsetOf(const char* place, const char* text) {
    return static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(place) -
                                     reinterpret_cast<std::uintptr_t>(text));
}
}  // namespace

fxRegEx::fxRegEx(const char* expr) : expression(fxregcomp(expr)) {}

fxRegEx::fxRegEx(const fxStr& expr) : expression(fxregcomp(expr.c_str())) {}

fxRegEx::~fxRegEx() { std::free(expression); }

int fxRegEx::findBuffer(const char* text, unsigned int length) const {
    int start, end;
    fxRegEx::bracketBuffer(text, length, start, end);
    return start;
}

int fxRegEx::findEndBuffer(const char* text, unsigned int length) const {
    int start, end;
    fxRegEx::bracketBuffer(text, length, start, end);
    return end;
}

int fxRegEx::bracketBuffer(const char* text, unsigned int, int& start, int& end) const {
    start = expression ? notFound : notCompiled;
    end = 0;
    if (!expression || !fxregexec(expression, text))
        return 0;
    const unsigned int endOffset = offsetOf(expression->endp[0], text);
    if (endOffset > INT_MAX)
        return 0;
    start = static_cast<int>(offsetOf(expression->startp[0], text));
    end = static_cast<int>(endOffset);
    return 1;
}

bool fxIsRegEx(const char* s) { return s && s[std::strcspn(s, ".+*^$(){}[]")] != '\0'; }
