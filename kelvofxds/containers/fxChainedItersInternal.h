// fxChainedItersInternal.h - the iterators of dictionaries and sets.
#pragma once

#include "kelvofxds/containers/fxChainsInternal.h"
#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/containers/fxSet.h"

/// What fxDictIter and fxSetIter do alike, and what their containers do with
/// them. `Iter` is one of the two, `C` its container.
struct fxChainedIters {
    static fxDictionary*& containerOf(fxDictIter& iter) { return iter.dict; }
    static fxSet*& containerOf(fxSetIter& iter) { return iter.set; }

    // What an iterator does.

    template <class Iter, class C>
    static void attach(Iter& iter, C& c) {
        containerOf(iter) = &c;
        iter.bucketIndex = 0;
        iter.flags = 0;
        iter.bucket = c.bucketCount() != 0 ? c.buckets[0] : nullptr;
        c.addIter(&iter);
        if (!iter.bucket)
            iter.advanceToValid();
    }

    /// Of an iterator that is attached to nothing.
    template <class Iter>
    static void copy(Iter& iter, const Iter& other) {
        containerOf(iter) = containerOf(const_cast<Iter&>(other));
        iter.bucketIndex = other.bucketIndex;
        iter.flags = other.flags;
        iter.bucket = other.bucket;
        if (containerOf(iter))
            containerOf(iter)->addIter(&iter);
    }

    template <class Iter>
    static void detach(Iter& iter) {
        if (containerOf(iter))
            containerOf(iter)->removeIter(&iter);
    }

    /// ++ where it is not just a move along a chain.
    template <class Iter>
    static void step(Iter& iter) {
        if (!containerOf(iter))
            return;
        if (iter.flags & Iter::parked) {
            iter.flags = 0;
            iter.advanceToValid();
        } else if (iter.flags & Iter::advanced) {
            iter.flags &= ~Iter::advanced;
        } else {
            iter.bucket = iter.bucket->next;
            if (!iter.bucket)
                iter.advanceToValid();
        }
    }

    template <class Iter>
    static void advanceToValid(Iter& iter) {
        const auto& c = *containerOf(iter);
        const unsigned int count = c.bucketCount();
        while (++iter.bucketIndex < count) {
            iter.bucket = c.buckets[iter.bucketIndex];
            if (iter.bucket)
                return;
        }
        iter.bucket = nullptr;
        detach(iter);
        containerOf(iter) = nullptr;
        iter.flags |= Iter::advanced;
    }

    /// Moves off `b`, which has been unlinked, if it is the present entry.
    template <class Iter, class Bucket>
    static void leave(Iter& iter, const Bucket* b) {
        if (iter.bucket != b || !containerOf(iter) || (iter.flags & Iter::parked))
            return;
        if ((iter.flags & Iter::advanced) && !(iter.flags & Iter::follows)) {
            // A second removal leaves the iterator on the removed entry.
            iter.flags |= Iter::parked;
        } else {
            iter.bucket = b->next;
            if (!iter.bucket)
                iter.advanceToValid();
        }
        if (containerOf(iter))
            iter.flags |= Iter::advanced;
    }

    // What a container does with those in its list.

    /// Enters `iter` at a vacant place or at the end, unless it is there already.
    template <class Iters, class Iter>
    static void add(Iters& iters, Iter* iter) {
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
    static void remove(Iters& iters, Iter* iter) {
        const unsigned int place = iters.find(&iter);
        if (place < iters.length())
            iters.remove(place, 1);
    }

    /// Calls `visit` with every iterator; one that deregisters itself meanwhile
    /// hides no other.
    template <class Iters, class Visit>
    static void visit(const Iters& iters, Visit visit) {
        for (unsigned int i = 0; i < iters.length();) {
            auto* iter = iters[i];
            if (iter)
                visit(*iter);
            if (i < iters.length() && iters[i] == iter)
                ++i;
        }
    }

    /// Lets go of all of them: one that no longer knows its container cannot
    /// take its pointer back when it goes.
    template <class Iters>
    static void letGo(Iters& iters) {
        for (unsigned int i = 0; i < iters.length(); ++i) {
            auto* iter = iters[i];
            iters[i] = nullptr;
            if (!iter)
                continue;
            containerOf(*iter) = nullptr;
            iter->bucket = nullptr;
        }
    }
};
