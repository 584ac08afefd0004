// texts.cpp - strings, patterns and paths, while memory is refused.

#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>

#include "tests/figures/refusals/scenarios.h"

namespace {

void makeTexts() {
    fxStr a(longText);
    fxStr b(a);
    fxStr c(longText, 20);
    fxStr d(100U);
    a = b;
    b = longText;
}
void appendTexts() {
    fxStr a("short");
    a.append(longText);
    a.append('c');
    a.insert(longText, 3);
    a.insert('c', 4);
}
void resizeTexts() {
    fxStr a("short");
    a.resize(1000);
    a.setMaxLength(2000);
    a.remove(0, 999);
}
void joinTexts() {
    const fxStr a(longText);
    const fxStr b = a | longText | a | longText;
}
void formatTexts() {
    fxStr a;
    a.format("%s and %d", longText, 5);
    const fxStr b(3.5, "%g");
}
void takeTextsApart() {
    fxStr a(longText);
    unsigned int pos = 0;
    while (pos < a.length())
        a.token(pos, ' ');
    a.cut(3, 40);
    a.extract(2, 10);
    a.trim("a");
}

std::istringstream& lines() {
    static std::istringstream made(std::string(longText) + "\n" + longText + "\n");
    return made;
}
void readLines() {
    fxStr line;
    while (lines() >> line) {
    }
}
void concatenate() {
    fxTempStr text("some", 4, longText, 40);
    text.concat(longText, 60).concat(longText, 60);
    const fxTempStr copy(text);
}
void compilePattern() { std::free(fxregcomp("(a|b)*c[x-z]+(d|e)f?")); }
void findPattern() {
    const fxRegEx pattern("(k[a-z]+) ([0-9]+)");
    int start = 0;
    int end = 0;
    pattern.bracketBuffer("some key 42 here", 16, start, end);
}
void hardPattern() {
    const fxRegEx pattern("((a|b|ab)*)*c");
    char text[300];
    std::memset(text, 'a', sizeof text);
    pattern.findBuffer(text, sizeof text);
}
void substitutePattern() {
    fxregexp* const program = fxregcomp("(a+)(b+)");
    char dest[100];
    if (program && fxregexec(program, "xaabbx"))
        fxregsub(program, "\\2\\1&", dest);
    std::free(program);
}
void linearPattern() {
    const fxSLinearPattern pattern("needle");
    pattern.findBuffer("hay needle hay", 14);
}
void searchFiles() {
    const fxSearchList list("/etc:/usr", ".*");
    fxSearchList other("/etc", "h.*");
    other.searchList("/usr:/");
}
void splitPath() {
    const fxPath path("/some/folder/with/a/file.txt");
    path.leaf();
    path.directory();
}
void pathNames() {
    for (const char* path : {"/a/b/c", "~/x", "$HOME/x"}) {
        std::free(pathbasename(path));
        std::free(pathdirname(path));
        std::free(pathexpandtilde(path));
        std::free(environmentVariableExtendedName(path, 10));
        std::free(symbolicLinkExtendedName(path, 10));
    }
}
void stackBuffer() {
    fxStackBuffer buffer;
    for (int i = 0; i < 3000; ++i)
        buffer.addc('c');
    const fxStackBuffer copy(buffer);
    buffer.tryAddc('c');
}

}  // namespace

void prepareTexts() { lines(); }

Scenarios ofTexts() {
    return {
        {"makeTexts", makeTexts, usual},           {"appendTexts", appendTexts, usual},
        {"resizeTexts", resizeTexts, usual},       {"joinTexts", joinTexts, usual},
        {"formatTexts", formatTexts, usual},       {"takeTextsApart", takeTextsApart, usual},
        {"readLines", readLines, usual},           {"concatenate", concatenate, usual},
        {"compilePattern", compilePattern, usual}, {"findPattern", findPattern, usual},
        {"hardPattern", hardPattern, usual},       {"substitutePattern", substitutePattern, usual},
        {"linearPattern", linearPattern, usual},   {"searchFiles", searchFiles, usual},
        {"splitPath", splitPath, usual},           {"pathNames", pathNames, usual},
        {"stackBuffer", stackBuffer, usual},
    };
}
