// fxRegEngineCompile.cpp - from a pattern to a program; see fxRegEngine.h.

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "kelvofxds/pattern/fxRegProgramInternal.h"

namespace {

// What a level of the grammar knows of the text it has compiled.
const unsigned int hasWidth = 1;        // matches one byte at least
const unsigned int simple = 2;          // matches one byte exactly
const unsigned int startsWithStar = 4;  // begins with a '*' or '?' repetition

const unsigned long sizeLimit = 32767;  // bytes that no program reaches

bool isRepetition(char c) { return c == '*' || c == '+' || c == '?'; }

bool endsBranch(char c) { return c == '\0' || c == ')' || c == '\n' || c == '|'; }

// What a literal run ends before, besides repetitions and backslashes.
bool endsRun(char c) {
    return endsBranch(c) || c == '$' || c == '(' || c == '.' || c == '[' || c == '^';
}

/// Compiles one pattern by recursive descent, in two passes: the first only
/// counts what the second will write, so that the block is allocated once. A
/// node is known by its address, in the first pass by that of `regdummy`. The
/// parsing functions return the first node of what they have compiled, or null
/// after an error, and tell in `flags` what it is.
class Compiler {
public:
    explicit Compiler(const char* p)
        : pattern(p), regparse(p), regnpar(1), regcode(&regdummy), regsize(0), regdummy(0) {}

    fxregexp* compile();

private:
    char* reg(bool paren, unsigned int& flags);
    char* regbranch(unsigned int& flags);
    char* regpiece(unsigned int& flags);
    char* regatom(unsigned int& flags);
    char* escaped(unsigned int& flags);
    char* byteClass(unsigned int& flags);
    bool range();
    char* literalRun(const char* start, unsigned int& flags);

    bool isSizing() const { return regcode == &regdummy; }
    char* regnode(unsigned int op);
    void regc(char c);
    void reginsert(unsigned int op, char* operand);
    void regtail(char* chain, const char* target);
    void regoptail(char* branch, const char* target);
    char* next(char* node) const { return isSizing() ? nullptr : const_cast<char*>(regnext(node)); }

    bool parse(char* code, unsigned int& flags);
    static char* fail(const char* message) {
        fxregerror(message);
        return nullptr;
    }

