// fxExecPoll.cpp - one pass of the dispatch loop.

#include <sys/select.h>
#include <sys/times.h>

#include <cerrno>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxInProgressInternal.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxSelectHandler.h"
#include "kelvofxds/objects/fxTimer.h"

// What one pass waits for and what it gets.
struct fxExec::Wait {
    fd_set readable;
    fd_set writable;
    fd_set exceptional;
    timeval timeout;
    float firstDelta;  // of the first active timer, before the wait
    clock_t start;     // of the wait, if there is an active timer
    bool untilTimer;   // the time-out is the first timer's
};

namespace {
const double ticksPerSecond = 100.0;
const double microsecondsPerSecond = 1000000.0;

clock_t ticksNow() {
    tms unused;
    return ::times(&unused);
}

// Whole seconds, and the fraction that a float keeps. Less than 0 and no number
// count as 0.
timeval timevalOf(float seconds) {
    const float most = 2147483520.0F;  // the largest float below 2^31
    if (!(seconds > 0))
        seconds = 0;
    if (seconds > most)
        seconds = most;
    timeval time;
    time.tv_sec = static_cast<time_t>(seconds);
    const float fraction = seconds - static_cast<float>(time.tv_sec);
    time.tv_usec = static_cast<suseconds_t>(microsecondsPerSecond * static_cast<double>(fraction));
    return time;
}

void callAll(const fxStubFuncArray& functions) {
    const unsigned int n = functions.length();
    for (unsigned int i = 0; i < n && i < functions.length(); ++i)
        functions[i]();
}
}  // namespace

void fxExec::poll(float timeout) {
    FX_CHECK_THREAD("fxExec");
    if (dirty)
        updateSelectState();
    if (lowest != noHandlers) {
        callAll(preSelectFuncs);
        Wait wait;
        prepareWait(wait, timeout);
        const int ready = waitForDescriptors(wait);
        if (fxTimer::activeTimers)
            serveTimers(wait, ready);
        if (ready > 0)
            serveDescriptors(wait);
        callAll(postSelectFuncs);
    }
    if (fx_theEventHandler)
        fx_theEventHandler->distributeEvents();
}

void fxExec::prepareWait(Wait& wait, float timeout) {
    wait.untilTimer = false;
    wait.firstDelta = 0;
    wait.start = 0;
    fxTimer::startThoseWaiting();
    if (fxTimer::activeTimers) {
        wait.firstDelta = fxTimer::activeTimers->delta;
        wait.start = ticksNow();
    }
    if (fx_theEventHandler && fx_theEventHandler->numberOfEvents() != 0) {
        timeout = 0;
    } else if (fxTimer::activeTimers && timeout > wait.firstDelta) {
        // Where it lies in the past nothing is waited for, and the clock says
        // how much time went by.
        timeout = wait.firstDelta;
        wait.untilTimer = wait.firstDelta >= 0;
    }
    wait.timeout = timevalOf(timeout);
    wait.readable = readSet;
    wait.writable = writeSet;
    wait.exceptional = exceptionSet;
}

int fxExec::waitForDescriptors(Wait& wait) {
    return ::select(nfds, wantRead ? &wait.readable : nullptr, wantWrite ? &wait.writable : nullptr,
                    wantException ? &wait.exceptional : nullptr, &wait.timeout);
}

// Timers have advanced by the time waited. Elapsed time is exact to the tick
// and only rounded where it is kept.
void fxExec::serveTimers(const Wait& wait, int ready) {
    const int savedError = errno;
    if (ready == 0 && wait.untilTimer) {
        fxTimer::alarm(wait.firstDelta);
    } else {
        const unsigned int ticks =
            static_cast<unsigned int>(ticksNow()) - static_cast<unsigned int>(wait.start);
        const double elapsed = ticks / ticksPerSecond;
        const double remaining = static_cast<double>(wait.firstDelta) - elapsed;
        if (remaining > 0.0)
            fxTimer::activeTimers->delta = static_cast<float>(remaining);
        else
            fxTimer::alarm(static_cast<float>(elapsed));
    }
    errno = savedError;
}

namespace {
// A descriptor being served. What its handler is called for may destroy it.
struct Serving : public fxInProgress<Serving> {
    fxSelectHandler* handler = nullptr;  // null once it is destroyed
};
}  // namespace

void fxExec::serveDescriptors(const Wait& wait) {
    Serving serving;
    for (unsigned int d = lowest; d < nfds; ++d) {
        fxSelectHandler*& h = serving.handler;
        h = handlers[d];
        const int fd = static_cast<int>(d);
        if (h && wantRead && FD_ISSET(fd, &wait.readable))
            h->handleRead();
        if (h && wantWrite && FD_ISSET(fd, &wait.writable))
            h->handleWrite();
        if (h && wantException && FD_ISSET(fd, &wait.exceptional))
            h->handleException();
    }
}

void fxExec::forget(const fxSelectHandler* h) {
    FX_CHECK_THREAD("fxExec");
    for (fxSelectHandler*& handler : handlers) {
        if (handler == h)
            handler = nullptr;
    }
    Serving::forEach([h](Serving& serving) {
        if (serving.handler == h)
            serving.handler = nullptr;
    });
}

bool fxExec::willBlock() {
    FX_CHECK_THREAD("fxExec");
    if (dirty)
        updateSelectState();
    if (lowest == noHandlers)
        return false;
    Wait wait;
    wait.readable = readSet;
    wait.writable = writeSet;
    wait.exceptional = exceptionSet;
    wait.timeout = timevalOf(0);
    return waitForDescriptors(wait) == 0;
}
