// containerScript.h - operations on dictionaries and sets beside std:: models.
#pragma once

#include <bitset>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "tests/support/script.h"

/// With iterators under way. The first byte says how many buckets there are: few and long
/// chains, so that the index beside them comes and goes, or many.
namespace containerScript {

const unsigned int walks = 4;  // at a time
const unsigned int keys = 300;

// A key by its number; every third is long, and long ones begin alike. The models have the
// numbers, since texts took most of the time of a fuzzer.
inline const char* keyOf(unsigned int n) {
    static const std::vector<std::string> all = [] {
        std::vector<std::string> made;
        for (unsigned int i = 0; i < keys; ++i)
            made.push_back((i % 3 == 0 ? "a key that begins like others " : "") +
                           std::to_string(i));
        return made;
    }();
    return all[n].c_str();
}
inline unsigned int numberOf(const fxStr& key) {
    const char* const space = std::strrchr(key.c_str(), ' ');
    const unsigned long n = std::strtoul(space ? space : key.c_str(), nullptr, 10);
    require(n < keys && key == keyOf(static_cast<unsigned int>(n)));
    return static_cast<unsigned int>(n);
}
using Numbers = std::bitset<keys>;

// What a dictionary and a set have in common, for the walks below.
struct Dictionary {
    using Container = fxStrStrDictionary;
    using Iter = fxStrStrDictionaryIter;
    using Model = std::map<unsigned int, std::string>;
    static unsigned int keyIn(const Model::value_type& entry) { return entry.first; }
};
struct Set {
    using Container = fxStrSet;
    using Iter = fxStrSetIter;
    using Model = std::set<unsigned int>;
    static unsigned int keyIn(const Model::value_type& entry) { return entry; }
};

template <class Kind>
Numbers numbersIn(const typename Kind::Model& model) {
    Numbers numbers;
    for (const auto& entry : model)
        numbers.set(Kind::keyIn(entry));
    return numbers;
}

// An iterator, the keys it has shown, and those that it has to show yet.
template <class Kind>
struct Walk {
    typename Kind::Iter iter;
    Numbers due;
    Numbers added;             // since it began: it may show them or not
    unsigned int present = 0;  // the key it has shown last
    bool isUnderWay = false;
    bool hasMoved = false;  // its entry was removed, so that it is on the next
    bool maySkip = false;   // that one may have been removed, too

    void begin(typename Kind::Container& container, const typename Kind::Model& model) {
        iter = container;
        due = numbersIn<Kind>(model);
        added.reset();
        isUnderWay = true;
        maySkip = false;
        see();
    }
    // The key it stands on has been due, once, or is new.
    void see() {
        const fxStr* const key = iter.key();
        hasMoved = false;
        if (!key) {
            require(due.none() || maySkip);
            isUnderWay = false;
            return;
        }
        present = numberOf(*key);
        Numbers& ofThem = due[present] ? due : added;
        require(ofThem[present]);
        ofThem.reset(present);
    }
    void step() {
        if (!isUnderWay)
            return;
        ++iter;
        see();
    }
    void wasAdded(unsigned int key) { added.set(key); }
    void wasRemoved(unsigned int key) {
        maySkip = maySkip || hasMoved;
        hasMoved = hasMoved || key == present;
        due.reset(key);
        added.reset(key);
    }
};

// A container, its model and its walks.
template <class Kind>
class Scene {
public:
    explicit Scene(unsigned int buckets) : container(buckets) {}

    void wasAdded(unsigned int key) {
        for (Walk<Kind>& walk : all)
            walk.wasAdded(key);
    }
    void wasRemoved(unsigned int key) {
        for (Walk<Kind>& walk : all)
            walk.wasRemoved(key);
    }
    void walkOn(Script& script) {
        Walk<Kind>& walk = all[script.below(walks)];
        if (walk.isUnderWay && script.below(8) != 0)
            walk.step();
        else
            walk.begin(container, model);
    }
    void walkToTheEnd() {
        for (Walk<Kind>& walk : all) {
            while (walk.isUnderWay)
                walk.step();
        }
        all[0].begin(container, model);
        while (all[0].isUnderWay)
            all[0].step();
    }

