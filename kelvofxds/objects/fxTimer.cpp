#include "kelvofxds/objects/fxTimer.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/core/fxInProgressInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/objects/fxTickOutputInternal.h"
#include "kelvofxds/values/fxData.h"
#include "kelvofxds/values/fxProperty.h"

fxTimer* fxTimer::activeTimers = nullptr;

// An alarm in progress. Ticks may delete and start timers, so it is told.
//
// A timer that has ticked while any is in progress is known: it is the one
// whose tick is being called, or in one of the lists, or its `active` is 2.
struct fxTimer::Alarm : public fxInProgress<fxTimer::Alarm> {
    static const unsigned char hasTickedAndIsActive = 2;

    // Timers out of the active list, linked by `next`.
    class List {
    public:
        constexpr List() : first(nullptr), end(&first) {}

        void append(fxTimer* timer) {
            *end = timer;
            end = &timer->next;
        }

        fxTimer* takeFirst() {
            fxTimer* timer = first;
            if (!timer)
                return nullptr;
            first = timer->next;
            timer->next = nullptr;
            if (!first)
                end = &first;
            return timer;
        }

        bool contains(const fxTimer* timer) const { return *linkOf(timer) != nullptr; }

        bool remove(fxTimer* timer) {
            fxTimer** link = const_cast<fxTimer**>(linkOf(timer));
            if (!*link)
                return false;
            *link = timer->next;
            timer->next = nullptr;
            if (end == &timer->next)
                end = link;
            return true;
        }

    private:
        // Most timers asked for are in no list, which is seen at once.
        fxTimer* const* linkOf(const fxTimer* timer) const {
            if (!timer->next && end != &timer->next)
                return end;
            fxTimer* const* link = &first;
            while (*link && *link != timer)
                link = &(*link)->next;
            return link;
        }

        fxTimer* first;
        fxTimer** end;  // where the next one is linked
    };

    Alarm() : ticking(nullptr) {}
    ~Alarm();

    static bool inProgress();
    static bool hasTicked(const fxTimer* timer);
    static void takeOut(fxTimer* timer);

    fxTimer* ticking;  // the timer whose tick is being called; null once it is destroyed
    List restart;      // repeating timers that have ticked, to start anew in firing order

    inline static List waiting;             // active from the next alarm on
    inline static List spent;               // have ticked and wait for nothing
    inline static unsigned int marked = 0;  // timers in the active list that have ticked
};

// Timers start anew, also when a tick threw. What has ticked is forgotten with
// the outermost alarm; those that are marked are near the front, where a start
// has just put them.
fxTimer::Alarm::~Alarm() {
    bool isOutermost = true;
    forEach([&](const Alarm& alarm) { isOutermost = isOutermost && &alarm == this; });
    if (isOutermost)
        startThoseWaiting();
    while (fxTimer* timer = restart.takeFirst())
        timer->addToActiveList();
    if (!isOutermost)
        return;
    while (spent.takeFirst()) {
    }
    for (fxTimer* timer = activeTimers; timer && marked != 0; timer = timer->next) {
        if (timer->active == hasTickedAndIsActive) {
            timer->active = 1;
            --marked;
        }
    }
}

bool fxTimer::Alarm::inProgress() {
    bool any = false;
    forEach([&](const Alarm&) { any = true; });
    return any;
}

bool fxTimer::Alarm::hasTicked(const fxTimer* timer) {
    bool found = timer->active == hasTickedAndIsActive;
    forEach([&](const Alarm& alarm) {
        found = found || alarm.ticking == timer ||
                (!timer->active && (alarm.restart.contains(timer) || spent.contains(timer)));
    });
    return found;
}

// `timer`, which is not active, waits for no alarm to start it anew.
void fxTimer::Alarm::takeOut(fxTimer* timer) {
    forEach([&](Alarm& alarm) { alarm.restart.remove(timer); });
    spent.remove(timer);
}

// The output.

void fxTickOutput::isGoing(const char* itsName) {
    gone = gone || std::strcmp(itsName, name()) == 0;
}

