// fxBinaryReaderInternal.h - what a reader knows of each record number.
#pragma once

#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxWordIndexInternal.h"

/// A numbered record: what it is, and what waits for it. A stream can use any
/// number for anything; a number is only followed to the kind it belongs to.
struct fxBinaryReader::Record {
    /// Array blocks come from new[] and are freed with delete[] by the objects
    /// that point to them; string blocks come from malloc and belong to one
    /// fxStr.
    enum Kind : unsigned char { unknown, type, object, arrayBlock, stringBlock };

    std::uint32_t key;    // the number
    void* address;        // as in the table; null until the body has been read
    fxDictBucket* entry;  // the table's entry, or null
    unsigned int size;    // of a block, in bytes
    unsigned int wanted;  // most bytes that a waiting member expects of a block
    Kind kind;
    bool awaitedByString;  // a string waits for the block
    bool taken;            // a pointer to the block has been stored
    bool used;
};

struct fxBinaryReader::Index : fxWordIndex<fxBinaryReader::Record> {};
