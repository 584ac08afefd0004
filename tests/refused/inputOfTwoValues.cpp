// refused: an input's function takes one value, or none

#include "kelvofxds/objects/fxWiring.h"

int main() {
    fxObj object;
#ifdef REFUSED
    fxOnInput(&object, "in", [](int, int) {});
#else
    fxOnInput(&object, "in", [](int) {});
#endif
}
