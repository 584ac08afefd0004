// fxBinaryReaderInternal.h - what a reader knows of each record number.
#pragma once

#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxObjectTableInternal.h"
#include "kelvofxds/transcribe/fxWordIndexInternal.h"

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

/// Writers count up.
struct fxBinaryReader::Index : fxObjectTable, fxWordIndex<fxBinaryReader::Record, 0> {
    explicit Index(fxBinaryOTDict& dictionary) : fxObjectTable(dictionary) {}

    /// Whether a string's block may be completed by `padding` bytes.
    bool padString(unsigned int padding);
    /// Reduces `padding` to the bytes by which an array's block may be completed.
    void padArray(unsigned int& padding);

    unsigned int stringPadding = 1U << 20;  // bytes that strings may still be given
    unsigned int arrayPadding = 1U << 20;   // bytes that arrays may still be given
};
