// fxSetStd.h - sets as ranges of keys.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <type_traits>
#include <utility>

#include "kelvofxds/containers/fxArrayStdParts.h"
#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxWalkStd.h"

/// Walks the keys of a set, which nobody may change: for (const fxStr& key : set). Keys may be
/// removed during the walk as entries may during that of a dictionary; see fxEntryIterator.
template <class Key>
class fxKeyIterator {
public:
    using iterator_category = std::input_iterator_tag;  ///< It reads once over.
    using value_type = Key;                             ///< What it walks over.
    using difference_type = std::ptrdiff_t;             ///< Of distances.
    using reference = const Key&;                       ///< What * gives.
    using pointer = const Key*;                         ///< What -> gives.

    /// At the end of every set.
    fxKeyIterator() = default;
    /// On the first key of `s`, which has keys of this type.
    explicit fxKeyIterator(fxSet& s) : walk(s) {}

    /// The present key. Requires: there is one, and it has not been removed.
    reference operator*() const { return *static_cast<const Key*>(walk.getKey()); }
    /// The same.
    pointer operator->() const { return static_cast<const Key*>(walk.getKey()); }
    /// On the next key that is left.
    fxKeyIterator& operator++() {
        walk.next();
        return *this;
    }
    /// The same; gives what it was before.
    fxKeyIterator operator++(int) {
        const fxKeyIterator before(*this);
        ++*this;
        return before;
    }
    /// Whether both are at the end, or on one key.
    friend bool operator==(const fxKeyIterator& a, const fxKeyIterator& b) {
        return a.walk.isWith(b.walk);
    }
    friend bool operator!=(const fxKeyIterator& a, const fxKeyIterator& b) { return !(a == b); }

private:
    fxStdParts::Walk<fxStdParts::SetSteps> walk;
};

/// The keys of a set; see fxKeys.
template <class Key>
class fxKeyRange {
public:
    /// Those of `s`, which stays its owner's.
    explicit fxKeyRange(fxSet& s) : of(&s) {}
    fxKeyIterator<Key> begin() const { return fxKeyIterator<Key>(*of); }
    fxKeyIterator<Key> end() const { return {}; }
    /// Whose keys they are.
    fxSet& set() const { return *of; }

private:
    fxSet* of;  // not owned
};

/// The keys of any set: fxKeys<Point>(set); a const one, too, knows of the walk.
/// Requires: the keys are of type Key.
template <class Key>
fxKeyRange<Key> fxKeys(const fxSet& s) {
    return fxKeyRange<Key>(const_cast<fxSet&>(s));
}
/// A temporary one would end before its keys are walked.
template <class Key>
void fxKeys(const fxSet&&) = delete;

/// The type of the keys of a set class. Specialise it for a class of your own, with the member
/// Key, and everything here takes that class, too.
template <class S, class = void>
struct fxKeyTypes {};
template <class S>
struct fxKeyTypes<S, std::enable_if_t<std::is_base_of_v<fxStrSet, S>>> {
    using Key = fxStr;  ///< Of the keys.
};

namespace fxStdParts {
/// Types of sets that are known; nothing for other classes.
template <class S, bool = From<fxSet, S>::value>
struct KnownKeys {};
template <class S>
struct KnownKeys<S, true> : fxKeyTypes<std::remove_const_t<S>> {};
template <class S>
using SetKeyOf = typename KnownKeys<S>::Key;
/// Their iterators, unless a class has begin() of its own.
template <class S>
using KeyIteratorOf = std::enable_if_t<!HasBegin<S>::value, fxKeyIterator<SetKeyOf<S>>>;
}  // namespace fxStdParts

/// The first key, for loops.
template <class S>
FX_STD_REQUIRES((fxStdParts::From<fxSet, S>::value))
auto begin(S& set) -> fxStdParts::KeyIteratorOf<S> {
    return fxStdParts::KeyIteratorOf<S>(set);
}
/// The same.
template <class S>
FX_STD_REQUIRES((fxStdParts::From<fxSet, S>::value))
auto begin(const S& set) -> fxStdParts::KeyIteratorOf<const S> {
    return fxStdParts::KeyIteratorOf<S>(const_cast<S&>(set));
}
/// The end.
template <class S>
FX_STD_REQUIRES((fxStdParts::From<fxSet, S>::value))
auto end(S&) -> fxStdParts::KeyIteratorOf<S> {
    return {};
}
/// The same.
template <class S>
FX_STD_REQUIRES((fxStdParts::From<fxSet, S>::value))
auto end(const S&) -> fxStdParts::KeyIteratorOf<const S> {
    return {};
}

/// Adds the keys of the list that are not there.
template <class Key>
void fxAddAll(const fxKeyRange<Key>& keys, std::initializer_list<fxStdParts::Given<Key>> added) {
    for (const auto& given : added) {
        const Key key(fxStdParts::madeOf<Key>(given));
        keys.set().fxSet::add(&key);
    }
}
/// The same for a set: fxAddAll(names, {"Ada", "Bob"}).
template <class S>
void fxAddAll(S& set, std::initializer_list<fxStdParts::Given<fxStdParts::SetKeyOf<S>>> added) {
    fxAddAll(fxKeys<fxStdParts::SetKeyOf<S>>(set), added);
}

/// Whether `key` is in the set.
template <class Key>
bool contains(const fxKeyRange<Key>& keys, const fxStdParts::Given<Key>& key) {
    const Key copy(fxStdParts::madeOf<Key>(key));
    return keys.set().fxSet::contains(&copy) != 0;
}
/// The same.
template <class S>
bool contains(const S& set, const fxStdParts::Given<fxStdParts::SetKeyOf<S>>& key) {
    return contains(fxKeys<fxStdParts::SetKeyOf<S>>(set), key);
}