    typename Kind::Container container;
    typename Kind::Model model;

private:
    Walk<Kind> all[walks];
};

inline void change(Scene<Dictionary>& scene, Script& script) {
    const unsigned int number = script.word() % keys;
    const char* const key = keyOf(number);
    const std::string value = script.word(6, "vwx");
    const bool isThere = scene.model.count(number) != 0;
    switch (script.below(6)) {
        case 0:
        case 1:
            scene.container.add(key, value.c_str());
            scene.model[number] = value;
            break;
        case 2:
            scene.container.findCreate(key) = value.c_str();
            scene.model[number] = value;
            break;
        case 3: {
            fxStr sought(key);
            auto* const cut = static_cast<fxStr*>(scene.container.cut(&sought));
            require((cut != nullptr) == isThere);
            if (cut) {
                require(*cut == scene.model[number].c_str());
                cut->~fxStr();
                std::free(cut);
            }
            scene.model.erase(number);
            break;
        }
        default:
            scene.container.remove(key);
            scene.model.erase(number);
            break;
    }
    if (scene.model.count(number) == 0)
        scene.wasRemoved(number);
    else if (!isThere)
        scene.wasAdded(number);
    const fxStr* const found = scene.container.find(key);
    require((found != nullptr) == (scene.model.count(number) != 0));
    require(!found || *found == scene.model[number].c_str());
}

// Whole sets at once, on a set that nobody walks.
inline void combine(Scene<Set>& scene, Script& script) {
    fxStrSet other(script.below(2) != 0 ? 1 : 37);
    Numbers model;
    for (unsigned int n = script.below(40); n > 0; --n) {
        const unsigned int number = script.word() % keys;
        other.add(keyOf(number));
        model.set(number);
    }
    const Numbers before = numbersIn<Set>(scene.model);
    Numbers after;
    switch (script.below(3)) {
        case 0:
            scene.container |= other;
            after = before | model;
            break;
        case 1:
            scene.container &= other;
            after = before & model;
            break;
        default:
            scene.container -= other;
            after = before & ~model;
            break;
    }
    // Twice, since nothing is said of their order.
    const Numbers removed = before & ~after;
    for (unsigned int pass = 0; pass < 2; ++pass) {
        for (unsigned int number = 0; number < keys; ++number) {
            if (removed[number]) {
                scene.wasRemoved(number);
                scene.model.erase(number);
            }
        }
    }
    const Numbers added = after & ~before;
    for (unsigned int number = 0; number < keys; ++number) {
        if (added[number]) {
            scene.wasAdded(number);
            scene.model.insert(number);
        }
    }
}

inline void change(Scene<Set>& scene, Script& script) {
    const unsigned int number = script.word() % keys;
    const char* const key = keyOf(number);
    const bool isThere = scene.model.count(number) != 0;
    switch (script.below(16)) {
        case 0:
            combine(scene, script);
            return;
        case 1:
        case 2:
        case 3:
        case 4:
        case 5:
        case 6:
        case 7:
            require((scene.container.add(key) != nullptr) == !isThere);
            scene.model.insert(number);
            if (!isThere)
                scene.wasAdded(number);
            break;
        default:
            scene.container.remove(key);
            scene.model.erase(number);
            scene.wasRemoved(number);
            break;
    }
    require((scene.container.contains(key) != 0) == (scene.model.count(number) != 0));
}

template <class Kind>
void run(Script& script, unsigned int buckets) {
    Scene<Kind> scene(buckets);
    while (script.goesOn()) {
        if (script.below(3) == 0)
            scene.walkOn(script);
        else
            change(scene, script);
        require(scene.container.length() == scene.model.size());
    }
    scene.walkToTheEnd();
}

/// Runs the whole script.
inline void run(Script& script) {
    const unsigned int kind = script.byte();
    const unsigned int buckets = 1 + (kind < 128 ? kind / 2 % 4 : kind / 2);
    if (kind % 2 == 0)
        run<Dictionary>(script, buckets);
    else
        run<Set>(script, buckets);
}

}  // namespace containerScript
