// refused: deleted function
#include "kelvofxds/std.h"

int main() {
    unsigned int entries = 0;
    const fxStrSet set;
    for (auto& key : fxKeys<fxStr>(set))
        entries += key.length();
#ifdef REFUSED
    for (auto& key : fxKeys<fxStr>(fxStrSet()))
        entries += key.length();
#endif
    return static_cast<int>(entries);
}
