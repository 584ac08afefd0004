// fxRegMemoryInternal.h - what a search remembers so as not to try it again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "kelvofxds/pattern/fxRegExpInternal.h"

/// The pairs of a choice node and a position from which the rest of a match has
/// failed, or is being tried. Failure depends on nothing else, so it holds for
/// all ways to get there and for all places where the match may begin. Nothing
/// is remembered until start.
///
/// Takes a bit for every choice node and position, in pages that are only real
/// once they are written to.
class fxRegMemory {
public:
    fxRegMemory() : rows(nullptr), bits(nullptr), rowSize(0) {}
    fxRegMemory(const fxRegMemory&) = delete;
    fxRegMemory& operator=(const fxRegMemory&) = delete;
    ~fxRegMemory() {
        std::free(rows);
        std::free(bits);
    }

    bool isOn() const { return bits != nullptr; }

    /// Begins to remember, for a program and a subject of `length` bytes.
    /// Without memory for that it stays off, and a search may take long.
    void start(const char* program, std::size_t length);

    /// Whether the pair is known; it is from now on.
    bool meet(const char* node, const char* program, std::size_t position) {
        std::uint32_t& word = bits[rows[node - program] * rowSize + position / wordBits];
        const std::uint32_t bit = std::uint32_t(1) << (position % wordBits);
        const bool known = (word & bit) != 0;
        word |= bit;
        return known;
    }

private:
    static const unsigned int wordBits = 32;

    std::uint16_t* rows;  // owned; by a node's offset, its row in `bits`
    std::uint32_t* bits;  // owned; a bit for each position, 0 to the length
    std::size_t rowSize;  // words
};
