// fxFatal.h - how the library ends the process with a message.
#pragma once

#include "kelvofxds/core/fxExport.h"

/// Writes the message that `format` (as for printf) and its arguments make to
/// standard error, then one newline, flushes standard error and aborts
/// (SIGABRT). No prefix is added, no exit handler runs, no ordering is torn
/// down. Never returns.
/// A few classes end the process in other ways, as their comments say;
/// docs/architecture.md, "How the process ends", lists them all.
/// Requires: text that comes from outside is passed as an argument, never as
/// the format.
FX_EXPORT void fxFatal(const char* format, ...) __attribute__((noreturn, format(printf, 1, 2)));
