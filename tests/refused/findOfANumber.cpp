// refused: findO
#define KELVOFXDS_WARN_SURPRISES
#include "kelvofxds/kelvofxds.h"

int main() {
    const int number = 5;
    fxIntArray numbers;
    numbers.find(&number);
#ifdef REFUSED
    numbers.find(5);
#endif
}
