// fxPieceInternal.h - what a writer has written and its stream has not got yet.
#pragma once

#include <cstdlib>
#include <cstring>

#include "kelvofxds/core/fxInProgressInternal.h"
#include "kelvofxds/core/fxShortCopyInternal.h"
#include "kelvofxds/transcribe/fxStdioStreamInternal.h"

/// Collects what goes to the library's own stream, so that it gets pieces of
/// many records instead of several calls a record. What the stream does not take
/// stays, in front of all that follows.
class fxPiece {
public:
    fxPiece() : bytes(nullptr), used(0), stream(nullptr), collecting(false) {}
    fxPiece(const fxPiece&) = delete;
    fxPiece& operator=(const fxPiece&) = delete;
    ~fxPiece() { std::free(bytes); }

    /// While it lives, what is written to a stream is collected if that is the
    /// library's own and there is memory for it. What is left at the end goes to
    /// the stream, also after a failure, but is better handed over before, since
    /// nobody learns here whether that succeeds.
    class Collecting : public fxInProgress<Collecting> {
    public:
        Collecting(fxPiece& p, fxStream* s) : piece(p), before(p.collecting) {
            piece.collectFor(s);
        }
        Collecting(const Collecting&) = delete;
        Collecting& operator=(const Collecting&) = delete;
        ~Collecting() {
            piece.handOver();
            piece.collecting = before;
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
        bool before;
    };

    bool isCollecting() const { return collecting; }

    /// Makes room for `n` more bytes, or as many as a piece has; returns where
    /// they can be put, to be followed by take. Null when the stream has failed,
    /// and nothing has changed. Requires: isCollecting().
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

    /// Gives the stream what has been collected. On failure, what it has not
    /// taken stays to be given later.
    unsigned char handOver() { return used == 0 || handOverUsed(); }

    /// The same for whoever writes to `s` now. What is left for a stream that it
    /// has no more is gone.
    unsigned char handOverFor(const fxStream* s) {
        dropUnlessFor(s);
        return handOver();
    }

private:
    static const unsigned int size = 32 * 1024;  // bytes

    [[gnu::noinline]] unsigned char handOverUsed() {
        const unsigned int n = used;
        used = 0;  // what others have collected for the stream before goes first
        const unsigned char isNext = Collecting::handOverTo(stream);
        std::FILE* const file = fxOwnFile(stream);  // null once it has been closed
        const std::size_t taken = isNext && file ? ::fwrite_unlocked(bytes, 1, n, file) : 0;
        used = n - static_cast<unsigned int>(taken);
        if (used == 0)
            return 1;
        std::memmove(bytes, bytes + taken, used);
        return 0;
    }

    void dropUnlessFor(const fxStream* s) {
        if (!collecting && s != stream)
            used = 0;
    }

    void collectFor(fxStream* s) {
        dropUnlessFor(s);
        collecting = false;
        if (!fxOwnFile(s))
            return;
        if (!bytes)
            bytes = static_cast<char*>(std::malloc(size));
        if (!bytes)
            return;
        stream = s;
        collecting = true;
    }

    char* bytes;        // owned; null until it is used
    unsigned int used;  // bytes collected, or left since the stream has failed
    fxStream* stream;   // what they are for
    bool collecting;    // more are to come
};
