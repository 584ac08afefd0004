// fxRegEngineSubstitute.cpp - writing what was matched; see fxRegEngine.h.

#include <cstring>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "kelvofxds/pattern/fxRegProgramInternal.h"

void fxregsub(const fxregexp* prog, const char* source, char* dest) {
    if (!prog || !source || !dest)
        return fxregerror("NULL parm to regsub");
    if (!fxRegIsMagic(*prog))
        return fxregerror("damaged regexp fed to regsub");
    while (const char c = *source++) {
        unsigned int group = fxregexp::groupCount;
        if (c == '&')
            group = 0;
        else if (c == '\\' && *source >= '0' && *source <= '9')
            group = static_cast<unsigned int>(*source++ - '0');
        if (group == fxregexp::groupCount) {
            const bool escaped = c == '\\' && (*source == '\\' || *source == '&');
            *dest++ = escaped ? *source++ : c;
            continue;
        }
        const char* start = prog->startp[group];
        const char* end = prog->endp[group];
        if (!start || !end || end < start)
            continue;
        const std::size_t length = static_cast<std::size_t>(end - start);
        std::strncpy(dest, start, length);
        dest += length;
        if (length != 0 && dest[-1] == '\0')
            return fxregerror("damaged match string");
    }
    *dest = '\0';
}
