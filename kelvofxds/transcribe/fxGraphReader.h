// fxGraphReader.h - reads object graphs back, whole or not at all.
#pragma once

#include "kelvofxds/transcribe/fxTranscriber.h"

class fxXDRObj;

/// Reads graph streams, which fxGraphWriter writes, and by forStandardStreams
/// those of fxBinaryWriter.
///
/// Whatever the bytes are, readObject returns the whole root, or null, and then
/// lastError() says what is wrong and where. It never ends the process, and nothing
/// of a failed read is left: the objects it made are ended by the destroy functions
/// of their records, its blocks are freed. Memory stays in proportion to the bytes
/// read; setLimits bounds both.
///
/// Pointer members are set when the whole root has been read and its checksum is
/// right; until then they are null. So the condition on a class: its create
/// function leaves its pointers to objects and blocks null, and memory that its
/// xdr makes for such pointers is null, too. What pointers lead to belongs to the
/// class, as it says; they do not count what they point to. An fxRef does. Blocks
/// come from new[].
///
/// A type named in the stream is found by fxTypeObj::findType, but for the
/// containers' generic names ("ARRAY", "DICT", "SET"), and all that are shared:
/// where the record that the pointer's owner passes, or readObject's for the root,
/// has the name, it is the one. That an object below the root is of the class that
/// its pointer's owner expects is looked at for fxRef and fxXdrPointer alone.
///
/// Cost: linear in the bytes. Depth costs no stack.
class FX_EXPORT fxGraphReader : public fxTranscriber {
public:
    /// A reader on `s`, which it holds, behind its header, which has said the
    /// rest. With marks or a format that are none of the known ones, each read
    /// fails.
    fxGraphReader(fxStream* s, short shortMark, long longMark, const char* floatFormat);
    ~fxGraphReader() override;

    /// A reader of what fxBinaryWriter writes: references are resolved whenever
    /// they arrive, shared and cyclic. Such streams have no checksum, and what is
    /// lost in them stays lost; see docs/graph-streams.md. It has the form that
    /// addTranscriber takes. Null when there is no memory.
    static fxTranscriber* forStandardStreams(fxStream* stream, short shortMark, long longMark,
                                             const char* floatFormat);

    /// Why the last readObject returned null, in one line such as
    /// `offset 1234, record 57: type "Book" is not registered`; else "". The offset
    /// is that of the record, in bytes from the beginning of the header; records
    /// are counted from 1. Valid until the next read.
    const char* lastError() const;
    /// 1 when the stream has ended where a root could have begun: null was no
    /// failure then, though lastError() says that it is the end.
    unsigned char atEnd() const;

    /// Bounds what one root may have: objects, embedded ones and blocks included,
    /// and bytes in the stream. 0 is no limit, as it is at first.
    void setLimits(unsigned int objects, unsigned int bytes);

    /// Whether the stream has one root, an fxXDRObj, and nothing else, as files have
    /// that fxLoadFile loads: readObject then fails for a string, and where the stream
    /// goes on behind the root. Off at first.
    void expectOneRoot(bool isOnly);

    /// Forgets all objects.
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
    /// Fails, here and below, where the stream's block has less than `n` elements.
    unsigned char xdr(char** block, unsigned int n) override;
    unsigned char xdr(unsigned char** block, unsigned int n) override;
    unsigned char xdr(short** block, unsigned int n) override;
    unsigned char xdr(unsigned short** block, unsigned int n) override;
    unsigned char xdr(long** block, unsigned int n) override;
    unsigned char xdr(unsigned long** block, unsigned int n) override;
    unsigned char xdr(float** block, unsigned int n) override;
    unsigned char xdr(double** block, unsigned int n) override;
    /// Fails where the block has no NUL at its end.
    unsigned char xdr(char** text) override;
    unsigned char xdr(unsigned char** text) override;
    unsigned char xdr(void* field, fxXDRObj* object, fxTypeObj& type, fxXDRObj* hint,
                      void* extra) override;
    unsigned char xdr(fxTypeObj& type, void* previous, void* address) override;
    using fxTranscriber::xdr;
    /// The next root, if it is of `type`, and all that it leads to; the caller's
    /// from then on. fxXDRObj_type takes any root. Null on failure; the stream
    /// cannot be read on then.
    void* readObject(fxTypeObj& type) override;
    /// Returns 0: a reader does not write.
    unsigned char writeObject(void* address, fxXDRObj* object) override;
    const char* className() const override;

    /// `t`, if it is such a reader, else null.
    static fxGraphReader* of(fxTranscriber& t);
    /// Lets isRight(object) decide whether the target of the object pointer that
    /// is handed over next is of the right class; if it is not, the read fails.
    void checkNext(bool (*isRight)(fxXDRObj* object));
    /// Fails the read, for the reason that the format and its arguments give, if
    /// nothing has failed it before; returns 0, for an xdr to return.
    unsigned char fail(const char* format, ...) __attribute__((format(printf, 2, 3)));

private:
    friend class fxTranscriber;
    friend fxTranscriber* makeGraphReader(fxStream* stream, short shortMark, long longMark,
                                          const char* floatFormat);
    struct Root;

    fxGraphReader(Root* owned, fxStream* s, short shortMark, long longMark,
                  const char* floatFormat);
    static fxGraphReader* make(fxStream* stream, short shortMark, long longMark,
                               const char* floatFormat);
    unsigned char takeCharge(void* block);

    Root* root;  // owned
};

/// Makes an fxGraphReader: registered for streams that fxGraphWriter wrote. Null
/// when there is no memory.
FX_EXPORT fxTranscriber* makeGraphReader(fxStream* stream, short shortMark, long longMark,
                                         const char* floatFormat);
