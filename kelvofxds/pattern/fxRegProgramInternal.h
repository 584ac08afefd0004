// fxRegProgramInternal.h - how nodes of a program are read.
#pragma once

#include "kelvofxds/pattern/fxRegEngine.h"

const unsigned int fxRegNodeSize = 3;  // bytes of a node without its operand

inline unsigned char fxRegOp(const char* node) { return static_cast<unsigned char>(*node); }

inline const char* fxRegOperand(const char* node) { return node + fxRegNodeSize; }

/// The node that follows `node` in its chain; null at the end.
inline const char* regnext(const char* node) {
    const unsigned int offset = static_cast<unsigned int>(static_cast<unsigned char>(node[1]))
                                    << 8 |
                                static_cast<unsigned char>(node[2]);
    if (offset == 0)
        return nullptr;
    return fxRegOp(node) == OP_BACK ? node - offset : node + offset;
}

inline bool fxRegIsMagic(const fxregexp& prog) {
    return static_cast<unsigned char>(prog.program[0]) == fxRegMagic;
}

inline bool fxRegIsBranch(const char* node) { return node && fxRegOp(node) == OP_BRANCH; }
