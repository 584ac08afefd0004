// fxTickOutputInternal.h - which timers send on an output.
#pragma once

class fxOutputChannel;
class fxTimer;

/// A timer keeps a pointer to its output, which the object's other operations
/// may delete. Looking the output up for each tick would cost more than the
/// tick, so an output that ends tells the timers that have it.
class __attribute__((visibility("hidden"))) fxTickOutput {
public:
    /// `out` is being deleted. The cost does not depend on the number of timers.
    static void isGoing(const fxOutputChannel* out);

    /// What `timer` is known by: its output, or itself without one.
    static const void* keyOf(const fxTimer& timer);
    /// `timer` sends on `out` from now on; null: on none.
    static void set(fxTimer& timer, fxOutputChannel* out);
};
