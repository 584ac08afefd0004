#include "kelvofxds/objects/fxTimer.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <utility>

#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxInProgressInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/objects/fxTickOutputInternal.h"
#include "kelvofxds/values/fxData.h"
#include "kelvofxds/values/fxProperty.h"

fxTimer* fxTimer::activeTimers = nullptr;

// What is known of the living timers beside their fields.

namespace {
// A timer's entry. Its key is the timer's output, or the timer itself while it
// has none.
struct Known {
    const void* key;  // null in a free place
    fxTimer* timer;
    std::uint64_t tickedIn;  // number of the last alarm in which it ticked; 0: none
};

// The entries by key: a table with open addressing, at most half full. Timers
// may live as long as the process, so it is never freed.
class KnownTimers {
public:
    // The first entry with `key`, or null.
    static Known* find(const void* key) {
        if (count == 0)
            return nullptr;
        unsigned int i = homeOf(key);
        while (places[i].key && places[i].key != key)
            i = behind(i);
        return places[i].key ? &places[i] : nullptr;
    }

    // The entry of `timer`, which has `key`.
    static Known& of(const fxTimer& timer, const void* key) {
        unsigned int i = homeOf(key);
        while (places[i].key != key || places[i].timer != &timer)
            i = behind(i);
        return places[i];
    }

    static void add(const Known& entry) {
        if (2 * count >= size)
            grow();
        put(entry);
        ++count;
    }

    // Those behind the entry move up, unless they are before their home then.
    static void remove(const Known& entry) {
        unsigned int free = static_cast<unsigned int>(&entry - places);
        for (unsigned int i = behind(free); places[i].key; i = behind(i)) {
            const unsigned int fromHome = i - homeOf(places[i].key);
            const unsigned int fromFree = i - free;
            if ((fromHome & (size - 1)) >= (fromFree & (size - 1))) {
                places[free] = places[i];
                free = i;
            }
        }
        places[free].key = nullptr;
        --count;
    }

private:
    static unsigned int homeOf(const void* key) {
        const std::uint32_t golden = 2654435769U;  // spreads addresses, whose low bits are alike
        const auto hash = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(key));
        return (hash * golden >> 8) & (size - 1);
    }

    static unsigned int behind(unsigned int i) { return (i + 1) & (size - 1); }

    static void put(const Known& entry) {
        unsigned int i = homeOf(entry.key);
        while (places[i].key)
            i = behind(i);
        places[i] = entry;
    }

    static void grow() {
        const unsigned int fewest = 16;
        const unsigned int oldSize = size;
        Known* old = places;
        size = oldSize != 0 ? 2 * oldSize : fewest;
        places = static_cast<Known*>(std::calloc(size, sizeof(Known)));
        if (!places)
            fxOutOfMemory();
        for (unsigned int i = 0; i < oldSize; ++i) {
            if (old[i].key)
                put(old[i]);
        }
        std::free(old);
    }

    inline static Known* places = nullptr;
    inline static unsigned int size = 0;  // a power of two
    inline static unsigned int count = 0;
};
}  // namespace

// What links the timers of the active list: the `next` of the one before, or
// activeTimers. It is kept apart since hosts know the fields of a timer, between
// which there is room for the number of a place in a table. Each living timer
// has one, but for those that find the table full, which are looked for.
// Timers may live as long as the process, so the table is never freed.
struct __attribute__((visibility("hidden"))) fxTimer::Places {
    // A place for a new timer, or 0.
    static unsigned short take() {
        const unsigned int most = 0xFFFF;
        if (const unsigned short place = firstFree) {
            firstFree = table[place].nextFree;
            return place;
        }
        if (used >= size && size <= most)
            grow();
        return static_cast<unsigned short>(used <= most ? used++ : 0);
    }

    static void release(unsigned short place) {
        if (place != 0)
            table[place].nextFree = std::exchange(firstFree, place);
    }

    static void setLink(const fxTimer* timer, fxTimer** link) { table[timer->place].link = link; }

    // Of an active timer that waits to get into the list.
    static void setNoLink(const fxTimer* timer) { setLink(timer, &none); }

    // What links `timer`, which is active; points to null if nothing does.
    static fxTimer** linkOf(const fxTimer* timer) {
        return __builtin_expect(timer->place != 0, true) ? table[timer->place].link
                                                         : lookFor(timer);
    }

private:
    union Place {
        fxTimer** link;
        unsigned short nextFree;  // 0: none
    };

