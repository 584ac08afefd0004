#include "kelvofxds/containers/fxTypedArrays.h"

#include <cstring>

#include "kelvofxds/containers/fxArrayFamilyInternal.h"
#include "kelvofxds/containers/fxArrayXDRInternal.h"
#include "kelvofxds/containers/fxTypedArraysInternal.h"
#include "kelvofxds/core/fxTypeObj.h"

#define FX_DEFINE_TYPED_ARRAY(Class, Element) \
    FX_DEFINE_ARRAY(Class, Element)           \
    FX_DEFINE_ARRAY_TYPE(Class, Element)      \
    unsigned char Class::xdr(fxTranscriber& t) { return xdrElements<Element>(t); }

FX_TYPED_ARRAYS(FX_DEFINE_TYPED_ARRAY)

FX_DEFINE_ARRAY(fxVoidPtrArray, void*)

void fxVoidPtrArray::createElements(void* at, unsigned int bytes) {
    if (bytes != 0)
        std::memset(at, 0, bytes);
}
