// fxSendWalkInternal.h - walking an output's connections while they change.
#pragma once

#include "kelvofxds/core/fxInProgressInternal.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxOutputChannel.h"

/// Visits the connections that an output has when the walk begins, each once,
/// although receivers may disconnect some of them or delete the output. The
/// output tells the walks in progress what it removes; nothing is allocated.
class __attribute__((visibility("hidden"))) fxOutputChannel::Walk
    : public fxInProgress<fxOutputChannel::Walk> {
public:
    explicit Walk(const fxOutputChannel* out)
        : current(false), output(out), index(0), end(countOf(out)) {}

    /// Number of connections of `out`.
    static unsigned int countOf(const fxOutputChannel* out) {
        const fxVoidPtrArray* connections = out->connections;
        return connections ? connections->getLen() / static_cast<unsigned int>(sizeof(void*)) : 0;
    }

    /// The connection of an output that has no other, if it takes every value,
    /// not the latest only; else null.
    static fxInputChannel* onlyOneOf(const fxOutputChannel* out) {
        if (countOf(out) != 1)
            return nullptr;
        auto* connection = static_cast<fxInputChannel*>((*out->connections)[0]);
        return connection->isLatestOnly() ? nullptr : connection;
    }

    /// The next connection, or null at the end.
    fxInputChannel* next() {
        current = index < end;
        if (!current)
            return nullptr;
        return static_cast<fxInputChannel*>((*output->connections)[index++]);
    }

    /// What out->isConnectedTo(in) says; the latest connections are looked at first.
    static bool leadsTo(const fxOutputChannel* out, const fxInputChannel* in);

    /// False once the connection that next() returned last has been removed.
    bool currentIsConnected() const { return current; }

    /// Connection `index` of `out` is gone.
    static void removed(const fxOutputChannel* out, unsigned int index);
    /// `out` itself is gone.
    static void destroyed(const fxOutputChannel* out);

private:
    // First, for speed: it keeps compilers from storing the base's word and the
    // output as one, which makes the loads that follow wait.
    bool current;  // the last one returned is still there
    const fxOutputChannel* output;
    unsigned int index;  // of the next connection
    unsigned int end;    // connections to visit lie below it
};
