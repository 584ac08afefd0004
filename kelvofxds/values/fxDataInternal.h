// fxDataInternal.h - making the holders of sent values.
#pragma once

#include "kelvofxds/values/fxData.h"

// Each is new Holder(value), as one call within the library: sending is the
// hot path of many hosts.

fxData* fxNewVoidData();
fxData* fxNewBoolData(unsigned char value);
fxData* fxNewIntData(int value);
fxData* fxNewLongData(long value);
fxData* fxNewFloatData(float value);
fxData* fxNewDoubleData(double value);
fxData* fxNewCharPtrData(char* value);
