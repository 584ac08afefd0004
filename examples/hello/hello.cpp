#include <kelvofxds/kelvofxds.h>

int main() {
    fxInitializeToolkit();
    fxStrStrDictionary capitals;
    capitals.add("Peru", "Lima");
    fxStr why;
    if (!fxSaveFile("capitals", capitals, &why))
        std::fprintf(stderr, "%s\n", why.c_str());
    auto* copy = fxLoadFile<fxStrStrDictionary>("capitals", &why);
    if (!copy)
        std::fprintf(stderr, "%s\n", why.c_str());
    else
        std::printf("The capital of Peru is %s.\n", copy->find("Peru")->c_str());
    delete copy;
}
