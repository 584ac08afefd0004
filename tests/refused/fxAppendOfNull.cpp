// refused: deleted function
#include "kelvofxds/std.h"

int main() {
    fxStrArray texts;
    fxAppend(texts, "");
#ifdef REFUSED
    fxAppend(texts, nullptr);
#endif
    return static_cast<int>(texts.length()) - 1;
}
