// core.cpp - examples of the reference manual: kelvofxds/core.

#include "docs/reference/examples.h"

EXAMPLE(fxRCObj) {
    //! [fxRCObj]
    struct Picture : fxRCObj {
        int width = 640;
    };
    auto* picture = new Picture;  // nobody holds it yet
    ++picture->count;
    std::printf("%d, %d\n", picture->width, picture->count);  // 640, 1
    if (--picture->count == 0)
        delete picture;  // fxRef does all this by itself
    //! [fxRCObj]
}

EXAMPLE(fxRef) {
    //! [fxRef]
    struct Picture : fxRCObj {
        int width = 640;
    };
    fxRef<Picture> mine(new Picture);
    const fxRef<Picture> yours = mine;                    // held twice
    mine.reset();                                         // and once
    std::printf("%d, %d\n", yours->width, yours->count);  // 640, 1
    //! [fxRef]
}

EXAMPLE(Counted) {
    //! [Counted]
    struct Font : Counted {};
    auto* font = new Font;
    ++font->count;                     // a holder, as of an fxRCObj
    std::printf("%d\n", font->count);  // 1
    if (--font->count == 0)
        delete font;
    //! [Counted]
}

EXAMPLE(RPtr_base) {
    //! [RPtr_base]
    struct Font : Counted {};
    auto* font = new Font;
    font->count = 2;
    {
        const RPtr_base holder(font);  // takes over one of the two
    }
    std::printf("%d\n", font->count);  // 1
    delete font;
    //! [RPtr_base]
}

EXAMPLE(fxDebug) {
    //! [fxDebug]
    fxStr option("events");
    fx_theDebugger->parseOption(option);             // does nothing: a host's own class may
    std::printf("%d\n", fx_theDebugger != nullptr);  // 1
    //! [fxDebug]
}

EXAMPLE(fxOrderedGlobal) {
    //! [fxOrderedGlobal]
    static fxOrderedGlobal* afterTheLibrary[] = {&fxOG_Init, nullptr};
    static fxOrderedGlobal fonts([] { std::puts("loading"); }, [] { std::puts("freeing"); },
                                 afterTheLibrary, 0);
    std::printf("%d\n", fonts.dependsOn(fxOG_Init));  // 1
    //! [fxOrderedGlobal]
    fonts.cons = fonts.dest = nullptr;
}

EXAMPLE(fxGlobalOrder) {
    //! [fxGlobalOrder]
    // fxInitializeToolkit() and fxCleanupGlobalOrderings() walk the two of these.
    std::printf("%d\n", fx_toolkitGlobalOrder->isSorted());                 // 1
    std::printf("%d\n", fx_toolkitGlobalOrder->getGlobals().length() > 0);  // 1
    //! [fxGlobalOrder]
}

EXAMPLE(fxTypeObj) {
    //! [fxTypeObj]
    fxTypeObj* type = fxTypeObj::findType("DICT");  // by the name that stands in streams
    void* object = type->create(*type);
    std::printf("%s, version %u\n", type->name, type->version);  // DICT, version 1
    type->destroy(object);
    //! [fxTypeObj]
}

//! [fxXDRObj]
class Station : public fxXDRObj {
    FX_XDR_MEMBERS(Station)
    fxStr name;
};
FX_DEFINE_XDR(Station, "Station", 1)
unsigned char Station::xdr(fxTranscriber& t) { return name.xdr(t); }
//! [fxXDRObj]

EXAMPLE(fxXDRObj) {
    Station station;
    station.name = "North";
    const fxRef<Station> copy(fxDeepCopy(station));
    std::printf("%s %s\n", copy->className(), copy->name.c_str());  // Station North
}

EXAMPLE(fxHasClassType) {
    //! [fxHasClassType]
    // Station is a class with FX_XDR_MEMBERS.
    std::printf("%d\n", fxHasClassType<Station>::value);  // 1
    std::printf("%d\n", fxHasClassType<fxStr>::value);    // 0
    //! [fxHasClassType]
}

EXAMPLE(fxHasXdrClass) {
    //! [fxHasXdrClass]
    // Station is a class with FX_XDR_MEMBERS.
    std::printf("%d\n", fxHasXdrClass<Station>::value);  // 1
    std::printf("%d\n", fxHasXdrClass<fxStr>::value);    // 0
    //! [fxHasXdrClass]
}
