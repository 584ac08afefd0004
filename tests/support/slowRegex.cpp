#include "tests/support/slowRegex.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/pattern/fxRegEngine.h"

namespace {

using slowRegex::Match;
using slowRegex::Program;

// Nodes are positions in the program. The magic byte is at 0, so 0 is none.
const int none = 0;
const int failed = -1;

struct Flags {
    bool hasWidth = false;
    bool simple = false;
    bool startsWithStar = false;
};

int opcodeOf(const std::string& program, int node) {
    return static_cast<unsigned char>(program[static_cast<std::size_t>(node)]);
}

int nextOf(const std::string& program, int node) {
    const int offset = opcodeOf(program, node + 1) * 256 + opcodeOf(program, node + 2);
    if (offset == 0)
        return none;
    return opcodeOf(program, node) == OP_BACK ? node - offset : node + offset;
}

// The text of an OP_EXACT or a class.
const char* textOf(const std::string& program, int node) { return program.c_str() + node + 3; }

bool isRepetition(char c) { return c == '*' || c == '+' || c == '?'; }

class Compiler {
public:
    explicit Compiler(const std::string& pattern) : parse(pattern.c_str()) {}

    Program compile();

private:
    int reg(bool group, Flags& flags);
    int regbranch(Flags& flags);
    int regpiece(Flags& flags);
    int regatom(Flags& flags);
    int characterClass(Flags& flags);
    bool classMembers();
    int literalRun(Flags& flags);

    int regnode(int opcode);
    void regc(char c) { program.bytes += c; }
    void reginsert(int opcode, int operand);
    void regtail(int chain, int target);
    void regoptail(int node, int target);

    void findHints(const Flags& flags);

    int fail(const char* message) {
        program.error = message;
        return failed;
    }

