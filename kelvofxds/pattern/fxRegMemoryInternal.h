// fxRegMemoryInternal.h - what a search remembers so as not to try it again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "kelvofxds/pattern/fxRegProgramInternal.h"

/// The pairs of a choice node and a position from which the rest of a match has
/// failed, or is being tried. Failure depends on nothing else, so it holds for
/// all ways to get there and for all places where the match may begin. Nothing
/// is remembered until start.
///
/// Takes a bit for every position and choice node met, whatever damage the
/// program has.
class fxRegMemory {
public:
    fxRegMemory() : rows(nullptr), used(0), rowSize(0) {}
    fxRegMemory(const fxRegMemory&) = delete;
    fxRegMemory& operator=(const fxRegMemory&) = delete;
    ~fxRegMemory();

    bool isOn() const { return rows != nullptr; }

    /// Begins to remember, for a subject of `length` bytes. Without memory for
    /// that it stays off, and a search may take long.
    void start(std::size_t length);

    /// Whether the pair is known; it is from now on.
    bool meet(const char* node, const char* program, std::size_t position) {
        const std::size_t offset = static_cast<std::size_t>(node - program);
        std::uint32_t* row = rows[offset];
        if (!row && !(row = addRow(offset)))
            return false;
        std::uint32_t& word = row[position / wordBits];
        const std::uint32_t bit = std::uint32_t(1) << (position % wordBits);
        const bool known = (word & bit) != 0;
        word |= bit;
        return known;
    }

private:
    static const unsigned int wordBits = 32;

    std::uint32_t* addRow(std::size_t offset);

    std::uint32_t** rows;  // owned; by a node's offset, a bit for each position, or null
    std::size_t used;      // entries of `rows` that can have a row
    std::size_t rowSize;   // words
};
