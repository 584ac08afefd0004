// fxExport.h - the one export macro, and the checks of target and language.
#pragma once

#if __SIZEOF_POINTER__ != 4 || __SIZEOF_LONG__ != 4
#error "libkelvofxds is a 32-bit library: compile with -m32 (or for another 32-bit target)"
#endif
#if __cplusplus < 201703L
#error "libkelvofxds needs C++17: compile with -std=c++17 or a later one"
#endif

/// Marks what the shared library exports. The library is compiled with hidden
/// visibility; hosts take copies and addresses of exported data, so exported
/// names have default visibility, never protected.
#define FX_EXPORT __attribute__((visibility("default")))
