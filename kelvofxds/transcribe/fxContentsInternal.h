// fxContentsInternal.h - which version of a type is being transcribed.
#pragma once

#include "kelvofxds/core/fxInProgressInternal.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

/// Tells transcribers what their contents are.
struct fxContents {
    static bool tellsVersions(const fxTranscriber& t) {
        return (t.traits & fxTranscriber::tellsVersions) != 0;
    }

    static bool areGraphs(const fxTranscriber& t) {
        return (t.traits & fxTranscriber::ofGraphs) != 0;
    }

    /// `t` is one of the library's: it calls withVersion for all contents.
    static void setTellsVersions(fxTranscriber& t) { t.traits |= fxTranscriber::tellsVersions; }
    /// The same, and it is one of the pair for graph streams.
    static void setGraphs(fxTranscriber& t) {
        t.traits |= fxTranscriber::tellsVersions | fxTranscriber::ofGraphs;
    }

    /// Calls transcribe(), which transcribes contents of that version.
    template <class Transcribe>
    static unsigned char withVersion(fxTranscriber& t, unsigned int version,
                                     Transcribe transcribe) {
        const Restored after(t);
        if (version < great - 1U) {
            t.version = static_cast<unsigned char>(version + 1);
            return transcribe();
        }
        const Great held(t, version);
        t.version = great;
        return transcribe();
    }

    static unsigned int versionOf(const fxTranscriber& t) {
        if (t.version == 0)
            return newest;
        if (t.version != great)
            return t.version - 1U;
        unsigned int version = newest;
        Great::forEach([&t, &version](const Great& held) {
            if (&held.transcriber == &t && version == newest)
                version = held.version;
        });
        return version;
    }

private:
    static const unsigned char great = 255;
    static const unsigned int newest = 0xFFFFFFFF;

    // What the version was before, also when a host's exception passes through.
    class Restored {
    public:
        explicit Restored(fxTranscriber& t) : transcriber(t), version(t.version) {}
        Restored(const Restored&) = delete;
        Restored& operator=(const Restored&) = delete;
        ~Restored() { transcriber.version = version; }

    private:
        fxTranscriber& transcriber;
        unsigned char version;
    };

    // A version that its byte cannot hold. The newest stands in front.
    struct __attribute__((visibility("hidden"))) Great : fxInProgress<Great> {
        Great(fxTranscriber& t, unsigned int v) : transcriber(t), version(v) {}

        fxTranscriber& transcriber;
        unsigned int version;
    };
};