namespace {
// The pointer to the output without value that is called "tick" in the object's
// dictionary; null if there is none.
void** presentTickOf(const fxObj& timer) {
    const fxProperty* outputs = timer.findProperty("outputs");
    if (!outputs || outputs->getType() != fxDT_VoidPtr)
        return nullptr;
    // A tick allocates nothing, and timers may outlive other static objects.
    static const fxStr& name = *fxNew<fxStr>(fxTickOutput::name());
    const auto* channels = static_cast<const fxVoidPtrDict*>(outputs->getAsVoidPtr());
    void** found = channels ? channels->find(name) : nullptr;
    if (!found || !*found || static_cast<fxOutputChannel*>(*found)->getType() != fxDT_void)
        return nullptr;
    return found;
}
}  // namespace

fxTimer::fxTimer(unsigned char repeating)
    : interval(0), delta(0), active(0), repeat(repeating), tickOut(nullptr), next(nullptr) {
    tickOut = addOutput(fxTickOutput::name(), fxDT_void);
}

fxTimer::~fxTimer() {
    Alarm::forEach([this](Alarm& alarm) {
        if (alarm.ticking == this)
            alarm.ticking = nullptr;
    });
    takeOut();
    // The output ends here, so that what is left to the base is no timer's.
    if (void** channel = presentTickOf(*this))
        delete static_cast<fxOutputChannel*>(std::exchange(*channel, nullptr));
}

void fxTimer::tick() {
    if (fxTickOutput::anyHasGone()) {
        void** channel = presentTickOf(*this);
        tickOut = channel ? static_cast<fxOutputChannel*>(*channel) : nullptr;
    }
    if (tickOut)
        sendVoid(tickOut, fxSendQueued);
}

// Starting and stopping.

void fxTimer::startTimer() {
    if (Alarm::inProgress()) {
        startInAnAlarm();
        return;
    }
    if (active)
        removeFromActiveList();
    addToActiveList();
}

void fxTimer::startInAnAlarm() {
    const bool hasTicked = Alarm::hasTicked(this);
    takeOut();
    if (!hasTicked) {
        addToActiveList();
        return;
    }
    if (interval > 0) {
        addToActiveList();
        ++Alarm::marked;
    } else {
        Alarm::waiting.append(this);
    }
    active = Alarm::hasTickedAndIsActive;
}

void fxTimer::stopTimer() {
    if (!active)
        return;
    if (!Alarm::inProgress()) {
        removeFromActiveList();
        return;
    }
    const bool hasTicked = Alarm::hasTicked(this);
    takeOut();
    if (hasTicked)
        Alarm::spent.append(this);
}

// Takes the timer out of whatever list it is in.
void fxTimer::takeOut() {
    if (!active) {
        Alarm::takeOut(this);
    } else if (active == Alarm::hasTickedAndIsActive && Alarm::waiting.remove(this)) {
        active = 0;
    } else {
        if (active == Alarm::hasTickedAndIsActive)
            --Alarm::marked;
        removeFromActiveList();
    }
}

void fxTimer::startThoseWaiting() {
    while (fxTimer* timer = Alarm::waiting.takeFirst())
        timer->addToActiveList();
}

// The active list. Its deltas are numbers, or endless.

namespace {
// What is no number counts as 0.
float number(float seconds) { return std::isnan(seconds) ? 0 : seconds; }
}  // namespace

void fxTimer::addToActiveList() {
    float d = interval >= std::numeric_limits<float>::lowest() ? interval : 0;
    fxTimer** link = &activeTimers;
    while (*link && d >= (*link)->delta) {
        d = number(d - (*link)->delta);
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
    startThoseWaiting();
    elapsed = number(elapsed);
    Alarm alarm;
    while (fxTimer* timer = activeTimers) {
        const float due = timer->delta;
        if (elapsed < due) {
            timer->delta = due - elapsed;
            break;
        }
        if (timer->active == Alarm::hasTickedAndIsActive)
            --Alarm::marked;
        activeTimers = timer->next;
        timer->next = nullptr;
        timer->active = 0;
        alarm.ticking = timer;
        timer->tick();
        // An endless new delta would keep the others from ticking for ever.
        const bool lives = alarm.ticking != nullptr;
        elapsed = number(elapsed - (lives && std::isfinite(timer->delta) ? timer->delta : due));
        if (lives && !timer->active) {
            Alarm::spent.remove(timer);
            (timer->repeat ? alarm.restart : Alarm::spent).append(timer);
        }
        alarm.ticking = nullptr;
    }
    // NOLINTNEXTLINE(clang-analyzer-core.StackAddressEscape): its end puts the one before back.
}
