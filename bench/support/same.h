// same.h - whether the library and a peer came to the same result.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "kelvofxds/containers/fxArray.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxStrArray.h"

inline bool same(std::int64_t a, std::int64_t b) { return a == b; }

inline bool same(const fxStr& a, const std::string& b) {
    return a.length() == b.size() && std::memcmp(a.c_str(), b.data(), b.size()) == 0;
}

template <class Element>
bool same(const fxArray& a, const std::vector<Element>& b) {
    return a.getElemSize() == sizeof(Element) && a.length() == b.size() &&
           (b.empty() || std::memcmp(a.at(0), b.data(), a.getLen()) == 0);
}

inline bool same(const fxStrArray& a, const std::vector<std::string>& b) {
    if (a.length() != b.size())
        return false;
    for (unsigned int i = 0; i < a.length(); ++i) {
        if (!same(a[i], b[i]))
            return false;
    }
    return true;
}

inline bool same(const fxStrStrDictionary& a,
                 const std::unordered_map<std::string, std::string>& b) {
    if (a.length() != b.size())
        return false;
    for (const auto& pair : b) {
        const fxStr* value = a.find(pair.first.c_str());
        if (!value || !same(*value, pair.second))
            return false;
    }
    return true;
}

template <class Ours, class Peer>
bool same(const std::unique_ptr<Ours>& a, const std::unique_ptr<Peer>& b) {
    return a && b && same(*a, *b);
}

template <class Ours1, class Ours2, class Peer1, class Peer2>
bool same(const std::pair<Ours1, Ours2>& a, const std::pair<Peer1, Peer2>& b) {
    return same(a.first, b.first) && same(a.second, b.second);
}
