// misuse.h - what the checked build says to misuse, one row for each check.
#pragma once

#include <csignal>
#include <string>

#include <gtest/gtest.h>

/// Whether the library stops at misuse; the tests themselves are the same in every build.
const bool libraryIsChecked = KELVOFXDS_LIBRARY_IS_CHECKED;

/// The last good use of something, and the first bad one.
struct Misuse {
    const char* name;
    void (*good)();       ///< Goes through in every build.
    void (*bad)();        ///< Undefined, unless the library is checked.
    const char* message;  ///< What is said then, without the newline.
};

/// Expects the good uses to go through and, of a checked library, the exact messages.
template <unsigned int n>
void expectStops(const Misuse (&table)[n]) {
    for (const Misuse& misuse : table) {
        SCOPED_TRACE(misuse.name);
        misuse.good();
        if (!libraryIsChecked)
            continue;
        EXPECT_EXIT(misuse.bad(), testing::KilledBySignal(SIGABRT),
                    testing::Eq(std::string(misuse.message) + '\n'));
    }
}
