// NameSpace.h - names as small numbers.
#pragma once

#include <cstdint>

#include "kelvofxds/core/fxExport.h"

/// One atom of a NameSpace: a malloced node of its tree.
struct NameSpace_Node {
    NameSpace_Node* left;   ///< Smaller hashes, or the same hash and smaller names.
    NameSpace_Node* right;  ///< Larger ones.
    unsigned long atom;     ///< The number.
    std::uint32_t hash;     ///< Of the name and the length it was made with.
    char* name;             ///< A NUL-terminated copy, or the text of a predefined name.
};

/// Interns names: every name gets a small number, its atom, by which it is known
/// from then on. Atoms are never given back.
///
/// A name is its text and a length in bytes, all of which are mixed into the
/// hash, as signed bytes on every machine. The numbering mode given to the
/// constructor says who numbers: 0, the name space, with the highest atom in use
/// plus 1; else the caller, with every call that creates. Asking for a name is
/// allowed in both.
///
/// Ownership: names are copied, except those made while the constructor runs
/// its callback. What nameForAtom returns is valid until the atoms are freed.
/// Complexity: by atom, constant time. By name, constant time too as soon as
/// there are 32 names, by a private index of the whole text; where there is no
/// memory for that, a search of a binary tree by hash. A new name is hung into
/// that tree, for which a few steps are enough when hashes are random, and as
/// many as there are names at worst. The table takes 4 bytes for every number up
/// to the highest atom.
///
/// Deliberate: the tree is not balanced; its shape follows from the order in
/// which the names came.
/// Deliberate: the length of a stored name is that of its text up to the first
/// NUL, whatever length it was made with. A predefined name that goes on behind
/// its length, and a name with a NUL in it, is never found again: asking for it
/// gives noAtom, creating it creates another atom.
/// A null name is the empty one. Misuse and running out of memory call abort(),
/// without a message.
class FX_EXPORT NameSpace {
public:
    /// Calls `init`, unless it is null, with the new name space, to create the
    /// predefined names: in mode 0, and with the given text itself stored. If it
    /// returns anything but 0, the process ends with exit(-1); what it throws
    /// passes through. Then the name space numbers as `mode` says.
    /// Requires: predefined names outlive the name space.
    NameSpace(int (*init)(NameSpace*), int mode);
    NameSpace(const NameSpace&) = delete;
    NameSpace& operator=(const NameSpace&) = delete;
    /// Frees all nodes, the names that were copied and the table.
    ~NameSpace();

    /// The atom of `name`, up to its NUL. If it has none, a new one if `create`
    /// is not 0, else noAtom. Creating is misuse in another mode than 0, also
    /// when the name has an atom.
    unsigned long makeAtom(const char* name, int create);
    /// The same for the `length` bytes at `name`.
    unsigned long makeAtom(const char* name, unsigned int length, int create);
    /// The same with the number `atom` for a name that has none yet; creating is
    /// misuse in mode 0, and so is creating the atom 0.
    unsigned long makeAtom(unsigned long atom, const char* name, unsigned int length, int create);
    /// What the three do, in any mode: the atom of the `length` bytes at `name`;
    /// if they have none, `atom`, which they then get, if `create` is not 0,
    /// else noAtom. Creating the atom 0 is misuse.
    /// Deliberate: an atom that is in use already gets a second name, which is
    /// its name from then on; both names have the atom.
    unsigned long internAtom(unsigned long atom, const char* name, unsigned int length, int create);

    /// Whether `atom` is the atom of a name.
    int validAtom(unsigned long atom);
    /// The name of `atom`, or null.
    const char* nameForAtom(unsigned long atom);

    /// What misuse calls: abort().
    void atomError() __attribute__((noreturn));

    /// Frees `node`, which may be null, and all nodes below it; and the names of
    /// those made since construction was over. Linear, on any tree.
    /// Deliberate: names are told apart by atom. The copy of a name whose atom is
    /// not above that of every predefined name is not freed.
    /// Requires: whatever refers to the nodes is not used any more.
    void freeAtom(NameSpace_Node* node);
    /// Frees all atoms and the table: the name space is empty, and numbers from 1
    /// again.
    /// Deliberate: where there are no atoms it does nothing; the table stays.
    void freeAllAtoms();

    /// The value that is no atom: 0.
    unsigned long getNoAtom() const { return noAtom; }
    /// The highest atom in use, or noAtom.
    unsigned long getLastAtom() const { return lastAtom; }

private:
    friend struct NameSpaceLayout;  // tests/support/nameSpaces.h

    NameSpace_Node** search(std::uint32_t hash, const char* name, unsigned int length);
    NameSpace_Node* newNode(const char* name, unsigned int length);
    void makeRoomFor(unsigned long atom, NameSpace_Node* node);
    void freeNode(NameSpace_Node* node);

    unsigned long noAtom;            // 0
    unsigned long lastAtom;          // the highest in use
    NameSpace_Node* root;            // null without atoms
    unsigned long tableSize;         // slots
    NameSpace_Node** table;          // by atom; null where there is none
    int numberingMode;               // 0: the name space numbers
    unsigned long firstDynamicAtom;  // 0 during construction
};
