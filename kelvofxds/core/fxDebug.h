// fxDebug.h - a hook for hosts that want debugging options.
#pragma once

#include "kelvofxds/core/fxExport.h"

class fxStr;

/// Does nothing itself. The toolkit makes one, fx_theDebugger; a host may
/// install its own before it starts the toolkit.
class FX_EXPORT fxDebug {
public:
    /// Ignores `enabled`.
    explicit fxDebug(unsigned char enabled);

    /// Ignores `option`.
    void parseOption(fxStr& option);
};

/// The process's debugger; null until the toolkit is initialised.
extern FX_EXPORT fxDebug* fx_theDebugger;
