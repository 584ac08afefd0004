// graphInputs.h - the same data for the library and for peers that write it.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "bench/support/inputs.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxStrArray.h"

using Texts = std::vector<std::string>;
using Pairs = std::unordered_map<std::string, std::string>;

inline void fill(fxIntArray& ours, std::vector<int>& peer, unsigned int n) {
    Random random;
    peer.resize(n);
    for (int& value : peer) {
        value = static_cast<int>(random.below(1000000000));
        ours.append(&value);
    }
    ours.setMaxLength(0);
}

inline void fill(fxStrArray& ours, Texts& peer, unsigned int n) {
    peer = distinctWords(n, 6, 24);
    for (const std::string& word : peer)
        ours.append(fxStr(word.c_str()));
}

// Buckets as both sides make them who are not told the size.
inline void fill(fxStrStrDictionary& ours, Pairs& peer, unsigned int n) {
    for (const std::string& word : distinctWords(n, 5, 11)) {
        ours.add(fxStr(word.c_str()), fxStr((word + "=" + word).c_str()));
        peer[word] = word + "=" + word;
    }
}

/// A node of a peer's graph. Each archive has its own way of saying what is in it.
struct PeerNode {
    int id = 0;
    std::shared_ptr<PeerNode> left, right;
};

using PeerNodes = std::vector<std::shared_ptr<PeerNode>>;
