#include <kelvofxds/kelvofxds.h>

class Station : public fxXDRObj {
    FX_XDR_MEMBERS(Station)
    fxStr name;
    fxArrayOf<int> departures;  // minutes past the hour
    Station* next = nullptr;    // the last leads to the first
};
FX_DEFINE_XDR(Station, "Station", 1)

unsigned char Station::xdr(fxTranscriber& t) {
    return name.xdr(t) && departures.xdr(t) && fxXdrPointer(t, next);
}

int main() {
    fxInitializeToolkit();
    Station north, south;
    north.name = "North";
    south.name = "South";
    north.next = &south;
    south.next = &north;
    for (const int minute : {5, 25, 45})
        south.departures.append(minute);

    fxStr why;
    if (!fxSaveFile("line", north, &why)) {
        std::fprintf(stderr, "%s\n", why.c_str());
        return 1;
    }
    Station* first = fxLoadFile<Station>("line", &why);
    if (!first) {
        std::fprintf(stderr, "%s\n", why.c_str());
        return 1;
    }
    Station* second = first->next;
    std::printf("%s, %s at %d, and again %s\n", first->name.c_str(), second->name.c_str(),
                second->departures[1], second->next->name.c_str());
    delete second;
    delete first;
}
