// fxTranscriber.h - the interface through which objects are written and read.
#pragma once

#include "kelvofxds/core/fxRCObj.h"

class fxStackBuffer;
class fxStr;
class fxStream;
class fxTypeObj;
class fxVoidPtrDict;
class fxXDRObj;

/// Walks the contents of an object, writing them or filling them in.
///
/// A class describes its contents once, in xdr(fxTranscriber&), as a sequence
/// of calls made here; the same sequence writes the object on a writing
/// transcriber and fills it in on a reading one. All calls return 1 on
/// success and 0 on failure. A transcriber holds its stream by the stream's
/// reference count: whoever goes on using the stream keeps a count of his own.
/// Writers are made by getWriter and readers by getReader; their caller
/// deletes them.
class FX_EXPORT fxTranscriber : public fxRCObj {
public:
    fxTranscriber();
    fxTranscriber(const fxTranscriber&) = delete;
    fxTranscriber& operator=(const fxTranscriber&) = delete;
    /// Releases the stream.
    ~fxTranscriber() override;

    /// Forgets every object seen so far.
    virtual void reset() = 0;

    /// `n` elements in place.
    virtual unsigned char xdr(char* elements, unsigned int n) = 0;
    virtual unsigned char xdr(unsigned char* elements, unsigned int n) = 0;
    virtual unsigned char xdr(short* elements, unsigned int n) = 0;
    virtual unsigned char xdr(unsigned short* elements, unsigned int n) = 0;
    virtual unsigned char xdr(long* elements, unsigned int n) = 0;
    virtual unsigned char xdr(unsigned long* elements, unsigned int n) = 0;
    virtual unsigned char xdr(float* elements, unsigned int n) = 0;
    virtual unsigned char xdr(double* elements, unsigned int n) = 0;
    virtual unsigned char xdr(fxStr* strings, unsigned int n) = 0;

    /// A pointer to a block of `n` elements. A block is written once, however
    /// many pointers lead to it. While reading, `*block` is set once the block
    /// has arrived, before readObject returns; it then belongs to the object,
    /// which frees it with delete[]. It is as long as the stream says, which may
    /// be less than `n` where the stream is not to be trusted; typed arrays and
    /// strings know their own length.
    virtual unsigned char xdr(char** block, unsigned int n) = 0;
    virtual unsigned char xdr(unsigned char** block, unsigned int n) = 0;
    virtual unsigned char xdr(short** block, unsigned int n) = 0;
    virtual unsigned char xdr(unsigned short** block, unsigned int n) = 0;
    virtual unsigned char xdr(long** block, unsigned int n) = 0;
    virtual unsigned char xdr(unsigned long** block, unsigned int n) = 0;
    virtual unsigned char xdr(float** block, unsigned int n) = 0;
    virtual unsigned char xdr(double** block, unsigned int n) = 0;

    /// A pointer to a NUL-terminated text; else as above.
    virtual unsigned char xdr(char** text) = 0;
    virtual unsigned char xdr(unsigned char** text) = 0;

    /// A pointer member to an object. `field` is the member's address, and
    /// `object` what it points to, from which a writer takes the type. While
    /// reading, the member is set as for blocks.
    ///
    /// The rest is for readers that need more than their stream says, such as
    /// one of the host's whose streams have no types: `type` is what the member
    /// is declared to point to, `hint` an object that helps to find or make the
    /// target, usually the one that has the member, and `extra` whatever class
    /// and reader have agreed upon. The library's own transcribers look at none
    /// of the three; null will do for the last two.
    virtual unsigned char xdr(void* field, fxXDRObj* object, fxTypeObj& type, fxXDRObj* hint,
                              void* extra) = 0;

    /// An object of type `type` embedded in another at `address`, or a base
    /// class's part of it. `previous` is the address of what the caller has
    /// transcribed already and need not see again: where that is `address`
    /// itself, as for a base whose part is empty, nothing is transcribed. A
    /// part that is to be transcribed has null here.
    virtual unsigned char xdr(fxTypeObj& type, void* previous, void* address) = 0;

    /// Reads an object and all that it leads to; null on failure.
    virtual void* readObject(fxTypeObj& type) = 0;

    /// Writes `object`, whose most derived address is `address`, and all that
    /// it leads to.
    virtual unsigned char writeObject(void* address, fxXDRObj* object) = 0;

    /// The class's name, written into the stream by getWriter.
    virtual const char* className() const = 0;

    /// Says whether the pointer that is handed over next, by xdr(char**, n), is
    /// a string's to its own buffer; fxStr says so, reading and writing. What a
    /// reader stores there has to come from malloc, with n bytes, and is that
    /// string's alone, whereas other blocks come from new[]. Without a size, in
    /// xdr(char**) or with n 0, reading such a pointer fails. A transcriber that
    /// forwards to another one passes it on before each such call:
    /// inner.markStringBuffer(isStringBuffer()).
    void markStringBuffer(bool isOne) { stringBuffer = isOne; }
    /// Whether the pointer that is being handed over is a string's to its own
    /// buffer. Ask inside xdr(char**, n).
    bool isStringBuffer() const { return stringBuffer != 0; }

