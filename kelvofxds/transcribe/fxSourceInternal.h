// fxSourceInternal.h - how a reader gets at its stream's bytes.
#pragma once

#include <algorithm>
#include <cstdlib>

#include "kelvofxds/transcribe/fxShortCopyInternal.h"
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

    /// Reads `n` bytes.
    unsigned char get(fxStream& stream, char* to, unsigned int n) {
        if (!file)
            return stream.getBytes(to, n);
        if (next != end)
            return getAhead(to, n);
        if (n > few)
            return ::fread_unlocked(to, 1, n, file) == n;
        for (unsigned int i = 0; i < n; ++i) {
            const int c = ::getc_unlocked(file);
            if (c == EOF)
                return 0;
            to[i] = static_cast<char>(c);
        }
        return 1;
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
        end = ahead + ::fread_unlocked(ahead, 1, std::min(n, most), file);
    }

private:
    static const unsigned int few = 24;  // bytes that cost less one by one
    static constexpr unsigned int worthwhile = 4096;
    static constexpr unsigned int most = 32 * 1024;

    [[gnu::noinline]] unsigned char getAhead(char* to, unsigned int n) {
        const unsigned int there = std::min(n, static_cast<unsigned int>(end - next));
        fxCopyShort(to, next, there);
        next += there;
        return there == n || ::fread_unlocked(to + there, 1, n - there, file) == n - there;
    }

    std::FILE* file;   // the library's own stream's; null while any other is read
    char* ahead;       // owned; null until it is used
    const char* next;  // the next byte that has been read ahead
    const char* end;   // behind the last one
};
