// fxTickOutputInternal.h - whether an output called "tick" has gone from an object.
#pragma once

// A timer keeps a pointer to its output, which the object's other operations
// may delete. Looking the output up for each tick would cost more than the tick,
// so timers do that only once such a thing has happened in this process.
class __attribute__((visibility("hidden"))) fxTickOutput {
public:
    static const char* name() { return "tick"; }

    /// An object's output called `itsName` is being deleted; called for all but
    /// those that end with their timer.
    static void isGoing(const char* itsName);

    static bool anyHasGone() { return gone; }

private:
    inline static bool gone = false;
};
