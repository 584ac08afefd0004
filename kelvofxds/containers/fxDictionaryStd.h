// fxDictionaryStd.h - dictionaries as ranges of entries.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <type_traits>
#include <utility>

#include "kelvofxds/containers/fxArrayStdParts.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/containers/fxWalkStd.h"

/// Walks a dictionary. An entry is a pair of references, to its key and its value:
/// for (auto& [key, value] : dictionary).
///
/// It is registered with the dictionary, so any entries may be removed during the walk, the
/// present one, too; so may all of them, or the dictionary itself. Nothing that is left is
/// skipped or comes twice. Entries that are added meanwhile may be visited or not. What an
/// entry's references lead to is gone when the entry is. A copy is a second walk.
template <class Key, class Value>
class fxEntryIterator {
public:
    using iterator_category = std::input_iterator_tag;  ///< It reads once over.
    using value_type = std::pair<const Key&, Value&>;   ///< What it walks over.
    using difference_type = std::ptrdiff_t;             ///< Of distances.
    using reference = const value_type&;                ///< What * gives.
    using pointer = const value_type*;                  ///< What -> gives.

    /// At the end of every dictionary.
    fxEntryIterator() = default;
    /// On the first entry of `d`, which has keys and values of these types.
    explicit fxEntryIterator(fxDictionary& d) : walk(d) {}
    fxEntryIterator(const fxEntryIterator& other) : walk(other.walk) {}
    fxEntryIterator& operator=(const fxEntryIterator& other) {
        walk = other.walk;
        return *this;
    }

    /// The present entry; valid until the next step. Requires: there is one, and it has not been
    /// removed.
    reference operator*() const {
        return entry.emplace(*static_cast<const Key*>(walk.getKey()),
                             *static_cast<Value*>(walk.getValue()));
    }
    /// The same.
    pointer operator->() const { return &**this; }
    /// On the next entry that is left.
    fxEntryIterator& operator++() {
        walk.next();
        return *this;
    }
    /// The same; gives what it was before.
    fxEntryIterator operator++(int) {
        const fxEntryIterator before(*this);
        ++*this;
        return before;
    }
    /// Whether both are at the end, or on one entry.
    friend bool operator==(const fxEntryIterator& a, const fxEntryIterator& b) {
        return a.walk.isWith(b.walk);
    }
    friend bool operator!=(const fxEntryIterator& a, const fxEntryIterator& b) { return !(a == b); }

private:
    fxStdParts::Walk<fxStdParts::DictSteps> walk;
    mutable std::optional<value_type> entry;  // what * returned last
};

/// The entries of a dictionary; see fxEntries.
template <class Key, class Value>
class fxEntryRange {
public:
    /// Those of `d`, which stays its owner's.
    explicit fxEntryRange(fxDictionary& d) : of(&d) {}
    fxEntryIterator<Key, Value> begin() const { return fxEntryIterator<Key, Value>(*of); }
    fxEntryIterator<Key, Value> end() const { return {}; }
    /// Whose entries they are.
    fxDictionary& dictionary() const { return *of; }

private:
    fxDictionary* of;  // not owned
};

/// The entries of any dictionary: fxEntries<int, Phone>(book).
/// Requires: the keys are of type Key and the values of type Value.
template <class Key, class Value>
fxEntryRange<Key, Value> fxEntries(fxDictionary& d) {
    return fxEntryRange<Key, Value>(d);
}
/// The same of a const one, whose values are const; it, too, knows of the walk.
template <class Key, class Value>
fxEntryRange<Key, const Value> fxEntries(const fxDictionary& d) {
    return fxEntryRange<Key, const Value>(const_cast<fxDictionary&>(d));
}
/// A temporary one would end before its entries are walked.
template <class Key, class Value>
void fxEntries(const fxDictionary&&) = delete;

/// The types of the entries of a dictionary class. Specialise it for a class of your own, with
/// the members Key and Value, and everything here takes that class, too.
template <class D, class = void>
struct fxEntryTypes {};
template <class D>
struct fxEntryTypes<D, std::enable_if_t<std::is_base_of_v<fxStrStrDictionary, D>>> {
    using Key = fxStr;    ///< Of the keys.
    using Value = fxStr;  ///< Of the values.
};
/// Those of dictionaries of the library.
template <class D>
struct fxEntryTypes<D, std::enable_if_t<std::is_base_of_v<fxVoidPtrDict, D>>> {
    using Key = fxStr;    ///< Of the keys.
    using Value = void*;  ///< Of the values.
};

