// refused: fxOnInput takes a lambda; fxAddInput takes a member function

#include "kelvofxds/objects/fxWiring.h"

struct Meter : fxObj {
    void take(int) {}
};

int main() {
    Meter meter;
#ifdef REFUSED
    fxOnInput(&meter, "in", &Meter::take);
#else
    fxAddInput(&meter, "in", &Meter::take);
#endif
}
