// refused: fxVoidPtrArray holds any pointers

#include "kelvofxds/containers/fxArrayOf.h"

class Page;
#ifndef REFUSED
class Page {};
#endif

int main() {
    const fxArrayOf<Page*> pages;
    return static_cast<int>(pages.length());
}