namespace fxStdParts {
/// Types of dictionaries that are known; nothing for other classes.
template <class D, bool = From<fxDictionary, D>::value>
struct KnownEntries {};
template <class D>
struct KnownEntries<D, true> : fxEntryTypes<std::remove_const_t<D>> {};
template <class D>
using KeyOf = typename KnownEntries<D>::Key;
template <class D>
using ValueOf = typename KnownEntries<D>::Value;
/// Their iterators, unless a class has begin() of its own.
template <class D>
using EntryIteratorOf =
    std::enable_if_t<!HasBegin<D>::value,
                     fxEntryIterator<KeyOf<D>, std::conditional_t<std::is_const_v<D>,
                                                                  const ValueOf<D>, ValueOf<D>>>>;

template <class Key, class Value>
Value* findValue(const fxEntryRange<Key, Value>& entries, const Given<Key>& key) {
    if constexpr (std::is_same_v<Key, fxStr>) {
        const fxStr text = key.str();
        return static_cast<Value*>(entries.dictionary().fxDictionary::find(&text));
    } else {
        return static_cast<Value*>(entries.dictionary().fxDictionary::find(&key));
    }
}
}  // namespace fxStdParts

/// The first entry, for loops.
template <class D>
FX_STD_REQUIRES((fxStdParts::From<fxDictionary, D>::value))
auto begin(D& dictionary) -> fxStdParts::EntryIteratorOf<D> {
    return fxStdParts::EntryIteratorOf<D>(dictionary);
}
/// The same.
template <class D>
FX_STD_REQUIRES((fxStdParts::From<fxDictionary, D>::value))
auto begin(const D& dictionary) -> fxStdParts::EntryIteratorOf<const D> {
    return fxStdParts::EntryIteratorOf<const D>(const_cast<D&>(dictionary));
}
/// The end.
template <class D>
FX_STD_REQUIRES((fxStdParts::From<fxDictionary, D>::value))
auto end(D&) -> fxStdParts::EntryIteratorOf<D> {
    return {};
}
/// The same.
template <class D>
FX_STD_REQUIRES((fxStdParts::From<fxDictionary, D>::value))
auto end(const D&) -> fxStdParts::EntryIteratorOf<const D> {
    return {};
}

/// Adds the entries of the list; a key that is there gets the new value.
template <class Key, class Value>
void fxAddAll(
    const fxEntryRange<Key, Value>& entries,
    std::initializer_list<std::pair<fxStdParts::Given<Key>, fxStdParts::Given<Value>>> added) {
    for (const auto& [given, value] : added) {
        const Key key(fxStdParts::madeOf<Key>(given));
        const Value copy(fxStdParts::madeOf<Value>(value));
        entries.dictionary().addInternal(&key, &copy);
    }
}
/// The same for a dictionary: fxAddAll(capitals, {{"Peru", "Lima"}, {"Togo", "Lomé"}}).
template <class D>
void fxAddAll(D& dictionary,
              std::initializer_list<std::pair<fxStdParts::Given<fxStdParts::KeyOf<D>>,
                                              fxStdParts::Given<fxStdParts::ValueOf<D>>>>
                  added) {
    fxAddAll(fxEntries<fxStdParts::KeyOf<D>, fxStdParts::ValueOf<D>>(dictionary), added);
}

/// Whether there is an entry for `key`.
template <class Key, class Value>
bool contains(const fxEntryRange<Key, Value>& entries, const fxStdParts::Given<Key>& key) {
    return fxStdParts::findValue(entries, key) != nullptr;
}
/// The same.
template <class D>
bool contains(const D& dictionary, const fxStdParts::Given<fxStdParts::KeyOf<D>>& key) {
    return contains(fxEntries<fxStdParts::KeyOf<D>, fxStdParts::ValueOf<D>>(dictionary), key);
}

/// A copy of the value of `key`; of `fallback` if there is none. Nothing is added.
template <class Key, class Value>
std::remove_const_t<Value> value_or(const fxEntryRange<Key, Value>& entries,
                                    const fxStdParts::Given<Key>& key,
                                    const fxStdParts::Given<std::remove_const_t<Value>>& fallback) {
    const auto* const value = fxStdParts::findValue(entries, key);
    return value ? *value : fxStdParts::madeOf<std::remove_const_t<Value>>(fallback);
}
/// The same.
template <class D>
std::enable_if_t<!fxStdParts::From<fxVoidPtrDict, D>::value, fxStdParts::ValueOf<D>> value_or(
    const D& dictionary, const fxStdParts::Given<fxStdParts::KeyOf<D>>& key,
    const fxStdParts::Given<fxStdParts::ValueOf<D>>& fallback) {
    return value_or(fxEntries<fxStdParts::KeyOf<D>, fxStdParts::ValueOf<D>>(dictionary), key,
                    fallback);
}
/// The pointer of `key`, as one to what `fallback` leads to; `fallback` if there is none.
template <class T>
T* value_or(const fxVoidPtrDict& dictionary, const fxText& key, T* fallback) {
    void* const* const value = fxStdParts::findValue(fxEntries<fxStr, void*>(dictionary), key);
    return value ? static_cast<T*>(*value) : fallback;
}
/// The same where the fallback is nullptr.
inline void* value_or(const fxVoidPtrDict& dictionary, const fxText& key, std::nullptr_t) {
    return value_or<void>(dictionary, key, static_cast<void*>(nullptr));
}
