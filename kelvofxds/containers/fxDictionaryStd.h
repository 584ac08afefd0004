// fxDictionaryStd.h - dictionaries and sets as ranges.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <type_traits>
#include <utility>

#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/containers/fxSet.h"
#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/str/fxStrStd.h"

/// Walks the entries of a dictionary as pairs of references. It is registered with its
/// dictionary, so entries may be removed during the walk.
template <class Key, class Value>
class fxEntryIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = std::pair<Key, std::remove_const_t<Value>>;
    using difference_type = std::ptrdiff_t;
    using reference = const std::pair<const Key&, Value&>&;
    using pointer = const std::pair<const Key&, Value&>*;

    fxEntryIterator() = default;
    explicit fxEntryIterator(fxDictionary& d) : walk(d) {}
    fxEntryIterator(const fxEntryIterator& other) : walk(other.walk) {}
    fxEntryIterator& operator=(const fxEntryIterator& other) {
        walk = other.walk;
        return *this;
    }

    reference operator*() const {
        entry.emplace(*static_cast<const Key*>(walk.getKey()),
                      *static_cast<Value*>(walk.getValue()));
        return *entry;
    }
    pointer operator->() const { return &**this; }
    fxEntryIterator& operator++() {
        ++walk;
        return *this;
    }
    fxEntryIterator operator++(int) {
        fxEntryIterator before(*this);
        ++*this;
        return before;
    }
    friend bool operator==(const fxEntryIterator& a, const fxEntryIterator& b) {
        return a.walk.getKey() == b.walk.getKey();
    }
    friend bool operator!=(const fxEntryIterator& a, const fxEntryIterator& b) { return !(a == b); }

private:
    fxDictIter walk;
    mutable std::optional<std::pair<const Key&, Value&>> entry;
};

/// See fxEntries.
template <class Key, class Value>
class fxEntryRange {
public:
    explicit fxEntryRange(fxDictionary& d) : dictionary(&d) {}
    fxEntryIterator<Key, Value> begin() const { return fxEntryIterator<Key, Value>(*dictionary); }
    fxEntryIterator<Key, Value> end() const { return {}; }

private:
    fxDictionary* dictionary;
};

/// The entries of any dictionary, whose keys are of type Key and whose values are of type Value.
template <class Key, class Value>
fxEntryRange<Key, Value> fxEntries(fxDictionary& d) {
    return fxEntryRange<Key, Value>(d);
}
template <class Key, class Value>
fxEntryRange<Key, const Value> fxEntries(const fxDictionary& d) {
    return fxEntryRange<Key, const Value>(const_cast<fxDictionary&>(d));
}

inline auto begin(fxStrStrDictionary& d) { return fxEntries<fxStr, fxStr>(d).begin(); }
inline auto end(fxStrStrDictionary& d) { return fxEntries<fxStr, fxStr>(d).end(); }
inline auto begin(const fxStrStrDictionary& d) { return fxEntries<fxStr, fxStr>(d).begin(); }
inline auto end(const fxStrStrDictionary& d) { return fxEntries<fxStr, fxStr>(d).end(); }
inline auto begin(fxVoidPtrDict& d) { return fxEntries<fxStr, void*>(d).begin(); }
inline auto end(fxVoidPtrDict& d) { return fxEntries<fxStr, void*>(d).end(); }
inline auto begin(const fxVoidPtrDict& d) { return fxEntries<fxStr, void*>(d).begin(); }
inline auto end(const fxVoidPtrDict& d) { return fxEntries<fxStr, void*>(d).end(); }

/// Adds all of the entries; equal keys get the new value.
inline void fxAddAll(fxStrStrDictionary& d, std::initializer_list<std::pair<fxText, fxText>> all) {
    for (const auto& [key, value] : all)
        d.add(key.str(), value.str());
}
inline void fxAddAll(fxVoidPtrDict& d, std::initializer_list<std::pair<fxText, void*>> all) {
    for (const auto& [key, value] : all)
        d.add(key.str(), value);
}
/// Adds all of the keys.
inline void fxAddAll(fxStrSet& set, std::initializer_list<fxText> all) {
    for (const auto& key : all)
        set.add(key.str());
}

/// Whether there is an entry for `key`.
inline bool contains(const fxStrStrDictionary& d, const fxText& key) { return d.find(key.str()); }
inline bool contains(const fxVoidPtrDict& d, const fxText& key) { return d.find(key.str()); }
inline bool contains(const fxStrSet& set, const fxText& key) {
    return set.contains(key.str()) != 0;
}

/// A copy of the value of `key`, or of `fallback`.
inline fxStr value_or(const fxStrStrDictionary& d, const fxText& key, const fxText& fallback) {
    const fxStr* value = d.find(key.str());
    return value ? *value : fallback.str();
}
/// The pointer of `key` as one to T, or `fallback`.
template <class T>
T* value_or(const fxVoidPtrDict& d, const fxText& key, T* fallback) {
    void* const* value = d.find(key.str());
    return value ? static_cast<T*>(*value) : fallback;
}

/// Walks the keys of a set; registered as fxEntryIterator is.
template <class Key>
class fxKeyIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Key;
    using difference_type = std::ptrdiff_t;
    using reference = const Key&;
    using pointer = const Key*;

    fxKeyIterator() = default;
    explicit fxKeyIterator(fxSet& s) : walk(s) {}

    reference operator*() const { return *static_cast<const Key*>(walk.getKey()); }
    pointer operator->() const { return static_cast<const Key*>(walk.getKey()); }
    fxKeyIterator& operator++() {
        ++walk;
        return *this;
    }
    fxKeyIterator operator++(int) {
        fxKeyIterator before(*this);
        ++*this;
        return before;
    }
    friend bool operator==(const fxKeyIterator& a, const fxKeyIterator& b) {
        return a.walk.getKey() == b.walk.getKey();
    }
    friend bool operator!=(const fxKeyIterator& a, const fxKeyIterator& b) { return !(a == b); }

private:
    fxSetIter walk;
};

inline auto begin(const fxStrSet& s) { return fxKeyIterator<fxStr>(const_cast<fxStrSet&>(s)); }
inline auto end(const fxStrSet&) { return fxKeyIterator<fxStr>(); }

/// Makes `to` a copy of `from`, which is what the copy constructors cannot do: entries that were
/// in `to` go, values are copied by the class's own operations.
template <class D>
std::enable_if_t<std::is_base_of_v<fxDictionary, D>, D&> fxCopyInto(const D& from, D& to) {
    if (&from != &to) {
        for (fxDictIter entry(to); entry.getKey(); ++entry)
            to.fxDictionary::remove(entry.getKey());
        for (fxDictIter entry(const_cast<D&>(from)); entry.getKey(); ++entry)
            to.addInternal(entry.getKey(), entry.getValue());
    }
    return to;
}
template <class S>
std::enable_if_t<std::is_base_of_v<fxSet, S>, S&> fxCopyInto(const S& from, S& to) {
    if (&from != &to) {
        for (fxSetIter key(to); key.getKey(); ++key)
            to.fxSet::remove(key.getKey());
        to |= from;
    }
    return to;
}
