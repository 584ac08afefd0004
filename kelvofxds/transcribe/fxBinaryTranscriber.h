// fxBinaryTranscriber.h - what the binary writer and reader have in common.
#pragma once

#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/transcribe/fxBinaryOTDict.h"
#include "kelvofxds/transcribe/fxBinaryOTTag.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

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
