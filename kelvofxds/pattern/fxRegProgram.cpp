// fxRegProgram.cpp - whether a program can be run; see fxRegProgramInternal.h.

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/pattern/fxRegProgramInternal.h"

namespace {

// What a node is made of.
enum Kind : unsigned char { unknown, plain, withText, withNode, backward, end };

const unsigned int knownOps = OP_CLOSE + fxregexp::groupCount;
const Kind kinds[knownOps] = {
    end,      plain,   plain,    plain,    withText, withText, withNode, backward,
    withText, plain,   withNode, withNode, plain,    plain,                      // 0 to 13
    unknown,  unknown, unknown,  unknown,  unknown,  unknown,  unknown,          // 14 to 20
    plain,    plain,   plain,    plain,    plain,    plain,    plain,    plain,  // OP_OPEN + 1
    plain,    unknown,                                                           // 29 and 30
    plain,    plain,   plain,    plain,    plain,    plain,    plain,    plain,  // OP_CLOSE + 1
    plain};

Kind kindOf(const char* node) {
    const unsigned char op = fxRegOp(node);
    return op < knownOps ? kinds[op] : unknown;
}

// Walks the nodes of a program once, and those of its loops once more for each.
class ProgramCheck {
public:
    ProgramCheck(const fxregexp& block, unsigned int bytes, unsigned char* places)
        : program(block.program),
          size(bytes),
          marks(places),
          last(1),
          firstHead(fxRegSizeLimit),
          lastBack(0),
          cleared(0) {}

    // The place of the last node; 0 if it does not pass.
    unsigned int lastNode() {
        const bool passes = walk() && everyTargetIsNode() && (lastBack == 0 || everyLoopConsumes());
        return passes ? last : 0;
    }

private:
    // What is known of a place in the program.
    enum Mark : unsigned char {
        node = fxRegNodeMark,
        target = 2,  // of a link, or an operand
        settled = 4  // a node from which no way without a byte comes back to it
    };
    static const unsigned int step = 64;  // marks cleared at a time

    void clearUpTo(unsigned int place) {
        for (; cleared <= place; cleared += step)
            std::memset(marks + cleared, 0, step);
    }
    void mark(unsigned int place, Mark as) {
        if (place >= cleared)
            clearUpTo(place);
        marks[place] = static_cast<unsigned char>(marks[place] | as);
    }
    bool has(unsigned int place, Mark as) const { return place < cleared && marks[place] & as; }

    bool walk();
    unsigned int nextTarget(unsigned int place) const;
    bool addTarget(unsigned int place);
    bool addLink(unsigned int at, Kind kind);
    bool everyTargetIsNode() const;
    bool everyLoopConsumes();
    bool isSettled(const char* at) const;
    bool isSettledAt(const char* next) const {
        return !next || next > program + lastBack || marks[next - program] & settled;
    }

    const char* program;
    unsigned int size;       // bytes of the program, or more where that cannot be told
    unsigned char* marks;    // what is known of each place in the program
    unsigned int last;       // the last target
    unsigned int firstHead;  // the first target of an OP_BACK
    unsigned int lastBack;   // the last OP_BACK, or 0
    unsigned int cleared;    // of `marks`
};

// In the order of the bytes, up to the end or to where no link leads any more.
// How long an unknown node is cannot be told: the next place that a link leads to
// is the next node then.
bool ProgramCheck::walk() {
    for (unsigned int at = 1; at < size;) {
        const Kind kind = kindOf(program + at);
        const bool isTarget = has(at, target);
        mark(at, node);
        if (kind == end || (kind == unknown && last <= at))
            return last <= at;
        if (kind == unknown) {
            at = nextTarget(at + (isTarget ? fxRegNodeSize : 1));
            continue;
        }
        unsigned int next = at + fxRegNodeSize;
        if (next > size || (kind == withNode && !addTarget(next)) || !addLink(at, kind))
            return false;
        if (kind == withText) {
            while (next < size && program[next] != '\0')
                ++next;
            ++next;
        }
        if (last <= at)
            return next <= size;
        at = next;
    }
    return false;
}

// The first one from `place` on, or the size.
unsigned int ProgramCheck::nextTarget(unsigned int place) const {
    while (place <= last && !has(place, target))
        ++place;
    return place <= last ? place : size;
}

bool ProgramCheck::addTarget(unsigned int place) {
    if (place >= size)
        return false;
    mark(place, target);
    if (place > last)
        last = place;
    return true;
}

bool ProgramCheck::addLink(unsigned int at, Kind kind) {
    const unsigned int offset = fxRegLink(program + at);
    if (offset == 0)
        return fxRegOp(program + at) != OP_BRANCH;
    if (kind != backward)
        return addTarget(at + offset);
    if (offset >= at || !has(at - offset, node))
        return false;
    if (at - offset < firstHead)
        firstHead = at - offset;
    lastBack = at;
    return true;
}

bool ProgramCheck::everyTargetIsNode() const {
    const std::uint32_t targetsOfWord = 0x01010101 * target;
    std::uint32_t word;
    for (unsigned int i = 0; i <= last; i += sizeof word) {
        std::memcpy(&word, marks + i, sizeof word);
        if (word & targetsOfWord & ~(word * (target / node)))
            return false;
    }
    return true;
}

// Settles what leads on to settled nodes only, until that is all. Every walk but
// the first settles a way back at least, and no program has more of them than
// groups. Behind the last one there is nothing to settle.
bool ProgramCheck::everyLoopConsumes() {
    bool all = false;
    for (unsigned int walks = 0; !all && walks <= fxregexp::groupCount; ++walks) {
        all = true;
        for (unsigned int at = lastBack; at >= firstHead; --at) {
            if ((marks[at] & (node | settled)) != node)
                continue;
            if (isSettled(program + at))
                mark(at, settled);
            else
                all = false;
        }
    }
    return all;
}

// Whether what can follow the node without a byte in between is settled.
bool ProgramCheck::isSettled(const char* at) const {
    switch (fxRegOp(at)) {
        case OP_EXACT:
            return *fxRegOperand(at) != '\0' || isSettledAt(regnext(at));
        case OP_ANY:
        case OP_ANYOF:
        case OP_ANYBUT:
        case OP_PLUS:
            return true;
        case OP_BRANCH:
            return isSettledAt(fxRegOperand(at)) &&
                   (!fxRegIsBranch(regnext(at)) || isSettledAt(regnext(at)));
        default:
            return kindOf(at) == unknown || isSettledAt(regnext(at));
    }
}

}  // namespace

unsigned int fxRegLastNode(const fxregexp& prog, unsigned int size, unsigned char* marks) {
    return ProgramCheck(prog, size, marks).lastNode();
}

bool fxRegHintsAreInside(const fxregexp& prog, unsigned int length) {
    if (prog.startchar && !std::memchr(prog.program + 1, prog.startchar, length - 1))
        return false;
    if (!prog.must)
        return true;
    if (!fxPointsInto(prog.must, prog.program, length) || prog.mustlen <= 0)
        return false;
    const std::size_t mustLength = static_cast<std::size_t>(prog.mustlen);
    return mustLength <= static_cast<std::size_t>(prog.program + length - prog.must) &&
           !std::memchr(prog.must, '\0', mustLength);
}
