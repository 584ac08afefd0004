#include "kelvofxds/objects/fxTimer.h"

#include "kelvofxds/core/fxInProgressInternal.h"
#include "kelvofxds/values/fxData.h"

fxTimer* fxTimer::activeTimers = nullptr;

// An alarm in progress. Ticks may delete and start timers, so it is told.
struct __attribute__((visibility("hidden"))) fxTimer::Alarm : public fxInProgress<fxTimer::Alarm> {
    Alarm() : ticking(nullptr), restart(nullptr), restartEnd(&restart) {}

    // `timer` is going: it must not be touched after its tick, nor restarted.
    static void forget(fxTimer* timer) {
        forEach([timer](Alarm& alarm) {
            if (alarm.ticking == timer)
                alarm.ticking = nullptr;
            alarm.cancelRestart(timer);
        });
    }

    // `timer` waits for no alarm to start it anew.
    static void cancelRestarts(fxTimer* timer) {
        forEach([timer](Alarm& alarm) { alarm.cancelRestart(timer); });
    }

    void restartLater(fxTimer* timer) {
        *restartEnd = timer;
        restartEnd = &timer->next;
    }

    fxTimer* takeRestart() {
        fxTimer* timer = restart;
        if (timer)
            cancelRestart(timer);
        return timer;
    }

    fxTimer* ticking;      // the timer whose tick is being called
    fxTimer* restart;      // timers to start anew, in firing order, linked by `next`
    fxTimer** restartEnd;  // where the next one is linked

private:
    void cancelRestart(fxTimer* timer) {
        fxTimer** link = &restart;
        while (*link && *link != timer)
            link = &(*link)->next;
        if (!*link)
            return;
        *link = timer->next;
        timer->next = nullptr;
        if (restartEnd == &timer->next)
            restartEnd = link;
    }
};

fxTimer::fxTimer(unsigned char repeating)
    : interval(0), delta(0), active(0), repeat(repeating), tickOut(nullptr), next(nullptr) {
    tickOut = addOutput("tick", fxDT_void);
}

fxTimer::~fxTimer() {
    Alarm::forget(this);
    stopTimer();
}

void fxTimer::tick() { sendVoid(tickOut, fxSendQueued); }

void fxTimer::startTimer() {
    Alarm::cancelRestarts(this);
    stopTimer();
    addToActiveList();
}

void fxTimer::stopTimer() {
    if (active)
        removeFromActiveList();
}

void fxTimer::addToActiveList() {
    float d = interval;
    fxTimer** link = &activeTimers;
    while (*link && d >= (*link)->delta) {
        d -= (*link)->delta;
        link = &(*link)->next;
    }
    delta = d;
    next = *link;
    if (next)
        next->delta -= d;
    *link = this;
    active = 1;
}

void fxTimer::removeFromActiveList() {
    fxTimer** link = &activeTimers;
    while (*link && *link != this)
        link = &(*link)->next;
    if (!*link)
        return;
    if (next)
        next->delta += delta;
    *link = next;
    next = nullptr;
    active = 0;
}

void fxTimer::alarm(float elapsed) {
    Alarm alarm;
    while (fxTimer* timer = activeTimers) {
        const float due = timer->delta;
        if (!(elapsed >= due)) {
            timer->delta -= elapsed;
            break;
        }
        activeTimers = timer->next;
        timer->next = nullptr;
        timer->active = 0;
        alarm.ticking = timer;
        timer->tick();
        elapsed -= due;
        if (alarm.ticking && timer->repeat && !timer->active)
            alarm.restartLater(timer);
    }
    while (fxTimer* timer = alarm.takeRestart())
        timer->addToActiveList();
}
