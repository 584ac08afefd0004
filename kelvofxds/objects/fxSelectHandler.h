// fxSelectHandler.h - what happens when a descriptor becomes ready.
#pragma once

#include "kelvofxds/objects/fxObj.h"

/// Serves one file descriptor, which it owns and closes.
///
/// Register it with fxExec::addSelectHandler; the interest is looked at when
/// the executive rebuilds its state, so a change takes effect once the handler
/// has been removed and added again. It may be deleted at any time, also by
/// one of its own operations; the executive does not call it again. One that
/// is removed or replaced while it is served lives on and is still called for
/// the other conditions of that pass.
class FX_EXPORT fxSelectHandler : public fxObj {
public:
    /// Serves no descriptor yet and wants nothing.
    fxSelectHandler();
    /// Serves `descriptor`, 0 to 99, for the conditions that are not 0.
    fxSelectHandler(int descriptor, unsigned char wantsRead, unsigned char wantsWrite,
                    unsigned char wantsException);
    fxSelectHandler(const fxSelectHandler&) = delete;
    fxSelectHandler& operator=(const fxSelectHandler&) = delete;
    /// Closes the descriptor, unless it is negative.
    ~fxSelectHandler() override;

    /// Called when there is something to read.
    virtual void handleRead() = 0;
    virtual void handleWrite();      ///< Does nothing here.
    virtual void handleException();  ///< Does nothing here.

    /// Before the handler is registered.
    void setDescriptor(int descriptor) { fd = descriptor; }
    /// Applies from the next registration.
    void setInterest(unsigned char wantsRead, unsigned char wantsWrite,
                     unsigned char wantsException) {
        readInterest = wantsRead;
        writeInterest = wantsWrite;
        exceptionInterest = wantsException;
    }

    int fd;                           ///< The descriptor, or -1.
    unsigned char readInterest;       ///< Calls handleRead when there is something to read.
    unsigned char writeInterest;      ///< Calls handleWrite when there is room to write.
    unsigned char exceptionInterest;  ///< Calls handleException for exceptional conditions.
};
