// fxBinaryTranscriber.h - what the binary writer and reader have in common.
#pragma once

#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/transcribe/fxBinaryOTDict.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

/// The kinds of records in a binary stream: the low six bits of a head byte.
enum fxBinaryOTTag : unsigned int {
    fxOT_Data = 0,            ///< Data that continues the record before.
    fxOT_Null = 1,            ///< A null pointer.
    fxOT_Type = 2,            ///< A type's number and name.
    fxOT_Block = 3,           ///< Pointer to a block whose body follows later.
    fxOT_OldBlock = 4,        ///< Pointer to a block that has a number.
    fxOT_Bytes = 5,           ///< Body of a block of bytes.
    fxOT_Shorts = 6,          ///< Body of a block of shorts.
    fxOT_Longs = 7,           ///< Body of a block of longs.
    fxOT_Floats = 8,          ///< Body of a block of floats.
    fxOT_Doubles = 9,         ///< Body of a block of doubles.
    fxOT_Object = 10,         ///< Body of an object.
    fxOT_ObjectPointer = 11,  ///< Pointer to an object whose body follows later.
    fxOT_OldObject = 12,      ///< Pointer to an object that has a number.
    fxOT_Embedded = 13,       ///< Embedded object, its contents inline.
    fxOT_OldEmbedded = 14     ///< Embedded object that has a number.
};

/// State shared by the two directions: a record's payload, tag and arguments,
/// the object table and the work list.
class FX_EXPORT fxBinaryTranscriber : public virtual fxTranscriber {
public:
    fxBinaryTranscriber();
    ~fxBinaryTranscriber() override;

    /// The object table. Writing: address to record number; reading: record
    /// number to address. It is there to be looked at: the library's writer and
    /// reader find their way without it, fill it when it is first asked for,
    /// and keep it up from then on. What a host changes in it does not change
    /// what they know. Cost: the first time, an allocation or two an entry.
    fxBinaryOTDict& getTable();

protected:
    friend struct fxBinaryTranscriberLayout;  // tests/transcribe/fxBinaryWriter_test.cpp

    static const unsigned int bufferSize = 512;  // bytes

    char buffer[bufferSize];    // payload of the record
    char* cursor;               // next byte of `buffer` to write or read
    unsigned int capacity;      // bufferSize
    unsigned int payloadCount;  // bytes of `buffer` that hold payload
    fxBinaryOTDict table;       // the object table; see getTable
    unsigned int tag;           // fxBinaryOTTag of the pending or current record
    unsigned int arg1;          // the record's arguments: its number
    unsigned int arg2;          // a type's number
    unsigned int arg3;          // a version
    unsigned int arg4;          // a length in bytes
    const char* typeName;       // of a type record; not owned
    fxVoidPtrArray workQueue;   // owned items of work, last one first; derived classes see all

private:
    friend class fxBinaryWriter;
    friend class fxBinaryReader;

    // Whether so many bytes can be had now.
    static bool hasMemory(unsigned int bytes);
    // Whether another item can be added; false when there is no memory for it,
    // where adding it would end the process.
    bool hasRoomForItem();
    // Adds an item, made with new, to `workQueue`.
    void pushItem(void* item);
    // Takes the last item off it; null if there is none.
    void* popItem();
    // Empties it.
    void freeItems();
};
