// refused: deleted function
#include "kelvofxds/std.h"

int main() {
    unsigned int entries = 0;
    fxStrStrDictionary d;
    for (auto& [key, value] : fxEntries<fxStr, fxStr>(d))
        entries += key.length() + value.length();
#ifdef REFUSED
    for (auto& [key, value] : fxEntries<fxStr, fxStr>(fxStrStrDictionary()))
        entries += key.length() + value.length();
#endif
    return static_cast<int>(entries);
}
