#include <kelvofxds/kelvofxds.h>

int main() {
    fxInitializeToolkit();
    fxStr word("installed");
    word.append(" and usable");
    const bool right = word == "installed and usable";
    fxCleanupGlobalOrderings();
    return right ? 0 : 1;
}
