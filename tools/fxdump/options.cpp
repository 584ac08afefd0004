#include "tools/fxdump/options.h"

namespace fxdump {

const char helpText[] =
    "usage: fxdump [OPTION] FILE...\n"
    "\n"
    "Shows what is in streams of objects: graph streams and standard streams, of hosts\n"
    "of either byte order. A FILE that is - is the standard input.\n"
    "\n"
    "  --hex           every byte, with what it is\n"
    "  --json          one JSON document with all that is in the streams\n"
    "  --dot           the objects and their pointers, for Graphviz\n"
    "  --stats         how many records and objects there are of each kind and type\n"
    "  --verify        whether the stream is sound: stops at the first bad record\n"
    "  --reader-words  standard streams have the words that the standard reader takes\n"
    "  --help          print this\n"
    "  --version       print the version\n"
    "\n"
    "Exit status: 0 when all streams were shown to their end, and are sound if that was\n"
    "asked; 1 when one is damaged; 2 for a wrong command line, or when a file cannot be\n"
    "read or the output cannot be written.\n";

namespace {
const struct {
    const char* name;
    Show show;
} views[] = {{"--hex", Show::hex},
             {"--json", Show::json},
             {"--dot", Show::dot},
             {"--stats", Show::stats},
             {"--verify", Show::verify}};

// False if it is none that chooses a view, or there has been one.
bool takeView(const std::string& word, Options& options, std::string& wrong) {
    for (const auto& view : views) {
        if (word != view.name)
            continue;
        if (options.show != Show::list && options.show != view.show)
            wrong = "only one of --hex, --json, --dot, --stats and --verify can be given";
        options.show = view.show;
        return true;
    }
    return false;
}
}  // namespace

Options parseOptions(int argc, char** argv, std::string& wrong) {
    Options options;
    bool areFiles = false;  // "--" has been seen
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (areFiles || word == "-" || word.empty() || word[0] != '-')
            options.files.push_back(word);
        else if (word == "--")
            areFiles = true;
        else if (word == "--reader-words")
            options.readerWords = true;
        else if (word == "--help")
            options.help = true;
        else if (word == "--version")
            options.version = true;
        else if (!takeView(word, options, wrong))
            wrong = "there is no option " + word;
    }
    if (wrong.empty() && options.files.empty() && !options.help && !options.version)
        wrong = "no file given";
    return options;
}

}  // namespace fxdump
