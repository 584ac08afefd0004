// fxBinaryReader.h - rebuilds object graphs from a tagged byte stream.
#pragma once

#include "kelvofxds/transcribe/fxBinaryTranscriber.h"

class fxBinaryReader;

/// Reads `byteCount` bytes to `destination` and converts them from the
/// writer's byte order. Returns 1 on success.
using fxBinaryConverter = unsigned char (*)(fxBinaryReader& reader, char* destination,
                                            unsigned int byteCount);

/// A pointer member that waits for its target. Made with new.
struct fxBinaryReaderItem {
    /// What the member may point to.
    enum Target { anyTarget, objectTarget, blockTarget, stringTarget };

    void** field;                 ///< The member.
    unsigned int number;          ///< Record number of the target.
    Target target = anyTarget;    ///< Checked against what the number turns out to be.
    unsigned int wantedSize = 0;  ///< Bytes asked for: a string's size, and else only a wish.
};

/// Parses what fxBinaryWriter writes and re-creates the objects by their type
/// records. Made by fxTranscriber::getReader.
///
/// Reading a graph is linear in its size. No bytes whatever make it crash: a
/// stream that ends early gives 0 or null, and so do numbers that name another
/// kind of record than the one expected, abstract types and sizes that cannot
/// be met; most other inconsistencies are fatal, with the messages given here.
/// Memory grows as data arrives. After a null result whatever had been made
/// stays allocated. Objects are patched until readObject returns, so fields
/// that are transcribed must not move before that.
///
/// Deliberate: the writer gives the tags 4 and 11 to 14 one argument of four
/// bytes and the reader takes eight, so graphs with repeated block pointers,
/// object pointers or embedded objects are not read back as written.
class FX_EXPORT fxBinaryReader : public virtual fxBinaryTranscriber {
public:
    /// A reader on `s`, which it holds, positioned behind the header that the
    /// other arguments come from. Fatal:
    /// "fxBinaryReader: unknown short ordering %x",
    /// "fxBinaryReader: unknown long ordering %x",
    /// "fxBinaryReader: unsupported floating point format %s".
    /// Deliberate: the first of these shows the long mark. Floating-point data
    /// is never byte-swapped.
    fxBinaryReader(fxStream* s, short shortMark, long longMark, const char* floatFormat);
    ~fxBinaryReader() override;

    /// Forgets all objects and every member that still waits.
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
    /// Fatal: "XXX bad news!" when the record is no object pointer.
    unsigned char xdr(void* field, fxXDRObj* object, fxTypeObj& type, fxXDRObj* hint,
                      void* extra) override;
    /// Fatal: "XXX bad news!" when the record is no embedded object, "XXX new
    /// base for old base", "XXX old base previously unseen".
    unsigned char xdr(fxTypeObj& type, void* previous, void* address) override;

    /// The next root object of the stream, owned by the caller; null on
    /// failure. `type` is not consulted: the type comes from the stream.
    void* readObject(fxTypeObj& type) override;
    /// Fatal: "tried to invoke fxBinaryReader::writeObject".
    unsigned char writeObject(void* address, fxXDRObj* object) override;
    const char* className() const override;  ///< "fxBinaryReader".

    using fxTranscriber::xdr;

    // The pieces of the above; 1 is success.

    /// Reads the next record's head and the first part of its payload.
    /// Fatal: "unknown type %s", "Whoops!".
    unsigned char fill();
    /// Takes `n` bytes of payload, from as many records as it takes.
    unsigned char readBytes(char* data, unsigned int n);
    /// Appends a name and its NUL to `name`.
    unsigned char readName(fxStackBuffer& name);
    /// Reads a pointer to a block. The block will have the size that the stream
    /// gives. Where `length` is larger, zero bytes follow, as far as the limits
    /// in docs/stream-format.md go; it may be any number, also one that is about
    /// to be read. Only a string's length has to be met.
    /// Fatal: "format error" when the record is none, a null pointer included.
    unsigned char readPrimPointer(void* field, unsigned int length);
    /// Makes the block or object of the current record. Fatal: "XXX version
    /// error handling is missing", "XXX error handling is missing", "XXX
    /// baddest news".
    unsigned char readInstance(void** instance);
    /// The address entered for a record number, or null.
    void* alreadyRead(unsigned long number);
    /// Queues `item`, which the reader then owns. Where memory for that is
    /// refused, the item is deleted and readObject fails.
    void queue(fxBinaryReaderItem* item);
    /// Takes the last item off the queue; null if there is none. The caller
    /// deletes it. Where memory for it is refused, null, and readObject fails.
    fxBinaryReaderItem* pop();

private:
    friend struct fxBinaryReaderLayout;  // tests/transcribe/fxBinaryReader_test.cpp
    struct Record;
    struct Work;
    struct Index;

    void selectConverters(short shortMark, long longMark, const char* floatFormat);
    unsigned char get(char* to, unsigned int n);
    unsigned char fillHead();
    unsigned char skipPayload();
    unsigned char readPayload();
    unsigned int firstPiece() const;
    unsigned char readFields(unsigned int lengthClass);
    unsigned char readType();
    unsigned char readBlock(fxBinaryConverter convert, void** instance);
    unsigned char readObjectBody(void** instance);
    fxBinaryConverter converterOf(unsigned int blockTag) const;
    bool addWork(const Work& work);
    bool takeWork(Work& work);
    bool takeItem(fxBinaryReaderItem& item);
    unsigned char awaitTarget(const fxBinaryReaderItem& item);
    unsigned char store(const fxBinaryReaderItem& item);
    Record* enter(unsigned int number, void* address, unsigned char kind);

    fxBinaryConverter shortsConv;
    fxBinaryConverter longsConv;
    fxBinaryConverter floatsConv;
    fxBinaryConverter doublesConv;
    unsigned int unreadPayload;  // bytes of the record not yet in `buffer`
    Index* index;                // owned; what each record number is
};

/// A converter that copies.
FX_EXPORT unsigned char fxBinaryReader_shorts(fxBinaryReader&, char*, unsigned int);
FX_EXPORT unsigned char fxBinaryReader_longs(fxBinaryReader&, char*, unsigned int);
FX_EXPORT unsigned char fxBinaryReader_floats(fxBinaryReader&, char*, unsigned int);
FX_EXPORT unsigned char fxBinaryReader_doubles(fxBinaryReader&, char*, unsigned int);
/// Swaps the two bytes of every two.
FX_EXPORT unsigned char fxBinaryReader_BS(fxBinaryReader&, char*, unsigned int);
/// Of every four bytes 0 1 2 3 makes 2 3 0 1.
FX_EXPORT unsigned char fxBinaryReader_longsSS(fxBinaryReader&, char*, unsigned int);
/// Of every four bytes 0 1 2 3 makes 3 2 1 0.
FX_EXPORT unsigned char fxBinaryReader_longsBSSS(fxBinaryReader&, char*, unsigned int);
/// Fatal, once the bytes have been read: "fxBinaryReader_floatsVAX: not
/// implemented", both of them.
FX_EXPORT unsigned char fxBinaryReader_floatsVAX(fxBinaryReader&, char*, unsigned int);
FX_EXPORT unsigned char fxBinaryReader_doublesVAX(fxBinaryReader&, char*, unsigned int);
