// wordCounter.h - counting the words of text files.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "kelvofxds/containers/fxStrStrDictionary.h"

/// Counts words in a dictionary: the word is the key, its count the value, in decimal.
///
/// A word is a run of letters, digits, underscores and bytes from 0x80 on, which is how text in
/// other than ASCII characters arrives. Longer runs than longestWord are data and not counted.
class WordCounter {
public:
    static const unsigned int longestWord = 255;
    /// As many different words are safe to write and read back in 32 bits of address space.
    static const unsigned int mostWords = 4 * 1024 * 1024;

    /// How many buckets are right for `bytes` of text. Such text has a new word about every 256
    /// bytes. The number is odd since the low bits of short words' hashes are all zero.
    static unsigned int bucketsFor(std::uint64_t bytes);

    /// Counts in `index`, from which nothing may be removed meanwhile.
    explicit WordCounter(fxStrStrDictionary& index);

    /// Counts the words of the file `path`, and calls `tick` now and then. Returns false, with
    /// errno set, when the file cannot be read to its end.
    bool countFile(const std::string& path, const std::function<void()>& tick);

    /// True when there are more different words than mostWords.
    bool isFull() const { return index.length() > mostWords; }
    std::uint64_t bytes() const { return bytesRead; }     ///< Bytes read so far.
    std::uint64_t words() const { return wordsCounted; }  ///< Words counted so far.

private:
    void countText(const char* bytes, unsigned int n);
    fxStr& countOf(const fxStr& word);

    fxStrStrDictionary& index;
    std::uint64_t bytesRead;
    std::uint64_t wordsCounted;
};
