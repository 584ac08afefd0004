// fxDataInternal.h - the codes of the types of values, and making their holders.
#pragma once

#include "kelvofxds/values/fxData.h"
#include "kelvofxds/values/fxValueTypesInternal.h"

/// The codes, in the order in which start-up draws them.
#define FX_CODE(number, code, Holder, Type, name) &fxDT_##code,
static unsigned short* const fxValueTypeCodes[] = {FX_VALUE_TYPES(FX_CODE, FX_CODE, FX_CODE)};
#undef FX_CODE

// Each is new Holder(value), as one call within the library: sending is the
// hot path of many hosts. Where there is no memory, the process ends.

#define FX_NOTHING(number, code, Holder, Type, name) fxData* fxNew##Holder##Data();
#define FX_VALUE(number, code, Holder, Type, name) fxData* fxNew##Holder##Data(Type value);
#define FX_POINTER(number, code, Holder, Type, name)
FX_VALUE_TYPES(FX_NOTHING, FX_VALUE, FX_POINTER)
#undef FX_NOTHING
#undef FX_VALUE
#undef FX_POINTER
