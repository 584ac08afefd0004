// slowRegex.h - the regular-expression language once more, to compare the engine with.
#pragma once

#include <string>

/// A second compiler and matcher for the language of docs/patterns.md, written
/// down rule by rule: recursive, nothing remembered, no hint but those of the
/// language. Slow, and deep on the stack for long subjects.
namespace slowRegex {

struct Program {
    std::string error;  ///< Why the pattern is none; empty if it is one.
    std::string bytes;  ///< The magic byte and the nodes.
    char startchar = 0;
    bool anchored = false;
    int must = -1;  ///< Where in `bytes`, or -1.
    int mustlen = 0;
};

struct Match {
    bool found = false;
    bool wasTried = false;    ///< At one place at least: a hint has not ruled out all.
    bool gaveUp = false;      ///< The limit was exceeded; nothing else is meant.
    unsigned long steps = 0;  ///< Nodes visited and bytes repeated.
    int start[10];            ///< Offsets in the subject, -1 where unset.
    int end[10];
};

Program compile(const std::string& pattern);

/// Gives up after `limit` steps. `subject` ends at its first NUL.
Match match(const Program& program, const std::string& subject, unsigned long limit);

/// What `source` becomes after that match in `subject`.
std::string substitute(const std::string& source, const std::string& subject, const Match& match);

}  // namespace slowRegex
