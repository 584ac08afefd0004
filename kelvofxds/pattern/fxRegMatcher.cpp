#include "kelvofxds/pattern/fxRegMatcherInternal.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

namespace {
bool isWordByte(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

bool isNote(unsigned char op) { return fxRegIsOpen(op) || fxRegIsClose(op); }

// The last occurrence of `c` in [lowest, highest], or null.
const char* lastOf(char c, const char* lowest, const char* highest) {
    return static_cast<const char*>(
        memrchr(lowest, c, static_cast<std::size_t>(highest - lowest) + 1));
}
}  // namespace

bool fxRegMatcher::regtry(const char* position) {
    begin = reginput = position;
    nextBegin = position + 1;
    top = 0;
    if (givenUp || !regmatch(code.begin()))
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
        const unsigned char op = frames[i].node->op;
        if (!isNote(op))
            continue;
        char*& place = fxRegIsOpen(op) ? prog.startp[op - OP_OPEN] : prog.endp[op - OP_CLOSE];
        if (!place)
            place = const_cast<char*>(frames[i].position);
    }
}

// The node to go on with; a chain that just ends is damaged.
const fxRegNode* fxRegMatcher::linked(const fxRegNode* next) {
    if (!next)
        fxregerror("corrupted pointers");
    return next;
}

// Walks along the chains from `node`, and back to the last choice when one
// fails. Flattened, since most nodes take less time than a call.
[[gnu::flatten]] bool fxRegMatcher::regmatch(const fxRegNode* node) {
    for (;;) {
        switch (node->op) {
            case OP_END:
                return !givenUp;
            case OP_BRANCH:
                node = enterBranch(node);
                break;
            case OP_STAR:
            case OP_PLUS:
                node = enterRepetition(node);
                break;
            default:
                node = passes(node) ? linked(node->next) : nullptr;
        }
        if (!node && !(node = backtrack()))
            return false;
    }
}

