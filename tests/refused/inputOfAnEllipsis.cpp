// refused: fxAddInput takes a member function that is not declared with &&, volatile or ...

#include "kelvofxds/objects/fxWiring.h"

struct Meter : fxObj {
#ifdef REFUSED
    void take(...) {}
#else
    void take(int) {}
#endif
};

int main() {
    Meter meter;
    fxAddInput(&meter, "in", &Meter::take);
}
