// refused: fxAddInput takes a member function of the object's class or of its bases

#include "kelvofxds/objects/fxWiring.h"

struct Meter : fxObj {
    void take(int) {}
};
struct Other : fxObj {
    void take(int) {}
};

int main() {
    Meter meter;
#ifdef REFUSED
    fxAddInput(&meter, "in", &Other::take);
#else
    fxAddInput(&meter, "in", &Meter::take);
#endif
}
