// fxTimer.h - a tick after an interval, once or again and again.
#pragma once

#include "kelvofxds/objects/fxObj.h"

class fxOutputChannel;

/// Sends on its output "tick" (no value) when its interval is over.
///
/// The dispatch loop serves the active timers, as long as there is a select
/// handler. They form a list in which each delta counts from the expiry of the
/// timer before, so starting one is linear in the number of those that are due
/// before it. A timer may be deleted at any time, also by a tick. Its output may be removed
/// or replaced: it sends on the output without value that is called "tick" at
/// the time, or on none.
class FX_EXPORT fxTimer : public fxObj {
public:
    /// Inactive, with interval 0; with `repeat`, a tick starts it anew.
    explicit fxTimer(unsigned char repeat);
    fxTimer(const fxTimer&) = delete;
    fxTimer& operator=(const fxTimer&) = delete;
    ~fxTimer() override;

    /// Called when the interval is over; here it sends on "tick", queued.
    virtual void tick();

    /// Waits a full interval from now, also if it is active. One that has
    /// ticked in an alarm and is started in it with an interval of 0 or less
    /// waits for the next alarm.
    /// Deliberate: a timer that its own tick starts is charged with its new
    /// delta, so that those behind it wait longer, or less, by the difference
    /// to the old one. A receiver on "tick" starts it without that.
    void startTimer();
    /// Does nothing to a timer that is not active.
    void stopTimer();

    /// Ticks every timer that is due `elapsed` seconds after the last service;
    /// no number counts as 0.
    /// Deliberate: repeating timers start anew only after all ticks, from that
    /// time; lateness is not made up for.
    static void alarm(float elapsed);

    /// In seconds; applies from the next start. No number, and less than any,
    /// count as 0; an endless interval is never over.
    void setInterval(float seconds) { interval = seconds; }
    float getInterval() const { return interval; }
    bool isActive() const { return active; }

    static fxTimer* activeTimers;  ///< The timer that is due first, or null.

private:
    friend class fxExec;
    friend class fxTickOutput;
    friend struct fxTimerLayout;  // tests/objects/fxTimer_test.cpp
    struct Alarm;
    struct Places;

    static void startThoseWaiting();
    void addToActiveList();
    void removeFromActiveList();

    float interval;            // seconds
    float delta;               // seconds from the expiry of the timer before
    unsigned char active;      // 1 while in the active list, or waiting to be
    unsigned char repeat;      // as constructed
    unsigned short place;      // where it is noted what links it; 0: nowhere
    fxOutputChannel* tickOut;  // the output "tick"; null once that has gone
    fxTimer* next;             // in the active list
};
