// fxRegEngineError.cpp - where messages end; see fxRegEngine.h.

#include "kelvofxds/pattern/fxRegEngine.h"

// In a file of its own, so that the engine calls a host's definition.
void fxregerror(const char*) {}
