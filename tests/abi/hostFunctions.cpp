// hostFunctions.cpp - a host that brings its own versions of the functions it
// may replace. Exits with 0 when the library uses them.
//
// A program of its own: its definitions hold for the whole process.

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "kelvofxds/core/fxPlatform.h"
#include "kelvofxds/core/fxVersion.h"

namespace {

// What the library handed over.
int first, number, width;
char* target;
const char *formatText, *name;

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

int main() {
    first = number = 1;
    const int printed = libkelvofxds_print_verid();
    if (printed != 4711 || first != 0 || number != -1 || !sameFormatAndName()) {
        std::fputs("libkelvofxds_print_verid does not print through imsg_print\n", stderr);
        return 1;
    }

    char buffer[100];
    width = 0;
    number = 1;
    const int formatted = libkelvofxds_sprintf_verid(buffer);
    if (formatted != 815 || target != buffer || number != -1 || !sameFormatAndName()) {
        std::fputs("libkelvofxds_sprintf_verid does not format through imsg_sprintf\n", stderr);
        return 1;
    }
    return 0;
}
