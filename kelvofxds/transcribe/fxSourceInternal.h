// fxSourceInternal.h - how a reader gets at its stream's bytes.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/core/fxShortCopyInternal.h"
#include "kelvofxds/transcribe/fxStdioStreamInternal.h"

/// Reads the library's own stream without a call for each field of a record,
/// and every other stream by the calls that its class sees.
class fxSource {
public:
    fxSource() : file(nullptr), ahead(nullptr), next(nullptr), end(nullptr) {}
    fxSource(const fxSource&) = delete;
    fxSource& operator=(const fxSource&) = delete;
    ~fxSource() { std::free(ahead); }

    /// While it lives, a stream is looked at for being the library's own.
    class Use {
    public:
        Use(fxSource& s, fxStream* stream) : source(s), before(s.file) {
            source.file = fxOwnFile(stream);
        }
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;
        ~Use() {
            source.file = before;
            source.next = source.end;
        }

    private:
        fxSource& source;
        std::FILE* before;
    };

    /// Whether nobody sees in which calls the bytes are read.
    bool isOwn() const { return file != nullptr; }

    /// Takes `n` bytes of the library's own stream that lie ready in memory and
    /// stay there until more is read; null, and nothing is taken, if they do not.
    const char* ready(unsigned int n) {
        const char* from = nullptr;
        if (next != end) {
            if (n <= static_cast<std::size_t>(end - next)) {
                from = next;
                next += n;
            }
            return from;
        }
#ifdef __GLIBC__
        // In the file's buffer. Where that is, this C library tells every program
        // that is compiled with it, by its getc_unlocked.
        if (file && n <= static_cast<std::size_t>(file->_IO_read_end - file->_IO_read_ptr)) {
            from = file->_IO_read_ptr;
            file->_IO_read_ptr += n;
        }
#endif
        return from;
    }

    /// Reads `n` bytes.
    unsigned char get(fxStream& stream, char* to, unsigned int n) {
        if (!file)
            return stream.getBytes(to, n);
        if (const char* from = ready(n)) {
            fxCopyShort(to, from, n);
            return 1;
        }
        const unsigned int there = static_cast<unsigned int>(end - next);
        if (there != 0) {
            // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker): some are there.
            std::memcpy(to, next, there);
        }
        next = end;
        return fxReadFrom(file, to + there, n - there) == n - there;
    }

    /// Is told that `n` bytes of payload at least are going to be read, heads not
    /// counted, and reads some of them at once. None will be left then.
    void expect(unsigned int n) {
        if (!file || next != end || n < worthwhile)
            return;
        if (!ahead)
            ahead = static_cast<char*>(std::malloc(most));
        if (!ahead)
            return;
        next = ahead;
        end = ahead + fxReadFrom(file, ahead, std::min(n, most));
    }

private:
    static constexpr unsigned int worthwhile = 4096;
    static constexpr unsigned int most = 32 * 1024;

    std::FILE* file;   // the library's own stream's; null while any other is read
    char* ahead;       // owned; null until it is used
    const char* next;  // the next byte that has been read ahead
    const char* end;   // behind the last one
};
