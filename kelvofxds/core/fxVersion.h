// fxVersion.h - the library's version identification.
#pragma once

#include "kelvofxds/core/fxExport.h"

extern "C" {

/// Prints one line through imsg_print: the name "libkelvofxds" left-justified
/// in 33 columns, a blank, the version, a blank and the build date in
/// parentheses. Returns what imsg_print returns.
FX_EXPORT int libkelvofxds_print_verid();

/// The same line, formatted into `buffer` (at least 80 bytes) by imsg_sprintf.
/// Returns what imsg_sprintf returns.
FX_EXPORT int libkelvofxds_sprintf_verid(char* buffer);
}
