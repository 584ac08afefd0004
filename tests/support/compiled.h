// compiled.h - compiled expressions as tests look at them.
#pragma once

#include <cctype>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "tests/support/compiledBlock.h"
#include "tests/support/regErrors.h"

/// Bytes as a failed comparison should show them.
inline std::string shown(const std::string& bytes) {
    std::string text;
    for (const char c : bytes) {
        char number[8];
        std::snprintf(number, sizeof number, "%d ", static_cast<unsigned char>(c));
        text += std::isgraph(static_cast<unsigned char>(c)) ? std::string(1, c) + " " : number;
    }
    return text;
}

/// The set groups of the last match as "0:start-end 1:start-end" and so on,
/// offsets in `subject`; "?" stands for the half of a group that is not set.
inline std::string groupsOf(const fxregexp& program, const char* subject) {
    const auto offset = [&](const char* place) {
        return place ? std::to_string(place - subject) : std::string("?");
    };
    std::string groups;
    for (unsigned int i = 0; i < fxregexp::groupCount; ++i) {
        if (!program.startp[i] && !program.endp[i])
            continue;
        groups += (groups.empty() ? "" : " ") + std::to_string(i) + ":";
        groups += offset(program.startp[i]) + "-" + offset(program.endp[i]);
    }
    return groups;
}

/// Expects that `pattern` does not compile, with this one message.
inline void expectMessage(const std::string& pattern, const std::string& message) {
    SCOPED_TRACE(testing::Message() << "pattern " << shown(pattern));
    takeRegErrors();
    const Compiled program = compiled(pattern);
    EXPECT_TRUE(program == nullptr);
    EXPECT_EQ(Messages{message}, takeRegErrors());
}

/// What `pattern` finds in `subject`: its groups as above, "none" if there is
/// no match, "no program" if it does not compile.
inline std::string found(const std::string& pattern, const std::string& subject) {
    const Compiled program = compiled(pattern);
    if (!program)
        return "no program";
    const int result = fxregexec(program.get(), subject.c_str());
    if (result != 1)
        return result == 0 ? "none" : "result " + std::to_string(result);
    return groupsOf(*program, subject.c_str());
}
