// typeTable.h - which names the types of a stream have.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <unordered_map>

namespace fxdump {

/// The names of the types met last, by number: as many as fit into memory that no
/// stream makes grow. Nobody has written a program with that many types; but
/// standard streams may define theirs again for each root.
class TypeTable {
public:
    void add(std::uint32_t number, const std::string& name);
    /// Empty if the name is not known.
    std::string nameOf(std::uint32_t number) const;
    void clear();

private:
    static const std::size_t most = 4096;

    std::unordered_map<std::uint32_t, std::string> names;
    std::deque<std::uint32_t> numbers;  // those of `names`, the oldest first
};

}  // namespace fxdump
