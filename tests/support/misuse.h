// misuse.h - what the checked build says to misuse, one row for each check.
#pragma once

#include <csignal>
#include <string>

#include <gtest/gtest.h>

/// Whether the library stops at misuse; the tests themselves are the same in every build.
const bool libraryIsChecked = KELVOFXDS_LIBRARY_IS_CHECKED;

/// Whether a sanitizer speaks first of objects that have ended.
#ifdef __SANITIZE_ADDRESS__
const bool endsAreWatched = true;
#else
const bool endsAreWatched = false;
#endif

/// The last good use of something, and the first bad one.
struct Misuse {
    const char* name;
    void (*good)();       ///< Goes through in every build.
    void (*bad)();        ///< Undefined, unless the library is checked.
    const char* message;  ///< What is said then, without the newline.
};

/// Expects the good uses to go through and, of a checked library, the exact messages.
template <unsigned int n>
void expectStops(const Misuse (&table)[n], bool isSaid = libraryIsChecked) {
    for (const Misuse& misuse : table) {
        SCOPED_TRACE(misuse.name);
        misuse.good();
        if (!isSaid)
            continue;
        EXPECT_EXIT(misuse.bad(), testing::KilledBySignal(SIGABRT),
                    testing::Eq(std::string(misuse.message) + '\n'));
    }
}

/// The same of objects that have ended.
template <unsigned int n>
void expectEndsToStop(const Misuse (&table)[n]) {
    expectStops(table, libraryIsChecked && !endsAreWatched);
}
