// fxWorkListInternal.h - what a transcriber has still to do.
#pragma once

#include <cstdlib>
#include <type_traits>

#include "kelvofxds/core/fxTableOfInternal.h"

/// Whether a transcriber is one of the library's own classes as itself, told by
/// its table of virtual operations: while the constructor of its own class runs,
/// an object has another one if it is going to be of a derived class. A member
/// that the constructor makes.
///
/// Only derived classes can see the work list that all inherit. It holds every
/// item for them; without them, records by value do that are cheaper.
class fxOwnClass {
public:
    template <class Transcriber>
    explicit fxOwnClass(const Transcriber& underConstruction)
        : table(fxTableOf(&underConstruction)) {}

    template <class Transcriber>
    bool isOf(const Transcriber& transcriber) const {
        return fxTableOf(&transcriber) == table;
    }

private:
    const void* table;
};

/// A stack of plain records, kept by value in one block from malloc.
template <class Work>
class fxWorkList {
    static_assert(std::is_trivially_copyable_v<Work>, "records move by realloc");

public:
    fxWorkList() : works(nullptr), count(0), capacity(0) {}
    fxWorkList(const fxWorkList&) = delete;
    fxWorkList& operator=(const fxWorkList&) = delete;
    ~fxWorkList() { std::free(works); }

    /// False when there is no memory for it.
    bool push(const Work& work) {
        if (count == capacity && !grow())
            return false;
        works[count++] = work;
        return true;
    }

    /// Takes the last one; false if there is none.
    bool pop(Work& work) {
        if (count == 0)
            return false;
        work = works[--count];
        return true;
    }

    unsigned int length() const { return count; }
    Work& operator[](unsigned int index) { return works[index]; }
    const Work& operator[](unsigned int index) const { return works[index]; }

    void clear() { count = 0; }
    /// Takes all off from `newCount` on.
    void shorten(unsigned int newCount) { count = newCount; }

private:
    static const unsigned int smallest = 64;

    // The list can be as long as the graph, so it grows by doubling.
    bool grow() {
        const unsigned int grown = capacity != 0 ? capacity * 2 : smallest;
        // NOLINTNEXTLINE(bugprone-sizeof-expression): records may be pointers.
        void* block = std::realloc(works, grown * sizeof(Work));
        if (!block)
            return false;
        works = static_cast<Work*>(block);
        capacity = grown;
        return true;
    }

    Work* works;            // owned
    unsigned int count;     // records
    unsigned int capacity;  // records that `works` has room for
};
