// separateUses.h - what threads of a host may do beside each other, each with objects of its own.
#pragma once

/// One family of objects at work. `use` makes, changes, asks and ends some, `rounds` times, and
/// tells whether they were what they should be; `seed` tells one thread's values from another's.
struct SeparateUse {
    const char* family;
    bool (*use)(int seed, int rounds);
    /// Whether a checker that knows locks, but no atomics, can follow it.
    bool isFollowed;
};

/// All families that docs/safety.md calls safe in separate threads.
extern const SeparateUse separateUses[];
extern const unsigned int separateUseCount;
