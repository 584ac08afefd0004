// arrayScript.h - operations on arrays beside std::vector, as a script says.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "kelvofxds/containers/fxArrayOf.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/str/fxStrArray.h"
#include "tests/support/script.h"

/// The first byte says which array: of numbers, of strings, of elements of a class.
namespace arrayScript {

const unsigned int longest = 200;  // elements

// How elements of a kind are made, shown and compared.
struct Ints {
    using Array = fxIntArray;
    using Value = int;
    static Value take(Script& script) { return static_cast<int>(script.word()) - 3000; }
    static void free(Value*, unsigned int) {}
};
struct Strings {
    using Array = fxStrArray;
    using Value = std::string;
    static Value take(Script& script) { return script.word(20, "abc"); }
    static void free(fxStr* block, unsigned int n) {
        for (unsigned int i = 0; i < n; ++i)
            block[i].~fxStr();
    }
};
struct OwnStrings : Strings {
    using Array = fxArrayOf<fxStr>;
};

inline int elementOf(int value) { return value; }
inline fxStr elementOf(const std::string& value) { return fxStr(value.c_str()); }
inline bool same(int a, int b) { return a == b; }
inline bool same(const fxStr& a, const std::string& b) { return a == b.c_str(); }

template <class Kind>
class Scene {
public:
    using Array = typename Kind::Array;
    using Value = typename Kind::Value;

    void step(Script& script) {
        switch (script.below(10)) {
            case 0:
            case 1:
                append(script);
                break;
            case 2:
                insert(script);
                break;
            case 3:
                remove(script);
                break;
            case 4:
                joinWhole(script);
                break;
            case 5:
                resize(script);
                break;
            case 6:
                takeOut(script);
                break;
            case 7:
                swap(script);
                break;
            case 8:
                copyOver();
                break;
            default:
                find(script);
                break;
        }
        if (model.size() > longest)
            removeAt(longest / 2, size() - longest / 2);
        check();
    }

private:
    unsigned int size() const { return static_cast<unsigned int>(model.size()); }
    unsigned int placeIn(Script& script) { return script.below(size() < 255 ? size() + 1 : 255); }

    // Where position `i` is in the model.
    auto at(unsigned int i) { return model.begin() + static_cast<std::ptrdiff_t>(i); }

    // Whose operations take elements by address.
    fxArray& base() { return array; }

    void check() const {
        require(array.length() == model.size());
        require(array.getLen() <= array.getMaxLen());
        for (unsigned int i = 0; i < size(); ++i)
            require(same(array[i], model[i]));
    }

    void append(Script& script) {
        if (!model.empty() && script.below(4) == 0) {  // an element of its own
            const unsigned int i = placeIn(script) % size();
            base().append(&array[i]);
            model.push_back(Value(model[i]));
            return;
        }
        const Value value = Kind::take(script);
        const auto element = elementOf(value);
        base().append(&element);
        model.push_back(value);
    }
    void insert(Script& script) {
        const unsigned int i = placeIn(script);
        const Value value = Kind::take(script);
        const auto element = elementOf(value);
        base().insert(&element, i);
        model.insert(at(i), value);
    }
    void removeAt(unsigned int start, unsigned int n) {
        array.remove(start, n);
        model.erase(at(start), at(start + n));
    }
    void remove(Script& script) {
        const unsigned int start = placeIn(script);
        removeAt(start, script.below(256) % (size() - start + 1));
    }
    void joinWhole(Script& script) {
        const unsigned int i = placeIn(script);
        const std::vector<Value> other(script.below(2) != 0 ? model : std::vector<Value>());
        Array copy;
        for (const Value& value : other) {
            const auto element = elementOf(value);
            static_cast<fxArray&>(copy).append(&element);
        }
        if (script.below(2) == 0) {
            array.append(copy);
            model.insert(model.end(), other.begin(), other.end());
        } else {
            array.insert(copy, i);
            model.insert(at(i), other.begin(), other.end());
        }
    }
    void resize(Script& script) {
        const unsigned int n = script.below(longest);
        if (script.below(3) == 0) {
            array.setMaxLength(n);
            return;
        }
        const unsigned int before = size();
        array.resize(n);
        model.resize(n);
        for (unsigned int i = before; i < n; ++i)  // of numbers nothing is promised
            setElement(i);
    }
    void setElement(unsigned int i) {
        const Value value{};
        array[i] = elementOf(value);
        model[i] = value;
    }
    void takeOut(Script& script) {
        const unsigned int start = placeIn(script);
        const unsigned int n = script.below(256) % (size() - start + 1);
        const std::vector<Value> part(at(start), at(start + n));
        const unsigned int way = script.below(3);
        const Array taken = way == 0 ? array.cut(start, n) : array.extract(start, n);
        require(taken.length() == n);
        for (unsigned int i = 0; i < n; ++i)
            require(same(taken[i], part[i]));
        if (way == 0)
            model.erase(at(start), at(start + n));
        if (way == 2)
            takeBlock(start, n);
    }
    void takeBlock(unsigned int start, unsigned int n) {
        auto* const block = static_cast<decltype(&array[0])>(array.raw_cut(start, n));
        require((block == nullptr) == (n == 0));
        for (unsigned int i = 0; i < n; ++i)
            require(same(block[i], model[start + i]));
        Kind::free(block, n);
        std::free(block);
        model.erase(at(start), at(start + n));
    }
    void swap(Script& script) {
        if (model.empty())
            return;
        const unsigned int i = placeIn(script) % size();
        const unsigned int j = placeIn(script) % size();
        array.swap(i, j);
        std::swap(model[i], model[j]);
    }
    void copyOver() {
        const Array copy(array);
        require(copy.length() == size());
        for (unsigned int i = 0; i < size(); ++i)
            require(same(copy[i], model[i]));
    }
    void find(Script& script) {
        const Value value = Kind::take(script);
        const unsigned int start = placeIn(script);
        const auto element = elementOf(value);
        const fxArray& untyped = array;
        unsigned int i = start;
        while (i < size() && !(model[i] == value))
            ++i;
        require(untyped.find(&element, start) == (i < size() ? i : 0xFFFFFFFFU));
    }

    Array array;
    std::vector<Value> model;
};

template <class Kind>
void run(Script& script) {
    Scene<Kind> scene;
    while (script.goesOn())
        scene.step(script);
}

/// Runs the whole script.
inline void run(Script& script) {
    switch (script.below(3)) {
        case 0:
            run<Ints>(script);
            break;
        case 1:
            run<Strings>(script);
            break;
        default:
            run<OwnStrings>(script);
            break;
    }
}

}  // namespace arrayScript
