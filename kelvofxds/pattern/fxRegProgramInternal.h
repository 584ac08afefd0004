// fxRegProgramInternal.h - how nodes of a program are read, and whether they can be.
#pragma once

#include "kelvofxds/pattern/fxRegEngine.h"

const unsigned int fxRegNodeSize = 3;  // bytes of a node without its operand

inline unsigned char fxRegOp(const char* node) { return static_cast<unsigned char>(*node); }

inline const char* fxRegOperand(const char* node) { return node + fxRegNodeSize; }

/// The offset in the node's link.
inline unsigned int fxRegLink(const char* node) {
    return static_cast<unsigned int>(static_cast<unsigned char>(node[1])) << 8 |
           static_cast<unsigned char>(node[2]);
}

/// The node that follows `node` in its chain; null at the end.
inline const char* regnext(const char* node) {
    const unsigned int offset = fxRegLink(node);
    if (offset == 0)
        return nullptr;
    return fxRegOp(node) == OP_BACK ? node - offset : node + offset;
}

inline bool fxRegIsMagic(const fxregexp& prog) {
    return static_cast<unsigned char>(prog.program[0]) == fxRegMagic;
}

inline bool fxRegIsOpen(unsigned char op) {
    return op > OP_OPEN && op < OP_OPEN + fxregexp::groupCount;
}

inline bool fxRegIsClose(unsigned char op) {
    return op > OP_CLOSE && op < OP_CLOSE + fxregexp::groupCount;
}

inline bool fxRegIsBranch(const char* node) { return node && fxRegOp(node) == OP_BRANCH; }

/// Whether the program can be run: all links lead to nodes before its end, no
/// loop consumes nothing, and the hints are in it. Operations may be unknown and
/// chains may stop. Linear in the program's size.
bool fxRegIsSound(const fxregexp& prog);
