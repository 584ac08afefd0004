// refused: deleted function
#include "kelvofxds/std.h"

int main() {
    fxStrArray texts;
    fxAppend(texts, "0");
#ifdef REFUSED
    fxAppend(texts, 0);
#endif
    return static_cast<int>(texts.length()) - 1;
}
