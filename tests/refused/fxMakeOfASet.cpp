// refused: fxMake makes arrays; make a dictionary or a set first and call fxAddAll
#include "kelvofxds/std.h"

int main() {
#ifdef REFUSED
    fxMake<fxStrSet>({"a"});
#endif
    return static_cast<int>(fxMake<fxStrArray>({"a"}).length()) - 1;
}
