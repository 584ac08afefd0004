// fxBinaryWriter.h - writes object graphs as a tagged byte stream.
#pragma once

#include "kelvofxds/transcribe/fxBinaryTranscriber.h"

namespace fxBinaryFormat {
struct Record;
}

/// One queued piece of a writer's work. Made with new.
struct fxBinaryWriterItem {
    unsigned int kind;      ///< 0 an object, 1 a block.
    void* address;          ///< Of the object, or of the block's first byte.
    unsigned int extra;     ///< Kind 0: the fxTypeObj's address; kind 1: length in bytes.
    unsigned int blockTag;  ///< Kind 1: the tag of the body, fxOT_Bytes to fxOT_Doubles.
};

/// Writes every object and block of a graph once, as records on a byte stream,
/// and refers to it by its record number afterwards.
///
/// The format is described in docs/stream-format.md. Data goes through a
/// 512-byte buffer; writing a graph is linear in its size. An object must stay
/// at its address until the writer is reset or destroyed: an address seen
/// before counts as the same object. Destruction does not flush; data that was
/// given to a scalar operation outside writeObject is lost without flush().
/// An xdr operation must not call writeObject on the same writer.
///
/// An fxStdioStream, but none of a class derived from it, gets what writeObject
/// writes in pieces of many records, the last one before writeObject returns.
/// What an xdr operation puts into the stream itself goes behind what is
/// written by then; one that uses the stream's file calls flush before. What the
/// stream does not take stays: flush and the next object begin with it, and fail
/// as long as it is not taken.
class FX_EXPORT fxBinaryWriter : public virtual fxBinaryTranscriber {
public:
    /// A writer on `s`, which it holds. Writes nothing; the stream's header
    /// comes from fxTranscriber::getWriter.
    explicit fxBinaryWriter(fxStream* s);
    ~fxBinaryWriter() override;

    /// Forgets all objects and queued work.
    /// Deliberate: numbers go on, so they stay unique; the null address is not
    /// entered again; pending data and the pending tag stay.
    void reset() override;

    unsigned char xdr(char* elements, unsigned int n) override;
    unsigned char xdr(unsigned char* elements, unsigned int n) override;
    unsigned char xdr(short* elements, unsigned int n) override;
    unsigned char xdr(unsigned short* elements, unsigned int n) override;
    unsigned char xdr(long* elements, unsigned int n) override;
    unsigned char xdr(unsigned long* elements, unsigned int n) override;
    unsigned char xdr(float* elements, unsigned int n) override;
    unsigned char xdr(double* elements, unsigned int n) override;
    unsigned char xdr(fxStr* strings, unsigned int n) override;
    unsigned char xdr(char** block, unsigned int n) override;
    unsigned char xdr(unsigned char** block, unsigned int n) override;
    unsigned char xdr(short** block, unsigned int n) override;
    unsigned char xdr(unsigned short** block, unsigned int n) override;
    unsigned char xdr(long** block, unsigned int n) override;
    unsigned char xdr(unsigned long** block, unsigned int n) override;
    unsigned char xdr(float** block, unsigned int n) override;
    unsigned char xdr(double** block, unsigned int n) override;
    unsigned char xdr(char** text) override;
    unsigned char xdr(unsigned char** text) override;
    unsigned char xdr(void* field, fxXDRObj* object, fxTypeObj& type, fxXDRObj* hint,
                      void* extra) override;
    unsigned char xdr(fxTypeObj& type, void* previous, void* address) override;

    /// Fatal: "tried to invoke fxBinaryWriter::readObject".
    void* readObject(fxTypeObj& type) override;
    unsigned char writeObject(void* address, fxXDRObj* object) override;
    const char* className() const override;  ///< "fxBinaryWriter".

    using fxTranscriber::xdr;

    // The pieces of the above. Every flag returned is 1 for success; failure
    // means that the stream failed.

    /// Writes the pending record, and sees to it that the stream has got it and
    /// all before it. A pending tag of 15 or more is fatal: "Whoops!".
    unsigned char flush();
    /// Leaves a null-pointer record pending.
    unsigned char writeNullPointer();
    /// Adds `n` bytes to the pending record's payload, in as many records as
    /// they take.
    unsigned char writeBytes(char* data, unsigned int n);
    /// Sets `*number` to the type's number; a type seen for the first time is
    /// defined in a record of its own.
    /// Deliberate: the version in object records is that of the type defined
    /// last.
    unsigned char writeType(fxTypeObj& type, unsigned long* number);
    /// Writes a pointer to the block of `length` bytes at `address`, whose
    /// body will have the tag `blockTag`.
    unsigned char writePrimPointer(void* address, unsigned int length, unsigned int blockTag);
    /// Gives `address` the next number and returns that.
    unsigned long recordIdForAddress(void* address);
    /// The number of `address`, or 0.
    unsigned long alreadyWritten(void* address);
    /// Queues `item`, which the writer then owns, gives its address the next
    /// number and returns that.
    unsigned long queue(fxBinaryWriterItem* item);
    /// Takes the last item off the queue; null if there is none. The caller
    /// deletes it.
    fxBinaryWriterItem* pop();

private:
    friend struct fxBinaryWriterLayout;  // tests/transcribe/fxBinaryWriter_test.cpp
    struct Index;
    struct Work;

    unsigned char writePending();
    unsigned char writePendingWith(const char* payload);
    char* putFields(char* at, const fxBinaryFormat::Record& record) const;
    unsigned char putRecord(const fxBinaryFormat::Record& record, const char* text,
                            const char* payload);
    unsigned char collectRecord(const fxBinaryFormat::Record& record, const char* text,
                                const char* payload);
    unsigned char writeInPlace(const char* data, unsigned int n);
    unsigned char writeBlock(char* data, unsigned int n);
    unsigned char writeItem(const fxBinaryWriterItem& item, unsigned long number);
    bool takeItem(fxBinaryWriterItem& item, unsigned long& number);
    void addWork(const Work& work);
    bool takeWork(Work& work);
    void setPending(fxBinaryOTTag pendingTag, unsigned long number);

    unsigned int nextId;  // the next record number
    Index* index;         // owned; the number of each address
};
