// fxApplication.h - what keeps the dispatch loop running.
#pragma once

#include "kelvofxds/objects/fxObj.h"

/// An application of the executive, whose loop runs while any is registered.
///
/// Construction registers it and close() takes it out again. There must be an
/// executive, so it is made after fxInitializeToolkit(); before, the process
/// ends: "fxApplication: call fxInitializeToolkit first".
/// Deliberate: the destructor takes it out only while it is open; close an
/// application that was never opened before deleting it, since it stays
/// registered otherwise.
class FX_EXPORT fxApplication : public fxObj {
public:
    fxApplication();
    fxApplication(const fxApplication&) = delete;
    fxApplication& operator=(const fxApplication&) = delete;
    ~fxApplication() override;

    /// Prepares the application; `argv` has `argc` arguments.
    virtual void initialize(int argc, char** argv) = 0;
    virtual void open();   ///< Marks it open.
    virtual void close();  ///< Takes it out of the executive and marks it closed.

    /// True between open and close.
    bool isOpen() const { return opened; }

private:
    friend class fxExec;
    friend struct fxApplicationLayout;  // tests/objects/fxApplication_test.cpp

    unsigned char opened;
};
