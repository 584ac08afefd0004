// numberTable.h - what the numbers of a stream belong to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <unordered_map>

namespace fxdump {

/// What has a number, and how far it has come.
enum class Thing : unsigned char {
    nothing,
    type,
    awaitedObject,  ///< A pointer has named it, and its body has not come.
    object,
    embedded,
    awaitedBlock,
    block
};

/// What is known of each number. Memory stays in proportion to the numbers that are
/// entered, whichever they are.
class NumberTable {
public:
    struct Entry {
        Thing thing = Thing::nothing;
        std::uint32_t extra = 0;  ///< Of blocks the size; of types the version.
    };

    /// What `number` belongs to.
    Entry find(std::uint32_t number) const;
    /// Says what it belongs to; false when there are too many numbers.
    bool set(std::uint32_t number, const Entry& entry);
    void clear();

    /// How many are awaited.
    std::size_t awaited() const { return awaitedCount; }
    /// One that is awaited. Requires: there is one.
    std::uint32_t anAwaited() const;

private:
    Entry* entryOf(std::uint32_t number);

    std::deque<Entry> dense;                          // by number
    std::unordered_map<std::uint32_t, Entry> sparse;  // those far beyond
    std::size_t count = 0;                            // of numbers that have been entered
    std::size_t awaitedCount = 0;
};

}  // namespace fxdump
