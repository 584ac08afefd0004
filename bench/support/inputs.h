// inputs.h - random inputs, the same in every run.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <unordered_set>
#include <vector>

#include "kelvofxds/str/fxStr.h"

/// Random numbers from a fixed seed. The standard's engines give the same
/// numbers everywhere, its distributions do not.
class Random {
public:
    /// 0 to `n` - 1.
    unsigned int below(unsigned int n) { return static_cast<unsigned int>(engine()) % n; }

    char letter() { return static_cast<char>('a' + below(25)); }  // z stands for what is sought

    std::string letters(unsigned int n) {
        std::string text(n, ' ');
        for (char& c : text)
            c = letter();
        return text;
    }

private:
    std::mt19937 engine{20240229};
};

/// `n` different random words of `shortest` to `longest` letters behind `prefix`.
inline std::vector<std::string> distinctWords(unsigned int n, unsigned int shortest,
                                              unsigned int longest,
                                              const std::string& prefix = std::string()) {
    Random random;
    std::unordered_set<std::string> seen;
    std::vector<std::string> words;
    while (words.size() < n) {
        std::string word = prefix + random.letters(shortest + random.below(longest - shortest + 1));
        if (seen.insert(word).second)
            words.push_back(word);
    }
    return words;
}

/// A text of `n` letters in both forms, twice, and an ending that occurs once.
struct Text {
    explicit Text(unsigned int n) : peer(Random().letters(n)) {
        peer.back() = 'z';
        ours = fxStr(peer.data(), n);
        oursToo = ours;
        peerToo = peer;
    }

    std::string peer, peerToo;
    fxStr ours, oursToo;
};
