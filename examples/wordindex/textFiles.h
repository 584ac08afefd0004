// textFiles.h - which files are to be read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// The files named on the command line, directories replaced by what is in them.
///
/// Whatever cannot be looked at gets one line on standard error and is counted; the rest goes on.
class TextFiles {
public:
    /// Adds the file `path`, or all regular files below the directory `path`. Names that start with
    /// a dot are left out, and links to directories are not followed, unless named here.
    void add(const std::string& path);

    /// Adds the C and C++ headers below the directory `path`: *.h, *.hpp, and files without an
    /// extension below a directory called c++.
    void addHeaders(const std::string& path);

    /// Adds the regular files in the directories of `list`, which are separated by ":", whose whole
    /// names the regular expression `pattern` matches. Directories below them are not searched, and
    /// those that do not open are left out. It is a failure if there is no such file at all.
    void addMatching(const char* list, const char* pattern);

    /// The files, those of each directory in the order of their names; those that were searched for
    /// in the order in which they were found.
    const std::vector<std::string>& paths() const { return files; }
    /// Their sizes added up, as far as they are known beforehand.
    std::uint64_t bytes() const { return totalBytes; }
    /// What could not be looked at.
    unsigned int failures() const { return failed; }

private:
    enum Wanted { everything, headers };

    void addTree(const std::string& directory, Wanted wanted);
    void addEntry(const std::string& path, const std::string& name, Wanted wanted);
    void complain(const std::string& path);

    std::vector<std::string> files;
    std::uint64_t totalBytes = 0;
    unsigned int failed = 0;
};
