#include "tools/fxdump/typeTable.h"

namespace fxdump {

void TypeTable::add(std::uint32_t number, const std::string& name) {
    const bool isNew = names.count(number) == 0;
    if (isNew && numbers.size() == most) {
        names.erase(numbers.front());
        numbers.pop_front();
    }
    names[number] = name;
    if (isNew)
        numbers.push_back(number);
}

std::string TypeTable::nameOf(std::uint32_t number) const {
    const auto found = names.find(number);
    return found == names.end() ? std::string() : found->second;
}

void TypeTable::clear() {
    names.clear();
    numbers.clear();
}

}  // namespace fxdump
