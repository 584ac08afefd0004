// fxSendWalkInternal.h - walking an output's connections while they change.
#pragma once

class fxInputChannel;
class fxOutputChannel;

/// Visits the connections that an output has when the walk begins, each once,
/// although receivers may disconnect some of them or delete the output. The
/// output tells the walks in progress what it removes; nothing is allocated.
class fxSendWalk {
public:
    explicit fxSendWalk(fxOutputChannel* out);
    fxSendWalk(const fxSendWalk&) = delete;
    fxSendWalk& operator=(const fxSendWalk&) = delete;
    ~fxSendWalk() { innermost = outer; }

    /// The next connection, or null at the end.
    fxInputChannel* next();

    /// False once the connection that next() returned last has been removed.
    bool currentIsConnected() const { return current; }

    /// Connection `index` of `out` is gone.
    static void removed(const fxOutputChannel* out, unsigned int index);
    /// `out` itself is gone.
    static void destroyed(const fxOutputChannel* out);

private:
    static fxSendWalk* innermost;  // the walks in progress, newest first

    fxOutputChannel* output;
    unsigned int index;  // of the next connection
    unsigned int end;    // connections to visit lie below it
    bool current;        // the last one returned is still there
    fxSendWalk* outer;
};
