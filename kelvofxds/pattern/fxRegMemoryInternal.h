// fxRegMemoryInternal.h - what a search remembers so as not to try it again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// The pairs of a choice node and a position from which the rest of a match has
/// failed, or is being tried. Failure depends on nothing else, so it holds for
/// all ways to get there and for all places where the match may begin. Nothing
/// is remembered until start.
///
/// Takes a bit for every position and choice node met, whatever damage the
/// program has.
class fxRegMemory {
public:
    fxRegMemory() : rows(nullptr), count(0), rowSize(0) {}
    fxRegMemory(const fxRegMemory&) = delete;
    fxRegMemory& operator=(const fxRegMemory&) = delete;
    ~fxRegMemory() {
        if (rows)
            release();
    }

    bool isOn() const { return rows != nullptr; }

    /// Begins to remember, for `nodes` nodes and a subject of `length` bytes.
    /// Without memory for that it stays off, and a search may take long.
    void start(unsigned int nodes, std::size_t length);

    /// Whether the pair is known; it is from now on.
    bool meet(unsigned int node, std::size_t position) {
        std::uint32_t* row = rows[node];
        if (!row && !(row = addRow(node)))
            return false;
        std::uint32_t& word = row[position / wordBits];
        const std::uint32_t bit = std::uint32_t(1) << (position % wordBits);
        const bool known = (word & bit) != 0;
        word |= bit;
        return known;
    }

private:
    static const unsigned int wordBits = 32;

    void release();
    std::uint32_t* addRow(unsigned int node);

    std::uint32_t** rows;  // owned; by node, a bit for each position, or null
    unsigned int count;    // of `rows`
    std::size_t rowSize;   // words
};
