// fxOrderedGlobal.h - a piece of start-up work with its dependencies.
#pragma once

#include "kelvofxds/core/fxExport.h"

/// One subsystem's construct and destroy functions, and what must have been
/// constructed before it.
///
/// Each file that has globals to set up declares one static instance; its
/// constructor registers it in an ordering and the functions run when the host
/// calls fxInitializeToolkit() and fxCleanupGlobalOrderings(). Instances must
/// live as long as the process.
class FX_EXPORT fxOrderedGlobal {
public:
    /// Registers `cons` (may be null) with no destroy function. `deps` is a
    /// null-terminated array that outlives the object, or null. `which` is 1
    /// for the toolkit's ordering; any other value is the application's.
    explicit fxOrderedGlobal(void (*cons)(), fxOrderedGlobal** deps = nullptr, int which = 0);

    /// The same with a destroy function (may be null).
    fxOrderedGlobal(void (*cons)(), void (*dest)(), fxOrderedGlobal** deps, int which);

    /// True when `other` is listed among `deps`; O(length of the list).
    bool dependsOn(const fxOrderedGlobal& other) const;

    void (*cons)();          ///< Construct function, or null.
    void (*dest)();          ///< Destroy function, or null.
    fxOrderedGlobal** deps;  ///< Null-terminated, or null for none.
};

/// The toolkit's own entry, which makes the library's singletons. A subsystem
/// that needs them lists it in its `deps`.
extern FX_EXPORT fxOrderedGlobal fxOG_Init;
/// The entry of transcription, which registers the binary reader. A subsystem
/// that reads streams while it is constructed lists it in its `deps`.
extern FX_EXPORT fxOrderedGlobal fxOG_Transcriber;
