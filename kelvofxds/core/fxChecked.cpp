// fxChecked.cpp - what the checked build says and keeps; empty in every other one.

#include "kelvofxds/core/fxCheckedInternal.h"

#ifdef KELVOFXDS_CHECKED

#include <cxxabi.h>
#include <pthread.h>
#include <sys/mman.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <typeinfo>

#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxTableOfInternal.h"

// Saying it.

void fxMisuse::isNull(const char* owner, const char* operation, const char* what) {
    fxFatal("%s::%s: %s is null", owner, operation, what);
}

void fxMisuse::beyond(const char* owner, const char* operation, const char* what,
                      unsigned int value, const char* limitName, unsigned int limit) {
    fxFatal("%s::%s: %s %u beyond %s %u", owner, operation, what, value, limitName, limit);
}

void fxMisuse::notBelow(const char* owner, const char* operation, const char* what,
                        unsigned int value, const char* limitName, unsigned int limit) {
    fxFatal("%s::%s: %s %u not below %s %u", owner, operation, what, value, limitName, limit);
}

void fxMisuse::beyond(const char* owner, const char* operation, unsigned int start, unsigned int n,
                      unsigned int limit) {
    if (start > limit)
        beyond(owner, operation, "start", start, "length", limit);
    if (start == 0)
        beyond(owner, operation, "n", n, "length", limit);
    fxFatal("%s::%s: start %u and n %u beyond length %u", owner, operation, start, n, limit);
}

void fxMisuse::says(const char* owner, const char* operation, const char* format, ...) {
    char clause[400];
    std::va_list args;
    va_start(args, format);
    std::vsnprintf(clause, sizeof clause, format, args);
    va_end(args);
    fxFatal("%s::%s: %s", owner, operation, clause);
}

// The word in front of a table leads to the type's description. A class that is compiled without
// one has null there.
const char* fxMisuse::nameOf(const void* object) {
    const auto* const type = static_cast<const std::type_info* const*>(fxTableOf(object))[-1];
    if (!type)
        return nullptr;
    int status = 0;
    // The process ends with the message, so the name is not given back.
    char* const name = abi::__cxa_demangle(type->name(), nullptr, nullptr, &status);
    if (!name)
        return type->name();
    const char nameless[] = "(anonymous namespace)::";
    const std::size_t length = sizeof nameless - 1;
    while (char* const found = std::strstr(name, nameless))
        std::memmove(found, found + length, std::strlen(found + length) + 1);
    return name;
}

// Threads.

namespace {
bool isInitialized = false;
pthread_t initializer;  // the thread
}  // namespace

void fxMisuse::isInitializing() {
    initializer = ::pthread_self();
    isInitialized = true;
}

bool fxMisuse::isOtherThread() {
    return isInitialized && ::pthread_equal(initializer, ::pthread_self()) == 0;
}

// References. Streams are held in every thread that transcribes. The table owns its memory by
// itself: hosts may count what they allocate, or replace malloc.

namespace {
// Open addressing, at most half full; it lives as long as the process, as other static objects
// hold something until then.
class HoldTable {
public:
    struct Entry {
        const void* object;  // null in a free place
        unsigned int count;  // 0 in one that is left
    };

    // The entry of `object`, or null; a new one where it is asked for.
    Entry* of(const void* object, bool isNew) {
        if (isNew && 2 * used >= size)
            grow();
        if (size == 0)
            return nullptr;
        unsigned int i = homeOf(object);
        while (places[i].object && places[i].object != object)
            i = (i + 1) & (size - 1);
        if (!places[i].object) {
            if (!isNew)
                return nullptr;
            ++used;
            places[i] = {object, 0};
        }
        return &places[i];
    }

private:
    unsigned int homeOf(const void* object) const {
        const std::uint32_t golden = 2654435769U;  // spreads addresses, whose low bits are alike
        const auto hash = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(object));
        return (hash * golden >> 8) & (size - 1);
    }

    // Those that are held move to a table with room for as many again.
    void grow() {
        Entry* const old = places;
        const unsigned int oldSize = size;
        unsigned int held = 0;
        for (unsigned int i = 0; i < oldSize; ++i)
            held += old[i].count != 0;
        const unsigned int fewest = 1024;
        size = fewest;
        while (size < 8 * held)
            size *= 2;
        void* const block = ::mmap(nullptr, size * sizeof(Entry), PROT_READ | PROT_WRITE,
                                   MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (block == MAP_FAILED)
            fxFatal("out of memory");
        places = static_cast<Entry*>(block);
        used = 0;
        for (unsigned int i = 0; i < oldSize; ++i) {
            if (old[i].count != 0)
                *of(old[i].object, true) = old[i];
        }
        if (old)
            ::munmap(old, oldSize * sizeof(Entry));
    }

    Entry* places = nullptr;
    unsigned int size = 0;  // a power of two
    unsigned int used = 0;
};

HoldTable table;  // constant-initialised: other files' statics hold something before
pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;

class Lock {
public:
    Lock() { ::pthread_mutex_lock(&mutex); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock() { ::pthread_mutex_unlock(&mutex); }
};
}  // namespace

void fxMisuse::holds(const void* object) {
    const Lock lock;
    if (object)
        ++table.of(object, true)->count;
}

void fxMisuse::releases(const void* object) {
    const Lock lock;
    HoldTable::Entry* const entry = object ? table.of(object, false) : nullptr;
    if (entry && entry->count != 0)
        --entry->count;
}

void fxMisuse::forgets(const void* object) {
    const Lock lock;
    if (HoldTable::Entry* const entry = object ? table.of(object, false) : nullptr)
        entry->count = 0;
}

unsigned int fxMisuse::holdersOf(const void* object) {
    const Lock lock;
    const HoldTable::Entry* const entry = table.of(object, false);
    return entry ? entry->count : 0;
}

// What the end of an object leaves.

char fxMisuse::endedText = '\0';

#endif
