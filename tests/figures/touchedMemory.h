// touchedMemory.h - how much memory something writes to.
#pragma once

#include <cstddef>

/// Counts the memory of blocks of the heap that something makes, as far as it is touched: small
/// blocks as a whole with the heap's own words, of large ones the pages that are resident. What is
/// only reserved is not counted, nor are pages that were only read. At most 65,536 blocks.
class TouchedMemory {
public:
    /// Whether it can be known here: a sanitizer's heap touches what it hands out.
    static bool isKnown();
    /// Has the system hand out memory by the small page, in this process.
    static void prepare();
    /// Begins at nothing, whatever there is.
    static void begin();
    /// The most that was there since then, in bytes.
    static std::size_t end();
};
