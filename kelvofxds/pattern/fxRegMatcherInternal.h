// fxRegMatcherInternal.h - runs a program against a subject.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "kelvofxds/pattern/fxRegCodeInternal.h"
#include "kelvofxds/pattern/fxRegMemoryInternal.h"

/// One search of a subject: depth first, alternatives in order, with the
/// choices in waiting on a stack of its own.
class fxRegMatcher {
public:
    /// The registers of `compiled` are set; `decoded` is its code.
    fxRegMatcher(fxregexp& compiled, fxRegCode& decoded, const char* subject)
        : prog(compiled),
          code(decoded),
          regbol(subject),
          begin(subject),
          reginput(subject),
          frames(ownFrames),
          top(0),
          capacity(framesAtFirst),
          spent(0),
          limit(decoded.isDamaged ? SIZE_MAX : patience),
          memoryLimit(patience),
          look{nullptr, 0},
          givenUp(false) {}
    fxRegMatcher(const fxRegMatcher&) = delete;
    fxRegMatcher& operator=(const fxRegMatcher&) = delete;
    ~fxRegMatcher() {
        if (frames != ownFrames)
            std::free(frames);
    }

    /// Whether the program matches at `position`; if so, the registers are set.
    /// Requires: they are null.
    bool regtry(const char* position);

    /// After a failure, the next position at which a match can begin; null if
    /// there is none.
    const char* next() const { return givenUp ? nullptr : nextBegin; }

private:
    // A choice in waiting, or where a group began or ended on the way here: the
    // node, an alternative, a repetition, or a group's begin or end, says which.
    // A repetition has two: the last end of it to try, and the next one above.
    struct Frame {
        const fxRegNode* node;
        const char* position;
    };

    bool regmatch(const fxRegNode* node);
    bool passes(const fxRegNode* node);
    const fxRegNode* enterBranch(const fxRegNode* node);
    const fxRegNode* takeBranch(const fxRegNode* alternative);
    const fxRegNode* enterRepetition(const fxRegNode* node);
    const fxRegNode* takeRepetition(const fxRegNode* node, const char* lowest, const char* highest);
    const char* lastEnd(const fxRegNode* node, const char* lowest, const char* highest) const;
    const fxRegNode* backtrack();
    const char* regrepeat(const fxRegNode* simple) const;
    const char* untried(const fxRegNode* node, const char* lowest);
    static const fxRegNode* linked(const fxRegNode* next);

    bool isKnown(const fxRegNode* node) {
        return memory.isOn() && memory.meet(code.indexOf(node), positionOf(reginput));
    }
    std::size_t positionOf(const char* at) const { return static_cast<std::size_t>(at - regbol); }

    void push(const fxRegNode* node, const char* position) {
        if (top == capacity)
            grow();
        frames[top++] = {node, position};
    }
    void grow();
    void note(const fxRegNode* node);
    void setRegisters();
    void reconsider();
    void reconsiderMemory();

    static const std::size_t framesAtFirst = 64;
    static const std::size_t patience = 128;  // work that is not worth a thought

    fxregexp& prog;
    fxRegCode& code;
    const char* regbol;  // the start of the subject
    const char* begin;   // the position being tried
    const char* nextBegin;
    const char* reginput;     // the next byte to match
    Frame* frames;            // `ownFrames` or owned
    std::size_t top;          // frames in use
    std::size_t capacity;     // frames
    std::size_t spent;        // work done, in nodes or so
    std::size_t limit;        // work after which to look ahead
    std::size_t memoryLimit;  // work after which a failure makes it remember
    fxRegLook look;
    bool givenUp;  // for lack of memory, or because there is no match
    fxRegMemory memory;
    Frame ownFrames[framesAtFirst];
};
