// fxStdioStream.h - a byte stream over the system's standard I/O.
#pragma once

#include <cstdio>

#include "kelvofxds/transcribe/fxStream.h"

/// The library's own access to `fp`; see fxStdioStreamInternal.h.
std::FILE* fxOwnFile(const fxStream* stream);

/// Reads or writes a file, a descriptor or an open standard I/O stream, which
/// it owns from then on and closes when destroyed.
///
/// Buffering is the standard I/O stream's, whose lock is not taken: use the
/// stream from one thread. A stream that could not be opened has its error
/// flag set, and every get and put on it fails. Between reading and writing on
/// one stream the C rules hold: the caller flushes or seeks.
///
/// A put that returned 1 may be lost later. What is put waits in the buffer, so a
/// full disk shows only when that goes to the system: in a later put, in flush()
/// or in close(); some file systems tell it in close() alone. The destructor has
/// nobody to tell. So whoever writes holds the stream and closes it himself:
///
///     fxStdioStream* file = fxStdioStream::createFile("capitals");
///     ++file->count;
///     fxTranscriber* writer = fxTranscriber::getWriter(file);
///     bool isSaved = writer && writer->writeObject(&capitals, &capitals);
///     delete writer;
///     isSaved = file->close() && isSaved;
///     if (--file->count == 0)
///         delete file;
///
/// The old content is lost then whatever comes of it. fxSaveFile keeps it until the
/// new one is on the disk.
///
/// Opening and reading go on where a signal interrupts them. Writing fails, since the C
/// library drops what it could not write: install signal handlers with SA_RESTART.
class FX_EXPORT fxStdioStream : public fxStream {
public:
    /// Opens `path`: type 0 for reading, 1 for writing, 2 for both. A file
    /// that cannot be opened for writing is opened again with "create" and the
    /// permission bits `mode` (less the process's umask).
    /// Deliberate: nothing is truncated; what an existing file holds beyond
    /// the bytes written stays. Any other type opens for reading and then
    /// fails.
    fxStdioStream(const char* path, fxStreamType type, unsigned int mode = 0666);
    /// Takes over the descriptor `fd`, unless it cannot be used as `type`.
    fxStdioStream(int fd, fxStreamType type);
    /// Takes over `fp`; null sets the error flag.
    fxStdioStream(std::FILE* fp, fxStreamType type);
    /// Opens `path` for writing: a file that is there loses its content, another
    /// is made with the permission bits `mode` (less the process's umask). Returns a
    /// new stream without holders, with its error flag set where that failed; never
    /// null.
    static fxStdioStream* createFile(const char* path, unsigned int mode = 0666);
    /// Flushes and closes.
    ~fxStdioStream() override;

    /// Gives the system, though not yet the disk, what has been put, also by a
    /// writer that is at work. Returns 0 when something put, now or before, could
    /// not be given to it, when it has failed a read, and without an open stream.
    unsigned char flush();
    /// Flushes and closes: without an open stream every get and put fails from now
    /// on, and hasError() is 1. Returns 0 as flush() does, and when closing fails.
    /// Requires: no reader is in the middle of an object on it.
    unsigned char close();

    unsigned char hasError() override;  ///< 1 when there is no open stream.
    /// Deliberate: always 0, also after a read has failed at the end.
    unsigned char atEOF() override;
    unsigned char isReading() override;
    unsigned char isWriting() override;
    fxStreamType getType() override;  ///< As given to the constructor.
    unsigned char getBytes(char* buffer, unsigned int n) override;
    unsigned char getShorts(short* buffer, unsigned int n) override;
    unsigned char getInts(int* buffer, unsigned int n) override;
    unsigned char getLongs(long* buffer, unsigned int n) override;
    unsigned char getFloats(float* buffer, unsigned int n) override;
    unsigned char getDoubles(double* buffer, unsigned int n) override;
    unsigned char putBytes(const char* buffer, unsigned int n) override;
    unsigned char putShorts(const short* buffer, unsigned int n) override;
    unsigned char putInts(const int* buffer, unsigned int n) override;
    unsigned char putLongs(const long* buffer, unsigned int n) override;
    unsigned char putFloats(const float* buffer, unsigned int n) override;
    unsigned char putDoubles(const double* buffer, unsigned int n) override;

private:
    friend struct fxStdioStreamLayout;  // tests/transcribe/fxStdioStream_test.cpp
    friend std::FILE* fxOwnFile(const fxStream* stream);

    void wrap(int fd);
    template <class Item>
    unsigned char get(Item* items, unsigned int n);
    template <class Item>
    unsigned char put(const Item* items, unsigned int n);

    std::FILE* fp;        // owned; null when opening failed
    fxStreamType type;    // as given
    unsigned char error;  // 1 when there is no open stream
    unsigned char eof;    // never set
};
