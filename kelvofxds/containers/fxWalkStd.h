// fxWalkStd.h - the walk behind loops over dictionaries and sets; not for hosts.
#pragma once

#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/containers/fxSet.h"

namespace fxStdParts {

/// What fxDictIter and its dictionary keep for those that are derived from them.
struct DictSteps : fxDictIter {
    using Container = fxDictionary;
    using fxDictIter::fxDictIter;

    Container* container() const { return dict; }
    static void end(fxDictIter& iter) {
        iter.*(&DictSteps::dict) = nullptr;
        iter.*(&DictSteps::bucket) = nullptr;
        iter.*(&DictSteps::flags) = advanced;
    }
    static fxDictIters& itersOf(Container& d) {
        struct Fields : fxDictionary {
            static fxDictIters& of(fxDictionary& d) { return d.*(&Fields::iters); }
        };
        return Fields::of(d);
    }
};

/// What fxSetIter and its set keep.
struct SetSteps : fxSetIter {
    using Container = fxSet;
    using fxSetIter::fxSetIter;

    Container* container() const { return set; }
    static void end(fxSetIter& iter) {
        iter.*(&SetSteps::set) = nullptr;
        iter.*(&SetSteps::bucket) = nullptr;
        iter.*(&SetSteps::flags) = advanced;
    }
    static fxSetIters& itersOf(Container& s) {
        struct Fields : fxSet {
            static fxSetIters& of(fxSet& s) { return s.*(&Fields::iters); }
        };
        return Fields::of(s);
    }
};

/// A registered iterator that skips nothing, whatever is removed.
///
/// When the present entry is removed, the iterators of the library stand on the one behind it. If
/// that is removed, too, before the next step, those of hosts do not know any more where they
/// were, and go to the next bucket. This one follows: it is moved on again. New entries are in
/// front of their bucket, so none of the present bucket is visited.
template <class Steps>
class Walk : public Steps {
public:
    using typename Steps::Container;

    Walk() = default;
    explicit Walk(Container& c) : Steps(c) { this->flags |= Steps::follows; }

    void next() {
        if (this->flags == Steps::follows && this->bucket && this->bucket->next) {
            this->bucket = this->bucket->next;
        } else {
            Steps::step();
            this->flags |= Steps::follows;
        }
    }
    bool isOver() const { return !this->container(); }
    bool isWith(const Walk& other) const {
        return isOver() ? other.isOver()
                        : this->container() == other.container() && this->bucket == other.bucket;
    }
};

/// Brings all iterators on `c` to their end.
template <class Steps>
void endIters(typename Steps::Container& c) {
    auto& iters = Steps::itersOf(c);
    for (unsigned int i = 0; i < iters.length(); ++i) {
        if (iters[i])
            Steps::end(*iters[i]);
        iters[i] = nullptr;
    }
}

}  // namespace fxStdParts
