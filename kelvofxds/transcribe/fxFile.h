// fxFile.h - objects saved to files and loaded from them, in one call.
#pragma once

#include "kelvofxds/core/fxTypeOf.h"
#include "kelvofxds/core/fxXDRObj.h"

class fxStr;

/// Saves `object`, and all that it leads to, as a graph stream in the file `path`.
/// Returns 1 when it is there, on the disk.
///
/// The stream goes to a new file beside `path`, and that takes its place in one
/// step when all of it is on the disk: at any moment whoever opens `path` finds the
/// old content or the new one, whole, also when the process is killed meanwhile. On
/// any failure it returns 0, the old file is as it was, the new one is gone, and
/// `why`, unless it is null, is a line such as
/// `cannot save "book": the new file cannot be written: No space left on device`.
/// After success `why` is empty.
///
/// A link stays and what it leads to is replaced. The new file gets the permissions
/// of the old one, and its owner and group where the process may give them; without
/// an old one, 0666 less the umask. Directories, devices and files that are
/// protected against writing are not replaced. Other hard links to the old file
/// keep the old content. docs/files.md tells the rest: what a killed process leaves,
/// what file systems promise, and what a failure to bring the directory to the disk
/// means.
///
/// Which writer fxTranscriber::getWriter makes has no influence. While it works, a
/// write beyond RLIMIT_FSIZE is a failure and not a signal.
FX_EXPORT unsigned char fxSaveFile(const char* path, fxXDRObj& object, fxStr* why = nullptr);

/// Loads the object of `type`, and all that it leads to, from the file `path`, which
/// fxSaveFile or a standard writer has written; the header tells which. The caller's
/// from then on. fxXDRObj_type takes an object of any type.
///
/// On any failure it returns null, nothing of what was read is left, and `why`,
/// unless it is null, is a line such as `cannot load "book": offset 1234, record 57:
/// type "Book" is not registered`: there is no such file, it is empty, ends early,
/// is damaged, is not of this kind, holds an object of another type, or goes on
/// behind its object. A file that has several objects is read by a transcriber.
/// After success `why` is empty.
///
/// Requires: `type` is of a class that has fxXDRObj as its first base.
FX_EXPORT fxXDRObj* fxLoadFile(const char* path, fxTypeObj& type, fxStr* why = nullptr);

/// The same for an object of the class `T`; see fxTypeOf for its record.
template <class T>
T* fxLoadFile(const char* path, fxStr* why = nullptr) {
    return static_cast<T*>(fxLoadFile(path, fxTypeOf<T>(), why));
}
