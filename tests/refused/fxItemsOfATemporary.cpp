// refused: deleted function
#include "kelvofxds/std.h"

int main() {
    unsigned int entries = 0;
    const GenericList list;
    for (unsigned int* item : fxItems<unsigned int>(list))
        entries += *item;
#ifdef REFUSED
    for (unsigned int* item : fxItems<unsigned int>(GenericList()))
        entries += *item;
#endif
    return static_cast<int>(entries);
}
