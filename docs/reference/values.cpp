// values.cpp - examples of the reference manual: kelvofxds/values.

#include <cstring>

#include "docs/reference/examples.h"

EXAMPLE(fxData) {
    //! [fxData]
    fxData* data = new fxIntData(42);
    ++data->count;  // whoever keeps it counts
    int value = 0;
    data->getValue(fxDT_int, &value);
    std::printf("%d, %d\n", value, data->getType() == fxDT_int);  // 42, 1
    if (--data->count == 0)
        delete data;
    //! [fxData]
}

EXAMPLE(fxVoidData) {
    //! [fxVoidData]
    fxVoidData nothing;  // for signals without value
    std::printf("%s, %u bytes\n", nothing.dataName(), nothing.getSize());  // void, 0 bytes
    //! [fxVoidData]
}

EXAMPLE(fxBoolData) {
    //! [fxBoolData]
    fxBoolData data(1);
    unsigned char value = 0;
    data.getValue(fxDT_fxBool, &value);
    std::printf("%d\n", value);  // 1
    //! [fxBoolData]
}

EXAMPLE(fxIntData) {
    //! [fxIntData]
    fxIntData data(-7);
    int value = 0;
    data.getValue(fxDT_int, &value);
    std::printf("%d\n", value);  // -7
    //! [fxIntData]
}

EXAMPLE(fxLongData) {
    //! [fxLongData]
    fxLongData data(2000000000L);
    long value = 0;
    data.getValue(fxDT_long, &value);
    std::printf("%ld\n", value);  // 2000000000
    //! [fxLongData]
}

EXAMPLE(fxFloatData) {
    //! [fxFloatData]
    fxFloatData data(0.25F);
    float value = 0;
    data.getValue(fxDT_float, &value);
    std::printf("%g\n", static_cast<double>(value));  // 0.25
    //! [fxFloatData]
}

EXAMPLE(fxDoubleData) {
    //! [fxDoubleData]
    fxDoubleData data(1e100);
    double value = 0;
    data.getValue(fxDT_double, &value);
    std::printf("%g\n", value);  // 1e+100
    //! [fxDoubleData]
}

EXAMPLE(fxCharPtrData) {
    //! [fxCharPtrData]
    fxCharPtrData data(::strdup("Lima"));  // takes the text over, which is from malloc
    char* value = nullptr;
    data.getValue(fxDT_CharPtr, &value);
    std::printf("%s\n", value);  // Lima
    //! [fxCharPtrData]
}

EXAMPLE(fxStrData) {
    //! [fxStrData]
    fxStrData data(fxStr("Lima"));
    fxStr value;
    data.getValue(fxDT_fxStr, &value);
    std::printf("%s\n", value.c_str());  // Lima
    //! [fxStrData]
}

EXAMPLE(fxStrArrayData) {
    //! [fxStrArrayData]
    fxStrArray towns;
    towns.append("Lima");
    towns.append("Oslo");
    fxStrArrayData data(towns);                              // a copy
    std::printf("%d\n", data.getType() == fxDT_fxStrArray);  // 1
    //! [fxStrArrayData]
}

EXAMPLE(fxConverter) {
    //! [fxConverter]
    fxConverter* link = fxConverter::findConverter(fxDT_int, fxDT_CharPtr);
    std::printf("%d\n", link->getTargetType() == fxDT_CharPtr);  // 1
    delete link;
    std::printf("%d\n", fxConverter::findConverter(fxDT_fxStr, fxDT_int) == nullptr);  // 1
    //! [fxConverter]
}

EXAMPLE(fxProperty) {
    //! [fxProperty]
    fxObj door;  // every fxObj has properties
    door.setProperty(new fxProperty(fxProperty::allocNewTag("room"), 7L));
    std::printf("%ld\n", door.findProperty("room")->getAsLong());  // 7
    door.removeProperty("room");
    std::printf("%d\n", door.findProperty("room") == nullptr);  // 1
    //! [fxProperty]
}
