// fxCopyStd.h - copies of dictionaries and sets that have entries.
#pragma once

#include <type_traits>
#include <utility>

#include "kelvofxds/containers/fxArrayOf.h"
#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/containers/fxDictionaryStd.h"
#include "kelvofxds/containers/fxSet.h"
#include "kelvofxds/containers/fxSetStd.h"

namespace fxStdParts {

/// The entries of a dictionary, the last one first. Added in that order, those of a bucket are as
/// they were.
inline void addBackwards(const fxDictionary& from, fxDictionary& to) {
    struct Entry {
        const void* key;
        const void* value;
    };
    fxArrayOf<Entry> entries;
    for (fxDictIter i(const_cast<fxDictionary&>(from)); i.getKey(); ++i)
        entries.append(Entry{i.getKey(), i.getValue()});
    for (unsigned int i = entries.length(); i != 0; --i)
        to.addInternal(entries[i - 1].key, entries[i - 1].value);
}
inline void addBackwards(const fxSet& from, fxSet& to) {
    fxArrayOf<const void*> keys;
    for (fxSetIter i(const_cast<fxSet&>(from)); i.getKey(); ++i)
        keys.append(i.getKey());
    for (unsigned int i = keys.length(); i != 0; --i)
        to.add(keys[i - 1]);
}

/// Removes every entry by the container's own remove, when its iterators are at their end.
template <class Steps, class Container>
void removeAll(Container& c) {
    endIters<Steps>(c);
    for (Walk<Steps> walk(c); !walk.isOver(); walk.next())
        c.remove(walk.getKey());
}

/// What is known of the entries; void if nothing is.
template <class C, class = void>
struct DictionaryTypes {
    using type = void;
};
template <class D>
struct DictionaryTypes<D, std::void_t<KeyOf<D>>> {
    using type = std::pair<KeyOf<D>, ValueOf<D>>;
};
template <class C, class = void>
struct SetTypes {
    using type = void;
};
template <class S>
struct SetTypes<S, std::void_t<SetKeyOf<S>>> {
    using type = SetKeyOf<S>;
};

/// Whether entries of one class may be copied into an object of the other.
template <class From, class To, template <class, class> class Types>
constexpr bool haveSameEntries() {
    using FromTypes = typename Types<From, void>::type;
    using ToTypes = typename Types<To, void>::type;
    if constexpr (std::is_void_v<FromTypes> || std::is_void_v<ToTypes>)
        return std::is_base_of_v<From, To> || std::is_base_of_v<To, From>;
    else
        return std::is_same_v<FromTypes, ToTypes>;
}

template <class Base, class Steps, template <class, class> class Types, class From, class To>
To& copyInto(const From& from, To& to) {
    static_assert(!std::is_same_v<From, Base> && !std::is_same_v<To, Base>,
                  "fxCopyInto: what the entries are is not known of a mere fxDictionary or fxSet");
    static_assert(haveSameEntries<From, To, Types>(),
                  "fxCopyInto: the two have entries of different types");
    const Base& source = from;
    Base& target = to;
    if (&source != &target) {
        removeAll<Steps>(target);
        addBackwards(source, target);
    }
    return to;
}

}  // namespace fxStdParts

/// Makes `to` a copy of `from` and returns it: what it held goes, and it gets copies of all
/// entries, made by its class's own operations. This is what a copy constructor and an assignment
/// of dictionaries and sets do not do. Where both have as many buckets, walks of both are alike.
/// A dictionary is left alone that is copied into itself. Linear; iterators on `to`, those of
/// loops among them, are at their end then.
/// To add entries only, assign a dictionary, or use operator|= of sets.
template <class From, class To>
std::enable_if_t<std::is_base_of_v<fxDictionary, From> && std::is_base_of_v<fxDictionary, To>, To&>
fxCopyInto(const From& from, To& to) {
    return fxStdParts::copyInto<fxDictionary, fxStdParts::DictSteps, fxStdParts::DictionaryTypes>(
        from, to);
}
/// The same for sets.
template <class From, class To>
std::enable_if_t<std::is_base_of_v<fxSet, From> && std::is_base_of_v<fxSet, To>, To&> fxCopyInto(
    const From& from, To& to) {
    return fxStdParts::copyInto<fxSet, fxStdParts::SetSteps, fxStdParts::SetTypes>(from, to);
}
