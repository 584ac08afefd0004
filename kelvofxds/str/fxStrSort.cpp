// fxStrSort.cpp - sorting the strings of an array by their texts.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxStrSortInternal.h"

namespace {
const unsigned int keyLength = sizeof(std::uint64_t);

// A string, moved byte-wise, and its first bytes behind what all texts begin
// with, as a number that sorts alike; 0 bytes behind the end.
struct Item {
    std::uint64_t key;
    alignas(fxStr) char bytes[sizeof(fxStr)];

    const fxStr& string() const { return *reinterpret_cast<const fxStr*>(bytes); }
    bool endsInKey() const { return (key & 0xFF) == 0; }
};

struct Freed {
    void operator()(void* block) const { std::free(block); }
};

std::uint64_t keyOf(const char* text) {
    std::uint64_t key = 0;
    unsigned int i = 0;
    for (; i < keyLength && text[i] != '\0'; ++i)
        key = key << 8 | static_cast<unsigned char>(text[i]);
    return i == 0 ? key : key << 8 * (keyLength - i);
}

// Length of what all texts begin with.
unsigned int commonBeginning(const fxStr* strings, unsigned int n) {
    const char* first = strings[0].c_str();
    std::size_t length = std::strlen(first);
    for (unsigned int i = 1; i < n && length != 0; ++i) {
        const char* text = strings[i].c_str();
        std::size_t alike = 0;
        while (alike < length && text[alike] == first[alike])
            ++alike;
        length = alike;
    }
    return static_cast<unsigned int>(length);
}

bool areAlike(const fxStr& a, const fxStr& b) {
    return a.length() == b.length() && std::memcmp(a.c_str(), b.c_str(), a.length()) == 0;
}

// Whether the texts ascend. `undecided` becomes true when strcmp takes two of
// them for equal that are not.
bool ascends(const fxStr* strings, unsigned int n, bool& undecided) {
    for (unsigned int i = 1; i < n; ++i) {
        const int order = std::strcmp(strings[i - 1].c_str(), strings[i].c_str());
        if (order > 0)
            return false;
        if (order == 0 && !areAlike(strings[i - 1], strings[i])) {
            undecided = true;
            return false;
        }
    }
    return true;
}
}  // namespace

bool fxSortStrings(void* block, unsigned int n) {
    const fxStr* strings = static_cast<const fxStr*>(block);
    bool undecided = false;
    if (ascends(strings, n, undecided))
        return true;
    if (undecided || n > SIZE_MAX / sizeof(Item))
        return false;
    const std::unique_ptr<Item, Freed> owned(static_cast<Item*>(std::malloc(n * sizeof(Item))));
    Item* items = owned.get();
    if (!items)
        return false;
    const unsigned int shared = commonBeginning(strings, n);
    for (unsigned int i = 0; i < n; ++i) {
        std::memcpy(items[i].bytes, static_cast<const void*>(strings + i), sizeof(fxStr));
        items[i].key = keyOf(strings[i].c_str() + shared);
    }

    const unsigned int decided = shared + keyLength;
    const auto order = [=](const Item& a, const Item& b) {
        if (a.key != b.key)
            return a.key < b.key ? -1 : 1;
        return a.endsInKey()
                   ? 0
                   : std::strcmp(a.string().c_str() + decided, b.string().c_str() + decided);
    };
    std::sort(items, items + n, [=](const Item& a, const Item& b) { return order(a, b) < 0; });
    for (unsigned int i = 1; i < n; ++i) {
        if (order(items[i - 1], items[i]) == 0 &&
            !areAlike(items[i - 1].string(), items[i].string()))
            return false;
    }
    for (unsigned int i = 0; i < n; ++i)
        std::memcpy(static_cast<char*>(block) + i * sizeof(fxStr), items[i].bytes, sizeof(fxStr));
    return true;
}
