#include "kelvofxds/core/fxDebug.h"

fxDebug* fx_theDebugger = nullptr;

fxDebug::fxDebug(unsigned char) {}

void fxDebug::parseOption(fxStr&) {}
