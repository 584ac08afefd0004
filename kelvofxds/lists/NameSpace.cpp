#include "kelvofxds/lists/NameSpace.h"

#include <climits>
#include <cstdlib>
#include <cstring>

namespace {
const unsigned long firstTableSize = 100;

std::uint32_t byteAt(const char* name, unsigned int i) {
    return static_cast<std::uint32_t>(static_cast<signed char>(name[i]));
}

// Mixes from both ends towards the middle; the middle byte counts twice.
std::uint32_t hashOf(const char* name, unsigned int length) {
    std::uint32_t hash = 0;
    const unsigned int half = length / 2 + length % 2;
    for (unsigned int i = 0; i < half; ++i)
        hash = (hash * 27 + byteAt(name, i)) * 27 + byteAt(name, length - 1 - i);
    return hash;
}

NameSpace_Node** emptySlots(unsigned long n) {
    void* block = std::calloc(n, sizeof(void*));
    if (!block)
        std::abort();
    return static_cast<NameSpace_Node**>(block);
}
}  // namespace

NameSpace::NameSpace(int (*init)(NameSpace*), int mode)
    : noAtom(0),
      lastAtom(0),
      root(nullptr),
      tableSize(firstTableSize),
      table(emptySlots(firstTableSize)),
      numberingMode(0),
      firstDynamicAtom(0) {
    // What the callback throws passes through and leaves nothing behind.
    struct Undo {
        ~Undo() {
            if (names) {
                names->freeAllAtoms();
                std::free(names->table);
            }
        }
        NameSpace* names;
    } undo = {this};
    if (init && init(this) != 0)
        std::exit(-1);
    undo.names = nullptr;
    numberingMode = mode;
    firstDynamicAtom = lastAtom + 1;
}

NameSpace::~NameSpace() {
    freeAllAtoms();
    std::free(table);
}

unsigned long NameSpace::makeAtom(const char* name, int create) {
    return makeAtom(name, name ? static_cast<unsigned int>(std::strlen(name)) : 0, create);
}

unsigned long NameSpace::makeAtom(const char* name, unsigned int length, int create) {
    if (numberingMode != 0 && create != 0)
        atomError();
    return internAtom(lastAtom + 1, name, length, create);
}

unsigned long NameSpace::makeAtom(unsigned long atom, const char* name, unsigned int length,
                                  int create) {
    if (numberingMode == 0 && create != 0)
        atomError();
    return internAtom(atom, name, length, create);
}

// The pointer that leads to the node of the name, or that a new node goes into.
NameSpace_Node** NameSpace::search(std::uint32_t hash, const char* name, unsigned int length) {
    NameSpace_Node** place = &root;
    while (NameSpace_Node* node = *place) {
        if (hash != node->hash) {
            place = hash < node->hash ? &node->left : &node->right;
            continue;
        }
        const int order = std::strncmp(name, node->name, length);
        const std::size_t stored = std::strlen(node->name);
        if (order == 0 && length == stored)
            break;
        place = order < 0 || (order == 0 && length < stored) ? &node->left : &node->right;
    }
    return place;
}

unsigned long NameSpace::internAtom(unsigned long atom, const char* name, unsigned int length,
                                    int create) {
    if (!name) {
        name = "";
        length = 0;
    }
    if (length == UINT_MAX)
        atomError();  // with its NUL it would have no size
    const std::uint32_t hash = hashOf(name, length);
    NameSpace_Node** place = search(hash, name, length);
    if (*place)
        return (*place)->atom;
    if (create == 0)
        return noAtom;
    if (atom == noAtom)
        atomError();
    NameSpace_Node* node = newNode(name, length);
    makeRoomFor(atom, node);
    node->left = node->right = nullptr;
    node->atom = atom;
    node->hash = hash;
    *place = node;
    table[atom] = node;
    if (atom > lastAtom)
        lastAtom = atom;
    return atom;
}

// A node that has only its name.
NameSpace_Node* NameSpace::newNode(const char* name, unsigned int length) {
    auto* node = static_cast<NameSpace_Node*>(std::malloc(sizeof(NameSpace_Node)));
    if (!node)
        atomError();
    if (firstDynamicAtom == 0) {
        node->name = const_cast<char*>(name);  // never written to
        return node;
    }
    node->name = static_cast<char*>(std::malloc(std::size_t{length} + 1));
    if (!node->name) {
        std::free(node);
        atomError();
    }
    std::memcpy(node->name, name, length);
    node->name[length] = '\0';
    return node;
}

// Doubles the table until it has a slot for `atom`. `node` goes when it cannot.
void NameSpace::makeRoomFor(unsigned long atom, NameSpace_Node* node) {
    const unsigned long mostSlots = ULONG_MAX / sizeof(void*);
    if (!table)
        table = emptySlots(tableSize);
    unsigned long newSize = tableSize;
    while (newSize <= atom && newSize <= mostSlots / 2)
        newSize *= 2;
    if (newSize == tableSize && newSize > atom)
        return;
    void* grown = newSize > atom ? std::realloc(table, newSize * sizeof(void*)) : nullptr;
    if (!grown) {
        if (firstDynamicAtom != 0)
            std::free(node->name);
        std::free(node);
        atomError();
    }
    table = static_cast<NameSpace_Node**>(grown);
    std::memset(table + tableSize, 0, (newSize - tableSize) * sizeof(void*));
    tableSize = newSize;
}

int NameSpace::validAtom(unsigned long atom) {
    if (atom == noAtom || atom > lastAtom)
        return 0;
    return table[atom] != nullptr;
}

const char* NameSpace::nameForAtom(unsigned long atom) {
    if (atom > lastAtom || !table || !table[atom])
        return nullptr;
    return table[atom]->name;
}

void NameSpace::atomError() { std::abort(); }

// Turns left children up until there is none, so that no stack is needed: a
// tree of names in the order of their hashes is as deep as it is large.
void NameSpace::freeAtom(NameSpace_Node* node) {
    while (node) {
        if (NameSpace_Node* left = node->left) {
            node->left = left->right;
            left->right = node;
            node = left;
        } else {
            NameSpace_Node* right = node->right;
            freeNode(node);
            node = right;
        }
    }
}

void NameSpace::freeNode(NameSpace_Node* node) {
    if (firstDynamicAtom != 0 && node->atom >= firstDynamicAtom)
        std::free(node->name);
    std::free(node);
}

void NameSpace::freeAllAtoms() {
    if (!root)
        return;
    freeAtom(root);
    std::free(table);
    root = nullptr;
    table = nullptr;
    lastAtom = noAtom;
}
