// refused: an input's function takes its value by copy or as a constant reference

#include "kelvofxds/objects/fxWiring.h"
#include "kelvofxds/str/fxStr.h"

int main() {
    fxObj object;
#ifdef REFUSED
    fxOnInput(&object, "in", [](fxStr& text) { text.lower(); });
#else
    fxOnInput(&object, "in", [](const fxStr& text) { text.c_str(); });
#endif
}
