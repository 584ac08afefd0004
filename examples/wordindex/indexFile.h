// indexFile.h - writing a word index to a file, and reading it back.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "kelvofxds/containers/fxStrStrDictionary.h"

/// A file that holds an index. Every operation that fails leaves its reason in problem().
class IndexFile {
public:
    /// An existing index, open for reading.
    static IndexFile existing(const std::string& path);
    /// The file `path`, made anew and empty.
    static IndexFile create(const std::string& path);
    /// A file without a name, in TMPDIR or the system's folder for temporary files; it is gone when
    /// it is closed.
    static IndexFile createTemporary();

    IndexFile(IndexFile&& other) noexcept;
    IndexFile& operator=(const IndexFile&) = delete;
    ~IndexFile();

    /// Writes `index`, which is not changed.
    bool write(fxStrStrDictionary& index);
    /// Reads the index from the start of the file; null on failure. Damage that the library takes
    /// for fatal ends the process: see runGuarded.
    std::unique_ptr<fxStrStrDictionary> read();

    bool isOpen() const { return fd >= 0; }
    std::uint64_t bytes() const;
    const std::string& problem() const { return reason; }

private:
    IndexFile() : fd(-1) {}
    void open(const std::string& path, int flags);
    bool fail(const std::string& why);

    int fd;
    std::string reason;
};

/// What is wrong with an index that was read without trouble; empty when it is sound. Bytes that
/// were changed in a file can still make a dictionary, just not this one: every word must be found
/// where it is, and every count must be a number.
std::string defectOf(fxStrStrDictionary& index);

/// How many pairs of `a` have no equal pair in `b`.
unsigned int countMissing(fxStrStrDictionary& a, const fxStrStrDictionary& b);

/// The number of words in the fullest bucket.
unsigned int longestChain(fxStrStrDictionary& index);
