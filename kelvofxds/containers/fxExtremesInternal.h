// fxExtremesInternal.h - where the next great or small element of an array is.
#pragma once

#include <cstdlib>

/// The places of the least and of the greatest element of every few, in a tree, so that a search
/// for the next element that is great or small enough skips the others. Memory is a word for each
/// element at most.
///
/// `Elements` has at(i) and a static less(a, b) for what at() returns.
template <class Elements>
class fxExtremes {
public:
    static const unsigned int none = 0xFFFFFFFF;

    fxExtremes() : elements(nullptr), least(nullptr), greatest(nullptr) {}
    fxExtremes(const fxExtremes&) = delete;
    fxExtremes& operator=(const fxExtremes&) = delete;
    ~fxExtremes() { std::free(least); }

    bool isMade() const { return least != nullptr; }

    /// Covers the elements `lo` to `hi`. Without memory it stays unmade.
    void make(const Elements& all, unsigned int lo, unsigned int hi) {
        elements = &all;
        first = lo;
        last = hi;
        leaves = 1;
        while (leaves <= (hi - lo) / blockLength)
            leaves *= 2;
        least = static_cast<unsigned int*>(std::malloc(sizeof(unsigned int) * leaves * 4));
        if (!least)
            return;
        greatest = least + 2 * leaves;
        for (unsigned int block = 0; block < leaves; ++block)
            lookAtBlock(block);
        for (unsigned int node = leaves - 1; node > 0; --node)
            lookAtChildren(node);
    }

    /// To be called when the elements `lo` to `hi` have changed.
    void changed(unsigned int lo, unsigned int hi) {
        const unsigned int lastBlock = (hi - first) / blockLength;
        for (unsigned int block = (lo - first) / blockLength; block <= lastBlock; ++block) {
            lookAtBlock(block);
            for (unsigned int node = (leaves + block) / 2; node > 0; node /= 2)
                lookAtChildren(node);
        }
    }

    /// The first place behind `i` up to `hi` whose element `isGreat`, which then holds for all
    /// greater ones too; `none` if there is none.
    template <class IsGreat>
    unsigned int next(unsigned int i, unsigned int hi, const IsGreat& isGreat) const {
        unsigned int k = i;
        do {
            if (k == hi)
                return none;
            if (isGreat(elements->at(++k)))
                return k;
        } while ((k + 1 - first) % blockLength != 0);
        const auto fits = [&](unsigned int node) { return holds(greatest[node], isGreat); };
        unsigned int node = leaves + (k - first) / blockLength;
        do {
            while (node % 2 == 1)
                node /= 2;
            if (node == 0)
                return none;
            ++node;
        } while (!fits(node));
        while (node < leaves)
            node = fits(2 * node) ? 2 * node : 2 * node + 1;
        for (k = first + (node - leaves) * blockLength; k <= hi; ++k) {
            if (isGreat(elements->at(k)))
                return k;
        }
        return none;
    }

    /// The last place before `j` whose element `isSmall`, which then holds for all smaller ones
    /// too. Requires: there is one.
    template <class IsSmall>
    unsigned int previous(unsigned int j, const IsSmall& isSmall) const {
        unsigned int k = j;
        while ((k - first) % blockLength != 0) {
            if (isSmall(elements->at(--k)))
                return k;
        }
        const auto fits = [&](unsigned int node) { return holds(least[node], isSmall); };
        unsigned int node = leaves + (k - first) / blockLength - 1;
        while (!fits(node)) {
            while (node % 2 == 0)
                node /= 2;
            --node;
        }
        while (node < leaves)
            node = fits(2 * node + 1) ? 2 * node + 1 : 2 * node;
        k = first + (node - leaves + 1) * blockLength;
        while (!isSmall(elements->at(--k))) {
        }
        return k;
    }

private:
    static const unsigned int blockLength = 16;

    template <class Matches>
    bool holds(unsigned int place, const Matches& matches) const {
        return place != none && matches(elements->at(place));
    }

    void lookAtBlock(unsigned int block) {
        unsigned int small = none, great = none;
        if (block <= (last - first) / blockLength) {
            small = great = first + block * blockLength;
            for (unsigned int k = small + 1; k <= last && (k - first) % blockLength != 0; ++k) {
                if (Elements::less(elements->at(k), elements->at(small)))
                    small = k;
                if (Elements::less(elements->at(great), elements->at(k)))
                    great = k;
            }
        }
        least[leaves + block] = small;
        greatest[leaves + block] = great;
    }

    // Places that do not exist are behind all others.
    void lookAtChildren(unsigned int node) {
        const unsigned int left = 2 * node, right = left + 1;
        const bool alone = least[right] == none;
        const auto at = [this](unsigned int place) { return elements->at(place); };
        least[node] = alone || !Elements::less(at(least[right]), at(least[left])) ? least[left]
                                                                                  : least[right];
        greatest[node] = alone || !Elements::less(at(greatest[left]), at(greatest[right]))
                             ? greatest[left]
                             : greatest[right];
    }

    const Elements* elements;
    unsigned int first = 0, last = 0;
    unsigned int leaves = 0;  // a power of two, for the blocks of `blockLength` elements
    unsigned int* least;      // malloced: node 1 is the root, the children of k are 2k and 2k + 1
    unsigned int* greatest;   // behind `least` in the same block
};
