// regexPair.h - one pattern in the engine and in the slow matcher.
#pragma once

#include <cstring>
#include <string>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "tests/support/compiledBlock.h"
#include "tests/support/regErrors.h"
#include "tests/support/slowRegex.h"

/// Both are asked the same. Functions that compare return what is not the same, or null.
class RegexPair {
public:
    static const unsigned long noLimit = ~0UL;

    /// Compiles with both: the message, program and hints.
    const char* take(const std::string& pattern);

    /// Whether the last pattern has compiled, with both. What follows requires it.
    bool hasProgram() const { return engine != nullptr; }

    /// Searches with both: the result and all registers, which a search that fails clears if it
    /// gets as far as to try. Where the slow matcher gave up after `limit` steps there is nothing
    /// to compare.
    const char* search(const std::string& subject, unsigned long limit = noLimit);

    /// Substitutes with both after a search in `subject` that has found something.
    const char* substitute(const std::string& source, const std::string& subject);

    /// Of the slow matcher's last search.
    const slowRegex::Match& match() const { return found; }
    fxregexp& block() const { return *engine; }

private:
    // No place in a subject.
    static char* elsewhere() {
        static char place;
        return &place;
    }

    bool hasSameProgram() const {
        return std::memcmp(engine->program, slow.bytes.data(), slow.bytes.size()) == 0;
    }
    bool hasSameHints() const {
        const int must = engine->must ? static_cast<int>(engine->must - engine->program) : -1;
        return engine->startchar == slow.startchar && (engine->anchored != 0) == slow.anchored &&
               must == slow.must && engine->mustlen == slow.mustlen;
    }
    bool hasSameRegisters(const char* subject) const;

    slowRegex::Program slow;
    slowRegex::Match found;
    Compiled engine;
    std::string written;
};

inline const char* RegexPair::take(const std::string& pattern) {
    slow = slowRegex::compile(pattern);
    engine.reset();
    takeRegErrors();
    engine = compiled(pattern);
    const Messages messages = takeRegErrors();
    if (slow.error.empty() ? !messages.empty() : messages != Messages{slow.error})
        return "message";
    if ((engine != nullptr) != slow.error.empty()) {
        engine.reset();
        return "whether it compiles";
    }
    if (engine && !hasSameProgram())
        return "program";
    return !engine || hasSameHints() ? nullptr : "hint";
}

inline const char* RegexPair::search(const std::string& subject, unsigned long limit) {
    found = slowRegex::match(slow, subject, limit);
    for (unsigned int i = 0; i < fxregexp::groupCount; ++i)
        engine->startp[i] = engine->endp[i] = elsewhere();
    const int result = fxregexec(engine.get(), subject.c_str());
    if (found.gaveUp)
        return nullptr;
    if (result != (found.found ? 1 : 0))
        return "result";
    return hasSameRegisters(subject.c_str()) ? nullptr : "register";
}

inline bool RegexPair::hasSameRegisters(const char* subject) const {
    for (unsigned int i = 0; i < fxregexp::groupCount; ++i) {
        const char* start = found.wasTried ? nullptr : elsewhere();
        const char* end = start;
        if (found.found && found.start[i] != -1)
            start = subject + found.start[i];
        if (found.found && found.end[i] != -1)
            end = subject + found.end[i];
        if (engine->startp[i] != start || engine->endp[i] != end)
            return false;
    }
    return true;
}

inline const char* RegexPair::substitute(const std::string& source, const std::string& subject) {
    const std::string expected = slowRegex::substitute(source, subject, found);
    // With a byte behind it that stays.
    written.assign(expected.size() + 2, '#');
    fxregsub(engine.get(), source.c_str(), &written[0]);
    const bool isSame = std::memcmp(written.data(), expected.c_str(), expected.size() + 1) == 0;
    return isSame && written.back() == '#' ? nullptr : "substitution";
}
