// fxExec.h - the dispatch loop.
#pragma once

#include <sys/select.h>

#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/objects/fxSequencer.h"

class fxApplication;
class fxSelectHandler;

/// Waits for descriptors, serves them and the timers, and distributes events,
/// pass by pass, while an application is registered.
///
/// There is one, fx_theExecutive. Handlers, timers, functions, receivers and
/// applications may be added, removed and deleted from within every callback.
/// A pass allocates nothing and takes time in proportion to the highest
/// descriptor. Nothing registered is owned.
class FX_EXPORT fxExec {
public:
    fxExec();
    fxExec(const fxExec&) = delete;
    fxExec& operator=(const fxExec&) = delete;
    ~fxExec();

    /// Passes, one at least, until no application is registered. Each waits
    /// for 1000 seconds at most.
    void loop();
    /// One pass that waits for `timeout` seconds at most; less than 0 and no
    /// number count as 0.
    /// Deliberate: without a select handler it only distributes events: no
    /// function runs, nothing waits and no timer advances. Timers count 100
    /// clock ticks a second, whatever the system's rate.
    void poll(float timeout);
    /// True when a pass would wait for a descriptor. Events and timers do not
    /// count; without a handler it is false.
    bool willBlock();

    /// The descriptors that are waited for, by condition.
    fd_set getReadSet();
    fd_set getWriteSet();
    fd_set getExceptionSet();
    /// Rebuilds what select is given from the registered handlers.
    void updateSelectState();

    /// Registers a handler under its descriptor, in place of another one. A
    /// descriptor below 0 or above 99 is ignored.
    void addSelectHandler(fxSelectHandler* h);
    /// Deregisters the handler of the descriptor of `h`.
    void removeSelectHandler(fxSelectHandler* h);
    /// Called by a handler that is going: like removeSelectHandler, but the
    /// descriptor is waited for until the state is rebuilt.
    void forget(const fxSelectHandler* h);

    /// `function` will be called before each wait, after those added before.
    void addPreSelectFunc(void (*function)());
    /// Undoes one addPreSelectFunc.
    void removePreSelectFunc(void (*function)());
    /// `function` will be called after the handlers have been.
    void addPostSelectFunc(void (*function)());
    /// Undoes one addPostSelectFunc.
    void removePostSelectFunc(void (*function)());

    /// Registers an application.
    void add(fxApplication* application);
    /// An application that is not registered is ignored.
    void remove(fxApplication* application);
    /// True when the application is registered.
    bool contains(fxApplication* application);

    /// Calls initialize on every application that is registered.
    void initialize(int argc, char** argv);
    /// Calls open on every application that is registered.
    void open();
    /// Calls close on every open application.
    /// Deliberate: an application that moves up because the one before it took
    /// itself out is skipped.
    void close();

private:
    friend struct fxExecLayout;  // tests/objects/fxExec_test.cpp
    struct Wait;

    static const unsigned int maxHandlers = 100;
    static const unsigned short noHandlers = 101;

    void prepareWait(Wait& wait, float timeout);
    int waitForDescriptors(Wait& wait);
    void serveTimers(const Wait& wait, int ready);
    void serveDescriptors(const Wait& wait);

    unsigned short lowest;        // lowest descriptor with a handler, or noHandlers
    unsigned short nfds;          // highest one plus 1
    unsigned char dirty;          // the fields around are out of date
    unsigned char wantRead;       // some handler waits to read
    unsigned char wantWrite;      // to write
    unsigned char wantException;  // for an exceptional condition
    fd_set readSet;
    fd_set writeSet;
    fd_set exceptionSet;
    fxSelectHandler* handlers[maxHandlers];  // by descriptor; not owned
    fxStubFuncArray preSelectFuncs;
    fxStubFuncArray postSelectFuncs;
    fxVoidPtrArray applications;  // fxApplication*, not owned
    unsigned int unused;          // always 0
};

/// The process's executive; null until the toolkit is initialised.
extern FX_EXPORT fxExec* fx_theExecutive;
