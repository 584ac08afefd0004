// refused: an input's function takes no value, or one of the types bool, unsigned char, int,

#include "kelvofxds/objects/fxWiring.h"

class Sum : public fxObj {
public:
#ifdef REFUSED
    void take(unsigned int n) { sum += n; }
#else
    void take(int n) { sum += static_cast<unsigned int>(n); }
#endif
    unsigned int sum = 0;
};

int main() {
    Sum sum;
    fxAddInput(&sum, "number", &Sum::take);
    return static_cast<int>(sum.sum);
}
