// fxPrintStd.h - arrays, dictionaries and sets on std::ostream.
#pragma once

#include <ostream>
#include <string_view>
#include <type_traits>
#include <utility>

#include "kelvofxds/containers/fxArrayStd.h"
#include "kelvofxds/containers/fxDictionaryStd.h"
#include "kelvofxds/containers/fxSetStd.h"

namespace fxStdParts {

/// The bytes between quotes, as a literal of C++ has them; from 128 on as they are.
inline void printQuoted(std::ostream& out, std::string_view text, char quote) {
    static const char letters[] = "abtnvfr";  // 7 to 13
    out << quote;
    for (const char c : text) {
        const unsigned int byte = static_cast<unsigned char>(c);
        if (c == quote || c == '\\')
            out << '\\' << c;
        else if (byte >= 7 && byte <= 13)
            out << '\\' << letters[byte - 7];
        else if (byte < 32 || byte == 127)
            out << '\\' << static_cast<char>('0' + byte / 64)
                << static_cast<char>('0' + byte / 8 % 8) << static_cast<char>('0' + byte % 8);
        else
            out << c;
    }
    out << quote;
}

/// One element, key or value.
template <class T>
void printOne(std::ostream& out, const T& value) {
    if constexpr (std::is_same_v<T, fxStr>)
        printQuoted(out, fxView(value), '"');
    else if constexpr (std::is_same_v<T, char>)
        printQuoted(out, std::string_view(&value, 1), '\'');
    else if constexpr (std::is_same_v<T, unsigned char> || std::is_same_v<T, signed char>)
        out << static_cast<int>(value);
    else if constexpr (std::is_same_v<T, bool>)
        out << (value ? "true" : "false");
    else
        out << value;
}

/// All of a range between a pair of brackets.
template <class Range, class Print>
std::ostream& printAll(std::ostream& out, const Range& range, const char* brackets, Print print) {
    const char* before = "";
    out << brackets[0];
    for (const auto& value : range) {
        out << before;
        print(value);
        before = ", ";
    }
    return out << brackets[1];
}

}  // namespace fxStdParts

/// [1, 2, 3], ["a", "b"], ['a', 'b'], [true, false].
template <class A>
auto operator<<(std::ostream& out, const A& array)
    -> std::enable_if_t<sizeof(fxElementOf<A>) != 0, std::ostream&> {
    return fxStdParts::printAll(out, array, "[]", [&out](const auto& element) {
        if constexpr (std::is_base_of_v<fxBoolArray, A>)
            fxStdParts::printOne(out, element != 0);
        else
            fxStdParts::printOne(out, element);
    });
}
/// {"Peru": "Lima", "Togo": "Lomé"}.
template <class Key, class Value>
std::ostream& operator<<(std::ostream& out, const fxEntryRange<Key, Value>& entries) {
    return fxStdParts::printAll(out, entries, "{}", [&out](const auto& entry) {
        fxStdParts::printOne(out, entry.first);
        out << ": ";
        fxStdParts::printOne(out, entry.second);
    });
}
/// The same.
template <class D>
auto operator<<(std::ostream& out, const D& dictionary)
    -> std::enable_if_t<sizeof(fxStdParts::ValueOf<D>) != 0, std::ostream&> {
    return out << fxEntries<fxStdParts::KeyOf<D>, fxStdParts::ValueOf<D>>(dictionary);
}
/// {"Ada", "Bob"}.
template <class Key>
std::ostream& operator<<(std::ostream& out, const fxKeyRange<Key>& keys) {
    return fxStdParts::printAll(out, keys, "{}",
                                [&out](const Key& key) { fxStdParts::printOne(out, key); });
}
/// The same.
template <class S>
auto operator<<(std::ostream& out, const S& set)
    -> std::enable_if_t<sizeof(fxStdParts::SetKeyOf<S>) != 0, std::ostream&> {
    return out << fxKeys<fxStdParts::SetKeyOf<S>>(set);
}
