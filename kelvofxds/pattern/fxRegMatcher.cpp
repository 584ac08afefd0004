#include "kelvofxds/pattern/fxRegMatcherInternal.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

namespace {
bool isWordByte(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

// The literal byte that has to come next for the chain from `node` on to match;
// NUL if it is not as simple as that.
char lookaheadOf(const char* node) {
    while (node && (fxRegIsOpen(fxRegOp(node)) || fxRegIsClose(fxRegOp(node))))
        node = regnext(node);
    return node && fxRegOp(node) == OP_EXACT ? *fxRegOperand(node) : '\0';
}

// The repetition with which every match of the program begins, or null.
const char* leadingRepetition(const char* program) {
    const char* node = program + 1;
    for (;;) {
        if (fxRegOp(node) == OP_BRANCH && !fxRegIsBranch(regnext(node)))
            node = fxRegOperand(node);
        else if (fxRegIsOpen(fxRegOp(node)) && regnext(node))
            node = regnext(node);
        else
            return fxRegOp(node) == OP_STAR || fxRegOp(node) == OP_PLUS ? node : nullptr;
    }
}

// Whether the class at `node` has `c`.
bool isInClass(const char* node, char c) {
    return c != '\0' &&
           (std::strchr(fxRegOperand(node), c) != nullptr) == (fxRegOp(node) == OP_ANYOF);
}

// The last occurrence of `c` in [lowest, highest], or null.
const char* lastOf(char c, const char* lowest, const char* highest) {
    return static_cast<const char*>(
        memrchr(lowest, c, static_cast<std::size_t>(highest - lowest) + 1));
}
}  // namespace

fxRegMatcher::fxRegMatcher(fxregexp& compiled, const char* subject)
    : prog(compiled),
      program(compiled.program),
      leading(leadingRepetition(compiled.program)),
      regbol(subject),
      begin(subject),
      reginput(subject),
      frames(ownFrames),
      top(0),
      capacity(framesAtFirst),
      spent(0),
      limit(4096),
      outOfSpace(false),
      classCount(0),
      setCount(0) {}

fxRegMatcher::~fxRegMatcher() {
    if (frames != ownFrames)
        std::free(frames);
}

bool fxRegMatcher::regtry(const char* position) {
    begin = reginput = position;
    nextBegin = position + 1;
    top = 0;
    if (outOfSpace || !regmatch(program + 1))
        return false;
    setRegisters();
    prog.startp[0] = const_cast<char*>(position);
    prog.endp[0] = const_cast<char*>(reginput);
    return true;
}

// A group that was passed more than once is where it was passed last, which is
// what lies highest on the stack.
void fxRegMatcher::setRegisters() {
    for (std::size_t i = top; i-- > 0;) {
        const Frame& frame = frames[i];
        if (frame.kind != Frame::mark)
            continue;
        const unsigned char op = fxRegOp(program + frame.node);
        char*& place = fxRegIsOpen(op) ? prog.startp[op - OP_OPEN] : prog.endp[op - OP_CLOSE];
        if (!place)
            place = const_cast<char*>(frame.position);
    }
}

// The node to go on with; a chain that just ends is damaged.
const char* fxRegMatcher::linked(const char* next) {
    if (!next)
        fxregerror("corrupted pointers");
    return next;
}

// Walks along the chains from `node`, and back to the last choice when one
// fails. Flattened, since most nodes take less time than a call.
[[gnu::flatten]] bool fxRegMatcher::regmatch(const char* node) {
    for (;;) {
        switch (fxRegOp(node)) {
            case OP_END:
                return !outOfSpace;
            case OP_BRANCH:
                node = enterBranch(node);
                break;
            case OP_STAR:
            case OP_PLUS:
                node = enterRepetition(node);
                break;
            default:
                node = passes(node) ? linked(regnext(node)) : nullptr;
        }
        if (!node && !(node = backtrack()))
            return false;
    }
}

// Whether a node without a choice matches here; moves on past what it matches.
bool fxRegMatcher::passes(const char* node) {
    const unsigned char op = fxRegOp(node);
    switch (op) {
        case OP_BOL:
            return reginput == regbol;
        case OP_EOL:
            return *reginput == '\0';
        case OP_ANY:
        case OP_ANYOF:
        case OP_ANYBUT:
            return matchesOne(node, reginput++);
        case OP_EXACT: {
            const char* run = fxRegOperand(node);
            const char* at = reginput;
            for (; *run == *at && *run != '\0'; ++run)
                ++at;
            // Without a byte it is the NUL that has to be there.
            const bool isThere = *run == '\0' && (at != reginput || *at == '\0');
            reginput = at;
            return isThere;
        }
        case OP_WORDSTART:
            return isWordByte(*reginput) && (reginput == regbol || !isWordByte(reginput[-1]));
        case OP_WORDEND:
            return !isWordByte(*reginput);
        case OP_NOTHING:
            return !isKnown(node);
        case OP_BACK:
            return true;
        default:
            if (!fxRegIsOpen(op) && !fxRegIsClose(op)) {
                fxregerror("memory corruption");
                return false;
            }
            if (fxRegIsClose(op) && isKnown(node))
                return false;
            note(node);
            return true;
    }
}

// Choices.

// The first alternative from `node` on that can begin with `c`, or null.
const char* fxRegMatcher::viable(const char* node, char c) {
    while (fxRegIsBranch(node)) {
        if (canBegin(fxRegOperand(node), c))
            return node;
        node = regnext(node);
    }
    return nullptr;
}

// Whether what begins with `node` can begin with `c`; false is certain.
bool fxRegMatcher::canBegin(const char* node, char c) {
    const int patience = 4;
    for (int i = 0; i < patience && node; ++i) {
        switch (fxRegOp(node)) {
            case OP_EXACT:
                return *fxRegOperand(node) == c;
            case OP_EOL:
                return c == '\0';
            case OP_PLUS:
                node = fxRegOperand(node);
                break;
            case OP_BRANCH:
                if (fxRegIsBranch(regnext(node)))
                    return true;
                node = fxRegOperand(node);
                break;
            case OP_NOTHING:
                node = regnext(node);
                break;
            default:
                if (!fxRegIsOpen(fxRegOp(node)))
                    return true;
                node = regnext(node);
        }
    }
    return true;
}

const char* fxRegMatcher::enterBranch(const char* node) {
    if (!fxRegIsBranch(regnext(node)))
        return fxRegOperand(node);
    if (isKnown(node))
        return nullptr;
    const char* alternative = viable(node, *reginput);
    return alternative ? takeBranch(alternative) : nullptr;
}

const char* fxRegMatcher::takeBranch(const char* alternative) {
    spend(1);
    if (const char* other = viable(regnext(alternative), *reginput))
        push(other, Frame::branch, reginput);
    return fxRegOperand(alternative);
}

const char* fxRegMatcher::enterRepetition(const char* node) {
    const char* simple = fxRegOperand(node);
    const char* lowest = reginput + (fxRegOp(node) == OP_PLUS);
    const char* highest;
    if (!memory.isOn())
        highest = regrepeat(simple);
    else if (lowest != reginput && !matchesOne(simple, reginput))
        return nullptr;
    else
        highest = untried(node, lowest);
    if (!highest || highest < lowest)
        return nullptr;
    const std::size_t bytesPerStep = 32;
    spend(static_cast<std::size_t>(highest - lowest) / bytesPerStep);
    const bool leads = node == leading && reginput == begin;
    const char* next = takeRepetition(node, lowest, highest);
    // Without the byte that has to follow, beginning later in the same bytes is
    // no use either.
    if (leads && !next && regnext(node) && highest != begin)
        nextBegin = *highest != '\0' ? highest + 1 : highest;
    return next;
}

// Goes on after the repetition with the end in [lowest, highest] that is next.
const char* fxRegMatcher::takeRepetition(const char* node, const char* lowest,
                                         const char* highest) {
    spend(1);
    const char* next = regnext(node);
    const char lookahead = lookaheadOf(next);
    const char* end = lookahead != '\0' ? lastOf(lookahead, lowest, highest) : highest;
    if (!end)
        return nullptr;
    if (end != lowest) {
        push(node, Frame::lowest, lowest);
        push(node, Frame::repetition, end - 1);
    }
    reginput = end;
    return linked(next);
}

// The node to go on with after the last choice that has something left to try;
// null if there is none.
const char* fxRegMatcher::backtrack() {
    while (top != 0 && !outOfSpace) {
        const Frame frame = frames[--top];
        const char* node = program + frame.node;
        if (frame.kind == Frame::branch) {
            reginput = frame.position;
            return takeBranch(node);
        }
        if (frame.kind == Frame::repetition) {
            const char* lowest = frames[--top].position;
            if (const char* next = takeRepetition(node, lowest, frame.position))
                return next;
        }
    }
    return nullptr;
}

// Repetitions.

// One past the bytes from here on that match `simple`.
const char* fxRegMatcher::regrepeat(const char* simple) {
    const char* at = reginput;
    switch (fxRegOp(simple)) {
        case OP_ANY:
            return at + std::strlen(at);
        case OP_EXACT:
            while (*at == *fxRegOperand(simple) && *at != '\0')
                ++at;
            return at;
        case OP_ANYOF:
        case OP_ANYBUT: {
            const fxRegByteSet* set = setOf(simple);
            while (set ? set->contains(*at) : isInClass(simple, *at))
                ++at;
            return at;
        }
        default:
            fxregerror("internal foulup");
            return at;
    }
}

// The highest end of a repetition, from `lowest` on, after which the rest has
// not been tried; null if there is none. Those that have been tried are all
// ends from some place to the last: a repetition begun later in the same bytes
// tries its ends from the last down to its first, and a match never comes back
// to a repetition before the end it has gone on from.
const char* fxRegMatcher::untried(const char* node, const char* lowest) {
    if (memory.meet(node, program, positionOf(lowest)))
        return nullptr;
    const char* simple = fxRegOperand(node);
    const char* end = lowest;
    while (matchesOne(simple, end) && !memory.meet(node, program, positionOf(end + 1)))
        ++end;
    return end;
}

bool fxRegMatcher::matchesOne(const char* node, const char* at) {
    switch (fxRegOp(node)) {
        case OP_ANY:
            return *at != '\0';
        case OP_EXACT:
            return *at == *fxRegOperand(node) && *at != '\0';
        case OP_ANYOF:
        case OP_ANYBUT:
            if (const fxRegByteSet* set = setOf(node))
                return set->contains(*at);
            return isInClass(node, *at);
        default:
            return false;
    }
}

// The stack.

void fxRegMatcher::push(const char* node, Frame::Kind kind, const char* position) {
    if (top == capacity)
        grow();
    frames[top++] = {static_cast<std::uint16_t>(node - program), kind, position};
}

// Without memory the match is given up.
void fxRegMatcher::grow() {
    const bool own = frames == ownFrames;
    void* memoryForMore = std::realloc(own ? nullptr : frames, capacity * 2 * sizeof(Frame));
    if (!memoryForMore) {
        if (!outOfSpace)
            fxregerror("out of space");
        outOfSpace = true;
        top = 0;
        return;
    }
    if (own)
        std::memcpy(memoryForMore, ownFrames, sizeof ownFrames);
    frames = static_cast<Frame*>(memoryForMore);
    capacity *= 2;
}

// Notes that a group begins or ends here. An earlier note of the same since the
// last choice is of no use any more: they will be dropped together.
void fxRegMatcher::note(const char* node) {
    const std::uint16_t offset = static_cast<std::uint16_t>(node - program);
    for (std::size_t i = top; i-- > 0 && frames[i].kind == Frame::mark;) {
        if (frames[i].node == offset) {
            frames[i].position = reginput;
            return;
        }
    }
    push(node, Frame::mark, reginput);
}

// A search that has cost more than some steps for each byte is likely to go on
// like that.
void fxRegMatcher::reconsider() {
    const std::size_t stepsPerByte = 4;
    const std::size_t length = std::strlen(regbol);
    if (spent < length * stepsPerByte) {
        limit = length * stepsPerByte;
        return;
    }
    memory.start(length);
    limit = SIZE_MAX;
}

// Sets of bytes.

// Null for a class beyond the first few of a program.
const fxRegByteSet* fxRegMatcher::setOf(const char* node) {
    for (unsigned int i = 0; i < classCount; ++i) {
        if (classes[i].node == node)
            return classes[i].set;
    }
    return classCount < mostClasses ? makeSetOf(node) : nullptr;
}

[[gnu::noinline]] const fxRegByteSet* fxRegMatcher::makeSetOf(const char* node) {
    ByteClass& added = classes[classCount++];
    added.node = node;
    added.set = nullptr;
    for (const ByteClass* known = classes; known != &added && !added.set; ++known) {
        if (*known->node == *node &&
            std::strcmp(fxRegOperand(known->node), fxRegOperand(node)) == 0)
            added.set = known->set;
    }
    if (!added.set && setCount < mostSets) {
        sets[setCount].assign(node);
        added.set = &sets[setCount++];
    }
    return added.set;
}

const fxRegByteSet* fxRegMatcher::firstBytes() {
    first.clear();
    unsigned int patience = 100;
    return addFirst(program + 1, patience) ? &first : nullptr;
}

// Adds the bytes with which a match from `node` on can begin, but not at the
// subject's start; false if it can be empty or too many nodes are involved.
bool fxRegMatcher::addFirst(const char* node, unsigned int& patience) {
    while (node && patience-- != 0) {
        switch (fxRegOp(node)) {
            case OP_BOL:
                return true;
            case OP_EOL:
                first.add('\0');
                return true;
            case OP_EXACT:
                first.add(*fxRegOperand(node));
                return true;
            case OP_ANY:
            case OP_ANYOF:
            case OP_ANYBUT: {
                fxRegByteSet set;
                set.assign(node);
                first.add(set);
                return true;
            }
            case OP_PLUS:
                node = fxRegOperand(node);
                break;
            case OP_STAR:
                if (!addFirst(fxRegOperand(node), patience))
                    return false;
                node = regnext(node);
                break;
            case OP_BRANCH:
                for (; fxRegIsBranch(regnext(node)); node = regnext(node)) {
                    if (!addFirst(fxRegOperand(node), patience))
                        return false;
                }
                node = fxRegOperand(node);
                break;
            case OP_NOTHING:
            case OP_BACK:
            case OP_WORDSTART:
            case OP_WORDEND:
                node = regnext(node);
                break;
            default:
                // The end, or damage, whose link may lead anywhere.
                if (!fxRegIsOpen(fxRegOp(node)) && !fxRegIsClose(fxRegOp(node)))
                    return false;
                node = regnext(node);
        }
    }
    return false;
}

void fxRegByteSet::clear() { std::memset(has, 0, sizeof has); }

void fxRegByteSet::assign(const char* node) {
    const unsigned char op = fxRegOp(node);
    std::memset(has, op == OP_ANYOF ? 0 : 1, sizeof has);
    has[0] = 0;
    if (op == OP_ANY)
        return;
    for (const char* c = fxRegOperand(node); *c != '\0'; ++c)
        has[static_cast<unsigned char>(*c)] = op == OP_ANYOF;
}

void fxRegByteSet::add(const fxRegByteSet& other) {
    for (std::size_t c = 0; c < sizeof has; ++c)
        has[c] |= other.has[c];
}
