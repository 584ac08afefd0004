// Formats are the hosts', who may count by %n, also in one that lies in memory they can write to.
// A fortified function of the C library ends the process for that.
#undef _FORTIFY_SOURCE

#include "kelvofxds/core/fxPlatform.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>

#define FX_REPLACEABLE __attribute__((weak))

FX_REPLACEABLE int imsg_print(int, int, const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    const int printed = std::vprintf(format, args);
    va_end(args);
    return printed;
}

FX_REPLACEABLE int imsg_sprintf(char* buffer, int, const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    const int printed = std::vsprintf(buffer, format, args);
    va_end(args);
    return printed;
}

namespace {
void copyCut(char* to, int size, const char* from, std::size_t length) {
    if (size < 0)
        return;
    const std::size_t room = static_cast<std::size_t>(size);
    const std::size_t n = length < room ? length : room;
    std::memcpy(to, from, n);
    to[n] = '\0';
}
}  // namespace

FX_REPLACEABLE int fileutl_strip_leaf(const char* path, int directorySize, char* directory,
                                      int leafSize, char* leaf) {
    std::size_t end = std::strlen(path);
    while (end > 0 && path[end - 1] == '/')
        --end;
    std::size_t start = end;
    while (start > 0 && path[start - 1] != '/')
        --start;
    copyCut(leaf, leafSize, path + start, end - start);

    if (start == 0) {
        copyCut(directory, directorySize, path[0] == '/' ? "/" : ".", 1);
    } else {
        while (start > 0 && path[start - 1] == '/')
            --start;
        copyCut(directory, directorySize, path, start);
    }
    return 0;
}