    static void grow() {
        const unsigned int fewest = 16;
        size = size != 0 ? 2 * size : fewest;
        table = static_cast<Place*>(std::realloc(table, size * sizeof(Place)));
        if (!table)
            fxOutOfMemory();
    }

    [[gnu::noinline]] static fxTimer** lookFor(const fxTimer* timer) {
        fxTimer** link = &activeTimers;
        while (*link && *link != timer)
            link = &(*link)->next;
        return link;
    }

    inline static fxTimer* none = nullptr;
    inline static Place* table = nullptr;
    inline static unsigned int size = 0;
    inline static unsigned int used = 1;  // that of 0 is nobody's
    inline static unsigned short firstFree = 0;
};

// An alarm in progress. Ticks may delete and start timers, so it is told.
struct __attribute__((visibility("hidden"))) fxTimer::Alarm : public fxInProgress<fxTimer::Alarm> {
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

        // If it is in the list; most are in none, which is seen at once.
        [[gnu::noinline]] void remove(fxTimer* timer) {
            if (!first || (!timer->next && end != &timer->next))
                return;
            fxTimer** link = &first;
            while (*link && *link != timer)
                link = &(*link)->next;
            if (!*link)
                return;
            *link = timer->next;
            timer->next = nullptr;
            if (end == &timer->next)
                end = link;
        }

    private:
        fxTimer* first;
        fxTimer** end;  // where the next one is linked
    };

    Alarm() : ticking(nullptr) {
        if (depth++ == 0)
            ++number;
    }

    // Timers start anew, also when a tick threw.
    ~Alarm() {
        ticked();
        if (--depth == 0) {
            lately = 0;
            startThoseWaiting();
        }
        while (fxTimer* timer = restart.takeFirst())
            timer->addToActiveList();
    }

    void isToTick(fxTimer* timer) {
        ticking = timer;
        if (lately == few)
            noteThoseOfLately();
        tickedLately[lately++] = timer;
    }

    // Whether it ticked in the alarms in progress.
    static bool hasTicked(const fxTimer* timer) {
        noteThoseOfLately();
        return KnownTimers::of(*timer, fxTickOutput::keyOf(*timer)).tickedIn == number;
    }

    // To note each tick at once would cost as much as the rest of the alarm; most
    // alarms end before anybody has asked.
    static void noteThoseOfLately() {
        while (lately != 0) {
            const fxTimer* timer = tickedLately[--lately];
            KnownTimers::of(*timer, fxTickOutput::keyOf(*timer)).tickedIn = number;
        }
    }

    // Starts a timer that has to wait for the next alarm; false if it has not.
    [[gnu::noinline]] static bool letWait(fxTimer* timer) {
        forEach([timer](Alarm& alarm) { alarm.restart.remove(timer); });
        if (timer->interval > 0 || !hasTicked(timer))
            return false;
        timer->delta = 0;
        timer->active = 1;
        Places::setNoLink(timer);
        waiting.append(timer);
        return true;
    }

    // The tick is over.
    void ticked() {
        fxTimer* timer = std::exchange(ticking, nullptr);
        if (timer && timer->repeat && !timer->active)
            restart.append(timer);
    }

    fxTimer* ticking;  // the timer whose tick is being called; null once it is destroyed
    List restart;      // repeating timers that have ticked, to start anew in firing order

    static const unsigned int few = 256;
    inline static fxTimer* tickedLately[few];  // not yet noted in their entries
    inline static unsigned int lately = 0;     // how many

    inline static List waiting;              // active from the next alarm on
    inline static unsigned int depth = 0;    // alarms in progress
    inline static std::uint64_t number = 0;  // counts those that are in no other
};

// The output.

namespace {
const char tickName[] = "tick";

// The output without value that is called "tick" in the object's dictionary;
// null if there is none.
fxOutputChannel* presentTickOf(const fxObj& timer) {
    const fxProperty* outputs = timer.findProperty("outputs");
    if (!outputs || outputs->getType() != fxDT_VoidPtr)
        return nullptr;
    // A tick allocates nothing, and timers may outlive other static objects.
    static const fxStr& name = *fxNew<fxStr>(tickName);
    const auto* channels = static_cast<const fxVoidPtrDict*>(outputs->getAsVoidPtr());
    void** found = channels ? channels->find(name) : nullptr;
    auto* channel = found ? static_cast<fxOutputChannel*>(*found) : nullptr;
    return channel && channel->getType() == fxDT_void ? channel : nullptr;
}
}  // namespace

