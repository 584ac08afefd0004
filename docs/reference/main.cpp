// main.cpp - runs the examples of the reference manual and compares what they print with what
// stands behind each printf. The argument is the folder of their sources.

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "docs/reference/examples.h"

namespace {
const Example* lastExample = nullptr;

using Texts = std::map<std::string, std::string>;

// What each EXAMPLE of the file at `path` says that it prints.
void collectPromises(const std::string& path, Texts& promises) {
    std::ifstream file(path);
    std::string name;
    bool printing = false;
    for (std::string line; std::getline(file, line);) {
        const std::string start = "EXAMPLE(";
        if (line.compare(0, start.size(), start) == 0)
            name = line.substr(start.size(), line.find(')') - start.size());
        printing = printing || line.find("printf(") != std::string::npos;
        const std::size_t end = line.find(");");
        if (!printing || end == std::string::npos)
            continue;
        const std::size_t said = line.find("  // ", end);
        promises[name] += said == std::string::npos ? "(nothing is said)" : line.substr(said + 5);
        promises[name] += '\n';
        printing = false;
    }
}

std::string printedBy(const Example& example) {
    std::fflush(stdout);
    std::FILE* const paper = std::tmpfile();
    const int screen = ::dup(STDOUT_FILENO);
    ::dup2(::fileno(paper), STDOUT_FILENO);
    example.run();
    std::fflush(stdout);
    ::dup2(screen, STDOUT_FILENO);
    ::close(screen);
    std::string text;
    std::rewind(paper);
    for (int c; (c = std::fgetc(paper)) != EOF;)
        text += static_cast<char>(c);
    std::fclose(paper);
    return text;
}
}  // namespace

Example::Example(const char* className, void (*function)())
    : name(className), run(function), next(lastExample) {
    lastExample = this;
}

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: reference FOLDER\n");
        return 2;
    }
    Texts promises;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1]))
        collectPromises(entry.path().string(), promises);

    fxInitializeToolkit();
    std::vector<const Example*> examples;
    for (const Example* example = lastExample; example; example = example->next)
        examples.push_back(example);
    std::sort(examples.begin(), examples.end(),
              [](const Example* a, const Example* b) { return std::strcmp(a->name, b->name) < 0; });
    unsigned int wrong = 0;
    for (const Example* example : examples) {
        const std::string printed = printedBy(*example);
        const std::string& promised = promises[example->name];
        if (printed == promised && !promised.empty())
            continue;
        ++wrong;
        std::fprintf(stderr, "%s prints\n%sand says\n%s", example->name, printed.c_str(),
                     promised.c_str());
    }
    std::printf("reference: %u examples, %u wrong\n", static_cast<unsigned int>(examples.size()),
                wrong);
    fxCleanupGlobalOrderings();
    return examples.empty() || wrong != 0 ? 1 : 0;
}
