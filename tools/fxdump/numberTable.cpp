#include "tools/fxdump/numberTable.h"

namespace fxdump {

namespace {
const std::size_t most = std::size_t{1} << 26;  // numbers

// Writers leave few numbers out. Room for others is made only as others pay for it.
const std::size_t spare = 4;
const std::size_t spareAtFirst = 1024;

bool isAwaited(Thing thing) {
    return thing == Thing::awaitedObject || thing == Thing::awaitedBlock;
}
}  // namespace

NumberTable::Entry NumberTable::find(std::uint32_t number) const {
    if (number < dense.size())
        return dense[number];
    const auto found = sparse.find(number);
    return found == sparse.end() ? Entry() : found->second;
}

// Null when there are too many.
NumberTable::Entry* NumberTable::entryOf(std::uint32_t number) {
    if (number < dense.size())
        return &dense[number];
    const auto found = sparse.find(number);
    if (found != sparse.end())
        return &found->second;
    if (count == most)
        return nullptr;
    ++count;
    if (number > spare * count + spareAtFirst)
        return &sparse[number];
    while (dense.size() <= number) {
        const auto moved = sparse.find(static_cast<std::uint32_t>(dense.size()));
        dense.push_back(moved == sparse.end() ? Entry() : moved->second);
        if (moved != sparse.end())
            sparse.erase(moved);
    }
    return &dense[number];
}

bool NumberTable::set(std::uint32_t number, const Entry& entry) {
    Entry* const place = entryOf(number);
    if (!place)
        return false;
    awaitedCount -= isAwaited(place->thing);
    awaitedCount += isAwaited(entry.thing);
    *place = entry;
    return true;
}

void NumberTable::clear() {
    dense.clear();
    sparse.clear();
    count = 0;
    awaitedCount = 0;
}

std::uint32_t NumberTable::anAwaited() const {
    for (std::size_t number = 0; number < dense.size(); ++number) {
        if (isAwaited(dense[number].thing))
            return static_cast<std::uint32_t>(number);
    }
    for (const auto& [number, entry] : sparse) {
        if (isAwaited(entry.thing))
            return number;
    }
    return 0;
}

}  // namespace fxdump
