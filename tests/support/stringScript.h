// stringScript.h - operations on strings beside std::string, as a script says.
#pragma once

#include <cctype>
#include <cstring>
#include <string>

#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxTempStr.h"
#include "tests/support/script.h"

/// A script is a list of steps: the operation, the string it is for, and what it takes.
namespace stringScript {

const unsigned int longest = 400;  // a string that is longer starts again

// A string and what it should hold.
struct Pair {
    fxStr ours;
    std::string model;

    void check() const {
        require(ours.length() == model.size());
        require(std::memcmp(ours.c_str(), model.c_str(), model.size() + 1) == 0);
    }
};

inline unsigned int least(std::size_t a, std::size_t b) {
    return static_cast<unsigned int>(a < b ? a : b);
}

// What 0 stands for where texts have a length.
inline std::string counted(const std::string& text, unsigned int n) {
    return n == 0 ? std::string(text.c_str()) : text.substr(0, n);
}

inline bool isIn(const std::string& set, char c) { return set.find(c) != std::string::npos; }

// --- the searches, byte by byte ---

inline unsigned int forward(const std::string& s, unsigned int pos, const std::string& set,
                            bool wanted) {
    pos = least(pos, s.size());
    while (pos < s.size() && isIn(set, s[pos]) != wanted)
        ++pos;
    return pos;
}

inline unsigned int backward(const std::string& s, unsigned int pos, const std::string& set,
                             bool wanted) {
    pos = least(pos, s.size());
    while (pos > 0 && isIn(set, s[pos - 1]) != wanted)
        --pos;
    return pos;
}

inline void search(const Pair& p, Script& script) {
    const unsigned int pos = script.below(255);
    const std::string set = script.text(5) + "a";
    const unsigned int n = static_cast<unsigned int>(set.size());
    const char c = set[0];
    const std::string one(1, c);
    require(p.ours.next(pos, c) == forward(p.model, pos, one, true));
    require(p.ours.nextR(pos, c) == backward(p.model, pos, one, true));
    require(p.ours.skip(pos, c) == forward(p.model, pos, one, false));
    require(p.ours.skipR(pos, c) == backward(p.model, pos, one, false));
    require(p.ours.next(pos, set.data(), n) == forward(p.model, pos, set, true));
    require(p.ours.nextR(pos, set.data(), n) == backward(p.model, pos, set, true));
    require(p.ours.skip(pos, set.data(), n) == forward(p.model, pos, set, false));
    require(p.ours.skipR(pos, set.data(), n) == backward(p.model, pos, set, false));
}

inline void takeTokens(const Pair& p, Script& script) {
    const std::string set = script.text(3) + "b";
    const unsigned int n = static_cast<unsigned int>(set.size());
    unsigned int pos = least(script.byte(), p.model.size());
    for (unsigned int steps = 0; pos < p.model.size(); ++steps) {
        require(steps <= p.model.size());
        const unsigned int start = pos;
        const unsigned int end = forward(p.model, start, set, true);
        const fxStr token = p.ours.token(pos, set.data(), n);
        require(token == fxStr(p.model.data() + start, end - start));
        require(pos == forward(p.model, end, set, false));
    }
    pos = least(script.byte(), p.model.size());
    for (unsigned int steps = 0; pos > 0; ++steps) {
        require(steps <= p.model.size());
        const unsigned int end = pos;
        const unsigned int start = backward(p.model, end, set, true);
        const fxStr token = p.ours.tokenR(pos, set.data(), n);
        require(token == fxStr(p.model.data() + start, end - start));
        require(pos == backward(p.model, start, set, false));
    }
}

inline void takeParts(const Pair& p, Script& script) {
    const unsigned int pos = script.byte();
    const unsigned int n = script.byte();
    const std::string& m = p.model;
    const std::string part = m.substr(least(pos, m.size()), n);
    require(p.ours.extract(pos, n) == fxStr(part.data(), static_cast<unsigned int>(part.size())));
    const unsigned int some = least(n, m.size());
    require(p.ours.head(n) == fxStr(m.data(), some));
    require(p.ours.tail(n) == fxStr(m.data() + m.size() - some, some));
    require(p.ours.copy() == p.ours);
    const std::string set = script.word(4, "abc ") + "a";
    const unsigned int end = backward(m, longest * 4, set, false);
    const unsigned int start = forward(m.substr(0, end), 0, set, false);
    require(p.ours.trimRight(set.c_str()) == fxStr(m.data(), end));
    require(p.ours.trim(set.c_str()) == fxStr(m.data() + start, end - start));
}

// --- the edits ---

inline void insert(Pair& p, Script& script) {
    const unsigned int pos = script.byte();
    const std::string text = script.text(30);
    const unsigned int n = script.below(static_cast<unsigned int>(text.size()) + 1);
    p.ours.insert(text.c_str(), pos, n);
    p.model.insert(least(pos, p.model.size()), counted(text, n));
}

inline void replace(Pair& p, Script& script) {
    const unsigned int pos = script.byte();
    const std::string text = script.text(30);
    const unsigned int n = script.below(static_cast<unsigned int>(text.size()) + 1);
    p.ours.replace(text.c_str(), pos, n);
    const std::string with = counted(text, n);
    const unsigned int place = least(pos, p.model.size());
    const unsigned int room = least(with.size(), p.model.size() - place);
    p.model.replace(place, room, with, 0, room);
}

inline void remove(Pair& p, unsigned int pos, unsigned int n) {
    if (n == p.model.size() || n == p.model.size() + 1)
        p.model.clear();
    else
        p.model.erase(least(pos, p.model.size()), n);
}

inline void take(Pair& p, Script& script) {
    const unsigned int pos = script.byte();
    const unsigned int n = script.byte();
    if (script.below(2) == 0) {
        p.ours.remove(pos, n);
    } else {
        const std::string part = p.model.substr(least(pos, p.model.size()), n);
        require(p.ours.cut(pos, n) == fxStr(part.data(), static_cast<unsigned int>(part.size())));
    }
    remove(p, pos, n);
}

// Texts that lie in the string itself.
inline void useOwnText(Pair& p, Script& script) {
    const unsigned int from = least(script.byte(), p.model.size());
    const std::string part = p.model.substr(from).c_str();
    const unsigned int pos = least(script.byte(), p.model.size());
    switch (script.below(4)) {
        case 0:
            p.ours.append(p.ours.c_str() + from);
            p.model += part;
            break;
        case 1:
            p.ours.insert(p.ours.c_str() + from, pos);
            p.model.insert(pos, part);
            break;
        case 2:
            p.ours = p.ours.c_str() + from;
            p.model = part;
            break;
        default:
            p.ours.format("%s-%u", p.ours.c_str() + from, pos);
            p.model = part + "-" + std::to_string(pos);
            break;
    }
}

inline void resize(Pair& p, Script& script) {
    const unsigned int n = script.byte();
    switch (script.below(3)) {
        case 0:
            p.ours.resize(n, 'x');
            p.model.resize(n);
            break;
        case 1:
            p.ours.setMaxLength(n);
            break;
        default:
            p.ours.lower();
            for (char& c : p.model)
                c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            break;
    }
}

inline void join(Pair& p, const Pair& other, Script& script) {
    const std::string text = script.word(20, "xyz");
    if (script.below(2) == 0) {
        p.ours = other.ours | text.c_str() | other.ours;
        p.model = other.model + text + other.model;
    } else {
        p.ours = text.c_str() | p.ours;
        p.model.insert(0, text);
    }
}

inline int sign(int n) { return (n > 0) - (n < 0); }

inline void compareBoth(const Pair& a, const Pair& b) {
    require((a.ours == b.ours) == (a.model == b.model));
    require((a.ours != b.ours) == (a.model != b.model));
    const int order = std::strcmp(a.model.c_str(), b.model.c_str());
    require((a.ours < b.ours) == (order < 0));
    require((a.ours <= b.ours.c_str()) == (order <= 0));
    require((a.ours.c_str() > b.ours) == (order > 0));
    require((a.ours >= b.ours) == (order >= 0));
    require(sign(compare(a.ours, b.ours)) == sign(order));
    require(!(a.ours == b.ours) || a.ours.hash() == b.ours.hash());
}

inline void step(Pair* pairs, Script& script) {
    const unsigned int operation = script.below(12);
    Pair& p = pairs[script.below(3)];
    const Pair& other = pairs[script.below(3)];
    const std::string text = operation < 2 ? script.text(40) : "";
    switch (operation) {
        case 0:
            p.ours = fxStr(text.data(), static_cast<unsigned int>(text.size()));
            p.model = text;
            break;
        case 1: {
            const unsigned int n = script.below(static_cast<unsigned int>(text.size()) + 1);
            p.ours.append(text.c_str(), n);
            p.model += counted(text, n);
            break;
        }
        case 2: {
            const char c = static_cast<char>(script.byte());
            const unsigned int pos = script.byte();
            p.ours.append(c);
            p.model += c;
            p.ours.insert(c, pos);
            p.model.insert(least(pos, p.model.size()), 1, c);
            break;
        }
        case 3:
            insert(p, script);
            break;
        case 4:
            replace(p, script);
            break;
        case 5:
            take(p, script);
            break;
        case 6:
            useOwnText(p, script);
            break;
        case 7:
            resize(p, script);
            break;
        case 8:
            join(p, other, script);
            break;
        case 9:
            takeParts(p, script);
            break;
        case 10:
            takeTokens(p, script);
            break;
        default:
            p.ours = other.ours;
            p.model = other.model;
            break;
    }
    if (p.model.size() > longest) {
        p.ours = "";
        p.model.clear();
    }
    p.check();
    compareBoth(p, other);
    search(p, script);
}

/// Runs the whole script.
inline void run(Script& script) {
    Pair pairs[3];
    while (script.goesOn())
        step(pairs, script);
    for (const Pair& p : pairs)
        p.check();
    require(fxStr::emptyString == '\0');
}

}  // namespace stringScript
