#include "kelvofxds/values/fxData.h"

#include <cstdlib>
#include <cstring>

#include "kelvofxds/core/fxFreeListInternal.h"
#include "kelvofxds/values/fxDataInternal.h"

// The numbers that start-up draws, so that static objects of a host may have
// channels and properties before.
unsigned short fxDT_void = 0;
unsigned short fxDT_fxBool = 1;
unsigned short fxDT_int = 2;
unsigned short fxDT_long = 3;
unsigned short fxDT_float = 4;
unsigned short fxDT_double = 5;
unsigned short fxDT_CharPtr = 6;
unsigned short fxDT_fxStr = 7;
unsigned short fxDT_VoidPtr = 8;
unsigned short fxDT_ObjPtr = 9;
unsigned short fxDT_DataPtr = 10;
unsigned short fxDT_fxStrArray = 11;

fxData::fxData(unsigned short typeCode) : count(0), type(typeCode) {}

fxData::~fxData() {}

// What the holders have in common: their memory and their name.
#define FX_DEFINE_HOLDER(Class, name)                                                  \
    namespace {                                                                        \
    fxFreeList<sizeof(Class)> free##Class;                                             \
    }                                                                                  \
    void* Class::operator new(std::size_t size) { return free##Class.allocate(size); } \
    void Class::operator delete(void* holder, std::size_t size) {                      \
        free##Class.release(holder, size);                                             \
    }                                                                                  \
    const char* Class::dataName() const { return name; }

// A holder whose value is delivered as it is: the receiver's prototype is
// void (*)(void*, Type).
#define FX_DEFINE_VALUE_HOLDER(Class, Type, code, name)                   \
    FX_DEFINE_HOLDER(Class, name)                                         \
    Class::Class(Type v) : fxData(code), value(v) {}                      \
    void Class::deliverTo(void (*function)(), void* target) {             \
        reinterpret_cast<void (*)(void*, Type)>(function)(target, value); \
    }                                                                     \
    unsigned int Class::getSize() { return sizeof(Type); }

#define FX_DEFINE_SCALAR_HOLDER(Class, Type, code, name) \
    FX_DEFINE_VALUE_HOLDER(Class, Type, code, name)      \
    void Class::getValue(unsigned short, void* out) { std::memcpy(out, &value, sizeof value); }

FX_DEFINE_SCALAR_HOLDER(fxBoolData, unsigned char, fxDT_fxBool, "TYPE")
FX_DEFINE_SCALAR_HOLDER(fxIntData, int, fxDT_int, "TYPE")
FX_DEFINE_SCALAR_HOLDER(fxLongData, long, fxDT_long, "TYPE")
FX_DEFINE_SCALAR_HOLDER(fxFloatData, float, fxDT_float, "TYPE")
FX_DEFINE_SCALAR_HOLDER(fxDoubleData, double, fxDT_double, "TYPE")
FX_DEFINE_SCALAR_HOLDER(fxCharPtrData, char*, fxDT_CharPtr, "char *")
// Strings have no cheaper way in than by copy.
// NOLINTBEGIN(performance-unnecessary-value-param)
FX_DEFINE_VALUE_HOLDER(fxStrData, fxStr, fxDT_fxStr, "TYPE")
FX_DEFINE_VALUE_HOLDER(fxStrArrayData, fxStrArray, fxDT_fxStrArray, "TYPE")
// NOLINTEND(performance-unnecessary-value-param)
FX_DEFINE_HOLDER(fxVoidData, "void")

fxBoolData::~fxBoolData() {}
fxIntData::~fxIntData() {}
fxLongData::~fxLongData() {}
fxFloatData::~fxFloatData() {}
fxDoubleData::~fxDoubleData() {}
fxCharPtrData::~fxCharPtrData() { std::free(value); }
fxStrData::~fxStrData() {}
fxStrArrayData::~fxStrArrayData() {}
fxVoidData::~fxVoidData() {}

void fxStrData::getValue(unsigned short, void* out) { *static_cast<fxStr*>(out) = value; }

void fxStrArrayData::getValue(unsigned short, void* out) {
    auto* array = static_cast<fxStrArray*>(out);
    array->resize(0);
    array->append(static_cast<const fxArray&>(value));
}

fxVoidData::fxVoidData() : fxData(fxDT_void) {}

void fxVoidData::deliverTo(void (*function)(), void* target) {
    reinterpret_cast<void (*)(void*)>(function)(target);
}

void fxVoidData::getValue(unsigned short, void*) {}

unsigned int fxVoidData::getSize() { return 0; }

fxData* fxNewVoidData() { return new fxVoidData; }
fxData* fxNewBoolData(unsigned char value) { return new fxBoolData(value); }
fxData* fxNewIntData(int value) { return new fxIntData(value); }
fxData* fxNewLongData(long value) { return new fxLongData(value); }
fxData* fxNewFloatData(float value) { return new fxFloatData(value); }
fxData* fxNewDoubleData(double value) { return new fxDoubleData(value); }
fxData* fxNewCharPtrData(char* value) { return new fxCharPtrData(value); }