// The entry's key; see Known.
const void* fxTickOutput::keyOf(const fxTimer& timer) {
    if (timer.tickOut)
        return timer.tickOut;
    return &timer;
}

void fxTickOutput::set(fxTimer& timer, fxOutputChannel* out) {
    const Known& entry = KnownTimers::of(timer, keyOf(timer));
    Known moved = entry;
    KnownTimers::remove(entry);
    timer.tickOut = out;
    moved.key = keyOf(timer);
    KnownTimers::add(moved);
}

void fxTickOutput::isGoing(const fxOutputChannel* out) {
    while (const Known* known = KnownTimers::find(out))
        set(*known->timer, nullptr);
}

fxTimer::fxTimer(unsigned char repeating)
    : interval(0),
      delta(0),
      active(0),
      repeat(repeating),
      place(Places::take()),
      tickOut(nullptr),
      next(nullptr) {
    FX_CHECK_THREAD("fxTimer");
    tickOut = addOutput(tickName, fxDT_void);
    KnownTimers::add({fxTickOutput::keyOf(*this), this, 0});
}

fxTimer::~fxTimer() {
    stopTimer();
    Alarm::forEach([this](Alarm& alarm) {
        if (alarm.ticking == this)
            alarm.ticking = nullptr;
        alarm.restart.remove(this);
    });
    Alarm::noteThoseOfLately();
    KnownTimers::remove(KnownTimers::of(*this, fxTickOutput::keyOf(*this)));
    Places::release(place);
}

void fxTimer::tick() {
    if (!tickOut) {
        fxOutputChannel* out = presentTickOf(*this);
        if (!out)
            return;
        fxTickOutput::set(*this, out);
    }
    sendVoid(tickOut, fxSendQueued);
}

// The active list. Its deltas are numbers, or endless.

namespace {
// What is no number counts as 0.
float number(float seconds) { return std::isnan(seconds) ? 0 : seconds; }
}  // namespace

void fxTimer::addToActiveList() {
    fxTimer** link = &activeTimers;
    fxTimer* behind = *link;
    float d = interval;
    for (;;) {
        while (behind && d >= behind->delta) {
            d -= behind->delta;
            link = &behind->next;
            behind = *link;
        }
        // Of two endless ones the second is due with the first.
        if (__builtin_expect(d >= std::numeric_limits<float>::lowest(), true))
            break;
        d = 0;
    }
    delta = d;
    next = behind;
    if (behind) {
        behind->delta -= d;
        Places::setLink(behind, &next);
    }
    *link = this;
    Places::setLink(this, link);
    active = 1;
}

void fxTimer::removeFromActiveList() {
    fxTimer** link = Places::linkOf(this);
    active = 0;
    if (__builtin_expect(*link != this, false)) {
        Alarm::waiting.remove(this);
        return;
    }
    if (next) {
        next->delta += delta;
        Places::setLink(next, link);
    }
    *link = next;
    next = nullptr;
}

// Starting and stopping.

void fxTimer::startTimer() {
    FX_CHECK_THREAD("fxTimer");
    if (__builtin_expect(active, false))
        stopTimer();
    if (__builtin_expect(Alarm::depth == 0, true) || !Alarm::letWait(this))
        addToActiveList();
}

void fxTimer::stopTimer() {
    FX_CHECK_THREAD("fxTimer");
    if (active)
        removeFromActiveList();
}

void fxTimer::startThoseWaiting() {
    while (fxTimer* timer = Alarm::waiting.takeFirst())
        timer->addToActiveList();
}

void fxTimer::alarm(float elapsed) {
    FX_CHECK_THREAD("fxTimer");
    startThoseWaiting();
    elapsed = number(elapsed);
    Alarm alarm;
    while (fxTimer* timer = activeTimers) {
        const float due = timer->delta;
        if (elapsed < due) {
            timer->delta = due - elapsed;
            break;
        }
        activeTimers = timer->next;
        if (activeTimers)
            Places::setLink(activeTimers, &activeTimers);
        timer->next = nullptr;
        timer->active = 0;
        alarm.isToTick(timer);
        timer->tick();
        elapsed = number(elapsed - (alarm.ticking ? timer->delta : due));
        alarm.ticked();
    }
    // NOLINTNEXTLINE(clang-analyzer-core.StackAddressEscape): its end puts the one before back.
}
