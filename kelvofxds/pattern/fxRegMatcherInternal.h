// fxRegMatcherInternal.h - runs a program against a subject.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kelvofxds/pattern/fxRegMemoryInternal.h"

/// The bytes that something can match; NUL stands for the subject's end.
struct fxRegByteSet {
    unsigned char has[256];

    void clear();
    /// The bytes that the node, OP_ANY or a class, matches.
    void assign(const char* node);
    void add(char c) { has[static_cast<unsigned char>(c)] = 1; }
    void add(const fxRegByteSet& other);
    bool contains(char c) const { return has[static_cast<unsigned char>(c)] != 0; }
};

/// One search of a subject: depth first, alternatives in order, with the
/// choices in waiting on a stack of its own.
class fxRegMatcher {
public:
    fxRegMatcher(fxregexp& compiled, const char* subject);
    fxRegMatcher(const fxRegMatcher&) = delete;
    fxRegMatcher& operator=(const fxRegMatcher&) = delete;
    ~fxRegMatcher();

    /// Whether the program matches at `position`; if so, the registers are set.
    /// Requires: they are null.
    bool regtry(const char* position);

    /// After a failure, the next position at which a match can begin.
    const char* next() const { return nextBegin; }

    /// The bytes with which a match after the subject's start can begin; null if
    /// it can be empty or that is hard to say. Owned by the matcher.
    const fxRegByteSet* firstBytes();

private:
    // A choice in waiting, or where a group began or ended on the way here.
    struct Frame {
        enum Kind : std::uint16_t { mark, branch, repetition, lowest };

        std::uint16_t node;  // offset in the program
        Kind kind;
        const char* position;  // for a repetition, the next end of it to try
    };

    // A class in the program and its members, which equal classes share.
    struct ByteClass {
        const char* node;
        const fxRegByteSet* set;
    };

    bool regmatch(const char* node);
    bool passes(const char* node);
    const char* enterBranch(const char* node);
    const char* takeBranch(const char* alternative);
    const char* enterRepetition(const char* node);
    const char* takeRepetition(const char* node, const char* lowest, const char* highest);
    const char* backtrack();
    const char* regrepeat(const char* simple);
    const char* untried(const char* node, const char* lowest);
    bool matchesOne(const char* node, const char* at);
    bool addFirst(const char* node, unsigned int& patience);
    const fxRegByteSet* setOf(const char* node);
    const fxRegByteSet* makeSetOf(const char* node);
    static const char* linked(const char* next);
    static const char* viable(const char* node, char c);
    static bool canBegin(const char* node, char c);

    bool isKnown(const char* node) {
        return memory.isOn() && memory.meet(node, program, positionOf(reginput));
    }
    std::size_t positionOf(const char* at) const { return static_cast<std::size_t>(at - regbol); }

    void push(const char* node, Frame::Kind kind, const char* position);
    void grow();
    void note(const char* node);
    void setRegisters();
    void spend(std::size_t work) {
        spent += work;
        if (spent >= limit)
            reconsider();
    }
    void reconsider();

    static const std::size_t framesAtFirst = 64;
    static const unsigned int mostClasses = 32;
    static const unsigned int mostSets = 16;

    fxregexp& prog;
    const char* program;
    const char* leading;  // the repetition that every match begins with, or null
    const char* regbol;   // the start of the subject
    const char* begin;    // the position being tried
    const char* nextBegin;
    const char* reginput;  // the next byte to match
    Frame* frames;         // `ownFrames` or owned
    std::size_t top;       // frames in use
    std::size_t capacity;  // frames
    std::size_t spent;     // work done, in nodes or so
    std::size_t limit;     // work after which failures are worth remembering
    bool outOfSpace;       // the match is given up
    fxRegMemory memory;
    Frame ownFrames[framesAtFirst];
    unsigned int classCount;         // of `classes`
    unsigned int setCount;           // of `sets`
    ByteClass classes[mostClasses];  // those met so far
    fxRegByteSet sets[mostSets];
    fxRegByteSet first;  // of firstBytes
};
