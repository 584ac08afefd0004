// fxStdioStreamInternal.h - the library's own stream, as transcribers see it.
#pragma once

#include <cstdio>

#include "kelvofxds/transcribe/fxStdioStream.h"

/// What a stream reads and writes when it is an fxStdioStream that is open and
/// of no class derived from it; null otherwise. Calls on any other stream are
/// seen by a host's code, so their order and content are part of the library's
/// behaviour; calls on this one are not.
__attribute__((visibility("hidden"))) std::FILE* fxOwnFile(const fxStream* stream);
