// fxConnectingInternal.h - connections that are being made by a class's own connect.
#pragma once

#include "kelvofxds/core/fxInProgressInternal.h"

class fxObj;

/// Two objects of which the one is asked to connect itself to the other. Its class may
/// do anything then, and delete them too.
class fxConnecting : public fxInProgress<fxConnecting> {
public:
    /// Neither is null.
    fxConnecting(fxObj* f, fxObj* t) : from(f), to(t) {}

    /// False once one of them has been destroyed.
    bool areThere() const { return from && to; }

    /// What an object says when it goes.
    static void destroyed(const fxObj* object) {
        forEach([object](fxConnecting& connecting) {
            if (connecting.from == object)
                connecting.from = nullptr;
            if (connecting.to == object)
                connecting.to = nullptr;
        });
    }

private:
    const fxObj* from;  // null once it is destroyed
    const fxObj* to;
};
