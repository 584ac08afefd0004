// Formats are the hosts', who may count by %n, also in one that lies in memory they can write to.
// A fortified function of the C library ends the process for that.
#undef _FORTIFY_SOURCE

#include "kelvofxds/core/fxFatal.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

void fxFatal(const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    std::vfprintf(stderr, format, args);
    va_end(args);
    std::fputc('\n', stderr);
    std::fflush(stderr);
    std::abort();
}