// Whether a node without a choice matches here; moves on past what it matches.
bool fxRegMatcher::passes(const fxRegNode* node) {
    switch (node->op) {
        case OP_BOL:
            return reginput == regbol;
        case OP_EOL:
            return *reginput == '\0';
        case OP_ANY:
        case OP_ANYOF:
        case OP_ANYBUT:
            return code.has(*node, *reginput++);
        case OP_EXACT: {
            const char* run = node->text;
            const char* at = reginput;
            const unsigned int few = 16;
            if (node->length > few && *run == *at) {
                reginput += node->length;
                return std::strncmp(at, run, node->length) == 0;
            }
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
            if (!fxRegIsOpen(node->op) && !fxRegIsClose(node->op)) {
                fxregerror("memory corruption");
                return false;
            }
            if (fxRegIsClose(node->op) && isKnown(node))
                return false;
            note(node);
            return true;
    }
}

// Choices.

const fxRegNode* fxRegMatcher::enterBranch(const fxRegNode* node) {
    if (isKnown(node))
        return nullptr;
    const fxRegNode* alternative = code.viable(node, *reginput);
    return alternative ? takeBranch(alternative) : nullptr;
}

const fxRegNode* fxRegMatcher::takeBranch(const fxRegNode* alternative) {
    if (++spent >= limit)
        reconsider();
    if (givenUp)
        return nullptr;
    if (const fxRegNode* other = code.viable(alternative->other, *reginput))
        push(other, reginput);
    return alternative->operand;
}

const fxRegNode* fxRegMatcher::enterRepetition(const fxRegNode* node) {
    if (code.isDamaged && !fxRegIsSimple(node->operand->op)) {
        fxregerror("internal foulup");
        return node->op == OP_STAR && !isKnown(node) ? linked(node->next) : nullptr;
    }
    const char* lowest = reginput + (node->op == OP_PLUS);
    const char* highest;
    if (!memory.isOn())
        highest = regrepeat(node->operand);
    else if (lowest != reginput && !code.has(*node->operand, *reginput))
        return nullptr;
    else
        highest = untried(node, lowest);
    if (!highest || highest < lowest)
        return nullptr;
    const std::size_t bytesPerStep = 32;
    spent += 1 + static_cast<std::size_t>(highest - lowest) / bytesPerStep;
    const bool leads = node == code.leading && reginput == begin;
    const fxRegNode* next = takeRepetition(node, lowest, highest);
    // Without a byte that can follow, beginning later in the same bytes is no use
    // either; nor if there is one end only.
    if (leads && (node->isDecided || (!next && node->next)) && highest != begin)
        nextBegin = *highest != '\0' ? highest + 1 : highest;
    return next;
}

// Goes on after the repetition with the end in [lowest, highest] that is next.
const fxRegNode* fxRegMatcher::takeRepetition(const fxRegNode* node, const char* lowest,
                                              const char* highest) {
    const char* end = lastEnd(node, lowest, highest);
    if (!end)
        return nullptr;
    if (end != lowest && !node->isDecided) {
        push(node, lowest);
        push(node, end - 1);
    }
    reginput = end;
    return linked(node->next);
}

// The last place in [lowest, highest] that is followed by what can follow the
// repetition, or null.
const char* fxRegMatcher::lastEnd(const fxRegNode* node, const char* lowest,
                                  const char* highest) const {
    if (code.canFollow(*node, *highest))
        return highest;
    if (node->isDecided)
        return nullptr;
    if (node->only != '\0')
        return lastOf(node->only, lowest, highest);
    while (highest != lowest) {
        if (code.canFollow(*node, *--highest))
            return highest;
    }
    return nullptr;
}

// The node to go on with after the last choice that has something left to try;
// null if there is none.
const fxRegNode* fxRegMatcher::backtrack() {
    if (spent >= limit)
        reconsider();
    if (spent >= memoryLimit)
        reconsiderMemory();
    while (top != 0 && !givenUp) {
        const Frame frame = frames[--top];
        if (frame.node->op == OP_BRANCH) {
            reginput = frame.position;
            return takeBranch(frame.node);
        }
        if (fxRegIsRepetition(frame.node->op)) {
            ++spent;
            const char* const lowest = frames[--top].position;
            if (const fxRegNode* next = takeRepetition(frame.node, lowest, frame.position))
                return next;
        }
    }
    return nullptr;
}

// Repetitions.

// One past the bytes from here on that match `simple`.
const char* fxRegMatcher::regrepeat(const fxRegNode* simple) const {
    const char* at = reginput;
    if (simple->op == OP_ANY)
        return at + std::strlen(at);
    const std::ptrdiff_t few = 32;  // that are soon found in a class
    while (code.has(*simple, *at)) {
        ++at;
        if (at - reginput == few)
            code.analyse();
    }
    return at;
}

// The highest end of a repetition, from `lowest` on, after which the rest has
// not been tried; null if there is none. Those that have been tried are all
// ends from some place to the last: a repetition begun later in the same bytes
// tries its ends from the last down to its first, and a match never comes back
// to a repetition before the end it has gone on from.
const char* fxRegMatcher::untried(const fxRegNode* node, const char* lowest) {
    const unsigned int row = code.indexOf(node);
    if (memory.meet(row, positionOf(lowest)))
        return nullptr;
    const char* end = lowest;
    while (code.has(*node->operand, *end) && !memory.meet(row, positionOf(end + 1)))
        ++end;
    return end;
}

// The stack.

// Without memory the match is given up.
void fxRegMatcher::grow() {
    const bool own = frames == ownFrames;
    void* memoryForMore = std::realloc(own ? nullptr : frames, capacity * 2 * sizeof(Frame));
    if (!memoryForMore) {
        if (!givenUp)
            fxregerror("out of space");
        givenUp = true;
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
void fxRegMatcher::note(const fxRegNode* node) {
    for (std::size_t i = top; i-- > 0 && isNote(frames[i].node->op);) {
        if (frames[i].node == node) {
            frames[i].position = reginput;
            return;
        }
    }
    push(node, reginput);
}

// A search that has cost more than a step for each byte is likely to go on like
// that: it looks ahead whether that is worth it, in pieces, with about as much
// work as it has spent itself.
[[gnu::noinline]] void fxRegMatcher::reconsider() {
    const std::size_t done = positionOf(begin);
    // A repetition can go far beyond the limit at once, by short steps.
    const std::size_t steps = patience + (spent - limit) / 4;
    limit = done + patience;
    if (spent < limit)
        return;
    code.analyse();
    if (!look.at || look.at < begin)
        look = code.lookFrom(begin, begin == regbol);
    const std::size_t bytesPerStep = 16;
    switch (code.lookOn(look, steps * bytesPerStep)) {
        case fxRegCode::noMatch:
            givenUp = true;
            break;
        case fxRegCode::unknown:
            limit = spent + patience;
            break;
        case fxRegCode::promising:
            limit = SIZE_MAX;
    }
}

// Where a step for each byte was not enough and it fails, it remembers that.
[[gnu::noinline]] void fxRegMatcher::reconsiderMemory() {
    const std::size_t done = positionOf(begin);
    // The subject's length, or twice what was spent.
    const std::size_t length = done + strnlen(begin, spent * 2);
    memoryLimit = length;
    if (spent < length)
        return;
    memory.start(code.size(), length);
    memoryLimit = SIZE_MAX;
}
