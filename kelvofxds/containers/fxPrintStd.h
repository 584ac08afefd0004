// fxPrintStd.h - arrays, dictionaries and sets on std::ostream.
#pragma once

#include <ostream>

#include "kelvofxds/containers/fxArrayStd.h"
#include "kelvofxds/containers/fxDictionaryStd.h"

namespace fxStdParts {
inline void print(std::ostream& out, const fxStr& s) { out << '"' << fxView(s) << '"'; }
template <class T>
void print(std::ostream& out, const T& value) {
    out << value;
}
template <class Key, class Value>
void print(std::ostream& out, const std::pair<const Key&, Value&>& entry) {
    print(out, entry.first);
    out << ": ";
    print(out, entry.second);
}
template <class Range>
std::ostream& printAll(std::ostream& out, const Range& range, const char* ends) {
    const char* before = "";
    out << ends[0];
    for (const auto& value : range) {
        out << before;
        print(out, value);
        before = ", ";
    }
    return out << ends[1];
}
}  // namespace fxStdParts

/// [1, 2, 3] or ["a", "b"].
template <class A, class = fxElementOf<A>>
std::ostream& operator<<(std::ostream& out, const A& array) {
    return fxStdParts::printAll(out, array, "[]");
}
/// {"Peru": "Lima"}.
inline std::ostream& operator<<(std::ostream& out, const fxStrStrDictionary& d) {
    return fxStdParts::printAll(out, d, "{}");
}
inline std::ostream& operator<<(std::ostream& out, const fxVoidPtrDict& d) {
    return fxStdParts::printAll(out, d, "{}");
}
/// {"a", "b"}.
inline std::ostream& operator<<(std::ostream& out, const fxStrSet& s) {
    return fxStdParts::printAll(out, s, "{}");
}
