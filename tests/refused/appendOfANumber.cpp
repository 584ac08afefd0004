// refused: appendO
#define KELVOFXDS_WARN_SURPRISES
#include "kelvofxds/kelvofxds.h"

int main() {
    const int number = 5;
    fxIntArray numbers;
    numbers.append(&number);
#ifdef REFUSED
    numbers.append(5);
#endif
}
