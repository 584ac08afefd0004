// scenarios.h - what hosts do while memory is refused.
#pragma once

#include <cstdlib>
#include <new>
#include <vector>

#include "kelvofxds/kelvofxds.h"

/// Something a host does. The process may end with "out of memory", or with `message`.
struct Scenario {
    const char* name;
    void (*run)();
    const char* message;  ///< Of its end where that is another; "" of an end without a word.
};
const char usual[] = "out of memory\n";

using Scenarios = std::vector<Scenario>;
Scenarios ofTexts();
Scenarios ofContainers();
Scenarios ofObjects();
Scenarios ofStreams();
Scenarios ofGraphs();

/// Makes what scenarios need, before anything is refused.
void prepareTexts();
void prepareStreams();
void prepareGraphs();

/// Whether memory is refused at all; see main.cpp.
extern bool isArmed;

/// What the host allocates itself is not refused while one of these is there.
struct OfTheHost {
    OfTheHost() : was(isArmed) { isArmed = false; }
    OfTheHost(const OfTheHost&) = delete;
    OfTheHost& operator=(const OfTheHost&) = delete;
    ~OfTheHost() { isArmed = was; }
    bool was;
};

/// A new object of the host's.
template <class Class, class... Arguments>
Class* made(Arguments... arguments) {
    void* block;
    {
        const OfTheHost own;
        block = ::operator new(sizeof(Class));
    }
    return ::new (block) Class(arguments...);
}

const char longText[] =
    "a text that is so long that nothing which keeps short ones by itself can keep it, and longer";

inline void fillWords(fxStrStrDictionary& words, int n = 60) {
    for (int i = 0; i < n; ++i)
        words.add(fxStr(i, "key %d"), longText);
}
inline void fillSet(fxStrSet& set, int n = 60) {
    for (int i = 0; i < n; ++i)
        set.add(fxStr(i, "key %d"));
}