    const char* pattern;
    const char* regparse;   // the next byte of the pattern
    unsigned int regnpar;   // the next group's number
    char* regcode;          // where the next byte goes, or &regdummy
    unsigned long regsize;  // bytes counted
    char regdummy;          // stands for every node while sizing
};

// One pass. The counts start anew, the pattern is read from its start.
bool Compiler::parse(char* code, unsigned int& flags) {
    regparse = pattern;
    regnpar = 1;
    regcode = code;
    regsize = 0;
    regc(static_cast<char>(fxRegMagic));
    return reg(false, flags) != nullptr;
}

// What a search can use to reject subjects and places early.
void setHints(fxregexp& prog, unsigned int flags) {
    prog.startchar = prog.anchored = 0;
    prog.must = nullptr;
    prog.mustlen = 0;
    const char* branch = prog.program + 1;
    if (fxRegOp(regnext(branch)) != OP_END)
        return;  // there are alternatives
    const char* node = fxRegOperand(branch);
    if (fxRegOp(node) == OP_EXACT)
        prog.startchar = *fxRegOperand(node);
    else if (fxRegOp(node) == OP_BOL)
        prog.anchored = 1;
    if (!(flags & startsWithStar))
        return;
    for (; node; node = regnext(node)) {
        if (fxRegOp(node) != OP_EXACT)
            continue;
        const int length = static_cast<int>(std::strlen(fxRegOperand(node)));
        if (length >= prog.mustlen) {
            prog.must = const_cast<char*>(fxRegOperand(node));
            prog.mustlen = length;
        }
    }
}

fxregexp* Compiler::compile() {
    unsigned int flags;
    if (!parse(&regdummy, flags))
        return nullptr;
    if (regsize >= sizeLimit) {
        fail("regexp too big");
        return nullptr;
    }
    void* block = std::malloc(offsetof(fxregexp, program) + regsize);
    if (!block) {
        fail("out of space");
        return nullptr;
    }
    fxregexp* prog = static_cast<fxregexp*>(block);
    std::memset(block, 0, offsetof(fxregexp, program));
    parse(prog->program, flags);
    setHints(*prog, flags);
    return prog;
}

// The grammar.

// A group, its '(' read already, or the whole expression: alternatives.
char* Compiler::reg(bool paren, unsigned int& flags) {
    char* first = nullptr;
    unsigned int group = 0;
    if (paren) {
        if (regnpar >= fxregexp::groupCount)
            return fail("too many ()");
        group = regnpar++;
        first = regnode(OP_OPEN + group);
    }

    flags = hasWidth;
    char* last = first;
    for (bool more = true; more;) {
        unsigned int branchFlags;
        char* branch = regbranch(branchFlags);
        if (!branch)
            return nullptr;
        if (last)
            regtail(last, branch);
        else
            first = branch;
        last = branch;
        flags = (flags & branchFlags) | ((flags | branchFlags) & startsWithStar);
        more = *regparse == '|' || *regparse == '\n';
        if (more)
            ++regparse;
    }

    char* end = regnode(paren ? OP_CLOSE + group : static_cast<unsigned int>(OP_END));
    regtail(last, end);
    for (char* node = first; node; node = next(node))
        regoptail(node, end);

    if (paren && *regparse != ')')
        return fail("unmatched ()");
    if (paren)
        ++regparse;
    else if (*regparse != '\0')
        return fail(*regparse == ')' ? "unmatched ()" : "junk on end");
    return first;
}

// One alternative: a sequence of pieces.
char* Compiler::regbranch(unsigned int& flags) {
    char* branch = regnode(OP_BRANCH);
    flags = 0;
    char* last = nullptr;
    while (!endsBranch(*regparse)) {
        unsigned int pieceFlags;
        char* piece = regpiece(pieceFlags);
        if (!piece)
            return nullptr;
        flags |= pieceFlags & hasWidth;
        if (last)
            regtail(last, piece);
        else
            flags |= pieceFlags & startsWithStar;
        last = piece;
    }
    if (!last)
        regnode(OP_NOTHING);
    return branch;
}

// An atom that may be repeated.
char* Compiler::regpiece(unsigned int& flags) {
    unsigned int atomFlags;
    char* atom = regatom(atomFlags);
    if (!atom)
        return nullptr;
    const char op = *regparse;
    if (!isRepetition(op)) {
        flags = atomFlags;
        return atom;
    }
    if (!(atomFlags & hasWidth) && op != '?')
        return fail("*+ operand could be empty");
    flags = op == '+' ? hasWidth : startsWithStar;

    if (op != '?' && atomFlags & simple) {
        reginsert(op == '*' ? OP_STAR : OP_PLUS, atom);
    } else if (op == '*') {
        // Either the atom and back here, or nothing.
        reginsert(OP_BRANCH, atom);
        regoptail(atom, regnode(OP_BACK));
        regoptail(atom, atom);
        regtail(atom, regnode(OP_BRANCH));
        regtail(atom, regnode(OP_NOTHING));
    } else if (op == '+') {
        // After the atom, either back to it or nothing.
        char* again = regnode(OP_BRANCH);
        regtail(atom, again);
        regtail(regnode(OP_BACK), atom);
        regtail(again, regnode(OP_BRANCH));
        regtail(atom, regnode(OP_NOTHING));
    } else {
        // Either the atom or nothing.
        reginsert(OP_BRANCH, atom);
        regtail(atom, regnode(OP_BRANCH));
        const char* nothing = regnode(OP_NOTHING);
        regtail(atom, nothing);
        regoptail(atom, nothing);
    }
    ++regparse;
    return isRepetition(*regparse) ? fail("nested *?+") : atom;
}

char* Compiler::regatom(unsigned int& flags) {
    flags = 0;
    const char* start = regparse++;
    switch (*start) {
        case '^':
            return regnode(OP_BOL);
        case '$':
            return regnode(OP_EOL);
        case '.':
            flags = hasWidth | simple;
            return regnode(OP_ANY);
        case '[':
            return byteClass(flags);
        case '(':
            return reg(true, flags);
        case '\0':
        case '|':
        case '\n':
        case ')':
            return fail("internal urp");
        case '*':
        case '+':
        case '?':
            return fail("?+* follows nothing");
        case '\\':
            return escaped(flags);
        default:
            return literalRun(start, flags);
    }
}

// What follows a backslash.
char* Compiler::escaped(unsigned int& flags) {
    switch (*regparse) {
        case '\0':
            return fail("trailing \\");
        case '<':
            ++regparse;
            return regnode(OP_WORDSTART);
        case '>':
            ++regparse;
            return regnode(OP_WORDEND);
        default:
            return literalRun(regparse, flags);
    }
}

// A class, its '[' read already.
char* Compiler::byteClass(unsigned int& flags) {
    const bool negated = *regparse == '^';
    if (negated)
        ++regparse;
    char* node = regnode(negated ? OP_ANYBUT : OP_ANYOF);
    if (*regparse == ']' || *regparse == '-')
        regc(*regparse++);
    while (*regparse != '\0' && *regparse != ']') {
        if (*regparse != '-' || regparse[1] == ']' || regparse[1] == '\0')
            regc(*regparse++);
        else if (!range())
            return fail("invalid [] range");
    }
    regc('\0');
    if (*regparse != ']')
        return fail("unmatched []");
    ++regparse;
    flags = hasWidth | simple;
    return node;
}

// The rest of a range, whose first byte, right before the '-', is a member
// already. "[b-a]" is a range of that byte alone, "[c-a]" is none.
bool Compiler::range() {
    const unsigned int first = static_cast<unsigned char>(regparse[-1]);
    const unsigned int last = static_cast<unsigned char>(regparse[1]);
    if (first > last + 1)
        return false;
    for (unsigned int c = first + 1; c <= last && regsize < sizeLimit; ++c)
        regc(static_cast<char>(c));
    regparse += 2;
    return true;
}

// A run of literal bytes, the first of them at `start`. A byte that is repeated
// becomes an atom of its own.
char* Compiler::literalRun(const char* start, unsigned int& flags) {
    char* node = regnode(OP_EXACT);
    unsigned int length = 0;
    const char* atom = start;  // where the byte, or the backslash before it, is
    const char* byte = start;
    for (;;) {
        const char* after = byte + 1;
        if (isRepetition(*after) && length != 0) {
            regparse = atom;
            break;
        }
        regc(*byte);
        ++length;
        regparse = after;
        if (endsRun(*after) || isRepetition(*after))
            break;
        atom = byte = after;
        if (*byte == '\\') {
            ++byte;
            if (*byte == '<' || *byte == '>' || *byte == '\0')
                break;
        }
    }
    regc('\0');
    flags = length == 1 ? hasWidth | simple : hasWidth;
    return node;
}

// Writing.

char* Compiler::regnode(unsigned int op) {
    char* node = regcode;
    regc(static_cast<char>(op));
    regc('\0');
    regc('\0');
    return node;
}

// Beyond the limit nothing is counted, so that no pattern is too long to count.
void Compiler::regc(char c) {
    if (!isSizing())
        *regcode++ = c;
    else if (regsize < sizeLimit)
        ++regsize;
}

// Puts a node before `operand`, which has been written last.
void Compiler::reginsert(unsigned int op, char* operand) {
    if (isSizing()) {
        if (regsize < sizeLimit)
            regsize += fxRegNodeSize;
        return;
    }
    std::memmove(operand + fxRegNodeSize, operand, static_cast<std::size_t>(regcode - operand));
    char* end = regcode + fxRegNodeSize;
    regcode = operand;
    regnode(op);
    regcode = end;
}

// Links the last node of the chain to `target`.
void Compiler::regtail(char* chain, const char* target) {
    if (isSizing())
        return;
    char* last = chain;
    while (char* following = next(last))
        last = following;
    const long offset = fxRegOp(last) == OP_BACK ? last - target : target - last;
    last[1] = static_cast<char>(offset >> 8);
    last[2] = static_cast<char>(offset);
}

// The same for the chain that is the operand of a branch.
void Compiler::regoptail(char* branch, const char* target) {
    if (!isSizing() && fxRegOp(branch) == OP_BRANCH)
        regtail(branch + fxRegNodeSize, target);
}

}  // namespace

fxregexp* fxregcomp(const char* pattern) {
    if (!pattern) {
        fxregerror("NULL argument");
        return nullptr;
    }
    return Compiler(pattern).compile();
}
