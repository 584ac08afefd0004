#include "kelvofxds/lists/NameSpace.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>

#include "kelvofxds/lists/fxKeyIndexInternal.h"

namespace {
const unsigned long firstTableSize = 100;

// A node as it is allocated. What it has more is no larger than what malloc
// rounds up to.
struct Node : NameSpace_Node {
    std::uint32_t slotIn(const fxKeyIndex<Node>&) const { return textHash; }

    Node* link;              // in the index, or before there is one, the node made before
    std::uint32_t textHash;  // of the name and its length, by the seed
};

// What lies before the slots of the table, since hosts know the fields of a
// name space.
//
// Where a search by hash goes through the tree, all hashes with the same highest
// bits go the same way until a node has those bits too: a start is the first
// node from which that is not so, or one on the way there.
struct Head {
    fxIndexSeed seed;
    fxKeyIndex<Node>* index;  // of the names that can be found; owned; null while it does not pay
    NameSpace_Node** starts;  // by the highest bits of a hash; owned; null with the index
    unsigned int hashShift;   // what leaves those bits
    unsigned int nodes;       // that the index knows, or would
    unsigned int indexFrom;   // so many nodes have an index; 0 if there is never one
    Node* last;               // before there is an index, the node made last
    unsigned int unused;
};

// By measurement: for fewer names a search of the tree is as fast.
const unsigned int firstIndexFrom = 32;
const unsigned int firstStartBits = 4;

Head& headOf(NameSpace_Node** table) { return reinterpret_cast<Head*>(table)[-1]; }

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
    static_assert(sizeof(Head) % sizeof(void*) == 0, "a number of words");
    void* block = std::calloc(n + sizeof(Head) / sizeof(void*), sizeof(void*));
    if (!block)
        std::abort();
    auto* head =
        new (block) Head{fxIndexSeed(block), nullptr, nullptr, 0, 0, firstIndexFrom, nullptr, 0};
    return reinterpret_cast<NameSpace_Node**>(head + 1);
}

void freeSlots(NameSpace_Node** table) {
    if (table)
        std::free(&headOf(table));
}

// Without an index names are searched for in the tree.
void giveUpIndex(Head& head) {
    std::free(head.index);
    std::free(head.starts);
    head.index = nullptr;
    head.starts = nullptr;
    head.indexFrom = 0;
}

// Twice as many starts, each at first that of the shorter bits.
bool doubleStarts(Head& head, NameSpace_Node* root) {
    const unsigned int bits = head.starts ? 33 - head.hashShift : firstStartBits;
    auto** starts = static_cast<NameSpace_Node**>(std::malloc(sizeof(void*) << bits));
    if (!starts)
        return false;
    for (std::size_t i = 0; i < std::size_t{1} << bits; ++i)
        starts[i] = head.starts ? head.starts[i / 2] : root;
    std::free(head.starts);
    head.starts = starts;
    head.hashShift = 32 - bits;
    return true;
}

// A new index for all names; none any more where there is no memory for it.
void makeIndex(Head& head, NameSpace_Node* root) {
    auto* made = fxKeyIndex<Node>::make(head.nodes);
    if (!made || !doubleStarts(head, root)) {
        std::free(made);
        giveUpIndex(head);
        return;
    }
    if (head.index)
        head.index->forEach([made](Node* node) { made->add(node); });
    while (Node* node = head.last) {
        head.last = node->link;
        made->add(node);
    }
    std::free(head.index);
    head.index = made;
}

// A new node, which is in the tree already. One whose text is not what it was
// made with is never found, unless its hash is that of the text all the same:
// where that may depend on the tree, the tree is asked.
void enter(Head& head, Node* node, unsigned int length, NameSpace_Node* root) {
    const std::size_t stored = std::strlen(node->name);
    if (stored != length) {
        if (hashOf(node->name, static_cast<unsigned int>(stored)) == node->hash)
            giveUpIndex(head);
        return;
    }
    if (head.indexFrom == 0)
        return;
    ++head.nodes;
    node->textHash = head.seed.hash(node->name, length);
    if (head.index && !head.index->isFull(head.nodes)) {
        head.index->add(node);
        return;
    }
    node->link = head.last;
    head.last = node;
    if (head.index || head.nodes >= head.indexFrom)
        makeIndex(head, root);
}

// Whether `stored` ends where the `length` bytes at `name`, of which none is a
// NUL, do.
bool isText(const char* stored, const char* name, unsigned int length) {
    unsigned int i = 0;
    while (i < length && stored[i] == name[i] && name[i] != '\0')
        ++i;
    return i == length && stored[i] == '\0';
}

const Node* indexed(const Head& head, const char* name, unsigned int length) {
    const std::uint32_t hash = head.seed.hash(name, length);
    const Node* node = head.index->at(hash);
    while (node && (node->textHash != hash || !isText(node->name, name, length)))
        node = node->link;
    return node;
}

// The start of the hash, moved on as far as all hashes with its highest bits go.
NameSpace_Node** startOf(const Head& head, std::uint32_t hash) {
    NameSpace_Node*& start = head.starts[hash >> head.hashShift];
    while ((start->hash ^ hash) >> head.hashShift != 0) {
        NameSpace_Node*& next = hash < start->hash ? start->left : start->right;
        if (!next)
            return &next;
        start = next;
    }
    return &start;
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
                freeSlots(names->table);
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
    freeSlots(table);
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
    NameSpace_Node** place = table && headOf(table).starts ? startOf(headOf(table), hash) : &root;
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
    if (table && headOf(table).index) {
        if (const Node* known = indexed(headOf(table), name, length))
            return known->atom;
        if (create == 0)
            return noAtom;
    }
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
    enter(headOf(table), static_cast<Node*>(node), length, root);
    if (atom > lastAtom)
        lastAtom = atom;
    return atom;
}

// A node that has only its name.
NameSpace_Node* NameSpace::newNode(const char* name, unsigned int length) {
    auto* node = static_cast<Node*>(std::malloc(sizeof(Node)));
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
    const unsigned long mostSlots = (ULONG_MAX - sizeof(Head)) / sizeof(void*);
    if (!table)
        table = emptySlots(tableSize);
    unsigned long newSize = tableSize;
    while (newSize <= atom && newSize <= mostSlots / 2)
        newSize *= 2;
    if (newSize == tableSize && newSize > atom)
        return;
    void* grown = newSize > atom
                      ? std::realloc(&headOf(table), sizeof(Head) + newSize * sizeof(void*))
                      : nullptr;
    if (!grown) {
        if (firstDynamicAtom != 0)
            std::free(node->name);
        std::free(node);
        atomError();
    }
    table = reinterpret_cast<NameSpace_Node**>(static_cast<Head*>(grown) + 1);
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
    if (node && table)
        giveUpIndex(headOf(table));
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
    freeSlots(table);
    root = nullptr;
    table = nullptr;
    lastAtom = noAtom;
}
