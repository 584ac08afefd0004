// containerScript.h - operations on dictionaries and sets beside std:: models.
#pragma once

#include <map>
#include <set>
#include <string>

#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "tests/support/script.h"

/// With iterators under way. The first byte says how many buckets there are: few and long
/// chains, so that the index beside them comes and goes, or many.
namespace containerScript {

const unsigned int walks = 4;  // at a time
const unsigned int keys = 300;

// A key; every third is long, and long ones begin alike.
inline std::string keyOf(unsigned int n) {
    return n % 3 == 0 ? "a key that begins like others " + std::to_string(n) : std::to_string(n);
}

// What a dictionary and a set have in common, for the walks below.
struct Dictionary {
    using Container = fxStrStrDictionary;
    using Iter = fxStrStrDictionaryIter;
    using Model = std::map<std::string, std::string>;
    static const std::string& keyIn(const Model::value_type& entry) { return entry.first; }
};
struct Set {
    using Container = fxStrSet;
    using Iter = fxStrSetIter;
    using Model = std::set<std::string>;
    static const std::string& keyIn(const Model::value_type& entry) { return entry; }
};

// An iterator, the keys it has shown, and those that it has to show yet.
template <class Kind>
struct Walk {
    typename Kind::Iter iter;
    std::set<std::string> due;
    std::set<std::string> added;  // since it began: it may show them or not
    std::string present;          // the key it has shown last
    bool isUnderWay = false;
    bool hasMoved = false;  // its entry was removed, so that it is on the next
    bool maySkip = false;   // that one may have been removed, too

    void begin(typename Kind::Container& container, const typename Kind::Model& model) {
        iter = container;
        due.clear();
        added.clear();
        for (const auto& entry : model)
            due.insert(Kind::keyIn(entry));
        isUnderWay = true;
        maySkip = false;
        see();
    }
    // The key it stands on has been due, once, or is new.
    void see() {
        const fxStr* const key = iter.key();
        hasMoved = false;
        if (!key) {
            require(due.empty() || maySkip);
            isUnderWay = false;
            return;
        }
        present = key->c_str();
        require(due.erase(present) == 1 || added.erase(present) == 1);
    }
    void step() {
        if (!isUnderWay)
            return;
        ++iter;
        see();
    }
    void wasAdded(const std::string& key) { added.insert(key); }
    void wasRemoved(const std::string& key) {
        maySkip = maySkip || hasMoved;
        hasMoved = hasMoved || key == present;
        due.erase(key);
        added.erase(key);
    }
};

// A container, its model and its walks.
template <class Kind>
class Scene {
public:
    explicit Scene(unsigned int buckets) : container(buckets) {}

    void wasAdded(const std::string& key) {
        for (Walk<Kind>& walk : all)
            walk.wasAdded(key);
    }
    void wasRemoved(const std::string& key) {
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
    const std::string key = keyOf(script.word() % keys);
    const std::string value = script.word(6, "vwx");
    const bool isThere = scene.model.count(key) != 0;
    switch (script.below(6)) {
        case 0:
        case 1:
            scene.container.add(key.c_str(), value.c_str());
            scene.model[key] = value;
            break;
        case 2:
            scene.container.findCreate(key.c_str()) = value.c_str();
            scene.model[key] = value;
            break;
        case 3: {
            fxStr sought(key.c_str());
            auto* const cut = static_cast<fxStr*>(scene.container.cut(&sought));
            require((cut != nullptr) == isThere);
            if (cut) {
                require(*cut == scene.model[key].c_str());
                cut->~fxStr();
                std::free(cut);
            }
            scene.model.erase(key);
            break;
        }
        default:
            scene.container.remove(key.c_str());
            scene.model.erase(key);
            break;
    }
    if (scene.model.count(key) == 0)
        scene.wasRemoved(key);
    else if (!isThere)
        scene.wasAdded(key);
    const fxStr* const found = scene.container.find(key.c_str());
    require((found != nullptr) == (scene.model.count(key) != 0));
    require(!found || *found == scene.model[key].c_str());
}

// Whole sets at once, on a set that nobody walks.
inline void combine(Scene<Set>& scene, Script& script) {
    fxStrSet other(script.below(2) != 0 ? 1 : 37);
    std::set<std::string> model;
    for (unsigned int n = script.below(40); n > 0; --n) {
        const std::string key = keyOf(script.word() % keys);
        other.add(key.c_str());
        model.insert(key);
    }
    const std::set<std::string> before = scene.model;
    switch (script.below(3)) {
        case 0:
            scene.container |= other;
            scene.model.insert(model.begin(), model.end());
            break;
        case 1:
            scene.container &= other;
            for (const std::string& key : before) {
                if (model.count(key) == 0)
                    scene.model.erase(key);
            }
            break;
        default:
            scene.container -= other;
            for (const std::string& key : model)
                scene.model.erase(key);
            break;
    }
    // Twice, since nothing is said of their order.
    for (unsigned int pass = 0; pass < 2; ++pass) {
        for (const std::string& key : before) {
            if (scene.model.count(key) == 0)
                scene.wasRemoved(key);
        }
    }
    for (const std::string& key : scene.model) {
        if (before.count(key) == 0)
            scene.wasAdded(key);
    }
}

inline void change(Scene<Set>& scene, Script& script) {
    const std::string key = keyOf(script.word() % keys);
    const bool isThere = scene.model.count(key) != 0;
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
            require((scene.container.add(key.c_str()) != nullptr) == !isThere);
            scene.model.insert(key);
            if (!isThere)
                scene.wasAdded(key);
            break;
        default:
            scene.container.remove(key.c_str());
            scene.model.erase(key);
            scene.wasRemoved(key);
            break;
    }
    require((scene.container.contains(key.c_str()) != 0) == (scene.model.count(key) != 0));
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
