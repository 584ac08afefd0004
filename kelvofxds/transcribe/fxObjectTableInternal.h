// fxObjectTableInternal.h - what a writer or reader has entered in its object table.
#pragma once

#include <cstdint>

#include "kelvofxds/transcribe/fxBinaryOTDict.h"

/// The entries of an object table, in the order in which they were entered.
///
/// The dictionary that a transcriber shows has few buckets and long chains,
/// because its shape is part of the library's behaviour. Entries are therefore
/// owned and found by the index that a subclass is, see fxWordIndex, and the
/// dictionary gets entries of its own once somebody asks for it: those that
/// there are by then, in order, and from then on each at once. What the host
/// changes in it changes nothing here. Entering is O(1); while the dictionary
/// is shown, giving a known key another value is a look-up in it.
class fxObjectTable {
public:
    struct Entry {
        std::uint32_t key;
        std::uint32_t value;
        Entry* next;  // the one entered after it; null until it is entered

        bool isEntered() const { return next != nullptr; }
    };

    /// Entries that `dictionary` can be asked for, which outlives them.
    explicit fxObjectTable(fxBinaryOTDict& dictionary);
    fxObjectTable(const fxObjectTable&) = delete;
    fxObjectTable& operator=(const fxObjectTable&) = delete;
    ~fxObjectTable();

    /// Gives `entry` a value and enters it unless it is. It stays the index's
    /// and where it is until all are removed. False, and nothing has changed,
    /// when the dictionary is shown and there is no memory for it there.
    [[nodiscard]] bool enter(Entry& entry, std::uint32_t value) {
        const bool isNew = !entry.isEntered();
        if (shown && !enterInDictionary(entry.key, value, isNew))
            return false;
        entry.value = value;
        if (isNew) {
            last->next = &entry;
            last = &entry;
            entry.next = &ends;
        }
        return true;
    }

    /// Removes all entries; iterators of the dictionary come to their end.
    void removeAll();

    /// Fills the dictionary unless it is filled.
    void show();

    /// The entries that a writer's or reader's dictionary shows; null for any
    /// other dictionary. O(writers and readers).
    static fxObjectTable* of(const fxBinaryOTDict& dictionary);

private:
    bool enterInDictionary(std::uint32_t key, std::uint32_t value, bool isNew);

    Entry ends;   // its `next` is the first entry; the last one's is its address
    Entry* last;  // the entry entered last, or &ends
    bool shown;   // the dictionary is filled
    fxBinaryOTDict& table;
    fxObjectTable* older;   // among those that live
    fxObjectTable** place;  // the pointer to this one
};
