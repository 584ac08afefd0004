// fxStrStream.cpp - strings and the standard streams.

#include <istream>
#include <ostream>

#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/str/fxStr.h"

unsigned int fxStr::resizeIncrement = 10;
int fxStr::delim_idx = -1;

std::ostream& operator<<(std::ostream& out, const fxStr& s) { return out << s.c_str(); }

std::istream& operator>>(std::istream& in, fxStr& s) {
    const char delimiter =
        fxStr::delim_idx == -1 ? '\n' : static_cast<char>(in.iword(fxStr::delim_idx));
    if (s.length() == 0)
        s.resize(fxStr::resizeIncrement);
    unsigned int count = 0;
    for (;;) {
        // get() stores one byte less than it is given, and a NUL.
        in.get(&s[count], static_cast<std::streamsize>(s.length() - count), delimiter);
        count += static_cast<unsigned int>(in.gcount());
        if (!in.good())
            break;
        if (in.peek() == static_cast<unsigned char>(delimiter)) {
            in.get();
            break;
        }
        s.resize(fxSum("fxStr", s.length(), fxStr::resizeIncrement));
    }
    s.resize(count);
    return in;
}

// NOLINTNEXTLINE(bugprone-reserved-identifier): the name is part of the API.
std::istream& _delimiter(std::istream& in, char c) {
    if (fxStr::delim_idx == -1)
        fxStr::delim_idx = std::ios_base::xalloc();
    // NOLINTNEXTLINE(bugprone-signed-char-misuse): the word holds the char's value.
    in.iword(fxStr::delim_idx) = c;
    return in;
}
