// fxPlatform.h - the functions a host may bring its own version of.
//
// The library defines all three as weak C symbols; a host that defines one
// under the same name replaces the library's.
#pragma once

#include "kelvofxds/core/fxExport.h"

extern "C" {

/// Prints a message to the destination numbered `destination`; 0 is the
/// default one, standard output, and here every destination is. `number` is
/// the message's number, -1 for none, and is ignored here. `format` and what
/// follows it are printf's. Returns the number of bytes printed, negative on
/// failure.
FX_EXPORT int imsg_print(int destination, int number, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/// The same into `buffer`, which must have room for the text and its NUL.
FX_EXPORT int imsg_sprintf(char* buffer, int number, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/// Splits `path` into everything before its last component and that component,
/// each cut to its buffer's size: in bytes, the NUL not included, for which
/// there is one byte more. Nothing is written to a buffer of a negative size.
/// Trailing slashes do not count. A path without a separator has the directory
/// "."; "/" has the directory "/" and an empty leaf. Returns 0.
/// Deliberate: a path whose only separator is its leading slash has an empty
/// directory.
FX_EXPORT int fileutl_strip_leaf(const char* path, int directorySize, char* directory, int leafSize,
                                 char* leaf);
}
