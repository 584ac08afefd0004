// fxPieceInternal.h - what a writer has written and its stream has not got yet.
#pragma once

#include <cstdlib>

#include "kelvofxds/core/fxInProgressInternal.h"
#include "kelvofxds/core/fxShortCopyInternal.h"
#include "kelvofxds/transcribe/fxStdioStreamInternal.h"

/// Collects what goes to the library's own stream, so that it gets pieces of
/// many records instead of several calls a record.
class fxPiece {
public:
    fxPiece() : bytes(nullptr), used(0), stream(nullptr) {}
    fxPiece(const fxPiece&) = delete;
    fxPiece& operator=(const fxPiece&) = delete;
    ~fxPiece() { std::free(bytes); }

    /// While it lives, what is written to a stream is collected if that is the
    /// library's own and there is memory for it. What is left at the end goes to
    /// the stream, also after a failure, but is better handed over before, since
    /// nobody learns here whether that succeeds.
    class Collecting : public fxInProgress<Collecting> {
    public:
        Collecting(fxPiece& p, fxStream* s) : piece(p), before(p.stream) { piece.collectFor(s); }
        Collecting(const Collecting&) = delete;
        Collecting& operator=(const Collecting&) = delete;
        ~Collecting() {
            piece.handOver();
            piece.stream = before;
        }

        /// Gives `s` what is collected for it, before somebody else uses it.
        static unsigned char handOverTo(const fxStream* s) {
            unsigned char isDone = 1;
            Collecting::forEach([s, &isDone](Collecting& c) {
                if (c.piece.stream == s && !c.piece.handOver())
                    isDone = 0;
            });
            return isDone;
        }

    private:
        fxPiece& piece;
        fxStream* before;
    };

    bool isCollecting() const { return stream != nullptr; }

    /// Where `n` more bytes can be put, to be followed by take; null when the
    /// stream has failed. Requires: isCollecting(), and that they are few.
    char* room(unsigned int n) { return n <= size - used || handOver() ? bytes + used : nullptr; }

    /// Adds the `n` bytes that have been put where there is room.
    void take(unsigned int n) { used += n; }

    /// Adds `n` bytes. Requires: isCollecting().
    unsigned char add(const char* from, unsigned int n) {
        if (n > size - used) {
            if (!handOver())
                return 0;
            if (n > size)
                return stream->putBytes(from, n);
        }
        fxCopyShort(bytes + used, from, n);
        used += n;
        return 1;
    }

    /// Gives the stream what has been collected.
    unsigned char handOver() {
        const unsigned int n = used;
        used = 0;
        return n == 0 || stream->putBytes(bytes, n);
    }

private:
    static const unsigned int size = 32 * 1024;  // bytes

    void collectFor(fxStream* s) {
        stream = nullptr;
        if (!fxOwnFile(s))
            return;
        if (!bytes)
            bytes = static_cast<char*>(std::malloc(size));
        if (bytes)
            stream = s;
    }

    char* bytes;        // owned; null until it is used
    unsigned int used;  // bytes collected
    fxStream* stream;   // what they are for; null while nothing is collected
};
