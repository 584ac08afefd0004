// fxPathNames.h - functions on the names of files.
#pragma once

#include "kelvofxds/core/fxExport.h"

// All of them take and return NUL-terminated texts. A result is the caller's,
// who releases it with free; null stands for failure, which includes running
// out of memory. The cost is linear in the texts.

/// The last component of `path`, which trailing slashes do not end; empty if
/// there is none. Null for null.
FX_EXPORT char* pathbasename(const char* path);

/// What is before the last component of `path` and the slashes that separate
/// it; trailing slashes do not count. A path without a separator gives ".", or
/// "/" if it is all slashes. Null for null.
/// Deliberate: if the only separator is the leading slash, or leading slashes,
/// the result is empty.
FX_EXPORT char* pathdirname(const char* path);

/// `path` with a leading "~" replaced by the environment's HOME, empty if it is
/// not set, or a leading "~name" by the home directory of that user; other
/// paths, and those of unknown users, are copied. A name of more than 255 bytes
/// is no user's. Null for null.
FX_EXPORT char* pathexpandtilde(const char* path);

/// The target of the symbolic link `path`. Null for null, and if there is no
/// such link. The block has `size` bytes and one for the NUL.
/// Deliberate: a longer target is cut to `size` bytes without a word.
FX_EXPORT char* symbolicLinkExtendedName(const char* path, unsigned int size);

/// `text` with each "$NAME" replaced by the environment's value of NAME; names
/// end at the next "/" or space, which stays. Null if a variable is not set or
/// its name is empty, and for null. The block has at least `size` bytes; it
/// grows as needed.
/// Deliberate: a name that nothing ends loses the last byte of the text, which
/// is not looked up but follows the value: at the end of the text, "$HOME" is
/// the value of HOM and an "E".
FX_EXPORT char* environmentVariableExtendedName(const char* text, unsigned int size);
