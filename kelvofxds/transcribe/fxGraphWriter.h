// fxGraphWriter.h - writes object graphs so that they come back whole.
#pragma once

#include "kelvofxds/transcribe/fxTranscriber.h"

/// Writes graphs of objects, shared and cyclic, as graph streams, which
/// fxGraphReader reads back whole or not at all: each root ends with a checksum.
///
/// fxTranscriber::changeDefaultWriter(makeGraphWriter) makes getWriter make such
/// writers and write the stream's header; fxSaveFile does everything that a file
/// needs. docs/stream-format.md has the format. Prefer it to fxBinaryWriter,
/// unless a reader of fxBinaryWriter's streams is to read what is written.
///
/// Two pointers to one object of one type lead to one object in the stream. An
/// object and its first member, or a block at an object's address, are two things.
/// What is written for a root is forgotten at its end, so an object may change or
/// go and be written again; see keepIdentity. While a root is written, its
/// objects stay where they are.
///
/// A root is written as a whole: data outside of writeObject is refused, and so is
/// writeObject called by an xdr. When a root fails, lastError() says why. If the
/// stream has some of it by then, nothing more can be written: no reader would get
/// past that.
///
/// Cost: O(1) a pointer, and the bytes. Depth costs no stack.
class FX_EXPORT fxGraphWriter : public fxTranscriber {
public:
    /// A writer on `s`, which it holds. Writes nothing; the stream's header
    /// comes from fxTranscriber::getWriter.
    explicit fxGraphWriter(fxStream* s);
    ~fxGraphWriter() override;

    /// Why the last root failed, in one line; "" if it did not. Valid until the next
    /// one.
    const char* lastError() const;

    /// Whether what a root has is known to the roots after it: what was written is
    /// not written again, and pointers to it lead to what the reader made before.
    /// An object must stay at its address, unchanged, from then on. Off at first;
    /// to be said before the first of the roots that go together.
    void keepIdentity(bool keeps);

    /// Gives the stream what has been written, and an fxStdioStream's file system
    /// what its buffer has. writeObject has given it to the stream already.
    unsigned char flush();

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
    /// Fails for an object of a type that no reader can make: one without a create
    /// function.
    unsigned char xdr(void* field, fxXDRObj* object, fxTypeObj& type, fxXDRObj* hint,
                      void* extra) override;
    unsigned char xdr(fxTypeObj& type, void* previous, void* address) override;
    using fxTranscriber::xdr;
    /// Returns null: a writer does not read.
    void* readObject(fxTypeObj& type) override;
    /// Writes `object` as a root. 0 when it cannot be written, or the stream does
    /// not take it; a stream with a buffer of its own may fail later, see flush.
    unsigned char writeObject(void* address, fxXDRObj* object) override;
    const char* className() const override;

private:
    struct Root;

    Root* root;  // owned
};

/// Makes an fxGraphWriter: for fxTranscriber::changeDefaultWriter.
FX_EXPORT fxTranscriber* makeGraphWriter(fxStream* stream);