    /// The version of the type whose contents are being transcribed, for xdr
    /// operations that tell apart what older streams have: `if (t.objectVersion()
    /// >= 2) ok = ok && t.xdr(&added, 1);`. Reading a graph stream it is what the
    /// stream says, on every other transcriber the class's own. A base class or an
    /// embedded object has its own if it is transcribed by xdr(type, null, address);
    /// a base's xdr called as a function sees the one of the derived class.
    /// Outside an object, and on a host's own transcriber with a class that does
    /// not define its xdr by FX_DEFINE_XDR, it is the greatest number.
    unsigned int objectVersion() const;
    /// Whether an array writes the elements of its whole capacity, as the format
    /// of fxBinaryWriter has it, or those in use only, as graph streams have it.
    bool transcribesSpareElements() const { return (traits & ofGraphs) == 0; }
    /// Says whether the object pointer that is handed over next is an fxRef's, and
    /// is to be counted when it is set; fxRef says so. Only fxGraphReader listens.
    void markCounted(bool isOne) {
        traits = static_cast<unsigned char>(isOne ? traits | counted : traits & ~counted);
    }
    /// Whether the object pointer that is being handed over is an fxRef's.
    bool isCounted() const { return (traits & counted) != 0; }

    /// Gives `block`, from malloc, to a reader that releases what a failed read has
    /// made, for memory that an xdr has begun to fill and cannot keep. Returns 0
    /// where the caller still has it: only fxGraphReader takes it.
    unsigned char freeOnFailure(void* block);

    /// int is transcribed as long, which has the same size.
    virtual unsigned char xdr(int* elements, unsigned int n);
    virtual unsigned char xdr(unsigned int* elements, unsigned int n);
    virtual unsigned char xdr(int** block, unsigned int n);
    virtual unsigned char xdr(unsigned int** block, unsigned int n);

    /// 1 for a reading transcriber, 0 for a writing one.
    unsigned char isReading() const { return reading; }
    /// The stream transcribed to or from; null if none. Held, not given away.
    fxStream* getStream() const { return stream; }

    // The factory.

    /// Makes a writer; null when it cannot.
    using WriterFactory = fxTranscriber* (*)(fxStream* stream);
    /// Makes a reader from what a stream's header says; null when it cannot.
    using ReaderFactory = fxTranscriber* (*)(fxStream* stream, short shortMark, long longMark,
                                             const char* floatFormat);

    /// A new fxBinaryWriter on `stream`.
    static fxTranscriber* makeDefaultWriter(fxStream* stream);
    /// Makes getWriter use `factory`; null is ignored.
    static void changeDefaultWriter(fxTranscriber* (*factory)(fxStream*));
    /// Makes getWriter use makeDefaultWriter again.
    static void resetToDefaultWriter();
    /// Makes getReader use `factory` for streams that a transcriber called
    /// `name` wrote; replaces an earlier one.
    static void addTranscriber(const char* name,
                               fxTranscriber* (*factory)(fxStream*, short, long, const char*));

    /// Makes a writer on `stream` and writes the stream's header. Null when
    /// the factory makes none or the header cannot be written; the writer is
    /// destroyed then, and the stream with it if nobody else holds it.
    static fxTranscriber* getWriter(fxStream* stream);

    /// Reads the header of `stream` and makes the reader it asks for. Null
    /// when the header is cut short, or when no reader was ever registered. A
    /// name that has no reader is fatal: "Unknown transcriber type \"%s\"".
    static fxTranscriber* getReader(fxStream* stream);

    static fxVoidPtrDict* readers;                   ///< Name to ReaderFactory; null at first.
    static fxTranscriber* (*makeWriter)(fxStream*);  ///< What getWriter calls.

protected:
    friend struct fxTranscriberLayout;  // tests/transcribe/fxTranscriber_test.cpp

    /// Takes `s` as the stream and holds it.
    void holdStream(fxStream* s);

    unsigned char reading;  // 1 while reading

private:
    friend struct fxContents;  // fxContentsInternal.h

    static const unsigned char tellsVersions = 1;  // bits of `traits`
    static const unsigned char ofGraphs = 2;
    static const unsigned char counted = 4;

    unsigned char stringBuffer;  // 1 while a string hands over its own buffer pointer
    unsigned char traits;        // what it is, and is told
    unsigned char version;       // of the contents, + 1; 0 if unknown, 255 if it is greater

protected:
    fxStream* stream;  // held, or null
};

/// The reader of streams that fxBinaryWriter wrote, as registered under that
/// name.
FX_EXPORT fxTranscriber* makeBinaryReader(fxStream* stream, short shortMark, long longMark,
                                          const char* floatFormat);

/// Calls contents(object, t), which transcribes an object of `type`, in such a
/// way that t.objectVersion() is right. For the static xdr of a class, and so for
/// FX_DEFINE_XDR.
FX_EXPORT unsigned char fxXdrContents(fxTypeObj& type, void* object, fxTranscriber& t,
                                      unsigned char (*contents)(void*, fxTranscriber&));

/// Appends the bytes of `stream` up to and including a NUL to `buffer`.
/// Returns 0 when a read fails before that; what was read stays appended.
FX_EXPORT unsigned char readNullTerminatedString(fxStream* stream, fxStackBuffer& buffer);
