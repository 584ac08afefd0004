// refused: fxCopyInto: the two have entries of different types
#include "kelvofxds/std.h"

int main() {
    fxStrStrDictionary from, to;
#ifdef REFUSED
    fxVoidPtrDict pointers;
    fxCopyInto(from, pointers);
#endif
    fxCopyInto(from, to);
}
