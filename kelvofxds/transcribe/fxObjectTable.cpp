#include "kelvofxds/transcribe/fxObjectTableInternal.h"

#include <mutex>

#include "kelvofxds/core/fxMemoryInternal.h"

namespace {
// Those that live, the newest first. What writer and reader share has a fixed
// layout and no room for a pointer to them. Separate transcribers may be used by
// separate threads, so it is locked.
fxObjectTable* newest = nullptr;
std::mutex liveTables;
}  // namespace

fxObjectTable::fxObjectTable(fxBinaryOTDict& dictionary)
    : ends{0, 0, &ends},
      last(&ends),
      shown(false),
      table(dictionary),
      older(nullptr),
      place(&newest) {
    const std::lock_guard<std::mutex> lock(liveTables);
    older = newest;
    if (older)
        older->place = &older;
    newest = this;
}

fxObjectTable::~fxObjectTable() {
    const std::lock_guard<std::mutex> lock(liveTables);
    *place = older;
    if (older)
        older->place = place;
}

fxObjectTable* fxObjectTable::of(const fxBinaryOTDict& dictionary) {
    const std::lock_guard<std::mutex> lock(liveTables);
    for (fxObjectTable* t = newest; t; t = t->older) {
        if (&t->table == &dictionary)
            return t;
    }
    return nullptr;
}

void fxObjectTable::removeAll() {
    ends.next = last = &ends;
    table.removeAll();
}

void fxObjectTable::show() {
    if (shown)
        return;
    shown = true;
    for (const Entry* entry = ends.next; entry != &ends; entry = entry->next) {
        if (!enterInDictionary(entry->key, entry->value, true))
            fxOutOfMemory();
    }
}

// A host may have removed what was entered; there, giving it another value is
// adding it.
bool fxObjectTable::enterInDictionary(std::uint32_t key, std::uint32_t value, bool isNew) {
    if (isNew || !table.find(&key))
        return table.addNew(key, value);
    table.addInternal(&key, &value);
    return true;
}
