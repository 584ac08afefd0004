// refused: insertO
#define KELVOFXDS_WARN_SURPRISES
#include "kelvofxds/kelvofxds.h"

int main() {
    const int number = 5;
    fxIntArray numbers;
    numbers.insert(&number, 0);
#ifdef REFUSED
    numbers.insert(5, 0);
#endif
}