    const char* parse;
    int groups = 0;
    Program program;
};

Program Compiler::compile() {
    regc(static_cast<char>(fxRegMagic));
    Flags flags;
    if (reg(false, flags) == failed)
        return program;
    if (program.bytes.size() >= 32767) {
        fail("regexp too big");
        return program;
    }
    findHints(flags);
    return program;
}

// A group, behind its parenthesis, or the whole expression: alternatives.
int Compiler::reg(bool group, Flags& flags) {
    int first = none;
    int number = 0;
    if (group) {
        if (groups == 9)
            return fail("too many ()");
        number = ++groups;
        first = regnode(OP_OPEN + number);
    }

    flags.hasWidth = true;
    for (;;) {
        Flags branchFlags;
        const int branch = regbranch(branchFlags);
        if (branch == failed)
            return failed;
        if (first == none)
            first = branch;
        else
            regtail(first, branch);
        flags.hasWidth = flags.hasWidth && branchFlags.hasWidth;
        flags.startsWithStar = flags.startsWithStar || branchFlags.startsWithStar;
        if (*parse != '|' && *parse != '\n')
            break;
        ++parse;
    }

    const int closing = regnode(group ? OP_CLOSE + number : static_cast<int>(OP_END));
    regtail(first, closing);
    for (int node = first; node != none; node = nextOf(program.bytes, node))
        regoptail(node, closing);

    if (group) {
        if (*parse != ')')
            return fail("unmatched ()");
        ++parse;
    } else if (*parse == ')') {
        return fail("unmatched ()");
    } else if (*parse != '\0') {
        return fail("junk on end");
    }
    return first;
}

// One alternative: pieces.
int Compiler::regbranch(Flags& flags) {
    const int branch = regnode(OP_BRANCH);
    int last = none;
    while (*parse != '\0' && *parse != ')' && *parse != '\n' && *parse != '|') {
        Flags pieceFlags;
        const int piece = regpiece(pieceFlags);
        if (piece == failed)
            return failed;
        if (last == none)
            flags.startsWithStar = pieceFlags.startsWithStar;
        else
            regtail(last, piece);
        flags.hasWidth = flags.hasWidth || pieceFlags.hasWidth;
        last = piece;
    }
    if (last == none)
        regnode(OP_NOTHING);
    return branch;
}

// An atom and what repeats it.
int Compiler::regpiece(Flags& flags) {
    Flags atomFlags;
    const int atom = regatom(atomFlags);
    if (atom == failed)
        return failed;
    const char repetition = *parse;
    if (!isRepetition(repetition)) {
        flags = atomFlags;
        return atom;
    }
    if (repetition != '?' && !atomFlags.hasWidth)
        return fail("*+ operand could be empty");
    flags.hasWidth = repetition == '+';
    flags.startsWithStar = repetition != '+';

    if (repetition == '*' && atomFlags.simple) {
        reginsert(OP_STAR, atom);
    } else if (repetition == '*') {
        reginsert(OP_BRANCH, atom);
        const int back = regnode(OP_BACK);
        regoptail(atom, back);
        regtail(back, atom);
        regtail(atom, regnode(OP_BRANCH));
        regtail(atom, regnode(OP_NOTHING));
    } else if (repetition == '+' && atomFlags.simple) {
        reginsert(OP_PLUS, atom);
    } else if (repetition == '+') {
        const int again = regnode(OP_BRANCH);
        regtail(atom, again);
        regtail(regnode(OP_BACK), atom);
        regtail(again, regnode(OP_BRANCH));
        regtail(again, regnode(OP_NOTHING));
    } else {
        reginsert(OP_BRANCH, atom);
        regtail(atom, regnode(OP_BRANCH));
        const int nothing = regnode(OP_NOTHING);
        regtail(atom, nothing);
        regoptail(atom, nothing);
    }
    ++parse;
    if (isRepetition(*parse))
        return fail("nested *?+");
    return atom;
}

int Compiler::regatom(Flags& flags) {
    switch (*parse) {
        case '\0':
        case '|':
        case '\n':
        case ')':
            return fail("internal urp");
        case '*':
        case '+':
        case '?':
            return fail("?+* follows nothing");
        case '^':
            ++parse;
            return regnode(OP_BOL);
        case '$':
            ++parse;
            return regnode(OP_EOL);
        case '.':
            ++parse;
            flags.hasWidth = flags.simple = true;
            return regnode(OP_ANY);
        case '(': {
            ++parse;
            Flags groupFlags;
            const int group = reg(true, groupFlags);
            flags.hasWidth = groupFlags.hasWidth;
            flags.startsWithStar = groupFlags.startsWithStar;
            return group;
        }
        case '[':
            ++parse;
            return characterClass(flags);
        case '\\':
            if (parse[1] == '\0')
                return fail("trailing \\");
            if (parse[1] == '<' || parse[1] == '>') {
                parse += 2;
                return regnode(parse[-1] == '<' ? OP_WORDSTART : OP_WORDEND);
            }
            ++parse;
            return literalRun(flags);
        default:
            return literalRun(flags);
    }
}

int Compiler::characterClass(Flags& flags) {
    const bool negated = *parse == '^';
    if (negated)
        ++parse;
    const int node = regnode(negated ? OP_ANYBUT : OP_ANYOF);
    if (!classMembers())
        return failed;
    regc('\0');
    if (*parse != ']')
        return fail("unmatched []");
    ++parse;
    flags.hasWidth = flags.simple = true;
    return node;
}

bool Compiler::classMembers() {
    if (*parse == ']' || *parse == '-')
        regc(*parse++);
    while (*parse != '\0' && *parse != ']') {
        if (*parse != '-') {
            regc(*parse++);
            continue;
        }
        if (parse[1] == ']' || parse[1] == '\0') {
            regc(*parse++);
            continue;
        }
        // The first byte is a member already.
        const int firstByte = static_cast<unsigned char>(parse[-1]);
        const int lastByte = static_cast<unsigned char>(parse[1]);
        if (firstByte > lastByte + 1) {
            fail("invalid [] range");
            return false;
        }
        for (int byte = firstByte + 1; byte <= lastByte; ++byte)
            regc(static_cast<char>(byte));
        parse += 2;
    }
    return true;
}

// `parse` is at the run's first byte, behind the backslash if there is one.
int Compiler::literalRun(Flags& flags) {
    const int node = regnode(OP_EXACT);
    int length = 0;
    const char* unit = parse;  // where the byte to be copied begins, with its backslash
    for (;;) {
        const char byte = *parse;
        const char next = parse[1];
        if (isRepetition(next) && length > 0) {
            parse = unit;
            break;
        }
        regc(byte);
        ++length;
        ++parse;
        if (isRepetition(next) || next == '\0' || std::strchr("\n$().[^|", next))
            break;
        unit = parse;
        if (next == '\\') {
            if (parse[1] == '<' || parse[1] == '>' || parse[1] == '\0')
                break;
            ++parse;
        }
    }
    regc('\0');
    flags.hasWidth = true;
    flags.simple = length == 1;
    return node;
}

int Compiler::regnode(int opcode) {
    const int node = static_cast<int>(program.bytes.size());
    regc(static_cast<char>(opcode));
    regc('\0');
    regc('\0');
    return node;
}

void Compiler::reginsert(int opcode, int operand) {
    const char header[] = {static_cast<char>(opcode), '\0', '\0'};
    program.bytes.insert(static_cast<std::size_t>(operand), header, sizeof header);
}

void Compiler::regtail(int chain, int target) {
    int last = chain;
    while (nextOf(program.bytes, last) != none)
        last = nextOf(program.bytes, last);
    const bool back = opcodeOf(program.bytes, last) == OP_BACK;
    const int offset = back ? last - target : target - last;
    program.bytes[static_cast<std::size_t>(last) + 1] = static_cast<char>(offset / 256);
    program.bytes[static_cast<std::size_t>(last) + 2] = static_cast<char>(offset % 256);
}

void Compiler::regoptail(int node, int target) {
    if (opcodeOf(program.bytes, node) == OP_BRANCH)
        regtail(node + 3, target);
}

void Compiler::findHints(const Flags& flags) {
    const std::string& bytes = program.bytes;
    if (opcodeOf(bytes, nextOf(bytes, 1)) != OP_END)
        return;
    const int first = 1 + 3;
    if (opcodeOf(bytes, first) == OP_EXACT)
        program.startchar = *textOf(bytes, first);
    program.anchored = opcodeOf(bytes, first) == OP_BOL;
    if (!flags.startsWithStar)
        return;
    for (int node = first; node != none; node = nextOf(bytes, node)) {
        if (opcodeOf(bytes, node) != OP_EXACT)
            continue;
        const int length = static_cast<int>(std::strlen(textOf(bytes, node)));
        if (length >= program.mustlen) {
            program.must = node + 3;
            program.mustlen = length;
        }
    }
}

class Matcher {
public:
    Matcher(const Program& compiled, const std::string& text, unsigned long stepLimit)
        : program(compiled), bytes(compiled.bytes), subject(text.c_str()), limit(stepLimit) {}

