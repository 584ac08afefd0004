#include "kelvofxds/containers/fxTypedArrays.h"

#include <cstring>

#include "kelvofxds/containers/fxArrayFamilyInternal.h"
#include "kelvofxds/containers/fxArrayXDRInternal.h"
#include "kelvofxds/core/fxTypeObj.h"

#define FX_DEFINE_TYPED_ARRAY(Class, Element) \
    FX_DEFINE_ARRAY(Class, Element)           \
    FX_DEFINE_ARRAY_TYPE(Class, Element)      \
    unsigned char Class::xdr(fxTranscriber& t) { return xdrElements<Element>(t); }

// The order of the records is part of the library's behaviour: the last one
// answers to "ARRAY".
FX_DEFINE_TYPED_ARRAY(fxBoolArray, unsigned char)
FX_DEFINE_TYPED_ARRAY(fxCharArray, char)
FX_DEFINE_TYPED_ARRAY(fxShortArray, short)
FX_DEFINE_TYPED_ARRAY(fxIntArray, int)
FX_DEFINE_TYPED_ARRAY(fxLongArray, long)
FX_DEFINE_TYPED_ARRAY(fxFloatArray, float)
FX_DEFINE_TYPED_ARRAY(fxDoubleArray, double)
FX_DEFINE_TYPED_ARRAY(fxUnsignedCharArray, unsigned char)
FX_DEFINE_TYPED_ARRAY(fxUnsignedShortArray, unsigned short)
FX_DEFINE_TYPED_ARRAY(fxUnsignedLongArray, unsigned long)

FX_DEFINE_ARRAY(fxVoidPtrArray, void*)

void fxVoidPtrArray::createElements(void* at, unsigned int bytes) {
    if (bytes != 0)
        std::memset(at, 0, bytes);
}
