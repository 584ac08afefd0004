#include "kelvofxds/transcribe/fxObjectTableInternal.h"

namespace {
// Those that live, the newest first. What writer and reader share has a fixed
// layout and no room for a pointer to them.
fxObjectTable* newest = nullptr;
}  // namespace

fxObjectTable::fxObjectTable(fxBinaryOTDict& dictionary)
    : ends{0, 0, &ends},
      last(&ends),
      shown(false),
      table(dictionary),
      older(newest),
      place(&newest) {
    if (older)
        older->place = &older;
    newest = this;
}

fxObjectTable::~fxObjectTable() {
    *place = older;
    if (older)
        older->place = place;
}

fxObjectTable* fxObjectTable::of(const fxBinaryOTDict& dictionary) {
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
    for (const Entry* entry = ends.next; entry != &ends; entry = entry->next)
        enterInDictionary(*entry, true);
}

void fxObjectTable::enterInDictionary(const Entry& entry, bool isNew) {
    if (isNew)
        table.addNew(entry.key, entry.value);
    else
        table.addInternal(&entry.key, &entry.value);
}
