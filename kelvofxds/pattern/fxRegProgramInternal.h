// fxRegProgramInternal.h - how nodes of a program are read, and whether they can be.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kelvofxds/core/fxMemoryInternal.h"
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

inline bool fxRegIsRepetition(unsigned char op) { return op == OP_STAR || op == OP_PLUS; }

/// Whether the operation matches one byte, or begins with one, and can be repeated.
inline bool fxRegIsSimple(unsigned char op) {
    return op == OP_ANY || op == OP_ANYOF || op == OP_ANYBUT || op == OP_EXACT;
}

inline bool fxRegIsBranch(const char* node) { return node && fxRegOp(node) == OP_BRANCH; }

const unsigned int fxRegSizeLimit = 0x8000;  // bytes; all programs that compile have fewer
const unsigned char fxRegNodeMark = 1;       // of places at which there is a node

/// The bytes of the program, or more where that cannot be told: what malloc knows
/// is a little more, and all there is against a program without an end.
inline unsigned int fxRegSizeOf(const fxregexp& prog) {
    const std::size_t fixed = offsetof(fxregexp, program);
    const std::size_t usable =
        fxUsableSizeIsKnown ? malloc_usable_size(const_cast<fxregexp*>(&prog)) : 0;
    if (usable <= fixed || usable - fixed > fxRegSizeLimit)
        return fxRegSizeLimit;
    return static_cast<unsigned int>(usable - fixed);
}

/// Where the last node of a program of `size` bytes is; 0 if it cannot be run: a
/// link leads to no node before its end, or a loop consumes nothing. Operations
/// may be unknown and chains may stop. Up to there `marks`, which has room for
/// fxRegSizeLimit, tells the nodes. Linear in the program's size.
unsigned int fxRegLastNode(const fxregexp& prog, unsigned int size, unsigned char* marks);

/// Where `must` is, seen from the program.
inline std::uintptr_t fxRegMustOffset(const fxregexp& prog) {
    return reinterpret_cast<std::uintptr_t>(prog.must) -
           reinterpret_cast<std::uintptr_t>(prog.program);
}

/// Whether the hints are in the first `length` bytes of the program.
bool fxRegHintsAreInside(const fxregexp& prog, unsigned int length);
