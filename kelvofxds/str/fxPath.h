// fxPath.h - a string that is the name of a file.
#pragma once

#include "kelvofxds/str/fxStr.h"

/// A path that can be split into its directory and its leaf.
///
/// A string in every other way, with no fields of its own; the functions of
/// fxPathNames.h do the same for plain texts. The splitting is done by
/// fileutl_strip_leaf, which a host may replace; the library's own follows
/// pathdirname and pathbasename, but neither part is longer than the path, so
/// that the directory of an empty path is empty.
/// Deliberate: a path whose only separator is its leading slash has an empty
/// directory.
class FX_EXPORT fxPath : public fxStr {
public:
    fxPath() {}                                 ///< Empty.
    fxPath(const char* path) : fxStr(path) {}   ///< A copy of the text.
    fxPath(const fxStr& path) : fxStr(path) {}  ///< A copy.

    /// Stores the part before the last component in `*directory` and the last
    /// component in `*leaf`; each may be this path. Returns what
    /// fileutl_strip_leaf returned; a part that it did not write is empty.
    int split(fxPath* directory, fxPath* leaf) const;
    /// The last component alone.
    fxPath leaf() const;
    /// The part before it alone.
    fxPath directory() const;
};
