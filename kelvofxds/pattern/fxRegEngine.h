// fxRegEngine.h - the regular-expression engine's functions.
#pragma once

#include "kelvofxds/core/fxExport.h"

/// A compiled regular expression: one block from malloc, which the owner
/// releases with free. It is not to be kept anywhere else: malloc is asked where
/// the block ends. docs/patterns.md describes the language and the program.
///
/// fxRegEx wraps it in a class; these functions are for hosts that want the
/// groups of a match or substitution.
struct fxregexp {
    static const unsigned int groupCount = 10;  ///< The whole match, groups 1 to 9.

    char* startp[groupCount];  ///< Where the whole match and groups begin, or null.
    char* endp[groupCount];    ///< One past where they end, or null.
    char startchar;            ///< Unless 0, every match begins with this byte.
    char anchored;             ///< Nonzero if the expression begins with '^'.
    char* must;                ///< A text that every match contains, in `program`, or null.
    int mustlen;               ///< Its length in bytes.
    char program[1];           ///< The magic byte and the nodes; as long as they take.
};

/// The first byte of every program.
const unsigned char fxRegMagic = 0234;

/// The operations of a program: one byte, a 16-bit offset to the next node,
/// high byte first, and an operand. The numbers are part of the format.
enum fxRegOpcode : unsigned char {
    OP_END = 0,         ///< End of the program: success.
    OP_BOL = 1,         ///< Only at the start of the subject.
    OP_EOL = 2,         ///< Only at the terminating NUL.
    OP_ANY = 3,         ///< Any byte but NUL.
    OP_ANYOF = 4,       ///< A byte of the operand, a text.
    OP_ANYBUT = 5,      ///< A byte, not NUL, that is not in the operand.
    OP_BRANCH = 6,      ///< The operand, nodes, or else the next OP_BRANCH.
    OP_BACK = 7,        ///< Nothing; its offset counts backward.
    OP_EXACT = 8,       ///< The operand, a text.
    OP_NOTHING = 9,     ///< Nothing.
    OP_STAR = 10,       ///< The operand, a node of one byte, any number of times.
    OP_PLUS = 11,       ///< The same, at least once.
    OP_WORDSTART = 12,  ///< A word byte that does not follow one is next.
    OP_WORDEND = 13,    ///< No word byte is next.
    OP_OPEN = 20,       ///< OP_OPEN + n: group n, 1 to 9, begins.
    OP_CLOSE = 30       ///< OP_CLOSE + n: group n ends.
};

/// Compiles the NUL-terminated `pattern`. Returns null if it is null or not a
/// regular expression, or if the program would have 32,767 bytes or more. O(its
/// length), but each '*', '+' or '?' after a group moves that group's program.
FX_EXPORT fxregexp* fxregcomp(const char* pattern);

/// Finds the leftmost match in the NUL-terminated `subject`: returns 1 and sets
/// startp and endp, which point into it. Of the matches at one place it is the
/// one found first, taking alternatives in order and repetitions as often as
/// possible. Otherwise returns 0 with all of startp and endp null. Returns 0 too
/// if an argument is null or the program is damaged: that is looked for first, in
/// O(program size).
/// Deliberate: a search that gives up before its first try, because `must` or
/// `startchar` is nowhere in the subject or something is wrong with the
/// arguments, leaves startp and endp as they were.
///
/// Time is O(program size * length of the subject) at worst. The stack used
/// does not depend on the subject; choices in waiting are kept on the heap, and
/// a search that gets expensive takes a bit for each choice in the program and
/// byte of the subject. Without memory for the choices it returns 0, without
/// memory for the bits it can take longer.
FX_EXPORT int fxregexec(fxregexp* prog, const char* subject);

/// Writes `source` to `dest`, a NUL-terminated text that must be large enough,
/// with "&" and "\0" replaced by the last match and "\1" to "\9" by its groups
/// (an unset one is empty), "\&" by "&" and "\\" by "\". Writes nothing if an
/// argument is null or the program is damaged.
/// A group that ends in a NUL byte stops the work and leaves `dest` without one.
/// Requires: the last fxregexec on `prog` returned 1 and its subject is there.
FX_EXPORT void fxregsub(const fxregexp* prog, const char* source, char* dest);

/// Gets the message of every error in these functions.
/// Deliberate: does nothing; a failure shows in what the functions return. A
/// host that defines this function itself gets the messages.
FX_EXPORT void fxregerror(const char* message);
