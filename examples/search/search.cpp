// search - shows the lines of files in which a pattern is found. `search --help` lists the options.

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>

#include "kelvofxds/core/fxRef.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/pattern/fxRegEngine.h"
#include "kelvofxds/pattern/fxRegEx.h"
#include "kelvofxds/pattern/fxSLinearPattern.h"
#include "kelvofxds/str/fxSearchList.h"

namespace {

const char usage[] =
    "usage: search [-l] [-r TEXT] PATTERN FILE...\n"
    "       search [-l] [-r TEXT] -d DIRECTORIES PATTERN NAMES\n"
    "\n"
    "Shows the lines in which PATTERN, a regular expression, is found.\n"
    "\n"
    "  -d  searches the files in DIRECTORIES, which are separated by \":\", whose whole\n"
    "      names the regular expression NAMES matches\n"
    "  -l  shows the names of the files instead\n"
    "  -r  shows the lines with TEXT in place of the first match: & in it stands for the\n"
    "      match, \\1 to \\9 for its groups\n"
    "\n"
    "The exit status is 0 when there are such lines, 1 when there are none, and 2 when\n"
    "a file could not be read or the arguments make no sense.\n";

struct Options {
    const char* directories = nullptr;
    const char* replacement = nullptr;
    bool onlyNames = false;
};

int complain(const std::string& what) {
    std::fprintf(stderr, "search: %s\n", what.c_str());
    return 2;
}

int complainOfUsage() {
    std::fputs(usage, stderr);
    return 2;
}

/// Finds a pattern in lines. Texts end at their first NUL here.
class Finder {
public:
    explicit Finder(const char* pattern);

    bool isPattern() const { return program != nullptr; }
    bool isIn(const std::string& line) const;
    /// `line` with `replacement` in place of the first match, of which there is one.
    std::string replaced(const std::string& line, const char* replacement) const;

private:
    struct Free {
        void operator()(fxregexp* block) const { std::free(block); }
    };
    fxRef<fxTextPattern> quick;               // says whether there is a match
    std::unique_ptr<fxregexp, Free> program;  // says where its groups are
};

Finder::Finder(const char* pattern) : program(fxregcomp(pattern)) {
    // fxIsRegEx leaves out three bytes that mean something.
    if (fxIsRegEx(pattern) || std::strpbrk(pattern, "|?\\\n"))
        quick = new fxRegEx(pattern);
    else
        quick = new fxSLinearPattern(pattern);
}

bool Finder::isIn(const std::string& line) const {
    return quick->findBuffer(line.c_str(), static_cast<unsigned int>(line.size())) >= 0;
}

std::string Finder::replaced(const std::string& line, const char* replacement) const {
    if (!fxregexec(program.get(), line.c_str()))
        return line;
    const char* const start = program->startp[0];
    const char* const end = program->endp[0];
    // No group is longer than the match, and each byte of the text stands for one at most.
    const auto longest = static_cast<std::size_t>(end - start) + 1;
    std::string middle(std::strlen(replacement) * longest + 1, '\0');
    fxregsub(program.get(), replacement, &middle[0]);
    return std::string(line.c_str(), start) + middle.c_str() + end;
}

/// What has come of the search so far.
class Search {
public:
    Search(const Finder& what, const Options& how, bool showsNames)
        : finder(what), options(how), names(showsNames) {}

    void searchFile(const char* path);
    int status() const { return failures != 0 ? 2 : found == 0; }

private:
    void show(const char* path, const std::string& line) const;

    const Finder& finder;
    const Options& options;
    bool names;
    unsigned int found = 0;
    unsigned int failures = 0;
};

void Search::searchFile(const char* path) {
    std::ifstream file(path);
    std::string line;
    while (std::getline(file, line)) {
        if (!finder.isIn(line))
            continue;
        ++found;
        if (options.onlyNames) {
            std::puts(path);
            return;
        }
        show(path, line);
    }
    if (!file.eof() || file.bad()) {
        ++failures;
        complain(std::string(path) + ": " + std::strerror(errno));
    }
}

void Search::show(const char* path, const std::string& line) const {
    if (names)
        std::printf("%s:", path);
    std::puts(options.replacement ? finder.replaced(line, options.replacement).c_str()
                                  : line.c_str());
}

bool isFile(const fxStr& path) {
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// The names match in the order in which the system has them; a reader wants them sorted.
void searchMatching(Search& search, const char* directories, const char* names) {
    fxSearchList files(directories, names);
    files.qsort();
    for (unsigned int i = 0; i < files.length(); ++i) {
        if (isFile(files[i]))
            search.searchFile(files[i].c_str());
    }
}

int run(const Options& options, int argc, char** words) {
    if (argc < 2 || (options.directories && argc != 2))
        return complainOfUsage();
    const Finder finder(words[0]);
    if (!finder.isPattern())
        return complain(std::string("\"") + words[0] + "\" is no regular expression");
    Search search(finder, options, options.directories || argc > 2);
    if (options.directories)
        searchMatching(search, options.directories, words[1]);
    for (int i = 1; !options.directories && i < argc; ++i)
        search.searchFile(words[i]);
    return std::fflush(stdout) == 0 ? search.status() : complain("the output cannot be written");
}

}  // namespace

int main(int argc, char** argv) {
    fxInitializeToolkit();
    if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
        std::fputs(usage, stdout);
        return 0;
    }
    Options options;
    for (int option; (option = ::getopt(argc, argv, "+d:lr:")) != -1;) {
        if (option == 'd')
            options.directories = optarg;
        else if (option == 'l')
            options.onlyNames = true;
        else if (option == 'r')
            options.replacement = optarg;
        else
            return complainOfUsage();
    }
    return run(options, argc - optind, argv + optind);
}
