// fxChainsInternal.h - what dictionaries and sets do alike.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>

/// What 0 buckets stands for.
constexpr unsigned int fxDefaultBuckets = 31;

/// Makes pointers of raw memory, all null.
inline void fxClearPointers(void* at, unsigned int bytes) {
    if (bytes != 0)
        std::memset(at, 0, bytes);
}

/// A block of `n` null pointers whose memory is not touched; null when there is
/// no such memory.
inline void* fxAllocateHeads(unsigned int n) {
    const unsigned int most = 0x1FFFFFFF;  // what half of the address space holds
    return n <= most ? std::calloc(n, sizeof(void*)) : nullptr;
}

/// The exclusive or of the key's 32-bit words; bytes behind them do not count.
inline unsigned int fxHashWords(const void* key, unsigned int keySize) {
    std::uint32_t hash = 0;
    for (unsigned int offset = 0; offset + sizeof hash <= keySize; offset += sizeof hash) {
        std::uint32_t word;
        std::memcpy(&word, static_cast<const char*>(key) + offset, sizeof word);
        hash ^= word;
    }
    return hash;
}

/// What a stream claims of the size of keys and values, weighed against the
/// bytes that it has to give for them. A class's own size and a little more is
/// believed of every one; what goes beyond that is limited for all entries of a
/// container together.
class fxClaimedSizes {
public:
    fxClaimedSizes() : gap(0), left(mostGaps) {}

    /// Adds a part of each entry. `claimed` bytes cannot be less than `own`, the
    /// class's, which is 0 where the class does not say. Returns false if the
    /// claim cannot be believed of a single entry.
    bool add(unsigned int claimed, unsigned int own) {
        if (claimed < own || claimed - own > mostGaps)
            return false;
        const unsigned int believed = own != 0 ? own + smallGap : unknownSize;
        gap += claimed > believed ? claimed - believed : 0;
        return true;
    }

    /// Whether there is credit for one more entry.
    bool takeEntry() {
        if (gap > left)
            return false;
        left -= gap;
        return true;
    }

private:
    static const unsigned int smallGap = 32;        // bytes
    static const unsigned int unknownSize = 4096;   // bytes
    static const unsigned int mostGaps = 1U << 20;  // bytes

    unsigned int gap;   // of an entry, in bytes
    unsigned int left;  // bytes
};

/// Enters `iter` at a vacant place or at the end, unless it is there already.
template <class Iters, class Iter>
void fxRegisterIter(Iters& iters, Iter* iter) {
    const unsigned int none = 0xFFFFFFFF;
    Iter* vacant = nullptr;
    if (iters.find(&iter) != none)
        return;
    const unsigned int place = iters.find(&vacant);
    if (place != none)
        iters[place] = iter;
    else
        iters.append(&iter);
}

/// Takes `iter` out, if it is there.
template <class Iters, class Iter>
void fxDeregisterIter(Iters& iters, Iter* iter) {
    const unsigned int place = iters.find(&iter);
    if (place < iters.length())
        iters.remove(place, 1);
}

/// Calls `visit` with every iterator; one that deregisters itself meanwhile
/// hides no other.
template <class Iters, class Visit>
void fxVisitIters(const Iters& iters, Visit visit) {
    for (unsigned int i = 0; i < iters.length();) {
        auto* iter = iters[i];
        if (iter)
            visit(*iter);
        if (i < iters.length() && iters[i] == iter)
            ++i;
    }
}
