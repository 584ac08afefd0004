// refused: fxOnInput takes a function with one call operator whose parameter has a type

#include "kelvofxds/objects/fxWiring.h"

int main() {
    fxObj object;
#ifdef REFUSED
    fxOnInput(&object, "in", [](auto) {});
#else
    fxOnInput(&object, "in", [](float) {});
#endif
}
