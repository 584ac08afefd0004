// fxBinaryReaderInternal.h - what a reader knows of each record number.
#pragma once

#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxObjectTableInternal.h"
#include "kelvofxds/transcribe/fxSourceInternal.h"
#include "kelvofxds/transcribe/fxWordIndexInternal.h"
#include "kelvofxds/transcribe/fxWorkListInternal.h"

/// A numbered record: what it is, and what waits for it. A stream can use any
/// number for anything; a number is only followed to the kind it belongs to.
/// Key and value are the number and, once it is entered, the address, null
/// until the body has been read.
struct fxBinaryReader::Record : fxObjectTable::Entry {
    /// Array blocks come from new[] and are freed with delete[] by the objects
    /// that point to them; string blocks come from malloc and belong to one
    /// fxStr.
    enum Kind : unsigned char { unknown, type, object, arrayBlock, stringBlock };

    void* address() const {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the table holds words.
        return reinterpret_cast<void*>(value);
    }

    /// Whether the member that `item` describes may point to it.
    bool suits(const fxBinaryReaderItem& item) const;

    unsigned int size;    // of a block, in bytes
    unsigned int wanted;  // most bytes that a waiting member expects of a block
    Kind kind;
    bool awaitedByString;  // a string waits for the block
    bool taken;            // a pointer to the block has been stored
};

/// A member that waits for its target, or the place in the list of an item that a
/// host has queued.
struct fxBinaryReader::Work {
    void** field;
    Record* record;  // of the number; null when the item is in `workQueue`
    fxBinaryReaderItem::Target target;
    unsigned int wantedSize;
};

/// Writers count up.
struct fxBinaryReader::Index : fxObjectTable, fxWordIndex<fxBinaryReader::Record, 0> {
    Index(fxBinaryOTDict& dictionary, const fxBinaryReader& reader)
        : fxObjectTable(dictionary), ownClass(reader) {}

    /// As find and findOrAdd. The record that is asked for most is the one that
    /// the next body is awaited for.
    Record* recordOf(unsigned int number) const {
        return awaited && awaited->key == number ? awaited : find(number);
    }
    Record* madeRecordOf(unsigned int number) {
        return awaited && awaited->key == number ? awaited : findOrAdd(number);
    }

    /// Forgets all records.
    void forget() {
        removeAll();
        clear();
        works.clear();
        awaited = nullptr;
        refused = false;
    }

    /// Whether a string's block may be completed by `padding` bytes.
    bool padString(unsigned int padding);
    /// Reduces `padding` to the bytes by which an array's block may be completed.
    void padArray(unsigned int& padding);

    const fxOwnClass ownClass;
    fxWorkList<Work> works;                 // of the class as itself
    bool refused = false;                   // an item that a host queued or popped: the read fails
    Record* awaited = nullptr;              // what readObject looks for; null if nothing
    fxSource source;                        // the stream
    unsigned int stringPadding = 1U << 20;  // bytes that strings may still be given
    unsigned int arrayPadding = 1U << 20;   // bytes that arrays may still be given
};
