// options.h - the command line of fxdump.
#pragma once

#include <string>
#include <vector>

namespace fxdump {

/// What is shown of each stream.
enum class Show : unsigned char { list, hex, json, dot, stats, verify };

struct Options {
    Show show = Show::list;
    bool readerWords = false;
    bool help = false;
    bool version = false;
    std::vector<std::string> files;  ///< "-" is the standard input.
};

/// What the command line says; `wrong` is what makes no sense of it, else "".
Options parseOptions(int argc, char** argv, std::string& wrong);

extern const char helpText[];

}  // namespace fxdump
