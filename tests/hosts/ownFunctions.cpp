// ownFunctions.cpp - a host that brings its own versions of the functions it
// may replace. Exits with 0 when the library uses them.
//
// A program of its own: its definitions hold for the whole process.

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "kelvofxds/core/fxPlatform.h"
#include "kelvofxds/core/fxVersion.h"
#include "kelvofxds/str/fxPath.h"

namespace {

// What the library handed over.
int first, number, width;
char* target;
const char *formatText, *name;
const char* splitPath;
int directoryRoom, leafRoom;

// What the host's splitting writes and returns.
const char *directoryWritten, *leafWritten;
int splitStatus;

void note(const char* format, std::va_list args) {
    formatText = format;
    width = va_arg(args, int);
    name = va_arg(args, const char*);
}

bool sameFormatAndName() {
    return std::strcmp(formatText, "%-*s %s (%s)\n") == 0 && width == 33 &&
           std::strcmp(name, "libkelvofxds") == 0;
}

}  // namespace

int imsg_print(int destination, int messageNumber, const char* format, ...) {
    first = destination;
    number = messageNumber;
    std::va_list args;
    va_start(args, format);
    note(format, args);
    va_end(args);
    return 4711;
}

int imsg_sprintf(char* buffer, int messageNumber, const char* format, ...) {
    target = buffer;
    number = messageNumber;
    std::va_list args;
    va_start(args, format);
    note(format, args);
    va_end(args);
    return 815;
}

// Fills both buffers to the last byte that is stated, and the NUL's.
int fileutl_strip_leaf(const char* path, int directorySize, char* directory, int leafSize,
                       char* leaf) {
    splitPath = path;
    directoryRoom = directorySize;
    leafRoom = leafSize;
    std::memset(directory, 'D', static_cast<unsigned int>(directorySize));
    std::memset(leaf, 'L', static_cast<unsigned int>(leafSize));
    std::memcpy(directory, directoryWritten, std::strlen(directoryWritten) + 1);
    std::memcpy(leaf, leafWritten, std::strlen(leafWritten) + 1);
    return splitStatus;
}

namespace {

bool printsThroughTheHost() {
    first = number = 1;
    const int printed = libkelvofxds_print_verid();
    return printed == 4711 && first == 0 && number == -1 && sameFormatAndName();
}

bool formatsThroughTheHost() {
    char buffer[100];
    width = 0;
    number = 1;
    const int formatted = libkelvofxds_sprintf_verid(buffer);
    return formatted == 815 && target == buffer && number == -1 && sameFormatAndName();
}

bool isText(const fxStr& s, const char* text) {
    return s.length() == std::strlen(text) && std::strcmp(s.c_str(), text) == 0;
}

// The parts are what the host wrote, whatever the path says, and so is the status.
bool splitsThroughTheHost() {
    const struct {
        const char *path, *directory, *leaf;
        int status;
    } cases[] = {{"a/b", "x", "yz", 0},
                 {"a/b", "", "", 42},
                 {"/usr/lib", "12345678", "87654321", -1},
                 {"", "", "", 7}};
    for (const auto& c : cases) {
        const int length = static_cast<int>(std::strlen(c.path));
        const fxPath path(c.path);
        fxPath directory("what was there before"), leaf;
        directoryWritten = c.directory;
        leafWritten = c.leaf;
        splitStatus = c.status;
        if (path.split(&directory, &leaf) != c.status || splitPath != path.c_str() ||
            directoryRoom != length || leafRoom != length || !isText(directory, c.directory) ||
            !isText(leaf, c.leaf))
            return false;
        if (!isText(path.directory(), c.directory) || !isText(path.leaf(), c.leaf))
            return false;
    }
    return true;
}

}  // namespace

int main() {
    const struct {
        bool (*usesTheHosts)();
        const char* complaint;
    } checks[] = {
        {printsThroughTheHost, "libkelvofxds_print_verid does not print through imsg_print"},
        {formatsThroughTheHost, "libkelvofxds_sprintf_verid does not format through imsg_sprintf"},
        {splitsThroughTheHost, "fxPath::split does not split through fileutl_strip_leaf"},
    };
    int failures = 0;
    for (const auto& check : checks) {
        if (check.usesTheHosts())
            continue;
        std::fprintf(stderr, "%s\n", check.complaint);
        ++failures;
    }
    return failures == 0 ? 0 : 1;
}
