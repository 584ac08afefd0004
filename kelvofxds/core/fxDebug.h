// fxDebug.h - a place for a host's debugging options.
#pragma once

#include "kelvofxds/core/fxExport.h"

class fxStr;

/// Does nothing: the toolkit makes one, fx_theDebugger, and nothing in the
/// library calls it. A host may install its own before it starts the toolkit
/// and pass that its options.
class FX_EXPORT fxDebug {
public:
    /// Ignores `enabled`.
    explicit fxDebug(unsigned char enabled);

    /// Ignores `option`.
    void parseOption(fxStr& option);
};

/// The process's debugger; null until the toolkit is initialised.
extern FX_EXPORT fxDebug* fx_theDebugger;