    Match match();

private:
    bool hasMust() const;
    bool regtry(const char* position);
    bool regmatch(int node);
    bool oneStep(int node);
    bool alternatives(int node);
    bool repetitions(int node);
    int regrepeat(int node);
    bool group(int node);

    bool mayGoOn() {
        if (++result.steps > limit)
            result.gaveUp = true;
        return !result.gaveUp;
    }

    static bool isWord(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

    // NUL is no member of anything.
    bool isMember(char c, int node) const {
        return c != '\0' && std::strchr(textOf(bytes, node), c) != nullptr;
    }

    const Program& program;
    const std::string& bytes;
    const char* const subject;
    const unsigned long limit;
    const char* input = nullptr;
    Match result;
};

Match Matcher::match() {
    if (program.must >= 0 && !hasMust())
        return result;
    if (program.anchored) {
        result.found = regtry(subject);
    } else if (program.startchar != '\0') {
        const char* position = std::strchr(subject, program.startchar);
        while (position && !result.found) {
            result.found = regtry(position);
            position = std::strchr(position + 1, program.startchar);
        }
    } else {
        const char* position = subject;
        while (!(result.found = regtry(position)) && *position != '\0')
            ++position;
    }
    return result;
}

bool Matcher::hasMust() const {
    const char* must = bytes.c_str() + program.must;
    for (const char* hit = std::strchr(subject, *must); hit; hit = std::strchr(hit + 1, *must)) {
        if (std::strncmp(hit, must, static_cast<std::size_t>(program.mustlen)) == 0)
            return true;
    }
    return false;
}

bool Matcher::regtry(const char* position) {
    result.wasTried = true;
    for (int i = 0; i < 10; ++i)
        result.start[i] = result.end[i] = -1;
    input = position;
    if (!regmatch(1))
        return false;
    result.start[0] = static_cast<int>(position - subject);
    result.end[0] = static_cast<int>(input - subject);
    return true;
}

bool Matcher::regmatch(int node) {
    while (mayGoOn()) {
        const int opcode = opcodeOf(bytes, node);
        const int next = nextOf(bytes, node);
        if (opcode == OP_END)
            return true;
        if (opcode == OP_STAR || opcode == OP_PLUS)
            return repetitions(node);
        if (opcode > OP_OPEN)
            return group(node);
        if (opcode == OP_BRANCH && opcodeOf(bytes, next) == OP_BRANCH)
            return alternatives(node);
        if (opcode == OP_BRANCH) {
            node += 3;
            continue;
        }
        if (!oneStep(node))
            return false;
        node = next;
    }
    return false;
}

// The nodes that need no choice.
bool Matcher::oneStep(int node) {
    const int opcode = opcodeOf(bytes, node);
    switch (opcode) {
        case OP_BOL:
            return input == subject;
        case OP_EOL:
            return *input == '\0';
        case OP_WORDSTART:
            return isWord(*input) && (input == subject || !isWord(input[-1]));
        case OP_WORDEND:
            return !isWord(*input);
        case OP_NOTHING:
        case OP_BACK:
            return true;
        case OP_EXACT: {
            const std::size_t length = std::strlen(textOf(bytes, node));
            if (std::strncmp(input, textOf(bytes, node), length) != 0)
                return false;
            input += length;
            return true;
        }
        case OP_ANY:
        case OP_ANYOF:
        case OP_ANYBUT:
            if (*input == '\0' || (opcode == OP_ANYOF && !isMember(*input, node)) ||
                (opcode == OP_ANYBUT && isMember(*input, node)))
                return false;
            ++input;
            return true;
    }
    std::abort();  // in no program that was compiled here
}

bool Matcher::alternatives(int node) {
    const char* const saved = input;
    while (node != none && opcodeOf(bytes, node) == OP_BRANCH) {
        input = saved;
        if (regmatch(node + 3))
            return true;
        node = nextOf(bytes, node);
    }
    return false;
}

bool Matcher::repetitions(int node) {
    const int next = nextOf(bytes, node);
    const char* const saved = input;
    const int least = opcodeOf(bytes, node) == OP_PLUS ? 1 : 0;
    for (int count = regrepeat(node + 3); count >= least; --count) {
        input = saved + count;
        if (opcodeOf(bytes, next) == OP_EXACT && *input != *textOf(bytes, next)) {
            if (!mayGoOn())
                return false;
            continue;
        }
        if (regmatch(next))
            return true;
    }
    return false;
}

// How often the node of one byte matches in a row.
int Matcher::regrepeat(int node) {
    int count = 0;
    const char* position = input;
    for (; *position != '\0'; ++position, ++count) {
        mayGoOn();
        const int opcode = opcodeOf(bytes, node);
        if (opcode == OP_EXACT && *position != *textOf(bytes, node))
            break;
        if (opcode == OP_ANYOF && !isMember(*position, node))
            break;
        if (opcode == OP_ANYBUT && isMember(*position, node))
            break;
    }
    return count;
}

bool Matcher::group(int node) {
    const int opcode = opcodeOf(bytes, node);
    const int position = static_cast<int>(input - subject);
    if (!regmatch(nextOf(bytes, node)))
        return false;
    int& entry = opcode > OP_CLOSE ? result.end[opcode - OP_CLOSE] : result.start[opcode - OP_OPEN];
    if (entry == -1)
        entry = position;
    return true;
}

}  // namespace

slowRegex::Program slowRegex::compile(const std::string& pattern) {
    return Compiler(pattern).compile();
}

slowRegex::Match slowRegex::match(const Program& program, const std::string& subject,
                                  unsigned long limit) {
    return Matcher(program, subject, limit).match();
}

std::string slowRegex::substitute(const std::string& source, const std::string& subject,
                                  const Match& match) {
    std::string text;
    for (const char* at = source.c_str(); *at != '\0'; ++at) {
        const bool isEscape = *at == '\\';
        const char next = at[1];
        if (*at == '&' || (isEscape && next >= '0' && next <= '9')) {
            const int number = isEscape ? *++at - '0' : 0;
            const int start = match.start[number];
            if (start != -1)
                text += subject.substr(static_cast<std::size_t>(start),
                                       static_cast<std::size_t>(match.end[number] - start));
        } else {
            text += isEscape && (next == '&' || next == '\\') ? *++at : *at;
        }
    }
    return text;
}
