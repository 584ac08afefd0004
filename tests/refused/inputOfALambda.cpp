// refused: fxAddInput takes a member function or a function void f(Class*, value); fxOnInput

#include "kelvofxds/objects/fxWiring.h"

int main() {
    fxObj object;
#ifdef REFUSED
    fxAddInput(&object, "in", [](int) {});
#else
    fxOnInput(&object, "in", [](int) {});
#endif
}
