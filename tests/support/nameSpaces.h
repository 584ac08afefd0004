// nameSpaces.h - name spaces, and what tests see of them.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <type_traits>

#include "kelvofxds/lists/NameSpace.h"

struct NameSpaceLayout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
    static_assert(sizeof(NameSpace_Node) == 20, "five words");
    static_assert(offsetof(NameSpace_Node, left) == 0, "left comes first");
    static_assert(offsetof(NameSpace_Node, right) == 4, "then right");
    static_assert(offsetof(NameSpace_Node, atom) == 8, "then the atom");
    static_assert(offsetof(NameSpace_Node, hash) == 12, "then the hash");
    static_assert(offsetof(NameSpace_Node, name) == 16, "then the name");
    static_assert(sizeof(NameSpace) == 28, "seven words, no table of virtual operations");
    static_assert(offsetof(NameSpace, noAtom) == 0, "noAtom comes first");
    static_assert(offsetof(NameSpace, lastAtom) == 4, "then the highest atom");
    static_assert(offsetof(NameSpace, root) == 8, "then the tree");
    static_assert(offsetof(NameSpace, tableSize) == 12, "then the number of slots");
    static_assert(offsetof(NameSpace, table) == 16, "then the slots");
    static_assert(offsetof(NameSpace, numberingMode) == 20, "then the mode");
    static_assert(offsetof(NameSpace, firstDynamicAtom) == 24, "then the first atom of a copy");
#pragma GCC diagnostic pop
    static_assert(std::is_same<unsigned long, decltype(NameSpace::lastAtom)>::value, "unsigned");
    static_assert(std::is_same<int, decltype(NameSpace::numberingMode)>::value, "signed");
    static_assert(std::is_same<char*, decltype(NameSpace_Node::name)>::value, "text");

    static unsigned long noAtom(const NameSpace& names) { return names.noAtom; }
    static unsigned long lastAtom(const NameSpace& names) { return names.lastAtom; }
    static NameSpace_Node* root(const NameSpace& names) { return names.root; }
    static unsigned long tableSize(const NameSpace& names) { return names.tableSize; }
    static NameSpace_Node** table(const NameSpace& names) { return names.table; }
    static int numberingMode(const NameSpace& names) { return names.numberingMode; }
    static unsigned long& firstDynamicAtom(NameSpace& names) { return names.firstDynamicAtom; }
};

namespace nameSpaces {

using Layout = NameSpaceLayout;

const int numbersItself = 0;
const int callerNumbers = 1;

inline int nothing(NameSpace*) { return 0; }

inline int predefineAtFifty(NameSpace* names) {
    names->internAtom(50, "fifty", 5, 1);
    return 0;
}

/// Without predefined names.
struct Names : NameSpace {
    explicit Names(int mode = numbersItself) : NameSpace(nothing, mode) {}
};

inline unsigned int lengthOf(const char* name) {
    return static_cast<unsigned int>(std::strlen(name));
}

inline unsigned long create(NameSpace& names, unsigned long atom, const char* name) {
    return names.makeAtom(atom, name, lengthOf(name), 1);
}

/// The tree as text: "name(left,right)", with "-" for no node.
inline std::string shape(const NameSpace_Node* node) {
    if (!node)
        return "-";
    if (!node->left && !node->right)
        return node->name;
    return node->name + ("(" + shape(node->left) + "," + shape(node->right) + ")");
}

inline std::string shape(const NameSpace& names) { return shape(Layout::root(names)); }

}  // namespace nameSpaces
